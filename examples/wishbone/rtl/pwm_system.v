// A small Wishbone system: its own master, a memory and a pulse-width modulator on one bus.
module pwm_system (
    input  wire clk,
    output wire pulse
);
  wire cyc, we, ack, err;
  wire [11:0] adr;
  wire [31:0] written, read;
  beat u_beat (.clk(clk), .cyc_o(cyc), .we_o(we), .adr_o(adr), .dat_o(written), .dat_i(read), .ack_i(ack | err));

  wire memory_stb, pwm_stb, slave_we, memory_ack, pwm_ack;
  wire [7:2] slave_adr;
  wire [31:0] slave_dat, memory_dat, pwm_dat;
  wire [3:0] slave_sel;
  bus u_bus (
      .clk_i(clk), .wbs_cyc_i(cyc), .wbs_stb_i(cyc), .wbs_we_i(we), .wbs_adr_i(adr), .wbs_dat_i(written),
      .wbs_sel_i(4'b1111), .wbs_dat_o(read), .wbs_ack_o(ack), .wbs_err_o(err),
      .memory_stb_o(memory_stb), .pwm_stb_o(pwm_stb), .we_o(slave_we), .adr_o(slave_adr), .dat_o(slave_dat),
      .sel_o(slave_sel), .memory_dat_i(memory_dat), .memory_ack_i(memory_ack), .pwm_dat_i(pwm_dat), .pwm_ack_i(pwm_ack)
  );
  memory u_memory (
      .clk_i(clk), .stb_i(memory_stb), .we_i(slave_we), .adr_i(slave_adr), .dat_i(slave_dat), .sel_i(slave_sel),
      .dat_o(memory_dat), .ack_o(memory_ack)
  );
  pwm u_pwm (
      .clk_i(clk), .stb_i(pwm_stb), .we_i(slave_we), .adr_i(slave_adr[3:2]), .dat_i(slave_dat), .sel_i(slave_sel),
      .dat_o(pwm_dat), .ack_o(pwm_ack), .pulse(pulse)
  );
endmodule
