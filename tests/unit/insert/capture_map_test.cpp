// The capture map there and back, and the damaged ones that are refused.
#include "platform/plan/capture_map.h"

#include "bench/core_plans/plan_text.h"
#include "tests/unit/scratch.h"

namespace ost {
namespace {

TEST(CaptureMap, IsRefusedDamagedWithThePlace) {
  InsertPlan plan = planFromText(
      "probes=4 depth=256 windows=4 ts=32 incl se=low event=7 unit=match:0:3 unit=serial:1:4 expr=0+1:2:4");
  PlanCore& core = plan.cores[0];
  core.sampleClock = core.sampleEnable = core.probeBits[0];
  core.probes = {{"BUS1", {0, 1, 2}}};
  core.units[0].value = "001";
  plan.projectHash = planHash(plan);
  const QByteArray json = captureMapJson(plan);
  InsertPlan back;
  QString error;
  ASSERT_TRUE(readCaptureMap(json, back, error)) << plain(error);
  EXPECT_EQ(captureMapJson(back), json);
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
    InsertPlan none;
    EXPECT_FALSE(readCaptureMap(damaged(json, row.from, row.to), none, error));
    EXPECT_TRUE(has(error, row.complaint));
    EXPECT_TRUE(none.cores.isEmpty());
  }
}

}  // namespace
}  // namespace ost
