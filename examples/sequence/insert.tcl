# Usage: insert.tcl <file list of frame_link>; the project is made in the current folder.
package require ost_platform
package require ost_tclwrapper

ost_design read -top frame_link -f [lindex $argv 0]
ost_project new -overwrite sequence.ost
ost_core add parser
ost_trace trc_option SampleClk=clk BufferDepth=128
set parser u_lane1/u_parser
ost_trace add_sig [list $parser/state $parser/push $parser/word $parser/frame_done]
# States of the parser: 0 HUNT, 1 LENGTH, 2 PAYLOAD, 3 CHECK.
ost_tu add -name start -radix dec [list $parser/state == 1]
ost_tu add -name payload -radix dec [list [list $parser/push $parser/state] == 10]
ost_tu add -name done -radix bin [list $parser/frame_done == 1]
ost_te add -name frame -expression "start -> payload*3 -> done"
ost_project run -save
