// The language of trigger expressions: Boolean combinations of trigger units and sequences of such steps.
//
//   expression = step { "->" step }          each step is looked for from the sample after the one before was met
//   step       = or [ "*" count ]            the step is met at the count-th sample (not necessarily consecutive)
//                                            at which its combination holds; count is decimal, 1 to 65536
//   or         = xor { "|" xor }
//   xor        = and { "^" and }
//   and        = unary { "&" unary }
//   unary      = "!" unary | "(" or ")" | unit
//   unit       = letter or "_" { letter | digit | "_" }
//
// "&&" and "||" are accepted for "&" and "|". Blanks separate tokens and are otherwise ignored.
#pragma once

#include <QByteArray>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVector>

namespace ost {

constexpr int kMaxExpressionNesting = 64;    ///< Parentheses and "!" inside one another.
constexpr int kMaxExpressionUnits = 12;      ///< Different units in one expression: its truth table has 2^units rows.
constexpr int kMaxExpressionLength = 65535;  ///< Characters.
constexpr int kMaxSequenceDepth = 16;
constexpr int kMaxEventCount = 65536;

struct ParsedStep {
  QByteArray truthTable;  ///< 2^units characters '0'/'1' over ParsedExpression::units; unit i at bit i of the index.
  int count = 1;
};

struct ParsedExpression {
  QStringList units;  ///< Different unit names, in order of first use.
  QVector<ParsedStep> steps;
};

/// Parses `text`. False with a reason in `error` that names the column (from 1) and what was expected there.
bool parseTriggerExpression(const QString& text, ParsedExpression& expression, QString& error);

/// Different words of `text`, which need not be well formed, that look like names of units.
QSet<QString> unitNamesIn(const QString& text);

/// `text` with every use of the unit `oldName` replaced by `newName`; everything else stays as written.
QString renameUnitInExpression(const QString& text, const QString& oldName, const QString& newName);

}  // namespace ost
