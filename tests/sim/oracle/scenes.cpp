// Refusals, flipped bits, stopped clocks and extreme rates of TCK.
#include <cstdio>

#include "platform/plan/core_layout.h"
#include "tests/sim/oracle/runs.h"

namespace oracle {
namespace {

Unit unitOn(const char* name, const char* signal, const QStringList& bits, const char* op, const char* digits) {
  return {name, {signal}, bits, op, "bin", digits};
}

/// Three cores on the device with two clocks. The first waits in its second step for a value that never comes, but its
/// second expression fires at once; the others never sample and never look. The second one's tables, of many units, may
/// not be distributed RAM.
Project sceneProject() {
  Project project;
  project.dut = &duts()[0];
  project.clockPeriods = {10, 14};
  project.tckHalfPeriod = 6;
  Core core;
  core.name = "c0";
  core.clock = "clk_a";
  for (const Net& net : project.dut->nets)
    if (net.name == "u_a/count" || net.name == "u_a/strobe") core.probes += {net.name, net.bits()};
  core.timestampBits = 6;
  core.units = {unitOn("ALWAYS", "u_a/count", core.probes[0].bits, ">=", "00000000"),
                unitOn("NEVER", "u_a/count", core.probes[0].bits, "<", "00000000"),
                unitOn("RISE", "u_a/strobe", core.probes[1].bits, ".RE.", "1"),
                unitOn("CHANGE", "u_a/count", core.probes[0].bits, ".RE.", "11111111"),
                unitOn("LOW", "u_a/strobe", core.probes[1].bits, "==", "0")};
  core.includeTrigger = true;
  core.expressions = {{"TE1", false, 2, 2, {{Term::of(core.units, 0), 2}, {Term::of(core.units, 1), 1}}},
                      {"TE2", true, 1, 1, {{Term::of(core.units, 2), 1}}}};
  project.cores = {core, core, core};
  project.cores[1].name = "c1";
  project.cores[1].sampleEnable = "rst";
  project.cores[1].distRamDisable = true;
  Term& any = project.cores[1].expressions[0].steps[0].term;
  for (int unit = 1; unit < core.units.size(); ++unit) any = any.joined('|', Term::of(core.units, unit));
  project.cores[2].name = "c2";
  project.cores[2].clock = "clk_b";
  project.cores[2].triggerEnable = "rst";
  for (Core& one : project.cores) one.findEnableEdges(*project.dut);
  return project;
}

class Scenes {
 public:
  Scenes(const Settings& settings, Totals& totals)
      : settings_(settings),
        totals_(totals),
        project_(sceneProject()),
        files_(prepareFolder(settings, "scenes", project_)),
        plan_(insert(project_, settings, files_)) {}

  void refusals() {
    Live live(files_, plan_);
    QString error;
    ost::InsertPlan hash = plan_, cores = plan_, width = plan_;
    hash.projectHash = "0123456789abcdef";
    cores.cores.removeLast();
    width.cores[1].timestampBits = 7;
    const struct {
      const ost::InsertPlan* map;
      const char* text;
    } maps[] = {{&hash, "another project"}, {&cores, "number of cores"}, {&width, "word width of core c1"}};
    for (const auto& one : maps)
      mustHold(!ost::CoreReader(live.hub, *one.map).identify(error) && error.contains(one.text),
               QString("a map with another %1 is taken: ").arg(one.text), error);
    mustHold(live.reader.identify(error), error);
    const auto refused = [&](ost::HubOp op, int core, const char* text) {
      mustHold(ask(live.hub, op, core).flags.refused, QString("not refused: ") + text);
    };
    refused(ost::HubOp::Arm, 0, "ARM before CONFIG");
    refused(ost::HubOp::Status, 7, "a core that does not exist");
    mustHold(live.reader.arm(0, settingsFor(plan_.cores[0], project_.cores[0], choice(false)), error), error);
    refused(ost::HubOp::Read, 0, "READ before the run is done");
    refused(ost::HubOp::Config, 0, "CONFIG in a run");
    Run aborted;
    aborted.choice = choice(false);
    aborted.outcome = Run::Aborted;
    finish(live, {aborted, capture(live, project_, plan_, 0, choice(true), 400000)});
  }

