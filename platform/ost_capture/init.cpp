// Loading of the package ost_capture, and its one command.
#include "platform/ost_capture/capture_object.h"
#include "platform/ost_capture/hub_object.h"

namespace ost {
namespace {

/// `ost_capture`.
class PackageCommand {
 public:
  static constexpr char kOwner[] = "ost_capture";
  static const QVector<SubCommand<PackageCommand>>& table() {
    static const QVector<SubCommand<PackageCommand>> table = {
        {"help", "", OptionUse(), 0, 0, method<&PackageCommand::help>},
        {"open", "", kUseOpen, 0, -1, method<&PackageCommand::open>},
    };
    return table;
  }

  int help(const SubCall& call) {
    Tcl_SetObjResult(call.interp, tclFromText(usagesOf<PackageCommand>() + usagesOf<HubObject>() +
                                              usagesOf<CaptureObject>().trimmed()));
    return TCL_OK;
  }
  int open(const SubCall& call) {
    CaptureOptions options;
    QString error;
    if (!parseCaptureOptions(call.words, options, error, kUseOpen)) return call.failUsage(error);
    return HubObject::open(call.interp, options);
  }
};

int captureCommand(ClientData, Tcl_Interp* interp, int objc, Tcl_Obj* const objv[]) {
  return tcl_cmdex::runGuarded(interp, "ost_capture", [&] {
    PackageCommand package;
    if (objc == 2 &&
        (textFromTcl(objv[1]) == QLatin1String("-help") || textFromTcl(objv[1]) == QLatin1String("--help")))
      return package.help({interp, "", QString(), {}});
    return runSubCommand(package, interp, objc, objv);
  });
}

}  // namespace
}  // namespace ost

extern "C" __attribute__((visibility("default"))) int Ost_capture_Init(Tcl_Interp* interp) {
  if (!Tcl_InitStubs(interp, "8.4", 0)) return TCL_ERROR;
  Tcl_CreateObjCommand(interp, "ost_capture", ost::captureCommand, nullptr, nullptr);
  return Tcl_PkgProvide(interp, "ost_capture", OST_PACKAGE_VERSION);
}
