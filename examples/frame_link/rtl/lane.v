// One lane: the frame parser and the queue behind it.
module lane (
    input  wire       clk,
    input  wire       rst,
    input  wire       enable,
    input  wire [7:0] rx_data,
    input  wire       rx_valid,
    output wire [8:0] word,        // {last, byte}
    output wire       valid,
    input  wire       pop,
    output wire       frame_done,
    output wire       frame_bad,
    output wire       overflow
);
  wire [8:0] parsed;
  wire push;

  frame_parser u_parser (
      .clk(clk), .rst(rst), .enable(enable), .rx_data(rx_data), .rx_valid(rx_valid),
      .word(parsed), .push(push), .frame_done(frame_done), .frame_bad(frame_bad)
  );
  word_fifo u_fifo (
      .clk(clk), .rst(rst), .push_word(parsed), .push(push), .out_word(word), .out_valid(valid), .pop(pop),
      .overflow(overflow)
  );
endmodule
