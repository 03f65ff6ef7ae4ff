// Trigger unit of class Order: unsigned == != < <= > >=. One carry chain computes < or <=; > and >= are their inverses.
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

  // With one more bit below the operands, one comparison serves as < and <=.
  wire less = {cur, 1'b0} < {value, or_equal};

  always @(posedge clk) if (sample) hit <= (equal ? cur == value : less) ^ invert;
endmodule

`default_nettype wire
