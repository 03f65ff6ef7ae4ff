// What the checks of one run share: the growing list of findings, and the core under check with its names resolved.
#pragma once

#include <QHash>
#include <QPair>

#include "platform/rules/rule_table.h"

namespace ost {

/// Findings of one rule that are shown one by one; the rest is counted.
constexpr int kShownFindingsOfARule = 20;

class FindingList {
 public:
  /// Words in angle brackets of the way out and what they stand for: {"<core>", "c1"}.
  using Fills = QList<QPair<QString, QString>>;

  void add(DesignRule rule, const QString& object, const QString& text, const Fills& fills = {});
  /// True while another finding of the rule would be shown: texts that cost time are worth making.
  bool isShown(DesignRule rule) const { return counts_.value(int(rule)) < kShownFindingsOfARule; }

  const QList<Finding>& findings() const { return findings_; }

 private:
  QList<Finding> findings_;
  QHash<int, int> counts_;
};

/// One name of the core that stands for nets of the design.
struct ResolvedName {
  QString object;  ///< Object of findings about it: "core c1, unit TU1".
  NetSelection selection;
};

/// One core under check. The checks run in the order of their declaration; the first two fill the names that the last
/// one looks at.
class CoreCheck {
 public:
  CoreCheck(const Core& core, const Design& design, FindingList& findings);

  void checkSampling();  ///< Clock, enables, traced signals, capture settings.
  void checkUnits();
  void checkExpressions() const;
  void checkMemory() const;
  void checkNets(const Netlist& netlist) const;

  /// Memory that the buffer asks for: samples times bits of a stored sample, as far as names resolve.
  qint64 bufferBits() const { return qint64(bufferedSamples()) * sampleBits(); }

 private:
  int sampleBits() const;
  int bufferedSamples() const;
  void checkSampleClock();
  void checkTracedSignals();
  void checkEnable(bool on, const QString& signal, const char* title, const char* option);
  void checkCaptureSettings() const;
  void checkUnit(const TriggerUnit& unit);
  void checkExpression(const TriggerExpression& expression) const;

  /// "core c1" or "core c1, unit TU1".
  QString object(const QString& part = QString()) const;
  void report(DesignRule rule, const QString& part, const QString& text, const FindingList::Fills& fills = {}) const;
  /// Reports that `name` is not in the design, with its nearest names.
  void reportVanished(DesignRule rule, const QString& part, const QString& title, const QString& name,
                      const FindingList::Fills& fills = {}) const;

  const Core& core_;
  const Design& design_;
  FindingList& findings_;
  bool hasClock_ = false;
  NetSelection clock_;
  QList<ResolvedName> traced_;
  QList<ResolvedName> watched_;  ///< Enables and the signals of units.
};

/// "3 bits", "1 bit".
QString counted(qint64 count, const char* noun);

}  // namespace ost
