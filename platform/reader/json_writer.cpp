// Numbers are written as digits, so that any width fits.
#include "platform/reader/json_writer.h"

#include <rapidjson/writer.h>

#include <algorithm>

#include "platform/text/json_memory.h"

namespace ost {
namespace {

/// What RapidJSON writes to.
struct Bytes {
  using Ch = char;
  void Put(char c) { text += c; }
  void Flush() {}
  QByteArray text;
};

class CaptureJson {
 public:
  explicit CaptureJson(const VcdStyle& style) : style_(style) {}
  QByteArray write(const CaptureSet& set);

 private:
  void text(const char* key, const QByteArray& bytes) {
    writer_.Key(key);
    writer_.String(bytes.constData(), rapidjson::SizeType(bytes.size()));
  }
  void number(const char* key, int value) {
    writer_.Key(key);
    writer_.Int(value);
  }
  void digits(const QByteArray& decimal) {
    writer_.RawValue(decimal.constData(), size_t(decimal.size()), rapidjson::kNumberType);
  }
  /// A list under `key`, of what `write` writes for each entry.
  template <typename List, typename Write>
  void list(const char* key, const List& entries, Write write) {
    writer_.Key(key);
    writer_.StartArray();
    for (const auto& entry : entries) write(entry);
    writer_.EndArray();
  }
  /// For each window the list of what `write` writes for each row of it.
  template <typename Write>
  void rows(const Capture& capture, const char* key, Write write) {
    list(key, capture.windows, [&](const CaptureWindow& window) {
      writer_.StartArray();
      for (int i = 0; i < window.samples; ++i) write(window.firstRow + i);
      writer_.EndArray();
    });
  }
  void signal(const Capture& capture, const PlanProbe& probe);
  void core(const Capture& capture);

  const VcdStyle& style_;
  Bytes bytes_;
  rapidjson::Writer<Bytes, rapidjson::UTF8<>, rapidjson::UTF8<>, JsonAllocator> writer_{bytes_};
};

void CaptureJson::signal(const Capture& capture, const PlanProbe& probe) {
  writer_.StartObject();
  text("name", probe.name.toLatin1());
  number("width", probe.positions.size());
  if (!probe.names.isEmpty()) {
    writer_.Key("names");
    writer_.StartObject();
    for (const EnumName& value : probe.names) {
      QByteArray bits = value.bits;
      std::reverse(bits.begin(), bits.end());
      writer_.Key(value.name.toLatin1().constData());
      digits(digitsOf(bits, Radix::Dec));
    }
    writer_.EndObject();
  }
  rows(capture, "values", [&](int row) { digits(digitsOf(capture.probeBits(row, probe), Radix::Dec)); });
  writer_.EndObject();
}

void CaptureJson::core(const Capture& capture) {
  const PlanCore& plan = capture.core;
  writer_.StartObject();
  text("name", plan.name.toLatin1());
  text("sampleClock", plan.sampleClock.name.toLatin1());
  const ClockPeriod period = style_.periodOf(capture);
  if (period.isKnown()) {
    writer_.Key("periodFemtoseconds");
    writer_.Int64(period.femtoseconds);
  }
  list("windows", capture.windows, [&](const CaptureWindow& window) {
    writer_.StartObject();
    number("samples", window.samples);
    number("trigger", window.trigger);
    writer_.EndObject();
  });
  if (plan.timestampBits) {
    number("timestampBits", plan.timestampBits);
    rows(capture, "timestamps", [&](int row) { writer_.Uint64(capture.timestamp(row)); });
  }
  list("signals", plan.probes, [&](const PlanProbe& probe) { signal(capture, probe); });
  if (plan.includeTrigger) {
    int unit = 0;
    list("units", plan.units, [&](const PlanUnit& one) {
      writer_.StartObject();
      text("name", one.name.toLatin1());
      rows(capture, "states", [&](int row) { writer_.Int(capture.unitState(row, unit)); });
      writer_.EndObject();
      ++unit;
    });
  }
  writer_.EndObject();
}

QByteArray CaptureJson::write(const CaptureSet& set) {
  writer_.StartObject();
  number("version", kCaptureJsonVersion);
  text("top", set.topModule.toLatin1());
  text("project", set.projectName.toLatin1());
  text("hash", set.projectHash);
  list("cores", set.cores, [&](const Capture& capture) { core(capture); });
  writer_.EndObject();
  return bytes_.text + '\n';
}

}  // namespace

QByteArray capturesToJson(const CaptureSet& set, const VcdStyle& style) {
  return CaptureJson(style).write(set);
}

}  // namespace ost
