# Inserts a Wishbone master into pwm_system. Usage: insert.tcl <this folder> <folder for the project>
package require ost_platform
package require ost_tclwrapper
lassign $argv example folder
cd $example
ost_design read -top pwm_system -f files.f
ost_design prove strict
cd $folder
ost_project new -overwrite pwm.ost
ost_core add_wishbone
ost_project save
ost_project close

# No command sets the master's options: they are in the project file.
set file [open pwm.ost]
set text [read $file]
close $file
set file [open pwm.ost w]
puts -nonewline $file [string map {{"connected": false} {"connected": true}} $text]
close $file

ost_project open pwm.ost
if {[catch {ost_project run} result]} {
    puts stderr $result
    exit 1
}
