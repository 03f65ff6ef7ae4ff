// Small modules that are each hard to instrument for one reason, and a top that drives them all.

// Instantiated often, with and without parameters; has a net of the name that the inserter would like.
module leaf #(parameter W = 4) (input clk, input rst, input [W-1:0] step, output [W-1:0] value);
  reg [W-1:0] count = {W{1'b1}};
  wire ostrel_probe = count[0] ^ count[1];
  always @(posedge clk)
    if (rst) count <= 0;
    else count <= count + step + ostrel_probe;
  assign value = count;
endmodule

module pair (input clk, input rst, input [3:0] step, output [3:0] left, output [3:0] right);
  leaf u_left (.clk(clk), .rst(rst), .step(step), .value(left));
  leaf u_right (.clk(clk), .rst(rst), .step(~step), .value(right));
endmodule

// Outputs that are the same net as an inout and an input, declared before them.
module pad (output seen, output through, inout io, input drive, input enable);
  assign io = enable ? drive : 1'bz;
  assign seen = io;
  assign through = drive;
endmodule

// The same in a module that nobody probes, and an open output.
module bare_pad (output seen, inout io, input drive);
  assign io = drive ? 1'b1 : 1'bz;
  assign seen = io;
endmodule

module divider (input clk, output reg slow);
  initial slow = 0;
  always @(posedge clk) slow <= ~slow;
endmodule

// Byte enables and contents from the start.
module store (input clk, input [1:0] write, input [3:0] address, input [15:0] in, output reg [15:0] out);
  (* ram_style = "block" *) reg [15:0] words[0:15];
  integer i;
  initial for (i = 0; i < 16; i = i + 1) words[i] = i * 16'h1357;
  always @(posedge clk) begin
    if (write[0]) words[address][7:0] <= in[7:0];
    if (write[1]) words[address][15:8] <= in[15:8];
    out <= words[address];
  end
endmodule

// A pin whose name comes behind its probe port's, a 'z' inside an expression, and a memory with two ports each way.
module corner (input c1, input c2, input [7:0] x, inout pin, inout zin, output reg [1:0] q1, output reg [1:0] q2);
  assign pin = x[0] ? 1'bz : 1'b0;
  assign zin = x[1] ? (x[2] ? 1'b1 : 1'bz) : x[3];
  reg [1:0] ram[0:3];
  always @(posedge c1) begin
    q1 <= ram[x[1:0]];
    if (x[4]) ram[x[3:2]] <= x[7:6];
  end
  always @(posedge c2) begin
    q2 <= ram[x[3:2]];
    if (x[5]) ram[x[1:0]] <= x[5:4];
  end
endmodule

module tricky #(parameter STEP = 2, parameter MODE = "a\"b", parameter TAIL = 1) (
    input clk, input rst, input [7:0] stimulus, inout io, output io_seen, output through, inout bare, output bare_seen,
    output [3:0] a, output [3:0] b, output [6:0] wide, output reg [0:7] turned, output [15:0] word,
    output reg [1:0] slow_count, output reg held, inout [1:0] pins, output [3:0] ends,
    input ostrel_tck
);
  wire [3:0] c, d;
  pair u_one (.clk(clk), .rst(rst), .step(stimulus[3:0]), .left(a), .right(b));
  pair u_two (.clk(clk), .rst(rst), .step(stimulus[7:4]), .left(c), .right(d));
  leaf #(.W(7)) u_wide (.clk(clk), .rst(rst), .step(stimulus[6:0]), .value(wide));
  pad \u/pad (.seen(io_seen), .through(through), .io(io), .drive(stimulus[1]), .enable(stimulus[0]));
  bare_pad u_bare (.seen(bare_seen), .io(bare), .drive(stimulus[2]));
  store u_store (.clk(clk), .write(stimulus[1:0]), .address(stimulus[5:2]), .in({a, b, c, d}), .out(word));

  wire slow;
  divider u_div (.clk(clk), .slow(slow));
  corner u_corner (.c1(clk), .c2(slow), .x(stimulus), .pin(pins[0]), .zin(pins[1]), .q1(ends[1:0]), .q2(ends[3:2]));
  initial slow_count = 2'd2;
  always @(posedge slow) slow_count <= slow_count + 2'd1;

  wire \odd.name[0] = ^stimulus ^ ostrel_tck;
  (* ASYNC_REG = "TRUE" *) reg [1:0] ostrel_debug_i;
  always @(posedge clk or posedge rst)
    if (rst) ostrel_debug_i <= 2'b00;
    else ostrel_debug_i <= {ostrel_debug_i[0], \odd.name[0] };

  genvar g;
  generate
    for (g = 0; g < 2; g = g + 1) begin : lanes
      reg [3:0] lane;
      leaf u_leaf (.clk(clk), .rst(rst), .step({3'b000, stimulus[g]}), .value());
      always @(posedge clk) lane <= rst ? 4'd0 : lane ^ stimulus[4*g+:4];
    end
  endgenerate

  always @(posedge clk) turned <= rst ? 8'd0 : {turned[1:7], \odd.name[0] ^ ostrel_debug_i[1]};
  always @* if (stimulus[7]) held = stimulus[3];
endmodule