  /// Every bit of an ARM frame, and every third one of a CONFIG and a TABLE frame, is flipped once.
  void flippedFrames() {
    Live live(files_, plan_);
    ost::HubLink& hub = live.hub;
    QString error;
    live.open();
    const ost::RunSettings settings = settingsFor(plan_.cores[0], project_.cores[0], choice(true));
    const int statusBits = ost::CoreLayout(plan_.cores[0]).statusBits;
    const struct {
      ost::HubOp op;
      int tag, stride;
      QByteArray payload;
    } frames[] = {{ost::HubOp::Arm, 3, 1, {}},
                  {ost::HubOp::Config, 0, 3, settings.chain()},
                  {ost::HubOp::Table, 1, 1, settings.table(1)}};
    for (const auto& frame : frames) {
      ost::HubCommand command;
      command.op = frame.op;
      command.tag = frame.tag;
      command.rows = command.tableRows = frame.payload.size();
      const int head = ost::writeFrame(command, {}).size();
      for (int bit = 0; bit < head + frame.payload.size(); bit += frame.stride) {
        const QString where = QString("op %1 with bit %2 flipped: ").arg(int(frame.op)).arg(bit);
        mustHold(ask(hub, ost::HubOp::Config, 0, 0, settings.chain()).flags.configured, where + "CONFIG before it");
        mustHold(ask(hub, ost::HubOp::Table, 0, 1, settings.table(1)).flags.configured, where + "TABLE before it");
        live.line.untilFlip = 3 + plan_.jtag.isPrimitive() + bit;  // Behind the bit of the device behind it.
        QByteArray bits;
        need(hub.send(command, frame.payload, error) && hub.scanReply(ost::kBlockOverhead + statusBits, bits, error),
             error);
        ost::HubReply reply;
        mustHold(!ost::readBlock(bits, 0, statusBits, command, reply) && !ost::readBlock(bits, 0, 1, command, reply),
                 where + "has a good reply");
        reply = ask(hub, ost::HubOp::Status, 0);
        mustHold(!reply.flags.armed, where + "the core is armed");
        mustHold(bit < head || !reply.flags.configured, where + "the core stays configured");
      }
    }
    const ost::HubReply reply = ask(hub, ost::HubOp::Status, 0);
    mustHold(reply.flags.ready && hub.retries() == 0, "the hub is not in order behind flipped frames");
    live.end();
  }

  void reasons() {
    Live live(files_, plan_);
    QVector<Run> runs;
    live.open();
    for (int core = 0; core < 3; ++core) runs += capture(live, project_, plan_, core, choice(core > 0), 2000);
    const char* const texts[] = {"waits in step 2 of 2; it depends on NEVER",
                                 "the sample enable \"rst\" is inactive (active high)",
                                 "The trigger enable \"rst\" is inactive (active high)"};
    for (int core = 0; core < 3; ++core)
      mustHold(runs[core].reasons.join(' ').contains(texts[core]), runs[core].reasons.join(' '));
    finish(live, runs);
  }

