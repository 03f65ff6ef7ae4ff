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

/// A good block of an INFO command, but with a payload as long as a refusal's.
TEST(HubLink, AReplyIsNoLongerThanItSays) {
  LyingPort port;
  const InsertPlan plan = planFromText("probes=1 depth=16 unit=match:0:1 expr=0");
  const QByteArray flags = numberBits(0x80, kFlagBits);
  const QByteArray text = numberBits(quint64(HubOp::Info), kCommandBits) + flags + QByteArray(17, 0);
  port.block = text;
  for (int i = kCrcBits - 1; i >= 0; --i) port.block += char(frameCrc(text) >> i & 1);
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
