// Generates the Verilog module `ostrel_debug` for a plan: the JTAG hub and one ostrel_core for each planned core. The
// inserter places exactly one instance of it, named ostrel_debug_i, in the design's top module.
#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>

#include "platform/plan/insert_plan.h"

namespace ost {

/// A port of ostrel_debug. Names: jtag_tck, jtag_tms, jtag_tdi (inputs), jtag_tdo (output), absent where the hub is
/// behind a device's own primitive; for core i: c<i>_clk,
/// c<i>_probe (probeBits, bit 0 first), c<i>_trig (triggerBits; absent without bits), c<i>_sample_en, c<i>_trig_en
/// (only when used), c<i>_trig_out (output, only when the core has a trigger output); of the Wishbone master
/// wb_*, of the serdes core sd_*.
struct DebugPort {
  enum Role {
    Tck,
    Tms,
    Tdi,
    Tdo,
    SampleClock,
    Probe,
    Trigger,
    SampleEnable,
    TriggerEnable,
    TriggerOut,
    WishboneClock,  ///< wb_clk
    WishboneBus,    ///< The other wb_* signals, which no net of the design is looked at for.
    SerdesClock,    ///< sd_clk, and the other sd_* behind it.
    SerdesReset,
    SerdesWatchedClocks,
    SerdesWatchedLevels
  };
  QByteArray name;
  Role role;
  int core = -1;  ///< Index into the plan's cores; -1 for what belongs to none.
  int width = 1;
  bool output = false;

  bool isPin() const { return role <= Tdo; }
};

QList<DebugPort> debugModulePorts(const InsertPlan& plan);

/// The module's text.
QByteArray debugModuleVerilog(const InsertPlan& plan);

/// The parametrised Verilog of the core: file name and contents, in reading order. `ostrel_jtag.v` is the one for this
/// way to the chip.
QList<QPair<QString, QByteArray>> coreVerilogFiles(const PlanJtag& jtag = {});

/// Resources that a core takes, as `synth_xilinx -flatten` of Yosys counts them.
struct ResourceEstimate {
  int luts = 0;
  int flipFlops = 0;
  int blockRams = 0;      ///< RAMB18 halves counted as 0.5 are rounded up.
  qint64 memoryBits = 0;  ///< depth * sample bits plus expression tables.
};
ResourceEstimate estimateCore(const PlanCore& core);
ResourceEstimate estimateWishbone(const PlanWishbone& wishbone);
ResourceEstimate estimateSerdes(const PlanSerdes& serdes);
ResourceEstimate estimateHub(const InsertPlan& plan);

}  // namespace ost
