# Both cores in one capture. Usage: capture.tcl <command that simulates>
package require ost_capture
set hub [ost_capture open -map clocks_debug/capture_map.json -launch [lindex $argv 0]]
$hub arm -all -position 10%
$hub wait -timeout 60s
set capture [$hub read]
$hub close
$capture write both.vcd
foreach core {link beat} {
    set stamps [$capture timestamps -core $core]
    puts "$core: [llength $stamps] samples, clocks [lindex $stamps 0] to [lindex $stamps end] after arming"
}
# The divider counts each of its clocks, and so does the core.
set before {}
foreach count [$capture values u_beat/count -core beat] {
    if {$before ne "" && $count != ($before + 1) % 128} {error "the divider went from $before to $count"}
    set before $count
}
if {[$capture values u_beat/count -core beat -from 0 -to 0] != 0} {error "the trigger is not at the divider's 0"}
