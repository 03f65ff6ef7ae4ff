// Writes the capture map. Bits are short lists on one line each, so that the file reads well and stays small.
#include "platform/plan/capture_map.h"

#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

#include <QCryptographicHash>

#include "platform/plan/capture_map_words.h"
#include "platform/trigger/unit_value.h"

namespace ost {
namespace {

class MapWriter {
 public:
  MapWriter() : writer_(buffer_) { writer_.SetIndent(' ', 1); }

  QByteArray write(const InsertPlan& plan);

 private:
  void key(const char* name) { writer_.Key(name); }
  void bytes(const QByteArray& text) { writer_.String(text.constData(), rapidjson::SizeType(text.size())); }
  void text(const char* name, const QString& value) {
    key(name);
    bytes(value.toLatin1());
  }
  void flag(const char* name, bool value) {
    key(name);
    writer_.Bool(value);
  }
  void number(const char* name, int value) {
    key(name);
    writer_.Int(value);
  }
  /// A list on one line, of what `elements` writes.
  template <typename Elements>
  void line(const Elements& elements) {
    writer_.StartArray();
    writer_.SetFormatOptions(rapidjson::kFormatSingleLineArray);
    elements();
    writer_.EndArray();
    writer_.SetFormatOptions(rapidjson::kFormatDefault);
  }
  void numbers(const char* name, const QVector<int>& values) {
    key(name);
    line([&] {
      for (const int value : values) writer_.Int(value);
    });
  }
  void bit(const NetBit& bit) {
    line([&] {
      bytes(bit.name.toLatin1());
      bytes(bit.instancePath.toLatin1());
      bytes(bit.net.toLatin1());
      writer_.Int(bit.bit);
    });
  }
  /// A list of what `write` writes for each entry.
  template <typename Entry, typename Write>
  void list(const char* name, const QVector<Entry>& entries, const Write& write) {
    key(name);
    writer_.StartArray();
    for (const Entry& entry : entries) write(entry);
    writer_.EndArray();
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

  rapidjson::StringBuffer buffer_;
  rapidjson::PrettyWriter<rapidjson::StringBuffer> writer_;
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

/// The oldest version that holds all that the plan has.
int versionFor(const InsertPlan& plan) {
  if (plan.wishbone || plan.serdes) return 5;
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
  key("scopes");
  line([&] {
    for (const QString& scope : net.scopes) bytes(scope.toLatin1());
  });
  text("net", net.name);
  if (net.isVector) numbers("range", {net.left, net.right});
}

void MapWriter::enable(const char* name, bool used, const NetBit& net, bool activeLow, bool isForeign) {
  key(name);
  if (!used) {
    writer_.Null();
    return;
  }
  writer_.StartObject();
  key("net");
  bit(net);
  flag("activeLow", activeLow);
  if (isForeign) flag("foreign", true);
  writer_.EndObject();
}

void MapWriter::unit(const PlanUnit& unit) {
  writer_.StartObject();
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
  writer_.EndObject();
}

void MapWriter::expression(const PlanExpression& expression) {
  writer_.StartObject();
  text("name", expression.name);
  text("text", expression.text);
  flag("blockRam", expression.blockRam);
  number("maxSequenceDepth", expression.maxSequenceDepth);
  number("maxEventCount", expression.maxEventCount);
  numbers("units", expression.units);
  list("steps", expression.steps, [this](const PlanStep& step) {
    writer_.StartObject();
    key("truthTable");
    bytes(step.truthTable);
    number("count", step.count);
    writer_.EndObject();
  });
  writer_.EndObject();
}

void MapWriter::triggerOut(const PlanCore& core) {
  key("triggerOut");
  if (!core.triggerOutIo && !core.triggerOutNet) {
    writer_.Null();
    return;
  }
  writer_.StartObject();
  text("name", core.triggerOutName);
  flag("port", core.triggerOutIo);
  flag("net", core.triggerOutNet);
  flag("activeLow", core.triggerOutActiveLow);
  number("minPulse", core.triggerOutMinPulse);
  writer_.EndObject();
}

void MapWriter::core(const PlanCore& core) {
  writer_.StartObject();
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
    writer_.StartObject();
    text("name", probe.name);
    numbers("positions", probe.positions);
    valueNames(probe.names);
    declaredNet(probe.net);
    writer_.EndObject();
  });
  bits("triggerBits", core.triggerBits);
  list("units", core.units, [this](const PlanUnit& entry) { unit(entry); });
  list("expressions", core.expressions, [this](const PlanExpression& entry) { expression(entry); });
  writer_.EndObject();
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
  writer_.StartObject();
  this->number("core", number);
  flag("bigEndian", wishbone.isBigEndian);
  this->number("addressBits", wishbone.addressBits);
  flag("connected", wishbone.isConnected);
  if (wishbone.isConnected) {
    text("instance", wishbone.instance);
    key("clock");
    bit(wishbone.clock);
    this->number("addressOffset", wishbone.addressOffset);
    list("pins", wishbone.pins, [this](const WishbonePin& pin) {
      line([&] {
        bytes(wishboneSignalWords()[int(pin.signal)].toLatin1());
        bytes(pin.port.toLatin1());
        writer_.Int(pin.width);
      });
    });
  }
  writer_.EndObject();
}

void MapWriter::serdes(const PlanSerdes& serdes, int number) {
  key("serdes");
  writer_.StartObject();
  this->number("core", number);
  key("clock");
  bit(serdes.clock);
  writer_.EndObject();
}

QByteArray MapWriter::write(const InsertPlan& plan) {
  writer_.StartObject();
  text("format", captureMapFormat());
  number("version", versionFor(plan));
  text("project", plan.projectName);
  text("top", plan.topModule);
  key("hash");
  bytes(plan.projectHash);
  key("jtag");
  writer_.StartObject();
  jtag(plan);
  writer_.EndObject();
  list("cores", plan.cores, [this](const PlanCore& entry) { core(entry); });
  if (plan.wishbone) wishbone(*plan.wishbone, plan.wishboneNumber());
  if (plan.serdes) serdes(*plan.serdes, plan.serdesNumber());
  writer_.EndObject();
  return QByteArray(buffer_.GetString(), int(buffer_.GetSize())) + '\n';
}

}  // namespace

QString captureMapFormat() {
  return QStringLiteral("ostrel capture map");
}

QStringList unitClassWords() {
  return {QStringLiteral("match"), QStringLiteral("order"), QStringLiteral("serial")};
}

QByteArray captureMapJson(const InsertPlan& plan) {
  return MapWriter().write(plan);
}

QByteArray planHash(const InsertPlan& plan) {
  InsertPlan hashed = plan;
  hashed.projectHash.clear();
  hashed.pins = JtagPins();
  hashed.jtag = PlanJtag();
  return QCryptographicHash::hash(captureMapJson(hashed), QCryptographicHash::Sha256).toHex().left(16);
}

}  // namespace ost
