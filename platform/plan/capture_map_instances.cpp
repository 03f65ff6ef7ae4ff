// Bits are numbers or the words of replayBitWords(). Names are to become Verilog's escaped identifiers, so they hold
// what can stand in one.
#include "platform/plan/capture_map_instances.h"

#include <QJsonArray>
#include <algorithm>

#include "platform/plan/insert_plan.h"
#include "platform/text/byte_text.h"

namespace ost {
namespace {

constexpr int kMaxMemoryWords = 1 << 30;

void writeBits(JsonLines& out, const QVector<int>& bits) {
  static const QStringList words = replayBitWords();
  out.key("bits");
  out.line([&] {
    for (const int bit : bits)
      if (bit < 0)
        out.bytes(words[-bit - 1].toLatin1());
      else
        out.integer(bit);
  });
}

void writeState(JsonLines& out, const ReplayState& state) {
  out.begin();
  out.texts("scopes", state.scopes);
  out.text("name", state.name);
  if (state.bits.isEmpty())
    out.numbers("words", {state.first, state.last});
  else
    writeBits(out, state.bits);
  out.end();
}

class InstanceReader {
 public:
  InstanceReader(int probeBits, int& entries, JsonFault& fault)
      : probeBits_(probeBits), entries_(entries), fault_(fault) {}

  ProbedInstance read(const QJsonValue& value, const QString& path);

 private:
  void fail(const QString& path, const QString& what) {
    if (fault_.none()) fault_.text = path + QStringLiteral(": ") + what;
  }
  /// Calls `each(value, path)` for the elements of a list, until the first fault.
  template <typename Each>
  void list(JsonFields& fields, const char* key, const Each& each) {
    const QJsonArray values = fields.list(key);
    entries_ += qMin(values.size(), kMaxPlanIndexes);
    if (entries_ > kMaxPlanIndexes)
      return fail(fields.pathOf(key), QStringLiteral("the map has more than %1 such entries.").arg(kMaxPlanIndexes));
    for (int i = 0; i < values.size() && fault_.none(); ++i)
      each(values[i], QStringLiteral("%1[%2]").arg(fields.pathOf(key)).arg(i));
  }
  QString name(const QString& text, const QString& path) {
    const auto isGraphic = [](QChar c) { return c > QLatin1Char(' ') && c <= QLatin1Char('~'); };
    if (text.isEmpty() || !std::all_of(text.begin(), text.end(), isGraphic))
      fail(path, QStringLiteral("is no name of Verilog."));
    return text;
  }
  QString name(JsonFields& fields, const char* key) { return name(fields.text(key), fields.pathOf(key)); }
  QVector<int> bits(JsonFields& fields) {
    static const QStringList words = replayBitWords();
    QVector<int> bits;
    list(fields, "bits", [&](const QJsonValue& value, const QString& path) {
      const int bit = value.isString() ? -1 - words.indexOf(value.toString()) : value.toInt(probeBits_);
      if (bit >= probeBits_ || (value.isString() ? bit == 0 : bit < 0))
        fail(path, QStringLiteral("expected a number below %1, or one of %2.")
                       .arg(probeBits_)
                       .arg(words.join(QLatin1String(", "))));
      bits.append(bit);
    });
    if (bits.isEmpty()) fail(fields.pathOf("bits"), QStringLiteral("is empty."));
    return bits;
  }
  ReplayState state(const QJsonValue& value, const QString& path);

  const int probeBits_;
  int& entries_;
  JsonFault& fault_;
};

ReplayState InstanceReader::state(const QJsonValue& value, const QString& path) {
  JsonFields fields(value, path, fault_);
  ReplayState state;
  list(fields, "scopes", [&](const QJsonValue& scope, const QString& place) {
    state.scopes += name(textFromUnicode(scope.toString()), place);
  });
  state.name = name(fields, "name");
  if (fields.has("words")) {
    QVector<int> words;
    list(fields, "words", [&](const QJsonValue& word, const QString&) { words += word.toInt(-1); });
    const bool fits = words.size() == 2 && words[0] >= 0 && words[0] <= words[1] && words[1] < kMaxMemoryWords;
    if (!fits) fail(fields.pathOf("words"), QStringLiteral("expected the first and the last word."));
    state.first = words.value(0);
    state.last = words.value(1);
  } else {
    state.bits = bits(fields);
  }
  fields.refuseOthers();
  return state;
}

ProbedInstance InstanceReader::read(const QJsonValue& value, const QString& path) {
  JsonFields fields(value, path, fault_);
  ProbedInstance instance;
  instance.path = fields.text("path");
  instance.module = name(fields, "module");
  list(fields, "parameters", [&](const QJsonValue& entry, const QString& place) {
    JsonFields inner(entry, place, fault_);
    ReplayParameter parameter;
    parameter.name = name(inner, "name");
    parameter.isText = inner.has("text");
    parameter.value = inner.text(parameter.isText ? "text" : "digits").toLatin1();
    const auto isDigit = [](char c) { return QByteArray("01xz").contains(c); };
    const QByteArray& digits = parameter.value;
    if (!parameter.isText && (digits.isEmpty() || !std::all_of(digits.begin(), digits.end(), isDigit)))
      fail(inner.pathOf("digits"), QStringLiteral("expected binary digits."));
    inner.refuseOthers();
    instance.parameters.append(parameter);
  });
  list(fields, "ports", [&](const QJsonValue& entry, const QString& place) {
    JsonFields inner(entry, place, fault_);
    ReplayPort port;
    port.name = name(inner, "name");
    port.isOutput = inner.flag("output");
    port.bits = bits(inner);
    inner.refuseOthers();
    instance.ports.append(port);
  });
  list(fields, "state",
       [&](const QJsonValue& entry, const QString& place) { instance.state.append(state(entry, place)); });
  instance.registerBits = fields.number("registerBits", 0, INT_MAX);
  instance.knownBits = fields.number("knownBits", 0, instance.registerBits);
  fields.refuseOthers();
  return instance;
}

}  // namespace

void writeInstance(JsonLines& out, const ProbedInstance& instance) {
  out.begin();
  out.text("path", instance.path);
  out.text("module", instance.module);
  out.list("parameters", instance.parameters, [&](const ReplayParameter& parameter) {
    out.begin();
    out.text("name", parameter.name);
    out.key(parameter.isText ? "text" : "digits");
    out.bytes(parameter.value);
    out.end();
  });
  out.list("ports", instance.ports, [&](const ReplayPort& port) {
    out.begin();
    out.text("name", port.name);
    out.flag("output", port.isOutput);
    writeBits(out, port.bits);
    out.end();
  });
  out.list("state", instance.state, [&](const ReplayState& state) { writeState(out, state); });
  out.number("registerBits", instance.registerBits);
  out.number("knownBits", instance.knownBits);
  out.end();
}

ProbedInstance readInstance(const QJsonValue& value, const QString& path, int probeBits, int& entries,
                            JsonFault& fault) {
  return InstanceReader(probeBits, entries, fault).read(value, path);
}

}  // namespace ost
