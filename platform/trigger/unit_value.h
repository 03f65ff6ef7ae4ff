// Values of trigger units: digits of a radix against the width of the compared signals.
#pragma once

#include <QByteArray>
#include <QString>

#include "platform/text/enum_names.h"
#include "platform/trigger/trigger_words.h"

namespace ost {

constexpr int kMaxSerialPattern = 256;  ///< Samples of a .SC. pattern.
constexpr int kMaxUnitWidth = 4096;     ///< Bits that one unit compares.

/// The value of a unit of `width` bits as bits, least significant first: `value` and `mask` get one '0'/'1' character
/// a bit (mask '0' = don't-care). For .RE./.FE. the digits are the mask of watched bits; for .SC. (width 1) the digits
/// are the pattern, leftmost the oldest sample, and both arrays are as long as the pattern with the newest sample
/// first. False with the reason in `error`.
/// Missing leading digits are zero, or don't-care where the leftmost digit is one; surplus ones must be zero or
/// don't-care.
/// One of `names` stands for its value, with the operators that compare numbers; one that is digits of the radix, too,
/// and of another value, is refused. Without names, digits only.
bool parseUnitValue(Operator op, Radix radix, const QString& digits, int width, QByteArray& value, QByteArray& mask,
                    QString& error, const EnumNames& names = {});

/// True when the text may turn out to be the name of a value once the type of the signals is known.
bool mayNameValue(Operator op, const QString& text);

/// The digits of a radix for bits and mask as parseUnitValue() gives them. False when a don't-care covers only a part
/// of a digit, or the radix has none.
bool formatUnitValue(Radix radix, const QByteArray& value, const QByteArray& mask, QString& digits);

}  // namespace ost
