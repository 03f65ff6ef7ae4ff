// Synthesis, simulation and capture as commands of a shell.
#include "platform/report/next_steps.h"

#include <QFileInfo>

#include "platform/text/byte_text.h"
#include "platform/text/names.h"

namespace ost {
namespace {

/// A word as a POSIX shell takes it.
QString shellWord(const QString& word) {
  bool plain = !word.isEmpty();
  for (const QChar c : word) plain = plain && (c.isLetterOrNumber() || QStringLiteral("_./:=+-,@").contains(c));
  if (plain) return word;
  QString quoted = word;
  return QLatin1Char('\'') + quoted.replace(QLatin1Char('\''), QStringLiteral("'\\''")) + QLatin1Char('\'');
}

/// A word within the command of -launch.
QString launchWord(const QString& word) {
  if (shellWord(word) == word) return word;
  QString escaped;
  for (const QChar c : word) {
    if (c == QLatin1Char('"') || c == QLatin1Char('\\')) escaped += QLatin1Char('\\');
    escaped += c;
  }
  return QLatin1Char('"') + escaped + QLatin1Char('"');
}

/// The commands that begin with a simulation, or with a board, for what each kind of core gives.
void sayCapture(ReportSection& section, const InsertPlan& plan, const RunFacts& facts) {
  const QString map = shellWord(facts.folder + QStringLiteral("/capture_map.json"));
  const QString base = QFileInfo(facts.folder).absolutePath() + QLatin1Char('/') + unicodeFromText(plan.projectName);
  QStringList asked;
  if (!plan.cores.isEmpty()) asked.append(QStringLiteral("-wave -vcd ") + shellWord(base + QStringLiteral(".vcd")));
  if (plan.wishbone) asked.append(QStringLiteral("-wb read 0 4"));
  if (plan.serdes) asked.append(QStringLiteral("-serdes"));
  const auto captures = [&](const QString& way) {
    QStringList commands;
    for (const QString& what : asked)
      commands.append(QStringList{QStringLiteral("ost_capture -map"), map, way, what}.join(QLatin1Char(' ')));
    return commands;
  };
  if (plan.jtag.way == JtagWay::Pins) {
    const QString simulation = base + QStringLiteral(".vvp");
    section.say(QStringLiteral(
                    "Simulate: the test bench instantiates ostrel_jtag_sim (ostrel_jtag_sim.v of the package) on the "
                    "pins %1, %2, %3, %4.")
                    .arg(plan.pins.tck, plan.pins.tms, plan.pins.tdi, plan.pins.tdo));
    section.command(
        QStringList{QStringLiteral("(cd %1 && iverilog -g2012 -o %2 -c files.f BENCH.v ostrel_jtag_sim.v)")
                        .arg(shellWord(facts.folder), shellWord(simulation))} +
        captures(QStringLiteral("-launch ") + shellWord(QStringLiteral("vvp -n ") + launchWord(simulation))));
  }
  section.say(
      QStringLiteral("On the board, through OpenOCD (a server of the Xilinx Virtual Cable protocol: "
                     "-connect xvc:localhost:2542):"));
  section.command(captures(QStringLiteral("-connect openocd:localhost:6666")));
}

}  // namespace

ReportSection nextSteps(const InsertPlan& plan, const RunFacts& facts) {
  ReportSection section{QStringLiteral("How to go on"), {}};
  section.say(QStringLiteral("Synthesise: all files of files.f, in its order%1. Constraints: %2.sdc or %2.xdc.")
                  .arg(QLatin1String(facts.blackBoxes.isEmpty() ? "" : ", and the sources of the black boxes"))
                  .arg(unicodeFromText(facts.constraints)));
  const QString top = isVerilogIdentifier(plan.topModule) ? QStringLiteral(" -top ") + plan.topModule : QString();
  const QString script =
      QStringLiteral("\"read_verilog $(tr '\\n' ' ' <files.f); %1%2; stat\"")
          .arg(QLatin1String(plan.jtag.way == JtagWay::GwJtag ? "synth_gowin" : "synth_xilinx"), top);
  section.command({QStringLiteral("(cd %1 && yosys -p %2)").arg(shellWord(facts.folder), script)});
  sayCapture(section, plan, facts);
  return section;
}

}  // namespace ost
