// Test bench of frame_link. `frame_link_world` is everything around the design: clocks, two senders, the receiver that
// checks what arrives, and a host. It can surround an instrumented design as well; `tb` joins it to the design itself.
`timescale 1ns / 1ps

// Sends frames of pseudo-random length, payload and pace. Every word that the link has to deliver is remembered.
module frame_sender #(
    parameter [31:0] SEED = 32'd1
) (
    input  wire       clk,
    input  wire       rst,
    output reg  [7:0] data,
    output reg        valid
);
  reg [31:0] random;
  reg [7:0] sum;
  integer phase, left, pause, frames;
  reg [8:0] sent[0:65535];
  integer sent_count;

  initial sent_count = 0;
  // One step of a 32-bit xorshift generator.
  function [31:0] next(input [31:0] x);
    reg [31:0] y;
    begin
      y = x ^ (x << 13);
      y = y ^ (y >> 17);
      next = y ^ (y << 5);
    end
  endfunction

  task emit(input [7:0] value, input last, input counted);
    begin
      data  <= value;
      valid <= 1'b1;
      if (counted) begin
        sent[sent_count] = {last, value};
        sent_count = (sent_count + 1) % 65536;
      end
    end
  endtask

  always @(posedge clk)
    if (rst) begin
      random <= SEED;
      data   <= 8'd0;
      valid  <= 1'b0;
      phase  = 0;
      pause  = 20;
      frames = 0;
    end else begin
      random <= next(random);
      valid  <= 1'b0;
      if (pause != 0) pause = pause - 1;
      else begin
        pause = 3 + random[10:8];
        case (phase)
          0: begin
            emit(8'ha5, 1'b0, 1'b0);
            phase = 1;
          end
          1: begin
            left = 1 + random[18:16];
            sum  = left;
            emit(left, 1'b0, 1'b1);
            phase = 2;
          end
          2: begin
            sum = sum + random[31:24];
            emit(random[31:24], 1'b0, 1'b1);
            left = left - 1;
            if (left == 0) phase = 3;
          end
          default: begin
            emit(sum, 1'b1, 1'b1);
            pause  = 20 + random[15:10];
            frames = frames + 1;
            phase  = 0;
          end
        endcase
      end
    end
endmodule

module frame_link_world (
    output reg        clk,
    output reg        rst,
    output reg        ref_clk,
    output wire [7:0] rx0_data,
    output wire       rx0_valid,
    output wire [7:0] rx1_data,
    output wire       rx1_valid,
    input  wire [7:0] tx_data,
    input  wire       tx_lane,
    input  wire       tx_last,
    input  wire       tx_valid,
    output reg        tx_ready,
    output reg  [2:0] host_addr,
    output reg        host_write,
    output reg        host_read,
    inout  wire [7:0] host_data,
    input  wire       alive
);
  integer cycle, lost, host_faults, beats;
  initial begin
    clk = 0;
    ref_clk = 0;
    rst = 1;
    cycle = 0;
    lost = 0;
    host_faults = 0;
    beats = 0;
    repeat (8) @(posedge clk);
    rst <= 0;
  end
  always #5 clk = !clk;
  always #7.3 ref_clk = !ref_clk;
  always @(posedge clk) cycle <= cycle + 1;
  always @(alive) beats = beats + 1;

  frame_sender #(.SEED(32'h1badf00d)) sender0 (.clk(clk), .rst(rst), .data(rx0_data), .valid(rx0_valid));
  frame_sender #(.SEED(32'h0ddba11e)) sender1 (.clk(clk), .rst(rst), .data(rx1_data), .valid(rx1_valid));

  // The receiver takes words at most clocks. A word that is missing shows as the one that follows it.
  reg [15:0] pace;
  integer received0, received1;
  reg [8:0] expected, following;
  wire [8:0] got = {tx_last, tx_data};

  always @(posedge clk)
    if (rst) begin
      tx_ready  <= 1'b0;
      pace      <= 16'hace1;
      received0 = 0;
      received1 = 0;
    end else begin
      pace     <= {pace[14:0], pace[15] ^ pace[13] ^ pace[12] ^ pace[10]};
      tx_ready <= pace[3:0] != 4'd0;
      if (tx_valid && tx_ready) begin
        expected  = tx_lane ? sender1.sent[received1] : sender0.sent[received0];
        following = tx_lane ? sender1.sent[(received1+1)%65536] : sender0.sent[(received0+1)%65536];
        if (got !== expected) begin
          lost = lost + 1;
          $display("cycle %0d, lane %0d: expected %h, got %h%0s", cycle, tx_lane, expected, got,
                   got === following ? ": a word is missing" : "");
          if (tx_lane) received1 = (received1 + 1) % 65536;
          else received0 = (received0 + 1) % 65536;
        end
        if (tx_lane) received1 = (received1 + 1) % 65536;
        else received0 = (received0 + 1) % 65536;
      end
    end

  // The host writes its scratch register every 64 clocks, reads it back, and looks at another register.
  reg [7:0] host_out, scratch;
  reg host_drive;
  assign host_data = host_drive ? host_out : 8'bz;
  pullup pull_ups[7:0] (host_data);  // so that an idle bus has a level
  always @(posedge clk)
    if (rst) begin
      host_addr  <= 3'd0;
      host_write <= 1'b0;
      host_read  <= 1'b0;
      host_drive <= 1'b0;
      host_out   <= 8'd0;
      scratch    <= 8'd0;
    end else begin
      host_write <= 1'b0;
      host_read  <= 1'b0;
      host_drive <= 1'b0;
      case (cycle % 64)
        8: begin
          host_addr  <= 3'd6;
          host_write <= 1'b1;
          host_drive <= 1'b1;
          host_out   <= pace[7:0];
          scratch    <= pace[7:0];
        end
        16: begin
          host_addr <= 3'd6;
          host_read <= 1'b1;
        end
        18: if (host_data !== scratch) host_faults = host_faults + 1;
        32: begin
          host_addr <= (cycle / 64) % 6;
          host_read <= 1'b1;
        end
        default: ;
      endcase
    end

  task summary;
    $display("%0d cycles, %0d + %0d frames sent, %0d words lost, %0d host faults, %0d beats", cycle, sender0.frames,
             sender1.frames, lost, host_faults, beats);
  endtask
endmodule

module tb;
  wire clk, rst, ref_clk, rx0_valid, rx1_valid, tx_lane, tx_last, tx_valid, tx_ready;
  wire host_write, host_read, alive;
  wire [7:0] rx0_data, rx1_data, tx_data, host_data;
  wire [2:0] host_addr;

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
      .host_data(host_data), .alive(alive)
  );

  integer cycles;
  initial begin
    if (!$value$plusargs("cycles=%d", cycles)) cycles = 5000;
    repeat (cycles) @(posedge clk);
    world.summary;
    $finish;
  end
endmodule
