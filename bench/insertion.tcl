# Insertion: `ost_project run` on a checked project beside Yosys, which reads the netlist without the core, runs the same
# passes and writes it as Verilog; and what the service's own part grows with.
source [file join [file dirname [info script]] lib.tcl]
source [file join [file dirname [info script]] designs.tcl]
package require ost_platform
package require ost_tclwrapper
set yosys [expr {[info exists env(OST_YOSYS)] ? $env(OST_YOSYS) : "yosys"}]

proc project {name probes} {
  global work
  ost_project new -overwrite $work/$name.ost
  ost_core add core1
  ost_trace trc_option SampleClk=clk BufferDepth=1024
  set signals {}
  for {set i 0} {$i < $probes} {incr i} { lappend signals u_unit[expr {$i / 16 % 4}]/r[expr {$i % 16 + 16 * ($i / 64)}] }
  ost_trace add_sig $signals
  ost_tu add -name first {u_unit0/state == 010}
  ost_te add -name hit -expression first
  ost_project run -drc
}
# Processor time of an insertion, in all and the service's own.
proc insertion {} {
  set children [childCpu { set own [cpu { ost_project run -save }] }]
  list [expr {$own + $children}] $own
}
proc yosysAlone {} {
  global work yosys
  set script "read_json $work/plain.json; opt_expr -mux_bool -keepdc; opt_reduce; opt_expr -keepdc; opt_merge; opt_clean;\
    write_verilog $work/plain_out.v"
  childCpu { exec $yosys -q -p $script }
}

foreach size [expr {$full ? {50000 500000} : {5000 20000}}] {
  logicDesign $work/insert.v $size
  ost_design read -top bench_top $work/insert.v
  set nets [dict get [ost_design info] nets]
  exec $yosys -q -p "read_verilog $work/insert.v; hierarchy -check -top bench_top; proc; write_json $work/plain.json"
  project insert 16
  unset -nocomplain all own alone
  for {set i 0} {$i < ($size > 100000 ? 1 : 2)} {incr i} {
    lassign [insertion] total self
    lappend all $total
    lappend own $self
    lappend alone [yosysAlone]
  }
  set part [median $own]
  timeRow "insert 16 vectors into $nets nets" [median $all] "Yosys alone" [median $alone] 1.25
  timeRow "  of that the service itself" $part "Yosys alone" [median $alone]
  ost_project close -force
  foreach probes {128 448} {
    project probes$probes $probes
    timeRow "  the service itself, $probes vectors" [lindex [insertion] 1] "16 vectors" $part
    ost_project close -force
  }
  if {[info exists before]} {
    timeRow "  the service itself, $nets nets" $part "$beforeNets nets" $before
  }
  set before $part
  set beforeNets $nets
}
