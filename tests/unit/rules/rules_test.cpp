// Small projects against one small design, each with the exact rules that it breaks; the report; and the table in the
// documentation against the table in the code.
#include <QRegularExpression>
#include <functional>
#include <map>
#include <set>

#include "platform/istdata/trace_tree.h"
#include "platform/rules/core_check.h"
#include "platform/trigger/unit_value.h"
#include "tests/unit/read_design.h"

namespace ost {
namespace {

using Project = mero::ostrel::istProject;

const char kDesign[] = R"(
module bit_reg(input clk, input d, output reg q);
  always @(posedge clk) q <= d;
endmodule
module inner(input ck, input d, output q);
  bit_reg u_reg(.clk(ck), .d(d), .q(q));
endmodule
module pad(inout io, output seen, input [1:0] through);
  assign seen = io;
endmodule
module top(input clk, input clk2, input [3:0] din, output reg [3:0] count, output slow, output deep, output [15:0] wide);
  wire floating;
  wire [3:0] half;
  assign half[1:0] = din[1:0];
  wire [1:0] fixed = 2'b01;
  wire renamed_clk = clk;
  reg [15:0] shift;
  assign wide = shift ^ {12'd0, half} ^ {14'd0, fixed} ^ {15'd0, floating};
  wire mixed = slow & count[0];
  reg [7:0] cells [0:3], cell;
  reg cleared;
  pad u_pad(.io(deep), .seen(), .through({slow, count[0]}));
  wire clear = din[3];
  always @(posedge slow or posedge clear)
    if (clear) cleared <= 1'b0;
    else cleared <= !cleared;
  always @(posedge clk) begin
    count <= count + 4'd1;
    shift <= {shift[14:0], mixed};
    if (din[0]) cells[din[2:1]] <= wide[7:0];
    cell <= cells[count[1:0]];
  end
  inner u_slow(.ck(clk2), .d(din[0]), .q(slow));
  inner u_deep(.ck(renamed_clk), .d(din[1]), .q(deep));
endmodule
)";

QByteArray replaced(QByteArray text, const char* from, const char* to) {
  return text.replace(from, to);
}

/// Read once for all tests.
const DesignAndNetlist& board() {
  static const DesignAndNetlist read(Scratch().write("top.v", kDesign));
  return read;
}

/// Blocks for the serdes core, each with its faults.
const char kBlocks[] = R"(
(* ostrel_role = "dcu" *)
module phy(input clk, (* ostrel_watch = "lock" *) input lock, (* ostrel_watch = "clock" *) input [1:0] rx);
  reg seen;
  always @(posedge clk) seen <= lock;
endmodule
(* ostrel_role = "dcu" *) module bare(input clk); wire quiet = clk; endmodule
(* ostrel_role = "dcu, j2w" *)
module odd(input clk, (* ostrel_watch = "in lock" *) input lock, (* ostrel_watch *) input [253:0] many);
  (* ostrel_watch = "los" *) wire floating;
endmodule
module one(input clk, input rst, input lock, input [1:0] rx);
  wire low = 1'b0;
  phy u_phy(.clk(clk), .lock(lock), .rx(rx));
endmodule
module two(input clk, input lock, input [1:0] rx);
  phy a(.clk(clk), .lock(lock), .rx(rx));
  bare b(.clk(clk));
endmodule
module worst(input clk, input lock, input [253:0] many);
  odd u_odd(.clk(clk), .lock(lock), .many(many));
endmodule
)";

/// The findings with the rules that need drivers.
QList<Finding> findingsOf(const Project& project) {
  return checkDesignRules(project, *board().design, board().netlist.get()).findings;
}

void trace(Core& core, TraceNode* bus, const QString& names) {
  QString error;
  for (const QString& name : names.split(' ', Qt::SkipEmptyParts))
    ASSERT_TRUE(core.trace->appendSignal(bus, name, error)) << plain(error);
}

void addExpression(Core& core, const QString& name) {
  core.dataset.addExpression({name, "TU1", {"TU1"}, ExpressionRam::Slices, 1, 1});
}

/// A core without findings: a counter traced by its clock, one unit, one expression.
Core& addGoodCore(Project& project, const QString& name) {
  project.cores.push_back(std::make_unique<Core>(name));
  Core& core = *project.cores.back();
  core.options.sampleClock = "clk";
  trace(core, nullptr, "count[3] count[2] count[1] count[0] wide[7] wide[8] wide[9] wide[10] wide[11] wide[12]");
  core.dataset.addUnit({"TU1", {"count"}, Operator::Equal, Radix::Hex, "a"});
  addExpression(core, "TE1");
  return core;
}

/// Makes one change of a row of the table below.
void change(Project& project, const QString& word, const QString& value) {
  Core& core = *project.cores.back();
  CoreOptions& o = core.options;
  TriggerUnit& unit = core.dataset.findUnit("TU1")->unit;
  TriggerExpression& expression = *core.dataset.findExpression("TE1");
  QString error;
  const auto times = [&value](const auto& body) {
    for (int i = value.toInt(); i > 0; --i) body(i);
  };
  const std::map<QString, std::function<void()>> changes = {
      {"core", [&] { addGoodCore(project, value); }},
      {"cores", [&] { times([&](int i) { addGoodCore(project, QString("c_%1").arg(i)); }); }},
      {"no_core", [&] { project.cores.clear(); }},
      {"wishbone",
       [&] {
         project.wishbone.reset(new mero::ostrel::istWishboneMaster);
         project.wishboneConnected = value == "connected";
       }},
      {"serdes", [&] { project.serdes.reset(new mero::ostrel::istSerdesCore); }},
      {"off", [&] { core.enabled = false; }},
      {"clock", [&] { o.sampleClock = value; }},
      {"enable", [&] { o.sampleEnable = true; }},
      {"enable_signal", [&] { o.sampleEnableSignal = value; }},
      {"look", [&] { o.triggerEnable = true; }},
      {"look_signal", [&] { o.triggerEnableSignal = value; }},
      {"depth", [&] { o.bufferDepth = value.toInt(); }},
      {"dram", [&] { o.implementation = Implementation::DistributedRam; }},
      {"no_dram", [&] { o.distRamDisabled = true; }},
      {"stamp", [&] { o.timestamp = (o.timestampBits = value.toInt()) > 0; }},
      {"windows", [&] { o.captureMode = CaptureMode((o.triggerCount = value.toInt()) > 0); }},
      {"samples", [&] { core.samplesPerTrigger = value.toInt(); }},
      {"out", [&] { o.triggerOut = !(o.triggerOutName = value).isNull(); }},
      {"out_type", [&] { o.triggerOutType = TriggerOutType(value.toInt()); }},
      {"no_trace", [&] { core.trace.reset(new TraceTree); }},
      {"trace", [&] { trace(core, nullptr, value); }},
      {"traces", [&] { times([&](int i) { core.trace->appendSignal(nullptr, QString("n%1").arg(i), error); }); }},
      {"bus", [&] { trace(core, core.trace->appendBus(nullptr, "BUS1", error), value); }},
      {"signals", [&] { unit.signalNames = value.split(' ', Qt::SkipEmptyParts); }},
      {"value", [&] { unit.value = value; }},
      {"operator", [&] { operatorFromText(value, unit.op); }},
      {"expression", [&] { expression.text = value; }},
      {"no_expression", [&] { core.dataset.removeExpression(&expression); }},
      {"expressions", [&] { times([&](int i) { addExpression(core, QString("E%1").arg(i)); }); }},
      {"steps", [&] { expression.maxSequenceDepth = value.toInt(); }},
      {"count", [&] { expression.maxEventCount = value.toInt(); }}};
  ASSERT_TRUE(changes.count(word)) << plain(word);
  changes.at(word)();
}

std::multiset<int> numbersOf(const QList<Finding>& findings) {
  std::multiset<int> numbers;
  for (const Finding& finding : findings) numbers.insert(finding.number);
  return numbers;
}

const struct {
  const char* changes;  ///< Of a good core; "core" adds one, which those behind it change.
  std::multiset<int> rules;
} kProjects[] = {
    {"", {}},
    {"no_core", {1}},
    {"off", {1}},
    {"clock=; off; core=c2", {}},  // faults of a core that is not enabled do not count
    {"serdes", {80, 85}},
    {"wishbone", {}},
    {"wishbone; no_core", {}},
    {"wishbone; off", {1}},
    {"wishbone; cores=255", {4}},
    {"wishbone=connected", {70}},
    {"cores=255", {}},
    {"cores=256", {4}},
    {"clock=", {10}},
    {"clock=clock", {11}},
    {"clock=count", {12}},
    {"clock=din[0]", {62, 62, 63}},  // one bit of a vector as clock
    {"no_trace", {13}},
    {"no_trace; bus=", {13}},
    {"trace=u_deep/gone din; bus=count[9] count[8]", {14, 14, 14}},  // din has become a vector
    {"enable; look", {15, 15}},
    {"enable_signal=nowhere", {}},
    {"enable; enable_signal=nowhere; look; look_signal=din[2:1]", {16, 17}},
    {"stamp=10; windows=8; samples=256", {18, 18}},
    {"traces=1048567", {19}},  // and the good core's ten
    {"signals=; value=", {20, 21}},
    {"signals=count a b", {22, 22}},
    {"value=1a", {23}},
    {"operator=.SC.", {23}},
    {"no_expression", {30}},
    {"expression=TU1 &", {31}},
    {"expression=TU1 & x | y", {32}},
    {"expression=TU1 -> TU1 * 3", {33, 34}},
    {"expression=TU1 -> TU1 * 4; steps=2; count=4", {}},
    {"expression=a|b|c|d|e|f|g|h|i|j|k|l|m", {35}},
    {"expressions=255", {}},
    {"expressions=256", {36}},
    {"out=", {40}},
    {"out=floating; core=c2; out=u_deep", {41, 41}},
    {"out=alarm; core=c2; out=alarm", {42}},
    {"out=a; out_type=2; core=c2; out=a_net", {42}},
    {"depth=256", {50}},
    {"depth=256; dram", {}},
    {"depth=4096; windows=2; samples=1024", {51}},
    {"depth=65536; stamp=63; dram; core=c2; depth=65536; stamp=63", {52, 53}},
    {"dram; no_dram", {54}},
    {"trace=half[3] half[2] half[1] fixed[0]; signals=floating din[2:0]; enable; enable_signal=fixed[1]",
     {60, 61, 61, 62, 62, 66}},
    {"trace=u_slow/u_reg/q mixed", {62}},
    {"trace=u_pad/through[1]", {62}},
    {"clock=u_deep/u_reg/clk; trace=u_deep/q", {}},  // the same clock under another name
    {"trace=cell[0] u_pad/seen", {}},                // a memory, and a register behind an inout
    {"clock=slow; trace=cleared", {62, 62}},         // a clock that is a register below, and an asynchronous reset
    {"clock=u_slow/q; no_trace; trace=cleared; dram; signals=deep; value=1", {62}},
    {"clock=clk2", {62, 62, 63}},
    {"clock=fixed[0]", {64}},
    {"trace=renamed_clk", {65}},
};

TEST(DesignRules, EachProjectBreaksExactlyItsRules) {
  std::set<int> seen;
  const struct {
    const char *top, *clock, *reset;
    std::multiset<int> rules;
  } serdes[] = {{"one", "clk", "VLO", {}},
                {"one", "u_phy/rx[1]", "rst", {}},
                {"one", "clc", "rts", {86, 87}},
                {"one", "u_phy/rx", "rx", {86, 87}},
                {"one", "low", "VLO", {88}},
                {"two", "clk", "VLO", {81, 82}},
                {"worst", "clk", "VLO", {83, 84, 89, 90}}};
  const Scratch folder;
  const QString blocks = folder.write("blocks.v", kBlocks);
  for (const auto& row : serdes) {
    Project project;
    project.serdes.reset(new mero::ostrel::istSerdesCore{row.clock, row.reset});
    const DesignAndNetlist read(blocks, row.top);
    const DesignCheck check = checkDesignRules(project, *read.design, read.netlist.get());
    EXPECT_EQ(numbersOf(check.findings), row.rules) << plain(designRuleReport(check.findings));
    EXPECT_EQ(check.plan != nullptr, !hasErrors(check.findings));
    for (const Finding& finding : check.findings) seen.insert(finding.number);
  }
  for (const auto& row : kProjects) {
    SCOPED_TRACE(row.changes);
    Project project;
    addGoodCore(project, "c1");
    for (const QString& text : QString(row.changes).split("; ", Qt::SkipEmptyParts))
      change(project, text.section('=', 0, 0), text.section('=', 1));
    const QList<Finding> findings = findingsOf(project);
    EXPECT_EQ(numbersOf(findings), row.rules) << plain(designRuleReport(findings));
    bool anyError = false;
    for (const Finding& finding : findings) {
      seen.insert(finding.number);
      anyError |= finding.severity == Finding::Error;
      EXPECT_FALSE(finding.wayOut.contains("<core>")) << plain(finding.wayOut);
    }
    EXPECT_EQ(hasErrors(findings), anyError);
  }
  InsertPlan large;  // what no test design is large enough for
  large.cores.resize(2);
  large.cores[0].probeBits.resize(1 << 18);
  large.cores[1].probeBits.resize((1 << 20) - (1 << 18));
  large.cores[1].depth = 256;
  FindingList limits;
  checkPlan(large, limits);
  EXPECT_TRUE(limits.findings().isEmpty());
  large.cores[0].probes.append({"again", QVector<int>((1 << 22) + 1)});
  large.cores[0].depth = 64;
  large.cores[1].triggerBits.resize(1);
  large.cores[1].timestampBits = 300000;
  checkPlan(large, limits);
  EXPECT_EQ(numbersOf(limits.findings()), (std::multiset<int>{5, 5, 55, 55}));
  seen.insert({5, 55, 71, 72, 73});  // The last ones: WishboneSlave.
  for (const RuleRow& row : ruleTable()) EXPECT_TRUE(seen.count(int(row.rule))) << "no row for rule " << int(row.rule);
}

TEST(DesignRules, RulesThatNeedDriversAreLeftOutWithoutNetlist) {
  Project project;
  trace(addGoodCore(project, "c1"), nullptr, "floating");
  EXPECT_TRUE(checkDesignRules(project, *board().design, nullptr).plan);
  EXPECT_EQ(numbersOf(findingsOf(project)), std::multiset<int>({60}));
}

TEST(DesignRules, ReportNamesObjectAndWayOutErrorsFirst) {
  Project project;
  trace(addGoodCore(project, "c1"), nullptr, "u_slow/u_reg/q u_slow/u_reg/cllk");
  change(project, "expression", "TU1 -> TU1 -> TU1 -> TU1");
  QString report = designRuleReport(findingsOf(project));
  EXPECT_TRUE(has(report, " (did you mean u_slow/u_reg/clk"));
  report.remove(QRegularExpression(" \\(did you mean [^?]*\\?\\)"));
  EXPECT_EQ(plain(report),
            "DRC-14 error: core c1: traced signal \"u_slow/u_reg/cllk\" is not in the design "
            "(ost_trace del_sig -core c1 {u_slow/u_reg/cllk}, then ost_trace add_sig with its new name)\n"
            "DRC-33 error: core c1, expression TE1: it has 4 steps, its max_seq_depth is 1 "
            "(ost_te set -core c1 -max_seq_depth 4 TE1)\n"
            "DRC-62 warning: core c1: \"u_slow/u_reg/q\" is clocked by \"clk2\", not by the sample clock "
            "(ost_core add <name> for a core of its own with SampleClk=clk2, or observe a register that takes the net "
            "in)\n"
            "Design rules: 2 errors, 1 warning.\n");
}

TEST(DesignRuleReport, CountsTheFindingsOfARuleAfterTheTwentieth) {
  QList<Finding> findings;
  for (int i = 0; i < 23; ++i) findings.append({14, Finding::Error, "core c1", "gone", "look"});
  findings.append({62, Finding::Warning, "core c1", "other clock", "look"});
  const QString report = designRuleReport(findings);
  EXPECT_EQ(report.count("DRC-14 error: core c1: gone (look)\n"), 20);
  EXPECT_TRUE(has(report, "DRC-14 error: 3 more of this rule\nDRC-62"));
  EXPECT_TRUE(has(report, "Design rules: 23 errors, 1 warning.\n"));
}

TEST(WishboneSlave, IsFoundByItsMarksAndPorts) {
  const QByteArray ports =
      "input clk, input wb_cyc_i, wb_stb_i, wb_we_i, input [5:2] wb_adr_i, input [31:0] wb_dat_i, output [31:0] "
      "wb_dat_o, "
      "output wb_ack_o";
  const QByteArray mark = "(* ostrel_wishbone = \"slave\" *) ", role = "(* ostrel_role = \"dcu, jtag2wb\" *) ";
  const QByteArray one = "s u1(.clk(clk));", two = one + " s u2(.clk(clk));";
  const struct {
    QByteArray role, ports, instances;
    int rule;          ///< 0: none.
    const char* text;  ///< Of the fault, or the instance's name with the bits of the address.
  } table[] = {
      {"", ports, one, 70, "no instance in the top"},
      {role, ports, one, 0, "u1:6"},
      {role, ports, two, 71, "\"u1\" and \"u2\""},
      {role, ports, one + mark + "s u2(.clk(clk));", 0, "u2:6"},
      {role, replaced(ports, "[5:2]", "[7:0]"), one, 0, "u1:8"},
      {"", replaced(ports, "[5:2]", "[3:0]"), "(* ostrel_wishbone = \"slave, words\" *) " + one, 0, "u1:6"},
      {role, replaced(ports, "[5:2]", "[8:3]"), one, 72, "must begin with bit 0 or 2"},
      {role, replaced(ports, "wb_ack_o", "wb_ack"), one, 72, "lacks the port \"wb_ack_o\""},
      {role, replaced(ports, "input [31:0]", "input [15:0]"), one, 72, "has 16 bits, 32 are wanted"},
      {role, replaced(ports, "output wb_ack_o", "input wb_ack_o"), one, 72, "is no output"},
      {role, ports + ", output wb_stall_o", one, 72, "pipelined"},
      {role, ports + ", input b_cyc_i", one, 72, "several slave ports"},
      {role, "input clk", one, 72, "no port whose name ends"},
      {role, replaced(ports, "clk", "tick"), "s u1(.tick(clk));", 73, "has no clock"},
      {role, replaced(ports, "input clk", "(* ostrel_wishbone = \"clock\" *) input tick"), "s u1(.tick(clk));", 0,
       "u1:6"},
      {role, ports, "s u1(.clk(1'b0));", 73, "is constant or has no driver"},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.text);
    const QByteArray text =
        row.role + "module s(" + row.ports + "); endmodule\nmodule top(input clk);\n" + row.instances + "\nendmodule\n";
    const DesignAndNetlist read(Scratch().write("top.v", text));
    Project project;
    project.wishbone.reset(new mero::ostrel::istWishboneMaster);
    project.wishboneConnected = true;
    const DesignCheck check = checkDesignRules(project, *read.design, read.netlist.get());
    EXPECT_EQ(numbersOf(check.findings), row.rule ? std::multiset<int>({row.rule}) : std::multiset<int>());
    const QString found =
        check.plan ? check.plan->wishbone->instance + ':' + QString::number(check.plan->wishbone->addressBits)
                   : check.findings.value(0).text;
    EXPECT_TRUE(has(found, row.text)) << plain(found);
  }
}

}  // namespace
}  // namespace ost
