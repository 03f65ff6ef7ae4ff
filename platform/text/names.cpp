// The rule for user-given names, and default names.
#include "platform/text/names.h"

#include <QSet>
#include <algorithm>

namespace ost {

namespace {

bool isLetter(QChar c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}
bool isDigit(QChar c) {
  return c >= '0' && c <= '9';
}

}  // namespace

bool isIdentifier(const QString& text) {
  if (text.isEmpty() || !isLetter(text[0])) return false;
  return std::all_of(text.begin(), text.end(), [](QChar c) { return isLetter(c) || isDigit(c); });
}

bool isVerilogIdentifier(const QString& text) {
  return !text.startsWith('$') && isIdentifier(QString(text).remove('$'));
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
  return '"' + shown + '"';
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
