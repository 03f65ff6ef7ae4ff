// The proof accepts what the insertion writes and refuses every tampered edition of it.
#include "platform/insert/proof.h"

#include <gtest/gtest.h>

#include <QRegularExpression>

#include "tests/unit/insert/tricky.h"

namespace ost {
namespace {

TEST(Proof, HoldsForTheWrittenDesignAndFailsForTamperedOnes) {
  QTemporaryDir folder;
  InsertPlan plan = trickyPlan();
  ASSERT_EQ(insertTricky(plan, folder), "");
  plan.pins = {QStringLiteral("ostrel1_tck"), QStringLiteral("ostrel1_tms"), QStringLiteral("ostrel1_tdi"),
               QStringLiteral("ostrel1_tdo")};
  ProofFiles files;
  files.instrumented = folder.filePath(QStringLiteral("tampered.v"));
  files.debugModule = folder.filePath(QStringLiteral("out/ostrel_debug.v"));
  const QString original = QString::fromLatin1(readFile(folder.filePath(QStringLiteral("out/tricky_debug.v"))));
  const auto prove = [&](const QString& verilog, ProofReport& report) {
    writeFile(files.instrumented, verilog.toLatin1());
    QString error;
    return proveUnchanged(plan, trickyDesign(), trickyNetlist(), files, {}, report, error) ? std::string()
                                                                                           : error.toStdString();
  };

  ProofReport report;
  ASSERT_EQ(prove(original, report), "");
  EXPECT_EQ(report.probesChecked, plan.cores[0].probeWidth() + 2);  // the clock and the trigger's bit too
  EXPECT_GE(report.modulesProved, 9);
  EXPECT_EQ(report.lines.size(), 2);

  struct Tamper {
    const char* pattern;
    const char* replacement;  // \1 ... from the pattern
    const char* complaint;
  };
  const Tamper tampers[] = {
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
  for (const Tamper& tamper : tampers) {
    SCOPED_TRACE(tamper.pattern);
    const QRegularExpressionMatch match =
        QRegularExpression(QString::fromLatin1(tamper.pattern), QRegularExpression::DotMatchesEverythingOption)
            .match(original);
    if (!match.hasMatch()) {
      ADD_FAILURE() << "nothing to tamper with";
      continue;
    }
    QString text = QString::fromLatin1(tamper.replacement);
    for (int group = 1; group <= match.lastCapturedIndex(); ++group)
      text.replace(QStringLiteral("\\%1").arg(group), match.captured(group));
    QString tampered = original;
    tampered.replace(match.capturedStart(), match.capturedLength(), text);
    ASSERT_NE(tampered, original);
    const std::string complaint = prove(tampered, report);
    EXPECT_TRUE(!complaint.empty() && complaint.find(tamper.complaint) != std::string::npos) << complaint;
  }
}

}  // namespace
}  // namespace ost
