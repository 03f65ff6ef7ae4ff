// `ost_trace`: listing and shaping the tree of a core's trace signals. Signals, buses and positions are checked by the
// service; here they are only split.
#include <QRegExp>

#include "commands/handlers.h"
#include "framework/command_call.h"
#include "framework/text.h"

using mero::ostrel::IstComData;
using mero::ostrel::istTraceData;
using mero::ostrel::TraceNode;
using namespace ost_command;

namespace {

/// Appends `nodes` to the list in `list`: a signal or reference is its text, a bus is {name = {members}}.
void listTraceNodes(const QList<TraceNode*>& nodes, Tcl_DString* list) {
  const int count = nodes.size();
  for (int i = 0; i < count; ++i) {
    const TraceNode* node = nodes.at(i);
    if (node->kind == mero::ostrel::TRACE_NODE_SIGNAL)
      Tcl_DStringAppendElement(list, node->displayName().toLatin1().constData());
    if (node->kind == mero::ostrel::TRACE_NODE_REF)
      Tcl_DStringAppendElement(list, node->target->displayName().toLatin1().constData());
    if (node->kind == mero::ostrel::TRACE_NODE_BUS) {
      Tcl_DStringStartSublist(list);
      Tcl_DStringAppendElement(list, node->name.toLatin1().constData());
      Tcl_DStringAppendElement(list, "=");
      Tcl_DStringStartSublist(list);
      listTraceNodes(node->children, list);
      Tcl_DStringEndSublist(list);
      Tcl_DStringEndSublist(list);
    }
  }
}

/// Splits "Bus<3>" and "Bus<.end.>" into bus and position; any other text stays the position, a name.
void splitPosition(QString& bus, QString& position) {
  if (position.isEmpty()) return;
  const QRegExp suffix(QString::fromLatin1("<(([1-9][0-9]*)|(\\.end\\.))>$"), Qt::CaseInsensitive, QRegExp::RegExp);
  const int start = suffix.indexIn(position, 0);
  if (start < 0) return;
  bus = position.left(start);
  position = suffix.cap(1);
}

typedef bool (IstComData::*PlaceSignals)(istTraceData*, QStringList, QString, QString, QString&);

/// The body of add_sig and move_sig, which differ in the name of the position option and the operation.
int placeTraceSignals(CommandCall& call, const char* positionOption, PlaceSignals place) {
  if (!call.contextIsValid()) return TCL_ERROR;
  if (!call.projectIsOpen()) return TCL_ERROR;
  if (!call.projectIsIdle()) return TCL_ERROR;
  if (!call.declareOption("core").declareOption(positionOption).parse(1, 1)) return TCL_ERROR;
  istTraceData* trace = call.resolveTrace();
  if (!trace) return TCL_ERROR;

  QString bus, position = toService(call.option(positionOption));
  QStringList names;
  if (!splitList(call.value(0), names)) return call.usageError();
  splitPosition(bus, position);

  QString message;
  const bool placed = (call.service().*place)(trace, names, bus, position, message);
  call.showServiceText(message);
  if (!placed) return call.failNumbered("0116");
  call.setResultLiteral("");
  return TCL_OK;
}

}  // namespace

/// `ost_trace list_sig [-core <core>]`
///
/// Result: the tree as a nested list. Works while the project is busy.
OST_HANDLER(ost_list_trace_sig) {
  CommandCall call(clientData, interp, argc, argv);
  if (!call.contextIsValid()) return TCL_ERROR;
  if (!call.projectIsOpen()) return TCL_ERROR;
  if (!call.declareOption("core").parse(0, 0)) return TCL_ERROR;
  const istTraceData* trace = call.resolveTrace();
  if (!trace) return TCL_ERROR;

  Tcl_DString list;
  Tcl_DStringInit(&list);
  listTraceNodes(trace->nodes, &list);
  Tcl_DStringResult(interp, &list);
  Tcl_DStringFree(&list);
  return TCL_OK;
}

/// `ost_trace add_sig [-core <core>] [-insert_at <position>] <signals>`
OST_HANDLER(ost_add_trace_sig) {
  CommandCall call(clientData, interp, argc, argv);
  return placeTraceSignals(call, "insert_at", &IstComData::addTraceSignals);
}

