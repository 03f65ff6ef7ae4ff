// Patterns in lists of names: `u_fifo/*` stands for every name that it fits, as in Tcl's "string match".
#pragma once

#include <QStringList>

#include "platform/istdata/project.h"

namespace ost {

constexpr int kMaxPatternNames = 1000;  ///< That one pattern may stand for.

/// True for a word with "*" or "?" in it; where such a name exists it is still that name and no pattern.
bool isPattern(const QString& word);

/// Replaces each pattern of a list by the nets that it fits, in the order in which `ost_design nets` lists them, but
/// for those that the list has already. A select at its end, `[3]` or `[7:0]`, is taken of each. False when a pattern
/// fits none or too many. Without a design the words stay as they are.
bool expandNetPatterns(QStringList& words, QString& error);

/// The same with the entries of a trace list; the members of a bus that fits come with it.
bool expandTracedPatterns(const mero::ostrel::istTraceData& trace, QStringList& words, QString& error);

/// The same with a list of names; `owner` is what they belong to, for the error.
bool expandPatterns(const QStringList& known, const QString& owner, QStringList& words, QString& error);

}  // namespace ost
