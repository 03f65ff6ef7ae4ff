// ost_capture: arms an inserted debug core over JTAG, waits for its trigger and writes what it captured.
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <new>

#include "platform/plan/capture_map.h"
#include "platform/plan/core_layout.h"
#include "platform/reader/capture_options.h"
#include "platform/reader/core_reader.h"
#include "platform/reader/text_views.h"
#include "platform/reader/vcd_writer.h"
#include "platform/system/files.h"
#include "platform/text/byte_text.h"
#include "platform/trigger/unit_value.h"

namespace ost {
namespace {

enum ExitStatus { kDone = 0, kFailed = 1, kWrongUse = 2, kNoTrigger = 3 };

/// How long finding the reasons and stopping the core may take after the wait: as long as the wait, or this if longer.
constexpr double kLeastGraceSeconds = 2;

int fail(const QString& text, ExitStatus status = kFailed) {
  fprintf(stderr, "ost_capture: %s\n", text.toLatin1().constData());
  return status;
}

/// Prints to standard output; the exit status.
int print(const QString& text) {
  const QByteArray bytes = text.toLatin1();
  if (writeAll(STDOUT_FILENO, bytes.constData(), bytes.size())) return kDone;
  return fail(QStringLiteral("Cannot write to the standard output: %1.").arg(systemReason(errno)));
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

/// An output file. It is checked before the core is armed, so that no capture is taken that cannot be stored.
struct Output {
  QString name;  ///< Empty: none.

  QString problem(const QString& reason) const { return QStringLiteral("Cannot write \"%1\": %2.").arg(name, reason); }
  Replacement place() const { return {fileFromText(name), QString(), true}; }
  bool check(QString& error) const {
    QString reason;
    if (name.isEmpty() || checkReplaceable(place(), reason)) return true;
    error = problem(reason);
    return false;
  }
};

/// Stores the capture in all files that can be written; the exit status.
int store(const QVector<QPair<Output, QByteArray>>& files) {
  QString problems, written;
  for (const auto& [output, text] : files) {
    QString reason;
    if (replaceFile(output.place(), text, reason))
      written += QStringLiteral(" The file \"%1\" was written.").arg(output.name);
    else
      problems += QStringLiteral(" ") + output.problem(reason);
  }
  return problems.isEmpty() ? int(kDone) : fail((problems + written).mid(1));
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

int showStatus(CoreReader& reader, const InsertPlan& plan, const QString& only, QString& error) {
  QString text;
  for (int i = 0; i < plan.cores.size(); ++i) {
    if (!only.isEmpty() && plan.cores[i].name != only) continue;
    CoreStatus status;
    if (!reader.status(i, status, error)) return fail(error);
    text += QStringLiteral("core %1: %2\n").arg(plan.cores[i].name, statusSummary(plan.cores[i], status));
  }
  return print(text);
}

/// `error`: with WaitResult::Failed why the server is of no more use.
int reportNoTrigger(CoreReader& reader, int core, const RunSettings& settings, double seconds, WaitResult result,
                    QString error) {
  CoreStatus status;
  const bool known = result == WaitResult::NotYet && reader.status(core, status, error);
  const QStringList reasons = known ? explainWaiting(settings, status) : QStringList(error);
  fail(QStringLiteral("The core \"%1\" has not completed its capture within %2 s:\n  %3")
           .arg(settings.core().name, QString::number(seconds), reasons.join(QLatin1String("\n  "))));
  // The message above matters more than a core that cannot be stopped, whose reason it has given.
  if (known) reader.stop(core, error);
  return known ? kNoTrigger : kFailed;
}

int run(const CaptureOptions& options) {
  InsertPlan plan;
  QString error;
  if (!loadMap(options.mapFile, plan, error)) return fail(error);
  const bool capturing = !options.status && !options.info;
  const bool needsCore = capturing || !options.core.isEmpty();
  const int core = needsCore ? chooseCore(plan, options, error) : 0;
  if (core < 0 || plan.cores.isEmpty())
    return fail(error.isEmpty() ? QStringLiteral("The capture map has no core; insert the cores again.") : error);
  RunSettings settings(plan.cores[core]);
  const Output vcd = {options.vcdFile}, csv = {options.csvFile};
  if (!applyRunOptions(options, settings, error) || !vcd.check(error) || !csv.check(error)) return fail(error);

  const std::unique_ptr<RemoteBitbang> port = RemoteBitbang::connect(options.server, 10, error);
  if (!port) return fail(error);
  HubLink hub(*port, options.instruction);
  CoreReader reader(hub, plan);
  if (!reader.identify(error)) return fail(error);
  if (options.info && print(infoText(plan)) != kDone) return kFailed;
  if (options.status) return showStatus(reader, plan, options.core, error);
  if (!capturing) return kDone;

  if (!reader.arm(core, settings, error)) return fail(error);
  port->setTimeLimit(options.timeoutSeconds + qMax(options.timeoutSeconds, kLeastGraceSeconds));
  const Deadline wait(options.timeoutSeconds);
  const WaitResult result = reader.waitUntilDone(core, {options.timeoutSeconds, 0}, error);
  if (result == WaitResult::NotYet || (result == WaitResult::Failed && wait.isOver()))
    return reportNoTrigger(reader, core, settings, options.timeoutSeconds, result, error);
  port->liftTimeLimit();
  Capture capture;
  if (result == WaitResult::Failed || !reader.readOut(core, settings, capture, error)) return fail(error);

  QVector<QPair<Output, QByteArray>> files;
  if (!vcd.name.isEmpty()) files.append({vcd, captureToVcd(capture, plan.topModule)});
  if (!csv.name.isEmpty()) files.append({csv, captureToCsv(capture)});
  const int stored = store(files);
  const bool showsWave = options.wave || files.isEmpty();
  if (stored != kDone && !showsWave) return stored;
  QString text =
      QStringLiteral("core %1: %2 window(s) of %3 samples, %4 before the trigger; %5 TCK cycles, %6 repeats\n")
          .arg(settings.core().name, QString::number(capture.windows.size()),
               QString::number(settings.core().windowSamples), QString::number(settings.position()),
               QString::number(hub.cycles()), QString::number(hub.retries()));
  if (showsWave) text += QString::fromLatin1(captureToWave(capture));
  return print(text) == kDone ? stored : int(kFailed);
}

}  // namespace
}  // namespace ost

int main(int argc, char** argv) {
  if (!ost::prepareDescriptors()) return ost::kFailed;
  try {
    QStringList words;
    for (int i = 1; i < argc; ++i) words += QString::fromLatin1(argv[i]);
    ost::CaptureOptions options;
    QString error;
    if (!ost::parseCaptureOptions(words, options, error)) return ost::fail(error, ost::kWrongUse);
    return options.help ? ost::print(ost::captureUsage()) : ost::run(options);
  } catch (const std::bad_alloc&) {
    fputs("ost_capture: There is not enough memory for this.\n", stderr);
  } catch (const std::exception& fault) {
    fprintf(stderr, "ost_capture: %s\n", fault.what());
  }
  return ost::kFailed;
}
