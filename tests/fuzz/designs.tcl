#!/usr/bin/env tclsh
# Random designs (random_design.tcl) are inserted into, proved, linted, and simulated beside their sources. A design fails when
# the instrumented one behaves differently, cannot be read, or behaves alike and is refused by the proof. What fails is
# minimised, and left behind with the words that repeat it.
#
#   tools/in_build BUILD tclsh tests/fuzz/designs.tcl -work FOLDER ?-cases N? ?-seconds N? ?-seed N? ?-minimise SECONDS? ?-proof on|off?
#     ?-tamper N? ?-file DESIGN.v?
#
# With -tamper, N single faults are put into what each design is written as (tools/field/tamper.tcl); OST_YOSYS is
# tools/field/given_yosys then.
package require ost_platform
package require ost_tclwrapper
set here [file dirname [file normalize [info script]]]
source [file join $here random_design.tcl]
source [file join $here .. .. tools field tamper.tcl]
set beside::patience 60

array set option {-work "" -cases 1000000 -seconds 1000000 -seed 1 -file "" -minimise 120 -proof on -tamper 0}
array set option $argv
if {$option(-work) eq "" || [array size option] != 8} {
  puts stderr "usage: designs.tcl -work FOLDER ?-cases N? ?-seconds N? ?-seed N? ?-minimise SECONDS? ?-proof on|off?\
    ?-tamper N? ?-file DESIGN.v?"
  exit 2
}
set work [file normalize $option(-work)/[pid]]
set patience 60
file mkdir $work
array set count {designs 0 refused 0 bits 0 unknown 0 excused 0 vague 0 moved 0 undecided 0 byYosys 0 columns 0 lint 0 slowest 0}

proc without {list unwanted} {
  return [lmap item $list { if {$item in $unwanted} continue; set item }]
}

# Words for ost_trace add_sig: nets all over the hierarchy, whole and in part.
proc chooseProbes {} {
  set nets {}
  foreach net [ost_design nets] {
    lassign $net name width
    if {![regexp {[$]|(^|/|\.)(loop|g)\d+$|(^|/)(ca|cb|gc\d+)$|genblk} $name]} { lappend nets $name }
  }
  set chosen {}
  for {set i 0} {$i < 14 && [llength $nets]} {incr i} {
    set at [random_design::below [llength $nets]]
    lappend chosen [lindex $nets $at]
    set nets [lreplace $nets $at $at]
  }
  return $chosen
}

# A project over the design that is loaded. Probes that are not there (any more) are left out.
proc makeProject {probes} {
  ost_project new -overwrite $::work/case.ost
  foreach {core clock from} {c1 ca 0 c2 cb 10} {
    set own [lrange $probes $from [expr {$from + 9}]]
    if {$core eq "c2" && $own eq {}} break
    ost_core add $core
    ost_trace trc_option -core $core SampleClk=$clock BufferDepth=16
    foreach probe $own { catch {ost_trace add_sig -core $core [list $probe]} }
    ost_tu add -core $core -name t [list rs == 1]
    ost_te add -core $core -name e -expression t
  }
}

