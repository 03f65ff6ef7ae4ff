// `ost_design ports`: the nets that an instance is seen by, for probing.
#include "platform/design/design_session.h"
#include "platform/netlist/instance_outline.h"
#include "platform/ost_platform/design_command.h"
#include "platform/tclcmdex/host.h"
#include "platform/tclcmdex/progress_line.h"
#include "platform/text/byte_text.h"

namespace ost {
namespace {

/// The name of a net in an instance, which leads back to it.
QString nameOfNet(const Design& design, const NetBit& net) {
  const QString path = net.instancePath.isEmpty() ? QString() : net.instancePath + QLatin1Char('/');
  NetSelection found;
  QString ignored;
  const bool leadsBack = design.resolve(path + net.net, found, ignored) && found.net == net.net &&
                         found.instancePath == net.instancePath && found.bits.size() == found.netWidth;
  return path + (leadsBack ? net.net : QLatin1Char('\\') + net.net + QLatin1Char(' '));
}

}  // namespace

int runPorts(Tcl_Interp* interp, int objc, Tcl_Obj* const objv[]) {
  enum { kInputs = 1, kOutputs = 2, kClocks = 4, kRegisters = 8 };
  const QStringList options = {QStringLiteral("-inputs"), QStringLiteral("-outputs"), QStringLiteral("-clocks"),
                               QStringLiteral("-registers")};
  if (objc < 3) return failUsage(interp, QStringLiteral("wrong # args"), "ports");
  int wanted = 0;
  for (int i = 3; i < objc; ++i) {
    const QString word = textFromTcl(objv[i]);
    if (!options.contains(word)) return failUsage(interp, QStringLiteral("unknown option \"%1\"").arg(word), "ports");
    wanted |= 1 << options.indexOf(word);
  }
  if (wanted == 0) wanted = kInputs | kOutputs;
  const std::shared_ptr<const Design> design = DesignSession::instance().design();
  if (!design) return failWithoutDesign(interp);
  if (!isFree(interp)) return TCL_ERROR;
  QString error;
  tcl_cmdex::ProgressLine progress("Elaborating the full netlist");
  const std::shared_ptr<const Netlist> netlist = netlistOf(*design, error, [&progress] { return progress.tick(); });
  if (!netlist) return failWith(interp, error, "OST DESIGN READ");
  const QString path = textFromTcl(objv[2]);
  InstanceOutline outline;
  if (!outlineInstance(*netlist, path, outline))
    return failWith(interp, QStringLiteral("there is no instance \"%1\": ost_design level lists the top's").arg(path),
                    "OST DESIGN INSTANCE");
  TclList list;
  for (const InstancePort& port : outline.ports) {
    const bool isInput = port.direction != NetlistPort::Output && !port.isClock;
    const int kinds =
        (isInput ? kInputs : 0) | (port.direction != NetlistPort::Input ? kOutputs : 0) | (port.isClock ? kClocks : 0);
    if (kinds & wanted) list.add(tclFromText(nameOfNet(*design, {path, textFromBytes(port.name), 0, QString()})));
  }
  if (wanted & kRegisters)
    for (const NetBit& net : outline.registers) list.add(tclFromText(nameOfNet(*design, net)));
  Tcl_SetObjResult(interp, list);
  return TCL_OK;
}

}  // namespace ost
