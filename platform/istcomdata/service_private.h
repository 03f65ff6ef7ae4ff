// The service's state and what its sources share. Everything runs on the interpreter's thread.
#pragma once

#include <QByteArray>
#include <memory>

#include "framework/ist_com_data.h"
#include "platform/design/design_session.h"
#include "platform/istcomdata/project_storage.h"
#include "platform/istdata/project.h"
#include "platform/netlist/netlist.h"
#include "platform/plan/insert_plan.h"
#include "platform/tclcmdex/host.h"

namespace mero {
namespace ostrel {

/// Inside the service an operation that fails returns false and leaves a sentence in its `error`. Who shows that to the
/// user is the contract's choice for each operation, and Private::fail() the one place that passes it on.
enum class ToldBy {
  Command,      ///< The command shows `message` as it is, so it ends with a line feed.
  CommandLine,  ///< The command shows `message` and adds the line feed.
  Number,       ///< The command prints a numbered message, which takes up the reason.
  Console       ///< The command says nothing of the reason; the service prints it.
};

class IstComData::Private {
 public:
  std::unique_ptr<istProject> project;
  ost::ProjectStorage storage;
  RTLHierachy hierarchy;
  int busyTasks = 0;
  bool followsDesign = false;
  /// Why the last operation failed whose text the command layer does not show; the next numbered message that tells
  /// of the failure takes it up.
  QString reason;

  /// What the design rules passed last: an insertion takes that and nothing else.
  struct Checked {
    std::weak_ptr<const ost::Design> design;
    QByteArray project;  ///< Its state(); empty when nothing passed.
    std::shared_ptr<const ost::InsertPlan> plan;
    QStringList findings;  ///< Lines of the check.
  } checked;

  /// The full netlist of the design that was checked or inserted last; null when there is none yet.
  std::shared_ptr<const ost::Netlist> netlist;

  void markChanged() {
    if (project) project->changed = true;
  }
  /// Ends an operation whose `error` is to be told. Returns false.
  bool fail(ToldBy teller, const QString& error, QString& message);
  bool fail(ToldBy teller, const QString& error);
  /// Sets a field of the project, which counts as a change only when the value differs.
  template <class Field, class Value>
  void assign(Field& field, const Value& value) {
    if (field == value) return;
    field = value;
    markChanged();
  }
  /// While a task of its own runs, or a command inside another one, which may hold what an edit would take away.
  bool isBusy() const { return busyTasks > 0 || tcl_cmdex::dispatchDepth() > 1; }
  /// A digest of all that an insertion takes from the project.
  QByteArray state() const;
  ost::Core* coreOf(const istDataset* dataset) const;
  bool mayReplaceProject(QString& error) const;
  bool save(QString& error);
  bool saveAs(const QString& fileName, QString& error);
  /// Keeps what was read as a file list beside the project. A list of that name by somebody else stays as it is; what
  /// goes wrong is said on the console.
  void keepDesign();
  /// Resolves a net that a core's option names, for storing; empty stays empty. Prints why not.
  bool resolveOption(const char* option, QString& net);
  bool bringDesignUpToDate(QString& error);
  bool loadNetlist(const ost::Design& design, QString& error);
  /// `directory` is where the instrumented design goes.
  bool insert(QString& directory, QString& proved, QString& error);
};

}  // namespace ostrel
}  // namespace mero

namespace ost {

inline Core* asCore(mero::ostrel::istCore* core) {
  return static_cast<Core*>(core);
}
inline TraceTree* asTree(mero::ostrel::istTraceData* trace) {
  return static_cast<TraceTree*>(trace);
}

/// While one lives, the project is busy.
class BusyTask {
 public:
  explicit BusyTask(int& tasks) : tasks_(tasks) { ++tasks_; }
  ~BusyTask() { --tasks_; }
  BusyTask(const BusyTask&) = delete;
  BusyTask& operator=(const BusyTask&) = delete;

 private:
  int& tasks_;
};

/// Prints a line on the console of the interpreter that runs the command.
void say(const QString& line);
/// What the user should know of the reading of the design that is loaded.
void sayNotes();

/// Resolves a name against the loaded design. False, with the nearest names, when it is no net; without a design the
/// error says how to load one.
bool resolveNet(const QString& name, NetSelection& selection, QString& error);

}  // namespace ost
