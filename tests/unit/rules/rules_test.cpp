// Small projects against one small design, each with the exact rules that it breaks; the report; and the table in the
// documentation against the table in the code.
#include <gtest/gtest.h>

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <algorithm>
#include <set>

#include "platform/istdata/trace_tree.h"
#include "platform/istdata/trigger_expression.h"
#include "platform/rules/rule_table.h"

namespace ost {
namespace {

QString text(const char* bytes) {
  return QString::fromUtf8(bytes);
}

const char kDesign[] = R"(
module bit_reg(input clk, input d, output reg q);
  always @(posedge clk) q <= d;
endmodule
module inner(input ck, input d, output q);
  bit_reg u_reg(.clk(ck), .d(d), .q(q));
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
  always @(posedge clk) begin
    count <= count + 4'd1;
    shift <= {shift[14:0], mixed};
  end
  inner u_slow(.ck(clk2), .d(din[0]), .q(slow));
  inner u_deep(.ck(renamed_clk), .d(din[1]), .q(deep));
endmodule
)";

/// The design and its netlist, read once.
class RulesTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    static QTemporaryDir folder;
    const QString file = folder.filePath(text("top.v"));
    QFile source(file);
    ASSERT_TRUE(source.open(QIODevice::WriteOnly));
    source.write(kDesign);
    source.close();
    DesignSource what;
    what.files << QString::fromLatin1(QFile::encodeName(file));
    what.top = text("top");
    QString error;
    design = Design::read(what, error);
    ASSERT_TRUE(design) << error.toStdString();
    netlist = Netlist::load(*design, error);
    ASSERT_TRUE(netlist) << error.toStdString();
  }
  static void TearDownTestSuite() {
    netlist.reset();
    design.reset();
  }

  static std::shared_ptr<const Design> design;
  static std::shared_ptr<const Netlist> netlist;
};
std::shared_ptr<const Design> RulesTest::design;
std::shared_ptr<const Netlist> RulesTest::netlist;

void trace(Core& core, const char* name) {
  QString error;
  ASSERT_TRUE(core.trace->appendSignal(nullptr, text(name), error)) << error.toStdString();
}

/// A core without findings: a counter traced by its clock, one unit, one expression.
Core& addGoodCore(mero::ostrel::istProject& project, const char* name) {
  project.cores.push_back(std::make_unique<Core>(text(name)));
  Core& core = *project.cores.back();
  core.options.sampleClock = text("clk");
  for (const char* bit : {"count[3]", "count[2]", "count[1]", "count[0]", "wide[7]", "wide[8]", "wide[9]", "wide[10]",
                          "wide[11]", "wide[12]"})
    trace(core, bit);
  TriggerUnit unit;
  unit.name = text("TU1");
  unit.signalNames << text("count");
  unit.radix = Radix::Hex;
  unit.value = text("a");
  core.dataset.addUnit(unit);
  TriggerExpression expression;
  expression.name = text("TE1");
  expression.text = text("TU1");
  core.dataset.addExpression(expression);
  return core;
}

std::multiset<int> numbersOf(const QList<Finding>& findings) {
  std::multiset<int> numbers;
  for (const Finding& finding : findings) numbers.insert(finding.number);
  return numbers;
}

struct Case {
  const char* name;
  std::function<void(mero::ostrel::istProject&, Core&)> change;
  std::multiset<int> rules;
};

using Project = mero::ostrel::istProject;

