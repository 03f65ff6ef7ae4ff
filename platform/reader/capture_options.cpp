// Options as a table of words; their checks.
#include "platform/reader/capture_options.h"

#include <algorithm>

namespace ost {
namespace {

bool wrongValue(const QString& option, const QString& value, const char* must, QString& error) {
  error = QStringLiteral("Bad value \"%1\" for \"%2\"; it must be %3.").arg(value, option, QLatin1String(must));
  return false;
}

bool parseCount(const QString& option, const QString& value, int& count, QString& error) {
  bool isNumber = false;
  count = value.toInt(&isNumber);
  return (isNumber && count >= 1) || wrongValue(option, value, "a number of at least 1", error);
}

bool parseInstruction(const QString& option, const QString& value, UserInstruction& instruction, QString& error) {
  const int colon = value.indexOf(QLatin1Char(':'));
  bool widthGood = false, codeGood = false;
  instruction.width = value.left(colon).toInt(&widthGood);
  instruction.code = value.mid(colon + 1).toUInt(&codeGood, 0);
  const bool good = colon > 0 && widthGood && codeGood && instruction.width >= 2 && instruction.width <= 32 &&
                    (quint64(instruction.code) >> instruction.width) == 0;
  return good || wrongValue(option, value, "WIDTH:CODE, for example 4:2 or 6:0x23", error);
}

bool parseSeconds(const QString& option, const QString& value, double& seconds, QString& error) {
  bool isNumber = false;
  seconds = value.toDouble(&isNumber);
  return (isNumber && seconds > 0 && seconds <= 1e6) || wrongValue(option, value, "a number of seconds above 0", error);
}

/// What an option does with the word after it, which is empty for a flag. False with `error`.
using Take = bool (*)(CaptureOptions& options, const QString& option, const QString& value, QString& error);

struct Option {
  const char* name;
  const char* value;  ///< What follows, as the help calls it; null for a flag.
  const char* help;
  Take take;
};

template <QString CaptureOptions::*member>
bool keepText(CaptureOptions& options, const QString&, const QString& value, QString&) {
  options.*member = value;
  return true;
}
template <bool CaptureOptions::*member>
bool raise(CaptureOptions& options, const QString&, const QString&, QString&) {
  return options.*member = true;
}
template <int CaptureOptions::*member>
bool keepCount(CaptureOptions& options, const QString& option, const QString& value, QString& error) {
  return parseCount(option, value, options.*member, error);
}
bool keepChange(CaptureOptions& options, const QString& option, const QString& value, QString&) {
  options.changes.append({option, value});
  return true;
}
bool keepServer(CaptureOptions& options, const QString&, const QString& value, QString& error) {
  return options.hasServer = parseServerAddress(value, options.server, error);
}
bool keepInstruction(CaptureOptions& options, const QString& option, const QString& value, QString& error) {
  return parseInstruction(option, value, options.instruction, error);
}
bool keepTimeout(CaptureOptions& options, const QString& option, const QString& value, QString& error) {
  return parseSeconds(option, value, options.timeoutSeconds, error);
}

/// All options in the order of the help; a row without a name is a heading.
const Option kOptions[] = {
    {"-map", "FILE", "capture map that was written with the instrumented design; required",
     keepText<&CaptureOptions::mapFile>},
    {"-connect", "SERVER", "remote-bitbang server: fifo:DIR, tcp:HOST:PORT or unix:PATH; required", keepServer},
    {"-core", "NAME", "the core; required when the design has several", keepText<&CaptureOptions::core>},
    {nullptr, nullptr, "Run:", nullptr},
    {"-position", "N|N%", "samples before the trigger, or their share of the window (default: half a window)",
     keepText<&CaptureOptions::position>},
    {"-set", "UNIT=VALUE", "another value of a trigger unit, in the unit's radix; repeatable", keepChange},
    {"-op", "UNIT=OPERATOR", "another operator that the unit's hardware has; repeatable", keepChange},
    {"-te", "NAME[,NAME...]", "the trigger expressions to enable (default: all)",
     keepText<&CaptureOptions::expressions>},
    {"-count", "N", "events up to and including the trigger (default: as built)",
     keepCount<&CaptureOptions::eventCount>},
    {"-windows", "N", "windows to capture (default: as built)", keepCount<&CaptureOptions::windows>},
    {"-timeout", "SECONDS", "how long to wait for the trigger after arming (default: 10)", keepTimeout},
    {nullptr, nullptr, "Output:", nullptr},
    {"-vcd", "FILE", "value change dump, for a waveform viewer", keepText<&CaptureOptions::vcdFile>},
    {"-csv", "FILE", "comma-separated values, one line for each sample", keepText<&CaptureOptions::csvFile>},
    {"-wave", nullptr, "a small waveform on the terminal (default without -vcd and -csv)",
     raise<&CaptureOptions::wave>},
    {nullptr, nullptr, "Instead of a capture:", nullptr},
    {"-status", nullptr, "state of each core", raise<&CaptureOptions::status>},
    {"-info", nullptr, "compares the hardware with the map and shows both", raise<&CaptureOptions::info>},
    {nullptr, nullptr, "JTAG chain:", nullptr},
    {"-ir", "WIDTH:CODE", "instruction that selects the debug hub; for a device's own JTAG primitive (default: 4:2)",
     keepInstruction},
};

const Option* findOption(const QString& word) {
  for (const Option& option : kOptions)
    if (option.name && word == QLatin1String(option.name)) return &option;
  return nullptr;
}

}  // namespace

bool parseCaptureOptions(const QStringList& words, CaptureOptions& options, QString& error) {
  for (int i = 0; i < words.size(); ++i) {
    const QString& word = words[i];
    if (word == QLatin1String("-help") || word == QLatin1String("--help")) return options.help = true;
    const Option* option = findOption(word);
    if (!option) {
      error = QStringLiteral("There is no option \"%1\"; \"ost_capture -help\" lists the options.").arg(word);
      return false;
    }
    if (option->value && ++i == words.size()) {
      error = QStringLiteral("The value of \"%1\" is missing; \"ost_capture -help\" lists the options.").arg(word);
      return false;
    }
    if (!option->take(options, word, option->value ? words[i] : QString(), error)) return false;
  }
  if (!options.vcdFile.isEmpty() && options.vcdFile == options.csvFile) {
    error =
        QStringLiteral("The options -vcd and -csv name the same file \"%1\"; give each its own.").arg(options.vcdFile);
    return false;
  }
  if (options.mapFile.isEmpty() || !options.hasServer) {
    error = QStringLiteral("The options -map and -connect are required; \"ost_capture -help\" explains them.");
    return false;
  }
  return true;
}

int chooseCore(const InsertPlan& plan, const CaptureOptions& options, QString& error) {
  QStringList names;
  for (int i = 0; i < plan.cores.size(); ++i) {
    if (plan.cores[i].name == options.core) return i;
    names += plan.cores[i].name;
  }
  if (options.core.isEmpty() && plan.cores.size() == 1) return 0;
  const QString all = names.join(QLatin1String(", "));
  error = options.core.isEmpty()
              ? QStringLiteral("The design has several cores; choose one of %1 with -core NAME.").arg(all)
              : QStringLiteral("There is no core \"%1\"; choose one of %2.").arg(options.core, all);
  return -1;
}

bool applyRunOptions(const CaptureOptions& options, RunSettings& settings, QString& error) {
  // An operator and a value given for one unit may fit only together.
  struct Change {
    QString unit, operatorWord, value;
  };
  QVector<Change> changes;
  for (const auto& [option, assignment] : options.changes) {
    const int equals = assignment.indexOf(QLatin1Char('='));
    if (equals <= 0) {
      error = QStringLiteral("Bad value \"%1\" for \"%2\"; it must be UNIT=WORD.").arg(assignment, option);
      return false;
    }
    const QString unit = assignment.left(equals);
    auto change = std::find_if(changes.begin(), changes.end(), [&](const Change& one) { return one.unit == unit; });
    if (change == changes.end()) change = changes.insert(changes.end(), {unit, QString(), QString()});
    // An empty word must stay one, and not become a null text.
    (option == QLatin1String("-op") ? change->operatorWord : change->value) =
        QLatin1String("") + assignment.mid(equals + 1);
  }
  for (const Change& change : changes)
    if (!settings.setUnit(change.unit, change.operatorWord, change.value, error)) return false;
  return (options.position.isEmpty() || settings.setPosition(options.position, error)) &&
         (options.expressions.isEmpty() || settings.chooseExpressions(options.expressions, error)) &&
         (options.eventCount == 0 || settings.setEventCount(options.eventCount, error)) &&
         (options.windows == 0 || settings.setWindows(options.windows, error));
}

QString captureUsage() {
  QString text = QStringLiteral(
      "ost_capture - arm an inserted debug core over JTAG and read its capture\n"
      "Usage: ost_capture -map FILE -connect SERVER [option...]\n");
  for (const Option& option : kOptions) {
    if (!option.name) {
      text += QLatin1String(option.help) + QLatin1Char('\n');
      continue;
    }
    QString words = QLatin1String(option.name);
    if (option.value) words += QLatin1Char(' ') + QLatin1String(option.value);
    text += QStringLiteral("  %1 %2\n").arg(words, -20).arg(QLatin1String(option.help));
  }
  return text + QStringLiteral("Exit status: 0 done, 1 failed, 2 wrong command line, 3 no trigger in time.\n");
}

}  // namespace ost
