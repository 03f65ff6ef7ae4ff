// What each option of `ost_design read` keeps, and its help.
#include "platform/design/read_options.h"

namespace ost {
namespace {

QString inFolder(const QString& name, const QString& folder) {
  return name.startsWith(QLatin1Char('/')) ? name : folder + name;
}

template <QString DesignSource::*member>
bool keepText(DesignSource& source, const QString& value, const QString&, QString&) {
  source.*member = value;
  return true;
}
template <QStringList DesignSource::*member>
bool addText(DesignSource& source, const QString& value, const QString&, QString&) {
  (source.*member).append(value);
  return true;
}
template <QStringList DesignSource::*member>
bool addName(DesignSource& source, const QString& value, const QString& folder, QString&) {
  (source.*member).append(inFolder(value, folder));
  return true;
}

bool isOneOf(const QString& value, const QStringList& words, QString& mustBe) {
  if (words.contains(value)) return true;
  mustBe = words.mid(0, words.size() - 1).join(QStringLiteral(", ")) + QStringLiteral(" or ") + words.last();
  return false;
}

bool takeCells(DesignSource& source, const QString& value, const QString&, QString& mustBe) {
  source.cells = value;
  return isOneOf(value, {QStringLiteral("xilinx"), QStringLiteral("gowin")}, mustBe);
}
bool takeSystemVerilog(DesignSource& source, const QString& value, const QString&, QString& mustBe) {
  source.systemVerilog = value;
  return isOneOf(value, {QStringLiteral("slang"), QStringLiteral("builtin"), QStringLiteral("auto")}, mustBe);
}
bool takeStandard(DesignSource& source, const QString& value, const QString&, QString& mustBe) {
  source.vhdlStandard = value;
  return isOneOf(value, {QStringLiteral("87"), QStringLiteral("93"), QStringLiteral("02"), QStringLiteral("08")},
                 mustBe);
}

bool takeVhdlLibrary(DesignSource& source, const QString& value, const QString& folder, QString& mustBe) {
  const int equals = value.indexOf(QLatin1Char('='));
  QStringList files;
  for (const QString& file : value.mid(equals + 1).split(QLatin1Char(','), Qt::SkipEmptyParts))
    files.append(inFolder(file, folder));
  mustBe = QStringLiteral("LIBRARY=FILE[,FILE...]");
  if (equals <= 0 || files.isEmpty()) return false;
  source.vhdlLibraries.append(value.left(equals + 1) + files.join(QLatin1Char(',')));
  return true;
}

bool takeNumber(const QString& value, int least, int most, int& number, QString& mustBe) {
  bool isNumber = false;
  number = value.toInt(&isNumber);
  mustBe = QStringLiteral("a number from %1 to %2").arg(least).arg(most);
  return isNumber && number >= least && number <= most;
}
bool takeSeconds(DesignSource& source, const QString& value, const QString&, QString& mustBe) {
  return takeNumber(value, 1, 86400, source.timeLimitSeconds, mustBe);
}
bool takeMegabytes(DesignSource& source, const QString& value, const QString&, QString& mustBe) {
  int megabytes = 0;
  const bool good = takeNumber(value, 64, 1048576, megabytes, mustBe);
  source.memoryLimitBytes = qint64(megabytes) << 20;
  return good;
}

bool takeJtag(DesignSource& source, const QString& value, const QString& folder, QString&) {
  source.jtag.way = isJtagWord(value) ? value : inFolder(value, folder);
  return true;
}
bool takeChain(DesignSource& source, const QString& value, const QString&, QString& mustBe) {
  int chain = 0;
  source.jtag.chain = value;
  return takeNumber(value, 1, 4, chain, mustBe);
}
bool takePeriod(DesignSource& source, const QString& value, const QString&, QString& mustBe) {
  bool isNumber = false;
  const double period = value.toDouble(&isNumber);
  source.jtag.period = value;
  mustBe = QStringLiteral("a number of nanoseconds from 1 to 1000000");
  return isNumber && period >= 1 && period <= 1e6;
}

}  // namespace

bool isJtagWord(const QString& way) {
  return QStringList{QStringLiteral("pins"), QStringLiteral("bscane2"), QStringLiteral("gw_jtag")}.contains(way);
}

const std::vector<ReadOption>& readOptions() {
  static const std::vector<ReadOption> options = {
      {"-top", "NAME", "the top module or entity; without it one is looked for", true, keepText<&DesignSource::top>},
      {"-param", "NAME=VALUE", "a parameter or generic of the top (may be repeated)", true,
       addText<&DesignSource::parameters>},
      {"-incdir", "DIR", "a folder of include files (may be repeated)", true, addName<&DesignSource::includeDirs>},
      {"-define", "NAME?=VALUE?", "a macro (may be repeated)", true, addText<&DesignSource::defines>},
      {"-f", "FILELIST", "a list of files and options (may be repeated)", false, addName<&DesignSource::fileLists>},
      {"-y", "DIR", "a folder where MODULE.v is looked for (may be repeated)", true,
       addName<&DesignSource::libraryDirs>},
      {"-blackbox", "MODULE", "a module that is used but not looked into (may be repeated)", true,
       addText<&DesignSource::blackBoxes>},
      {"-cells", "TARGET", "declares the cells of xilinx or gowin, as Yosys has them", true, takeCells},
      {"-sv", "READER", "what reads SystemVerilog: slang, builtin or auto", true, takeSystemVerilog},
      {"-std", "YEAR", "the standard of the VHDL files: 87, 93, 02 or 08; 08 at first", true, takeStandard},
      {"-work", "LIBRARY=FILES", "VHDL files, with commas, of another library (may be repeated)", true,
       takeVhdlLibrary},
      {"-jtag", "WAY", "the way to the debug hub: pins, bscane2, gw_jtag or the file of a wrapper", true, takeJtag},
      {"-chain", "NUMBER", "the primitive's user register: 1 to 4 of bscane2, 1 or 2 of gw_jtag; 1 at first", true,
       takeChain},
      {"-period", "NS", "of TCK, for the constraints; 100 at first", true, takePeriod},
      {"-timeout", "SECONDS", "how long a program may take, 1 to 86400; 600 at first", false, takeSeconds},
      {"-memory", "MEGABYTES", "how much memory it may take, 64 to 1048576; 8192 at first", false, takeMegabytes},
  };
  return options;
}

const ReadOption* findReadOption(const QString& name) {
  for (const ReadOption& option : readOptions())
    if (name == QLatin1String(option.name)) return &option;
  return nullptr;
}

}  // namespace ost
