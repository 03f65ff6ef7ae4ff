// The trigger options of a core: one rule per option, in the order in which they are applied.
#include "commands/trigger_options.h"

#include "commands/option_edit.h"

using mero::ostrel::IstComData;
using mero::ostrel::istCore;
using namespace ost_command;

namespace {

void setDefaultRadix(const OptionEdit& edit) {
  int radix;
  if (edit.keyword(kRadices, radix, "0141")) edit.service.setDefaultTrigRadix(radix, edit.core);
}

void setEventCounter(const OptionEdit& edit) {
  int on;
  if (edit.keyword(kOnOff, on, "0142")) edit.service.setEventCounter(on != 0, edit.core);
}

void setCounterValue(const OptionEdit& edit) {
  int count;
  if (!edit.require(edit.service.isEventCounter(edit.core), "0143")) return;
  if (!edit.number(count) || !istCore::isValidEventCounterValue(count)) return edit.reject("0144", edit.typed);
  edit.service.setEventCounterValue(count, edit.core);
}

void setTriggerOut(const OptionEdit& edit) {
  int on;
  if (edit.keyword(kOnOff, on, "0145")) edit.service.setTriggerOut(on != 0, edit.core);
}

void setOutputType(const OptionEdit& edit) {
  int type;
  if (!edit.require(edit.service.isTriggerOut(edit.core), "0146")) return;
  if (edit.keyword(kOutputTypes, type, "0147")) edit.service.setTriggerOutType(type, edit.core);
}

void setOutputName(const OptionEdit& edit) {
  if (!edit.require(edit.service.isTriggerOut(edit.core), "0148")) return;
  switch (istCore::isValidTriggerOutNetName(edit.text)) {
    case 0:
      return edit.service.setTriggerOutName(edit.text, edit.core);
    case 1:
      return edit.reject("0149", edit.typed);
    case 2:
      return edit.reject("0150", edit.typed, edit.typed);
    default:
      return edit.reject("0151", edit.typed, edit.typed);
  }
}

void setOutputPolarity(const OptionEdit& edit) {
  int polarity;
  if (!edit.require(edit.service.isTriggerOut(edit.core), "0152")) return;
  if (edit.keyword(kPolarities, polarity, "0153")) edit.service.setTriggeroutPolarity(polarity, edit.core);
}

/// Stored as the integer's own decimal text: 007 becomes 7.
void setOutputPulseWidth(const OptionEdit& edit) {
  int width;
  if (!edit.require(edit.service.isTriggerOut(edit.core), "0154")) return;
  if (!edit.number(width) || width < 0) return edit.reject("0155", edit.typed);
  edit.service.setTriggeroutMPW(QString::number(width), edit.core);
}

const OptionRule kRules[] = {
    {"DefaultRadix", setDefaultRadix}, {"EventCounter", setEventCounter},  {"CounterValue", setCounterValue},
    {"TriggerOut", setTriggerOut},     {"OutNetType", setOutputType},      {"OutNetName", setOutputName},
    {"OutNetPri", setOutputPolarity},  {"OutNetMPW", setOutputPulseWidth},
};
const std::size_t kRuleCount = sizeof kRules / sizeof kRules[0];

}  // namespace

void generate_trigger_option_list(OptionList& options) {
  appendOptions(kRules, kRuleCount, options);
}

void listTriggerOptions(IstComData* data, istCore* core, QString& out) {
  static const char* const radixNames[] = {"Bin", "Oct", "Dec", "Hex"};
  const int radix = data->getDefaultTrigRadix(core);
  if (radix >= 0 && radix <= 3) appendText(out, "DefaultRadix", QString::fromLatin1(radixNames[radix]));

  const bool eventCounter = data->isEventCounter(core);
  appendSwitch(out, "EventCounter", eventCounter);
  if (eventCounter) appendNumber(out, "CounterValue", data->getEventCounter(core));

  const bool triggerOut = data->isTriggerOut(core);
  appendSwitch(out, "TriggerOut", triggerOut);
  if (!triggerOut) return;
  appendText(out, "OutNetType", data->getTriggerOutTypeName(core));
  appendText(out, "OutNetName", data->getTriggerOutName(core));
  appendPolarity(out, "OutNetPri", data->getTriggerOutPolarity(core));
  appendText(out, "OutNetMPW", data->getTriggerOutMPW(core));
}

int setTriggerOptions(IstComData* data, istCore* core, OptionList& options, QString&) {
  applyOptions(kRules, kRuleCount, *data, core, options);
  return 0;
}
