# Starting: `package require` in fresh interpreters, beside a package that has no command and links Qt Core.
source [file join [file dirname [info script]] lib.tcl]

proc load {package folder} {
  set script "set auto_path \[list {$folder} \[info library\]\]
    load {[file join $::env(OST_BUILD_DIR) bench bench_tools libbench_tools.so]} Bench_tools
    set before \[bench::cpu\]
    package require $package
    puts \[expr {\[bench::cpu\] - \$before}\]"
  expr {[exec [info nameofexecutable] << $script] / 1e9}
}
foreach {name package folder} [list ours ost_tclwrapper $env(OST_BUILD_DIR)/lib stub qt_stub $env(OST_BUILD_DIR)/bench/qt_stub] {
  load $package $folder  ;# From the disk once.
}
for {set i 0} {$i < 41} {incr i} {
  lappend ours [load ost_tclwrapper $env(OST_BUILD_DIR)/lib]
  lappend stub [load qt_stub $env(OST_BUILD_DIR)/bench/qt_stub]
}
timeRow "package require ost_tclwrapper" [median $ours] "empty package with Qt Core" [median $stub] 3
