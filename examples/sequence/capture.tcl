# Two triggers of one core. Usage: capture.tcl <command that simulates>
package require ost_capture
foreach {text payload} {"start -> payload*3 -> done" 3 "start -> payload*2 -> done" 2} {
    set hub [ost_capture open -map sequence_debug/capture_map.json -launch [lindex $argv 0]]
    $hub arm -te "frame=$text" -position 75%
    $hub wait -timeout 60s
    set capture [$hub read]
    $hub close
    # Back from the trigger to the begin of the frame that it ends.
    set begin [lindex [$capture find start -to 0] end]
    set pushed [llength [$capture find payload -from $begin -to 0]]
    puts "$text: a frame of [expr {-$begin}] clocks, $pushed of its words pushed within the payload"
    if {$pushed < $payload} {error "expected at least $payload"}
    if {[$capture values u_lane1/u_parser/frame_done -from 0 -to 0] != 1} {error "the trigger is not at a frame's end"}
    $capture delete
}
