// Verilog text and child processes.
#include "tests/sim/oracle/bench.h"

#include <QFile>
#include <limits>

namespace oracle {
namespace {

void launch(QProcess& process, const QStringList& words, const QString& folder, const QString& log) {
  process.setWorkingDirectory(folder);
  process.setProcessChannelMode(QProcess::MergedChannels);
  process.setStandardOutputFile(folder + "/" + log);
  process.setStandardInputFile(QProcess::nullDevice());
  process.start(words[0], words.mid(1));
  if (!process.waitForStarted()) throw Broken{"cannot start " + words[0]};
}

bool endsWell(QProcess& process) {
  if (process.state() != QProcess::NotRunning) process.waitForFinished(-1);
  return process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

QList<QByteArray> linesOf(const QString& name) {
  QList<QByteArray> lines = contentsOf(name).split('\n');
  lines.removeLast();  // Behind the last line feed: nothing, or a line that is not complete.
  return lines;
}

QByteArray pathOf(const QString& name) {
  return "dut." + QString(name).replace('/', '.').toUtf8();
}

/// Clocks, reset, random inputs and the device itself, with further connections in `ports`.
QByteArray stimulus(const Project& project, const QByteArray& ports, const QByteArray& running = "1") {
  const Dut& dut = *project.dut;
  QByteArray text, connections;
  for (int i = 0; i < dut.clocks.size(); ++i) {
    const QByteArray clock = dut.clocks[i].toUtf8();
    text += "  reg " + clock + ";\n  initial #" + QByteArray::number(project.clockStart) + " " + clock +
            " = 0;\n  always #" + QByteArray::number(project.clockPeriods[i] / 2) + " if (" + running + ") " + clock +
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
    const QString value =
        input.drive.isEmpty() ? QString("random[%1 +: %2]").arg(3 + 2 * salt).arg(input.width) : input.drive;
    drive += QString("    if (random[%1] | random[%2]) %3 <= #1 %4;\n")
                 .arg(20 + salt % 5)
                 .arg(27 - salt % 3)
                 .arg(input.name, value)
                 .toUtf8();
    ++salt;
  }
  // Pulled up, so that an inout that nothing drives has a level.
  for (const Port& other : dut.others) {
    const QByteArray name = other.name.toUtf8(), range = "[" + QByteArray::number(other.width - 1) + ":0] ";
    text += "  wire " + range + name + ";\n  pullup up_" + name + range + "(" + name + ");\n";
    connections += "." + name + "(" + name + "), ";
  }
  text += "  always @(posedge " + dut.clocks[0].toUtf8() +
          ") begin\n    edges = edges + 1;\n    if (edges > 12) rst <= #1 0;\n"
          "    random = random * 1103515245 + 12345;\n" +
          drive + "  end\n  " + dut.name.toUtf8() + " dut (" + connections + ports + ".rst(rst));\n";
  return text;
}

}  // namespace

void writeFile(const QString& name, const QByteArray& text) {
  QFile file(name);
  if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size()) throw Broken{"cannot write " + name};
}

QByteArray contentsOf(const QString& name) {
  QFile file(name);
  if (!file.open(QIODevice::ReadOnly)) throw Broken{"cannot read " + name};
  return file.readAll();
}

void runTool(const QStringList& words, const QString& folder, const QString& log) {
  QProcess tool;
  launch(tool, words, folder, log);
  if (!endsWell(tool)) throw Broken{words[0] + " failed; see " + folder + "/" + log};
}

Simulation::Simulation(const QStringList& words, const QString& folder, const QString& log) {
  launch(process_, words, folder, log);
}

Simulation::~Simulation() {
  process_.kill();
  endsWell(process_);
}

void Simulation::waitForEnd() {
  if (!endsWell(process_)) throw Broken{"the simulation failed"};
}

QVector<Record> recordDevice(const Project& project, const BenchFiles& files, qint64 fromTime, int rows) {
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
  text += "  initial begin $timeformat(-12, 0, \"\", 0); #" +
          QByteArray::number(double(fromTime) / 1000 + rows * shortest, 'f', 0) + " $finish; end\n";
  for (int i = 0; i < dut.clocks.size(); ++i) {
    const QByteArray file = "record" + QByteArray::number(i);
    text += "  integer " + file + ";\n  initial " + file + " = $fopen(\"" + file + ".txt\");\n  always @(posedge " +
            dut.clocks[i].toUtf8() + ") if ($realtime >= " + QByteArray::number(double(fromTime) / 1000, 'f', 3) +
            ") $fwrite(" + file + ", \"%0t %b\\n\", $realtime, {" + values + "});\n";
  }
  writeFile(files.folder + "/source_tb.v", text + "endmodule\n");
  runTool(QStringList{"iverilog", "-g2005", "-o", "source.vvp", "-s", "tb", "source_tb.v"} + files.design, files.folder,
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

QByteArray captureBench(const Project& project, const ost::InsertPlan& plan) {
  QByteArray ports;
  if (plan.jtag.hasPins())
    ports = "." + plan.pins.tck.toUtf8() + "(tck), ." + plan.pins.tms.toUtf8() + "(tms), ." + plan.pins.tdi.toUtf8() +
            "(tdi), ." + plan.pins.tdo.toUtf8() + "(tdo), ";
  QByteArray text =
      "`timescale 1ns / 1ps\nmodule tb;\n  wire tck, tms, tdi, tdo, trst, srst;\n"
      "  integer cycles = 0, pause_from, pause_to;\n  always @(posedge tck) cycles = cycles + 1;\n"
      "  initial begin\n    $timeformat(-12, 0, \"\", 0);\n"
      "    if (!$value$plusargs(\"pause_from=%d\", pause_from)) pause_from = 32'h7fffffff;\n"
      "    if (!$value$plusargs(\"pause_to=%d\", pause_to)) pause_to = pause_from;\n  end\n";
  // The device's own TAP stands between two other devices.
  if (plan.jtag.isPrimitive())
    text += QByteArray(
                "  wire ahead, behind;\n"
                "  other_device #(.IR_WIDTH(5), .IDCODE(32'h12345FFF)) first (tck, tms, tdi, ahead);\n"
                "  other_device #(.IR_WIDTH(6), .IDCODE(32'h2468AFFF)) last (tck, tms, behind, tdo);\n") +
            (plan.jtag.way == ost::JtagWay::Bscane2
                 ? "  device_tap chip (tck, tms, ahead, behind);\n"
                 : "  device_tap #(.IR_BITS(8), .CODES(32'h80804342)) chip (tck, tms, ahead, behind);\n");
  QByteArray watch;
  for (int i = 0; i < plan.cores.size(); ++i) {
    const QByteArray n = QByteArray::number(i), clock = project.cores[i].clock.toUtf8();
    // The run's level as the sample clock sees it: its first edge with the level high is edge 0.
    watch += "  integer run" + n + "; reg was" + n + " = 0;\n  wire run_sync" + n + " = dut.ostrel_debug_i.c" + n +
             "_core.run_sync;\n  initial run" + n + " = $fopen(\"run" + n + ".txt\");\n  always @(posedge " + clock +
             ") begin\n    if (run_sync" + n + " !== was" + n + ") $fwrite(run" + n +
             ", \"%0t\\n\", $realtime);\n    was" + n + " <= run_sync" + n + ";\n  end\n";
    const QStringList outputs = plan.cores[i].triggerOutNames();
    for (int k = 0; k < outputs.size(); ++k) {
      const QByteArray name = outputs[k].toUtf8(), wire = "out" + n + "_" + QByteArray::number(k);
      if (plan.cores[i].triggerOutIo && k == 0) {
        text += "  wire " + wire + ";\n";
        ports += "." + name + "(" + wire + "), ";
      } else {
        watch += "  wire " + wire + " = dut." + name + ";\n";
      }
      watch += "  integer log_" + wire + ";\n  initial log_" + wire + " = $fopen(\"" + wire + ".txt\");\n  always @(" +
               wire + ") $fwrite(log_" + wire + ", \"%0t %b\\n\", $realtime, " + wire + ");\n";
    }
  }
  text += stimulus(project, ports, "cycles < pause_from || cycles >= pause_to");
  return text + "  ostrel_jtag_sim #(.HALF_PERIOD(" + QByteArray::number(project.tckHalfPeriod) +
         ")) jtag (.tck(tck), .tms(tms), .tdi(tdi), .tdo(tdo), .trst(trst), .srst(srst));\n" + watch + "endmodule\n";
}

QVector<RunSpan> runSpans(const BenchFiles& files, int core) {
  QVector<RunSpan> spans;
  bool running = false;
  for (const QByteArray& line : linesOf(QString("%1/run%2.txt").arg(files.folder).arg(core))) {
    running = !running;
    if (running)
      spans += {line.toLongLong(), std::numeric_limits<qint64>::max()};
    else
      spans.last().to = line.toLongLong();
  }
  return spans;
}

QVector<Level> triggerOutLevels(const BenchFiles& files, int core, int name) {
  QVector<Level> levels;
  for (const QByteArray& line : linesOf(QString("%1/out%2_%3.txt").arg(files.folder).arg(core).arg(name)))
    levels += {line.split(' ')[0].toLongLong(), line.endsWith('1')};
  return levels;
}

}  // namespace oracle
