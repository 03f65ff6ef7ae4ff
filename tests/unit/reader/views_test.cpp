// Decoded captures as VCD, waveform and comma-separated text.
#include <gtest/gtest.h>

#include <QRegularExpression>

#include "platform/reader/capture.h"
#include "platform/reader/text_views.h"
#include "platform/reader/vcd_writer.h"

namespace ost {
namespace {

NetBit bitOf(const char* path, const char* name) {
  NetBit bit;
  bit.instancePath = QString::fromLatin1(path);
  bit.name = QString::fromLatin1(name);
  return bit;
}

PlanProbe probeOf(const char* name, QVector<int> positions) {
  return {QString::fromLatin1(name), positions};
}

/// A 3-bit counter in u_a/u_b, an enable at the top and a bus over both; timestamps step by 2, wrapping at 16.
Capture counterCapture(int windows, int samples, int trigger) {
  Capture capture;
  PlanCore& core = capture.core;
  core.name = QStringLiteral("c1");
  core.probeBits = {bitOf("u_a/u_b", "u_a/u_b/n[0]"), bitOf("u_a/u_b", "u_a/u_b/n[1]"),
                    bitOf("u_a/u_b", "u_a/u_b/n[2]"), bitOf("", "en")};
  core.probes = {probeOf("u_a/u_b/n[2:0]", {2, 1, 0}), probeOf("en", {3}), probeOf("BUS1", {3, 0})};
  core.units.resize(1);
  core.units[0].name = QStringLiteral("TU1");
  core.includeTrigger = true;
  core.timestampBits = 4;
  capture.table = BitTable(core.sampleBits());
  for (int i = 0; i < windows * samples; ++i) {
    const int count = i & 7, stamp = (2 * i) & 15;
    QByteArray bits;
    for (int b = 0; b < 3; ++b) bits += static_cast<char>(count >> b & 1);
    bits += static_cast<char>(i % 2 == 0);
    bits += static_cast<char>(count == 5);
    for (int b = 0; b < 4; ++b) bits += static_cast<char>(stamp >> b & 1);
    capture.table.append(bits.constData());
  }
  for (int w = 0; w < windows; ++w) capture.windows.append({w * samples, samples, trigger});
  return capture;
}

TEST(Capture, FieldsAcrossWordBoundaries) {
  const Capture capture = counterCapture(1, 200, 0);  // 9 bits a row: rows cross 64-bit words
  for (int row = 0; row < 200; ++row) {
    ASSERT_EQ(capture.table.field(row, 0, 3), quint64(row & 7)) << row;
    ASSERT_EQ(capture.timestamp(row), quint64(2 * row & 15)) << row;
    ASSERT_EQ(capture.unitState(row, 0), (row & 7) == 5) << row;
  }
  EXPECT_EQ(capture.probeBits(4, capture.core.probes[0]), "100");
  EXPECT_EQ(capture.probeBits(3, capture.core.probes[2]), "01");
}

TEST(Digits, EveryRadixAndOddWidths) {
  EXPECT_EQ(digitsOf("1011010", Radix::Bin), "1011010");
  EXPECT_EQ(digitsOf("1011010", Radix::Oct), "132");
  EXPECT_EQ(digitsOf("1011010", Radix::Dec), "90");
  EXPECT_EQ(digitsOf("1011010", Radix::Hex), "5a");
  EXPECT_EQ(digitsOf("10x1", Radix::Hex), "x");
  EXPECT_EQ(digitsOf("0000", Radix::Dec), "0");
  EXPECT_EQ(digitsOf(QByteArray(70, '1'), Radix::Dec), "1180591620717411303423");
}

TEST(Vcd, ScopesMarkerAndTimeFromTimestamps) {
  const QByteArray vcd = captureToVcd(counterCapture(1, 12, 5), QStringLiteral("top"));
  const int top = vcd.indexOf("$scope module top $end"), a = vcd.indexOf("$scope module u_a $end"),
            b = vcd.indexOf("$scope module u_b $end"), own = vcd.indexOf("$scope module ostrel $end");
  ASSERT_TRUE(0 < top && top < a && a < b && b < own) << vcd.constData();
  EXPECT_TRUE(vcd.contains("$var wire 3 # n [2:0] $end")) << vcd.constData();
  EXPECT_TRUE(vcd.contains("$var wire 1 ! en $end"));
  EXPECT_TRUE(vcd.contains("$var wire 2 \" BUS1 [1:0] $end"));
  EXPECT_TRUE(vcd.contains("$var wire 1 $ trigger $end"));
  EXPECT_TRUE(vcd.contains("$var wire 1 % unit_TU1 $end"));
  // Samples are 2 apart; the wrap of the 4-bit stamp at sample 8 goes on as 16.
  EXPECT_TRUE(vcd.contains("\n#10\n0!\nb01 \"\nb101 #\n1$\n1%\n")) << vcd.constData();
  EXPECT_TRUE(vcd.contains("\n#16\n"));
  EXPECT_TRUE(vcd.endsWith("\n#23\n"));
  EXPECT_EQ(vcd.count("\n1$\n"), 1);
}

TEST(Vcd, WindowsAreKeptApart) {
  Capture capture = counterCapture(3, 4, 1);
  capture.core.timestampBits = 0;
  capture.core.includeTrigger = false;
  const QByteArray vcd = captureToVcd(capture, QStringLiteral("top"));
  EXPECT_EQ(vcd.count("bxxx "), 2);
  EXPECT_TRUE(vcd.contains("wire 16 % window [15:0] $end")) << vcd.constData();
  EXPECT_EQ(vcd.count("\n1$\n"), 3);
}

TEST(Vcd, NamesAreLegalAndDifferent) {
  Capture capture;
  capture.core.name = QStringLiteral("c");
  const char* names[] = {"a b", "a_b", "a$end", "u/x", "9", "g[1].q", "v[3]", "v[2]", "\xc3\xa9", "v[3]"};
  for (const char* name : names) {
    capture.core.probes.append(probeOf(name, {capture.core.probeBits.size()}));
    capture.core.probeBits.append(bitOf("", name));
  }
  capture.table = BitTable(capture.core.probeWidth());
  capture.table.append(QByteArray(capture.core.probeWidth(), 1).constData());
  capture.windows.append({0, 1, 0});
  const QString vcd = QString::fromLatin1(captureToVcd(capture, QStringLiteral("2nd top")));
  QRegularExpression variable(QStringLiteral("\\$var wire 1 (\\S+) ([A-Za-z_][A-Za-z0-9_]*)( \\[\\d+\\])? \\$end\n"));
  QStringList seen;
  for (auto match = variable.globalMatch(vcd); match.hasNext();) {
    const auto found = match.next();
    seen += found.captured(2) + found.captured(3);
  }
  EXPECT_EQ(vcd.count(QStringLiteral("$var ")), seen.size()) << vcd.toStdString();
  EXPECT_EQ(seen.removeDuplicates(), 0) << seen.join(QLatin1Char(' ')).toStdString();
  EXPECT_TRUE(vcd.contains(QStringLiteral("$scope module _2nd_top $end")));
}

TEST(Wave, MarksTheTriggerWithinAHundredColumns) {
  Capture capture = counterCapture(2, 64, 20);
  capture.core.displayRadix = Radix::Hex;
  capture.core.probes[1].name = QString(80, QLatin1Char('e')) + QStringLiteral("_end");
  const QByteArray wave = captureToWave(capture);
  for (const QByteArray& line : wave.split('\n')) EXPECT_LE(line.size(), 100) << line.constData();
  const QList<QByteArray> lines = wave.split('\n');
  ASSERT_EQ(lines[0], "window 1 of 2");
  const int mark = lines[2].indexOf('T');
  ASSERT_GT(mark, 0);
  EXPECT_EQ(lines[1].indexOf("0", mark), mark);
  EXPECT_TRUE(lines[3].startsWith("u_a/u_b/n[2:0]")) << lines[3].constData();
  EXPECT_EQ(lines[3].mid(mark, 2), "|4");  // sample 20 counts 20 & 7
  EXPECT_TRUE(lines[4].contains("eee_end")) << lines[4].constData();
  EXPECT_EQ(lines[4].mid(mark, 4), "~~__");
}

TEST(Csv, OneLineASample) {
  const QList<QByteArray> lines = captureToCsv(counterCapture(2, 8, 3)).split('\n');
  ASSERT_EQ(lines.size(), 18);
  EXPECT_EQ(lines[0], "window,sample,timestamp,u_a/u_b/n[2:0],en,BUS1,TU1");
  EXPECT_EQ(lines[1], "0,-3,0,000,1,10,0");
  EXPECT_EQ(lines[6], "0,2,10,101,0,01,1");
  EXPECT_EQ(lines[9], "1,-3,0,000,1,10,0");
}

}  // namespace
}  // namespace ost
