// Trigger unit of class Order: unsigned == != < <= > >=. One carry chain yields < or, with its carry set, <=; the rest
// are their inverses.
`default_nettype none

module ostrel_order #(
    parameter integer WIDTH = 32
) (
    input  wire             clk,
    input  wire             sample,       // cur holds a new sample.
    input  wire [WIDTH-1:0] cur,
    input  wire [WIDTH+2:0] config_bits,  // invert, equal, or-equal, value from bit 0 on; constant during a run.
    output reg              hit
);
  wire invert = config_bits[0];
  wire equal = config_bits[1];
  wire or_equal = config_bits[2];
  wire [WIDTH-1:0] value = config_bits[3+:WIDTH];

  // The carry of value - cur: cur <= value; of value - cur - 1: cur < value.
  wire [WIDTH:0] difference = {1'b0, value} + {1'b0, ~cur} + {{WIDTH{1'b0}}, or_equal};
  wire at_most = difference[WIDTH];

  always @(posedge clk) if (sample) hit <= (equal ? cur == value : at_most) ^ invert;
endmodule

`default_nettype wire
