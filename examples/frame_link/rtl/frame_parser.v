// Finds frames in a byte stream: A5, length 1 to 8, payload, and the sum of length and payload. Passes on everything
// after the A5; the check sum is marked as the last word.
module frame_parser (
    input  wire       clk,
    input  wire       rst,
    input  wire       enable,
    input  wire [7:0] rx_data,
    input  wire       rx_valid,
    output reg  [8:0] word,
    output reg        push,
    output reg        frame_done,
    output reg        frame_bad
);
  localparam [2:0] HUNT = 3'd0, LENGTH = 3'd1, PAYLOAD = 3'd2, CHECK = 3'd3, RECOVER = 3'd4;

  reg [2:0] state;
  reg [3:0] remaining;
  reg [7:0] sum;
  reg [1:0] quiet;

  always @(posedge clk)
    if (rst) begin
      state      <= HUNT;
      remaining  <= 4'd0;
      sum        <= 8'd0;
      quiet      <= 2'd0;
      word       <= 9'd0;
      push       <= 1'b0;
      frame_done <= 1'b0;
      frame_bad  <= 1'b0;
    end else begin
      push       <= 1'b0;
      frame_done <= 1'b0;
      frame_bad  <= 1'b0;
      case (state)
        HUNT: if (rx_valid && enable && rx_data == 8'ha5) state <= LENGTH;
        LENGTH:
        if (rx_valid) begin
          remaining <= rx_data[3:0];
          sum       <= rx_data;
          if (rx_data == 8'd0 || rx_data > 8'd8) begin
            frame_bad <= 1'b1;
            quiet     <= 2'd3;
            state     <= RECOVER;
          end else begin
            word  <= {1'b0, rx_data};
            push  <= 1'b1;
            state <= PAYLOAD;
          end
        end
        PAYLOAD:
        if (rx_valid) begin
          word      <= {1'b0, rx_data};
          push      <= 1'b1;
          sum       <= sum + rx_data;
          remaining <= remaining - 4'd1;
          if (remaining == 4'd1) state <= CHECK;
        end
        CHECK:
        if (rx_valid) begin
          word       <= {1'b1, rx_data};
          push       <= 1'b1;
          frame_done <= 1'b1;
          frame_bad  <= rx_data != sum;
          state      <= HUNT;
        end
        RECOVER:  // Until four clocks pass without a byte.
        if (rx_valid) quiet <= 2'd3;
        else if (quiet == 2'd0) state <= HUNT;
        else quiet <= quiet - 2'd1;
        default: state <= HUNT;
      endcase
    end
endmodule
