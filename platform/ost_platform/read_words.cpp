// The words of `ost_design read`.
#include <QDir>

#include "platform/design/read_options.h"
#include "platform/ost_platform/design_command.h"
#include "platform/text/byte_text.h"

namespace ost {
namespace {

bool refuse(Tcl_Interp* interp, const QString& reason, const char* subCommand = "read") {
  failUsage(interp, reason, subCommand);
  return false;
}

/// Keeps the value at objv[i + 1] of the option at objv[i]; relative file names mean `folder`.
bool takeValue(Tcl_Interp* interp, int objc, Tcl_Obj* const objv[], int i, const ReadOption& option,
               const char* subCommand, const QString& folder, DesignSource& source) {
  const QString word = textFromTcl(objv[i]);
  if (i + 1 >= objc) return refuse(interp, QStringLiteral("missing value for \"%1\"").arg(word), subCommand);
  const QString value = textFromTcl(objv[i + 1]);
  if (value.isEmpty()) return refuse(interp, QStringLiteral("empty value for \"%1\"").arg(word), subCommand);
  QString mustBe;
  if (option.take(source, value, folder, mustBe)) return true;
  failWith(interp, QStringLiteral("bad value \"%1\" for %2: must be %3").arg(value, word, mustBe),
           (std::string("OST VALUE ") + option.name).c_str());
  return false;
}

}  // namespace

bool parseReadWords(Tcl_Interp* interp, int objc, Tcl_Obj* const objv[], DesignSource& source) {
  bool optionsEnded = false;
  for (int i = 2; i < objc; ++i) {
    const QString word = textFromTcl(objv[i]);
    if (!optionsEnded && word == QLatin1String("--")) {
      optionsEnded = true;
      continue;
    }
    if (optionsEnded || !word.startsWith(QLatin1Char('-'))) {
      if (word.isEmpty()) return refuse(interp, QStringLiteral("a file name is empty"));
      source.files.append(word);
      continue;
    }
    const ReadOption* option = findReadOption(word);
    if (!option)
      return refuse(
          interp,
          QStringLiteral("unknown option \"%1\" (a file whose name begins with a hyphen goes after --)").arg(word));
    if (!takeValue(interp, objc, objv, i++, *option, "read", QString(), source)) return false;
  }
  const bool named = !source.files.isEmpty() || !source.fileLists.isEmpty() || !source.vhdlLibraries.isEmpty();
  return named || refuse(interp, QStringLiteral("no file is named"));
}

bool parseJtagWords(Tcl_Interp* interp, int objc, Tcl_Obj* const objv[], DesignSource& source) {
  const QString folder = textFromFile(QDir::currentPath()) + QLatin1Char('/');
  QString mustBe;
  int i = 2;
  if (const QString way = textFromTcl(objv[i]); !way.startsWith(QLatin1Char('-'))) {
    if (way.isEmpty()) return refuse(interp, QStringLiteral("the way is empty"), "jtag");
    findReadOption(QStringLiteral("-jtag"))->take(source, way, folder, mustBe);
    ++i;
  }
  for (; i < objc; i += 2) {
    const QString word = textFromTcl(objv[i]);
    if (word != QLatin1String("-chain") && word != QLatin1String("-period"))
      return refuse(interp, QStringLiteral("unknown option \"%1\"").arg(word), "jtag");
    if (!takeValue(interp, objc, objv, i, *findReadOption(word), "jtag", folder, source)) return false;
  }
  return true;
}

}  // namespace ost
