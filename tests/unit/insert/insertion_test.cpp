// Insertion into a design that is hard to instrument: what is made unique, what stays as the user wrote it, and the
// proof, which accepts what is written and refuses every tampered edition of it.
#include "platform/insert/insertion.h"

#include <QCoreApplication>
#include <QProcess>
#include <QRegularExpression>

#include "bench/core_plans/plan_text.h"
#include "platform/proof/proof.h"
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
  // A bench that sets the top's parameters still compiles, and hears of another value.
  EXPECT_TRUE(has(verilog, "parameter [31:0] STEP = 32'd2;\n") && has(verilog, "if (MODE !== \"a\\\"b\") begin"));
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

TEST(Proof, HoldsForTheWrittenDesignAndFailsForTamperedOnes) {
  int none = 0;
  const QCoreApplication application(none, nullptr);  // frees what Qt keeps for the patterns below
  Scratch scratch;
  InsertPlan plan = trickyPlan();
  ASSERT_EQ(insertTricky(plan, scratch), "");
  plan.pins = {"ostrel1_tck", "ostrel1_tms", "ostrel1_tdi", "ostrel1_tdo"};
  const QString original = scratch.read("out/tricky_debug.v");
  ProofReport report;
  const auto prove = [&](const QString& verilog) {
    ProofFiles files;
    files.instrumented = scratch.write("tampered.v", verilog.toLatin1());
    files.debugModule = scratch.path("out/ostrel_debug.v");
    QString error;
    return proveUnchanged(plan, *tricky().design, tricky().netlist, files, {}, report, error) ? QString("holds")
                                                                                              : error;
  };
  ASSERT_EQ(plain(prove(original)), "holds");
  EXPECT_EQ(report.probesChecked, plan.cores[0].probeWidth() + 2);  // the clock and the trigger's bit too
  EXPECT_GE(report.modulesProved, 9);
  EXPECT_EQ(report.lines.size(), 2);

  const struct {
    const char* pattern;
    const char* replacement;  // \1 ... from the pattern
    const char* complaint;
  } tampers[] = {
      {"(module leaf__ostrel.*?= value) \\+ ", "\\1 - ", "module leaf__ostrel"},
      {"(module leaf\\(.*?)value\\[1\\];", "\\1value[2];", "module leaf: the next value"},  // one that nobody probes
      {"(module divider.*?)posedge", "\\1negedge", "the clock of the register"},
      {"slow_count = 2'h2", "slow_count = 2'h1", "initial value"},
      {"posedge slow\\)", "posedge clk)", "the clock of"},
      {"posedge rst", "negedge rst", "module tricky: the next value"},
      {"~ slow;", "slow;", "module divider: the next value"},
      {"words\\[3\\] = 16'h3", "words[3] = 16'h2", "other contents"},
      {"(module pair.*?)endmodule", "\\1assign left = step[0] ? 4'h0 : 4'hz;\nendmodule", "module pair"},
      {"(module bare_pad.*?)endmodule", "\\1assign io = seen ? 1'b0 : 1'bz;\nendmodule", "module bare_pad"},
      {"(module store.*?)reg \\[15:0\\] words \\[.*?(assign ostrel_probe[^;]*;).*?endmodule",
       "\\1always @(posedge clk) out <= in;\n\\2\nendmodule", "module store"},
      {"ram\\[x\\[1:0\\]\\];", "ram[x[2:1]];", "module corner"},
      // What a memory is written with, and where: another bit, and an unknown one in place of the original's.
      {"(module corner.*?)ram\\[(_\\d+_)\\] <= (_\\d+_);", "\\1ram[x[3:2]] <= \\3;", "module corner"},
      {"(module corner.*?)ram\\[(_\\d+_)\\] <= (_\\d+_);", "\\1ram[\\2 ^ 2'bx0] <= \\3;", "module corner"},
      {"(module corner.*?)ram\\[(_\\d+_)\\] <= (_\\d+_);", "\\1ram[\\2] <= x[4] ? 2'h1 : 2'hx;", "module corner"},
      {"(\\.address\\(stimulus)\\[5:2\\]", "\\1[6:3]", "module tricky"},
      {"(\\.c0_probe\\(\\{ )(.*?), (.*?),", "\\1\\3, \\2,", "looks at another net"},
      {"= \\{ value\\[0\\], value\\[1\\]", "= { value[1], value[0]", "looks at another net"},
  };
  for (const auto& tamper : tampers) {
    SCOPED_TRACE(std::string(tamper.pattern) + " by " + tamper.replacement);
    const QRegularExpression pattern(tamper.pattern, QRegularExpression::DotMatchesEverythingOption);
    const QRegularExpressionMatch match = pattern.match(original);
    QString text = tamper.replacement;
    for (int group = 1; group <= match.lastCapturedIndex(); ++group)
      text.replace(QString("\\%1").arg(group), match.captured(group));
    QString tampered = original;
    tampered.replace(match.capturedStart(), match.capturedLength(), text);
    ASSERT_TRUE(match.hasMatch() && tampered != original);
    EXPECT_TRUE(has(prove(tampered), tamper.complaint));
  }
}

}  // namespace
}  // namespace ost
