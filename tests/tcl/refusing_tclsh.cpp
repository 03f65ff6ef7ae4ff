// A tclsh whose data service records its operations and, where a script asks for it, refuses them or answers otherwise.
// The program's own definitions stand before those of libistcomdata, which they call for everything else. Also here:
// what only a host of the package can do with its handlers.
//
//   with refused OPERATION TEXT SCRIPT   the operation fails, with TEXT as the service's
//   with spoken OPERATION TEXT SCRIPT    it is carried out, and the service's text is TEXT
//   with answered GETTER VALUE SCRIPT    the getter's value is VALUE; its object is gone, whatever VALUE is
//   with spelled core NAME SCRIPT        whatever name is asked for, the service means the core NAME
//   calls                                variable: {OPERATION argument ...} ... since the script emptied it
#include <dlfcn.h>
#include <tcl.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

#include "commands/handlers.h"
#include "framework/ist_com_data.h"
#include "platform/tclcmdex/host.h"

namespace {

Tcl_Interp* host = nullptr;

/// Of a kind and the name of an operation or getter: what the script wants.
std::map<std::pair<std::string, std::string>, std::string> wishes;

/// Null where the script wants nothing.
const char* wish(const char* kind, const char* name) {
  const auto found = wishes.find({kind, name});
  return found != wishes.end() ? found->second.c_str() : nullptr;
}

int evaluateWith(ClientData, Tcl_Interp* interp, int, const char** argv) {
  const auto place = wishes.insert_or_assign({argv[1], argv[2]}, argv[3]).first;
  const int status = Tcl_Eval(interp, argv[4]);
  wishes.erase(place);
  return status;
}

// Each puts an argument behind the call, but for the `message`, which is no argument of interest.
void note(Tcl_DString* call, const QString* message, const QString& text) {
  if (&text != message) Tcl_DStringAppendElement(call, text.toLatin1().constData());
}
void note(Tcl_DString* call, const QString* message, const std::string& text) {
  note(call, message, QString::fromLatin1(text.c_str()));
}
void note(Tcl_DString* call, const QString* message, const QStringList& texts) {
  note(call, message, texts.join(QLatin1Char('+')));
}
void note(Tcl_DString* call, const QString* message, int number) {
  note(call, message, QString::number(number));
}
void note(Tcl_DString*, const QString*, const void*) {}  // the service's own objects

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

template <class Member, class... Arguments>
auto perform(const char* name, Member own, mero::ostrel::IstComData* service, QString* message,
             Arguments&&... arguments) -> decltype((service->*own)(arguments...)) {
  Tcl_DString call;
  Tcl_DStringInit(&call);
  Tcl_DStringAppendElement(&call, name);
  (note(&call, message, arguments), ...);
  Tcl_SetVar(host, "calls", Tcl_DStringValue(&call), TCL_GLOBAL_ONLY | TCL_APPEND_VALUE | TCL_LIST_ELEMENT);
  Tcl_DStringFree(&call);

  const char* refusal = wish("refused", name);
  const SpokenText spoken{refusal ? refusal : wish("spoken", name), message};
  if (refusal) return decltype((service->*own)(arguments...))();
  return (service->*hidden(own))(arguments...);
}

/// For numbers, and for objects, which a test can only take away.
template <class Getter, class... Arguments>
auto answer(const char* name, Getter own, mero::ostrel::IstComData* service, Arguments&&... arguments)
    -> decltype((service->*own)(arguments...)) {
  const char* wanted = wish("answered", name);
  if (!wanted) return (service->*hidden(own))(arguments...);
  typedef decltype((service->*own)(arguments...)) Value;
  if constexpr (std::is_pointer_v<Value>) {
    return nullptr;
  } else if constexpr (std::is_same_v<Value, QString>) {
    return QString::fromLatin1(wanted);
  } else {
    return std::atoi(wanted);
  }
}

QString spelled(const QString& core) {
  const char* name = wish("spelled", "core");
  return name ? QString::fromLatin1(name) : core;
}

}  // namespace

