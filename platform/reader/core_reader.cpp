// The hub's commands in the order that docs/debug-core.md requires.
#include "platform/reader/core_reader.h"

#include <chrono>

#include "platform/plan/core_layout.h"

namespace ost {
namespace {

constexpr int kBlocksPerScan = 32;
constexpr int kTableRowsPerFrame = 1024;
/// Status reads before the sample clock counts as stopped, with the idle cycles between them doubling from 8 to 1024:
/// about 5000 cycles of TCK in all, so a sample clock up to a thousand times slower than TCK is still seen.
constexpr int kLooks = 12;

/// Configurations of one arming that may be lost on the line.
constexpr int kLoads = 3;

int idleCycles(int look) {
  return look < 7 ? 8 << look : 1024;
}

bool refuse(QString& error, const QString& text) {
  error = text;
  return false;
}

}  // namespace

bool CoreReader::commandStatus(int core, HubReply& reply, QString& error) {
  HubCommand command;
  command.core = core;
  const int bits = CoreLayout(plan_.cores[core]).statusBits;
  return hub_.command(command, QByteArray(), bits, bits, reply, error);
}

bool CoreReader::status(int core, CoreStatus& status, QString& error) {
  HubReply reply;
  if (!commandStatus(core, reply, error)) return false;
  // A snapshot that was requested before this call may be older than the call, so a second one is requested.
  for (int round = 0; round < 2; ++round) {
    for (int look = 0; look < kLooks && !reply.flags.fresh; ++look) {
      HubCommand command;
      command.core = core;
      if (!hub_.idle(idleCycles(look), error) ||
          !hub_.look(command, CoreLayout(plan_.cores[core]).statusBits, reply, error))
        return false;
    }
    if (!reply.flags.fresh || round > 0) break;
    if (!commandStatus(core, reply, error)) return false;
  }
  status = parseStatus(plan_.cores[core], reply);
  return true;
}

bool CoreReader::stop(int core, QString& error) {
  HubReply reply;
  if (!commandStatus(core, reply, error)) return false;
  if (reply.flags.ready) return true;
  HubCommand command;
  command.op = HubOp::Stop;
  command.core = core;
  const int bits = CoreLayout(plan_.cores[core]).statusBits;
  if (!hub_.command(command, QByteArray(), bits, bits, reply, error)) return false;
  for (int look = 0; look < kLooks && !reply.flags.ready; ++look)
    if (!hub_.idle(idleCycles(look), error) || !commandStatus(core, reply, error)) return false;
  if (reply.flags.ready) return true;
  return refuse(
      error,
      QStringLiteral("The core \"%1\" does not stop because its sample clock \"%2\" is not running; start the clock.")
          .arg(nameOf(core), plan_.cores[core].sampleClock.name));
}

bool CoreReader::loadOne(const HubCommand& command, const QByteArray& payload, int replyBits, QString& error) {
  HubReply reply;
  const int statusBits = CoreLayout(plan_.cores[command.core]).statusBits;
  if (!hub_.command(command, payload, replyBits, statusBits, reply, error)) return false;
  if (!reply.flags.refused && reply.flags.configured) return true;
  return refuse(
      error,
      QStringLiteral("The core \"%1\" refuses its configuration; stop whatever else uses this core and try again.")
          .arg(nameOf(command.core)));
}

bool CoreReader::load(int core, const RunSettings& settings, QString& error) {
  const CoreLayout layout(plan_.cores[core]);
  HubCommand command;
  command.core = core;
  command.op = HubOp::Config;
  if (!loadOne(command, settings.chain(), layout.statusBits, error)) return false;
  command.op = HubOp::Table;
  for (int i = 0; i < layout.expressions.size(); ++i) {
    const ExpressionLayout& expression = layout.expressions[i];
    if (expression.store == TableStore::Chain) continue;
    const QByteArray table = settings.table(i);
    command.tag = i;
    const int rows = expression.rows(), rowBits = expression.steps;
    for (command.address = 0; command.address < rows; command.address += kTableRowsPerFrame) {
      const QByteArray part = table.mid(command.address * rowBits, kTableRowsPerFrame * rowBits);
      command.rows = part.size() / rowBits;
      command.tableRows = rows;
      if (!loadOne(command, part, rowBits, error)) return false;
    }
  }
  return true;
}

bool CoreReader::sendArm(const HubCommand& arm, HubReply& reply, QString& error) {
  const int statusBits = CoreLayout(plan_.cores[arm.core]).statusBits;
  QByteArray bits;
  if (!hub_.send(arm, QByteArray(), error) || !hub_.scanReply(kBlockOverhead + statusBits, bits, error)) return false;
  if (readBlock(bits, 0, statusBits, arm, reply)) return true;
  // Lost on the line, or spoilt by a status that changed inside it.
  return hub_.recover(error) && commandStatus(arm.core, reply, error);
}

bool CoreReader::arm(int core, const RunSettings& settings, QString& error) {
  if (!stop(core, error)) return false;
  // A frame that is damaged on the line leaves the core unconfigured, even after a good reply to an earlier copy, so
  // the configuration is loaded again when it is gone.
  HubReply reply;
  int loads = 0;
  for (int attempt = 0; attempt < HubLink::kAttempts; ++attempt) {
    if (attempt == 0 || reply.flags.refused || !reply.flags.configured) {
      if (++loads > kLoads) break;
      if (!load(core, settings, error)) return false;
    }
    if (!commandStatus(core, reply, error)) return false;
    HubCommand command;
    command.core = core;
    command.op = HubOp::Arm;
    command.tag = (parseStatus(plan_.cores[core], reply).tag + 1) & 0xFF;
    if (!sendArm(command, reply, error)) return false;
    if (reply.flags.armed && parseStatus(plan_.cores[core], reply).tag == command.tag) return true;
  }
  return refuse(error,
                QStringLiteral("The core \"%1\" refuses to be armed; stop whatever else uses this core and try again.")
                    .arg(nameOf(core)));
}

WaitResult CoreReader::waitUntilDone(int core, const WaitLimit& limit, QString& error) {
  const auto start = std::chrono::steady_clock::now();
  const qint64 firstCycle = hub_.cycles();
  HubCommand command;
  command.core = core;
  const int statusBits = CoreLayout(plan_.cores[core]).statusBits;
  HubReply reply;
  if (!commandStatus(core, reply, error)) return WaitResult::Failed;
  for (int look = 0; !reply.flags.done; ++look) {
    const std::chrono::duration<double> waited = std::chrono::steady_clock::now() - start;
    if (waited.count() >= limit.seconds || (limit.cycles > 0 && hub_.cycles() - firstCycle >= limit.cycles))
      return WaitResult::NotYet;
    if (!hub_.idle(idleCycles(look), error) || !hub_.look(command, statusBits, reply, error)) return WaitResult::Failed;
  }
  return WaitResult::Done;
}

bool CoreReader::readWords(int core, int tag, int count, BitTable& words, QString& error) {
  const CoreLayout layout(plan_.cores[core]);
  const int blockBits = kBlockOverhead + layout.blockWords() * layout.wordBits;
  HubCommand command;
  command.op = HubOp::Read;
  command.core = core;
  command.tag = tag;
  int failures = 0, blocksWanted = qBound(1, hub_.longestScan() / blockBits, kBlocksPerScan);
  while (words.rows() < count) {
    command.address = words.rows();
    const int blocks = qMin(blocksWanted, (count - words.rows() + layout.blockWords() - 1) / layout.blockWords());
    QByteArray bits;
    if (!hub_.send(command, QByteArray(), error) || !hub_.scanReply(blocks * blockBits, bits, error)) return false;
    int good = 0;
    HubReply reply;
    for (; good < blocks; ++good) {
      HubCommand block = command;
      block.address += good * layout.blockWords();
      if (!readBlock(bits, good * blockBits, layout.blockWords() * layout.wordBits, block, reply) ||
          reply.flags.refused)
        break;
      for (int i = 0; i < layout.blockWords() && words.rows() < count; ++i)
        words.append(reply.payload.constData() + i * layout.wordBits);
    }
    if (good == blocks) continue;
    if (good == 0 && readBlock(bits, 0, layout.statusBits, command, reply) && reply.flags.refused)
      return refuse(
          error, QStringLiteral("The core \"%1\" has no capture of this run to read; arm it again.").arg(nameOf(core)));
    failures = good == 0 ? failures + 1 : 0;
    if (failures >= HubLink::kAttempts) return refuse(error, unusableLineText("a block of samples"));
    blocksWanted = qMax(1, good);
    if (!hub_.recover(error)) return false;
  }
  return true;
}

bool CoreReader::readOut(int core, const RunSettings& settings, Capture& capture, QString& error) {
  HubReply reply;
  if (!commandStatus(core, reply, error)) return false;
  const CoreStatus status = parseStatus(plan_.cores[core], reply);
  if (!status.flags.done)
    return refuse(
        error,
        QStringLiteral("The core \"%1\" has not completed its capture; wait for it before reading.").arg(nameOf(core)));
  const PlanCore& planned = plan_.cores[core];
  const CoreLayout layout(planned);
  const int samples = planned.windowSamples, sampleBits = planned.sampleBits();
  BitTable words(layout.wordBits);
  if (!readWords(core, status.tag, settings.windows() * samples, words, error)) return false;

  capture.core = settings.core();
  capture.table = BitTable(sampleBits);
  capture.windows.clear();
  QByteArray bits(layout.wordBits, 0);
  for (int window = 0; window < settings.windows(); ++window) {
    const int base = window * samples;
    int oldest = planned.windows == 1 ? status.oldest : 0;
    if (planned.windows > 1) {
      // The lap bit changes where the ring's newest sample is followed by its oldest.
      while (oldest < samples && words.at(base + oldest, sampleBits) == words.at(base, sampleBits)) ++oldest;
      oldest %= samples;
    }
    capture.windows.append({base, samples, settings.position()});
    for (int i = 0; i < samples; ++i) {
      const int row = base + (oldest + i) % samples;
      for (int bit = 0; bit < sampleBits; ++bit) bits[bit] = static_cast<char>(words.at(row, bit));
      capture.table.append(bits.constData());
    }
  }
  return true;
}

}  // namespace ost
