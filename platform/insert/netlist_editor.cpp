// The edits of an insertion, module by module.
#include "platform/insert/netlist_editor.h"

#include <algorithm>
#include <iterator>
#include <numeric>

#include "platform/insert/ascending_nets.h"
#include "platform/insert/inout_registers.h"
#include "platform/insert/netlist_members.h"
#include "platform/text/byte_text.h"

namespace ost {
namespace {

constexpr const char* kPins[] = {"tck", "tms", "tdi", "tdo"};

}  // namespace

NetlistEditor::NetlistEditor(const NetlistBits& netlist, const ProbeRouting& routing, InsertPlan& plan)
    : netlist_(netlist), routing_(routing), plan_(plan) {}

QVector<int> NetlistEditor::newBits(Additions& additions, int count) const {
  QVector<int> bits(count);
  std::iota(bits.begin(), bits.end(), additions.nextBit);
  additions.nextBit += count;
  return bits;
}

/// Makes the bits `to` follow the bits `from` by a cell that Yosys turns into an assignment.
void NetlistEditor::follow(const QVector<int>& from, const QVector<int>& to, Additions& additions, bool keep) const {
  if (from.isEmpty()) return;
  const QByteArray width = binary32(from.size());
  additions.cells += ",\n        \"$ostrel$" + QByteArray::number(additions.nextCell++) +
                     "\": { \"hide_name\": 1, \"type\": \"$pos\", \"parameters\": { \"A_SIGNED\": \"" + binary32(0) +
                     "\", \"A_WIDTH\": \"" + width + "\", \"Y_WIDTH\": \"" + width + "\" }, \"attributes\": { " +
                     (keep ? "\"keep\": \"" + binary32(1) + "\" " : QByteArray()) +
                     "}, \"port_directions\": { \"A\": \"input\", \"Y\": \"output\" }, "
                     "\"connections\": { \"A\": " +
                     bitListText(from) + ", \"Y\": " + bitListText(to) + " } }";
}

/// Appends members, each with a comma before it, to the object at the offset.
void NetlistEditor::appendMembers(size_t object, const QByteArray& members, TextEdits& edits) const {
  if (members.isEmpty()) return;
  JsonCursor cursor(netlist_.text.text(), object);
  const bool empty = cursor.enterObject() && cursor.peek() == '}';
  JsonCursor end(netlist_.text.text(), object);
  end.skipValue();
  edits.insert(end.position() - 1, (empty ? members.mid(1) : members) + "\n      ");
}

/// Yosys gives an output the same bit as the input or inout that it is assigned from, and when the netlist is read
/// back, an inout may end up driven by the output. Such outputs get bits of their own.
void NetlistEditor::separateOutputs(int index, TextEdits& edits, Additions& additions) const {
  const NetlistModule& module = netlist_.text.module(index);
  QSet<int> outer;
  for (const NetlistPort& port : module.portList)
    if (port.direction != NetlistPort::Output)
      for (const int bit : port.bits)
        if (!isConstantBit(bit)) outer.insert(bit);
  for (const NetlistPort& port : module.portList) {
    if (port.direction != NetlistPort::Output) continue;
    QVector<int> bits = port.bits, from, to;
    for (int& bit : bits) {
      if (!outer.contains(bit)) continue;
      if (additions.nextBit == 0) additions.nextBit = netlist_.index(index).highestBit() + 1;
      from.append(bit);
      bit = newBits(additions, 1).first();
      to.append(bit);
    }
    if (from.isEmpty()) continue;
    edits.replace(port.bitsSpan, bitListText(bits));
    const TextSpan net = netlist_.index(index).netBitsSpan(port.name);
    if (net.end) edits.replace(net, bitListText(bits));
    follow(from, to, additions);
  }
}

/// A register on an inout gets bits of its own, too, which the inout follows.
void NetlistEditor::separateRegisters(int index, TextEdits& edits, Additions& additions) const {
  for (const InOutRegister& found : registersOnInOuts(netlist_, index)) {
    if (additions.nextBit == 0) additions.nextBit = netlist_.index(index).highestBit() + 1;
    const QVector<int> bits = newBits(additions, found.bits.size());
    edits.replace(found.bitsSpan, bitListText(bits));
    follow(bits, found.bits, additions, true);
    QByteArray initial = found.initial;
    std::reverse(initial.begin(), initial.end());
    additions.nets += ",\n        \"$ostrel$" + QByteArray::number(additions.nextCell++) +
                      "\": { \"hide_name\": 1, \"bits\": " + bitListText(bits) + ", \"attributes\": { \"init\": \"" +
                      initial + "\" } }";
  }
}

/// Connects the children's probe ports to new bits and gives the children their new modules.
void NetlistEditor::tap(const std::vector<ChildUse>& children, const NetlistModule& module, TextEdits& edits,
                        Additions& additions, std::vector<QVector<int>>& childBits) const {
  for (const ChildUse& use : children) {
    const ModuleVariant& variant = routing_.variants()[size_t(use.variant)];
    const QVector<int> bits = newBits(additions, variant.width);
    const CellConnections cell = readCell(netlist_.text, module.instances[size_t(use.instance)].cell);
    if (!variant.inPlace) edits.replace(cell.typeSpan, quoteJson(variant.name));
    const QByteArray member = ",\n            " + quoteJson(variant.port) + ": ";
    if (cell.directions) appendMembers(cell.directions, member + "\"output\"", edits);
    appendMembers(cell.connections, member + bitListText(bits), edits);
    childBits.push_back(bits);
  }
}

void NetlistEditor::finish(const NetlistModule& module, const Additions& additions, TextEdits& edits) const {
  appendMembers(module.ports, additions.ports, edits);
  appendMembers(module.cells, additions.cells, edits);
  appendMembers(module.netNames, additions.nets, edits);
}

void NetlistEditor::editVariant(const ModuleVariant& variant) {
  const NetlistModule& module = netlist_.text.module(variant.module);
  TextEdits edits;
  Additions additions;
  additions.nextBit = netlist_.index(variant.module).highestBit() + 1;
  separateOutputs(variant.module, edits, additions);
  declareDescending(netlist_.text, netlist_.text.module(variant.module), edits);
  separateRegisters(variant.module, edits, additions);
  std::vector<QVector<int>> childBits;
  tap(variant.children, module, edits, additions, childBits);
  QVector<int> sources = variant.tapped;
  for (const QVector<int>& bits : childBits) sources += bits;
  const QVector<int> port = newBits(additions, sources.size());
  follow(sources, port, additions);
  additions.ports += portText(variant.port, "output", port);
  additions.nets += netText(variant.port, port);
  finish(module, additions, edits);
  if (variant.inPlace)
    edits_.add(edits);
  else
    clones_.push_back({&variant, edits});
}

bool NetlistEditor::chooseTopNames(QString& error) {
  const ModuleIndex& index = netlist_.index(netlist_.text.top());
  QSet<QByteArray> added;
  const auto taken = [&](const QByteArray& name) { return added.contains(name) || index.nameTaken(name); };
  for (const PlanCore& core : plan_.cores) {
    for (const QString& name : core.triggerOutNames()) {
      if (taken(name.toLatin1())) {
        error = QStringLiteral(
                    "Core %1: the trigger output \"%2\" has the name of something else at the top of the "
                    "design; choose another with ost_trace trig_option -core %1 OutNetName=<name>.")
                    .arg(core.name, name);
        return false;
      }
      added.insert(name.toLatin1());
    }
  }
  debugInstance_ = freeName("ostrel_debug_i", taken);
  added.insert(debugInstance_);
  if (plan_.wishbone && !plan_.wishbone->isConnected) chooseBusNames(taken);
  if (!plan_.jtag.hasPins()) return true;
  // The four pins share one prefix, the first for which all four names are free.
  QByteArray prefix = "ostrel_";
  const auto prefixTaken = [&](const QByteArray& wanted) {
    return std::any_of(std::begin(kPins), std::end(kPins), [&](const char* pin) { return taken(wanted + pin); });
  };
  for (int number = 1; prefixTaken(prefix); ++number) prefix = "ostrel" + QByteArray::number(number) + '_';
  plan_.pins = {textFromBytes(prefix + kPins[0]), textFromBytes(prefix + kPins[1]), textFromBytes(prefix + kPins[2]),
                textFromBytes(prefix + kPins[3])};
  return true;
}

/// Adds a JTAG pin to the top's ports.
QVector<int> NetlistEditor::addPin(const DebugPort& port, Additions& additions) const {
  const QString* const names[] = {&plan_.pins.tck, &plan_.pins.tms, &plan_.pins.tdi, &plan_.pins.tdo};
  const QByteArray name = names[port.role - DebugPort::Tck]->toLatin1();
  const QVector<int> bits = newBits(additions, 1);
  additions.ports += portText(name, port.output ? "output" : "input", bits);
  additions.nets += netText(name, bits);
  return bits;
}

/// Adds the port, the net or both that a core's trigger output drives.
QVector<int> NetlistEditor::addTriggerOut(const DebugPort& port, Additions& additions) const {
  const PlanCore& core = plan_.cores[port.core];
  const QVector<int> bits = newBits(additions, port.width);
  QVector<int> portBits = bits;
  if (core.triggerOutNet) additions.nets += netText(core.triggerOutNames().last().toLatin1(), bits, true);
  if (core.triggerOutNet && core.triggerOutIo) {
    portBits = newBits(additions, port.width);
    follow(bits, portBits, additions);
  }
  if (core.triggerOutIo) {
    additions.ports += portText(core.triggerOutName.toLatin1(), "output", portBits);
    additions.nets += netText(core.triggerOutName.toLatin1(), portBits);
  }
  return bits;
}

/// Adds the debug module's instance and the ports and nets of the top that belong to it.
void NetlistEditor::addDebugInstance(const std::vector<QVector<int>>& childBits, const BusBits& bus,
                                     Additions& additions) const {
  QByteArray directions, connections;
  for (const DebugConnection& connection : routing_.connections()) {
    const DebugPort& port = connection.port;
    QVector<int> bits;
    if (port.isPin())
      bits = addPin(port, additions);
    else if (port.role == DebugPort::TriggerOut)
      bits = addTriggerOut(port, additions);
    else if (bus.contains(port.name))
      bits = bus.value(port.name);
    else
      for (const TopSource& source : connection.sources)
        bits.append(source.child < 0 ? source.bit : childBits[size_t(source.child)][source.position]);
    directions += ", " + quoteJson(port.name) + ": " + (port.output ? "\"output\"" : "\"input\"");
    connections += ",\n            " + quoteJson(port.name) + ": " + bitListText(bits);
  }
  additions.cells += ",\n        " + quoteJson(debugInstance_) +
                     ": { \"hide_name\": 0, \"type\": \"ostrel_debug\", \"parameters\": { }, \"attributes\": { "
                     "\"keep\": \"" +
                     binary32(1) + "\" }, \"port_directions\": {" + directions.mid(1) +
                     " },\n          \"connections\": {" + connections.mid(1) + " } }";
}

bool NetlistEditor::editTop(QString& error) {
  if (!chooseTopNames(error)) return false;
  const int topIndex = netlist_.text.top();
  const NetlistModule& top = netlist_.text.module(topIndex);
  Additions additions;
  additions.nextBit = netlist_.index(topIndex).highestBit() + 1;
  separateOutputs(topIndex, edits_, additions);
  declareDescending(netlist_.text, netlist_.text.module(topIndex), edits_);
  separateRegisters(topIndex, edits_, additions);
  std::vector<QVector<int>> childBits;
  tap(routing_.topChildren(), top, edits_, additions, childBits);
  BusBits bus;
  if (plan_.wishbone) bus = plan_.wishbone->isConnected ? shareBus(additions) : exposeBus(additions);
  addDebugInstance(childBits, bus, additions);
  finish(top, additions, edits_);
  return true;
}

bool NetlistEditor::prepare(const QSet<QByteArray>& reservedModules, QString& error) {
  for (const QByteArray& name : reservedModules) {
    if (netlist_.text.find(name) < 0) continue;
    error = QStringLiteral(
                "The design has a module \"%1\", a name that the debug core needs; rename the module, or "
                "read the design without the debug core in it.")
                .arg(textFromBytes(name));
    return false;
  }
  QSet<int> inPlace{netlist_.text.top()};
  for (const ModuleVariant& variant : routing_.variants()) {
    if (variant.inPlace) inPlace.insert(variant.module);
    editVariant(variant);
  }
  if (!editTop(error)) return false;
  for (int module = 0; module < int(netlist_.text.modules().size()); ++module) {
    if (inPlace.contains(module) || netlist_.text.module(module).blackBox) continue;
    Additions additions;
    separateOutputs(module, edits_, additions);
    declareDescending(netlist_.text, netlist_.text.module(module), edits_);
    separateRegisters(module, edits_, additions);
    finish(netlist_.text.module(module), additions, edits_);
  }
  return true;
}

bool NetlistEditor::write(QIODevice& device) const {
  const std::string_view text = netlist_.text.text();
  const size_t head = netlist_.text.modulesBody() + 1;
  if (!edits_.write(text, {0, head}, device)) return false;
  for (const Clone& clone : clones_) {
    const NetlistModule& module = netlist_.text.module(clone.variant->module);
    const QByteArray key = "\n    " + quoteJson(clone.variant->name) + ": ";
    if (device.write(key) != key.size() || !clone.edits.write(text, {module.body, module.text.end}, device) ||
        device.write(",", 1) != 1)
      return false;
  }
  return edits_.write(text, {head, text.size()}, device);
}

}  // namespace ost
