// The proof accepts what the insertion writes and refuses every tampered edition of it.
#include "platform/insert/proof.h"

#include <QRegularExpression>

#include "tests/unit/insert/tricky.h"

namespace ost {
namespace {

TEST(Proof, HoldsForTheWrittenDesignAndFailsForTamperedOnes) {
  Scratch scratch;
  InsertPlan plan = trickyPlan();
  ASSERT_EQ(insertTricky(plan, scratch), "");
  plan.pins = {"ostrel1_tck", "ostrel1_tms", "ostrel1_tdi", "ostrel1_tdo"};
  const QString original = scratch.read("out/tricky_debug.v");
  ProofReport report;
  const auto prove = [&](const QString& verilog) {
    ProofFiles files;
    files.instrumented = scratch.write("tampered.v", verilog.toLatin1());
    files.debugModule = scratch.path("out/ostrel_debug.v");
    QString error;
    return proveUnchanged(plan, trickyDesign(), trickyNetlist(), files, {}, report, error) ? QString("holds") : error;
  };
  ASSERT_EQ(plain(prove(original)), "holds");
  EXPECT_EQ(report.probesChecked, plan.cores[0].probeWidth() + 2);  // the clock and the trigger's bit too
  EXPECT_GE(report.modulesProved, 9);
  EXPECT_EQ(report.lines.size(), 2);

  const struct {
    const char* pattern;
    const char* replacement;  // \1 ... from the pattern
    const char* complaint;
  } tampers[] = {
      {"(module leaf__ostrel.*?= value) \\+ ", "\\1 - ", "module leaf__ostrel"},
      {"(module leaf\\(.*?)value\\[1\\];", "\\1value[2];", "module leaf could"},  // one that nobody probes
      {"(module divider.*?)posedge", "\\1negedge", "the other edge"},
      {"slow_count = 2'h2", "slow_count = 2'h1", "initial value"},
      {"posedge slow\\)", "posedge clk)", "module tricky could"},
      {"posedge rst", "negedge rst", "module tricky could"},
      {"~ slow;", "slow;", "module divider could"},
      {"words\\[3\\] = 16'h3", "words[3] = 16'h2", "\"mem|"},
      {"(\\.address\\(stimulus)\\[5:2\\]", "\\1[6:3]", "u_store.address"},
      {"(\\.c0_probe\\(\\{ )(.*?), (.*?),", "\\1\\3, \\2,", "looks at another net"},
      {"= \\{ value\\[0\\], value\\[1\\]", "= { value[1], value[0]", "looks at another net"},
  };
  for (const auto& tamper : tampers) {
    SCOPED_TRACE(tamper.pattern);
    const QRegularExpression pattern(tamper.pattern, QRegularExpression::DotMatchesEverythingOption);
    const QRegularExpressionMatch match = pattern.match(original);
    QString text = tamper.replacement;
    for (int group = 1; group <= match.lastCapturedIndex(); ++group)
      text.replace(QString("\\%1").arg(group), match.captured(group));
    QString tampered = original;
    tampered.replace(match.capturedStart(), match.capturedLength(), text);
    ASSERT_TRUE(match.hasMatch() && tampered != original);
    EXPECT_TRUE(has(prove(tampered), tamper.complaint));
  }
}

}  // namespace
}  // namespace ost