  void stoppedClock() {
    constexpr int kFrom = 6000, kTo = 60000;
    Live live(files_, plan_, 0, 0, {QString("+pause_from=%1").arg(kFrom), QString("+pause_to=%1").arg(kTo)});
    QString error;
    live.open();
    Run run;
    run.choice = choice(true);
    const ost::RunSettings settings = settingsFor(plan_.cores[0], project_.cores[0], run.choice);
    const ost::RunSettings other = settingsFor(plan_.cores[2], project_.cores[2], choice(false));
    mustHold(live.reader.arm(0, settings, error) && live.reader.arm(2, other, error), error);
    mustHold(live.reader.waitUntilDone(0, {120, 3000}, error) == ost::WaitResult::Done,
             "not done before the clock stops");
    need(live.hub.cycles() < kFrom && live.hub.idle(int(kFrom + 10 - live.hub.cycles()), error),
         "too late to stop a clock");
    mustHold(live.reader.readOut(0, settings, run.capture, error), "read-out with the clock stopped: ", error);
    ost::CoreStatus status;
    mustHold(live.reader.status(2, status, error), error);
    mustHold(ost::explainWaiting(other, status).join(' ').contains("\"clk_b\" is not running"),
             "the stopped clock is not named: " + ost::explainWaiting(other, status).join(' '));
    mustHold(!live.reader.stop(2, error) && error.contains("\"clk_b\" is not running"), "stops without a clock");
    mustHold(!live.reader.arm(2, other, error), "armed without a clock");
    need(live.hub.cycles() < kTo && live.hub.idle(int(kTo + 10 - live.hub.cycles()), error),
         "the clock was back too early");
    mustHold(live.reader.stop(2, error), "does not stop when the clock is back: ", error);
    Run stopped;
    stopped.core = 2;
    stopped.outcome = Run::Aborted;
    stopped.choice = choice(false);
    // Only the run before the pause can be compared: the record knows no pause.
    live.end();
    project_.cores[2].triggerOut = Core::None;
    compareRuns(project_, plan_, files_, {run, stopped}, totals_);
  }

  /// An expression that always fires makes the window begin with the run's first sample, at which no unit may have seen
  /// an edge.
  void firstSample() {
    Live live(files_, plan_);
    live.open();
    RunChoice early = choice(true);
    early.units[2].op = "==";
    early.units[2].digits = "x";
    finish(live, {capture(live, project_, plan_, 0, early, 400000), capture(live, project_, plan_, 0, early, 400000)});
  }

  /// The hub behind a device's own JTAG primitive, by a file that a user puts in the place of the inserted one.
  void wrapperOfTheUser() {
    if (!plan_.jtag.hasPins()) return;
    Settings replaced = settings_;
    replaced.core = settings_.sources + "/examples/device_jtag";
    compileBench(project_, plan_, replaced, files_);
    Live live(files_, plan_, 0, 0, {}, {6, 0x22});
    QString error;
    mustHold(live.reader.identify(error), error);
    finish(live, {capture(live, project_, plan_, 0, choice(true), 400000)});
  }

  /// 250 TCK in a sample clock: ARM and STOP come within one of them, and still make a run.
  void quickAbort() {
    setTck(0.02);
    Live live(files_, plan_);
    QString error;
    live.open();
    Run aborted;
    aborted.choice = choice(false, 9);
    aborted.outcome = Run::Aborted;
    const ost::RunSettings settings = settingsFor(plan_.cores[0], project_.cores[0], aborted.choice);
    mustHold(ask(live.hub, ost::HubOp::Config, 0, 0, settings.chain()).flags.configured, "not configured");
    mustHold(ask(live.hub, ost::HubOp::Table, 0, 1, settings.table(1)).flags.configured, "table not taken");
    ost::HubCommand arm, stop;
    arm.op = ost::HubOp::Arm;
    stop.op = ost::HubOp::Stop;
    need(live.hub.send(arm, {}, error) && live.hub.send(stop, {}, error), error);
    mustHold(!ask(live.hub, ost::HubOp::Status, 0).flags.ready, "ready before the sample clock has seen the run");
    finish(live, {aborted, capture(live, project_, plan_, 0, choice(true, 9), 400000)});
  }

  /// Three hundred sample clocks in a TCK. The other clock is slow as well: it only costs time.
  void slowTck() {
    project_.clockPeriods[1] = 1500;
    setTck(1500);
    Live live(files_, plan_);
    live.open();
    const Run run = capture(live, project_, plan_, 0, choice(true, 15), 100000);
    finish(live, {run});
  }

  void unusableLine() {
    Live live(files_, plan_, 0.03, 1);
    QString error;
    mustHold(!live.reader.identify(error) && error.contains("undisturbed"), "identifies on a line of noise: ", error);
    live.end();
  }

