// The recording double of IstComData and the data classes.
#include "tests/unit/commands/service_double.h"

#include <algorithm>
#include <cstdlib>

ServiceDouble* service = nullptr;

namespace {

std::string text(const QString& s) { return s.toLatin1().toStdString(); }
QString wire(const std::string& s) { return QString::fromLatin1(s.c_str()); }
std::string number(int n) { return std::to_string(n); }
std::string joined(const QStringList& names) {
  std::string list = "[";
  for (int i = 0; i < names.size(); ++i) list += (i ? ";" : "") + text(names.at(i));
  return list + "]";
}

mero::ostrel::istCore cores[4];
mero::ostrel::istTraceData traceData;
mero::ostrel::istWishboneMaster wishbone;
mero::ostrel::istSerdesCore serdes;
mero::ostrel::RTLHierachy design;

mero::ostrel::istCore* coreNamed(const std::string& name) {
  const auto found = std::find(service->cores.begin(), service->cores.end(), name);
  if (found == service->cores.end()) return nullptr;
  mero::ostrel::istCore& core = cores[found - service->cores.begin()];
  core.name = wire(name);
  core.samplesPerTrigger = 8;
  return &core;
}

template <class T>
T* opaque(const char* name) {  // handed out and taken back, never looked into
  static int anything;
  (void)name;
  return reinterpret_cast<T*>(&anything);
}

}  // namespace

void ServiceDouble::record(const std::string& operation, const std::vector<std::string>& args) {
  std::string line = operation + "(";
  for (std::size_t i = 0; i < args.size(); ++i) line += (i ? "," : "") + args[i];
  line += ")";
  for (std::string::size_type at; (at = line.find('\n')) != std::string::npos;) line.replace(at, 1, "\\n");
  log += (log.empty() ? "" : " ") + line;
}

bool ServiceDouble::act(const std::string& operation, const std::vector<std::string>& args) {
  record(operation, args);
  return refused.count(operation) == 0;
}

bool ServiceDouble::act(const std::string& operation, const std::vector<std::string>& args, QString& out) {
  record(operation + (out.isEmpty() ? "" : "!message-not-empty"), args);
  out = wire(message);
  return refused.count(operation) == 0;
}

std::string ServiceDouble::ask(const std::string& getter) {
  record(getter, {});
  return answers[getter];
}

int ServiceDouble::askNumber(const std::string& getter) { return std::atoi(ask(getter).c_str()); }

void ServiceDouble::store(const std::string& setter, const std::string& value, const std::string& getter) {
  record(setter, {value});
  answers[getter] = value;
}

