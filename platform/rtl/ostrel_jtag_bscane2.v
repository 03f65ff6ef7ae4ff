// The JTAG side of the debug hub on devices with the primitive BSCANE2: one of the four user registers of the device's
// own TAP. The primitive's levels follow the TAP's state from the rising or from the falling edge of TCK on, so they are
// right at each rising edge that leaves the state.
`default_nettype none

module ostrel_jtag #(
    parameter integer CHAIN = 1  // The instruction USER1 to USER4.
) (
    output wire tck,
    output wire sel,
    output wire capture,
    output wire shift,
    output wire update,
    output wire tdi,
    input  wire tdo
);
  wire free_tck;  // DRCK is gated: it has no edge in Update-DR, nor in Run-Test/Idle.

  BSCANE2 #(.JTAG_CHAIN(CHAIN)) primitive_i (
      .CAPTURE(capture), .DRCK(), .RESET(), .RUNTEST(), .SEL(sel), .SHIFT(shift), .TCK(free_tck), .TDI(tdi), .TMS(),
      .UPDATE(update), .TDO(tdo)
  );
  BUFG buffer_i (.I(free_tck), .O(tck));
endmodule

`default_nettype wire
