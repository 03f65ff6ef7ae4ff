// The reference model of a core.
#include "tests/sim/core/model.h"

#include <algorithm>
#include <fstream>
#include <sstream>

namespace ost::sim {
namespace {

Bits pick(const std::string& in, const QVector<NetBit>& bits) {
  Bits result;
  for (const NetBit& bit : bits) result += in[bit.bit];
  return result;
}

/// State of a unit at the last of `history`, the samples' trigger bits since arm.
bool unitHits(const PlanUnit& unit, const std::vector<Bits>& history) {
  const auto operand = [&unit](const Bits& sample) {
    Bits bits;
    for (int input : unit.inputs) bits += sample[input];
    return bits;
  };
  const Bits now = operand(history.back());
  if (unit.unitClass == UnitClass::Serial) {
    if (int(history.size()) < unit.width) return false;
    for (int age = 0; age < unit.width; ++age)
      if (unit.mask[age] == '1' && operand(history[history.size() - 1 - age])[0] != unit.value[age]) return false;
    return true;
  }
  if (unit.op == Operator::RisingEdge || unit.op == Operator::FallingEdge) {
    if (history.size() < 2) return false;
    const Bits then = operand(history[history.size() - 2]);
    const char to = unit.op == Operator::RisingEdge ? '1' : '0';
    for (int i = 0; i < unit.width; ++i)
      if (unit.mask[i] == '1' && now[i] == to && then[i] != to) return true;
    return false;
  }
  int order = 0;  // of now against value, from the most significant bit
  for (int i = unit.width - 1; i >= 0 && order == 0; --i)
    if ((unit.unitClass == UnitClass::Order || unit.mask[i] == '1') && now[i] != unit.value[i])
      order = now[i] == '1' ? 1 : -1;
  switch (unit.op) {
    case Operator::Equal:
      return order == 0;
    case Operator::NotEqual:
      return order != 0;
    case Operator::Less:
      return order < 0;
    case Operator::LessEqual:
      return order <= 0;
    case Operator::Greater:
      return order > 0;
    default:
      return order >= 0;
  }
}

/// A running expression: the step it waits in and how often that has held.
struct Sequence {
  int step = 0, count = 0;
  bool look(const PlanExpression& expression, const QVector<PlanStep>& steps, const Bits& hits) {
    if (steps.isEmpty()) return false;
    int row = 0;
    for (int i = 0; i < expression.units.size(); ++i) row |= (hits[expression.units[i]] == '1') << i;
    if (steps[step].truthTable[row] != '1' || ++count < steps[step].count) return false;
    count = 0;
    step = (step + 1) % int(steps.size());
    return step == 0;
  }
};

}  // namespace

std::vector<std::vector<Edge>> readRecord(const std::string& fileName) {
  std::vector<std::vector<Edge>> runs(1);
  std::ifstream file(fileName);
  std::string line;
  while (std::getline(file, line)) {
    if (line == "end") {
      runs.emplace_back();
      continue;
    }
    std::istringstream words(line);
    std::string in, se, te, out;
    words >> in >> se >> te >> out;
    if (out.empty()) continue;  // The simulation ended within the line.
    std::reverse(in.begin(), in.end());
    runs.back().push_back({in, se == "1", te == "1", out == "1"});
  }
  return runs;
}

Capture expectedCapture(const PlanCore& core, const Settings& settings, const std::vector<Edge>& run) {
  Capture capture;
  capture.completions.assign(core.expressions.size(), 0);
  std::vector<Bits> history, window;
  std::vector<Sequence> sequences(core.expressions.size());
  int events = 0, triggerAt = -1;
  for (size_t edge = 0; edge < run.size() && !capture.done; ++edge) {
    const Edge& e = run[edge];
    if (core.hasSampleEnable && e.sampleEnable == core.sampleEnableActiveLow) continue;
    history.push_back(pick(e.in, core.triggerBits));
    Bits hits;
    for (const PlanUnit& unit : settings.units) hits += unitHits(unit, history) ? '1' : '0';
    window.push_back(pick(e.in, core.probeBits) + (core.includeTrigger ? hits : Bits()) +
                     number(edge, core.timestampBits));

    const bool enabled = !core.hasTriggerEnable || e.triggerEnable != core.triggerEnableActiveLow;
    if (triggerAt < 0 && int(window.size()) > settings.pre && enabled) {
      bool event = false;
      for (int i = 0; i < core.expressions.size(); ++i)
        if (sequences[i].look(core.expressions[i], settings.steps[i], hits)) {
          event = true;
          ++capture.completions[i];
        }
      if (event && ++events == settings.eventCount) {
        triggerAt = int(window.size()) - 1;
        capture.triggerEdges.push_back(int(edge));
      }
    }
    if (triggerAt >= 0 && int(window.size()) == triggerAt - settings.pre + core.windowSamples) {
      capture.windows.emplace_back(window.end() - core.windowSamples, window.end());
      capture.done = int(capture.windows.size()) == settings.windows;
      window.clear();
      sequences.assign(core.expressions.size(), Sequence());
      events = 0;
      triggerAt = -1;
    }
  }
  return capture;
}

std::string checkTriggerOut(const PlanCore& core, const Capture& capture, const std::vector<Edge>& run) {
  const int pulse = std::max(1, core.triggerOutMinPulse);
  std::vector<bool> active(run.size() + pulse + 4);
  for (int edge : capture.triggerEdges)
    for (int i = 0; i < pulse; ++i) active[edge + 4 + i] = true;  // Recorded before edge + 4: out since edge + 3.
  for (size_t i = 0; i < run.size(); ++i)
    if ((run[i].triggerOut != core.triggerOutActiveLow) != active[i])
      return "trigger output is " + std::string(run[i].triggerOut ? "1" : "0") + " before edge " + std::to_string(i);
  return std::string();
}

}  // namespace ost::sim
