// The design-rule check and the insertion: both work on the design as it is on disk now, and serve the interpreter's
// events meanwhile.
#include <QCryptographicHash>
#include <QFileInfo>

#include "framework/ist_com_data.h"
#include "platform/insert/insertion.h"
#include "platform/insert/jtag_wrapper.h"
#include "platform/istcomdata/service_private.h"
#include "platform/istdata/project_file.h"
#include "platform/rtl/debug_module.h"
#include "platform/rules/design_rules.h"
#include "platform/tclcmdex/progress_line.h"
#include "platform/text/byte_text.h"

namespace mero {
namespace ostrel {

namespace {

void sayEstimate(const ost::InsertPlan& plan) {
  const auto line = [](const QString& object, const ost::ResourceEstimate& e) {
    ost::say(QStringLiteral("%1: about %2 LUTs of six inputs, %3 flip-flops, %4 block RAM%5 of 36 Kbit, %6 memory bits")
                 .arg(object)
                 .arg(e.luts)
                 .arg(e.flipFlops)
                 .arg(e.blockRams)
                 .arg(QLatin1String(e.blockRams == 1 ? "" : "s"))
                 .arg(e.memoryBits));
  };
  for (const ost::PlanCore& core : plan.cores) line(QLatin1String("Core ") + core.name, ost::estimateCore(core));
  if (plan.wishbone) line(QStringLiteral("Wishbone master"), ost::estimateWishbone(*plan.wishbone));
  if (plan.serdes) line(QStringLiteral("Serdes core"), ost::estimateSerdes(*plan.serdes));
  line(QStringLiteral("JTAG hub"), ost::estimateHub(plan));
}

}  // namespace

bool IstComData::Private::bringDesignUpToDate(QString& error) {
  ost::DesignSession& session = ost::DesignSession::instance();
  const std::shared_ptr<const ost::Design> design = session.design();
  if (!design) {
    error = ost::noDesignText();
    return false;
  }
  if (!followsDesign || !design->isStale()) return true;
  ost::say(QStringLiteral("The design has changed on disk; reading it again."));
  if (session.refresh(error)) {
    ost::sayNotes();
    return true;
  }
  error = QStringLiteral("The design has changed on disk and could not be read again: %1").arg(error);
  return false;
}

bool IstComData::Private::loadNetlist(const ost::Design& design, QString& error) {
  tcl_cmdex::ProgressLine progress("Elaborating the full netlist");
  netlist = ost::netlistOf(design, error, [&progress] { return progress.tick(); });
  return netlist != nullptr;
}

QByteArray IstComData::Private::state() const {
  QCryptographicHash hash(QCryptographicHash::Sha256);
  hash.addData(ost::projectToJson(*project));
  for (const auto& core : project->cores) hash.addData(QByteArray(core->enabled ? "+" : "-"));
  return hash.result();
}

bool IstComData::DRC(QString& message) {
  if (!d->project) return false;
  ost::BusyTask busy(d->busyTasks);
  d->checked = {};
  QString error;
  if (!d->bringDesignUpToDate(error)) return d->fail(ToldBy::Command, error, message);
  // Both are held from here on: what is served meanwhile may change neither the design nor the project.
  const std::shared_ptr<const ost::Design> design = ost::DesignSession::instance().design();
  const QByteArray state = d->state();
  const bool hasNetlist = d->loadNetlist(*design, error);
  for (const auto& core : d->project->cores) core->trace->compact();
  bool cancelled = false;
  tcl_cmdex::ProgressLine progress("Checking the design rules");
  const ost::DesignCheck check =
      ost::checkDesignRules(*d->project, *design, hasNetlist ? d->netlist.get() : nullptr,
                            [&cancelled, &progress] { return !(cancelled = cancelled || !progress.tick()); });
  if (cancelled) return false;
  message = ost::designRuleReport(check.findings);
  if (!hasNetlist) message += QStringLiteral("ERROR: %1\n").arg(error);
  if (!check.fault.isEmpty()) message += QStringLiteral("ERROR: %1\n").arg(check.fault);
  if (!hasNetlist || !check.plan) return false;
  d->checked = {design, state, check.plan, message.split(QLatin1Char('\n'), Qt::SkipEmptyParts)};
  return true;
}

bool IstComData::Private::insert(QString& directory, QString& proved, QString& error) {
  const std::shared_ptr<const ost::Design> design = ost::DesignSession::instance().design();
  if (!design) {
    error = ost::noDesignText();
    return false;
  }
  ost::ProofMode proof = ost::ProofMode::Off;
  if (!ost::DesignSession::instance().proofMode(proof, error)) return false;
  if (!ost::ProjectStorage::outputFolderOf(project->fileName, directory, error) || !loadNetlist(*design, error))
    return false;
  for (const auto& core : project->cores) core->trace->compact();
  const Checked passed = checked;  // held: what is served meanwhile may check again
  if (!passed.plan || passed.design.lock() != design || passed.project != state()) {
    error = QStringLiteral(
        "The project or its design is not what the design rules passed; run the command again: ost_project run.");
    return false;
  }
  ost::InsertPlan plan = *passed.plan;
  if (!ost::planJtag(ost::DesignSession::instance().jtag(), plan.jtag, error)) return false;
  sayEstimate(plan);
  // Two projects can mean one folder, an untitled one and "untitled.ost" for example.
  const QString file = QFileInfo(ost::fileFromText(project->fileName)).fileName();
  const ost::InsertionRequest request{directory, proof, passed.findings,
                                      file.isEmpty() ? QStringLiteral("(untitled)") : file};
  tcl_cmdex::ProgressLine progress("Inserting");
  const ost::InsertionHooks hooks{
      [&progress](const QString& line) { progress.say(line.toLatin1().toStdString()); },
      [&progress](const QString& stage) { progress.setStage(stage.toLatin1().toStdString()); },
      [&progress] { return progress.tick(); }};
  return ost::runInsertion(plan, *design, netlist, request, hooks, error, &proved);
}

bool IstComData::Insert(int) {
  if (!d->project) return false;
  ost::BusyTask busy(d->busyTasks);
  QString directory, proved, error;
  if (!d->insert(directory, proved, error))
    return d->fail(ToldBy::Console, QStringLiteral("ERROR: Nothing was inserted: %1").arg(error));
  d->keepDesign();
  ost::say(QStringLiteral("The instrumented design is in \"%1\"%2.").arg(ost::textFromFile(directory), proved));
  return true;
}

}  // namespace ostrel
}  // namespace mero
