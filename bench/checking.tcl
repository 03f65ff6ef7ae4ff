# The design rules on one wide vector: the time of a check must grow with its width only. The full netlist is there
# already, so that no Yosys takes part.
source [file join [file dirname [info script]] lib.tcl]
package require ost_platform
package require ost_tclwrapper

# A vector through two levels of hierarchy: its bits are looked up in ports, connections and registers' clocks.
proc check {width} {
  set file $::work/wide$width.v
  set out [open $file w]
  puts $out "module stage(input ck, input \[[expr {$width - 1}]:0\] d, output q, output \[[expr {$width - 1}]:0\] n);
  assign n = ~d;
  reg r;
  always @(posedge ck) r <= ^d;
  assign q = r;
endmodule
module top(input clk, input \[[expr {$width - 1}]:0\] d, output q);
  stage s(.ck(clk), .d(d), .q(q), .n());
endmodule"
  close $out
  ost_design read -top top $file
  ost_project new
  ost_core add c1
  ost_trace add_sig {s/d s/n q}
  ost_trace trc_option SampleClk=s/ck BufferDepth=16
  ost_tu add {q == 1}
  ost_te add -expression TU1
  ost_project run -drc
  for {set i 0} {$i < 5} {incr i} { lappend times [cpu {ost_project run -drc}] }
  ost_project close -force
  median $times
}
set half [check 32768]
timeRow "check a vector of 65536 bits" [check 65536] "twice one of 32768 bits" [expr {2 * $half}] 1.3
