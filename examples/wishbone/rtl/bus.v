// One master's bus to two slaves: 0x000 the memory, 0x100 the pulse-width modulator. Anything else is an error.
(* ostrel_role = "jtag2wb" *)
module bus (
    input  wire        clk_i,
    // From the master.
    input  wire        wbs_cyc_i,
    input  wire        wbs_stb_i,
    input  wire        wbs_we_i,
    input  wire [11:0] wbs_adr_i,
    input  wire [31:0] wbs_dat_i,
    input  wire [3:0]  wbs_sel_i,
    output wire [31:0] wbs_dat_o,
    output wire        wbs_ack_o,
    output wire        wbs_err_o,
    // To the slaves.
    output wire        memory_stb_o,
    output wire        pwm_stb_o,
    output wire        we_o,
    output wire [7:2]  adr_o,
    output wire [31:0] dat_o,
    output wire [3:0]  sel_o,
    input  wire [31:0] memory_dat_i,
    input  wire        memory_ack_i,
    input  wire [31:0] pwm_dat_i,
    input  wire        pwm_ack_i
);
  wire [3:0] page = wbs_adr_i[11:8];
  wire valid = wbs_cyc_i & wbs_stb_i;
  reg lost = 1'b0;
  always @(posedge clk_i) lost <= valid & ~lost & page > 4'd1;

  assign memory_stb_o = valid & page == 4'd0;
  assign pwm_stb_o = valid & page == 4'd1;
  assign we_o = wbs_we_i;
  assign adr_o = wbs_adr_i[7:2];
  assign dat_o = wbs_dat_i;
  assign sel_o = wbs_sel_i;
  assign wbs_dat_o = page == 4'd1 ? pwm_dat_i : memory_dat_i;
  assign wbs_ack_o = memory_ack_i | pwm_ack_i;
  assign wbs_err_o = lost;
endmodule
