# Inserts a debug core into frame_link. Usage: insert.tcl <folder of frame_link> <folder for the project>
#
# Words go missing on the link although the parsers see good frames and no queue overflows. Suspicion: the output register
# of a queue is to be loaded from two sides in one clock, from the memory (fetch) and past it (bypass).
package require ost_platform
package require ost_tclwrapper
lassign $argv example folder

cd $example
ost_design read -top frame_link -f files.f
ost_design prove on
cd $folder
ost_project new -overwrite demo.ost

ost_core add lane1
ost_trace trc_option SampleClk=clk BufferDepth=512 Timestamp=on TimestampBits=24 IncludeTrigger=on
ost_trace trig_option DefaultRadix=hex

# The way of a word: parser, queue, output; the host's tri-state bus; a counter in a generate scope. Of the queue all
# ports and registers, so that its capture can be replayed on its source alone.
set fifo u_lane1/u_fifo
ost_trace add_sig [list u_lane1/u_parser/state $fifo/fetch $fifo/bypass $fifo/write]
ost_trace add_sig [concat [ost_design ports $fifo] [ost_design ports $fifo -registers]]
ost_trace add_sig [list tx_valid tx_lane tx_last tx_data host_data {stat[1].frames}]

ost_tu add -name both_ways -radix bin [list [list $fifo/fetch $fifo/bypass] == 11]
ost_tu add -name pushing -radix bin [list $fifo/push == 1]
ost_te add -name collision -expression "both_ways & pushing"

puts -nonewline [ost_trace trc_option]
ost_project run -save
ost_project close
