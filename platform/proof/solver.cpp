// Hands what structure and simulation have left open to the solver of Yosys, as one function that must be 0.
#include <QFile>
#include <QMap>
#include <algorithm>

#include "platform/design/yosys.h"
#include "platform/netlist/json_cursor.h"
#include "platform/proof/refinement.h"
#include "platform/system/scratch_file.h"

namespace ost {
namespace {

/// A netlist of one module, written cell by cell. Nets are numbered from 2 on.
class ConeNetlist {
 public:
  int newNet() { return nextNet_++; }
  void input(const QByteArray& name, int net) { port(name, "input", net); }
  void output(const QByteArray& name, int net) { port(name, "output", net); }
  void reduce(const char* type, const QList<QByteArray>& inputs, int net) {
    cell(type,
         "\"A_SIGNED\": \"0\", \"A_WIDTH\": \"" + QByteArray::number(inputs.size(), 2).rightJustified(32, '0') +
             "\", \"Y_WIDTH\": \"" + QByteArray(31, '0') + "1\"",
         {{"A", inputs}}, net);
  }
  void gate(const char* type, const QMap<QByteArray, QList<QByteArray>>& inputs, int net) {
    cell(type, QByteArray(), inputs, net);
  }
  QByteArray json() const {
    return "{ \"creator\": \"ostrel\", \"modules\": { \"cones\": { \"attributes\": { }, \"ports\": {" + ports_ +
           "}, \"cells\": {" + cells_ + "}, \"netnames\": { } } } }\n";
  }

