// The trace options of a core. The command layer has checked words and ranges; what it cannot check is checked here
// and, as setters have no answer, told on the console.
#include "framework/ist_com_data.h"
#include "platform/istcomdata/service_private.h"
#include "platform/istdata/project_checks.h"

namespace mero {
namespace ostrel {

using ost::asCore;

namespace {

const ost::CoreOptions kNoOptions;  ///< Answers for a null core.

const ost::CoreOptions& optionsOf(istCore* core) {
  return core ? asCore(core)->options : kNoOptions;
}

void tell(const QStringList& remarks) {
  for (const QString& remark : remarks) ost::say(remark);
}

}  // namespace

QString IstComData::getSampleClk(istCore* core) {
  return optionsOf(core).sampleClock;
}

void IstComData::setSampleClk(const QString& net, istCore* core) {
  QString name = net;
  if (core && d->resolveOption("SampleClk", name)) d->assign(asCore(core)->options.sampleClock, name);
}

bool IstComData::isSampleEnable(istCore* core) {
  return optionsOf(core).sampleEnable;
}

void IstComData::setSampleEnable(bool on, istCore* core) {
  if (core) d->assign(asCore(core)->options.sampleEnable, on);
}

QString IstComData::getSampleEnableSignal(istCore* core) {
  return optionsOf(core).sampleEnableSignal;
}

void IstComData::setSampleEnableSignal(const QString& net, istCore* core) {
  QString name = net;
  if (core && d->resolveOption("SampleEnableSig", name)) d->assign(asCore(core)->options.sampleEnableSignal, name);
}

int IstComData::getSampleEnablePri(istCore* core) {
  return int(optionsOf(core).sampleEnablePolarity);
}

void IstComData::setSampleEnablePri(int polarity, istCore* core) {
  if (core) d->assign(asCore(core)->options.sampleEnablePolarity, ost::Polarity(polarity != 0));
}

bool IstComData::isTrigEnable(istCore* core) {
  return optionsOf(core).triggerEnable;
}

void IstComData::setTrigEnable(bool on, istCore* core) {
  if (core) d->assign(asCore(core)->options.triggerEnable, on);
}

QString IstComData::getTrigEnableSignal(istCore* core) {
  return optionsOf(core).triggerEnableSignal;
}

void IstComData::setTrigEnableSignal(const QString& net, istCore* core) {
  QString name = net;
  if (core && d->resolveOption("TriggerEnableSig", name)) d->assign(asCore(core)->options.triggerEnableSignal, name);
}

int IstComData::getTrigEnablePri(istCore* core) {
  return int(optionsOf(core).triggerEnablePolarity);
}

void IstComData::setTrigEnablePri(int polarity, istCore* core) {
  if (core) d->assign(asCore(core)->options.triggerEnablePolarity, ost::Polarity(polarity != 0));
}

int IstComData::getCaptureNum(istCore* core) {
  return core ? optionsOf(core).triggerCount : -1;
}

void IstComData::setCaptureNum(int triggers, istCore* core) {
  if (core && istCore::isValidNumberOfTrigsValueByDepth(getBufferDepth(core), core->samplesPerTrigger, triggers))
    d->assign(asCore(core)->options.triggerCount, triggers);
}

int IstComData::getBufferDepth(istCore* core) {
  return core ? optionsOf(core).bufferDepth : -1;
}

void IstComData::setBufferDepth(int samples, istCore* core) {
  if (!core || !istCore::isValidBufferDepth(samples)) return;
  d->assign(asCore(core)->options.bufferDepth, samples);
  tell(ost::fitToBufferDepth(*asCore(core)));
}

QString IstComData::getImplementaionName(istCore* core) {
  return QLatin1String(optionsOf(core).implementation == ost::Implementation::BlockRam ? "EBR" : "DRAM");
}

void IstComData::setImplementation(int implementation, istCore* core) {
  if (core) d->assign(asCore(core)->options.implementation, ost::Implementation(implementation != 0));
}

bool IstComData::isTimeStamp(istCore* core) {
  return optionsOf(core).timestamp;
}

void IstComData::setTimeStamp(bool on, istCore* core) {
  if (core) d->assign(asCore(core)->options.timestamp, on);
}

int IstComData::getTimeStampBits(istCore* core) {
  return core ? optionsOf(core).timestampBits : -1;
}

void IstComData::setTimeStampBits(int bits, istCore* core) {
  const int depth = getBufferDepth(core);
  if (core && bits >= istCore::getMinTimestampBitsByDepth(depth) && bits <= istCore::getMaxTimestampBitsByDepth(depth))
    d->assign(asCore(core)->options.timestampBits, bits);
}

int IstComData::getCaptureMode(istCore* core) {
  return int(optionsOf(core).captureMode);
}

QString IstComData::getCaptureModeName(istCore* core) {
  return QLatin1String(getCaptureMode(core) ? "Multiple Trigger Capture" : "Single Trigger Capture");
}

void IstComData::setCaptureMode(int mode, istCore* core) {
  if (core) d->assign(asCore(core)->options.captureMode, ost::CaptureMode(mode != 0));
}

int IstComData::getCaptureMin(istCore* core) {
  return core ? core->samplesPerTrigger : -1;
}

void IstComData::setCaptureMin(int samples, istCore* core) {
  if (!core || !istCore::isValidMinSamplePerTrigsValueByDepth(getBufferDepth(core), samples)) return;
  d->assign(core->samplesPerTrigger, samples);
  tell(ost::fitToBufferDepth(*asCore(core)));
}

bool IstComData::isIncludeTrigger(istCore* core) {
  return optionsOf(core).includeTrigger;
}

void IstComData::setIncludeTrigger(bool on, istCore* core) {
  if (core) d->assign(asCore(core)->options.includeTrigger, on);
}

void IstComData::setDisableDistRAM(bool disable, istCore* core) {
  if (core) d->assign(asCore(core)->options.distRamDisabled, disable);
}

}  // namespace ostrel
}  // namespace mero
