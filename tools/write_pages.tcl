# Writes pages of docs/ that show a table of the program: a line "*Table `NAME`...*" of the page is replaced by the table
# NAME as the program has it now. Fails when a page names a table that does not exist, or none.
#
#   tclsh tools/write_pages.tcl <live_tables> <ost_capture> <docs folder> <page>...
package require Tcl 8.5

# The options in a help text, lines such as "  -vcd FILE   waves for a viewer" (the word after an option is in capitals); a
# longer text goes on in indented lines.
proc optionTable {help} {
    set text "| option | meaning |\n|---|---|\n"
    set rows [regexp -all -inline -line {^  (-\S+(?: [A-Z]\S*)?) +(\S.*(?:\n {6,}\S.*)*)$} $help]
    if {$rows eq "" || [llength $rows] != 3 * [regexp -all -line {^ *-} $help]} {
        error "the options of this help cannot be told from their meanings:\n$help"
    }
    foreach {all words meaning} [string map {| \\|} $rows] {
        append text "| `$words` | [regsub -all {\s+} $meaning { }] |\n"
    }
    return $text
}

proc table {name} {
    switch -- $name {
        rules {return [exec $::liveTables rules]\n}
        ost_capture {return [optionTable [exec $::capture -help]]}
        ostsh {return [optionTable [exec [file join [file dirname $::capture] ostsh] -help]]}
        ost_design {
            package require ost_platform
            return [optionTable [ost_design help read]]
        }
    }
    error "there is no table \"$name\""
}

set pages [lassign $argv liveTables capture docsFolder]
foreach page $pages {
    set in [open $page]
    fconfigure $in -encoding utf-8
    set text ""
    set filled 0
    foreach line [split [string trimright [read $in] \n] \n] {
        if {[regexp {^\*Table `([^`]*)`} $line -> name]} {
            append text [table $name]
            incr filled
        } else {
            append text $line \n
        }
    }
    close $in
    if {!$filled} {error "$page shows no table"}
    set out [open [file join $docsFolder [file tail $page]] w]
    fconfigure $out -encoding utf-8
    puts -nonewline $out $text
    close $out
}
