# Random legal Verilog, one design for each seed. A design is free of races, so that two simulators, or a netlist beside its
# source, agree on it: clocks never change together, and asynchronous resets and latch enables are pins of the top. All statements
# and all operators stand on lines and in parentheses of their own, which the minimiser cuts out.

namespace eval random_design {
  variable text {}    ;# Lines of the module in the making.
  variable pool {}    ;# What its expressions may read: {name bits low ascending}; bits is 0 for a scalar.
  variable settled {} ;# Registers, which a tri-state driver may depend on without a loop.
  variable clocks {}
  variable functions {}
  variable floating z ;# What stands for z in values: x for what is stored, which in hardware cannot float.
  variable number 0
}

proc random_design::below {count} { return [expr {int(rand() * $count)}] }
proc random_design::oneIn {count} { return [expr {[below $count] == 0}] }
proc random_design::pick {list} { return [lindex $list [below [llength $list]]] }
proc random_design::say {line} {
  variable text
  lappend text $line
}
proc random_design::newName {stem} {
  variable number
  incr number
  if {![oneIn 9]} { return $stem$number }
  return "\\$stem[pick {+ - *( #! '}]$number "
}

proc random_design::literal {{digits {0 1}}} {
  set width [expr {1 + [below 8]}]
  set value ""
  for {set i 0} {$i < $width} {incr i} { append value [pick $digits] }
  return $width'b$value
}

# A part of something in the pool, a whole, or now and then a literal.
proc random_design::operand {} {
  variable pool
  if {[oneIn 7] || $pool eq {}} { return [literal] }
  lassign [pick $pool] name bits low ascending
  if {$bits < 2 || [oneIn 2]} { return $name }
  set a [expr {$low + [below $bits]}]
  set b [expr {$low + [below $bits]}]
  if {$a == $b || [oneIn 3]} { return "$name\[$a\]" }
  return "$name\[[join [lsort -integer [expr {$ascending ? "-increasing" : "-decreasing"}] [list $a $b]] :]\]"
}

proc random_design::expression {{depth 2}} {
  variable functions
  if {$depth <= 0} { return [operand] }
  set a [expression [below $depth]]
  set b [expression [below $depth]]
  switch [below 16] {
    0 { return "($a ? $b : [value $depth])" }
    1 { return "({$a, $b})" }
    2 { return "({[expr {1 + [below 3]}]{$a}})" }
    3 { return "([pick {~ ! & | ^ ~& -}] $a)" }
    4 { return "(\$signed($a) [pick {+ - < >= >>> == + - *}] \$signed($b))" }
    5 { if {$functions ne {}} { return "([pick $functions]($a, $b))" } }
    6 { return "($a [pick {<< >> >>>}] [operand])" }
    7 { return "($a [pick {* % / === == + ^ - !=}] [operand])" }
  }
  return "($a [pick {+ - ^ ~^ + - ^ & | < <= == != && ||}] $b)"
}
# What is assigned: now and then bits that are x or z.
proc random_design::value {{depth 2}} {
  variable floating
  if {[oneIn 8]} { return [literal {0 1 x}] }
  if {[oneIn 25]} { return [literal [list 0 1 x $floating]] }
  return [expression [expr {min($depth, 3)}]]
}

# A range to declare with, and what the pool says of it. Parameter W is 4 at least.
proc random_design::range {} {
  return [pick {{"" 0 0 0} {"" 0 0 0} {{[3:0] } 4 0 0} {{[7:0] } 8 0 0} {{[0:5] } 6 0 1} {{[11:4] } 8 4 0} {{[W-1:0] } 4 0 0}
    {{[W+2:0] } 6 0 0}}]
}
proc random_design::declare {kind stem {init 0}} {
  lassign [range] range bits low ascending
  set name [newName $stem]
  set signed [expr {$range ne "" && [oneIn 6] ? "signed " : ""}]
  say "  $kind $signed$range$name[expr {$init ? " = [literal]" : ""}];"
  return [list $name $bits $low $ascending]
}
proc random_design::publish {entries} {
  variable pool
  lappend pool {*}$entries
}

