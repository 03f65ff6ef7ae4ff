// Writes the filters and watches between the design and one core.
#include "platform/rtl/unknown_levels.h"

#include <QHash>
#include <QSet>

#include "platform/rtl/verilog_text.h"

namespace ost {

using namespace verilog;

namespace {

/// A net as the core is connected to it: which bits of its two input vectors.
struct WatchedNet {
  QString name;
  QVector<int> probes, triggers;
};

/// The nets of a core, each once; a bit that is probed counts as such only.
QVector<WatchedNet> watchedNets(const PlanCore& core) {
  QVector<WatchedNet> nets;
  QHash<QPair<QString, QString>, int> places;
  const auto add = [&](const NetBit& bit, QVector<int> WatchedNet::*list, int index) {
    const QPair<QString, QString> net(bit.instancePath, bit.net);
    const bool isNew = !places.contains(net);
    if (isNew) {
      places.insert(net, nets.size());
      nets.append({bit.name, {}, {}});
    }
    WatchedNet& watched = nets[places.value(net)];
    // Several bits are shown by the vector's name.
    if (!isNew && watched.name.endsWith(QLatin1Char(']')))
      watched.name.truncate(watched.name.lastIndexOf(QLatin1Char('[')));
    (watched.*list).append(index);
  };
  QSet<QPair<QPair<QString, QString>, int>> probed;
  for (int i = 0; i < core.probeBits.size(); ++i) {
    const NetBit& bit = core.probeBits[i];
    probed.insert({{bit.instancePath, bit.net}, bit.bit});
    add(bit, &WatchedNet::probes, i);
  }
  for (int i = 0; i < core.triggerBits.size(); ++i) {
    const NetBit& bit = core.triggerBits[i];
    if (!probed.contains({{bit.instancePath, bit.net}, bit.bit})) add(bit, &WatchedNet::triggers, i);
  }
  return nets;
}

/// Each net that a run meets as x or z is named once.
void writeWatches(QByteArray& out, const PlanCore& core, const QByteArray& c) {
  int count = 0;
  const auto watch = [&](const QString& net, bool isEnable, const QByteArray& sampled, int width,
                         const QByteArray& levels) {
    instance(
        out, "ostrel_watch",
        {{"WIDTH", number(width)}, {"ENABLE", number(isEnable)}, {"CORE", quoted(core.name)}, {"NET", quoted(net)}},
        c + "watch" + number(count++), {{"clk", c + "clk"}, {"sampled", sampled}, {"levels", levels}});
  };
  const auto bits = [](const QByteArray& port, int width, const QVector<int>& indices) {
    return indices.isEmpty() ? QByteArray() : width == 1 ? port : gather(port, indices);
  };
  if (core.hasSampleEnable) watch(core.sampleEnable.name, true, "~" + c + "clear", 1, c + "sample_en");
  if (core.hasTriggerEnable) watch(core.triggerEnable.name, true, c + "sample", 1, c + "trig_en");
  for (const WatchedNet& net : watchedNets(core)) {
    const QByteArray probes = bits(c + "probe", core.probeWidth(), net.probes);
    const QByteArray triggers = bits(c + "trig", core.triggerBits.size(), net.triggers);
    watch(net.name, false, c + "sample", net.probes.size() + net.triggers.size(),
          probes.isEmpty()     ? triggers
          : triggers.isEmpty() ? probes
                               : "{" + triggers + ", " + probes + "}");
  }
}

}  // namespace

void writeKnownLevels(QByteArray& out, const PlanCore& core, const QByteArray& c, int units) {
  struct Signal {
    QByteArray name;
    int width;
    bool unknown;  ///< Its level when it is unknown.
  };
  QVector<Signal> signals = {{"probe", core.probeWidth(), false}, {"hits", units, false}};
  if (core.hasSampleEnable) signals.append({"sample_en", 1, core.sampleEnableActiveLow});
  if (core.hasTriggerEnable) signals.append({"trig_en", 1, core.triggerEnableActiveLow});
  for (const Signal& one : signals)
    out += "  wire [" + number(one.width - 1) + ":0] " + c + "known_" + one.name + ";\n";
  out += "`ifdef SYNTHESIS\n";
  for (const Signal& one : signals) out += "  assign " + c + "known_" + one.name + " = " + c + one.name + ";\n";
  out += "`else\n";
  for (const Signal& one : signals)
    instance(out, "ostrel_known", {{"WIDTH", number(one.width)}, {"UNKNOWN", number(one.unknown)}},
             c + "filter_" + one.name, {{"in", c + one.name}, {"out", c + "known_" + one.name}});
  out += "`ifndef VERILATOR\n// synthesis translate_off\n";
  writeWatches(out, core, c);
  out += "// synthesis translate_on\n`endif\n`endif\n";
}

}  // namespace ost
