// `ost_design wishbone`: the two options of the project's Wishbone master, which none of the six commands sets.
#include <optional>

#include "framework/ist_com_data.h"
#include "platform/ost_platform/design_command.h"

namespace ost {
namespace {

using mero::ostrel::IstComData;

int failValue(Tcl_Interp* interp, const QString& message) {
  return failWith(interp, message, "OST DESIGN WISHBONE");
}

/// What a command line sets; all of it is checked before any is.
struct Wanted {
  std::optional<bool> connect;
  std::optional<mero::ostrel::ENDIAN_MODE> endian;
};

int readWord(Tcl_Interp* interp, IstComData& service, const QString& word, Wanted& wanted) {
  const QString name = word.section(QLatin1Char('='), 0, 0);
  const QString value = word.section(QLatin1Char('='), 1).trimmed().toLower();
  if (name == QLatin1String("PerformConnect")) {
    wanted.connect = value == QLatin1String("true");
    if (!*wanted.connect && value != QLatin1String("false"))
      return failUsage(interp, QStringLiteral("expected true or false but got \"%1\"").arg(value), "wishbone");
    mero::ostrel::RTLHierachy* hierarchy = service.hierarchy();
    if (*wanted.connect && (!hierarchy->getJtag2WBFlag() || hierarchy->getJtag2WBCore()))
      return failValue(interp, QStringLiteral("the design offers the master no connection: mark the slave, see "
                                              "docs/wishbone.md, or leave PerformConnect=false"));
    return TCL_OK;
  }
  if (name != QLatin1String("Endian"))
    return failUsage(interp, QStringLiteral("unknown option \"%1\"").arg(word), "wishbone");
  const bool big = value == QLatin1String("big");
  if (!big && value != QLatin1String("little"))
    return failUsage(interp, QStringLiteral("expected big or little but got \"%1\"").arg(value), "wishbone");
  if (!big && service.getWishboneMaster()->bigEndianOnly)
    return failValue(interp, QStringLiteral("the master has big-endian byte order only"));
  wanted.endian = big ? mero::ostrel::ENDIAN_BIG : mero::ostrel::ENDIAN_LITTLE;
  return TCL_OK;
}

}  // namespace

int runWishbone(Tcl_Interp* interp, int objc, Tcl_Obj* const objv[]) {
  IstComData& service = *IstComData::getInstance();
  if (!service.getWishboneMaster())
    return failValue(interp, QStringLiteral("the project has no Wishbone master: ost_core add_wishbone adds one"));
  if (objc > 2 && !isFree(interp)) return TCL_ERROR;
  Wanted wanted;
  for (int i = 2; i < objc; ++i)
    if (readWord(interp, service, textFromTcl(objv[i]), wanted) != TCL_OK) return TCL_ERROR;
  if (wanted.connect) service.setWBPerformeConnect(*wanted.connect);
  if (wanted.endian) service.setWBEdianMode(*wanted.endian);
  TclList list;
  list.add("PerformConnect");
  list.add(service.getWBPerformeConnect() ? "true" : "false");
  list.add("Endian");
  list.add(service.getWBEdianMode() == mero::ostrel::ENDIAN_BIG ? "big" : "little");
  Tcl_SetObjResult(interp, list);
  return TCL_OK;
}

}  // namespace ost
