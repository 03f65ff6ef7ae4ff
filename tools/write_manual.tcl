# Writes the manual pages: <man folder>/man1, man3 and man7. What can be typed, options and rules come from the program
# itself, the rest is the page of docs/ about the same, with its tables as the build has written them.
#
# ostsh is beside ost_capture.
#
#   tclsh tools/write_manual.tcl <ost_capture> <docs of the sources> <docs of the build> <man folder>
package require Tcl 8.5
set root [file dirname [file normalize [info script]]]
source [file join $root live_table.tcl]
source [file join $root man_page.tcl]

lassign $argv capture sourceDocs builtDocs manFolder

# A page of docs/: from the build where that wrote it.
proc page {name} {
    foreach folder [list $::builtDocs $::sourceDocs] {
        set file [file join $folder $name.md]
        if {![file exists $file]} continue
        set in [open $file]
        fconfigure $in -encoding utf-8
        set text [read $in]
        close $in
        return $text
    }
    error "there is no page \"$name.md\""
}

# Of a page, what stands before the first "## ..." and the sections whose titles fit, or all others with `not`.
proc sections {page pattern {not 0}} {
    set chosen ""
    set keep 1
    set code 0
    foreach line [split $page \n] {
        if {[string match ```* $line]} {set code [expr {!$code}]}
        if {!$code && [regexp {^## (.*)} $line -> title]} {set keep [expr {[regexp $pattern $title] != $not}]}
        if {$keep} {append chosen $line \n}
    }
    return $chosen
}

# The table of options without what it tells its developers: how it was written, and the tests in its last column.
proc withoutTests {text} {
    return [regsub -all -line {^(\|.*\|)[^|]*\|$} [regsub {\nWritten from .*?\n\n} $text \n] {\1}]
}

proc described {page} {
    return "## Description\n\n[regsub {^# [^\n]*\n} $page {}]"
}

proc write {name section summary usages markdown related} {
    set manual [dict get {1 "User commands" 3tcl "Tcl commands" 7 "Reference"} $section]
    set related [lsearch -all -inline -not -exact $related "$name\($section)"]
    set folder [file join $::manFolder man[string index $section 0]]
    file mkdir $folder
    set out [open [file join $folder $name.$section] w]
    fconfigure $out -encoding utf-8
    puts -nonewline $out [manPage $name $section $summary $usages $markdown $related $manual $::version]
    close $out
}

set commands [packageCommands]
set version [package present ost_tclwrapper]
file delete -force -- $manFolder
set all {}
foreach command $commands {lappend all $command\(3tcl)}
lappend all ost_design(3tcl) ost_capture(1) ost_capture(3tcl) ostsh(1) ost_rules(7)

# The page of docs/ that says more about a command.
set about {ost_project project-file ost_tu trigger-units ost_te trigger-expressions ost_trace options}
foreach command $commands {
    regexp "^$command - (\[^\n]+)\n" [$command help] -> summary
    set usages {}
    set text "## Sub-commands\n\n"
    foreach sub [subCommands $command] {
        regexp "^  $command $sub - (\[^\n]+)\n  Usage:\n(.+)\$" [$command help $sub] -> what usage
        # Words that were broken over several lines stand below each other; what explains them does not begin with "[".
        regexp "^    ($command $sub\[^\n]*(?:\n +\\\[\[^\n]*)*)" $usage -> words
        lappend usages [regsub -all {\n {4}} $words "\n"]
        append text "### $command $sub\n\n$what.\n\n```\n[regsub -all -line {^    } [string trimright $usage] {}]\n```\n\n"
    }
    if {[dict exists $about $command]} {append text [regsub {^# ([^\n]*)} [page [dict get $about $command]] {## \1}]}
    if {$command eq "ost_trace"} {set text [withoutTests $text]}
    write $command 3tcl $summary "package require ost_tclwrapper\n\n[join $usages \n]" $text $all
}

package require ost_platform
set usages [regexp -all -inline -line {^usage: .*$} [ost_design help]]
write ost_design 3tcl "reads the design that debug cores are inserted into" \
    "package require ost_platform\n\n[regsub -all -line {^usage: } [join $usages \n] {}]" \
    [described [page ost_design]] $all

# A program: its usage and exit status from its help, options from the page, which has them as a table.
proc writeProgram {program text} {
    set help [exec $program -help]
    set name [file tail $program]
    regexp "^$name - (\[^\n]+)\nUsage: ((?:\[^\n]+\n)(?: {7}\[^\n]+\n)*)" $help -> summary usages
    regexp {\nExit status: ([^\n]+)} $help -> exits
    write $name 1 $summary [regsub -all {\n {7}} [string trimright $usages] "\n"] \
        "[described $text]\n## Exit status\n\n$exits\n" $::all
}
set inScripts {^A capture in a script$}
writeProgram $capture [sections [page ost_capture] $inScripts 1]
writeProgram [file join [file dirname $capture] ostsh] [page ostsh]
package require ost_capture
regsub {.*?\n(?=## )} [sections [page ost_capture] $inScripts] {} scripts
write ost_capture 3tcl "arms debug cores and reads their captures in a script" \
    "package require ost_capture\n\n[ost_capture help]" $scripts $all

write ost_rules 7 "the rules that a debug core and its design are checked for" "ost_project run -drc" \
    [described [page design-rules]] $all
