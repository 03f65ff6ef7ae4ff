# What can stand where the cursor is: `ost_shell::complete line cursor`. Everything is asked from the commands, the
# project and the design as they are now; nothing is changed and nothing is shown.

namespace eval ost_shell {
    # What a word of the usages stands for, by its name there; the first pattern that fits counts.
    variable kinds {
        {^new |^pulse |^max }                none
        {^core[ _]name$}                     cores
        {^TU name$}                          units
        {^TE name$}                          expressions
        {^old name$}                         olds
        {^bus name$}                         buses
        {^signals? list$}                    signals
        {^signal name$|^clock name$|^reset signal|^PATTERN$} nets
        {^TU definition$}                    definition
        {^operator$}                         operators
        {^expre}                             formula
        {^position$}                         traced
        {^option=value$|^clk=}               assignment
        {^PATH$}                             paths
        {[Ff]ile|^FILE|^DIR$}                files
        {^SUBCOMMAND$}                       subs
        {\|}                                 choice
    }
}

# Returns the index of the first character that is replaced, and the candidates for what stands from there to `cursor`,
# sorted. A candidate for a level of the hierarchy ends with "/", an option's name with "=".
proc ost_shell::complete {line cursor} {
    set typed [typedAt [string range $line 0 $cursor-1]]
    dict with typed {
        if {$words eq ""} {return [fitting $start $prefix [commands]]}
        lassign $words command sub
        if {![isOurs $command]} {return [list $start {}]}
        if {[llength $words] == 1} {return [fitting $start $prefix [subCommands $command]]}
        set usage [usageOf $command $sub]
        set options [dict get $usage options]
        set last [lindex $words end]
        if {[dict exists $options $last] && [dict get $options $last] ne "" && [llength $words] > 2} {
            set what [dict get $options $last]
        } elseif {!$nested && [string match -* $prefix]} {
            return [fitting $start $prefix [dict keys $options]]
        } else {
            set what [lindex [dict get $usage words] [positionOf $words $options]]
            if {$what eq ""} {set what [lindex [dict get $usage words] end]}
        }
    }
    lassign [candidates $what $typed $usage] start prefix found
    if {$found eq "" && $prefix eq "" && ![dict get $typed nested]} {set found [dict keys $options]}
    return [fitting $start $prefix $found]
}

# How many words without a hyphen stand behind the sub-command.
proc ost_shell::positionOf {words options} {
    set position 0
    for {set i 2} {$i < [llength $words]} {incr i} {
        set word [lindex $words $i]
        if {![dict exists $options $word]} {
            incr position
        } elseif {[dict get $options $word] ne ""} {
            incr i
        }
    }
    return $position
}

proc ost_shell::fitting {start prefix candidates} {
    set fitting {}
    foreach candidate [lsort -unique $candidates] {
        # A name that has to be quoted fits without its brace, too.
        foreach typed [list $prefix "\{$prefix"] {
            if {![string equal -length [string length $typed] $typed $candidate]} continue
            lappend fitting $candidate
            break
        }
    }
    return [list $start $fitting]
}

# Start, prefix and candidates for a word that the usage calls `what`.
proc ost_shell::candidates {what typed usage} {
    variable kinds
    set kind none
    foreach {pattern kind} $kinds {
        if {[regexp $pattern $what]} break
        set kind none
    }
    dict with typed {
        lassign $words command sub
        set core [valueOf -core $words]
        # A new object has no name to complete.
        if {$sub eq "add" && $kind in {cores} && $what eq "core name" && [lindex $words end] ne "-core"} {set kind none}
        if {$sub eq "group" && $kind eq "buses"} {set kind none}
        if {$kind eq "olds"} {set kind [dict get {ost_tu units ost_te expressions} $command]}
        switch -- $kind {
            cores {set found [ask ost_core list]}
            units {set found [askCore ost_tu list $core]}
            expressions {set found [askCore ost_te list $core]}
            traced {set found [tracedNames $core 1]}
            buses {set found [tracedNames $core 0]}
            signals {
                set kept [expr {$sub in {del_sig move_sig group} || [lindex $words end] eq "-del_sig"}]
                set found [expr {$kept ? [tracedNames $core 1] : [netNames $prefix $nested]}]
            }
            nets {set found [netNames $prefix $nested]}
            paths {set found [levelNames $prefix]}
            operators {set found [dict get $usage operators]}
            definition {
                # {{signals} operator value}: the operator stands second, the value is not known.
                if {[llength $list] == 0} {
                    set found [netNames $prefix $nested]
                } elseif {[llength $list] == 1 && [regexp {^[-=!<>.A-Z]*$} $prefix]} {
                    set found [dict get $usage operators]
                } else {
                    set found [expr {[string match {*[0-9]*} $prefix] || [llength $list] > 1 ? {} : [netNames $prefix $nested]}]
                }
            }
            formula {
                regexp {[A-Za-z0-9_]*$} $prefix name
                incr start [expr {[string length $prefix] - [string length $name]}]
                set prefix $name
                set found [askCore ost_tu list $core]
            }
            assignment {
                if {[regexp {^(\w+)=(.*)$} $prefix -> option value]} {
                    incr start [string length $option=]
                    set prefix $value
                    set found [optionValues $option $value $usage $nested]
                } else {
                    set found [lmap option [optionNames $command $sub $core $usage] {string cat $option =}]
                }
            }
            subs {set found [subCommands $command]}
            choice {set found [split $what |]}
            files {set found [fileNames $prefix]}
            default {set found {}}
        }
    }
    return [list $start $prefix $found]
}