 private:
  void port(const QByteArray& name, const char* direction, int net) {
    ports_ += (ports_.isEmpty() ? "\n" : ",\n") + quoteJson(name) + ": { \"direction\": \"" + direction +
              "\", \"bits\": [" + QByteArray::number(net) + "] }";
  }
  void cell(const char* type, const QByteArray& parameters, const QMap<QByteArray, QList<QByteArray>>& inputs,
            int net) {
    QByteArray directions, connections;
    for (auto entry = inputs.begin(); entry != inputs.end(); ++entry) {
      directions += quoteJson(entry.key()) + ": \"input\", ";
      connections += quoteJson(entry.key()) + ": [" + entry.value().join(',') + "], ";
    }
    const QByteArray name = "c" + QByteArray::number(net);
    cells_ += (cells_.isEmpty() ? "\n" : ",\n") + quoteJson(name) + ": { \"type\": \"" + type +
              "\", \"parameters\": { " + parameters + " }, \"attributes\": { }, \"port_directions\": { " + directions +
              "\"Y\": \"output\" }, \"connections\": { " + connections + "\"Y\": [" + QByteArray::number(net) + "] } }";
  }
  QByteArray ports_, cells_;
  int nextNet_ = 2;
};

/// Reads the values of the inputs from what the solver dumped: names and waves, of which the first character counts.
QHash<QByteArray, bool> readModel(const QByteArray& json) {
  QHash<QByteArray, bool> model;
  JsonCursor cursor(std::string_view(json.constData(), size_t(json.size())));
  std::string_view key, field;
  cursor.enterObject();
  while (cursor.nextMember(key)) {
    if (key != "signal") {
      cursor.skipValue();
      continue;
    }
    cursor.enterArray();
    while (cursor.nextElement()) {
      QByteArray name, wave;
      cursor.enterObject();
      while (cursor.nextMember(field)) {
        if (field == "name")
          cursor.readString(name);
        else if (field == "wave")
          cursor.readString(wave);
        else
          cursor.skipValue();
      }
      model.insert(name, wave.startsWith('1'));
    }
  }
  return model;
}

constexpr size_t kMostPairs = 4096;  ///< Of equal functions, which are told to give the same for the same arguments.

}  // namespace

/// True where the functions below the roots give equal results for equal arguments.
Edge Refinement::isFunction(const Edges& roots) {
  QMap<quint64, std::vector<uint32_t>> functions;
  for (const uint32_t index : rails_.cone(roots))
    if (graph_.node(index * 2).kind == LogicGraph::Function) functions[graph_.node(index * 2).data].push_back(index);
  const auto arguments = [this](uint32_t function) {
    const LogicGraph::Node list = graph_.node(graph_.inputs(graph_.node(function * 2))[0]);
    return Edges(graph_.inputs(list), graph_.inputs(list) + list.count);
  };
  Edges holds;
  for (const std::vector<uint32_t>& same : functions)
    for (size_t i = 0; i < same.size(); ++i)
      for (size_t k = 0; k < i && holds.size() < kMostPairs; ++k) {
        Edges one = arguments(same[i]), other = arguments(same[k]), enough;
        one.resize(std::max(one.size(), other.size()), kFalse);
        other.resize(one.size(), kFalse);
        for (size_t a = 0; a < one.size(); ++a) enough.push_back(graph_.xorOf({one[a], other[a]}));
        enough.push_back(graph_.invert(graph_.xorOf({same[i] * 2, same[k] * 2})));
        holds.push_back(graph_.orOf(enough));
      }
  return graph_.andOf(holds);
}

ProofOutcome Refinement::solve(const std::vector<ComparePoint>& points, const std::vector<std::pair<int, Edge>>& left,
                               const SolverLimits& limits, int& point, Counterexample& example, QString& reason) {
  Edges all;
  for (const auto& [index, different] : left) all.push_back(different);
  const Edge held = isFunction(all);
  all.push_back(held);
  point = left.front().first;
  ConeNetlist netlist;
  std::unordered_map<uint32_t, int> nets, inverted;
  QHash<QByteArray, uint32_t> inputs;
  const auto net = [&](Edge edge) {
    if (edge >> 1 == 0) return QByteArray(edge & 1 ? "\"1\"" : "\"0\"");
    const int plain = nets[edge >> 1];
    if (!(edge & 1)) return QByteArray::number(plain);
    int& result = inverted[edge >> 1];
    if (!result) netlist.gate("$_NOT_", {{"A", {QByteArray::number(plain)}}}, result = netlist.newNet());
    return QByteArray::number(result);
  };
  for (const uint32_t index : rails_.cone(all)) {
    const LogicGraph::Node node = graph_.node(index * 2);
    if (node.kind == LogicGraph::Constant || node.kind == LogicGraph::List) continue;
    const int output = nets[index] = netlist.newNet();
    if (isVariable(index)) {
      const QByteArray name = "i" + QByteArray::number(index);
      netlist.input(name, output);
      inputs.insert(name, index);
      continue;
    }
    QList<QByteArray> in;
    for (uint32_t i = 0; i < node.count; ++i) in.append(net(graph_.inputs(node)[i]));
    if (node.kind == LogicGraph::Mux) {
      netlist.gate("$_MUX_", {{"S", {in[0]}}, {"B", {in[1]}}, {"A", {in[2]}}}, output);
    } else if (node.kind == LogicGraph::Majority) {
      const QByteArray either = QByteArray::number(netlist.newNet()), both = QByteArray::number(netlist.newNet()),
                       third = QByteArray::number(netlist.newNet());
      netlist.gate("$_OR_", {{"A", {in[0]}}, {"B", {in[1]}}}, either.toInt());
      netlist.gate("$_AND_", {{"A", {in[0]}}, {"B", {in[1]}}}, both.toInt());
      netlist.gate("$_AND_", {{"A", {either}}, {"B", {in[2]}}}, third.toInt());
      netlist.gate("$_OR_", {{"A", {both}}, {"B", {third}}}, output);
    } else {
      netlist.reduce(node.kind == LogicGraph::Xor ? "$reduce_xor" : "$reduce_and", in, output);
    }
  }
  QList<QByteArray> roots;
  for (const auto& [index, different] : left) roots.append(net(different));
  const int some = netlist.newNet(), bad = netlist.newNet();
  netlist.reduce("$reduce_or", roots, some);
  netlist.gate("$_AND_", {{"A", {QByteArray::number(some)}}, {"B", {net(held)}}}, bad);
  netlist.output("bad", bad);

  ScratchFile cones, model;
  if (!cones.open(reason) || !cones.write(netlist.json(), reason) || !model.open(reason))
    return ProofOutcome::Undecided;
  YosysJob job;
  job.files = {cones.fd(), model.fd()};
  job.script.line("read_json").openFile(0);
  job.script.line("sat -verify -prove bad 0 -show-inputs -dump_json").openFile(1).words(" cones");
  job.timeLimitSeconds = std::max(1, limits.seconds);
  job.memoryLimitBytes = limits.memoryBytes;
  job.idle = limits.idle;
  const YosysResult result = runYosys(job);
  if (result.ok) return ProofOutcome::Proved;
  reason = result.error;
  QFile file;
  if (result.cancelled || !file.open(model.fd(), QIODevice::ReadOnly) || !file.seek(0)) return ProofOutcome::Undecided;
  const QHash<QByteArray, bool> values = readModel(file.readAll());
  if (values.isEmpty()) return ProofOutcome::Undecided;
  reason = QStringLiteral("the solver found a difference that depends on arithmetic it does not look into");
  std::unordered_map<uint32_t, uint64_t> chosen;
  for (auto input = inputs.begin(); input != inputs.end(); ++input)
    chosen[*input] = values.value(input.key()) ? ~uint64_t(0) : 0;
  const auto source = [&chosen](uint32_t node) { return chosen.count(node) ? chosen.at(node) : 0; };
  givenValues_ = &chosen;
  for (const auto& [index, different] : left) {
    bool sure = false;
    if (!explain(points[size_t(index)], different, source, example, sure)) continue;
    point = index;
    if (sure) {
      givenValues_ = nullptr;
      return ProofOutcome::Different;
    }
  }
  givenValues_ = nullptr;
  return ProofOutcome::Undecided;
}

}  // namespace ost
