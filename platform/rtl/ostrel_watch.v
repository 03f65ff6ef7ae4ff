// For simulators only, no part of the hardware: says once when a net that a core looks at is x or z in a run. It sleeps
// while the net is known. (Verilator knows no x; for synthesis that does not define the macro there are the comments.)
`ifndef SYNTHESIS
`ifndef VERILATOR
// synthesis translate_off
`default_nettype none

module ostrel_watch #(
    parameter integer WIDTH = 1,
    parameter integer ENABLE = 0,  // 1: the net is an enable of the core, 0: a net that it samples.
    parameter CORE = "",
    parameter NET = ""
) (
    input wire             clk,
    input wire             due,    // The levels at the edge before counted.
    input wire [WIDTH-1:0] levels
);
  wire unknown = (^levels) === 1'bx;
  reg was_unknown, told;
  time at;
  initial begin
    was_unknown = 1'b0;
    told = 1'b0;
  end
  always begin
    wait (!told && (unknown || was_unknown));
    @(posedge clk);
    told = was_unknown && due === 1'b1;
    if (told && ENABLE != 0)
      $display("ostrel: core %0s: the enable %0s is x or z at %0t; wherever it is, it counts as inactive.", CORE, NET, at);
    else if (told)
      $display("ostrel: core %0s: %0s is x or z at %0t; wherever it is, it is captured as 0 and no unit holds by it.",
               CORE, NET, at);
    was_unknown = unknown;
    at = $time;
  end
endmodule

`default_nettype wire
// synthesis translate_on
`endif
`endif
