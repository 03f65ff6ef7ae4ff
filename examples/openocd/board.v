// The board: three devices in one JTAG chain, the instrumented chip in the middle, and the cable's end.
`timescale 1ns / 1ps

module board;
  wire tck, tms, tdi, from_cpu, from_chip, tdo;
  reg clk = 1'b0;
  always #5 clk = !clk;

  other_device #(.IR_WIDTH(5), .IDCODE(32'h1234_5FFF)) cpu (.tck(tck), .tms(tms), .tdi(tdi), .tdo(from_cpu));
  chip dut (
      .clk(clk), .leds(), .ostrel_tck(tck), .ostrel_tms(tms), .ostrel_tdi(from_cpu), .ostrel_tdo(from_chip)
  );
  other_device #(.IR_WIDTH(6), .IDCODE(32'h2468_AFFF)) io (.tck(tck), .tms(tms), .tdi(from_chip), .tdo(tdo));
  ostrel_jtag_sim jtag (.tck(tck), .tms(tms), .tdi(tdi), .tdo(tdo), .trst(), .srst());
endmodule
