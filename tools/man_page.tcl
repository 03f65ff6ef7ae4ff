# Manual pages in the man macros, from the Markdown that docs/ is written in: headings, paragraphs, lists, tables, blocks
# of code, `code`, *emphasis* and links, which become the name of the page that they lead to.
package require Tcl 8.5

# `text` as roff prints it, in ASCII; no line of it is a request.
proc roffText {text} {
    set ascii ""
    foreach character [split [string map {\\ \\e - \\- ' \\(aq ` \\(ga ^ \\(ha ~ \\(ti} $text] ""] {
        scan $character %c code
        append ascii [expr {$code > 127 ? [format {\[u%04X]} $code] : $character}]
    }
    return [regsub -all {(^|\n)([.'])} $ascii {\1\\\&\2}]
}

# The words of `text` in lines of at most 78 characters, where they fit.
proc roffFill {text} {
    set lines {}
    set line ""
    foreach word [regexp -all -inline {\S+} $text] {
        if {$line ne "" && [string length $line] + [string length $word] > 77} {
            lappend lines $line
            set line ""
        }
        append line [expr {$line eq "" ? "" : " "}] $word
    }
    return [join [lappend lines $line] \n]
}

# A paragraph with its inline marks, in one line or filled.
proc roffInline {text {fill 1}} {
    # Links: the word alone; a page of docs/ is known by its file name.
    set text [regsub -all {\[([^\]\n]*)\]\(([^)\s]*)\)} $text {\1}]
    set result ""
    set code 0
    foreach part [split $text `] {
        if {$code} {
            append result "\\fB[roffText $part]\\fR"
        } else {
            set part [regsub -all {\*\*([^*\n]+)\*\*} $part "\x01\\1\x03"]
            set part [regsub -all {\*([^*\s][^*\n]*)\*} $part "\x02\\1\x03"]
            append result [string map [list \x01 \\fB \x02 \\fI \x03 \\fR] [roffText $part]]
        }
        set code [expr {!$code}]
    }
    if {$fill} {set result [roffFill $result]}
    return [regsub -all {(^|\n)([.'])} $result {\1\\&\2}]\n
}

proc roffCode {lines} {
    set text ".PP\n.RS 4\n.nf\n"
    foreach line $lines {append text [expr {$line eq "" ? ".sp" : [roffText $line]}] \n}
    return "$text.fi\n.RE\n"
}

# A table as tagged paragraphs: the first column is the tag, the others follow with the heading of their column.
proc roffTable {rows} {
    set cells {}
    foreach row $rows {
        set line {}
        foreach cell [lrange [split [string map {\\| \x04} $row] |] 1 end-1] {lappend line [string map {\x04 |} [string trim $cell]]}
        lappend cells $line
    }
    set heads [lindex $cells 0]
    set text ""
    foreach row [lrange $cells 2 end] {
        append text ".TP\n[roffInline [lindex $row 0] 0]"
        set said {}
        foreach head [lrange $heads 1 end] cell [lrange $row 1 end] {
            if {$cell in {"" -}} continue
            lappend said [expr {[llength $heads] > 2 ? "*$head:* $cell" : $cell}]
        }
        append text [roffInline [join $said {; }]]
    }
    return $text
}

# The body of a page; a heading "## ..." becomes a section, "### ..." a subsection, the title is left out.
proc roffBody {markdown} {
    set text ""
    set lines [split [string trim $markdown \n] \n]
    for {set i 0} {$i < [llength $lines]} {} {
        set line [lindex $lines $i]
        # The lines from here on as long as they fit.
        set take {pattern {
            upvar 1 i i lines lines
            set block {}
            while {$i < [llength $lines] && [regexp $pattern [lindex $lines $i]]} {
                lappend block [lindex $lines $i]
                incr i
            }
            return $block
        }}
        if {[regexp {^(#+) (.*)$} $line -> marks title]} {
            incr i
            switch [string length $marks] {
                1 {}
                2 {append text ".SH \"[roffText [string toupper [string map {` {} \" {}} $title]]]\"\n"}
                default {append text ".SS \"[roffText [string map {` {} \" {}} $title]]\"\n"}
            }
        } elseif {[string match ```* $line]} {
            incr i
            append text [roffCode [apply $take {^(?!```)}]]
            incr i
        } elseif {[string match "    *" $line]} {
            set block [apply $take {^(    |$)}]
            append text [roffCode [split [string trimright [regsub -all -line {^    } [join $block \n] {}]] \n]]
        } elseif {[string match |* $line]} {
            append text [roffTable [apply $take {^\|}]]
        } elseif {[regexp {^(-|\d+\.) +(.*)$} $line -> mark item]} {
            incr i
            foreach more [apply $take {^ +\S}] {append item " " [string trim $more]}
            append text ".IP [expr {$mark eq "-" ? "\\(bu 2" : "$mark 4"}]\n[roffInline $item]"
        } elseif {[string trim $line] eq ""} {
            incr i
        } else {
            append text ".PP\n[roffInline [join [apply $take {^(?!#|```|\||- |\d+\. )\S}] " "]]"
        }
    }
    # A paragraph right behind a heading needs no mark of its own.
    return [regsub -all {(?w)(\.S[HS] [^\n]*\n)\.PP\n} $text {\1}]
}

# A whole page. `usages` is what can be typed; `markdown` the rest; `related` other pages, as name(section).
proc manPage {name section summary usages markdown related manual version} {
    set seconds [expr {[info exists ::env(SOURCE_DATE_EPOCH)] ? $::env(SOURCE_DATE_EPOCH) : [clock seconds]}]
    set day [clock format $seconds -format %Y-%m-%d -gmt 1]
    set text ".TH [string toupper $name] $section $day \"ost_tclwrapper $version\" \"$manual\"\n"
    append text ".SH NAME\n[roffText $name] \\- [roffText $summary]\n.SH SYNOPSIS\n.nf\n[roffText $usages]\n.fi\n"
    append text [roffBody $markdown]
    append text ".SH SEE ALSO\n"
    set pages {}
    foreach page $related {
        regexp {^(.*)\((.*)\)$} $page -> other where
        lappend pages ".BR [roffText $other] ($where)"
    }
    return "$text[join $pages " ,\n"]\n"
}
