// Insertion into a design that is hard to instrument: what is made unique, and what stays as the user wrote it.
#include "platform/insert/insertion.h"

#include <QProcess>
#include <QRegularExpression>

#include "bench/core_plans/plan_text.h"
#include "platform/plan/capture_map.h"
#include "tests/unit/read_design.h"

namespace ost {
namespace {

/// Read once for all tests.
const DesignAndNetlist& tricky() {
  static const DesignAndNetlist read(OST_TRICKY);
  return read;
}

QVector<NetBit> bitsOf(const QString& name) {
  NetSelection selection;
  QString error;
  EXPECT_TRUE(tricky().design->resolve(name, selection, error)) << plain(error);
  QVector<NetBit> bits;
  for (int i = 0; i < selection.bits.size(); ++i)
    bits.append({selection.instancePath, selection.net, selection.bits[i], selection.bitNames[i]});
  return bits;
}

/// One core that traces the nets whose names or places need care, and triggers on the first bit.
InsertPlan trickyPlan() {
  InsertPlan plan = planFromText("depth=16 unit=match:0:1 expr=0");
  PlanCore& core = plan.cores[0];
  core.sampleClock = bitsOf("u_store/clk").first();
  for (const char* name :
       {"u_one/u_left/count", "u_two/u_right/ostrel_probe", "u_two/u_right/step", "u_wide/count[6:2]", "u/pad/io",
        "u/pad/seen", "u/pad/through", "u_store/out", "u_div/slow", "slow_count", "odd.name[0]", "ostrel_debug_i",
        "lanes[1].lane", "lanes[0].u_leaf/count[1]", "turned", "turned[2]", "held", "u_corner/pin", "u_corner/zin"}) {
    core.probes.append(PlanProbe{name, {}});
    for (const NetBit& bit : bitsOf(name)) {
      core.probes.last().positions.append(core.probeBits.size());
      core.probeBits.append(bit);
    }
  }
  core.triggerBits = {core.probeBits[0]};
  plan.topModule = tricky().design->topModule();
  plan.projectHash = planHash(plan);
  return plan;
}

/// Inserts into the folder's "out"; a text when that fails.
std::string insertTricky(const InsertPlan& plan, const Scratch& scratch, const InsertionHooks& hooks = {}) {
  InsertionRequest request;
  request.outputDirectory = scratch.path("out");
  QString error;
  if (runInsertion(plan, *tricky().design, tricky().netlist, request, hooks, error)) return std::string();
  return error.isEmpty() ? "failed without a text" : plain(error);
}

TEST(Insertion, MakesUniqueOnlyWhatIsProbedDifferently) {
  Scratch scratch;
  ASSERT_EQ(insertTricky(trickyPlan(), scratch), "");
  const QString verilog = scratch.read("out/tricky_debug.v");
  const auto typeOf = [&](const QString& inModule, const QString& instance) {
    const QRegularExpression cell(
        "\\nmodule " + inModule + " ?\\((?:(?!\\nendmodule).)*\\n  (\\S+) +" + instance + " \\(",
        QRegularExpression::DotMatchesEverythingOption);
    return cell.match(verilog).captured(1);
  };
  // Both pairs are probed, in different instances of theirs: one keeps the name; leaves that nobody probes stay.
  const QString one = typeOf("tricky", "u_one"), two = typeOf("tricky", "u_two");
  EXPECT_TRUE(one != two && (one == "pair" || two == "pair")) << plain(one + ' ' + two);
  EXPECT_TRUE(typeOf(one, "u_left").startsWith("leaf__ostrel"));
  EXPECT_TRUE(typeOf(two, "u_right").startsWith("leaf__ostrel"));
  EXPECT_EQ(typeOf(one, "u_right") + typeOf(two, "u_left") + typeOf("tricky", "u_store"), "leafleafstore");
  // What the user wrote into the source stays in the output.
  EXPECT_TRUE(has(verilog, "ASYNC_REG = \"TRUE\"") && has(verilog, "ram_style = \"block\""));
  // A bench that sets the top's parameters, by name or place, still compiles, and hears of another value.
  EXPECT_TRUE(has(verilog, "STEP = 2;\n  parameter \\MODE = \"a\\\"b\";\n  parameter [31:0] \\TAIL = 1;\n") &&
              has(verilog, "if (\\MODE !== \"a\\\"b\") begin"));
  // The pins avoid the user's ostrel_tck, and the map says so.
  InsertPlan map;
  QString error;
  ASSERT_TRUE(readCaptureMap(scratch.read("out/capture_map.json"), map, error)) << plain(error);
  EXPECT_EQ(map.pins.tdo, "ostrel1_tdo");
}

TEST(Insertion, NetlistDrivesEveryInoutFromTheRightSide) {
  Scratch scratch;
  ASSERT_EQ(insertTricky(trickyPlan(), scratch), "");
  // Read without any pass: a user's own script may do so.
  const QString script =
      "read_json " + scratch.path("out/tricky_debug.json") + "; write_verilog -noattr " + scratch.path("read_back.v");
  ASSERT_EQ(QProcess::execute("yosys", {"-q", "-p", script}), 0);
  const QString verilog = scratch.read("read_back.v");
  EXPECT_EQ(verilog.count("assign seen = + io;"), 2);
  EXPECT_EQ(verilog.count("assign io = seen;"), 0);
}

/// What the bench prints of a source's own simulation.
std::string simulated(const Scratch& scratch, const QByteArray& bench, const QString& words) {
  QProcess run;
  run.setWorkingDirectory(scratch.path(""));
  run.start("sh", {"-c", "iverilog -o run " + words + " \"$1\" && vvp -n run", "sh", scratch.write("bench.v", bench)});
  return run.waitForFinished(60000) && run.exitCode() == 0 ? run.readAllStandardOutput().toStdString()
                                                           : run.readAllStandardError().toStdString();
}

/// The library of a target's cells, as a word of the shell.
QString library(const QString& cells) {
  return cells.isEmpty() ? cells : " $(dirname $(command -v yosys))/../share/yosys/" + cells + "/cells_sim.v";
}

/// The same after an insertion with a strict proof into `file`, a core on the net `probe`.
std::string instrumented(const Scratch& scratch, const QString& file, const QString& cells, const char* probe,
                         const QByteArray& bench) {
  DesignSource source = sourceOf({file});
  source.cells = cells;
  QString error;
  const std::shared_ptr<const Design> design = readDesign(source, error);
  if (!design) return plain(error);
  InsertPlan plan = planFromText("depth=16 unit=match:0:1 expr=0");
  PlanCore& core = plan.cores[0];
  core.sampleClock = {"", "clk", 0, "clk"};
  core.probeBits = core.triggerBits = {{"", probe, 0, probe}};
  core.probes = {{probe, {0}}};
  plan.topModule = design->topModule();
  plan.projectHash = planHash(plan);
  InsertionRequest request;
  request.outputDirectory = scratch.path("out");
  request.proof = ProofMode::Strict;
  if (!runInsertion(plan, *design, nullptr, request, {}, error)) return plain(error);
  return simulated(scratch, bench, "$(sed 's|^|out/|' out/files.f)" + library(cells));
}

/// Both forms show foreign texts as they are, and the commands can be pasted into a shell.
TEST(Insertion, ReportQuotesForeignTexts) {
  Scratch scratch;
  InsertionRequest request;
  request.outputDirectory = scratch.path("it's \"out\"");
  request.findings = QStringList{"DRC-60 WARNING: core c1: \"<b>&%1\" has no driver."};
  QString error;
  ASSERT_TRUE(runInsertion(trickyPlan(), *tricky().design, tricky().netlist, request, {}, error)) << plain(error);
  const QString page = scratch.read("it's \"out\"/report.html"), text = scratch.read("it's \"out\"/report.txt");
  EXPECT_TRUE(has(page, "&quot;&lt;b&gt;&amp;%1&quot; has no driver.") && !page.contains("<b>"));
  EXPECT_TRUE(has(text, "\n        u_left                               C1: 4 bits\n")) << plain(text);
  QString command = QRegularExpression("\n +(\\(cd .* && yosys .*\\))\n").match(text).captured(1);
  command.replace("synth_xilinx", "hierarchy -check");
  ASSERT_FALSE(command.isEmpty());
  EXPECT_EQ(QProcess::execute("sh", {"-c", command + " >/dev/null"}), 0) << plain(command);
}

const char kInOuts[] = R"(
module reader(inout pin, output seen); assign seen = pin; endmodule
module pads(input clk, input d, inout direct, inout drain, inout source, inout shared, inout fought, inout both,
            output seen, output own, output reg back);
  reg held = 1'b1, inner = 1'b0;
  (* init = 1'b1 *) reg strong = 1'b1;
  always @(posedge clk) begin held <= d; inner <= ~d; strong <= ~strong; back <= fought; end
  assign fought = 1'b1 ? strong : 1'bz, own = ~strong, both = ~d, both = d ? inner : 1'bz;
  assign direct = held, drain = d ? 1'bz : 1'b0, source = d ? 1'b1 : 1'bz, shared = d ? 1'bz : inner;
  wire joined = inner;
  reader r(.pin(joined), .seen(seen));
  reader s(.pin(shared), .seen());
  pll #(.PERIOD(-2.5), .NAME("2.5")) p(.in(clk));
endmodule
`ifdef YOSYS
(* blackbox *) module pll #(parameter PERIOD = 1.0, parameter NAME = "") (input in); endmodule
`endif
)";
const char kInOutBench[] = R"(
module pll #(parameter PERIOD = 1.0, parameter NAME = "") (input in);
  initial $write("%0d%0s ", PERIOD * 2, NAME);
endmodule
module bench; reg clk = 0, d = 0; wire direct, drain, source, shared, fought, both, seen, own, back;
  pads dut(.clk(clk), .d(d), .direct(direct), .drain(drain), .source(source), .shared(shared), .fought(fought),
           .both(both), .seen(seen), .own(own), .back(back));
  pullup(shared);
  assign fought = 1'b0;
  initial repeat (4) begin
    #1 $write("%b%b%b%b%b%b%b%b%b ", direct, drain, source, shared, seen, fought, both, own, back);
    clk = 1; #1 clk = 0; d = ~d;
  end
endmodule
)";

TEST(Insertion, KeepsWhatDrivesAnInoutAndRealParameters) {
  Scratch scratch;
  const QString source = scratch.write("pads.v", kInOuts);
  const std::string expected = simulated(scratch, kInOutBench, source);
  EXPECT_TRUE(has(expected.c_str(), "-52.5 10z00x10x 0z1110x1x 10z00x100"));  // x: two fight
  EXPECT_EQ(instrumented(scratch, source, "", "direct", kInOutBench), expected);
}

const char kMapped[] = R"(
module mapped(input clk, input rst, input [7:0] in, output reg [7:0] sum, output reg [3:0] q, output reg [3:0] r,
              output less, output reg [1:0] state);
  wire [3:0] a = in[3:0], b = in[7:4];
  reg [3:0] words [0:15], table_ [0:15];
  integer i;
  initial for (i = 0; i < 16; i = i + 1) begin words[i] = i; table_[i] = 7 * i; end
  assign less = $signed(a) < $signed(b);
  always @(posedge clk) begin
    sum <= rst ? 8'd0 : sum + a * b - {b, 1'b1};
    if (in[0]) words[a] <= b;
    q <= words[b];
    if (in[1]) r <= rst ? 4'd5 : table_[a];
  end
  always @(posedge clk or posedge rst)
    if (rst) state <= 0;
    else case (state)
      0: if (less) state <= 1;
      1: state <= a == b ? 2 : 3;
      default: state <= 0;
    endcase
