# Usage: insert.tcl <file list of frame_link>; the project is made in the current folder.
package require ost_platform
package require ost_tclwrapper

ost_design read -top frame_link -f [lindex $argv 0]
ost_project new -overwrite windows.ost
ost_core add frames
ost_trace trc_option SampleClk=clk BufferDepth=128 Timestamp=on TimestampBits=32
# Several windows come with a trigger enable: only frames of a lane that is switched on count.
ost_trace trc_option TriggerEnable=on {TriggerEnableSig=lane_on[0]} TriggerEnablePri=Active_High
ost_trace trc_option CaptureMode=multiple MinimumSamplesPerTrigger=16 NumberofTriggers=8
ost_trace add_sig {u_lane0/u_parser/state rx0_valid rx0_data}
ost_tu add -name begins -radix dec {u_lane0/u_parser/state == 1}
ost_tu add -name length -radix bin {rx0_valid == 1}
ost_te add -name frame -expression "begins & length"
ost_project run -save
