# One capture, and what the scope saw. Usage: capture.tcl <command that simulates>
package require ost_capture
set hub [ost_capture open -map trigger_out_debug/capture_map.json -launch [lindex $argv 0]]
$hub arm -position 50%
$hub wait -timeout 60s
set capture [$hub read]
$hub close
if {[$capture values host_read -from 0 -to 0] != 1} {error "the trigger is not at a read"}
set scope [open scope.txt]
set pulses [split [string trim [read $scope]] \n]
close $scope
puts "The host reads address [$capture values host_addr -from 0 -to 0]; the scope saw pulses of these lengths: $pulses"
if {$pulses ne "4"} {error "expected one pulse of 4 clocks"}
