// The board: three devices in one JTAG chain, the instrumented chip in the middle, and the cable's end. The chip is the
// design and the device's own TAP, a model that the primitive BSCANE2 of the debug core reaches as `tb.chip`.
`timescale 1ns / 1ps

module tb;
  wire tck, tms, tdi, from_cpu, from_chip, tdo;
  reg clk = 1'b0;
  always #5 clk = !clk;

  other_device #(.IR_WIDTH(5), .IDCODE(32'h1234_5FFF)) cpu (.tck(tck), .tms(tms), .tdi(tdi), .tdo(from_cpu));
  device_tap chip (.tck(tck), .tms(tms), .tdi(from_cpu), .tdo(from_chip));
  chip dut (.clk(clk), .leds());
  other_device #(.IR_WIDTH(6), .IDCODE(32'h2468_AFFF)) io (.tck(tck), .tms(tms), .tdi(from_chip), .tdo(tdo));
  ostrel_jtag_sim jtag (.tck(tck), .tms(tms), .tdi(tdi), .tdo(tdo), .trst(), .srst());
endmodule
