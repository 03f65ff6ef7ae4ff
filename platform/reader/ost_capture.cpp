// ost_capture: arms an inserted debug core over JTAG, waits for its trigger and writes what it captured.
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <new>

#include "platform/jtag/simulation_server.h"
#include "platform/plan/capture_map.h"
#include "platform/reader/capture_files.h"
#include "platform/reader/capture_run.h"
#include "platform/reader/text_views.h"
#include "platform/reader/wait_line.h"
#include "platform/system/files.h"
#include "platform/system/interrupt.h"
#include "platform/text/byte_text.h"
#include "platform/trigger/unit_value.h"

namespace ost {
namespace {

enum ExitStatus { kDone = 0, kFailed = 1, kWrongUse = 2, kNoTrigger = 3 };

constexpr double kConnectSeconds = 10;  ///< For a server to come up.
constexpr double kEndSeconds = 1;       ///< For the end of a simulation to be known, once its pins are gone.
constexpr int kWaveColumns = 100;       ///< Of a waveform that no terminal shows.

int fail(const QString& text, ExitStatus status = kFailed) {
  fprintf(stderr, "ost_capture: %s\n", text.toLatin1().constData());
  return status;
}

/// Prints to standard output; the exit status.
int print(const QString& text) {
  QString error;
  return writeToStandardOutput(text.toLatin1(), error) ? int(kDone) : fail(error);
}

/// Opens /dev/null read-only for standard descriptors that the caller has closed, so that no file or connection gets
/// their numbers and the text meant for them. A write beyond the file size limit is an error, not a signal.
bool prepareDescriptors() {
  for (int fd = 0; fd <= STDERR_FILENO; ++fd)
    if (fcntl(fd, F_GETFD) < 0 && open("/dev/null", O_RDONLY) != fd) return false;
  return signal(SIGXFSZ, SIG_IGN) != SIG_ERR;
}

bool loadMap(const QString& name, InsertPlan& plan, QString& error) {
  QByteArray json;
  QString reason;
  if (!readFile(fileFromText(name), kMaxCaptureMapBytes, json, reason)) {
    error = QStringLiteral("Cannot read the capture map \"%1\": %2.").arg(name, reason);
    return false;
  }
  if (readCaptureMap(json, plan, reason)) return true;
  error = QStringLiteral("The capture map \"%1\" is damaged: %2").arg(name, reason);
  return false;
}

QString infoText(const InsertPlan& plan) {
  QString text = QStringLiteral("design %1, project %2, hash %3: the hardware agrees with the capture map\n")
                     .arg(plan.topModule, plan.projectName, QString::fromLatin1(plan.projectHash));
  for (const PlanCore& core : plan.cores) {
    text +=
        QStringLiteral("core %1: %2 probe bits, clock %3, %4 window(s) of %5 samples of %6 bits\n")
            .arg(core.name, QString::number(core.probeWidth()), core.sampleClock.name, QString::number(core.windows),
                 QString::number(core.windowSamples), QString::number(core.sampleBits()));
    for (const PlanUnit& unit : core.units)
      text += QStringLiteral("  unit %1: %2 bits %3 %4 (%5)\n")
                  .arg(unit.name, QString::number(unit.width), operatorText(unit.op), unit.valueText,
                       radixText(unit.radix));
    for (const PlanExpression& expression : core.expressions)
      text += QStringLiteral("  expression %1: %2\n").arg(expression.name, expression.text);
  }
  return text;
}

/// The way to the hub: through a server, or through a simulation that is started for it.
class Way {
 public:
  explicit Way(const CaptureOptions& options) : options_(options) {}
  /// False with `error`.
  bool open(QString& error);
  /// Ends the simulation. What it said, or did too early, may be the reason of a failure: the exit status.
  int close(int status);
  Tap& tap() { return *connected_.tap; }
  Connection& connection() { return *connected_.connection; }
  /// A failure's text: a simulation that has ended explains it better than the closed connection.
  QString explained(const QString& error);

