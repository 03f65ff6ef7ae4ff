// Trigger unit of class Match: == and != with don't-cares, .RE. and .FE. on any watched bit. A bit stands out by four
// inputs, so that it fits a LUT4 on devices that have no more:
//   mask value   stands out when
//    1     0     it is 1, and not was 1 in `last`    differs from 0, or rises
//    1     1     it is 0                             differs from 1
//    0     1     it is 0, and was 1 in `last`        falls
//    0     0     never
// `last` is the previous sample for the edge operators and 0 for the others.
`default_nettype none

module ostrel_match #(
    parameter integer WIDTH = 32
) (
    input  wire               clk,
    input  wire               sample,       // cur holds a new sample.
    input  wire               seen,         // A sample of this run came before it.
    input  wire [WIDTH-1:0]   cur,
    input  wire [2*WIDTH+1:0] config_bits,  // invert, edge, value, mask from bit 0 on; constant during a run.
    output reg                hit
);
  wire invert = config_bits[0];
  wire edges = config_bits[1];
  wire [WIDTH-1:0] value = config_bits[2+:WIDTH];
  wire [WIDTH-1:0] mask = config_bits[2+WIDTH+:WIDTH];
  reg [WIDTH-1:0] last;
  reg levels;  // Not edges; a register of its own, so that it resets `last` without an inverter for each bit.

  wire [WIDTH-1:0] stands_out = (mask & ~value & cur & ~last) | (value & ~cur & (mask | last));

  always @(posedge clk) begin
    levels <= ~edges;
    if (levels) last <= {WIDTH{1'b0}};
    else if (sample) last <= cur;
    if (sample) hit <= (|stands_out ^ invert) & (seen | levels);
  end
endmodule

`default_nettype wire
