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
    parameter integer WIDTH = 32,
    parameter integer STAGES = 1  // Clocks from cur to hit, 1 or 2; with 2, groups of GROUP bits are compared first.
) (
    input  wire               clk,
    input  wire               sample,          // cur holds a new sample.
    input  wire               previous_valid,  // This is not the first sample of the run.
    input  wire [WIDTH-1:0]   cur,
    input  wire [2*WIDTH+1:0] config_bits,     // invert, edge, value, mask from bit 0 on; constant during a run.
    output wire               hit
);
  localparam integer GROUP = STAGES > 1 ? 16 : WIDTH;
  localparam integer GROUPS = (WIDTH + GROUP - 1) / GROUP;
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
  end

  wire valid = previous_valid | level_op;
  wire [GROUPS-1:0] differs;
  wire hit_now;
  reg hit_q;
  genvar i;
  generate
    for (i = 0; i < GROUPS; i = i + 1) begin : group
      localparam integer BITS = WIDTH - i * GROUP < GROUP ? WIDTH - i * GROUP : GROUP;
      assign differs[i] = |mismatch[i*GROUP+:BITS];
    end
    if (STAGES > 1) begin : two_stages
      reg [GROUPS-1:0] differs_q;
      reg valid_q;
      always @(posedge clk) begin
        differs_q <= differs;
        valid_q <= valid;
      end
      assign hit_now = (|differs_q ^ invert) & valid_q;
    end else begin : one_stage
      assign hit_now = (differs ^ invert) & valid;
    end
  endgenerate
  always @(posedge clk) hit_q <= hit_now;
  assign hit = hit_q;
endmodule

`default_nettype wire