# One design from text to verdict: {"" ""}, or {kind what-is-wrong}. Kinds: run, lint, simulation, proof; refused is the source's
# own fault, or that of Yosys and Icarus, which read no design of some kinds.
# `only`: the kind that is of interest, when just that is to be tried.
proc check {source probes {only ""}} {
  global work count
  set file $work/case.v
  beside::writeFile $file [join $source \n]\n
  if {[catch {ost_design read -top top -timeout $::patience $file} text]} { return [list refused $text] }
  if {$probes eq "choose"} { set probes [chooseProbes] }
  set ::probes $probes
  quietly catch {ost_project close -force}
  if {[catch {quietly makeProject $probes} text]} { return [list run $text] }
  ost_design prove $::option(-proof)
  set refused ""
  set ::undecided ""
  if {[catch {quietly ost_project run -save} text]} {
    # Nets that the design rules refuse (nobody drives them) are left out.
    set bad {}
    foreach {all name} [regexp -all -inline -line {^DRC-\d+ error: [^"]*"([^"]+)"} $console::text] {
      lappend bad $name [regsub {\[-?\d+\]$} $name ""]
    }
    set fewer [without $probes $bad]
    if {$bad ne {} && $fewer ne $probes} { return [check $source $fewer $only] }
    set refused [complaint $text]
    if {![string match *proof* $refused]} { return [list run $refused] }
    ost_design prove off
    if {[catch {quietly ost_project run -save} text]} { return [list run [complaint $text]] }
  } elseif {[regexp -nocase {undecided: (module|[1-9])} $console::text]} {
    incr count(undecided)
    set ::undecided [regexp -inline -line {^Undecided: module.*} $console::text]
  }
  if {$only eq "proof" && $refused eq ""} { return {"" ""} }
  return [judge $file $refused $only [expr {$::option(-proof) eq "on" && $refused eq "" && $::undecided eq ""}]]
}

# The verdict on what cannot be read: the text, unless Yosys alone writes the design so, too.
proc spoilt {file text} {
  if {[catch {
    beside::roundTrip $::work $file top
    beside::runTool $::work/trip.build iverilog -g2005 -t null $::work/trip.v
    if {"ERROR" in [beside::verilatorKinds $::work/trip.lint [list $::work/trip.v] top]} { error lint }
  }]} { incr ::count(byYosys); return {"" ""} }
  return [list lint $text]
}
proc judge {file refused only proved} {
  global work count
  if {[catch {beside::output $work/case_debug} output]} { return [list run "the output cannot be read: $output"] }
  if {$only in {"" lint}} {
    set new [beside::newKinds $work $output [list $file]]
    incr count(lint) [llength $new]
    # What Verilator has not learnt yet is no fault of the text.
    if {"ERROR" in $new && "ERRORUNSUPPORTED" ni $new} { return [spoilt $file "Verilator finds an error"] }
  }
  set bench [beside::bench top [dict get $output ports] {ca cb} {rn 0 rs 1} 1 1]
  if {[catch {
    beside::judge $work $output [list -g2005 $file] $bench field_tb.dut {field_tb.dut.ca field_tb.dut.cb} 400 $proved
  } result]} {
    if {[string match *source.build* $result]} { return [list refused $result] }
    return [spoilt $file $result]
  }
  foreach key {bits unknown excused vague moved columns byYosys} { incr count($key) [dict get $result $key] }
  if {[dict get $result rows] < 400} { return [list simulation "only [dict get $result rows] rows were recorded"] }
  if {[dict get $result differences] ne {} && ![dict get $result byYosys]} {
    return [list simulation "row, net, source, instrumented: [lindex [dict get $result differences] 0]"]
  }
  return [expr {$refused eq "" ? {"" ""} : [list proof $refused]}]
}

# `list` without all items that `holds` (a script for apply) can do without: halves first, single ones last.
proc shrink {list holds} {
  for {set size [expr {([llength $list] + 1) / 2}]} {$size > 0} {set size [expr {$size / 2}]} {
    for {set end [llength $list]} {$end > 0} {incr end -$size} {
      set fewer [lreplace $list [expr {max(0, $end - $size)}] [expr {$end - 1}]]
      if {[uplevel #0 [list apply $holds $fewer]]} { set list $fewer }
    }
  }
  return $list
}
# The smallest text that still fails in the same way: with fewer probes and lines, and with parentheses taken for 0.
proc minimise {source kind} {
  set ::limit [expr {[clock seconds] + $::option(-minimise)}]
  set same "\[clock seconds\] < \$::limit && \[lindex \[check \$source \$probes $kind\] 0\] eq {$kind}"
  set probes [shrink $::probes [list probes "set source [list $source]; expr {$same}"]]
  set holds [list source "set probes [list $probes]; expr {$same}"]
  for {set before ""} {$before ne $source} {} {
    set before $source
    set source [shrink $source $holds]
    for {set line 0} {$line < [llength $source]} {incr line} {
      set from 0
      while {[regexp -start $from -indices {\([^()]*\)} [lindex $source $line] place]} {
        set from [expr {[lindex $place 0] + 1}]
        set shorter [lreplace $source $line $line [string replace [lindex $source $line] {*}$place 1'b0]]
        if {[apply $holds $shorter]} { set source $shorter; set from 0 }
      }
    }
  }
  set ::probes $probes
  return $source
}

proc fails {name source verdict} {
  lassign $verdict kind text
  puts stderr "designs: $name: $kind: $text"
  set small [expr {!$::option(-minimise) ? $source : [minimise $source $kind]}]
  set file [file join $::option(-work) fault_[string map {" " _} [file tail $name]].v]
  beside::writeFile $file "// probes: $::probes\n[join $small \n]\n"
  puts stderr "designs: minimised to [llength $small] lines; repeat with -file $file"
  if {[llength $small] < 60} { puts stderr [join $small \n] }
}

set begun [clock milliseconds]
set failed 0
set undecided ""
if {$option(-file) ne ""} {
  set source [split [string trim [beside::readFile $option(-file)]] \n]
  set words choose
  regexp {^// probes: (.*)} [lindex $source 0] -> words
  set verdict [check $source $words]
  puts "$option(-file): $verdict"
  exit [expr {[lindex $verdict 0] ne ""}]
}
for {set seed $option(-seed)} {$seed < $option(-seed) + $option(-cases)} {incr seed} {
  if {[clock milliseconds] - $begun > 1000 * $option(-seconds)} break
  set start [clock milliseconds]
  set source [random_design::make $seed]
  set verdict [check $source choose]
  incr count(designs)
  if {$undecided ne ""} { puts "designs: seed $seed: $undecided" }
  set count(slowest) [expr {max($count(slowest), [clock milliseconds] - $start)}]
  if {[lindex $verdict 0] eq "refused"} { incr count(refused) }
  if {[lindex $verdict 0] eq "" && $option(-tamper)} {
    tamper::campaign "seed $seed" {loudly ost_project run -save} $work/case_debug $work/tamper $option(-tamper) $seed 5000
  }
  if {[lindex $verdict 0] in {"" refused}} continue
  incr failed
  fails "seed $seed" $source $verdict
}
quietly catch {ost_project close -force}
puts "designs: $count(designs) designs from seed $option(-seed) in [expr {([clock milliseconds] - $begun) / 1000}] s, the slowest\
  $count(slowest) ms: $failed failed, $count(undecided) undecided, $count(refused) refused by Yosys or Icarus; $count(bits) bits compared ($count(unknown) of them x in the\
  source, $count(excused) as in Yosys alone, $count(vague) x as proved, $count(byYosys) designs that Yosys alone spoils), $count(moved) of $count(columns)\
  columns moved; $count(lint) kinds of new warnings"
if {$option(-tamper)} { puts "designs: faults: [tamper::report]" }
incr failed $tamper::count(different)
if {!$failed} { file delete -force $work }
exit [expr {$failed > 0}]