# Statements that assign `targets`; `arrow` is <= or =.
proc random_design::statements {targets arrow indent depth} {
  for {set count [expr {1 + [below 3]}]} {$count > 0} {incr count -1} {
    lassign [pick $targets] name bits low
    set kind [expr {$depth > 0 ? [below 8] : 7}]
    switch $kind {
      0 - 1 {
        say "${indent}if ([expression]) begin"
        statements $targets $arrow "$indent  " [expr {$depth - 1}]
        if {[oneIn 2]} {
          say "${indent}end else begin"
          statements $targets $arrow "$indent  " [expr {$depth - 1}]
        }
        say "${indent}end"
      }
      2 {
        set word [pick {case case casez}]
        say "${indent}$word ([operand])"
        for {set i [expr {2 + [below 4]}]} {$i > 0} {incr i -1} {
          say "${indent}  [literal [expr {$word eq "casez" ? "0 1 ?" : "0 1"}]]:"
          say "${indent}    $name $arrow [value];"
        }
        if {[oneIn 2]} { say "${indent}  default: $name $arrow [value];" }
        say "${indent}endcase"
      }
      3 {
        if {$bits > 0 && $low == 0} {
          set i [newLoop]
          say "${indent}for ($i = 0; $i < $bits; $i = $i + 1)"
          say "${indent}  $name\[$i\] $arrow ([operand] ^ [expression 1]);"
        }
      }
      4 { if {$bits > 0} { say "${indent}$name\[[expr {$low + [below $bits]}]\] $arrow [value];" } }
      default { say "${indent}$name $arrow [value];" }
    }
  }
}
proc random_design::newLoop {} {
  variable text
  variable number
  set name loop[incr number]
  set text [linsert $text 0 "  integer $name;"]
  return $name
}

proc random_design::Wire {} {
  lassign [range] range bits low ascending
  set name [newName w]
  say "  wire [expr {$range ne "" && [oneIn 6] ? "signed " : ""}]$range$name = [value 3];"
  publish [list [list $name $bits $low $ascending]]
}

proc random_design::Registers {} {
  variable clocks
  variable settled
  set targets {}
  for {set i [below 3]} {$i >= 0} {incr i -1} { lappend targets [declare reg r [oneIn 2]] }
  # Whether a register may read those beside it is up to chance.
  set mixed [oneIn 2]
  if {$mixed} { publish $targets }
  set style [below 5]
  set edge [pick $clocks]
  say "  always @($edge[lindex {"" "" { or negedge rn} { or posedge rs} { or negedge rn or posedge rs}} $style]) begin"
  foreach condition [lindex {{} rs !rn rs {!rn rs}} $style] {
    say "    if ($condition) begin"
    foreach target $targets { say "      [lindex $target 0] <= [expr {$style > 1 && [oneIn 30] ? "a" : [literal]}];" }
    say "    end else"
  }
  if {[oneIn 3]} { say "    if ([expression])" }
  say "    begin"
  statements $targets <= "      " 2
  say "    end"
  say "  end"
  if {!$mixed} { publish $targets }
  lappend settled {*}$targets
}

proc random_design::Logic {} {
  set targets [list [declare reg c] [declare reg c]]
  say "  always @* begin"
  foreach target $targets { say "    [lindex $target 0] = [value];" }
  statements $targets = "    " 2
  say "  end"
  publish $targets
}

proc random_design::Latch {} {
  set target [declare reg l [oneIn 3]]
  say "  always @*"
  say "    if ([pick {gate !gate}]) [lindex $target 0] = [value];"
  publish [list $target]
}

proc random_design::Table {} {
  set target [declare reg t]
  set name [lindex $target 0]
  set bits [expr {2 + [below 4]}]
  say "  always @*"
  say "    case ([expression 1])"
  for {set i 0} {$i < (1 << $bits) - [below 2]} {incr i} { say "      $bits'd$i: $name = [literal [pick {{0 1} {0 1} {0 1 x}}]];" }
  say "      default: $name = [literal [pick {{0 1} x}]];"
  say "    endcase"
  publish [list $target]
}

