# Whether core_top.xdc is of the dialect, and its names are those of the netlist: each pattern finds something, and all
# registers that a crossing leads to have one clock, which is none of those that it comes from. Says nothing when so.

proc contents {name} {
  set in [open $name]
  try {read $in} finally {close $in}
}
# For each module of a netlist its ports, and its cells but gates: names, types and nets of pins.
proc modules {file} {
  set modules {}
  foreach line [split [contents $file] \n] {
    if {[regexp {^module (\S+?) ?\(} $line - module]} {
      dict set modules [set module [string trimleft $module \\]] {ports {} cells {}}
    } elseif {[regexp {^  (?:in|out)put .*?(\S+);} $line - port]} {
      dict set modules $module ports $port {}
    } elseif {[regexp {^  (\S+) +\\?(\S+) +\($} $line - type name]} {
      set isGate [regexp {^_\d+_$} $name]
      if {!$isGate} {dict set modules $module cells $name type [string trimleft $type \\]}
    } elseif {[regexp {^    \.(\w+)\((.*)\),?$} $line - pin net] && !$isGate} {
      dict set modules $module cells $name $pin [string trim $net]
    }
  }
  return $modules
}
set hierarchy [modules hierarchy.v]
set flat [dict get [modules registers.v] core_top cells]
proc walk {module path} {
  dict for {name cell} [dict get $::hierarchy $module cells] {
    set ::cells($path$name) $cell
    if {[dict exists $::hierarchy [dict get $cell type]]} {walk [dict get $cell type] $path$name/}
  }
}
walk core_top {}

# A wildcard stays within a level of the hierarchy.
proc found {patterns names} {
  concat {*}[lmap pattern $patterns {
    set depth [llength [split $pattern /]]
    set fitting [lsearch -all -inline $names $pattern]
    set fitting [lmap name $fitting {if {[llength [split $name /]] != $depth} continue; set name}]
    if {$fitting eq ""} {puts "nothing is called $pattern"}
    set fitting
  }]
}
proc get_cells {patterns} {found $patterns [array names ::cells]}
proc get_ports {patterns} {found $patterns [dict keys [dict get $::hierarchy core_top ports]]}
proc get_pins {patterns} {
  set cell [file dirname $patterns]
  found $patterns [lmap pin [dict keys $::cells($cell)] {string cat $cell / $pin}]
}
proc clocks {cells} {
  lsort -unique [lmap cell $cells {
    set flat [string map {/ .} $cell]
    if {![dict exists $::flat $flat C]} continue
    dict get $::flat $flat C
  }]
}

# command, options without and with a value, how many words besides them
foreach {command flags options words} {
  create_clock {} {-name -period} 1
  set_input_delay {-clock_fall -max -min} -clock 2
  set_output_delay {-max -min} -clock 2
  set_max_delay -datapath_only {-from -to} 1
  set_false_path {} -to 0
} {
  interp alias {} $command {} take $command $flags $options $words
}
proc take {command flags options words args} {
  set rest {}
  for {set i 0} {$i < [llength $args]} {incr i} {
    set word [lindex $args $i]
    if {$word in $options} {
      set value($word) [lindex $args [incr i]]
    } elseif {$word in $flags} {
      set value($word) 1
    } else {
      lappend rest $word
    }
  }
  if {[llength $rest] != $words} {puts "$command does not take this: $args"}
  if {$command ne "set_max_delay"} return
  foreach side {from to} {set $side [clocks $value(-$side)]}
  if {![info exists value(-datapath_only)] || $from eq {} || [llength $to] != 1 || $to in $from} {
    puts "clocks $from to $to: $args"
  }
}
interp create -safe reader
reader eval {namespace delete ::}
foreach command {create_clock set_input_delay set_output_delay set_max_delay set_false_path get_cells get_ports get_pins} {
  reader alias $command $command
}
reader eval [contents core_top.xdc]
