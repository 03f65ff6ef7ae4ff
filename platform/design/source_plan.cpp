// Turns a DesignSource into checked files, and takes what else turns out to be needed.
#include "platform/design/source_plan.h"

#include <errno.h>

#include <QDir>
#include <QFileInfo>
#include <algorithm>

#include "platform/design/file_list.h"
#include "platform/design/mapped_cells.h"
#include "platform/system/files.h"
#include "platform/text/byte_text.h"
#include "platform/text/names.h"

namespace ost {
namespace {

QString absoluteFile(const QString& typed, const QString& workingDirectory) {
  return QDir::cleanPath(QDir(workingDirectory).absoluteFilePath(fileFromText(typed)));
}

bool checkDefine(const QString& define, QString& error) {
  const int equals = define.indexOf(QLatin1Char('='));
  const QString name = define.left(equals), value = equals < 0 ? QString() : define.mid(equals + 1);
  if (!isVerilogIdentifier(name)) {
    error = QStringLiteral("\"%1\" is not a macro definition: write NAME or NAME=VALUE").arg(define);
    return false;
  }
  for (const QChar c : value) {
    if (c.unicode() < 32 || c.unicode() == 127) {
      error = QStringLiteral("The value of the macro \"%1\" holds a control character or a line end").arg(name);
      return false;
    }
  }
  if (!value.endsWith(QLatin1Char('\\'))) return true;
  error = QStringLiteral("The value of the macro \"%1\" ends with a backslash").arg(name);
  return false;
}

bool isVhdl(const QString& file) {
  return file.endsWith(QLatin1String(".vhd"), Qt::CaseInsensitive) ||
         file.endsWith(QLatin1String(".vhdl"), Qt::CaseInsensitive);
}

/// Texts are looked into up to this size; longer ones are read as they are.
constexpr qint64 kMaxScannedBytes = qint64(256) << 20;

}  // namespace

std::unique_ptr<SourcePlan> SourcePlan::make(const DesignSource& source, const QString& workingDirectory,
                                             QString& error) {
  std::unique_ptr<SourcePlan> plan(new SourcePlan);
  plan->workingDirectory_ = workingDirectory;
  plan->source_ = source;
  if (!plan->takeLists(workingDirectory, error) || !plan->takeWords(error)) return nullptr;
  for (const QString& directory : qAsConst(plan->source_.includeDirs)) {
    const QString absolute = absoluteFile(directory, workingDirectory);
    if (!QFileInfo(absolute).isDir()) {
      error = QStringLiteral("The include folder \"%1\" does not exist").arg(directory);
      return nullptr;
    }
    if (!plan->addIncludeDir(absolute, directory, error)) return nullptr;
  }
  for (const QString& directory : qAsConst(plan->source_.libraryDirs)) {
    plan->libraryDirs_.append(absoluteFile(directory, workingDirectory));
    if (QFileInfo(plan->libraryDirs_.last()).isDir()) continue;
    error = QStringLiteral("The library folder \"%1\" does not exist; correct -y.").arg(directory);
    return nullptr;
  }
  if (!plan->takeVhdlLibraries(error)) return nullptr;
  for (const QString& file : qAsConst(plan->source_.files))
    if (!plan->takeFile(file, "work", error)) return nullptr;
  if (plan->netlist_ && plan->source_.files.size() > 1) {
    error = QStringLiteral("A Yosys JSON netlist is a whole design: give it alone, without other files");
    return nullptr;
  }
  if (plan->netlist_ && !plan->parameters_.isEmpty()) {
    error = QStringLiteral("A netlist is elaborated already and takes no parameters; leave out -param.");
    return nullptr;
  }
  plan->top_ = plan->source_.top.toLatin1();
  // VHDL has no case; the name goes on as its entity is declared.
  if (const VhdlEntity* entity = plan->vhdl_.find(plan->top_)) plan->top_ = entity->name;
  return plan;
}

/// Adds what the file lists say to source_; words that came with the command win over those of a list.
bool SourcePlan::takeLists(const QString& workingDirectory, QString& error) {
  FileListContent lists;
  for (const QString& list : qAsConst(source_.fileLists))
    if (!readFileList(textFromFile(absoluteFile(list, workingDirectory)), lists, error)) return false;
  for (const auto member : {&DesignSource::files, &DesignSource::includeDirs, &DesignSource::defines,
                            &DesignSource::blackBoxes, &DesignSource::parameters, &DesignSource::libraryDirs,
                            &DesignSource::librarySuffixes, &DesignSource::vhdlLibraries})
    source_.*member += lists.*member;
  for (const auto member :
       {&DesignSource::top, &DesignSource::cells, &DesignSource::systemVerilog, &DesignSource::vhdlStandard})
    if ((source_.*member).isEmpty()) source_.*member = lists.*member;
  source_.jtag.fill(lists.jtag);
  if (source_.librarySuffixes.isEmpty()) source_.librarySuffixes << QStringLiteral(".v") << QStringLiteral(".sv");
  for (const QString& list : qAsConst(lists.lists)) lists_.append(fileFromText(list));
  if (!source_.files.isEmpty() || !source_.vhdlLibraries.isEmpty()) return true;
  error = source_.fileLists.isEmpty()
              ? QStringLiteral("No source file was given")
              : QStringLiteral("The file list \"%1\" names no source file").arg(source_.fileLists.first());
  return false;
}

bool SourcePlan::takeWords(QString& error) {
  for (const QString& define : qAsConst(source_.defines))
    if (!checkDefine(define, error)) return false;
  for (const QString& module : qAsConst(source_.blackBoxes)) {
    if (isVerilogIdentifier(module)) continue;
    error = QStringLiteral("\"%1\" is not a module name that can be a black box").arg(module);
    return false;
  }
  for (const QString& assignment : qAsConst(source_.parameters)) {
    TopParameter parameter;
    if (!parseTopParameter(assignment, parameter, error)) return false;
    // The last one counts: words of the command come before those of the lists.
    const auto same = [&parameter](const TopParameter& other) { return other.name == parameter.name; };
    if (std::none_of(parameters_.begin(), parameters_.end(), same)) parameters_.append(parameter);
  }
  if (!source_.vhdlStandard.isEmpty()) vhdl_.standard = source_.vhdlStandard;
  return true;
}

bool SourcePlan::takeVhdlLibraries(QString& error) {
  for (const QString& words : qAsConst(source_.vhdlLibraries)) {
    const int equals = words.indexOf(QLatin1Char('='));
    const QString library = words.left(equals).toLower();
    if (!isIdentifier(library)) {
      error = QStringLiteral("\"%1\" cannot be the name of a VHDL library; correct -work.").arg(words.left(equals));
      return false;
    }
    for (const QString& file : words.mid(equals + 1).split(QLatin1Char(',')))
      if (!takeFile(file, library.toLatin1(), error)) return false;
  }
  return true;
}

bool SourcePlan::takeFile(const QString& typed, const QByteArray& library, QString& error) {
  const QString absolute = absoluteFile(typed, workingDirectory_);
  QString reason;
  if (!openRegular(absolute, kMaxFileBytes, reason).isOpen()) {
    error = QStringLiteral("Cannot read \"%1\": %2").arg(typed, reason);
    return false;
  }
  netlist_ |= absolute.endsWith(QLatin1String(".json"), Qt::CaseInsensitive);
  File entry;
  QByteArray replaced;
  const int entities = vhdl_.scan.entities.size();
  if (!netlist_ && !lookInto(absolute, typed, entry, replaced, error)) return false;
  for (int i = entities; i < vhdl_.scan.entities.size(); ++i) vhdl_.scan.entities[i].library = library;
  typedNames_.insert(absolute, typed);
  files_.append(absolute);
  if (library != "work" || isVhdl(absolute)) {
    vhdl_.files.append({library, absolute});
    names_.show(QFile::encodeName(absolute), typed);
    return true;
  }
  return addScriptName(absolute, typed, entry, replaced, error);
}

/// What the text itself tells: its modules or entities, that it is encrypted or begins with a byte-order mark.
bool SourcePlan::lookInto(const QString& absolute, const QString& typed, File& entry, QByteArray& replaced,
                          QString& error) {
  QByteArray text;
  QString reason;
  if (!readFile(absolute, kMaxScannedBytes, text, reason)) return true;
  if (text.startsWith("\xff\xfe") || text.startsWith("\xfe\xff")) {
    error = QStringLiteral("\"%1\" is written in UTF-16, which no front end reads; save it as UTF-8.").arg(typed);
    return false;
  }
  if (isVhdl(absolute)) {
    scanVhdl(text, vhdl_.scan);
    return true;
  }
  if (const int line = encryptedLine(text)) {
    error = QStringLiteral(
                "%1:%2: The source is encrypted, and Yosys cannot decrypt it; leave the file out and take its modules "
                "as black boxes with -blackbox MODULE.")
                .arg(typed)
                .arg(line);
    return false;
  }
  if (text.startsWith("\xef\xbb\xbf")) replaced = text.mid(3);
  const QList<ScannedModule> modules = scanVerilog(text);
  for (const ScannedModule& module : modules) {
    entry.atOnce |= module.bodyless && module.shell.contains("parameter");
    entry.mapped |= std::any_of(module.words.begin(), module.words.end(), isRawCell);
  }
  modules_ += modules;
  return true;
}

QString SourcePlan::libraryFile(const QByteArray& module) const {
  if (!isVerilogIdentifier(textFromBytes(module))) return QString();
  for (const QString& directory : libraryDirs_) {
    for (const QString& suffix : source_.librarySuffixes) {
      const QString file = directory + QLatin1Char('/') + fileFromText(textFromBytes(module) + suffix);
      if (QFileInfo(file).isFile() && !files_.contains(file)) return file;
    }
  }
  return QString();
}

bool SourcePlan::addLibraryFile(const QString& file, QString& error) {
  return takeFile(textFromFile(file), "work", error);
}

QString SourcePlan::includer(const QString& include) const {
  const QByteArray name = '"' + include.toLatin1() + '"';
  for (const QString& file : files_) {
    QByteArray text;
    QString reason;
    if (!readFile(file, kMaxScannedBytes, text, reason)) continue;
    int number = 0;
    for (const QByteArray& line : text.split('\n')) {
      ++number;
      const QByteArray word = line.trimmed();
      if (word.startsWith("`include") && word.mid(8).trimmed().startsWith(name))
        return QStringLiteral("%1:%2: ").arg(typedNames_.value(file)).arg(number);
    }
  }
  return QString();
}

QStringList SourcePlan::systemVerilogFiles() const {
  QStringList files;
  for (const QString& file : files_)
    if (file.endsWith(QLatin1String(".sv"), Qt::CaseInsensitive)) files.append(file);
  return files;
}

QList<QByteArray> SourcePlan::macroWords() const {
  QList<QByteArray> words;
  for (const QString& define : source_.defines) words << "-D" + define.toLatin1();
  for (const QString& directory : source_.includeDirs)
    words << "-I" + QFile::encodeName(absoluteFile(directory, workingDirectory_));
  return words;
}

bool SourcePlan::replaceSystemVerilog(const QByteArray& verilog, QString& error) {
  File file;
  file.scriptName = names_.keep(verilog, ".v", QStringLiteral("the Verilog of sv2v"), error);
  if (file.scriptName.isEmpty()) return false;
  scriptFiles_.erase(
      std::remove_if(scriptFiles_.begin(), scriptFiles_.end(), [](const File& one) { return one.systemVerilog; }),
      scriptFiles_.end());
  scriptFiles_.append(file);
  return true;
}

bool SourcePlan::addBoxes(const QByteArray& verilog, bool systemVerilog, QString& error) {
  File file;
  file.systemVerilog = systemVerilog;
  file.scriptName = names_.keep(verilog, ".v", QStringLiteral("the declarations of black boxes"), error);
  boxes_.append(file);
  return !file.scriptName.isEmpty();
}

bool SourcePlan::addVhdl(const QByteArray& verilog, const QByteArray& entity, const QList<VhdlBinding>& bindings,
                         QString& error) {
  const QByteArray name =
      names_.keep(verilog, ".v", QStringLiteral("the Verilog of \"%1\"").arg(textFromBytes(entity)), error);
  vhdlRounds_.append({name, bindings});
  return !name.isEmpty();
}

bool SourcePlan::addIncludeDir(const QString& directory, const QString& typed, QString& error) {
  QByteArray name = QFile::encodeName(directory);
  if (!YosysScript::isPlainFile(name)) name = names_.link(directory, "dir", QByteArray(), error);
  if (name.isEmpty()) return false;
  includeDirs_.append(name);
  names_.show(name, typed);
  return true;
}

/// `content` is read in the file's place, unless it is empty.
bool SourcePlan::addScriptName(const QString& file, const QString& typed, File& entry, const QByteArray& content,
                               QString& error) {
  entry.scriptName = QFile::encodeName(file);
  const QByteArray suffix = entry.scriptName.mid(entry.scriptName.lastIndexOf('.')).toLower();
  entry.systemVerilog = suffix == ".sv" || suffix == ".svh";
  if (!content.isEmpty() || !YosysScript::isPlainFile(entry.scriptName)) {
    const QString folder = QFileInfo(file).absolutePath();
    const char* kind = entry.systemVerilog ? ".sv" : netlist_ ? ".json" : ".v";
    entry.ownIncludeDir = names_.link(folder, "dir", QByteArray(), error);
    entry.scriptName =
        content.isEmpty() ? names_.link(file, "file", kind, error) : names_.keep(content, kind, typed, error);
    if (entry.ownIncludeDir.isEmpty() || entry.scriptName.isEmpty()) return false;
    names_.show(entry.ownIncludeDir, textFromFile(folder));
  }
  names_.show(entry.scriptName, typed);
  scriptFiles_.append(entry);
  return true;
}

}  // namespace ost
