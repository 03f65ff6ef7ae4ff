# What the benchmark parts share: processor time, medians, and rows for the table of bench/run.
# A part runs in a tclsh of its own, started by bench/run; it writes rows and notes to stdout, one a line, among what
# the commands print.
lappend auto_path [file join $env(OST_BUILD_DIR) bench bench_tools]
package require bench_tools

set full [expr {[info exists env(BENCH_FULL)] && $env(BENCH_FULL) ne "0"}]
set work $env(BENCH_WORK)

proc median {values} { lindex [lsort -real $values] [expr {[llength $values] / 2}] }

# Processor time of the script, run in the caller's scope, in seconds: of this process, and of children that it waited for.
proc cpu {script} {
  set before [bench::cpu]
  uplevel 1 $script
  expr {([bench::cpu] - $before) / 1e9}
}
proc childCpu {script} {
  set before [bench::childcpu]
  uplevel 1 $script
  expr {([bench::childcpu] - $before) / 1e9}
}
# Peak of resident memory during the script, beyond what was resident before, in bytes.
proc peakMemory {script} {
  set before [lindex [bench::resident reset] 0]
  uplevel 1 $script
  expr {[lindex [bench::resident] 1] - $before}
}

proc seconds {s} {
  if {$s < 1e-6} { return [format "%.0f ns" [expr {$s * 1e9}]] }
  if {$s < 1e-3} { return [format "%.2f us" [expr {$s * 1e6}]] }
  if {$s < 1} { return [format "%.2f ms" [expr {$s * 1e3}]] }
  format "%.2f s" $s
}

proc emitRow {what figure against other ratio aim verdict} {
  puts [join [list row $what $figure $against $other $ratio $aim $verdict] \t]
  flush stdout
}
# A time beside the time that it is compared with; the ratio is to be `aim` at most. Without an aim it only informs.
proc timeRow {what figure against other {aim ""}} {
  set ratio [expr {double($figure) / $other}]
  set verdict [expr {$aim eq "" ? "" : $ratio <= $aim ? "met" : "missed"}]
  emitRow $what [seconds $figure] $against [seconds $other] [format %.2f $ratio] [expr {$aim eq "" ? "" : "<= $aim"}] $verdict
}
# A figure that has a limit of its own.
proc limitRow {what figure limit unit against other} {
  emitRow $what [format "%.0f %s" $figure $unit] $against $other "" "<= $limit" [expr {$figure <= $limit ? "met" : "missed"}]
}
proc factRow {what figure against other holds aim} {
  emitRow $what $figure $against $other "" $aim [expr {$holds ? "met" : "missed"}]
}
proc note {text} {
  puts "note\t$text"
  flush stdout
}
