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
  const QByteArray first = planHash(plan, 1);
  core.units[0].names = {{"RUN", "011"}, {"IDLE", "000"}};
  core.probes.append({"on", {3}, {{"YES", "1"}}});
  const QByteArray second = planHash(plan, 2);
  core.probes[1].net = {{"u1", "lane[0]"}, "o.n", true, -3, -3};
  // As maps of these versions in the field have it.
  EXPECT_EQ(first + second + planHash(plan, 4), "62552eadc2248049c4844cff4a13393a9cd5940717733d95");
  core.instances = {{"u1",
                     "m",
                     {{"P", true, "a\"b"}, {"N", false, "0x1"}},
                     {{"clk", false, {kReplayClock}}, {"o", true, {3, kReplay0, kReplayX}}},
                     {{{"g[0]"}, "q", {2, kReplayX}, 0, 0}, {{}, "mem", {}, 0, 7}},
                     6,
                     1}};
  plan.projectHash = planHash(plan);
  const QByteArray json = captureMapJson(plan);
  QByteArray old = damaged(json, "\"version\": 5", "\"version\": 4");
  old.replace(old.indexOf(",\n   \"instances\""), old.indexOf("\n  }\n ]\n}\n") - old.indexOf(",\n   \"instances\""),
              "");
  old.replace(plan.projectHash, planHash(plan, 4));
  InsertPlan back;
  QString error;
  ASSERT_TRUE(readCaptureMap(json, back, error)) << plain(error);
  EXPECT_EQ(captureMapJson(back), json);
  EXPECT_TRUE(readCaptureMap(old, back, error)) << plain(error);
  // What is only shown may change under the same hash, in the file, too.
  core.displayRadix = Radix::Hex;
  core.probes[0].name = core.units[0].name = core.units[0].valueText = "other";
  core.probes[1].names.clear();
  EXPECT_TRUE(planHash(plan) == plan.projectHash && readCaptureMap(captureMapJson(plan), back, error)) << plain(error);
  EXPECT_EQ(back.cores[0].probes[0].name, "other");
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
      {"\"version\": 5", "\"version\": 9", "version"},
      {"\"version\": 5", "\"version\": 1", "has an unknown key"},
      {"\"version\": 5", "\"version\": 3", "has an unknown key"},
      {"\"version\": 5", "\"version\": 4", "has an unknown key \"instances\""},
      {"[3, \"0\", \"x\"]", "[4, \"0\"]", "ports[1].bits[0]: expected a number below 4, or one of 0, 1, x, clock"},
      {"[3, \"0\", \"x\"]", "[\"z\"]", "ports[1].bits[0]: expected a number"},
      {"\"name\": \"q\"", "\"name\": \"q; $finish\"", "state[0].name: is no name of Verilog"},
      {"[0, 7]", "[0, -7]", "state[1].words"},
      {"\"0x1\"", "\"0;1\"", "parameters[1].digits"},
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

TEST(CaptureMap, TellsOfTheWishboneMaster) {
  InsertPlan plan = planFromText("wb=12"), back;
  QString error;
  const QByteArray hash = planHash(plan);
  plan.wishbone->portPrefix = "ostrel1_wb_";
  EXPECT_EQ(planHash(plan), hash) << "where the bus is does not count";
  plan.wishbone->isConnected = true;
  plan.wishbone->instance = "u_bus";
  plan.wishbone->clock = {"", "clk", 0, "clk"};
  plan.wishbone->pins = {{WishboneSignal::Cycle, "cyc_i", 1}, {WishboneSignal::Address, "adr_i", 10}};
  plan.projectHash = planHash(plan);
  const QByteArray json = captureMapJson(plan);
  ASSERT_TRUE(readCaptureMap(json, back, error)) << plain(error);
  EXPECT_EQ(captureMapJson(back), json);
  const struct {
    const char *from, *to, *complaint;
  } table[] = {
      {"\"core\": 0", "\"core\": 1", "wishbone.core"},
      {"[\"adr\", \"adr_i\", 10]", "[\"adr\", \"adr_i\", 33]", "wishbone.pins[1]: expected [signal, port, width]"},
      {"[\"cyc\"", "[\"cycle\"", "wishbone.pins[0]"},
      {"\"addressBits\": 12", "\"addressBits\": 33", "wishbone.addressBits"},
      {"\"bigEndian\": true", "\"bigEndian\": false", "hash"},
  };
  for (const auto& row : table) {
    EXPECT_FALSE(readCaptureMap(damaged(json, row.from, row.to), back, error));
    EXPECT_TRUE(has(error, row.complaint)) << plain(error);
  }
}

TEST(CaptureMap, HasTheSerdesCore) {
  InsertPlan plan = planFromText("probes=2 depth=16 serdes=1:2:rst");
  PlanSerdes& serdes = *plan.serdes;
  plan.cores[0].sampleClock = serdes.clock = serdes.reset = plan.cores[0].probeBits[0];
  serdes.clocks[0] = {plan.cores[0].probeBits[1], "clock"};
  serdes.levels = {{plan.cores[0].probeBits[0], "lock"}, {plan.cores[0].probeBits[1], "los"}};
  plan.projectHash = planHash(plan);
  const QByteArray json = captureMapJson(plan);
  InsertPlan back;
  QString error;
  ASSERT_TRUE(readCaptureMap(json, back, error)) << plain(error);
  EXPECT_EQ(captureMapJson(back), json);
  const struct {
    const char *from, *to, *complaint;
  } table[] = {{"\"core\": 1", "\"core\": 0", "serdes.core"},
               {"\"word\": \"los\"", "\"word\": \"l os\"", "watched[2].word: is not a word"},
               {"\"word\": \"los\"", "\"word\": \"clock\"", "hash"},
               {"\"reset\"", "\"rest\"", "serdes"}};
  for (const auto& row : table) {
    EXPECT_FALSE(readCaptureMap(damaged(json, row.from, row.to), back, error));
    EXPECT_TRUE(has(error, row.complaint));
  }
}

}  // namespace
}  // namespace ost
