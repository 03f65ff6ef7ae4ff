// A device as its JTAG primitives see it: the TAP of the chip, whose registers USER1 to USER4 (ER1, ER2) are the
// primitives', and models of these, which reach the TAP by its place in the test bench, as the primitives do.
// +tap_levels=0: the state's levels change with the state; 1: at the falling edge after it; 2: so, and Update-DR a whole
// TCK later. +enable_in_scan: GW_JTAG's enable_er*_o is up in Capture-DR and Shift-DR only.
`timescale 1ns / 1ps

module device_tap #(
    parameter IR_BITS = 6,
    parameter [4*IR_BITS-1:0] CODES = {6'h23, 6'h22, 6'h03, 6'h02}  // Of chain 1 lowest.
) (
    input  wire tck,
    input  wire tms,
    input  wire tdi,
    output reg  tdo
);
  localparam RESET = 0, IDLE = 1, CAPTURE_DR = 3, SHIFT_DR = 4, PAUSE_DR = 6, UPDATE_DR = 8, CAPTURE_IR = 10,
             SHIFT_IR = 11, UPDATE_IR = 15;
  // Reset, idle; then of DR (from 2) and IR (from 9): select, capture, shift, exit 1, pause, exit 2, update.
  reg [3:0] state = 0;
  reg [IR_BITS-1:0] ir = 0, ir_shift = 0;
  reg bypass = 0;
  wire [3:0] base = state < 9 ? 2 : 9;
  reg [4:1] user_tdo = 0;  // Driven by the primitives.
  reg [4:1] sel;
  integer i, levels_of = 0, enable_in_scan = 0;
  initial if (!$value$plusargs("tap_levels=%d", levels_of)) levels_of = 0;
  initial enable_in_scan = $test$plusargs("enable_in_scan");

  always @* for (i = 1; i <= 4; i = i + 1) sel[i] = ir == CODES[(i-1)*IR_BITS+:IR_BITS];
  always @(posedge tck) begin
    case (state)
      0: state <= tms ? 0 : 1;
      1: state <= tms ? 2 : 1;
      2: state <= tms ? 9 : 3;
      9: state <= tms ? 0 : 10;
      default:
      case (state - base)
        1, 2: state <= base + (tms ? 3 : 2);
        3: state <= base + (tms ? 6 : 4);
        4: state <= base + (tms ? 5 : 4);
        5: state <= base + (tms ? 6 : 2);
        default: state <= tms ? 2 : 1;
      endcase
    endcase
    if (state == CAPTURE_DR) bypass <= 0;
    if (state == SHIFT_DR) bypass <= tdi;
    if (state == CAPTURE_IR) ir_shift <= 1;
    if (state == SHIFT_IR) ir_shift <= {tdi, ir_shift[IR_BITS-1:1]};
  end
  // The instruction changes at the falling edge, as the standard has it.
  always @(negedge tck) begin
    if (state == UPDATE_IR) ir <= ir_shift;
    if (state == RESET) ir <= {IR_BITS{1'b1}};
    tdo <= state == SHIFT_IR ? ir_shift[0] : |sel ? |(user_tdo & sel) : bypass;
  end

  wire [5:0] now = {state == RESET, state == IDLE, state == CAPTURE_DR, state == SHIFT_DR, state == PAUSE_DR,
                    state == UPDATE_DR};
  reg [5:0] falling = 0;
  reg late_update = 0;
  always @(negedge tck) begin
    falling <= now;
    late_update <= falling[0];
  end
  wire [5:0] levels = levels_of == 0 ? now : levels_of == 1 ? falling : {falling[5:1], late_update};
endmodule

module BUFG (input wire I, output wire O);
  assign O = I;
endmodule

module BSCANE2 #(
    parameter JTAG_CHAIN = 1
) (
    output wire CAPTURE, DRCK, RESET, RUNTEST, SEL, SHIFT, TCK, TDI, TMS, UPDATE,
    input wire TDO
);
  wire unused;
  assign {RESET, RUNTEST, CAPTURE, SHIFT, unused, UPDATE} = tb.chip.levels;
  assign {SEL, TCK, TDI, TMS} = {tb.chip.sel[JTAG_CHAIN], tb.chip.tck, tb.chip.tdi, tb.chip.tms};
  assign DRCK = TCK | ~(SEL & (CAPTURE | SHIFT));
  always @* tb.chip.user_tdo[JTAG_CHAIN] = TDO;
endmodule

module GW_JTAG (
    input wire tck_pad_i, tms_pad_i, tdi_pad_i,
    output wire tdo_pad_o, tck_o, tdi_o, test_logic_reset_o, run_test_idle_er1_o, run_test_idle_er2_o,
    output wire shift_dr_capture_dr_o, update_dr_o, pause_dr_o, enable_er1_o, enable_er2_o,
    input wire tdo_er1_i, tdo_er2_i
);
  wire idle, capture, shift;
  assign {test_logic_reset_o, idle, capture, shift, pause_dr_o, update_dr_o} = tb.chip.levels;
  assign {tck_o, tdi_o, tdo_pad_o} = {tb.chip.tck, tb.chip.tdi, tb.chip.tdo};
  assign shift_dr_capture_dr_o = capture | shift;
  assign {enable_er2_o, enable_er1_o} =
      tb.chip.sel[2:1] & {2{tb.chip.enable_in_scan == 0 | shift_dr_capture_dr_o}};
  assign {run_test_idle_er2_o, run_test_idle_er1_o} = tb.chip.sel[2:1] & {2{idle}};
  always @* tb.chip.user_tdo[2:1] = {tdo_er2_i, tdo_er1_i};
endmodule