 private:
  const CaptureOptions& options_;
  std::unique_ptr<Simulation> simulation_;
  ConnectedTap connected_;
};

bool Way::open(QString& error) {
  const TapChoice choice = {options_.place, kHubIdcode};
  if (options_.command.isEmpty()) {
    connected_ = connectTap(options_.server, choice, kConnectSeconds, error);
  } else {
    simulation_ = Simulation::start(options_.command, options_.logFile, error);
    if (simulation_) connected_ = simulation_->connect(choice, kConnectSeconds, error);
  }
  return bool(connected_.tap);
}

QString Way::explained(const QString& error) {
  const bool broken = connected_.connection && connected_.connection->isBroken();
  return simulation_ && broken && simulation_->hasEnded(kEndSeconds) ? simulation_->endText() : error;
}

int Way::close(int status) {
  connected_ = ConnectedTap();
  QString error;
  return !simulation_ || simulation_->finish(error) ? status : fail(error);
}

/// A run of the program: what was asked for, with what stands behind it.
class Program {
 public:
  explicit Program(const CaptureOptions& options) : options_(options), way_(options) {}
  int run();

 private:
  bool prepare(QString& error);
  int withHub();
  int showStatus(CoreReader& reader);
  int captureRepeatedly(CoreReader& reader);
  /// One capture, written to files with the mark `number`, unless that is 0.
  int captureOnce(CoreReader& reader, int number);
  int write(int number);
  QString summary() const;

