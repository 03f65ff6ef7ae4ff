# What the test files of the command groups share: a small design, a project to begin with, and sessions, which say
# what an engineer types and sees. Run by refusing_tclsh.
source [file join [file dirname [info script]] packages.tcl]

if {[info commands silent] eq ""} {error "run this file by <build>/bin/refusing_tclsh in the place of tclsh"}
set dir [makeDirectory work]
cd $dir
put top.v {
module sub(input clk, input en, output reg [7:0] cnt);
  always @(posedge clk) if (en) cnt <= cnt + 1;
endmodule
(* ostrel_role = "dcu" *)
module top(input clk, input rst, input en, output [7:0] a, output [7:0] b, output reg done);
  reg [3:0] state;
  sub u1(.clk(clk), .en(en), .cnt(a));
  sub u2(.clk(clk), .en(done), .cnt(b));
  always @(posedge clk)
    if (rst) begin state <= 0; done <= 0; end else begin state <= state + 1; done <= state == 9; end
endmodule
(* ostrel_role = "dcu j2w jtag2wb" *) module paths(input clk); endmodule
(* ostrel_role = "jtag2wb jtag2wb_core" *) module own(input clk); endmodule
}
ost_design read -top top top.v

proc fresh {} {
    listen {catch {ost_project close -force}; ost_project new; ost_core add c1}
}

# The unit TU1 as the project file holds it.
proc stored {} {
    listen {ost_project save -overwrite stored.ost}
    regexp {"units": \[\s+\{([^\}]*)\}} [contents stored.ost] -> unit
    return [string trim [regsub -all {\s+} [string map {\" {}} $unit] " "]]
}

# A transformation of the console's channel, which collects what reaches it past the `puts` that tcltest watches.
set console {}
proc collect {operation id {data {}}} {
    if {$operation eq "initialize"} {return {initialize finalize write flush}}
    append ::console $data
    return {}
}

# Status and result of the script, and what it printed on the console.
proc listen {script} {
    set before $::console
    set ::console {}
    flush stdout
    chan push stdout collect
    set status [catch {uplevel #0 $script} result]
    flush stdout
    chan pop stdout
    set text [encoding convertfrom utf-8 $::console]
    set ::console $before
    return [list $status $result $text]
}

# The operations of the service that the script called, with their arguments.
proc called {script} {
    set ::calls {}
    listen $script
    return $::calls
}

# Code and pattern of each message of the catalogue, with the places of its arguments in parentheses.
set catalogue [contents [file join [file dirname [info script]] ../../platform/istcomdata/message_catalogue.cpp]]
set messages [regexp -all -inline {\{"(\d+)",\s+((?:"(?:[^"\\]|\\.)*"\s*)+)\}} $catalogue]
set catalogue {}
foreach {- code text} $messages {
    set text [string map {\\\" \"} [regsub -all {^"|"$|"\s+"} $text {}]]
    set text [regsub -all {%[12]} [regsub -all {[][(){}.*+?^$|\\]} $text {\\&}] (.*)]
    lappend catalogue $code [string map {%r {(?:: (.*)|\.)} %q {(?: "(.*)")?}} $text]
}

# "#0104(x.ost)" for the catalogue's message of that code about x.ost, any other line as it is.
proc numbered {line} {
    foreach {code pattern} $::catalogue {
        if {[regexp "^$pattern\$" $line]} {
            set arguments [lrange [regexp -inline "^$pattern\$" $line] 1 end]
            return "#$code[expr {[join $arguments {}] eq "" ? "" : "([join $arguments {; }])"}]"
        }
    }
    return $line
}

# What the script shows, in one line: "| " before each line of the console, then "= " and the result, or "! ", errorCode
# in brackets and the error. A line feed is shown as \n, a registered usage as <usage>, the folder of the test as <dir>.
proc shown {script} {
    lassign [listen $script] status result console
    set shown {}
    if {$console ne ""} {set shown [split [regsub {\n$} $console {}] \n]}
    set shown [lmap line $shown {string cat "| " [numbered $line]}]
    if {$console ne "" && [string index $console end] ne "\n"} {lappend shown (unended)}
    if {$status} {
        set code [expr {$::errorCode eq "NONE" ? "" : " \[$::errorCode\]"}]
        if {[string match " ?OST *" $code]} {
            set result [string map [list [[lindex $script 0] help [lindex $script 1]] <usage>] $result]
        }
        lappend shown [string trim "!$code $result"]
    } elseif {$result ne ""} {
        lappend shown "= $result"
    }
    return [string map [list $::dir <dir> \n \\n \u00e9 {\u00e9} \u00e0 {\u00e0}] [join $shown]]
}

# A test that runs each row's script and expects what stands behind two blanks or in the lines below, indented deeper.
# It starts with an untitled project with the core c1, unless a set-up stands before the rows.
proc session {name description args} {
    set setup [expr {[llength $args] > 1 ? [lindex $args 0] : "fresh"}]
    set shows {^(.*?)  ([=|!].*)$}
    set rows {}
    foreach line [split [string trim [lindex $args end] \n] \n] {
        if {![string match "        *" $line]} {
            lappend rows [string trim $line]
        } else {
            set row [lindex $rows end]
            append row [expr {[regexp $shows $row] ? " " : "  "}] [string trim $line]
            lset rows end $row
        }
    }
    set scripts [lmap row $rows {expr {[regexp $shows $row -> script] ? $script : $row}}]
    uplevel #0 [list test $name $description -setup $setup -body [list replay $scripts] -result \n[join $rows \n]]
}

proc replay {scripts} {
    set seen {}
    foreach script $scripts {append seen \n [string trimright "$script  [shown $script]"]}
    return $seen
}
