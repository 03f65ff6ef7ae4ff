// The trigger options of a core: one rule per option, in the order in which they are applied.
#include "commands/trigger_options.h"

#include "commands/option_edit.h"

using mero::ostrel::IstComData;
using mero::ostrel::istCore;
using namespace ost_command;

namespace {

typedef const OptionEdit& Edit;

bool hasEventCounter(Edit edit) {
  return edit.service.isEventCounter(edit.core);
}
bool hasTriggerOut(Edit edit) {
  return edit.service.isTriggerOut(edit.core);
}

void setCounterValue(Edit edit, int) {
  int count;
  if (!edit.number(count) || !istCore::isValidEventCounterValue(count)) return edit.reject("0144", edit.typed);
  edit.service.setEventCounterValue(count, edit.core);
}

void setOutputName(Edit edit, int) {
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

/// Stored as the integer's own decimal text: 007 becomes 7.
void setOutputPulseWidth(Edit edit, int) {
  int width;
  if (!edit.number(width) || width < 0) return edit.reject("0155", edit.typed);
  edit.service.setTriggeroutMPW(QString::number(width), edit.core);
}

const OptionRule kRules[] = {
    {"DefaultRadix", nullptr, nullptr, &kRadices, "0141",
     [](Edit edit, int radix) { edit.service.setDefaultTrigRadix(radix, edit.core); }},
    {"EventCounter", nullptr, nullptr, &kOnOff, "0142",
     [](Edit edit, int on) { edit.service.setEventCounter(on != 0, edit.core); }},
    {"CounterValue", hasEventCounter, "0143", nullptr, nullptr, setCounterValue},
    {"TriggerOut", nullptr, nullptr, &kOnOff, "0145",
     [](Edit edit, int on) { edit.service.setTriggerOut(on != 0, edit.core); }},
    {"OutNetType", hasTriggerOut, "0146", &kOutputTypes, "0147",
     [](Edit edit, int type) { edit.service.setTriggerOutType(type, edit.core); }},
    {"OutNetName", hasTriggerOut, "0148", nullptr, nullptr, setOutputName},
    {"OutNetPri", hasTriggerOut, "0152", &kPolarities, "0153",
     [](Edit edit, int polarity) { edit.service.setTriggeroutPolarity(polarity, edit.core); }},
    {"OutNetMPW", hasTriggerOut, "0154", nullptr, nullptr, setOutputPulseWidth},
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
