// A Wishbone master on one bus with another master, and a slave that answers late, with errors, on repeated asking or not
// at all. What is acknowledged to the master under test is recorded.
`timescale 1ns / 1ps

module tb;
  wire tck, tms, tdi, tdo;
  ostrel_jtag_sim #(.HALF_PERIOD(25)) jtag (.tck(tck), .tms(tms), .tdi(tdi), .tdo(tdo), .trst(), .srst());

  reg clk = 1'b0, stopped = 1'b0;
  always #5 if (!stopped) clk = ~clk;
  integer random = 32'h2468ace1;
  always @(posedge clk) random = random * 1103515245 + 12345;

  // The master under test, and how an insertion shares the bus.
  wire grant, cyc, stb, we, own_cyc, own_we, ack, err, rty;
  wire [31:0] adr, dat, own_adr, own_dat, read;
  wire [3:0] sel;
  ostrel_debug dut (
      .jtag_tck(tck), .jtag_tms(tms), .jtag_tdi(tdi), .jtag_tdo(tdo), .wb_clk(clk), .wb_busy(own_cyc),
      .wb_dat_i(read), .wb_ack(ack), .wb_err(err), .wb_rty(rty), .wb_grant(grant), .wb_cyc(cyc), .wb_stb(stb),
      .wb_we(we), .wb_adr(adr), .wb_dat_o(dat), .wb_sel(sel)
  );
  slave slave (
      .clk(clk), .stb(grant ? cyc & stb : own_cyc), .we(grant ? we : own_we), .adr(grant ? adr : own_adr),
      .dat_i(grant ? dat : own_dat), .sel(grant ? sel : 4'b1111), .random(random), .dat_o(read), .ack(ack), .err(err),
      .rty(rty)
  );
  // Writes here make the other master keep the bus for longer than the time limit, or stop the clock.
  wire hold = cyc & we & ack & adr == 32'h0000c000;
  always @(posedge clk) if (cyc & we & ack & adr == 32'h0000d000) stopped <= #1 1'b1;
  other_master other (
      .clk(clk), .hold(hold), .random(random), .cyc(own_cyc), .we(own_we), .adr(own_adr), .dat_o(own_dat), .dat_i(read),
      .ack(ack & ~grant)
  );

  integer record;
  initial record = $fopen("bus.txt");
  always @(posedge clk)
    if (cyc & stb & ack) $fwrite(record, "%s %h %h %b\n", we ? "w" : "r", adr, we ? dat : 32'd0, sel);
endmodule

module slave (
    input wire clk, stb, we,
    input wire [31:0] adr, dat_i,
    input wire [3:0] sel,
    input wire [31:0] random,
    output wire [31:0] dat_o,
    output reg ack, err, rty
);
  reg [31:0] words[0:4095];
  reg [31:0] answer;
  reg [2:0] waits = 3'd0;
  reg [1:0] refusals = 2'd0;
  integer i;
  wire [3:0] region = adr[15:12];
  wire present = stb & waits == 3'd0;
  assign dat_o = ack ? answer : 32'hx;
  // The answer stays for one more clock, as that of a slave with a register does.
  always @(posedge clk) begin
    waits <= stb ? waits - (waits != 3'd0) : random[18:16];
    ack <= present & (region < 4'd4 | region == 4'hc | region == 4'hd | (region == 4'h9 & refusals == 2'd3));
    err <= present & region == 4'h4;
    rty <= present & ((region == 4'h9 & refusals != 2'd3) | region == 4'ha);
    if (rty & stb) refusals <= refusals + 2'd1;
    if (ack & region == 4'h9) refusals <= 2'd0;
    answer <= words[adr[13:2]];
    if (present & we & ~ack & region < 4'd4)
      for (i = 0; i < 4; i = i + 1) if (sel[i]) words[adr[13:2]][8*i+:8] <= dat_i[8*i+:8];
  end
endmodule

// Writes a word of its own and reads it back, again and again.
module other_master (
    input wire clk, hold,
    input wire [31:0] random,
    output reg cyc = 1'b0,
    output reg we = 1'b0,
    output wire [31:0] adr,
    output reg [31:0] dat_o = 32'd0,
    input wire [31:0] dat_i,
    input wire ack
);
  assign adr = 32'h00003000;
  integer held = 0, verdicts;
  initial verdicts = $fopen("other.txt");
  always @(posedge clk) begin
    if (hold) held <= 70000;
    else if (held > 0) held <= held - 1;
    if (cyc & ack & ~we) $fwrite(verdicts, "%s\n", dat_i === dat_o ? "right" : "wrong");
    if (cyc) begin
      if (ack & held == 0) cyc <= 1'b0;
    end else if (held > 0 | (random[25:23] == 3'd0 & ~ack)) begin
      cyc <= 1'b1;
      we <= ~we;
      if (~we) dat_o <= random;
    end
  end
endmodule
