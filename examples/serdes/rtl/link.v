// The receiving side of a serial link. Symbols come with the clock that was recovered from the line and leave with the
// reference clock, through an elastic buffer of sixteen. When the line is the faster of the two, a symbol is skipped in
// one of SKIP; a buffer that overflows nevertheless loses lock, and is centred again.
`default_nettype none

(* ostrel_role = "dcu" *)
module link_phy #(
    parameter integer SKIP = 256  // Reference clocks; skips 1 / SKIP of the symbols at most.
) (
    input  wire       ref_clk,
    input  wire       rst,
    (* ostrel_watch = "clock" *) input wire rx_clk,
    (* ostrel_watch = "los" *) input wire rx_los,
    (* ostrel_watch = "lock" *) output reg lock,
    output wire [4:0] fill
);
  // The writer's place as a Gray code, which may be read at any time.
  reg [4:0] written = 5'd0, written_gray = 5'd0;
  always @(posedge rx_clk) begin
    written <= written + 1'b1;
    written_gray <= written ^ (written >> 1);
  end

  reg [4:0] gray_a = 5'd0, gray_b = 5'd0;
  wire [4:0] seen;
  assign seen = {gray_b[4], ^gray_b[4:3], ^gray_b[4:2], ^gray_b[4:1], ^gray_b[4:0]};

  reg [4:0] read = 5'd0;
  reg [8:0] symbols = 9'd0;
  reg [4:0] good = 5'd0;
  assign fill = seen - read;
  (* ostrel_watch = "error" *) wire overflow;
  assign overflow = fill > 5'd12;
  wire skip = symbols == SKIP - 1 && fill > 5'd8;

  always @(posedge ref_clk) begin
    gray_a <= written_gray;
    gray_b <= gray_a;
    symbols <= symbols == SKIP - 1 ? 9'd0 : symbols + 1'b1;
    if (rst || rx_los || overflow) begin
      read <= seen - 5'd8;
      good <= 5'd0;
      lock <= 1'b0;
    end else begin
      read <= read + (skip ? 5'd2 : 5'd1);
      if (good == 5'd31) lock <= 1'b1;
      else good <= good + 1'b1;
    end
  end
endmodule

module link #(
    parameter integer SKIP = 256
) (
    input  wire       ref_clk,
    input  wire       rst,
    input  wire       rx_clk,
    input  wire       rx_los,
    output wire       up,
    output wire [4:0] fill
);
  link_phy #(.SKIP(SKIP)) u_phy (
      .ref_clk(ref_clk),
      .rst(rst),
      .rx_clk(rx_clk),
      .rx_los(rx_los),
      .lock(up),
      .fill(fill)
  );
endmodule

`default_nettype wire
