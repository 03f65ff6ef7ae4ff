// Sends whole frames of two lanes in turn: a lane keeps the output until its last word has gone.
module merge (
    input  wire       clk,
    input  wire       rst,
    input  wire [8:0] word0,
    input  wire       valid0,
    output wire       pop0,
    input  wire [8:0] word1,
    input  wire       valid1,
    output wire       pop1,
    output wire [7:0] tx_data,
    output wire       tx_lane,
    output wire       tx_last,
    output wire       tx_valid,
    input  wire       tx_ready
);
  reg busy;      // a frame is on its way
  reg selected;  // the lane that it comes from

  wire [8:0] word = selected ? word1 : word0;
  wire moved = tx_valid && tx_ready;

  assign tx_valid = busy && (selected ? valid1 : valid0);
  assign tx_data  = word[7:0];
  assign tx_last  = word[8];
  assign tx_lane  = selected;
  assign pop0     = moved && !selected;
  assign pop1     = moved && selected;

  always @(posedge clk)
    if (rst) begin
      busy     <= 1'b0;
      selected <= 1'b0;
    end else if (!busy) begin
      if (selected ? valid0 : valid1) begin
        selected <= !selected;
        busy     <= 1'b1;
      end else if (valid0 || valid1) busy <= 1'b1;
    end else if (moved && tx_last) busy <= 1'b0;
endmodule