# Only one block writes a memory, unless its addresses differ; reads are of all kinds.
proc random_design::Memory {} {
  variable clocks
  variable number
  lassign [range] range bits low ascending
  set name [newName m]
  set n [incr number]
  set depth [pick {4 8 16 6}]
  say "  reg $range$name \[0:[expr {$depth - 1}]\];"
  set address [lindex {1 2 3 3 4} [expr {$depth / 4}]]
  foreach port {wa wb ra} { say "  wire \[[expr {$address - 1}]:0\] $port$n = [expression 1];" }
  switch [below 4] {
    0 {
      set i [newLoop]
      say "  initial"
      say "    for ($i = 0; $i < $depth; $i = $i + 1) $name\[$i\] = ($i * 5) ^ 6;"
    }
    1 {
      say "  initial begin"
      for {set i [below $depth]} {$i >= 0} {incr i -1} { say "    $name\[$i\] = [literal {0 1 1 x}];" }
      say "  end"
    }
  }
  set edge [pick $clocks]
  set reads [list [declare reg q] [declare reg q]]
  if {![oneIn 6]} {
    say "  always @($edge) begin"
    if {![oneIn 4]} { say "    if ([expression 1])" }
    say "      $name\[wa$n\] <= [value];"
    if {[oneIn 3]} {
      say "    if ([expression 1])"
      say "      $name\[wb$n\][expr {$bits > 0 && [oneIn 2] ? "\[$low\]" : ""}] <= [value];"
    }
    if {[oneIn 3]} {
      if {[oneIn 2]} { say "    if ([expression 1])" }
      say "      [lindex $reads 0 0] <= $name\[[pick {ra wa}]$n\];"
    }
    say "  end"
  }
  say "  always @([pick $clocks]) begin"
  if {[oneIn 2]} { say "    if ([expression 1])" }
  say "      [lindex $reads 1 0] <= $name\[ra$n\];"
  say "  end"
  publish [lrange $reads 1 1]
  if {[oneIn 2]} {
    set out [newName o]
    say "  wire $range$out = $name\[[pick {ra wb}]$n\];"
    publish [list [list $out $bits $low $ascending]]
  }
}

proc random_design::TriState {} {
  set name [newName z]
  say "  wire \[3:0\] $name;"
  set enable [expression 1]
  say "  assign $name = $enable ? [expression 1] : 4'bz;"
  say "  assign $name = [pick [list "(!($enable))" [operand]]] ? [expression 1] : 4'bz;"
  publish [list [list $name 4 0 0]]
}

proc random_design::Function {} {
  variable functions
  variable pool
  variable number
  set outer $pool
  set name f[incr number]
  set pool {{p 8 0 0} {s 4 0 0}}
  say "  function \[7:0\] $name;"
  say "    input \[7:0\] p;"
  say "    input [pick {{} signed}] \[3:0\] s;"
  say "    integer i;"
  say "    begin"
  say "      $name = [expression];"
  if {[oneIn 2]} {
    say "      for (i = 0; i < 8; i = i + 1)"
    say "        if (p\[i\]) $name = ($name [pick {+ ^ -}] s);"
  }
  if {[oneIn 2]} {
    say "      case (s)"
    foreach label {1 4 9} { say "        $label: $name = [value 1];" }
    say "      endcase"
  }
  say "    end"
  say "  endfunction"
  set pool $outer
  lappend functions $name
}

proc random_design::Loop {} {
  variable number
  variable clocks
  set g g[incr number]
  set chain [newName k]
  say "  wire \[7:0\] $chain;"
  say "  assign $chain\[0\] = [operand];"
  say "  genvar $g;"
  say "  generate for ($g = 1; $g < 8; $g = $g + 1) begin[expr {[oneIn 4] ? "" : " : s$g"}]"
  if {[oneIn 2]} {
    say "    reg part;"
    say "    always @([pick $clocks])"
    say "      part <= ([operand] ^ $chain\[$g-1\]);"
  } else {
    say "    wire part = ($chain\[$g-1\] [pick {& | ^}] [operand]);"
  }
  say "    if ($g > K) begin : high"
  say "      assign $chain\[$g\] = (part & [operand]);"
  say "    end else begin : low"
  say "      assign $chain\[$g\] = (part | [operand]);"
  say "    end"
  say "  end endgenerate"
  publish [list [list $chain 8 0 0]]
}

proc random_design::GatedClock {} {
  variable clocks
  variable number
  set clock gc[incr number]
  # Neither an edge when the simulation begins, nor an enable that may be x.
  say "  wire ew$clock = [expression 1];"
  say "  reg en$clock = 1;"
  say "  always @(negedge ca)"
  say "    en$clock <= [expr {$number % 2 ? "gate" : "!gate"}];"
  say "  wire $clock = [pick [list "ca & en$clock" "~(ca & en$clock)"]];"
  lappend clocks "posedge $clock"
}

