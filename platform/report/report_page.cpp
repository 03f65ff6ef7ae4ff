// A report for a browser.
#include "platform/report/report_document.h"

namespace ost {
namespace {

const char kHead[] = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width">
<title>%1</title>
<style>
  body { font: 14px/1.5 sans-serif; color: #222; max-width: 70em; margin: 1.5em auto; padding: 0 1em; }
  h1 { font-size: 20px; } h2 { font-size: 16px; border-bottom: 1px solid #ccc; margin-top: 2em; }
  table { border-collapse: collapse; margin: 8px 0; } th { text-align: left; background: #f4f5f7; }
  td, th { border: 1px solid #ddd; padding: 2px 8px; vertical-align: top; } td { font-family: monospace; }
  pre { background: #f4f5f7; padding: 8px; overflow-x: auto; }
  nav a { margin-right: 1em; }
  .tree { display: block; max-width: none; font: 13px monospace; } .scroll { overflow-x: auto; }
  .tree rect { fill: #f4f5f7; stroke: #888; } .tree path { fill: none; stroke: #888; }
  .tree .mark rect { fill: inherit; stroke: none; } .tree .mark text { fill: #fff; }
</style>
</head>
<body>
)";

QString rowHtml(const QStringList& cells, const QString& tag) {
  QString html = QStringLiteral("<tr>");
  for (const QString& cell : cells) html += QStringLiteral("<%1>%2</%1>").arg(tag, cell.toHtmlEscaped());
  return html + QStringLiteral("</tr>\n");
}

QString blockHtml(const ReportBlock& block, const ProbePicture& picture) {
  QString html;
  switch (block.kind) {
    case ReportBlock::Table:
      html = QStringLiteral("<div class=\"scroll\"><table>\n") + rowHtml(block.columns, QStringLiteral("th"));
      for (const QStringList& row : block.rows) html += rowHtml(row, QStringLiteral("td"));
      return html + QStringLiteral("</table></div>\n");
    case ReportBlock::Picture:
      return QStringLiteral("<div class=\"scroll\">") + QString::fromUtf8(picture.asSvg()) + QStringLiteral("</div>\n");
    case ReportBlock::Commands:
      return QStringLiteral("<pre>") + block.lines.join(QLatin1Char('\n')).toHtmlEscaped() + QStringLiteral("</pre>\n");
    case ReportBlock::Text:
      for (const QString& line : block.lines)
        html += QStringLiteral("<p>") + line.toHtmlEscaped() + QStringLiteral("</p>\n");
  }
  return html;
}

}  // namespace

QByteArray reportAsPage(const ReportDocument& document) {
  QString links, body;
  for (int i = 0; i < document.sections.size(); ++i) {
    const ReportSection& section = document.sections[i];
    const QString title = section.title.toHtmlEscaped();
    links += QStringLiteral("<a href=\"#s%1\">").arg(i) + title + QStringLiteral("</a>\n");
    body += QStringLiteral("<h2 id=\"s%1\">").arg(i) + title + QStringLiteral("</h2>\n");
    for (const ReportBlock& block : section.blocks) body += blockHtml(block, document.picture);
  }
  const QString title = document.title.toHtmlEscaped();
  return (QString::fromLatin1(kHead).arg(title) + QStringLiteral("<h1>") + title + QStringLiteral("</h1>\n<nav>") +
          links + QStringLiteral("</nav>\n") + body + QStringLiteral("</body>\n</html>\n"))
      .toUtf8();
}

}  // namespace ost
