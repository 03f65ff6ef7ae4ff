// What an instance is to its surroundings and what it remembers: ports with the clocks among them, registers, memories,
// parameters.
#pragma once

#include <set>

#include "platform/design/parameter.h"
#include "platform/netlist/netlist_bits.h"

namespace ost {

/// Where a bit is driven; equal for all aliases of a bit.
using BitSource = std::pair<std::vector<int>, int>;
BitSource sourceOf(const NetlistBits& netlist, const PlacedBit& bit);

/// The sources of all clocks of registers and memories in the instance and below.
std::set<BitSource> clocksOf(const NetlistBits& netlist, const PlacedBit& instance);

/// A net that the source names, with bits that are registers'; its others are constant or undriven.
struct RegisterNet {
  PlacedBit place;  ///< Of the instance that holds it.
  QByteArray name;
  QVector<int> bits;
  bool hasInitialValue = false;
};
/// Calls `visit` for the register nets of the instance and of those below it, in the order of their names. Several nets
/// may show the same bits.
void forEachRegisterNet(const NetlistBits& netlist, const PlacedBit& instance,
                        const std::function<void(const RegisterNet&)>& visit);

/// A memory that is written and has contents at the beginning.
struct FilledMemory {
  PlacedBit place;
  QByteArray name;
  int first = 0, last = 0;  ///< Words, as the source counts them.
};
std::vector<FilledMemory> filledMemories(const NetlistBits& netlist, const PlacedBit& instance);

struct ModuleParameter {
  QByteArray name;
  ParameterValue value;
};
/// The parameters with the values that the module was elaborated with, by name.
QVector<ModuleParameter> parametersOf(const NetlistText& netlist, int module);

/// A port of an instance, for people.
struct InstancePort {
  QByteArray name;  ///< As the netlist has it.
  NetlistPort::Direction direction = NetlistPort::Input;
  bool isClock = false;  ///< A bit of this input clocks a register or a memory of the instance.
};
/// What `ost_design ports` lists.
struct InstanceOutline {
  std::vector<InstancePort> ports;
  std::vector<NetBit> registers;  ///< One for each net, no bit of which another one shows; without the ports.
};
/// False when the design has no such instance.
ISTCOMDATA_API bool outlineInstance(const Netlist& netlist, const QString& path, InstanceOutline& outline);

}  // namespace ost
