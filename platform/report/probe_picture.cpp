// Which bits are read where, as an indented tree of text or of boxes.
#include "platform/report/probe_picture.h"

#include <QSet>

#include "platform/design/design.h"
#include "platform/text/byte_text.h"

namespace ost {
namespace {

constexpr int kMaxRows = 500;
constexpr int kRowHeight = 30, kIndent = 26, kBoxHeight = 22, kLetter = 8, kMargin = 8;  // Pixels.
const char* const kColours[] = {"#1f77b4", "#d2691e", "#2e8b57", "#9932cc", "#b8860b", "#c71585", "#4682b4", "#708090"};

QString bitsText(int bits) {
  return QStringLiteral("%1 bit%2").arg(bits).arg(QLatin1String(bits == 1 ? "" : "s"));
}

}  // namespace

ProbePicture::ProbePicture(const InsertPlan& plan) {
  Instance top;
  for (int core = 0; core < plan.cores.size(); ++core) {
    cores_.append(unicodeFromText(plan.cores[core].name));
    QSet<QString> counted;  // A bit that is both traced and compared is one probe.
    for (const QVector<NetBit>& bits : {plan.cores[core].probeBits, plan.cores[core].triggerBits}) {
      for (const NetBit& bit : bits) {
        if (counted.contains(bit.name)) continue;
        counted.insert(bit.name);
        Instance* instance = &top;
        for (const QString& key : instancePathKeys(bit.instancePath)) {
          std::shared_ptr<Instance>& child = instance->children[unicodeFromText(key)];
          if (!child) child = std::make_shared<Instance>();
          instance = child.get();
        }
        ++instance->bits[core];
      }
    }
  }
  addRows(unicodeFromText(plan.topModule), top, 0, -1);
}

void ProbePicture::addRows(const QString& name, const Instance& instance, int depth, int parent) {
  if (rows_.size() == kMaxRows) {
    ++leftOut_;
  } else {
    rows_.append({name, depth, parent, instance.bits});
    parent = rows_.size() - 1;
  }
  for (auto child = instance.children.begin(); child != instance.children.end(); ++child)
    addRows(child.key(), **child, depth + 1, parent);
}

QStringList ProbePicture::asText() const {
  QStringList lines;
  for (const Row& row : rows_) {
    QStringList parts;
    for (auto bits = row.bits.begin(); bits != row.bits.end(); ++bits)
      parts.append(QStringLiteral("%1: %2").arg(cores_[bits.key()], bitsText(*bits)));
    const QString name = QString(2 * row.depth, QLatin1Char(' ')) + row.name;
    lines.append(parts.isEmpty() ? name : name.leftJustified(40) + QLatin1Char(' ') + parts.join(QLatin1String(", ")));
  }
  if (leftOut_) lines.append(QStringLiteral("and %1 more").arg(leftOut_));
  return lines;
}

QByteArray ProbePicture::asSvg() const {
  QString svg;
  int width = 0, y = kMargin;
  for (const Row& row : rows_) {
    const int x = kMargin + row.depth * kIndent, boxWidth = row.name.size() * kLetter + 16;
    if (row.parent >= 0) {
      const int fromX = kMargin + (row.depth - 1) * kIndent + 10;
      const int fromY = kMargin + row.parent * kRowHeight + kBoxHeight;
      svg += QStringLiteral("<path d=\"M%1 %2V%3H%4\"/>\n").arg(fromX).arg(fromY).arg(y + kBoxHeight / 2).arg(x);
    }
    svg += QStringLiteral(
               "<rect x=\"%1\" y=\"%2\" width=\"%3\" height=\"%4\" rx=\"3\"/><text x=\"%5\" y=\"%6\">%7</text>\n")
               .arg(x)
               .arg(y)
               .arg(boxWidth)
               .arg(kBoxHeight)
               .arg(x + 8)
               .arg(y + 16)
               .arg(row.name.toHtmlEscaped());
    int markX = x + boxWidth + 8;
    for (auto bits = row.bits.begin(); bits != row.bits.end(); ++bits) {
      const QString text = QStringLiteral("%1: %2").arg(cores_[bits.key()]).arg(bitsText(*bits));
      const int markWidth = text.size() * kLetter + 12;
      svg += QStringLiteral(
                 "<g class=\"mark\" fill=\"%1\"><rect x=\"%2\" y=\"%3\" width=\"%4\" height=\"%5\" rx=\"9\"/>"
                 "<text x=\"%6\" y=\"%7\">%8</text></g>\n")
                 .arg(QLatin1String(kColours[bits.key() % int(std::size(kColours))]))
                 .arg(markX)
                 .arg(y + 2)
                 .arg(markWidth)
                 .arg(kBoxHeight - 4)
                 .arg(markX + 6)
                 .arg(y + 16)
                 .arg(text.toHtmlEscaped());
      markX += markWidth + 6;
    }
    width = qMax(width, markX);
    y += kRowHeight;
  }
  if (leftOut_) {
    svg += QStringLiteral("<text x=\"%1\" y=\"%2\">and %3 more</text>\n").arg(kMargin).arg(y + 16).arg(leftOut_);
    y += kRowHeight;
  }
  return QStringLiteral("<svg class=\"tree\" width=\"%1\" height=\"%2\" role=\"img\">\n%3</svg>\n")
      .arg(width + kMargin)
      .arg(y)
      .arg(svg)
      .toUtf8();
}

}  // namespace ost
