# The shell itself: a batch with a status that can be relied on, or a prompt with completion and history.

namespace eval ost_shell {}

# Runs `ostsh words`; does not return.
proc ost_shell::main {version words} {
    set keepGoing 0
    set help "ostsh - tclsh with the packages ost_tclwrapper, ost_platform and ost_capture
Usage: ostsh \[option...] \[SCRIPT \[ARGUMENT...]]
  -keep-going              after a command of the script that fails, goes on with the next one
  -help                    this text; so does --help
  --version                the version
Without a script, commands are read from the standard input: at a terminal with completion and history.
Exit status: 0 done, 1 a command failed or an ERROR was shown, 2 wrong command line; or what the script gives to exit."
    while {[string match -* [lindex $words 0]]} {
        set words [lassign $words option]
        switch -- $option {
            -keep-going {set keepGoing 1}
            -help - --help {puts $help; ::exit 0}
            --version {puts "ostsh $version, Tcl [info patchlevel]"; ::exit 0}
            -- {break}
            default {
                puts stderr "ostsh: There is no option \"$option\"; ostsh -help lists them."
                ::exit 2
            }
        }
    }
    package require Tcl 8.6
    foreach package {ost_tclwrapper ost_platform ost_capture} {uplevel #0 [list package require -exact $package $version]}
    guardExit
    if {[llength $words] > 0} {
        set ::argv [lassign $words script]
        set ::argv0 $script
        set ::argc [llength $::argv]
        set ::tcl_interactive 0
        set failed [expr {$keepGoing ? [runEach $script] : [runScript $script]}]
        exit $failed
    }
    set ::tcl_interactive [isTerminal]
    if {$::tcl_interactive && ![catch {package require tclreadline} problem]} {
        prompt
    } else {
        if {$::tcl_interactive} {
            puts "There is no package tclreadline: no completion and no history. Debian has it as tcl-tclreadline."
        }
        exit [readCommands stdin $keepGoing]
    }
}

# From here on a script that ends well does so with status 1 where an ERROR was shown.
proc ost_shell::guardExit {} {
    rename ::exit ::ost_shell::leave
    proc ::exit {{status 0}} {
        if {[string is integer -strict $status] && $status == 0 && [::ost_platform::errorsShown] > 0} {set status 1}
        if {[info exists ::tclreadline::historyfile]} {
            catch {::tclreadline::readline write $::tclreadline::historyfile}
            ::tclreadline::readline reset-terminal
        }
        ::ost_shell::leave $status
    }
}

proc ost_shell::isTerminal {} {
    return [expr {![catch {exec test -t 0 <@stdin}]}]
}

# Shows what a command failed with. Returns 1.
proc ost_shell::tellFailure {options} {
    set info [dict get $options -errorinfo]
    # Without the shell's own levels.
    regsub {\n    invoked from within\n"source [^\n]*"\n    \("uplevel" body line 1\)\n.*$} $info "" info
    regsub {\n    \("uplevel" body line 1\)\n    invoked from within\n"uplevel #0 \$command"} $info "" info
    puts stderr $info
    return 1
}

proc ost_shell::runScript {script} {
    if {[catch {uplevel #0 [list source $script]} - options] == 1} {return [tellFailure $options]}
    return 0
}

# The commands of a file one by one. Returns 1 when one has failed.
proc ost_shell::runEach {script} {
    if {[catch {open $script} channel options]} {return [tellFailure $options]}
    info script $script
    set failed [readCommands $channel 1 $script]
    close $channel
    return $failed
}

# Reads commands and evaluates each; what they return is shown at a terminal only.
proc ost_shell::readCommands {channel keepGoing {file ""}} {
    set failed 0
    set command ""
    set first 1
    for {set line 1} {1} {incr line} {
        if {$::tcl_interactive} {
            puts -nonewline [expr {$command eq "" ? "ostsh% " : "> "}]
            flush stdout
        }
        set ended [expr {[gets $channel text] < 0}]
        if {!$ended} {
            append command $text \n
            if {![info complete $command]} continue
        }
        # Of what is left open at the end, Tcl says what is missing.
        if {[catch {uplevel #0 $command} result options] == 1} {
            if {$file ne ""} {dict append options -errorinfo "\n    (file \"$file\" line $first)"}
            tellFailure $options
            if {!$::tcl_interactive} {set failed 1}
            if {!$keepGoing && !$::tcl_interactive} break
        } elseif {$::tcl_interactive && $result ne ""} {
            puts $result
        }
        if {$ended} break
        set command ""
        set first [expr {$line + 1}]
    }
    return $failed
}

# The prompt of tclreadline with the completer, and the history in ~/.ostsh_history. Does not return.
proc ost_shell::prompt {} {
    proc ::tclreadline::prompt1 {} {return "ostsh% "}
    set home [expr {[info exists ::env(HOME)] ? $::env(HOME) : [pwd]}]
    set ::tclreadline::historyLength 2000
    ::tclreadline::readline builtincompleter 0
    ::tclreadline::readline customcompleter ::ost_shell::readlineCompleter
    ::tclreadline::Loop [file join $home .ostsh_history]
}

# The completer in the form that tclreadline wants: what replaces line[start, end), and the choice when there is more
# than one; the beginning is the longest that all have. tclreadline completes what is not ours: of a command that it does
# not know it finds out by running it.
proc ost_shell::readlineCompleter {text start end line} {
    # The lines before of a command that goes on.
    set before ""
    if {[info exists ::tclreadline::LINE] && ![info complete $::tclreadline::LINE]} {set before $::tclreadline::LINE}
    set typed [string range $before$line 0 [expr {[string length $before] + $end - 1}]]
    set offered [wholeWords $typed]
    if {$offered eq ""} {
        set words [dict get [typedAt $typed] words]
        return [expr {[isOurs [lindex $words 0]] ? "" : [::tclreadline::ScriptCompleter $text $start $end $line]}]
    }
    # A choice of one would be followed by a blank: behind a level of the hierarchy or an option's "=" comes what is next.
    set one [lindex $offered 0]
    if {[llength $offered] == 1 && [regexp {[/=]$} $one]} {
        set offered [wholeWords $one]
        if {[llength $offered] < 2} {lappend offered $one "$one..."}
    }
    # The lines before the replaced word are not its part.
    set kept [expr {[string length $before] + $start}]
    set offered [lmap word $offered {string range $word $kept end}]
    return [expr {[llength $offered] == 1 ? $offered : [linsert $offered 0 [commonBeginning $offered]]}]
}

# All that `typed` can become.
proc ost_shell::wholeWords {typed} {
    lassign [complete $typed [string length $typed]] from found
    set beginning [string range $typed 0 $from-1]
    return [lmap word $found {string cat $beginning $word}]
}

proc ost_shell::commonBeginning {words} {
    set first [lindex $words 0]
    for {set length [string length $first]} {$length > 0} {incr length -1} {
        set same 1
        foreach word $words {
            if {![string equal -length $length $first $word]} {
                set same 0
                break
            }
        }
        if {$same} break
    }
    return [string range $first 0 $length-1]
}
