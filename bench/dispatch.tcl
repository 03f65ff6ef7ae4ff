# Dispatch: what a command costs beside an empty command made with Tcl_CreateCommand in the same interpreter.
source [file join [file dirname [info script]] lib.tcl]
source [file join [file dirname [info script]] designs.tcl]
package require ost_platform
package require ost_tclwrapper

signalNetlist $work/ten.json 1 16
ost_design read $work/ten.json
ost_project new
ost_core add core1
set signals {}
for {set i 0} {$i < 10} {incr i} { lappend signals u_block0/sig_$i }
ost_trace add_sig $signals

# Ten options that change from one call to the next, so that no value is found as it was.
set trace(a) [list {*}{SampleClk=clk SampleEnable=on SampleEnableSig=u_block0/sig_1 SampleEnablePri=active_high BufferDepth=1024
  Implementation=EBR Timestamp=on TimestampBits=32 CaptureMode=single IncludeTrigger=on}]
set trace(b) [list {*}{SampleClk=u_block0/sig_3 SampleEnable=on SampleEnableSig=u_block0/sig_2 SampleEnablePri=active_low
  BufferDepth=2048 Implementation=DRAM Timestamp=on TimestampBits=24 CaptureMode=multiple IncludeTrigger=off}]

# Medians over rounds, each of which runs all commands, so that a busy machine slows all alike.
proc rounds {count calls} {
  upvar #0 trace trace
  set commands [dict create \
    empty {bench_empty} \
    select {ost_core select} \
    list {ost_trace list_sig} \
    options "ost_trace trc_option $trace(a); ost_trace trc_option $trace(b)"]
  dict for {name command} $commands {
    # Twenty calls a turn, so that the loop itself does not count.
    proc run_$name {n} "for {set i 0} {\$i < \$n} {incr i 20} {[string repeat "$command\n" 20]}"
    run_$name 100
  }
  for {set round 0} {$round < $count} {incr round} {
    dict for {name command} $commands {
      set n [expr {$name eq "empty" ? 20 * $calls : $calls}]
      lappend times($name) [expr {[cpu {run_$name $n}] / $n}]
    }
  }
  foreach name [dict keys $commands] { set median($name) [median $times($name)] }
  set median(options) [expr {$median(options) / 2}]
  return [array get median]
}

array set figure [rounds 15 5000]
timeRow "ost_core select (query)" $figure(select) "empty command" $figure(empty) 6
timeRow "ost_trace list_sig, ten signals" $figure(list) "empty command" $figure(empty) 20
timeRow "ost_trace trc_option, ten options" $figure(options) "empty command" $figure(empty) 60
