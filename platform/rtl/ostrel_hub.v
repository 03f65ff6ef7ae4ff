// The debug hub: the protocol behind the user data register, entirely in the TCK domain. It receives commands protected
// by a CRC, passes them to the selected core and frames the replies. What a command does is up to the core.
//
// A write scan is start bit, command, CRC prefix, payload; a read scan repeats command echo, flags, payload, CRC. Both
// go through the same three phases in a different order:
//   write: HEADER (40 bits) -> CRC (the prefix, 32 bits) -> PAYLOAD (to the end of the scan)
//   read:  HEADER (48 bits) -> PAYLOAD (as long as the core says) -> CRC (32 bits), and again while it reads words
// The CRC precedes the payload of a write, so that the payload is shifted straight into place without a bit count.
`default_nettype none

module ostrel_hub #(
    parameter integer CORES = 1,
    parameter integer INDEX_BITS = 8,          // Counts the bits of the longest payload word; at least 8.
    parameter integer ADDRESS_BITS = 10,       // Counts the words of the largest memory or table; at most 20.
    parameter [63:0] PROJECT_HASH = 64'd0
) (
    input  wire                    tck,
    input  wire                    sel,
    input  wire                    capture,
    input  wire                    shift,
    input  wire                    update,
    input  wire                    tdi,
    output wire                    tdo,

    // To all cores.
    output wire [CORES-1:0]        select,     // One-hot; 0 when the command names a core that does not exist.
    output wire                    op_status,
    output wire                    op_info,
    output wire                    op_read,
    output wire                    op_config,
    output wire                    op_table,
    output wire                    op_arm,
    output wire                    op_stop,
    output wire                    data,       // The reply's payload is memory words.
    output wire [7:0]              tag,
    output wire [ADDRESS_BITS-1:0] address,
    output wire [INDEX_BITS-1:0]   index,      // Bit of the payload word that is now on TDO.
    output wire                    load,       // This edge shifts in a payload bit of an allowed command.
    output wire                    fetch,      // This edge reads the memory word at `address`.
    output wire                    execute,    // A command with a correct CRC that the core permits: carry it out.

    // From each core, all gated with its select.
    input  wire [CORES-1:0]        permit,     // The command may be carried out now.
    input  wire [CORES-1:0]        word_last,  // `index` is at the payload word's last bit.
    input  wire [CORES-1:0]        block_end,  // `address`, already incremented, begins a block.
    input  wire [CORES-1:0]        payload,    // The payload bit at `index`.
    input  wire [5*CORES-1:0]      flags       // fresh, configured, done, armed, ready of each core.
);
  localparam [31:0] POLYNOMIAL = 32'h04C11DB7;
  // The register's value after a correct frame. It is neither the initial value nor one that further 0 or 1 bits leave
  // unchanged, so a scan that is too long is refused.
  localparam [31:0] CRC_RESIDUE = 32'hC704DD7B;
  localparam [31:0] MAGIC = 32'h52545350;
  localparam [15:0] VERSION = 16'd1;
  localparam [127:0] HUB_INFO = {PROJECT_HASH, CORES[15:0], VERSION, MAGIC};

  localparam [1:0] HEADER = 2'd0, PAYLOAD = 2'd1, CRC = 2'd2;

  reg [39:0] command;
  reg [31:0] crc;
  reg [INDEX_BITS-1:0] count;
  reg [1:0] phase;
  reg writing;   // The scan's start bit has been seen.
  reg received;  // The last command passed the CRC, so there is a reply.
  reg allowed;   // ... and may be carried out.

  initial begin
    command = 40'd0;
    phase = HEADER;
    writing = 1'b0;
    received = 1'b0;
    allowed = 1'b0;
  end

  wire shifting = sel & shift;
  wire start_bit = shifting & tdi & ~writing;
  wire frame_begin = start_bit | (sel & capture);

  // The command register is also the echo (it rotates once in each header) and the address counter.
  assign op_status = command[3:0] == 4'd0;
  assign op_info = command[3:0] == 4'd1;
  assign op_read = command[3:0] == 4'd2;
  assign op_config = command[3:0] == 4'd3;
  assign op_table = command[3:0] == 4'd4;
  assign op_arm = command[3:0] == 4'd5;
  assign op_stop = command[3:0] == 4'd6;
  assign tag = command[19:12];
  assign address = command[20+:ADDRESS_BITS];
  genvar i;
  generate
    for (i = 0; i < CORES; i = i + 1) begin : core
      localparam integer NUMBER = i;
      assign select[i] = command[11:4] == NUMBER[7:0];
    end
  endgenerate

  wire in_flags = count[5] & count[3];  // Bits 40 .. 47 of a reply's header
  wire rotate = shifting & ~start_bit & phase == HEADER & ~in_flags;
  wire header_last = writing ? count[5:0] == 6'd39 : count[5:0] == 6'd47;
  wire crc_last = count[4:0] == 5'd31;
  wire none_selected = ~|select;
  wire info = op_info & allowed;
  wire any_word_last = info ? &count[7:0] : |word_last | none_selected;
  wire any_block_end = ~data | (|block_end);
  wire advance = fetch | (load & op_table & any_word_last);

  assign index = count;
  wire frame = writing & phase == PAYLOAD;
  assign data = op_read & allowed;
  assign load = frame & shifting & allowed;
  assign fetch = shifting & ~writing & data &
      ((phase == HEADER & header_last) | (phase == PAYLOAD & any_word_last & ~any_block_end));
  assign execute = sel & update & frame & allowed & crc == CRC_RESIDUE;

  always @(posedge tck) begin
    if (rotate) command <= {writing ? tdi : command[0], command[39:1]};
    else if (advance) command[20+:ADDRESS_BITS] <= command[20+:ADDRESS_BITS] + 1'b1;
  end

  wire header_done = phase == HEADER & header_last;
  wire crc_done = phase == CRC & crc_last;
  wire word_done = phase == PAYLOAD & any_word_last;

  always @(posedge tck) begin
    if (frame_begin) begin
      count <= {INDEX_BITS{1'b0}};
      phase <= HEADER;
    end else if (shifting) begin
      count <= header_done | crc_done | word_done ? {INDEX_BITS{1'b0}} : count + 1'b1;
      if (header_done) phase <= writing ? CRC : PAYLOAD;
      // Only words follow one another in a scan. Another reply has one block: the bits that a scan shifts on through
      // the devices ahead must not rotate the echo away from its begin.
      if (crc_done) phase <= writing ? PAYLOAD : data ? HEADER : CRC;
      if (word_done & any_block_end & ~writing) phase <= CRC;
    end

    // Cleared at Capture-DR only, so that it is still set for an update that comes one TCK late.
    if (sel & capture) writing <= 1'b0;
    else if (start_bit) writing <= 1'b1;

    // Decided while the CRC prefix is shifted, that is before the first payload bit: a core that becomes ready in the
    // middle of a payload must not load the rest of it.
    if (shifting & writing & phase == CRC) allowed <= (|permit) & ~none_selected;

    if (start_bit) received <= 1'b0;
    else if (sel & update & frame & crc == CRC_RESIDUE) received <= 1'b1;
  end

  reg flag;
  integer k;
  reg [4:0] core_flags;
  always @* begin
    core_flags = 5'd0;
    for (k = 0; k < CORES; k = k + 1) core_flags = core_flags | (flags[5*k+:5] & {5{select[k]}});
    case (count[2:0])
      3'd0: flag = core_flags[0];
      3'd1: flag = core_flags[1];
      3'd2: flag = core_flags[2];
      3'd3: flag = core_flags[3];
      3'd4: flag = core_flags[4];
      3'd5: flag = ~allowed;
      3'd6: flag = 1'b0;
      default: flag = 1'b1;
    endcase
  end

  wire payload_bit = info & ~count[7] ? HUB_INFO[count[6:0]] : |payload;
  wire reply_bit = phase == PAYLOAD ? payload_bit : in_flags ? flag : command[0];

  // Ones are shifted in while the CRC is sent, which initialises the register for the next block.
  wire send_crc = ~writing & phase == CRC;
  wire feedback = ~send_crc & (crc[31] ^ (writing ? tdi : reply_bit));
  always @(posedge tck)
    if (frame_begin) crc <= 32'hFFFFFFFF;
    else if (shifting) crc <= ({crc[30:0], send_crc} ^ (POLYNOMIAL & {32{feedback}}));

  assign tdo = received & ~writing & (send_crc ? crc[31] : reply_bit);
endmodule

`default_nettype wire
