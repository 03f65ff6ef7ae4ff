// Loads the full netlist and follows bits through the hierarchy to what drives them.
#include "platform/netlist/netlist.h"

#include <set>

#include "platform/design/name_index.h"
#include "platform/design/yosys.h"
#include "platform/netlist/netlist_bits.h"
#include "platform/system/scratch_file.h"
#include "platform/text/byte_text.h"

namespace ost {
namespace {

/// Cells with so much text are read once, others again whenever they are looked at.
constexpr size_t kLargeCell = 2048;

/// The clock of a sequential cell's output bit; empty when that output has none.
QVector<int> clockOf(const KnownCell& known, CellKind kind, int bit) {
  const CellConnections& cell = known.connections;
  const char* port = cell.ports.contains("CLK") ? "CLK" : "C";
  if (kind == CellKind::FlipFlop) return cell.ports.value(port);
  if (kind == CellKind::MemoryRead)
    return cell.parameters.value("CLK_ENABLE").endsWith('1') ? cell.ports.value("CLK") : QVector<int>();
  // All read ports of the memory in one cell: port i has bit i, counted from the right, of the parameter.
  const QVector<int> data = cell.ports.value("RD_DATA"), clocks = cell.ports.value("RD_CLK");
  const QByteArray enables = cell.parameters.value("RD_CLK_ENABLE");
  const auto [place, end] = known.outputs.find(bit);
  if (place == end || clocks.isEmpty()) return {};
  const int readPort = place->position / std::max(1, int(data.size() / clocks.size()));
  if (readPort < clocks.size() && readPort < enables.size() && enables[enables.size() - 1 - readPort] == '1')
    return {clocks[readPort]};
  return {};
}

/// Lines as in `  parameter \\WIDTH 8`.
QList<QByteArray> parameterOrder(const QByteArray& head) {
  const QByteArray start = "  parameter \\";
  QList<QByteArray> names;
  for (const QByteArray& line : head.split('\n')) {
    const QByteArray name = line.mid(start.size()).split(' ').first();
    if (line.startsWith(start)) names.append(yosysKey(std::string_view(name.constData(), size_t(name.size()))));
  }
  return names;
}

}  // namespace

Netlist::Netlist() : d(new NetlistBits) {}
Netlist::~Netlist() = default;

std::shared_ptr<const Netlist> Netlist::load(const Design& design, QString& error, const std::function<bool()>& idle) {
  ScratchFile scratch, head;
  if (!scratch.open(error) || !head.open(error)) return nullptr;
  YosysJob job;
  job.script = design.elaborationScript();
  job.script.line("write_json").openFile(0);
  // The JSON sorts parameters by name; only the head of the module in Yosys' own format keeps the source's order.
  job.script.line("dump -n -o").openFile(1).selected(yosysId(design.topKey().toLatin1()));
  job.files = {scratch.fd(), head.fd()};
  job.workingDirectory = design.workingDirectory();
  job.timeLimitSeconds = design.source().timeLimitSeconds;
  job.memoryLimitBytes = design.source().memoryLimitBytes;
  job.idle = idle;
  const YosysResult run = runYosys(job);
  if (!run.ok) {
    error = run.error;
    return nullptr;
  }
  const std::shared_ptr<const Netlist> netlist = read(scratch.fd(), design.topKey(), error);
  if (netlist) netlist->d->topParameters = parameterOrder(head.content());
  return netlist;
}

std::shared_ptr<const Netlist> netlistOf(const Design& design, QString& error, const std::function<bool()>& idle) {
  static std::shared_ptr<const Netlist> kept;
  static QByteArray digest;
  if (kept && digest == design.digest()) return kept;
  kept = Netlist::load(design, error, idle);
  digest = kept ? design.digest() : QByteArray();
  if (!kept && error.isEmpty()) error = QStringLiteral("The design's netlist could not be made.");
  return kept;
}

std::shared_ptr<const Netlist> Netlist::read(int file, const QString& topKey, QString& error) {
  std::shared_ptr<Netlist> netlist(new Netlist);
  if (!netlist->d->text.open(file, topKey.toLatin1(), error)) return nullptr;
  return netlist;
}

const ModuleIndex& NetlistBits::index(int module) const {
  std::unique_ptr<ModuleIndex>& known = indexes[module];
  if (!known) known.reset(new ModuleIndex(text, text.module(module)));
  return *known;
}

const KnownCell& NetlistBits::cell(size_t offset, int module) const {
  const auto known = largeCells.find(offset);
  if (known != largeCells.end()) return known->second;
  smallCell = {readCell(text, offset), PortBits()};
  if (module >= 0) {
    const std::vector<NetlistPort>& ports = text.module(module).portList;
    for (size_t i = 0; i < ports.size(); ++i)
      if (ports[i].direction != NetlistPort::Input)
        smallCell.outputs.add(int(i), smallCell.connections.ports.value(ports[i].name));
  } else {
    smallCell.outputs.add(0, smallCell.connections.ports.value("RD_DATA"));
  }
  smallCell.outputs.sort();
  return smallCell.connections.end - offset < kLargeCell ? smallCell
                                                         : largeCells.emplace(offset, smallCell).first->second;
}

bool NetlistBits::findInstance(const QString& path, PlacedBit& place) const {
  place.module = text.top();
  place.path.clear();
  if (path.isEmpty()) return true;
  for (const QString& key : instancePathKeys(path)) {
    const NetlistModule& module = text.module(place.module);
    const int instance = module.instanceByName.value(key.toLatin1(), -1);
    const int below = instance < 0 ? -1 : module.instances[size_t(instance)].module;
    if (below < 0) return false;
    place.path.push_back(instance);
    place.module = below;
  }
  return true;
}

bool NetlistBits::place(const NetBit& bit, PlacedBit& place) const {
  QVector<int> bits;
  if (!findInstance(bit.instancePath, place) || !index(place.module).netBits(bit.net.toLatin1(), bits)) return false;
  if (bit.bit < 0 || bit.bit >= bits.size()) return false;
  place.bit = bits.at(bit.bit);  // operator[] would copy a vector of any width
  return true;
}

bool NetlistBits::climb(const PlacedBit& inner, PlacedBit& outer) const {
  if (inner.path.empty()) return false;
  PlacedBit above;
  above.path.assign(inner.path.begin(), inner.path.end() - 1);
  above.module = text.top();
  for (const int step : above.path) above.module = text.module(above.module).instances[size_t(step)].module;
  const NetlistInstance& instance = text.module(above.module).instances[size_t(inner.path.back())];
  const auto [first, last] = index(inner.module).inputs().find(inner.bit);
  if (first == last) return false;
  const KnownCell& known = cell(instance.cell, inner.module);
  for (const PortBits::Place* at = first; at != last; ++at) {
    const QVector<int> connected =
        known.connections.ports.value(text.module(inner.module).portList[size_t(at->port)].name);
    if (at->position >= connected.size()) continue;
    above.bit = connected[at->position];
    outer = above;
    return true;
  }
  return false;
}

bool NetlistBits::descend(const PlacedBit& outer, const IndexedCell& cell, PlacedBit& inner) const {
  if (cell.instance < 0) return false;  // one of Yosys' own cells that a damaged netlist gives an inout
  const int below = text.module(outer.module).instances[size_t(cell.instance)].module;
  if (below < 0 || text.module(below).blackBox) return false;
  const auto [first, last] = this->cell(cell.offset, below).outputs.find(outer.bit);
  for (const PortBits::Place* at = first; at != last; ++at) {
    const QVector<int>& bits = text.module(below).portList[size_t(at->port)].bits;
    if (at->position >= bits.size()) continue;
    inner.path = outer.path;
    inner.path.push_back(cell.instance);
    inner.module = below;
    inner.bit = bits[at->position];
    return true;
  }
  return false;
}

PlacedBit NetlistBits::source(const PlacedBit& start, LocalDriver& driver) const {
  // A net may branch at inouts, and a ring of feed-through modules has no end: look at each place once. An inout of a
  // black box, or of the top, counts only when nothing else drives the net. A net without a driver is found where it
  // ends, so that all who follow it find the same.
  std::vector<PlacedBit> pending{start};
  std::set<std::pair<std::vector<int>, int>> seen;
  PlacedBit weakPlace = start, end = start, next;
  LocalDriver weak;
  while (!pending.empty()) {
    const PlacedBit place = pending.back();
    pending.pop_back();
    if (!seen.emplace(place.path, place.bit).second) continue;
    const ModuleIndex& local = index(place.module);
    driver = local.driver(place.bit);
    if (isConstantBit(place.bit)) return place;
    if (driver.kind == LocalDriver::None || driver.kind == LocalDriver::InputPort) end = place;
    if (driver.kind == LocalDriver::Cell) {
      const IndexedCell& cell = local.cells()[size_t(driver.cell)];
      if (cell.kind != CellKind::Instance || !descend(place, cell, next)) return place;
      pending.push_back(next);
      continue;
    }
    if (driver.kind == LocalDriver::InputPort) {
      if (place.path.empty()) return place;
      if (climb(place, next)) pending.push_back(next);
      continue;
    }
    if (driver.kind == LocalDriver::InOutPort && climb(place, next)) pending.push_back(next);
    if (driver.kind == LocalDriver::InOutPort && place.path.empty()) {
      weak = driver;
      weakPlace = place;
    }
    for (const int candidate : local.inOutCells(place.bit)) {
      if (descend(place, local.cells()[size_t(candidate)], next)) {
        pending.push_back(next);
      } else if (weak.kind == LocalDriver::None) {
        weak.kind = LocalDriver::Cell;
        weak.cell = candidate;
        weakPlace = place;
      }
    }
  }
  driver = weak;
  return weak.kind == LocalDriver::None ? topmost(end) : weakPlace;
}

PlacedBit NetlistBits::topmost(PlacedBit place, const std::function<bool(const PlacedBit&)>& stop) const {
  PlacedBit above;
  while (!isConstantBit(place.bit)) {
    const LocalDriver driver = index(place.module).driver(place.bit);
    if (driver.kind != LocalDriver::InputPort && driver.kind != LocalDriver::InOutPort) break;
    if ((stop && stop(place)) || !climb(place, above)) break;
    place = above;
  }
  return place;
}

NetBit NetlistBits::named(const PlacedBit& place) const {
  NetBit bit;
  int module = text.top();
  for (const int step : place.path) {
    const NetlistInstance& instance = text.module(module).instances[size_t(step)];
    if (!bit.instancePath.isEmpty()) bit.instancePath += QLatin1Char('/');
    // As Design writes paths: a name that would be misread stands as an escaped identifier.
    const bool escaped = instance.name.contains('/') || instance.name.startsWith('\\');
    bit.instancePath += textFromBytes(escaped ? '\\' + instance.name + ' ' : instance.name);
    module = instance.module;
  }
  QByteArray net;
  if (!index(module).nameOf(place.bit, net, bit.bit)) return bit;
  bit.net = textFromBytes(net);
  bit.name = bit.instancePath.isEmpty() ? bit.net : bit.instancePath + QLatin1Char('/') + bit.net;
  const int shown = index(module).sourceIndex(net, bit.bit);
  if (shown >= 0) bit.name += QStringLiteral("[%1]").arg(shown);
  return bit;
}

void NetlistBits::describeCell(const PlacedBit& place, const IndexedCell& looked, BitDriver& result) const {
  switch (looked.kind) {
    case CellKind::Instance:
      result.kind = BitDriver::BlackBox;
      return;
    case CellKind::Latch:
      result.kind = BitDriver::Latch;
      return;
    case CellKind::Logic:
      result.kind = BitDriver::Combinational;
      return;
    case CellKind::FlipFlop:
    case CellKind::MemoryRead:
    case CellKind::MemoryBlock:
      break;
  }
  const QVector<int> clock = clockOf(cell(looked.offset, -1), looked.kind, place.bit);
  result.kind = looked.kind == CellKind::FlipFlop ? BitDriver::FlipFlop
                : clock.isEmpty()                 ? BitDriver::Combinational
                                                  : BitDriver::Memory;
  if (clock.isEmpty()) return;
  PlacedBit clockPlace = place;
  clockPlace.bit = clock.first();
  LocalDriver ignored;
  clockPlace = source(clockPlace, ignored);
  result.hasClock = !isConstantBit(clockPlace.bit);
  if (result.hasClock) result.clock = named(clockPlace);
}

bool Netlist::driver(const NetBit& bit, BitDriver& result) const {
  result = BitDriver();
  PlacedBit place;
  if (!d->place(bit, place)) return false;
  LocalDriver local;
  place = d->source(place, local);
  if (isConstantBit(place.bit)) {
    result.kind = place.bit == kBitZ ? BitDriver::Undriven : BitDriver::Constant;
    return true;
  }
  switch (local.kind) {
    case LocalDriver::None:
      break;
    case LocalDriver::InputPort:
    case LocalDriver::InOutPort:
      result.kind = BitDriver::TopPort;
      break;
    case LocalDriver::Cell:
      d->describeCell(place, d->index(place.module).cells()[size_t(local.cell)], result);
  }
  return true;
}

NetBit Netlist::canonical(const NetBit& bit) const {
  PlacedBit place;
  if (!d->place(bit, place)) return bit;
  LocalDriver local;
  const PlacedBit source = d->source(place, local);
  const NetBit named = isConstantBit(source.bit) ? NetBit() : d->named(source);
  return named.net.isEmpty() ? bit : named;
}

}  // namespace ost
