# The installed copy by itself: inserts into a design and finds the reader that reads it. The package is where tclsh
# looks, or TCLLIBPATH says where.
# Usage: installed.tcl <prefix> <work folder>
lassign $argv prefix folder
package require ost_tclwrapper
package require ost_platform
package require ost_capture

set docs $prefix/share/doc/ost_tclwrapper
ost_design read -f $docs/examples/frame_link/files.f
file delete -force $folder
file mkdir $folder
cd $folder
ost_project new installed.ost
ost_core add c1
ost_trace trc_option SampleClk=clk
ost_trace add_sig {u_lane0/u_parser/state tx_data tx_valid}
ost_tu add -name TU1 {tx_valid == 1}
ost_te add -name TE1 -expression TU1
ost_project run -save

set help [exec $prefix/bin/ost_capture -help]
set shell [exec $prefix/bin/ostsh << {puts [package present ost_capture]}]
foreach {found what} [list \
  [string match $prefix/* [lindex [package ifneeded ost_tclwrapper [package present ost_tclwrapper]] 1]] \
    "another copy of the package was loaded" \
  [file exists installed_debug/ostrel_debug.v] "no debug core was written" \
  [string match "*ost_capture*-map*" $help] "the reader does not tell its usage" \
  [expr {$shell eq [package present ost_capture]}] "ostsh does not load this version" \
  [file exists $prefix/share/ost_tclwrapper/ostrel_jtag_sim.v] "the JTAG model is missing" \
  [file exists $docs/reference.md] "the reference is missing" \
  [file exists $docs/boards.md] "the pages that are not written by the build are missing"] {
  if {!$found} { error $what }
}

# Each command has its manual page where man looks, or below a prefix that it does not know; no page makes roff complain.
set where [expr {[string match /usr* $prefix] ? "" : "-M $prefix/share/man"}]
foreach {section names} {3tcl {ost_project ost_core ost_trace ost_tu ost_te ost_serdes ost_design ost_capture} 1 {ost_capture ostsh} 7 ost_rules} {
  foreach name $names {
    set page [exec man {*}$where -w $section $name]
    if {![string match $prefix/* $page]} {error "man finds $page"}
    if {[auto_execok groff] ne ""} {exec zcat -f $page | groff -ww -man -Tutf8 >/dev/null}
    if {[auto_execok mandoc] ne ""} {exec mandoc -Tlint -Wwarning $page}
  }
}