endmodule
)";
const char kMappedBench[] = R"(
module bench; reg clk = 0, rst = 1; reg [31:0] x = 7; wire [7:0] sum; wire [3:0] q, r; wire less; wire [1:0] state;
  mapped dut(.clk(clk), .rst(rst), .in(x[15:8]), .sum(sum), .q(q), .r(r), .less(less), .state(state));
  initial repeat (300) begin
    #5 clk = 1; #5 clk = 0;
    x = x * 1103515245 + 12345; rst = x[27:24] == 0;
    #5 if ($time > 200) $write("%h%h%h%b%h ", sum, q, r, less, state);
  end
endmodule
)";

TEST(Insertion, TakesWhatASynthesisMade) {
  Scratch scratch;
  const QString source = scratch.write("mapped.v", kMapped);
  const std::string expected = simulated(scratch, kMappedBench, source);
  const struct {
    const char *script, *cells;
  } flows[] = {
      {"prep", ""},
      {"proc; opt; memory -nomap; wreduce; alumacc; opt", ""},
      {"proc; opt; memory_collect; alumacc; maccmap; opt; techmap -map +/techmap.v t:$alu; opt_clean", ""},
      {"synth -run begin:fine; memory_map; techmap; abc -sop; opt_clean", ""},
      {"synth; muxcover -mux4 -mux8", ""},
      {"synth_xilinx", "xilinx"},
  };
  for (const auto& flow : flows) {
    const QString script = "read_verilog " + source + "; hierarchy -top mapped; " + flow.script +
                           "; write_json mapped.json; write_verilog -noattr written.v";
    QProcess yosys;
    yosys.setWorkingDirectory(scratch.path(""));
    yosys.start("yosys", {"-q", "-p", script});
    ASSERT_TRUE(yosys.waitForFinished(120000) && yosys.exitCode() == 0) << yosys.readAllStandardError().data();
    // The models of cells are not always right, and are the same on both sides then.
    const std::string own =
        *flow.cells ? simulated(scratch, kMappedBench, "written.v" + library(flow.cells)) : expected;
    for (const char* file : {"mapped.json", "written.v"}) {
      SCOPED_TRACE(std::string(flow.script) + " as " + file);
      EXPECT_EQ(instrumented(scratch, scratch.path(file), flow.cells, "state", kMappedBench), own);
    }
  }
}

TEST(Insertion, ThatFailsLeavesTheOldResult) {
  Scratch scratch;
  ASSERT_EQ(insertTricky(trickyPlan(), scratch), "");
  const QByteArray before = scratch.read("out/capture_map.json");
  InsertPlan taken = trickyPlan();
  taken.cores[0].triggerOutIo = true;
  taken.cores[0].triggerOutName = "slow";
  const struct {
    InsertPlan plan;
    int idleCalls;
    const char* text;
  } table[] = {{trickyPlan(), 0, "cancelled"}, {trickyPlan(), 2, "ancelled"}, {taken, 1 << 30, "\"slow\""}};
  for (const auto& row : table) {
    InsertionHooks hooks;
    int left = row.idleCalls;
    hooks.idle = [&left] { return left-- > 0; };
    EXPECT_TRUE(has(insertTricky(row.plan, scratch, hooks).c_str(), row.text));
    EXPECT_EQ(scratch.entries(), QStringList("out"));
    EXPECT_EQ(scratch.read("out/capture_map.json"), before);
  }
}

}  // namespace
}  // namespace ost
