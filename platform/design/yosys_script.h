// The one way to compose what Yosys runs. Its scripts have no escapes, and whatever a line ends with or a word begins
// with may be a command: commands are literals of ours, and everything else is given as what it is and checked as such.
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <cstddef>

namespace ost {

/// Each call adds to the line that is being written. A piece that Yosys cannot take makes the whole script unsound, and
/// an unsound script is not run.
class YosysScript {
 public:
  /// Begins a line with commands or words of ours; may hold several lines. Only literals: nothing that was read or
  /// typed has this type.
  template <std::size_t N>
  YosysScript& line(const char (&literal)[N]) {
    endLine();
    return raw(literal, N - 1);
  }
  template <std::size_t N>
  YosysScript& line(char (&)[N]) = delete;
  /// Adds words of ours to the line, with their leading blank.
  template <std::size_t N>
  YosysScript& words(const char (&literal)[N]) {
    return raw(literal, N - 1);
  }
  template <std::size_t N>
  YosysScript& words(char (&)[N]) = delete;

  /// A module, by Yosys' own name of it: "\name", or "$..." for one that Yosys named.
  YosysScript& module(const QByteArray& id) { return name("", id); }
  /// The module of exactly this name, where a selection is expected.
  YosysScript& selected(const QByteArray& id) { return name("=", id); }
  /// The cell of exactly this name in the module, where a selection is expected.
  YosysScript& selectedCell(const QByteArray& module, const QByteArray& id);
  /// All cells of exactly this type, where a selection is expected.
  YosysScript& cellsOfType(const QByteArray& id);
  /// A file of Yosys' own, by its name in the folder of its data.
  YosysScript& dataFile(const QByteArray& name);
  /// A file to read, by an absolute name of isPlainFile(); Yosys takes other names for patterns.
  YosysScript& file(const QByteArray& absolute) { return fileAfter(" ", absolute); }
  YosysScript& includeDir(const QByteArray& absolute) { return fileAfter(" -I", absolute); }
  /// The open file YosysJob::files[index].
  YosysScript& openFile(int index);
  /// A word that is no name and no file, such as "-DWIDTH=8": letters, digits and some signs.
  YosysScript& word(const QByteArray& text);
  /// Lines that the command reads in a file's place; without control characters.
  YosysScript& text(const QList<QByteArray>& lines);
  YosysScript& append(const YosysScript& other);

  static bool isName(const QByteArray& id);
  static bool isPlainFile(const QByteArray& absolute);

  /// Why it cannot be run, or empty.
  const QString& problem() const { return problem_; }
  /// For runYosys().
  QByteArray bytes() const { return text_ + '\n'; }

 private:
  void endLine();
  YosysScript& raw(const char* text, std::size_t size);
  YosysScript& name(const char* mark, const QByteArray& id);
  YosysScript& fileAfter(const char* option, const QByteArray& absolute);
  YosysScript& exactly(const char* mark, const QByteArray& id);
  YosysScript& refuse(const char* what, const QByteArray& piece);

  QByteArray text_;
  QString problem_;  ///< Of the first unsound piece.
};

}  // namespace ost
