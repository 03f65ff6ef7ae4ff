// Another device of the board's chain: a TAP (IEEE 1149.1) with IDCODE and BYPASS.
`timescale 1ns / 1ps

module other_device #(
    parameter IR_WIDTH = 5,
    parameter [31:0] IDCODE = 32'h00000001
) (
    input  wire tck,
    input  wire tms,
    input  wire tdi,
    output reg  tdo
);
  // Reset, idle; then of DR (from 2) and IR (from 9): select, capture, shift, exit 1, pause, exit 2, update.
  reg [3:0] state = 0;
  reg [IR_WIDTH-1:0] ir = 1, ir_shift = 0;
  reg [31:0] data = 0;
  wire [3:0] base = state < 9 ? 2 : 9;
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
    if (state == 0) ir <= 1;  // IDCODE
    if (state == 3) data <= ir == 1 ? IDCODE : 32'd0;
    if (state == 4) data <= ir == 1 ? {tdi, data[31:1]} : {31'd0, tdi};
    if (state == 10) ir_shift <= 1;
    if (state == 11) ir_shift <= {tdi, ir_shift[IR_WIDTH-1:1]};
    if (state == 15) ir <= ir_shift;
  end
  always @(negedge tck) tdo <= state == 11 ? ir_shift[0] : data[0];
endmodule
