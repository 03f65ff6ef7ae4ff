// A device whose inputs, enables and first register contents are x or z at times, and whose clock is x at the start.
#include <QRegularExpression>

#include "tests/sim/oracle/runs.h"

namespace oracle {
namespace {

const Dut& device() {
  // 0, 1 and x by chance: x stays where the first number has a 1 and the second a 0.
  static const Dut dut =
      dutOf("unknown", {"tests/sim/designs/unknown.v"}, "clk",
            "din:8 ({8{1'bx}} & random[12 +: 8] & random[18 +: 8]) | random[21 +: 8];"
            "line random[19:18] == 0 ? 1'bz : random[17];"
            "en random[25:23] == 0 ? 1'bx : random[22];"
            "look random[30:28] == 0 ? 1'bz : random[29]",
            "count:8; taken:8; held:4; seen", "count[7:0] din[7:0] taken[7:0] line was held[3:0] en look", "");
  return dut;
}

/// Units of every class and operator look at the bits in doubt. The second core has the other polarities.
Project unknownProject() {
  Project project;
  project.dut = &device();
  project.clockPeriods = {10};
  project.clockStart = 60000;
  project.tckHalfPeriod = 6;
  Core core;
  core.name = "c0";
  core.clock = "clk";
  const QVector<Net>& nets = project.dut->nets;
  for (int i = 0; i < 5; ++i) core.probes += {nets[i].name, nets[i].bits()};
  core.timestampBits = 12;
  core.includeTrigger = true;
  core.depth = core.windowSamples = 256;
  core.sampleEnable = "en";
  core.triggerEnable = "look";
  core.findEnableEdges(device());
  const auto unit = [&](const Net& net, const char* op, const char* digits) {
    core.units.append({QString("TU%1").arg(core.units.size() + 1), {net.name}, net.bits(), op, "bin", digits});
  };
  const Net &din = nets[1], &line = nets[3], &held = nets[5];
  unit(din, "==", "xxx1xx01");
  unit(din, "!=", "11111xxx");
  unit(din, ".RE.", "00011000");
  unit(din, ".FE.", "11111111");
  unit(din, "<", "10000000");
  unit(din, ">=", "01000000");
  unit(line, ".SC.", "011");
  unit(held, "!=", "0110");
  for (int i = 0; i < core.units.size(); ++i)
    core.expressions.append(
        {QString("TE%1").arg(i + 1), i == 3, 2, 2, {{Term::of(core.units, i), 2}, {Term::of(core.units, 0), 1}}});
  project.cores = {core, core};
  project.cores[1].name = "c1";
  project.cores[1].sampleEnableLow = project.cores[1].triggerEnableLow = true;
  return project;
}

/// What the simulation said: each net in doubt once for each core that ran, and nothing of one that is not.
void checkNotes(const BenchFiles& files) {
  const QString text = contentsOf(files.folder + "/capture_run.log");
  QStringList notes;
  for (auto match = QRegularExpression("ostrel: core (c\\d: (the enable )?\\S+) is x or z at").globalMatch(text);
       match.hasNext();)
    notes += match.next().captured(1);
  notes.sort();
  QStringList expected;
  for (const char* net : {"din", "held", "line", "taken", "the enable en", "the enable look", "was"})
    expected << QString("c0: ") + net << QString("c1: ") + net;
  expected.sort();
  mustHold(notes == expected, "the simulation names the nets " + notes.join(", ") + ": ", text);
}

}  // namespace

void unknownLevels(const Settings& settings, Totals& totals) {
  const Project project = unknownProject();
  const BenchFiles files = prepareFolder(settings, "unknown", project);
  const ost::InsertPlan plan = insert(project, settings, files);
  Live live(files, plan);
  QVector<Run> runs;
  live.open();
  for (int i = 0; i < 2 * project.cores.size(); ++i) {
    const Core& core = project.cores[i / 2];
    RunChoice choice;
    choice.position = 20 + i;
    choice.units = core.units;
    // All of them, and then the one that depends on TU1 alone.
    choice.enabled.fill(i % 2 == 0, core.expressions.size());
    choice.enabled[0] = true;
    runs += capture(live, project, plan, i / 2, choice, 400000);
    mustHold(runs.last().outcome == Run::Done, "does not trigger: " + runs.last().reasons.join(' '));
  }
  live.end();
  const qint64 before = totals.unknown;
  compareRuns(project, plan, files, runs, totals);
  need(totals.unknown > before, "no level was ever unknown");
  checkNotes(files);
  leaveFolder(settings, files);
}

}  // namespace oracle
