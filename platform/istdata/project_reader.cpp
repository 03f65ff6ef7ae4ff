// Reads a project from JSON and checks everything in it.
#include <QJsonArray>
#include <QJsonObject>
#include <limits>

#include "platform/istdata/project_checks.h"
#include "platform/istdata/project_file.h"
#include "platform/istdata/project_words.h"
#include "platform/text/byte_text.h"
#include "platform/text/json_fields.h"
#include "platform/text/json_text.h"
#include "platform/text/numbers.h"
#include "platform/trigger/trigger_expression.h"
#include "platform/trigger/unit_value.h"

namespace ost {

using namespace mero::ostrel;

namespace {

QString element(const QString& path, int index) {
  return QStringLiteral("%1[%2]").arg(path).arg(index);
}

class ProjectReader {
 public:
  std::unique_ptr<istProject> read(const QJsonObject& root);
  JsonFault fault;

 private:
  void fail(const QString& path, const QString& what) {
    if (fault.none()) fault.text = path + QLatin1String(": ") + what;
  }
  QString netName(JsonFields& fields, const char* key, bool mayBeEmpty);
  bool checkNet(const QString& name, const QString& path);
  void readCore(const QJsonValue& value, const QString& path, istProject& project);
  void readOptions(const QJsonValue& value, const QString& path, Core& core);
  void readCapture(JsonFields& f, Core& core);
  void readOptionalCores(JsonFields& f, istProject& project);
  void readTrace(const QJsonArray& array, const QString& path, TraceTree& tree, TraceNode* bus);
  void readUnit(const QJsonValue& value, const QString& path, istDataset& dataset);
  void readExpression(const QJsonValue& value, const QString& path, istDataset& dataset);
};

bool ProjectReader::checkNet(const QString& name, const QString& path) {
  QString error;
  if (checkNetName(name, error)) return true;
  fail(path, error);
  return false;
}

QString ProjectReader::netName(JsonFields& fields, const char* key, bool mayBeEmpty) {
  const QString name = fields.text(key);
  if (!(mayBeEmpty && name.isEmpty())) checkNet(name, fields.pathOf(key));
  return name;
}

void ProjectReader::readOptions(const QJsonValue& value, const QString& path, Core& core) {
  JsonFields f(value, path, fault);
  CoreOptions& o = core.options;
  o.sampleClock = netName(f, "sampleClock", true);
  o.sampleEnable = f.flag("sampleEnable");
  o.sampleEnableSignal = netName(f, "sampleEnableSignal", true);
  o.sampleEnablePolarity = Polarity(f.word("sampleEnablePolarity", polarityWords()));
  o.triggerEnable = f.flag("triggerEnable");
  o.triggerEnableSignal = netName(f, "triggerEnableSignal", true);
  o.triggerEnablePolarity = Polarity(f.word("triggerEnablePolarity", polarityWords()));
  o.implementation = Implementation(f.word("implementation", implementationWords()));
  o.timestamp = f.flag("timestamp");
  o.captureMode = CaptureMode(f.word("captureMode", captureModeWords()));
  o.includeTrigger = f.flag("includeTrigger");
  o.distRamDisabled = f.flag("distRamDisabled");
  o.defaultRadix = Radix(f.word("defaultRadix", radixWords()));
  o.eventCounter = f.flag("eventCounter");
  o.eventCounterValue = f.number("eventCounterValue", 2, 65536);
  o.triggerOut = f.flag("triggerOut");
  o.triggerOutType = TriggerOutType(f.word("triggerOutType", triggerOutWords()));
  o.triggerOutPolarity = Polarity(f.word("triggerOutPolarity", polarityWords()));
  o.triggerOutMinPulse = f.number("triggerOutMinPulse", 0, std::numeric_limits<int>::max());
  o.triggerOutName = f.text("triggerOutName");
  if (!o.triggerOutName.isEmpty() && istCore::isValidTriggerOutNetName(o.triggerOutName) != 0)
    f.fail(f.pathOf("triggerOutName"), QStringLiteral("%1 is not a name for a new net.").arg(quoted(o.triggerOutName)));

  readCapture(f, core);
  f.refuseOthers();
}

/// The numbers that depend on the buffer depth.
void ProjectReader::readCapture(JsonFields& f, Core& core) {
  CoreOptions& o = core.options;
  const auto validNumber = [&](const char* key, const QList<int>& valid) {
    const int number = f.number(key, 0, 1 << 16);
    if (fault.none() && !valid.contains(number)) {
      QStringList texts;
      for (int v : valid) texts << QString::number(v);
      f.fail(f.pathOf(key), QStringLiteral("expected %1, found %2.").arg(texts.join(QStringLiteral(", "))).arg(number));
    }
    return number;
  };
  o.bufferDepth = validNumber("bufferDepth", istCore::getValidBufferDepthValues());
  o.timestampBits = f.number("timestampBits", istCore::getMinTimestampBitsByDepth(o.bufferDepth),
                             istCore::getMaxTimestampBitsByDepth(o.bufferDepth));
  core.samplesPerTrigger =
      validNumber("samplesPerTrigger", istCore::getValidMinSamplePerTrigsValuesByDepth(o.bufferDepth));
  o.triggerCount =
      validNumber("triggerCount", istCore::getValidNumberOfTrigsValuesByDepth(o.bufferDepth, core.samplesPerTrigger));
}

void ProjectReader::readTrace(const QJsonArray& array, const QString& path, TraceTree& tree, TraceNode* bus) {
  for (int i = 0; i < array.size() && fault.none(); ++i) {
    const QJsonValue value = array[i];
    const QString place = element(path, i);
    QString error;
    TraceNode* added = nullptr;
    if (value.isString()) {
      const QString name = textFromUnicode(value.toString());
      if (!checkNet(name, place)) return;
      added = tree.appendSignal(bus, name, error);
    } else {
      JsonFields f(value, place, fault);
      const bool isBus = !f.has("reference");
      const QString name = netName(f, isBus ? "bus" : "reference", false);
      const QJsonArray memberList = isBus ? f.list("members") : QJsonArray();
      f.refuseOthers();
      if (!fault.none()) return;
      added = isBus ? tree.appendBus(bus, name, error) : tree.appendReference(bus, name, error);
      if (added && isBus) readTrace(memberList, place + QLatin1String(".members"), tree, added);
    }
    if (!added) fail(place, error);
  }
}

void ProjectReader::readUnit(const QJsonValue& value, const QString& path, istDataset& dataset) {
  JsonFields f(value, path, fault);
  TriggerUnit unit;
  QString error;
  unit.name = f.text("name");
  const QString op = f.text("operator");
  unit.radix = Radix(f.word("radix", radixWords()));
  unit.value = f.text("value");
  const QJsonArray signalNames = f.list("signals");
  for (int i = 0; i < signalNames.size() && fault.none(); ++i) {
    const QString place = element(f.pathOf("signals"), i), name = textFromUnicode(signalNames[i].toString());
    if (checkNet(name, place)) unit.signalNames << name;
  }
  f.refuseOthers();
  if (!fault.none()) return;
  if (!checkName(unit.name, QStringLiteral("The unit name"), error))
    f.fail(f.pathOf("name"), error);
  else if (dataset.findUnit(unit.name))
    f.fail(f.pathOf("name"), QStringLiteral("%1 is used twice.").arg(quoted(unit.name)));
  else if (!operatorFromText(op, unit.op))
    f.fail(f.pathOf("operator"), QStringLiteral("%1 is not a valid operator.").arg(quoted(op)));
  else if (!checkUnitDigits(unit, error))
    f.fail(f.pathOf("value"), error);
  else
    dataset.addUnit(std::move(unit));
}

void ProjectReader::readExpression(const QJsonValue& value, const QString& path, istDataset& dataset) {
  JsonFields f(value, path, fault);
  TriggerExpression expression;
  QString error;
  expression.name = f.text("name");
  const QString text = f.text("expression");
  expression.ram = ExpressionRam(f.word("ram", expressionRamWords()));
  expression.maxSequenceDepth = f.number("maxSequenceDepth", 1, kMaxSequenceDepth);
  expression.maxEventCount = f.number("maxEventCount", 1, kMaxEventCount);
  f.refuseOthers();
  if (!fault.none()) return;
  int steps = 0, largestCount = 0;
  if (!checkName(expression.name, QStringLiteral("The expression name"), error))
    f.fail(f.pathOf("name"), error);
  else if (dataset.findExpression(expression.name))
    f.fail(f.pathOf("name"), QStringLiteral("%1 is used twice.").arg(quoted(expression.name)));
  else if (!isPowerOfTwo(expression.maxSequenceDepth, kMaxSequenceDepth))
    f.fail(f.pathOf("maxSequenceDepth"), QStringLiteral("expected a power of two."));
  else if (!isPowerOfTwo(expression.maxEventCount, kMaxEventCount))
    f.fail(f.pathOf("maxEventCount"), QStringLiteral("expected a power of two."));
  else if (!setExpressionText(dataset, text, expression, steps, largestCount, error))
    f.fail(f.pathOf("expression"), error);
  else
    dataset.addExpression(std::move(expression));
}

void ProjectReader::readCore(const QJsonValue& value, const QString& path, istProject& project) {
  JsonFields f(value, path, fault);
  const QString name = f.text("name");
  QString error;
  if (fault.none() && !checkName(name, QStringLiteral("The core name"), error)) f.fail(f.pathOf("name"), error);
  if (fault.none() && project.findCore(name))
    f.fail(f.pathOf("name"), QStringLiteral("%1 is used twice.").arg(quoted(name)));
  if (!fault.none()) return;
  project.cores.emplace_back(new Core(name));
  Core& core = *project.cores.back();
  readOptions(f.value("options"), f.pathOf("options"), core);
  readTrace(f.list("trace"), f.pathOf("trace"), *core.trace, nullptr);
  if (fault.none() && !core.trace->bindReferences(error)) f.fail(f.pathOf("trace"), error);
  const QJsonArray units = f.list("units"), expressions = f.list("expressions");
  for (int i = 0; i < units.size() && fault.none(); ++i)
    readUnit(units[i], element(f.pathOf("units"), i), core.dataset);
  for (int i = 0; i < expressions.size() && fault.none(); ++i)
    readExpression(expressions[i], element(f.pathOf("expressions"), i), core.dataset);
  f.refuseOthers();
}

void ProjectReader::readOptionalCores(JsonFields& f, istProject& project) {
  if (f.has("serdes")) {
    JsonFields serdes(f.value("serdes"), f.pathOf("serdes"), fault);
    project.serdes.reset(new istSerdesCore);
    project.serdes->sampleClock = netName(serdes, "sampleClock", true);
    project.serdes->resetSignal = netName(serdes, "resetSignal", true);
    serdes.refuseOthers();
  }
  if (f.has("wishbone")) {
    JsonFields wishbone(f.value("wishbone"), f.pathOf("wishbone"), fault);
    project.wishbone.reset(new istWishboneMaster{false});
    project.wishboneConnected = wishbone.flag("connected");
    project.wishboneEndian = ENDIAN_MODE(wishbone.word("endian", endianWords()));
    wishbone.refuseOthers();
  }
}

std::unique_ptr<istProject> ProjectReader::read(const QJsonObject& root) {
  JsonFields f(root, QString(), fault);
  if (!f.has("format") || f.text("format") != projectFormat()) {
    fault.text = QStringLiteral("it is not a project file (no \"format\": \"%1\").").arg(projectFormat());
    return nullptr;
  }
  const QJsonValue version = f.value("version");
  if (version.isDouble() && version.toDouble() > kProjectFileVersion) {
    fault.text = QStringLiteral("it has version %1, written by a newer release; this one reads up to version %2.")
                     .arg(version.toDouble(), 0, 'g', 15)
                     .arg(kProjectFileVersion);
    return nullptr;
  }
  fault.underscoredKeys = f.number("version", 1, kProjectFileVersion) == 1;
  auto project = std::make_unique<istProject>();
  const QJsonArray cores = f.list("cores");
  for (int i = 0; i < cores.size() && fault.none(); ++i)
    readCore(cores[i], element(QStringLiteral("cores"), i), *project);
  const QJsonValue active = f.value("activeCore");
  if (!active.isNull()) {
    project->activeCore = project->findCore(f.text("activeCore"));
    if (!project->activeCore) f.fail(f.pathOf("activeCore"), QStringLiteral("names no core of the project."));
  }
  readOptionalCores(f, *project);
  f.refuseOthers();
  return fault.none() ? std::move(project) : nullptr;
}

}  // namespace

std::unique_ptr<istProject> projectFromJson(const QByteArray& json, QString& error) {
  if (json.size() > kMaxProjectFileBytes) {
    error = QStringLiteral("it is larger than %1 MB.").arg(kMaxProjectFileBytes >> 20);
    return nullptr;
  }
  QJsonValue root;
  JsonTextFault fault;
  if (!parseJson(json, root, fault)) {
    error = QStringLiteral("line %1, column %2: %3.").arg(fault.line).arg(fault.column).arg(fault.text);
    return nullptr;
  }
  if (!root.isObject()) {
    error = QStringLiteral("it is not a project file (it holds no JSON object).");
    return nullptr;
  }
  ProjectReader reader;
  auto project = reader.read(root.toObject());
  if (!project) error = reader.fault.text;
  return project;
}

}  // namespace ost