# The result of a command, or nothing when it fails.
proc ost_shell::ask {args} {
    return [expr {[catch $args result] ? {} : $result}]
}

# The same of a core: the one that was typed, when there is such a one.
proc ost_shell::askCore {command sub core} {
    if {$core eq ""} {return [ask $command $sub]}
    return [expr {$core in [ask ost_core list] ? [ask $command $sub -core $core] : {}}]
}

proc ost_shell::valueOf {option words} {
    set at [lsearch -exact $words $option]
    return [expr {$at < 0 ? {} : [lindex $words $at+1]}]
}

# The entries of a core's trace list, top level: buses with `all` or without, signals only with it.
proc ost_shell::tracedNames {core all} {
    set names {}
    foreach entry [askCore ost_trace list_sig $core] {
        set bus [expr {[lindex $entry 1] eq "=" && [llength $entry] == 3}]
        if {$bus || $all} {lappend names [expr {$bus ? [lindex $entry 0] : $entry}]}
    }
    return $names
}

# Nets and instances of the level that `prefix` leads to. In a list a name is written as an element of it, elsewhere as
# a word of Tcl.
proc ost_shell::netNames {prefix nested} {
    set path [string range $prefix 0 [string last / $prefix]-1]
    set level [ask ost_design level $path]
    if {$level eq ""} {return {}}
    set names [lmap instance [dict get $level instances] {string cat [lindex $instance 0] /}]
    foreach net [dict get $level nets] {
        set name [lindex $net 0]
        lappend names [expr {$nested && ![regexp {[\s\\{}"]} $name] ? $name : [list $name]}]
    }
    return $names
}

# The same behind "option=": a name that would have to be quoted there is left out.
proc ost_shell::optionNets {prefix nested} {
    return [lsearch -all -inline -not -glob [netNames $prefix $nested] "\{*"]
}

proc ost_shell::levelNames {prefix} {
    set level [ask ost_design level [string range $prefix 0 [string last / $prefix]-1]]
    if {$level eq ""} {return {}}
    return [lmap instance [dict get $level instances] {lindex $instance 0}]
}

# Names of the options that the command takes as option=value: the help's, those in force, and those that the build
# found in the command's own table.
proc ost_shell::optionNames {command sub core usage} {
    variable allOptions
    set names [dict keys [dict get $usage choices]]
    if {$command eq "ost_serdes"} {return {clk rst}}
    foreach line [split [askCore $command $sub $core] \n] {
        if {[regexp {^(\w+) = } $line -> name]} {lappend names $name}
    }
    if {[dict exists $allOptions $sub]} {lappend names {*}[dict get $allOptions $sub]}
    return $names
}

proc ost_shell::optionValues {option value usage nested} {
    set choices [dict get $usage choices]
    # The help leaves out the trigger enable, which is as the sample enable.
    if {![dict exists $choices $option]} {set option [string map {Trigger Sample Disable Enable DistRAM Sample} $option]}
    if {$option in {clk rst}} {return [optionNets $value $nested]}
    if {![dict exists $choices $option]} {return {}}
    set values [dict get $choices $option]
    if {$values eq "signal name"} {return [optionNets $value $nested]}
    if {[regexp {^(\d+),.*\.\.\.,(\d+)$} $values -> first last]} {
        set values {}
        for {set n $first} {$n <= $last} {incr n $n} {lappend values $n}
        return $values
    }
    return [expr {[regexp {^\w+(\|\w+)+$} $values] ? [split $values |] : {}}]
}

proc ost_shell::fileNames {prefix} {
    return [lmap name [glob -nocomplain -- [string map {\\ \\\\ * \\* ? \\? [ \\[ \{ \\\{} $prefix]*] {
        string cat $name [expr {[file isdirectory $name] ? "/" : ""}]
    }]
}
