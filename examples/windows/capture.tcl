# The distances of frames. Usage: capture.tcl <command that simulates>
package require ost_capture
set hub [ost_capture open -map windows_debug/capture_map.json -launch [lindex $argv 0]]
$hub arm -position 4
$hub wait -timeout 60s
set capture [$hub read]
$hub close
set windows [dict get [$capture info] cores frames windows]
set before ""
for {set window 0} {$window < $windows} {incr window} {
    set clock [$capture timestamps -window $window -from 0 -to 0]
    set length [$capture values rx0_data -window $window -from 0 -to 0]
    if {$before ne ""} {puts "window $window: a frame of $length bytes, [expr {$clock - $before}] clocks after the one before"}
    if {[$capture values u_lane0/u_parser/state -window $window -from 0 -to 0] != 1} {error "window $window: wrong trigger"}
    if {$before ne "" && $clock - $before < 16} {error "windows overlap"}
    set before $clock
}
if {$windows != 8} {error "$windows windows"}
