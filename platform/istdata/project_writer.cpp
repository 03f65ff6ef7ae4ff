// Writes a project as JSON.
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include "platform/istdata/project_file.h"
#include "platform/istdata/project_words.h"
#include "platform/text/wire_text.h"
#include "platform/trigger/unit_value.h"

namespace ost {

using namespace mero::ostrel;

namespace {

QJsonArray traceJson(const QList<TraceNode*>& nodes) {
  QJsonArray array;
  for (const TraceNode* node : nodes) {
    if (node->kind == TRACE_NODE_SIGNAL)
      array.append(toUnicode(node->displayName()));
    else if (node->kind == TRACE_NODE_REF)
      array.append(QJsonObject{{"reference", toUnicode(node->displayName())}});
    else if (node->kind == TRACE_NODE_BUS)
      array.append(QJsonObject{{"bus", toUnicode(node->name)}, {"members", traceJson(node->children)}});
  }
  return array;
}

QJsonObject optionsJson(const Core& core) {
  const CoreOptions& o = core.options;
  return QJsonObject{
      {"buffer_depth", o.bufferDepth},
      {"capture_mode", captureModeWords()[o.captureMode]},
      {"default_radix", radixWords()[o.defaultRadix]},
      {"dist_ram_disabled", o.distRamDisabled},
      {"event_counter", o.eventCounter},
      {"event_counter_value", o.eventCounterValue},
      {"implementation", implementationWords()[o.implementation]},
      {"include_trigger", o.includeTrigger},
      {"sample_clock", toUnicode(o.sampleClock)},
      {"sample_enable", o.sampleEnable},
      {"sample_enable_polarity", polarityWords()[o.sampleEnablePolarity]},
      {"sample_enable_signal", toUnicode(o.sampleEnableSignal)},
      {"samples_per_trigger", core.samplesPerTrigger},
      {"timestamp", o.timestamp},
      {"timestamp_bits", o.timestampBits},
      {"trigger_count", o.triggerCount},
      {"trigger_enable", o.triggerEnable},
      {"trigger_enable_polarity", polarityWords()[o.triggerEnablePolarity]},
      {"trigger_enable_signal", toUnicode(o.triggerEnableSignal)},
      {"trigger_out", o.triggerOut},
      {"trigger_out_min_pulse", o.triggerOutMinPulse},
      {"trigger_out_name", toUnicode(o.triggerOutName)},
      {"trigger_out_polarity", polarityWords()[o.triggerOutPolarity]},
      {"trigger_out_type", triggerOutWords()[o.triggerOutType]},
  };
}

QJsonArray unitsJson(const istDataset& dataset) {
  QJsonArray array;
  for (const auto& entry : dataset.units()) {
    const TriggerUnit& unit = entry->unit;
    QJsonArray signalNames;
    for (const QString& name : unit.signalNames) signalNames.append(toUnicode(name));
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
                             {"max_event_count", expression->maxEventCount},
                             {"max_sequence_depth", expression->maxSequenceDepth},
                             {"name", expression->name},
                             {"ram", expressionRamWords()[expression->ram]}});
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
  QJsonObject root{{"active_core", project.activeCore ? QJsonValue(project.activeCore->name) : QJsonValue()},
                   {"cores", cores},
                   {"format", kProjectFormat},
                   {"version", kProjectFileVersion}};
  if (project.serdes)
    root["serdes"] = QJsonObject{{"reset_signal", toUnicode(project.serdes->resetSignal)},
                                 {"sample_clock", toUnicode(project.serdes->sampleClock)}};
  if (project.wishbone)
    root["wishbone"] =
        QJsonObject{{"connected", project.wishboneConnected}, {"endian", endianWords()[project.wishboneEndian]}};
  return QJsonDocument(root).toJson(QJsonDocument::Indented);
}

}  // namespace ost
