// Writes the capture map.
#include "platform/plan/capture_map.h"

#include <QCryptographicHash>

#include "platform/plan/capture_map_instances.h"
#include "platform/plan/capture_map_words.h"
#include "platform/trigger/unit_value.h"

namespace ost {
namespace {

class MapWriter : private JsonLines {
 public:
  explicit MapWriter(int version) : version_(version) {}

  QByteArray write(const InsertPlan& plan);

 private:
  void bit(const NetBit& bit) {
    line([&] {
      bytes(bit.name.toLatin1());
      bytes(bit.instancePath.toLatin1());
      bytes(bit.net.toLatin1());
      integer(bit.bit);
    });
  }
  void bits(const char* name, const QVector<NetBit>& entries) {
    list(name, entries, [this](const NetBit& entry) { bit(entry); });
  }
  /// Pairs of name and value, most significant bit first; nothing without names.
  void valueNames(const EnumNames& names);
  /// How the net of a probe is declared; nothing when that is not known.
  void declaredNet(const DeclaredNet& net);
  void enable(const char* name, bool used, const NetBit& net, bool activeLow, bool isForeign);
  void unit(const PlanUnit& unit);
  void expression(const PlanExpression& expression);
  void triggerOut(const PlanCore& core);
  void core(const PlanCore& core);
  void jtag(const InsertPlan& plan);
  void wishbone(const PlanWishbone& wishbone, int number);
  void serdes(const PlanSerdes& serdes, int number);

