# Runs test files in child processes and exits with 1 when one fails, dies, or runs fewer tests than its line
# "# minimum tests: N" demands: a file that stops early looks like success to tcltest.
#
#   tclsh all.tcl ?tcltest option value ...?      for example -file core.test -match core-add-*
package require Tcl 8.5
package require tcltest 2.3

set folder [file dirname [file normalize [info script]]]
tcltest::configure -testdir $folder {*}$argv

# The sum of the "# minimum tests:" lines of the files that match -file.
proc minimumTests {folder} {
    set sum 0
    foreach pattern [tcltest::configure -file] {
        foreach file [glob -nocomplain -directory $folder $pattern] {
            set in [open $file]
            set text [read $in]
            close $in
            if {![regexp -line {^# minimum tests: (\d+)$} $text -> fewest]} {
                puts "[file tail $file]: say how many tests it has at least in a line \"# minimum tests: N\""
                exit 1
            }
            incr sum $fewest
        }
    }
    return $sum
}

set tests(run) 0
proc tcltest::cleanupTestsHook {} {
    set ::tests(run) [expr {$tcltest::numTests(Total) - $tcltest::numTests(Skipped)}]
}

set minimum [expr {[tcltest::configure -match] eq "*" ? [minimumTests $folder] : 1}]
set failed [tcltest::runAllTests]
if {$tests(run) < $minimum} {
    puts "only $tests(run) tests were run, at least $minimum are demanded"
    set failed 1
}
exit $failed
