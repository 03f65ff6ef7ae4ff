// Writes the words of a read as a file list.
#include "platform/design/design_list.h"

#include <QDir>
#include <QRegularExpression>
#include <algorithm>
#include <cstring>

#include "platform/design/read_options.h"
#include "platform/text/byte_text.h"

namespace ost {
namespace {

const char kMark[] = "// Written by ost_project at each save and run; ost_design read -f takes it.\n";

class ListText {
 public:
  ListText(const Design& design, const QString& file) : design_(design), file_(file) {}

  QString fault;  ///< Of the first word that cannot be written.

  void option(const char* name, const QString& value) {
    if (!value.isEmpty()) line(QByteArray(name) + ' ' + word(value));
  }
  void options(const char* name, const QStringList& values) {
    for (const QString& value : values) option(name, value);
  }
  void names(const char* name, const QStringList& files) {
    for (const QString& file : files) option(name, nameInList(file));
  }
  void files(const QStringList& files) {
    for (const QString& file : files) line(word(nameInList(file)));
  }
  /// One line; each line once.
  void line(const QByteArray& text) {
    if (!lines_.contains(text)) lines_.append(text);
  }

  /// The name as the list says it: not to be taken for an option.
  QString nameInList(const QString& typed) const {
    const QString folder = file_.left(file_.lastIndexOf(QLatin1Char('/')) + 1);
    const QString whole = absolute(typed);
    // The first folder below the root, with both slashes: what is not shared up to there does not move together.
    const QString shared = folder.left(folder.indexOf(QLatin1Char('/'), 1) + 1);
    if (shared.size() < 2 || !whole.startsWith(shared)) return textFromFile(whole);
    const QString name = textFromFile(QDir(folder).relativeFilePath(whole));
    const bool likeOption = name.startsWith(QLatin1Char('-')) || name.startsWith(QLatin1Char('+'));
    return likeOption ? QLatin1String("./") + name : name;
  }

  QString absolute(const QString& typed) const {
    return QDir::cleanPath(QDir(design_.workingDirectory()).absoluteFilePath(fileFromText(typed)));
  }

  QByteArray text() const { return kMark + lines_.join('\n') + '\n'; }

 private:
  QByteArray word(const QString& text) {
    QByteArray bytes = text.toLatin1();
    if (bytes.contains('\n') || bytes.contains('\0'))
      fault = QStringLiteral("\"%1\" has a line feed, which no file list can hold").arg(oneLine(text));
    const bool plain = !bytes.isEmpty() && !bytes.startsWith('#') && !bytes.startsWith("//") &&
                       std::none_of(bytes.begin(), bytes.end(), [](char c) { return std::strchr(" \t\r\"", c); });
    return plain ? bytes : '"' + bytes.replace("\"", "\"\"") + '"';
  }

  const Design& design_;
  const QString file_;
  QList<QByteArray> lines_;
};

}  // namespace

bool isDesignList(const QByteArray& text) {
  return text.startsWith(kMark);
}

QByteArray designListText(const Design& design, const JtagWords& jtag, const QString& file, const QByteArray& before,
                          QString& error) {
  const DesignSource& source = design.source();
  ListText list(design, file);
  // Of what may be repeated the words of the command come first, of the rest the last one holds: as in a read.
  list.options("-param", source.parameters);
  list.names("-incdir", source.includeDirs);
  list.options("-define", source.defines);
  list.names("-y", source.libraryDirs);
  list.options("-blackbox", source.blackBoxes);
  for (const QString& library : source.vhdlLibraries) {
    QStringList files = library.mid(library.indexOf(QLatin1Char('=')) + 1).split(QLatin1Char(','));
    for (QString& name : files) name = list.nameInList(name);
    list.option("-work", library.left(library.indexOf(QLatin1Char('=')) + 1) + files.join(QLatin1Char(',')));
  }
  list.files(source.files);
  for (const QString& name : source.fileLists) {
    if (list.absolute(name) != file) {
      list.names("-f", {name});
      continue;
    }
    for (const QByteArray& line : before.split('\n')) {
      const bool ofJtag = line.startsWith("-jtag ") || line.startsWith("-chain ") || line.startsWith("-period ");
      if (!line.isEmpty() && !ofJtag && !isDesignList(line + '\n')) list.line(line);
    }
  }
  list.option("-top", source.top);
  list.option("-cells", source.cells);
  list.option("-sv", source.systemVerilog);
  list.option("-std", source.vhdlStandard);
  list.option("-jtag", jtag.way.isEmpty() || isJtagWord(jtag.way) ? jtag.way : list.nameInList(jtag.way));
  list.option("-chain", jtag.chain);
  list.option("-period", jtag.period);
  error = list.fault;
  return error.isEmpty() ? list.text() : QByteArray();
}

QStringList listsInFolder() {
  static const QRegularExpression plain(QStringLiteral("^[A-Za-z0-9_][A-Za-z0-9_.+-]*$"));
  QStringList lists;
  const QDir folder;
  for (const QString& file : folder.entryList({QStringLiteral("*.f")}, QDir::Files | QDir::Readable, QDir::Name))
    if (plain.match(file).hasMatch()) lists.append(textFromFile(file));
  return lists;
}

}  // namespace ost
