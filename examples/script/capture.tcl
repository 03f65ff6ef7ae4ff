# Catches the demo's bug and says which words it loses. Usage: capture.tcl <folder of the demo> <file for the waveform>
package require ost_capture
lassign $argv folder waveform
set waveform [file normalize $waveform]
cd $folder

set hub [ost_capture open -map demo_debug/capture_map.json -launch "vvp -n debug.vvp +ostrel_half_period=6"]
$hub arm -core lane1 -position 25%
if {[catch {$hub wait -timeout 60s} text]} {
    puts stderr $text
    exit 1
}
set capture [$hub read]
$hub close

foreach sample [$capture find {both_ways & pushing}] {
    set clock [$capture timestamps -from $sample -to $sample]
    set word [$capture values u_lane1/u_fifo/push_word -from $sample -to $sample -radix Hex]
    puts "lost $word at clock $clock of the run, sample $sample"
}
$capture write $waveform
