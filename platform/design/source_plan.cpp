// Turns a DesignSource into checked files and the script that reads them.
#include "platform/design/source_plan.h"

#include <errno.h>

#include <QDir>
#include <QFileInfo>
#include <algorithm>

#include "platform/design/file_list.h"
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
    error = QString::fromLatin1("\"%1\" is not a macro definition: write NAME or NAME=VALUE").arg(define);
    return false;
  }
  for (const QChar c : value) {
    if (c.unicode() < 32 || c.unicode() == 127) {
      error = QString::fromLatin1("The value of the macro \"%1\" holds a control character or a line end").arg(name);
      return false;
    }
  }
  if (!value.endsWith(QLatin1Char('\\'))) return true;
  error = QString::fromLatin1("The value of the macro \"%1\" ends with a backslash").arg(name);
  return false;
}

bool checkReadable(const QString& file, const QString& typed, QString& error) {
  QString reason;
  if (openRegular(file, SourcePlan::kMaxFileBytes, reason).isOpen()) return true;
  error = QString::fromLatin1("Cannot read \"%1\": %2").arg(typed, reason);
  return false;
}

}  // namespace

std::unique_ptr<SourcePlan> SourcePlan::make(const DesignSource& source, const QString& workingDirectory,
                                             QString& error) {
  std::unique_ptr<SourcePlan> plan(new SourcePlan);
  plan->workingDirectory_ = workingDirectory;
  QStringList files = source.files, directories = source.includeDirs;
  plan->defines_ = source.defines;
  plan->blackBoxes_ = source.blackBoxes;
  FileListContent lists;
  for (const QString& list : source.fileLists) {
    if (!readFileList(textFromFile(absoluteFile(list, workingDirectory)), lists, error)) return nullptr;
  }
  files += lists.files;
  directories += lists.includeDirs;
  plan->defines_ += lists.defines;

  if (files.isEmpty()) {
    error = source.fileLists.isEmpty()
                ? QString::fromLatin1("No source file was given")
                : QString::fromLatin1("The file list \"%1\" names no source file").arg(source.fileLists.first());
    return nullptr;
  }
  for (const QString& define : qAsConst(plan->defines_)) {
    if (!checkDefine(define, error)) return nullptr;
  }
  for (const QString& module : qAsConst(plan->blackBoxes_)) {
    if (isVerilogIdentifier(module)) continue;
    error = QString::fromLatin1("\"%1\" is not a module name that can be a black box").arg(module);
    return nullptr;
  }
  for (const QString& directory : qAsConst(directories)) {
    const QString absolute = absoluteFile(directory, workingDirectory);
    if (!QFileInfo(absolute).isDir()) {
      error = QString::fromLatin1("The include folder \"%1\" does not exist").arg(directory);
      return nullptr;
    }
    if (!plan->addIncludeDir(absolute, directory, error)) return nullptr;
  }
  for (const QString& file : qAsConst(files)) {
    const QString absolute = absoluteFile(file, workingDirectory);
    if (!checkReadable(absolute, file, error)) return nullptr;
    plan->netlist_ |= absolute.endsWith(QLatin1String(".json"), Qt::CaseInsensitive);
    plan->files_.append(absolute);
    plan->typedNames_.insert(absolute, file);
    if (!plan->addScriptName(absolute, file, error)) return nullptr;
  }
  if (plan->netlist_ && files.size() > 1) {
    error = QString::fromLatin1("A Yosys JSON netlist is a whole design: give it alone, without other files");
    return nullptr;
  }
  for (const QString& list : qAsConst(lists.lists)) plan->files_.append(fileFromText(list));
  std::sort(plan->rewrites_.begin(), plan->rewrites_.end(),
            [](const auto& a, const auto& b) { return a.first.size() > b.first.size(); });
  return plan;
}

QByteArray SourcePlan::link(const QString& target, const char* kind, const QByteArray& suffix, QString& error) {
  if (!links_) links_.reset(new LinkFolder);
  const QByteArray name = kind + QByteArray::number(linked_.size()) + suffix, real = QFile::encodeName(target);
  const QByteArray path = links_->path() + '/' + name;
  errno = EINVAL;
  if (!YosysScript::isPlainFile(links_->path()) || !links_->add(name, real)) {
    error = QString::fromLatin1("Cannot link \"%1\" into the temporary folder \"%2\": %3; set TMPDIR to another folder")
                .arg(textFromFile(target), textFromFile(QDir::tempPath()), systemReason(errno));
    return QByteArray();
  }
  linked_.append(qMakePair(path, real));
  return path;
}

