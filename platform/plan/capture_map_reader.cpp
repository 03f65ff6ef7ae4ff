// Reads a capture map strictly: every field must be there, be of its kind and fit the others.
#include <QJsonArray>
#include <QJsonObject>
#include <climits>

#include "platform/plan/capture_map.h"
#include "platform/plan/capture_map_instances.h"
#include "platform/plan/capture_map_words.h"
#include "platform/text/byte_text.h"
#include "platform/text/json_fields.h"
#include "platform/text/json_text.h"
#include "platform/text/numbers.h"
#include "platform/trigger/trigger_expression.h"
#include "platform/trigger/unit_value.h"

namespace ost {
namespace {

constexpr int kMaxDepth = 65536;
constexpr int kMaxTimestampBits = 63;
constexpr int kMaxScopes = 4096;  ///< Levels of instances, each with its generate blocks.

bool isBinary(const QByteArray& digits) {
  return digits.count('0') + digits.count('1') == digits.size();
}

class MapReader {
 public:
  bool read(const QJsonValue& root, InsertPlan& plan, QString& error);

 private:
  void fail(const QString& path, const QString& what) {
    if (fault_.none()) fault_.text = path + QStringLiteral(": ") + what;
  }
  /// Calls `each(value, path)` for the elements of a list of at most `most`, until the first fault.
  template <typename Each>
  void list(JsonFields& fields, const char* key, int most, const Each& each);
  QVector<int> numbers(JsonFields& fields, const char* key, int below);
  NetBit bit(const QJsonValue& value, const QString& path);
  QVector<NetBit> bits(JsonFields& fields, const char* key);
  QByteArray digits(JsonFields& fields, const char* key, int count);
  EnumNames valueNames(JsonFields& fields, int width);
  DeclaredNet declaredNet(JsonFields& fields, int width);
  bool enable(JsonFields& fields, const char* key, NetBit& net, bool& activeLow, bool& isForeign);
  PlanUnit unit(const QJsonValue& value, const QString& path, int inputs);
  PlanExpression expression(const QJsonValue& value, const QString& path, int units);
  void captureSettings(JsonFields& fields, PlanCore& core);
  void triggerOut(JsonFields& fields, PlanCore& core);
  PlanCore core(const QJsonValue& value, const QString& path);
  void jtag(JsonFields& fields, InsertPlan& plan);
  PlanWishbone wishbone(const QJsonValue& value, int number);
  PlanSerdes serdes(const QJsonValue& value, int number);

  /// Counts an entry of a kind that the map may have `most` of.
  void count(int& entries, int most, const QString& path) {
    if (++entries > most) fail(path, QStringLiteral("the map has more than %1 such entries.").arg(most));
  }

