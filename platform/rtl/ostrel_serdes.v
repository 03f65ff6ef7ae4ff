// The serdes core: the levels and clocks of a serdes block, counted on a sample clock and read over TCK. One adder
// goes round the rows of a small memory, so that a further signal costs a few LUTs:
//   row 0               rounds; its level is the reset's
//   row 1               TCK
//   rows 2 .. 1+CLOCKS  the watched clocks
//   the rows behind     the watched levels, on which the reset acts
// A row is count (14), changed, level. Between two visits of a row its rising edges are counted beside the signal. A
// round takes ROWS sample clocks, so a watched clock has count * 64 cycles in rounds * ROWS sample clocks.
//
// A look copies all rows in one round, at the same distance from the last copy for each, and makes them start anew in
// the round behind it: clocks, rounds and `changed` always, the counts of levels when that is asked for. No edge is
// lost between two looks. Counts do not wrap: a level's stops at its end; the rounds and the clocks stop together when
// the first of them is at its end, so that their ratios stay right.
//
// Clock crossings, all of them:
//   asked     TCK -> clk   `request`, a TCK later than `restart_levels`: level, synchronised.
//   ack       clk -> TCK   level, follows request once all rows are copied and have started anew, synchronised.
//   restart_levels         TCK -> clk  stable from before request changes until ack follows.
//   copies    clk -> TCK   written only between a change of request and that of ack, read only outside of it.
//   tck_64, clock[].divider_q  watched clock -> clk   level, synchronised.
//   rst, level             the design -> clk   levels, synchronised.
`default_nettype none

module ostrel_serdes #(
    parameter integer CLOCKS = 0,       // Watched clocks, besides TCK.
    parameter integer LEVELS = 8,       // Watched levels.
    parameter integer ROW_BITS = 4,     // clog2(2 + CLOCKS + LEVELS)
    parameter integer EDGE_BITS = 3,    // Bits of the edges of a level in a round: clog2((ROWS + 1) / 2 + 1).
    parameter integer INDEX_BITS = 8,
    parameter integer HUB_ADDRESS_BITS = 1,
    parameter [127:0] INFO = 128'd0     // This core's half of the self-description.
) (
    // Design side. In a simulation all but the clocks is 0 or 1 (see ostrel_known).
    input  wire                                clk,
    input  wire                                rst,    // Active high.
    input  wire [(CLOCKS > 0 ? CLOCKS-1 : 0):0] clocks,
    input  wire [(LEVELS > 0 ? LEVELS-1 : 0):0] levels,

    // Hub side, see ostrel_hub.
    input  wire                                tck,
    input  wire                                tdi,
    input  wire                                select,
    input  wire                                op_status,
    input  wire                                op_info,
    input  wire                                op_read,
    input  wire                                op_config,
    input  wire                                op_table,
    input  wire                                op_arm,
    input  wire                                op_stop,
    input  wire                                data,
    input  wire [7:0]                          tag,    // Of STATUS: bit 1 asks for a look, bit 0 numbers it, bit 2: and
                                                       // the counts of levels start anew.
    input  wire [HUB_ADDRESS_BITS-1:0]         address,
    input  wire [INDEX_BITS-1:0]               index,
    input  wire                                load,
    input  wire                                fetch,
    input  wire                                execute,
    output wire                                permit,
    output wire                                word_last,
    output wire                                block_end,
    output wire                                payload,
    output wire [4:0]                          flags
);
  localparam integer COUNT_BITS = 14, CELL_BITS = COUNT_BITS + 2;
  localparam [EDGE_BITS-1:0] ONE_EDGE = 1;
  localparam integer FIRST_LEVEL = 2 + CLOCKS, ROWS = FIRST_LEVEL + LEVELS, LAST_ROW = ROWS - 1,
                     LAST_CLOCK = FIRST_LEVEL - 1;

  // ---- TCK: looks

  reg asked, request, restart_levels;
  wire ack_sync;
  wire fresh = asked == ack_sync;

  initial begin
    asked = 1'b0;
    request = 1'b0;
    restart_levels = 1'b0;
  end

  // A look has a number, so that a command whose reply was lost can be sent again.
  always @(posedge tck) begin
    if (select & execute & op_status & tag[1] & fresh) begin
      asked <= tag[0];
      restart_levels <= tag[2];
    end
    request <= asked;
  end

  // ---- Watched clocks, divided by 64 so that the sample clock sees each edge

  reg [5:0] tck_divider;
  initial tck_divider = 6'd0;
  always @(posedge tck) tck_divider <= tck_divider + 1'b1;

  wire [ROWS-1:1] sync;
  ostrel_sync sync_tck (.clk(clk), .in(tck_divider[5]), .out(sync[1]));

  genvar i;
  generate
    for (i = 0; i < CLOCKS; i = i + 1) begin : clock
      reg [5:0] divider;
      initial divider = 6'd0;
      always @(posedge clocks[i]) divider <= divider + 1'b1;
      ostrel_sync sync_clock (.clk(clk), .in(divider[5]), .out(sync[2+i]));
    end
    for (i = 0; i < LEVELS; i = i + 1) begin : watched
      ostrel_sync sync_level (.clk(clk), .in(levels[i]), .out(sync[FIRST_LEVEL+i]));
    end
  endgenerate

  // ---- Sample clock: the round

  wire rst_sync, request_sync;
  reg [ROW_BITS-1:0] row, row_q;
  reg copying, copying_q, restarting, ack, reset_seen, clearing;
  wire round_end = row == LAST_ROW[ROW_BITS-1:0];

  initial begin
    row = {ROW_BITS{1'b0}};
    row_q = {ROW_BITS{1'b0}};
    // As after a look and in reset, for two rounds: what a level is at power-up is no edge. A reader finds the core
    // fresh when its sample clock has made the first.
    copying = 1'b0;
    copying_q = 1'b0;
    restarting = 1'b1;
    ack = 1'b1;
    reset_seen = 1'b1;
    clearing = 1'b1;
  end

  always @(posedge clk) begin
    row <= round_end ? {ROW_BITS{1'b0}} : row + 1'b1;
    row_q <= row;
    copying_q <= copying;
    if (round_end) begin
      copying <= request_sync != ack & ~copying & ~restarting;
      restarting <= copying;
      if (restarting) ack <= ~ack;
      clearing <= reset_seen | rst_sync;
    end
    // A reset of less than a round still clears all rows.
    reset_seen <= rst_sync | (reset_seen & ~round_end);
  end

  // ---- Sample clock: edges since the row's last visit

  wire [ROWS-1:0] level = {sync, rst_sync};
  wire [ROWS-1:0] visited;
  wire [EDGE_BITS*ROWS-1:0] rises;
  assign visited[0] = row == 0;
  assign rises[0+:EDGE_BITS] = ONE_EDGE;
  generate
    for (i = 1; i < ROWS; i = i + 1) begin : counted
      reg was;
      reg [EDGE_BITS-1:0] count;
      wire rise = sync[i] & ~was;
      initial begin
        was = 1'b0;
        count = {EDGE_BITS{1'b0}};
      end
      always @(posedge clk) begin
        was <= sync[i];
        count <= (visited[i] ? {EDGE_BITS{1'b0}} : count) + (rise ? ONE_EDGE : {EDGE_BITS{1'b0}});
      end
      assign visited[i] = row == i;
      assign rises[EDGE_BITS*i+:EDGE_BITS] = count;
    end
  endgenerate

  integer k;
  reg [EDGE_BITS-1:0] edges;
  always @* begin
    edges = {EDGE_BITS{1'b0}};
    for (k = 0; k < ROWS; k = k + 1) edges = edges | (rises[EDGE_BITS*k+:EDGE_BITS] & {EDGE_BITS{visited[k]}});
  end

  // ---- Sample clock: read a row, add, write it back

  (* ram_style = "distributed" *) reg [CELL_BITS-1:0] rows[0:(1<<ROW_BITS)-1];
  (* ram_style = "distributed" *) reg [CELL_BITS-1:0] copies[0:(1<<ROW_BITS)-1];
  integer r;
  initial
    for (r = 0; r < (1 << ROW_BITS); r = r + 1) begin
      rows[r] = {CELL_BITS{1'b0}};
      copies[r] = {CELL_BITS{1'b0}};
    end

  reg [COUNT_BITS-1:0] count_q;
  reg changed_q, was_q, level_q, clear_q, clock_q, stopped;
  reg [EDGE_BITS-1:0] edges_q;
  wire is_clock = row <= LAST_CLOCK[ROW_BITS-1:0];
  wire cleared = clearing & ~is_clock;
  wire [CELL_BITS-1:0] cell_now = rows[row];

  initial begin
    count_q = {COUNT_BITS{1'b0}};
    changed_q = 1'b0;
    was_q = 1'b0;
    level_q = 1'b0;
    clear_q = 1'b0;
    clock_q = 1'b1;
    stopped = 1'b0;
    edges_q = {EDGE_BITS{1'b0}};
  end

  wire full = &count_q[COUNT_BITS-1:EDGE_BITS];
  wire counts = ~full & ~(clock_q & stopped);
  wire [COUNT_BITS-1:0] sum = count_q + {{(COUNT_BITS-EDGE_BITS){1'b0}}, edges_q & {EDGE_BITS{counts}}};
  wire changed = changed_q | (~clear_q & (level_q != was_q | (|edges_q)));

  always @(posedge clk) begin
    if (cleared | (restarting & (is_clock | restart_levels))) count_q <= {COUNT_BITS{1'b0}};
    else count_q <= cell_now[COUNT_BITS-1:0];
    changed_q <= cell_now[COUNT_BITS] & ~restarting & ~cleared;
    was_q <= cell_now[COUNT_BITS+1];
    level_q <= level[row];
    clear_q <= cleared;
    clock_q <= is_clock;
    if (cleared) edges_q <= {EDGE_BITS{1'b0}};
    else edges_q <= edges;

    if (restarting) stopped <= 1'b0;
    else if (clock_q & full) stopped <= 1'b1;

    rows[row_q] <= {level_q, changed, sum};
    if (copying_q) copies[row_q] <= {level_q, changed, sum};
  end

  // ---- Reply: bit 0 of all rows, then bit 1 of them, ... so that only the rows are filled up to a power of two

  localparam integer STATUS_LAST = (CELL_BITS << ROW_BITS) - 1;
  wire [CELL_BITS-1:0] copy = copies[index[ROW_BITS-1:0]];
  wire [127:0] info = INFO;
  assign permit = select & (op_status | op_info);
  assign payload = select & (op_info ? info[index[6:0]] : copy[index[ROW_BITS+:4]]);
  assign word_last = select & index == STATUS_LAST[INDEX_BITS-1:0];
  assign block_end = select;
  assign flags = {fresh, 3'b000, asked};
  wire unused = &{1'b0, tdi, op_read, op_config, op_table, op_arm, op_stop, data, address, load, fetch, tag[7:3],
                  index, clocks, levels};

  // ---- Crossings of levels

  ostrel_sync sync_rst (.clk(clk), .in(rst), .out(rst_sync));
  ostrel_sync sync_request (.clk(clk), .in(request), .out(request_sync));
  ostrel_sync sync_ack (.clk(tck), .in(ack), .out(ack_sync));
endmodule

`default_nettype wire
