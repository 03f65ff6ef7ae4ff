# Runs every sub-command once with success and with each kind of refusal: the script for memory checkers. Prints what
# differs from the expected status and exits with 1.
package require Tcl 8.5

set root [file dirname [file dirname [file dirname [file normalize [info script]]]]]
set ::env(OST_DESIGN) [file join $root examples/frame_link/files.f]
source [file join $root tools/live_table.tcl]

set differences 0
array set seen {}

# Expects the words to end with `status`: ok or error.
proc expect {status args} {
    global seen differences
    set seen([lrange $args 0 1]) 1
    set got [expr {[catch {uplevel #0 $args} result] ? "error" : "ok"}]
    if {$got ne $status} {
        puts "$args: $got instead of $status: $result"
        incr differences
    }
}

set subCommands {}
foreach command [packageCommands] {
    expect ok $command
    foreach sub [subCommands $command] {lappend subCommands $command $sub}
}
# Without a project, with an option that no one knows, and with too many words.
foreach {command sub} $subCommands {
    expect error $command $sub -no_such_option
    expect error $command $sub a b c d e f
}
expect ok ost_project new
foreach {command sub} $subCommands {
    expect error $command $sub -no_such_option
    expect error $command $sub -core nobody a b c
}
# From here on each sub-command must be seen again.
array unset seen
set file every_command.ost
expect ok ost_project close
expect error ost_project close
expect ok ost_project new -overwrite $file
expect error ost_project new $file
expect error ost_trace list_sig
expect ok ost_core add c1
expect ok ost_core add c2
expect error ost_core add c1
expect ok ost_core select c1
expect error ost_core select nobody
expect ok ost_core rename c2 other
expect ok ost_core delete other
expect ok ost_core list
expect ok ost_trace add_sig {u_lane0/u_parser/state u_merge/pop0 tx_valid lane_on {uptime[3:0]}}
expect error ost_trace add_sig no_such_net
expect ok ost_trace move_sig -move_to lane_on u_merge/pop0
expect ok ost_trace group -bus pair {u_merge/pop0 tx_valid}
expect ok ost_trace rename_bus -bus pair couple
expect ok ost_trace ungroup couple
expect ok ost_trace del_sig lane_on
expect ok ost_trace list_sig
expect ok ost_trace trc_option SampleClk=clk BufferDepth=64
expect ok ost_trace trc_option BufferDepth=banana NoSuchOption=1
expect ok ost_trace trc_option
expect ok ost_trace trig_option DefaultRadix=hex
expect ok ost_trace trig_option
expect ok ost_tu add -name inFrame {{u_lane0/u_parser/state} == 2}
expect ok ost_tu add {{u_merge/pop0} .RE. 1}
expect error ost_tu add {{u_merge/pop0} nonsense 1}
expect ok ost_tu set -name inFrame -op != -val 0
expect ok ost_tu rename inFrame receiving
expect ok ost_tu list
expect ok ost_te add -name start -expression receiving
expect error ost_te add -expression {receiving &}
expect ok ost_te set -expression {receiving & TU1} start
expect ok ost_te rename start go
expect ok ost_te list
expect ok ost_core add_wishbone
expect ok ost_core del_wishbone
expect ok ost_core add_serdes
expect ok ost_serdes set clk=clk
expect ok ost_core del_serdes
expect ok ost_project save
expect ok ost_project run -drc
expect ok ost_project run -save
expect ok ost_te remove go
expect ok ost_tu remove receiving
expect error ost_project close
expect ok ost_project close -force
expect ok ost_project open $file
expect ok ost_project close
expect error ost_project open no_such_file.ost

foreach {command sub} $subCommands {
    if {![info exists seen([list $command $sub])]} {
        puts "$command $sub is not in this script"
        incr differences
    }
}
file delete -force $file [file rootname $file]_debug
puts "[llength [array names seen]] sub-commands, $differences differences"
exit [expr {$differences > 0}]
