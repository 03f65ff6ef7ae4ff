// What a run may change, and the words of the command line that change it. (How settings are encoded, and frames, are
// the simulation's matter: tests/sim.)
#include "platform/reader/run_settings.h"

#include "bench/core_plans/plan_text.h"
#include "platform/reader/run_options.h"
#include "tests/unit/scratch.h"

namespace ost {
namespace {

/// One core with a unit of each class.
PlanCore oneCore() {
  PlanCore core =
      planFromText("probes=5 depth=16 event=5 unit=match:0:3 unit=order:0:4 unit=serial:2:3 expr=0+1 expr=2").cores[0];
  core.units[0].valueText = "1x0";
  core.units[1].op = Operator::Less;
  core.units[1].radix = Radix::Dec;
  core.units[1].valueText = "6";
  return core;
}

bool parse(const QString& line, CaptureOptions& options, QString& error) {
  return parseCaptureOptions(line.split(' ', Qt::SkipEmptyParts), options, error);
}

TEST(CaptureOptions, ThatFitAreApplied) {
  CaptureOptions options;
  QString error;
  ASSERT_TRUE(
      parse("-map m -connect fifo:d -set TU1=111 -op TU1=!= -position 3 -te TE2 -count 2 -ir 6:0x23", options, error))
      << plain(error);
  EXPECT_EQ(options.instruction.width, 6);
  EXPECT_EQ(options.instruction.code, 0x23u);
  RunSettings settings(oneCore());
  ASSERT_TRUE(applyRunOptions(options, settings, error)) << plain(error);
  EXPECT_EQ(settings.core().units[0].op, Operator::NotEqual);
  EXPECT_EQ(settings.core().units[0].value, "111");
  EXPECT_EQ(settings.position(), 3);
  EXPECT_FALSE(settings.isEnabled(0));
  // Of the units 0 and 1 in the hardware's order.
  ASSERT_TRUE(settings.setExpression("TE1", "!TU2 & TU1", error)) << plain(error);
  EXPECT_EQ(settings.table(0).left(4), QByteArray("\0\1\0\0", 4));
  ASSERT_TRUE(settings.triggerNow(error)) << plain(error);
  EXPECT_TRUE(settings.table(0) == QByteArray(4, 1) && settings.isEnabled(0) && settings.eventCount() == 1);
}

TEST(CaptureOptions, ThatDoNotFitAreNamedAndChangeNothing) {
  const struct {
    const char *words, *text;
    bool complete;  // all words are given, "-map m -connect fifo:d" not
  } table[] = {
      {"-map m", "-connect", true},
      {"-connect fifo:d", "-map", true},
      {"-cor c", "\"-cor\"", false},
      {"-csv", "The value of \"-csv\" is missing", false},
      {"-count 0", "\"-count\"", false},
      {"-timeout x", "\"-timeout\"", false},
      {"-ir 4:16", "WIDTH:CODE", false},
      {"-op TU1=<", ".RE.", false},
      {"-op TU2=.RE.", ">=", false},
      {"-op TU1=.RE.", "\"1x0\"", false},
      {"-set TU1=12", "\"TU1\"", false},
      {"-set TU2=16", "\"TU2\"", false},
      {"-set TU3=1010", "3 samples", false},
      {"-set X=1", "TU1, TU2, TU3", false},
      {"-set TU1", "UNIT=", false},
      {"-set TU1=", "\"TU1\"", false},
      {"-position 16", "0 to 15", false},
      {"-position 101%", "0 to 15", false},
      {"-position -1", "0 to 15", false},
      {"-te TE1,TE9", "TE1, TE2", false},
      {"-launch x", "exclude each other", false},
      {"-te TE1=TU1->TU2", "missing is 2 steps", false},
      {"-te TE1=TU3*9", "the unit \"TU3\" (it has TU1, TU2) and a count of 9", false},
      {"-te TE2=TU3&", "column", false},
      {"-te X=TU1", "TE1, TE2", false},
      {"-now -te TE1", "no expression", false},
      {"-all -set TU1=111", "CORE/NAME", false},
      {"-serve tcp:70000", "tcp:PORT", false},
      {"-bypass 1", "AHEAD:BEHIND", false},
      {"-range 5:2", "FROM:TO", false},
      {"-period c=10", "or CORE=6.25ns", false},
      {"-replay u", "give both", false},
      {"-wave -csv -", "leave one out", false},
      {"-serdes -vcd x", "only \"-json\"", false},
      {"-clear", "give both", false},
      {"-count 6", "1 to 5 events", false},
      {"-windows 2", "1 to 1 windows", false},
  };
  RunSettings settings(oneCore());
  const QByteArray before = settings.chain();
  for (const auto& row : table) {
    SCOPED_TRACE(row.words);
    CaptureOptions options;
    QString error;
    EXPECT_FALSE(parse(QString(row.complete ? "" : "-map m -connect fifo:d ") + row.words, options, error) &&
                 applyRunOptions(options, settings, error));
    EXPECT_TRUE(has(error, row.text));
    EXPECT_EQ(settings.chain(), before);
  }
}

}  // namespace
}  // namespace ost
