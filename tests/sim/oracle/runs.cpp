// From reader's calls to runs, and from runs to the first difference.
#include "tests/sim/oracle/runs.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <limits>

#include "platform/plan/core_layout.h"

namespace oracle {

void need(bool good, const QString& text) {
  if (!good) throw Broken{text};
}

void mustHold(bool right, const QString& text, const QString& error) {
  if (!right) throw Difference{text + error};
}

namespace {

QStringList vvp(const BenchFiles& files, const QStringList& arguments) {
  for (const char* name : {"/to_sim", "/from_sim"}) {
    const QByteArray file = (files.folder + name).toUtf8();
    unlink(file.constData());
    need(mkfifo(file.constData(), 0600) == 0, "cannot make a FIFO in " + files.folder);
  }
  return QStringList{"vvp", "-n", "capture.vvp", "+ostrel_fifo=."} + arguments;
}

/// When the device's primitive shows its states, and what it shows of them: each seed has its own.
QStringList deviceArguments(const ost::InsertPlan& plan, quint32 seed) {
  if (!plan.jtag.isPrimitive()) return {};
  QStringList words{QString("+tap_levels=%1").arg(seed % 3)};
  if (seed / 3 % 2) words += "+enable_in_scan";
  return words;
}

/// Of the whole chain: BYPASS for the devices on both sides of a device's own TAP.
ost::TapInstruction instructionOf(const ost::InsertPlan& plan) {
  const int width = plan.jtag.instructionWidth();
  const quint32 code = plan.jtag.instructionCode();
  if (!plan.jtag.isPrimitive()) return {width, code};
  return {5 + width + 6, 0x1Fu << (width + 6) | code << 6 | 0x3F};
}

std::unique_ptr<ost::Connection> connected(const BenchFiles& files) {
  QString error;
  auto connection = ost::Connection::open({ost::ServerAddress::Fifo, files.folder}, 20, error);
  need(connection != nullptr, error);
  return connection;
}

}  // namespace

bool FaultyLine::run(const QByteArray& asked, const QByteArray& tdi, QByteArray* tdo, QString& error) {
  QByteArray tms = asked, sent = tdi, read, counts;
  takeDetours(tms, sent, counts);
  if (untilFlip >= 0 && untilFlip < sent.size()) sent[untilFlip] = !sent[untilFlip];
  untilFlip = untilFlip < sent.size() ? -1 : untilFlip - sent.size();
  if (!port_.run(disturbed(tms, noise_ / 8), disturbed(sent, noise_), tdo ? &read : nullptr, error)) return false;
  for (int i = counts.size() - 1; tdo && i >= 0; --i)
    if (!counts[i]) read.remove(i, 1);
  if (tdo) *tdo += disturbed(read, noise_);
  return true;
}

void FaultyLine::takeDetours(QByteArray& tms, QByteArray& tdi, QByteArray& counts) {
  if (detours == 0) return;
  static const char next[16][2] = {{1, 0}, {1, 2},  {3, 9},   {4, 5},   {4, 5},   {6, 8},   {6, 7},   {4, 8},
                                   {1, 2}, {10, 0}, {11, 12}, {11, 12}, {13, 15}, {13, 14}, {11, 15}, {1, 2}};
  std::bernoulli_distribution strays(detours);
  std::uniform_int_distribution<int> length(1, 5);
  QByteArray allTms, allTdi;
  const auto step = [&](int level, int data, bool asked) {
    allTms += static_cast<char>(level);
    allTdi += static_cast<char>(data);
    counts += static_cast<char>(asked);
    detourCycles += !asked;
    state_ = next[state_][level];
  };
  for (int i = 0; i < tms.size(); ++i) {
    const bool shifts = state_ == 4 || state_ == 11;
    if (shifts && !tms.at(i) && strays(random_)) {
      // Through Exit 1, Pause and Exit 2 back to Shift: the bit moves while leaving it.
      step(1, tdi[i], true);
      for (int k = length(random_); k > 0; --k) step(0, k & 1, false);
      step(1, 1, false);
      step(0, 1, false);
      continue;
    }
    // Select, Capture, Exit 1, at times Pause and Exit 2, and Update: nothing is shifted.
    if (state_ == 1 && !tms.at(i) && strays(random_)) {
      for (const int level : {1, 0, 1}) step(level, 1, false);
      if (length(random_) > 2)
        for (const int level : {0, 1}) step(level, 1, false);
      for (const int level : {1, 0, 0}) step(level, 1, false);
    }
    step(tms[i], tdi[i], true);
  }
  tms = allTms;
  tdi = allTdi;
}

QByteArray FaultyLine::disturbed(QByteArray levels, double rate) {
  std::bernoulli_distribution hit(rate);
  for (char& level : levels)
    if (hit(random_)) level = static_cast<char>(!level);
  return levels;
}

Live::Live(const BenchFiles& files, const ost::InsertPlan& plan, double noise, quint32 seed,
           const QStringList& arguments, ost::TapInstruction instruction)
    : simulation_(vvp(files, arguments + deviceArguments(plan, seed)), files.folder, "capture_run.log"),
      connection_(connected(files)),
      port_(std::make_unique<ost::RemoteBitbang>(*connection_)),
      line(*port_, seed, noise),
      tap(line, plan.jtag.isPrimitive() ? ost::ChainPlace{1, 1} : ost::ChainPlace()),
      hub(tap, instruction.width ? instruction : instructionOf(plan)),
      reader(hub, plan) {}

void Live::open() {
  QString error;
  mustHold(hub.open(error), error);
}

void Live::end() {
  port_.reset();
  connection_.reset();
  simulation_.waitForEnd();
}

ost::RunSettings settingsFor(const ost::PlanCore& plan, const Core& core, const RunChoice& choice) {
  ost::RunSettings settings(plan);
  QString error;
  need(settings.setPosition(QString::number(choice.position), error), error);
  need(settings.setWindows(choice.windows, error), error);
  need(settings.setEventCount(choice.eventCount, error), error);
  QStringList enabled;
  for (int i = 0; i < core.expressions.size(); ++i)
    if (choice.enabled[i]) enabled += core.expressions[i].name;
  need(settings.chooseExpressions(enabled.join(','), error), error);
  for (int i = 0; i < core.units.size(); ++i) {
    const Unit &now = choice.units[i], &built = core.units[i];
    if (now.op != built.op || now.digits != built.digits)
      need(settings.setUnit(now.name, now.op, now.digits, error), error);
  }
  return settings;
}

Run capture(Live& live, const Project& project, const ost::InsertPlan& plan, int core, const RunChoice& choice,
            qint64 patience) {
  QString error;
  Run run;
  run.core = core;
  run.choice = choice;
  const ost::RunSettings settings = settingsFor(plan.cores[core], project.cores[core], choice);
  const QString name = "core " + project.cores[core].name + ": ";
  const qint64 before = live.cycles();
  mustHold(live.reader.arm(core, settings, error), name, error);
  const qint64 armed = live.hub.cycles();
  const ost::WaitResult result = live.reader.waitUntilDone(core, {120, patience}, error);
  mustHold(result != ost::WaitResult::Failed, name, error);
  if (result == ost::WaitResult::Done) {
    run.waitedTime = qint64(double(live.cycles() - before) * 2000 * project.tckHalfPeriod);
    const qint64 done = live.hub.cycles();
    mustHold(live.reader.readOut(core, settings, run.capture, error), name, error);
    run.readCycles = live.hub.cycles() - done;
    return run;
  }
  // The last look's flags were those of its first cycles.
  const qint64 look = ost::kBlockOverhead + ost::CoreLayout(plan.cores[core]).statusBits + 20;
  run.outcome = Run::Untriggered;
  run.waitedTime = qint64(double(live.hub.cycles() - armed - look) * 2000 * project.tckHalfPeriod);
  ost::CoreStatus status;
  mustHold(live.reader.status(core, status, error), name, error);
  run.reasons = ost::explainWaiting(settings, status);
  mustHold(live.reader.stop(core, error), name, error);
  return run;
}

namespace {

/// The plan's probes show the bits that the project asked for, in order; returns the bit names of the sample word.
QStringList checkProbes(const Core& core, const ost::PlanCore& plan) {
  QStringList wordBits;
  for (const ost::NetBit& bit : plan.probeBits) wordBits += bit.name;
  mustHold(QStringList(wordBits).removeDuplicates() == 0, "core " + core.name + ": captures a bit twice");
  const QVector<QStringList> shown = core.shownProbes();
  mustHold(shown.size() == plan.probes.size(),
           QString("core %1: %2 probes instead of %3").arg(core.name).arg(plan.probes.size()).arg(shown.size()));
  for (int i = 0; i < shown.size(); ++i) {
    QStringList names;
    for (int position : plan.probes[i].positions) names += wordBits[position];
    mustHold(names == shown[i], QString("core %1, probe %2: shows %3 instead of %4")
                                    .arg(core.name, plan.probes[i].name, names.join(' '), shown[i].join(' ')));
  }
  return wordBits;
}

void compareSamples(const Core& core, const Run& run, const QString& where, const QStringList& wordBits,
                    const Record& record, int armRow, const Expected& expected, Totals& totals) {
  const ost::Capture& capture = run.capture;
  mustHold(capture.windows.size() == expected.windows.size(),
           where + QString(": %1 windows instead of %2").arg(capture.windows.size()).arg(expected.windows.size()));
  for (int w = 0; w < expected.windows.size(); ++w) {
    for (int s = 0; s < core.windowSamples; ++s) {
      const ExpectedSample& sample = expected.windows[w][s];
      const int row = capture.windows[w].firstRow + s;
      const QString here = where + QString(", window %1, sample %2").arg(w).arg(s);
      for (int b = 0; b < wordBits.size(); ++b) {
        const char level = record.rows[sample.row][record.column(wordBits[b])];
        totals.unknown += level != '0' && level != '1';
        if (capture.probeBit(row, b) != (level == '1'))
          throw Difference{here + QString(", net %1: read %2, the device had %3 (at %4 ps)")
                                      .arg(wordBits[b])
                                      .arg(capture.probeBit(row, b))
                                      .arg(QChar(level))
                                      .arg(record.times[sample.row])};
        ++totals.bits;
        if (s > 0 && capture.probeBit(row, b) != capture.probeBit(row - 1, b)) ++totals.toggles;
      }
      for (int u = 0; core.includeTrigger && u < core.units.size(); ++u)
        mustHold(capture.unitState(row, u) == sample.units[u],
                 here + QString(", unit %1: state read as %2").arg(core.units[u].name).arg(capture.unitState(row, u)));
      if (core.timestampBits) {
        const quint64 stamp = quint64(sample.row - armRow) & ((quint64(1) << core.timestampBits) - 1);
        mustHold(capture.timestamp(row) == stamp,
                 here + QString(": timestamp %1 instead of %2").arg(capture.timestamp(row)).arg(stamp));
      }
      ++totals.samples;
    }
    ++totals.windows;
  }
  ++totals.runs;
}

/// The reasons given fit where the run stood at some moment while they were found.
void compareReasons(const Core& core, const Run& run, const QString& where, const QVector<Progress>& moments) {
  const QString text = run.reasons.join('\n');
  const auto always = [&](auto test) { return std::all_of(moments.begin(), moments.end(), test); };
  const auto says = [&](const QString& part, bool right) {
    mustHold(text.contains(part) == right,
             where + (right ? ": the reader does not say '" : ": the reader wrongly says '") + part + "': " + text);
  };
  const bool sampled = always([](const Progress& p) { return p.sampled; });
  if (sampled || always([](const Progress& p) { return !p.sampled; })) says("No sample since arming", !sampled);
  if (!sampled) return;
  if (always([](const Progress& p) { return !p.searching && !p.triggered; })) says("are not stored yet", true);
  if (!always([](const Progress& p) { return p.searching; })) return;
  if (always([](const Progress& p) { return !p.looked; })) says("The trigger enable", true);
  if (always([](const Progress& p) { return p.looked; })) says("The trigger enable", false);
  int place = 0;
  for (int i = 0; i < core.expressions.size(); ++i) {
    if (!run.choice.enabled[i]) continue;
    bool fits = false;
    const QString name = QString("Expression \"%1\"").arg(core.expressions[i].name);
    for (const QString& line : run.reasons)
      fits = fits ||
             (line.startsWith(name) && std::any_of(moments.begin(), moments.end(), [&](const Progress& p) {
                return line.contains(
                    QString("waits in step %1 of %2").arg(p.steps[place] + 1).arg(core.expressions[i].steps.size()));
              }));
    mustHold(fits, where + ": the reader names a step in which " + name + " did not wait: " + text);
    ++place;
  }
  if (run.choice.eventCount > 1)
    mustHold(std::any_of(moments.begin(), moments.end(),
                         [&](const Progress& p) {
                           return text.contains(QString("%1 of %2 events").arg(p.events).arg(run.choice.eventCount));
                         }),
             where + ": the reader counts other events: " + text);
}

/// Edges from that of a trigger to that right behind which the trigger output is active.
int triggerOutEdges(const Core& core) {
  const bool wide = std::any_of(core.units.begin(), core.units.end(),
                                [](const Unit& unit) { return unit.op != ".SC." && unit.bits.size() > 16; });
  return wide ? 5 : 4;
}

/// The output's pulses: active from that edge on, for the minimum pulse.
void compareTriggerOut(const Core& core, const QVector<qint64>& triggers, const QVector<qint64>& ends,
                       const QVector<Level>& levels, const QString& where, Totals& totals) {
  QVector<qint64> rises, falls, seenRises, seenFalls;
  qint64 activeUntil = -1;
  for (int i = 0; i < triggers.size(); ++i) {
    if (triggers[i] > activeUntil) {
      if (activeUntil >= 0) falls += activeUntil;
      rises += triggers[i];
    }
    activeUntil = ends[i];
  }
  if (activeUntil >= 0) falls += activeUntil;
  for (const Level& level : levels) {
    const bool active = level.active != core.triggerOutLow;
    if (active) seenRises += level.time;
    if (!active && !seenRises.isEmpty()) seenFalls += level.time;
  }
  if (seenRises != rises || seenFalls != falls)
    throw Difference{where +
                     QString(": the trigger output has %1 pulses, the first at %2 ps, instead of %3, from %4 ps on")
                         .arg(seenRises.size())
                         .arg(seenRises.value(0))
                         .arg(rises.size())
                         .arg(rises.value(0))};
  totals.pulses += rises.size();
}

/// What the comparison gathers of a core.
struct CoreRuns {
  QStringList wordBits;
  QVector<RunSpan> spans;
  int next = 0;
  QVector<qint64> outputRises, outputFalls;
  bool outputKnown = true;  ///< No run was stopped behind a trigger, where the output's end is open.
};

class Comparison {
 public:
  Comparison(const Project& project, const BenchFiles& files, Totals& totals)
      : project_(project), files_(files), totals_(totals) {}

