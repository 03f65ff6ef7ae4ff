// The link with a line that is one per cent faster than its reference clock.
`timescale 1ns / 1ps
module debug_tb;
  wire tck, tms, tdi, tdo;
  reg ref_clk = 0, rx_clk = 0, rst = 1;
  always #5 ref_clk = ~ref_clk;
  always #4.95 rx_clk = ~rx_clk;
  initial #200 rst = 0;
  link dut (.ref_clk(ref_clk), .rst(rst), .rx_clk(rx_clk), .rx_los(1'b0), .up(), .fill(),
            .ostrel_tck(tck), .ostrel_tms(tms), .ostrel_tdi(tdi), .ostrel_tdo(tdo));
  ostrel_jtag_sim #(.HALF_PERIOD(20)) jtag (.tck(tck), .tms(tms), .tdi(tdi), .tdo(tdo), .trst(), .srst());
endmodule
