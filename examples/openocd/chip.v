// The design to be debugged: a clock count, and a byte from a shift register that changes with it.
module chip (
    input  wire       clk,
    output wire [7:0] leds
);
  reg [19:0] tick = 20'd0;
  reg [15:0] noise = 16'hACE1;
  always @(posedge clk) begin
    tick  <= tick + 20'd1;
    noise <= {noise[14:0], noise[15] ^ noise[13] ^ noise[12] ^ noise[10]};
  end
  assign leds = noise[7:0];
endmodule
