// The dataset's indexed lists and the ownership of cores and projects.
#include "platform/istdata/project.h"

#include <algorithm>

namespace mero {
namespace ostrel {

namespace {

template <class Owner, class Item>
void eraseOwned(std::vector<std::unique_ptr<Owner>>& list, const Item* item) {
  list.erase(std::find_if(list.begin(), list.end(), [item](const auto& owned) { return owned.get() == item; }));
}

}  // namespace

istTU* istDataset::findUnit(const QString& name) const {
  return unitByName_.value(name);
}

ost::TriggerExpression* istDataset::findExpression(const QString& name) const {
  return expressionByName_.value(name);
}

const std::vector<std::unique_ptr<istTU>>& istDataset::units() const {
  if (unitGaps_) {
    units_.erase(std::remove(units_.begin(), units_.end(), nullptr), units_.end());
    for (std::size_t i = 0; i < units_.size(); ++i) units_[i]->place = i;
    unitGaps_ = false;
  }
  return units_;
}

istTU* istDataset::addUnit(ost::TriggerUnit unit) {
  if (unitGaps_ && units_.size() == units_.capacity()) units();
  units_.emplace_back(new istTU{std::move(unit), units_.size()});
  istTU* added = units_.back().get();
  unitByName_.insert(added->unit.name, added);
  return added;
}

void istDataset::renameUnit(istTU* unit, const QString& newName) {
  unitByName_.remove(unit->unit.name);
  unitNames_.released(unit->unit.name);
  const int uses = unitUses_.take(unit->unit.name);
  if (uses > 0) unitUses_.insert(newName, uses);
  unit->unit.name = newName;
  unitByName_.insert(newName, unit);
}

void istDataset::removeUnit(istTU* unit) {
  unitByName_.remove(unit->unit.name);
  unitNames_.released(unit->unit.name);
  units_[unit->place].reset();
  unitGaps_ = true;
}

ost::TriggerExpression* istDataset::addExpression(ost::TriggerExpression expression) {
  for (const QString& unit : expression.units) ++unitUses_[unit];
  expressions_.emplace_back(new ost::TriggerExpression(std::move(expression)));
  ost::TriggerExpression* added = expressions_.back().get();
  expressionByName_.insert(added->name, added);
  return added;
}

void istDataset::renameExpression(ost::TriggerExpression* expression, const QString& newName) {
  expressionByName_.remove(expression->name);
  expressionNames_.released(expression->name);
  expression->name = newName;
  expressionByName_.insert(newName, expression);
}

void istDataset::removeExpression(ost::TriggerExpression* expression) {
  setExpressionText(expression, QString(), QStringList());
  expressionByName_.remove(expression->name);
  expressionNames_.released(expression->name);
  eraseOwned(expressions_, expression);
}

void istDataset::setExpressionText(ost::TriggerExpression* expression, const QString& text, const QStringList& units) {
  for (const QString& unit : expression->units)
    if (--unitUses_[unit] == 0) unitUses_.remove(unit);
  for (const QString& unit : units) ++unitUses_[unit];
  expression->text = text;
  expression->units = units;
}

QStringList istDataset::expressionsUsing(const QString& unitName) const {
  QStringList names;
  if (!unitUses_.contains(unitName)) return names;
  for (const auto& expression : expressions_)
    if (expression->units.contains(unitName)) names << expression->name;
  return names;
}

QString istDataset::freeUnitName() {
  return unitNames_.next([this](const QString& name) { return unitByName_.contains(name); });
}

QString istDataset::freeExpressionName() {
  return expressionNames_.next([this](const QString& name) { return expressionByName_.contains(name); });
}

istProject::istProject() = default;
istProject::~istProject() = default;

ost::Core* istProject::findCore(const QString& coreName) const {
  for (const auto& core : cores)
    if (core->name == coreName) return core.get();
  return nullptr;
}

}  // namespace ostrel
}  // namespace mero

namespace ost {

Core::Core(const QString& coreName) : trace(new TraceTree) {
  name = coreName;
  samplesPerTrigger = options.bufferDepth;
}

Core::~Core() = default;

}  // namespace ost
