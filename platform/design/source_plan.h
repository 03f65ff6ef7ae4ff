// What a DesignSource comes to: the files with their options once file lists are read, and the Yosys script that reads
// them. File names that Yosys' script language cannot hold are reached through links in a private folder.
#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>
#include <memory>

#include "platform/design/design.h"
#include "platform/design/link_folder.h"
#include "platform/design/yosys_script.h"

namespace ost {

class SourcePlan {
 public:
  static constexpr qint64 kMaxFileBytes = qint64(4) << 30;

  /// Reads the file lists and checks that every file and folder can be read; relative names mean `workingDirectory`.
  /// Null with one text for the user in `error`.
  static std::unique_ptr<SourcePlan> make(const DesignSource& source, const QString& workingDirectory, QString& error);

  bool isNetlist() const { return netlist_; }
  /// Absolute names of the files that were given, in order, file lists last.
  const QStringList& files() const { return files_; }
  QString firstFileAsTyped() const { return typedNames_.value(files_.value(0)); }
  const QStringList& defines() const { return defines_; }

  /// Reads everything. Not deferred (`-defer`): that would make a variant of each parametrised black box
  /// that the sources declare, instead of an instance with its parameters.
  YosysScript readScript() const;
  /// `text` of Yosys with the names that readScript() used turned back into what the user typed.
  QByteArray inUsersWords(QByteArray text) const;
  /// The absolute file that a name out of Yosys means.
  QString realFile(const QByteArray& name) const;

 private:
  void addRead(YosysScript& script, bool boxes) const;
  QByteArray link(const QString& target, const char* kind, const QByteArray& suffix, QString& error);
  bool addScriptName(const QString& file, const QString& typed, QString& error);
  bool addIncludeDir(const QString& directory, const QString& typed, QString& error);

  struct File {
    QByteArray scriptName;
    QByteArray ownIncludeDir;  ///< The link to its folder, when the file itself is reached through a link.
    bool systemVerilog = false;
  };
  bool netlist_ = false;
  QString workingDirectory_;
  QStringList files_, defines_, blackBoxes_;
  QHash<QString, QString> typedNames_;  ///< Absolute file to the name as typed.
  QList<File> scriptFiles_;
  QList<QByteArray> includeDirs_;                  ///< As the script names them.
  QList<QPair<QByteArray, QByteArray>> rewrites_;  ///< Script name, name as typed.
  QList<QPair<QByteArray, QByteArray>> linked_;    ///< Link, what it stands for.
  std::unique_ptr<LinkFolder> links_;
};

}  // namespace ost
