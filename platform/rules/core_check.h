// What the checks of one run share: the growing list of findings, and the core under check with its names resolved.
#pragma once

#include <QElapsedTimer>
#include <QHash>
#include <QPair>

#include "platform/plan/resolved_core.h"
#include "platform/rules/rule_table.h"

namespace ost {

/// Findings of one rule that are shown one by one; the rest is counted.
constexpr int kShownFindingsOfARule = 20;

/// Serves the caller of a check now and then: one beat for each small step of a long loop.
class Pulse {
 public:
  explicit Pulse(const std::function<bool()>& idle) : idle_(idle) { clock_.start(); }
  /// False from when the caller wants no more.
  bool beat() {
    if (goesOn_ && idle_ && ++steps_ % 64 == 0 && clock_.elapsed() >= kMilliseconds) {
      goesOn_ = idle_();
      clock_.start();
    }
    return goesOn_;
  }

 private:
  static constexpr int kMilliseconds = 50;
  const std::function<bool()>& idle_;
  QElapsedTimer clock_;
  unsigned steps_ = 0;
  bool goesOn_ = true;
};

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

/// One core under check. `resolved` and what it points to outlive the check.
class CoreCheck {
 public:
  CoreCheck(const ResolvedCore& resolved, const Design& design, FindingList& findings, Pulse& pulse);

  void checkSampling() const;  ///< Clock, enables, traced signals, capture settings.
  void checkUnits() const;
  void checkExpressions() const;
  void checkMemory() const;
  void checkNets(const Netlist& netlist) const;

  /// Memory that the buffer asks for: samples times bits of a stored sample, as far as names resolve.
  qint64 bufferBits() const { return qint64(bufferedSamples()) * sampleBits(); }

 private:
  int sampleBits() const;
  int bufferedSamples() const;
  void checkSampleClock() const;
  void checkTracedSignals() const;
  void checkEnable(bool on, const ResolvedName& signal, const char* title, const char* option) const;
  void checkCaptureSettings() const;
  /// `asked`: the text of what the buffer asks for.
  void checkBlockRam(int samples, int width, const QString& asked) const;
  void checkUnit(const ResolvedUnit& resolved) const;
  void checkExpression(const ResolvedExpression& resolved) const;

  /// The canonical net of the sample clock. False, reported, when it does not run.
  bool findRunningClock(const Netlist& netlist, NetBit& clock) const;

  /// "core c1" or "core c1, unit TU1".
  QString object(const QString& part = QString()) const;
  void report(DesignRule rule, const QString& part, const QString& text, const FindingList::Fills& fills = {}) const;
  /// Reports that `name` is not in the design, with its nearest names.
  void reportVanished(DesignRule rule, const QString& part, const QString& title, const QString& name,
                      const FindingList::Fills& fills = {}, const char* verb = "is") const;
  size_t reportVanishedVector(size_t first) const;

  const ResolvedCore& resolved_;
  const Core& core_;
  const Design& design_;
  FindingList& findings_;
  Pulse& pulse_;
  int tracedBits_ = 0;  ///< That the design has.
};

/// Finds whether the core's enables belong to its sample clock.
void findForeignEnables(const Netlist& netlist, ResolvedCore& core);

/// The limits of what a reader can hold, which count what the plan makes of all names.
void checkPlan(const InsertPlan& plan, FindingList& findings);

/// "3 bits", "1 bit".
QString counted(qint64 count, const char* noun);

}  // namespace ost
