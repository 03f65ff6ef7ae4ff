// The capture map there and back, and the damaged ones that are refused.
#include "platform/plan/capture_map.h"

#include "bench/core_plans/plan_text.h"
#include "tests/unit/scratch.h"

namespace ost {
namespace {

TEST(CaptureMap, IsRefusedDamagedWithThePlace) {
  InsertPlan plan = planFromText(
      "probes=4 depth=512 windows=4 ts=32 incl se=low event=7 unit=match:0:3 unit=serial:1:4 expr=0+1:2:4");
  PlanCore& core = plan.cores[0];
  core.sampleClock = core.sampleEnable = core.probeBits[0];
  core.probes = {{"BUS1", {0, 1, 2}}};
  core.units[0].value = "001";
  const QByteArray before = captureMapJson(plan);
  core.units[0].names = {{"RUN", "011"}, {"IDLE", "000"}};
  core.probes.append({"on", {3}, {{"YES", "1"}}});
  const QByteArray named = captureMapJson(plan);
  core.probes[1].net = {{"u1", "lane[0]"}, "o.n", true, -3, -3};
  plan.projectHash = planHash(plan);
  const QByteArray json = captureMapJson(plan);
  EXPECT_TRUE(before.contains("\"version\": 1") && named.contains("\"version\": 2"));  // one that needs it
  InsertPlan back;
  QString error;
  ASSERT_TRUE(readCaptureMap(json, back, error)) << plain(error);
  EXPECT_EQ(captureMapJson(back), json);
  // The way to the chip, with its instruction: no part of the hash.
  plan.jtag.way = JtagWay::Bscane2;
  plan.jtag.chain = 3;
  const QByteArray way = captureMapJson(plan);
  EXPECT_TRUE(readCaptureMap(way, back, error) && has(way, "\"instructionCode\": 34") && !way.contains("tck"))
      << plain(error);
  EXPECT_EQ(captureMapJson(back), way);
  // A map may not ask for much more memory than it takes itself.
  const QByteArray shown = '[' + QByteArray("0,").repeated((1 << 20) - 1) + "0]";
  const QByteArray many = shown + QByteArray("}, {\"name\": \"b\", \"positions\": " + shown).repeated(4);
  const struct {
    const char *from, *to, *complaint;
  } table[] = {
      {"\"version\": 4", "\"version\": 9", "version"},
      {"\"version\": 4", "\"version\": 1", "has an unknown key"},
      {"\"version\": 4", "\"version\": 3", "has an unknown key"},
      {"[-3, -3]", "[-3, -2]", "probes[1].net: does not fit the probe"},
      {"[\"RUN\", \"110\"]", "[\"RUN\", \"11\"]", "names[0]: expected [name, 3 binary digits]"},
      {"\"depth\": 512", "\"depth\": 511", "cores[0].depth"},
      {"\"depth\": 512", "\"deepness\": 512", "cores[0].depth"},
      {"\"windows\": 4", "\"windows\": 5", "cores[0].windowSamples"},
      {"[0, 1, 2]", "[0, 1, 4]", "positions[2]"},
      {"\"value\": \"100\"", "\"value\": \"1020\"", "units[0].value"},
      {"[\"in[0]\", \"\", \"in\", 0]", "[\"in[0]\", \"\", \"in\"]", "expected [name"},
      {"\"eventCount\": 7", "\"eventCount\": 8", "hash"},
      {"\"top\"", "\"extra\": 1, \"top\"", "extra"},
      {"\"cores\"", "cores", "line"},
      {"\"top\"", "\"top\": \"\", \"top\"", "stands twice"},
      {"[0, 1, 2]", shown.constData(), "cores[0].depth: is for more than 268435456 bits"},
      {"[0, 1, 2]", many.constData(), "the map has more than 4194304 such entries"},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(QByteArray(row.to).left(40).constData());
    InsertPlan none;
    EXPECT_FALSE(readCaptureMap(damaged(json, row.from, row.to), none, error));
    EXPECT_TRUE(has(error, row.complaint));
    EXPECT_TRUE(none.cores.isEmpty());
  }
}

}  // namespace
}  // namespace ost
