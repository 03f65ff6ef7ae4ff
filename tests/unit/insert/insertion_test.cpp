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
module pads(input clk, input d, inout direct, inout drain, inout source, inout shared, output seen);
  reg held = 1'b1, inner = 1'b0;
  always @(posedge clk) begin held <= d; inner <= ~d; end
  assign direct = held, drain = d ? 1'bz : 1'b0, source = d ? 1'b1 : 1'bz, shared = d ? 1'bz : inner;
  wire joined = inner;
  reader r(.pin(joined), .seen(seen));
  reader s(.pin(shared), .seen());
  pll #(.PERIOD(-2.5), .NAME("2.5")) p(.in(clk));
endmodule
(* blackbox *) module pll #(parameter PERIOD = 1.0, parameter NAME = "") (input in); endmodule
)";
const char kInOutBench[] = R"(
module pll #(parameter PERIOD = 1.0, parameter NAME = "") (input in);
  initial $write("%0d%0s ", PERIOD * 2, NAME);
endmodule
module bench; reg clk = 0, d = 0; wire direct, drain, source, shared, seen;
  pads dut(.clk(clk), .d(d), .direct(direct), .drain(drain), .source(source), .shared(shared), .seen(seen));
  pullup(shared);
  initial repeat (3) begin #1 $write("%b%b%b%b%b ", direct, drain, source, shared, seen); clk = 1; #1 clk = 0; d = ~d; end
endmodule
)";

TEST(Insertion, KeepsWhatDrivesAnInoutAndRealParameters) {
  Scratch scratch;
  const DesignAndNetlist pads(scratch.write("pads.v", kInOuts));
  InsertPlan plan = planFromText("depth=16 unit=match:0:1 expr=0");
  PlanCore& core = plan.cores[0];
  core.sampleClock = {"", "clk", 0, "clk"};
  core.probeBits = core.triggerBits = {{"", "direct", 0, "direct"}};
  core.probes = {{"direct", {0}}};
  plan.topModule = "pads";
  plan.projectHash = planHash(plan);
  InsertionRequest request;
  request.outputDirectory = scratch.path("out");
  QString error;
  ASSERT_TRUE(runInsertion(plan, *pads.design, pads.netlist, request, {}, error)) << plain(error);
  QProcess run;
  run.setWorkingDirectory(scratch.path("out"));
  const QString bench = scratch.write("bench.v", kInOutBench);
  run.start("sh", {"-c", "iverilog -o ../run -f files.f \"$1\" && vvp -n ../run", "sh", bench});
  ASSERT_TRUE(run.waitForFinished(60000));
  EXPECT_EQ(run.readAllStandardOutput().trimmed(), "-52.5 10z00 0z111 10z00") << run.readAllStandardError().data();
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
