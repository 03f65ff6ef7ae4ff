// Pulse-width modulator: 0x0 period - 1, 0x4 clocks of a period in which the output is high, both of 16 bits; 0x8 counts
// the periods.
module pwm (
    input  wire        clk_i,
    input  wire        stb_i,
    input  wire        we_i,
    input  wire [3:2]  adr_i,
    input  wire [31:0] dat_i,
    input  wire [3:0]  sel_i,
    output reg  [31:0] dat_o,
    output reg         ack_o = 1'b0,
    output wire        pulse
);
  reg [15:0] period = 16'd99, high = 16'd25, clock = 16'd0;
  reg [31:0] periods = 32'd0;
  assign pulse = clock < high;
  wire write = stb_i & we_i & ~ack_o;
  always @(posedge clk_i) begin
    ack_o <= stb_i & ~ack_o;
    case (adr_i)
      2'd0: dat_o <= {16'd0, period};
      2'd1: dat_o <= {16'd0, high};
      default: dat_o <= periods;
    endcase
    clock <= clock == period ? 16'd0 : clock + 16'd1;
    if (clock == period) periods <= periods + 32'd1;
    if (write & adr_i == 2'd0) begin
      if (sel_i[0]) period[7:0] <= dat_i[7:0];
      if (sel_i[1]) period[15:8] <= dat_i[15:8];
    end
    if (write & adr_i == 2'd1) begin
      if (sel_i[0]) high[7:0] <= dat_i[7:0];
      if (sel_i[0]) high[15:8] <= dat_i[15:8];
    end
  end
endmodule
