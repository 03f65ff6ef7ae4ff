// The output folder, replaced as a whole: files are written into a sibling folder, which changes places with the old
// one when all is well. A folder is the insertion's own when its list of files names everything in it.
#pragma once

#include <QFile>
#include <QString>
#include <QStringList>
#include <memory>

namespace ost {

class OutputFolder {
 public:
  /// `target` is the folder's file name (Unicode); errors come as wire text. Without commit() all that was staged goes
  /// away again, with the object or with the process.
  explicit OutputFolder(const QString& target);
  ~OutputFolder();
  OutputFolder(const OutputFolder&) = delete;
  OutputFolder& operator=(const OutputFolder&) = delete;

  /// Makes the staged folder for the files; first clears away what dead runs left. False when the target holds
  /// anything that no insertion wrote, or cannot be written.
  bool begin(const QStringList& files, QString& error);
  QString stagedFile(const QString& name) const;
  bool write(const QString& name, const QByteArray& contents, QString& error) const;
  /// Puts the staged folder in the target's place and removes the old one.
  bool commit(QString& error);

 private:
  QString target_, staged_;
};

}  // namespace ost
