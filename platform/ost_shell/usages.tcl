# What the commands take, as their own help says it: sub-commands, options with what follows them, words, option=value.

namespace eval ost_shell {
    variable usages {}  ;# "command sub-command" to what usageOf returns
}

# The commands of the packages: a procedure of that name is the user's, and would run where ours tell what they take.
proc ost_shell::commands {} {
    return [lmap command [lsort [info commands ::ost_*]] {
        set name [string range $command 2 end]
        if {[info procs $command] ne "" || $name in [interp aliases {}]} continue
        set name
    }]
}

proc ost_shell::isOurs {word} {
    return [expr {[string match ost_* $word] && $word in [commands]}]
}

# The sub-commands, as the command names them to who mistypes one.
proc ost_shell::subCommands {command} {
    catch {$command ?} message
    if {![regexp {must be (?:one of )?([^(]*)} $message -> names]} {return {}}
    return [lsort [regexp -all -inline {\w+} [regsub {,? or } $names { }]]]
}

# Options (a list of name and what follows it, empty for a flag), words (what may follow without a hyphen), choices (of
# option=value: name and values) and operators of a sub-command.
proc ost_shell::usageOf {command sub} {
    variable usages
    set name "$command $sub"
    if {![dict exists $usages $name]} {
        if {[catch {$command help $sub} help] && [catch {$command help} help]} {set help ""}
        dict set usages $name [readUsage $command $sub $help]
    }
    return [dict get $usages $name]
}

proc ost_shell::readUsage {command sub help} {
    # The line that begins with the command, and those below it that go on with an option.
    set pattern "(?:^|\\n)(?:usage:)? *$command $sub\\M(?! - )(\[^\\n]*(?:\\n +\\\[\[^\\n]*)*)"
    set line [expr {[regexp $pattern $help -> line] ? $line : ""}]
    set options {}
    set asked {\?(-\w+)(?: ([A-Z]\S*?))?\?(?= |$)}
    set given {(-\w+)(?: <([^>]*)>| (\w+))?}
    foreach {all option value} [regexp -all -inline $asked $line] {lappend options $option $value}
    set line [regsub -all $asked $line { }]
    foreach {all option angled bare} [regexp -all -inline $given $line] {lappend options $option $angled$bare}
    set line [regsub -all $given $line { }]
    set words {}
    foreach {all word} [regexp -all -inline {[<[?]+([^]<>[?]+)[]>?]} $line] {
        if {![regexp {^\s*(-.*)?$} $word]} {lappend words [string trim $word]}
    }
    foreach word [regexp -all -inline {\m[A-Z]{2,}\M} [regsub -all {\?[^?]*\?|<[^>]*>|\[[^]]*\]} $line { }]] {lappend words $word}
    set choices {}
    foreach {all name values} [regexp -all -inline -line {^ {8}(\w+) = \[(.*?)\]} $help] {dict set choices $name $values}
    foreach {all name} [regexp -all -inline -line {^ {8}(\w+)(?= \()} $help] {dict set choices $name ""}
    set operators {}
    if {[regexp {Operator must be ([^\n]*)} $help -> sentence]} {
        foreach {all operator} [regexp -all -inline {"([^"]+)"} $sentence] {lappend operators $operator}
    }
    return [dict create options $options words $words choices $choices operators $operators]
}

# The names of the options that trc_option and trig_option take, as the build found them: the help leaves some out.
proc ost_shell::loadOptions {folder} {
    variable allOptions {}
    set in [open [file join $folder options.txt]]
    foreach {sub name} [read $in] {dict lappend allOptions $sub $name}
    close $in
}
