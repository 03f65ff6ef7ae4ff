# The installed copy by itself: inserts into a design and finds the reader that reads it.
# Usage: installed.tcl <prefix> <Verilog file> <work folder>
lassign $argv prefix source folder
lappend auto_path $prefix/lib
package require ost_tclwrapper
package require ost_platform
package require ost_capture

ost_design read -top steps [file normalize $source]
file delete -force $folder
file mkdir $folder
cd $folder
ost_project new installed.ost
ost_core add c1
ost_trace trc_option SampleClk=clk
ost_trace add_sig {u_ctl/state busy}
ost_tu add -name TU1 {busy == 1}
ost_te add -name TE1 -expression TU1
ost_project run -save

set help [exec $prefix/bin/ost_capture -help]
foreach {found what} [list \
  [file exists installed_debug/ostrel_debug.v] "no debug core was written" \
  [string match "*ost_capture*-map*" $help] "the reader does not tell its usage" \
  [file exists $prefix/share/ost_tclwrapper/ostrel_jtag_sim.v] "the JTAG model is missing" \
  [file exists $prefix/share/doc/ost_tclwrapper/reference.md] "the reference is missing"] {
  if {!$found} { error $what }
}
