# Inserts a debug core into pulses. Usage: insert.tcl <this folder> <folder for the project>
package require ost_platform
package require ost_tclwrapper
lassign $argv example folder
cd $example
ost_design read -f files.f
ost_design prove on
cd $folder
ost_project new -overwrite vhdl.ost
ost_core add meter
ost_trace trc_option SampleClk=clk BufferDepth=512
ost_trace trig_option DefaultRadix=hex
# Names of VHDL have no case.
ost_trace add_sig {phase pulse u_meter/STATE u_meter/Count u_meter/valid}
ost_tu add -name long -radix bin {u_meter/Count == 01000}
ost_tu add -name measured {u_meter/State == Done}
ost_te add -name eight -expression {long & measured}
ost_project run -save
