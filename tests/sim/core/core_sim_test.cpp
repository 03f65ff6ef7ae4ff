// The debug core in simulation against the model of its documentation: random plans and settings, and the protocol's
// promises on a disturbed line.
#include <gtest/gtest.h>

#include <random>

#include "tests/sim/core/plan_text.h"
#include "tests/sim/core/simulation.h"

namespace ost::sim {
namespace {

class Random {
 public:
  explicit Random(int seed) : engine_(seed) {}
  int below(int n) { return int(engine_() % unsigned(n)); }
  bool chance(int percent) { return below(100) < percent; }
  QByteArray bits(int n, int percent = 50) {
    QByteArray text;
    for (int i = 0; i < n; ++i) text += chance(percent) ? '1' : '0';
    return text;
  }

 private:
  std::mt19937 engine_;
};

QByteArray randomCore(Random& random) {
  const auto n = [](int value) { return QByteArray::number(value); };
  const int windows = random.chance(40) ? 1 << (1 + random.below(3)) : 1,
            ws = 1 << (random.chance(15) ? 1 : 2 + random.below(5));
  QByteArray text =
      "probes=" + n(1 + random.below(random.chance(20) ? 150 : 12)) + " windows=" + n(windows) + " ws=" + n(ws);
  if (random.chance(40)) text += " ts=" + n(1 + random.below(40));
  if (random.chance(40)) text += " incl";
  if (random.chance(30)) text += " dram";
  if (random.chance(30)) text += " nodram";
  if (random.chance(40)) text += random.chance(50) ? " se=high" : " se=low";
  if (random.chance(40)) text += random.chance(50) ? " te=high" : " te=low";
  if (random.chance(40)) text += " event=" + n(2 + random.below(6));
  if (random.chance(50)) text += " out=" + n(random.below(6));
  if (random.chance(30)) text += " outlow";
  const int units = 1 + random.below(random.chance(25) ? 6 : 3);
  for (int i = 0; i < units; ++i) {
    const int kind = random.below(5);
    if (kind == 0)
      text += " unit=serial:" + n(random.below(10)) + ":" + n(1 + random.below(4));
    else
      text +=
          QByteArray(kind == 1 ? " unit=order:" : " unit=match:") + n(random.below(8)) + ":" + n(1 + random.below(3));
  }
  const int expressions = 1 + random.below(3);
  for (int e = 0; e < expressions; ++e) {
    text += " expr=" + n(random.below(units));
    for (int i = 0; i < units; ++i)
      if (random.chance(units > 4 ? 90 : 30)) text += "+" + n(i);
    text += ":" + n(1 + random.below(random.chance(50) ? 1 : 5)) + ":" + n(1 + random.below(random.chance(50) ? 1 : 6));
    if (random.chance(30)) text += ":ebr";
  }
  return text;
}

/// Settings within what the core has built in.
Settings randomSettings(const PlanCore& core, Random& random) {
  Settings settings;
  settings.pre = random.chance(20) ? 0 : random.chance(20) ? core.windowSamples - 1 : random.below(core.windowSamples);
  settings.windows = 1 + random.below(core.windows);
  settings.eventCount = core.eventCounter ? 1 + random.below(core.eventCount) : 1;
  for (PlanUnit unit : core.units) {
    unit.value = random.bits(unit.width);
    unit.mask = random.bits(unit.width, 85);
    static const Operator match[] = {Operator::Equal, Operator::NotEqual, Operator::RisingEdge, Operator::FallingEdge};
    static const Operator order[] = {Operator::Equal,     Operator::NotEqual, Operator::Less,
                                     Operator::LessEqual, Operator::Greater,  Operator::GreaterEqual};
    if (unit.unitClass == UnitClass::Match) unit.op = match[random.below(4)];
    if (unit.unitClass == UnitClass::Order) unit.op = order[random.below(6)];
    settings.units.append(unit);
  }
  for (const PlanExpression& expression : core.expressions) {
    QVector<PlanStep> steps;
    if (settings.steps.isEmpty() || random.chance(70))
      for (int s = 1 + random.below(expression.maxSequenceDepth); s > 0; --s) {
        PlanStep step;
        step.truthTable = random.bits(1 << expression.units.size(), 40);
        step.count = 1 + random.below(expression.maxEventCount);
        steps.append(step);
      }
    settings.steps.append(steps);
  }
  return settings;
}

/// Compares one run; counts what there was to compare.
struct Compared {
  int captures = 0, samples = 0;
};
void compareRun(Simulation& simulation, int core, int tag, const Settings& settings, int doneReply, int reply,
                const std::vector<Edge>& run, Compared& compared) {
  const PlanCore& planned = simulation.plan().cores[core];
  const Capture expected = expectedCapture(planned, settings, run);
  ASSERT_EQ(expected.done, simulation.reply(doneReply) == "1") << "edges " << run.size();
  if (planned.triggerOutIo) {
    EXPECT_EQ(checkTriggerOut(planned, expected, run), "");
  }
  if (!expected.done) return;
  std::string error;
  const auto windows = simulation.windows(core, tag, settings, reply, error);
  ASSERT_EQ(error, "");
  ASSERT_EQ(windows.size(), expected.windows.size());
  for (size_t w = 0; w < windows.size(); ++w)
    for (size_t i = 0; i < windows[w].size(); ++i)
      ASSERT_EQ(windows[w][i], expected.windows[w][i]) << "core " << core << " window " << w << " sample " << i;
  ++compared.captures;
  compared.samples += int(windows.size() * windows[0].size());
}

void checkSeed(int seed, Compared& compared) {
  Random random(seed);
  QByteArray text = randomCore(random);
  const int cores = random.chance(30) ? 2 + random.below(2) : 1;
  for (int i = 1; i < cores; ++i) text += " core " + randomCore(random);
  SCOPED_TRACE("seed " + std::to_string(seed) + ": " + text.toStdString());
  const InsertPlan plan = planFromText(text);
  Timing timing;
  static const int kHalf[] = {125, 1700, 5003, 30000, 200000};  // TCK forty times to a fortieth of the sample clock
  timing.tckHalf = kHalf[random.below(5)];
  timing.clockHalf = {5000, 3700, 8100};
  timing.seed = seed;
  Simulation simulation(plan, timing);

  struct Run {
    int core, tag, done, reply;
    Settings settings;
  };
  std::vector<Run> runs;
  for (int round = 0; round < 2; ++round) {
    const size_t first = runs.size();
    for (int i = 0; i < cores; ++i) {
      Run run = {i, 1 + random.below(255), 0, 0, randomSettings(plan.cores[i], random)};
      simulation.until(i, kReady, kReady, 2000);
      simulation.configure(i, run.settings);
      simulation.arm(i, run.tag);
      runs.push_back(run);
    }
    simulation.wait(30000000);
    // Stopped clocks save the time of simulating them, and prove that a read-out does not need them.
    const bool stop = timing.tckHalf > 10000;
    for (int i = 0; i < cores && stop; ++i) simulation.stopClock(i);
    for (size_t i = first; i < runs.size(); ++i) {
      runs[i].done = simulation.until(runs[i].core, kDone, kDone, 20);
      runs[i].reply = simulation.readOut(runs[i].core, runs[i].tag);
      simulation.write(kStop, runs[i].core);
    }
    for (int i = 0; i < cores && stop; ++i) simulation.startClock(i);
  }
  simulation.run();
  for (int i = 0; i < cores; ++i) {
    const auto record = simulation.record(i);
    int round = 0;
    for (const Run& run : runs)
      if (run.core == i) {
        ASSERT_LT(size_t(round), record.size());
        SCOPED_TRACE("core " + std::to_string(i) + " round " + std::to_string(round));
        compareRun(simulation, i, run.tag, run.settings, run.done, run.reply, record[round++], compared);
      }
  }
}

TEST(CoreSimulation, RandomPlansCaptureWhatTheModelSays) {
  const char* first = std::getenv("OST_CORE_SEED");
  const char* count = std::getenv("OST_CORE_SEEDS");
  const int begin = first ? std::atoi(first) : 1, seeds = count ? std::atoi(count) : 12;
  Compared compared;
  for (int seed = begin; seed < begin + seeds && !HasFatalFailure() && !HasFailure(); ++seed) checkSeed(seed, compared);
  std::printf("compared %d captures, %d samples\n", compared.captures, compared.samples);
  EXPECT_GE(compared.captures, seeds);
}

/// A small core that triggers at once; used where the protocol matters.
InsertPlan smallPlan() {
  return planFromText(
      "probes=5 depth=16 ts=4 unit=match:0:2 unit=order:1:3 unit=serial:2:3 unit=match:0:1 unit=match:3:1 expr=0+1:2:3 "
      "expr=0+1+2+3+4:1:1");
}
Settings smallSettings(const InsertPlan& plan, int seed) {
  Random random(seed);
  Settings settings = randomSettings(plan.cores[0], random);
  PlanStep always;
  always.truthTable = QByteArray(4, '1');
  settings.steps[0] = {always};
  return settings;
}

TEST(CoreSimulation, SampleClockAThousandTimesFasterThanTck) {
  const InsertPlan plan = planFromText("probes=3 depth=16 unit=match:0:1 expr=0");
  Timing timing;
  timing.tckHalf = 500000;
  timing.clockHalf = {500};
  Simulation simulation(plan, timing);
  Random random(3);
  Settings settings = randomSettings(plan.cores[0], random);
  settings.units[0].op = Operator::RisingEdge;
  settings.units[0].mask = "1";
  settings.steps[0][0].truthTable = "01";
  simulation.configure(0, settings);
  simulation.arm(0, 77);
  const int done = simulation.until(0, kDone, kDone, 2), reply = simulation.readOut(0, 77);
  simulation.run();
  Compared compared;
  compareRun(simulation, 0, 77, settings, done, reply, simulation.record(0)[0], compared);
  EXPECT_EQ(compared.captures, 1);
}

TEST(CoreSimulation, ReportsWhyItHasNotTriggered) {
  const InsertPlan plan = planFromText(
      "probes=4 depth=16 se=high te=low event=4 unit=match:0:1 unit=match:1:1 expr=0+1:4:3 core probes=2 depth=16 "
      "unit=match:0:1 expr=0");
  Timing timing;
  Simulation simulation(plan, timing);
  Random random(5);
  Settings settings = randomSettings(plan.cores[0], random);
  settings.pre = 3;
  settings.eventCount = 2;
  PlanStep always, never;
  always.truthTable = "1111";
  always.count = 2;
  never.truthTable = "0000";
  settings.steps[0] = {always, always, never};
  const int ready = simulation.until(0, kReady, kReady, 5);
  simulation.arm(0, 9);
  simulation.write(kStatus, 0);
  const int refused = simulation.read(statusReplyBits(plan.cores[0]));
  simulation.configure(0, settings);
  simulation.arm(0, 9);
  simulation.wait(2000000);
  const int fresh = simulation.until(0, kFresh, kFresh, 20), waiting = simulation.read(statusReplyBits(plan.cores[0]));
  simulation.write(kRead, 0, 9, 0);
  const int early = simulation.read(statusReplyBits(plan.cores[0]));
  simulation.stopClock(0);
  const int standing = simulation.until(0, kFresh, kFresh, 5);
  simulation.write(kStop, 0);
  const int busy = simulation.until(0, kReady, kReady, 5);
  simulation.startClock(0);
  const int idle = simulation.until(0, kReady, kReady, 5);
  simulation.write(kInfo, 1);
  const int info = simulation.read(48 + 256 + 32);
  simulation.write(kStatus, 7);
  const int nobody = simulation.read(48 + 1 + 32);
  simulation.run();

  Block block;
  EXPECT_EQ(simulation.reply(ready), "1");
  ASSERT_TRUE(parseBlock(simulation.reply(refused), 0, statusBits(plan.cores[0]), block));
  EXPECT_EQ(block.flags & (kRefused | kArmed | kReady), kReady) << "the status itself is allowed";
  EXPECT_EQ(simulation.reply(fresh), "1");
  ASSERT_TRUE(parseBlock(simulation.reply(waiting), 0, statusBits(plan.cores[0]), block)) << simulation.reply(waiting);
  const Status status = parseStatus(plan.cores[0], block.payload);
  EXPECT_EQ(status.tag, 9);
  EXPECT_TRUE(status.running && status.searching && status.sampled && !status.triggered);
  EXPECT_EQ(status.steps[0], 2) << "waits in the step that never holds";
  ASSERT_TRUE(parseBlock(simulation.reply(early), 0, statusBits(plan.cores[0]), block));
  EXPECT_EQ(block.flags & (kRefused | kDone | kArmed), kRefused | kArmed) << "no words before done";
  EXPECT_EQ(simulation.reply(standing), "0") << "no snapshot without a clock";
  EXPECT_EQ(simulation.reply(busy), "0") << "a stopped clock cannot acknowledge";
  EXPECT_EQ(simulation.reply(idle), "1");
  ASSERT_TRUE(parseBlock(simulation.reply(info), 0, 256, block));
  const Bits& self = block.payload;
  EXPECT_EQ(value(self, 0, 32), 0x52545350u);
  EXPECT_EQ(value(self, 32, 16), 1u);
  EXPECT_EQ(value(self, 48, 16), 2u);
  EXPECT_EQ(value(self, 64, 64), 0x0123456789abcdefu);
  EXPECT_EQ(value(self, 128, 8), 1u);
  EXPECT_EQ(value(self, 136, 8), 4u);
  EXPECT_EQ(value(self, 144, 16), 2u);
  EXPECT_EQ(value(self, 160, 8), 4u);
  EXPECT_EQ(value(self, 176, 16), 2u);
  EXPECT_EQ(value(self, 224, 16), unsigned(statusBits(plan.cores[1])));
  EXPECT_EQ(value(self, 240, 8), 1u);
  ASSERT_TRUE(parseBlock(simulation.reply(nobody), 0, 1, block));
  EXPECT_EQ(block.flags & kRefused, kRefused);
}

TEST(CoreSimulation, AbortedAndArmedAgainWithASlowSampleClock) {
  const InsertPlan plan = smallPlan();
  Timing timing;
  timing.tckHalf = 125;  // Forty TCK in a sample clock: STOP and ARM come within one of them.
  Simulation simulation(plan, timing);
  const Settings first = smallSettings(plan, 1), second = smallSettings(plan, 2);
  simulation.configure(0, first);
  simulation.arm(0, 1);
  simulation.write(kStop, 0);
  simulation.configure(0, second);  // Refused: the core has not seen the STOP yet.
  const int ready = simulation.until(0, kReady, kReady, 50);
  simulation.configure(0, second);
  simulation.arm(0, 2);
  const int done = simulation.until(0, kDone, kDone, 2000), reply = simulation.readOut(0, 2);
  simulation.run();
  EXPECT_EQ(simulation.reply(ready), "1");
  Compared compared;
  compareRun(simulation, 0, 2, second, done, reply, simulation.record(0).back(), compared);
  EXPECT_EQ(compared.captures, 1);
}

Bits flipped(Bits bits, size_t at) {
  bits.at(at) = bits[at] == '1' ? '0' : '1';
  return bits;
}

/// Each single flipped bit of an ARM frame, and every third one of a configuration's.
TEST(CoreSimulation, NoFrameWithAFlippedBitIsTaken) {
  const InsertPlan plan = smallPlan();
  const PlanCore& core = plan.cores[0];
  Simulation simulation(plan, Timing());
  const Settings settings = smallSettings(plan, 4);
  struct Flip {
    int reply, status;
    bool payload;
  };
  std::vector<Flip> flips;
  const auto tryAll = [&](const Bits& good, size_t stride) {
    for (size_t i = 0; i < good.size(); i += stride) {
      simulation.configure(0, settings);
      simulation.writeBits(flipped(good, i));
      const int reply = simulation.read(statusReplyBits(core));
      simulation.write(kStatus, 0);
      flips.push_back({reply, simulation.read(statusReplyBits(core)), i >= 73});
    }
  };
  tryAll(frame(kArm, 0, 3, 0), 1);
  tryAll(frame(kConfig, 0, 0, 0, chain(core, settings)), 3);
  tryAll(frame(kTable, 0, 1, 0, tableRows(core.expressions[1], settings.steps[1])), 3);
  simulation.run();
  for (size_t i = 0; i < flips.size(); ++i) {
    Block block;
    EXPECT_FALSE(parseBlock(simulation.reply(flips[i].reply), 0, statusBits(core), block)) << i;
    ASSERT_TRUE(parseBlock(simulation.reply(flips[i].status), 0, statusBits(core), block)) << i;
    EXPECT_EQ(block.flags & kArmed, 0) << i;
    if (flips[i].payload) {
      EXPECT_EQ(block.flags & kConfigured, 0) << i;
    }
  }
}

/// TMS and TDI cycles of a DR scan.
void appendScan(const Bits& bits, Bits& tms, Bits& tdi) {
  tms += "100" + Bits(bits.size() - 1, '0') + "11000";
  tdi += "000" + bits + "0000";
}

/// Configuration and arm over a line that flips bits of TMS and TDI: a core that says that it is armed for this run
/// captures what the intended settings call for.
TEST(CoreSimulation, ADisturbedLineNeverArmsAWrongConfiguration) {
  const InsertPlan plan = smallPlan();
  const PlanCore& core = plan.cores[0];
  Timing timing;
  timing.tckHalf = 2500;
  Simulation simulation(plan, timing);
  Random random(11);
  struct Attempt {
    Settings settings;
    int tag, status, done, reply;
  };
  std::vector<Attempt> attempts;
  for (int n = 0; n < 60; ++n) {
    Attempt attempt = {smallSettings(plan, 100 + n), n + 1, 0, 0, 0};
    Bits tms, tdi;
    appendScan(frame(kConfig, 0, 0, 0, chain(core, attempt.settings)), tms, tdi);
    appendScan(frame(kTable, 0, 1, 0, tableRows(core.expressions[1], attempt.settings.steps[1])), tms, tdi);
    appendScan(frame(kArm, 0, attempt.tag, 0), tms, tdi);
    for (int flips = n % 3; flips > 0; --flips) {
      Bits& line = random.chance(50) ? tms : tdi;
      line = flipped(line, random.below(int(line.size())));
    }
    simulation.raw(tms, tdi);
    simulation.raw("1111100110000110000", "0000000000010000000");  // Reset, then USER into the instruction register.
    simulation.write(kStatus, 0);
    attempt.status = simulation.read(statusReplyBits(core));
    attempt.done = simulation.until(0, kDone, kDone, 20);
    attempt.reply = simulation.readOut(0, attempt.tag);
    simulation.write(kStop, 0);
    simulation.until(0, kReady, kReady, 50);
    attempts.push_back(attempt);
  }
  simulation.run();
  const auto record = simulation.record(0);
  size_t run = 0;
  Compared compared;
  for (const Attempt& attempt : attempts) {
    Block block;
    ASSERT_TRUE(parseBlock(simulation.reply(attempt.status), 0, statusBits(core), block));
    if (!(block.flags & kArmed)) continue;
    ASSERT_EQ(parseStatus(core, block.payload).tag, attempt.tag);
    SCOPED_TRACE("attempt " + std::to_string(attempt.tag));
    ASSERT_LT(run, record.size());
    compareRun(simulation, 0, attempt.tag, attempt.settings, attempt.done, attempt.reply, record[run++], compared);
  }
  EXPECT_GE(compared.captures, 20) << "undisturbed attempts, and those where the flip did no harm";
  EXPECT_LT(compared.captures, 60);
}

}  // namespace
}  // namespace ost::sim
