// No event is served while something is exchanged with the hub, only between two looks: what an event's script does to
// the hub, even closing it, finds it at rest.
#include "platform/ost_capture/hub_object.h"

#include "platform/ost_capture/capture_object.h"

namespace ost {
namespace {

constexpr double kLookSeconds = 0.02;  ///< Of all cores, before events get their turn.
constexpr int kPauseMilliseconds = 2;  ///< For events that have been put off until the program is idle.

void addClock(TclList& list, const SerdesLook& look, const SerdesCount& clock) {
  list.add("cycles", Tcl_NewIntObj(clock.count * kSerdesDivider));
  list.add("rate", Tcl_NewDoubleObj(look.rate(clock)));
  list.add("rateError", Tcl_NewDoubleObj(look.rateError()));
}

}  // namespace

const QVector<SubCommand<HubObject>>& HubObject::table() {
  static const QVector<SubCommand<HubObject>> table = {
      {"arm", "", kUseArm, 0, -1, method<&HubObject::arm>},
      {"close", "", OptionUse(), 0, 0, method<&HubObject::close>},
      {"read", "", OptionUse(), 0, 0, method<&HubObject::read>},
      {"serdes", "", kUseSerdes, 0, 1, method<&HubObject::serdes>},
      {"status", "", OptionUse(), 0, 0, method<&HubObject::status>},
      {"wait", "?-command PREFIX?", kUseWait, 0, -1, method<&HubObject::wait>},
      {"wb", WishboneCommand::kUsage, OptionUse(), 1, -1, method<&HubObject::wb>},
  };
  return table;
}

HubObject::HubObject(Tcl_Interp* interp, const CaptureOptions& options)
    : interp_(interp), session_(std::make_unique<HubSession>(options)) {}

int HubObject::open(Tcl_Interp* interp, const CaptureOptions& options) {
  const auto hub = std::make_shared<HubObject>(interp, options);
  QString error, ignored;
  if (!hub->session_->loadMap(error)) return failWith(interp, error, capture_error::kMap);
  if (!hub->session_->open(error)) {
    hub->session_->close(ignored);
    return failWith(interp, error, capture_error::kLink);
  }
  // Without it the simulation would be killed at the program's exit, which does not delete its interpreters.
  Tcl_CreateExitHandler(onExit, hub.get());
  hub->token_ = ObjectCommand<HubObject>::create(interp, hub);
  return TCL_OK;
}

void HubObject::onExit(ClientData data) {
  QString ignored;
  static_cast<HubObject*>(data)->closeSession(ignored);
}

void HubObject::commandIsGone() {
  QString ignored;
  token_ = nullptr;
  closeSession(ignored);
}

bool HubObject::closeSession(QString& error) {
  if (timer_) Tcl_DeleteTimerHandler(timer_);
  timer_ = nullptr;
  dropCallback();
  if (!session_) return true;
  Tcl_DeleteExitHandler(onExit, this);
  const std::unique_ptr<HubSession> session = std::move(session_);
  return session->close(error);
}

void HubObject::dropCallback() {
  if (callback_) Tcl_DecrRefCount(callback_);
  callback_ = nullptr;
}

int HubObject::failBroken(const SubCall& call, const QString& error) {
  isArmed_ = false;
  return call.fail(session_->explained(error), capture_error::kLink);
}

int HubObject::arm(const SubCall& call) {
  if (isWaiting_)
    return call.fail(QStringLiteral("A wait for this hub is under way; arm it after that."), capture_error::kState);
  CaptureOptions options;
  QString error;
  if (!parseCaptureOptions(call.words, options, error, kUseArm)) return call.failUsage(error);
  if (!session_->chooseRuns(options, error)) return call.fail(error, capture_error::kValue);
  isArmed_ = session_->run().arm(error);
  return isArmed_ ? TCL_OK : failBroken(call, error);
}

int HubObject::status(const SubCall& call) {
  TclList list;
  const QVector<PlanCore>& cores = session_->plan().cores;
  for (int i = 0; i < cores.size(); ++i) {
    CoreStatus status;
    QString error;
    if (!session_->reader().status(i, status, error)) return failBroken(call, error);
    list.add(tclFromText(cores[i].name));
    list.add(tclFromText(statusSummary(cores[i], status)));
  }
  Tcl_SetObjResult(interp_, list);
  return TCL_OK;
}

int HubObject::read(const SubCall& call) {
  if (!isArmed_ || isWaiting_)
    return call.fail(isArmed_ ? QStringLiteral("A wait for this hub is under way; read it after that.")
                              : QStringLiteral("No core of this hub is armed; use \"arm\" and \"wait\" first."),
                     capture_error::kState);
  QString error;
  const CaptureRun::End end = session_->run().look(0, error);
  if (!error.isEmpty()) return failBroken(call, error);
  if (end != CaptureRun::End::Done)
    return call.fail(QStringLiteral("The capture is not complete; use \"wait\" before \"read\"."),
                     capture_error::kState);
  if (!session_->run().readOut(error)) return failBroken(call, error);
  return CaptureObject::create(interp_, session_->captures());
}

/// Between the looks of a wait, too: a transfer does not disturb a run.
int HubObject::wb(const SubCall& call) {
  WishboneCommand command;
  QVector<quint32> numbers;
  QString error;
  if (!parseWishboneCommand(call.words, command, error)) return call.failUsage(error);
  if (!session_->plan().wishbone) {
    session_->runWishbone(command, numbers, error);
    return call.fail(error, capture_error::kValue);
  }
  if (!session_->runWishbone(command, numbers, error))
    return call.fail(session_->explained(error), capture_error::kBus);
  TclList list;
  for (const quint32 number : numbers) list.add(tclFromText(wishboneNumber(command, number)));
  Tcl_SetObjResult(interp_, list);
  return TCL_OK;
}

/// Does not disturb a run either.
int HubObject::serdes(const SubCall& call) {
  CaptureOptions options;
  QString error;
  if (!parseCaptureOptions(call.words, options, error, kUseSerdes)) return call.failUsage(error);
  if (!session_->hasSerdes(error)) return call.fail(error, capture_error::kValue);
  SerdesLook look;
  if (!session_->readSerdes(options.clear, look, error)) return failBroken(call, error);
  const PlanSerdes& plan = *session_->plan().serdes;
  TclList list, tck, clocks, levels;
  for (int i = 0; i < plan.clocks.size(); ++i) {
    TclList clock;
    addClock(clock, look, look.clocks[i]);
    clocks.add(tclFromText(plan.clocks[i].net.name));
    clocks.add(clock);
  }
  for (int i = 0; i < plan.levels.size(); ++i) {
    TclList level;
    level.add("word", tclFromText(plan.levels[i].word));
    level.add("level", Tcl_NewIntObj(look.levels[i].level));
    level.add("changed", Tcl_NewIntObj(look.levels[i].changed));
    level.add("rises", Tcl_NewIntObj(look.levels[i].rises.count));
    level.add("full", Tcl_NewIntObj(look.levels[i].rises.isFull));
    levels.add(tclFromText(plan.levels[i].net.name));
    levels.add(level);
  }
  addClock(tck, look, look.tck);
  list.add("sampleClock", tclFromText(plan.clock.name));
  list.add("inReset", Tcl_NewIntObj(look.inReset));
  list.add("sampleClocks", Tcl_NewWideIntObj(look.sampleClocks));
  list.add("tck", tck);
  list.add("clocks", clocks);
  list.add("levels", levels);
  Tcl_SetObjResult(interp_, list);
  return TCL_OK;
}

int HubObject::close(const SubCall& call) {
  QString error;
  const bool closed = closeSession(error);
  Tcl_DeleteCommandFromToken(interp_, token_);
  return closed ? TCL_OK : call.fail(error, capture_error::kFile);
}

bool HubObject::look(double seconds, Outcome& outcome) {
  QString error;
  isWaiting_ = false;  // Should memory end here, the wait has ended, too.
  const CaptureRun::End end = session_->run().look(seconds, error);
  isWaiting_ = end == CaptureRun::End::NotYet;
  if (isWaiting_) return false;
  outcome = {"done", QString(), nullptr};
  if (end == CaptureRun::End::Done) return true;
  isArmed_ = false;
  outcome = {"failed", QString(), capture_error::kLink};
  if (end == CaptureRun::End::Failed)
    outcome.text = session_->explained(error);
  else if (session_->run().explain(end, error, outcome.text))
    outcome = {"timeout", outcome.text, capture_error::kTimeout};
  return true;
}

int HubObject::wait(const SubCall& call) {
  CaptureOptions options;
  QStringList words = call.words;
  QString error, command;
  for (int i = words.size() - 2; i >= 0; i -= 2) {
    if (words[i] != QLatin1String("-command")) continue;
    command = words[i + 1];
    words.erase(words.begin() + i, words.begin() + i + 2);
  }
  if (!parseCaptureOptions(words, options, error, kUseWait)) return call.failUsage(error);
  if (!isArmed_ || isWaiting_)
    return call.fail(isArmed_ ? QStringLiteral("A wait for this hub is under way already.")
                              : QStringLiteral("No core of this hub is armed; use \"arm\" first."),
                     capture_error::kState);
  isWaiting_ = true;
  session_->run().beginWait(options.timeoutSeconds);
  if (command.isEmpty()) return waitHere(call);
  callback_ = tclFromText(command);
  Tcl_IncrRefCount(callback_);
  lookLater();
  return TCL_OK;
}

int HubObject::waitHere(const SubCall& call) {
  Outcome outcome;
  do {
    if (!tcl_cmdex::servePendingEvents() || !session_)
      return call.fail(QStringLiteral("The hub was closed during the wait."), capture_error::kClosed);
  } while (!look(kLookSeconds, outcome));
  return outcome.errorCode ? call.fail(outcome.text, outcome.errorCode) : TCL_OK;
}

void HubObject::lookLater() {
  timer_ = Tcl_CreateTimerHandler(kPauseMilliseconds, onTimer, this);
}

void HubObject::onTimer(ClientData data) {
  const std::shared_ptr<HubObject> hub = static_cast<HubObject*>(data)->shared_from_this();
  Tcl_Interp* const interp = hub->interp_;
  hub->timer_ = nullptr;
  Tcl_Preserve(interp);
  const int status = tcl_cmdex::runGuarded(interp, "ost_capture", [&] { return hub->lookFromTimer(); });
  if (status != TCL_OK && !Tcl_InterpDeleted(interp)) Tcl_BackgroundError(interp);
  // Refused, as too many commands are at work inside one another.
  if (hub->isWaiting_ && hub->callback_ && !hub->timer_) hub->lookLater();
  Tcl_Release(interp);
}

int HubObject::lookFromTimer() {
  Outcome outcome;
  if (look(kLookSeconds, outcome)) return callBack(outcome);
  lookLater();
  return TCL_OK;
}

int HubObject::callBack(const Outcome& outcome) {
  Tcl_Obj* const words = Tcl_DuplicateObj(callback_);
  dropCallback();
  Tcl_IncrRefCount(words);
  Tcl_Obj* const name = Tcl_NewObj();
  Tcl_GetCommandFullName(interp_, token_, name);
  Tcl_Obj* const added[] = {name, Tcl_NewStringObj(outcome.word, -1), tclFromText(outcome.text)};
  int status = TCL_OK;
  for (Tcl_Obj* const word : added)
    if (status == TCL_OK) status = Tcl_ListObjAppendElement(interp_, words, word);
  if (status == TCL_OK) status = Tcl_EvalObjEx(interp_, words, TCL_EVAL_GLOBAL | TCL_EVAL_DIRECT);
  Tcl_DecrRefCount(words);
  return status;
}

}  // namespace ost
