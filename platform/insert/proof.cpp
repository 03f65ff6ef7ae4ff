// The proof: both editions are read back through Yosys, every module is compared with its original, and every input of
// the debug module is followed to its source.
#include "platform/insert/proof.h"

#include <errno.h>
#include <fcntl.h>

#include <QElapsedTimer>
#include <QFile>
#include <QSet>

#include "platform/design/name_index.h"
#include "platform/design/yosys.h"
#include "platform/insert/module_cut.h"
#include "platform/insert/probe_routing.h"
#include "platform/system/files.h"
#include "platform/system/scratch_file.h"
#include "platform/text/byte_text.h"

namespace ost {
namespace {

// Both sides alike: tri-state buffers as cells of their own, memories whole, what is read twice at one address read
// once. Nothing is cleaned away, since a net that the user's logic does not use may be probed.
const char kNormalise[] = "proc\ntribuf -merge\nopt_merge t:$memrd t:$memrd_v2\nmemory_collect";
constexpr int kLeastSecondsForAModule = 5;

/// A module's name in the original: Verilog escapes the names that Yosys made, and they come back with a backslash.
QByteArray plainName(const QByteArray& name) {
  return name.startsWith("\\$") ? name.mid(1) : name;
}

class Proof {
 public:
  Proof(const InsertPlan& plan, const Design& design, const std::function<bool()>& idle, ProofReport& report,
        QString& error)
      : plan_(plan), design_(design), idle_(idle), report_(report), error_(error) {
    clock_.start();
  }

  bool run(const NetlistBits& original, const ProofFiles& files);

 private:
  bool fail(const QString& text) {
    error_ = QStringLiteral("The proof of the instrumented design failed: ") + text;
    return false;
  }
  YosysJob job() const;
  bool openScratch(ScratchFile& file, const QByteArray& content);
  bool readBack(const QString& what, const YosysScript& script, const QVector<int>& files, const QByteArray& topKey,
                NetlistText& text);
  void noteChanges(const NetlistBits& original);
  bool compareCells(const ModuleCut& gold, const ModuleCut& gate, bool top);
  bool comparePorts(ModuleCut& gold, ModuleCut& gate, bool top);
  bool compareRegisters(ModuleCut& gold, ModuleCut& gate);
  bool proveModule(int gateModule);
  bool proveLogic(const ModuleCut& gold, const ModuleCut& gate);
  bool checkProbes();
  QString shown(const NetlistModule& module) const { return textFromBytes(sourceName(module.name)); }
  /// The original's name of a module, whether it was made unique or not.
  QByteArray originalName(const QByteArray& name) const {
    const auto unique = originalOf_.constFind(plainName(name));
    if (unique != originalOf_.constEnd()) return *unique;
    return gold_.text.find(name) >= 0 ? name : plainName(name);  // a user's own name may begin with "$", too
  }
  QByteArray probePort(const QByteArray& name) const { return probePortOf_.value(plainName(name)); }

