// The crossings of the core (the head of ostrel_core.v lists them) as constraints between named registers.
#include "platform/rtl/constraints.h"

#include "platform/plan/core_layout.h"
#include "platform/rtl/core_writer.h"
#include "platform/rtl/verilog_text.h"

namespace ost {
namespace {

using verilog::number;

class Constraints {
 public:
  Constraints(const InsertPlan& plan, const QByteArray& instance, ConstraintDialect dialect)
      : plan_(plan), top_(instance + '/'), xdc_(dialect == ConstraintDialect::Xdc) {}

  QByteArray text();

 private:
  QByteArray nanoseconds(double share) const { return QByteArray::number(plan_.jtag.periodNs * share, 'g', 6); }
  /// A register of one bit, or of any number of bits.
  static QByteArray one(const QByteArray& name) { return name + "_reg"; }
  static QByteArray all(const QByteArray& name) { return name + "*_reg*"; }
  void crossing(const QList<QByteArray>& from, const QList<QByteArray>& to);
  void clock();
  void pins();
  void core(int index);
  void wishbone();
  void serdes();
  /// Where the bits of a reply arrive.
  QList<QByteArray> reply() const;
  QByteArray cells(const QList<QByteArray>& names) const;

  const InsertPlan& plan_;
  const QByteArray top_;
  const bool xdc_;
  QByteArray out_;
};

QByteArray Constraints::cells(const QList<QByteArray>& names) const {
  QByteArray list;
  for (const QByteArray& name : names) list += (list.isEmpty() ? "" : " ") + top_ + name;
  return "[get_cells {" + list + "}]";
}

void Constraints::crossing(const QList<QByteArray>& from, const QList<QByteArray>& to) {
  const QByteArray path = " -from " + cells(from) + " -to " + cells(to);
  // What lies between a register and its copy in the other domain is stable for longer than a period of TCK.
  out_ += "set_max_delay " + nanoseconds(1) + (xdc_ ? " -datapath_only" : "") + path + '\n';
  if (!xdc_) out_ += "set_false_path -hold" + path + '\n';
}

void Constraints::clock() {
  QByteArray source = "[get_pins " + top_ + "jtag/tck]";
  if (plan_.jtag.hasPins()) source = "[get_ports " + plan_.pins.tck.toLatin1() + "]";
  if (plan_.jtag.isPrimitive())
    source = "[get_pins " + top_ + "jtag/primitive_i/" + (plan_.jtag.way == JtagWay::Bscane2 ? "TCK" : "tck_o") + "]";
  out_ += "create_clock -name ostrel_tck -period " + nanoseconds(1) + ' ' + source + '\n';
  if (!xdc_)
    out_ +=
        "# Asynchronous to all other clocks. The paths stay, as their delays have limits below; where a tool lacks\n"
        "# -allow_paths, leave this line out: without it such groups would take the limits away.\n"
        "set_clock_groups -asynchronous -allow_paths -name ostrel_tck -group [get_clocks ostrel_tck]\n";
}

/// The cable changes TMS and TDI at the falling edge and takes TDO at the rising one; a quarter of a period is for the
/// board and the cable.
void Constraints::pins() {
  if (!plan_.jtag.hasPins()) return;
  const QByteArray inputs = "[get_ports {" + plan_.pins.tms.toLatin1() + ' ' + plan_.pins.tdi.toLatin1() + "}]\n";
  const QByteArray output = "[get_ports " + plan_.pins.tdo.toLatin1() + "]\n";
  out_ += "set_input_delay -clock ostrel_tck -clock_fall -max " + nanoseconds(0.25) + ' ' + inputs;
  out_ += "set_input_delay -clock ostrel_tck -clock_fall -min 0 " + inputs;
  out_ += "set_output_delay -clock ostrel_tck -max " + nanoseconds(0.25) + ' ' + output;
  out_ += "set_output_delay -clock ostrel_tck -min 0 " + output;
}

QList<QByteArray> Constraints::reply() const {
  return {all("hub/crc"), plan_.jtag.way == JtagWay::Pins ? one("jtag/jtag_tdo")
                          : plan_.jtag.isPrimitive()      ? QByteArray("jtag/primitive_i")
                                                          : QByteArray("jtag/*")};
}

void Constraints::core(int index) {
  const PlanCore& core = plan_.cores[index];
  const CoreLayout layout(core);
  const QByteArray prefix = corePrefix(index), inside = prefix + "core/";
  out_ += "\n# Core " + number(index) + ": its run, the requests for a snapshot, and back\n";
  for (const auto& [from, to] :
       {std::pair{"run", "run"}, {"request", "request"}, {"busy", "busy"}, {"done", "done"}, {"ack", "ack"}})
    crossing({one(inside + from)}, {one(inside + "sync_" + to + "/first")});

  out_ += "# the configuration, which changes only without a run\n";
  QList<QByteArray> configured{one(inside + "searching")};
  if (core.windows > 1) configured << one(inside + "full") << all(inside + "several_windows.window");
  if (layout.eventBits > 0) configured += one(inside + "event_counter.last_event");
  for (int i = 0; i < core.units.size(); ++i) configured += all(prefix + "unit" + number(i) + '/');
  for (int i = 0; i < core.expressions.size(); ++i) {
    const ExpressionLayout& e = layout.expressions[i];
    const QByteArray name = prefix + "expr" + number(i);
    configured += all(name + '/');
    if (e.store == TableStore::Chain) configured += all(name + "_table/chain.row_q");
  }
  crossing({all(inside + "config_q")}, configured);
  for (int i = 0; i < core.expressions.size(); ++i) {
    const TableStore store = layout.expressions[i].store;
    const QByteArray memory = prefix + "expr" + number(i) + "_table/memory.rows/";
    if (store != TableStore::Chain) crossing({all(memory + "*words")}, {all(memory + "read_data")});
  }

  out_ += "# the snapshot, which is stable while it is sent, and the samples of a run that is done\n";
  QList<QByteArray> status{all(inside + "snapshot")};
  if (core.windows <= 1) status += all(inside + "one_window.oldest");
  crossing(status, reply());
  crossing({all(inside + "samples/*words")}, {all(inside + "samples/read_data")});
}

void Constraints::serdes() {
  const PlanSerdes& plan = *plan_.serdes;
  out_ += "\n# Serdes core: requests for a look, and back\n";
  crossing({one("sd/request")}, {one("sd/sync_request/first")});
  crossing({one("sd/ack")}, {one("sd/sync_ack/first")});
  if (!plan.levels.isEmpty()) crossing({one("sd/restart_levels")}, {all("sd/count_q")});
  out_ += "# the copies, which are stable while they are sent\n";
  crossing({all("sd/copies")}, reply());
  out_ += "# what is watched: divided clocks, and levels of any clock\n";
  crossing({all("sd/tck_divider")}, {one("sd/sync_tck/first")});
  if (!plan.clocks.isEmpty()) crossing({all("sd/clock*divider")}, {one("sd/clock*sync_clock/first")});
  QList<QByteArray> levels;
  if (plan.hasReset) levels += one("sd/sync_rst/first");
  if (!plan.levels.isEmpty()) levels += one("sd/watched*sync_level/first");
  if (!levels.isEmpty()) out_ += "set_false_path -to " + cells(levels) + '\n';
}

void Constraints::wishbone() {
  const QByteArray inside = "wb/";
  out_ += "\n# The Wishbone master: the start of a transfer and its end\n";
  crossing({one(inside + "go")}, {one(inside + "sync_go/first")});
  crossing({one(inside + "over")}, {one(inside + "sync_over/first")});
  out_ += "# what is transferred, which changes only between transfers\n";
  QList<QByteArray> described{one(inside + "we"), one(inside + "over"), all(inside + "incoming/*words")};
  for (const char* name : {"word_address", "sel", "word", "state"}) described += all(inside + name);
  crossing({all(inside + "config_q")}, described);
  crossing({all(inside + "outgoing/*words")}, {all(inside + "outgoing/read_data")});
  out_ += "# how the transfer has ended, and the words that were read\n";
  crossing({all(inside + "ending"), all(inside + "word")}, reply());
  crossing({all(inside + "incoming/*words")}, {all(inside + "incoming/read_data")});
}

QByteArray Constraints::text() {
  out_ = "# Generated: the timing of the debug core. The sample clocks are the design's own and constrained there.\n";
  clock();
  pins();
  for (int i = 0; i < plan_.cores.size(); ++i) core(i);
  if (plan_.wishbone) wishbone();
  if (plan_.serdes) serdes();
  return out_;
}

}  // namespace

QByteArray constraintsText(const InsertPlan& plan, const QByteArray& instance, ConstraintDialect dialect) {
  return Constraints(plan, instance, dialect).text();
}

}  // namespace ost
