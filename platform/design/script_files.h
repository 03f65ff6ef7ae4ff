// Files and folders that a script of Yosys can name: what its language cannot hold, and texts of our own, are reached
// through a private folder; what Yosys says of them is turned back into what the user typed.
#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>
#include <memory>

#include "platform/design/link_folder.h"

namespace ost {

class ScriptFiles {
 public:
  /// A link to the file or folder, named after its `kind` with the suffix. Empty with one text on failure.
  QByteArray link(const QString& target, const char* kind, const QByteArray& suffix, QString& error);
  /// A file of the content; `shown` stands for it in errors. Empty with one text on failure.
  QByteArray keep(const QByteArray& content, const QByteArray& suffix, const QString& shown, QString& error);
  /// From here on the name is shown as this.
  void show(const QByteArray& name, const QString& shown) { rewrites_.append(qMakePair(name, shown.toLatin1())); }

  /// `text` of a program with the names that scripts use turned back into what the user typed.
  QByteArray inUsersWords(QByteArray text) const;
  /// The absolute file that a name out of Yosys means; empty for one of our own.
  QString realFile(const QByteArray& name, const QString& workingDirectory) const;

 private:
  QList<QPair<QByteArray, QByteArray>> rewrites_;  ///< Script name, name as typed.
  QList<QPair<QByteArray, QByteArray>> linked_;    ///< Link, what it stands for.
  std::unique_ptr<LinkFolder> links_;
};

}  // namespace ost
