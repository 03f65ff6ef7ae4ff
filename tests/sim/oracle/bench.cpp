// Verilog text and child processes.
#include "tests/sim/oracle/bench.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QFile>

#include "platform/rtl/debug_module.h"

namespace oracle {
namespace {

int start(const QStringList& words, const QString& folder, const QString& log) {
  std::vector<QByteArray> texts;
  for (const QString& word : words) texts.push_back(word.toUtf8());
  std::vector<char*> arguments;
  for (QByteArray& text : texts) arguments.push_back(text.data());
  arguments.push_back(nullptr);
  const QByteArray place = folder.toUtf8(), logFile = (folder + "/" + log).toUtf8();
  const int pid = fork();
  if (pid != 0) return pid;
  const int out = open(logFile.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
  const int in = open("/dev/null", O_RDONLY);
  if (chdir(place.constData()) != 0 || out < 0 || in < 0) _exit(126);
  dup2(in, 0);
  dup2(out, 1);
  dup2(out, 2);
  execvp(arguments[0], arguments.data());
  _exit(127);
}

void writeFile(const QString& name, const QByteArray& text) {
  QFile file(name);
  if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size()) throw Broken{"cannot write " + name};
}

QList<QByteArray> linesOf(const QString& name) {
  QFile file(name);
  if (!file.open(QIODevice::ReadOnly)) throw Broken{"cannot read " + name};
  QList<QByteArray> lines = file.readAll().split('\n');
  lines.removeLast();  // Behind the last line feed: nothing, or a line that is not complete.
  return lines;
}

QByteArray pathOf(const QString& name) {
  return "dut." + QString(name).replace('/', '.').toUtf8();
}

/// Clocks, reset, random inputs and the device itself, with further connections in `ports`.
QByteArray stimulus(const Project& project, const QByteArray& ports) {
  const Dut& dut = *project.dut;
  QByteArray text, connections;
  for (int i = 0; i < dut.clocks.size(); ++i) {
    const QByteArray clock = dut.clocks[i].toUtf8();
    text += "  reg " + clock + " = 0;\n  always #" + QByteArray::number(project.clockPeriods[i] / 2) + " " + clock +
            " = ~" + clock + ";\n";
    connections += "." + clock + "(" + clock + "), ";
  }
  // Inputs change shortly after the first clock's edge. Each bit has its own bias, so that some are often still.
  text += "  reg rst = 1;\n  integer random = 32'h1234567;\n  integer edges = 0;\n";
  QByteArray drive;
  int salt = 0;
  for (const Port& input : dut.inputs) {
    text += QString("  reg [%1:0] %2 = 0;\n").arg(input.width - 1).arg(input.name).toUtf8();
    connections += "." + input.name.toUtf8() + "(" + input.name.toUtf8() + "), ";
    drive += QString("    if (random[%1] | random[%2]) %3 <= #1 random[%4 +: %5];\n")
                 .arg(20 + salt % 5)
                 .arg(27 - salt % 3)
                 .arg(input.name)
                 .arg(3 + 2 * salt)
                 .arg(input.width)
                 .toUtf8();
    ++salt;
  }
  for (const Port& output : dut.outputs) connections += "." + output.name.toUtf8() + "(), ";
  text += "  always @(posedge " + dut.clocks[0].toUtf8() +
          ") begin\n    edges = edges + 1;\n    if (edges > 12) rst <= #1 0;\n"
          "    random = random * 1103515245 + 12345;\n" +
          drive + "  end\n  " + dut.name.toUtf8() + " dut (" + connections + ports + ".rst(rst));\n";
  return text;
}

}  // namespace

void runTool(const QStringList& words, const QString& folder, const QString& log) {
  const int pid = start(words, folder, log);
  int status = 0;
  if (pid < 0 || waitpid(pid, &status, 0) != pid || status != 0)
    throw Broken{words[0] + " failed; see " + folder + "/" + log};
}

Simulation::Simulation(const QStringList& words, const QString& folder, const QString& log)
    : pid_(start(words, folder, log)) {
  if (pid_ < 0) throw Broken{"cannot start " + words[0]};
}

Simulation::~Simulation() {
  if (pid_ < 0) return;
  kill(pid_, SIGKILL);
  waitpid(pid_, nullptr, 0);
}

void Simulation::waitForEnd() {
  int status = 0;
  waitpid(pid_, &status, 0);
  pid_ = -1;
  if (status != 0) throw Broken{"the simulation failed"};
}

QVector<Record> recordDevice(const Project& project, const BenchFiles& files, int rows) {
  const Dut& dut = *project.dut;
  QByteArray values;
  QHash<QString, int> columns;
  int width = 0;
  for (const Net& net : dut.nets) {
    for (const QString& bit : net.bits()) columns[bit] = width++;
    values += (values.isEmpty() ? "" : ", ") + pathOf(net.name);
  }
  QByteArray text = "`timescale 1ns / 1ps\nmodule tb;\n" + stimulus(project, "");
  double shortest = project.clockPeriods[0];
  for (double period : project.clockPeriods) shortest = std::min(shortest, period);
  text += "  initial begin $timeformat(-12, 0, \"\", 0); #" + QByteArray::number(rows * shortest, 'f', 0) +
          " $finish; end\n";
  for (int i = 0; i < dut.clocks.size(); ++i) {
    const QByteArray file = "record" + QByteArray::number(i);
    text += "  integer " + file + ";\n  initial " + file + " = $fopen(\"" + file + ".txt\");\n  always @(posedge " +
            dut.clocks[i].toUtf8() + ") $fwrite(" + file + ", \"%0t %b\\n\", $realtime, {" + values + "});\n";
  }
  writeFile(files.folder + "/source_tb.v", text + "endmodule\n");
  runTool({"iverilog", "-g2005", "-o", "source.vvp", "-s", "tb", "source_tb.v", files.designFile}, files.folder,
          "source_build.log");
  runTool({"vvp", "-n", "source.vvp"}, files.folder, "source_run.log");
  QVector<Record> records(dut.clocks.size());
  for (int i = 0; i < records.size(); ++i) {
    records[i].columns = columns;
    for (const QByteArray& line : linesOf(QString("%1/record%2.txt").arg(files.folder).arg(i))) {
      const int blank = line.indexOf(' ');
      records[i].times += line.left(blank).toLongLong();
      records[i].rows += line.mid(blank + 1);
    }
  }
  return records;
}

QByteArray captureBench(const Project& project, const ost::InsertPlan& plan, bool inserted) {
  QByteArray ports;
  QByteArray text = "`timescale 1ns / 1ps\nmodule tb;\n  wire tck, tms, tdi, tdo, trst, srst;\n";
  for (int i = 0; i < project.cores.size(); ++i) text += "  wire trigger_out" + QByteArray::number(i) + ";\n";
  const auto outName = [](int i) { return "trigger_out" + QByteArray::number(i); };
  if (inserted) {
    ports = "." + plan.pins.tck.toUtf8() + "(tck), ." + plan.pins.tms.toUtf8() + "(tms), ." + plan.pins.tdi.toUtf8() +
            "(tdi), ." + plan.pins.tdo.toUtf8() + "(tdo), ";
    for (int i = 0; i < plan.cores.size(); ++i)
      if (plan.cores[i].triggerOutIo) ports += "." + plan.cores[i].triggerOutName.toUtf8() + "(" + outName(i) + "), ";
  }
  text += stimulus(project, ports);
  text += "  ostrel_jtag_sim #(.HALF_PERIOD(" + QByteArray::number(project.tckHalfPeriod) +
          ")) jtag (.tck(tck), .tms(tms), .tdi(tdi), .tdo(tdo), .trst(trst), .srst(srst));\n";
  QByteArray debug = "dut.ostrel_debug_i";
  if (!inserted) {
    debug = "debug";
    const auto bits = [](const QVector<ost::NetBit>& list) {
      QByteArray joined;
      for (const ost::NetBit& bit : list) joined = pathOf(bit.name) + (joined.isEmpty() ? "" : ", ") + joined;
      return "{" + joined + "}";
    };
    text += "  ostrel_debug debug (.jtag_tck(tck), .jtag_tms(tms), .jtag_tdi(tdi), .jtag_tdo(tdo)";
    for (const ost::DebugPort& port : ost::debugModulePorts(plan)) {
      if (port.core < 0) continue;
      const ost::PlanCore& core = plan.cores[port.core];
      QByteArray source;
      if (port.role == ost::DebugPort::SampleClock) source = core.sampleClock.name.toUtf8();
      if (port.role == ost::DebugPort::Probe) source = bits(core.probeBits);
      if (port.role == ost::DebugPort::Trigger) source = bits(core.triggerBits);
      if (port.role == ost::DebugPort::SampleEnable) source = pathOf(core.sampleEnable.name);
      if (port.role == ost::DebugPort::TriggerEnable) source = pathOf(core.triggerEnable.name);
      if (port.role == ost::DebugPort::TriggerOut) source = outName(port.core);
      text += ", ." + port.name + "(" + source + ")";
    }
    text += ");\n";
  }
  text += "  initial $timeformat(-12, 0, \"\", 0);\n";
  for (int i = 0; i < plan.cores.size(); ++i) {
    const QByteArray n = QByteArray::number(i), clock = project.cores[i].clock.toUtf8();
    // The run's level as the sample clock sees it: its first edge with the level high is edge 0.
    text += "  integer arm" + n + ", out" + n + ";\n  reg was" + n + " = 0;\n  initial begin arm" + n +
            " = $fopen(\"arm" + n + ".txt\"); out" + n + " = $fopen(\"out" + n + ".txt\"); end\n  always @(posedge " +
            clock + ") begin\n" + "    if (" + debug + ".c" + n + "_core.run_here === 1'b1 && !was" + n +
            ") $fwrite(arm" + n + ", \"%0t\\n\", $realtime);\n    was" + n + " <= " + debug + ".c" + n +
            "_core.run_here;\n  end\n";
    if (project.cores[i].triggerOut)
      text +=
          "  always @(trigger_out" + n + ") $fwrite(out" + n + ", \"%0t %b\\n\", $realtime, trigger_out" + n + ");\n";
  }
  return text + "endmodule\n";
}

QVector<qint64> armTimes(const BenchFiles& files, int index) {
  QVector<qint64> times;
  for (const QByteArray& line : linesOf(QString("%1/arm%2.txt").arg(files.folder).arg(index)))
    times += line.toLongLong();
  return times;
}

QVector<Level> triggerOutLevels(const BenchFiles& files, int index) {
  QVector<Level> levels;
  for (const QByteArray& line : linesOf(QString("%1/out%2.txt").arg(files.folder).arg(index)))
    levels += {line.split(' ')[0].toLongLong(), line.endsWith('1')};
  return levels;
}

}  // namespace oracle
