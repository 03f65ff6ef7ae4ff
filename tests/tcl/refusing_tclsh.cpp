// A tclsh whose data service records its operations and, where a script asks for it, refuses them or answers otherwise.
// The program's own definitions stand before those of libistcomdata, which they call for everything else. Also here:
// what only a host of the package can do with its handlers.
//
//   refused(OPERATION)   fails, with this text as the service's
//   spoken(OPERATION)    the service's text of an operation that is carried out
//   answered(GETTER)     a number instead of the real one; or "null" for an object
//   calls                what was called since the script emptied it: {OPERATION argument ...} ...
#include <dlfcn.h>
#include <tcl.h>

#include <cstdlib>
#include <cstring>
#include <type_traits>

#include "commands/handlers.h"
#include "framework/ist_com_data.h"
#include "framework/tcl_cmdex.h"

namespace {

Tcl_Interp* host = nullptr;

/// The element of the script's array; null where there is none.
const char* wish(const char* array, const char* name) {
  return Tcl_GetVar2(host, array, name, TCL_GLOBAL_ONLY);
}

void note(Tcl_DString* call, const QString& text) {
  Tcl_DStringAppendElement(call, text.toLatin1().constData());
}
void note(Tcl_DString* call, const QStringList& texts) {
  note(call, texts.join(QLatin1Char('+')));
}
void note(Tcl_DString* call, int number) {
  note(call, QString::number(number));
}
void note(Tcl_DString*, const void*) {}  // the service's own objects

/// The function that this program's `own` hides: the next one of that name.
template <class Member>
Member hidden(Member own) {
  void* address = nullptr;
  std::memcpy(&address, &own, sizeof address);
  Dl_info info;
  if (dladdr(address, &info) && info.dli_sname) address = dlsym(RTLD_NEXT, info.dli_sname);
  std::memcpy(&own, &address, sizeof address);
  return own;
}

/// Puts the wanted text in the place of the service's when the operation has ended.
struct SpokenText {
  ~SpokenText() {
    if (text && message) *message = QString::fromLatin1(text);
  }
  const char* text;
  QString* message;
};

template <class Argument>
void noteUnlessMessage(Tcl_DString* call, const Argument& argument, const QString* message) {
  if (static_cast<const void*>(&argument) != message) note(call, argument);
}

template <class Member, class... Arguments>
auto perform(const char* name, Member own, mero::ostrel::IstComData* service, QString* message, Arguments&... arguments)
    -> decltype((service->*own)(arguments...)) {
  Tcl_DString call;
  Tcl_DStringInit(&call);
  Tcl_DStringAppendElement(&call, name);
  (noteUnlessMessage(&call, arguments, message), ...);
  Tcl_SetVar(host, "calls", Tcl_DStringValue(&call), TCL_GLOBAL_ONLY | TCL_APPEND_VALUE | TCL_LIST_ELEMENT);
  Tcl_DStringFree(&call);

  const char* refusal = wish("refused", name);
  const SpokenText spoken{refusal ? refusal : wish("spoken", name), message};
  if (refusal) return decltype((service->*own)(arguments...))();
  return (service->*hidden(own))(arguments...);
}

/// For numbers, and for objects, which a test can only take away.
template <class Getter, class... Arguments>
auto answer(const char* name, Getter own, mero::ostrel::IstComData* service, Arguments&... arguments) {
  const char* wanted = wish("answered", name);
  if (!wanted) return (service->*hidden(own))(arguments...);
  if constexpr (std::is_pointer_v<decltype((service->*own)(arguments...))>) {
    return static_cast<decltype((service->*own)(arguments...))>(nullptr);
  } else {
    return std::atoi(wanted);
  }
}

}  // namespace

