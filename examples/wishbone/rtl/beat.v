// The system's own master: every 200 clocks it reads the word at 0x000, and writes it back with one more.
module beat (
    input  wire        clk,
    output reg         cyc_o = 1'b0,
    output reg         we_o = 1'b0,
    output wire [11:0] adr_o,
    output reg  [31:0] dat_o,
    input  wire [31:0] dat_i,
    input  wire        ack_i
);
  reg [7:0] pause = 8'd0;
  reg write_next = 1'b0;
  assign adr_o = 12'h000;
  always @(posedge clk)
    if (cyc_o) begin
      if (ack_i) begin
        cyc_o <= 1'b0;
        dat_o <= dat_i + 32'd1;
        write_next <= ~we_o;
      end
    end else if (write_next | pause == 8'd200) begin
      cyc_o <= 1'b1;
      we_o <= write_next;
      pause <= 8'd0;
    end else pause <= pause + 8'd1;
endmodule
