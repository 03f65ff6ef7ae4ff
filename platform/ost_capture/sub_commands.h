// What `ost_capture` and the commands that it makes have in common: a table of sub-commands, errors, a lifetime.
#pragma once

#include <QStringList>
#include <memory>

#include "platform/reader/capture_options.h"
#include "platform/tclcmdex/host.h"
#include "platform/tclcmdex/tcl_values.h"

namespace ost {

/// Second half of errorCode, behind `OST CAPTURE`.
namespace capture_error {
constexpr char kMap[] = "OST CAPTURE MAP";          ///< The capture map cannot be used.
constexpr char kLink[] = "OST CAPTURE LINK";        ///< The server, the simulation or the hardware.
constexpr char kValue[] = "OST CAPTURE VALUE";      ///< A name or value that this core does not have.
constexpr char kState[] = "OST CAPTURE STATE";      ///< Not now: nothing is armed, not done, a wait is under way.
constexpr char kBus[] = "OST CAPTURE BUS";          ///< A transfer of the Wishbone master has failed.
constexpr char kTimeout[] = "OST CAPTURE TIMEOUT";  ///< No trigger in time.
constexpr char kFile[] = "OST CAPTURE FILE";        ///< A file cannot be written.
constexpr char kClosed[] = "OST CAPTURE CLOSED";    ///< The hub was closed during the wait.
}  // namespace capture_error

/// The words of one call, behind the sub-command.
struct SubCall {
  Tcl_Interp* interp;
  const char* usage;
  QString name;  ///< Of the sub-command.
  QStringList words;

  int fail(const QString& message, const char* errorCode) const { return failWith(interp, message, errorCode); }
  /// `message`, then the usage; errorCode `OST USAGE ost_capture <sub-command>`.
  int failUsage(const QString& message) const;
};

/// A sub-command of `Object`.
template <class Object>
struct SubCommand {
  const char* name;
  const char* words;  ///< Behind the name, in the usage.
  OptionUse options;  ///< The options that follow them; 0 for none.
  int fewest, most;   ///< Words; -1: any number.
  int (*run)(Object& object, const SubCall& call);
};

/// A member function as SubCommand::run.
template <auto member, class Object>
int method(Object& object, const SubCall& call) {
  return (object.*member)(call);
}

QString usageOf(const char* owner, const char* name, const char* words, OptionUse options);
/// The error for a word that is none of `names`.
int failUnknown(Tcl_Interp* interp, Tcl_Obj* word, const QStringList& names);

/// `Object` has `kOwner`, how the usage calls the command, `table()`, the sub-commands, and `commandIsGone()`.
template <class Object>
QString usagesOf() {
  QString text;
  for (const SubCommand<Object>& one : Object::table())
    text += usageOf(Object::kOwner, one.name, one.words, one.options) + QLatin1Char('\n');
  return text;
}

template <class Object>
int runSubCommand(Object& object, Tcl_Interp* interp, int objc, Tcl_Obj* const objv[]) {
  if (objc < 2) {
    Tcl_WrongNumArgs(interp, 1, objv, "sub-command ?word ...?");
    return TCL_ERROR;
  }
  const QString word = textFromTcl(objv[1]);
  QStringList names;
  for (const SubCommand<Object>& one : Object::table()) {
    names += QLatin1String(one.name);
    if (word != names.last()) continue;
    const QByteArray usage = usageOf(Object::kOwner, one.name, one.words, one.options).toLatin1();
    SubCall call = {interp, usage.constData(), word, {}};
    for (int i = 2; i < objc; ++i) call.words += textFromTcl(objv[i]);
    const int count = call.words.size();
    if (count < one.fewest || (one.most >= 0 && count > one.most))
      return call.failUsage(QStringLiteral("There are %1 words.")
                                .arg(count < one.fewest ? QLatin1String("too few") : QLatin1String("too many")));
    return one.run(object, call);
  }
  return failUnknown(interp, objv[1], names);
}

/// Makes a command of the interpreter out of an object, which lives until the command is deleted, also with its
/// interpreter; and until its last call returns. The result of the interpreter becomes the command's name.
template <class Object>
class ObjectCommand {
 public:
  static Tcl_Command create(Tcl_Interp* interp, std::shared_ptr<Object> object) {
    const QByteArray name = freeName(interp);
    auto held = std::make_unique<std::shared_ptr<Object>>(std::move(object));
    const Tcl_Command token = Tcl_CreateObjCommand(interp, name.constData(), call, held.release(), forget);
    Tcl_SetObjResult(interp, Tcl_NewStringObj(name.constData(), name.size()));
    return token;
  }

 private:
  static QByteArray freeName(Tcl_Interp* interp) {
    static int count = 0;
    QByteArray name;
    Tcl_CmdInfo ignored;
    do {
      name = QByteArray("::ost_capture::") + Object::kName + QByteArray::number(++count);
    } while (Tcl_GetCommandInfo(interp, name.constData(), &ignored));
    return name;
  }
  static int call(ClientData data, Tcl_Interp* interp, int objc, Tcl_Obj* const objv[]) {
    const std::shared_ptr<Object> object = *static_cast<std::shared_ptr<Object>*>(data);
    return tcl_cmdex::runGuarded(interp, "ost_capture", [&] { return runSubCommand(*object, interp, objc, objv); });
  }
  static void forget(ClientData data) {
    const std::unique_ptr<std::shared_ptr<Object>> held(static_cast<std::shared_ptr<Object>*>(data));
    (*held)->commandIsGone();
  }
};

}  // namespace ost
