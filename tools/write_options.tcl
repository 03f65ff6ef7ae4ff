# Writes the table of all options of a core: <docs folder>/options.md, from what the package takes now, joined with what
# docs/options.tcl says of each; and <names>, the options of trc_option and trig_option for the completer. Fails when the
# two do not match, or when a test that is named does not exist.
#
#   tclsh tools/write_options.tcl <live_tables> <docs folder> <names>
package require Tcl 8.5
set root [file dirname [file dirname [file normalize [info script]]]]
source [file join $root tools live_table.tcl]

proc contents {name} {
    set in [open $name]
    fconfigure $in -encoding utf-8
    set text [read $in]
    close $in
    return $text
}

# The option words in the help of the sub-commands, without those that name an object or a file.
proc helpOptions {command args} {
    set options {}
    foreach sub $args {
        foreach {all option} [regexp -all -inline {\[?(-[a-zA-Z_]+) <?[a-zA-Z]} [$command help $sub]] {
            if {$option ni {-core -name -saveAs} && "$command $option" ni $options} {lappend options "$command $option"}
        }
    }
    return $options
}

# Those of the help's sentence "Operator must be ...".
proc helpOperators {} {
    if {![regexp {Operator must be ([^\n]*)} [ost_tu help add] -> sentence]} {error "ost_tu add's help names no operators"}
    set operators {}
    foreach {all operator} [regexp -all -inline {"([^"]+)"} $sentence] {lappend operators "ost_tu $operator"}
    return $operators
}

proc option {name hardware runTime tests} {
    if {[info exists ::rows($name)]} {error "docs/options.tcl has two rows for \"$name\""}
    set ::rows($name) [list $hardware $runTime $tests]
}

lassign $argv liveTables docsFolder namesFile
packageCommands
set names [string trim [exec $liveTables options]]
set live [split $names \n]
lappend live {*}[helpOptions ost_tu add set] {*}[helpOperators] {*}[helpOptions ost_te add set]
lappend live {*}[helpOptions ost_project run]
foreach {all word} [regexp -all -inline {\[([a-z]+)=<} [ost_serdes help set]] {lappend live "ost_serdes $word"}
source -encoding utf-8 [file join $root docs options.tcl]

set known [regexp -all -inline -line {^ *(?:test )?(hardware-\S+)} [contents [file join $root tests tcl options_in_hardware.test]]]
foreach list [glob [file join $root tests sim CMakeLists.txt] [file join $root tests sim * CMakeLists.txt]] {
    # The oracle runs in several shares, sim.oracle_*.
    foreach {all test} [regexp -all -inline {NAME (sim\.[a-z]+)} [contents $list]] {lappend known $test}
}

set text "# What each option becomes\n\n"
append text "Written from the options that ost_tclwrapper [package present ost_tclwrapper] takes and `docs/options.tcl` while it\n"
append text "was built. `sim.*` capture in simulation, against a model; `hardware-*` are cases of\n"
append text "tests/tcl/options_in_hardware.test, which inserts two values of the option and compares what was built. A core that\n"
append text "ignored the option fails them.\n\n"
append text "| option | in hardware | at run time, without a new insertion | tests that would fail without it |\n|---|---|---|---|\n"
set faults {}
foreach name $live {
    if {![info exists rows($name)]} {
        lappend faults "the option \"$name\" has no row in docs/options.tcl"
        continue
    }
    lassign $rows($name) hardware runTime tests
    unset rows($name)
    foreach test $tests {
        if {$test ni $known} {lappend faults "the row of \"$name\" names the test \"$test\", which does not exist"}
    }
    if {$hardware eq "" || $tests eq ""} {lappend faults "the row of \"$name\" is not complete"}
    append text "| `$name` | $hardware | $runTime | [join $tests {, }] |\n"
}
foreach name [array names rows] {lappend faults "docs/options.tcl has a row for \"$name\", which is not an option"}
if {$faults ne ""} {
    puts stderr [join $faults \n]
    exit 1
}
foreach {file text} [list [file join $docsFolder options.md] $text $namesFile $names\n] {
    set out [open $file w]
    fconfigure $out -encoding utf-8
    puts -nonewline $out $text
    close $out
}