namespace mero {
namespace ostrel {

// The arguments of the call follow where the operation's text goes.
#define OPERATION(Result, name, parameters, ...)                                                                \
  Result IstComData::name parameters {                                                                          \
    return perform(#name, static_cast<Result(IstComData::*) parameters>(&IstComData::name), this, __VA_ARGS__); \
  }
#define GETTER(Result, name, parameters, ...)             \
  Result IstComData::name parameters {                    \
    return answer(#name, &IstComData::name, __VA_ARGS__); \
  }

typedef const QString& In;
typedef QString& Out;

OPERATION(bool, LoadDesign, (Out m), &m, m)
OPERATION(bool, NewProject, (Out m), &m, m)
OPERATION(bool, NewProject, (In f, Out m), &m, f, m)
OPERATION(bool, OpenProject, (In f, Out m), &m, f, m)
OPERATION(bool, SaveProject, (Out m), &m, m)
OPERATION(bool, SaveProjectAs, (In f, Out m), &m, f, m)
OPERATION(bool, CloseProject, (), nullptr)
OPERATION(void, registerToHDLmanager, (), nullptr)
OPERATION(void, unregisterToHDLmanager, (), nullptr)
OPERATION(void, EnableAllCores, (bool on), nullptr, on)
OPERATION(bool, EnableCore, (In n, bool on), nullptr, n, on)
OPERATION(bool, DRC, (Out m), &m, m)
OPERATION(bool, Insert, (int mode), nullptr, mode)
OPERATION(RTLHierachy*, hierarchy, (), nullptr)
OPERATION(void, PrintMessage, (const std::string& code, std::string a, std::string b), nullptr, code, a, b)
OPERATION(istCore*, addCore, (In n, Out m), &m, spelled(n), m)
OPERATION(bool, selectCore, (In n), nullptr, spelled(n))
OPERATION(bool, deleteCore, (In n, Out m), &m, n, m)
OPERATION(bool, renameCore, (In o, In n, Out m), &m, o, n, m)
OPERATION(bool, deleteWishboneMaster, (Out m), &m, m)
OPERATION(bool, deleteSerdesCore, (Out m), &m, m)
OPERATION(bool, addTraceSignals, (istTraceData * t, QStringList s, QString b, QString p, Out m), &m, t, s, b, p, m)
OPERATION(bool, moveTraceSignals, (istTraceData * t, QStringList s, QString b, QString p, Out m), &m, t, s, b, p, m)
OPERATION(bool, removeTraceSignals, (istTraceData * t, QStringList s, Out m), &m, t, s, m)
OPERATION(bool, groupTraceSignals, (istTraceData * t, Out b, QStringList s, Out m), &m, t, b, s, m)
OPERATION(bool, ungroupTraceSignals, (istTraceData * t, In b, Out m), &m, t, b, m)
OPERATION(bool, renameTraceBus, (istTraceData * t, In b, In n, Out m), &m, t, b, n, m)
OPERATION(bool, addTU, (Out r, const QStringList& s, Out o, Out v, Out n, Out m, istDataset* d), &m, r, s, o, v, n, m,
          d)
OPERATION(bool, renameTU, (In o, In n, Out m, istDataset* d), &m, o, n, m, d)
OPERATION(bool, removeTE, (In n, istDataset* d), nullptr, n, d)
OPERATION(bool, addTE, (Out n, In e, int r, int s, int c, Out m, istDataset* d), &m, n, e, r, s, c, m, d)
OPERATION(bool, setTE, (Out n, In e, int r, int s, int c, Out m, istDataset* d), &m, n, e, r, s, c, m, d)
OPERATION(void, setTriggeroutMPW, (In samples, istCore* core), nullptr, samples, core)

GETTER(bool, isProjBusy, (), this)
GETTER(istCore*, getCore, (In n), this, spelled(n))
GETTER(int, getWBEdianMode, (), this)
GETTER(istTraceData*, getTrace, (istCore * core), this, core)
GETTER(istDataset*, getDataset, (istCore * core), this, core)
GETTER(int, getBufferDepth, (istCore * core), this, core)
GETTER(QString, getCaptureModeName, (istCore * core), this, core)
GETTER(int, getCaptureMode, (istCore * core), this, core)
GETTER(int, getCaptureNum, (istCore * core), this, core)
GETTER(int, getDefaultTrigRadix, (istCore * core), this, core)

istWishboneMaster* IstComData::getWishboneMaster() {
  istWishboneMaster* master = answer("getWishboneMaster", &IstComData::getWishboneMaster, this);
  if (master) master->bigEndianOnly = wish("answered", "bigEndianOnly");
  return master;
}

}  // namespace ostrel
}  // namespace mero

namespace {

/// `ost_host throw ?text?`
int throwText(void*, Tcl_Interp*, int argc, const char** argv) {
  if (argc > 1) throw std::runtime_error(argv[1]);
  throw 7;
}

/// `ost_host serve ?-core core?`: serves events before it finds more words than it takes.
int serveEvents(void* context, Tcl_Interp* interp, int argc, const char** argv) {
  tcl_cmdex::TclCmdParametersChecker words;
  words.setOptionValue("core", nullptr);
  const bool fits = tcl_cmdex::CheckCmdParameters(argc, argv, words);
  Tcl_SetResult(interp, const_cast<char*>(tcl_cmdex::currentInterpreter() == interp ? "mine" : "not mine"), TCL_STATIC);
  tcl_cmdex::TclMsgOutput(interp, "serving\n", 0);
  if (!tcl_cmdex::servePendingEvents()) {
    tcl_cmdex::TclMsgOutput(interp, "the interpreter is gone\n", 0);
    return TCL_ERROR;
  }
  if (fits && words.values.empty()) return TCL_OK;
  static_cast<tcl_cmdex::CommandContext*>(context)->command->reportTclArgsErrorResult(interp);
  return TCL_ERROR;
}

/// `host INTERPRETER`: creates ost_host there, with the handler that the package binds to no command and some that
/// only a test can want.
int createHostCommand(ClientData, Tcl_Interp* interp, int, const char** argv) {
  static tcl_cmdex::TclCmdMap table("Host");
  table.registerCmd("ost_host", nullptr, "ost_host - Host\n", nullptr, nullptr);
  table.registerCmd("ost_host", "none", "  none help\n", nullptr, nullptr);
  table.registerCmd("ost_host", "serve", "  serve help\n", serveEvents, nullptr);
  table.registerCmd("ost_host", "throw", "  throw help\n", throwText, nullptr);
  table.registerCmd("ost_host", "wishbone", "  wishbone help\n", ost_set_wbone_opt,
                    mero::ostrel::IstComData::getInstance());
  Tcl_CreateCommand(Tcl_GetSlave(interp, argv[1]), "ost_host", tcl_cmdex::TclCmdExInvoker, &table, nullptr);
  return TCL_OK;
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
  Tcl_CreateCommand(interp, "host", createHostCommand, nullptr, nullptr);
  Tcl_CreateCommand(interp, "with", evaluateWith, nullptr, nullptr);
  Tcl_CreateCommand(interp, "silent", isSilent, nullptr, nullptr);
  return Tcl_Init(interp);
}

}  // namespace

int main(int argc, char** argv) {
  Tcl_Main(argc, argv, start);
}
