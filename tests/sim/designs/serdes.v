// A block with the face of a serdes: its clocks and levels come from the bench. Two lanes, of which the one that is not
// marked is not watched; a vector, and a port that is marked beside nets.
(* ostrel_role = "dcu" *)
module phy (
    input wire ref_clk,
    (* ostrel_watch = "lock" *) input wire lock,
    input wire los,
    input wire [1:0] fault,
    input wire recovered,
    input wire sent,
    output reg busy
);
  (* ostrel_watch = "los" *) wire rx_los = los & ~busy;
  (* ostrel_watch = "error" *) wire [1:0] rx_fault = fault;
  (* ostrel_watch = "ready" *) reg ready;
  (* ostrel_watch = "clock" *) wire rx_clk = recovered;
  (* ostrel_watch = "clock" *) wire tx_clk = sent;
  initial busy = 1'b0;
  always @(posedge ref_clk) begin
    busy <= 1'b0;
    ready <= lock & ~los;
  end
endmodule

module serdes (
    input wire clk,
    input wire rst,
    input wire lock,
    input wire los,
    input wire [1:0] fault,
    input wire recovered,
    input wire sent,
    output wire busy
);
  phy u_phy (
      .ref_clk(clk),
      .lock(lock),
      .los(los),
      .fault(fault),
      .recovered(recovered),
      .sent(sent),
      .busy(busy)
  );
endmodule
