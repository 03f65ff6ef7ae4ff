// The Wishbone master: single classic cycles (Wishbone B4, 3.2) on the bus clock, a transfer of up to 512 words at a
// time out of or into a buffer that is loaded and read on TCK. docs/debug-core.md specifies what the hub's commands do
// here.
//
// Between two words the bus is free for the design's own master; `busy` says that this has a cycle under way, `grant`
// that ours has. The bus is left only when the slave's answer is gone, so that no other master takes it for its own.
//
// Clock crossings, all of them:
//   go        TCK -> clk   level, toggles to start a transfer, synchronised. Toggles only when `over` is seen equal.
//   over      clk -> TCK   level, follows go at the transfer's end, synchronised.
//   config_q  TCK -> clk   word, changes only while over equals go.
//   outgoing  TCK -> clk   memory, written only while over equals go.
//   incoming  clk -> TCK   memory, written only before over follows go, read only after it.
//   ending, index
//             clk -> TCK   words, change only before over follows go; not shown before it.
`default_nettype none

module ostrel_wishbone #(
    parameter integer ADDRESS_BITS = 32,    // Of a byte address.
    parameter integer BIG_ENDIAN = 1,       // The byte at a word's lowest address is in bits 31 to 24.
    parameter integer INDEX_BITS = 8,
    parameter integer HUB_ADDRESS_BITS = 9,
    parameter [127:0] INFO = 128'd0         // The master's half of the self-description.
) (
    // The bus.
    input  wire                        clk,
    input  wire                        busy,
    input  wire [31:0]                 dat_i,
    input  wire                        ack,
    input  wire                        err,
    input  wire                        rty,
    output wire                        grant,
    output wire                        cyc,
    output wire                        stb,
    output reg                         we,
    output wire [ADDRESS_BITS-1:0]     adr,
    output wire [31:0]                 dat_o,
    output reg  [3:0]                  sel,

    // Hub side, see ostrel_hub.
    input  wire                        tck,
    input  wire                        tdi,
    input  wire                        select,
    input  wire                        op_status,
    input  wire                        op_info,
    input  wire                        op_read,
    input  wire                        op_config,
    input  wire                        op_table,
    input  wire                        op_arm,
    input  wire                        op_stop,
    input  wire                        data,
    input  wire [7:0]                  tag,
    input  wire [HUB_ADDRESS_BITS-1:0] address,
    input  wire [INDEX_BITS-1:0]       index,
    input  wire                        load,
    input  wire                        fetch,
    input  wire                        execute,
    output wire                        permit,
    output wire                        word_last,
    output wire                        block_end,
    output wire                        payload,
    output wire [4:0]                  flags
);
  localparam integer WORDS = 512, WORD_BITS = 9, BLOCK_BITS = 7, CONFIG_BITS = 46, STATUS_BITS = 20;
  localparam integer STATUS_LAST = STATUS_BITS - 1;
  localparam [2:0] COMPLETE = 3'd0, ERROR = 3'd1, RETRY = 3'd2, NO_ANSWER = 3'd3, NO_BUS = 3'd4;
  localparam [1:0] IDLE = 2'd0, ASK = 2'd1, CYCLE = 2'd2, RELEASE = 2'd3;

  // ---- TCK

  reg [CONFIG_BITS-1:0] config_q;
  reg configured, go;
  reg [7:0] run_tag;
  reg [2:0] ending;
  reg [WORD_BITS-1:0] word;
  wire over_sync;
  wire ready = go == over_sync;

  initial begin
    configured = 1'b0;
    go = 1'b0;
    run_tag = 8'd0;
  end

  // The tag of a transfer that was started is refused, so that a repeated ARM does not write twice.
  assign permit = select & (op_status | op_info | (ready & (op_config | op_table | (op_read & tag == run_tag) |
                                                            (op_arm & configured & tag != run_tag))));
  assign flags = {1'b1, configured, ready, ~ready, ready};

  wire load_here = select & load;
  wire execute_here = select & execute;
  // The buffer's words are shifted through the configuration, which comes after them.
  wire [31:0] row = {tdi, config_q[CONFIG_BITS-1-:31]};
  wire row_last = index[4:0] == 5'd31;
  always @(posedge tck) begin
    if (load_here & (op_config | op_table)) config_q <= {tdi, config_q[CONFIG_BITS-1:1]};
    if (load_here & (op_config | op_table)) configured <= 1'b0;
    else if (execute_here & op_config) configured <= 1'b1;
    if (execute_here & op_arm) begin
      go <= ~go;
      run_tag <= tag;
    end
  end

  wire [31:0] received;
  wire [127:0] info = INFO;
  // As many bits as the multiplexer has inputs. What is still changing is not shown.
  wire [31:0] status = {12'd0, word & {WORD_BITS{ready}}, ending & {3{ready}}, run_tag};
  assign payload = select & (op_info ? info[index[6:0]] : data ? received[index[4:0]] : status[index[4:0]]);
  assign word_last = select & (op_table | data ? row_last : index == STATUS_LAST[INDEX_BITS-1:0]);
  assign block_end = select & ~|address[BLOCK_BITS-1:0];

  // ---- The bus's clock

  wire [31:0] start = config_q[31:0];
  wire write = config_q[32];
  wire [3:0] lanes = config_q[36:33];
  wire [WORD_BITS-1:0] last = config_q[45-:WORD_BITS];

  wire go_sync, known_busy, known_ack, known_err, known_rty;
  wire [31:0] known_dat_i;
  reg [1:0] state;
  reg over;
  reg [15:0] waited;  // Clocks in this state.
  reg [29:0] word_address;
  wire answer = known_ack | known_err | known_rty;
  wire late = &waited;
  wire released = ~answer | waited[2];
  wire bus_is_free = ~known_busy;

  initial begin
    state = IDLE;
    over = 1'b0;
    ending = COMPLETE;
    word = {WORD_BITS{1'b0}};
    waited = 16'd0;
    we = 1'b0;
    sel = 4'd0;
    word_address = 30'd0;
  end

  always @(posedge clk) begin
    waited <= waited + 1'b1;
    case (state)
      IDLE:
        if (go_sync != over) begin
          state <= ASK;
          word <= {WORD_BITS{1'b0}};
          ending <= COMPLETE;
          waited <= 16'd0;
        end
      ASK:
        if (bus_is_free | late) begin
          state <= bus_is_free ? CYCLE : IDLE;
          waited <= 16'd0;
          if (~bus_is_free) begin
            ending <= NO_BUS;
            over <= go_sync;
          end
        end
      CYCLE:
        if (answer | late) begin
          state <= RELEASE;
          waited <= 16'd0;
          ending <= known_err ? ERROR : known_rty ? RETRY : known_ack ? COMPLETE : NO_ANSWER;
        end
      RELEASE:
        if (released) begin
          waited <= 16'd0;
          if (ending != COMPLETE | word == last) begin
            state <= IDLE;
            over <= go_sync;
          end else begin
            state <= ASK;
            word <= word + 1'b1;
          end
        end
    endcase
    if (state == ASK) begin
      we <= write;
      sel <= BIG_ENDIAN != 0 ? {lanes[0], lanes[1], lanes[2], lanes[3]} : lanes;
      word_address <= start[31:2] + {{(30-WORD_BITS){1'b0}}, word};
    end
  end

  assign grant = state[1];
  assign cyc = state == CYCLE;
  assign stb = state == CYCLE;
  wire [31:0] byte_address = {word_address, 2'b00};
  assign adr = byte_address[ADDRESS_BITS-1:0];

  // In the buffers the byte at a word's lowest address is in bits 7 to 0.
  function [31:0] lanes_of(input [31:0] bytes);
    lanes_of = BIG_ENDIAN != 0 ? {bytes[7:0], bytes[15:8], bytes[23:16], bytes[31:24]} : bytes;
  endfunction
  wire [31:0] sent;
  assign dat_o = lanes_of(sent);

  ostrel_memory #(.WIDTH(32), .WORDS(WORDS), .ADDRESS_BITS(WORD_BITS)) outgoing (
      .write_clk(tck), .write(load_here & op_table & row_last), .write_address(address[WORD_BITS-1:0]),
      .write_data(row),
      .read_clk(clk), .read(state == ASK), .read_address(word), .read_data(sent)
  );
  // The last word read is the buffer's last: the transfer then ends with a block of the read-out, and a short one is
  // read in a short scan.
  ostrel_memory #(.WIDTH(32), .WORDS(WORDS), .ADDRESS_BITS(WORD_BITS)) incoming (
      .write_clk(clk), .write(cyc & known_ack), .write_address(word + ~last), .write_data(lanes_of(known_dat_i)),
      .read_clk(tck), .read(fetch & select), .read_address(address[WORD_BITS-1:0]), .read_data(received)
  );

  wire unused = &{1'b0, op_stop, start[1:0], address, byte_address, index};

  // ---- Crossings of levels

  ostrel_sync sync_go (.clk(clk), .in(go), .out(go_sync));
  ostrel_sync sync_over (.clk(tck), .in(over), .out(over_sync));

  // In a simulation x and z are no answer, no cycle of another master, and data of 0.
`ifdef SYNTHESIS
  assign {known_busy, known_ack, known_err, known_rty, known_dat_i} = {busy, ack, err, rty, dat_i};
`else
  ostrel_known #(.WIDTH(36)) filter_bus (
      .in({busy, ack, err, rty, dat_i}), .out({known_busy, known_ack, known_err, known_rty, known_dat_i})
  );
`endif
endmodule

`default_nettype wire
