// Stand-alone simulation of a plan's debug module.
#include "tests/sim/core/simulation.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <algorithm>
#include <fstream>
#include <stdexcept>

#include "platform/rtl/debug_module.h"
#include "tests/sim/core/plan_text.h"

namespace ost::sim {
namespace {

void writeFile(const QString& name, const QByteArray& text) {
  QFile file(name);
  if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
    throw std::runtime_error("cannot write " + name.toStdString());
}

void execute(const QString& folder, const QString& program, const QStringList& arguments) {
  QProcess process;
  process.setWorkingDirectory(folder);
  process.setProcessChannelMode(QProcess::MergedChannels);
  process.start(program, arguments);
  if (!process.waitForFinished(300000) || process.exitCode() != 0)
    throw std::runtime_error((program + QStringLiteral(": ")).toStdString() + process.readAll().toStdString());
}

/// The part of the bench that depends on the plan: clocks, inputs and the device under test.
QByteArray benchModule(const InsertPlan& plan, const Timing& timing) {
  QByteArray text, connections = ".jtag_tck(tck), .jtag_tms(tms), .jtag_tdi(tdi), .jtag_tdo(tdo)";
  for (int i = 0; i < plan.cores.size(); ++i) {
    const PlanCore& core = plan.cores[i];
    const QByteArray n = QByteArray::number(i), c = "c" + n + "_", width = QByteArray::number(inputBits(core));
    text += "wire [" + width + "-1:0] " + c + "in; wire " + c + "clk, " + c + "se, " + c + "te;\n";
    text += core.triggerOutIo ? "wire " + c + "out;\n" : "wire " + c + "out = 1'b0;\n";
    text += "core_env #(.HALF(" + QByteArray::number(timing.clockHalf[i % timing.clockHalf.size()]) + "), .WIDTH(" +
            width + "), .SEED(" + QByteArray::number(timing.seed * 8 + i) + "), .LOG(\"core" + n + ".log\")) env" + n +
            " (.stop(stopped[" + n + "]), .running(top.dut." + c + "core.run_here), .trig_out(" + c + "out), .clk(" +
            c + "clk), .in(" + c + "in), .sample_en(" + c + "se), .trig_en(" + c + "te));\n";
    connections += ",\n  ." + c + "clk(" + c + "clk), ." + c + "in(" + c + "in)";
    if (core.hasSampleEnable) connections += ", ." + c + "sample_en(" + c + "se)";
    if (core.hasTriggerEnable) connections += ", ." + c + "trig_en(" + c + "te)";
    if (core.triggerOutIo) connections += ", ." + c + "trig_out(" + c + "out)";
  }
  return text + "core_top top(" + connections + ");\n";
}

/// Verilog's binary constants have their most significant bit first.
std::string constant(Bits bits) {
  std::reverse(bits.begin(), bits.end());
  return std::to_string(bits.size()) + " " + bits;
}

}  // namespace

int statusReplyBits(const PlanCore& core) {
  return 48 + statusBits(core) + 32;
}

Simulation::Simulation(const InsertPlan& plan, const Timing& timing) : plan_(plan) {
  const QString folder = folder_.path() + QLatin1Char('/');
  QStringList arguments = {QStringLiteral("-g2005"),    QStringLiteral("-o"),
                           QStringLiteral("bench.vvp"), QStringLiteral("-DTCK_HALF=%1").arg(timing.tckHalf),
                           QStringLiteral("-I."),       QStringLiteral("-s"),
                           QStringLiteral("bench"),     QStringLiteral(OST_SIM_SOURCE_DIR "/bench.v")};
  auto files = coreVerilogFiles();
  files.append({QStringLiteral("ostrel_debug.v"), debugModuleVerilog(plan)});
  files.append({QStringLiteral("core_top.v"), topVerilog(plan)});
  for (const auto& file : files) {
    writeFile(folder + file.first, file.second);
    arguments.append(file.first);
  }
  writeFile(folder + QStringLiteral("bench_dut.vh"), benchModule(plan, timing));
  execute(folder_.path(), QStringLiteral("iverilog"), arguments);
  script_ = "reset\nir 0010\n";
}

void Simulation::writeBits(const Bits& bits) {
  script_ += "w " + constant(bits) + "\n";
}

void Simulation::write(Command op, int core, int tag, int address, const Bits& payload) {
  writeBits(frame(op, core, tag, address, payload));
}

int Simulation::read(int bits) {
  script_ += "r " + std::to_string(bits) + "\n";
  return readings_++;
}

int Simulation::raw(const Bits& tms, const Bits& tdi) {
  script_ += "raw " + constant(tms) + " " + constant(tdi).substr(std::to_string(tdi.size()).size() + 1) + "\n";
  return readings_++;
}

int Simulation::until(int core, int mask, int value, int looks) {
  Bits m = number(mask, 8), v = number(value, 8);
  std::reverse(m.begin(), m.end());
  std::reverse(v.begin(), v.end());
  script_ += "until " + constant(frame(kStatus, core, 0, 0)) + " " + m + " " + v + " " + std::to_string(looks) + "\n";
  return readings_++;
}

void Simulation::wait(qint64 picoseconds) {
  script_ += "wait " + std::to_string(picoseconds) + "\n";
}
void Simulation::stopClock(int core) {
  script_ += "stop " + std::to_string(core) + "\n";
}
void Simulation::startClock(int core) {
  script_ += "go " + std::to_string(core) + "\n";
}

void Simulation::configure(int core, const Settings& settings) {
  const PlanCore& planned = plan_.cores[core];
  write(kConfig, core, 0, 0, chain(planned, settings));
  for (int e = 0; e < planned.expressions.size(); ++e)
    if (!tableInChain(planned.expressions[e]))
      write(kTable, core, e, 0, tableRows(planned.expressions[e], settings.steps[e]));
}

int Simulation::readOut(int core, int tag) {
  const PlanCore& planned = plan_.cores[core];
  write(kStatus, core);
  const int first = read(statusReplyBits(planned));
  const int words = planned.windows * planned.windowSamples, blocks = words / blockWords(planned);
  write(kRead, core, tag, 0);
  read(words * wordBits(planned) + blocks * 80);
  return first;
}

void Simulation::run() {
  writeFile(folder_.path() + QStringLiteral("/script.txt"), QByteArray::fromStdString(script_));
  execute(folder_.path(), QStringLiteral("vvp"), {QStringLiteral("-n"), QStringLiteral("bench.vvp")});
  std::ifstream out(folder_.path().toStdString() + "/out.txt");
  std::string line, last;
  replies_.clear();
  while (std::getline(out, line)) replies_.push_back(last = line);
  if (last != "finished") throw std::runtime_error("the simulation stopped early");
}

std::vector<std::vector<Edge>> Simulation::record(int core) const {
  return readRecord(folder_.path().toStdString() + "/core" + std::to_string(core) + ".log");
}

std::vector<std::vector<Bits>> Simulation::windows(int core, int tag, const Settings& settings, int reply,
                                                   std::string& error) {
  const PlanCore& planned = plan_.cores[core];
  Block block;
  if (!parseBlock(replies_.at(reply), 0, statusBits(planned), block))
    return error = "status: bad check value", std::vector<std::vector<Bits>>();
  if ((block.flags & ~kReady) != (kArmed | kDone | kConfigured | (block.flags & kFresh) | kAlways))
    return error = "status: flags " + std::to_string(block.flags), std::vector<std::vector<Bits>>();
  const Status status = parseStatus(planned, block.payload);

  const int words = planned.windows * planned.windowSamples, perBlock = blockWords(planned), width = wordBits(planned);
  std::vector<Bits> memory;
  for (int at = 0, first = 0; first < words; first += perBlock, at += 80 + perBlock * width) {
    if (!parseBlock(replies_.at(reply + 1), at, perBlock * width, block))
      return error = "block at " + std::to_string(first) + ": bad check value", std::vector<std::vector<Bits>>();
    if (block.op != kRead || block.core != core || block.tag != tag || block.address != first ||
        (block.flags & kRefused))
      return error = "block at " + std::to_string(first) + ": wrong echo", std::vector<std::vector<Bits>>();
    for (int i = 0; i < perBlock; ++i) memory.push_back(block.payload.substr(i * width, width));
  }

  std::vector<std::vector<Bits>> windows;
  const int ws = planned.windowSamples;
  for (int w = 0; w < settings.windows; ++w) {
    int oldest = status.oldest;
    if (planned.windows > 1) {
      oldest = 0;
      for (int i = ws - 1; i > 0; --i)
        if (memory[w * ws + i].back() != memory[w * ws].back()) oldest = i;
    }
    windows.emplace_back();
    for (int i = 0; i < ws; ++i)
      windows.back().push_back(memory[w * ws + (oldest + i) % ws].substr(0, planned.sampleBits()));
  }
  return windows;
}

}  // namespace ost::sim
