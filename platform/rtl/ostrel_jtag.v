// The JTAG side of the debug hub: a TAP on four pins of its own with one user data register.
// Behind a device's own JTAG primitive another module of this name takes its place, without the pins (ost_design jtag;
// docs/boards.md).
`default_nettype none

module ostrel_jtag (
    input  wire jtag_tck,
    input  wire jtag_tms,
    input  wire jtag_tdi,
    output reg  jtag_tdo,
    // The user data register. All signals are sampled at rising edges of tck.
    output wire tck,
    output wire sel,      // The instruction register holds USER.
    output wire capture,  // This edge leaves Capture-DR.
    output wire shift,    // This edge shifts a bit.
    output wire update,   // This edge leaves Update-DR.
    output wire tdi,
    input  wire tdo       // The bit that the next shift edge shifts out.
);
  localparam [3:0] IDCODE = 4'b0001, USER = 4'b0010;
  // A maker's number that no one can have: its seven low bits are the standard's mark for "more follows" (JEP106).
  localparam [31:0] IDCODE_VALUE = 32'h1057AAFF;

  localparam [3:0] RESET = 4'h0, IDLE = 4'h1, SELECT_DR = 4'h2, CAPTURE_DR = 4'h3, SHIFT_DR = 4'h4, EXIT1_DR = 4'h5,
                   PAUSE_DR = 4'h6, EXIT2_DR = 4'h7, UPDATE_DR = 4'h8, SELECT_IR = 4'h9, CAPTURE_IR = 4'hA,
                   SHIFT_IR = 4'hB, EXIT1_IR = 4'hC, PAUSE_IR = 4'hD, EXIT2_IR = 4'hE, UPDATE_IR = 4'hF;

  reg [3:0] state;
  reg [3:0] ir, ir_shift;
  reg [31:0] idcode;
  reg bypass;

  // There is no reset pin: the TAP powers up in Test-Logic-Reset.
  initial begin
    state = RESET;
    ir = IDCODE;
    jtag_tdo = 1'b0;
  end

  always @(posedge jtag_tck)
    case (state)
      RESET:      state <= jtag_tms ? RESET : IDLE;
      IDLE:       state <= jtag_tms ? SELECT_DR : IDLE;
      SELECT_DR:  state <= jtag_tms ? SELECT_IR : CAPTURE_DR;
      CAPTURE_DR: state <= jtag_tms ? EXIT1_DR : SHIFT_DR;
      SHIFT_DR:   state <= jtag_tms ? EXIT1_DR : SHIFT_DR;
      EXIT1_DR:   state <= jtag_tms ? UPDATE_DR : PAUSE_DR;
      PAUSE_DR:   state <= jtag_tms ? EXIT2_DR : PAUSE_DR;
      EXIT2_DR:   state <= jtag_tms ? UPDATE_DR : SHIFT_DR;
      UPDATE_DR:  state <= jtag_tms ? SELECT_DR : IDLE;
      SELECT_IR:  state <= jtag_tms ? RESET : CAPTURE_IR;
      CAPTURE_IR: state <= jtag_tms ? EXIT1_IR : SHIFT_IR;
      SHIFT_IR:   state <= jtag_tms ? EXIT1_IR : SHIFT_IR;
      EXIT1_IR:   state <= jtag_tms ? UPDATE_IR : PAUSE_IR;
      PAUSE_IR:   state <= jtag_tms ? EXIT2_IR : PAUSE_IR;
      EXIT2_IR:   state <= jtag_tms ? UPDATE_IR : SHIFT_IR;
      UPDATE_IR:  state <= jtag_tms ? SELECT_DR : IDLE;
    endcase

  always @(posedge jtag_tck) begin
    if (state == CAPTURE_IR) ir_shift <= 4'b0101;
    else if (state == SHIFT_IR) ir_shift <= {jtag_tdi, ir_shift[3:1]};

    if (state == RESET) ir <= IDCODE;
    else if (state == UPDATE_IR) ir <= ir_shift;

    if (state == CAPTURE_DR) begin
      idcode <= IDCODE_VALUE;
      bypass <= 1'b0;
    end else if (state == SHIFT_DR) begin
      idcode <= {jtag_tdi, idcode[31:1]};
      bypass <= jtag_tdi;
    end
  end

  always @(negedge jtag_tck)
    if (state == SHIFT_IR) jtag_tdo <= ir_shift[0];
    else if (state == SHIFT_DR) jtag_tdo <= sel ? tdo : ir == IDCODE ? idcode[0] : bypass;

  assign tck = jtag_tck;
  assign tdi = jtag_tdi;
  assign sel = ir == USER;
  assign capture = state == CAPTURE_DR;
  assign shift = state == SHIFT_DR;
  assign update = state == UPDATE_DR;
endmodule

`default_nettype wire
