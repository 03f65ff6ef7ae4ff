// A queue of 32 words and an output register, so that its first word stands ready. A word for an empty queue takes
// the short way, directly into the output register.
module word_fifo (
    input  wire       clk,
    input  wire       rst,
    input  wire [8:0] push_word,
    input  wire       push,
    output reg  [8:0] out_word,
    output reg        out_valid,
    input  wire       pop,
    output reg        overflow
);
  reg [8:0] mem [0:31];
  reg [4:0] wr_ptr, rd_ptr;
  reg [5:0] stored;  // words in `mem`, the output register not counted

  wire take  = !out_valid || pop;
  wire fetch = take && stored != 6'd0;
  // The memory is empty, or becomes so in this clock.
  wire draining = stored == 6'd0 || (stored == 6'd1 && fetch);
  wire bypass   = push && take && draining;
  wire write    = push && !bypass && stored != 6'd32;

  always @(posedge clk) begin
    if (write) mem[wr_ptr] <= push_word;
    if (rst) begin
      wr_ptr    <= 5'd0;
      rd_ptr    <= 5'd0;
      stored    <= 6'd0;
      out_word  <= 9'd0;
      out_valid <= 1'b0;
      overflow  <= 1'b0;
    end else begin
      overflow <= push && stored == 6'd32;
      if (write) wr_ptr <= wr_ptr + 5'd1;
      if (fetch) begin
        out_word <= mem[rd_ptr];
        rd_ptr   <= rd_ptr + 5'd1;
      end else if (bypass) out_word <= push_word;
      if (take) out_valid <= fetch || bypass;
      stored <= stored + {5'd0, write} - {5'd0, fetch};
    end
  end
endmodule
