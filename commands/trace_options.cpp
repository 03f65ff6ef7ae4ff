// The trace options of a core: one rule per option, in the order in which they are applied.
#include "commands/trace_options.h"

#include <sstream>

#include "commands/option_edit.h"
#include "framework/text.h"

using mero::ostrel::IstComData;
using mero::ostrel::istCore;
using namespace ost_command;

namespace {

/// What message "0129" shows of the bounds of the timestamp width; it closes the quotation that the catalogue's text
/// opens. Empty when a bound is unknown.
std::string rangeText(int min, int max) {
  if (min == -1 || max == -1) return std::string();
  std::ostringstream text;
  text << min << " to " << max << ". Ignore \"";
  return text.str();
}

typedef const OptionEdit& Edit;

bool hasSampleEnable(Edit edit) {
  return edit.service.isSampleEnable(edit.core);
}
bool hasTriggerEnable(Edit edit) {
  return edit.service.isTrigEnable(edit.core);
}
bool hasTimestamp(Edit edit) {
  return edit.service.isTimeStamp(edit.core);
}
bool hasWindows(Edit edit) {
  return edit.service.getCaptureMode(edit.core) != 0;
}

void setBufferDepth(Edit edit, int) {
  int depth;
  if (!edit.number(depth) || !istCore::isValidBufferDepth(depth))
    return edit.reject("0125", validList(istCore::getValidBufferDepthValues()), edit.typed);
  edit.service.setBufferDepth(depth, edit.core);
}

void setTimestampBits(Edit edit, int) {
  int bits;
  const int depth = edit.service.getBufferDepth(edit.core);
  const int min = istCore::getMinTimestampBitsByDepth(depth), max = istCore::getMaxTimestampBitsByDepth(depth);
  if (!edit.number(bits) || bits < min || bits > max) return edit.reject("0129", rangeText(min, max), edit.typed);
  edit.service.setTimeStampBits(bits, edit.core);
}

void setMinimumSamples(Edit edit, int) {
  int samples;
  const int depth = edit.service.getBufferDepth(edit.core);
  if (!edit.number(samples) || !istCore::isValidMinSamplePerTrigsValueByDepth(depth, samples))
    return edit.reject("0132", validList(istCore::getValidMinSamplePerTrigsValuesByDepth(depth)), edit.typed);
  edit.service.setCaptureMin(samples, edit.core);
}

void setNumberOfTriggers(Edit edit, int) {
  int triggers;
  if (!edit.require(hasTriggerEnable(edit), "0139")) return;
  const int depth = edit.service.getBufferDepth(edit.core), samples = edit.core->samplesPerTrigger;
  if (!edit.number(triggers) || !istCore::isValidNumberOfTrigsValueByDepth(depth, samples, triggers))
    return edit.reject("0140", validList(istCore::getValidNumberOfTrigsValuesByDepth(depth, samples)), edit.typed);
  edit.service.setCaptureNum(triggers, edit.core);
}

const OptionRule kRules[] = {
    {"SampleClk", nullptr, nullptr, nullptr, nullptr,
     [](Edit edit, int) { edit.service.setSampleClk(edit.text, edit.core); }},
    {"SampleEnable", nullptr, nullptr, &kOnOff, "0121",
     [](Edit edit, int on) { edit.service.setSampleEnable(on != 0, edit.core); }},
    {"SampleEnableSig", hasSampleEnable, "0122", nullptr, nullptr,
     [](Edit edit, int) { edit.service.setSampleEnableSignal(edit.text, edit.core); }},
    {"SampleEnablePri", hasSampleEnable, "0123", &kPolarities, "0124",
     [](Edit edit, int polarity) { edit.service.setSampleEnablePri(polarity, edit.core); }},
    {"BufferDepth", nullptr, nullptr, nullptr, nullptr, setBufferDepth},
    {"Implementation", nullptr, nullptr, &kImplementations, "0126",
     [](Edit edit, int implementation) { edit.service.setImplementation(implementation, edit.core); }},
    {"Timestamp", nullptr, nullptr, &kOnOff, "0127",
     [](Edit edit, int on) { edit.service.setTimeStamp(on != 0, edit.core); }},
    {"TimestampBits", hasTimestamp, "0128", nullptr, nullptr, setTimestampBits},
    {"CaptureMode", nullptr, nullptr, &kCaptureModes, "0130",
     [](Edit edit, int mode) { edit.service.setCaptureMode(mode, edit.core); }},
    {"MinimumSamplesPerTrigger", hasWindows, "0131", nullptr, nullptr, setMinimumSamples},
    {"IncludeTrigger", nullptr, nullptr, &kOnOff, "0133",
     [](Edit edit, int on) { edit.service.setIncludeTrigger(on != 0, edit.core); }},
    {"TriggerEnable", nullptr, nullptr, &kOnOff, "0134",
     [](Edit edit, int on) { edit.service.setTrigEnable(on != 0, edit.core); }},
    {"TriggerEnableSig", hasTriggerEnable, "0135", nullptr, nullptr,
     [](Edit edit, int) { edit.service.setTrigEnableSignal(edit.text, edit.core); }},
    {"TriggerEnablePri", hasTriggerEnable, "0136", &kPolarities, "0137",
     [](Edit edit, int polarity) { edit.service.setTrigEnablePri(polarity, edit.core); }},
    {"NumberofTriggers", hasWindows, "0138", nullptr, nullptr, setNumberOfTriggers},
    {"DistRAMDisable", nullptr, nullptr, &kOnOff, nullptr,  // the one switch that ignores other values without a word
     [](Edit edit, int on) { edit.service.setDisableDistRAM(on != 0, edit.core); }},
};
const std::size_t kRuleCount = sizeof kRules / sizeof kRules[0];

}  // namespace

