// Two clock domains, one module instantiated three times, a descending and an ascending vector, a generate block and a
// small memory: what the oracle's random projects probe.
module lane (input clk, rst, go, input [7:0] seed, output reg [7:0] count, output match);
  reg [0:3] phase;
  reg [15:0] noise;
  reg strobe;
  wire [7:0] mixed = count ^ noise[7:0];
  assign match = mixed[3:0] == 4'h5;
  always @(posedge clk)
    if (rst) {count, phase, noise, strobe} <= {8'd0, 4'd1, 8'hA5, seed, 1'b0};
    else begin
      if (go) count <= count + 8'd1;
      phase <= {phase[1:3], phase[0]};
      noise <= {noise[14:0], noise[15] ^ noise[13] ^ noise[12] ^ noise[10] ^ seed[0]};
      strobe <= noise[1:0] == 2'b01;
    end
endmodule

module lanes (input clk_a, clk_b, rst, go, input [7:0] din, output [7:0] out_a, out_b, output hit);
  wire match_a, match_b;
  reg [3:0] level;
  reg [7:0] store[0:3], word;
  reg [1:0] fill = 2'd0;
  lane u_a (.clk(clk_a), .rst(rst), .go(go), .seed(din), .count(out_a), .match(match_a));
  lane u_b (.clk(clk_b), .rst(rst), .go(1'b1), .seed(8'h3C), .count(out_b), .match(match_b));
  genvar i;
  generate
    for (i = 0; i < 2; i = i + 1) begin : g
      reg tick;
      always @(posedge clk_a) tick <= rst ? 1'b0 : out_a[i] ^ din[i];
    end
  endgenerate
  lane u_c (.clk(clk_a), .rst(rst), .go(g[0].tick), .seed({out_a[3:0], 4'h9}), .count(), .match());
  always @(posedge clk_a) begin
    level <= rst ? 4'd0 : level + {3'd0, match_a};
    if (rst | go) store[rst ? fill : out_a[1:0]] <= din;
    fill <= fill + 2'd1;
    word <= store[out_a[3:2]];
  end
  assign hit = match_a & match_b;
endmodule
