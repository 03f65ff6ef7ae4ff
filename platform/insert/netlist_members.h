// Members of a module as the netlist's JSON writes them, each with a comma before it.
#pragma once

#include <QByteArray>
#include <QVector>

namespace ost {

/// A number as a parameter of 32 bits.
QByteArray binary32(int number);

QByteArray portText(const QByteArray& name, const char* direction, const QVector<int>& bits);

/// A kept net is one that no later tool optimises away or renames.
QByteArray netText(const QByteArray& name, const QVector<int>& bits, bool keep = false);

}  // namespace ost
