`timescale 1ns / 1ps
module debug_tb;
  reg clk = 1'b0;
  wire tck, tms, tdi, tdo;
  always #5 clk = ~clk;
  pulses #(.WIDTH(5)) dut (.clk(clk), .length(), .valid(),
    .ostrel_tck(tck), .ostrel_tms(tms), .ostrel_tdi(tdi), .ostrel_tdo(tdo));
  ostrel_jtag_sim jtag (.tck(tck), .tms(tms), .tdi(tdi), .tdo(tdo), .trst(), .srst());
endmodule
