# Usage: insert.tcl <file list of frame_link>; the project is made in the current folder.
package require ost_platform
package require ost_tclwrapper

ost_design read -top frame_link -f [lindex $argv 0]
ost_project new -overwrite clocks.ost
ost_core add link
ost_trace trc_option -core link SampleClk=clk BufferDepth=64 Timestamp=on TimestampBits=24
ost_trace add_sig -core link {tx_valid tx_data beat_sync}
ost_tu add -core link -name word -radix bin {tx_valid == 1}
ost_te add -core link -name any_word -expression word

ost_core add beat
ost_trace trc_option -core beat SampleClk=ref_clk BufferDepth=256 Timestamp=on TimestampBits=24
ost_trace add_sig -core beat {u_beat/count u_beat/beat}
ost_tu add -core beat -name wrapped -radix dec {u_beat/count == 0}
ost_te add -core beat -name full_turn -expression wrapped
ost_project run -save
