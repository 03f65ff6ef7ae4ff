# Growth: the time of one item must hardly depend on how many there are. Each operation is timed at 1,000, 10,000 and
# 100,000 items. Nobody traces more than 10,000; beyond that, plain containers are sufficient, although they wait for memory.
source [file join [file dirname [info script]] lib.tcl]
source [file join [file dirname [info script]] designs.tcl]
package require ost_platform
package require ost_tclwrapper

set blocks 100
set perBlock 1000
signalNetlist $work/signals.json $blocks $perBlock
ost_design read $work/signals.json
set project $work/growth.ost

set open 0
proc fresh {} {
  if {$::open} { ost_project close -force }
  set ::open 1
  ost_project new -overwrite $::project
  ost_core add core1
}
# Runs the script and notes its processor time per item.
proc timed {operation size items script} {
  lappend ::times($operation,$size) [expr {[uplevel 1 [list cpu $script]] / $items}]
  if {$operation ni $::operations} { lappend ::operations $operation }
}
set operations {}

proc signalNames {count} {
  global perBlock
  set names {}
  for {set i 0} {$i < $count} {incr i} { lappend names u_block[expr {$i / $perBlock}]/sig_[expr {$i % $perBlock}] }
  return $names
}
proc shuffled {names} {
  set seed 1
  for {set i [expr {[llength $names] - 1}]} {$i > 0} {incr i -1} {
    set seed [expr {($seed * 1103515245 + 12345) & 0x7fffffff}]
    set j [expr {$seed % ($i + 1)}]
    set other [lindex $names $j]
    lset names $j [lindex $names $i]
    lset names $i $other
  }
  return $names
}

proc signalRound {size} {
  global project
  set names [signalNames $size]
  set mixed [shuffled $names]
  set last [lindex $names end]

  fresh
  timed "add, one call" $size $size { ost_trace add_sig $names }
  timed "list" $size $size { ost_trace list_sig }
  timed "move all, one call" $size $size { ost_trace move_sig -move_to <1> $names }
  timed "group all, one call" $size $size { ost_trace group -bus all $names }
  timed "ungroup" $size $size { ost_trace ungroup all }
  timed "save" $size $size { ost_project save }
  ost_project close
  timed "open" $size $size { ost_project open $project }
  timed "delete all, one call" $size $size { ost_trace del_sig $names }

  fresh
  timed "add, a call each" $size $size { foreach name $names { ost_trace add_sig $name } }
  timed "move to the end, a call each" $size $size { foreach name $names { ost_trace move_sig -move_to <.end.> $name } }
  timed "move before another, a call each" $size $size {
    foreach name $names { if {$name ne $last} { ost_trace move_sig -move_to $last $name } }
  }
  timed "group by ten, a call each" $size $size {
    for {set i 0} {$i < $size} {incr i 10} { ost_trace group [lrange $names $i [expr {$i + 9}]] }
  }
  timed "delete, a call each" $size $size { foreach name $names { ost_trace del_sig $name } }

  ost_trace add_sig $names
  timed "move in random order" $size $size { ost_trace move_sig $mixed }
  timed "delete in random order" $size $size { ost_trace del_sig $mixed }
}

proc unitRound {size} {
  set names {}
  for {set i 1} {$i <= $size} {incr i} { lappend names TU$i }
  fresh
  timed "trigger units: add" $size $size {
    for {set i 0} {$i < $size} {incr i} {
      ost_tu add [list u_block[expr {$i / 1000}]/sig_[expr {$i % 1000}] == 1]
    }
  }
  timed "trigger units: list" $size $size { ost_tu list }
  timed "trigger units: save" $size $size { ost_project save }
  ost_project close
  timed "trigger units: open" $size $size { ost_project open $::project }
  timed "trigger units: rename" $size $size { foreach name $names { ost_tu rename $name new_$name } }
  timed "trigger units: delete" $size $size { foreach name $names { ost_tu remove new_$name } }
}

# Sizes take turns, so that what else the machine does meets all of them.
for {set round 0} {$round < ($full ? 5 : 3)} {incr round} {
  foreach {size repeat} {1000 4 10000 1 100000 1} {
    for {set i 0} {$i < $repeat} {incr i} { signalRound $size }
    if {$size <= 10000} { for {set i 0} {$i < $repeat} {incr i} { unitRound $size } }
  }
}
foreach operation $operations {
  set what [expr {[string match "trigger units*" $operation] ? $operation : "signals: $operation"}]
  foreach {size aim} {10000 1.3 100000 3} {
    if {![info exists times($operation,$size)]} continue
    timeRow "$what, each of $size" [median $times($operation,$size)] "each of 1000" [median $times($operation,1000)] $aim
  }
}
ost_project close -force
