// The validators of a core's numbers and of its trigger-out net name.
#include <algorithm>

#include "framework/ist_data.h"
#include "platform/text/names.h"
#include "platform/text/numbers.h"

namespace mero {
namespace ostrel {

namespace {

const int kMinDepth = 16;     ///< Samples.
const int kMaxDepth = 65536;  ///< Samples.
const int kMinWindow = 16;    ///< Samples of one trigger's window.
const int kMaxTimestampBits = 63;
const int kMaxEventCounter = 65536;

QList<int> powersOfTwo(int first, int last) {
  QList<int> values;
  for (int value = first; value <= last; value *= 2) values << value;
  return values;
}

}  // namespace

QList<int> istCore::getValidBufferDepthValues() {
  return powersOfTwo(kMinDepth, kMaxDepth);
}

bool istCore::isValidBufferDepth(int depth) {
  return ost::isPowerOfTwo(depth) && depth >= kMinDepth && depth <= kMaxDepth;
}

int istCore::getMinTimestampBitsByDepth(int depth) {
  if (!isValidBufferDepth(depth)) return -1;
  return ost::bitsFor(depth) + 1;
}

int istCore::getMaxTimestampBitsByDepth(int depth) {
  return isValidBufferDepth(depth) ? kMaxTimestampBits : -1;
}

QList<int> istCore::getValidMinSamplePerTrigsValuesByDepth(int depth) {
  return isValidBufferDepth(depth) ? powersOfTwo(kMinWindow, depth) : QList<int>();
}

bool istCore::isValidMinSamplePerTrigsValueByDepth(int depth, int value) {
  return isValidBufferDepth(depth) && ost::isPowerOfTwo(value) && value >= kMinWindow && value <= depth;
}

QList<int> istCore::getValidNumberOfTrigsValuesByDepth(int depth, int samplesPerTrigger) {
  if (!isValidMinSamplePerTrigsValueByDepth(depth, samplesPerTrigger)) return QList<int>();
  return powersOfTwo(1, depth / samplesPerTrigger);
}

bool istCore::isValidNumberOfTrigsValueByDepth(int depth, int samplesPerTrigger, int value) {
  return isValidMinSamplePerTrigsValueByDepth(depth, samplesPerTrigger) && ost::isPowerOfTwo(value) &&
         value <= depth / samplesPerTrigger;
}

bool istCore::isValidEventCounterValue(int value) {
  return value >= 2 && value <= kMaxEventCounter;
}

int istCore::isValidTriggerOutNetName(const QString& name) {
  if (name.isEmpty()) return 1;
  if (!ost::isIdentifier(name) || ost::isVerilogKeyword(name)) return 2;
  return name.size() > ost::kMaxNameLength ? 3 : 0;
}

}  // namespace ostrel
}  // namespace mero
