// The rule for user-given names, default names and near names.
#include "platform/istdata/names.h"

#include <QSet>
#include <QVector>
#include <algorithm>

namespace ost {

namespace {

bool isLetter(QChar c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}
bool isDigit(QChar c) {
  return c >= '0' && c <= '9';
}

/// Edits (insert, delete, replace; case counts as half of one, so results are doubled) from `a` to `b`; `limit` + 1
/// when more are needed.
int editDistance(const QString& a, const QString& b, int limit) {
  if (qAbs(a.size() - b.size()) * 2 > limit) return limit + 1;
  QVector<int> row(b.size() + 1);
  for (int j = 0; j <= b.size(); ++j) row[j] = 2 * j;
  for (int i = 1; i <= a.size(); ++i) {
    int diagonal = row[0], least = row[0] = 2 * i;
    for (int j = 1; j <= b.size(); ++j) {
      const QChar x = a[i - 1], y = b[j - 1];
      const int replace = diagonal + (x == y ? 0 : x.toLower() == y.toLower() ? 1 : 2);
      diagonal = row[j];
      row[j] = std::min({replace, row[j] + 2, row[j - 1] + 2});
      least = std::min(least, row[j]);
    }
    if (least > limit) return limit + 1;
  }
  return row[b.size()];
}

}  // namespace

bool isIdentifier(const QString& text) {
  if (text.isEmpty() || !isLetter(text[0])) return false;
  return std::all_of(text.begin(), text.end(), [](QChar c) { return isLetter(c) || isDigit(c); });
}

bool isVerilogKeyword(const QString& text) {
  // IEEE 1364-2005, annex B.
  static const QSet<QString> keywords = [] {
    const QString words = QStringLiteral(
        "always and assign automatic begin buf bufif0 bufif1 case casex casez cell cmos config deassign default "
        "defparam design disable edge else end endcase endconfig endfunction endgenerate endmodule endprimitive "
        "endspecify endtable endtask event for force forever fork function generate genvar highz0 highz1 if ifnone "
        "incdir include initial inout input instance integer join large liblist library localparam macromodule medium "
        "module nand negedge nmos nor noshowcancelled not notif0 notif1 or output parameter pmos posedge primitive "
        "pull0 pull1 pulldown pullup pulsestyle_ondetect pulsestyle_onevent rcmos real realtime reg release repeat "
        "rnmos rpmos rtran rtranif0 rtranif1 scalared showcancelled signed small specify specparam strong0 strong1 "
        "supply0 supply1 table task time tran tranif0 tranif1 tri tri0 tri1 triand trior trireg unsigned use uwire "
        "vectored wait wand weak0 weak1 while wire wor xnor xor");
    const QStringList list = words.split(' ');
    return QSet<QString>(list.begin(), list.end());
  }();
  return keywords.contains(text);
}

QString quoted(const QString& text) {
  QString shown = text.size() > 120 ? text.left(117) + QLatin1String("...") : text;
  for (QChar& c : shown)
    if (c < ' ' || c == QChar(0x7f)) c = '?';
  return "'" + shown + "'";
}

bool checkName(const QString& name, const QString& what, QString& error) {
  if (name.size() > kMaxNameLength) {
    error = QString("%1 %2 has %3 characters; at most %4 are allowed.")
                .arg(what, quoted(name), QString::number(name.size()), QString::number(kMaxNameLength));
    return false;
  }
  if (isIdentifier(name)) return true;
  error = name.isEmpty() ? QString("%1 is empty.").arg(what) : QString("%1 %2 is not allowed.").arg(what, quoted(name));
  error += " Use letters, digits and underscores, not beginning with a digit.";
  return false;
}

NearestNames::NearestNames(const QString& wanted) : wanted_(wanted.left(kMaxNameLength)) {}

void NearestNames::offer(const QString& candidate) {
  const int keep = 3;
  const int limit = best_.size() == keep ? best_.last().first - 1 : std::max(2, wanted_.size() / 2);
  const int distance = editDistance(wanted_, candidate, limit);
  if (distance > limit) return;
  const QPair<int, QString> entry(distance, candidate);
  best_.insert(std::upper_bound(best_.begin(), best_.end(), entry) - best_.begin(), entry);
  if (best_.size() > keep) best_.removeLast();
}

QString NearestNames::hint() const {
  if (best_.isEmpty()) return QString();
  QStringList names;
  for (const auto& entry : best_) names << entry.second;
  return " (did you mean " + names.join(", ") + "?)";
}

QString DefaultNames::next(const std::function<bool(const QString&)>& isTaken) {
  for (;; ++lowest_) {
    const QString name = prefix_ + QString::number(lowest_);
    if (!isTaken(name)) return name;
  }
}

void DefaultNames::released(const QString& name) {
  if (!name.startsWith(prefix_)) return;
  bool isNumber = false;
  const int number = name.mid(prefix_.size()).toInt(&isNumber);
  if (isNumber && number > 0 && number < lowest_) lowest_ = number;
}

}  // namespace ost
