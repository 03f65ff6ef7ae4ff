// The proof: the written Verilog is read back, every module is compared with its original, and every input of the debug
// module is followed to its source.
#include "platform/proof/proof.h"

#include <errno.h>
#include <fcntl.h>

#include <QElapsedTimer>
#include <QFile>
#include <QSet>

#include "platform/design/name_index.h"
#include "platform/design/yosys.h"
#include "platform/proof/module_compare.h"
#include "platform/routing/probe_routing.h"
#include "platform/rtl/wishbone_writer.h"
#include "platform/system/files.h"
#include "platform/system/scratch_file.h"
#include "platform/text/byte_text.h"

namespace ost {
namespace {

const char kDebugModule[] = "ostrel_debug";
constexpr int kLeastSecondsForAModule = 5;

/// A module's name in the original: Verilog escapes the names that Yosys made, and they come back with a backslash.
QByteArray plainName(const QByteArray& name) {
  return name.startsWith("\\$") ? name.mid(1) : name;
}

class Proof {
 public:
  Proof(const InsertPlan& plan, const Design& design, const NetlistBits& original, const ProofHooks& hooks,
        ProofReport& report, QString& error)
      : plan_(plan), design_(design), original_(original), hooks_(hooks), report_(report), error_(error) {
    clock_.start();
    // Who has cancelled once is not asked again.
    if (hooks_.idle) hooks_.idle = [this, idle = hooks.idle] { return !(cancelled_ = cancelled_ || !idle()); };
  }

  bool run(const ProofFiles& files);

 private:
  bool fail(const QString& text) {
    error_ = QStringLiteral("The proof of the instrumented design failed: ") + text;
    return false;
  }
  int secondsLeft() const {
    return std::max(kLeastSecondsForAModule, design_.source().timeLimitSeconds - int(clock_.elapsed() / 1000));
  }
  bool openScratch(ScratchFile& file, const QByteArray& content);
  bool readBack(const ProofFiles& files);
  void noteChanges();
  void noteBus(const PlanWishbone& wishbone);
  bool checkProbes();
  bool compareModules();
  ModuleVerdict compareOne(int writtenModule);
  void report();
  QString shown(const NetlistModule& module) const { return textFromBytes(sourceName(module.name)); }
  /// The original's name of a module, whether it was made unique or not.
  QByteArray originalName(const QByteArray& name) const {
    const auto unique = originalOf_.constFind(plainName(name));
    if (unique != originalOf_.constEnd()) return *unique;
    return original_.text.find(name) >= 0 ? name : plainName(name);  // a user's own name may begin with "$", too
  }

