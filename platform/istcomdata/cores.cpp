// The project's debug cores and which of them take part in a run.
#include <algorithm>

#include "framework/ist_com_data.h"
#include "platform/istcomdata/service_private.h"
#include "platform/text/near_names.h"

namespace mero {
namespace ostrel {

namespace {

bool checkNewCoreName(const istProject& project, const QString& name, QString& error) {
  if (!ost::checkName(name, QStringLiteral("The core name"), error)) return false;
  if (!project.findCore(name)) return true;
  error = QStringLiteral("The project has a core %1 already; choose another name.").arg(ost::quoted(name));
  return false;
}

/// Null, with the nearest names, when there is no such core.
ost::Core* findCore(const istProject& project, const QString& name, QString& error) {
  ost::Core* core = project.findCore(name);
  if (core) return core;
  ost::NearestNames near(name);
  for (const auto& known : project.cores) near.offer(known->name);
  error = QStringLiteral("There is no core %1%2; ost_core list shows the cores.").arg(ost::quoted(name), near.hint());
  return nullptr;
}

}  // namespace

QStringList IstComData::getCoreNameList() {
  QStringList names;
  if (d->project)
    for (const auto& core : d->project->cores) names << core->name;
  return names;
}

istCore* IstComData::addCore(const QString& name, QString& message) {
  QString error;
  if (!d->project) return nullptr;
  if (!checkNewCoreName(*d->project, name, error)) {
    d->fail(ToldBy::CommandLine, error, message);
    return nullptr;
  }
  const bool isFirst = d->project->cores.empty();
  d->project->cores.emplace_back(new ost::Core(name));
  if (isFirst) d->project->activeCore = d->project->cores.back().get();
  d->markChanged();
  return d->project->cores.back().get();
}

bool IstComData::deleteCore(const QString& name, QString& message) {
  if (!d->project) return false;
  QString error;
  ost::Core* core = findCore(*d->project, name, error);
  if (!core) return d->fail(ToldBy::Number, error, message);
  if (d->project->activeCore == core) d->project->activeCore = nullptr;
  auto& cores = d->project->cores;
  cores.erase(std::find_if(cores.begin(), cores.end(), [core](const auto& owned) { return owned.get() == core; }));
  d->markChanged();
  return true;
}

bool IstComData::renameCore(const QString& oldName, const QString& newName, QString& message) {
  if (!d->project) return false;
  QString error;
  ost::Core* core = findCore(*d->project, oldName, error);
  if (core && newName == oldName) return true;
  if (!core || !checkNewCoreName(*d->project, newName, error)) return d->fail(ToldBy::Number, error, message);
  d->assign(core->name, newName);
  return true;
}

QString IstComData::getActiveCoreName() {
  return d->project && d->project->activeCore ? d->project->activeCore->name : QString();
}

istCore* IstComData::getCore(const QString& name) {
  return d->project ? d->project->findCore(name) : nullptr;
}

istCore* IstComData::getActiveLogicCore() {
  return d->project ? d->project->activeCore : nullptr;
}

bool IstComData::selectCore(const QString& name) {
  ost::Core* core = d->project ? d->project->findCore(name) : nullptr;
  if (core) d->assign(d->project->activeCore, core);
  return core != nullptr;
}

istTraceData* IstComData::getTrace(istCore* core) {
  return core ? ost::asCore(core)->trace.get() : nullptr;
}

istDataset* IstComData::getDataset(istCore* core) {
  return core ? &ost::asCore(core)->dataset : nullptr;
}

// Which cores take part is a matter of the next run, not of the project: it is neither saved nor a change.

void IstComData::EnableAllCores(bool enable) {
  if (d->project)
    for (const auto& core : d->project->cores) core->enabled = enable;
}

bool IstComData::EnableCore(const QString& name, bool enable) {
  ost::Core* core = d->project ? d->project->findCore(name) : nullptr;
  if (core) core->enabled = enable;
  return core != nullptr;
}

}  // namespace ostrel
}  // namespace mero
