# Reading a design: `ost_design read` beside Yosys alone, which reads the same sources and writes its netlist; memory of
# the service a net; and that unchanged sources are not read twice.
source [file join [file dirname [info script]] lib.tcl]
source [file join [file dirname [info script]] designs.tcl]
package require ost_platform
package require ost_tclwrapper

# Counts the runs of Yosys.
set real [expr {[info exists env(OST_YOSYS)] ? $env(OST_YOSYS) : "yosys"}]
set counter [file join $work counted_yosys]
set channel [open $counter w 0755]
puts $channel "#!/bin/sh\necho run >>'$work/yosys_runs'\nexec $real \"\$@\""
close $channel
set env(OST_YOSYS) $counter
proc runs {} {
  if {![file exists $::work/yosys_runs]} { return 0 }
  expr {[file size $::work/yosys_runs] / 4}
}

proc yosysAlone {source} {
  childCpu {
    exec $::real -q -p "read_verilog $source; hierarchy -check -top bench_top; proc; write_json $::work/alone.json"
  }
}
proc serviceRead {source} {
  ost_design close
  set children [childCpu { set self [cpu { ost_design read -top bench_top $source }] }]
  list [expr {$self + $children}] $self
}

# All processor time, that of Yosys included; medians of `rounds`, taken in turns.
proc compare {what source rounds} {
  for {set i 0} {$i < $rounds} {incr i} {
    lappend alone [yosysAlone $source]
    lassign [serviceRead $source] total self
    lappend read $total
    lappend own $self
  }
  timeRow "read $what" [median $read] "Yosys alone" [median $alone] 1
  timeRow "  of that the service itself" [median $own] "Yosys alone" [median $alone]
}

# The largest first, in a process that has not read anything yet: memory that was freed once would hide what a read takes.
set sizes [expr {$full ? {500000 50000} : {50000}}]
logicDesign $work/logic.v [lindex $sizes 0]
set peak [peakMemory { ost_design read -top bench_top $work/logic.v }]
set nets [dict get [ost_design info] nets]
limitRow "memory a net, $nets nets" [expr {double($peak) / $nets}] 600 bytes "peak of the process" \
  "[dict get [ost_design info] bits] bits"
foreach size $sizes {
  logicDesign $work/logic.v $size
  compare "about $size nets" $work/logic.v [expr {$size > 100000 ? 1 : 2}]
}
memoryDesign $work/memory.v 16
compare "16 memories of 64 Kbit" $work/memory.v 5

# Two projects on the same sources.
logicDesign $work/small.v 2000
proc checkedProject {name} {
  global work
  ost_design read -top bench_top $work/small.v
  ost_project new -overwrite $work/$name.ost
  ost_core add core1
  ost_trace trc_option SampleClk=clk BufferDepth=16
  ost_trace add_sig {link1 u_unit0/state}
  ost_tu add -name first {link1[0] == 1}
  ost_te add -name hit -expression first
  ost_project run -drc -save
  ost_project close -force
}
ost_design close
set before [runs]
checkedProject first
set first [expr {[runs] - $before}]
checkedProject second
set second [expr {[runs] - $before - $first}]
factRow "second project, same sources: runs of Yosys" $second "first project" $first [expr {$second == 0 && $first > 0}] "0"
note "the first project's runs are the names when the design is read and the full netlist when it is checked"
