# The module shows exactly its init entry, the handlers and the helpers that a host tool may call, and finds its
# libraries beside itself.
# Usage: tclsh exports.tcl <module> <handlers.h>
lassign $argv module header

set expected {
    Ost_tclwrapper_Init
    printMessage( checkLoadedProj( checkProjBusyStatus( printCmdHelp(
    generate_trace_option_list( listTraceOptions( setTraceOptions(
    generate_trigger_option_list( listTriggerOptions( setTriggerOptions(
    generate_wbone_option_list( listWboneOptions( setWboneOptions(
    listSerdesOptions( setSerdesOptions(
    OptionList::append( OptionList::find( OptionList::size( OptionList::at(
    IsOption::IsOption( IsOption::operator(
}
set file [open $header]
set handlers [regexp -all -inline {OST_HANDLER\((ost_\w+)\)} [read $file]]
close $file
foreach {- name} $handlers { lappend expected $name }
if {[llength $handlers] != 2 * 34} { puts stderr "$header: expected 34 handlers"; exit 1 }

set shown {}
foreach line [split [exec nm -D -C --defined-only $module] \n] {
    set name [join [lrange $line 2 end]]
    if {[regexp {^IsOption::operator\(} $name]} { set name "IsOption::operator(" }
    # A C++ function is known by its name up to the parameters, a handler by its plain name.
    regexp {^[\w:]+\(?} $name name
    if {$name ni $shown} { lappend shown $name }
}
set wrong 0
foreach name $expected { if {$name ni $shown} { puts stderr "not exported: $name"; incr wrong } }
foreach name $shown { if {$name ni $expected} { puts stderr "exported without need: $name"; incr wrong } }

set dynamic [exec readelf -d $module]
foreach library {libtclcmdex libhlp_help libistdata libistcomdata} {
    if {![string match "*NEEDED*\\\[$library.so\\\]*" $dynamic]} { puts stderr "not linked to $library"; incr wrong }
}
if {![regexp {R(UN)?PATH\)[^\n]*\[\$ORIGIN[\]:]} $dynamic]} { puts stderr "no RPATH \$ORIGIN"; incr wrong }
if {[string match *SYMBOLIC* $dynamic]} { puts stderr "linked with -Bsymbolic"; incr wrong }
exit [expr {$wrong > 0}]
