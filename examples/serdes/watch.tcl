# Looks at the link twice from a script, the second time with counts that began at the first. Usage: watch.tcl <SKIP>
package require ost_capture
lassign $argv skip
set hub [ost_capture open -map link${skip}_debug/capture_map.json -launch "vvp -n link$skip.vvp" -log link$skip.log]
set first [$hub serdes -clear]
set second [$hub serdes]
dict for {signal now} [dict get $second levels] {
    set before [dict get $first levels $signal rises]
    puts "$signal ([dict get $now word]): $before rises, then [dict get $now rises]"
}
$hub close
