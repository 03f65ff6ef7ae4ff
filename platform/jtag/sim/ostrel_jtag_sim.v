// Drives the JTAG pins of an instrumented design from outside the simulator: the server of a remote-bitbang connection
// over two FIFOs. A test bench instantiates it beside the design; `ost_capture -connect fifo:DIR` is the client.
//
// The folder DIR is given with +ostrel_fifo=DIR (or the parameter FIFO_DIR) and holds the FIFOs `to_sim` and `from_sim`
// (mkfifo). Commands, one character each:
//   0..7  set TCK, TMS, TDI to the bits 2, 1, 0 of the digit, then let HALF_PERIOD pass
//   R     reply with the level of TDO: 0 or 1
//   r s t u   no reset (u, t: as the digits, bit 1 is TRST, bit 0 is SRST): sets `trst` and `srst`
//   B b   adapter's LED: ignored
//   Q     end of the connection: $finish
// Other characters (line feeds) are skipped. Reading blocks, so that simulated time advances only with commanded
// TCK levels and a run is the same at any speed of the host. The end of the command file ends the simulation, too.

`timescale 1ns / 1ps

module ostrel_jtag_sim #(
    parameter HALF_PERIOD = 50.0,  // ns between two levels of TCK
    parameter FIFO_DIR = "."
) (
    output reg  tck,
    output reg  tms,
    output reg  tdi,
    input  wire tdo,
    output reg  trst,
    output reg  srst
);
  reg [8*1024:1] dir;
  integer commands;
  integer replies;
  integer command;
  real half_period;
  reg running;

  initial begin
    tck = 1'b0;
    tms = 1'b1;
    tdi = 1'b0;
    trst = 1'b0;
    srst = 1'b0;
    running = 1'b1;
    half_period = HALF_PERIOD;
    if ($value$plusargs("ostrel_half_period=%f", half_period)) begin
    end
    if (!$value$plusargs("ostrel_fifo=%s", dir)) $sformat(dir, "%0s", FIFO_DIR);
    commands = $fopen({dir, "/to_sim"}, "r");
    if (commands == 0) begin
      $display("ostrel_jtag_sim: cannot open '%0s/to_sim'; make the FIFO with mkfifo first.", dir);
      running = 1'b0;
    end
    else begin
      replies = $fopen({dir, "/from_sim"}, "w");
      if (replies == 0) begin
        $display("ostrel_jtag_sim: cannot open '%0s/from_sim'; make the FIFO with mkfifo first.", dir);
        running = 1'b0;
      end
    end
    while (running) begin
      command = $fgetc(commands);
      case (command)
        "0", "1", "2", "3", "4", "5", "6", "7": begin
          {tck, tms, tdi} = command[2:0];
          #(half_period);
        end
        "R": begin
          $fwrite(replies, "%0d", tdo === 1'b1);
          $fflush(replies);
        end
        "r": {trst, srst} = 2'b00;
        "s": {trst, srst} = 2'b01;
        "t": {trst, srst} = 2'b10;
        "u": {trst, srst} = 2'b11;
        "Q", -1: running = 1'b0;
        default: ;
      endcase
    end
    $finish;
  end
endmodule
