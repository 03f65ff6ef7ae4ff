// The capture map there and back, and the damaged ones that are refused.
#include "platform/plan/capture_map.h"

#include "bench/core_plans/plan_text.h"
#include "tests/unit/scratch.h"

namespace ost {
namespace {

InsertPlan fullPlan() {
  InsertPlan plan = planFromText(
      "probes=4 depth=256 windows=4 ts=32 incl se=low te=high event=7 out=3 outlow dram unit=match:0:3 "
      "unit=serial:1:4 unit=order:2:4 expr=0+1:2:4:ebr expr=2 core probes=1 depth=16 nodram");
  for (PlanCore& core : plan.cores) {
    core.sampleEnable = core.triggerEnable = core.sampleClock = core.probeBits[0];
    core.triggerOutName = "fired";
  }
  plan.cores[0].probes = {{"BUS1", {0, 1, 2}}, {"in[1]", {1}}};
  plan.cores[0].units[0].value = "001";
  plan.cores[0].units[0].mask = "101";
  plan.projectHash = planHash(plan);
  return plan;
}

TEST(CaptureMap, ReadsBackWhatItWroteAndHashesEverythingButThePins) {
  const InsertPlan plan = fullPlan();
  const QByteArray json = captureMapJson(plan);
  InsertPlan back;
  QString error;
  ASSERT_TRUE(readCaptureMap(json, back, error)) << plain(error);
  EXPECT_EQ(captureMapJson(back), json);
  EXPECT_EQ(back.cores[0].units[0].value, "001");
  back.cores[0].probeBits[1].bit ^= 1;
  EXPECT_NE(planHash(back), plan.projectHash);
  back.cores[0].probeBits[1].bit ^= 1;
  back.pins.tck = "other";
  EXPECT_EQ(planHash(back), plan.projectHash);
}

TEST(CaptureMap, RefusesADamagedOneWithThePlace) {
  const QByteArray json = captureMapJson(fullPlan());
  const struct {
    const char *from, *to, *complaint;
  } table[] = {
      {"\"version\": 1", "\"version\": 2", "version"},
      {"\"depth\": 256", "\"depth\": 255", "cores[0].depth"},
      {"\"depth\": 256", "\"deepness\": 256", "cores[0].depth"},
      {"\"windows\": 4", "\"windows\": 5", "cores[0].windowSamples"},
      {"[0, 1, 2]", "[0, 1, 4]", "positions[2]"},
      {"\"value\": \"100\"", "\"value\": \"1020\"", "units[0].value"},
      {"[\"in[0]\", \"\", \"in\", 0]", "[\"in[0]\", \"\", \"in\"]", "expected [name"},
      {"\"eventCount\": 7", "\"eventCount\": 8", "hash"},
      {"\"top\"", "\"extra\": 1, \"top\"", "extra"},
      {"\"cores\"", "cores", "line"},
      {"\"top\"", "\"top\": \"\", \"top\"", "stands twice"},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.to);
    InsertPlan plan;
    QString error;
    EXPECT_FALSE(readCaptureMap(damaged(json, row.from, row.to), plan, error));
    EXPECT_TRUE(has(error, row.complaint));
    EXPECT_TRUE(plan.cores.isEmpty());
  }
}

}  // namespace
}  // namespace ost
