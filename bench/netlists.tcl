# The two readers of netlists on the same full netlist: the outline and index of platform/netlist, which read pieces of
# the text where it stands, and the stream of platform/design, which checks all of it and keeps names; beside them what
# one reader for both would hold, a tree of the JSON values.
source [file join [file dirname [info script]] lib.tcl]
source [file join [file dirname [info script]] designs.tcl]
set yosys [expr {[info exists env(OST_YOSYS)] ? $env(OST_YOSYS) : "yosys"}]

logicDesign $work/netlists.v [expr {$full ? 200000 : 20000}]
exec $yosys -q -p "read_verilog $work/netlists.v; hierarchy -check -top bench_top; proc; write_json $work/full.json"
for {set i 0} {$i < 5} {incr i} {
  foreach {reader time heap} [exec $env(OST_BUILD_DIR)/bench/netlist_readers $work/full.json bench_top] {
    lappend times($reader) $time
    set bytes($reader) $heap
  }
}
set size [format "%.0f MB" [expr {[file size $work/full.json] / 1e6}]]
foreach {what reader} {outline outline "index of its top" one_module "index of every module" all_modules "names by stream" names} {
  timeRow "full netlist, $size: $what" [median $times($reader)] "tree of JSON values" [median $times(tree)]
  note "$what: [format %.1f [expr {$bytes($reader) / 1e6}]] MB of heap, the tree: [format %.1f [expr {$bytes(tree) / 1e6}]] MB"
}
