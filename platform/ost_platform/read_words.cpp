// The words of `ost_design read`.
#include "platform/design/read_options.h"
#include "platform/ost_platform/design_command.h"

namespace ost {
namespace {

bool refuse(Tcl_Interp* interp, const QString& reason) {
  failUsage(interp, reason, "read");
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
    if (++i >= objc) return refuse(interp, QStringLiteral("missing value for \"%1\"").arg(word));
    const QString value = textFromTcl(objv[i]);
    if (value.isEmpty()) return refuse(interp, QStringLiteral("empty value for \"%1\"").arg(word));
    QString mustBe;
    if (!option->take(source, value, QString(), mustBe)) {
      failWith(interp, QStringLiteral("bad value \"%1\" for %2: must be %3").arg(value, word, mustBe),
               (std::string("OST VALUE ") + option->name).c_str());
      return false;
    }
  }
  const bool named = !source.files.isEmpty() || !source.fileLists.isEmpty() || !source.vhdlLibraries.isEmpty();
  return named || refuse(interp, QStringLiteral("no file is named"));
}

}  // namespace ost
