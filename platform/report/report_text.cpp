// A report for a terminal or a mail: UTF-8, tables in columns.
#include "platform/report/report_document.h"

namespace ost {
namespace {

QString tableText(const ReportBlock& block) {
  QList<int> widths;
  for (const QString& heading : block.columns) widths.append(heading.size());
  for (const QStringList& row : block.rows)
    for (int i = 0; i < row.size(); ++i) widths[i] = qMax(widths[i], row[i].size());
  const auto line = [&widths](const QStringList& cells) {
    QString text = QStringLiteral("  ");
    for (int i = 0; i < cells.size(); ++i)
      text += i + 1 == cells.size() ? cells[i] : cells[i].leftJustified(widths[i] + 2);
    return text + QLatin1Char('\n');
  };
  QStringList rules;
  for (const int width : widths) rules.append(QString(width, QLatin1Char('-')));
  QString text = line(block.columns) + line(rules);
  for (const QStringList& row : block.rows) text += line(row);
  return text;
}

QString blockText(const ReportBlock& block, const ProbePicture& picture) {
  const QString between = block.kind == ReportBlock::Text ? QStringLiteral("\n") : QStringLiteral("\n    ");
  switch (block.kind) {
    case ReportBlock::Table:
      return tableText(block);
    case ReportBlock::Picture:
      return QStringLiteral("    ") + picture.asText().join(between) + QLatin1Char('\n');
    case ReportBlock::Commands:
      return QStringLiteral("    ") + block.lines.join(between) + QLatin1Char('\n');
    case ReportBlock::Text:
      break;
  }
  return block.lines.join(between) + QLatin1Char('\n');
}

}  // namespace

QByteArray reportAsText(const ReportDocument& document) {
  QString text =
      document.title + QLatin1Char('\n') + QString(document.title.size(), QLatin1Char('=')) + QLatin1Char('\n');
  for (const ReportSection& section : document.sections) {
    text += QLatin1Char('\n') + section.title + QLatin1Char('\n') + QString(section.title.size(), QLatin1Char('-')) +
            QLatin1Char('\n');
    for (const ReportBlock& block : section.blocks) text += QLatin1Char('\n') + blockText(block, document.picture);
  }
  return text.toUtf8();
}

}  // namespace ost
