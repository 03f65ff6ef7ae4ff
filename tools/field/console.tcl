# What the commands print, as a value.
package require Tcl 8.6

# A transform of stdout while one of them runs.
namespace eval console {
  variable text ""
  proc initialize args { return {initialize finalize write} }
  proc finalize args {}
  proc write {channel bytes} { append ::console::text $bytes; return "" }
  namespace export *
  namespace ensemble create
}
proc quietly {args} {
  set console::text ""
  chan push stdout console
  try { uplevel 1 $args } finally { chan pop stdout }
}

# Of what a run printed, the lines of its error.
proc complaint {text} {
  set lines [regexp -all -inline -line {^(?:ERROR|DRC-\d+ error).*} $console::text]
  return [expr {$lines eq {} ? $text : [join $lines \n]}]
}
# What a command prints as its result or error.
proc loudly {args} {
  if {[catch {uplevel 1 [list quietly {*}$args]} text]} { error [complaint $text] }
  return $console::text
}
