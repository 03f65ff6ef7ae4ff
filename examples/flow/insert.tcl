# Usage: insert.tcl <folder of frame_link> <name of the project> <way to the chip>; exit status 1 when nothing was inserted.
package require ost_platform
package require ost_tclwrapper
lassign $argv source project way

ost_design read -top frame_link -f $source/files.f
ost_design jtag $way
ost_project new -overwrite $project.ost
ost_core add lane1
ost_trace trc_option SampleClk=clk BufferDepth=1024
ost_trace add_sig {u_lane1/u_fifo/push u_lane1/u_fifo/push_word u_lane1/u_fifo/stored tx_valid tx_data}
ost_tu add -name pushing -radix bin {u_lane1/u_fifo/push == 1}
ost_te add -name push -expression pushing
ost_project run -save
