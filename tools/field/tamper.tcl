# Single faults in what an insertion has written: does the proof refuse them? Each one that it accepts is tried by itself,
# beside the text without the fault: in simulation, and by Yosys' own comparison of the module that holds it.
#
#   OST_YOSYS=tools/field/given_yosys tools/in_build BUILD tclsh tools/field/tamper.tcl SCRIPT WORK ?-faults N? ?-seed N? ?-rows N? ?word ...?
#
# SCRIPT inserts a design, as insert.tcl of docs/field.md does, and has the other words as its own. Exit status 1 when a fault was
# accepted that makes a difference.
package require Tcl 8.6
source [file join [file dirname [file normalize [info script]]] beside.tcl]
source [file join [file dirname [file normalize [info script]]] console.tcl]

namespace eval tamper {
  variable count ;# What became of the faults.
  array set count {refused 0 undecided 0 unreadable 0 accepted 0 alike 0 unshown 0 different 0}
  # What a fault is made of: its name, a pattern with the place as its first group, and a script for what is there instead
  # (in `old`; empty for no fault).
  variable kinds {
    operator { (\+|-|&|\||\^|~\^|\*|==|!=|===|<|>|>=|<<|>>|>>>|&&|\|\||/|%) } {pick [without {+ - & | ^ ~^ == != < > && || << >>} $old]}
    constant {\d'([hb][0-9a-fxz?]+)} {flipped $old}
    count {\d'd(\d+)} {expr {$old ^ (1 << [below 5])}}
    edge {(posedge|negedge) } {expr {$old eq "posedge" ? "negedge" : "posedge"}}
    polarity {(?:if \(|[&|?=] )(!|~ )} {return " "}
    condition {if \(([\w\[\].]+)\)} {pick [list !$old 1'h1 1'h0 1'hx]}
    inversion {= ([\w\[\].]+);} {pick [list "~ $old" "$old ? $old : 1'hx" 1'h0]}
    branches { \? ([^?:;]+ : [^?:;]+);} {swapped $old " : "}
    bit {[\w ]\[(\d+)\]} {expr {max(0, $old + [pick {-1 1 2}])}}
    range {[\w ]\[(\d+:\d+)\]} {shifted $old}
    net {\W(_\d+_|[a-z]\w*)(?=[ ;\]\[,\x7d)])} {otherNet $old}
    pins {(\.\w+\([^()]*\),\s*\.\w+\([^()]*\))} {swappedPins $old}
    address {\w\[(_\d+_|\w+)\] <?= } {otherNet $old}
    line {^(  (?:assign|if) .*)$} {return ""}
  }
}

proc tamper::below {count} { return [expr {int(rand() * $count)}] }
proc tamper::pick {list} { return [lindex $list [below [llength $list]]] }
proc tamper::without {list item} { return [lsearch -all -inline -not -exact $list $item] }
proc tamper::swapped {old between} {
  set at [string first $between $old]
  return [string range $old $at+[string length $between] end]$between[string range $old 0 $at-1]
}
proc tamper::flipped {old} {
  set base [string index $old 0]
  set at [expr {1 + [below [expr {[string length $old] - 1}]]}]
  set digit [string index $old $at]
  set digits [expr {$base eq "b" ? {0 1 x} : [below 4] || ![string is xdigit $digit] ? {0 1 2 4 8 f} : "x"}]
  if {$base eq "h" && [string is xdigit $digit] && [below 4]} { set digits [format %x [expr "0x$digit ^ (1 << [below 4])"]] }
  return [string replace $old $at $at [pick [without $digits $digit]]]
}
proc tamper::shifted {old} {
  lassign [split $old :] left right
  set by [expr {$right ? [pick {-1 1}] : 1}]
  return [expr {$left + $by}]:[expr {$right + $by}]
}
proc tamper::swappedPins {old} {
  regexp {^(\.\w+\()(.*?)(\),\s*\.\w+\()(.*)(\))$} $old -> a one b other c
  return $a$other$b$one$c
}
# Another net of the module that has the fault.
proc tamper::otherNet {old} {
  variable nets
  if {$old in {assign if else case casez begin end posedge negedge default always or}} { return $old }
  return [pick $nets]
}

# The lines of logic: {number of the line, number of its module's first line}.
proc tamper::places {lines} {
  set places {}
  set hidden 0
  set first 0
  for {set i 0} {$i < [llength $lines]} {incr i} {
    set line [lindex $lines $i]
    if {[string match {*translate_o*} $line]} { set hidden [string match {*_off*} $line] }
    if {[string match {module *} $line]} { set first $i; continue }
    if {$hidden || [regexp {^\s*(/\*|\(\*|//|input|output|inout|wire [^=]*;|reg [^=]*;|parameter|endmodule|function|end\M|begin|$)} $line]} continue
    lappend places [list $i $first]
  }
  return $places
}
# The text with one fault: {name of its kind, number of the line, first line of the module, text}.
proc tamper::fault {lines places} {
  variable kinds
  variable nets
  while 1 {
    lassign [pick $places] at first
    set line [lindex $lines $at]
    set kind [below [expr {[llength $kinds] / 3}]]
    lassign [lrange $kinds [expr {3 * $kind}] [expr {3 * $kind + 2}]] name pattern script
    # Of pins, the two lines.
    set rest [expr {$name eq "pins" ? "$line\n[lindex $lines $at+1]" : $line}]
    set found [regexp -all -inline -indices $pattern $rest]
    if {$found eq {}} continue
    set index [expr {2 * [below [expr {[llength $found] / 2}]] + 1}]
    set span [lindex $found $index]
    set nets {}
    for {set i $first} {[lindex $lines $i] ne "endmodule"} {incr i} {
      if {[regexp {^  (?:wire|reg|input) (?:\[[\d:]+\] )?([a-z_]\w*)[ ;]} [lindex $lines $i] -> net]} { lappend nets $net }
    }
    set old [string range $rest {*}$span]
    set new [apply [list old $script ::tamper] $old]
    if {$new eq $old} continue
    set changed [split "[string replace $rest {*}$span $new] " \n]
    return [list $name $at $first [join [lreplace $lines $at [expr {$at + [llength $changed] - 1}] {*}$changed] \n]]
  }
}

# What the two texts do in simulation: the differences that beside::compare finds.
proc tamper::simulated {work output text fault bench dut events rows} {
  lassign [beside::columns $output $dut] names - - instrumented
  foreach {name verilog} [list sound $text faulty $fault] {
    beside::writeFile $work/$name.v $verilog
    set files [concat [lrange [dict get $output files] 0 end-1] [list $work/$name.v]]
    beside::simulate $work $name [concat -g2005 $files] $bench [llength $names] $instrumented $events $rows
  }
  return [dict get [beside::compare $names 0 $work/sound.rec $work/faulty.rec] differences]
}
# Whether Yosys finds the module alike with and without the fault.
proc tamper::equivalent {work module} {
  beside::writeFile $work/equiv.ys "
    read_verilog -nodpi $work/sound.v
    rename $module gold
    design -stash gold
    read_verilog -nodpi $work/faulty.v
    rename $module gate
    design -stash gate
    design -copy-from gold -as gold gold
    design -copy-from gate -as gate gate
    proc
    memory_map
    async2sync
    splitnets -ports
    opt_clean -purge
    equiv_make gold gate equiv
    hierarchy -top equiv
    equiv_struct
    equiv_simple -undef
    equiv_induct -undef
    equiv_status -assert\n"
  return [expr {![catch {beside::runTool $work/equiv.log timeout 60 yosys -q -s $work/equiv.ys}]}]
}

# Puts `faults` single faults into what `insert` writes into `folder`, a script that inserts; its result or error is what the
# insertion prints.
proc tamper::campaign {name insert folder work faults seed rows} {
  variable count
  file mkdir $work
  expr {srand($seed + 1)}
  set written $work/written.v
  set ::env(OST_WRITTEN) $written
  file delete $written
  uplevel #0 $insert
  file delete -force $work/untampered
  file copy $folder $work/untampered
  set output [beside::output $folder]
  set finished [beside::readFile [dict get $output verilog]]
  set lines [split [beside::readFile $written] \n]
  set places [places $lines]
  set settings [beside::settings "" $output $rows]
  set bench [beside::bench [dict get $output map top] [dict get $output ports] [dict get $settings clocks] [dict get $settings resets] $seed]
  set events [lsort -unique [lmap core [dict get $output map cores] { list posedge [beside::path field_tb.dut [dict get $core sampleClock] 0] }]]
  for {set i 0} {$i < $faults} {} {
    lassign [fault $lines $places] kind at first text
    set before [string trim [lindex $lines $at]]
    set after [string trim [lindex [split $text \n] $at]]
    beside::writeFile $written $text
    set outcome accepted
    if {[catch {uplevel #0 $insert} said]} {
      # What cannot be read any more is no fault of this kind.
      if {[string match "*cannot read the instrumented*" $said]} { incr count(unreadable); continue }
      if {![string match *proof* $said]} { error $said }
      set outcome refused
    } elseif {[regexp -nocase {undecided: (module|[1-9])} $said]} {
      set outcome undecided
    }
    set verdict ""
    if {$outcome eq "accepted"} {
      set faulty [beside::readFile [dict get $output verilog]]
      # What only simulators cannot read is none, either.
      if {[catch {simulated $work $output $finished $faulty $bench field_tb.dut $events $rows} differences]} {
        incr count(unreadable)
        continue
      }
      if {$differences ne {}} {
        set verdict "different (row, net, sound, faulty: [lindex $differences 0])"
      } else {
        regexp {^module (\S+?) ?\(} [lindex $lines $first] -> module
        beside::writeFile $work/sound.v [join $lines \n]
        beside::writeFile $work/faulty.v $text
        set verdict [expr {[equivalent $work $module] ? "alike" : "unshown"}]
      }
      incr count([lindex [split $verdict] 0])
    }
    incr i
    incr count($outcome)
    if {$outcome eq "refused"} continue
    puts "tamper: $name: $kind in line [expr {$at + 1}]: \"$before\" -> \"$after\": $outcome $verdict"
    flush stdout
  }
  unset ::env(OST_WRITTEN)
}
proc tamper::report {} {
  variable count
  return "$count(refused) refused, $count(undecided) undecided, $count(accepted) accepted ($count(alike) alike for Yosys,\
    $count(unshown) without a difference in simulation, $count(different) different); $count(unreadable) more could not be read"
}

# The program: the script runs in an interpreter of its own, whose run of the project is the campaign.
proc tamper::Project {args} {
  variable given
  if {[lindex $args 0] eq "new"} { set given(folder) [file rootname [file normalize [lindex $args end]]]_debug }
  if {[lindex $args 0] ne "run"} { return [ost_project {*}$args] }
  ost_design prove on
  campaign [file rootname [file tail $given(folder)]] {loudly ost_project run -save} $given(folder) $given(work) $given(-faults) \
    $given(-seed) $given(-rows)
}
proc tamper::main {script work args} {
  variable given
  variable count
  array set given {-faults 100 -seed 1 -rows 5000}
  while {[info exists given([lindex $args 0])]} { set args [lassign $args name given($name)] }
  set given(work) [file normalize $work]
  set script [file normalize $script]
  set inner [interp create]
  foreach package {ost_platform ost_tclwrapper} { $inner eval [list package provide $package [package require $package]] }
  foreach command {ost_core ost_trace ost_tu ost_te ost_serdes ost_design} { $inner alias $command $command }
  $inner alias ost_project ::tamper::Project
  $inner eval [list set argv $args]
  cd [file dirname $script]
  $inner eval [list source $script]
  puts "tamper: [report]"
  exit [expr {$count(different) > 0}]
}
if {[info exists argv0] && [file tail $argv0] eq "tamper.tcl"} { tamper::main {*}$argv }