  const InsertPlan& plan_;
  const Design& design_;
  const std::function<bool()>& idle_;
  ProofReport& report_;
  QString& error_;
  QElapsedTimer clock_;
  NetlistBits gold_, gate_;
  ProbeRouting routing_;
  QHash<QByteArray, QByteArray> originalOf_;   ///< Names of modules made unique -> the original's name.
  QHash<QByteArray, QByteArray> probePortOf_;  ///< Names of changed modules -> their probe port.
  QSet<QByteArray> topPorts_;                  ///< What the insertion adds at the top.
  QStringList late_;                           ///< Modules for which no time was left.
};

YosysJob Proof::job() const {
  YosysJob job;
  job.timeLimitSeconds =
      std::max(kLeastSecondsForAModule, design_.source().timeLimitSeconds - int(clock_.elapsed() / 1000));
  job.memoryLimitBytes = design_.source().memoryLimitBytes;
  job.workingDirectory = design_.workingDirectory();
  job.idle = idle_;
  return job;
}

bool Proof::openScratch(ScratchFile& file, const QByteArray& content) {
  QString reason;
  return file.open(reason) && file.write(content, reason) ? true : fail(reason + QLatin1Char('.'));
}

/// Runs a script that reads one edition, its files from the second on, normalises it and loads the result.
bool Proof::readBack(const QString& what, const YosysScript& script, const QVector<int>& files,
                     const QByteArray& topKey, NetlistText& text) {
  ScratchFile scratch;
  if (!openScratch(scratch, QByteArray())) return false;
  YosysJob read = job();
  read.files = QVector<int>{scratch.fd()} + files;
  read.script = script;
  read.script.line(kNormalise).line("write_json").openFile(0);
  const YosysResult result = runYosys(read);
  if (result.cancelled) {
    error_ = result.error;
    return false;
  }
  if (!result.ok) return fail(QStringLiteral("cannot read %1 (%2).").arg(what, result.error));
  return text.open(scratch.fd(), topKey, error_);
}

void Proof::noteChanges(const NetlistBits& original) {
  for (const ModuleVariant& variant : routing_.variants()) {
    probePortOf_.insert(plainName(variant.name), variant.port);
    if (!variant.inPlace) originalOf_.insert(plainName(variant.name), original.text.module(variant.module).name);
  }
  for (const QString& pin : {plan_.pins.tck, plan_.pins.tms, plan_.pins.tdi, plan_.pins.tdo})
    topPorts_.insert(pin.toLatin1());
  for (const PlanCore& core : plan_.cores)
    if (core.triggerOutIo) topPorts_.insert(core.triggerOutName.toLatin1());
}

/// The same instances and memories, of the same module (or its unique copy) and with the same parameters.
bool Proof::compareCells(const ModuleCut& gold, const ModuleCut& gate, bool top) {
  const QString where = shown(gold.module());
  for (const auto& [name, cell] : gate.cells()) {
    if (gold.cells().count(name)) continue;
    if (top && cell.type == "ostrel_debug") continue;
    return fail(
        QStringLiteral("module %1 has a cell \"%2\" that its original has not.").arg(where, textFromBytes(name)));
  }
  for (const auto& [name, cell] : gold.cells()) {
    const auto found = gate.cells().find(name);
    if (found == gate.cells().end()) {
      if (name.startsWith("mem|")) continue;  // what nothing reads may have been dropped; see comparePorts()
      return fail(QStringLiteral("module %1 has lost its cell \"%2\".").arg(where, textFromBytes(name)));
    }
    if (originalName(found->second.type) != cell.type || found->second.parameters != cell.parameters)
      return fail(QStringLiteral("the cell \"%2\" of module %1 has another type or other parameters than the original.")
                      .arg(where, textFromBytes(name)));
  }
  return true;
}

/// Gives both sides the same ports; what the insertion added is left out.
bool Proof::comparePorts(ModuleCut& gold, ModuleCut& gate, bool top) {
  const QString where = shown(gold.module());
  auto& ports = gate.ports();
  for (auto port = ports.begin(); port != ports.end();) {
    if (gold.ports().count(port->first)) {
      ++port;
      continue;
    }
    const QByteArray& name = port->first;
    const QByteArray base = name.left(name.lastIndexOf('|'));
    bool added = false;
    if (base.startsWith("port|")) {
      const QByteArray plain = base.mid(5);
      added = (top && topPorts_.contains(plain)) || probePort(gate.module().name) == plain;
    } else if (base.startsWith("cell|")) {
      const QByteArray cell = base.mid(5);
      for (const auto& [instance, cut] : gate.cells()) {
        if (!cell.startsWith(instance + '.')) continue;
        const QByteArray plain = cell.mid(instance.size() + 1);
        added |= probePort(cut.type) == plain || (top && cut.type == "ostrel_debug");
      }
    }
    const bool open = port->second.bit == kBitX || port->second.bit == kBitZ;
    if (!added && !open)
      return fail(
          QStringLiteral("module %1 connects \"%2\", which its original does not.").arg(where, textFromBytes(base)));
    port = ports.erase(port);
  }
  // A port of a memory that was dropped: what it reads becomes an input that the other side does not have, and that the
  // logic must not depend on.
  const auto groupOf = [](const QByteArray& name) { return name.left(name.lastIndexOf('.')); };
  QSet<QByteArray> memoryPorts;
  for (const auto& [name, cut] : ports)
    if (name.startsWith("mem|")) memoryPorts.insert(groupOf(name));
  for (auto port = gold.ports().begin(); port != gold.ports().end();) {
    const QByteArray& name = port->first;
    const bool dropped = name.startsWith("mem|") && !memoryPorts.contains(groupOf(name));
    port = dropped && !name.contains(".DATA|") ? gold.ports().erase(port) : std::next(port);
  }
  gold.direct();
  gate.direct();
  for (auto& [name, cut] : gold.ports()) {
    const auto found = ports.find(name);
    if (found == ports.end()) {
      ports[name] = {cut.input, cut.input ? gate.freshBit() : kBitX};
    } else if (cut.input != found->second.input) {
      // An input of one side only: give the other a bit of its own, which the logic does not read.
      if (cut.input)
        found->second = {true, gate.freshBit()};
      else
        return fail(QStringLiteral("module %1: \"%2\" is connected to another net.").arg(where, textFromBytes(name)));
    }
  }
  return true;
}

/// The solver takes all registers of a module as clocked alike: their clocks become outputs that are compared, and
/// edges and initial values are compared here.
bool Proof::compareRegisters(ModuleCut& gold, ModuleCut& gate) {
  const QString where = shown(gold.module());
  for (const auto& [name, goldRegister] : gold.registers()) {
    const int bar = name.lastIndexOf('|');
    CutRegister gateRegister;
    if (!gate.registerAt(name.left(bar), name.mid(bar + 1).toInt(), gateRegister)) continue;
    if (gateRegister.risingEdge != goldRegister.risingEdge)
      return fail(QStringLiteral("module %1: the register \"%2\" is clocked by the other edge.")
                      .arg(where, textFromBytes(name.left(bar))));
    gold.ports()["clock|" + name] = {false, goldRegister.clock};
    gate.ports()["clock|" + name] = {false, gateRegister.clock};
  }
  for (const auto& [net, bits] : gold.initialNets()) {
    QVector<int> gateBits;
    if (!gate.netBits(net, gateBits) || gateBits.size() != bits.size()) continue;
    for (int i = 0; i < bits.size(); ++i) {
      const char wanted = gold.initialValues().value(bits[i]);
      if (!wanted || isConstantBit(gateBits[i]) || gate.initialValues().value(gateBits[i]) == wanted) continue;
      return fail(
          QStringLiteral("module %1: the register \"%2\" has lost its initial value.").arg(where, textFromBytes(net)));
    }
  }
  return true;
}

bool Proof::proveLogic(const ModuleCut& gold, const ModuleCut& gate) {
  ScratchFile scratch;
  if (!openScratch(scratch, "{ \"creator\": \"ostrel\", \"modules\": {\n" + gold.json("gold") + ",\n" +
                                gate.json("gate") + "\n} }\n"))
    return false;
  YosysJob prove = job();
  prove.files = {scratch.fd()};
  prove.script.line("read_json").openFile(0);
  // Not -short: together with -undef, Yosys 0.23 takes any value for equal to a branch that is 'x' in both.
  prove.script.line(
      "async2sync\ndffunmap\n"
      "equiv_make gold gate eq\nhierarchy -top eq\n"
      "equiv_simple -undef\nequiv_induct -undef\nequiv_status -assert");
  const YosysResult result = runYosys(prove);
  if (result.ok) return true;
  if (result.cancelled) {
    error_ = result.error;
    return false;
  }
  return fail(QStringLiteral("module %1 could not be proved equal to its original (%2).")
                  .arg(shown(gate.module()), result.error));
}

bool Proof::proveModule(int gateModule) {
  const NetlistModule& module = gate_.text.module(gateModule);
  const int goldModule = gold_.text.find(originalName(module.name));
  if (goldModule < 0)
    return fail(QStringLiteral("it has a module \"%1\" that the original has not.").arg(shown(module)));
  if (module.blackBox || gold_.text.module(goldModule).blackBox) return true;
  const bool top = gateModule == gate_.text.top();
  const QSet<QByteArray> added = top ? topPorts_ : QSet<QByteArray>{probePort(module.name)};
  ModuleCut gold(gold_, goldModule), gate(gate_, gateModule, added);
  gold.direct();
  if (!compareCells(gold, gate, top) || !comparePorts(gold, gate, top) || !compareRegisters(gold, gate)) return false;
  if (!proveLogic(gold, gate)) return false;
  ++report_.modulesProved;
  return true;
}

/// Follows each bit of the debug module's inputs, and the net of the plan by its name, to where they are driven.
bool Proof::checkProbes() {
  const NetlistModule& top = gate_.text.module(gate_.text.top());
  CellConnections debug;
  for (const NetlistInstance& instance : top.instances)
    if (instance.type == "ostrel_debug") debug = readCell(gate_.text, instance.cell);
  for (const DebugConnection& connection : routing_.connections()) {
    const QVector<int> bits = debug.ports.value(connection.port.name);
    if (bits.size() != connection.port.width)
      return fail(QStringLiteral("the debug module's port \"%1\" is not connected in full.")
                      .arg(textFromBytes(connection.port.name)));
    for (int i = 0; i < connection.nets.size(); ++i) {
      PlacedBit probe, wanted;
      probe.module = gate_.text.top();
      probe.bit = bits[i];
      const NetBit& net = connection.nets[i];
      if (!gate_.place(net, wanted))
        return fail(QStringLiteral("the net \"%1\" has no name in the instrumented design.").arg(net.name));
      LocalDriver ignored;
      probe = gate_.source(probe, ignored);
      wanted = gate_.source(wanted, ignored);
      const bool samePlace = probe.path == wanted.path || isConstantBit(probe.bit);
      if (!samePlace || probe.bit != wanted.bit)
        return fail(QStringLiteral("the probe of \"%1\" looks at another net.").arg(net.name));
      ++report_.probesChecked;
    }
  }
  return true;
}

bool Proof::run(const NetlistBits& original, const ProofFiles& files) {
  if (!routing_.build(original, plan_, error_)) return false;
  noteChanges(original);

  Descriptor written[2];
  for (const QString* name : {&files.instrumented, &files.debugModule}) {
    Descriptor& file = written[name == &files.debugModule];
    file.reset(open(QFile::encodeName(*name).constData(), O_RDONLY | O_CLOEXEC));
    if (!file.isOpen())
      return fail(QStringLiteral("cannot open \"%1\": %2.").arg(textFromUnicode(*name), systemReason(errno)));
  }
  const QByteArray topKey = design_.topKey().toLatin1();
  if (!readBack(QStringLiteral("the design's sources"), design_.elaborationScript(), {}, topKey, gold_.text))
    return false;
  // Black boxes are not in the written Verilog; their ports are known from the original.
  QByteArray boxes;
  for (const NetlistModule& module : original.text.modules()) {
    if (!module.blackBox) continue;
    const std::string_view text = original.text.text().substr(module.text.begin, module.text.end - module.text.begin);
    boxes += (boxes.isEmpty() ? "" : ",\n") + QByteArray(text.data(), int(text.size()));
  }
  ScratchFile boxFile;
  if (!openScratch(boxFile, "{ \"creator\": \"ostrel\", \"modules\": {\n" + boxes + "\n} }\n")) return false;
  YosysScript script;
  if (!boxes.isEmpty()) script.line("read_json").openFile(3);
  script.line("read_verilog -nodpi -lib").openFile(2).line("read_verilog -nodpi").openFile(1);
  script.line("hierarchy -auto-top");
  if (!readBack(QStringLiteral("the instrumented design"), script, {written[0].fd(), written[1].fd(), boxFile.fd()},
                topKey.startsWith('$') ? '\\' + topKey : topKey, gate_.text))
    return false;

  if (!checkProbes()) return false;
  std::vector<int> order, unchanged;
  for (int i = 0; i < int(gate_.text.modules().size()); ++i) {
    const QByteArray& name = gate_.text.module(i).name;
    if (name == "ostrel_debug") continue;
    const bool touched = i == gate_.text.top() || probePortOf_.contains(plainName(name));
    (touched ? order : unchanged).push_back(i);
  }
  const size_t changed = order.size();
  order.insert(order.end(), unchanged.begin(), unchanged.end());
  const int limit = design_.source().timeLimitSeconds;
  for (const int module : order) {
    if (clock_.elapsed() / 1000 >= limit) {
      late_.append(shown(gate_.text.module(module)));
      continue;
    }
    if (!proveModule(module)) return false;
  }
  report_.lines.append(QStringLiteral("Proved: each of the %1 bits that the cores look at is the net of its name.")
                           .arg(report_.probesChecked));
  report_.lines.append(QStringLiteral("Proved: %1 modules (%2 of them changed) are equivalent to the design's in their "
                                      "ports and registers.")
                           .arg(report_.modulesProved)
                           .arg(changed));
  if (!late_.isEmpty())
    report_.lines.append(QStringLiteral("Not proved, the time limit of %1 s is over: %2.")
                             .arg(limit)
                             .arg(late_.join(QStringLiteral(", "))));
  return true;
}

}  // namespace

bool proveUnchanged(const InsertPlan& plan, const Design& design, std::shared_ptr<const Netlist> netlist,
                    const ProofFiles& files, const std::function<bool()>& idle, ProofReport& report, QString& error) {
  report = ProofReport();
  return Proof(plan, design, idle, report, error).run(netlist->bits(), files);
}

}  // namespace ost