  void compare(const ost::InsertPlan& plan, const QVector<Run>& runs) {
    qint64 first = std::numeric_limits<qint64>::max();
    cores_.resize(project_.cores.size());
    for (int i = 0; i < cores_.size(); ++i) {
      cores_[i].wordBits = checkProbes(project_.cores[i], plan.cores[i]);
      cores_[i].spans = runSpans(files_, i);
      for (const RunSpan& span : cores_[i].spans) first = std::min(first, span.from);
    }
    from_ = std::max<qint64>(0, first - 100000);
    for (const Run& run : runs) compareRun(run);
    for (int i = 0; i < cores_.size(); ++i) {
      mustHold(cores_[i].next == cores_[i].spans.size(),
               QString("core %1: ran %2 times").arg(project_.cores[i].name).arg(cores_[i].spans.size()));
      for (int k = 0; cores_[i].outputKnown && k < plan.cores[i].triggerOutNames().size(); ++k)
        compareTriggerOut(project_.cores[i], cores_[i].outputRises, cores_[i].outputFalls,
                          triggerOutLevels(files_, i, k), "core " + project_.cores[i].name, totals_);
    }
  }

 private:
  void grow(const QString& where) {
    need(rows_ < 4000000, where + ": the model sees no end of the run");
    rows_ *= 3;
    records_ = recordDevice(project_, files_, from_, rows_);
  }
  void compareRun(const Run& run) {
    const Core& core = project_.cores[run.core];
    CoreRuns& state = cores_[run.core];
    const int clock = project_.dut->clocks.indexOf(core.clock), number = state.next++;
    const QString where = QString("core %1, run %2").arg(core.name).arg(number + 1);
    mustHold(number < state.spans.size(), where + ": the core never ran");
    const RunSpan span = state.spans[number];
    const qint64 period = qint64(project_.clockPeriods[clock] * 1000);
    if (records_.isEmpty()) grow(where);
    Expected expected;
    int armRow = -1;
    // The record grows until it holds the whole run and the trigger output behind it.
    for (;; grow(where)) {
      const Record& record = records_[clock];
      armRow = record.times.indexOf(span.from);
      if (armRow < 0) continue;
      if (run.outcome == Run::Done) {
        expected = expectedCapture(core, run.choice, record, armRow);
        if (expected.complete && expected.rowsSeen + 16 < record.rows.size()) break;
        mustHold(record.times.last() < span.from + run.waitedTime + 40 * period,
                 where + ": is done, where the model sees no end of the run");
      } else if (record.times.last() > span.to + 40 * period) {
        break;
      }
    }
    const Record& record = records_[clock];
    const auto rowAt = [&](qint64 time) {
      return int(std::lower_bound(record.times.begin(), record.times.end(), time) - record.times.begin());
    };
    if (run.outcome == Run::Done) {
      compareSamples(core, run, where, state.wordBits, record, armRow, expected, totals_);
    } else {
      // The pipeline is a few edges long.
      const int watch = std::max(armRow, rowAt(span.from + run.waitedTime) - 8);
      expected = expectedCapture(core, run.choice, record, armRow, rowAt(span.to), watch);
      state.outputKnown = state.outputKnown && expected.triggerRows.isEmpty();
      if (run.outcome == Run::Aborted) {
        ++totals_.aborted;
      } else {
        mustHold(!expected.complete || expected.rowsSeen >= watch,
                 where + ": never completed: " + run.reasons.join(' '));
        if (!expected.complete) compareReasons(core, run, where, expected.progress);
        ++totals_.untriggered;
      }
    }
    for (int row : expected.triggerRows) {
      const int active = row + triggerOutEdges(core);
      state.outputRises += record.times[active];
      state.outputFalls += record.times[active + std::max(1, core.triggerOutMinPulse)];
    }
  }

  const Project& project_;
  const BenchFiles& files_;
  Totals& totals_;
  QVector<CoreRuns> cores_;
  QVector<Record> records_;
  qint64 from_ = 0;
  int rows_ = 1000;
};

}  // namespace

void compareRuns(const Project& project, const ost::InsertPlan& plan, const BenchFiles& files, const QVector<Run>& runs,
                 Totals& totals) {
  Comparison(project, files, totals).compare(plan, runs);
}

}  // namespace oracle
