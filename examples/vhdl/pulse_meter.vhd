-- Measures how long its input is high, in clocks.
library ieee;
use ieee.std_logic_1164.all;
use ieee.numeric_std.all;

entity Pulse_Meter is
  generic (WIDTH : positive := 8);
  port (
    Clk    : in  std_logic;
    Pulse  : in  std_logic;
    Length : out std_logic_vector(WIDTH - 1 downto 0);
    Valid  : out std_logic);  -- for one clock, with each new length
end entity;

architecture rtl of Pulse_Meter is
  type State_T is (Idle, Counting, Done);
  signal State : State_T := Idle;
  signal Count : unsigned(WIDTH - 1 downto 0) := (others => '0');
begin
  process (Clk)
  begin
    if rising_edge(Clk) then
      case State is
        when Counting =>
          if Pulse = '1' then
            Count <= Count + 1;
          else
            State <= Done;
          end if;
        when others =>
          Count <= to_unsigned(1, WIDTH);
          State <= Idle;
          if Pulse = '1' then
            State <= Counting;
          end if;
      end case;
    end if;
  end process;

  Length <= std_logic_vector(Count);
  Valid  <= '1' when State = Done else '0';
end architecture;
