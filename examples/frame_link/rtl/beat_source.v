// Divides the reference clock: the beat changes every 64 of its periods. It runs from power-up and knows no reset.
module beat_source (
    input  wire ref_clk,
    output wire beat
);
  reg [6:0] count = 7'd0;
  always @(posedge ref_clk) count <= count + 7'd1;
  assign beat = count[6];
endmodule
