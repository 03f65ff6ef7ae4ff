// Options as a table of words; their checks.
#include "platform/reader/capture_options.h"

#include "platform/reader/asked_files.h"
#include "platform/reader/option_values.h"

namespace ost {

namespace {

/// What an option does with the word after it, which is empty for a flag. False with `error`.
using Take = bool (*)(CaptureOptions& options, const QString& option, const QString& value, QString& error);

struct Option {
  const char* name;
  const char* value;  ///< What follows, as the help calls it; null for a flag.
  const char* help;
  Take take;
  unsigned uses = 0;  ///< Of OptionUse, besides the program's.
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
template <OutputFile CaptureOptions::*member>
bool keepFile(CaptureOptions& options, const QString&, const QString& value, QString&) {
  (options.*member).name = value;
  return true;
}
/// Names to choose, or an assignment.
bool keepExpressions(CaptureOptions& options, const QString& option, const QString& value, QString&) {
  if (value.contains(QLatin1Char('=')))
    options.changes.append({option, value});
  else
    options.expressions = value;
  return true;
}
bool keepSignals(CaptureOptions& options, const QString&, const QString& value, QString&) {
  options.view.signalGlobs += value;
  return true;
}
bool keepRange(CaptureOptions& options, const QString& option, const QString& value, QString& error) {
  return parseRange(option, value, options.view, error);
}
bool keepRadix(CaptureOptions& options, const QString& option, const QString& value, QString& error) {
  return parseRadix(option, value, options.view, error);
}
bool keepRepeats(CaptureOptions& options, const QString& option, const QString& value, QString& error) {
  return parseRepeats(option, value, options.repeats, error);
}
bool keepChange(CaptureOptions& options, const QString& option, const QString& value, QString&) {
  options.changes.append({option, value});
  return true;
}
bool keepWindow(CaptureOptions& options, const QString& option, const QString& value, QString& error) {
  bool isNumber = false;
  options.window = value.toInt(&isNumber);
  return (isNumber && options.window >= 0) || wrongValue(option, value, "a window, counted from 0", error);
}
bool keepServer(CaptureOptions& options, const QString&, const QString& value, QString& error) {
  return options.hasServer = parseServerAddress(value, options.server, error);
}
bool keepServe(CaptureOptions& options, const QString& option, const QString& value, QString& error) {
  return parseServe(option, value, options.serveProtocol, options.servePort, error);
}
bool keepPlace(CaptureOptions& options, const QString& option, const QString& value, QString& error) {
  return parsePlace(option, value, options.place, error);
}
bool keepInstruction(CaptureOptions& options, const QString& option, const QString& value, QString& error) {
  return parseInstruction(option, value, options.instruction, error);
}
/// Of all cores, or of the one named.
bool keepPeriod(CaptureOptions& options, const QString& option, const QString& value, QString& error) {
  const int equals = value.lastIndexOf(QLatin1Char('='));
  ClockPeriod period;
  if (equals == 0 || !parsePeriod(value.mid(equals + 1), period))
    return wrongValue(option, value, "a time from fs to ms, for example 10ns, or CORE=6.25ns", error);
  (equals < 0 ? options.vcdStyle.period : options.vcdStyle.corePeriods[value.left(equals)]) = period;
  return true;
}
bool keepSingleBits(CaptureOptions& options, const QString&, const QString&, QString&) {
  return options.vcdStyle.singleBits = true;
}
/// Takes all words up to the next option: they come joined by line feeds, which no word of a command line needs.
bool keepWishbone(CaptureOptions& options, const QString&, const QString& value, QString& error) {
  WishboneCommand command;
  if (!parseWishboneCommand(value.split(QLatin1Char('\n')), command, error)) return false;
  options.wishbone.append(command);
  return true;
}
bool keepTimeout(CaptureOptions& options, const QString& option, const QString& value, QString& error) {
  return parseSeconds(option, value, options.timeoutSeconds, error);
}

/// All options in the order of the help; a row without a name is a heading.
const Option kOptions[] = {
    {"-map", "FILE", "capture map that was written with the instrumented design; required",
     keepText<&CaptureOptions::mapFile>, kUseOpen},
    {"-connect", "SERVER",
     "JTAG server: fifo:DIR, tcp:HOST:PORT, unix:PATH, xvc:HOST:PORT or openocd:HOST:PORT[/TAP]; required without "
     "-launch",
     keepServer, kUseOpen},
    {"-launch", "COMMAND", "starts a simulation of the design and connects to it", keepText<&CaptureOptions::command>,
     kUseOpen},
    {"-core", "NAME", "the core; required when the design has several", keepText<&CaptureOptions::core>,
     kUseArm | kUseValues | kUseFind | kUseCore},
    {"-all", nullptr, "captures with all cores; all are armed before any is waited for",
     raise<&CaptureOptions::allCores>, kUseArm},
    {nullptr, nullptr, "Run:", nullptr},
    {"-position", "N|N%", "samples before the trigger, or their share of the window (default: half a window)",
     keepText<&CaptureOptions::position>, kUseArm},
    {"-set", "UNIT=VALUE", "another value of a trigger unit, in the unit's radix; repeatable", keepChange,
     kUseArm | kUseFind},
    {"-op", "UNIT=OPERATOR", "another operator that the unit's hardware has; repeatable", keepChange,
     kUseArm | kUseFind},
    {"-te", "NAME[,NAME...]", "the trigger expressions to enable (default: all)", keepExpressions, kUseArm},
    {"-te", "NAME=EXPRESSION", "another expression that fits into the hardware of NAME; repeatable", keepExpressions,
     kUseArm},
    {"-now", nullptr, "triggers at the first possible sample, whatever the units see", raise<&CaptureOptions::now>,
     kUseArm},
    {"-count", "N", "events up to and including the trigger (default: as built)",
     keepCount<&CaptureOptions::eventCount>, kUseArm},
    {"-windows", "N", "windows to capture (default: as built)", keepCount<&CaptureOptions::windows>, kUseArm},
    {"-timeout", "SECONDS", "seconds (or 5s, 200ms) to wait for the trigger after arming (default: 10)", keepTimeout,
     kUseWait},
    {"-repeat", "N", "captures N times, into numbered files; 0: until ^C (default: 1)", keepRepeats},
    {nullptr, nullptr, "Output (the file - is the standard output):", nullptr},
    {"-vcd", "FILE", "value change dump, for a waveform viewer", keepFile<&CaptureOptions::vcd>},
    {"-gtkw", "FILE", "GTKWave's save file for the -vcd: groups, radices, names of values, marker at the trigger",
     keepFile<&CaptureOptions::gtkw>},
    {"-bits", nullptr, "the -vcd has a variable for each bit, for programs that read no vectors", keepSingleBits,
     kUseWrite},
    {"-html", "FILE", "a page that shows the waveform in any browser", keepFile<&CaptureOptions::html>},
    {"-sr", "FILE", "session of sigrok, for PulseView and sigrok-cli", keepFile<&CaptureOptions::sigrok>},
    {"-csv", "FILE", "comma-separated values, one line for each sample", keepFile<&CaptureOptions::csv>},
    {"-json", "FILE", "all of it as JSON, for a program", keepFile<&CaptureOptions::json>},
    {"-replay", "INSTANCE", "a test bench that replays a probed instance on the source of its module; needs -out",
     keepText<&CaptureOptions::replay>},
    {"-out", "FILE", "the Verilog file of -replay", keepFile<&CaptureOptions::replayFile>},
    {"-window", "N", "the window of -replay, counted from 0 (default: 0)", keepWindow, kUseReplay},
    {"-wave", nullptr, "a small waveform on the terminal (default without a file)", raise<&CaptureOptions::wave>},
    {"-period", "TIME|CORE=TIME",
     "of the sample clocks, or of one, for example 10ns: files for viewers get real time; repeatable", keepPeriod,
     kUseWrite},
    {"-radix", "RADIX", "of vectors, instead of the core's: Bin, Oct, Dec or Hex", keepRadix, kUseWrite | kUseValues},
    {"-range", "FROM:TO", "only these samples, counted from the trigger", keepRange, kUseWrite | kUseReplay},
    {"-signals", "GLOB", "only signals with such a name (* and ?); repeatable", keepSignals, kUseWrite},
    {nullptr, nullptr, "Instead of a capture:", nullptr},
    {"-status", nullptr, "state of each core", raise<&CaptureOptions::status>},
    {"-wb", "COMMAND...",
     "over the Wishbone master: read ADDRESS ?COUNT?, write ADDRESS DATA..., load FILE ADDRESS, dump ADDRESS COUNT "
     "FILE; "
     "read8, write8, read16 and write16 for bytes and halfwords; repeatable",
     keepWishbone},
    {"-info", nullptr, "compares the hardware with the map and shows both", raise<&CaptureOptions::info>},
    {"-serdes", nullptr, "what the serdes core sees of its block; to \"-json\" where that is given",
     raise<&CaptureOptions::serdes>},
    {"-clear", nullptr, "with \"-serdes\": its counts start anew after they were read", raise<&CaptureOptions::clear>,
     kUseSerdes},
    {"-serve", "ADDRESS",
     "offers the simulation of -launch to programs on this computer, as a remote-bitbang server (tcp:PORT) or as a "
     "virtual cable (xvc:PORT); 0 is any free port",
     keepServe},
    {"-help", nullptr, "this text; so does --help", raise<&CaptureOptions::help>},
    {"--version", nullptr, "the version", raise<&CaptureOptions::version>},
    {nullptr, nullptr, "JTAG chain:", nullptr},
    {"-ir", "WIDTH:CODE", "instruction that selects the debug hub, of all devices as one number (default: the map's)",
     keepInstruction, kUseOpen},
    {"-bypass", "AHEAD:BEHIND", "other devices in the chain, between TDI and the hub and between the hub and TDO",
     keepPlace, kUseOpen},
    {nullptr, nullptr, "Simulation:", nullptr},
    {"-log", "FILE", "what the simulation of -launch prints", keepText<&CaptureOptions::logFile>, kUseOpen},
};

bool belongsTo(const Option& option, OptionUse use) {
  return option.name && (use == kUseProgram || (option.uses & use));
}

const Option* findOption(const QString& word, OptionUse use) {
  for (const Option& option : kOptions)
    if (belongsTo(option, use) && word == QLatin1String(option.name)) return &option;
  return nullptr;
}

bool isOptionWord(const QString& word) {
  return word.size() > 1 && word.startsWith(QLatin1Char('-'));
}

QString wordsOf(const Option& option) {
  const QString name = QLatin1String(option.name);
  return option.value ? name + QLatin1Char(' ') + QLatin1String(option.value) : name;
}

const char* problemOfOpen(const CaptureOptions& options) {
  const bool launches = !options.command.isEmpty();
  if (options.hasServer && launches) return "\"-connect\" and \"-launch\" exclude each other; give one of them.";
  if (options.servePort >= 0 && !launches)
    return "\"-serve\" offers a simulation to others; give its command with \"-launch\".";
  if (!options.logFile.isEmpty() && !launches)
    return "\"-log\" stores what a simulation prints; give its command with \"-launch\".";
  if (options.servePort < 0 && (options.mapFile.isEmpty() || !(options.hasServer || launches)))
    return "\"-map\" and one of \"-connect\" and \"-launch\" are required; \"ost_capture -help\" explains them.";
  return nullptr;
}

const char* problemOfSerdes(const CaptureOptions& options) {
  if (options.clear && !options.serdes) return "\"-clear\" is for \"-serdes\"; give both.";
  if (!options.serdes) return nullptr;
  for (const AskedFile& file : askedFiles(options))
    if (file.form != FileForm::Json) return "\"-serdes\" captures no samples; of the files only \"-json\" is for it.";
  return nullptr;
}

const char* problemOfArm(const CaptureOptions& options) {
  if (options.now && (!options.expressions.isEmpty() || options.eventCount > 0))
    return "\"-now\" looks at no expression; leave \"-te\" and \"-count\" out.";
  if (options.allCores && !options.core.isEmpty())
    return "\"-core\" and \"-all\" exclude each other; give one of them.";
  if (options.allCores && !options.expressions.isEmpty())
    return "\"-te\" chooses expressions of one core; name it with \"-core\" instead of \"-all\".";
  return nullptr;
}

}  // namespace

bool parseCaptureOptions(const QStringList& words, CaptureOptions& options, QString& error, OptionUse use) {
  for (int i = 0; i < words.size(); ++i) {
    const QString& word = words[i];
    const Option* option = findOption(word == QLatin1String("--help") ? QStringLiteral("-help") : word, use);
    if (!option) {
      error = QStringLiteral("There is no option \"%1\"; \"ost_capture -help\" lists the options.").arg(word);
      return false;
    }
    if (option->value && ++i == words.size()) {
      error = QStringLiteral("The value of \"%1\" is missing; \"ost_capture -help\" lists the options.").arg(word);
      return false;
    }
    QString value = option->value ? words[i] : QString();
    if (option->take == keepWishbone)
      while (i + 1 < words.size() && !isOptionWord(words[i + 1])) value += QLatin1Char('\n') + words[++i];
    if (!option->take(options, word, value, error)) return false;
    if (options.help || options.version) return true;
  }
  error = conflictOf(options);
  if (!error.isEmpty()) return false;
  const char* problem = use & (kUseProgram | kUseArm) ? problemOfArm(options) : nullptr;
  if (!problem && (use & kUseProgram)) problem = problemOfSerdes(options);
  if (!problem && (use & (kUseProgram | kUseOpen))) problem = problemOfOpen(options);
  if (problem) error = QLatin1String(problem);
  return !problem;
}

QString optionsUsage(OptionUse use) {
  QString text;
  for (const Option& option : kOptions)
    if (belongsTo(option, use)) text += QStringLiteral(" ?%1?").arg(wordsOf(option));
  return text;
}

QString captureUsage() {
  QString text = QStringLiteral(
      "ost_capture - arm an inserted debug core over JTAG and read its capture\n"
      "Usage: ost_capture -map FILE -connect SERVER [option...]\n"
      "       ost_capture -map FILE -launch COMMAND [option...]\n"
      "       ost_capture -launch COMMAND -serve tcp:PORT|xvc:PORT\n");
  for (const Option& option : kOptions) {
    if (!option.name) {
      text += QLatin1String(option.help) + QLatin1Char('\n');
      continue;
    }
    text += QStringLiteral("  %1 %2\n").arg(wordsOf(option), -24).arg(QLatin1String(option.help));
  }
  return text + QStringLiteral("Exit status: 0 done, 1 failed, 2 wrong command line, 3 no trigger in time.\n");
}

}  // namespace ost
