// Creating, opening, saving and closing projects.
#include "framework/ist_com_data.h"
#include "platform/design/design_list.h"
#include "platform/istcomdata/service_private.h"
#include "platform/istdata/project_file.h"
#include "platform/text/byte_text.h"
#include "platform/text/near_names.h"

namespace mero {
namespace ostrel {

namespace {

const int kVanishedShown = 10;  ///< Vanished nets that opening a project names; the design rules name all.

/// Every net that the project names.
template <class Visit>
void forEachNet(const istProject& project, Visit visit) {
  const auto visitTrace = [&visit](const auto& self, const QString& where, const QList<TraceNode*>& nodes) -> void {
    for (const TraceNode* node : nodes) {
      if (node->kind == TRACE_NODE_SIGNAL) visit(where, node->displayName());
      if (node->kind == TRACE_NODE_BUS) self(self, where, node->children);
    }
  };
  for (const auto& core : project.cores) {
    const QString where = QLatin1String("core ") + core->name;
    for (const QString& net :
         {core->options.sampleClock, core->options.sampleEnableSignal, core->options.triggerEnableSignal})
      if (!net.isEmpty()) visit(where, net);
    visitTrace(visitTrace, where, core->trace->nodes);
    for (const auto& unit : core->dataset.units())
      for (const QString& net : unit->unit.signalNames) visit(where + QLatin1String(", unit ") + unit->unit.name, net);
  }
}

/// Lines about nets that the design does not hold, or about the design that is not there.
QString vanishedReport(const istProject& project) {
  const std::shared_ptr<const ost::Design> design = ost::DesignSession::instance().design();
  if (!design) return ost::noDesignText() + QLatin1String(" The project's nets were not checked.\n");
  QString report;
  int count = 0;
  forEachNet(project, [&](const QString& where, const QString& net) {
    if (design->exists(net) || ++count > kVanishedShown) return;
    const QString hint = ost::nearHint(design->nearest(net));
    report +=
        QStringLiteral("WARNING: %1: the design has no net %2%3; it is kept.\n").arg(where, ost::quoted(net), hint);
  });
  if (count > kVanishedShown)
    report += QStringLiteral("WARNING: %1 more nets are missing; ost_project run -drc lists all.\n")
                  .arg(count - kVanishedShown);
  return report;
}

/// How to load a design, with the file lists that lie in the current folder: one of them may be the project's own.
QString howToReadText() {
  constexpr int kMostNamed = 5;
  const QStringList lists = ost::listsInFolder();
  QString text = QStringLiteral("No design is loaded. Read it first, for example:\n  package require ost_platform\n");
  if (lists.isEmpty()) text += QLatin1String("  ost_design read -top top top.v\n");
  for (const QString& list : lists.mid(0, kMostNamed)) text += QStringLiteral("  ost_design read -f %1\n").arg(list);
  if (lists.size() > kMostNamed)
    text += QStringLiteral("  (and %1 more file lists in this folder)\n").arg(lists.size() - kMostNamed);
  return text + QLatin1String("or name a file list or a Yosys JSON netlist in the environment variable OST_DESIGN.");
}

}  // namespace

bool IstComData::LoadDesign(QString& message) {
  ost::DesignSession& session = ost::DesignSession::instance();
  if (session.design()) return true;
  if (d->isBusy()) {
    message = QStringLiteral("No design is loaded, and none can be read while another command is at work.");
    return false;
  }
  QString error;
  bool loaded = false;
  {
    ost::BusyTask busy(d->busyTasks);
    loaded = !qEnvironmentVariableIsEmpty("OST_DESIGN") && session.readFromEnvironment(error) && session.design();
  }
  if (loaded) {
    ost::sayNotes();
    return true;
  }
  // The command layer shows no text for a new project, and the message for one that is opened: the details go to the
  // console once, the message only says what failed.
  const bool none = error.isEmpty();
  if (none) error = howToReadText();
  message = none ? QStringLiteral("No design is loaded.")
                 : QStringLiteral("The design named by OST_DESIGN could not be read.");
  return d->fail(ToldBy::Console, error);
}

bool IstComData::Private::mayReplaceProject(QString& error) const {
  if (isBusy())
    error = QStringLiteral("The current project is busy; wait until the command that is at work has ended.");
  else if (project && project->changed)
    error = QStringLiteral(
                "The open project %1 has unsaved changes: save it (ost_project save), or drop them "
                "(ost_project close -force), first.")
                .arg(project->fileName.isEmpty() ? QStringLiteral("Untitled") : ost::quoted(project->fileName));
  return error.isEmpty();
}

bool IstComData::NewProject(QString& message) {
  QString error;
  if (!d->mayReplaceProject(error)) return d->fail(ToldBy::Command, error, message);
  d->storage.release();
  d->project.reset(new istProject);
  return true;
}

bool IstComData::NewProject(const QString& fileName, QString& message) {
  QString error;
  if (!d->mayReplaceProject(error)) return d->fail(ToldBy::Command, error, message);
  QString file;
  ost::ProjectStorage::Claim claim;  // whose end removes the lock file when the operation fails
  auto project = std::make_unique<istProject>();
  const QByteArray bytes = ost::projectToJson(*project);
  if (!ost::ProjectStorage::fileOf(fileName, file, error) || !d->storage.claim(file, claim, error) ||
      !d->storage.write(file, bytes, error))
    return d->fail(ToldBy::Command, error, message);
  d->storage.adopt(std::move(claim), bytes);
  project->fileName = ost::textFromFile(file);
  d->project = std::move(project);
  return true;
}

bool IstComData::OpenProject(const QString& fileName, QString& message) {
  QString error;
  if (!d->mayReplaceProject(error)) return d->fail(ToldBy::Command, error, message);
  QString file;
  ost::ProjectStorage::Claim claim;
  QByteArray bytes;
  // Read before the lock, so that a name without a file leaves no lock file behind even for a moment.
  if (!ost::ProjectStorage::fileOf(fileName, file, error) || !d->storage.read(file, bytes, error) ||
      !d->storage.claim(file, claim, error) || !d->storage.read(file, bytes, error))
    return d->fail(ToldBy::Command, error, message);
  std::unique_ptr<istProject> project = ost::projectFromJson(bytes, error);
  if (!project)
    return d->fail(ToldBy::Command, QStringLiteral("%1 cannot be opened: %2").arg(ost::quoted(fileName), error),
                   message);
  d->storage.adopt(std::move(claim), bytes);
  project->fileName = ost::textFromFile(file);
  d->project = std::move(project);
  message = vanishedReport(*d->project);
  return true;
}

bool IstComData::Private::save(QString& error) {
  if (!project) {
    error = QStringLiteral("No project is open.");
    return false;
  }
  if (project->fileName.isEmpty()) {
    error = QStringLiteral("The project has no file yet; name one: ost_project save <file>.");
    return false;
  }
  const QByteArray bytes = ost::projectToJson(*project);
  if (!storage.claimAgain(error) || !storage.isUntouched(bytes, error) || !storage.write(storage.file(), bytes, error))
    return false;
  storage.noteWritten(bytes);
  project->changed = false;
  keepDesign();
  return true;
}

bool IstComData::Private::saveAs(const QString& fileName, QString& error) {
  if (!project) {
    error = QStringLiteral("No project is open.");
    return false;
  }
  QString file;
  ost::ProjectStorage::Claim claim;
  if (!ost::ProjectStorage::fileOf(fileName, file, error) || !storage.claim(file, claim, error)) return false;
  const QByteArray bytes = ost::projectToJson(*project);
  if (!storage.write(file, bytes, error)) return false;
  storage.adopt(std::move(claim), bytes);
  project->fileName = ost::textFromFile(file);
  project->changed = false;
  keepDesign();
  return true;
}

bool IstComData::SaveProject(QString& message) {
  QString error;
  return d->save(error) || d->fail(ToldBy::Number, error, message);
}

bool IstComData::SaveProjectAs(const QString& fileName, QString& message) {
  QString error;
  return d->saveAs(fileName, error) || d->fail(ToldBy::Number, error, message);
}

bool IstComData::isProjChanged() {
  return d->project && d->project->changed;
}

bool IstComData::CloseProject() {
  if (!d->project) return d->fail(ToldBy::Number, QStringLiteral("No project is open."));
  if (d->isBusy())
    return d->fail(ToldBy::Number, QStringLiteral("It is busy; wait until the command that is at work has ended."));
  d->project.reset();
  d->storage.release();
  return true;
}

void IstComData::registerToHDLmanager() {
  d->followsDesign = true;
}

void IstComData::unregisterToHDLmanager() {
  d->followsDesign = false;
}

}  // namespace ostrel
}  // namespace mero
