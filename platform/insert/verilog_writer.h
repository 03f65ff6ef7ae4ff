// Yosys' part of an insertion: from the instrumented netlist to Verilog.
#pragma once

#include <QSet>
#include <QString>
#include <functional>

#include "platform/design/design.h"

namespace ost {

/// Reads `netlist` (Yosys JSON) with the debug module's ports from `debugModule` (Verilog), and writes `verilog`, an
/// existing file. File names are Unicode.
bool writeInstrumentedVerilog(const Design& design, const QString& netlist, const QString& debugModule,
                              const QString& verilog, const std::function<bool()>& idle, QString& error);

/// Names of the modules that a Verilog text defines.
QSet<QByteArray> definedModules(const QByteArray& verilog);

}  // namespace ost
