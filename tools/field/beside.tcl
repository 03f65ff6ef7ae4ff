# An instrumented design beside its source: lint, a test bench with random stimuli, records of both in simulation
# (Icarus Verilog), and their comparison bit by bit. What inserts the design is not in here.
package require Tcl 8.6

namespace eval beside {
  variable patience 900 ;# Of each program, in seconds of the wall clock.
  variable place ""     ;# Where programs run: files that a design reads by name are there. Empty: the folder of the results.
}

# A JSON text as nested dicts and lists; numbers, true, false and null as their words.
proc beside::json {text} {
  set tokens [regexp -all -inline {"(?:[^"\\]|\\.)*"|[][{}:,]|[^][{}:,\s"]+} $text]
  set at 0
  return [JsonValue $tokens at]
}
proc beside::JsonValue {tokens atName} {
  upvar 1 $atName at
  set token [lindex $tokens $at]
  incr at
  if {$token ni {\{ \[}} {
    if {[string index $token 0] ne "\""} { return $token }
    return [subst -nocommands -novariables [string range $token 1 end-1]]
  }
  set value {}
  while {$at < [llength $tokens] && [lindex $tokens $at] ni {\} \]}} {
    if {[lindex $tokens $at] eq ","} { incr at }
    lappend value [JsonValue $tokens at]
    if {[lindex $tokens $at] eq ":"} {
      incr at
      lappend value [JsonValue $tokens at]
    }
  }
  incr at
  return $value
}

proc beside::readFile {name} {
  set channel [open $name]
  try { return [read $channel] } finally { close $channel }
}
proc beside::writeFile {name text} {
  set channel [open $name w]
  try { puts -nonewline $channel $text } finally { close $channel }
}

# Runs a program; its output goes into the file `log`. An error that names the log when it fails.
proc beside::runTool {log args} {
  variable patience
  variable place
  set here [pwd]
  cd [expr {$place eq "" ? [file dirname $log] : $place}]
  try {
    exec -ignorestderr timeout $patience {*}$args </dev/null >$log 2>@1
  } trap CHILDSTATUS {} {
    set lines [regexp -all -inline -line {^.*(?:error|Error|ERROR|sorry).*$} [readFile $log]]
    error "\"[lindex $args 0]\" failed; see \"$log\":\n[join [lrange $lines 0 5] \n]"
  } finally { cd $here }
}

