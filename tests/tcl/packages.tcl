# The packages, and what reads and writes files: how a test file begins that is no session.
package require tcltest 2.3
namespace import ::tcltest::*
package require ost_tclwrapper
package require ost_platform
source [file join [file dirname [info script]] files.tcl]
