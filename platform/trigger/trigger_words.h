// The operators and radices of trigger units, and the words that stand for them.
#pragma once

#include <QString>
#include <QStringList>

namespace ost {

enum class Operator { Equal, NotEqual, Greater, GreaterEqual, Less, LessEqual, RisingEdge, FallingEdge, SerialCompare };
enum class Radix { Bin = 0, Oct = 1, Dec = 2, Hex = 3 };

/// Operators as typed ("==", ".RE.", ...; the lettered ones in any case), radices as the service spells them ("Bin").
bool operatorFromText(const QString& text, Operator& op);
QString operatorText(Operator op);
/// The words of the radices, in the order of the enumeration.
const QStringList& radixWords();
bool radixFromText(const QString& text, Radix& radix);
QString radixText(Radix radix);

}  // namespace ost
