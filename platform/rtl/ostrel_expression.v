// Sequencer of one trigger expression: stays in a step until the step's row bit has been 1 at `count` samples, then
// goes to the next step; completing the last one fires and starts over.
`default_nettype none

module ostrel_expression #(
    parameter integer STEPS = 1,       // Steps of the hardware; a configuration may use fewer.
    parameter integer STEP_BITS = 0,   // clog2(STEPS)
    parameter integer COUNT_BITS = 0   // clog2 of the largest count of a step
) (
    input  wire clk,
    input  wire restart,               // Outside a window's search: back to step 0, nothing counted.
    input  wire evaluate,              // row belongs to a sample to be evaluated; never with restart.
    input  wire [STEPS-1:0] row,       // Bit s: the combination of step s holds at this sample.
    // enable, last step, count - 1 of each step, from bit 0 on; constant during a run.
    input  wire [STEP_BITS + STEPS * COUNT_BITS : 0] config_bits,
    output wire fire,
    output wire [(STEP_BITS > 0 ? STEP_BITS - 1 : 0) : 0] step  // 0 without steps.
);
  wire enable = config_bits[0];
  wire holds, step_done, last;

  generate
    if (STEP_BITS > 0) begin : sequence_of_steps
      reg [STEP_BITS-1:0] step_q;
      assign step = step_q;
      assign holds = row[step_q];
      assign last = step_q == config_bits[1+:STEP_BITS];
      always @(posedge clk)
        if (restart) step_q <= {STEP_BITS{1'b0}};
        else if (step_done) step_q <= last ? {STEP_BITS{1'b0}} : step_q + 1'b1;
    end else begin : single_step
      assign step = 1'b0;
      assign holds = row[0];
      assign last = 1'b1;
    end

    if (COUNT_BITS > 0) begin : counted
      reg [COUNT_BITS-1:0] count;
      wire [COUNT_BITS-1:0] target = config_bits[1+STEP_BITS+step*COUNT_BITS+:COUNT_BITS];
      assign step_done = evaluate & holds & count == target;
      always @(posedge clk)
        if (restart) count <= {COUNT_BITS{1'b0}};
        else if (evaluate & holds) count <= step_done ? {COUNT_BITS{1'b0}} : count + 1'b1;
    end else begin : uncounted
      assign step_done = evaluate & holds;
      wire unused = &{1'b0, clk, restart};
    end
  endgenerate

  assign fire = step_done & last & enable;
endmodule

`default_nettype wire
