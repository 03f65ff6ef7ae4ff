// Trace signals of a core: names are resolved against the design here, the tree does the rest.
#include "framework/ist_com_data.h"
#include "platform/istcomdata/name_patterns.h"
#include "platform/istcomdata/service_private.h"

namespace mero {
namespace ostrel {

namespace {

/// The design's own spelling of a name, for names that the tree does not know as typed.
QString canonicalName(const QString& name) {
  ost::NetSelection selection;
  QString ignored;
  return ost::resolveNet(name, selection, ignored) ? selection.canonicalName : QString();
}

bool findBus(ost::TraceTree& tree, const QString& name, TraceNode*& bus, QString& error) {
  bus = tree.findBus(name);
  if (bus) return true;
  const QString hint = tree.find(name) ? QStringLiteral("; it is a signal") : tree.nearestHint(name);
  error = QStringLiteral("There is no bus %1 in this core%2.").arg(ost::quoted(name), hint);
  return false;
}

QString emptyList() {
  return QStringLiteral("The signal list is empty; name at least one signal.");
}

/// The entries that a list names, by patterns, too.
bool findAll(ost::TraceTree& tree, QStringList names, QVector<TraceNode*>& entries, QString& error) {
  return ost::expandTracedPatterns(tree, names, error) && tree.findAll(names, canonicalName, entries, error);
}

bool findEntries(ost::TraceTree& tree, const QStringList& names, QVector<TraceNode*>& entries, QString& error) {
  if (!names.isEmpty()) return findAll(tree, names, entries, error);
  error = emptyList();
  return false;
}

}  // namespace

bool IstComData::addTraceSignals(istTraceData* trace, QStringList signalNames, QString bus, QString position,
                                 QString& message) {
  if (!trace) return false;
  ost::TraceTree& tree = *ost::asTree(trace);
  ost::TraceTree::Place place;
  QString error, remark;
  if (signalNames.isEmpty()) return d->fail(ToldBy::Command, emptyList(), message);
  if (!tree.findPlace(bus, position, place, error) || !ost::expandNetPatterns(signalNames, error))
    return d->fail(ToldBy::Command, error, message);
  ost::TraceTree::Addition addition(tree, signalNames.size());
  for (const QString& name : signalNames) {
    ost::NetSelection selection;
    if (!ost::resolveNet(name, selection, error) ||
        !addition.stage(selection.canonicalName, selection.bitNames, selection.isVector, remark, error))
      return d->fail(ToldBy::Command, error, message);
  }
  if (!addition.insert(place, error)) return d->fail(ToldBy::Command, error, message);
  message = remark;
  d->markChanged();
  return true;
}

bool IstComData::moveTraceSignals(istTraceData* trace, QStringList signalNames, QString bus, QString position,
                                  QString& message) {
  if (!trace) return false;
  ost::TraceTree& tree = *ost::asTree(trace);
  QVector<TraceNode*> entries;
  ost::TraceTree::Place place;
  QString error;
  if (!findEntries(tree, signalNames, entries, error) || !tree.findPlace(bus, position, place, error) ||
      !tree.move(entries, place, error))
    return d->fail(ToldBy::Command, error, message);
  d->markChanged();
  return true;
}

bool IstComData::removeTraceSignals(istTraceData* trace, QStringList signalNames, QString& message) {
  if (!trace) return false;
  QVector<TraceNode*> entries;
  QString error;
  if (!findEntries(*ost::asTree(trace), signalNames, entries, error)) return d->fail(ToldBy::Command, error, message);
  ost::asTree(trace)->remove(entries);
  d->markChanged();
  return true;
}

bool IstComData::groupTraceSignals(istTraceData* trace, QString& bus, QStringList signalNames, QString& message) {
  if (!trace) return false;
  ost::TraceTree& tree = *ost::asTree(trace);
  QVector<TraceNode*> entries;
  QString error;
  if (!findAll(tree, signalNames, entries, error) || !tree.group(bus, entries, error))
    return d->fail(ToldBy::Command, error, message);
  d->markChanged();
  return true;
}

bool IstComData::ungroupTraceSignals(istTraceData* trace, const QString& bus, QString& message) {
  TraceNode* node = nullptr;
  QString error;
  if (!trace) return false;
  if (!findBus(*ost::asTree(trace), bus, node, error)) return d->fail(ToldBy::Command, error, message);
  ost::asTree(trace)->ungroup(node);
  d->markChanged();
  return true;
}

bool IstComData::renameTraceBus(istTraceData* trace, const QString& bus, const QString& newName, QString& message) {
  TraceNode* node = nullptr;
  QString error;
  if (!trace) return false;
  if (!findBus(*ost::asTree(trace), bus, node, error) || !ost::asTree(trace)->renameBus(node, newName, error))
    return d->fail(ToldBy::Command, error, message);
  if (newName != bus) d->markChanged();
  return true;
}

}  // namespace ostrel
}  // namespace mero
