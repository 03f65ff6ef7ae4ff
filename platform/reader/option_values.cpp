// What the words after options mean.
#include "platform/reader/option_values.h"

namespace ost {

bool wrongValue(const QString& option, const QString& value, const char* must, QString& error) {
  error = QStringLiteral("Bad value \"%1\" for \"%2\"; it must be %3.").arg(value, option, QLatin1String(must));
  return false;
}

bool parseCount(const QString& option, const QString& value, int& count, QString& error) {
  bool isNumber = false;
  count = value.toInt(&isNumber);
  return (isNumber && count >= 1) || wrongValue(option, value, "a number of at least 1", error);
}

bool parseRepeats(const QString& option, const QString& value, int& count, QString& error) {
  bool isNumber = false;
  count = value.toInt(&isNumber);
  return (isNumber && count >= 0) || wrongValue(option, value, "a number of captures, or 0", error);
}

bool parseRange(const QString& option, const QString& value, ViewChoice& view, QString& error) {
  const int colon = value.indexOf(QLatin1Char(':'));
  bool fromGood = false, toGood = false;
  view.from = value.left(colon).toInt(&fromGood);
  view.to = value.mid(colon + 1).toInt(&toGood);
  view.hasRange = colon > 0 && fromGood && toGood && view.from <= view.to;
  return view.hasRange ||
         wrongValue(option, value, "FROM:TO, samples counted from the trigger, for example -20:99", error);
}

bool parseRadix(const QString& option, const QString& value, ViewChoice& view, QString& error) {
  view.hasRadix = radixFromText(value, view.radix);
  return view.hasRadix || wrongValue(option, value, "Bin, Oct, Dec or Hex", error);
}

bool parseInstruction(const QString& option, const QString& value, TapInstruction& instruction, QString& error) {
  const int colon = value.indexOf(QLatin1Char(':'));
  bool widthGood = false, codeGood = false;
  instruction.width = value.left(colon).toInt(&widthGood);
  instruction.code = value.mid(colon + 1).toUInt(&codeGood, 0);
  const bool good = colon > 0 && widthGood && codeGood && instruction.width >= 2 && instruction.width <= 32 &&
                    (quint64(instruction.code) >> instruction.width) == 0;
  return good || wrongValue(option, value, "WIDTH:CODE, for example 4:2 or 6:0x23", error);
}

bool parseSeconds(const QString& option, const QString& value, double& seconds, QString& error) {
  const bool milli = value.endsWith(QLatin1String("ms"));
  const int unit = milli ? 2 : value.endsWith(QLatin1Char('s')) ? 1 : 0;
  bool isNumber = false;
  seconds = value.left(value.size() - unit).toDouble(&isNumber) * (milli ? 0.001 : 1);
  return (isNumber && seconds > 0 && seconds <= 1e6) ||
         wrongValue(option, value, "a number of seconds above 0, for example 5, 5s or 200ms", error);
}

bool parseServe(const QString& option, const QString& value, ServerAddress::Protocol& protocol, int& port,
                QString& error) {
  bool isNumber = false;
  protocol = value.startsWith(QLatin1String("xvc:")) ? ServerAddress::Xvc : ServerAddress::RemoteBitbang;
  port = protocol == ServerAddress::Xvc || value.startsWith(QLatin1String("tcp:")) ? value.mid(4).toInt(&isNumber) : -1;
  return (isNumber && port >= 0 && port <= 65535) ||
         wrongValue(option, value, "tcp:PORT or xvc:PORT, for example tcp:3335", error);
}

bool parsePlace(const QString& option, const QString& value, ChainPlace& place, QString& error) {
  const int colon = value.indexOf(QLatin1Char(':'));
  bool aheadGood = false, behindGood = false;
  place.ahead = value.left(colon).toInt(&aheadGood);
  place.behind = value.mid(colon + 1).toInt(&behindGood);
  const bool good = colon > 0 && aheadGood && behindGood && qMin(place.ahead, place.behind) >= 0 &&
                    qMax(place.ahead, place.behind) <= 1000;
  return good || wrongValue(option, value, "AHEAD:BEHIND, two numbers of devices", error);
}

}  // namespace ost
