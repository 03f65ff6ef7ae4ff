// The marks of a slave, and the names of its ports.
#include "platform/rules/wishbone_target.h"

#include <QMap>
#include <QSet>

#include "platform/design/name_index.h"
#include "platform/text/byte_text.h"

namespace ost {
namespace {

constexpr char kMark[] = "ostrel_wishbone", kRole[] = "ostrel_role";
constexpr char kMarkSlave[] = "slave", kMarkWords[] = "words", kMarkClock[] = "clock", kRoleSlave[] = "jtag2wb";

/// A signal of the bus, as the end of a port's name tells.
struct SignalRow {
  const char* end;
  WishboneSignal signal;
  NetlistPort::Direction direction;
  int width;  ///< 0: 1 to 32.
  bool isRequired;
};
constexpr NetlistPort::Direction kIn = NetlistPort::Input, kOut = NetlistPort::Output;
const SignalRow kSignals[] = {{"cyc_i", WishboneSignal::Cycle, kIn, 1, true},
                              {"stb_i", WishboneSignal::Strobe, kIn, 1, true},
                              {"we_i", WishboneSignal::Write, kIn, 1, true},
                              {"adr_i", WishboneSignal::Address, kIn, 0, true},
                              {"dat_i", WishboneSignal::DataIn, kIn, kWishboneWordBits, true},
                              {"sel_i", WishboneSignal::Select, kIn, 4, false},
                              {"dat_o", WishboneSignal::DataOut, kOut, kWishboneWordBits, true},
                              {"ack_o", WishboneSignal::Ack, kOut, 1, true},
                              {"err_o", WishboneSignal::Error, kOut, 1, false},
                              {"rty_o", WishboneSignal::Retry, kOut, 1, false},
                              {"cti_i", WishboneSignal::Type, kIn, 3, false},
                              {"bte_i", WishboneSignal::Burst, kIn, 2, false}};

QList<QByteArray> wordsOf(QByteArray text) {
  return text.replace(',', ' ').simplified().split(' ');
}

/// The text of an attribute; empty when the object of attributes does not have it.
QByteArray attribute(const NetlistText& text, size_t attributes, const char* name) {
  if (!attributes) return {};
  JsonCursor cursor(text.text(), attributes);
  std::string_view key;
  QByteArray value;
  for (cursor.enterObject(); cursor.nextMember(key); cursor.skipValue())
    if (key == name && cursor.peek() == '"') {
      cursor.readString(value);
      return value;
    }
  return {};
}

/// The same of a cell or net, whose object is given.
QByteArray attributeOf(const NetlistText& text, size_t object, const char* name) {
  JsonCursor cursor(text.text(), object);
  std::string_view key;
  for (cursor.enterObject(); cursor.nextMember(key); cursor.skipValue())
    if (key == "attributes") return attribute(text, cursor.valueStart(), name);
  return {};
}

/// The marks of a module's ports: name -> words.
QHash<QByteArray, QList<QByteArray>> portMarks(const NetlistText& text, const NetlistModule& module) {
  QHash<QByteArray, QList<QByteArray>> marks;
  if (!module.netNames) return marks;
  QSet<QByteArray> ports;
  for (const NetlistPort& port : module.portList) ports.insert(port.name);
  JsonCursor cursor(text.text(), module.netNames);
  std::string_view key;
  for (cursor.enterObject(); cursor.nextMember(key); cursor.skipValue()) {
    const QByteArray name = unescapeJson(key);
    if (!ports.contains(name)) continue;
    const QByteArray mark = attributeOf(text, cursor.valueStart(), kMark);
    if (!mark.isEmpty()) marks.insert(name, wordsOf(mark));
  }
  return marks;
}

class SlaveFinder {
 public:
  explicit SlaveFinder(const NetlistBits& netlist) : netlist_(netlist), top_(netlist.text.module(netlist.text.top())) {}

  WishboneFault find(PlanWishbone& wishbone);

 private:
  WishboneFault chooseInstance();
  WishboneFault choosePorts();
  WishboneFault checkPort(const SignalRow& row, const NetlistPort& port);
  WishboneFault findAddress();
  WishboneFault findClock();
  QString name() const { return textFromBytes(instance_->name); }

