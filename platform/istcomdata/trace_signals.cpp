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

bool refuse(QString& message, const QString& error) {
  message += error + '\n';
  return false;
}

/// The entries that a list names, by patterns, too.
bool findAll(ost::TraceTree& tree, QStringList names, QVector<TraceNode*>& entries, QString& error) {
  return ost::expandTracedPatterns(tree, names, error) && tree.findAll(names, canonicalName, entries, error);
}

bool findBus(ost::TraceTree& tree, const QString& name, TraceNode*& bus, QString& message) {
  bus = tree.findBus(name);
  if (bus) return true;
  const QString hint = tree.find(name) ? QString("; it is a signal") : tree.nearestHint(name);
  return refuse(message, QString("There is no bus %1 in this core%2.").arg(ost::quoted(name), hint));
}

const char kEmptyList[] = "The signal list is empty; name at least one signal.";

}  // namespace

bool IstComData::addTraceSignals(istTraceData* trace, QStringList signalNames, QString bus, QString position,
                                 QString& message) {
  if (!trace) return false;
  ost::TraceTree& tree = *ost::asTree(trace);
  ost::TraceTree::Place place;
  QString error;
  if (signalNames.isEmpty()) return refuse(message, kEmptyList);
  if (!tree.findPlace(bus, position, place, error) || !ost::expandNetPatterns(signalNames, error))
    return refuse(message, error);
  QString remark;
  ost::TraceTree::Addition addition(tree, signalNames.size());
  for (const QString& name : signalNames) {
    ost::NetSelection selection;
    if (!ost::resolveNet(name, selection, error) ||
        !addition.stage(selection.canonicalName, selection.bitNames, selection.isVector, remark, error))
      return refuse(message, error);
  }
  if (!addition.insert(place, error)) return refuse(message, error);
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
  if (signalNames.isEmpty()) return refuse(message, kEmptyList);
  if (!findAll(tree, signalNames, entries, error) || !tree.findPlace(bus, position, place, error) ||
      !tree.move(entries, place, error))
    return refuse(message, error);
  d->markChanged();
  return true;
}

bool IstComData::removeTraceSignals(istTraceData* trace, QStringList signalNames, QString& message) {
  if (!trace) return false;
  ost::TraceTree& tree = *ost::asTree(trace);
  QVector<TraceNode*> entries;
  QString error;
  if (signalNames.isEmpty()) return refuse(message, kEmptyList);
  if (!findAll(tree, signalNames, entries, error)) return refuse(message, error);
  tree.remove(entries);
  d->markChanged();
  return true;
}

bool IstComData::groupTraceSignals(istTraceData* trace, QString& bus, QStringList signalNames, QString& message) {
  if (!trace) return false;
  ost::TraceTree& tree = *ost::asTree(trace);
  QVector<TraceNode*> entries;
  QString error;
  if (!findAll(tree, signalNames, entries, error) || !tree.group(bus, entries, error)) return refuse(message, error);
  d->markChanged();
  return true;
}

bool IstComData::ungroupTraceSignals(istTraceData* trace, const QString& bus, QString& message) {
  TraceNode* node = nullptr;
  if (!trace || !findBus(*ost::asTree(trace), bus, node, message)) return false;
  ost::asTree(trace)->ungroup(node);
  d->markChanged();
  return true;
}

bool IstComData::renameTraceBus(istTraceData* trace, const QString& bus, const QString& newName, QString& message) {
  TraceNode* node = nullptr;
  QString error;
  if (!trace || !findBus(*ost::asTree(trace), bus, node, message)) return false;
  const bool changes = newName != bus;
  if (!ost::asTree(trace)->renameBus(node, newName, error)) return refuse(message, error);
  if (changes) d->markChanged();
  return true;
}

}  // namespace ostrel
}  // namespace mero
