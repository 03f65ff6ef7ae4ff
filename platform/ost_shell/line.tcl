# Where the cursor stands in a line of Tcl: in which word of which command, and how deep in its lists.

namespace eval ost_shell {}

# What is being typed at the end of `line`: words (the complete words of the innermost command of ours before it), list
# (the complete elements of the list that the word is, innermost, when it is one), nested (whether it is a list or a
# quoted text), prefix (what stands of the word or element) and start (the index of its first character).
proc ost_shell::typedAt {line} {
    # A frame is what a bracket, brace or quote opened: its kind, the words of its last command, the word begun.
    set frames [list [dict create kind command words {} word {} start 0 begun 0]]
    set length [string length $line]
    for {set i 0} {$i < $length} {incr i} {
        set frame [lindex $frames end]
        set kind [dict get $frame kind]
        set begun [dict get $frame begun]
        set c [string index $line $i]
        if {$c eq "\\"} {
            incr i
            set frame [typedMore $frame [string range $line $i-1 $i] [expr {$i - 1}]]
        } elseif {$c in {" " \t}} {
            set frame [typedEnd $frame]
        } elseif {$c in {; \n} && $kind ne "quote"} {
            dict set frame words {}
            dict set frame word {}
            dict set frame begun 0
        } elseif {($c eq "\[" && $kind eq "command" && ![isOurs [lindex [dict get $frame words] 0]])
                  || (!$begun && ($c in {"\{" "\["} || ($c eq "\"" && $kind ne "quote")))} {
            # Within a word of ours a bracket is a net's.
            lset frames end [typedMore $frame $c $i]
            set opened [dict get {"\{" brace "[" command "\"" quote} $c]
            lappend frames [dict create kind $opened words {} word {} start [expr {$i + 1}] begun 0]
            continue
        } elseif {[llength $frames] > 1 && $c eq [dict get {brace "\}" command "]" quote "\""} $kind]
                  && !($c eq "]" && [string match {*\[*} [dict get $frame word]])} {
            set from [dict get [lindex $frames end-1] start]
            set frames [lrange $frames 0 end-1]
            set frame [lindex $frames end]
            dict set frame word [string range $line $from $i]
        } else {
            set frame [typedMore $frame $c $i]
        }
        lset frames end $frame
    }
    set inner [lindex $frames end]
    if {![dict get $inner begun]} {dict set inner start $length}
    set typed [dict create words {} list {} nested 0 prefix [dict get $inner word] start [dict get $inner start]]
    for {set level [expr {[llength $frames] - 1}]} {$level >= 0} {incr level -1} {
        set frame [lindex $frames $level]
        set ours [isOurs [lindex [dict get $frame words] 0]]
        if {$ours || [dict get $frame kind] eq "command"} {
            dict set typed words [dict get $frame words]
            dict set typed nested [expr {$level < [llength $frames] - 1}]
            break
        }
        if {$level == [llength $frames] - 1} {dict set typed list [dict get $inner words]}
    }
    # The first word in the braces of another command's body may be one of ours.
    if {[dict get $typed nested] && ![isOurs [lindex [dict get $typed words] 0]] && [dict get $typed list] eq ""} {
        dict set typed words {}
        dict set typed nested 0
    }
    return $typed
}

proc ost_shell::typedMore {frame text at} {
    if {![dict get $frame begun]} {
        dict set frame begun 1
        dict set frame start $at
    }
    dict append frame word $text
    return $frame
}

proc ost_shell::typedEnd {frame} {
    if {[dict get $frame begun]} {dict lappend frame words [dict get $frame word]}
    dict set frame word {}
    dict set frame begun 0
    return $frame
}
