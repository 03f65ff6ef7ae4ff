// Two-flip-flop synchroniser. Every level that crosses into another clock domain goes through an instance of it.
`default_nettype none

module ostrel_sync (
    input  wire clk,
    input  wire in,
    output wire out
);
  (* ASYNC_REG = "TRUE", keep = "true" *) reg first;
  (* ASYNC_REG = "TRUE", keep = "true" *) reg second;

  initial begin
    first = 1'b0;
    second = 1'b0;
  end

  always @(posedge clk) begin
    first <= in;
    second <= first;
  end
  assign out = second;
endmodule

`default_nettype wire
