// Values of trigger units: digits of a radix against the width of the compared signals.
#pragma once

#include <QByteArray>
#include <QString>

#include "platform/istdata/project_model.h"

namespace ost {

constexpr int kMaxSerialPattern = 256;  ///< Samples of a .SC. pattern.

/// Operators as typed ("==", ".RE.", ...; the lettered ones in any case), radices as the service spells them ("Bin").
bool operatorFromText(const QString& text, Operator& op);
QString operatorText(Operator op);
bool radixFromText(const QString& text, Radix& radix);
QString radixText(Radix radix);

/// The value of a unit of `width` bits as bits, least significant first: `value` and `mask` get one '0'/'1' character
/// a bit (mask '0' = don't-care). For .RE./.FE. the digits are the mask of watched bits; for .SC. (width 1) the digits
/// are the pattern, leftmost the oldest sample, and both arrays are as long as the pattern with the newest sample
/// first. False with the reason in `error`.
bool parseUnitValue(Operator op, Radix radix, const QString& digits, int width, QByteArray& value, QByteArray& mask,
                    QString& error);

}  // namespace ost
