// Commands are text that the byte 0x1A ends, and so are their results. The port does not tell results from errors, so
// each script tells it itself. Scripts hold numbers and names of TAPs only, and these are looked at.
#include "platform/jtag/openocd.h"

#include <QStringList>

#include "platform/jtag/answers.h"

namespace ost {
namespace {

constexpr char kEnd = 0x1A;
constexpr int kLongestResult = 1 << 20;
constexpr int kMostTaps = 256;
/// OpenOCD 0.12 took 200,000 bits in one scan. A slow cable should not be silent for long, though.
constexpr int kLongestScan = 16384;
constexpr int kKeepAtMost = 1 << 15;  ///< Bytes kept before they are sent without being asked for.
constexpr int kScanOverhead = 8;      ///< TCK cycles from Run-Test/Idle to Shift-DR and back, about.

bool isPlainName(const QByteArray& name) {
  for (const char c : name)
    if (!((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '.' ||
          c == '-'))
      return false;
  return !name.isEmpty() && name[0] != '-';
}

/// The digits of a number whose lowest bit is the first one shifted.
QByteArray hexOf(const QByteArray& bits) {
  QByteArray digits;
  for (int first = (bits.size() - 1) / 4 * 4; first >= 0; first -= 4) {
    int digit = 0;
    for (int i = first; i < qMin(first + 4, bits.size()); ++i) digit |= bits[i] << (i - first);
    digits += "0123456789abcdef"[digit];
  }
  return digits;
}

/// Appends `count` bits; false when `digits` are no number of so many bits.
bool appendBits(const QByteArray& digits, int count, QByteArray& bits) {
  if (digits.isEmpty() || digits.size() > (count + 3) / 4) return false;
  for (int i = 0; i < count; ++i) {
    const int place = digits.size() - 1 - i / 4;
    bool isDigit = true;
    const int digit = place < 0 ? 0 : digits.mid(place, 1).toInt(&isDigit, 16);
    if (!isDigit) return false;
    bits += static_cast<char>(digit >> i % 4 & 1);
  }
  return true;
}

}  // namespace

int OpenOcdTap::longestScan() const {
  return kLongestScan;
}

bool OpenOcdTap::evaluate(const QByteArray& script, bool& good, QByteArray& text, QString& error) {
  TextAnswer answer(kEnd, kLongestResult);
  const QByteArray whole = std::exchange(kept_, QByteArray()) + script;
  const QByteArray request = "format {%d %s} [catch {" + whole + "} ostrel_result] $ostrel_result" + kEnd;
  if (!connection_.exchange(request, &answer, error)) return false;
  good = answer.text().startsWith("0 ");
  text = answer.text().mid(2);
  return good || answer.text().startsWith("1 ") ||
         connection_.fail(QStringLiteral("it answered \"%1\" to a command; is it the Tcl port of OpenOCD?")
                              .arg(quotable(answer.text())),
                          error);
}

bool OpenOcdTap::mustEvaluate(const QByteArray& script, QByteArray& text, QString& error) {
  bool good = false;
  return evaluate(script, good, text, error) &&
         (good || connection_.fail(QStringLiteral("OpenOCD says \"%1\"").arg(quotable(text)), error));
}

bool OpenOcdTap::open(const QString& name, quint32 idcode, QString& error) {
  QByteArray list;
  if (!mustEvaluate("jtag names", list, error)) return false;
  QList<QByteArray> fitting, all;
  QStringList shown;
  for (const QByteArray& tap : list.simplified().split(' ')) {
    if (!isPlainName(tap) || all.size() == kMostTaps) continue;
    bool known = false;
    QByteArray code;
    if (!evaluate("jtag cget " + tap + " -idcode", known, code, error)) return false;
    const quint32 value = known ? quint32(code.trimmed().toLongLong()) : 0;
    all += tap;
    if (name.isEmpty() ? value == idcode : QString::fromLatin1(tap) == name) fitting += tap;
    shown += QStringLiteral("%1 (IDCODE 0x%2)").arg(QString::fromLatin1(tap)).arg(value, 8, 16, QLatin1Char('0'));
  }
  if (name.isEmpty() && fitting.isEmpty() && all.size() == 1) fitting = all;
  if (fitting.size() == 1) {
    tap_ = fitting[0];
    return true;
  }
  const QString taps = shown.isEmpty() ? QStringLiteral("It has no TAP; add \"jtag newtap\" to its configuration.")
                                       : QStringLiteral("Its TAPs: %1.").arg(shown.join(QLatin1String(", ")));
  const QString what = name.isEmpty()
                           ? QStringLiteral("which TAP is meant is not clear; name it as openocd:HOST:PORT/TAP.")
                           : QStringLiteral("there is no TAP \"%1\".").arg(name);
  return connection_.fail(what + QLatin1Char(' ') + taps, error);
}

bool OpenOcdTap::select(const TapInstruction& instruction, bool& answers, QString& error) {
  // A reset is for a disturbed line only: it costs others that share the cable their instructions.
  const QByteArray reset = std::exchange(selected_, true) ? "catch {jtag arp_init}; " : "";
  QByteArray text;
  idleCycles_ = 0;
  cycles_ += instruction.width + kScanOverhead;
  // OpenOCD looks at what the instruction registers captured.
  return evaluate(reset + "irscan " + tap_ + " 0x" + QByteArray::number(instruction.code, 16), answers, text, error);
}

bool OpenOcdTap::idle(int cycles, QString&) {
  idleCycles_ += cycles;
  return true;
}

bool OpenOcdTap::scanData(const QByteArray& in, QByteArray* out, QString& error) {
  if (idleCycles_ > 0) kept_ += "runtest " + QByteArray::number(idleCycles_) + "; ";
  cycles_ += idleCycles_ + in.size() + kScanOverhead;
  idleCycles_ = 2;
  const QByteArray scan = "drscan " + tap_ + ' ' + QByteArray::number(in.size()) + " 0x" + hexOf(in);
  QByteArray digits;
  if (!out) {
    kept_ += scan + "; ";
    return (kept_.size() < kKeepAtMost && !connection_.isBroken()) || mustEvaluate("", digits, error);
  }
  if (!mustEvaluate(scan, digits, error)) return false;
  return appendBits(digits.trimmed(), in.size(), *out) ||
         connection_.fail(
             QStringLiteral("OpenOCD answered \"%1\" to a scan of %2 bits").arg(quotable(digits)).arg(in.size()),
             error);
}

bool OpenOcdTap::flush(QString& error) {
  QByteArray text;
  if (idleCycles_ > 0) kept_ += "runtest " + QByteArray::number(idleCycles_) + "; ";
  cycles_ += std::exchange(idleCycles_, 0);
  return kept_.isEmpty() || mustEvaluate("", text, error);
}

}  // namespace ost
