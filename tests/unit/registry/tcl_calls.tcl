# Every Tcl function that the module's sources call stands in the stubs table of Tcl 8.4, whatever headers they are
# compiled with. A call of a later one would load in 8.4 and then crash.
# Usage: tclsh tcl_calls.tcl <compiler> <tclDecls.h> <source folders> <compiler options>...
set options [lassign $argv compiler declarations folders]
set firstLaterSlot 494  ;# Tcl_DictObjPut, new in 8.5

proc lateCalls {code slots firstLaterSlot} {
    set late {}
    foreach {- table call} [regexp -all -inline {(tcl\w*StubsPtr)\s*->\s*(\w+)} $code] {
        if {$table ne "tclStubsPtr" || ![dict exists $slots $call] || [dict get $slots $call] >= $firstLaterSlot} {
            if {$call ni $late} { lappend late $call }
        }
    }
    return $late
}

source [file join [file dirname [info script]] ../../tcl/files.tcl]
set slots {}
foreach {- call slot} [regexp -all -inline {\(\*(tcl\w*)\) \([^;]*\); /\* (\d+) \*/} [contents $declarations]] {
    if {![dict exists $slots $call]} { dict set slots $call $slot }
}

# The check must be able to fail.
if {[lateCalls {(tclStubsPtr->tcl_CreateCommand) (tclStubsPtr->tcl_DictObjPut) tclIntStubsPtr->x} $slots \
        $firstLaterSlot] ne {tcl_DictObjPut x}} {
    puts stderr "the check itself does not work with $declarations"
    exit 1
}

# One translation unit of all sources is preprocessed: the headers are the expensive part.
set unit {}
foreach folder $folders {
    foreach source [glob -directory $folder *.cpp] { append unit "#include \"$source\"\n" }
}
set code [exec -ignorestderr {*}$compiler -E {*}$options -x c++ - << $unit]
set calls [lsort -unique [regexp -all -inline {tclStubsPtr\s*->\s*tcl_\w+} $code]]
if {[llength $calls] < 12} { puts stderr "found only: $calls"; exit 1 }
set late [lateCalls $code $slots $firstLaterSlot]
foreach call $late { puts stderr "not in the stubs table of Tcl 8.4: $call" }
exit [expr {$late ne {}}]
