// A report as sections of blocks, without a form; written as text and as a page from the same document.
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include "platform/report/probe_picture.h"

namespace ost {

/// All texts are Unicode.
struct ReportBlock {
  enum Kind { Text, Table, Commands, Picture };
  Kind kind = Text;
  QStringList lines;        ///< Paragraphs of a text, or commands as typed in a shell.
  QStringList columns;      ///< Headings of a table.
  QList<QStringList> rows;  ///< As many cells each as there are headings.
};

struct ReportSection {
  QString title;
  QList<ReportBlock> blocks;

  void say(const QString& paragraph) { blocks.append({ReportBlock::Text, {paragraph}, {}, {}}); }
  void command(const QStringList& lines) { blocks.append({ReportBlock::Commands, lines, {}, {}}); }
  /// Nothing is added when there are no rows.
  void table(const QStringList& columns, const QList<QStringList>& rows) {
    if (!rows.isEmpty()) blocks.append({ReportBlock::Table, {}, columns, rows});
  }
};

struct ReportDocument {
  QString title;
  ProbePicture picture;  ///< Stands at the block of its kind.
  QList<ReportSection> sections;
};

QByteArray reportAsText(const ReportDocument& document);
/// One page that loads nothing.
QByteArray reportAsPage(const ReportDocument& document);

}  // namespace ost
