// Retries: whatever fails is sent again after a reset of the TAP, which does not disturb the hub.
#include "platform/reader/hub_link.h"

namespace ost {

QString unusableLineText(const char* what) {
  return QStringLiteral("The JTAG line is too noisy: %1 failed %2 times; lower the TCK rate or shorten the cable.")
      .arg(QLatin1String(what))
      .arg(HubLink::kAttempts);
}

bool HubLink::open(QString& error) {
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    bool answers = false;
    if (!tap_.select(instruction_, answers, error)) return false;
    if (answers) return true;
    ++retries_;
  }
  error = QStringLiteral(
      "No JTAG TAP responds; check that the target is powered, that TCK, TMS, TDI and TDO are connected and that the "
      "instrumented design is loaded.");
  return false;
}

bool HubLink::recover(QString& error) {
  ++retries_;
  bool answers = false;  // On a disturbed line what it captured says little.
  return tap_.select(instruction_, answers, error);
}

bool HubLink::send(const HubCommand& command, const QByteArray& payload, QString& error) {
  return tap_.scanData(writeFrame(command, payload), nullptr, error);
}

bool HubLink::scanReply(int bits, QByteArray& reply, QString& error) {
  reply.clear();
  reply.reserve(bits);
  return tap_.scanData(QByteArray(bits, 0), &reply, error);
}

bool HubLink::command(const HubCommand& command, const QByteArray& payload, int payloadBits, int refusalBits,
                      HubReply& reply, QString& error) {
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    if (attempt > 0 && !recover(error)) return false;
    QByteArray bits;
    if (!send(command, payload, error) || !scanReply(kBlockOverhead + qMax(payloadBits, refusalBits), bits, error))
      return false;
    // The payload has the length of the reply or, only when the command was refused, that of a refusal.
    if (readBlock(bits, 0, payloadBits, command, reply) && (!reply.flags.refused || payloadBits == refusalBits))
      return true;
    if (readBlock(bits, 0, refusalBits, command, reply) && reply.flags.refused) return true;
  }
  unusable_ = true;
  error = unusableLineText("a command");
  return false;
}

bool HubLink::look(const HubCommand& last, int payloadBits, HubReply& reply, QString& error) {
  QByteArray bits;
  if (!scanReply(kBlockOverhead + payloadBits, bits, error)) return false;
  if (readBlock(bits, 0, payloadBits, last, reply)) return true;
  return recover(error) && command(last, QByteArray(), payloadBits, payloadBits, reply, error);
}

}  // namespace ost
