// The service's instance, and the lookups that its operations share.
#include "framework/ist_com_data.h"
#include "platform/istcomdata/name_patterns.h"
#include "platform/istcomdata/service_private.h"
#include "platform/istdata/design_flags.h"
#include "platform/istdata/project_checks.h"

namespace ost {

bool resolveNet(const QString& name, NetSelection& selection, QString& error) {
  const std::shared_ptr<const Design> design = DesignSession::instance().design();
  if (!design) {
    error = noDesignText();
    return false;
  }
  if (!checkNetName(name, error)) return false;
  if (design->resolve(name, selection, error))
    return selection.canonicalName == name || checkNetName(selection.canonicalName, error);
  if (isPattern(name))
    error += QLatin1String("; one name is needed here, ost_design nets -glob lists those that fit a pattern");
  return false;
}

}  // namespace ost

namespace mero {
namespace ostrel {

IstComData* IstComData::getInstance() {
  static IstComData instance;
  return &instance;
}

IstComData::IstComData() : d(new Private) {
  // Events are served while a design is read, too; a command that they start must not edit then.
  Private* state = d;
  ost::DesignSession::instance().setIdleHook([state] {
    ost::BusyTask busy(state->busyTasks);
    return tcl_cmdex::servePendingEvents();
  });
}

IstComData::~IstComData() {
  ost::DesignSession::instance().setIdleHook({});
  delete d;
}

istProject* IstComData::currentProject() {
  return d->project.get();
}

QString IstComData::currentProjectFile() {
  return d->project ? d->project->fileName : QString();
}

RTLHierachy* IstComData::hierarchy() {
  ost::DesignFlags flags;
  if (const auto design = ost::DesignSession::instance().design()) {
    const ost::DesignRoles& roles = design->roles();
    flags = {roles.dcu, roles.j2w, roles.jtag2wb, roles.jtag2wbCore};
  }
  ost::setDesignFlags(flags);
  return &d->hierarchy;
}

bool IstComData::isProjBusy() {
  return d->isBusy();
}

bool IstComData::Private::fail(ToldBy teller, const QString& error, QString& message) {
  message = teller == ToldBy::CommandLine ? error : error + QLatin1Char('\n');
  return fail(teller, error);
}

bool IstComData::Private::fail(ToldBy teller, const QString& error) {
  reason = teller == ToldBy::Number ? error : QString();
  if (teller == ToldBy::Console) ost::say(error);
  return false;
}

ost::Core* IstComData::Private::coreOf(const istDataset* dataset) const {
  if (project)
    for (const auto& core : project->cores)
      if (&core->dataset == dataset) return core.get();
  return nullptr;
}

bool IstComData::Private::resolveOption(const char* option, QString& net) {
  if (net.isEmpty()) return true;
  ost::NetSelection selection;
  QString error;
  if (!ost::resolveNet(net, selection, error))
    return fail(ToldBy::Console, QStringLiteral("%1 is unchanged: %2").arg(QLatin1String(option), error));
  net = selection.canonicalName;
  return true;
}

}  // namespace ostrel
}  // namespace mero
