// The instrumented design in the world of the source, with a scope at the trigger output.
`timescale 1ns / 1ps

module debug_tb;
  wire clk, rst, ref_clk, rx0_valid, rx1_valid, tx_lane, tx_last, tx_valid, tx_ready;
  wire host_write, host_read, alive;
  wire [7:0] rx0_data, rx1_data, tx_data, host_data;
  wire [2:0] host_addr;
  wire tck, tms, tdi, tdo, scope;

  frame_link_world world (
      .clk(clk), .rst(rst), .ref_clk(ref_clk), .rx0_data(rx0_data), .rx0_valid(rx0_valid), .rx1_data(rx1_data),
      .rx1_valid(rx1_valid), .tx_data(tx_data), .tx_lane(tx_lane), .tx_last(tx_last), .tx_valid(tx_valid),
      .tx_ready(tx_ready), .host_addr(host_addr), .host_write(host_write), .host_read(host_read),
      .host_data(host_data), .alive(alive)
  );
  frame_link dut (
      .clk(clk), .rst(rst), .ref_clk(ref_clk), .rx0_data(rx0_data), .rx0_valid(rx0_valid), .rx1_data(rx1_data),
      .rx1_valid(rx1_valid), .tx_data(tx_data), .tx_lane(tx_lane), .tx_last(tx_last), .tx_valid(tx_valid),
      .tx_ready(tx_ready), .host_addr(host_addr), .host_write(host_write), .host_read(host_read),
      .host_data(host_data), .alive(alive), .scope(scope), .ostrel_tck(tck), .ostrel_tms(tms), .ostrel_tdi(tdi), .ostrel_tdo(tdo)
  );
  ostrel_jtag_sim jtag (.tck(tck), .tms(tms), .tdi(tdi), .tdo(tdo), .trst(), .srst());

  // The scope: the clocks of each pulse, in a file.
  integer low = 0, file;
  initial file = $fopen("scope.txt", "w");
  always @(posedge clk)
    if (scope === 1'b0) low = low + 1;
    else if (low > 0) begin
      $fdisplay(file, "%0d", low);
      $fflush(file);
      low = 0;
    end
endmodule
