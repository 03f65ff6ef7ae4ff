// For simulators only, not part of the hardware: between the design and the core, x and z become a known level. So the
// whole core is 0 or 1, and neither a CRC nor the state of a run can become unknown.
`ifndef SYNTHESIS
`default_nettype none

module ostrel_known #(
    parameter integer WIDTH = 1,
    parameter [0:0] UNKNOWN = 1'b0  // What x and z become.
) (
    input  wire [WIDTH-1:0] in,
    output wire [WIDTH-1:0] out
);
  function [WIDTH-1:0] known(input [WIDTH-1:0] levels);
    integer i;
    begin
      known = levels;
      // Bit by bit only when needed.
      if ((^levels) === 1'bx)
        for (i = 0; i < WIDTH; i = i + 1) known[i] = levels[i] === ~UNKNOWN ? ~UNKNOWN : UNKNOWN;
    end
  endfunction
  assign out = known(in);
endmodule

`default_nettype wire
`endif
