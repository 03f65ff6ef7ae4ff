# Writes a block, reads it back, and watches what the system's own master does meanwhile. Usage: registers.tcl <folder of
# the run>
package require ost_capture
cd [lindex $argv 0]
set hub [ost_capture open -map pwm_debug/capture_map.json -launch "vvp -n debug.vvp"]
set before [$hub wb read 0x000]
set words {}
for {set i 1} {$i < 64} {incr i} {lappend words [format 0x%08x [expr {$i * 0x01010101}]]}
$hub wb write 0x004 {*}$words
if {[$hub wb read 0x004 63] ne $words} {error "the memory holds other words"}
puts "63 words written and read"
set after [$hub wb read 0x000]
puts [expr {$after > $before ? "the system's own master works on" : "the system's own master stands still"}]
if {[catch {$hub wb read 0x208} text options]} {puts "$text [dict get $options -errorcode]"}
$hub close
