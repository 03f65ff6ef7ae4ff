// Pulses of 1 to 8 clocks, measured by a block in VHDL.
module pulses #(parameter WIDTH = 4) (input wire clk, output wire [WIDTH-1:0] length, output wire valid);
  reg [7:0] phase = 8'd0;
  wire pulse = phase[4:0] <= phase[7:5];
  always @(posedge clk) phase <= phase + 8'd1;
  pulse_meter #(.WIDTH(WIDTH)) u_meter (.clk(clk), .pulse(pulse), .length(length), .valid(valid));
endmodule
