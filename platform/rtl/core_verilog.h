// The Verilog files beside this one, as the build puts them into the library.
#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>

namespace ost {

/// File name and contents, in reading order.
QList<QPair<QString, QByteArray>> embeddedVerilog();

}  // namespace ost
