# Compares the lengths that the VHDL block measured with the pulses that went in. Usage: check.tcl <capture.csv>
set lines [split [string trim [read [open [lindex $argv 0]]]] \n]
foreach name [split [lindex $lines 0] ,] { set column($name) [llength [array names column]] }
set high 0
set compared {}
foreach line [lrange $lines 1 end] {
  set states([lindex [split $line ,] $column(u_meter/state)]) 1
  foreach name {pulse u_meter/valid u_meter/count} {
    scan [lindex [split $line ,] $column($name)] %x value($name)
  }
  if {$value(u_meter/valid) && $high > 0} {
    if {$value(u_meter/count) != $high} { error "measured $value(u_meter/count), the pulse had $high clocks" }
    lappend compared $high
  }
  if {$value(u_meter/valid)} { set high 0 } elseif {$value(pulse)} { incr high }
}
if {[lsort [array names states]] ne {Counting Done Idle}} { error "states in the capture: [array names states]" }
if {[llength [lsort -unique $compared]] < 8} { error "lengths in the capture: $compared" }
puts "[llength $compared] pulses of 1 to 8 clocks were measured rightly."