const std::vector<Case>& cases() {
  static const std::vector<Case> table = {
      {"good", [](Project&, Core&) {}, {}},
      {"no core", [](Project& p, Core&) { p.cores.clear(); }, {1}},
      {"none enabled", [](Project&, Core& c) { c.enabled = false; }, {1}},
      {"faults of a core that is not enabled do not count",
       [](Project& p, Core& c) {
         addGoodCore(p, "c2");
         c.options.sampleClock.clear();
         c.enabled = false;
       },
       {}},
      {"optional cores",
       [](Project& p, Core&) {
         p.wishbone = std::make_unique<mero::ostrel::istWishboneMaster>();
         p.serdes = std::make_unique<mero::ostrel::istSerdesCore>();
       },
       {2, 3}},
      {"no clock", [](Project&, Core& c) { c.options.sampleClock.clear(); }, {10}},
      {"unknown clock", [](Project&, Core& c) { c.options.sampleClock = text("clock"); }, {11}},
      {"wide clock", [](Project&, Core& c) { c.options.sampleClock = text("count"); }, {12}},
      {"one bit of a vector as clock", [](Project&, Core& c) { c.options.sampleClock = text("din[0]"); }, {62, 62, 63}},
      {"nothing traced", [](Project&, Core& c) { c.trace = std::make_unique<TraceTree>(); }, {13}},
      {"only buses that are empty",
       [](Project&, Core& c) {
         QString error;
         c.trace = std::make_unique<TraceTree>();
         c.trace->appendBus(nullptr, text("BUS1"), error);
       },
       {13}},
      {"traced signals vanished, one of them inside a bus, and one that has become a vector",
       [](Project&, Core& c) {
         QString error;
         trace(c, "u_deep/gone");
         TraceNode* bus = c.trace->appendBus(nullptr, text("BUS1"), error);
         c.trace->appendSignal(bus, text("count[9]"), error);
         trace(c, "din");
       },
       {14, 14, 14}},
      {"enables without signals",
       [](Project&, Core& c) { c.options.sampleEnable = c.options.triggerEnable = true; },
       {15, 15}},
      {"an enable that is off needs no signal",
       [](Project&, Core& c) { c.options.sampleEnableSignal = text("nowhere"); },
       {}},
      {"enable signals unknown and wide",
       [](Project&, Core& c) {
         c.options.sampleEnable = c.options.triggerEnable = true;
         c.options.sampleEnableSignal = text("nowhere");
         c.options.triggerEnableSignal = text("din[2:1]");
       },
       {16, 17}},
      {"numbers that do not fit the depth",
       [](Project&, Core& c) {
         c.options.timestamp = true;
         c.options.timestampBits = 10;
         c.options.captureMode = 1;
         c.samplesPerTrigger = 256;
         c.options.triggerCount = 8;
       },
       {18, 18}},
      {"unit without signals and value",
       [](Project&, Core& c) {
         c.dataset.findUnit(text("TU1"))->unit.signalNames.clear();
         c.dataset.findUnit(text("TU1"))->unit.value.clear();
       },
       {20, 21}},
      {"unit's signals vanished",
       [](Project&, Core& c) { c.dataset.findUnit(text("TU1"))->unit.signalNames << text("a") << text("b"); },
       {22, 22}},
      {"value too wide", [](Project&, Core& c) { c.dataset.findUnit(text("TU1"))->unit.value = text("1a"); }, {23}},
      {"serial compare of four bits",
       [](Project&, Core& c) { c.dataset.findUnit(text("TU1"))->unit.op = Operator::SerialCompare; },
       {23}},
      {"no expression",
       [](Project&, Core& c) { c.dataset.removeExpression(c.dataset.findExpression(text("TE1"))); },
       {30}},
      {"expression that breaks off",
       [](Project&, Core& c) { c.dataset.findExpression(text("TE1"))->text = text("TU1 &"); },
       {31}},
      {"expression of unknown units, two in one finding",
       [](Project&, Core& c) { c.dataset.findExpression(text("TE1"))->text = text("TU1 & x | y"); },
       {32}},
      {"deep expression that counts far",
       [](Project&, Core& c) { c.dataset.findExpression(text("TE1"))->text = text("TU1 -> TU1 * 3"); },
       {33, 34}},
      {"at the limits of its settings",
       [](Project&, Core& c) {
         TriggerExpression& e = *c.dataset.findExpression(text("TE1"));
         e.text = text("TU1 -> TU1 * 4");
         e.maxSequenceDepth = 2;
         e.maxEventCount = 4;
       },
       {}},
      {"thirteen units",
       [](Project&, Core& c) {
         QStringList names;
         for (int i = 1; i <= kMaxExpressionUnits + 1; ++i) names << text("u%1").arg(i);
         c.dataset.findExpression(text("TE1"))->text = names.join(text("|"));
       },
       {35}},
      {"trigger outputs: no name, a net's, an instance's, the same twice",
       [](Project& p, Core& c) {
         const char* names[] = {"", "floating", "u_deep", "alarm", "alarm"};
         for (int i = 0; i < 5; ++i) {
           Core& core = i == 0 ? c : addGoodCore(p, qPrintable(text("c%1").arg(i + 1)));
           core.options.triggerOut = true;
           core.options.triggerOutName = text(names[i]);
         }
       },
       {40, 41, 41, 42}},
      {"few samples in block RAM", [](Project&, Core& c) { c.options.bufferDepth = 256; }, {50}},
      {"few samples in distributed RAM",
       [](Project&, Core& c) {
         c.options.bufferDepth = 256;
         c.options.implementation = 1;
       },
       {}},
      {"windows that leave half of the buffer",
       [](Project&, Core& c) {
         c.options.bufferDepth = 4096;
         c.options.captureMode = 1;
         c.samplesPerTrigger = 1024;
         c.options.triggerCount = 2;
       },
       {51}},
      {"large memories",
       [](Project& p, Core& c) {
         c.options.bufferDepth = 65536;
         c.options.timestamp = true;
         c.options.timestampBits = 63;
         addGoodCore(p, "c2").options = c.options;
         c.options.implementation = 1;
       },
       {52, 53}},
      {"distributed RAM wanted and forbidden",
       [](Project&, Core& c) {
         c.options.implementation = 1;
         c.options.distRamDisabled = true;
       },
       {54}},
      {"undriven and constant nets, in trace, unit and enable",
       [](Project&, Core& c) {
         for (const char* bit : {"half[3]", "half[2]", "half[1]", "fixed[0]"}) trace(c, bit);
         c.dataset.findUnit(text("TU1"))->unit.signalNames = QStringList{text("floating"), text("din[2:0]")};
         c.options.sampleEnable = true;
         c.options.sampleEnableSignal = text("fixed[1]");
       },
       {60, 60, 61, 61}},
      {"another clock, found through the hierarchy",
       [](Project&, Core& c) {
         trace(c, "u_slow/u_reg/q");
         trace(c, "mixed");
       },
       {62}},
      {"the same clock under another name",
       [](Project&, Core& c) {
         c.options.sampleClock = text("u_deep/u_reg/clk");
         trace(c, "u_deep/q");
       },
       {}},
      {"sample clock of nothing that is traced",
       [](Project&, Core& c) { c.options.sampleClock = text("clk2"); },
       {62, 62, 63}},
      {"constant clock", [](Project&, Core& c) { c.options.sampleClock = text("fixed[0]"); }, {64}},
      {"the clock traced by itself", [](Project&, Core& c) { trace(c, "renamed_clk"); }, {65}},
  };
  return table;
}

