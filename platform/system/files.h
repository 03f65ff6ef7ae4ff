// Reading and replacing files as a whole, with every result of the system checked. File names are Unicode, as QFile
// takes them. A `reason` is byte text that says why, without the file's name: the caller's sentence names it.
#pragma once

#include <QByteArray>
#include <QIODevice>
#include <QString>

#include "platform/system/descriptor.h"

namespace ost {

/// The system's text for an error number.
QString systemReason(int code);

/// Writes all bytes, however often the system takes only some. False with errno.
bool writeAll(int fd, const char* bytes, qint64 count);

/// False, with errno, when nothing can be added to a file that is open for writing: what another program wrote into it
/// may then be cut short without a word of that program.
bool hasRoom(int fd);

/// Makes the disk store what was written, and closes. False with errno. (Some special files cannot be stored: no
/// fault.)
bool storeAndClose(Descriptor& file);

/// Bytes on their way into a file that was opened for writing. Whatever fails, all that comes after it fails, too.
class FileWriter final : public QIODevice {
 public:
  explicit FileWriter(Descriptor file);
  /// Flushes everything to the disk and closes the file. False with the errno of the first call that failed.
  bool finish();

 protected:
  qint64 readData(char*, qint64) override { return -1; }
  qint64 writeData(const char* bytes, qint64 count) override;

 private:
  bool flushBuffer();
  Descriptor file_;
  QByteArray buffer_;
  int failure_ = 0;
};

/// Whether there is a current folder: one that was removed stays a process' own, and relative names mean nothing then.
bool hasCurrentFolder();

/// Opens a regular file of at most `mostBytes` to be read in pieces, without waiting for a FIFO. Refused are also files
/// that are longer than they claim to be, as those in /proc are, whose end may never come. Closed on failure.
Descriptor openRegular(const QString& file, qint64 mostBytes, QString& reason);

/// Reads a regular file of at most `mostBytes`. What is none (a FIFO, a device, a folder) is refused without waiting
/// for it, and a file that is longer than it claims to be, as those in /proc are, is read up to the limit and then
/// refused.
bool readFile(const QString& file, qint64 mostBytes, QByteArray& bytes, QString& reason);
/// The same for a file that is open, without waiting (O_NONBLOCK).
bool readOpenFile(int fd, qint64 mostBytes, QByteArray& bytes, QString& reason);

struct Replacement {
  QString file;       ///< The file to replace; a link is followed.
  QString temporary;  ///< Written first, in the same folder; a leftover of that name is removed. Empty: a free name.
  bool mayBeSpecial = false;  ///< A device or FIFO in the place is written to instead of refused.
};

/// Puts `bytes` into the file's place in one step, when they are stored: on failure the old file stays and nothing is
/// beside it. Mode, access list and owner of the old file are kept; where they cannot be, or where the file is
/// protected from writing (for root, too), it is refused. Another name of the file (a hard link) keeps the old content.
bool replaceFile(const Replacement& request, const QByteArray& bytes, QString& reason);

/// Whether replaceFile could do it now, short of storing the bytes; changes nothing. For results that cannot be had
/// again.
bool checkReplaceable(const Replacement& request, QString& reason);

}  // namespace ost
