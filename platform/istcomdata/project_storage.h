// The open project's place on disk: the lock that keeps a second process away, and what was last read or written there.
#pragma once

#include <QByteArray>
#include <QLockFile>
#include <QString>
#include <memory>

namespace ost {

/// A lock file held. Where its folder has vanished meanwhile there is nothing to remove.
class HeldLock {
 public:
  HeldLock(std::unique_ptr<QLockFile> lock, const QString& path) : lock_(std::move(lock)), path_(path) {}
  ~HeldLock();

 private:
  std::unique_ptr<QLockFile> lock_;
  QString path_;
};

/// File names are Unicode, absolute and clean. Methods return false with a text for the user and change nothing then.
class ProjectStorage {
 public:
  /// The absolute, clean name of the file that wire text means. Empty, with the reason, when it means none.
  static QString fileOf(const QString& wire, QString& error);

  /// A claim on a file that is not the open project's yet.
  struct Claim {
    QString file;
    std::unique_ptr<HeldLock> lock;  ///< Null where the folder takes no lock file, or the lock is already ours.
  };
  bool claim(const QString& file, Claim& claim, QString& error) const;

  bool read(const QString& file, QByteArray& bytes, QString& error) const;
  /// Replaces the file as a whole.
  bool write(const QString& file, const QByteArray& bytes, QString& error) const;
  /// False when the file on disk is neither what was last read or written nor `bytes`.
  bool isUntouched(const QByteArray& bytes, QString& error) const;

  /// The claimed file becomes the open project's, with `bytes` in it.
  void adopt(Claim claim, const QByteArray& bytes);
  void noteWritten(const QByteArray& bytes);
  void release();
  const QString& file() const { return file_; }

 private:
  QString file_;
  std::unique_ptr<HeldLock> lock_;
  QByteArray digest_;
};

}  // namespace ost
