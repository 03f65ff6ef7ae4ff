// The output folder, replaced as a whole: files are written into a sibling folder, which is exchanged with the old one
// after success. A folder is the insertion's own when its list of files names everything in it; the list also
// tells which project the folder was made for.
#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <memory>

#include "platform/system/files.h"

namespace ost {

class OutputFolder {
 public:
  /// `target` is the folder's file name (Unicode); errors come as byte text. `project` is the file name of the project
  /// without its folder: of several with the same output folder, only the one that made the folder may replace it.
  /// Empty: no project. Without commit() everything staged is removed with the object or at the end of the process.
  explicit OutputFolder(const QString& target, const QString& project = QString());
  ~OutputFolder();
  OutputFolder(const OutputFolder&) = delete;
  OutputFolder& operator=(const OutputFolder&) = delete;

  /// Makes the staged folder for the files; first removes what dead runs left. False when the target holds
  /// anything that no insertion wrote, a file that was changed since, or is another project's, or cannot be written.
  bool begin(const QStringList& files, QString& error);
  /// A path to the file that leads into the staged folder even if that is renamed; valid in this process as long as
  /// the object exists.
  QString stagedFile(const QString& name) const;
  bool write(const QString& name, const QByteArray& contents, QString& error) const;
  /// Creates a new file; null with the error. finish() completes it.
  std::unique_ptr<FileWriter> create(const QString& name, QString& error) const;
  bool finish(const QString& name, FileWriter& file, QString& error) const;
  /// Makes the disk store what another process wrote into the file.
  bool store(const QString& name, QString& error) const;
  /// Puts the staged folder in the target's place and removes the old one. False when something foreign has been put
  /// into the old one meanwhile: it is kept then. What arrives after that check is carried over into the new one.
  bool commit(QString& error);

 private:
  bool openOld(Descriptor& old, QString& error) const;
  bool writeDigests(QString& error) const;
  bool isReplaceable(int folder, QString& error) const;
  bool swap(QByteArray& aside) const;
  void discard();
  /// The text has places for the file (%1) and the reason (%2).
  bool refuse(QString& error, const char* text, const QString& file, int code) const;
  static QList<OutputFolder*>& unfinished();

  QString target_;
  QByteArray project_, name_, stagedName_;
  QList<QByteArray> names_;  ///< Of the files.
  Descriptor parent_, staged_;
  qint64 process_ = 0;
};

}  // namespace ost
