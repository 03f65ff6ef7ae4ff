// 64 words of memory with byte lanes.
module memory (
    input  wire        clk_i,
    input  wire        stb_i,
    input  wire        we_i,
    input  wire [7:2]  adr_i,
    input  wire [31:0] dat_i,
    input  wire [3:0]  sel_i,
    output reg  [31:0] dat_o,
    output reg         ack_o = 1'b0
);
  reg [31:0] words[0:63];
  integer i;
  initial for (i = 0; i < 64; i = i + 1) words[i] = 32'd0;
  always @(posedge clk_i) begin
    ack_o <= stb_i & ~ack_o;
    dat_o <= words[adr_i];
    if (stb_i & we_i & ~ack_o) begin
      if (sel_i[0]) words[adr_i][7:0] <= dat_i[7:0];
      if (sel_i[1]) words[adr_i][15:8] <= dat_i[15:8];
      if (sel_i[2]) words[adr_i][23:16] <= dat_i[23:16];
      if (sel_i[3]) words[adr_i][31:24] <= dat_i[31:24];
    end
  end
endmodule
