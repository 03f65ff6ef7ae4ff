// Drives the top with fixed random words and prints its ports and the probed bits at each falling edge. `PROBES prints
// the probes of the edition that is simulated.
module bench;
  reg clk = 0, rst = 1, pin = 0;
  reg [7:0] stimulus = 0;
  wire io = stimulus[0] ? 1'bz : pin;
  wire io_seen, through, slow_held;
  wire [3:0] a, b;
  wire [6:0] wide;
  wire [0:7] turned;
  wire [15:0] word;
  wire [1:0] slow_count;
  integer seed = 1, n, k;
  tricky dut (
      .clk(clk), .rst(rst), .stimulus(stimulus), .io(io), .io_seen(io_seen), .through(through), .a(a), .b(b),
      .wide(wide), .turned(turned), .word(word), .slow_count(slow_count), .held(slow_held), .ostrel_tck(pin)
`ifdef INSTRUMENTED
      , .ostrel1_tck(1'b0), .ostrel1_tms(1'b1), .ostrel1_tdi(1'b0)
`endif
  );
  initial begin
    for (n = 0; n < 400; n = n + 1) begin
      #4 stimulus = $random(seed);
      pin = $random(seed);
      rst = n >= 12 && n < 15;
      #1 clk = 1;
      #4 $write("%b%b%b%b%b%b%b%b%b%b ", io, io_seen, through, a, b, wide, turned, word, slow_count, slow_held);
      `PROBES
      $write("\n");
      #1 clk = 0;
    end
    $finish;
  end
endmodule
