// Trigger unit of class Match: == and != with don't-cares, .RE. and .FE. on any watched bit. The mismatch of a bit is a
// function of four inputs, so that it fits a LUT4 on devices that have nothing larger:
//   mask value   mismatch when
//    1     0     the bit is 1 and was 0 in `previous`    differs from 0, or rises
//    1     1     the bit is 0                            differs from 1
//    0     1     the bit is 0 and was 1 in `previous`    falls
//    0     0     never
// `previous` is the previous sample for the edge operators and 0 for the others.
`default_nettype none

module ostrel_match #(
    parameter integer WIDTH = 32
) (
    input  wire               clk,
    input  wire               sample,          // cur holds a new sample.
    input  wire               previous_valid,  // This is not the first sample of the run.
    input  wire [WIDTH-1:0]   cur,
    input  wire [2*WIDTH+1:0] config_bits,     // invert, edge, value, mask from bit 0 on; constant during a run.
    output reg                hit
);
  wire invert = config_bits[0];
  wire edge_op = config_bits[1];
  wire [WIDTH-1:0] value = config_bits[2+:WIDTH];
  wire [WIDTH-1:0] mask = config_bits[2+WIDTH+:WIDTH];
  reg [WIDTH-1:0] previous;
  reg level_op;  // ~edge_op as a register of its own, which resets `previous` without an inverter for each bit.

  wire [WIDTH-1:0] mismatch = (mask & ~value & cur & ~previous) | (value & ~cur & (mask | previous));

  always @(posedge clk) begin
    level_op <= ~edge_op;
    if (level_op) previous <= {WIDTH{1'b0}};
    else if (sample) previous <= cur;
    if (sample) hit <= (|mismatch ^ invert) & (previous_valid | level_op);
  end
endmodule

`default_nettype wire
