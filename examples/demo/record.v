// Simulates the source as it is and writes what the traced nets show just before each rising edge of clk: one line a
// clock, names in the first. +cycles=N: clocks to simulate; +record=FILE: the file.
`timescale 1ns / 1ps

module record;
  wire clk, rst, ref_clk, rx0_valid, rx1_valid, tx_lane, tx_last, tx_valid, tx_ready;
  wire host_write, host_read, alive;
  wire [7:0] rx0_data, rx1_data, tx_data, host_data;
  wire [2:0] host_addr;

  frame_link_world world (
      .clk(clk), .rst(rst), .ref_clk(ref_clk), .rx0_data(rx0_data), .rx0_valid(rx0_valid), .rx1_data(rx1_data),
      .rx1_valid(rx1_valid), .tx_data(tx_data), .tx_lane(tx_lane), .tx_last(tx_last), .tx_valid(tx_valid),
      .tx_ready(tx_ready), .host_addr(host_addr), .host_write(host_write), .host_read(host_read),
      .host_data(host_data), .alive(alive)
  );
  frame_link dut (
      .clk(clk), .rst(rst), .ref_clk(ref_clk), .rx0_data(rx0_data), .rx0_valid(rx0_valid), .rx1_data(rx1_data),
      .rx1_valid(rx1_valid), .tx_data(tx_data), .tx_lane(tx_lane), .tx_last(tx_last), .tx_valid(tx_valid),
      .tx_ready(tx_ready), .host_addr(host_addr), .host_write(host_write), .host_read(host_read),
      .host_data(host_data), .alive(alive)
  );

  integer cycles, file;
  reg [8*1024:1] name;
  initial begin
    if (!$value$plusargs("cycles=%d", cycles)) cycles = 5000;
    if (!$value$plusargs("record=%s", name)) name = "record.txt";
    file = $fopen(name, "w");
    $fdisplay(file, "u_lane1/u_parser/state u_lane1/u_fifo/push u_lane1/u_fifo/push_word u_lane1/u_fifo/stored ",
              "u_lane1/u_fifo/fetch u_lane1/u_fifo/bypass u_lane1/u_fifo/write u_lane1/u_fifo/out_valid ",
              "u_lane1/u_fifo/out_word u_lane1/u_fifo/pop tx_valid tx_lane tx_last tx_data host_data stat[1].frames");
    repeat (cycles) @(posedge clk);
    $finish;
  end
  always @(posedge clk)
    $fdisplay(file, "%h %h %h %h %h %h %h %h %h %h %h %h %h %h %h %h", dut.u_lane1.u_parser.state,
              dut.u_lane1.u_fifo.push, dut.u_lane1.u_fifo.push_word, dut.u_lane1.u_fifo.stored,
              dut.u_lane1.u_fifo.fetch, dut.u_lane1.u_fifo.bypass, dut.u_lane1.u_fifo.write,
              dut.u_lane1.u_fifo.out_valid, dut.u_lane1.u_fifo.out_word, dut.u_lane1.u_fifo.pop, dut.tx_valid,
              dut.tx_lane, dut.tx_last, dut.tx_data, dut.host_data, dut.stat[1].frames);
endmodule
