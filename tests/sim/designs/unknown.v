// Levels that only a simulator has: inputs that the bench makes x and z at times, and registers that nothing sets at first.
module unknown (
    input clk, rst, line, en, look, input [7:0] din,
    output reg [7:0] count, output reg [7:0] taken, output reg [3:0] held, output reg seen
);
  reg was;
  always @(posedge clk) begin
    count <= rst ? 8'd0 : count + 8'd1;
    taken <= din;
    was <= line;
    seen <= was;
    if (count[5]) held <= din[3:0];
  end
endmodule
