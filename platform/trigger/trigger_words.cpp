// The table of operators and the words of radices.
#include "platform/trigger/trigger_words.h"

namespace ost {

namespace {

struct OperatorName {
  Operator op;
  const char* text;
};

const OperatorName kOperators[] = {
    {Operator::Equal, "=="},        {Operator::NotEqual, "!="},      {Operator::Greater, ">"},
    {Operator::GreaterEqual, ">="}, {Operator::Less, "<"},           {Operator::LessEqual, "<="},
    {Operator::RisingEdge, ".RE."}, {Operator::FallingEdge, ".FE."}, {Operator::SerialCompare, ".SC."},
};

}  // namespace

bool operatorFromText(const QString& text, Operator& op) {
  for (const OperatorName& entry : kOperators) {
    if (text.compare(QLatin1String(entry.text), Qt::CaseInsensitive) != 0) continue;
    op = entry.op;
    return true;
  }
  return false;
}

QString operatorText(Operator op) {
  return QLatin1String(kOperators[int(op)].text);
}

const QStringList& radixWords() {
  static const QStringList words{QStringLiteral("Bin"), QStringLiteral("Oct"), QStringLiteral("Dec"),
                                 QStringLiteral("Hex")};
  return words;
}

bool radixFromText(const QString& text, Radix& radix) {
  const int place = radixWords().indexOf(text);
  if (place >= 0) radix = Radix(place);
  return place >= 0;
}

QString radixText(Radix radix) {
  return radixWords()[int(radix)];
}

}  // namespace ost