  const NetlistBits& netlist_;
  const NetlistModule& top_;
  const NetlistInstance* instance_ = nullptr;
  const NetlistModule* module_ = nullptr;
  QHash<QByteArray, QList<QByteArray>> marks_;  ///< Of its ports.
  bool countsWords_ = false;                    ///< The mark says that its address does.
  QByteArray prefix_;                           ///< Of its ports.
  PlanWishbone found_;
};

WishboneFault SlaveFinder::chooseInstance() {
  QVector<const NetlistInstance*> marked, withRole;
  for (const NetlistInstance& instance : top_.instances) {
    const QList<QByteArray> own = wordsOf(attributeOf(netlist_.text, instance.cell, kMark));
    bool isMarked = own.contains(kMarkSlave);
    if (instance.module >= 0) {
      const NetlistModule& module = netlist_.text.module(instance.module);
      for (const QList<QByteArray>& words : portMarks(netlist_.text, module)) isMarked |= words.contains(kMarkSlave);
      if (wordsOf(attribute(netlist_.text, module.attributes, kRole)).contains(kRoleSlave)) withRole.append(&instance);
    }
    if (isMarked) marked.append(&instance);
  }
  const QVector<const NetlistInstance*>& found = marked.isEmpty() ? withRole : marked;
  if (found.isEmpty())
    return {WishboneFault::NoSlave, QStringLiteral("no instance in the top has the attribute ostrel_wishbone = "
                                                   "\"slave\", nor is one of a module with the role \"jtag2wb\"")};
  if (found.size() > 1)
    return {WishboneFault::SeveralSlaves, QStringLiteral("the instances \"%1\" and \"%2\" are both marked")
                                              .arg(textFromBytes(found[0]->name), textFromBytes(found[1]->name))};
  instance_ = found.first();
  if (instance_->module < 0)
    return {WishboneFault::Ports, QStringLiteral("the module of the instance \"%1\" is not in the design").arg(name())};
  module_ = &netlist_.text.module(instance_->module);
  marks_ = portMarks(netlist_.text, *module_);
  countsWords_ = wordsOf(attributeOf(netlist_.text, instance_->cell, kMark)).contains(kMarkWords);
  return {};
}

WishboneFault SlaveFinder::checkPort(const SignalRow& row, const NetlistPort& port) {
  const auto wrong = [&](const QString& what) -> WishboneFault {
    return {WishboneFault::Ports,
            QStringLiteral("the port \"%1\" of \"%2\" %3").arg(textFromBytes(port.name), name(), what)};
  };
  if (port.direction != row.direction)
    return wrong(
        QStringLiteral("is no %1").arg(row.direction == kIn ? QLatin1String("input") : QLatin1String("output")));
  const int width = port.bits.size();
  if (row.width ? width != row.width : width > 32)
    return wrong(QStringLiteral("has %1 bits, %2 are wanted")
                     .arg(width)
                     .arg(row.width ? QString::number(row.width) : QStringLiteral("at most 32")));
  return {};
}

/// The bus is the one set of ports with the same beginning; marks at ports choose among several.
WishboneFault SlaveFinder::choosePorts() {
  bool chosenByMarks = false;
  for (const QList<QByteArray>& words : marks_) chosenByMarks |= words.contains(kMarkSlave);
  QMap<QByteArray, QVector<QPair<const SignalRow*, const NetlistPort*>>> sets;
  for (const NetlistPort& port : module_->portList) {
    const QByteArray lower = port.name.toLower();
    if (chosenByMarks && !marks_.value(port.name).contains(kMarkSlave)) continue;
    countsWords_ |= marks_.value(port.name).contains(kMarkWords);
    for (const SignalRow& row : kSignals)
      if (lower.endsWith(row.end)) sets[lower.chopped(int(strlen(row.end)))].append({&row, &port});
  }
  for (auto set = sets.begin(); set != sets.end();) {
    const auto has = [&set](WishboneSignal signal) {
      return std::any_of(set->begin(), set->end(), [signal](const auto& one) { return one.first->signal == signal; });
    };
    set = has(WishboneSignal::Cycle) || has(WishboneSignal::Strobe) ? std::next(set) : sets.erase(set);
  }
  if (sets.size() != 1)
    return {
        WishboneFault::Ports,
        sets.isEmpty()
            ? QStringLiteral("the module of \"%1\" has no port whose name ends with \"cyc_i\" or \"stb_i\"").arg(name())
            : QStringLiteral("the module of \"%1\" has several slave ports (\"%2*\" and \"%3*\")")
                  .arg(name(), textFromBytes(sets.firstKey()), textFromBytes(sets.lastKey()))};
  prefix_ = sets.firstKey();
  for (const NetlistPort& port : module_->portList)
    if (port.name.toLower() == prefix_ + "stall_o")
      return {
          WishboneFault::Ports,
          QStringLiteral("\"%1\" is a pipelined slave (it has the port \"%2\")").arg(name(), textFromBytes(port.name))};
  for (const SignalRow& row : kSignals) {
    const NetlistPort* port = nullptr;
    for (const auto& [known, candidate] : sets.first())
      if (known == &row) port = candidate;
    if (!port && !row.isRequired) continue;
    if (!port)
      return {WishboneFault::Ports, QStringLiteral("the module of \"%1\" lacks the port \"%2%3\"")
                                        .arg(name(), textFromBytes(prefix_), QLatin1String(row.end))};
    const WishboneFault fault = checkPort(row, *port);
    if (fault.kind) return fault;
    found_.pins.append({row.signal, textFromBytes(port->name), int(port->bits.size())});
  }
  return {};
}

/// `[31:2] adr_i` counts words, as `[31:0] adr_i` does with the mark's further word; without it the latter counts
/// bytes.
WishboneFault SlaveFinder::findAddress() {
  const WishbonePin& pin = *found_.pin(WishboneSignal::Address);
  const int lowest = std::max(netlist_.index(instance_->module).sourceIndex(pin.port.toLatin1(), 0), 0);
  found_.addressOffset = countsWords_ ? 2 : lowest;
  found_.addressBits = found_.addressOffset + pin.width;
  if ((found_.addressOffset == 0 || found_.addressOffset == 2) && found_.addressBits >= 3 && found_.addressBits <= 32)
    return {};
  return {WishboneFault::Ports, QStringLiteral("the address \"%1\" of \"%2\" has %3 from bit %4 on; it must begin with "
                                               "bit 0 or 2 and be an address of at most 32 bits")
                                    .arg(pin.port, name(), QStringLiteral("%1 bits").arg(pin.width))
                                    .arg(lowest)};
}

WishboneFault SlaveFinder::findClock() {
  const NetlistPort* clock = nullptr;
  const QList<QByteArray> names{prefix_ + "clk_i", "clk_i", "wb_clk_i", prefix_ + "clk", "clk"};
  int best = names.size();
  for (const NetlistPort& port : module_->portList) {
    const int rank = marks_.value(port.name).contains(kMarkClock) ? -1 : names.indexOf(port.name.toLower());
    const bool isMarked = rank < 0 && marks_.value(port.name).contains(kMarkClock);
    if ((rank < 0 && !isMarked) || rank >= best || port.direction != kIn || port.bits.size() != 1) continue;
    best = rank;
    clock = &port;
  }
  if (!clock)
    return {WishboneFault::Clock,
            QStringLiteral("the module of \"%1\" has no clock: no port \"%2clk_i\", \"clk_i\" or \"clk\"")
                .arg(name(), textFromBytes(prefix_))};
  PlacedBit place;
  place.module = netlist_.text.top();
  place.bit = readCell(netlist_.text, instance_->cell).ports.value(clock->name).value(0, kBitX);
  LocalDriver driver;
  const bool runs = !isConstantBit(place.bit) && !isConstantBit(netlist_.source(place, driver).bit) &&
                    driver.kind != LocalDriver::None;
  if (!runs)
    return {WishboneFault::Clock, QStringLiteral("the clock \"%1\" of \"%2\" is constant or has no driver")
                                      .arg(textFromBytes(clock->name), name())};
  found_.clock = netlist_.named(place);
  return {};
}

WishboneFault SlaveFinder::find(PlanWishbone& wishbone) {
  for (const auto step :
       {&SlaveFinder::chooseInstance, &SlaveFinder::choosePorts, &SlaveFinder::findAddress, &SlaveFinder::findClock}) {
    const WishboneFault fault = (this->*step)();
    if (fault.kind) return fault;
  }
  found_.instance = textFromBytes(instance_->name);
  found_.isBigEndian = wishbone.isBigEndian;
  found_.isConnected = true;
  wishbone = found_;
  return {};
}

}  // namespace

WishboneFault findWishboneSlave(const NetlistBits& netlist, PlanWishbone& wishbone) {
  return SlaveFinder(netlist).find(wishbone);
}

}  // namespace ost
