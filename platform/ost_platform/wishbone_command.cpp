// `ost_design wishbone`: the two options of the project's Wishbone master, which none of the six commands sets.
#include "framework/ist_com_data.h"
#include "platform/ost_platform/design_command.h"

namespace ost {
namespace {

using mero::ostrel::IstComData;

int failValue(Tcl_Interp* interp, const QString& message) {
  return failWith(interp, message, "OST DESIGN WISHBONE");
}

int connect(Tcl_Interp* interp, IstComData& service, const QString& value) {
  const bool on = value == QLatin1String("true");
  if (!on && value != QLatin1String("false"))
    return failUsage(interp, QStringLiteral("expected true or false but got \"%1\"").arg(value), "wishbone");
  mero::ostrel::RTLHierachy* hierarchy = service.hierarchy();
  if (on && (!hierarchy->getJtag2WBFlag() || hierarchy->getJtag2WBCore()))
    return failValue(interp, QStringLiteral("the design offers the master no connection: mark the slave, see "
                                            "docs/wishbone.md, or leave PerformConnect=false"));
  service.setWBPerformeConnect(on);
  return TCL_OK;
}

int setEndian(Tcl_Interp* interp, IstComData& service, const QString& value) {
  const bool big = value == QLatin1String("big");
  if (!big && value != QLatin1String("little"))
    return failUsage(interp, QStringLiteral("expected big or little but got \"%1\"").arg(value), "wishbone");
  if (!big && service.getWishboneMaster()->bigEndianOnly)
    return failValue(interp, QStringLiteral("the master has big-endian byte order only"));
  service.setWBEdianMode(big ? mero::ostrel::ENDIAN_BIG : mero::ostrel::ENDIAN_LITTLE);
  return TCL_OK;
}

}  // namespace

int runWishbone(Tcl_Interp* interp, int objc, Tcl_Obj* const objv[]) {
  IstComData& service = *IstComData::getInstance();
  if (!service.getWishboneMaster())
    return failValue(interp, QStringLiteral("the project has no Wishbone master: ost_core add_wishbone adds one"));
  if (objc > 2 && !isFree(interp)) return TCL_ERROR;
  for (int i = 2; i < objc; ++i) {
    const QString word = textFromTcl(objv[i]), name = word.section(QLatin1Char('='), 0, 0);
    const QString value = word.section(QLatin1Char('='), 1).trimmed().toLower();
    int code = TCL_OK;
    if (name == QLatin1String("PerformConnect"))
      code = connect(interp, service, value);
    else if (name == QLatin1String("Endian"))
      code = setEndian(interp, service, value);
    else
      code = failUsage(interp, QStringLiteral("unknown option \"%1\"").arg(word), "wishbone");
    if (code != TCL_OK) return code;
  }
  TclList list;
  list.add("PerformConnect");
  list.add(service.getWBPerformeConnect() ? "true" : "false");
  list.add("Endian");
  list.add(service.getWBEdianMode() == mero::ostrel::ENDIAN_BIG ? "big" : "little");
  Tcl_SetObjResult(interp, list);
  return TCL_OK;
}

}  // namespace ost
