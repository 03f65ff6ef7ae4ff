// ost_capture: arms an inserted debug core over JTAG, waits for its trigger and writes what it captured.
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <new>

#include "platform/jtag/simulation_server.h"
#include "platform/reader/capture_files.h"
#include "platform/reader/hub_session.h"
#include "platform/reader/serdes_view.h"
#include "platform/reader/text_views.h"
#include "platform/reader/wait_line.h"
#include "platform/reader/wishbone_reader.h"
#include "platform/system/files.h"
#include "platform/system/interrupt.h"
#include "platform/trigger/unit_value.h"

namespace ost {
namespace {

enum ExitStatus { kDone = 0, kFailed = 1, kWrongUse = 2, kNoTrigger = 3 };

constexpr int kWaveColumns = 100;  ///< Of a waveform that no terminal shows.

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
  if (plan.wishbone)
    text += QStringLiteral("Wishbone master: %1 address bits, %2-endian, %3\n")
                .arg(plan.wishbone->addressBits)
                .arg(plan.wishbone->isBigEndian ? QLatin1String("big") : QLatin1String("little"),
                     plan.wishbone->isConnected ? QStringLiteral("connected to %1, clock %2")
                                                      .arg(plan.wishbone->instance, plan.wishbone->clock.name)
                                                : QStringLiteral("at the ports %1*").arg(plan.wishbone->portPrefix));
  if (plan.serdes)
    text += QStringLiteral("serdes core: clock %1, %2 clocks and %3 levels\n")
                .arg(plan.serdes->clock.name, QString::number(plan.serdes->clocks.size()),
                     QString::number(plan.serdes->levels.size()));
  return text;
}

/// A run of the program: what was asked for, with what stands behind it.
class Program {
 public:
  explicit Program(const CaptureOptions& options) : options_(options), session_(options) {}
  int run();

 private:
  bool prepare(QString& error);
  int withHub();
  int showStatus();
  int useWishbone();
  int showSerdes();
  int captureRepeatedly();
  /// One capture, written to files with the mark `number`, unless that is 0.
  int captureOnce(int number);
  int write(int number);
  QString summary();
  int failExplained(const QString& error) { return fail(session_.explained(error)); }

