# Runs a design's script with its reads and runs measured: each run without the proof, twice, and with it.
# Usage: insert.tcl SCRIPT PROJECT REPORT ?TIMEOUT?, inside the design's folder. REPORT becomes a dict: top, nets, words (of
# the read), read, insert, again, both (processor seconds, those of the children too), wall (of both), proved ("" or why not).
package require ost_platform
package require ost_tclwrapper
lassign $argv script project report timeout

# Processor seconds of this process and of the children that it waited for.
proc processorTime {} {
  set channel [open /proc/self/stat]
  set fields [lrange [lindex [split [read $channel] )] end] 11 14]
  close $channel
  return [expr "([join $fields +]) / 100.0"]
}
proc measured {what args} {
  set before [processorTime]
  try { return [uplevel 1 $args] } finally {
    dict set ::figures $what [expr {[processorTime] - $before}]
  }
}

set figures [dict create words {} proved {}]
# The script runs in an interpreter of its own, whose commands are those of this one, two of them measured.
proc Design {args} {
  global figures timeout
  if {[lindex $args 0] eq "prove"} { return [ost_design prove] }
  if {[lindex $args 0] ne "read"} { return [ost_design {*}$args] }
  dict set figures words [lrange $args 1 end]
  if {$timeout ne ""} { set args [linsert $args 1 -timeout $timeout] }
  dict set figures top [measured read ost_design {*}$args]
  dict set figures nets [dict get [ost_design info] nets]
  return [dict get $figures top]
}
proc Project {args} {
  if {[lindex $args 0] ne "run"} { return [ost_project {*}$args] }
  ost_design prove off
  measured insert ost_project {*}$args
  # A later run finds the netlist read: what it takes without the proof is what the one with the proof is compared with.
  measured again ost_project {*}$args
  ost_design prove on
  set start [clock milliseconds]
  if {[catch {measured both ost_project {*}$args} text]} { dict set ::figures proved "refused $text" }
  dict set ::figures wall [expr {([clock milliseconds] - $start) / 1000.0}]
}

set inner [interp create]
foreach package {ost_platform ost_tclwrapper} { $inner eval [list package provide $package [package present $package]] }
foreach command {ost_core ost_trace ost_tu ost_te ost_serdes} { $inner alias $command $command }
$inner alias ost_design Design
$inner alias ost_project Project
$inner eval [list set argv [list $project]]
$inner eval {set argc 1}
try { $inner eval [list source $script] } finally {
  set channel [open $report w]
  puts $channel $figures
  close $channel
}