 private:
  RunChoice choice(bool fires, int position = 5) const {
    RunChoice made;
    made.position = position;
    made.enabled = {!fires, fires};
    made.units = project_.cores[0].units;
    return made;
  }
  ost::HubReply ask(ost::HubLink& hub, ost::HubOp op, int core, int tag = 0, const QByteArray& payload = {}) const {
    ost::HubCommand command;
    command.op = op;
    command.core = core;
    command.tag = tag;
    const int bits = core < plan_.cores.size() ? ost::CoreLayout(plan_.cores[core]).statusBits : 1;
    if (op == ost::HubOp::Table) command.rows = command.tableRows = payload.size();
    ost::HubReply reply;
    QString error;
    mustHold(hub.command(command, payload, op == ost::HubOp::Table ? 1 : bits, bits, reply, error), error);
    return reply;
  }
  void finish(Live& live, const QVector<Run>& runs) {
    live.end();
    compareRuns(project_, plan_, files_, runs, totals_);
  }
  void setTck(double halfPeriod) {
    project_.tckHalfPeriod = halfPeriod;
    compileBench(project_, plan_, settings_, files_);
  }

  const Settings& settings_;
  Totals& totals_;
  Project project_;
  BenchFiles files_;
  ost::InsertPlan plan_;
};

/// A full read-out of 32 x 1024 takes at most a tenth more TCK than its bare bits.
void readOutCost(const Settings& settings, Totals& totals) {
  Project project = sceneProject();
  Core& core = project.cores[0];
  project.cores.resize(1);
  core.timestampBits = 0;
  core.includeTrigger = false;
  core.depth = core.windowSamples = 1024;
  core.probes.clear();
  for (const Net& net : project.dut->nets)
    if (net.name == "u_a/count" || net.name == "u_a/noise" || net.name == "u_b/count")
      core.probes += {net.name, net.bits()};
  const BenchFiles files = prepareFolder(settings, "readout", project);
  const ost::InsertPlan plan = insert(project, settings, files);
  Live live(files, plan);
  live.open();
  RunChoice choice;
  choice.position = 100;
  choice.enabled = {false, true};
  choice.units = core.units;
  const Run run = capture(live, project, plan, 0, choice, 400000);
  live.end();
  compareRuns(project, plan, files, {run}, totals);
  const qint64 bits = 1024 * 32;
  printf("read-out of %lld bits: %lld TCK cycles, %.1f %% more\n", bits, run.readCycles,
         100.0 * double(run.readCycles - bits) / double(bits));
  mustHold(plan.cores[0].probeBits.size() == 32 && run.readCycles * 10 <= bits * 11,
           QString("%1 cycles for %2 bits").arg(run.readCycles).arg(bits));
  leaveFolder(settings, files);
}

}  // namespace

void playScenes(const Settings& settings, Totals& totals) {
  try {
    wishboneMaster(settings, totals);
  } catch (const Difference& difference) {
    throw Difference{"Wishbone master: " + difference.text};
  }
  try {
    unknownLevels(settings, totals);
  } catch (const Difference& difference) {
    throw Difference{"unknown levels: " + difference.text};
  }
  try {
    serdesBlock(settings);
  } catch (const Difference& difference) {
    throw Difference{"serdes block: " + difference.text};
  }
  Scenes scenes(settings, totals);
  const struct {
    const char* name;
    void (Scenes::*play)();
  } all[] = {{"refusals", &Scenes::refusals},
             {"flipped frames", &Scenes::flippedFrames},
             {"reasons", &Scenes::reasons},
             {"stopped clock", &Scenes::stoppedClock},
             {"unusable line", &Scenes::unusableLine},
             {"first sample", &Scenes::firstSample},
             {"a user's wrapper", &Scenes::wrapperOfTheUser},
             {"quick abort", &Scenes::quickAbort},
             {"slow TCK", &Scenes::slowTck}};
  for (const auto& scene : all) try {
      (scenes.*scene.play)();
    } catch (const Difference& difference) {
      throw Difference{QString("%1: ").arg(scene.name) + difference.text};
    }
  readOutCost(settings, totals);
  leaveFolder(settings, {settings.work + "/scenes", {}, {}});
}

}  // namespace oracle
