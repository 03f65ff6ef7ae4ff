// A project data service of a host's own, in one file: it keeps the cores of an unnamed project and the nets that they
// trace, in memory, and refuses the rest. What a real one adds is behind the same functions.
#include <memory>

#include "framework/ist_com_data.h"
#include "framework/tcl_cmdex.h"

namespace mero {
namespace ostrel {

class istProject {
 public:
  struct Core {
    istCore core;
    istTraceData trace;
    std::vector<std::unique_ptr<TraceNode>> signalNodes;
    QString sampleClock;
    int bufferDepth = 1024;
  };
  Core* find(const QString& name) {
    for (const auto& core : cores)
      if (core->core.name == name) return core.get();
    return nullptr;
  }
  Core* of(const istCore* wanted) {
    for (const auto& core : cores)
      if (&core->core == wanted) return core.get();
    return nullptr;
  }
  std::vector<std::unique_ptr<Core>> cores;
  Core* active = nullptr;
  bool changed = false;
};

class IstComData::Private {
 public:
  std::unique_ptr<istProject> project;
  RTLHierachy hierarchy;
};

namespace {

bool refuse(QString& message) {
  message = QLatin1String("This host keeps cores and their traced nets only.");
  return false;
}

}  // namespace

IstComData::IstComData() : d(new Private) {}
IstComData::~IstComData() {
  delete d;
}
IstComData* IstComData::getInstance() {
  static IstComData service;
  return &service;
}

// The project. Nothing takes long here, so it is never busy.
istProject* IstComData::currentProject() {
  return d->project.get();
}
QString IstComData::currentProjectFile() {
  return QString();
}
RTLHierachy* IstComData::hierarchy() {
  return &d->hierarchy;
}
bool IstComData::isProjBusy() {
  return false;
}
bool IstComData::LoadDesign(QString&) {
  return true;
}
bool IstComData::NewProject(QString&) {
  d->project.reset(new istProject);
  return true;
}
bool IstComData::isProjChanged() {
  return d->project && d->project->changed;
}
bool IstComData::CloseProject() {
  d->project.reset();
  return true;
}
void IstComData::PrintMessage(const std::string& code, std::string arg1, std::string arg2) {
  const std::string line = "host message " + code + ": " + arg1 + " " + arg2 + "\n";
  tcl_cmdex::TclMsgOutput(nullptr, line.c_str(), 0);
}

// Cores.
QStringList IstComData::getCoreNameList() {
  QStringList names;
  for (const auto& core : d->project->cores) names.append(core->core.name);
  return names;
}
istCore* IstComData::addCore(const QString& name, QString& message) {
  if (d->project->find(name)) {
    message = QString(QLatin1String("There is a core \"%1\" already.\n")).arg(name);
    return nullptr;
  }
  d->project->cores.emplace_back(new istProject::Core());
  d->project->active = d->project->cores.back().get();
  d->project->active->core.name = name;
  d->project->changed = true;
  return &d->project->active->core;
}
bool IstComData::renameCore(const QString& oldName, const QString& newName, QString& message) {
  istProject::Core* core = d->project->find(oldName);
  if (!core || d->project->find(newName)) {
    message = QString(QLatin1String("\"%1\" cannot become \"%2\".\n")).arg(oldName, newName);
    return false;
  }
  core->core.name = newName;
  return true;
}
QString IstComData::getActiveCoreName() {
  return d->project->active ? d->project->active->core.name : QString();
}
istCore* IstComData::getCore(const QString& name) {
  istProject::Core* core = d->project->find(name);
  return core ? &core->core : nullptr;
}
istCore* IstComData::getActiveLogicCore() {
  return d->project->active ? &d->project->active->core : nullptr;
}
bool IstComData::selectCore(const QString& name) {
  istProject::Core* core = d->project->find(name);
  if (core) d->project->active = core;
  return core != nullptr;
}

// Traced nets: each once, at the end.
istTraceData* IstComData::getTrace(istCore* core) {
  return &d->project->of(core)->trace;
}
bool IstComData::addTraceSignals(istTraceData* trace, QStringList names, QString, QString, QString&) {
  for (const auto& core : d->project->cores) {
    if (&core->trace != trace) continue;
    for (const QString& name : names) {
      core->signalNodes.emplace_back(new TraceNode);
      TraceNode* node = core->signalNodes.back().get();
      node->name = name;
      node->kind = TRACE_NODE_SIGNAL;
      node->target = nullptr;
      trace->nodes.append(node);
    }
  }
  return true;
}
QString IstComData::getSampleClk(istCore* core) {
  return d->project->of(core)->sampleClock;
}
void IstComData::setSampleClk(const QString& net, istCore* core) {
  d->project->of(core)->sampleClock = net;
}
int IstComData::getBufferDepth(istCore* core) {
  return d->project->of(core)->bufferDepth;
}
void IstComData::setBufferDepth(int samples, istCore* core) {
  d->project->of(core)->bufferDepth = samples;
}

// What this host does not have: operations are refused with a text, options read as "no value" and take none.
#define REFUSED(operation, ...)                              \
  bool IstComData::operation(__VA_ARGS__ QString& message) { \
    return refuse(message);                                  \
  }
REFUSED(NewProject, const QString&, )
REFUSED(OpenProject, const QString&, )
REFUSED(SaveProject, )
REFUSED(SaveProjectAs, const QString&, )
REFUSED(DRC, )
REFUSED(deleteCore, const QString&, )
REFUSED(addWishboneMaster, )
REFUSED(deleteWishboneMaster, )
REFUSED(addSerdesCore, )
REFUSED(deleteSerdesCore, )
REFUSED(moveTraceSignals, istTraceData*, QStringList, QString, QString, )
REFUSED(removeTraceSignals, istTraceData*, QStringList, )
REFUSED(groupTraceSignals, istTraceData*, QString&, QStringList, )
REFUSED(ungroupTraceSignals, istTraceData*, const QString&, )
REFUSED(renameTraceBus, istTraceData*, const QString&, const QString&, )
#define REFUSED_OF_DATASET(operation, ...)                                \
  bool IstComData::operation(__VA_ARGS__ QString& message, istDataset*) { \
    return refuse(message);                                               \
  }
REFUSED_OF_DATASET(addTU, QString&, const QStringList&, QString&, QString&, QString&, )
REFUSED_OF_DATASET(setTU, istTU*, QString&, const QStringList&, const QStringList&, QString&, QString&, )
REFUSED_OF_DATASET(renameTU, const QString&, const QString&, )
REFUSED_OF_DATASET(renameTE, const QString&, const QString&, )
REFUSED_OF_DATASET(addTE, QString&, const QString&, int, int, int, )
REFUSED_OF_DATASET(setTE, QString&, const QString&, int, int, int, )
#define OPTION(type, getter, setter)  \
  type IstComData::getter(istCore*) { \
    return type();                    \
  }                                   \
  void IstComData::setter(type, istCore*) {}
OPTION(bool, isSampleEnable, setSampleEnable)
OPTION(int, getSampleEnablePri, setSampleEnablePri)
OPTION(bool, isTrigEnable, setTrigEnable)
OPTION(int, getTrigEnablePri, setTrigEnablePri)
OPTION(int, getCaptureNum, setCaptureNum)
OPTION(bool, isTimeStamp, setTimeStamp)
OPTION(int, getTimeStampBits, setTimeStampBits)
OPTION(int, getCaptureMode, setCaptureMode)
OPTION(int, getCaptureMin, setCaptureMin)
OPTION(bool, isIncludeTrigger, setIncludeTrigger)
OPTION(int, getDefaultTrigRadix, setDefaultTrigRadix)
OPTION(bool, isEventCounter, setEventCounter)
OPTION(int, getEventCounter, setEventCounterValue)
OPTION(bool, isTriggerOut, setTriggerOut)
OPTION(QString, getTriggerOutName, setTriggerOutName)
OPTION(int, getTriggerOutPolarity, setTriggeroutPolarity)
#define NAMED_OPTION(getter, setter, type) \
  QString IstComData::getter(istCore*) {   \
    return QString();                      \
  }                                        \
  void IstComData::setter(type, istCore*) {}
NAMED_OPTION(getSampleEnableSignal, setSampleEnableSignal, const QString&)
NAMED_OPTION(getTrigEnableSignal, setTrigEnableSignal, const QString&)
NAMED_OPTION(getImplementaionName, setImplementation, int)
NAMED_OPTION(getTriggerOutTypeName, setTriggerOutType, int)
NAMED_OPTION(getTriggerOutMPW, setTriggeroutMPW, const QString&)
QString IstComData::getCaptureModeName(istCore*) {
  return QString();
}
void IstComData::setDisableDistRAM(bool, istCore*) {}
void IstComData::registerToHDLmanager() {}
void IstComData::unregisterToHDLmanager() {}
void IstComData::EnableAllCores(bool) {}
bool IstComData::EnableCore(const QString& name, bool) {
  return d->project->find(name) != nullptr;
}
bool IstComData::Insert(int) {
  return false;
}
istWishboneMaster* IstComData::getWishboneMaster() {
  return nullptr;
}
istSerdesCore* IstComData::getSerdesCore() {
  return nullptr;
}
bool IstComData::getWBPerformeConnect() {
  return false;
}
void IstComData::setWBPerformeConnect(bool) {}
int IstComData::getWBEdianMode() {
  return ENDIAN_BIG;
}
void IstComData::setWBEdianMode(ENDIAN_MODE) {}
void IstComData::setSerdesClk(QString&) {}
void IstComData::setSerdesReset(QString&) {}
istDataset* IstComData::getDataset(istCore*) {
  return nullptr;
}
std::vector<std::string> IstComData::getTUNameList(istDataset*) {
  return {};
}
std::vector<std::string> IstComData::getTENameList(istDataset*) {
  return {};
}
bool IstComData::isTUNameUsed(const QString&, istDataset*) {
  return false;
}
bool IstComData::isTENameUsed(const QString&, istDataset*) {
  return false;
}
istTU* IstComData::getTU(const QString&, istDataset*) {
  return nullptr;
}
bool IstComData::removeTU(const QString&, istDataset*) {
  return false;
}
bool IstComData::removeTE(const QString&, istDataset*) {
  return false;
}

}  // namespace ostrel
}  // namespace mero
