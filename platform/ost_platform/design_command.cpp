// `ost_design`: reads and shows the design that the six commands work on.
#include "platform/ost_platform/design_command.h"

#include "platform/design/design_session.h"
#include "platform/design/yosys.h"
#include "platform/insert/jtag_wrapper.h"
#include "platform/system/memory.h"
#include "platform/tclcmdex/host.h"
#include "platform/tclcmdex/progress_line.h"
#include "platform/text/byte_text.h"

namespace ost {

int failUsage(Tcl_Interp* interp, const QString& message, const char* subCommand) {
  const std::string help = designHelp(subCommand);
  const QString usage = QString::fromStdString(help.substr(0, help.find('\n')));
  const std::string code = std::string("OST USAGE ost_design ") + subCommand;
  return failWith(interp, message + QLatin1Char('\n') + usage, code.c_str());
}

int failWithoutDesign(Tcl_Interp* interp) {
  return failWith(interp, QStringLiteral("no design is loaded: read one with \"ost_design read FILE ...\""),
                  "OST DESIGN NONE");
}

bool isFree(Tcl_Interp* interp) {
  const bool reading = DesignSession::instance().isReading();
  if (!reading && tcl_cmdex::dispatchDepth() <= 1) return true;
  failWith(interp,
           QString::fromLatin1(reading ? "a design is being read already: wait until that is done"
                                       : "another command is at work: wait until that is done"),
           "OST DESIGN BUSY");
  return false;
}

namespace {

constexpr qint64 kMostListedNets = 20000000;
constexpr int kListStep = 1024;
constexpr size_t kEntryBytes = 1024;  ///< Of a net in the list, generously.

int runRead(Tcl_Interp* interp, int objc, Tcl_Obj* const objv[]) {
  DesignSource source;
  if (!parseReadWords(interp, objc, objv, source)) return TCL_ERROR;
  if (!isFree(interp)) return TCL_ERROR;
  DesignSession& session = DesignSession::instance();
  QString error;
  const std::shared_ptr<const Design> before = session.design();
  {
    tcl_cmdex::ProgressLine progress("Reading the design");
    if (!session.read(source, error, [&progress] { return progress.tick(); }))
      return failWith(interp, error, "OST DESIGN READ");
  }
  const std::shared_ptr<const Design> design = session.design();
  if (!design) return TCL_OK;
  if (design != before)
    for (const QString& note : design->notes())
      tcl_cmdex::TclMsgOutput(interp, (note + QLatin1Char('\n')).toLatin1().constData(), 0);
  Tcl_SetObjResult(interp, tclFromText(design->topModule()));
  return TCL_OK;
}

int runInfo(Tcl_Interp* interp, int objc, Tcl_Obj* const[]) {
  if (objc != 2) return failUsage(interp, QStringLiteral("wrong # args"), "info");
  const std::shared_ptr<const Design> design = DesignSession::instance().design();
  if (!design) return failWithoutDesign(interp);
  TclList list, files, roles, boxes, notes;
  for (const QString& file : design->dependencies()) files.add(tclFromText(file));
  for (const QString& module : design->blackBoxes()) boxes.add(tclFromText(module));
  for (const QString& note : design->notes()) notes.add(tclFromText(note));
  const DesignRoles& found = design->roles();
  const struct {
    bool held;
    const char* name;
  } all[] = {{found.dcu, "dcu"}, {found.j2w, "j2w"}, {found.jtag2wb, "jtag2wb"}, {found.jtag2wbCore, "jtag2wb_core"}};
  for (const auto& role : all) {
    if (role.held) roles.add(role.name);
  }
  QString noYosys;
  list.add("top", tclFromText(design->topModule()));
  list.add("files", files);
  list.add("modules", Tcl_NewIntObj(design->moduleCount()));
  list.add("instances", Tcl_NewIntObj(design->instanceCount()));
  list.add("nets", Tcl_NewWideIntObj(design->netCount()));
  list.add("bits", Tcl_NewWideIntObj(design->netBitCount()));
  list.add("roles", roles);
  list.add("blackboxes", boxes);
  list.add("notes", notes);
  list.add("yosys", tclFromText(yosysVersion(noYosys)));
  Tcl_SetObjResult(interp, list);
  return TCL_OK;
}

int runNets(Tcl_Interp* interp, int objc, Tcl_Obj* const objv[]) {
  const char* glob = nullptr;
  Tcl_Obj* expression = nullptr;
  for (int i = 2; i < objc; i += 2) {
    const QString word = textFromTcl(objv[i]);
    const bool isGlob = word == QLatin1String("-glob");
    if (!isGlob && word != QLatin1String("-regexp")) {
      return failUsage(interp, QStringLiteral("unknown option \"%1\"").arg(word), "nets");
    }
    if (i + 1 >= objc) return failUsage(interp, QStringLiteral("missing value for \"%1\"").arg(word), "nets");
    if (isGlob) {
      glob = Tcl_GetString(objv[i + 1]);
    } else {
      expression = objv[i + 1];
    }
  }
  const std::shared_ptr<const Design> design = DesignSession::instance().design();
  if (!design) return failWithoutDesign(interp);
  if (expression && !Tcl_GetRegExpFromObj(interp, expression, TCL_REG_ADVANCED)) {
    return failWith(interp, QStringLiteral("bad value for -regexp: ") + textFromTcl(Tcl_GetObjResult(interp)),
                    "OST VALUE -regexp");
  }
  if (design->netCount() > kMostListedNets) {
    return failWith(
        interp, QStringLiteral("the design has %1 nets over all instances, too many to list").arg(design->netCount()),
        "OST DESIGN SIZE");
  }
  TclList list;
  int listed = 0;
  bool failed = false;
  design->forEachNet([&](const NetName& net) {
    Tcl_Obj* name = tclFromText(net.name);
    Tcl_IncrRefCount(name);
    bool fits = !glob || tcl_cmdex::fitsPattern(Tcl_GetString(name), glob);
    if (fits && expression) {
      // Looked up each time, from the cache in the value: an expression must not outlive a change of that value.
      Tcl_RegExp compiled = Tcl_GetRegExpFromObj(interp, expression, TCL_REG_ADVANCED);
      const int matched = compiled ? Tcl_RegExpExecObj(interp, compiled, name, 0, 0, 0) : -1;
      failed = matched < 0;
      fits = matched > 0;
    }
    if (fits) {
      Tcl_Obj* entry[] = {name, Tcl_NewIntObj(net.width)};
      // Tcl would end the process where it gets none.
      if (++listed % kListStep == 0) requireMemory(kListStep * kEntryBytes + size_t(listed) * 2 * sizeof(Tcl_Obj*));
      list.add(Tcl_NewListObj(2, entry));
    }
    Tcl_DecrRefCount(name);
    return !failed;
  });
  if (!failed) Tcl_SetObjResult(interp, list);
  return failed ? TCL_ERROR : TCL_OK;
}

int runClose(Tcl_Interp* interp, int objc, Tcl_Obj* const[]) {
  if (objc != 2) return failUsage(interp, QStringLiteral("wrong # args"), "close");
  if (!isFree(interp)) return TCL_ERROR;
  DesignSession::instance().close();
  return TCL_OK;
}

int runProve(Tcl_Interp* interp, int objc, Tcl_Obj* const objv[]) {
  if (objc > 3) return failUsage(interp, QStringLiteral("wrong # args"), "prove");
  DesignSession& session = DesignSession::instance();
  ProofMode mode = ProofMode::Off;
  QString error;
  if (objc == 3 && !proofModeFromWord(Tcl_GetString(objv[2]), mode)) {
    return failUsage(interp, QStringLiteral("expected on, off or strict but got \"%1\"").arg(textFromTcl(objv[2])),
                     "prove");
  }
  if (objc == 3 && !isFree(interp)) return TCL_ERROR;
  if (objc == 3)
    session.setProofMode(mode);
  else if (!session.proofMode(mode, error))
    return failWith(interp, error, "OST DESIGN PROVE");
  const char* const results[] = {"0", "1", "strict"};
  Tcl_SetObjResult(interp, Tcl_NewStringObj(results[int(mode)], -1));
  return TCL_OK;
}

int runJtag(Tcl_Interp* interp, int objc, Tcl_Obj* const objv[]) {
  DesignSession& session = DesignSession::instance();
  if (objc > 2) {
    DesignSource source;
    if (!parseJtagWords(interp, objc, objv, source)) return TCL_ERROR;
    if (!isFree(interp)) return TCL_ERROR;
    PlanJtag jtag;
    QString error;
    if (!planJtag(source.jtag, jtag, error)) return failWith(interp, error, "OST DESIGN JTAG");
    session.setJtag(source.jtag);
  }
  const JtagWords words = session.jtag();
  TclList list;
  const auto add = [&list](const char* option, const QString& value) {
    list.add(option);
    list.add(tclFromText(value));
  };
  list.add(tclFromText(words.way.isEmpty() ? QStringLiteral("pins") : words.way));
  if (!words.chain.isEmpty()) add("-chain", words.chain);
  if (!words.period.isEmpty()) add("-period", words.period);
  Tcl_SetObjResult(interp, list);
  return TCL_OK;
}

int runHelp(Tcl_Interp* interp, int objc, Tcl_Obj* const objv[]) {
  if (objc > 3) return failUsage(interp, QStringLiteral("wrong # args"), "help");
  const std::string help = designHelp(objc == 3 ? Tcl_GetString(objv[2]) : "");
  if (help.empty()) {
    return failUsage(interp, QStringLiteral("no sub-command \"%1\"").arg(textFromTcl(objv[2])), "help");
  }
  Tcl_SetObjResult(interp, Tcl_NewStringObj(help.data(), int(help.size())));
  return TCL_OK;
}

struct SubCommand {
  const char* name;
  int (*run)(Tcl_Interp*, int, Tcl_Obj* const[]);
};

const SubCommand kSubCommands[] = {
    {"close", runClose}, {"help", runHelp},   {"info", runInfo},   {"jtag", runJtag}, {"level", runLevel},
    {"nets", runNets},   {"ports", runPorts}, {"prove", runProve}, {"read", runRead}, {"wishbone", runWishbone}};

int runSubCommand(Tcl_Interp* interp, int objc, Tcl_Obj* const objv[]) {
  const std::string word = objc > 1 ? Tcl_GetString(objv[1]) : "help";
  if (word == "-help" || word == "--help") return runHelp(interp, objc, objv);
  for (const SubCommand& entry : kSubCommands) {
    if (word == entry.name) return entry.run(interp, objc, objv);
  }
  Tcl_SetObjResult(interp, tclFromText(QStringLiteral("unknown sub-command \"%1\": must be close, help, info, jtag, "
                                                      "level, nets, ports, prove, read, or wishbone")
                                           .arg(textFromTcl(objv[1]))));
  Tcl_SetErrorCode(interp, "TCL", "LOOKUP", "SUBCOMMAND", word.c_str(), static_cast<char*>(nullptr));
  return TCL_ERROR;
}

}  // namespace

int designCommand(ClientData, Tcl_Interp* interp, int objc, Tcl_Obj* const objv[]) {
  return tcl_cmdex::runGuarded(interp, "ost_design", [&] { return runSubCommand(interp, objc, objv); });
}

}  // namespace ost
