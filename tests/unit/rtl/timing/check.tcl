# Whether core_top.sdc covers every path between the clocks of net.v, and no line of it is without need. Says nothing
# when that is so. A limited path counts as covered, whatever its delay: it is taken out as a false path.

# A list of bits on the left of an assignment is more than the reader takes.
set in [open net.v]
set out [open flat.v w]
while {[gets $in line] >= 0} {
  if {[regexp {assign \{(.*)\} = \{(.*)\};} $line - to from]} {
    set bits {}
    foreach one [split $from ,] {
      if {[regexp {([0-9]+)'h([0-9a-f]+)} $one - width digits]} {
        foreach bit [split [format %0${width}b 0x$digits] ""] { lappend bits 1'h$bit }
      } else {
        lappend bits $one
      }
    }
    foreach a [split $to ,] b $bits { puts $out "  assign $a = $b;" }
  } else {
    puts $out $line
  }
}
close $in
close $out

read_liberty cells.lib
read_verilog flat.v
link_design core_top
set clocks {}
foreach port [get_ports {c*_clk wb_clk sd_clk sd_clocks*}] {
  create_clock -name [get_property $port full_name] -period 10 $port
  lappend clocks [get_property $port full_name]
}
set in [open core_top.sdc]
set lines [split [string map {/ .} [read $in]] \n]  ;# flattened
close $in
set groups {}
set exceptions {}
set number 0
foreach line $lines {
  incr number
  if {[regexp {^set_max_delay \S+ (.*)} $line - path]} {
    lappend exceptions $number max "-setup $path"
  } elseif {[regexp {^set_false_path -hold (.*)} $line - path]} {
    lappend exceptions $number min "-hold $path"
  } elseif {[string match set_clock_groups* $line]} {
    set groups $line
  } else {
    eval $line
  }
}
set pairs {}
foreach clock $clocks { lappend pairs $clock ostrel_tck ostrel_tck $clock }
proc uncovered {delay} {
  set paths 0
  foreach {from to} $::pairs {
    incr paths [llength [find_timing_paths -path_delay $delay -from [get_clocks $from] -to [get_clocks $to]]]
  }
  return $paths
}
# Groups that leave the paths change nothing here; they are of the right clocks when without that word no path is left.
eval [string map {-allow_paths {}} $groups]
if {[uncovered max] || [uncovered min]} { puts "not asynchronous: $groups" }
unset_clock_groups -asynchronous -name ostrel_tck
eval $groups
foreach clock $clocks {
  if {[string match sd_clocks* $clock]} { lappend pairs $clock sd_clk sd_clk $clock }
}
foreach {number delay path} $exceptions { eval set_false_path $path }
foreach delay {max min} {
  if {[uncovered $delay]} { puts "paths without a constraint: $delay" }
}
foreach {number delay path} $exceptions {
  eval unset_path_exceptions $path
  if {![uncovered $delay]} { puts "line $number covers nothing: $path" }
  eval set_false_path $path
}
foreach {from to} {-from jtag_tdi -from jtag_tms -to jtag_tdo} {
  if {![llength [find_timing_paths $from [get_ports $to]]]} { puts "no path $from $to" }
}
exit
