// Trigger unit of class Serial: compares the last LENGTH samples of one bit with a pattern. matched[i]: the newest
// i + 1 samples equal the pattern's oldest i + 1; so nothing matches before LENGTH samples of a run.
`default_nettype none

module ostrel_serial #(
    parameter integer LENGTH = 8,
    parameter integer STAGES = 1  // Clocks from cur to hit, 1 or 2.
) (
    input  wire                clk,
    input  wire                clear,        // No run: clears the history.
    input  wire                sample,       // cur holds a new sample.
    input  wire                cur,
    input  wire [2*LENGTH-1:0] config_bits,  // pattern, mask from bit 0 on, newest sample first; constant during a run.
    output wire                hit
);
  reg [LENGTH-1:0] matched;
  wire [LENGTH-1:0] matched_before;
  genvar i;

  generate
    if (LENGTH == 1) begin : single
      assign matched_before = 1'b1;
    end else begin : chain
      assign matched_before = {matched[LENGTH-2:0], 1'b1};
    end
    for (i = 0; i < LENGTH; i = i + 1) begin : stage
      wire pattern = config_bits[LENGTH-1-i];
      wire mask = config_bits[2*LENGTH-1-i];
      always @(posedge clk)
        if (clear) matched[i] <= 1'b0;
        else if (sample) matched[i] <= matched_before[i] & ~(mask & (cur ^ pattern));
    end
  endgenerate

  generate
    if (STAGES > 1) begin : two_stages
      reg hit_q;
      always @(posedge clk) hit_q <= matched[LENGTH-1];
      assign hit = hit_q;
    end else begin : one_stage
      assign hit = matched[LENGTH-1];
    end
  endgenerate
endmodule

`default_nettype wire
