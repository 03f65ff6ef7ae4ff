// Runs the test bench of the source as it is and writes what the traced nets show just before each rising edge of clk:
// one line a clock, names in the first. +cycles=N: clocks to simulate; +record=FILE: the file.
`timescale 1ns / 1ps

module record;
  tb bench ();

  integer file;
  reg [8*1024:1] name;
  initial begin
    if (!$value$plusargs("record=%s", name)) name = "record.txt";
    file = $fopen(name, "w");
    $fdisplay(file, "u_lane1/u_parser/state u_lane1/u_fifo/push u_lane1/u_fifo/push_word u_lane1/u_fifo/stored ",
              "u_lane1/u_fifo/fetch u_lane1/u_fifo/bypass u_lane1/u_fifo/write u_lane1/u_fifo/out_valid ",
              "u_lane1/u_fifo/out_word u_lane1/u_fifo/pop tx_valid tx_lane tx_last tx_data host_data stat[1].frames");
  end
  always @(posedge bench.clk)
    $fdisplay(file, "%h %h %h %h %h %h %h %h %h %h %h %h %h %h %h %h", bench.dut.u_lane1.u_parser.state,
              bench.dut.u_lane1.u_fifo.push, bench.dut.u_lane1.u_fifo.push_word, bench.dut.u_lane1.u_fifo.stored,
              bench.dut.u_lane1.u_fifo.fetch, bench.dut.u_lane1.u_fifo.bypass, bench.dut.u_lane1.u_fifo.write,
              bench.dut.u_lane1.u_fifo.out_valid, bench.dut.u_lane1.u_fifo.out_word, bench.dut.u_lane1.u_fifo.pop,
              bench.dut.tx_valid, bench.dut.tx_lane, bench.dut.tx_last, bench.dut.tx_data, bench.dut.host_data,
              bench.dut.stat[1].frames);
endmodule
