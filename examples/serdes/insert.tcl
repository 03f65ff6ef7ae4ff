# Inserts a serdes core into the link. Usage: insert.tcl <this folder> <folder for the project> <SKIP>
package require ost_platform
package require ost_tclwrapper
lassign $argv example folder skip
cd $folder
ost_design read -top link -param SKIP=$skip $example/rtl/link.v
ost_design prove strict
ost_project new -overwrite link$skip.ost
ost_core add_serdes
ost_serdes set clk=ref_clk rst=rst
if {[catch {ost_project run} result]} {
    puts stderr $result
    exit 1
}