  const InsertPlan& plan_;
  const Design& design_;
  const NetlistBits& original_;
  ProofHooks hooks_;
  bool cancelled_ = false;
  ProofReport& report_;
  QString& error_;
  QElapsedTimer clock_;
  NetlistBits written_;
  ProbeRouting routing_;
  QHash<QByteArray, QByteArray> originalOf_;   ///< Names of modules made unique -> the original's name.
  QHash<QByteArray, QByteArray> probePortOf_;  ///< Names of changed modules -> their probe port.
  QSet<QByteArray> topPorts_;                  ///< What the insertion adds at the top.
  QByteArray busType_;                         ///< The module of the slave that the Wishbone master shares.
  QSet<QByteArray> busPins_;
};

bool Proof::openScratch(ScratchFile& file, const QByteArray& content) {
  QString reason;
  return file.open(reason) && file.write(content, reason) ? true : fail(reason + QLatin1Char('.'));
}

/// Elaborates the written files as the sources were.
bool Proof::readBack(const ProofFiles& files) {
  Descriptor written[2];
  for (const QString* name : {&files.instrumented, &files.debugModule}) {
    Descriptor& file = written[name == &files.debugModule];
    file.reset(open(QFile::encodeName(*name).constData(), O_RDONLY | O_CLOEXEC));
    if (!file.isOpen())
      return fail(QStringLiteral("cannot open \"%1\": %2.").arg(textFromUnicode(*name), systemReason(errno)));
  }
  // Black boxes are not in the written Verilog; their ports are known from the original.
  QByteArray boxes;
  for (const NetlistModule& module : original_.text.modules()) {
    if (!module.blackBox) continue;
    const std::string_view text = original_.text.text().substr(module.text.begin, module.text.end - module.text.begin);
    boxes += (boxes.isEmpty() ? "" : ",\n") + QByteArray(text.data(), int(text.size()));
  }
  ScratchFile result, boxFile;
  if (!openScratch(result, QByteArray()) ||
      !openScratch(boxFile, "{ \"creator\": \"ostrel\", \"modules\": {\n" + boxes + "\n} }\n"))
    return false;
  YosysJob job;
  if (!boxes.isEmpty()) job.script.line("read_json").openFile(3);
  // A memory stays one, whether its addresses have become constants or not.
  job.script.line("read_verilog -nodpi -lib").openFile(2).line("read_verilog -nodpi -nomem2reg").openFile(1);
  // The order of a case is what the Verilog says, not a promise that it makes no difference. Ahead of a latch `proc`
  // replaces branches that are 'x' or 'z' by another one: it does not see the choices of the Verilog. What it would
  // simplify is left to the comparison.
  job.script
      .line(
          "hierarchy -auto-top\nattrmap -remove parallel_case=1\nchtype -set $__ostrel_mux t:$mux\nproc -noopt\n"
          "chtype -set $mux t:$__ostrel_mux\nwrite_json")
      .openFile(0);
  job.files = {result.fd(), written[0].fd(), written[1].fd(), boxFile.fd()};
  job.timeLimitSeconds = secondsLeft();
  job.memoryLimitBytes = design_.source().memoryLimitBytes;
  job.idle = hooks_.idle;
  const YosysResult read = runYosys(job);
  if (read.cancelled) error_ = read.error;
  if (!read.ok)
    return read.cancelled ? false : fail(QStringLiteral("cannot read the instrumented design (%1).").arg(read.error));
  const QByteArray topKey = design_.topKey().toLatin1();
  return written_.text.open(result.fd(), topKey.startsWith('$') ? '\\' + topKey : topKey, error_);
}

void Proof::noteChanges() {
  for (const ModuleVariant& variant : routing_.variants()) {
    probePortOf_.insert(plainName(variant.name), variant.port);
    if (!variant.inPlace) originalOf_.insert(plainName(variant.name), original_.text.module(variant.module).name);
  }
  if (plan_.jtag.hasPins())
    for (const QString& pin : {plan_.pins.tck, plan_.pins.tms, plan_.pins.tdi, plan_.pins.tdo})
      topPorts_.insert(pin.toLatin1());
  for (const PlanCore& core : plan_.cores)
    if (core.triggerOutIo) topPorts_.insert(core.triggerOutName.toLatin1());
  if (plan_.wishbone) noteBus(*plan_.wishbone);
}

void Proof::noteBus(const PlanWishbone& wishbone) {
  if (!wishbone.isConnected) {
    for (const DebugPort& port : wishbonePorts(wishbone))
      topPorts_.insert(wishbonePortName(port, wishbone.portPrefix.toLatin1()));
    return;
  }
  for (const NetlistInstance& instance : original_.text.module(original_.text.top()).instances)
    if (instance.name == wishbone.instance.toLatin1()) busType_ = plainName(instance.type);
  for (const WishbonePin& pin : wishbone.pins) busPins_.insert(pin.port.toLatin1());
}

ModuleVerdict Proof::compareOne(int writtenModule) {
  const NetlistModule& module = written_.text.module(writtenModule);
  const int originalModule = original_.text.find(originalName(module.name));
  if (originalModule < 0) return {ProofOutcome::Different, QStringLiteral("the original has no such module")};
  ExpectedChanges changes;
  if (writtenModule == written_.text.top()) {
    changes.ports = topPorts_;
    changes.debugType = kDebugModule;
    changes.lowPin = kWishboneGrant;
    for (const DebugConnection& connection : routing_.connections())
      for (const TopSource& source : connection.sources)
        if (source.child < 0) changes.probed.append(source.bit);
  }
  for (const ModuleVariant& variant : routing_.variants()) {
    if (plainName(variant.name) != plainName(module.name)) continue;
    changes.ports.insert(variant.port);
    changes.probed += variant.tapped;
  }
  changes.pinIsAdded = [this](const QByteArray& type, const QByteArray& pin) {
    const auto port = probePortOf_.constFind(plainName(type));
    return (port != probePortOf_.constEnd() && *port == pin) || (plainName(type) == busType_ && busPins_.contains(pin));
  };
  changes.originalType = [this](const QByteArray& type) { return originalName(type); };
  SolverLimits limits;
  limits.seconds = secondsLeft();
  limits.memoryBytes = design_.source().memoryLimitBytes;
  limits.idle = hooks_.idle;
  return compareModule(original_, originalModule, written_, writtenModule, changes, limits);
}

/// Follows each bit of the debug module's inputs, and the net of the plan by its name, to where they are driven.
bool Proof::checkProbes() {
  const NetlistModule& top = written_.text.module(written_.text.top());
  CellConnections debug;
  for (const NetlistInstance& instance : top.instances)
    if (instance.type == kDebugModule) debug = readCell(written_.text, instance.cell);
  for (const DebugConnection& connection : routing_.connections()) {
    const QVector<int> bits = debug.ports.value(connection.port.name);
    if (bits.size() != connection.port.width)
      return fail(QStringLiteral("the debug module's port \"%1\" is not connected in full.")
                      .arg(textFromBytes(connection.port.name)));
    for (int i = 0; i < connection.nets.size(); ++i) {
      PlacedBit probe, wanted;
      probe.module = written_.text.top();
      probe.bit = bits[i];
      const NetBit& net = connection.nets[i];
      if (!written_.place(net, wanted))
        return fail(QStringLiteral("the net \"%1\" has no name in the instrumented design.").arg(net.name));
      LocalDriver ignored;
      probe = written_.source(probe, ignored);
      wanted = written_.source(wanted, ignored);
      const bool samePlace = probe.path == wanted.path || isConstantBit(probe.bit);
      if (!samePlace || probe.bit != wanted.bit)
        return fail(QStringLiteral("the probe of \"%1\" looks at another net.").arg(net.name));
      ++report_.probesChecked;
    }
  }
  return true;
}

bool Proof::compareModules() {
  // Modules that were changed come first.
  std::vector<int> order, unchanged;
  for (int i = 0; i < int(written_.text.modules().size()); ++i) {
    const NetlistModule& module = written_.text.module(i);
    const int original = original_.text.find(originalName(module.name));
    if (module.name == kDebugModule || module.blackBox || (original >= 0 && original_.text.module(original).blackBox))
      continue;
    const bool touched = i == written_.text.top() || probePortOf_.contains(plainName(module.name));
    (touched ? order : unchanged).push_back(i);
  }
  order.insert(order.end(), unchanged.begin(), unchanged.end());
  const int limit = design_.source().timeLimitSeconds;
  for (size_t i = 0; i < order.size(); ++i) {
    const QString name = shown(written_.text.module(order[i]));
    if (hooks_.stage)
      hooks_.stage(QStringLiteral("Proving module %1 of %2 (%3)").arg(i + 1).arg(order.size()).arg(name));
    ModuleVerdict verdict{ProofOutcome::Undecided, QStringLiteral("the time limit of %1 s is over").arg(limit)};
    if (clock_.elapsed() / 1000 < limit) verdict = compareOne(order[i]);
    if (hooks_.idle && !hooks_.idle()) {
      error_ = QStringLiteral("The proof was cancelled.");
      return false;
    }
    if (verdict.outcome == ProofOutcome::Different)
      return fail(QStringLiteral("module %1: %2.").arg(name, verdict.text));
    if (verdict.outcome == ProofOutcome::Proved)
      ++report_.modulesProved;
    else
      report_.undecided.append(QStringLiteral("%1 (%2)").arg(name, verdict.text));
  }
  return true;
}

void Proof::report() {
  report_.lines.append(QStringLiteral("Proved: each of the %1 bits that the cores look at is the net of its name.")
                           .arg(report_.probesChecked));
  const bool shares = plan_.wishbone && plan_.wishbone->isConnected;
  report_.lines.append(QStringLiteral("Proved: modules that do the same as in the design%1: %2; undecided: %3.")
                           .arg(shares ? QLatin1String(" while the Wishbone master is idle") : QLatin1String())
                           .arg(report_.modulesProved)
                           .arg(report_.undecided.size()));
  for (const QString& module : report_.undecided)
    report_.lines.append(QStringLiteral("Undecided: module %1.").arg(module));
}

bool Proof::run(const ProofFiles& files) {
  if (!routing_.build(original_, plan_, error_)) return false;
  noteChanges();
  if (!readBack(files) || !checkProbes() || !compareModules()) return false;
  report();
  return true;
}

}  // namespace

bool proveUnchanged(const InsertPlan& plan, const Design& design, std::shared_ptr<const Netlist> netlist,
                    const ProofFiles& files, const ProofHooks& hooks, ProofReport& report, QString& error) {
  report = ProofReport();
  return Proof(plan, design, netlist->bits(), hooks, report, error).run(files);
}

}  // namespace ost