# What an insertion's output folder tells: a dict of `map` (the capture map), `files` (in reading order), `verilog` (the
# instrumented design), `debug` (the debug module's instance) and `ports`, the top's own, each {direction name range width}.
proc beside::output {folder} {
  set map [json [readFile [file join $folder capture_map.json]]]
  set files [lmap name [split [string trim [readFile [file join $folder files.f]]] \n] { file join $folder $name }]
  set verilog [lindex $files end]
  set added [dict values [dict get $map jtag]]
  foreach core [dict get $map cores] {
    set trigger [dict get $core triggerOut]
    if {$trigger ne "null"} { lappend added [dict get $trigger name] }
  }
  set top [dict get $map top]
  set inTop 0
  set ports {}
  set debug ""
  foreach line [split [readFile $verilog] \n] {
    if {[regexp {^module (\S+?) ?\(} $line -> module]} { set inTop [expr {[string trimleft $module \\] eq $top}] }
    if {!$inTop} continue
    if {[regexp {^  (input|output|inout) (?:\[(-?\d+):(-?\d+)\] )?(\S+) ?;} $line -> direction left right name]} {
      if {$name in $added} continue
      if {[string index $name 0] eq "\\"} { append name " " }
      if {$left eq ""} { lappend ports [list $direction $name "" 1]; continue }
      lappend ports [list $direction $name "\[$left:$right\] " [expr {abs($left - $right) + 1}]]
    }
    regexp {^  ostrel_debug (ostrel_debug_i\w*) \($} $line -> debug
  }
  return [dict create map $map files $files verilog $verilog debug $debug ports $ports]
}

# The hierarchical name of a bit of the map below `dut`. In what roundTrip writes (`flat`) generate scopes are part of the
# names of nets and instances, and bits count from 0; in a source generate scopes are scopes.
proc beside::path {dut bit flat} {
  lassign $bit name instance net position
  set path $dut
  foreach part [concat [split $instance /] [list $net]] {
    set plain [expr {$flat ? {^[A-Za-z_][\w$]*$} : {^[A-Za-z_][\w$]*(\[-?\d+\])?(\.[A-Za-z_][\w$]*(\[-?\d+\])?)*$}}]
    append path . [expr {[regexp $plain $part] ? $part : "\\$part "}]
  }
  if {[string range $name end-[expr {[string length $net] - 1}] end] ne $net} {
    if {[regexp {\[-?\d+\]$} $name index]} { append path [expr {$flat ? "\[$position\]" : $index}] }
  }
  return $path
}

# The bits to be compared, as Verilog below `dut`: {names of the columns, in the source, in a netlist of Yosys, in the
# instrumented design}. First the top's outputs and inouts, then each probe as the debug module sees it.
proc beside::columns {output dut} {
  set names {}
  foreach port [dict get $output ports] {
    lassign $port direction name range width
    if {$direction eq "input"} continue
    for {set i [expr {$width - 1}]} {$i >= 0} {incr i -1} { lappend names "$name#$i" }
    lappend source $dut.$name
  }
  set netlist [set instrumented [expr {[info exists source] ? $source : [set source {}]}]]
  set number 0
  foreach core [dict get $output map cores] {
    set position 0
    foreach bit [dict get $core probeBits] {
      lappend names [lindex $bit 0]
      lappend source [path $dut $bit 0]
      lappend netlist [path $dut $bit 1]
      set select [expr {[llength [dict get $core probeBits]] > 1 ? "\[$position\]" : ""}]
      lappend instrumented "$dut.[dict get $output debug].c${number}_probe$select"
      incr position
    }
    incr number
  }
  return [list $names $source $netlist $instrumented]
}

# A module that writes the values of `paths`, `width` bits in all, as they were 1 ps before each of the events, into `file`; a line an event. It ends
# the simulation after `rows` lines.
proc beside::watch {width paths events rows file} {
  return "`timescale 1ps / 1ps
module ostrel_beside;
  wire \[[expr {$width - 1}]:0\] now = {[join $paths ,\n    ]};
  wire \[[expr {$width - 1}]:0\] before;
  assign #1 before = now;
  integer record, rows = 0;
  time last = 0;
  initial record = \$fopen(\"$file\");
  always @([join $events { or }]) if (\$time != last) begin
    last = \$time;
    \$fwrite(record, \"%b\\n\", before);
    rows = rows + 1;
    if (rows == $rows) \$finish;
  end
endmodule
"
}

# A test bench `field_tb` with the instance `dut` of the top. Clocks run with different periods and never change at one
# time; every other input has a time of its own in each 10 ns at which it may change. `resets` is a list of names and active levels.
# `apart`: one reset after the other at first, since Yosys does not keep the source's order of two that are active at once.
proc beside::bench {top ports clocks resets seed {apart 0}} {
  set text "`timescale 1ps / 1ps\nmodule field_tb;\n  integer seed = $seed, ticks = 0;\n"
  set drive ""
  set connections {}
  set number 0
  foreach port $ports {
    lassign $port direction name range width
    incr number
    lappend connections ".${name}(p$number)"
    set random "{[string trimright [string repeat {$random(seed), } [expr {($width + 31) / 32}]] {, }]}"
    set at [expr {500 + 20 * $number}]
    set clock [lsearch -exact $clocks $name]
    if {$direction eq "output"} {
      append text "  wire ${range}p$number;\n"
    } elseif {$clock >= 0} {
      # The first level is an edge, too: it comes when all else has settled.
      append text "  reg p$number;\n  initial begin #[expr {10 * $clock + 20}] p$number = 0;\
        forever #[expr {5000 + 2000 * $clock}] p$number = ~p$number; end\n"
    } elseif {[dict exists $resets $name]} {
      set level [dict get $resets $name]
      set turn [expr {$apart ? [lsearch -exact [dict keys $resets] $name] : 0}]
      append text "  reg p$number = [expr {!$level}];\n"
      if {!$turn} { append text "  initial #15 p$number = $level;\n" }
      set begin [expr {20 * $turn}]
      set alone [expr {$apart ? 20 * [dict size $resets] : 0}]
      append drive "    p$number <= #$at ((ticks >= $begin && ticks < [expr {$begin + 20}])\
        || ((\$random(seed) & 255) == 0 && ticks >= $alone)) ? 1'b$level : 1'b[expr {!$level}];\n"
    } elseif {$direction eq "input"} {
      append text "  reg ${range}p$number = 0;\n"
      append drive "    if (\$random(seed) & 16) p$number <= #$at $random;\n"
    } else {
      append text "  wire ${range}p$number;\n  reg ${range}v$number = 0;\n  reg e$number = 0;\n"
      append text "  assign p$number = e$number ? v$number : {$width{1'bz}};\n"
      append drive "    e$number <= #$at \$random(seed) >> 8;\n    v$number <= #$at $random;\n"
    }
  }
  append text "  always #10000 begin\n    ticks = ticks + 1;\n$drive  end\n"
  return "$text  $top dut ([join $connections {, }]);\nendmodule\n"
}

# What field.tcl in the folder says, over what the design's ports suggest.
proc beside::settings {folder output rows} {
  set clocks {}
  set resets {}
  foreach port [dict get $output ports] {
    lassign $port direction name range width
    if {$direction ne "input" || $width != 1} continue
    if {[regexp -nocase {clk|clock|(^|_)ck(_|$)} $name]} { lappend clocks $name; continue }
    if {[regexp -nocase {rst|reset} $name]} {
      lappend resets $name [expr {![regexp -nocase {(_n|_ni|_b|n|_l)$|^n} $name]}]
    }
  }
  foreach core [dict get $output map cores] {
    lassign [dict get $core sampleClock] name instance net
    if {$instance eq "" && $net ni $clocks && $net in [lmap port [dict get $output ports] { lindex $port 1 }]} {
      lappend clocks $net
      set resets [dict remove $resets $net]
    }
  }
  set bench [expr {[file exists [file join $folder tb.v]] ? "tb.v" : ""}]
  set result [dict create clocks $clocks resets $resets bench $bench rows $rows halfTck 2 dut "" patience 60]
  set own [file join $folder field.tcl]
  if {[file exists $own]} {
    set safe [interp create -safe]
    $safe eval [readFile $own]
    foreach name [dict keys $result] {
      if {[$safe eval [list info exists $name]]} { dict set result $name [$safe eval [list set $name]] }
    }
    interp delete $safe
  }
  return $result
}

# Compiles `words` (options and files of Icarus) with the bench and a watch into NAME.vvp, its record being NAME.rec.
proc beside::build {folder name words bench width paths events rows} {
  set base [file join $folder $name]
  writeFile $base.tb.v $bench[watch $width $paths $events $rows $base.rec]
  foreach word $words {
    # Icarus goes on without a file that is missing.
    if {[string index $word 0] ne "-" && ![file exists $word]} { error "there is no file \"$word\"" }
  }
  runTool $base.build iverilog -o $base.vvp {*}$words $base.tb.v
}
proc beside::simulate {folder name args} {
  build $folder $name {*}$args
  runTool [file join $folder $name.run] vvp -n [file join $folder $name.vvp]
}

# Simulates the source and the instrumented design and compares what they did, as `compare` does. Where they differ, the
# source once through Yosys, without an insertion, is simulated too: what it does alike is not the insertion's doing.
# `bench` holds the top as `dut`; `events` are the moments of the record, in names below `dut`. `proved`: see compare.
proc beside::judge {folder output words bench dut events rows {proved 0}} {
  lassign [columns $output $dut] names source netlist instrumented
  set common [list $events $rows]
  set width [llength $names]
  simulate $folder source $words $bench $width $source {*}$common
  set standard [lsearch -inline $words -g20*]
  simulate $folder debug [concat $standard [dict get $output files]] $bench $width $instrumented {*}$common
  set records [list [file join $folder source.rec] [file join $folder debug.rec]]
  set result [compare $names $proved {*}$records]
  dict set result byYosys 0
  if {[dict get $result differences] eq {}} { return $result }
  if {[catch {
    roundTrip $folder $words [dict get $output map top]
    simulate $folder trip [list $standard [file join $folder trip.v]] $bench $width $netlist {*}$common
    set result [compare $names $proved {*}$records [file join $folder trip.rec]]
    dict set result byYosys 0
  }]} {
    # Yosys writes some x and z so that nobody reads it.
    dict set result byYosys 1
  }
  return $result
}

# Compares two records row by row. A bit that is x in the first may be anything in the second. With a third record, a bit
# that differs from the first but equals the third is excused. With `proved` so is one that is x in the second: a source takes
# a branch of its own where a condition is x, the proof knows that the netlists have the same x. A dict: rows, bits, unknown (bits),
# moved (columns that changed), excused, vague (excused by the proof), differences (at most ten of {row column first second}).
proc beside::compare {names proved first second {third ""}} {
  set result [dict create rows 0 bits 0 unknown 0 moved 0 excused 0 vague 0 differences {}]
  set others [expr {$third eq "" ? {} : [split [readFile $third] \n]}]
  set moved [dict create]
  set before ""
  set row -1
  foreach a [split [string trimright [readFile $first] \n] \n] b [split [string trimright [readFile $second] \n] \n] {
    incr row
    if {$a eq "" || $b eq ""} break
    dict incr result rows
    dict incr result bits [string length $a]
    dict incr result unknown [regexp -all {x} $a]
    if {$a ne $before} {
      if {$before ne "" && [dict size $moved] < [llength $names]} {
        for {set i 0} {$i < [string length $a]} {incr i} {
          set pair [string index $before $i][string index $a $i]
          if {$pair in {01 10}} { dict set moved $i 1 }
        }
      }
      set before $a
    }
    if {$a eq $b} continue
    set c [lindex $others $row]
    for {set i 0} {$i < [string length $a]} {incr i} {
      set x [string index $a $i]
      set y [string index $b $i]
      if {$x eq $y || $x eq "x"} continue
      if {$c ne "" && ([string index $c $i] eq $y || [string index $c $i] eq "x")} { dict incr result excused; continue }
      if {$proved && $y eq "x"} { dict incr result vague; continue }
      if {[llength [dict get $result differences]] < 10} {
        dict lappend result differences [list $row [lindex $names $i] $x $y]
      }
    }
  }
  dict set result moved [dict size $moved]
  dict set result columns [llength $names]
  return $result
}

# The source once through Yosys, without an insertion, as trip.v; a tri-state ahead of a latch stays one. Nets are declared [N:0] there: Yosys writes single bits of
# others by wrong names.
proc beside::roundTrip {folder words top} {
  set base [file join $folder trip]
  set sources [lsearch -all -inline -not $words -g20*]
  set read "read_verilog[expr {"-g2012" in $words ? " -sv" : ""}]"
  set yosys [expr {[info exists ::env(OST_YOSYS)] ? $::env(OST_YOSYS) : "yosys"}]
  writeFile $base.ys "$read $sources\nhierarchy -check -top $top\ntribuf\nproc\nwrite_json $base.json\n"
  runTool $base.log $yosys -q -s $base.ys
  writeFile $base.json [regsub -all {"(?:upto|offset)": -?\d+,} [readFile $base.json] ""]
  writeFile $base.ys "read_json $base.json\nwrite_verilog -noattr $base.v\n"
  runTool $base.log $yosys -q -s $base.ys
}

# The kinds of messages that Verilator has on the files, each once; an error is the kind ERROR.
proc beside::verilatorKinds {log words top} {
  set words [lsearch -all -inline -not $words -g20*]
  catch {runTool $log verilator --lint-only -Wno-fatal --top-module $top {*}$words}
  set kinds {}
  foreach {all kind name} [regexp -all -inline -line {^%(Error|Warning)(?:-(\w+))?:} [readFile $log]] {
    lappend kinds [expr {$kind eq "Error" ? "ERROR$name" : $name}]
  }
  return [lsort -unique $kinds]
}
# Those that only the instrumented design has.
proc beside::newKinds {folder output words} {
  set top [dict get $output map top]
  set before [verilatorKinds [file join $folder source.lint] $words $top]
  set after [verilatorKinds [file join $folder debug.lint] [dict get $output files] $top]
  return [lmap kind $after { if {$kind in $before} continue; set kind }]
}
