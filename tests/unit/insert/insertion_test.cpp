// Instrumented against original: simulated side by side, and which modules were made unique.
#include <gtest/gtest.h>

#include <QProcess>
#include <QRegularExpression>

#include "platform/plan/capture_map.h"
#include "tests/unit/insert/tricky.h"

namespace ost {
namespace {

/// Simulates the bench with the sources; its lines are the ports and, after a blank, the probes.
QList<QByteArray> simulate(const QString& folder, const QStringList& sources, const QString& probes,
                           const QStringList& options) {
  const QString program = folder + QStringLiteral("/simulation");
  QProcess compiler, simulation;
  compiler.start(QStringLiteral("iverilog"), QStringList{QStringLiteral("-g2005-sv"), QStringLiteral("-o"), program,
                                                         QStringLiteral("-DPROBES=") + probes} +
                                                 options + sources);
  EXPECT_TRUE(compiler.waitForFinished()) << "iverilog does not run";
  EXPECT_EQ(compiler.exitCode(), 0) << compiler.readAllStandardError().constData();
  simulation.start(QStringLiteral("vvp"), {QStringLiteral("-n"), program});
  EXPECT_TRUE(simulation.waitForFinished());
  QList<QByteArray> lines = simulation.readAllStandardOutput().split('\n');
  while (!lines.isEmpty() && !lines.last().contains(' ')) lines.removeLast();
  return lines;
}

TEST(Insertion, InstrumentedDesignBehavesLikeTheSourceOnPortsAndProbes) {
  QTemporaryDir folder;
  const InsertPlan plan = trickyPlan();
  ASSERT_EQ(insertTricky(plan, folder), "");

  QString format, values;
  for (const TrickyProbe& probe : trickyProbes()) {
    format += QStringLiteral("%b");
    values += QStringLiteral(",") + QString::fromLatin1(probe.verilog);
  }
  const QString bench = QStringLiteral(OST_TRICKY "/bench.v");
  const QList<QByteArray> source = simulate(folder.path(), {bench, QStringLiteral(OST_TRICKY "/tricky.v")},
                                            QStringLiteral("$write(\"%1\"%2);").arg(format, values), {});
  QStringList written{bench};
  const QString out = folder.filePath(QStringLiteral("out/"));
  for (const QByteArray& line : readFile(out + QStringLiteral("files.f")).split('\n'))
    if (line.endsWith(".v")) written << out + QString::fromLatin1(line);
  const int width = plan.cores[0].probeWidth();
  const QList<QByteArray> instrumented = simulate(
      folder.path(), written,
      QStringLiteral("for (k = 0; k < %1; k = k + 1) $write(\"%b\", dut.ostrel_debug_i_1.c0_probe[k]);").arg(width),
      {QStringLiteral("-DINSTRUMENTED")});

  ASSERT_EQ(source.size(), 400);
  ASSERT_EQ(instrumented.size(), source.size());
  QVector<bool> sawZero(width), sawOne(width);
  const int ports = source[0].indexOf(' ');
  for (int n = 0; n < source.size(); ++n) {
    ASSERT_EQ(source[n].size(), ports + 1 + width);
    ASSERT_EQ(instrumented[n].size(), source[n].size());
    for (int i = 0; i < source[n].size(); ++i) {
      const char wanted = source[n][i];
      if (wanted != 'x') {  // passes may make an unknown known
        const QString what =
            i < ports ? QStringLiteral("port column %1").arg(i) : plan.cores[0].probeBits.value(i - ports - 1).name;
        ASSERT_EQ(instrumented[n][i], wanted) << "cycle " << n << ", " << qPrintable(what);
      }
      if (i <= ports) continue;
      sawZero[i - ports - 1] |= wanted == '0';
      sawOne[i - ports - 1] |= wanted == '1';
    }
  }
  for (int i = 0; i < width; ++i)
    EXPECT_TRUE(sawZero[i] && sawOne[i]) << qPrintable(plan.cores[0].probeBits[i].name) << " does not toggle";
}

TEST(Insertion, MakesUniqueOnlyWhatIsProbedDifferently) {
  QTemporaryDir folder;
  const InsertPlan plan = trickyPlan();
  ASSERT_EQ(insertTricky(plan, folder), "");
  const QString verilog = QString::fromLatin1(readFile(folder.filePath(QStringLiteral("out/tricky_debug.v"))));
  const auto typeOf = [&](const QString& inModule, const QString& instance) {
    const QRegularExpression module(QStringLiteral("\\nmodule %1 ?\\(.*?\\nendmodule").arg(inModule),
                                    QRegularExpression::DotMatchesEverythingOption);
    const QRegularExpression cell(QStringLiteral("\\n  (\\S+) +%1 \\(").arg(instance));
    return cell.match(module.match(verilog).captured()).captured(1);
  };
  // Both pairs are probed, in different instances of theirs: one keeps the name; leaves that nobody probes stay.
  const QString one = typeOf(QStringLiteral("tricky"), QStringLiteral("u_one"));
  const QString two = typeOf(QStringLiteral("tricky"), QStringLiteral("u_two"));
  EXPECT_NE(one, two);
  EXPECT_TRUE(one == QStringLiteral("pair") || two == QStringLiteral("pair"));
  EXPECT_TRUE(typeOf(one, QStringLiteral("u_left")).startsWith(QStringLiteral("leaf__ostrel")));
  EXPECT_EQ(typeOf(one, QStringLiteral("u_right")), QStringLiteral("leaf"));
  EXPECT_TRUE(typeOf(two, QStringLiteral("u_right")).startsWith(QStringLiteral("leaf__ostrel")));
  EXPECT_EQ(typeOf(two, QStringLiteral("u_left")), QStringLiteral("leaf"));
  EXPECT_EQ(typeOf(QStringLiteral("tricky"), QStringLiteral("u_store")), QStringLiteral("store"));
  // What the user wrote into the source stays in the output.
  EXPECT_TRUE(verilog.contains(QStringLiteral("ASYNC_REG = \"TRUE\"")));
  EXPECT_TRUE(verilog.contains(QStringLiteral("ram_style = \"block\"")));
  // The pins avoid the user's ostrel_tck, and the map says so.
  InsertPlan map;
  QString error;
  ASSERT_TRUE(readCaptureMap(readFile(folder.filePath(QStringLiteral("out/capture_map.json"))), map, error))
      << qPrintable(error);
  EXPECT_EQ(map.pins.tdo, QStringLiteral("ostrel1_tdo"));
}

TEST(Insertion, TriggerOutputIsAPortOrANetOfTheGivenName) {
  struct Case {
    bool port, net;
    const char *declaration, *driven;
  };
  for (const Case& c :
       {Case{true, false, "output fired;", "fired"}, Case{false, true, "(* keep = 32'd1 *)\n  wire fired;", "fired"},
        Case{true, true, "(* keep = 32'd1 *)\n  wire fired_net;", "fired_net"}}) {
    QTemporaryDir folder;
    InsertPlan plan = trickyPlan();
    plan.cores[0].triggerOutIo = c.port;
    plan.cores[0].triggerOutNet = c.net;
    plan.cores[0].triggerOutName = QStringLiteral("fired");
    ASSERT_EQ(insertTricky(plan, folder), "");
    const QByteArray verilog = readFile(folder.filePath(QStringLiteral("out/tricky_debug.v")));
    EXPECT_TRUE(verilog.contains(c.declaration)) << c.declaration;
    EXPECT_EQ(verilog.contains("output fired;"), c.port);
    EXPECT_TRUE(verilog.contains(QByteArray(".c0_trig_out(") + c.driven + ")"));
    EXPECT_EQ(verilog.contains("assign fired = fired_net;"), c.port && c.net);
  }
  QTemporaryDir folder;
  InsertPlan plan = trickyPlan();
  plan.cores[0].triggerOutIo = true;
  plan.cores[0].triggerOutName = QStringLiteral("slow");
  EXPECT_NE(insertTricky(plan, folder).find("\"slow\""), std::string::npos);
}

}  // namespace
}  // namespace ost
