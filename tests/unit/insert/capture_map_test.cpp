// The capture map there and back, and the damaged ones that are refused.
#include "platform/plan/capture_map.h"

#include <gtest/gtest.h>

#include "platform/insert/planner.h"
#include "platform/istdata/trace_tree.h"
#include "tests/unit/insert/tricky.h"

namespace ost {
namespace {

/// A plan from a project that uses what can be set on a core.
InsertPlan fullPlan() {
  mero::ostrel::istProject project;
  project.fileName = QStringLiteral("/some where/caf\xc3\xa9.ost");
  project.cores.emplace_back(new Core(QStringLiteral("off")));
  project.cores.back()->enabled = false;
  project.cores.emplace_back(new Core(QStringLiteral("c1")));
  Core& core = *project.cores.back();
  core.options.sampleClock = QStringLiteral("clk");
  core.options.sampleEnable = true;
  core.options.sampleEnableSignal = QStringLiteral("slow");
  core.options.sampleEnablePolarity = 1;
  core.options.captureMode = 1;
  core.options.triggerCount = 4;
  core.options.bufferDepth = 256;
  core.samplesPerTrigger = 64;
  core.options.timestamp = true;
  core.options.includeTrigger = true;
  core.options.eventCounter = true;
  core.options.eventCounterValue = 7;
  core.options.triggerOut = true;
  core.options.triggerOutType = 2;
  core.options.triggerOutName = QStringLiteral("fired");
  QString error, remark;
  TraceNode* bus = core.trace->appendBus(nullptr, QStringLiteral("BUS1"), error);
  for (const char* bit : {"a[3]", "a[2]", "u_one/u_left/count[0]"})
    core.trace->appendSignal(bus, QString::fromLatin1(bit), error);
  core.trace->appendSignal(nullptr, QStringLiteral("slow"), error);
  core.trace->appendReference(nullptr, QStringLiteral("a[2]"), error);
  EXPECT_TRUE(core.trace->bindReferences(error)) << qPrintable(error);
  core.dataset.addUnit({QStringLiteral("TU1"),
                        {QStringLiteral("turned[0:1]"), QStringLiteral("slow")},
                        Operator::NotEqual,
                        Radix::Bin,
                        QStringLiteral("1x0")});
  core.dataset.addUnit(
      {QStringLiteral("TU2"), {QStringLiteral("slow")}, Operator::SerialCompare, Radix::Bin, QStringLiteral("0011")});
  TriggerExpression expression;
  expression.name = QStringLiteral("TE1");
  expression.text = QStringLiteral("TU1 & !TU2 -> TU2 * 3");
  expression.maxSequenceDepth = 2;
  expression.maxEventCount = 4;
  core.dataset.addExpression(expression);
  InsertPlan plan;
  EXPECT_TRUE(planInsertion(project, trickyDesign(), plan, error)) << qPrintable(error);
  return plan;
}

TEST(Planner, ResolvesEnabledCoresToBits) {
  const InsertPlan plan = fullPlan();
  ASSERT_EQ(plan.cores.size(), 1);
  const PlanCore& core = plan.cores[0];
  EXPECT_EQ(plan.projectName, QStringLiteral("caf\xc3\xa9"));
  ASSERT_EQ(core.probeBits.size(), 4);  // the reference shares a bit
  ASSERT_EQ(core.probes.size(), 3);
  EXPECT_EQ(core.probes[0].name, QStringLiteral("BUS1"));
  EXPECT_EQ(core.probes[0].positions, QVector<int>({0, 1, 2}));
  EXPECT_EQ(core.probes[2].positions, QVector<int>({1}));
  EXPECT_EQ(core.windows * core.windowSamples, core.depth);
  EXPECT_EQ(core.sampleBits(), 4 + 2 + 32);
  EXPECT_TRUE(core.sampleEnableActiveLow && core.triggerOutIo && core.triggerOutNet);
  // The first signal is leftmost: the last one is bit 0. The second unit shares that bit.
  EXPECT_EQ(core.triggerBits[core.units[0].inputs[0]].name, QStringLiteral("slow"));
  EXPECT_EQ(core.triggerBits[core.units[0].inputs[2]].name, QStringLiteral("turned[0]"));
  EXPECT_EQ(core.units[1].inputs, QVector<int>({core.units[0].inputs[0]}));
  EXPECT_EQ(core.units[0].value, "001");
  EXPECT_EQ(core.units[0].mask, "101");
  EXPECT_EQ(core.units[1].unitClass, UnitClass::Serial);
  EXPECT_EQ(core.expressions[0].steps[1].count, 3);
}

TEST(CaptureMap, ReadsBackWhatItWroteAndHashesEverything) {
  const InsertPlan plan = fullPlan();
  const QByteArray json = captureMapJson(plan);
  InsertPlan back;
  QString error;
  ASSERT_TRUE(readCaptureMap(json, back, error)) << qPrintable(error);
  EXPECT_EQ(captureMapJson(back), json);
  EXPECT_EQ(back.cores[0].units[0].value, plan.cores[0].units[0].value);
  EXPECT_EQ(plan.projectHash.size(), 16);
  InsertPlan other = plan;
  other.cores[0].probeBits[1].bit ^= 1;
  EXPECT_NE(planHash(other), plan.projectHash);
  other = plan;
  other.pins.tck = QStringLiteral("other");
  EXPECT_EQ(planHash(other), plan.projectHash);
}

TEST(CaptureMap, RefusesADamagedOneWithThePlace) {
  const QByteArray json = captureMapJson(fullPlan());
  struct Case {
    const char *from, *to, *complaint;
  };
  const Case cases[] = {
      {"\"version\": 1", "\"version\": 2", "version"},
      {"\"depth\": 256", "\"depth\": 255", "cores[0].depth"},
      {"\"depth\": 256", "\"deepness\": 256", "cores[0].depth"},
      {"\"windows\": 4", "\"windows\": 5", "cores[0].windowSamples"},
      {"[0, 1, 2]", "[0, 1, 4]", "positions[2]"},
      {"\"value\": \"100\"", "\"value\": \"1020\"", "units[0].value"},
      {"[\"slow\", \"\", \"slow\", 0]", "[\"slow\", \"\", \"slow\"]", "expected [name"},
      {"\"eventCount\": 7", "\"eventCount\": 8", "hash"},
      {"\"top\"", "\"extra\": 1, \"top\"", "extra"},
      {"\"cores\"", "cores", "line"},
      {"\"top\"", "\"top\": \"\", \"top\"", "stands twice"},
  };
  for (const Case& c : cases) {
    QByteArray damaged = json;
    const int place = damaged.indexOf(c.from);
    ASSERT_GE(place, 0) << c.from;
    damaged.replace(place, int(qstrlen(c.from)), c.to);
    InsertPlan plan;
    QString error;
    EXPECT_FALSE(readCaptureMap(damaged, plan, error)) << c.to;
    EXPECT_TRUE(error.contains(QString::fromLatin1(c.complaint))) << qPrintable(error);
    EXPECT_TRUE(plan.cores.isEmpty());
  }
  InsertPlan plan;
  QString error;
  EXPECT_FALSE(readCaptureMap(json.left(json.size() / 2), plan, error));
  EXPECT_FALSE(readCaptureMap(QByteArray(100000, '['), plan, error));
}

}  // namespace
}  // namespace ost
