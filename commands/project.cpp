// `ost_project`: the life of a project (new, open, save, close) and the run of design-rule check and insertion.
#include "commands/handlers.h"
#include "framework/command_call.h"
#include "framework/file_names.h"
#include "framework/text.h"

using namespace ost_command;

/// `ost_project new [-overwrite] [<file>]`
///
/// Result: the file name as given, or "Untitled"; empty after the service refused. A design that cannot be loaded is
/// left to the service to report.
OST_HANDLER(ost_new_project) {
  CommandCall call(clientData, interp, argc, argv);
  if (!call.contextIsValid()) return TCL_ERROR;
  if (!call.declareFlag("overwrite").parse(0, 1)) return TCL_ERROR;

  const std::string fileName = call.value(0);
  if (!call.flag("overwrite") && !fileName.empty() && fileExists(fileName)) return call.failNumbered("0104", fileName);

  QString message;
  if (!call.service().LoadDesign(message)) return TCL_ERROR;

  const bool created =
      fileName.empty() ? call.service().NewProject(message) : call.service().NewProject(toService(fileName), message);
  if (!created) call.printNumbered("0105", fileName);
  call.showServiceText(message);
  if (created) call.service().registerToHDLmanager();
  call.setResult(!created ? std::string() : fileName.empty() ? std::string("Untitled") : fileName);
  return created ? TCL_OK : TCL_ERROR;
}

/// `ost_project open <file>`
///
/// Result: the file name as the service stored it. With a project open, the design is taken as loaded.
OST_HANDLER(ost_open_project) {
  CommandCall call(clientData, interp, argc, argv);
  if (!call.contextIsValid()) return TCL_ERROR;
  if (!call.hasExactlyWords(1)) return TCL_ERROR;

  const std::string fileName = call.word(1);
  QString message;
  if (!call.service().currentProject() && !call.service().LoadDesign(message))
    return call.fail({fromService(message).c_str()});

  const bool opened = call.service().OpenProject(toService(fileName), message);
  call.show(fromService(message));
  if (!opened) return call.failNumbered("0100", fileName);
  call.service().registerToHDLmanager();
  call.setResult(call.service().currentProjectFile());
  return TCL_OK;
}

/// `ost_project save [-overwrite] [<new file>]`
///
/// Result: empty. The service's text is not shown. An untitled project takes any new name, existing file or not.
OST_HANDLER(ost_save_project) {
  CommandCall call(clientData, interp, argc, argv);
  if (!call.contextIsValid()) return TCL_ERROR;
  if (!call.projectIsOpen()) return TCL_ERROR;
  if (!call.declareFlag("overwrite").parse(0, 1)) return TCL_ERROR;

  const std::string newName = call.value(0);
  const std::string currentName = fromService(call.service().currentProjectFile());
  if (!call.flag("overwrite") && !newName.empty() && !currentName.empty() &&
      isAnotherExistingFile(newName, currentName))
    return call.failNumbered("0104", newName);

  QString message;
  const bool saved =
      newName.empty() ? call.service().SaveProject(message) : call.service().SaveProjectAs(toService(newName), message);
  if (!saved) return call.failNumbered("0106");
  call.setResultLiteral("");
  return TCL_OK;
}

/// `ost_project close [-force]`
///
/// The words are checked before the project, and an absent project is a catalogue message here.
OST_HANDLER(ost_close_project) {
  CommandCall call(clientData, interp, argc, argv);
  if (!call.contextIsValid()) return TCL_ERROR;
  if (!call.declareFlag("force").parse(0, 0)) return TCL_ERROR;
  if (!call.service().currentProject()) return call.failNumbered("0101");
  if (!call.projectIsIdle()) return TCL_ERROR;
  if (!call.flag("force") && call.service().isProjChanged()) return call.failNumbered("0102");
  if (!call.service().CloseProject()) return call.failNumbered("0103");
  call.service().unregisterToHDLmanager();
  return TCL_OK;
}

namespace {

/// Enables the cores named by `-insert_core`, or all. An unknown name is reported and does not stop the run.
void chooseCores(const CommandCall& call) {
  const std::vector<std::string>& names = call.repeatedOption("insert_core");
  call.service().EnableAllCores(names.empty());
  for (const std::string& name : names)
    if (!call.service().EnableCore(toService(name), true)) call.printNumbered("0107", name);
}

/// Saves as `-save` and `-saveAs` ask; `-saveAs` wins. Unlike `ost_project save`, an untitled project does not
/// overwrite another existing file either.
bool saveBeforeRun(const CommandCall& call) {
  const bool save = call.flag("save");
  const std::string saveAs = call.option("saveAs");
  if (!save && saveAs.empty()) return true;

  const std::string currentName = fromService(call.service().currentProjectFile());
  QString message;
  if (!saveAs.empty()) {
    if (!call.flag("overwrite") && isAnotherExistingFile(saveAs, currentName)) {
      call.printNumbered("0104", saveAs);
      return false;
    }
    if (!call.service().SaveProjectAs(toService(saveAs), message)) {
      call.printNumbered("0106", saveAs);
      return false;
    }
  } else {
    if (currentName.empty()) {
      call.printNumbered("0108");
      return false;
    }
    if (!call.service().SaveProject(message)) {
      call.printNumbered("0106");
      return false;
    }
  }
  call.showServiceText(message);
  return true;
}

}  // namespace

/// `ost_project run [-save] [-saveAs <file>] [-overwrite] [-drc] [-insert_core <core>]...`
///
/// Result: empty, or "DRC error". The enabled cores stay enabled in the service, whatever comes of the run.
OST_HANDLER(ost_run_project) {
  CommandCall call(clientData, interp, argc, argv);
  if (!call.contextIsValid()) return TCL_ERROR;
  if (!call.projectIsOpen()) return TCL_ERROR;
  if (!call.projectIsIdle()) return TCL_ERROR;
  call.declareFlag("save").declareFlag("drc").declareFlag("overwrite");
  call.declareOption("saveAs").declareRepeatedOption("insert_core");
  if (!call.parse(0, 0)) return TCL_ERROR;

  chooseCores(call);
  if (!saveBeforeRun(call)) return TCL_ERROR;

  QString message;
  const bool clean = call.service().DRC(message);
  call.show(fromService(message));
  call.setResultLiteral("");
  if (!clean) return call.failWith("DRC error");
  if (call.flag("drc")) return TCL_OK;

  const bool inserted = call.service().Insert(1);
  call.printNumbered("0109");  // the closing line of every run, not an error
  return inserted ? TCL_OK : TCL_ERROR;
}
