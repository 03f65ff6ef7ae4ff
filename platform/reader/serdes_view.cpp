// The tables have the widths of their contents; a rate shows as many digits as are certain.
#include "platform/reader/serdes_view.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <QStringList>
#include <cmath>

namespace ost {
namespace {

constexpr int kSerdesJsonVersion = 1;

/// Lines of cells, the columns two blanks apart.
QByteArray table(const QVector<QStringList>& lines) {
  QVector<int> widths(lines[0].size());
  for (const QStringList& line : lines)
    for (int i = 0; i < line.size(); ++i) widths[i] = qMax(widths[i], line[i].size());
  QByteArray text;
  for (const QStringList& line : lines) {
    QString row;
    for (int i = 0; i < line.size(); ++i) row += line[i].leftJustified(widths[i] + 2);
    while (row.endsWith(QLatin1Char(' '))) row.chop(1);
    text += row.toLatin1() + '\n';
  }
  return text;
}

/// "1.2500 +-0.0010": the error with one digit or two.
QString withError(double value, double error) {
  const int decimals = qBound(0, int(std::ceil(-std::log10(error))) + 1, 9);
  return QStringLiteral("%1 +-%2").arg(value, 0, 'f', decimals).arg(error, 0, 'f', decimals);
}

class ClockTable {
 public:
  ClockTable(const SerdesLook& look, const ClockPeriod& period) : look_(look), period_(period) {
    lines_ = {{QStringLiteral("clock"), QStringLiteral("per sample clock"), QStringLiteral("per TCK")}};
    if (period.isKnown()) lines_[0].append(QStringLiteral("MHz"));
  }

  void add(const QString& name, const SerdesCount& clock) {
    const double rate = look_.rate(clock), error = look_.rateError();
    QStringList line(name);
    if (clock.count == 0)
      line += QStringLiteral("stopped, or below %1").arg(error, 0, 'g', 2);
    else
      line += withError(rate, error);
    if (clock.count == 0 || look_.tck.count == 0) {
      line += QStringLiteral("-");
    } else {
      const double perTck = double(clock.count) / look_.tck.count;
      line += withError(perTck, perTck * (1.0 / clock.count + 1.0 / look_.tck.count));
    }
    const double megahertz = period_.isKnown() ? period_.hertz() / 1e6 : 0;
    if (period_.isKnown())
      line += clock.count == 0 ? QStringLiteral("-") : withError(rate * megahertz, error * megahertz);
    lines_.append(line);
  }

  QByteArray text() const { return table(lines_); }

 private:
  const SerdesLook& look_;
  const ClockPeriod& period_;
  QVector<QStringList> lines_;
};

QString countText(const SerdesCount& count) {
  return QString::number(count.count) + QLatin1String(count.isFull ? " or more" : "");
}

class SerdesJson {
 public:
  QByteArray write(const InsertPlan& plan, const SerdesLook& look, const ClockPeriod& period);

 private:
  void text(const char* key, const QString& value) {
    const QByteArray bytes = value.toLatin1();
    writer_.Key(key);
    writer_.String(bytes.constData(), rapidjson::SizeType(bytes.size()));
  }
  void flag(const char* key, bool value) {
    writer_.Key(key);
    writer_.Bool(value);
  }
  void number(const char* key, double value) {
    writer_.Key(key);
    if (value == std::floor(value))
      writer_.Int64(qint64(value));
    else
      writer_.Double(value);
  }
  void clock(const SerdesLook& look, const SerdesCount& count, const ClockPeriod& period) {
    number("cycles", double(count.count) * kSerdesDivider);
    number("rate", look.rate(count));
    number("rateError", look.rateError());
    if (period.isKnown()) number("hertz", look.rate(count) * period.hertz());
  }

  rapidjson::StringBuffer buffer_;
  rapidjson::Writer<rapidjson::StringBuffer> writer_{buffer_};
};

QByteArray SerdesJson::write(const InsertPlan& plan, const SerdesLook& look, const ClockPeriod& period) {
  const PlanSerdes& serdes = *plan.serdes;
  writer_.StartObject();
  number("version", kSerdesJsonVersion);
  text("top", plan.topModule);
  text("project", plan.projectName);
  text("hash", QString::fromLatin1(plan.projectHash));
  text("sampleClock", serdes.clock.name);
  if (serdes.hasReset) text("reset", serdes.reset.name);
  flag("inReset", look.inReset);
  number("sampleClocks", double(look.sampleClocks));
  writer_.Key("tck");
  writer_.StartObject();
  clock(look, look.tck, period);
  writer_.EndObject();
  writer_.Key("clocks");
  writer_.StartArray();
  for (int i = 0; i < serdes.clocks.size(); ++i) {
    writer_.StartObject();
    text("name", serdes.clocks[i].net.name);
    clock(look, look.clocks[i], period);
    writer_.EndObject();
  }
  writer_.EndArray();
  writer_.Key("levels");
  writer_.StartArray();
  for (int i = 0; i < serdes.levels.size(); ++i) {
    const SerdesLevel& level = look.levels[i];
    writer_.StartObject();
    text("name", serdes.levels[i].net.name);
    text("word", serdes.levels[i].word);
    number("level", level.level);
    flag("changed", level.changed);
    number("rises", level.rises.count);
    flag("full", level.rises.isFull);
    writer_.EndObject();
  }
  writer_.EndArray();
  writer_.EndObject();
  return QByteArray(buffer_.GetString(), int(buffer_.GetSize())) + '\n';
}

}  // namespace

QByteArray serdesToText(const PlanSerdes& plan, const SerdesLook& look, const ClockPeriod& period) {
  QString reset = QStringLiteral("no reset");
  if (plan.hasReset && look.inReset)
    reset = QStringLiteral("in reset (%1 = 1): changes and rises are held at 0").arg(plan.reset.name);
  else if (plan.hasReset)
    reset = QStringLiteral("reset %1 inactive").arg(plan.reset.name);
  QByteArray text = QStringLiteral("serdes core: sample clock %1, %2\n").arg(plan.clock.name, reset).toLatin1();
  if (!plan.levels.isEmpty()) {
    QVector<QStringList> lines = {{QStringLiteral("signal"), QStringLiteral("watched as"), QStringLiteral("level"),
                                   QStringLiteral("changed"), QStringLiteral("rises")}};
    for (int i = 0; i < plan.levels.size(); ++i) {
      const SerdesLevel& level = look.levels[i];
      lines.append({plan.levels[i].net.name, plan.levels[i].word, QString::number(level.level),
                    level.changed ? QStringLiteral("yes") : QStringLiteral("no"), countText(level.rises)});
    }
    text += table(lines);
  }
  ClockTable clocks(look, period);
  for (int i = 0; i < plan.clocks.size(); ++i) clocks.add(plan.clocks[i].net.name, look.clocks[i]);
  clocks.add(QStringLiteral("TCK"), look.tck);
  return text + clocks.text();
}

QByteArray serdesToJson(const InsertPlan& plan, const SerdesLook& look, const ClockPeriod& period) {
  return SerdesJson().write(plan, look, period);
}

}  // namespace ost
