// A file list from which another process reads the same design again: what a project leaves beside it.
#pragma once

#include "platform/design/design.h"

namespace ost {

/// The list as `file` (Unicode, absolute): the words with which `design` was read, and `jtag`. Names are relative to it
/// where they share a folder with it below the root's. `before` is what the file holds now: a design that was read from
/// it keeps what it says. Null with the reason in `error` where a word cannot stand in a list.
ISTCOMDATA_API QByteArray designListText(const Design& design, const JtagWords& jtag, const QString& file,
                                         const QByteArray& before, QString& error);

/// True for a text that designListText() made: nothing else is replaced.
ISTCOMDATA_API bool isDesignList(const QByteArray& text);

/// The file lists (*.f) in the current folder as byte text, sorted, those that can be typed without quoting.
ISTCOMDATA_API QStringList listsInFolder();

}  // namespace ost
