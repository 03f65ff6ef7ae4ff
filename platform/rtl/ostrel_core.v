// One logic-analyzer core without its trigger units and expressions: input registers, window control, sample memory,
// trigger output on the sample clock; configuration chain, status and read-out on TCK. `ostrel_debug` connects units
// and expressions to it. docs/debug-core.md specifies its behaviour to the sample.
//
// Pipeline on the sample clock. Trigger and data pass through the same stages, so that nothing has to be aligned later:
//   A  the inputs as sampled at every edge
//   B  the last sample (loads only on samples); units' hits
//   C  hits and data of B; expression rows looked up from B's hits
//   D  window control acts on C, and C's word is written
//
// Clock crossings, all of them:
//   run      TCK -> clk   level, synchronised. Rises only while busy is seen low and falls only while it is seen high,
//                         so that a slow sample clock misses neither a short STOP nor a short ARM.
//   busy     clk -> TCK   level, synchronised. Low when the whole pipeline is empty.
//   done     clk -> TCK   level, synchronised. Rises one sample clock after the last write to the memory.
//   request  TCK -> clk   level, toggles to request a snapshot, synchronised.
//   ack      clk -> TCK   level, follows request once the snapshot is stable, synchronised.
//   snapshot clk -> TCK   word, stable from before ack follows request until request toggles again.
//   oldest   clk -> TCK   word, changes only as done rises. (A status word that is being sent while it or the snapshot
//                         changes can fail its CRC; it is never wrong with a correct one.)
//   config_q TCK -> clk   word, changes only while ready, that is before run rises.
//   memory   clk -> TCK   written only before done, read only after it.
//   tables   TCK -> clk   (ostrel_table) as config_q.
`default_nettype none

module ostrel_core #(
    parameter integer PROBES = 32,
    parameter integer TRIGGERS = 1,         // Trigger bits, at least 1.
    parameter integer UNITS = 1,            // At least 1.
    parameter integer EXPRESSIONS = 1,      // At least 1.
    parameter integer STEP_STATE_BITS = 0,  // Bits of all expressions' step states.
    parameter integer ROW_BITS = 0,         // Widest row of an expression table in memory; 0 without such tables.
    parameter integer WINDOWS = 1,
    parameter integer WINDOW_BITS = 0,      // clog2(WINDOWS)
    parameter integer POSITION_BITS = 10,   // log2(samples of a window), at least 1.
    parameter integer ADDRESS_BITS = 10,    // clog2(WINDOWS << POSITION_BITS)
    parameter integer DISTRIBUTED = 0,
    parameter integer TIMESTAMP_BITS = 0,
    parameter integer INCLUDE_TRIGGER = 0,
    parameter integer EVENT_BITS = 0,       // clog2(event count); 0 without event counter.
    parameter integer HAS_SAMPLE_EN = 0,
    parameter integer SAMPLE_EN_LOW = 0,
    parameter integer HAS_TRIG_EN = 0,
    parameter integer TRIG_EN_LOW = 0,
    parameter integer TRIG_OUT_LOW = 0,
    parameter integer PULSE = 1,            // Sample clocks that the trigger output stays active.
    parameter integer PULSE_BITS = 0,       // clog2(PULSE)
    parameter integer CHAIN_BITS = 12,
    parameter integer BLOCK_BITS = 7,       // log2(words of a read-out block)
    parameter integer INDEX_BITS = 8,
    parameter integer HUB_ADDRESS_BITS = 10,
    parameter [127:0] INFO = 128'd0,        // This core's half of the self-description.
    parameter integer WORD_BITS = PROBES + (INCLUDE_TRIGGER != 0 ? UNITS : 0) + TIMESTAMP_BITS + (WINDOWS > 1 ? 1 : 0)
) (
    // Design side. In a simulation, all but trig is 0 or 1 (see ostrel_known), and so are the units' hits.
    input  wire                        clk,
    input  wire [PROBES-1:0]           probe,
    input  wire [TRIGGERS-1:0]         trig,
    input  wire                        sample_en,
    input  wire                        trig_en,
    output wire                        trig_out,

    // Units: hits are those of unit_cur one clock before.
    output wire                        unit_clear,
    output wire                        unit_sample,
    output wire                        unit_sampled,
    output wire [TRIGGERS-1:0]         unit_cur,
    input  wire [UNITS-1:0]            hits,
    // Expressions.
    output wire                        restart,
    output wire                        evaluate,
    input  wire [EXPRESSIONS-1:0]      fires,
    input  wire [(STEP_STATE_BITS > 0 ? STEP_STATE_BITS - 1 : 0):0] steps,
    output wire [CHAIN_BITS-1:0]       config_bits,
    output wire                        table_load,  // A row's last bit may be on tdi: write when the row is complete.
    output wire [(ROW_BITS > 0 ? ROW_BITS - 1 : 0):0] table_row,   // The row ends at the top bit.
    input  wire                        table_last,  // index is at the last bit of the addressed table's row.

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
  // Bits of an index into n bits; at least 1.
  function integer clog2(input integer n);
    begin
      clog2 = 1;
      while ((1 << clog2) < n) clog2 = clog2 + 1;
    end
  endfunction

  localparam integer SNAPSHOT_BITS = 5 + WINDOW_BITS + STEP_STATE_BITS + EVENT_BITS;
  localparam integer OLDEST_BITS = WINDOWS > 1 ? 0 : POSITION_BITS;
  localparam integer STATUS_BITS = 8 + SNAPSHOT_BITS + OLDEST_BITS;

  // ---- TCK: configuration, run, status, read-out

  reg [CHAIN_BITS-1:0] config_q;
  reg configured, armed, run, request;
  reg [7:0] run_tag;
  wire busy_sync, done_sync, ack_sync;
  wire ready = ~run & ~armed & ~busy_sync;
  wire fresh = request == ack_sync;

  initial begin
    configured = 1'b0;
    armed = 1'b0;
    run = 1'b0;
    request = 1'b0;
    run_tag = 8'd0;
  end

  assign permit = select & (op_status | op_info | op_stop | (op_read & done_sync & tag == run_tag) |
                            (op_config & ready) | ((op_table | op_arm) & ready & configured));
  assign flags = {fresh, configured, done_sync, armed, ready};
  assign config_bits = config_q;

  wire execute_here = select & execute;
  always @(posedge tck) begin
    if (select & load & op_config) config_q <= {tdi, config_q[CHAIN_BITS-1:1]};

    // A configuration that is being shifted in does not count before its frame has passed the CRC.
    if (select & load & (op_config | op_table)) configured <= 1'b0;
    else if (execute_here & (op_config | op_table)) configured <= 1'b1;

    if (execute_here & op_arm) begin
      armed <= 1'b1;
      run_tag <= tag;
    end else if (execute_here & op_stop) armed <= 1'b0;
    run <= busy_sync ? run & armed : run | armed;

    if (execute_here & op_status & fresh) request <= ~request;
  end

  assign table_load = select & load & op_table;
  generate
    if (ROW_BITS > 1) begin : rows
      reg [ROW_BITS-2:0] row_q;
      assign table_row = {tdi, row_q};
      always @(posedge tck) if (table_load) row_q <= table_row[ROW_BITS-1:1];
    end else begin : bits
      assign table_row = tdi;
    end
  endgenerate

  // ---- Sample clock: pipeline

  wire run_sync, request_sync;
  reg run_a, run_b, run_c;  // run, delayed with the samples.
  reg clear_a, clear_c;     // Their inverses as registers: an inverted reset would cost an inverter for each bit.
  reg sample_a, sample_b, sample_c, trig_en_a, trig_en_b, trig_en_c;
  reg [PROBES-1:0] probe_a, probe_b, probe_c;
  reg [TRIGGERS-1:0] trig_a;
  reg sampled, busy, full, done, ack;

  initial begin
    // A clock that has not started yet leaves the core configurable.
    busy = 1'b0;
    run_a = 1'b0;
    run_b = 1'b0;
    run_c = 1'b0;
    sample_a = 1'b0;
    sample_b = 1'b0;
    sample_c = 1'b0;
    full = 1'b0;
    done = 1'b0;
    ack = 1'b0;
  end

  wire sample_now = HAS_SAMPLE_EN != 0 ? sample_en ^ (SAMPLE_EN_LOW != 0) : 1'b1;
  wire trig_en_now = HAS_TRIG_EN != 0 ? trig_en ^ (TRIG_EN_LOW != 0) : 1'b1;

  always @(posedge clk) begin
    run_a <= run_sync;
    run_b <= run_a;
    run_c <= run_b;
    clear_a <= ~run_sync;
    clear_c <= ~run_b;
    busy <= run_sync | run_a | run_b | run_c;

    sample_a <= run_sync & sample_now;
    sample_b <= sample_a;
    sample_c <= sample_b;
    probe_a <= probe;
    trig_a <= trig;
    trig_en_a <= trig_en_now;
    if (sample_a) begin
      probe_b <= probe_a;
      trig_en_b <= trig_en_a;
    end
    probe_c <= probe_b;
    trig_en_c <= trig_en_b;

    if (clear_a) sampled <= 1'b0;
    else if (sample_a) sampled <= 1'b1;
  end

  assign unit_clear = clear_a;
  assign unit_sample = sample_a;
  assign unit_sampled = sampled;
  assign unit_cur = trig_a;

  // ---- Sample clock: windows

  reg [POSITION_BITS-1:0] position;  // The sample's place in the window's ring.
  reg [POSITION_BITS-1:0] fill;      // Samples of the window that will be kept; holds `pre` while searching.
  reg triggered;
  wire trigger;
  wire [POSITION_BITS-1:0] pre = config_q[0+:POSITION_BITS];
  wire store = sample_c & ~full;
  wire waiting = fill == pre & ~triggered & ~full;
  wire window_end = store & (&fill) & (~waiting | trigger);
  wire last_window;

  assign restart = fill != pre | triggered | full | clear_c;
  assign evaluate = sample_c & waiting & trig_en_c;

  always @(posedge clk)
    if (clear_c) begin
      fill <= {POSITION_BITS{1'b0}};
      triggered <= 1'b0;
      full <= 1'b0;
      done <= 1'b0;
    end else begin
      if (store & (~waiting | trigger)) fill <= fill + 1'b1;  // Wraps to 0 at the window's end.
      if (window_end) triggered <= 1'b0;
      else if (trigger) triggered <= 1'b1;
      if (window_end & last_window) full <= 1'b1;
      done <= full;
    end

  // The window counter and the lap bit exist only with several windows.
  wire [ADDRESS_BITS-1:0] write_address;
  wire [SNAPSHOT_BITS-1:0] status_now;
  wire [WORD_BITS-1:0] word;
  wire [STATUS_BITS-1:0] status;
  reg [SNAPSHOT_BITS-1:0] snapshot;
  initial snapshot = {SNAPSHOT_BITS{1'b0}};

  generate
    if (WINDOWS > 1) begin : several_windows
      reg [WINDOW_BITS-1:0] window;
      reg lap;
      assign last_window = window == config_q[POSITION_BITS+:WINDOW_BITS];
      always @(posedge clk)
        if (clear_c) begin
          window <= {WINDOW_BITS{1'b0}};
          position <= {POSITION_BITS{1'b0}};
          lap <= 1'b0;
        end else if (store) begin
          position <= window_end ? {POSITION_BITS{1'b0}} : position + 1'b1;
          lap <= ~window_end & (lap ^ (&position));
          if (window_end & ~last_window) window <= window + 1'b1;
        end
      assign write_address = {window, position};
      assign word[WORD_BITS-1] = lap;
      assign status_now[5+:WINDOW_BITS] = window;
      assign status = {snapshot, run_tag};
    end else begin : one_window
      assign last_window = 1'b1;
      always @(posedge clk)
        if (clear_c) position <= {POSITION_BITS{1'b0}};
        else if (store) position <= position + 1'b1;
      assign write_address = position;
      // A copy: position itself may still change while TCK reads it.
      reg [POSITION_BITS-1:0] oldest;
      initial oldest = {POSITION_BITS{1'b0}};
      always @(posedge clk) if (full) oldest <= position;
      if (STEP_STATE_BITS + EVENT_BITS > 0) begin : with_state
        assign status = {snapshot[SNAPSHOT_BITS-1:5], oldest, snapshot[4:0], run_tag};
      end else begin : without_state
        assign status = {oldest, snapshot, run_tag};
      end
    end

    // ---- Sample clock: the stored word

    assign word[0+:PROBES] = probe_c;
    if (INCLUDE_TRIGGER != 0) begin : unit_states
      reg [UNITS-1:0] hits_c;
      always @(posedge clk) hits_c <= hits;
      assign word[PROBES+:UNITS] = hits_c;
    end else begin : no_unit_states
      wire unused = &{1'b0, hits};
    end
    if (TIMESTAMP_BITS > 0) begin : timestamp
      // Counts in stage C: 0 at the edge that writes a sample of the run's edge 0.
      reg [TIMESTAMP_BITS-1:0] cycle;
      always @(posedge clk)
        if (clear_c) cycle <= {TIMESTAMP_BITS{1'b0}};
        else cycle <= cycle + 1'b1;
      assign word[PROBES+(INCLUDE_TRIGGER != 0 ? UNITS : 0)+:TIMESTAMP_BITS] = cycle;
    end

    // ---- Sample clock: trigger

    if (EVENT_BITS > 0) begin : event_counter
      reg [EVENT_BITS-1:0] events;
      wire count_reached = events == config_q[POSITION_BITS+WINDOW_BITS+:EVENT_BITS];
      assign trigger = |fires & count_reached;
      always @(posedge clk)
        if (restart) events <= {EVENT_BITS{1'b0}};
        else if (|fires) events <= events + 1'b1;
      assign status_now[5+WINDOW_BITS+STEP_STATE_BITS+:EVENT_BITS] = events;
    end else begin : first_event
      assign trigger = |fires;
    end

    if (STEP_STATE_BITS > 0) begin : step_states
      assign status_now[5+WINDOW_BITS+:STEP_STATE_BITS] = steps;
    end else begin : no_step_states
      wire unused = &{1'b0, steps};
    end
  endgenerate
  assign status_now[4:0] = {sampled, trig_en_a, triggered, ~restart, run_a};

  reg trig_out_q;
  initial trig_out_q = TRIG_OUT_LOW != 0;
  assign trig_out = trig_out_q;
  generate
    if (PULSE > 1) begin : pulse
      reg [PULSE_BITS-1:0] remaining;
      localparam integer RELOAD = PULSE - 1;
      initial remaining = {PULSE_BITS{1'b0}};
      always @(posedge clk) begin
        trig_out_q <= (trigger | (|remaining)) ^ (TRIG_OUT_LOW != 0);
        remaining <= trigger ? RELOAD[PULSE_BITS-1:0] : remaining - {{(PULSE_BITS-1){1'b0}}, |remaining};
      end
    end else begin : single_cycle
      always @(posedge clk) trig_out_q <= trigger ^ (TRIG_OUT_LOW != 0);
    end
  endgenerate

  // ---- Read-out on TCK

  wire [WORD_BITS-1:0] read_word;
  ostrel_memory #(
      .WIDTH(WORD_BITS), .WORDS(WINDOWS << POSITION_BITS), .ADDRESS_BITS(ADDRESS_BITS), .DISTRIBUTED(DISTRIBUTED)
  ) samples (
      .write_clk(clk), .write(store), .write_address(write_address), .write_data(word),
      .read_clk(tck), .read(fetch & select), .read_address(address[ADDRESS_BITS-1:0]), .read_data(read_word)
  );

  // A multiplexer by bit index in place of a shift register: a quarter of a LUT for each bit instead of a whole one.
  localparam integer WORD_INDEX_BITS = clog2(WORD_BITS), STATUS_INDEX_BITS = clog2(STATUS_BITS);
  localparam integer WORD_LAST = WORD_BITS - 1, STATUS_LAST = STATUS_BITS - 1;
  wire [127:0] info = INFO;
  assign payload = select & (op_info ? info[index[6:0]] : data ? read_word[index[WORD_INDEX_BITS-1:0]]
                                                               : status[index[STATUS_INDEX_BITS-1:0]]);
  assign word_last = select & (op_table & (ROW_BITS > 0) ? table_last :
                               data ? index == WORD_LAST[INDEX_BITS-1:0] : index == STATUS_LAST[INDEX_BITS-1:0]);
  generate
    if (BLOCK_BITS > 0) begin : blocks
      assign block_end = select & ~|address[(BLOCK_BITS > 0 ? BLOCK_BITS - 1 : 0):0];
    end else begin : word_blocks
      assign block_end = select;
    end
  endgenerate

  wire unused = &{1'b0, address};

  // ---- Crossings of levels

  ostrel_sync sync_run (.clk(clk), .in(run), .out(run_sync));
  ostrel_sync sync_busy (.clk(tck), .in(busy), .out(busy_sync));
  ostrel_sync sync_done (.clk(tck), .in(done), .out(done_sync));
  ostrel_sync sync_request (.clk(clk), .in(request), .out(request_sync));
  ostrel_sync sync_ack (.clk(tck), .in(ack), .out(ack_sync));

  always @(posedge clk) begin
    ack <= request_sync;
    if (request_sync != ack) snapshot <= status_now;
  end
endmodule

`default_nettype wire
