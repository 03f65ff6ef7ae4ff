# Runs test files in child processes and exits with 1 when one fails, dies, or runs fewer tests than its line
# "# minimum tests: N" demands: a file that stops early looks like success to tcltest.
#
#   tclsh all.tcl ?tcltest option value ...?      for example -file core.test -match core-add-*
package require Tcl 8.5
package require tcltest 2.3

set folder [file dirname [file normalize [info script]]]
tcltest::configure -testdir $folder {*}$argv

source [file join $folder files.tcl]

# The sum of the lines of the files that match -file; of chosen tests, one must run.
set minimum 0
foreach file [glob -nocomplain -directory $folder {*}[tcltest::configure -file]] {
    if {![regexp -line {^# minimum tests: (\d+)$} [contents $file] -> fewest]} {
        puts "[file tail $file]: say how many tests it has at least in a line \"# minimum tests: N\""
        exit 1
    }
    incr minimum $fewest
}
if {[tcltest::configure -match] ne "*"} {set minimum 1}

set tests(run) 0
proc tcltest::cleanupTestsHook {} {
    set ::tests(run) [expr {$tcltest::numTests(Total) - $tcltest::numTests(Skipped)}]
}

set failed [tcltest::runAllTests]
if {$tests(run) < $minimum} {
    puts "only $tests(run) tests were run, at least $minimum are demanded"
    set failed 1
}
exit $failed
