// Frames, what a run may change, and the words of the command line that change it.
#include "platform/reader/run_settings.h"

#include <gtest/gtest.h>

#include "platform/reader/capture_options.h"
#include "platform/reader/hub_frame.h"

namespace ost {
namespace {

PlanUnit unitOf(const char* name, UnitClass unitClass, Operator op, Radix radix, const char* text, int width,
                const char* value, const char* mask) {
  PlanUnit unit;
  unit.name = QString::fromLatin1(name);
  unit.unitClass = unitClass;
  unit.op = op;
  unit.radix = radix;
  unit.valueText = QString::fromLatin1(text);
  unit.width = width;
  unit.value = value;
  unit.mask = mask;
  return unit;
}

/// One core: 5 probe bits, a unit of each class, an expression in the chain and one in a memory.
InsertPlan planWith(int windows, int windowSamples) {
  InsertPlan plan;
  plan.projectHash = "0123456789abcdef";
  PlanCore core;
  core.name = QStringLiteral("c1");
  core.sampleClock.name = QStringLiteral("clk");
  for (int i = 0; i < 5; ++i) {
    NetBit bit;
    bit.name = QStringLiteral("n[%1]").arg(i);
    core.probeBits.append(bit);
    core.probes.append({bit.name, {i}});
  }
  core.windows = windows;
  core.windowSamples = windowSamples;
  core.depth = windows * windowSamples;
  core.eventCounter = true;
  core.eventCount = 5;
  core.units = {unitOf("M", UnitClass::Match, Operator::Equal, Radix::Bin, "1x0", 3, "001", "101"),
                unitOf("O", UnitClass::Order, Operator::Less, Radix::Dec, "6", 4, "0110", "1111"),
                unitOf("S", UnitClass::Serial, Operator::SerialCompare, Radix::Bin, "10x", 3, "001", "011")};
  core.expressions.resize(2);
  core.expressions[0].name = QStringLiteral("TE1");
  core.expressions[0].text = QStringLiteral("M -> O*3");
  core.expressions[0].maxSequenceDepth = 2;
  core.expressions[0].maxEventCount = 4;
  core.expressions[0].units = {0, 1};
  core.expressions[0].steps = {{"0101", 1}, {"0011", 3}};
  core.expressions[1].name = QStringLiteral("TE2");
  core.expressions[1].blockRam = true;
  core.expressions[1].units = {2};
  core.expressions[1].steps = {{"01", 1}};
  plan.cores = {core};
  return plan;
}

TEST(HubFrame, TheCheckValueMakesTheFrameGoodAndAnyFlipBad) {
  HubCommand command;
  command.op = HubOp::Config;
  command.tag = 0xA5;
  command.address = 0x12345;
  for (int length : {0, 1, 31, 100}) {
    QByteArray payload;
    for (int i = 0; i < length; ++i) payload += static_cast<char>((i * 5 / 3) & 1);
    QByteArray frame = writeFrame(command, payload);
    ASSERT_EQ(frame.size(), 73 + length);
    EXPECT_EQ(frameCrc(frame.mid(1)), 0xC704DD7Bu) << length;
    for (int i = 1; i < frame.size(); ++i) {
      frame[i] = !frame[i];
      EXPECT_NE(frameCrc(frame.mid(1)), 0xC704DD7Bu) << length << ' ' << i;
      frame[i] = !frame[i];
    }
  }
  // The register itself, by the published check value of this polynomial and start for "123456789" (high bits first).
  QByteArray digits;
  for (char c : QByteArray("123456789"))
    for (int i = 7; i >= 0; --i) digits += static_cast<char>(c >> i & 1);
  EXPECT_EQ(frameCrc(digits), 0x0376E6E7u);
}

/// What is refused changes nothing. (How settings are encoded is the simulation's matter: tests/sim.)
TEST(RunSettings, RefusesWhatTheHardwareHasNoRoomFor) {
  const InsertPlan plan = planWith(1, 16);
  QString error;
  RunSettings settings(plan.cores[0]);
  const QByteArray before = settings.chain();
  const struct {
    const char *option, *text, *names;
  } refused[] = {{"-op", "M=<", ".RE."},          {"-op", "O=.RE.", ">="},    {"-set", "M=12", "'M'"},
                 {"-op", "M=.RE.", "'1x0'"},      {"-set", "X=1", "M, O, S"}, {"-set", "O=16", "'O'"},
                 {"-set", "S=1010", "3 samples"}, {"-set", "M", "UNIT="},     {"-set", "M=", "'M'"}};
  for (const auto& one : refused) {
    CaptureOptions options;
    options.changes = {{QString::fromLatin1(one.option), QString::fromLatin1(one.text)}};
    EXPECT_FALSE(applyRunOptions(options, settings, error)) << one.text;
    EXPECT_TRUE(error.contains(QString::fromLatin1(one.names))) << one.text << ": " << error.toStdString();
  }
  for (const char* position : {"16", "101%", "-1", "x", ""}) {
    EXPECT_FALSE(settings.setPosition(QString::fromLatin1(position), error)) << position;
    EXPECT_TRUE(error.contains(QStringLiteral("0 to 15"))) << error.toStdString();
  }
  EXPECT_FALSE(settings.chooseExpressions(QStringLiteral("TE1,TE9"), error));
  EXPECT_TRUE(error.contains(QStringLiteral("TE1, TE2"))) << error.toStdString();
  EXPECT_FALSE(settings.setEventCount(6, error));
  EXPECT_FALSE(settings.setWindows(2, error));
  EXPECT_EQ(settings.chain(), before);
}

TEST(CaptureOptions, WordsAreCheckedAndApplied) {
  auto parse = [](const char* line, CaptureOptions& options, QString& error) {
    return parseCaptureOptions(QString::fromLatin1(line).split(QLatin1Char(' '), Qt::SkipEmptyParts), options, error);
  };
  CaptureOptions options;
  QString error;
  ASSERT_TRUE(parse("-map m -connect fifo:d -set M=111 -op M=!= -position 3 -te TE2 -count 2 -timeout 0.5 -ir 6:0x23",
                    options, error))
      << error.toStdString();
  EXPECT_EQ(options.instruction.width, 6);
  EXPECT_EQ(options.instruction.code, 0x23u);
  const InsertPlan plan = planWith(1, 16);
  RunSettings settings(plan.cores[0]);
  ASSERT_TRUE(applyRunOptions(options, settings, error)) << error.toStdString();
  EXPECT_EQ(settings.core().units[0].op, Operator::NotEqual);
  EXPECT_EQ(settings.core().units[0].value, "111");
  EXPECT_EQ(settings.position(), 3);
  EXPECT_FALSE(settings.isEnabled(0));
  const struct {
    const char* line;
    const char* names;
  } bad[] = {{"-map m", "-connect"},
             {"-connect fifo:d", "-map"},
             {"-map m -connect fifo:d -cor c", "'-cor'"},
             {"-map m -connect", "'-connect'"},
             {"-map m -connect fifo:d -count 0", "'-count'"},
             {"-map m -connect fifo:d -timeout x", "'-timeout'"},
             {"-map m -connect fifo:d -ir 4:16", "WIDTH:CODE"}};
  for (const auto& one : bad) {
    CaptureOptions fresh;
    EXPECT_FALSE(parse(one.line, fresh, error)) << one.line;
    EXPECT_TRUE(error.contains(QString::fromLatin1(one.names))) << error.toStdString();
  }
}

}  // namespace
}  // namespace ost
