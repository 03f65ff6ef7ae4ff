// ost_capture: arms an inserted debug core over JTAG, waits for its trigger and writes what it captured.
#include <QFile>
#include <QSaveFile>
#include <cstdio>

#include "platform/istdata/unit_value.h"
#include "platform/istdata/wire_text.h"
#include "platform/plan/capture_map.h"
#include "platform/reader/capture_options.h"
#include "platform/reader/core_reader.h"
#include "platform/reader/read_layout.h"
#include "platform/reader/text_views.h"
#include "platform/reader/vcd_writer.h"

namespace ost {
namespace {

enum ExitStatus { kDone = 0, kFailed = 1, kWrongUse = 2, kNoTrigger = 3 };

void print(const QString& text) {
  const QByteArray bytes = text.toLatin1();
  fwrite(bytes.constData(), 1, bytes.size(), stdout);
  fflush(stdout);
}

int fail(const QString& text, ExitStatus status = kFailed) {
  fprintf(stderr, "ost_capture: %s\n", text.toLatin1().constData());
  return status;
}

bool loadMap(const QString& name, InsertPlan& plan, QString& error) {
  QFile file(fileFromWire(name));
  if (!file.open(QIODevice::ReadOnly)) {
    error = QStringLiteral("Cannot read the capture map '%1': %2.").arg(name, file.errorString());
    return false;
  }
  if (readCaptureMap(file.readAll(), plan, error)) return true;
  error = QStringLiteral("The capture map '%1' is damaged: %2").arg(name, error);
  return false;
}

/// An output file that appears only when it is complete.
class Output {
 public:
  bool open(const QString& name, QString& error) {
    if (name.isEmpty()) return true;
    name_ = name;
    file_.setFileName(fileFromWire(name));
    return file_.open(QIODevice::WriteOnly) || fail(error);
  }
  bool isWanted() const { return !name_.isEmpty(); }
  bool write(const QByteArray& text, QString& error) {
    return (file_.write(text) == text.size() && file_.commit()) || fail(error);
  }

 private:
  bool fail(QString& error) {
    error = QStringLiteral("Cannot write '%1': %2.").arg(name_, file_.errorString());
    return false;
  }
  QString name_;
  QSaveFile file_;
};

QString infoText(const InsertPlan& plan) {
  QString text = QStringLiteral("design %1, project %2, hash %3: the hardware agrees with the capture map\n")
                     .arg(plan.topModule, plan.projectName, QString::fromLatin1(plan.projectHash));
  for (const PlanCore& core : plan.cores) {
    text += QStringLiteral("core %1: %2 probe bits, clock %3, %4 window(s) of %5 samples of %6 bits\n")
                .arg(core.name)
                .arg(core.probeWidth())
                .arg(core.sampleClock.name)
                .arg(core.windows)
                .arg(core.windowSamples)
                .arg(core.sampleBits());
    for (const PlanUnit& unit : core.units)
      text += QStringLiteral("  unit %1: %2 bits %3 %4 (%5)\n")
                  .arg(unit.name)
                  .arg(unit.width)
                  .arg(operatorText(unit.op), unit.valueText, radixText(unit.radix));
    for (const PlanExpression& expression : core.expressions)
      text += QStringLiteral("  expression %1: %2\n").arg(expression.name, expression.text);
  }
  return text;
}

int showStatus(CoreReader& reader, const InsertPlan& plan, const QString& only, QString& error) {
  for (int i = 0; i < plan.cores.size(); ++i) {
    if (!only.isEmpty() && plan.cores[i].name != only) continue;
    CoreStatus status;
    if (!reader.status(i, status, error)) return fail(error);
    print(QStringLiteral("core %1: %2\n").arg(plan.cores[i].name, statusSummary(plan.cores[i], status)));
  }
  return kDone;
}

int reportNoTrigger(CoreReader& reader, int core, const RunSettings& settings, double seconds) {
  CoreStatus status;
  QString error;
  if (!reader.status(core, status, error)) return fail(error);
  const QStringList reasons = explainWaiting(settings, status);
  fail(QStringLiteral("core '%1' has not completed its capture within %2 s:\n  %3")
           .arg(settings.core().name)
           .arg(seconds)
           .arg(reasons.join(QLatin1String("\n  "))));
  // The message above is what counts; a core that cannot even be stopped has been explained by it.
  reader.stop(core, error);
  return kNoTrigger;
}

int run(const CaptureOptions& options) {
  InsertPlan plan;
  QString error;
  if (!loadMap(options.mapFile, plan, error)) return fail(error);
  const bool capturing = !options.status && !options.info;
  const bool needsCore = capturing || !options.core.isEmpty();
  const int core = needsCore ? chooseCore(plan, options, error) : 0;
  if (core < 0 || plan.cores.isEmpty()) return fail(error.isEmpty() ? QStringLiteral("The map has no core.") : error);
  RunSettings settings(plan.cores[core]);
  Output vcd, csv;
  if (!applyRunOptions(options, settings, error) || !vcd.open(options.vcdFile, error) ||
      !csv.open(options.csvFile, error))
    return fail(error);

  const std::unique_ptr<RemoteBitbang> port = RemoteBitbang::connect(options.server, 10, error);
  if (!port) return fail(error);
  HubLink hub(*port, options.instruction);
  CoreReader reader(hub, plan);
  if (!reader.identify(error)) return fail(error);
  if (options.info) print(infoText(plan));
  if (options.status) return showStatus(reader, plan, options.core, error);
  if (!capturing) return kDone;

  if (!reader.arm(core, settings, error)) return fail(error);
  const WaitLimit limit = {options.timeoutSeconds, 0};
  const WaitResult result = reader.waitUntilDone(core, limit, error);
  if (result == WaitResult::NotYet) return reportNoTrigger(reader, core, settings, options.timeoutSeconds);
  Capture capture;
  if (result == WaitResult::Failed || !reader.readOut(core, settings, capture, error)) return fail(error);

  print(QStringLiteral("core %1: %2 window(s) of %3 samples, %4 before the trigger; %5 TCK cycles, %6 repeats\n")
            .arg(settings.core().name)
            .arg(capture.windows.size())
            .arg(settings.core().windowSamples)
            .arg(settings.position())
            .arg(hub.cycles())
            .arg(hub.retries()));
  if ((vcd.isWanted() && !vcd.write(captureToVcd(capture, plan.topModule), error)) ||
      (csv.isWanted() && !csv.write(captureToCsv(capture), error)))
    return fail(error);
  if (options.wave || (!vcd.isWanted() && !csv.isWanted())) print(QString::fromLatin1(captureToWave(capture)));
  return kDone;
}

}  // namespace
}  // namespace ost

int main(int argc, char** argv) {
  QStringList words;
  for (int i = 1; i < argc; ++i) words += QString::fromLatin1(argv[i]);
  ost::CaptureOptions options;
  QString error;
  if (!ost::parseCaptureOptions(words, options, error)) return ost::fail(error, ost::kWrongUse);
  if (options.help) {
    ost::print(ost::captureUsage());
    return ost::kDone;
  }
  return ost::run(options);
}
