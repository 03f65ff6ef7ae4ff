// Two lanes of framed bytes are merged into one stream. A host reads counters over an 8-bit tri-state bus; a beat made
// from a reference clock of its own shows that the link is alive.
module frame_link (
    input  wire       clk,
    input  wire       rst,
    input  wire       ref_clk,
    // Two byte streams without back-pressure: A5, length, payload, check sum.
    input  wire [7:0] rx0_data,
    input  wire       rx0_valid,
    input  wire [7:0] rx1_data,
    input  wire       rx1_valid,
    // The merged stream: length, payload and check sum of one frame after the other.
    output wire [7:0] tx_data,
    output wire       tx_lane,
    output wire       tx_last,
    output wire       tx_valid,
    input  wire       tx_ready,
    // Host registers.
    input  wire [2:0] host_addr,
    input  wire       host_write,
    input  wire       host_read,
    inout  wire [7:0] host_data,
    output wire       alive
);
  wire [8:0] word0, word1;
  wire valid0, valid1, pop0, pop1;
  wire [1:0] frame_done, frame_bad, overflow;
  reg  [1:0] lane_on;

  lane u_lane0 (
      .clk(clk), .rst(rst), .enable(lane_on[0]), .rx_data(rx0_data), .rx_valid(rx0_valid),
      .word(word0), .valid(valid0), .pop(pop0),
      .frame_done(frame_done[0]), .frame_bad(frame_bad[0]), .overflow(overflow[0])
  );
  lane u_lane1 (
      .clk(clk), .rst(rst), .enable(lane_on[1]), .rx_data(rx1_data), .rx_valid(rx1_valid),
      .word(word1), .valid(valid1), .pop(pop1),
      .frame_done(frame_done[1]), .frame_bad(frame_bad[1]), .overflow(overflow[1])
  );
  merge u_merge (
      .clk(clk), .rst(rst), .word0(word0), .valid0(valid0), .pop0(pop0), .word1(word1), .valid1(valid1), .pop1(pop1),
      .tx_data(tx_data), .tx_lane(tx_lane), .tx_last(tx_last), .tx_valid(tx_valid), .tx_ready(tx_ready)
  );

  // Counters of each lane.
  wire [15:0] frames_of, faults_of;
  genvar i;
  generate
    for (i = 0; i < 2; i = i + 1) begin : stat
      reg [7:0] frames;
      reg [7:0] faults;
      always @(posedge clk)
        if (rst) begin
          frames <= 8'd0;
          faults <= 8'd0;
        end else begin
          if (frame_done[i]) frames <= frames + 8'd1;
          if (frame_bad[i] | overflow[i]) faults <= faults + 8'd1;
        end
      assign frames_of[8*i+:8] = frames;
      assign faults_of[8*i+:8] = faults;
    end
  endgenerate

  // The beat crosses from the reference clock through two registers.
  wire beat;
  beat_source u_beat (.ref_clk(ref_clk), .beat(beat));
  reg [2:0] beat_sync;
  reg [7:0] uptime;
  always @(posedge clk)
    if (rst) begin
      beat_sync <= 3'd0;
      uptime    <= 8'd0;
    end else begin
      beat_sync <= {beat_sync[1:0], beat};
      if (beat_sync[2] != beat_sync[1]) uptime <= uptime + 8'd1;
    end
  assign alive = beat_sync[2];

  // Host port: one register a clock; the bus is driven only while it is read.
  wire [7:0] host_in = host_data;
  reg  [7:0] host_out;
  reg        host_drive;
  reg  [7:0] scratch;
  assign host_data = host_drive ? host_out : 8'bz;
  always @(posedge clk)
    if (rst) begin
      host_drive <= 1'b0;
      host_out   <= 8'd0;
      scratch    <= 8'd0;
      lane_on    <= 2'b11;
    end else begin
      host_drive <= host_read;
      case (host_addr)
        3'd0: host_out <= {6'd0, lane_on};
        3'd1: host_out <= frames_of[7:0];
        3'd2: host_out <= frames_of[15:8];
        3'd3: host_out <= faults_of[7:0];
        3'd4: host_out <= faults_of[15:8];
        3'd5: host_out <= uptime;
        3'd6: host_out <= scratch;
        default: host_out <= 8'h5a;
      endcase
      if (host_write && host_addr == 3'd0) lane_on <= host_in[1:0];
      if (host_write && host_addr == 3'd6) scratch <= host_in;
    end
endmodule
