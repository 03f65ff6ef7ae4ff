# Writes the command reference from the live command table: <docs folder>/reference.md, and one help page per command
# and sub-command into <help folder>. Fails when a command or sub-command has no proper help.
#
#   tclsh tools/write_reference.tcl <docs folder> <help folder>
package require Tcl 8.5
source [file join [file dirname [info script]] live_table.tcl]

proc writeFile {name text} {
    set out [open $name w]
    fconfigure $out -encoding utf-8
    puts -nonewline $out $text
    close $out
}

# "  ost_core add - Add a core\n  Usage:\n    ost_core add <core name>\n" in its two halves.
proc splitHelp {name help} {
    set pattern "^  [string map {* \\*} $name] - (\[^\n]+)\n  Usage:\n(.+)\$"
    if {![regexp $pattern $help -> summary usage]} {
        error "the help of \"$name\" must be \"  $name - <summary>\", \"  Usage:\" and the usage, it is:\n$help"
    }
    return [list $summary [string map {"\n    " "\n"} [string range $usage 4 end]]]
}

lassign $argv docsFolder helpFolder
set commands [packageCommands]
set version [package present ost_tclwrapper]
file delete -force -- $helpFolder
file mkdir $docsFolder $helpFolder

set text "# Command reference\n\n"
append text "Written from the command table of ost_tclwrapper $version while it was built. In Tcl the same texts come from\n"
append text "`<command> help` and `<command> help <sub-command>`.\n"
foreach command $commands {
    set help [$command help]
    writeFile [file join $helpFolder $command.txt] $help
    if {![regexp "^$command - (\[^\n]+)\n" $help -> summary]} {
        error "the help of \"$command\" must begin with \"$command - <summary>\", it is:\n$help"
    }
    append text "\n## $command\n\n$summary.\n"
    foreach sub [subCommands $command] {
        set help [$command help $sub]
        writeFile [file join $helpFolder $command.$sub.txt] $help
        lassign [splitHelp "$command $sub" $help] summary usage
        append text "\n### $command $sub\n\n$summary.\n\n```\n$usage```\n"
    }
}
writeFile [file join $docsFolder reference.md] $text
