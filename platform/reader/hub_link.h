// Commands and replies of the debug hub over a TAP, repeated until the reply is correct.
#pragma once

#include "platform/jtag/tap.h"
#include "platform/reader/hub_frame.h"

namespace ost {

/// IDCODE of the hub's own TAP (platform/rtl/ostrel_jtag.v).
constexpr quint32 kHubIdcode = 0x1057AAFF;

class HubLink {
 public:
  /// `tap` must outlive it; `instruction` selects the hub's data register.
  explicit HubLink(Tap& tap, TapInstruction instruction = {}) : tap_(tap), instruction_(instruction) {}

  /// Resets the TAP and selects the hub. False when no TAP responds.
  bool open(QString& error);

  /// Sends a command and reads its reply, repeating both on errors, kAttempts times at most. A refusal is a reply like
  /// any other, but its payload has `refusalBits` bits.
  bool command(const HubCommand& command, const QByteArray& payload, int payloadBits, int refusalBits, HubReply& reply,
               QString& error);
  /// Reads the reply to `last` once more; sends the command again only when that fails.
  bool look(const HubCommand& last, int payloadBits, HubReply& reply, QString& error);
  /// Sends `command` once without reading the reply. For commands that must not be repeated blindly.
  bool send(const HubCommand& command, const QByteArray& payload, QString& error);
  /// Reads `bits` bits of the reply's blocks in one scan.
  bool scanReply(int bits, QByteArray& reply, QString& error);
  bool idle(int cycles, QString& error) { return tap_.idle(cycles, error); }
  /// Brings the TAP back to a known state after a disturbed scan.
  bool recover(QString& error);

  int retries() const { return retries_; }
  void countRetry() { ++retries_; }
  /// Whether a command was given up because no attempt got a correct reply, while the port itself works.
  bool isUnusable() const { return unusable_; }
  qint64 cycles() const { return tap_.cycles(); }
  int longestScan() const { return tap_.longestScan(); }

  static constexpr int kAttempts = 24;  ///< Of one command before the line counts as unusable.

 private:
  Tap& tap_;
  TapInstruction instruction_;
  int retries_ = 0;
  bool unusable_ = false;
};

/// The text for a line on which kAttempts attempts failed.
QString unusableLineText(const char* what);

}  // namespace ost
