# Prints the words around the end of a frame. Usage: capture.tcl <command that simulates>
package require ost_capture
set hub [ost_capture open -map first_debug/capture_map.json -launch [lindex $argv 0]]
$hub arm -position 50%
$hub wait -timeout 60s
set capture [$hub read]
$hub close
foreach valid [$capture values tx_valid] last [$capture values tx_last] word [$capture values tx_data -radix Hex] {
    if {$valid} {puts -nonewline "$word[expr {$last ? "\n" : " "}]"}
}
puts ""
if {[$capture values tx_last -from 0 -to 0] != 1} {error "the trigger is not at the end of a frame"}
