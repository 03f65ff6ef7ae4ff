// Pieces of Verilog text: numbers, ranges, concatenations, strings and instances.
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QVector>
#include <utility>

namespace ost::verilog {

/// A parameter or port and what it is set or connected to.
using Connection = std::pair<const char*, QByteArray>;

QByteArray number(qint64 value);

/// `[width-1:0] `; empty for one bit.
QByteArray range(int width);

/// `name[offset +: width]` in the constant form.
QByteArray slice(const QByteArray& name, int offset, int width);

/// The bits `indices` of `name`, the first as least significant. Runs of neighbours are written as a range.
QByteArray gather(const QByteArray& name, const QVector<int>& indices);

/// Text as a Verilog string. Whatever could end it, or mean something to a preprocessor, is written by its number.
QByteArray quoted(const QString& text);

void instance(QByteArray& out, const QByteArray& module, const QList<Connection>& parameters, const QByteArray& name,
              const QList<Connection>& ports);

}  // namespace ost::verilog