  const int version_;
};

QByteArray reversed(QByteArray digits) {
  std::reverse(digits.begin(), digits.end());
  return digits;
}

void MapWriter::valueNames(const EnumNames& names) {
  if (names.isEmpty()) return;
  list("names", names, [this](const EnumName& entry) {
    line([&] {
      bytes(entry.name.toLatin1());
      bytes(reversed(entry.bits));
    });
  });
}

/// The oldest version that holds all that the plan has, of those that are hashed wholly.
int oldVersionFor(const InsertPlan& plan) {
  int version = plan.jtag.way != JtagWay::Pins ? 3 : 1;
  for (const PlanCore& core : plan.cores) {
    for (const PlanProbe& probe : core.probes) {
      if (!probe.net.name.isEmpty()) return 4;
      if (!probe.names.isEmpty()) version = qMax(version, 2);
    }
    for (const PlanUnit& unit : core.units)
      if (!unit.names.isEmpty()) version = qMax(version, 2);
  }
  return version;
}

void MapWriter::declaredNet(const DeclaredNet& net) {
  if (net.name.isEmpty()) return;
  texts("scopes", net.scopes);
  text("net", net.name);
  if (net.isVector) numbers("range", {net.left, net.right});
}

void MapWriter::enable(const char* name, bool used, const NetBit& net, bool activeLow, bool isForeign) {
  key(name);
  if (!used) {
    null();
    return;
  }
  begin();
  key("net");
  bit(net);
  flag("activeLow", activeLow);
  if (isForeign) flag("foreign", true);
  end();
}

void MapWriter::unit(const PlanUnit& unit) {
  begin();
  text("name", unit.name);
  text("class", unitClassWords()[int(unit.unitClass)]);
  text("operator", operatorText(unit.op));
  text("radix", radixText(unit.radix));
  text("valueText", unit.valueText);
  number("width", unit.width);
  numbers("inputs", unit.inputs);
  key("value");
  bytes(reversed(unit.value));
  key("mask");
  bytes(reversed(unit.mask));
  valueNames(unit.names);
  end();
}

void MapWriter::expression(const PlanExpression& expression) {
  begin();
  text("name", expression.name);
  text("text", expression.text);
  flag("blockRam", expression.blockRam);
  number("maxSequenceDepth", expression.maxSequenceDepth);
  number("maxEventCount", expression.maxEventCount);
  numbers("units", expression.units);
  list("steps", expression.steps, [this](const PlanStep& step) {
    begin();
    key("truthTable");
    bytes(step.truthTable);
    number("count", step.count);
    end();
  });
  end();
}

void MapWriter::triggerOut(const PlanCore& core) {
  key("triggerOut");
  if (!core.triggerOutIo && !core.triggerOutNet) {
    null();
    return;
  }
  begin();
  text("name", core.triggerOutName);
  flag("port", core.triggerOutIo);
  flag("net", core.triggerOutNet);
  flag("activeLow", core.triggerOutActiveLow);
  number("minPulse", core.triggerOutMinPulse);
  end();
}

void MapWriter::core(const PlanCore& core) {
  begin();
  text("name", core.name);
  key("sampleClock");
  bit(core.sampleClock);
  enable("sampleEnable", core.hasSampleEnable, core.sampleEnable, core.sampleEnableActiveLow, core.sampleEnableForeign);
  enable("triggerEnable", core.hasTriggerEnable, core.triggerEnable, core.triggerEnableActiveLow,
         core.triggerEnableForeign);
  text("displayRadix", radixText(core.displayRadix));
  number("depth", core.depth);
  flag("distributedRam", core.distributedRam);
  flag("distRamDisabled", core.distRamDisabled);
  number("timestampBits", core.timestampBits);
  flag("includeTrigger", core.includeTrigger);
  number("windows", core.windows);
  number("windowSamples", core.windowSamples);
  flag("eventCounter", core.eventCounter);
  number("eventCount", core.eventCount);
  triggerOut(core);
  bits("probeBits", core.probeBits);
  list("probes", core.probes, [this](const PlanProbe& probe) {
    begin();
    text("name", probe.name);
    numbers("positions", probe.positions);
    valueNames(probe.names);
    declaredNet(probe.net);
    end();
  });
  bits("triggerBits", core.triggerBits);
  list("units", core.units, [this](const PlanUnit& entry) { unit(entry); });
  list("expressions", core.expressions, [this](const PlanExpression& entry) { expression(entry); });
  if (version_ > kLastWhollyHashedVersion && !core.instances.isEmpty())
    list("instances", core.instances, [this](const ProbedInstance& entry) { writeInstance(*this, entry); });
  end();
}

void MapWriter::jtag(const InsertPlan& plan) {
  if (plan.jtag.way != JtagWay::Pins) text("way", jtagWayWords()[int(plan.jtag.way)]);
  if (plan.jtag.isPrimitive()) {
    number("chain", plan.jtag.chain);
    number("instructionWidth", plan.jtag.instructionWidth());
    number("instructionCode", int(plan.jtag.instructionCode()));
  }
  if (!plan.jtag.hasPins()) return;
  text("tck", plan.pins.tck);
  text("tms", plan.pins.tms);
  text("tdi", plan.pins.tdi);
  text("tdo", plan.pins.tdo);
}

void MapWriter::wishbone(const PlanWishbone& wishbone, int number) {
  key("wishbone");
  begin();
  this->number("core", number);
  flag("bigEndian", wishbone.isBigEndian);
  this->number("addressBits", wishbone.addressBits);
  flag("connected", wishbone.isConnected);
  if (!wishbone.isConnected) text("ports", wishbone.portPrefix);
  if (wishbone.isConnected) {
    text("instance", wishbone.instance);
    key("clock");
    bit(wishbone.clock);
    this->number("addressOffset", wishbone.addressOffset);
    list("pins", wishbone.pins, [this](const WishbonePin& pin) {
      line([&] {
        bytes(wishboneSignalWords()[int(pin.signal)].toLatin1());
        bytes(pin.port.toLatin1());
        integer(pin.width);
      });
    });
  }
  end();
}

void MapWriter::serdes(const PlanSerdes& serdes, int number) {
  key("serdes");
  begin();
  this->number("core", number);
  key("clock");
  bit(serdes.clock);
  if (serdes.hasReset) {
    key("reset");
    bit(serdes.reset);
  }
  list("watched", serdes.clocks + serdes.levels, [this](const PlanWatched& one) {
    begin();
    text("word", one.word);
    key("net");
    bit(one.net);
    end();
  });
  end();
}

/// Takes away what the hardware does not depend on.
void clearShown(PlanCore& core) {
  core.displayRadix = Radix::Bin;
  core.probes.clear();
  core.instances.clear();
  for (PlanUnit& unit : core.units) {
    unit.radix = Radix::Bin;
    for (QString* text : {&unit.name, &unit.valueText}) text->clear();
    unit.names.clear();
  }
  for (PlanExpression& expression : core.expressions)
    for (QString* text : {&expression.name, &expression.text}) text->clear();
}

QByteArray MapWriter::write(const InsertPlan& plan) {
  begin();
  text("format", captureMapFormat());
  number("version", version_);
  text("project", plan.projectName);
  text("top", plan.topModule);
  key("hash");
  bytes(plan.projectHash);
  key("jtag");
  begin();
  jtag(plan);
  end();
  list("cores", plan.cores, [this](const PlanCore& entry) { core(entry); });
  if (plan.wishbone) wishbone(*plan.wishbone, plan.wishboneNumber());
  if (plan.serdes) serdes(*plan.serdes, plan.serdesNumber());
  end();
  return result() + '\n';
}

}  // namespace

QString captureMapFormat() {
  return QStringLiteral("ostrel capture map");
}

QStringList unitClassWords() {
  return {QStringLiteral("match"), QStringLiteral("order"), QStringLiteral("serial")};
}

QByteArray captureMapJson(const InsertPlan& plan) {
  return MapWriter(kCaptureMapVersion).write(plan);
}

QByteArray planHash(const InsertPlan& plan, int version) {
  InsertPlan hashed = plan;
  hashed.projectHash.clear();
  hashed.pins = JtagPins();
  hashed.jtag = PlanJtag();
  if (hashed.wishbone) hashed.wishbone->portPrefix.clear();
  if (version <= kLastWhollyHashedVersion)
    version = oldVersionFor(hashed);
  else
    for (PlanCore& core : hashed.cores) clearShown(core);
  const QByteArray text = MapWriter(version).write(hashed);
  return QCryptographicHash::hash(text, QCryptographicHash::Sha256).toHex().left(16);
}

}  // namespace ost
