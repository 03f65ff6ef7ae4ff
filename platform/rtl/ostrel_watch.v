// For simulators only, not part of the hardware: reports once when a net that a core samples is x or z in a run. It is
// idle while the net is known. (Verilator has no x; the comments are for synthesis that does not define the macro.)
`ifndef SYNTHESIS
`ifndef VERILATOR
// synthesis translate_off
`default_nettype none

module ostrel_watch #(
    parameter integer WIDTH = 1,
    parameter integer ENABLE = 0,  // 1: the net is an enable of the core; 0: a net that it samples.
    parameter CORE = "",
    parameter NET = ""
) (
    input wire             clk,
    input wire             sampled,  // The levels at the previous edge were those of a sample.
    input wire [WIDTH-1:0] levels
);
  wire unknown = (^levels) === 1'bx;
  reg was_unknown, reported;
  time at;
  initial begin
    was_unknown = 1'b0;
    reported = 1'b0;
  end
  always begin
    wait (!reported && (unknown || was_unknown));
    @(posedge clk);
    reported = was_unknown && sampled === 1'b1;
    if (reported && ENABLE != 0)
      $display("ostrel: core %0s: the enable %0s is x or z at %0t; while it is, it counts as inactive.", CORE, NET,
               at);
    else if (reported)
      $display("ostrel: core %0s: %0s is x or z at %0t; while it is, it is captured as 0 and makes no unit hold.",
               CORE, NET, at);
    was_unknown = unknown;
    at = $time;
  end
endmodule

`default_nettype wire
// synthesis translate_on
`endif
`endif
