# Inserts a debug core into the chip. Usage: insert.tcl <folder of this example>; the project comes into the current one.
package require ost_platform
package require ost_tclwrapper

ost_design read -top chip [file join [lindex $argv 0] chip.v]
ost_design jtag bscane2 -chain 2
ost_project new -overwrite board.ost
ost_core add main
ost_trace trc_option SampleClk=clk BufferDepth=512
ost_trace trig_option DefaultRadix=hex
ost_trace add_sig {tick noise}
# Each clock has its own number, so the capture does not depend on when the core was armed.
ost_tu add -name moment -radix dec {tick == 30000}
ost_te add -expression moment
ost_project run -save
ost_project close
