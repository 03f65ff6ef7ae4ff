// What can be set at run time, within the limits of the inserted hardware.
#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>

#include "platform/plan/insert_plan.h"

namespace ost {

/// The settings of one run of a core, at first those of the project; the setters change them or refuse with `error`.
class RunSettings {
 public:
  /// All expressions enabled, the trigger in the middle of the window.
  explicit RunSettings(const PlanCore& core);

  /// `text`: samples before the trigger (0 to windowSamples - 1), or a percentage of the window ("25%").
  bool setPosition(const QString& text, QString& error);
  /// Another operator, within the class of the unit's hardware, and another value, in the unit's radix; a null text
  /// keeps what was set.
  bool setUnit(const QString& unit, const QString& operatorWord, const QString& value, QString& error);
  /// Names of the expressions to enable, separated by commas.
  bool chooseExpressions(const QString& names, QString& error);
  /// Another text for the expression `name`, of its units, steps and counts as the hardware has them.
  bool setExpression(const QString& name, const QString& text, QString& error);
  /// Triggers at the first sample that may trigger, whatever the units see.
  bool triggerNow(QString& error);
  /// Events to the trigger: 1 to the value built in.
  bool setEventCount(int count, QString& error);
  /// Windows to fill: 1 to those built in.
  bool setWindows(int count, QString& error);

  const PlanCore& core() const { return core_; }  ///< The plan with the changed units.
  int position() const { return position_; }
  int windows() const { return windows_; }
  int eventCount() const { return eventCount_; }
  bool isEnabled(int expression) const { return enabled_[expression]; }

  /// Payload of the CONFIG frame.
  QByteArray chain() const;
  /// Rows of an expression's table, for the chain or for TABLE frames.
  QByteArray table(int expression) const;

 private:
  PlanCore core_;
  int position_;
  int windows_;
  int eventCount_;
  QVector<bool> enabled_;
};

}  // namespace ost
