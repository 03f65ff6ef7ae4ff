// Checks that typed words and project files share: net names as text, units, expressions and option values.
#pragma once

#include "platform/istdata/project.h"

namespace ost {

/// A net name as text: not empty, at most kMaxNetNameLength, valid UTF-8 without control characters.
ISTDATA_API bool checkNetName(const QString& name, QString& error);

/// The digits of a unit without regard to the width and type of its signals; empty digits are allowed (not given yet),
/// and so is what may be the name of a value.
ISTDATA_API bool checkUnitDigits(const TriggerUnit& unit, QString& error);

/// Parses `text` into the expression's text and units; every unit must be in the dataset. Empty text is allowed.
ISTDATA_API bool setExpressionText(const mero::ostrel::istDataset& dataset, const QString& text,
                                   TriggerExpression& expression, int& steps, int& largestCount, QString& error);

/// Brings the numbers that depend on the buffer depth back into their ranges. The remarks say which
/// settings in use were changed.
ISTDATA_API QStringList fitToBufferDepth(Core& core);

}  // namespace ost
