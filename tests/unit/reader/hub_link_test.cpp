// Replies of a hub that does not keep to the contract. (One that does is the simulation's matter: tests/sim.)
#include "platform/reader/hub_link.h"

#include "bench/core_plans/plan_text.h"
#include "platform/jtag/tap_driver.h"
#include "platform/reader/core_reader.h"
#include "tests/unit/scratch.h"

namespace ost {
namespace {

/// Answers every scan of the data register with the same block.
struct LyingPort : JtagPort {
  QByteArray block;
  bool run(const QByteArray& tms, const QByteArray&, QByteArray* tdo, QString&) override {
    if (tdo) *tdo += tms.size() < kBlockOverhead ? numberBits(1, tms.size()) : block.leftJustified(tms.size(), 1, true);
    return true;
  }
  bool flush(QString&) override { return true; }
};

QByteArray blockOf(const QByteArray& checked) {
  QByteArray block = checked;
  for (int i = kCrcBits - 1; i >= 0; --i) block += char(frameCrc(checked) >> i & 1);
  return block;
}

/// A hub with one core that takes everything; its replies to the first ARMs are lost, or those ARMs themselves.
struct ForgetfulTap : Tap {
  int lostReplies = 0, lostArms = 0, arms = 0, runs = 0, tag = 7;
  QByteArray command;
  bool select(const TapInstruction&, bool& answers, QString&) override { return answers = true; }
  bool idle(int, QString&) override { return true; }
  bool scanData(const QByteArray& in, QByteArray* out, QString&) override {
    const bool isArm = bitsNumber(command, 0, command.isEmpty() ? 0 : 4) == quint64(HubOp::Arm);
    if (!out) {
      command = in.mid(1, kCommandBits);
      if (bitsNumber(command, 0, 4) != quint64(HubOp::Arm) || arms++ < lostArms) return true;
      tag = int(bitsNumber(command, 12, 8));
      ++runs;
    } else {
      // Ready until the run starts, configured, fresh.
      const quint64 flags = 0x98 | (runs ? 2 : 1);
      *out = blockOf(command + numberBits(flags, kFlagBits) + numberBits(quint64(tag), in.size() - kBlockOverhead));
      if (isArm && arms <= qMax(lostReplies, lostArms)) out->fill(0);
    }
    return true;
  }
  bool flush(QString&) override { return true; }
  qint64 cycles() const override { return 0; }
};

TEST(CoreReader, SendsArmAgainOnlyWhenTheStatusSaysThatItWasLost) {
  const struct { int lostReplies, lostArms, arms; } table[] = {{0, 0, 1}, {1, 0, 1}, {0, 2, 3}};
  const InsertPlan plan = planFromText("probes=1 depth=16 unit=match:0:1 expr=0");
  for (const auto& row : table) {
    ForgetfulTap tap;
    tap.lostReplies = row.lostReplies;
    tap.lostArms = row.lostArms;
    HubLink hub(tap);
    QString error;
    EXPECT_TRUE(CoreReader(hub, plan).arm(0, RunSettings(plan.cores[0]), error)) << plain(error);
    EXPECT_TRUE(tap.arms == row.arms && tap.runs == 1 && tap.tag == 8) << tap.arms << ' ' << tap.runs << ' ' << tap.tag;
  }
}

/// A good block of an INFO command, but with a payload as long as a refusal's.
TEST(HubLink, AReplyIsNoLongerThanItSays) {
  LyingPort port;
  const InsertPlan plan = planFromText("probes=1 depth=16 unit=match:0:1 expr=0");
  const QByteArray flags = numberBits(0x80, kFlagBits);
  const QByteArray text = numberBits(quint64(HubOp::Info), kCommandBits) + flags + QByteArray(17, 0);
  port.block = blockOf(text);
  TapDriver tap(port);
  HubLink hub(tap);
  HubReply reply;
  HubCommand info;
  info.op = HubOp::Info;
  ASSERT_TRUE(readBlock(port.block, 0, 17, info, reply));
  QString error;
  EXPECT_FALSE(CoreReader(hub, plan).identify(error));
  EXPECT_TRUE(has(error, "no debug core"));
}

}  // namespace
}  // namespace ost
