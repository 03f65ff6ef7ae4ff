// The open project's place on disk: the lock that keeps a second process away, and what was last read or written there.
#pragma once

#include <QByteArray>
#include <QString>
#include <memory>

#include "platform/system/lock_file.h"

namespace ost {

/// File names are Unicode, absolute and clean. Methods return false with a text for the user and change nothing then.
class ProjectStorage {
 public:
  /// The absolute, clean name of the file that byte text means.
  static bool fileOf(const QString& typed, QString& file, QString& error);
  /// The absolute name of the folder that a run of the project writes: beside the file that byte text means; in the
  /// current folder for an untitled one.
  static bool outputFolderOf(const QString& typed, QString& folder, QString& error);

  /// A claim on a file that is not the open project's yet.
  struct Claim {
    QString file;
    std::unique_ptr<LockFile> lock;  ///< Null where the folder takes no lock file, or the lock is already ours.
  };
  /// Names are locked, not what lies under them: a save gives its name a file of its own, so that of a file with two
  /// names (hard links) each keeps what was saved under it.
  bool claim(const QString& file, Claim& claim, QString& error) const;

  /// Takes the lock of the open project again where it was refused before or has been removed.
  bool claimAgain(QString& error);

  bool read(const QString& file, QByteArray& bytes, QString& error) const;
  /// Replaces the file as a whole.
  bool write(const QString& file, const QByteArray& bytes, QString& error) const;
  /// False when the file on disk cannot be read, or is neither what was last read or written nor `bytes`.
  bool isUntouched(const QByteArray& bytes, QString& error) const;

  /// The claimed file becomes the open project's, with `bytes` in it.
  void adopt(Claim claim, const QByteArray& bytes);
  void noteWritten(const QByteArray& bytes);
  void release();
  const QString& file() const { return file_; }

 private:
  QString file_;
  std::unique_ptr<LockFile> lock_;
  QByteArray digest_;
};

}  // namespace ost