/// `ost_trace move_sig [-core <core>] [-move_to <position>] <signals>`
OST_HANDLER(ost_move_trace_sig) {
  CommandCall call(clientData, interp, argc, argv);
  return placeTraceSignals(call, "move_to", &IstComData::moveTraceSignals);
}

/// `ost_trace del_sig [-core <core>] <signals>`
OST_HANDLER(ost_del_trace_sig) {
  CommandCall call(clientData, interp, argc, argv);
  if (!call.contextIsValid()) return TCL_ERROR;
  if (!call.projectIsOpen()) return TCL_ERROR;
  if (!call.projectIsIdle()) return TCL_ERROR;
  if (!call.declareOption("core").parse(1, 1)) return TCL_ERROR;
  istTraceData* trace = call.resolveTrace();
  if (!trace) return TCL_ERROR;

  QStringList names;
  if (!splitList(call.value(0), names)) return call.usageError();

  QString message;
  const bool removed = call.service().removeTraceSignals(trace, names, message);
  call.showServiceText(message);
  return removed ? TCL_OK : call.failNumbered("0118");
}

/// `ost_trace group [-core <core>] [-bus <bus>] <signals>`
///
/// Result: the bus name as the service left it; without `-bus` the service chooses one.
OST_HANDLER(ost_group_trace_sig) {
  CommandCall call(clientData, interp, argc, argv);
  if (!call.contextIsValid()) return TCL_ERROR;
  if (!call.projectIsOpen()) return TCL_ERROR;
  if (!call.projectIsIdle()) return TCL_ERROR;
  if (!call.declareOption("core").declareOption("bus").parse(1, 1)) return TCL_ERROR;
  istTraceData* trace = call.resolveTrace();
  if (!trace) return TCL_ERROR;

  QString bus = toService(call.option("bus"));
  QStringList names;
  if (!splitList(call.value(0), names)) return call.usageError();

  QString message;
  const bool grouped = call.service().groupTraceSignals(trace, bus, names, message);
  call.showServiceText(message);
  if (!grouped) return call.failNumbered("0119");
  call.setResult(bus);
  return TCL_OK;
}

/// `ost_trace ungroup [-core <core>] <bus>`
///
/// The service's text is the only report of a failure.
OST_HANDLER(ost_ungroup_trace_sig) {
  CommandCall call(clientData, interp, argc, argv);
  if (!call.contextIsValid()) return TCL_ERROR;
  if (!call.projectIsOpen()) return TCL_ERROR;
  if (!call.projectIsIdle()) return TCL_ERROR;
  if (!call.declareOption("core").parse(1, 1)) return TCL_ERROR;
  istTraceData* trace = call.resolveTrace();
  if (!trace) return TCL_ERROR;

  QString message;
  const bool ungrouped = call.service().ungroupTraceSignals(trace, toService(call.value(0)), message);
  call.showServiceText(message);
  return ungrouped ? TCL_OK : TCL_ERROR;
}

/// `ost_trace rename_bus [-core <core>] -bus <bus> <new name>`
///
/// Result: the new name as typed.
OST_HANDLER(ost_rename_trace_bus) {
  CommandCall call(clientData, interp, argc, argv);
  if (!call.contextIsValid()) return TCL_ERROR;
  if (!call.projectIsOpen()) return TCL_ERROR;
  if (!call.projectIsIdle()) return TCL_ERROR;
  if (!call.declareOption("core").declareOption("bus").parse(1, 1)) return TCL_ERROR;
  istTraceData* trace = call.resolveTrace();
  if (!trace) return TCL_ERROR;

  const std::string bus = call.option("bus");
  if (bus.empty()) return call.valueError("-bus", "No valid bus name is specified.");
  const std::string newName = call.value(0);

  QString message;
  const bool renamed = call.service().renameTraceBus(trace, toService(bus), toService(newName), message);
  call.showServiceText(message);
  if (!renamed) return call.failNumbered("0120");
  call.setResult(newName);
  return TCL_OK;
}
