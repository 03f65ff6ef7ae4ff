// Archives in the ZIP form, for file formats that are one.
#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>

namespace ost {

/// Each file (name, contents) as it is, without compression. Below 4 GB together.
QByteArray zipArchive(const QList<QPair<QByteArray, QByteArray>>& files);

}  // namespace ost
