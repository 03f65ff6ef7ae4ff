// What the checks of one run share: the growing list of findings, and the core under check with its names resolved.
#pragma once

#include <QElapsedTimer>
#include <QHash>
#include <QPair>

#include "platform/plan/insert_plan.h"
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

/// Bits of the design that names of the core stand for.
struct ResolvedBits {
  QString object;  ///< Object of findings about them: "core c1, unit TU1".
  QVector<NetBit> bits;

  void append(const NetSelection& selection);
};

/// One core under check. The checks run in the order of their declaration; the first two fill the names that the last
/// one looks at.
class CoreCheck {
 public:
  CoreCheck(const Core& core, const Design& design, FindingList& findings, Pulse& pulse);

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
  Pulse& pulse_;
  bool hasClock_ = false;
  NetSelection clock_;
  ResolvedBits traced_;
  QList<ResolvedBits> watched_;  ///< Enables and the signals of units.
};

/// "3 bits", "1 bit".
QString counted(qint64 count, const char* noun);

}  // namespace ost