namespace mero {
namespace ostrel {

IstComData::IstComData() : d(nullptr) {}
IstComData::~IstComData() {}
IstComData* IstComData::getInstance() {
  static IstComData instance;
  return &instance;
}

istProject* IstComData::currentProject() {
  service->record("project", {});
  return service->projectOpen ? opaque<istProject>("project") : nullptr;
}
bool IstComData::isProjBusy() {
  service->record("busy", {});
  return service->busy;
}
QString IstComData::currentProjectFile() { return wire(service->projectFile); }
RTLHierachy* IstComData::hierarchy() { return service->answers["noDesign"] == "1" ? nullptr : &design; }
bool RTLHierachy::getDCUFlag() { return service->askNumber("getDCUFlag"); }
bool RTLHierachy::getJ2WFlag() { return service->askNumber("getJ2WFlag"); }
bool RTLHierachy::getJtag2WBFlag() { return service->askNumber("getJtag2WBFlag"); }
bool RTLHierachy::getJtag2WBCore() { return service->askNumber("getJtag2WBCore"); }

bool IstComData::LoadDesign(QString& m) { return service->act("LoadDesign", {}, m); }
bool IstComData::NewProject(QString& m) { return service->act("NewProject", {}, m); }
bool IstComData::NewProject(const QString& f, QString& m) { return service->act("NewProject", {text(f)}, m); }
bool IstComData::OpenProject(const QString& f, QString& m) { return service->act("OpenProject", {text(f)}, m); }
bool IstComData::SaveProject(QString& m) { return service->act("SaveProject", {}, m); }
bool IstComData::SaveProjectAs(const QString& f, QString& m) { return service->act("SaveProjectAs", {text(f)}, m); }
bool IstComData::isProjChanged() {
  service->record("isProjChanged", {});
  return service->changed;
}
bool IstComData::CloseProject() { return service->act("CloseProject"); }
void IstComData::registerToHDLmanager() { service->act("register"); }
void IstComData::unregisterToHDLmanager() { service->act("unregister"); }
void IstComData::EnableAllCores(bool on) { service->act("EnableAllCores", {number(on)}); }
bool IstComData::EnableCore(const QString& n, bool on) {
  return service->act("EnableCore", {text(n), number(on)}) && coreNamed(text(n));
}
bool IstComData::DRC(QString& m) { return service->act("DRC", {}, m); }
bool IstComData::Insert(int mode) { return service->act("Insert", {number(mode)}); }

QStringList IstComData::getCoreNameList() {
  service->record("getCoreNameList", {});
  QStringList names;
  for (const std::string& name : service->cores) names << wire(name);
  return names;
}
istCore* IstComData::addCore(const QString& n, QString& m) {
  return service->act("addCore", {text(n)}, m) ? coreNamed("c2") : nullptr;
}
bool IstComData::deleteCore(const QString& n, QString& m) { return service->act("deleteCore", {text(n)}, m); }
bool IstComData::renameCore(const QString& o, const QString& n, QString& m) {
  return service->act("renameCore", {text(o), text(n)}, m);
}
QString IstComData::getActiveCoreName() {
  service->record("getActiveCoreName", {});
  return service->noActiveCore ? QString() : wire(service->cores[0]);
}
istCore* IstComData::getCore(const QString& n) {
  service->record("getCore", {text(n)});
  return coreNamed(text(n) == "alias" ? "c1" : text(n));  // a name need not be spelled as it is stored
}
istCore* IstComData::getActiveLogicCore() {
  service->record("active", {});
  return service->noActiveCore ? nullptr : coreNamed(service->cores[0]);
}
bool IstComData::selectCore(const QString& n) { return service->act("selectCore", {text(n)}); }
bool IstComData::addWishboneMaster(QString& m) { return service->act("addWishboneMaster", {}, m); }
bool IstComData::deleteWishboneMaster(QString& m) { return service->act("deleteWishboneMaster", {}, m); }
bool IstComData::addSerdesCore(QString& m) { return service->act("addSerdesCore", {}, m); }
bool IstComData::deleteSerdesCore(QString& m) { return service->act("deleteSerdesCore", {}, m); }
istWishboneMaster* IstComData::getWishboneMaster() {
  service->record("getWishboneMaster", {});
  wishbone.bigEndianOnly = service->bigEndianOnly;
  return service->hasOptionalCores ? &wishbone : nullptr;
}
istSerdesCore* IstComData::getSerdesCore() {
  service->record("getSerdesCore", {});
  serdes.sampleClock = wire("c");
  serdes.resetSignal = wire("r");
  return service->hasOptionalCores ? &serdes : nullptr;
}
istTraceData* IstComData::getTrace(istCore* core) {
  service->record("trace", {text(core->name)});
  traceData.nodes = service->nodes;
  return service->hasTraceAndDataset ? &traceData : nullptr;
}
istDataset* IstComData::getDataset(istCore* core) {
  service->record("dataset", {text(core->name)});
  return service->hasTraceAndDataset ? opaque<istDataset>("dataset") : nullptr;
}

bool IstComData::addTraceSignals(istTraceData*, QStringList s, QString b, QString p, QString& m) {
  return service->act("addTraceSignals", {joined(s), text(b), text(p)}, m);
}
bool IstComData::moveTraceSignals(istTraceData*, QStringList s, QString b, QString p, QString& m) {
  return service->act("moveTraceSignals", {joined(s), text(b), text(p)}, m);
}
bool IstComData::removeTraceSignals(istTraceData*, QStringList s, QString& m) {
  return service->act("removeTraceSignals", {joined(s)}, m);
}
bool IstComData::groupTraceSignals(istTraceData*, QString& b, QStringList s, QString& m) {
  const bool done = service->act("groupTraceSignals", {text(b), joined(s)}, m);
  if (!service->chosenName.empty()) b = wire(service->chosenName);
  return done;
}
bool IstComData::ungroupTraceSignals(istTraceData*, const QString& b, QString& m) {
  return service->act("ungroupTraceSignals", {text(b)}, m);
}
bool IstComData::renameTraceBus(istTraceData*, const QString& b, const QString& n, QString& m) {
  return service->act("renameTraceBus", {text(b), text(n)}, m);
}

// Getters and setters of one option each, read back from what was stored.
#define TEXT_OPTION(getter, setter, Type)                                      \
  QString IstComData::getter(istCore*) { return wire(service->ask(#getter)); } \
  void IstComData::setter(Type v, istCore*) { service->store(#setter, text(v), #getter); }
#define NUMBER_OPTION(getter, setter)                                      \
  int IstComData::getter(istCore*) { return service->askNumber(#getter); } \
  void IstComData::setter(int v, istCore*) { service->store(#setter, number(v), #getter); }
#define SWITCH_OPTION(getter, setter)                                       \
  bool IstComData::getter(istCore*) { return service->askNumber(#getter); } \
  void IstComData::setter(bool v, istCore*) { service->store(#setter, number(v), #getter); }
#define CODE_OPTION(getter, setter)                                            \
  QString IstComData::getter(istCore*) { return wire(service->ask(#getter)); } \
  void IstComData::setter(int v, istCore*) { service->store(#setter, number(v), #getter); }

TEXT_OPTION(getSampleClk, setSampleClk, const QString&)
SWITCH_OPTION(isSampleEnable, setSampleEnable)
TEXT_OPTION(getSampleEnableSignal, setSampleEnableSignal, const QString&)
NUMBER_OPTION(getSampleEnablePri, setSampleEnablePri)
SWITCH_OPTION(isTrigEnable, setTrigEnable)
TEXT_OPTION(getTrigEnableSignal, setTrigEnableSignal, const QString&)
NUMBER_OPTION(getTrigEnablePri, setTrigEnablePri)
NUMBER_OPTION(getCaptureNum, setCaptureNum)
NUMBER_OPTION(getBufferDepth, setBufferDepth)
CODE_OPTION(getImplementaionName, setImplementation)
SWITCH_OPTION(isTimeStamp, setTimeStamp)
NUMBER_OPTION(getTimeStampBits, setTimeStampBits)
NUMBER_OPTION(getCaptureMode, setCaptureMode)
NUMBER_OPTION(getCaptureMin, setCaptureMin)
SWITCH_OPTION(isIncludeTrigger, setIncludeTrigger)
NUMBER_OPTION(getDefaultTrigRadix, setDefaultTrigRadix)
SWITCH_OPTION(isEventCounter, setEventCounter)
NUMBER_OPTION(getEventCounter, setEventCounterValue)
SWITCH_OPTION(isTriggerOut, setTriggerOut)
CODE_OPTION(getTriggerOutTypeName, setTriggerOutType)
TEXT_OPTION(getTriggerOutName, setTriggerOutName, QString)
NUMBER_OPTION(getTriggerOutPolarity, setTriggeroutPolarity)
TEXT_OPTION(getTriggerOutMPW, setTriggeroutMPW, const QString&)
QString IstComData::getCaptureModeName(istCore*) { return wire(service->ask("getCaptureModeName")); }
void IstComData::setDisableDistRAM(bool v, istCore*) { service->act("setDisableDistRAM", {number(v)}); }

bool IstComData::getWBPerformeConnect() { return service->askNumber("getWBPerformeConnect"); }
void IstComData::setWBPerformeConnect(bool v) {
  service->store("setWBPerformeConnect", number(v), "getWBPerformeConnect");
}
int IstComData::getWBEdianMode() { return service->askNumber("getWBEdianMode"); }
void IstComData::setWBEdianMode(ENDIAN_MODE v) { service->store("setWBEdianMode", number(v), "getWBEdianMode"); }
void IstComData::setSerdesClk(QString& n) { service->act("setSerdesClk", {text(n)}); }
void IstComData::setSerdesReset(QString& n) { service->act("setSerdesReset", {text(n)}); }

std::vector<std::string> IstComData::getTUNameList(istDataset*) { return {"t1", "a b"}; }
std::vector<std::string> IstComData::getTENameList(istDataset*) { return {"e1", "{"}; }
bool IstComData::isTUNameUsed(const QString& n, istDataset*) {
  service->record("isTUNameUsed", {text(n)});
  return service->used.count(text(n));
}
bool IstComData::isTENameUsed(const QString& n, istDataset*) {
  service->record("isTENameUsed", {text(n)});
  return service->used.count(text(n));
}
bool IstComData::addTU(QString& r, const QStringList& s, QString& o, QString& v, QString& n, QString& m, istDataset*) {
  const bool done = service->act("addTU", {text(r), joined(s), text(o), text(v), text(n)}, m);
  if (n.isEmpty()) n = wire(service->chosenName);
  return done;
}
istTU* IstComData::getTU(const QString& n, istDataset*) {
  service->record("getTU", {text(n)});
  return service->used.count(text(n)) ? opaque<istTU>("unit") : nullptr;
}
bool IstComData::setTU(istTU*, QString& r, const QStringList& a, const QStringList& d, QString& o, QString& v,
                       QString& m, istDataset*) {
  const std::string removed = d.size() == 1 && d.at(0).isEmpty() ? "all" : joined(d);
  return service->act("setTU", {text(r), joined(a), removed, text(o), text(v)}, m);
}
bool IstComData::renameTU(const QString& o, const QString& n, QString& m, istDataset*) {
  return service->act("renameTU", {text(o), text(n)}, m);
}
bool IstComData::renameTE(const QString& o, const QString& n, QString& m, istDataset*) {
  return service->act("renameTE", {text(o), text(n)}, m);
}
bool IstComData::removeTU(const QString& n, istDataset*) { return service->act("removeTU", {text(n)}); }
bool IstComData::removeTE(const QString& n, istDataset*) { return service->act("removeTE", {text(n)}); }
bool IstComData::addTE(QString& n, const QString& e, int ram, int depth, int count, QString& m, istDataset*) {
  const bool done = service->act("addTE", {text(n), text(e), number(ram), number(depth), number(count)}, m);
  if (n.isEmpty()) n = wire(service->chosenName);
  return done;
}
bool IstComData::setTE(QString& n, const QString& e, int ram, int depth, int count, QString& m, istDataset*) {
  return service->act("setTE", {text(n), text(e), number(ram), number(depth), number(count)}, m);
}

void IstComData::PrintMessage(const std::string& code, std::string arg1, std::string arg2) {
  service->record("#" + code, {arg1, arg2});
}

// Small tables of valid values, so that a test can tell which validator was asked.
QList<int> istCore::getValidBufferDepthValues() { return {16, 32}; }
bool istCore::isValidBufferDepth(int depth) { return depth == 16 || depth == 32; }
int istCore::getMinTimestampBitsByDepth(int depth) { return depth == 0 ? -1 : depth; }
int istCore::getMaxTimestampBitsByDepth(int depth) { return depth == 0 ? -1 : 63; }
QList<int> istCore::getValidMinSamplePerTrigsValuesByDepth(int depth) { return {depth / 2}; }
bool istCore::isValidMinSamplePerTrigsValueByDepth(int depth, int value) { return value == depth / 2; }
QList<int> istCore::getValidNumberOfTrigsValuesByDepth(int depth, int samples) { return {1, depth / samples}; }
bool istCore::isValidNumberOfTrigsValueByDepth(int depth, int samples, int value) { return value == depth / samples; }
bool istCore::isValidEventCounterValue(int value) { return value >= 2 && value <= 65536; }
int istCore::isValidTriggerOutNetName(const QString& name) {
  if (name.startsWith(QLatin1String("bad"))) return name.mid(3).toInt();
  return 0;
}

TraceNode::TraceNode() : kind(0), target(nullptr) {}
TraceNode::~TraceNode() {}
QString TraceNode::displayName() const { return name; }

}  // namespace ostrel
}  // namespace mero
