// One logic-analyzer core without its trigger units and expressions: input registers, window control, sample memory,
// trigger output on the sample clock; configuration chain, status and read-out on TCK. `ostrel_debug` connects units
// and expressions to it. docs/debug-core.md specifies its behaviour to the sample.
//
// Pipeline on the sample clock. Trigger and data pass through the same stages, so that nothing has to be aligned later:
//   A  the inputs as sampled at every edge
//   X  only with units of two stages (UNIT_STAGES): the wide ones' partial results
//   B  the last sample (loads only on samples); units' hits
//   C  expression rows looked up from B's hits; the sequences act on C
//   D  what the sequences say of the sample; window control acts on D, and D's word is written
// The sequences learn of a trigger one clock late, when the next sample may have passed them. That does no harm: what
// they say of it is not looked at, and they have started over long before the next window's search.
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
// And from outside: enables that do not belong to clk are levels, synchronised.
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
    parameter integer UNIT_STAGES = 1,      // Clocks from unit_cur to hits, 1 or 2.
    parameter integer HAS_SAMPLE_EN = 0,
    parameter integer SAMPLE_EN_LOW = 0,
    parameter integer SAMPLE_EN_SYNC = 0,   // The enable does not belong to clk: it passes two flip-flops.
    parameter integer HAS_TRIG_EN = 0,
    parameter integer TRIG_EN_LOW = 0,
    parameter integer TRIG_EN_SYNC = 0,
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

    // Units: hits are those of unit_cur UNIT_STAGES clocks before.
    output wire                        unit_clear,
    output wire                        unit_sample,
    output wire                        unit_sampled,
    output wire [TRIGGERS-1:0]         unit_cur,
    input  wire [UNITS-1:0]            hits,
    // Expressions, see ostrel_expression.
    output wire                        restart,
    output wire                        rewind,
    output wire                        reload,
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
  localparam integer CYCLE_PART = 8;
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

  wire run_sync, request_sync, sample_en_clk, trig_en_clk;
  reg run_a, run_b, run_c, run_d;    // run, delayed with the samples.
  reg clear_a, clear_c, clear_d;     // Their inverses as registers: an inverted reset would cost an inverter each bit.
  reg sample_a, sample_b, sample_c, sample_d;
  reg trig_en_a, look_b, look_c;     // look: a sample at which the trigger enable is active.
  reg [PROBES-1:0] probe_a, probe_b, probe_c, probe_d;
  reg [TRIGGERS-1:0] trig_a;
  reg sampled, busy, full, done, ack;

  initial begin
    // A clock that has not started yet leaves the core configurable.
    busy = 1'b0;
    run_a = 1'b0;
    run_b = 1'b0;
    run_c = 1'b0;
    run_d = 1'b0;
    sample_a = 1'b0;
    sample_b = 1'b0;
    sample_c = 1'b0;
    sample_d = 1'b0;
    full = 1'b0;
    done = 1'b0;
    ack = 1'b0;
  end

  wire sample_now = HAS_SAMPLE_EN != 0 ? sample_en_clk ^ (SAMPLE_EN_LOW != 0) : 1'b1;
  wire trig_en_now = HAS_TRIG_EN != 0 ? trig_en_clk ^ (TRIG_EN_LOW != 0) : 1'b1;

  wire run_x, sample_x, trig_en_x;
  wire [PROBES-1:0] probe_x;
  generate
    if (UNIT_STAGES > 1) begin : two_stages
      reg run_q, sample_q, trig_en_q;
      reg [PROBES-1:0] probe_q;
      initial run_q = 1'b0;
      initial sample_q = 1'b0;
      always @(posedge clk) begin
        run_q <= run_a;
        sample_q <= sample_a;
        trig_en_q <= trig_en_a;
        probe_q <= probe_a;
      end
      assign run_x = run_q;
      assign sample_x = sample_q;
      assign trig_en_x = trig_en_q;
      assign probe_x = probe_q;
    end else begin : one_stage
      assign run_x = run_a;
      assign sample_x = sample_a;
      assign trig_en_x = trig_en_a;
      assign probe_x = probe_a;
    end
  endgenerate

  always @(posedge clk) begin
    run_a <= run_sync;
    run_b <= run_x;
    run_c <= run_b;
    run_d <= run_c;
    clear_a <= ~run_sync;
    clear_c <= ~run_b;
    clear_d <= ~run_c;
    busy <= run_sync | run_a | run_x | run_b | run_c | run_d;

    sample_a <= run_sync & sample_now;
    sample_b <= sample_x;
    sample_c <= sample_b;
    sample_d <= sample_c;
    trig_en_a <= trig_en_now;
    look_b <= sample_x & trig_en_x;
    look_c <= look_b;
    probe_a <= probe;
    trig_a <= trig;
    if (sample_x) probe_b <= probe_x;
    probe_c <= probe_b;
    probe_d <= probe_c;

    if (clear_a) sampled <= 1'b0;
    else if (sample_a) sampled <= 1'b1;
  end

  assign unit_clear = clear_a;
  assign unit_sample = sample_a;
  assign unit_sampled = sampled;
  assign unit_cur = trig_a;

  // ---- Sample clock: search, for the sequences in C

  // From a trigger to the next window's first searched sample there are as many samples as a window has, which is a
  // power of two. So the search can be known ahead from the samples that pass C.
  wire [POSITION_BITS-1:0] pre = config_q[0+:POSITION_BITS];
  reg searching;                   // The sample in C is searched, or follows a trigger that C does not know of yet.
  reg [POSITION_BITS-1:0] passed;  // Samples that have passed C since the search, the one in C included,
  reg missed;                      // but not the one that passed as C learnt of the trigger.
  reg first_search;                // Of the run.
  reg searched;                    // The sample in D is searched.
  reg [4:0] restarted;             // Clocks since the restart.
  wire [POSITION_BITS-1:0] last_passed = first_search ? pre : {{(POSITION_BITS-1){1'b1}}, ~missed};
  wire trigger;

  initial searching = 1'b0;
  always @(posedge clk) begin
    if (clear_c) begin
      searching <= run_b & pre == {POSITION_BITS{1'b0}};
      first_search <= 1'b1;
    end else begin
      searching <= searching ? ~trigger : sample_c & passed == last_passed;
      if (searching) first_search <= 1'b0;
    end
    if (clear_c | searching) passed <= {{(POSITION_BITS-1){1'b0}}, 1'b1};
    else if (sample_c) passed <= passed + 1'b1;
    if (searching) missed <= sample_c;
    searched <= searching & ~trigger;
    restarted <= searching ? 5'b00000 : clear_a ? 5'b00111 : {restarted[3:0], 1'b1};
  end

  assign restart = ~searching;
  assign rewind = restart & (clear_a | ~restarted[2]);
  assign reload = restart & ~restarted[4];
  assign evaluate = look_c & searching;

  // ---- Sample clock: windows

  reg [POSITION_BITS-1:0] position;  // The sample's place in the window's ring.
  reg [POSITION_BITS-1:0] fill;      // Samples of the window that will be kept; holds `pre` while searching.
  reg triggered;
  wire store = sample_d & ~full;
  wire keep = store & (~searched | trigger);
  wire window_end = keep & (&fill);
  wire last_window;

  always @(posedge clk)
    if (clear_d) begin
      fill <= {POSITION_BITS{1'b0}};
      triggered <= 1'b0;
      full <= 1'b0;
      done <= 1'b0;
    end else begin
      if (keep) fill <= fill + 1'b1;  // Wraps to 0 at the window's end.
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
        if (clear_d) begin
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
        if (clear_d) position <= {POSITION_BITS{1'b0}};
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

    assign word[0+:PROBES] = probe_d;
    if (INCLUDE_TRIGGER != 0) begin : unit_states
      reg [UNITS-1:0] hits_c, hits_d;
      always @(posedge clk) begin
        hits_c <= hits;
        hits_d <= hits_c;
      end
      assign word[PROBES+:UNITS] = hits_d;
    end else begin : no_unit_states
      wire unused = &{1'b0, hits};
    end
    if (TIMESTAMP_BITS > 0) begin : timestamp
      // Counts in stage D: 0 at the edge that writes a sample of the run's edge 0. In parts, each of which steps with a
      // carry that is known one clock ahead.
      reg [TIMESTAMP_BITS-1:0] cycle;
      genvar part;
      for (part = 0; part < TIMESTAMP_BITS; part = part + CYCLE_PART) begin : parts
        localparam integer BITS = TIMESTAMP_BITS - part < CYCLE_PART ? TIMESTAMP_BITS - part : CYCLE_PART;
        wire carry;
        always @(posedge clk)
          if (clear_d) cycle[part+:BITS] <= {BITS{1'b0}};
          else if (carry) cycle[part+:BITS] <= cycle[part+:BITS] + 1'b1;
        if (part == 0) begin : first
          assign carry = 1'b1;
        end else begin : further
          reg carry_q;
          always @(posedge clk) carry_q <= ~clear_d & (&cycle[part-1:1]) & ~cycle[0];
          assign carry = carry_q;
        end
      end
      assign word[PROBES+(INCLUDE_TRIGGER != 0 ? UNITS : 0)+:TIMESTAMP_BITS] = cycle;
    end

    // ---- Sample clock: trigger

    if (EVENT_BITS > 0) begin : event_counter
      reg [EVENT_BITS-1:0] events, next;
      reg last_event;
      wire [EVENT_BITS-1:0] last = config_q[POSITION_BITS+WINDOW_BITS+:EVENT_BITS];
      assign trigger = |fires & last_event & searched & ~full;
      always @(posedge clk)
        if (~searched) begin
          events <= {EVENT_BITS{1'b0}};
          next <= {{(EVENT_BITS-1){1'b0}}, 1'b1};
          last_event <= last == {EVENT_BITS{1'b0}};
        end else if (|fires) begin
          events <= next;
          next <= next + 1'b1;
          last_event <= next == last;
        end
      assign status_now[5+WINDOW_BITS+STEP_STATE_BITS+:EVENT_BITS] = events;
    end else begin : first_event
      assign trigger = |fires & searched & ~full;
    end

    if (STEP_STATE_BITS > 0) begin : step_states
      assign status_now[5+WINDOW_BITS+:STEP_STATE_BITS] = steps;
    end else begin : no_step_states
      wire unused = &{1'b0, steps};
    end
  endgenerate
  assign status_now[4:0] = {sampled, trig_en_a, triggered, searching, run_a};

  // ---- Sample clock: trigger output

  // Active only from a run on, so that registers of any contents make no pulse when the device starts. Polarity comes
  // last: registers that start as 0 leave the output inactive.
  reg pulse;
  reg [2:0] live;
  wire active = pulse & (&live);
  wire pulse_goes_on;
  initial begin
    pulse = 1'b0;
    live = 3'b000;
  end
  always @(posedge clk) begin
    live <= {live[1:0], run_d | active};
    pulse <= (trigger & run_d) | (active & pulse_goes_on);
  end
  assign trig_out = active ^ (TRIG_OUT_LOW != 0);
  generate
    if (PULSE > 1) begin : long_pulse
      localparam integer RELOAD = PULSE - 1;
      reg [PULSE_BITS-1:0] remaining;
      always @(posedge clk) remaining <= trigger ? RELOAD[PULSE_BITS-1:0] : remaining - 1'b1;
      assign pulse_goes_on = |remaining;
    end else begin : single_cycle
      assign pulse_goes_on = 1'b0;
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
  generate
    if (SAMPLE_EN_SYNC != 0) begin : foreign_sample_en
      ostrel_sync sync (.clk(clk), .in(sample_en), .out(sample_en_clk));
    end else begin : own_sample_en
      assign sample_en_clk = sample_en;
    end
    if (TRIG_EN_SYNC != 0) begin : foreign_trig_en
      ostrel_sync sync (.clk(clk), .in(trig_en), .out(trig_en_clk));
    end else begin : own_trig_en
      assign trig_en_clk = trig_en;
    end
  endgenerate

  always @(posedge clk) begin
    ack <= request_sync;
    if (request_sync != ack) snapshot <= status_now;
  end
endmodule

`default_nettype wire
