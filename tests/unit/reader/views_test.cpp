// Decoded captures as VCD, waveform and comma-separated text.
#include <QRegularExpression>

#include "platform/reader/capture_search.h"
#include "platform/reader/capture_view.h"
#include "platform/reader/json_writer.h"
#include "platform/reader/text_views.h"
#include "platform/reader/vcd_writer.h"
#include "tests/unit/scratch.h"

namespace ost {
namespace {

NetBit bitOf(const QString& path, const QString& name) {
  return {path, QString(), 0, name};
}

/// A 3-bit counter in u_a/u_b, an enable at the top and a bus over both; timestamps step by 2, wrapping at 16.
Capture counterCapture(int windows, int samples, int trigger) {
  Capture capture;
  PlanCore& core = capture.core;
  core.name = "c1";
  for (const char* name : {"u_a/u_b/n[0]", "u_a/u_b/n[1]", "u_a/u_b/n[2]"}) core.probeBits << bitOf("u_a/u_b", name);
  core.probeBits << bitOf("", "en");
  core.probes = {{"u_a/u_b/n[2:0]", {2, 1, 0}}, {"en", {3}}, {"BUS1", {3, 0}}};
  core.units.resize(1);
  core.units[0].name = "TU1";
  core.includeTrigger = true;
  core.timestampBits = 4;
  capture.table = BitTable(core.sampleBits());
  for (int i = 0; i < windows * samples; ++i) {
    const int word = (i & 7) | (i % 2 == 0) << 3 | ((i & 7) == 5) << 4 | (2 * i & 15) << 5;
    QByteArray bits;
    for (int b = 0; b < 9; ++b) bits += char(word >> b & 1);
    capture.table.append(bits);
  }
  for (int w = 0; w < windows; ++w) capture.windows.append({w * samples, samples, trigger});
  return capture;
}

TEST(Capture, FieldsAcrossWordBoundariesAndTheirDigits) {
  const Capture capture = counterCapture(1, 200, 0);  // 9 bits a row: rows cross 64-bit words
  for (int row = 0; row < 200; ++row) {
    ASSERT_EQ(capture.table.field(row, 0, 3), quint64(row & 7)) << row;
    ASSERT_EQ(capture.timestamp(row), quint64(2 * row & 15)) << row;
    ASSERT_EQ(capture.unitState(row, 0), (row & 7) == 5) << row;
  }
  const struct {
    QByteArray bits;
    Radix radix;
    const char* digits;
  } table[] = {{"1011010", Radix::Oct, "132"}, {"1011010", Radix::Dec, "90"},
               {"1011010", Radix::Hex, "5a"},  {"10x1", Radix::Hex, "x"},
               {"0000", Radix::Dec, "0"},      {QByteArray(70, '1'), Radix::Dec, "1180591620717411303423"}};
  for (const auto& row : table) EXPECT_EQ(digitsOf(row.bits, row.radix), row.digits);
}

TEST(Vcd, ScopesMarkerAndTimeFromTimestamps) {
  Capture capture = counterCapture(1, 12, 5);
  capture.core.probes[0].names = {{"FIVE", "101"}, {"SIX", "011"}};
  const QString vcd = captureToVcd(capture, "top");
  EXPECT_TRUE(has(vcd,
                  "$scope module top $end\n$var wire 1 ! en $end\n$var wire 2 \" BUS1 [1:0] $end\n"
                  "$scope module u_a $end\n$scope module u_b $end\n$var wire 3 # n [2:0] $end\n"
                  "$var string 1 $ n_name $end\n"));
  EXPECT_TRUE(has(vcd, "$scope module ostrel $end\n$var wire 1 % trigger $end\n$var wire 1 & unit_TU1 $end\n"));
  // Samples are 2 apart; the wrap of the 4-bit stamp at sample 8 goes on as 16.
  EXPECT_TRUE(has(vcd, "\n#10\n0!\nb01 \"\nb101 #\nsFIVE $\n1%\n1&\n") && has(vcd, "\n#16\n"));
  EXPECT_TRUE(vcd.endsWith("\n#23\n") && vcd.count("\n1%\n") == 1 && has(vcd, "\nsSIX $\n")) << plain(vcd);
}

TEST(Vcd, WindowsAreKeptApart) {
  Capture capture = counterCapture(3, 4, 1);
  capture.core.timestampBits = 0;
  const QString vcd = captureToVcd(capture, "top");
  EXPECT_TRUE(has(vcd, "wire 16 % window [15:0] $end"));
  EXPECT_TRUE(vcd.count("bxxx ") == 2 && vcd.count("\n1$\n") == 3) << plain(vcd);
}

/// Each core's samples stand at its own timestamps.
TEST(Vcd, SeveralCoresShareAnAxis) {
  QVector<Capture> captures(2, counterCapture(1, 3, 1));
  captures[1].core.name = "c2";
  captures[1].windows[0].firstRow = 2;  // begins at the timestamp 4
  const QString vcd = capturesToVcd(captures, "top");
  EXPECT_TRUE(has(vcd, "$scope module c2 $end\n$var wire 1 ) trigger $end") && has(vcd, "n_2 [2:0]"));
  EXPECT_TRUE(has(vcd, "\n#4\n") && vcd.count("\n#") == 7) << plain(vcd);
  EXPECT_TRUE(has(vcd, "\n#5\nx!\n"));
}

TEST(Json, EachWindowOfEachSignalAndUnit) {
  Capture capture = counterCapture(2, 2, 1);
  capture.core.probes = {capture.core.probes[0]};
  capture.core.probes[0].names = {{"FIVE", "101"}};
  EXPECT_EQ(capturesToJson({"t\"op", "p", "0f", {capture}}),
            R"({"version":1,"top":"t\"op","project":"p","hash":"0f","cores":[{"name":"c1","sampleClock":"",)"
            R"("windows":[{"samples":2,"trigger":1},{"samples":2,"trigger":1}],"timestampBits":4,)"
            R"("timestamps":[[0,2],[4,6]],"signals":[{"name":"u_a/u_b/n[2:0]","width":3,"names":{"FIVE":5},)"
            R"("values":[[0,1],[2,3]]}],"units":[{"name":"TU1","states":[[0,0],[0,0]]}]}]})"
            "\n");
}

TEST(Search, StepsCountsAndRestarts) {
  Capture capture = counterCapture(1, 24, 8);  // n counts modulo 8, the trigger at sample 8
  capture.core.windowSamples = 24;
  capture.core.triggerBits = capture.core.probeBits.mid(0, 3) << bitOf("", "other");
  capture.core.triggerBits[3].net = "other";
  for (const int i : {0, 1, 2}) capture.core.probeBits[i].bit = capture.core.triggerBits[i].bit = i;
  PlanUnit odd, high, hidden;
  odd.name = "odd", odd.inputs = {0}, odd.value = odd.mask = "1";
  high.name = "high", high.op = Operator::Greater, high.width = 3, high.inputs = {0, 1, 2}, high.value = "101";
  hidden = odd, hidden.name = "hidden", hidden.inputs = {3};
  const struct {
    const char* expression;
    SearchRange range;
    QVector<int> samples;  ///< Empty: refused.
  } table[] = {
      {"high", {0, -8, 15}, {-2, -1, 6, 7, 14, 15}}, {"odd*3", {0, 0, 15}, {5, 11}}, {"high->odd", {0, 0, 15}, {7, 15}},
      {"high->high->!high", {0, 0, 15}, {8}},        {"hidden", {0, 0, 15}, {}},     {"odd &", {0, 0, 15}, {}}};
  for (const auto& row : table) {
    QVector<int> samples;
    QString error;
    capture.core.units = {odd, high, hidden};
    capture.core.includeTrigger = false;
    EXPECT_EQ(findSamples(capture, capture.core.units, row.expression, row.range, samples, error),
              !row.samples.isEmpty());
    EXPECT_EQ(samples, row.samples) << row.expression << ": " << plain(error);
  }
}

TEST(View, APartOfTheSignalsAndOfEachWindow) {
  ViewChoice view;
  view.signalGlobs = QStringList{"u_?/*n[*", "none"};
  view.hasRange = true;
  view.from = -1;
  view.to = 20;
  const PlanCore core = counterCapture(1, 8, 3).core;
  QString error;
  EXPECT_TRUE(checkView(core, core.windowSamples / 2, view, error)) << plain(error);
  const QList<QByteArray> lines = captureToCsv(viewOf(counterCapture(2, 8, 3), view)).split('\n');
  EXPECT_TRUE(lines.size() == 14 && lines[0] == "window,sample,timestamp,u_a/u_b/n[2:0],TU1") << lines[0].constData();
  EXPECT_EQ(lines[7], "1,-1,4,010,0");
  view.signalGlobs = QStringList("u_a");
  EXPECT_FALSE(checkView(core, core.windowSamples / 2, view, error));
  EXPECT_TRUE(has(error, "no signal like \"u_a\""));
}

TEST(Vcd, NamesAreLegalAndDifferent) {
  Capture capture;
  for (const char* name : {"a b", "a_b", "a$end", "u/x", "9", "g[1].q", "v[3]", "v[2]", "\xc3\xa9", "v[3]"}) {
    capture.core.probes.append(PlanProbe{name, {capture.core.probeBits.size()}});
    capture.core.probeBits.append(bitOf("", name));
  }
  capture.table = BitTable(capture.core.probeWidth());
  capture.table.append(QByteArray(capture.core.probeWidth(), 1));
  capture.windows.append({0, 1, 0});
  const QString vcd = captureToVcd(capture, "2nd top");
  const QRegularExpression variable("\\$var wire 1 \\S+ ([A-Za-z_][A-Za-z0-9_]*( \\[\\d+\\])?) \\$end\n");
  QStringList seen;
  for (auto match = variable.globalMatch(vcd); match.hasNext();) seen += match.next().captured(1);
  EXPECT_EQ(vcd.count("$var "), seen.size()) << plain(vcd);
  EXPECT_EQ(seen.removeDuplicates(), 0) << plain(vcd);
  EXPECT_TRUE(has(vcd, "$scope module _2nd_top $end"));
}

TEST(Wave, MarksTheTriggerWithinAHundredColumns) {
  Capture capture = counterCapture(2, 64, 20);
  capture.core.displayRadix = Radix::Hex;
  capture.core.probes[1].name = QString(80, 'e') + "_end";
  const QList<QByteArray> lines = captureToWave(capture).split('\n');
  for (const QByteArray& line : lines) EXPECT_LE(line.size(), 100) << line.constData();
  EXPECT_EQ(lines[0], "window 1 of 2");
  const int mark = lines[2].indexOf('T');
  EXPECT_EQ(lines[1].indexOf("0", mark), mark);
  EXPECT_TRUE(lines[3].startsWith("u_a/u_b/n[2:0]") && lines[4].contains("eee_end")) << lines[4].constData();
  EXPECT_EQ(lines[3].mid(mark, 2), "|4");  // sample 20 counts 20 & 7
  EXPECT_EQ(lines[4].mid(mark, 4), "~~__");
}

TEST(Csv, OneLineASample) {
  Capture capture = counterCapture(2, 8, 3);
  capture.core.probes[0].names = {{"FIVE, odd", "101"}};
  const QList<QByteArray> lines = captureToCsv(capture).split('\n');
  EXPECT_EQ(lines[0], "window,sample,timestamp,u_a/u_b/n[2:0],en,BUS1,TU1");
  EXPECT_EQ(lines[14], "1,2,10,\"FIVE, odd\",0,01,1");
}

}  // namespace
}  // namespace ost