bool SourcePlan::addIncludeDir(const QString& directory, const QString& typed, QString& error) {
  QByteArray name = QFile::encodeName(directory);
  if (!YosysScript::isPlainFile(name)) name = link(directory, "dir", QByteArray(), error);
  if (name.isEmpty()) return false;
  includeDirs_.append(name);
  rewrites_.append(qMakePair(name, typed.toLatin1()));
  return true;
}

bool SourcePlan::addScriptName(const QString& file, const QString& typed, QString& error) {
  File entry;
  entry.scriptName = QFile::encodeName(file);
  const QByteArray suffix = entry.scriptName.mid(entry.scriptName.lastIndexOf('.')).toLower();
  entry.systemVerilog = suffix == ".sv" || suffix == ".svh";
  if (!YosysScript::isPlainFile(entry.scriptName)) {
    const QString folder = QFileInfo(file).absolutePath();
    entry.ownIncludeDir = link(folder, "dir", QByteArray(), error);
    entry.scriptName = link(file, "file", entry.systemVerilog ? ".sv" : netlist_ ? ".json" : ".v", error);
    if (entry.ownIncludeDir.isEmpty() || entry.scriptName.isEmpty()) return false;
    rewrites_.append(qMakePair(entry.ownIncludeDir, textFromFile(folder).toLatin1()));
  }
  rewrites_.append(qMakePair(entry.scriptName, typed.toLatin1()));
  scriptFiles_.append(entry);
  return true;
}

void SourcePlan::addRead(YosysScript& script, bool boxes) const {
  // Yosys keeps macros from file to file, and takes any value from a text.
  if (!defines_.isEmpty()) {
    QList<QByteArray> lines;
    for (const QString& define : defines_) {
      const int equals = define.indexOf(QLatin1Char('='));
      lines.append("`define " + define.left(equals).toLatin1());
      if (equals >= 0) lines.last() += ' ' + define.mid(equals + 1).toLatin1();
    }
    script.line("read_verilog -nodpi").text(lines);
  }
  for (const File& file : scriptFiles_) {
    // What a source imports from C would be called here, with what the source gives it.
    script.line("read_verilog -nodpi");
    if (boxes) script.words(" -lib");
    if (!boxes && !blackBoxes_.isEmpty()) script.words(" -nooverwrite");
    if (file.systemVerilog) script.words(" -sv");
    if (!file.ownIncludeDir.isEmpty()) script.includeDir(file.ownIncludeDir);
    for (const QByteArray& directory : includeDirs_) script.includeDir(directory);
    script.file(file.scriptName);
  }
}

YosysScript SourcePlan::readScript() const {
  YosysScript script;
  if (netlist_) return script.line("read_json").file(scriptFiles_.first().scriptName);
  if (!blackBoxes_.isEmpty()) {
    // First all modules as empty shells, of which the wanted black boxes are kept; then the rest in full.
    addRead(script, true);
    script.line("select -set ost_keep");
    for (const QString& module : blackBoxes_) script.selected('\\' + module.toLatin1());
    script.line("delete =* @ost_keep %d").line("design -reset-vlog");
  }
  addRead(script, false);
  return script;
}

QByteArray SourcePlan::inUsersWords(QByteArray text) const {
  for (const auto& rewrite : rewrites_) {
    for (int at = text.indexOf(rewrite.first); at >= 0; at = text.indexOf(rewrite.first, at)) {
      const int after = at + rewrite.first.size();
      const char next = after < text.size() ? text.at(after) : ' ';
      const bool whole = !((next >= 'a' && next <= 'z') || (next >= 'A' && next <= 'Z') ||
                           (next >= '0' && next <= '9') || next == '_' || next == '.');
      if (whole) text.replace(at, rewrite.first.size(), rewrite.second);
      at += whole ? rewrite.second.size() : 1;
    }
  }
  return text;
}

QString SourcePlan::realFile(const QByteArray& name) const {
  QByteArray real = name;
  for (const auto& link : linked_) {
    if (real == link.first || real.startsWith(link.first + '/')) real.replace(0, link.first.size(), link.second);
  }
  return QDir::cleanPath(QDir(workingDirectory_).absoluteFilePath(QFile::decodeName(real)));
}

}  // namespace ost