namespace mero {
namespace ostrel {

// The arguments of the call follow where the operation's text goes.
#define OPERATION(Result, name, parameters, ...)                                                                \
  Result IstComData::name parameters {                                                                          \
    return perform(#name, static_cast<Result(IstComData::*) parameters>(&IstComData::name), this, __VA_ARGS__); \
  }
#define GETTER(Result, name, parameters, ...)                   \
  Result IstComData::name parameters {                          \
    return answer(#name, &IstComData::name, this, __VA_ARGS__); \
  }

OPERATION(bool, LoadDesign, (QString & m), &m, m)
OPERATION(bool, NewProject, (QString & m), &m, m)
OPERATION(bool, NewProject, (const QString& f, QString& m), &m, f, m)
OPERATION(bool, OpenProject, (const QString& f, QString& m), &m, f, m)
OPERATION(bool, SaveProject, (QString & m), &m, m)
OPERATION(bool, SaveProjectAs, (const QString& f, QString& m), &m, f, m)
OPERATION(bool, CloseProject, (), nullptr)
OPERATION(void, registerToHDLmanager, (), nullptr)
OPERATION(void, unregisterToHDLmanager, (), nullptr)
OPERATION(void, EnableAllCores, (bool on), nullptr, on)
OPERATION(bool, EnableCore, (const QString& n, bool on), nullptr, n, on)
OPERATION(bool, DRC, (QString & m), &m, m)
OPERATION(bool, Insert, (int mode), nullptr, mode)
OPERATION(istCore*, addCore, (const QString& n, QString& m), &m, n, m)
OPERATION(bool, deleteCore, (const QString& n, QString& m), &m, n, m)
OPERATION(bool, renameCore, (const QString& o, const QString& n, QString& m), &m, o, n, m)
OPERATION(bool, selectCore, (const QString& n), nullptr, n)
OPERATION(bool, addWishboneMaster, (QString & m), &m, m)
OPERATION(bool, deleteWishboneMaster, (QString & m), &m, m)
OPERATION(bool, addSerdesCore, (QString & m), &m, m)
OPERATION(bool, deleteSerdesCore, (QString & m), &m, m)
OPERATION(bool, addTraceSignals, (istTraceData * t, QStringList s, QString b, QString p, QString& m), &m, t, s, b, p, m)
OPERATION(bool, moveTraceSignals, (istTraceData * t, QStringList s, QString b, QString p, QString& m), &m, t, s, b, p,
          m)
OPERATION(bool, removeTraceSignals, (istTraceData * t, QStringList s, QString& m), &m, t, s, m)
OPERATION(bool, groupTraceSignals, (istTraceData * t, QString& b, QStringList s, QString& m), &m, t, b, s, m)
OPERATION(bool, ungroupTraceSignals, (istTraceData * t, const QString& b, QString& m), &m, t, b, m)
OPERATION(bool, renameTraceBus, (istTraceData * t, const QString& b, const QString& n, QString& m), &m, t, b, n, m)
OPERATION(bool, addTU,
          (QString & r, const QStringList& s, QString& o, QString& v, QString& n, QString& m, istDataset* d), &m, r, s,
          o, v, n, m, d)
OPERATION(bool, setTU,
          (istTU * u, QString& r, const QStringList& a, const QStringList& s, QString& o, QString& v, QString& m,
           istDataset* d),
          &m, u, r, a, s, o, v, m, d)
OPERATION(bool, renameTU, (const QString& o, const QString& n, QString& m, istDataset* d), &m, o, n, m, d)
OPERATION(bool, renameTE, (const QString& o, const QString& n, QString& m, istDataset* d), &m, o, n, m, d)
OPERATION(bool, removeTU, (const QString& n, istDataset* d), nullptr, n, d)
OPERATION(bool, removeTE, (const QString& n, istDataset* d), nullptr, n, d)
OPERATION(bool, addTE, (QString & n, const QString& e, int r, int s, int c, QString& m, istDataset* d), &m, n, e, r, s,
          c, m, d)
OPERATION(bool, setTE, (QString & n, const QString& e, int r, int s, int c, QString& m, istDataset* d), &m, n, e, r, s,
          c, m, d)

GETTER(istTraceData*, getTrace, (istCore * core), core)
GETTER(istDataset*, getDataset, (istCore * core), core)
OPERATION(RTLHierachy*, hierarchy, (), nullptr)
GETTER(int, getBufferDepth, (istCore * core), core)
GETTER(int, getTimeStampBits, (istCore * core), core)
GETTER(int, getCaptureMode, (istCore * core), core)
GETTER(int, getCaptureNum, (istCore * core), core)
GETTER(int, getCaptureMin, (istCore * core), core)
GETTER(int, getDefaultTrigRadix, (istCore * core), core)
GETTER(int, getEventCounter, (istCore * core), core)

}  // namespace ostrel
}  // namespace mero

namespace {

/// A host's own table, with the handler that the package binds to no command.
tcl_cmdex::TclCmdMap& hostTable() {
  static tcl_cmdex::TclCmdMap table("Host");
  return table;
}

/// `silent COMMAND SUB-COMMAND`: 1 when the handler fails without a call and without a word while any part of its
/// context is missing.
int isSilent(ClientData, Tcl_Interp* interp, int, const char** argv) {
  Tcl_CmdInfo info;
  if (!Tcl_GetCommandInfo(interp, argv[1], &info)) return TCL_ERROR;
  const tcl_cmdex::TclCmdMap& table = *static_cast<tcl_cmdex::TclCmdMap*>(info.clientData);
  const tcl_cmdex::TclCmd& entry = table.commands.at(argv[1]).subCommands.at(argv[2]);
  tcl_cmdex::CommandContext noEntry = {nullptr, entry.clientData}, noService = {&entry, nullptr};
  bool silent = true;
  for (void* context : {static_cast<void*>(nullptr), static_cast<void*>(&noEntry), static_cast<void*>(&noService)})
    silent = silent && entry.handler(context, interp, 1, argv + 2) == TCL_ERROR && !*Tcl_GetStringResult(interp);
  Tcl_SetObjResult(interp, Tcl_NewBooleanObj(silent));
  return TCL_OK;
}

int start(Tcl_Interp* interp) {
  host = interp;
  hostTable().registerCmd("ost_wishbone", "set", "usage", ost_set_wbone_opt, mero::ostrel::IstComData::getInstance());
  Tcl_CreateCommand(interp, "ost_wishbone", tcl_cmdex::TclCmdExInvoker, &hostTable(), nullptr);
  Tcl_CreateCommand(interp, "silent", isSilent, nullptr, nullptr);
  return Tcl_Init(interp);
}

}  // namespace

int main(int argc, char** argv) {
  Tcl_Main(argc, argv, start);
}
