// Trigger unit of class Order: unsigned == != < <= > >=. One comparison serves as < and <=; > and >= are their inverses.
`default_nettype none

module ostrel_order #(
    parameter integer WIDTH = 32,
    parameter integer STAGES = 1  // Clocks from cur to hit, 1 or 2; with 2, groups of GROUP bits are compared first.
) (
    input  wire             clk,
    input  wire [WIDTH-1:0] cur,
    input  wire [WIDTH+2:0] config_bits,  // invert, equal, or-equal, value from bit 0 on; constant during a run.
    output wire             hit
);
  localparam integer GROUP = STAGES > 1 ? 16 : WIDTH;
  localparam integer GROUPS = (WIDTH + GROUP - 1) / GROUP;
  wire invert = config_bits[0];
  wire equal = config_bits[1];
  wire or_equal = config_bits[2];
  wire [WIDTH-1:0] value = config_bits[3+:WIDTH];

  wire [GROUPS-1:0] below, same;
  wire less, all_same;
  reg hit_q;
  genvar i;
  generate
    for (i = 0; i < GROUPS; i = i + 1) begin : group
      localparam integer BITS = WIDTH - i * GROUP < GROUP ? WIDTH - i * GROUP : GROUP;
      assign below[i] = cur[i*GROUP+:BITS] < value[i*GROUP+:BITS];
      assign same[i] = cur[i*GROUP+:BITS] == value[i*GROUP+:BITS];
    end
    if (STAGES > 1) begin : two_stages
      reg [GROUPS-1:0] below_q, same_q;
      always @(posedge clk) begin
        below_q <= below;
        same_q <= same;
      end
      // Each group as one digit of two numbers: 0 and 1 where it is below, equal ones where it is the same.
      assign less = {~(below_q | same_q), 1'b0} < {below_q, or_equal};
      assign all_same = &same_q;
    end else begin : one_stage
      assign less = below | (same & or_equal);
      assign all_same = same;
    end
  endgenerate

  always @(posedge clk) hit_q <= (equal ? all_same : less) ^ invert;
  assign hit = hit_q;
endmodule

`default_nettype wire
