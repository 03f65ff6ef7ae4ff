// Reads file lists; see the header for their grammar.
#include "platform/design/file_list.h"

#include "platform/design/read_options.h"
#include "platform/system/files.h"
#include "platform/text/byte_text.h"

namespace ost {
namespace {

constexpr int kMaxNesting = 16;
constexpr int kMaxLists = 4096;  ///< Lists that name others twice at each level would be read without end.
constexpr qint64 kMaxTotalBytes = qint64(64) << 20;
constexpr qint64 kMaxListBytes = 16 << 20;

// The words of a line. False when a quote is left open.
bool splitLine(const QByteArray& line, QList<QByteArray>& words) {
  int at = 0;
  while (true) {
    while (at < line.size() && (line[at] == ' ' || line[at] == '\t' || line[at] == '\r')) ++at;
    if (at >= line.size() || line[at] == '#' || line.mid(at, 2) == "//") return true;
    QByteArray word;
    bool quoted = false;
    for (; at < line.size(); ++at) {
      const char c = line[at];
      if (quoted && line.mid(at, 2) == "\"\"") {
        word += line[at++];
      } else if (c == '"') {
        quoted = !quoted;
      } else if (!quoted && (c == ' ' || c == '\t' || c == '\r')) {
        break;
      } else {
        word += c;
      }
    }
    if (quoted) return false;
    words.append(word);
  }
}

class Reader {
 public:
  explicit Reader(FileListContent& content) : content_(content) {}

  bool read(const QString& list, QString& error, int nesting) {
    QByteArray content;
    QString problem;
    if (!readFile(fileFromText(list), kMaxListBytes, content, problem)) {
      error = QStringLiteral("Cannot read the file list \"%1\": %2").arg(list, problem);
      return false;
    }
    bytes_ += content.size();
    if (content_.lists.size() >= kMaxLists || bytes_ > kMaxTotalBytes) {
      error = QStringLiteral(
                  "\"%1\" is one file list too many: at most %2 with 64 MB in all are read, each as "
                  "often as it is named")
                  .arg(list)
                  .arg(kMaxLists);
      return false;
    }
    content_.lists.append(list);
    folder_ = list.left(list.lastIndexOf(QLatin1Char('/')) + 1);
    int number = 0;
    for (const QByteArray& line : content.split('\n')) {
      ++number;
      QList<QByteArray> words;
      QString reason;
      if (line.contains('\0') || !splitLine(line, words)) {
        reason = QStringLiteral("a quote is left open, or it is not text");
      } else if (take(words, reason, error, nesting)) {
        continue;
      }
      if (error.isEmpty()) error = QStringLiteral("%1:%2: %3").arg(list).arg(number).arg(reason);
      return false;
    }
    return true;
  }

 private:
  QString absolute(const QByteArray& name, const QString& folder) const {
    return name.startsWith('/') ? textFromBytes(name) : folder + textFromBytes(name);
  }

  bool take(const QList<QByteArray>& words, QString& reason, QString& error, int nesting) {
    for (int i = 0; i < words.size(); ++i) {
      const QByteArray& word = words.at(i);
      if (word == "-f") {
        if (++i >= words.size()) {
          reason = QStringLiteral("-f wants a file list after it");
          return false;
        }
        if (nesting >= kMaxNesting) {
          reason = QStringLiteral("file lists are nested deeper than 16 (does one name itself?)");
          return false;
        }
        const QString outer = folder_;
        if (!read(absolute(words.at(i), outer), error, nesting + 1)) return false;
        folder_ = outer;
      } else if (word.startsWith("+incdir+")) {
        for (const QByteArray& dir : parts(word)) content_.includeDirs.append(absolute(dir, folder_));
      } else if (word.startsWith("+define+")) {
        for (const QByteArray& define : parts(word)) content_.defines.append(textFromBytes(define));
      } else if (word.startsWith("+libext+")) {
        for (const QByteArray& suffix : parts(word)) content_.librarySuffixes.append(textFromBytes(suffix));
      } else if (word.startsWith('-') || word.startsWith('+')) {
        if (!takeOption(word, words.value(++i), reason)) return false;
      } else if (!word.isEmpty()) {
        content_.files.append(absolute(word, folder_));
      }
    }
    return true;
  }

  /// What stands between the '+' behind "+word".
  static QList<QByteArray> parts(const QByteArray& word) {
    QList<QByteArray> all = word.mid(word.indexOf('+', 1) + 1).split('+');
    all.removeAll(QByteArray());
    return all;
  }

  bool takeOption(const QByteArray& word, const QByteArray& value, QString& reason) {
    const ReadOption* option = findReadOption(textFromBytes(word));
    QString mustBe;
    if (!option || !option->inLists) {
      reason =
          QStringLiteral(
              "\"%1\" is not known: use a file name, +incdir+, +define+, +libext+, -f or an option of \"ost_design "
              "read\" that tells of the design (a file whose name begins so is written with ./ before it)")
              .arg(textFromBytes(word));
    } else if (value.isEmpty()) {
      reason = QStringLiteral("%1 wants a value after it").arg(textFromBytes(word));
    } else if (!option->take(content_, textFromBytes(value), folder_, mustBe)) {
      reason = QStringLiteral("\"%1\" cannot be the value of %2: it must be %3")
                   .arg(textFromBytes(value), textFromBytes(word), mustBe);
    }
    return reason.isEmpty();
  }

  FileListContent& content_;
  qint64 bytes_ = 0;  ///< Of all lists read.
  QString folder_;    ///< Of the list being read, with its closing '/'.
};

}  // namespace

bool readFileList(const QString& absoluteName, FileListContent& content, QString& error) {
  return Reader(content).read(absoluteName, error, 0);
}

}  // namespace ost
