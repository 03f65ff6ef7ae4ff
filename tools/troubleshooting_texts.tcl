# Checks that docs/troubleshooting.md speaks of messages that exist: each text in a first column stands in a source.
#   tclsh tools/troubleshooting_texts.tcl <root of the tree>
package require Tcl 8.5
set root [lindex $argv 0]

# All string literals of a folder's sources, neighbours joined as the compiler joins them.
proc literals {folder} {
    set all ""
    foreach file [glob -nocomplain -directory $folder *.cpp *.h] {
        set in [open $file]
        append all [regsub -all {"\s*\n?\s*"} [read $in] ""] \n
        close $in
    }
    foreach sub [glob -nocomplain -directory $folder -type d *] {append all [literals $sub]}
    return $all
}

set sources ""
foreach room {platform commands framework} {append sources [literals [file join $root $room]]}
set in [open [file join $root docs troubleshooting.md]]
fconfigure $in -encoding utf-8
set rows [regexp -all -inline -line {^\| `([^`]+)` \|} [read $in]]
close $in
set missing {}
foreach {row text} $rows {
    if {[string first $text $sources] < 0} {lappend missing $text}
}
if {[llength $rows] < 20} {error "the page has only [expr {[llength $rows] / 2}] messages"}
if {[llength $missing]} {error "no source has these texts:\n[join $missing \n]"}
puts "[expr {[llength $rows] / 2}] messages exist"
