// Writes a project as JSON.
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include "platform/istdata/project_file.h"
#include "platform/istdata/project_words.h"
#include "platform/text/byte_text.h"
#include "platform/trigger/unit_value.h"

namespace ost {

using namespace mero::ostrel;

namespace {

QJsonArray traceJson(const QList<TraceNode*>& nodes) {
  QJsonArray array;
  for (const TraceNode* node : nodes) {
    if (node->kind == TRACE_NODE_SIGNAL)
      array.append(unicodeFromText(node->displayName()));
    else if (node->kind == TRACE_NODE_REF)
      array.append(QJsonObject{{"reference", unicodeFromText(node->displayName())}});
    else if (node->kind == TRACE_NODE_BUS)
      array.append(QJsonObject{{"bus", unicodeFromText(node->name)}, {"members", traceJson(node->children)}});
  }
  return array;
}

QJsonObject optionsJson(const Core& core) {
  const CoreOptions& o = core.options;
  return QJsonObject{
      {"bufferDepth", o.bufferDepth},
      {"captureMode", captureModeWords()[int(o.captureMode)]},
      {"defaultRadix", radixWords()[int(o.defaultRadix)]},
      {"distRamDisabled", o.distRamDisabled},
      {"eventCounter", o.eventCounter},
      {"eventCounterValue", o.eventCounterValue},
      {"implementation", implementationWords()[int(o.implementation)]},
      {"includeTrigger", o.includeTrigger},
      {"sampleClock", unicodeFromText(o.sampleClock)},
      {"sampleEnable", o.sampleEnable},
      {"sampleEnablePolarity", polarityWords()[int(o.sampleEnablePolarity)]},
      {"sampleEnableSignal", unicodeFromText(o.sampleEnableSignal)},
      {"samplesPerTrigger", core.samplesPerTrigger},
      {"timestamp", o.timestamp},
      {"timestampBits", o.timestampBits},
      {"triggerCount", o.triggerCount},
      {"triggerEnable", o.triggerEnable},
      {"triggerEnablePolarity", polarityWords()[int(o.triggerEnablePolarity)]},
      {"triggerEnableSignal", unicodeFromText(o.triggerEnableSignal)},
      {"triggerOut", o.triggerOut},
      {"triggerOutMinPulse", o.triggerOutMinPulse},
      {"triggerOutName", unicodeFromText(o.triggerOutName)},
      {"triggerOutPolarity", polarityWords()[int(o.triggerOutPolarity)]},
      {"triggerOutType", triggerOutWords()[int(o.triggerOutType)]},
  };
}

QJsonArray unitsJson(const istDataset& dataset) {
  QJsonArray array;
  for (const auto& entry : dataset.units()) {
    const TriggerUnit& unit = entry->unit;
    QJsonArray signalNames;
    for (const QString& name : unit.signalNames) signalNames.append(unicodeFromText(name));
    array.append(QJsonObject{{"name", unit.name},
                             {"operator", operatorText(unit.op)},
                             {"radix", radixText(unit.radix)},
                             {"signals", signalNames},
                             {"value", unit.value}});
  }
  return array;
}

QJsonArray expressionsJson(const istDataset& dataset) {
  QJsonArray array;
  for (const auto& expression : dataset.expressions())
    array.append(QJsonObject{{"expression", expression->text},
                             {"maxEventCount", expression->maxEventCount},
                             {"maxSequenceDepth", expression->maxSequenceDepth},
                             {"name", expression->name},
                             {"ram", expressionRamWords()[int(expression->ram)]}});
  return array;
}

}  // namespace

QByteArray projectToJson(const istProject& project) {
  QJsonArray cores;
  for (const auto& core : project.cores) {
    core->trace->compact();
    cores.append(QJsonObject{{"expressions", expressionsJson(core->dataset)},
                             {"name", core->name},
                             {"options", optionsJson(*core)},
                             {"trace", traceJson(core->trace->nodes)},
                             {"units", unitsJson(core->dataset)}});
  }
  QJsonObject root{{"activeCore", project.activeCore ? QJsonValue(project.activeCore->name) : QJsonValue()},
                   {"cores", cores},
                   {"format", kProjectFormat},
                   {"version", kProjectFileVersion}};
  if (project.serdes)
    root["serdes"] = QJsonObject{{"resetSignal", unicodeFromText(project.serdes->resetSignal)},
                                 {"sampleClock", unicodeFromText(project.serdes->sampleClock)}};
  if (project.wishbone)
    root["wishbone"] =
        QJsonObject{{"connected", project.wishboneConnected}, {"endian", endianWords()[project.wishboneEndian]}};
  return QJsonDocument(root).toJson(QJsonDocument::Indented);
}

}  // namespace ost