  const CaptureOptions& options_;
  HubSession session_;
};

bool Program::prepare(QString& error) {
  if (!session_.loadMap(error)) return false;
  if (!options_.wishbone.isEmpty()) return true;
  if (options_.serdes) return session_.hasSerdes(error) && checkCaptureFiles(options_, {}, error);
  if ((options_.status || options_.info) && options_.core.isEmpty()) return true;
  if (!session_.chooseRuns(options_, error)) return false;
  return checkCaptureFiles(options_, session_.coreNames(), error);
}

int Program::run() {
  QString error;
  if (!prepare(error)) return fail(error);
  if (!catchInterrupts()) return fail(QStringLiteral("Cannot watch for ^C: %1.").arg(systemReason(errno)));
  const int status = session_.open(error) ? withHub() : fail(error);
  return session_.close(error) ? status : fail(error);
}

int Program::withHub() {
  if (options_.info && print(infoText(session_.plan())) != kDone) return kFailed;
  if (!options_.wishbone.isEmpty()) return useWishbone();
  if (options_.status) return showStatus();
  if (options_.serdes) return showSerdes();
  return options_.info ? int(kDone) : captureRepeatedly();
}

int Program::showStatus() {
  QString text, error;
  const QVector<PlanCore>& cores = session_.plan().cores;
  for (int i = 0; i < cores.size(); ++i) {
    if (!options_.core.isEmpty() && cores[i].name != options_.core) continue;
    CoreStatus status;
    if (!session_.reader().status(i, status, error)) return failExplained(error);
    text += QStringLiteral("core %1: %2\n").arg(cores[i].name, statusSummary(cores[i], status));
  }
  return print(text);
}

int Program::useWishbone() {
  for (const WishboneCommand& command : options_.wishbone) {
    QVector<quint32> numbers;
    QString text, error;
    const bool good = session_.runWishbone(command, numbers, error);
    for (int i = 0; i < numbers.size(); ++i)
      text += QStringLiteral("%1: %2\n")
                  .arg(hexAddress(command.address + quint32(i * command.size)), wishboneNumber(command, numbers[i]));
    if (!text.isEmpty() && print(text) != kDone) return kFailed;
    if (!good) return failExplained(error);
  }
  return kDone;
}

int Program::showSerdes() {
  SerdesLook look;
  QString error;
  if (!session_.readSerdes(options_.clear, look, error)) return failExplained(error);
  const InsertPlan& plan = session_.plan();
  const ClockPeriod& period = options_.vcdStyle.period;
  if (!options_.json.isAsked()) return print(QString::fromLatin1(serdesToText(*plan.serdes, look, period)));
  return storeAll({{options_.json, serdesToJson(plan, look, period)}}, error) ? int(kDone) : fail(error);
}

int Program::captureRepeatedly() {
  if (options_.repeats == 1) return captureOnce(0);
  for (int number = 1; options_.repeats == 0 || number <= options_.repeats; ++number) {
    const int status = captureOnce(number);
    if (status != kDone) return status;
    if (!isInterrupted()) continue;
    // With no number of captures asked for, ^C is how they end.
    if (options_.repeats == 0 || number == options_.repeats) return kDone;
    return fail(QStringLiteral("Interrupted after %1 of %2 captures.").arg(number).arg(options_.repeats), kNoTrigger);
  }
  return kDone;
}

int Program::captureOnce(int number) {
  CaptureRun& run = session_.run();
  QString error;
  if (!run.arm(error)) return failExplained(error);
  WaitLine line;
  const CaptureRun::End end = run.wait(options_.timeoutSeconds, line, error);
  line.clear();
  if (end == CaptureRun::End::Failed) return failExplained(error);
  if (end != CaptureRun::End::Done) {
    QString text;
    const bool known = run.explain(end, error, text);
    if (known && end == CaptureRun::End::Interrupted && options_.repeats == 0 && number > 1) return kDone;
    return fail(text, known ? kNoTrigger : kFailed);
  }
  return run.readOut(error) ? write(number) : failExplained(error);
}

int Program::write(int number) {
  CaptureSet shown = session_.captures();
  for (Capture& capture : shown.cores) capture = viewOf(capture, options_.view);
  const QList<OutputText> outputs = captureFiles(options_, shown, number);
  QString error;
  const bool stored = storeAll(outputs, error);
  const bool showsWave = options_.wave || outputs.isEmpty();
  if (!stored) fail(error);
  if (!stored && !showsWave) return kFailed;
  QString text = summary();
  if (showsWave)
    for (const Capture& capture : shown.cores)
      text += QString::fromLatin1(captureToWave(capture, terminalColumns(kWaveColumns)));
  // What is not data stays out of the way of a file that is the standard output.
  const auto isData = [](const OutputText& output) { return output.file.isStandardOutput(); };
  if (std::any_of(outputs.begin(), outputs.end(), isData))
    fputs(text.toLatin1().constData(), stderr);
  else if (print(text) != kDone)
    return kFailed;
  return stored ? kDone : kFailed;
}

QString Program::summary() {
  QString text;
  for (const CoreRun& run : session_.runs())
    text += QStringLiteral("core %1: %2 window(s) of %3 samples, %4 before the trigger; %5 TCK cycles, %6 repeats\n")
                .arg(run.settings.core().name, QString::number(run.capture.windows.size()),
                     QString::number(run.settings.core().windowSamples), QString::number(run.settings.position()),
                     QString::number(session_.hub().cycles()), QString::number(session_.hub().retries()));
  return text;
}

int serve(const CaptureOptions& options) {
  QString error;
  if (!catchInterrupts()) return fail(QStringLiteral("Cannot watch for ^C: %1.").arg(systemReason(errno)));
  const std::unique_ptr<Simulation> simulation = Simulation::start(options.command, options.logFile, error);
  if (!simulation) return fail(error);
  const auto announce = [&options](int port) {
    const QString word = options.serveProtocol == ServerAddress::Xvc ? QStringLiteral("xvc") : QStringLiteral("tcp");
    print(QStringLiteral("The simulation is served on %1:127.0.0.1:%2; ^C ends it.\n").arg(word).arg(port));
  };
  const auto goOn = [] { return !isInterrupted(); };
  if (!serveSimulation(*simulation, options.serveProtocol, options.servePort, announce, goOn, error))
    return fail(error);
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