void generate_trace_option_list(OptionList& options) {
  appendOptions(kRules, kRuleCount, options);
}

void listTraceOptions(IstComData* data, istCore* core, QString& out) {
  const QString clock = data->getSampleClk(core);
  if (!clock.isEmpty()) appendText(out, "SampleClk", clock);

  const bool sampleEnable = data->isSampleEnable(core);
  appendSwitch(out, "SampleEnable", sampleEnable);
  if (sampleEnable) {
    appendText(out, "SampleEnableSig", data->getSampleEnableSignal(core));
    appendPolarity(out, "SampleEnablePri", data->getSampleEnablePri(core));
  }

  const bool triggerEnable = data->isTrigEnable(core);
  appendSwitch(out, "TriggerEnable", triggerEnable);
  if (triggerEnable) {
    appendText(out, "TriggerEnable", data->getTrigEnableSignal(core));  // the signal repeats the switch's label
    appendPolarity(out, "TriggerEnablePri", data->getTrigEnablePri(core));
    appendNumber(out, "NumberofTriggers", data->getCaptureNum(core));
  }

  appendNumber(out, "BufferDepth", data->getBufferDepth(core));
  appendText(out, "Implementation", data->getImplementaionName(core));

  const bool timestamp = data->isTimeStamp(core);
  appendSwitch(out, "Timestamp", timestamp);
  if (timestamp) appendNumber(out, "TimestampBits", data->getTimeStampBits(core));

  const QString modeName = data->getCaptureModeName(core);
  appendText(out, "CaptureMode", modeName.section(QLatin1Char(' '), 0, 0, QString::SectionSkipEmpty));
  if (data->getCaptureMode(core) == 1) appendNumber(out, "MinimumSamplesPerTrigger", data->getCaptureMin(core));
  appendSwitch(out, "IncludeTrigger", data->isIncludeTrigger(core));
}

int setTraceOptions(IstComData* data, istCore* core, OptionList& options, QString&) {
  applyOptions(kRules, kRuleCount, *data, core, options);
  return 0;
}
