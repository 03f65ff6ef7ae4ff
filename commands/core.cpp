// `ost_core`: the debug cores of a project, the active core, and the presence of Wishbone master and serdes core.
#include "commands/handlers.h"
#include "framework/command_call.h"
#include "framework/text.h"

using mero::ostrel::IstComData;
using mero::ostrel::istCore;
using namespace ost_command;

/// `ost_core list`
///
/// Result: the core names in project order. Works while the project is busy.
OST_HANDLER(ost_list_core) {
  CommandCall call(clientData, interp, argc, argv);
  if (!call.contextIsValid()) return TCL_ERROR;
  if (!call.projectIsOpen()) return TCL_ERROR;
  if (call.wordCount() >= 2) return call.usageError();

  const QStringList names = call.service().getCoreNameList();
  if (names.isEmpty()) call.setResultLiteral("");
  for (int i = 0; i < names.size(); ++i) Tcl_AppendElement(interp, names.at(i).toLatin1().constData());
  return TCL_OK;
}

/// `ost_core add <name>`
///
/// Result: the core's name as the service made it.
OST_HANDLER(ost_add_core) {
  CommandCall call(clientData, interp, argc, argv);
  if (!call.contextIsValid()) return TCL_ERROR;
  if (!call.projectIsOpen()) return TCL_ERROR;
  if (!call.projectIsIdle()) return TCL_ERROR;
  if (!call.hasExactlyWords(1)) return TCL_ERROR;

  QString message;
  const istCore* core = call.service().addCore(toService(call.word(1)), message);
  call.showServiceText(message, "\n");
  if (!core) return call.failNumbered("0110");
  call.setResult(core->name);
  return TCL_OK;
}

/// `ost_core delete <name>`
///
/// Result: empty. The service's text is not shown.
OST_HANDLER(ost_del_core) {
  CommandCall call(clientData, interp, argc, argv);
  if (!call.contextIsValid()) return TCL_ERROR;
  if (!call.projectIsOpen()) return TCL_ERROR;
  if (!call.projectIsIdle()) return TCL_ERROR;
  if (!call.hasExactlyWords(1)) return TCL_ERROR;

  QString message;
  if (!call.service().deleteCore(toService(call.word(1)), message)) return call.failNumbered("0110");
  call.setResultLiteral("");
  return TCL_OK;
}

/// `ost_core rename <name> <new name>`
///
/// Result: the new name as typed. The service's text is not shown.
OST_HANDLER(ost_ren_core) {
  CommandCall call(clientData, interp, argc, argv);
  if (!call.contextIsValid()) return TCL_ERROR;
  if (!call.projectIsOpen()) return TCL_ERROR;
  if (!call.projectIsIdle()) return TCL_ERROR;
  if (!call.hasExactlyWords(2)) return TCL_ERROR;

  QString message;
  if (!call.service().renameCore(toService(call.word(1)), toService(call.word(2)), message))
    return call.failNumbered("0113");
  call.setResult(std::string(call.word(2)));
  return TCL_OK;
}

/// `ost_core select [<name>]`
///
/// Result: the active core's name. A core that the service does not want to select is refused without a word.
OST_HANDLER(ost_select_core) {
  CommandCall call(clientData, interp, argc, argv);
  if (!call.contextIsValid()) return TCL_ERROR;
  if (!call.projectIsOpen()) return TCL_ERROR;
  if (!call.projectIsIdle()) return TCL_ERROR;
  if (call.wordCount() == 1) {
    call.setResult(call.service().getActiveCoreName());
    return TCL_OK;
  }
  if (!call.hasExactlyWords(1)) return TCL_ERROR;

  const QString name = toService(call.word(1));
  const istCore* core = call.service().getCore(name);
  if (!core) return call.failNumbered("0112", call.word(1));
  const std::string storedName = fromService(core->name);  // selecting may replace the core object
  if (!call.service().selectCore(name)) return TCL_ERROR;
  call.setResult(storedName);
  return TCL_OK;
}

namespace {

/// An operation that adds or removes one of the project's optional cores.
struct OptionalCoreChange {
  bool (IstComData::*operation)(QString& message);
  const char* failureCode;
  bool showsServiceText;  ///< The removals keep the service's text to themselves.
};

int changeOptionalCore(CommandCall& call, const OptionalCoreChange& change) {
  if (!call.contextIsValid()) return TCL_ERROR;
  if (!call.projectIsOpen()) return TCL_ERROR;
  if (!call.projectIsIdle()) return TCL_ERROR;
  if (!call.hasExactlyWords(0)) return TCL_ERROR;

  QString message;
  const bool changed = (call.service().*change.operation)(message);
  if (change.showsServiceText) call.showServiceText(message, "\n");
  return changed ? TCL_OK : call.failNumbered(change.failureCode);
}

}  // namespace

/// `ost_core add_wishbone`
OST_HANDLER(ost_add_wishbone) {
  CommandCall call(clientData, interp, argc, argv);
  return changeOptionalCore(call, {&IstComData::addWishboneMaster, "0114", true});
}

/// `ost_core del_wishbone`
OST_HANDLER(ost_del_wishbone) {
  CommandCall call(clientData, interp, argc, argv);
  return changeOptionalCore(call, {&IstComData::deleteWishboneMaster, "0115", false});
}

/// `ost_core add_serdes`
OST_HANDLER(ost_add_serdes) {
  CommandCall call(clientData, interp, argc, argv);
  return changeOptionalCore(call, {&IstComData::addSerdesCore, "0166", true});
}

/// `ost_core del_serdes`
OST_HANDLER(ost_del_serdes) {
  CommandCall call(clientData, interp, argc, argv);
  return changeOptionalCore(call, {&IstComData::deleteSerdesCore, "0167", false});
}
