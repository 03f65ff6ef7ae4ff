// Stand-alone simulation of the debug core: one core_env per sample clock drives random values and records what stood
// at every rising edge of a run; script.txt says what to do on the JTAG pins, out.txt gets what came back. Knows
// nothing of the core but its pins and the net that shows a run's first edge.
`timescale 1ps / 1ps

module core_env #(
    parameter HALF = 5000,
    parameter WIDTH = 8,
    parameter SEED = 1,
    parameter LOG = "core0.log",
    parameter LOG_EDGES = 20000
) (
    input stop,
    input running,
    input trig_out,
    output reg clk,
    output reg [WIDTH-1:0] in,
    output reg sample_en,
    output reg trig_en
);
  integer log, seed, i, edges;
  reg was_running;
  initial begin
    log = $fopen(LOG, "w");
    seed = SEED;
    clk = 0;
    in = 0;
    sample_en = 0;
    trig_en = 0;
    edges = 0;
    was_running = 0;
  end

  always begin
    #(HALF);
    if (!stop) clk = ~clk;
  end

  // The record holds the values just before the edge; new ones come a picosecond after it.
  always @(posedge clk) begin
    if (running === 1'b1) begin
      if (edges < LOG_EDGES) $fwrite(log, "%b %b %b %b\n", in, sample_en, trig_en, trig_out);
      edges = edges + 1;
    end else begin
      if (was_running) $fwrite(log, "end\n");
      edges = 0;
    end
    was_running = running === 1'b1;
    #1;
    // Between runs and past the record little happens: it only costs time.
    if ((running === 1'b1 && edges < LOG_EDGES) || ($random(seed) & 15) == 0) change;
  end

  task change;
    begin
      for (i = 0; i < WIDTH; i = i + 1) if (($random(seed) & 7) < 3) in[i] = ~in[i];
      sample_en = ($random(seed) & 3) != 0;
      trig_en = ($random(seed) & 3) != 0;
    end
  endtask
endmodule

module bench;
  reg tck, tms, tdi;
  wire tdo;
  reg [7:0] stopped;
  integer script, out, status, n, i, polls, max, core;
  reg [8*8-1:0] op;
  reg [32767:0] bits, more;  // The longest scan.
  reg [47:0] head;
  reg [7:0] mask, value;
  reg last_tdo;

  `include "bench_dut.vh"

  task cycle(input tms_value, input tdi_value);
    begin
      tms = tms_value;
      tdi = tdi_value;
      #(`TCK_HALF);
      last_tdo = tdo;
      tck = 1;
      #(`TCK_HALF);
      tck = 0;
    end
  endtask

  // A DR scan of n bits of `bits`, bit 0 first; what comes back takes their place.
  task scan;
    integer k;
    begin
      cycle(1, 0);
      cycle(0, 0);
      cycle(0, 0);
      for (k = 0; k < n; k = k + 1) begin
        cycle(k == n - 1, bits[k]);
        bits[k] = last_tdo;
      end
      cycle(1, 0);
      cycle(0, 0);
      cycle(0, 0);
      cycle(0, 0);
    end
  endtask

  task report;
    begin
      for (i = 0; i < n; i = i + 1) $fwrite(out, "%b", bits[i]);
      $fwrite(out, "\n");
    end
  endtask

  initial begin
    tck = 0;
    tms = 1;
    tdi = 0;
    stopped = 0;
    script = $fopen("script.txt", "r");
    out = $fopen("out.txt", "w");
    #(20000);
    status = $fscanf(script, " %s", op);
    while (status == 1) begin
      case (op)
        "reset": begin
          for (i = 0; i < 6; i = i + 1) cycle(1, 0);
          cycle(0, 0);
        end
        "ir": begin  // USER, least significant bit first
          status = $fscanf(script, " %b", mask);
          cycle(1, 0); cycle(1, 0); cycle(0, 0); cycle(0, 0);
          for (i = 0; i < 4; i = i + 1) cycle(i == 3, mask[i]);
          cycle(1, 0); cycle(0, 0);
        end
        "w": begin
          status = $fscanf(script, " %d %b", n, bits);
          scan;
        end
        "r": begin
          status = $fscanf(script, " %d", n);
          bits = 0;
          scan;
          report;
        end
        "raw": begin  // TMS and TDI cycle by cycle
          status = $fscanf(script, " %d %b %b", n, more, bits);
          for (i = 0; i < n; i = i + 1) begin
            cycle(more[i], bits[i]);
            bits[i] = last_tdo;
          end
          report;
        end
        "until": begin  // command frame, flags wanted; reports 1 or, after so many looks, 0
          status = $fscanf(script, " %d %b %b %b %d", core, more, mask, value, max);
          polls = 0;
          head = 0;
          while (polls < max && (head[47:40] & mask) !== value) begin
            n = core;
            bits = more;
            scan;
            n = 48;
            bits = 0;
            scan;
            head = bits[47:0];
            polls = polls + 1;
          end
          $fwrite(out, "%b\n", (head[47:40] & mask) === value);
        end
        "wait": begin
          status = $fscanf(script, " %d", n);
          #(n);
        end
        "stop": begin
          status = $fscanf(script, " %d", n);
          stopped[n] = 1;
        end
        "go": begin
          status = $fscanf(script, " %d", n);
          stopped[n] = 0;
        end
        default: $display("unknown operation %s", op);
      endcase
      status = $fscanf(script, " %s", op);
    end
    $fwrite(out, "finished\n");
    $finish;
  end
endmodule
