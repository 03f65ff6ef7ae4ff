// The parameters of the source's top, declared in the written one with the values that it was elaborated with: a test
// bench that sets them still compiles, and the simulation of another value stops.
#pragma once

#include <QString>

#include "platform/netlist/netlist_bits.h"

namespace ost {

/// Adds them to the written Verilog, a file (Unicode name), behind the header of the top, which has the name `topName`
/// there. A top without parameters is left as it is. False with a text.
bool declareTopParameters(const NetlistBits& netlist, const QByteArray& topName, const QString& verilog,
                          QString& error);

}  // namespace ost
