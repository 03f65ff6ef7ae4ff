// Usages and the errors of words.
#include "platform/ost_capture/sub_commands.h"

namespace ost {

QString usageOf(const char* owner, const char* name, const char* words, OptionUse options) {
  QString text = QLatin1String(owner) + QLatin1Char(' ') + QLatin1String(name);
  if (*words) text += QLatin1Char(' ') + QLatin1String(words);
  return options ? text + optionsUsage(options) : text;
}

int SubCall::failUsage(const QString& message) const {
  failWith(interp, message + QStringLiteral("\nusage: ") + QLatin1String(usage), "");
  const QByteArray word = name.toLatin1();
  Tcl_SetErrorCode(interp, "OST", "USAGE", "ost_capture", word.constData(), static_cast<char*>(nullptr));
  return TCL_ERROR;
}

int failUnknown(Tcl_Interp* interp, Tcl_Obj* word, const QStringList& names) {
  const QString text = QStringLiteral("There is no sub-command \"%1\"; it must be one of %2.")
                           .arg(textFromTcl(word), names.join(QLatin1String(", ")));
  failWith(interp, text, "");
  Tcl_SetErrorCode(interp, "TCL", "LOOKUP", "SUBCOMMAND", Tcl_GetString(word), static_cast<char*>(nullptr));
  return TCL_ERROR;
}

}  // namespace ost