  const CaptureOptions& options_;
  InsertPlan plan_;
  QVector<CoreRun> runs_;
  Way way_;
  HubLink* hub_ = nullptr;
};

bool Program::prepare(QString& error) {
  if (!loadMap(options_.mapFile, plan_, error)) return false;
  if (plan_.cores.isEmpty()) error = QStringLiteral("The capture map has no core; insert the cores again.");
  const bool capturing = !options_.status && !options_.info;
  if (!error.isEmpty() || (!capturing && options_.core.isEmpty())) return error.isEmpty();
  const QVector<int> cores = chooseCores(plan_, options_, error);
  QStringList names;
  for (const int core : cores) {
    names += plan_.cores[core].name;
    RunSettings settings(plan_.cores[core]);
    if (!applyRunOptions(options_, settings, error) || !checkView(settings, options_.view, error)) return false;
    runs_.append({core, settings, false, Capture()});
  }
  return !cores.isEmpty() && checkCaptureFiles(options_, names, error);
}

int Program::run() {
  QString error;
  if (!prepare(error)) return fail(error);
  if (!catchInterrupts()) return fail(QStringLiteral("Cannot watch for ^C: %1.").arg(systemReason(errno)));
  return way_.close(way_.open(error) ? withHub() : fail(error));
}

int Program::withHub() {
  HubLink hub(way_.tap(), options_.instruction);
  CoreReader reader(hub, plan_);
  hub_ = &hub;
  QString error;
  if (!reader.identify(error)) return fail(way_.explained(error));
  if (options_.info && print(infoText(plan_)) != kDone) return kFailed;
  if (options_.status) return showStatus(reader);
  return options_.info ? int(kDone) : captureRepeatedly(reader);
}

int Program::showStatus(CoreReader& reader) {
  QString text, error;
  for (int i = 0; i < plan_.cores.size(); ++i) {
    if (!options_.core.isEmpty() && plan_.cores[i].name != options_.core) continue;
    CoreStatus status;
    if (!reader.status(i, status, error)) return fail(way_.explained(error));
    text += QStringLiteral("core %1: %2\n").arg(plan_.cores[i].name, statusSummary(plan_.cores[i], status));
  }
  return print(text);
}

int Program::captureRepeatedly(CoreReader& reader) {
  if (options_.repeats == 1) return captureOnce(reader, 0);
  for (int number = 1; options_.repeats == 0 || number <= options_.repeats; ++number) {
    const int status = captureOnce(reader, number);
    if (status != kDone) return status;
    if (isInterrupted()) return options_.repeats == 0 ? kDone : kNoTrigger;
  }
  return kDone;
}

int Program::captureOnce(CoreReader& reader, int number) {
  CaptureRun run(reader, way_.connection(), runs_, options_.timeoutSeconds);
  QString error;
  if (!run.arm(error)) return fail(way_.explained(error));
  WaitLine line;
  const CaptureRun::End end = run.wait(line, error);
  line.clear();
  if (end == CaptureRun::End::Failed) return fail(way_.explained(error));
  if (end != CaptureRun::End::Done) {
    QString text;
    const bool known = run.explain(end, error, text);
    // With no number of captures asked for, ^C is how they end.
    if (known && end == CaptureRun::End::Interrupted && options_.repeats == 0 && number > 1) return kDone;
    return fail(text, known ? kNoTrigger : kFailed);
  }
  return run.readOut(error) ? write(number) : fail(way_.explained(error));
}

int Program::write(int number) {
  QVector<Capture> shown;
  for (const CoreRun& run : runs_) shown.append(viewOf(run.capture, options_.view));
  const QList<OutputText> outputs = captureFiles(options_, shown, plan_.topModule, number);
  QString error;
  const bool stored = storeAll(outputs, error);
  const bool showsWave = options_.wave || outputs.isEmpty();
  if (!stored) fail(error);
  if (!stored && !showsWave) return kFailed;
  QString text = summary();
  if (showsWave)
    for (const Capture& capture : shown)
      text += QString::fromLatin1(captureToWave(capture, terminalColumns(kWaveColumns)));
  // What is not data stays out of the way of a file that is the standard output.
  const auto isData = [](const OutputText& output) { return output.file.isStandardOutput(); };
  if (std::any_of(outputs.begin(), outputs.end(), isData))
    fputs(text.toLatin1().constData(), stderr);
  else if (print(text) != kDone)
    return kFailed;
  return stored ? kDone : kFailed;
}

QString Program::summary() const {
  QString text;
  for (const CoreRun& run : runs_)
    text += QStringLiteral("core %1: %2 window(s) of %3 samples, %4 before the trigger; %5 TCK cycles, %6 repeats\n")
                .arg(run.settings.core().name, QString::number(run.capture.windows.size()),
                     QString::number(run.settings.core().windowSamples), QString::number(run.settings.position()),
                     QString::number(hub_->cycles()), QString::number(hub_->retries()));
  return text;
}

int serve(const CaptureOptions& options) {
  QString error;
  if (!catchInterrupts()) return fail(QStringLiteral("Cannot watch for ^C: %1.").arg(systemReason(errno)));
  const std::unique_ptr<Simulation> simulation = Simulation::start(options.command, options.logFile, error);
  if (!simulation) return fail(error);
  const auto announce = [](int port) {
    print(QStringLiteral("The simulation is served on tcp:127.0.0.1:%1; ^C ends it.\n").arg(port));
  };
  const auto goOn = [] { return !isInterrupted(); };
  if (!serveSimulation(*simulation, options.servePort, announce, goOn, error)) return fail(error);
  return simulation->finish(error) ? int(kDone) : fail(error);
}

int runProgram(const QStringList& words) {
  CaptureOptions options;
  QString error;
  if (!parseCaptureOptions(words, options, error)) return fail(error, kWrongUse);
  if (options.help) return print(captureUsage());
  if (options.version) return print(QStringLiteral("ost_capture " OST_PACKAGE_VERSION "\n"));
  return options.servePort >= 0 ? serve(options) : Program(options).run();
}

}  // namespace
}  // namespace ost

int main(int argc, char** argv) {
  if (!ost::prepareDescriptors()) return ost::kFailed;
  try {
    QStringList words;
    for (int i = 1; i < argc; ++i) words += QString::fromLatin1(argv[i]);
    return ost::runProgram(words);
  } catch (const std::bad_alloc&) {
    fputs("ost_capture: There is not enough memory for this.\n", stderr);
  } catch (const std::exception& fault) {
    fprintf(stderr, "ost_capture: %s\n", fault.what());
  }
  return ost::kFailed;
}