# Instances of the modules of `below`, some in a loop; buses join their inouts.
proc random_design::Instances {modules} {
  variable number
  set bus ""
  for {set count [expr {2 + [below 3]}]} {$count > 0} {incr count -1} {
    lassign [pick $modules] module inout
    set n [incr number]
    set width [pick {4 5 8 W}]
    set loop [oneIn 5]
    if {$inout && ($bus eq "" || [oneIn 3])} {
      set bus [pick [list pad bus$n]]
      if {$bus ne "pad"} { say "  wire \[1:0\] $bus;" }
    }
    set y [newName y]
    say "  wire \[[expr {$loop ? "15" : "$width-1"}]:0\] $y;"
    say "  wire \[3:0\] h$n;"
    set extra [expr {$inout ? [oneIn 5] ? ", .io()" : ", .io($bus)" : ""}]
    lassign [pick {{ca cb} {cb ca} {ca ca}}] ca cb
    if {$loop} {
      say "  genvar g$n;"
      say "  generate for (g$n = 0; g$n < 2; g$n = g$n + 1) begin : u$n"
      say "    $module #(.W(8), .K(g$n + 2)) v (.ca($ca), .cb($cb), .rn(rn), .rs(rs), .gate(gate), .a([expression 1]),\
        .b([expression 1]), .y($y\[g$n*8 +: 8\]), .q([expr {[oneIn 3] ? "" : "h$n\[g$n*2 +: 2\]"}])$extra);"
      say "  end endgenerate"
    } else {
      say "  $module #(.W($width)[expr {[oneIn 2] ? ", .K([below 8])" : ""}]) [newName u] (.ca($ca), .cb($cb), .rn(rn), .rs(rs),\
        .gate(gate), .a([expression 1]), .b([expression 1]), .y($y), .q(h$n)$extra);"
    }
    publish [list [list $y 4 0 0]]
    if {!$loop} { publish [list [list h$n 2 0 0]] }
  }
  if {$bus ne ""} { publish [list [list $bus 2 0 0]] }
}

proc random_design::Item {kind} {
  variable floating
  set floating [expr {$kind in {Registers Memory Latch} ? "x" : "z"}]
  $kind
}

# One module over others; its text ends up in `source`. Returns {name has-inout}.
proc random_design::Module {name modules sourceName} {
  upvar 1 $sourceName source
  variable floating
  variable text {}
  variable pool {{a 4 0 0} {b 8 0 0}}
  variable settled {}
  variable functions {}
  variable clocks {{posedge ca} {posedge ca} {posedge cb} {negedge ca} {negedge cb}}
  set inout [expr {$modules ne {} || [oneIn 2]}]
  set kinds {Wire Wire Registers Registers Registers Logic Logic Table Memory Latch TriState Function Loop GatedClock}
  for {set items [expr {3 + [below 5]}]} {$items > 0} {incr items -1} { Item [pick $kinds] }
  if {$modules ne {}} { Instances $modules }
  for {set items [below 3]} {$items > 0} {incr items -1} { Item [pick $kinds] }
  set io [expr {$modules eq {} ? "io" : "pad"}]
  if {$settled eq {}} { Item Registers }
  if {$inout && $modules eq {}} {
    say "  assign io = [lindex [pick $settled] 0] ? [lindex [pick $settled] 0] : 2'bz;"
    publish {{io 2 0 0}}
    Wire
  }
  say "  assign y = [expression];"
  say "  always @([pick $clocks])"
  set floating x
  say "    q <= [value];"
  lappend source "module $name #(parameter W = 6, parameter K = 3) (" \
    "  input ca, input cb, input rn, input rs, input gate," \
    "  input \[W-1:0\] a, input \[7:0\] b, output \[W-1:0\] y, output reg \[1:0\] q[expr {$inout ? ", inout \[1:0\] $io" : ""}]);"
  lappend source {*}$text endmodule
  return [list $name $inout]
}

# The Verilog of a design: lines. The top is `top`; its clocks are ca and cb, its resets rn (low) and rs (high).
proc random_design::make {seed} {
  variable number 0
  expr {srand($seed)}
  for {set i 0} {$i < 5} {incr i} { below 2 }
  set source {}
  set leaves [list [Module leaf0 {} source] [Module leaf1 {} source]]
  if {[oneIn 2]} { lappend leaves [Module {\leaf+2 } {} source] }
  set middle [lmap pair [list [Module middle $leaves source]] { lreplace $pair 1 1 0 }]
  Module top [concat $leaves $middle] source
  return $source
}
