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
      array.append(QJsonObject{{QStringLiteral("reference"), unicodeFromText(node->displayName())}});
    else if (node->kind == TRACE_NODE_BUS)
      array.append(QJsonObject{{QStringLiteral("bus"), unicodeFromText(node->name)},
                               {QStringLiteral("members"), traceJson(node->children)}});
  }
  return array;
}

QJsonObject optionsJson(const Core& core) {
  const CoreOptions& o = core.options;
  return QJsonObject{
      {QStringLiteral("bufferDepth"), o.bufferDepth},
      {QStringLiteral("captureMode"), captureModeWords()[int(o.captureMode)]},
      {QStringLiteral("defaultRadix"), radixWords()[int(o.defaultRadix)]},
      {QStringLiteral("distRamDisabled"), o.distRamDisabled},
      {QStringLiteral("eventCounter"), o.eventCounter},
      {QStringLiteral("eventCounterValue"), o.eventCounterValue},
      {QStringLiteral("implementation"), implementationWords()[int(o.implementation)]},
      {QStringLiteral("includeTrigger"), o.includeTrigger},
      {QStringLiteral("sampleClock"), unicodeFromText(o.sampleClock)},
      {QStringLiteral("sampleEnable"), o.sampleEnable},
      {QStringLiteral("sampleEnablePolarity"), polarityWords()[int(o.sampleEnablePolarity)]},
      {QStringLiteral("sampleEnableSignal"), unicodeFromText(o.sampleEnableSignal)},
      {QStringLiteral("samplesPerTrigger"), core.samplesPerTrigger},
      {QStringLiteral("timestamp"), o.timestamp},
      {QStringLiteral("timestampBits"), o.timestampBits},
      {QStringLiteral("triggerCount"), o.triggerCount},
      {QStringLiteral("triggerEnable"), o.triggerEnable},
      {QStringLiteral("triggerEnablePolarity"), polarityWords()[int(o.triggerEnablePolarity)]},
      {QStringLiteral("triggerEnableSignal"), unicodeFromText(o.triggerEnableSignal)},
      {QStringLiteral("triggerOut"), o.triggerOut},
      {QStringLiteral("triggerOutMinPulse"), o.triggerOutMinPulse},
      {QStringLiteral("triggerOutName"), unicodeFromText(o.triggerOutName)},
      {QStringLiteral("triggerOutPolarity"), polarityWords()[int(o.triggerOutPolarity)]},
      {QStringLiteral("triggerOutType"), triggerOutWords()[int(o.triggerOutType)]},
  };
}

QJsonArray unitsJson(const istDataset& dataset) {
  QJsonArray array;
  for (const auto& entry : dataset.units()) {
    const TriggerUnit& unit = entry->unit;
    QJsonArray signalNames;
    for (const QString& name : unit.signalNames) signalNames.append(unicodeFromText(name));
    array.append(QJsonObject{{QStringLiteral("name"), unit.name},
                             {QStringLiteral("operator"), operatorText(unit.op)},
                             {QStringLiteral("radix"), radixText(unit.radix)},
                             {QStringLiteral("signals"), signalNames},
                             {QStringLiteral("value"), unit.value}});
  }
  return array;
}

QJsonArray expressionsJson(const istDataset& dataset) {
  QJsonArray array;
  for (const auto& expression : dataset.expressions())
    array.append(QJsonObject{{QStringLiteral("expression"), expression->text},
                             {QStringLiteral("maxEventCount"), expression->maxEventCount},
                             {QStringLiteral("maxSequenceDepth"), expression->maxSequenceDepth},
                             {QStringLiteral("name"), expression->name},
                             {QStringLiteral("ram"), expressionRamWords()[int(expression->ram)]}});
  return array;
}

}  // namespace

QByteArray projectToJson(const istProject& project) {
  QJsonArray cores;
  for (const auto& core : project.cores) {
    core->trace->compact();
    cores.append(QJsonObject{{QStringLiteral("expressions"), expressionsJson(core->dataset)},
                             {QStringLiteral("name"), core->name},
                             {QStringLiteral("options"), optionsJson(*core)},
                             {QStringLiteral("trace"), traceJson(core->trace->nodes)},
                             {QStringLiteral("units"), unitsJson(core->dataset)}});
  }
  QJsonObject root{
      {QStringLiteral("activeCore"), project.activeCore ? QJsonValue(project.activeCore->name) : QJsonValue()},
      {QStringLiteral("cores"), cores},
      {QStringLiteral("format"), projectFormat()},
      {QStringLiteral("version"), kProjectFileVersion}};
  if (project.serdes)
    root[QStringLiteral("serdes")] =
        QJsonObject{{QStringLiteral("resetSignal"), unicodeFromText(project.serdes->resetSignal)},
                    {QStringLiteral("sampleClock"), unicodeFromText(project.serdes->sampleClock)}};
  if (project.wishbone)
    root[QStringLiteral("wishbone")] = QJsonObject{{QStringLiteral("connected"), project.wishboneConnected},
                                                   {QStringLiteral("endian"), endianWords()[project.wishboneEndian]}};
  return QJsonDocument(root).toJson(QJsonDocument::Indented);
}

}  // namespace ost
