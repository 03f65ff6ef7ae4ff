// The looks of docs/serdes-core.md: numbered by one bit, so that a command whose reply was lost can be sent again.
#include "platform/reader/serdes_reader.h"

namespace ost {
namespace {

/// Replies read until the sample clock counts as stopped, with idle cycles of TCK between them: some 13,000 in all.
constexpr int kReplies = 20;

/// Bits of STATUS' tag.
constexpr int kLook = 2, kRestart = 4;

/// Row `row` of the reply, which has bit 0 of all rows first.
class Row {
 public:
  Row(const PlanSerdes& plan, const HubReply& reply, int row) : rowBits_(plan.rowBits()), reply_(reply), row_(row) {}

  SerdesCount count(int edgeBits) const {
    SerdesCount result;
    for (int i = 0; i < kSerdesCountBits; ++i) result.count |= bit(i) << i;
    result.isFull = result.count >> edgeBits == (1 << (kSerdesCountBits - edgeBits)) - 1;
    return result;
  }
  bool changed() const { return bit(kSerdesCountBits); }
  bool level() const { return bit(kSerdesCountBits + 1); }

 private:
  int bit(int plane) const { return reply_.payload[(plane << rowBits_) + row_]; }

  const int rowBits_;
  const HubReply& reply_;
  const int row_;
};

}  // namespace

bool SerdesReader::waitUntilFresh(const HubCommand& command, HubReply& reply, QString& error) {
  for (int i = 0; i < kReplies && !reply.flags.fresh; ++i)
    if (!hub_.idle(i < 7 ? 8 << i : 1024, error) || !hub_.look(command, plan_.serdes->statusBits(), reply, error))
      return false;
  if (reply.flags.fresh) return true;
  error = QStringLiteral("The sample clock \"%1\" of the serdes core is not running (or is far slower than TCK).")
              .arg(plan_.serdes->clock.name);
  return false;
}

bool SerdesReader::lookOnce(bool restart, SerdesLook& look, QString& error) {
  const PlanSerdes& plan = *plan_.serdes;
  HubCommand command;
  command.core = plan_.serdesNumber();
  HubReply reply;
  const int bits = plan.statusBits();
  if (!hub_.command(command, QByteArray(), bits, bits, reply, error) || !waitUntilFresh(command, reply, error))
    return false;
  const bool number = !reply.flags.ready;
  command.tag = kLook | (restart ? kRestart : 0) | int(number);
  if (!hub_.command(command, QByteArray(), bits, bits, reply, error) || !waitUntilFresh(command, reply, error))
    return false;
  if (reply.flags.ready != number) {
    error = QStringLiteral("The serdes core answers another look; stop whatever else reads it and try again.");
    return false;
  }
  look = SerdesLook();
  look.inReset = Row(plan, reply, 0).level();
  look.sampleClocks = qint64(Row(plan, reply, 0).count(plan.edgeBits()).count) * plan.rows();
  look.tck = Row(plan, reply, 1).count(plan.edgeBits());
  for (int i = 0; i < plan.clocks.size(); ++i) look.clocks.append(Row(plan, reply, 2 + i).count(plan.edgeBits()));
  for (int i = 0; i < plan.levels.size(); ++i) {
    const Row row(plan, reply, 2 + plan.clocks.size() + i);
    look.levels.append({row.level(), row.changed(), row.count(plan.edgeBits())});
  }
  return true;
}

bool SerdesReader::read(bool restart, SerdesLook& look, QString& error) {
  SerdesLook before;
  if (!lookOnce(false, before, error) || !hub_.idle(kMeasuredCycles, error) || !lookOnce(restart, look, error))
    return false;
  for (int i = 0; i < look.levels.size(); ++i) look.levels[i].changed |= before.levels[i].changed;
  return true;
}

}  // namespace ost
