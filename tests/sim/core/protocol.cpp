// The core's protocol, from docs/debug-core.md.
#include "tests/sim/core/protocol.h"

#include <algorithm>

namespace ost::sim {
namespace {

constexpr quint32 kPolynomial = 0x04C11DB7, kGood = 0xC704DD7B;

int clog2(qint64 n) {
  int bits = 0;
  while ((qint64(1) << bits) < n) ++bits;
  return bits;
}

quint32 step(quint32 crc, char bit) {
  const bool feedback = (crc >> 31) != quint32(bit == '1');
  return (crc << 1) ^ (feedback ? kPolynomial : 0);
}

quint32 stepBack(quint32 crc, char bit) {
  const quint32 feedback = crc & 1;
  return ((crc ^ (feedback ? kPolynomial : 0)) >> 1) | ((feedback ^ quint32(bit == '1')) << 31);
}

quint32 crcOf(const Bits& bits, size_t from, size_t to) {
  quint32 crc = 0xFFFFFFFF;
  for (size_t i = from; i < to; ++i) crc = step(crc, bits[i]);
  return crc;
}

Bits reversed(Bits bits) {
  std::reverse(bits.begin(), bits.end());
  return bits;
}

Bits unitBits(const PlanUnit& unit) {
  const Bits value = unit.value.toStdString(), mask = unit.mask.toStdString(), none(unit.width, '0');
  if (unit.unitClass == UnitClass::Serial) return value + mask;
  if (unit.unitClass == UnitClass::Order) {
    switch (unit.op) {
      case Operator::Equal:
        return "010" + value;
      case Operator::NotEqual:
        return "110" + value;
      case Operator::Less:
        return "000" + value;
      case Operator::LessEqual:
        return "001" + value;
      case Operator::Greater:
        return "101" + value;
      default:
        return "100" + value;
    }
  }
  switch (unit.op) {
    case Operator::Equal:
      return "10" + value + mask;
    case Operator::NotEqual:
      return "00" + value + mask;
    case Operator::RisingEdge:
      return "01" + none + mask;
    default:
      return "01" + mask + none;
  }
}

}  // namespace

Bits number(quint64 value, int width) {
  Bits bits;
  for (int i = 0; i < width; ++i) bits += (value >> i) & 1 ? '1' : '0';
  return bits;
}

quint64 value(const Bits& bits, int offset, int width) {
  quint64 result = 0;
  for (int i = 0; i < width; ++i) result |= quint64(bits.at(offset + i) == '1') << i;
  return result;
}

Bits frame(Command op, int core, int tag, int address, const Bits& payload) {
  const Bits command = number(op, 4) + number(core, 8) + number(tag, 8) + number(address, 20);
  quint32 r = kGood;
  for (size_t i = payload.size(); i-- > 0;) r = stepBack(r, payload[i]);
  for (int i = 0; i < 32; ++i) r = stepBack(r, '0');
  return "1" + command + reversed(number(crcOf(command, 0, 40) ^ r, 32)) + payload;
}

bool tableInChain(const PlanExpression& expression) {
  return !expression.blockRam && expression.units.size() <= 4;
}

Bits tableRows(const PlanExpression& expression, const QVector<PlanStep>& steps) {
  Bits rows;
  for (int row = 0; row < 1 << expression.units.size(); ++row)
    for (int s = 0; s < expression.maxSequenceDepth; ++s) rows += s < steps.size() ? steps[s].truthTable[row] : '0';
  return rows;
}

Bits chain(const PlanCore& core, const Settings& settings) {
  Bits bits = number(settings.pre, clog2(core.windowSamples)) + number(settings.windows - 1, clog2(core.windows));
  if (core.eventCounter) bits += number(settings.eventCount - 1, clog2(core.eventCount));
  for (const PlanUnit& unit : settings.units) bits += unitBits(unit);
  for (int e = 0; e < core.expressions.size(); ++e) {
    const PlanExpression& expression = core.expressions[e];
    const QVector<PlanStep>& steps = settings.steps[e];
    bits += steps.isEmpty() ? '0' : '1';
    bits += number(std::max(int(steps.size()) - 1, 0), clog2(expression.maxSequenceDepth));
    for (int s = 0; s < expression.maxSequenceDepth; ++s)
      bits += number(s < steps.size() ? steps[s].count - 1 : 0, clog2(expression.maxEventCount));
    if (tableInChain(expression)) bits += tableRows(expression, steps);
  }
  return bits;
}

int wordBits(const PlanCore& core) {
  return core.sampleBits() + (core.windows > 1 ? 1 : 0);
}

int blockWords(const PlanCore& core) {
  int words = 1;
  while (words * wordBits(core) < 4096 && words < core.windows * core.windowSamples) words *= 2;
  return words;
}

int statusBits(const PlanCore& core) {
  int bits = 8 + 5 + (core.windows > 1 ? clog2(core.windows) : clog2(core.windowSamples));
  for (const PlanExpression& expression : core.expressions) bits += clog2(expression.maxSequenceDepth);
  return bits + (core.eventCounter ? clog2(core.eventCount) : 0);
}

bool parseBlock(const Bits& bits, int offset, int payloadBits, Block& block) {
  const size_t end = offset + 48 + payloadBits;
  if (bits.size() < end + 32) return false;
  if (reversed(number(crcOf(bits, offset, end), 32)) != bits.substr(end, 32)) return false;
  block.op = int(value(bits, offset, 4));
  block.core = int(value(bits, offset + 4, 8));
  block.tag = int(value(bits, offset + 12, 8));
  block.address = int(value(bits, offset + 20, 20));
  block.flags = int(value(bits, offset + 40, 8));
  block.payload = bits.substr(offset + 48, payloadBits);
  return true;
}

Status parseStatus(const PlanCore& core, const Bits& payload) {
  int at = 0;
  const auto take = [&](int width) {
    at += width;
    return int(value(payload, at - width, width));
  };
  Status status;
  status.tag = take(8);
  status.running = take(1);
  status.searching = take(1);
  status.triggered = take(1);
  status.triggerEnabled = take(1);
  status.sampled = take(1);
  status.window = take(clog2(core.windows));
  if (core.windows == 1) status.oldest = take(clog2(core.windowSamples));
  for (const PlanExpression& expression : core.expressions)
    status.steps.push_back(take(clog2(expression.maxSequenceDepth)));
  if (core.eventCounter) status.events = take(clog2(core.eventCount));
  return status;
}

}  // namespace ost::sim
