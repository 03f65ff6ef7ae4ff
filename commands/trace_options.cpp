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

void setSampleClock(const OptionEdit& edit) {
  edit.service.setSampleClk(edit.text, edit.core);
}

void setSampleEnable(const OptionEdit& edit) {
  int on;
  if (edit.keyword(kOnOff, on, "0121")) edit.service.setSampleEnable(on != 0, edit.core);
}

void setSampleEnableSignal(const OptionEdit& edit) {
  if (!edit.require(edit.service.isSampleEnable(edit.core), "0122")) return;
  edit.service.setSampleEnableSignal(edit.text, edit.core);
}

void setSampleEnablePolarity(const OptionEdit& edit) {
  int polarity;
  if (!edit.require(edit.service.isSampleEnable(edit.core), "0123")) return;
  if (edit.keyword(kPolarities, polarity, "0124")) edit.service.setSampleEnablePri(polarity, edit.core);
}

void setBufferDepth(const OptionEdit& edit) {
  int depth;
  if (!edit.number(depth) || !istCore::isValidBufferDepth(depth))
    return edit.reject("0125", validList(istCore::getValidBufferDepthValues()), edit.typed);
  edit.service.setBufferDepth(depth, edit.core);
}

void setImplementation(const OptionEdit& edit) {
  int implementation;
  if (edit.keyword(kImplementations, implementation, "0126")) edit.service.setImplementation(implementation, edit.core);
}

void setTimestamp(const OptionEdit& edit) {
  int on;
  if (edit.keyword(kOnOff, on, "0127")) edit.service.setTimeStamp(on != 0, edit.core);
}

void setTimestampBits(const OptionEdit& edit) {
  int bits;
  if (!edit.require(edit.service.isTimeStamp(edit.core), "0128")) return;
  const int depth = edit.service.getBufferDepth(edit.core);
  const int min = istCore::getMinTimestampBitsByDepth(depth), max = istCore::getMaxTimestampBitsByDepth(depth);
  if (!edit.number(bits) || bits < min || bits > max) return edit.reject("0129", rangeText(min, max), edit.typed);
  edit.service.setTimeStampBits(bits, edit.core);
}

void setCaptureMode(const OptionEdit& edit) {
  int mode;
  if (edit.keyword(kCaptureModes, mode, "0130")) edit.service.setCaptureMode(mode, edit.core);
}

void setMinimumSamples(const OptionEdit& edit) {
  int samples;
  if (!edit.require(edit.service.getCaptureMode(edit.core) != 0, "0131")) return;
  const int depth = edit.service.getBufferDepth(edit.core);
  if (!edit.number(samples) || !istCore::isValidMinSamplePerTrigsValueByDepth(depth, samples))
    return edit.reject("0132", validList(istCore::getValidMinSamplePerTrigsValuesByDepth(depth)), edit.typed);
  edit.service.setCaptureMin(samples, edit.core);
}

void setIncludeTrigger(const OptionEdit& edit) {
  int on;
  if (edit.keyword(kOnOff, on, "0133")) edit.service.setIncludeTrigger(on != 0, edit.core);
}

void setTriggerEnable(const OptionEdit& edit) {
  int on;
  if (edit.keyword(kOnOff, on, "0134")) edit.service.setTrigEnable(on != 0, edit.core);
}

void setTriggerEnableSignal(const OptionEdit& edit) {
  if (!edit.require(edit.service.isTrigEnable(edit.core), "0135")) return;
  edit.service.setTrigEnableSignal(edit.text, edit.core);
}

void setTriggerEnablePolarity(const OptionEdit& edit) {
  int polarity;
  if (!edit.require(edit.service.isTrigEnable(edit.core), "0136")) return;
  if (edit.keyword(kPolarities, polarity, "0137")) edit.service.setTrigEnablePri(polarity, edit.core);
}

void setNumberOfTriggers(const OptionEdit& edit) {
  int triggers;
  if (!edit.require(edit.service.getCaptureMode(edit.core) != 0, "0138")) return;
  if (!edit.require(edit.service.isTrigEnable(edit.core), "0139")) return;
  const int depth = edit.service.getBufferDepth(edit.core), samples = edit.core->samplesPerTrigger;
  if (!edit.number(triggers) || !istCore::isValidNumberOfTrigsValueByDepth(depth, samples, triggers))
    return edit.reject("0140", validList(istCore::getValidNumberOfTrigsValuesByDepth(depth, samples)), edit.typed);
  edit.service.setCaptureNum(triggers, edit.core);
}

/// The one switch that ignores other values without a message.
void setDistRamDisable(const OptionEdit& edit) {
  int disable;
  if (edit.keyword(kOnOff, disable, nullptr)) edit.service.setDisableDistRAM(disable != 0, edit.core);
}

const OptionRule kRules[] = {
    {"SampleClk", setSampleClock},
    {"SampleEnable", setSampleEnable},
    {"SampleEnableSig", setSampleEnableSignal},
    {"SampleEnablePri", setSampleEnablePolarity},
    {"BufferDepth", setBufferDepth},
    {"Implementation", setImplementation},
    {"Timestamp", setTimestamp},
    {"TimestampBits", setTimestampBits},
    {"CaptureMode", setCaptureMode},
    {"MinimumSamplesPerTrigger", setMinimumSamples},
    {"IncludeTrigger", setIncludeTrigger},
    {"TriggerEnable", setTriggerEnable},
    {"TriggerEnableSig", setTriggerEnableSignal},
    {"TriggerEnablePri", setTriggerEnablePolarity},
    {"NumberofTriggers", setNumberOfTriggers},
    {"DistRAMDisable", setDistRamDisable},
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
