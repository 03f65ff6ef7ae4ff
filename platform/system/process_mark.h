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
    Ending,  ///< Killed, about to end.
    Gone,
    Elsewhere
  };

  qint64 pid = 0;
  QByteArray program, host, machine, boot;
  qint64 start = 0;     ///< In ticks since the boot; 0 when unknown, as in locks of earlier versions.
  QByteArray pidSpace;  ///< The pid namespace; empty when unknown.

  static ProcessMark own();
  /// A line for each member; a line feed within a member becomes "?".
  QByteArray text() const;
  /// False when the text is not a mark. The last members may be missing, as in locks of earlier versions.
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
