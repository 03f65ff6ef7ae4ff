# Generators of designs of any size, deterministic.

# A Yosys JSON netlist: `blocks` instances u_block0, u_block1, ... of modules of their own, each with the scalar nets
# sig_0 to sig_<n-1> and a clock. No Yosys is needed to read it.
proc signalNetlist {file blocks nets} {
  set channel [open $file w]
  puts $channel "{\"creator\": \"bench\", \"modules\": {"
  set cells {}
  for {set block 0} {$block < $blocks} {incr block} {
    puts $channel "\"block$block\": {\"attributes\": {}, \"ports\": {\"clk\": {\"direction\": \"input\", \"bits\": \[2\]}},"
    puts $channel "\"cells\": {}, \"netnames\": {"
    for {set i 0} {$i < $nets} {incr i} {
      puts $channel "\"sig_$i\": {\"hide_name\": 0, \"bits\": \[[expr {$i + 3}]\], \"attributes\": {}},"
    }
    puts $channel "\"clk\": {\"hide_name\": 0, \"bits\": \[2\], \"attributes\": {}}}},"
    lappend cells "\"u_block$block\": {\"hide_name\": 0, \"type\": \"block$block\", \"parameters\": {}, \"attributes\": {},\
      \"port_directions\": {\"clk\": \"input\"}, \"connections\": {\"clk\": \[2\]}}"
  }
  puts $channel "\"bench_top\": {\"attributes\": {\"top\": 1}, \"ports\": {\"clk\": {\"direction\": \"input\", \"bits\": \[2\]}},"
  puts $channel "\"cells\": {[join $cells ,\n]},"
  puts $channel "\"netnames\": {\"clk\": {\"hide_name\": 0, \"bits\": \[2\], \"attributes\": {}}}}}}"
  close $channel
}

# Verilog with about `nets` declared nets: modules of 500 nets, half of them single bits and half of 4 bits, registers
# and sums, selections and comparisons, a state machine each, under one top.
proc logicDesign {file nets} {
  set modules [expr {max(1, $nets / 500)}]
  set channel [open $file w]
  for {set m 0} {$m < $modules} {incr m} {
    puts $channel "module unit$m (input clk, input rst, input \[3:0\] in, output \[3:0\] out);"
    puts $channel "  reg \[2:0\] state;\n  wire \[3:0\] w0 = in;\n  reg \[3:0\] r0;\n  wire a0 = in\[0\];\n  reg b0;"
    for {set i 1} {$i < 123} {incr i} {
      set p [expr {$i - 1}]
      set q [expr {($i * 7 + $m) % $i}]
      set value [lindex [list "r$p + w$q" "state\[0\] ? w$p : r$q" "{w$p\[1:0\], r$q\[3:2\]} ^ r$p" "b$q ? w$p & r$q : ~w$p"] \
        [expr {$i % 4}]]
      puts $channel "  wire \[3:0\] w$i = $value;\n  reg \[3:0\] r$i;"
      puts $channel "  wire a$i = [lindex [list "b$p & a$q" "r$p < w$q" "b$q ^ r$p\[1\]"] [expr {$i % 3}]];\n  reg b$i;"
    }
    puts $channel "  always @(posedge clk) begin"
    for {set i 0} {$i < 123} {incr i} { puts $channel "    r$i <= w$i;\n    b$i <= a$i;" }
    puts $channel "    if (rst) state <= 0;"
    puts $channel "    else case (state)\n      0: if (in\[0\]) state <= 1;\n      1: state <= in\[1\] ? 2 : 3;\n      2: state <= 4;"
    puts $channel "      3: if (r5\[3\]) state <= 4;\n      default: state <= 0;\n    endcase\n  end"
    puts $channel "  assign out = r122;\nendmodule"
  }
  puts $channel "module bench_top (input clk, input rst, input \[3:0\] in, output \[3:0\] out);"
  for {set m 0} {$m <= $modules} {incr m} { puts $channel "  wire \[3:0\] link$m;" }
  puts $channel "  assign link0 = in;\n  assign out = link$modules;"
  for {set m 0} {$m < $modules} {incr m} {
    puts $channel "  unit$m u_unit$m (.clk(clk), .rst(rst), .in(link$m), .out(link[expr {$m + 1}]));"
  }
  puts $channel "endmodule"
  close $channel
}

# Verilog with `count` memories of 64 Kbit, in four shapes, each with a write and a read port.
proc memoryDesign {file count} {
  set channel [open $file w]
  foreach {width depth bits} {1 65536 16 8 8192 13 32 2048 11 64 1024 10} {
    puts $channel "module ram$width (input clk, input we, input \[[expr {$bits - 1}]:0\] wa, ra,"
    puts $channel "  input \[[expr {$width - 1}]:0\] d, output reg \[[expr {$width - 1}]:0\] q);"
    puts $channel "  reg \[[expr {$width - 1}]:0\] mem \[0:[expr {$depth - 1}]\];"
    puts $channel "  always @(posedge clk) begin\n    if (we) mem\[wa\] <= d;\n    q <= mem\[ra\];\n  end\nendmodule"
  }
  puts $channel "module bench_top (input clk, input we, input \[15:0\] wa, ra, input \[63:0\] d, output \[63:0\] q);"
  set all {}
  for {set i 0} {$i < $count} {incr i} {
    lassign [lindex {{1 16} {8 13} {32 11} {64 10}} [expr {$i % 4}]] width bits
    puts $channel "  wire \[[expr {$width - 1}]:0\] q$i;"
    puts $channel "  ram$width u_ram$i (.clk(clk), .we(we & wa\[15\]), .wa(wa\[[expr {$bits - 1}]:0\]), .ra(ra\[[expr {$bits - 1}]:0\]),\
      .d(d\[[expr {$width - 1}]:0\]), .q(q$i));"
    lappend all q$i
  }
  puts $channel "  assign q = [join $all { ^ }];\nendmodule"
  close $channel
}
