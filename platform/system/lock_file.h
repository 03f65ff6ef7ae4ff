// A lock that is a file beside what it locks: it is there from its first moment with all that it says, tells who holds
// it, and one whose process is gone is taken over. No descriptor is kept open, so a child process never holds it.
#pragma once

#include <QDateTime>
#include <QString>

#include "platform/system/process_mark.h"

namespace ost {

class LockFile {
 public:
  enum Outcome {
    Taken,
    Held,     ///< By `holder`, since `since`: alive, or Elsewhere.
    Unclear,  ///< The lock file does not say who holds it; `reason` says why.
    NoPlace,  ///< No file can be created in the folder, so nothing else can be saved there either.
    Failed    ///< With the system's `reason`.
  };
  struct Answer {
    Outcome outcome = Failed;
    ProcessMark holder;
    QDateTime since;
    QString reason;
  };

  /// `path` is a Unicode file name. A reason is byte text.
  explicit LockFile(const QString& path) : path_(path) {}
  LockFile(const LockFile&) = delete;
  LockFile& operator=(const LockFile&) = delete;
  /// Releases the lock, unless this is a child of the process that took it.
  ~LockFile();

  Answer take();
  /// Whether the file still exists with the contents that take() wrote.
  bool isHeld() const;
  const QString& path() const { return path_; }

 private:
  bool make();
  bool judge(Answer& answer) const;

  QString path_;
  QByteArray text_;  ///< What the file holds; empty when the lock is not taken.
  qint64 pid_ = 0;
};

}  // namespace ost
