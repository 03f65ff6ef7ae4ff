// Options as a table of words; their checks.
#include "platform/reader/capture_options.h"

#include <algorithm>

namespace ost {
namespace {

bool wrongValue(const QString& option, const QString& value, const char* must, QString& error) {
  error = QStringLiteral("Bad value '%1' for '%2': must be %3.").arg(value, option, QLatin1String(must));
  return false;
}

bool parseCount(const QString& option, const QString& value, int& count, QString& error) {
  bool isNumber = false;
  count = value.toInt(&isNumber);
  return (isNumber && count >= 1) || wrongValue(option, value, "a number from 1 on", error);
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

/// One option that takes the next word.
bool takeValue(const QString& option, const QString& value, CaptureOptions& options, QString& error) {
  if (option == QLatin1String("-map")) return options.mapFile = value, true;
  if (option == QLatin1String("-connect")) return parseServerAddress(value, options.server, error);
  if (option == QLatin1String("-core")) return options.core = value, true;
  if (option == QLatin1String("-position")) return options.position = value, true;
  if (option == QLatin1String("-set") || option == QLatin1String("-op"))
    return options.changes.append({option, value}), true;
  if (option == QLatin1String("-te")) return options.expressions = value, true;
  if (option == QLatin1String("-count")) return parseCount(option, value, options.eventCount, error);
  if (option == QLatin1String("-windows")) return parseCount(option, value, options.windows, error);
  if (option == QLatin1String("-ir")) return parseInstruction(option, value, options.instruction, error);
  if (option == QLatin1String("-vcd")) return options.vcdFile = value, true;
  if (option == QLatin1String("-csv")) return options.csvFile = value, true;
  bool isNumber = false;
  options.timeoutSeconds = value.toDouble(&isNumber);
  return (isNumber && options.timeoutSeconds > 0 && options.timeoutSeconds <= 1e6) ||
         wrongValue(option, value, "a number of seconds above 0", error);
}

const char* const kValueOptions[] = {"-map",   "-connect", "-core",    "-position", "-set", "-op", "-te",
                                     "-count", "-windows", "-timeout", "-ir",       "-vcd", "-csv"};

}  // namespace

bool parseCaptureOptions(const QStringList& words, CaptureOptions& options, QString& error) {
  bool connected = false;
  for (int i = 0; i < words.size(); ++i) {
    const QString& word = words[i];
    if (word == QLatin1String("-help") || word == QLatin1String("--help")) return options.help = true;
    bool* const flag = word == QLatin1String("-wave")     ? &options.wave
                       : word == QLatin1String("-status") ? &options.status
                       : word == QLatin1String("-info")   ? &options.info
                                                          : nullptr;
    if (flag) {
      *flag = true;
      continue;
    }
    bool known = false;
    for (const char* option : kValueOptions) known = known || word == QLatin1String(option);
    if (!known) {
      error = QStringLiteral("Unknown word '%1'; 'ost_capture -help' lists the options.").arg(word);
      return false;
    }
    if (i + 1 == words.size()) {
      error = QStringLiteral("Missing value for '%1'; 'ost_capture -help' lists the options.").arg(word);
      return false;
    }
    connected = connected || word == QLatin1String("-connect");
    if (!takeValue(word, words[++i], options, error)) return false;
  }
  if (!options.vcdFile.isEmpty() && options.vcdFile == options.csvFile) {
    error = QStringLiteral("'-vcd' and '-csv' name the same file, '%1': give each its own.").arg(options.vcdFile);
    return false;
  }
  if (options.mapFile.isEmpty() || !connected) {
    error = QStringLiteral("'-map' and '-connect' are needed; 'ost_capture -help' tells what they mean.");
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
  error = options.core.isEmpty() ? QStringLiteral("Several cores: choose one with '-core'; there are %1.").arg(all)
                                 : QStringLiteral("There is no core '%1'; there are %2.").arg(options.core, all);
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
      error = QStringLiteral("Bad value '%1' for '%2': must be UNIT=WORD.").arg(assignment, option);
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
  return QStringLiteral(
      "ost_capture - arm an inserted debug core over JTAG and read its capture\n"
      "Usage: ost_capture -map FILE -connect SERVER [option...]\n"
      "  -map FILE            capture map that was written with the instrumented design\n"
      "  -connect SERVER      remote-bitbang server: fifo:DIR, tcp:HOST:PORT or unix:PATH\n"
      "  -core NAME           the core, where the design has several\n"
      "Run:\n"
      "  -position N|N%       samples before the trigger (default: half a window)\n"
      "  -set UNIT=VALUE      another value of a trigger unit, in its radix; repeatable\n"
      "  -op UNIT=OPERATOR    another operator of a trigger unit; repeatable\n"
      "  -te NAME[,NAME...]   the trigger expressions that take part (default: all)\n"
      "  -count N             events to the trigger (default: as built)\n"
      "  -windows N           windows to capture (default: as built)\n"
      "  -timeout SECONDS     how long to wait for the trigger (default: 10)\n"
      "Output:\n"
      "  -vcd FILE            waves for a viewer\n"
      "  -csv FILE            a line for each sample\n"
      "  -wave                a small waveform on the terminal (default without -vcd and -csv)\n"
      "Instead of a capture:\n"
      "  -status              where each core stands\n"
      "  -info                what the hardware says of itself\n"
      "  -ir WIDTH:CODE       instruction that selects the debug hub (default: 4:2)\n"
      "Exit status: 0 done, 1 failed, 2 wrong use, 3 no trigger within the time.\n");
}

}  // namespace ost
