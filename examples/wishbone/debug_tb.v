// The instrumented system, its JTAG pins driven by ost_capture.
`timescale 1ns / 1ps

module debug_tb;
  reg clk = 1'b0;
  always #5 clk = ~clk;
  wire pulse, tck, tms, tdi, tdo;
  pwm_system dut (.clk(clk), .pulse(pulse), .ostrel_tck(tck), .ostrel_tms(tms), .ostrel_tdi(tdi), .ostrel_tdo(tdo));
  ostrel_jtag_sim #(.HALF_PERIOD(20)) jtag (.tck(tck), .tms(tms), .tdi(tdi), .tdo(tdo), .trst(), .srst());
endmodule
