# Usage: insert.tcl <file list of frame_link>; the project is made in the current folder.
package require ost_platform
package require ost_tclwrapper

ost_design read -top frame_link -f [lindex $argv 0]
ost_project new -overwrite first.ost
ost_core add output
ost_trace trc_option SampleClk=clk BufferDepth=64
ost_trace add_sig {tx_valid tx_last tx_lane tx_data}
ost_tu add -name word -radix bin {tx_valid == 1}
ost_tu add -name last -radix bin {tx_last == 1}
ost_te add -name frame_end -expression "word & last"
ost_project run -save
