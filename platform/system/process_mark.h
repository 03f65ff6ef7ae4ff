// Which process made a lock, or a file beside the user's, and whether it lives. The system gives the number of a
// process again, so the moment of its start belongs to it; and what runs on another machine or in another container
// cannot be judged from here.
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

namespace ost {

struct ProcessMark {
  enum State {
    Lives,
    Ending,  ///< Killed, and gone in a moment.
    Gone,
    Elsewhere
  };

  qint64 pid = 0;
  QByteArray program, host, machine, boot;
  qint64 start = 0;     ///< In ticks since the boot; 0 when it is not known, as in locks of earlier versions.
  QByteArray pidSpace;  ///< Which processes `pid` counts; empty when it is not known.

  static ProcessMark own();
  /// One line for each member. Whatever they hold, none has a line feed.
  QByteArray text() const;
  /// False when the text is no mark. The last members may be missing, as in locks of earlier versions.
  static bool read(const QByteArray& text, ProcessMark& mark);

  State state() const;
};

/// A part of a file's name that tells this process, for what it makes beside a user's file.
QByteArray ownTag();

/// The entries of the folder whose names are `prefix` and the tag of a process that is gone. What cannot be judged is
/// left out.
QList<QByteArray> leftBehind(int folder, const QByteArray& prefix);

/// The names of the folder's entries, without "." and "..". False with errno.
bool listFolder(int folder, QList<QByteArray>& names);

}  // namespace ost