TEST_F(RulesTest, EachProjectBreaksExactlyItsRules) {
  std::set<int> seen;
  for (const Case& row : cases()) {
    SCOPED_TRACE(row.name);
    Project project;
    row.change(project, addGoodCore(project, "c1"));
    const QList<Finding> findings = checkDesignRules(project, *design, netlist.get());
    EXPECT_EQ(numbersOf(findings), row.rules) << designRuleReport(findings).toStdString();
    bool anyError = false;
    for (const Finding& finding : findings) {
      seen.insert(finding.number);
      anyError |= finding.severity == Finding::Error;
      EXPECT_FALSE(finding.wayOut.contains(text("<core>"))) << finding.wayOut.toStdString();
    }
    EXPECT_EQ(hasErrors(findings), anyError);
  }
  for (const RuleRow& row : ruleTable()) EXPECT_TRUE(seen.count(int(row.rule))) << "no case for rule " << int(row.rule);
}

TEST_F(RulesTest, RulesThatNeedDriversAreLeftOutWithoutNetlist) {
  Project project;
  trace(addGoodCore(project, "c1"), "floating");
  EXPECT_EQ(numbersOf(checkDesignRules(project, *design, nullptr)), std::multiset<int>());
  EXPECT_EQ(numbersOf(checkDesignRules(project, *design, netlist.get())), std::multiset<int>({60}));
}

TEST_F(RulesTest, ReportNamesObjectAndWayOutErrorsFirst) {
  Project project;
  Core& core = addGoodCore(project, "c1");
  trace(core, "u_slow/u_reg/q");
  trace(core, "u_slow/u_reg/cllk");
  core.dataset.findExpression(text("TE1"))->text = text("TU1 -> TU1 -> TU1");
  QString report = designRuleReport(checkDesignRules(project, *design, netlist.get()));
  EXPECT_TRUE(report.contains(text("; nearest: u_slow/u_reg/clk"))) << report.toStdString();
  report.remove(QRegularExpression(text("; nearest: [^(]*[^( ]")));
  EXPECT_EQ(report.toStdString(),
            "DRC-14 error: core c1: traced signal \"u_slow/u_reg/cllk\" is not in the design "
            "(ost_trace del_sig -core c1 {u_slow/u_reg/cllk}, then ost_trace add_sig with its new name)\n"
            "DRC-33 error: core c1, expression TE1: it has 3 steps, its max_seq_depth is 1 "
            "(ost_te set -core c1 -max_seq_depth 4 TE1)\n"
            "DRC-62 warning: core c1: \"u_slow/u_reg/q\" is clocked by \"clk2\", not by the sample clock "
            "(ost_core add <name> for a core of its own with SampleClk=clk2)\n"
            "Design rules: 2 errors, 1 warning.\n");
}

TEST(DesignRuleReport, CountsTheFindingsOfARuleAfterTheTwentieth) {
  QList<Finding> findings;
  for (int i = 0; i < 23; ++i) findings.append({14, Finding::Error, text("core c1"), text("gone"), text("look")});
  findings.append({62, Finding::Warning, text("core c1"), text("other clock"), text("look")});
  const QString report = designRuleReport(findings);
  EXPECT_EQ(report.count(text("DRC-14 error: core c1: gone (look)\n")), 20);
  EXPECT_TRUE(report.contains(text("DRC-14 error: 3 more of this rule\nDRC-62"))) << report.toStdString();
  EXPECT_TRUE(report.endsWith(text("Design rules: 23 errors, 1 warning.\n")));
}

TEST(DesignRuleTable, DocumentationShowsTheSameRows) {
  QFile file(text(OST_RULES_DOC));
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  std::vector<std::string> documented, coded;
  for (const QByteArray& line : file.readAll().split('\n'))
    if (line.startsWith("| DRC-")) documented.push_back(line.toStdString());
  for (const RuleRow& row : ruleTable()) {
    char begin[64];
    snprintf(begin, sizeof begin, "| DRC-%02d | %s | ", int(row.rule),
             row.severity == Finding::Error ? "error" : "warning");
    coded.push_back(std::string(begin) + row.condition + " | `" + row.wayOut + "` |");
  }
  EXPECT_EQ(documented, coded);
}

}  // namespace
}  // namespace ost
