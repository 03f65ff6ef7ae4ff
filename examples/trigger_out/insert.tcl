# Usage: insert.tcl <file list of frame_link>; the project is made in the current folder.
package require ost_platform
package require ost_tclwrapper

ost_design read -top frame_link -f [lindex $argv 0]
ost_project new -overwrite trigger_out.ost
ost_core add host
ost_trace trc_option SampleClk=clk BufferDepth=64
ost_trace trig_option TriggerOut=on OutNetType=IO OutNetName=scope OutNetPri=Active_Low OutNetMPW=4
ost_trace add_sig {host_addr host_read host_data}
ost_tu add -name read -radix bin {host_read == 1}
ost_te add -name host_reads -expression read
ost_project run -save
