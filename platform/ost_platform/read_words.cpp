// The words of `ost_design read`.
#include "platform/ost_platform/design_command.h"

namespace ost {
namespace {

bool takeNumber(Tcl_Interp* interp, const char* option, Tcl_Obj* word, int least, int most, int& value) {
  if (Tcl_GetIntFromObj(nullptr, word, &value) == TCL_OK && value >= least && value <= most) return true;
  const std::string code = std::string("OST VALUE ") + option;
  failWith(interp,
           QString::fromLatin1("bad value \"%1\" for %2: must be a number from %3 to %4")
               .arg(textFromTcl(word), QString::fromLatin1(option))
               .arg(least)
               .arg(most),
           code.c_str());
  return false;
}

}  // namespace

bool parseReadWords(Tcl_Interp* interp, int objc, Tcl_Obj* const objv[], DesignSource& source) {
  static const char* const kOptions[] = {"-blackbox", "-define", "-f", "-incdir", "-memory",
                                         "-timeout",  "-top",    "--", nullptr};
  enum Option { kBlackBox, kDefine, kFileList, kIncludeDir, kMemory, kTimeout, kTop, kEnd };
  bool optionsEnded = false;
  for (int i = 2; i < objc; ++i) {
    const QString word = textFromTcl(objv[i]);
    if (optionsEnded || !word.startsWith(QLatin1Char('-'))) {
      if (word.isEmpty()) {
        failUsage(interp, QString::fromLatin1("a file name is empty"), "read");
        return false;
      }
      source.files.append(word);
      continue;
    }
    int option = 0;
    if (Tcl_GetIndexFromObj(nullptr, objv[i], kOptions, "option", TCL_EXACT, &option) != TCL_OK) {
      failUsage(
          interp,
          QString::fromLatin1("unknown option \"%1\" (a file whose name begins with a hyphen goes after --)").arg(word),
          "read");
      return false;
    }
    if (option == kEnd) {
      optionsEnded = true;
      continue;
    }
    if (++i >= objc) {
      failUsage(interp, QString::fromLatin1("missing value for \"%1\"").arg(word), "read");
      return false;
    }
    const QString value = textFromTcl(objv[i]);
    if (value.isEmpty()) {
      failUsage(interp, QString::fromLatin1("empty value for \"%1\"").arg(word), "read");
      return false;
    }
    int number = 0;
    switch (option) {
      case kBlackBox:
        source.blackBoxes.append(value);
        break;
      case kDefine:
        source.defines.append(value);
        break;
      case kFileList:
        source.fileLists.append(value);
        break;
      case kIncludeDir:
        source.includeDirs.append(value);
        break;
      case kTop:
        source.top = value;
        break;
      case kMemory:
        if (!takeNumber(interp, "-memory", objv[i], 64, 1048576, number)) return false;
        source.memoryLimitBytes = qint64(number) << 20;
        break;
      case kTimeout:
        if (!takeNumber(interp, "-timeout", objv[i], 1, 86400, number)) return false;
        source.timeLimitSeconds = number;
        break;
    }
  }
  if (!source.files.isEmpty() || !source.fileLists.isEmpty()) return true;
  failUsage(interp, QString::fromLatin1("no file is named"), "read");
  return false;
}

}  // namespace ost
