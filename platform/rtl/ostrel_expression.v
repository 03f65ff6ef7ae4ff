// Sequencer of one trigger expression: stays in a step until the step's row bit has been 1 at `count` samples, then
// goes to the next step; completing the last one fires and starts over. Which step and how many samples are to come next
// is fetched ahead, so that the way from a row to the next state is short.
`default_nettype none

module ostrel_expression #(
    parameter integer STEPS = 1,       // Steps of the hardware; a configuration may use fewer.
    parameter integer STEP_BITS = 0,   // clog2(STEPS)
    parameter integer COUNT_BITS = 0   // clog2 of the largest count of a step
) (
    input  wire clk,
    // Outside a window's search: back to step 0, nothing counted. Meanwhile the counts are fetched: rewind for three
    // clocks or more and two clocks more of reload, after which they are left alone.
    input  wire restart,
    input  wire rewind,
    input  wire reload,
    input  wire evaluate,              // row belongs to a sample to be evaluated; never with restart.
    input  wire [STEPS-1:0] row,       // Bit s: the combination of step s holds at this sample.
    // enable, last step, count - 1 of each step, from bit 0 on; constant during a run.
    input  wire [STEP_BITS + STEPS * COUNT_BITS : 0] config_bits,
    output reg  fire,                  // One clock after the sample.
    output wire [(STEP_BITS > 0 ? STEP_BITS - 1 : 0) : 0] step  // 0 without steps.
);
  wire enable = config_bits[0];
  wire holds, counted, last;
  wire met = evaluate & holds;
  wire step_done = met & counted;

  initial fire = 1'b0;
  always @(posedge clk) fire <= step_done & last & enable;

  generate
    if (STEP_BITS > 0) begin : sequence_of_steps
      reg [STEP_BITS-1:0] step_q;
      wire [STEP_BITS-1:0] last_step = config_bits[1+:STEP_BITS];
      assign step = step_q;
      assign holds = row[step_q];
      assign last = step_q == last_step;
      always @(posedge clk)
        if (restart) step_q <= {STEP_BITS{1'b0}};
        else if (step_done) step_q <= last ? {STEP_BITS{1'b0}} : step_q + 1'b1;
    end else begin : single_step
      assign step = 1'b0;
      assign holds = row[0];
      assign last = 1'b1;
    end

    if (COUNT_BITS > 0) begin : counts
      reg [COUNT_BITS-1:0] remaining;  // Samples that the step still wants behind the next one.
      reg counted_q;                   // None.
      wire next_step;
      wire [COUNT_BITS-1:0] following;
      assign counted = counted_q;
      always @(posedge clk)
        if (next_step) begin
          remaining <= following;
          counted_q <= following == {COUNT_BITS{1'b0}};
        end else if (met) begin
          remaining <= remaining - 1'b1;
          counted_q <= remaining == {{(COUNT_BITS-1){1'b0}}, 1'b1};
        end

      if (STEP_BITS > 0) begin : of_steps
        reg [COUNT_BITS-1:0] following_q;  // Of the step behind the current one,
        reg [STEP_BITS-1:0] fetched;       // and the step behind that.
        assign following = following_q;
        assign next_step = step_done | reload;
        always @(posedge clk) begin
          if (next_step) following_q <= config_bits[1+STEP_BITS+fetched*COUNT_BITS+:COUNT_BITS];
          if (rewind) fetched <= {STEP_BITS{1'b0}};
          else if (next_step)
            fetched <= fetched == config_bits[1+:STEP_BITS] ? {STEP_BITS{1'b0}} : fetched + 1'b1;
        end
      end else begin : of_one_step
        assign following = config_bits[1+:COUNT_BITS];
        assign next_step = step_done | restart;
        wire unused = &{1'b0, rewind, reload};
      end
    end else begin : uncounted
      assign counted = 1'b1;
      wire unused = &{1'b0, rewind, reload, restart};
    end
  endgenerate
endmodule

`default_nettype wire
