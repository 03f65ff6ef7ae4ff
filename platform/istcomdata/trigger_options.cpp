// The trigger options of a core.
#include "framework/ist_com_data.h"
#include "platform/istcomdata/service_private.h"

namespace mero {
namespace ostrel {

using ost::asCore;

namespace {

const ost::CoreOptions kNoOptions;  ///< Answers for a null core.

const ost::CoreOptions& optionsOf(istCore* core) {
  return core ? asCore(core)->options : kNoOptions;
}

}  // namespace

int IstComData::getDefaultTrigRadix(istCore* core) {
  return core ? int(optionsOf(core).defaultRadix) : -1;
}

void IstComData::setDefaultTrigRadix(int radix, istCore* core) {
  if (core && radix >= 0 && radix <= 3) d->assign(asCore(core)->options.defaultRadix, ost::Radix(radix));
}

bool IstComData::isEventCounter(istCore* core) {
  return optionsOf(core).eventCounter;
}

void IstComData::setEventCounter(bool on, istCore* core) {
  if (core) d->assign(asCore(core)->options.eventCounter, on);
}

int IstComData::getEventCounter(istCore* core) {
  return core ? optionsOf(core).eventCounterValue : -1;
}

void IstComData::setEventCounterValue(int count, istCore* core) {
  if (core && istCore::isValidEventCounterValue(count)) d->assign(asCore(core)->options.eventCounterValue, count);
}

bool IstComData::isTriggerOut(istCore* core) {
  return optionsOf(core).triggerOut;
}

void IstComData::setTriggerOut(bool on, istCore* core) {
  if (core) d->assign(asCore(core)->options.triggerOut, on);
}

QString IstComData::getTriggerOutTypeName(istCore* core) {
  static const char* const names[] = {"IO", "NET", "BOTH"};
  return QLatin1String(names[int(optionsOf(core).triggerOutType)]);
}

void IstComData::setTriggerOutType(int type, istCore* core) {
  if (core && type >= 0 && type <= 2) d->assign(asCore(core)->options.triggerOutType, ost::TriggerOutType(type));
}

QString IstComData::getTriggerOutName(istCore* core) {
  return optionsOf(core).triggerOutName;
}

void IstComData::setTriggerOutName(QString net, istCore* core) {
  if (core && istCore::isValidTriggerOutNetName(net) == 0) d->assign(asCore(core)->options.triggerOutName, net);
}

int IstComData::getTriggerOutPolarity(istCore* core) {
  return int(optionsOf(core).triggerOutPolarity);
}

void IstComData::setTriggeroutPolarity(int polarity, istCore* core) {
  if (core) d->assign(asCore(core)->options.triggerOutPolarity, ost::Polarity(polarity != 0));
}

QString IstComData::getTriggerOutMPW(istCore* core) {
  return QString::number(optionsOf(core).triggerOutMinPulse);
}

void IstComData::setTriggeroutMPW(const QString& samples, istCore* core) {
  bool isNumber = false;
  const int width = samples.toInt(&isNumber);
  if (core && isNumber && width >= 0) d->assign(asCore(core)->options.triggerOutMinPulse, width);
}

}  // namespace ostrel
}  // namespace mero
