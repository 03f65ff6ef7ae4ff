// Modules that are written as Verilog in another form than they were read, and yet do the same.
module unusual (input clk, input rst, input [7:0] a, output [6:0] segments, output [3:0] chosen, output [7:0] read,
                output [7:0] mapped, output held, output [5:0] number, inout pad, inout [1:0] driven,
                output [3:0] idle);
  wire on;
  segment_table table_i (.digit(a[3:0]), .segments(segments));
  branches branches_i (.s(a[1:0]), .a(a[7:4]), .y(chosen), .pad(pad));
  two_writes writes_i (.clk(clk), .we(a[0]), .a(a[4:1]), .b(a[7:4]), .q(read));
  flag z_sink (.i(on), .o(held));
  flag a_source (.i(a[0]), .o(on_raw));
  wire on_raw;
  assign on = on_raw ? 1'b1 : 1'b0;
  loops loops_i (.en(a[0]), .d(a), .q(mapped));
  constants constants_i (.clk(clk), .a(a), .pins(driven), .y(idle));
  arithmetic #(.STEP(3)) arithmetic_i (.clk(clk), .rst(rst), .a(a), .n(number));
endmodule

module segment_table (input [3:0] digit, output reg [6:0] segments);
  always @* case (digit)
    4'h0: segments = 7'h3f; 4'h1: segments = 7'h06; 4'h2: segments = 7'h5b; 4'h3: segments = 7'h4f;
    4'h4: segments = 7'h66; 4'h5: segments = 7'h6d; 4'h6: segments = 7'h7d; 4'h7: segments = 7'h07;
    4'h8: segments = 7'h7f; 4'h9: segments = 7'h6f; default: segments = 7'hx;
  endcase
endmodule

module branches (input [1:0] s, input [3:0] a, output reg [3:0] y, inout pad);
  assign pad = s[0] ? a[0] : 1'bz;
  reg sampled;
  always @* if (s[1]) sampled = pad;
  always @* (* parallel_case *) casez (s)
    2'b1?: y = a;
    2'b?1: y = 4'b1x0x;
    default: y = 4'hx;
  endcase
endmodule

module two_writes (input clk, input we, input [3:0] a, input [3:0] b, output reg [7:0] q);
  reg [7:0] words [0:15];
  wire [7:0] unread = words[b];
  always @(posedge clk) begin
    if (we) words[a] <= {a, b};
    else words[b][7:4] <= a;
    q <= words[a ^ b];
  end
endmodule

module flag (input i, output o);
  assign o = ~i;
endmodule

module loops (input en, input [7:0] d, output [7:0] q);
  reg [3:0] latch, through = 4;
  wire open = 1'b1;
  wire [3:0] ring = en ? d[7:4] : ring;
  always @* if (en) latch = d[3:0];
  always @* if (open) through = 6;
  assign q = {ring, latch ^ through};
endmodule

module arithmetic #(parameter STEP = 1) (input clk, input rst, input [7:0] a, output reg [5:0] n);
  wire signed [3:0] s = a[3:0];
  always @(posedge clk)
    if (rst) n <= 6'd5;
    else if (a[7]) n <= n - STEP + (s >>> a[5:4]) * 4 + a[6:4] / a[2:0] + (s < -2);
endmodule

// What constants leave over: a memory that is never written, one with a single address, a choice by a constant; and a
// register that drives an inout.
module constants (input clk, input [7:0] a, inout [1:0] pins, output [3:0] y);
  reg [3:0] never [0:3], single [0:3];
  reg [1:0] fixed = 1, out = 3;
  reg [3:0] choice;
  wire [1:0] address = {2{4'b0100 == a[1:0]}};
  initial never[1] = 6;
  always @(posedge clk) begin
    if (a[1:0] == 3'b100) never[a[3:2]] <= a[7:4];
    single[address] <= a[7:4];
    out <= out + a[0];
  end
  always @* case (fixed)
    2'd0: choice = 3;
    2'd1: choice = 9;
    2'd2: choice = 4'bx01x;
    default: choice = 5;
  endcase
  assign pins = out;
  assign y = never[a[5:4]] ^ single[a[7:6]] ^ choice;
endmodule
