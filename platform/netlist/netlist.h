// The design's full netlist (after `proc`), as cells, drivers and connections of single bits.
#pragma once

#include <QString>
#include <functional>
#include <memory>

#include "platform/design/design.h"
#include "platform/netlist/net_bit.h"

namespace ost {

/// What drives a net bit, found through the hierarchy (ports are followed upwards and downwards).
struct BitDriver {
  enum Kind {
    Undriven,
    Constant,  ///< Tied to 0, 1 or x.
    TopPort,   ///< An input or inout of the top module.
    FlipFlop,  ///< A register; `clock` is its clock net's bit, resolved to where it is driven from.
    Memory,    ///< A clocked memory read port; `clock` as for FlipFlop.
    Latch,
    Combinational,  ///< Logic; `clocks` of the registers before it are not followed.
    BlackBox,       ///< The output of a module without a body.
  };
  Kind kind = Undriven;
  bool hasClock = false;
  NetBit clock;  ///< Canonical: the same clock gives the same bit, however many aliases it has.
};

struct NetlistBits;

class Netlist {
 public:
  /// Runs Yosys on the design's sources for the full netlist and loads it. Null with a text in `error` on failure.
  static std::shared_ptr<const Netlist> load(const Design& design, QString& error,
                                             const std::function<bool()>& idle = {});
  /// Reads a netlist, whose top module has the key `topKey`, from the open file, which may then be closed. Its
  /// hierarchy must have been found free of cycles.
  static std::shared_ptr<const Netlist> read(int file, const QString& topKey, QString& error);
  ~Netlist();

  /// False when the netlist has no such bit.
  bool driver(const NetBit& bit, BitDriver& result) const;
  /// The one canonical bit of all aliases of `bit` across the hierarchy (where it is driven, or the topmost name).
  NetBit canonical(const NetBit& bit) const;

  /// The same by text and ids, for who changes or compares it.
  const NetlistBits& bits() const { return *d; }

 private:
  Netlist();
  std::unique_ptr<NetlistBits> d;
};

/// The full netlist of `design`, which is kept until that of another design is asked for. Null as for load().
ISTCOMDATA_API std::shared_ptr<const Netlist> netlistOf(const Design& design, QString& error,
                                                        const std::function<bool()>& idle = {});

}  // namespace ost
