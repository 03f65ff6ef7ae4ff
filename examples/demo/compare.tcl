# Compares a capture (CSV of ost_capture) with the record of the source's own simulation, sample by sample.
# Usage: compare.tcl <capture.csv> <record.txt>; exit status 1 when anything differs.
lassign $argv captureFile recordFile

proc linesOf {file} {
  set channel [open $file]
  set lines [split [string trimright [read $channel] \n] \n]
  close $channel
  return $lines
}
proc fail {text} {
  puts stderr "compare: $text"
  exit 1
}

set captureLines [linesOf $captureFile]
set recordLines [linesOf $recordFile]
set nets [lindex $recordLines 0]
set recordLines [lrange $recordLines 1 end]

# Columns of the capture by name.
set header [split [lindex $captureLines 0] ,]
foreach name [concat sample timestamp $nets {both_ways pushing}] {
  set column($name) [lsearch -exact $header $name]
  if {$column($name) < 0} { fail "the capture has no column \"$name\"; it has: $header" }
}

set window {}
set trigger -1
set before ""
foreach line [lrange $captureLines 1 end] {
  set fields [split $line ,]
  if {[lindex $fields $column(sample)] == 0} { set trigger [llength $window] }
  set stamp [lindex $fields $column(timestamp)]
  if {$before ne "" && $stamp != $before + 1} { fail "timestamp $stamp follows $before" }
  set before $stamp
  set values {}
  foreach name $nets { lappend values [lindex $fields $column($name)] }
  lappend window $values
  lappend states [list [lindex $fields $column(both_ways)] [lindex $fields $column(pushing)]]
}
if {$trigger < 0} { fail "the capture has no trigger sample" }
if {[llength $window] != 512} { fail "the capture has [llength $window] samples, not 512" }

# The window must occur in the record at exactly one place: begin where its trigger sample is.
set places {}
foreach at [lsearch -all -exact $recordLines [lindex $window $trigger]] {
  set first [expr {$at - $trigger}]
  if {$first >= 0 && [lrange $recordLines $first [expr {$first + [llength $window] - 1}]] eq $window} {
    lappend places $first
  }
}
if {[llength $places] != 1} { fail "the captured window stands at [llength $places] places of the record, not at one" }
set first [lindex $places 0]

# The states of the trigger units, computed from the record; the first time both hold after the prefill is the trigger.
proc valueOf {name values} { lindex $values [lsearch -exact $::nets $name] }
set hits {}
set index 0
foreach values $window state $states {
  set both [expr {[valueOf u_lane1/u_fifo/fetch $values] && [valueOf u_lane1/u_fifo/bypass $values]}]
  set push [valueOf u_lane1/u_fifo/push $values]
  if {$state ne [list $both $push]} { fail "sample $index: unit states $state, the record says [list $both $push]" }
  if {$both && $push && $index <= $trigger} { lappend hits $index }
  incr index
}
if {[lindex $hits end] != $trigger} { fail "the trigger sample is $trigger, the record has the condition at: $hits" }

set moved {}
foreach name $nets {
  foreach values $window { set seen($name,[valueOf $name $values]) 1 }
  if {[array size seen] > 1} { lappend moved $name }
  array unset seen
}
if {[llength $moved] < [llength $nets] - 2} { fail "only these nets changed in the window: $moved" }

puts "[llength $window] samples of [llength $nets] nets equal the simulator's record of the source, from clock $first\
  on; [llength $moved] of the nets changed."
puts "trigger at clock [expr {$first + $trigger}]"
puts "lost [valueOf u_lane1/u_fifo/push_word [lindex $window $trigger]]"
puts "taken [valueOf u_lane1/u_fifo/out_word [lindex $window [expr {$trigger + 1}]]]"
