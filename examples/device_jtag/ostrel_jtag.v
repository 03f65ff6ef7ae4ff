// The debug hub behind a device's own JTAG primitive, as a user writes it for "ost_design jtag ostrel_jtag.v", around a
// model of such a primitive.
module ostrel_jtag (
    input jtag_tck, jtag_tms, jtag_tdi, tdo, output jtag_tdo, tck, sel, capture, shift, update, tdi
);
  device_jtag u_device (
      .tck_pin(jtag_tck), .tms_pin(jtag_tms), .tdi_pin(jtag_tdi), .tdo_pin(jtag_tdo),
      .drck(tck), .user(sel), .capture(capture), .shift(shift), .update(update), .tdi(tdi), .tdo(tdo)
  );
endmodule

// An instruction register of six bits, of which 100010 selects the user's register; its update comes one TCK late.
module device_jtag (
    input tck_pin, tms_pin, tdi_pin, tdo, output drck, user, capture, shift, tdi, output reg tdo_pin, output reg update
);
  // Reset, idle; then of DR (from 2) and IR (from 9): select, capture, shift, exit 1, pause, exit 2, update.
  reg [3:0] state = 0;
  reg [5:0] ir = 0, ir_shift = 0;
  wire [3:0] base = state < 9 ? 2 : 9;
  always @(posedge tck_pin) begin
    case (state)
      0: state <= tms_pin ? 0 : 1;
      1: state <= tms_pin ? 2 : 1;
      2: state <= tms_pin ? 9 : 3;
      9: state <= tms_pin ? 0 : 10;
      default:
      case (state - base)
        1, 2: state <= base + (tms_pin ? 3 : 2);
        3: state <= base + (tms_pin ? 6 : 4);
        4: state <= base + (tms_pin ? 5 : 4);
        5: state <= base + (tms_pin ? 6 : 2);
        default: state <= tms_pin ? 2 : 1;
      endcase
    endcase
    if (state == 10) ir_shift <= 6'b000001;
    if (state == 11) ir_shift <= {tdi_pin, ir_shift[5:1]};
    if (state == 15) ir <= ir_shift;
    if (state == 0) ir <= 0;
    update <= user & state == 8;
  end
  always @(negedge tck_pin) tdo_pin <= state == 11 ? ir_shift[0] : tdo;
  assign {drck, tdi, user, capture, shift} = {tck_pin, tdi_pin, ir == 6'b100010, state == 3, state == 4};
endmodule
