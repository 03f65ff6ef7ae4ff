// The capture map, the way to the hub, the runs.
#include "platform/reader/hub_session.h"

#include "platform/plan/capture_map.h"
#include "platform/reader/replay_bench.h"
#include "platform/reader/run_options.h"
#include "platform/reader/wishbone_reader.h"
#include "platform/system/files.h"
#include "platform/text/byte_text.h"

namespace ost {

bool HubSession::loadMap(QString& error) {
  QByteArray json;
  QString reason;
  const QString& name = options_.mapFile;
  if (!readFile(fileFromText(name), kMaxCaptureMapBytes, json, reason))
    error = QStringLiteral("Cannot read the capture map \"%1\": %2.").arg(name, reason);
  else if (!readCaptureMap(json, plan_, reason))
    error = QStringLiteral("The capture map \"%1\" is damaged: %2").arg(name, reason);
  else if (plan_.hubCores() == 0)
    error = QStringLiteral("The capture map has no core; insert the cores again.");
  else if (options_.instruction.width == 0 && plan_.jtag.instructionWidth() == 0)
    error = QStringLiteral(
        "The design was inserted with a JTAG wrapper of its own, so its instruction is not known; add -ir WIDTH:CODE.");
  return error.isEmpty();
}

bool HubSession::hasSerdes(QString& error) const {
  if (!plan_.serdes)
    error = QStringLiteral("The design has no serdes core; add one with ost_core add_serdes and insert again.");
  return plan_.serdes.has_value();
}

bool HubSession::readSerdes(bool restart, SerdesLook& look, QString& error) {
  return hasSerdes(error) && SerdesReader(*hub_, plan_).read(restart, look, error);
}

bool HubSession::chooseRuns(const CaptureOptions& options, QString& error) {
  QVector<CoreRun> runs;
  QVector<PlanCore> cores;
  for (const int core : chooseCores(plan_, options, error)) {
    RunSettings settings(plan_.cores[core]);
    if (!applyRunOptions(options, settings, error) ||
        !checkView(settings.core(), settings.position(), options.view, error))
      return false;
    runs.append({core, settings, false, Capture()});
    cores.append(settings.core());
    cores.last().windows = settings.windows();
  }
  if (runs.isEmpty() || (!options.replay.isEmpty() && coreOfReplay(cores, options, error) < 0)) return false;
  runs_ = runs;
  return true;
}

bool HubSession::open(QString& error) {
  if (!way_.open(error)) return false;
  TapInstruction instruction = options_.instruction;
  if (instruction.width == 0) instruction = {plan_.jtag.instructionWidth(), plan_.jtag.instructionCode()};
  hub_ = std::make_unique<HubLink>(way_.tap(), instruction);
  reader_ = std::make_unique<CoreReader>(*hub_, plan_);
  run_ = std::make_unique<CaptureRun>(*reader_, way_.connection(), runs_);
  if (reader_->identify(error)) return true;
  error = explained(error);
  return false;
}

bool HubSession::runWishbone(const WishboneCommand& command, QVector<quint32>& read, QString& error) {
  if (!plan_.wishbone) {
    error = QStringLiteral(
        "The design has no Wishbone master; add one with ost_core add_wishbone and insert the cores again.");
    return false;
  }
  WishboneReader reader(*hub_, plan_, options_.timeoutSeconds);
  return runWishboneCommand(command, reader, read, error);
}

bool HubSession::close(QString& error) {
  run_.reset();
  reader_.reset();
  hub_.reset();
  return way_.close(error);
}

QStringList HubSession::coreNames() const {
  QStringList names;
  for (const CoreRun& run : runs_) names += run.settings.core().name;
  return names;
}

CaptureSet HubSession::captures() const {
  CaptureSet set = {plan_.topModule, plan_.projectName, plan_.projectHash, {}};
  for (const CoreRun& run : runs_) set.cores.append(run.capture);
  return set;
}

}  // namespace ost
