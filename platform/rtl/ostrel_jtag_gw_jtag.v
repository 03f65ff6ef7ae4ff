// The JTAG side of the debug hub on devices with the primitive GW_JTAG: one of the two user registers of the device's
// own TAP. The primitive has one level for Capture-DR and Shift-DR together: the first clock of a scan is Capture-DR,
// and the scan lasts until Update-DR, however often it pauses. Whether enable_er*_o is the instruction's level or only
// a level of the scan makes no difference here: it counts from any clock of a scan to that scan's end.
`default_nettype none

`ifdef YOSYS
// Its cell libraries know the primitive only in later versions.
(* blackbox *) module GW_JTAG (
    input  wire tck_pad_i, tms_pad_i, tdi_pad_i,
    output wire tdo_pad_o, tck_o, tdi_o, test_logic_reset_o, run_test_idle_er1_o, run_test_idle_er2_o,
    output wire shift_dr_capture_dr_o, update_dr_o, pause_dr_o, enable_er1_o, enable_er2_o,
    input  wire tdo_er1_i, tdo_er2_i
);
endmodule
`endif

module ostrel_jtag #(
    parameter integer CHAIN = 1  // The instruction ER1 or ER2.
) (
    output wire tck,
    output wire sel,
    output wire capture,
    output wire shift,
    output wire update,
    output wire tdi,
    input  wire tdo
);
  wire reset, scanning, enable_er1, enable_er2;
  wire enable = CHAIN == 2 ? enable_er2 : enable_er1;
  reg begun, selected;
  initial begin
    begun = 1'b0;
    selected = 1'b0;
  end

  // The pads are the device's own pins.
  GW_JTAG primitive_i (
      .tck_pad_i(), .tms_pad_i(), .tdi_pad_i(), .tdo_pad_o(), .tck_o(tck), .tdi_o(tdi), .test_logic_reset_o(reset),
      .run_test_idle_er1_o(), .run_test_idle_er2_o(), .shift_dr_capture_dr_o(scanning), .update_dr_o(update),
      .pause_dr_o(), .enable_er1_o(enable_er1), .enable_er2_o(enable_er2),
      .tdo_er1_i(CHAIN == 2 ? 1'b0 : tdo), .tdo_er2_i(CHAIN == 2 ? tdo : 1'b0)
  );

  always @(posedge tck)
    if (update | reset) begin
      begun <= 1'b0;
      selected <= 1'b0;
    end else if (scanning) begin
      begun <= 1'b1;
      selected <= selected | enable;
    end

  assign capture = scanning & ~begun;
  assign shift = scanning & begun;
  // A capture alone only ends the hub's scan before, so it needs no enable.
  assign sel = capture | selected | enable;
endmodule

`default_nettype wire
