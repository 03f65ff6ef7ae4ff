// The project's debug cores and which of them take part in a run.
#include "framework/ist_com_data.h"
#include "platform/istcomdata/service_private.h"
#include "platform/text/near_names.h"

namespace mero {
namespace ostrel {

namespace {

bool checkNewCoreName(const istProject& project, const QString& name, QString& error) {
  if (!ost::checkName(name, "The core name", error)) return false;
  if (!project.findCore(name)) return true;
  error = QString("There is a core %1 already; choose another name.").arg(ost::quoted(name));
  return false;
}

QString unknownCore(const istProject& project, const QString& name) {
  ost::NearestNames near(name);
  for (const auto& core : project.cores) near.offer(core->name);
  return QString("There is no core %1%2; ost_core list shows the cores.").arg(ost::quoted(name), near.hint());
}

}  // namespace

QStringList IstComData::getCoreNameList() {
  QStringList names;
  if (d->project)
    for (const auto& core : d->project->cores) names << core->name;
  return names;
}

istCore* IstComData::addCore(const QString& name, QString& message) {
  d->reason.clear();  // the command layer shows the message itself
  if (!d->project || !checkNewCoreName(*d->project, name, message)) return nullptr;
  const bool isFirst = d->project->cores.empty();
  d->project->cores.emplace_back(new ost::Core(name));
  if (isFirst) d->project->activeCore = d->project->cores.back().get();
  d->markChanged();
  return d->project->cores.back().get();
}

bool IstComData::deleteCore(const QString& name, QString& message) {
  if (!d->project) return false;
  auto& cores = d->project->cores;
  for (auto it = cores.begin(); it != cores.end(); ++it) {
    if ((*it)->name != name) continue;
    if (d->project->activeCore == it->get()) d->project->activeCore = nullptr;
    cores.erase(it);
    d->markChanged();
    return true;
  }
  d->reason = message = unknownCore(*d->project, name);
  return false;
}

bool IstComData::renameCore(const QString& oldName, const QString& newName, QString& message) {
  if (!d->project) return false;
  ost::Core* core = d->project->findCore(oldName);
  if (!core) message = unknownCore(*d->project, oldName);
  if (core && newName == oldName) return true;
  if (!core || !checkNewCoreName(*d->project, newName, message)) {
    d->reason = message;
    return false;
  }
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
