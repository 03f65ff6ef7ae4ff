// `ost_design level`: the hierarchy one level at a time, whatever the size of the design.
#include "platform/design/design_session.h"
#include "platform/ost_platform/design_command.h"

namespace ost {

int runLevel(Tcl_Interp* interp, int objc, Tcl_Obj* const objv[]) {
  if (objc > 3) return failUsage(interp, QStringLiteral("wrong # args"), "level");
  const std::shared_ptr<const Design> design = DesignSession::instance().design();
  if (!design) return failWithoutDesign(interp);
  const QString path = objc == 3 ? textFromTcl(objv[2]) : QString();
  DesignLevel level;
  if (!design->levelAt(path, level)) {
    return failWith(interp, QStringLiteral("there is no instance \"%1\": ost_design level lists the top's").arg(path),
                    "OST DESIGN INSTANCE");
  }
  const auto add = [](TclList& list, const QString& name, Tcl_Obj* value) {
    Tcl_Obj* pair[] = {tclFromText(name), value};
    list.add(Tcl_NewListObj(2, pair));
  };
  TclList instances, nets, result;
  for (const DesignLevel::Instance& instance : level.instances)
    add(instances, instance.path, tclFromText(instance.module));
  for (const NetName& net : level.nets) add(nets, net.name, Tcl_NewIntObj(net.width));
  result.add("instances", instances);
  result.add("nets", nets);
  Tcl_SetObjResult(interp, result);
  return TCL_OK;
}

}  // namespace ost