  JsonFault fault_;
  int version_ = kCaptureMapVersion;
  int bits_ = 0, indexes_ = 0;  ///< So far.
};

template <typename Each>
void MapReader::list(JsonFields& fields, const char* key, int most, const Each& each) {
  const QJsonArray values = fields.list(key);
  const QString path = fields.pathOf(key);
  if (values.size() > most) fail(path, QStringLiteral("has more than %1 entries.").arg(most));
  for (int i = 0; i < values.size() && fault_.none(); ++i) each(values[i], QStringLiteral("%1[%2]").arg(path).arg(i));
}

QVector<int> MapReader::numbers(JsonFields& fields, const char* key, int below) {
  QVector<int> result;
  list(fields, key, kMaxPlanBits, [&](const QJsonValue& value, const QString& path) {
    count(indexes_, kMaxPlanIndexes, path);
    const int number = value.toInt(-1);
    if (number < 0 || number >= below) fail(path, QStringLiteral("expected a number from 0 to %1.").arg(below - 1));
    result.append(number);
  });
  return result;
}

NetBit MapReader::bit(const QJsonValue& value, const QString& path) {
  const QJsonArray parts = value.toArray();
  NetBit result;
  if (parts.size() != 4 || !parts[0].isString() || !parts[1].isString() || !parts[2].isString() ||
      parts[3].toInt(-1) < 0) {
    fail(path, QStringLiteral("expected [name, instance, net, bit]."));
    return result;
  }
  result.name = textFromUnicode(parts[0].toString());
  result.instancePath = textFromUnicode(parts[1].toString());
  result.net = textFromUnicode(parts[2].toString());
  result.bit = parts[3].toInt();
  if (result.name.isEmpty() || result.net.isEmpty()) fail(path, QStringLiteral("has an empty name."));
  return result;
}

QVector<NetBit> MapReader::bits(JsonFields& fields, const char* key) {
  QVector<NetBit> result;
  list(fields, key, kMaxPlanBits, [&](const QJsonValue& value, const QString& path) {
    count(bits_, kMaxPlanBits, path);
    result.append(bit(value, path));
  });
  return result;
}

/// `count` binary digits, written with the most significant first.
QByteArray MapReader::digits(JsonFields& fields, const char* key, int count) {
  QByteArray text = fields.text(key).toLatin1();
  if (text.size() != count || !isBinary(text))
    fail(fields.pathOf(key), QStringLiteral("expected %1 binary digits.").arg(count));
  std::reverse(text.begin(), text.end());
  return text;
}

EnumNames MapReader::valueNames(JsonFields& fields, int width) {
  EnumNames names;
  if (version_ < 2 || !fields.has("names")) return names;
  list(fields, "names", kMaxPlanIndexes, [&](const QJsonValue& value, const QString& path) {
    count(indexes_, kMaxPlanIndexes, path);
    const QJsonArray pair = value.toArray();
    QByteArray bits = pair.size() == 2 ? pair[1].toString().toLatin1() : QByteArray();
    if (bits.size() != width || !isBinary(bits) || pair[0].toString().isEmpty())
      fail(path, QStringLiteral("expected [name, %1 binary digits].").arg(width));
    std::reverse(bits.begin(), bits.end());
    names.append({textFromUnicode(pair[0].toString()), bits});
  });
  return names;
}

DeclaredNet MapReader::declaredNet(JsonFields& fields, int width) {
  DeclaredNet net;
  if (version_ < 4 || !fields.has("net")) return net;
  net.name = fields.text("net");
  list(fields, "scopes", kMaxScopes, [&](const QJsonValue& value, const QString& path) {
    count(indexes_, kMaxPlanIndexes, path);
    if (value.toString().isEmpty()) fail(path, QStringLiteral("expected the name of a scope."));
    net.scopes.append(textFromUnicode(value.toString()));
  });
  net.isVector = fields.has("range");
  QVector<int> range;
  if (net.isVector)
    list(fields, "range", 2, [&](const QJsonValue& value, const QString& path) {
      if (value.toInt(INT_MIN) == INT_MIN) fail(path, QStringLiteral("expected an index."));
      range.append(value.toInt());
    });
  const bool fits = net.isVector ? range.size() == 2 && qAbs(qint64(range[0]) - range[1]) == width - 1 : width == 1;
  if (net.name.isEmpty() || !fits) fail(fields.pathOf("net"), QStringLiteral("does not fit the probe."));
  if (range.size() == 2) {
    net.left = range[0];
    net.right = range[1];
  }
  return net;
}

bool MapReader::enable(JsonFields& fields, const char* key, NetBit& net, bool& activeLow, bool& isForeign) {
  const QJsonValue value = fields.value(key);
  if (value.isNull()) return false;
  JsonFields inner(value, fields.pathOf(key), fault_);
  net = bit(inner.value("net"), inner.pathOf("net"));
  activeLow = inner.flag("activeLow");
  isForeign = inner.has("foreign") && inner.flag("foreign");
  inner.refuseOthers();
  return true;
}

PlanUnit MapReader::unit(const QJsonValue& value, const QString& path, int inputs) {
  JsonFields fields(value, path, fault_);
  PlanUnit unit;
  unit.name = fields.text("name");
  unit.unitClass = UnitClass(fields.word("class", unitClassWords()));
  if (!operatorFromText(fields.text("operator"), unit.op))
    fail(fields.pathOf("operator"), QStringLiteral("is not a valid operator."));
  if (!radixFromText(fields.text("radix"), unit.radix))
    fail(fields.pathOf("radix"), QStringLiteral("is not a valid radix."));
  unit.valueText = fields.text("valueText");
  unit.width = fields.number("width", 1, kMaxPlanBits);
  unit.inputs = numbers(fields, "inputs", inputs);
  const bool serial = unit.unitClass == UnitClass::Serial;
  if (fault_.none() && unit.inputs.size() != (serial ? 1 : unit.width))
    fail(fields.pathOf("inputs"), QStringLiteral("does not fit the width."));
  unit.value = digits(fields, "value", unit.width);
  unit.mask = digits(fields, "mask", unit.width);
  unit.names = valueNames(fields, unit.width);
  fields.refuseOthers();
  return unit;
}

PlanExpression MapReader::expression(const QJsonValue& value, const QString& path, int units) {
  JsonFields fields(value, path, fault_);
  PlanExpression expression;
  expression.name = fields.text("name");
  expression.text = fields.text("text");
  expression.blockRam = fields.flag("blockRam");
  expression.maxSequenceDepth = fields.number("maxSequenceDepth", 1, kMaxSequenceDepth);
  expression.maxEventCount = fields.number("maxEventCount", 1, kMaxEventCount);
  expression.units = numbers(fields, "units", units);
  if (expression.units.isEmpty() || expression.units.size() > kMaxExpressionUnits) {
    fail(fields.pathOf("units"), QStringLiteral("expected 1 to %1 units.").arg(kMaxExpressionUnits));
    return expression;
  }
  list(fields, "steps", expression.maxSequenceDepth, [&](const QJsonValue& step, const QString& place) {
    JsonFields inner(step, place, fault_);
    PlanStep result;
    result.truthTable = inner.text("truthTable").toLatin1();
    result.count = inner.number("count", 1, expression.maxEventCount);
    inner.refuseOthers();
    if (result.truthTable.size() != 1 << expression.units.size() || !isBinary(result.truthTable))
      fail(place, QStringLiteral("its truth table needs %1 binary digits.").arg(1 << expression.units.size()));
    expression.steps.append(result);
  });
  if (expression.steps.isEmpty()) fail(fields.pathOf("steps"), QStringLiteral("is empty."));
  fields.refuseOthers();
  return expression;
}

void MapReader::triggerOut(JsonFields& fields, PlanCore& core) {
  const QJsonValue value = fields.value("triggerOut");
  if (value.isNull()) return;
  JsonFields inner(value, fields.pathOf("triggerOut"), fault_);
  core.triggerOutName = inner.text("name");
  core.triggerOutIo = inner.flag("port");
  core.triggerOutNet = inner.flag("net");
  core.triggerOutActiveLow = inner.flag("activeLow");
  core.triggerOutMinPulse = inner.number("minPulse", 0, INT_MAX);
  inner.refuseOthers();
}

void MapReader::captureSettings(JsonFields& fields, PlanCore& core) {
  core.depth = fields.number("depth", 1, kMaxDepth);
  core.distributedRam = fields.flag("distributedRam");
  core.distRamDisabled = fields.flag("distRamDisabled");
  core.timestampBits = fields.number("timestampBits", 0, kMaxTimestampBits);
  core.includeTrigger = fields.flag("includeTrigger");
  core.windows = fields.number("windows", 1, core.depth);
  core.windowSamples = fields.number("windowSamples", 1, core.depth);
  if (!isPowerOfTwo(core.depth)) fail(fields.pathOf("depth"), QStringLiteral("is not a power of two."));
  if (!isPowerOfTwo(core.windowSamples) || qint64(core.windows) * core.windowSamples > core.depth)
    fail(fields.pathOf("windowSamples"), QStringLiteral("the windows do not fit the depth."));
  core.eventCounter = fields.flag("eventCounter");
  core.eventCount = fields.number("eventCount", 1, kMaxEventCount);
}

PlanCore MapReader::core(const QJsonValue& value, const QString& path) {
  JsonFields fields(value, path, fault_);
  PlanCore core;
  core.name = fields.text("name");
  core.sampleClock = bit(fields.value("sampleClock"), fields.pathOf("sampleClock"));
  core.hasSampleEnable =
      enable(fields, "sampleEnable", core.sampleEnable, core.sampleEnableActiveLow, core.sampleEnableForeign);
  core.hasTriggerEnable =
      enable(fields, "triggerEnable", core.triggerEnable, core.triggerEnableActiveLow, core.triggerEnableForeign);
  if (!radixFromText(fields.text("displayRadix"), core.displayRadix))
    fail(fields.pathOf("displayRadix"), QStringLiteral("is not a valid radix."));
  captureSettings(fields, core);
  triggerOut(fields, core);
  core.probeBits = bits(fields, "probeBits");
  list(fields, "probes", kMaxPlanBits, [&](const QJsonValue& entry, const QString& place) {
    JsonFields inner(entry, place, fault_);
    PlanProbe probe;
    probe.name = inner.text("name");
    probe.positions = numbers(inner, "positions", core.probeBits.size());
    probe.names = valueNames(inner, probe.positions.size());
    probe.net = declaredNet(inner, probe.positions.size());
    inner.refuseOthers();
    core.probes.append(probe);
  });
  core.triggerBits = bits(fields, "triggerBits");
  list(fields, "units", kMaxPlanBits, [&](const QJsonValue& entry, const QString& place) {
    core.units.append(unit(entry, place, core.triggerBits.size()));
  });
  list(fields, "expressions", kMaxPlanExpressions, [&](const QJsonValue& entry, const QString& place) {
    core.expressions.append(expression(entry, place, core.units.size()));
  });
  if (version_ >= 5 && fields.has("instances"))
    list(fields, "instances", kMaxPlanBits, [&](const QJsonValue& entry, const QString& place) {
      core.instances.append(readInstance(entry, place, core.probeBits.size(), indexes_, fault_));
    });
  if (core.readSampleBits() > kMaxPlanSampleBits)
    fail(fields.pathOf("depth"), QStringLiteral("is for more than %1 bits of samples.").arg(kMaxPlanSampleBits));
  fields.refuseOthers();
  return core;
}

void MapReader::jtag(JsonFields& fields, InsertPlan& plan) {
  JsonFields inner(fields.value("jtag"), QStringLiteral("jtag"), fault_);
  if (version_ >= 3 && inner.has("way")) plan.jtag.way = JtagWay(inner.word("way", jtagWayWords()));
  if (plan.jtag.isPrimitive()) {
    plan.jtag.chain = inner.number("chain", 1, plan.jtag.chains());
    inner.number("instructionWidth", plan.jtag.instructionWidth(), plan.jtag.instructionWidth());
    const int code = int(plan.jtag.instructionCode());
    inner.number("instructionCode", code, code);
  }
  plan.jtag.wrapperPins = inner.has("tck");
  if (plan.jtag.hasPins()) {
    plan.pins.tck = inner.text("tck");
    plan.pins.tms = inner.text("tms");
    plan.pins.tdi = inner.text("tdi");
    plan.pins.tdo = inner.text("tdo");
  }
  inner.refuseOthers();
}

PlanWishbone MapReader::wishbone(const QJsonValue& value, int number) {
  JsonFields fields(value, QStringLiteral("wishbone"), fault_);
  PlanWishbone wishbone;
  fields.number("core", number, number);
  wishbone.isBigEndian = fields.flag("bigEndian");
  wishbone.addressBits = fields.number("addressBits", 2, 32);
  wishbone.isConnected = fields.flag("connected");
  if (!wishbone.isConnected) wishbone.portPrefix = fields.text("ports");
  if (wishbone.isConnected) {
    wishbone.instance = fields.text("instance");
    wishbone.clock = bit(fields.value("clock"), fields.pathOf("clock"));
    wishbone.addressOffset = fields.number("addressOffset", 0, 2);
    list(fields, "pins", wishboneSignalWords().size(), [&](const QJsonValue& entry, const QString& path) {
      const QJsonArray parts = entry.toArray();
      const int signal = wishboneSignalWords().indexOf(parts.at(0).toString());
      const int width = parts.at(2).toInt();
      if (parts.size() != 3 || signal < 0 || parts[1].toString().isEmpty() || width < 1 || width > 32)
        fail(path, QStringLiteral("expected [signal, port, width]."));
      else
        wishbone.pins.append({WishboneSignal(signal), textFromUnicode(parts[1].toString()), width});
    });
  }
  fields.refuseOthers();
  return wishbone;
}

PlanSerdes MapReader::serdes(const QJsonValue& value, int number) {
  JsonFields fields(value, QStringLiteral("serdes"), fault_);
  PlanSerdes serdes;
  fields.number("core", number, number);
  serdes.clock = bit(fields.value("clock"), fields.pathOf("clock"));
  serdes.hasReset = fields.has("reset");
  if (serdes.hasReset) serdes.reset = bit(fields.value("reset"), fields.pathOf("reset"));
  list(fields, "watched", kMaxSerdesSignals, [&](const QJsonValue& entry, const QString& path) {
    JsonFields inner(entry, path, fault_);
    const PlanWatched one = {bit(inner.value("net"), inner.pathOf("net")), inner.text("word")};
    if (!isSerdesWord(one.word)) fail(inner.pathOf("word"), QStringLiteral("is not a word."));
    (one.word == QLatin1String(kSerdesClockWord) ? serdes.clocks : serdes.levels).append(one);
    inner.refuseOthers();
  });
  if (serdes.clocks.isEmpty() && serdes.levels.isEmpty())
    fail(fields.pathOf("watched"), QStringLiteral("nothing is watched."));
  fields.refuseOthers();
  return serdes;
}

bool MapReader::read(const QJsonValue& root, InsertPlan& plan, QString& error) {
  JsonFields fields(root, QString(), fault_);
  fields.word("format", {captureMapFormat()});
  version_ = fields.number("version", 1, kCaptureMapVersion);
  InsertPlan result;
  result.projectName = fields.text("project");
  result.topModule = fields.text("top");
  result.projectHash = fields.text("hash").toLatin1();
  jtag(fields, result);
  list(fields, "cores", kMaxPlanCores,
       [&](const QJsonValue& value, const QString& path) { result.cores.append(core(value, path)); });
  if (version_ >= 5 && fields.has("wishbone"))
    result.wishbone = wishbone(fields.value("wishbone"), result.wishboneNumber());
  if (version_ >= 5 && fields.has("serdes")) result.serdes = serdes(fields.value("serdes"), result.serdesNumber());
  fields.refuseOthers();
  if (fault_.none() && planHash(result, version_) != result.projectHash)
    fault_.text = QStringLiteral("hash: does not fit the contents; the file was edited or damaged.");
  if (!fault_.none()) {
    error = QStringLiteral("The capture map is not usable: %1").arg(fault_.text);
    return false;
  }
  plan = result;
  return true;
}

}  // namespace

bool readCaptureMap(const QByteArray& json, InsertPlan& plan, QString& error) {
  QJsonValue root;
  JsonTextFault fault;
  if (!parseJson(json, root, fault)) {
    error = QStringLiteral("The capture map is not usable: line %1: %2.").arg(fault.line).arg(fault.text);
    return false;
  }
  return MapReader().read(root, plan, error);
}

}  // namespace ost
