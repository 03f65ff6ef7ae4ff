# The command table as a user can see it: asked from the package itself, for scripts that walk all commands.

# Loads the package and returns the commands that it created, sorted.
proc packageCommands {} {
    set before [info commands ost_*]
    package require ost_tclwrapper
    set commands {}
    foreach command [lsort [info commands ost_*]] {
        if {$command ni $before} {lappend commands $command}
    }
    return $commands
}

# The sub-commands of `command`, sorted, as the dispatcher names them to a user who mistyped one.
proc subCommands {command} {
    if {![catch {$command ?} message] || ![regexp {: must be ([^(]*)} $message -> list]} {
        error "\"$command ?\" does not list the sub-commands: $message"
    }
    return [lsort [string map {", or " " " " or " " " "," ""} $list]]
}
