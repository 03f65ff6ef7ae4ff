// The project's Wishbone master and serdes core.
#include "framework/ist_com_data.h"
#include "platform/istcomdata/service_private.h"

namespace mero {
namespace ostrel {

namespace {

const char kConstantLow[] = "VLO";  ///< The reset that never acts, in place of a net.

}  // namespace

bool IstComData::addWishboneMaster(QString& message) {
  if (!d->project) return false;
  if (d->project->wishbone)
    return d->fail(ToldBy::CommandLine,
                   QStringLiteral("The project has a Wishbone master already; only one is allowed."), message);
  d->project->wishbone.reset(new istWishboneMaster{false});
  d->markChanged();
  if (!hierarchy()->getJtag2WBFlag() || hierarchy()->getJtag2WBCore())
    message = QStringLiteral(
        "WARNING: This design offers no JTAG-to-Wishbone connection, so the master cannot be connected to it.");
  return true;
}

bool IstComData::deleteWishboneMaster(QString& message) {
  if (!d->project || !d->project->wishbone)
    return d->fail(ToldBy::Number, QStringLiteral("The project has no Wishbone master."), message);
  d->project->wishbone.reset();
  d->project->wishboneConnected = false;
  d->project->wishboneEndian = ENDIAN_BIG;
  d->markChanged();
  return true;
}

bool IstComData::addSerdesCore(QString& message) {
  if (!d->project) return false;
  if (d->project->serdes)
    return d->fail(ToldBy::CommandLine, QStringLiteral("The project has a serdes core already; only one is allowed."),
                   message);
  d->project->serdes.reset(new istSerdesCore);
  d->project->serdes->resetSignal = QLatin1String(kConstantLow);
  d->markChanged();
  if (!hierarchy()->getDCUFlag())
    message = QStringLiteral(
        "WARNING: This design holds no serdes block that the core can watch, so its options cannot be set.");
  else if (hierarchy()->getJ2WFlag())
    message = QStringLiteral(
        "WARNING: This design uses the serdes block's JTAG path itself, so the core's options cannot be set.");
  return true;
}

bool IstComData::deleteSerdesCore(QString& message) {
  if (!d->project || !d->project->serdes)
    return d->fail(ToldBy::Number, QStringLiteral("The project has no serdes core."), message);
  d->project->serdes.reset();
  d->markChanged();
  return true;
}

istWishboneMaster* IstComData::getWishboneMaster() {
  return d->project ? d->project->wishbone.get() : nullptr;
}

istSerdesCore* IstComData::getSerdesCore() {
  return d->project ? d->project->serdes.get() : nullptr;
}

bool IstComData::getWBPerformeConnect() {
  return d->project && d->project->wishboneConnected;
}

void IstComData::setWBPerformeConnect(bool connect) {
  if (getWishboneMaster()) d->assign(d->project->wishboneConnected, connect);
}

int IstComData::getWBEdianMode() {
  return d->project ? d->project->wishboneEndian : ENDIAN_BIG;
}

void IstComData::setWBEdianMode(ENDIAN_MODE mode) {
  if (getWishboneMaster()) d->assign(d->project->wishboneEndian, mode == ENDIAN_BIG ? ENDIAN_BIG : ENDIAN_LITTLE);
}

void IstComData::setSerdesClk(QString& net) {
  if (getSerdesCore() && d->resolveOption("clk", net)) d->assign(d->project->serdes->sampleClock, net);
}

void IstComData::setSerdesReset(QString& net) {
  if (!getSerdesCore()) return;
  if (net == QLatin1String(kConstantLow) || d->resolveOption("rst", net))
    d->assign(d->project->serdes->resetSignal, net);
}

}  // namespace ostrel
}  // namespace mero
