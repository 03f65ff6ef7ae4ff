# Memory of the service for each traced signal: the peak of the process while signals are added, beyond what it had with
# the design loaded and the names at hand.
source [file join [file dirname [info script]] lib.tcl]
source [file join [file dirname [info script]] designs.tcl]
package require ost_platform
package require ost_tclwrapper

set count 100000
signalNetlist $work/memory.json 100 1000
ost_design read $work/memory.json
set names {}
for {set i 0} {$i < $count} {incr i} { lappend names u_block[expr {$i / 1000}]/sig_[expr {$i % 1000}] }
string length $names  ;# The list's text is the script's, not the service's.
ost_project new
# One call each first: what one call frees would serve the other.
foreach {core what script} {
  call_each "a call each" { foreach name $names { ost_trace add_sig $name } }
  one_call "one call" { ost_trace add_sig $names }
} {
  ost_core add $core
  ost_core select $core
  set peak [peakMemory $script]
  limitRow "memory a traced signal, $count, $what" [expr {double($peak) / $count}] 400 bytes "peak of the process" \
    "names of [expr {[string length $names] / $count - 1}] bytes"
}
