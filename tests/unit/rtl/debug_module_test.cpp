// The generated debug module: ports, layout, and that Icarus Verilog, Verilator and Yosys take it without a word.
#include "platform/rtl/debug_module.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include "platform/rtl/core_layout.h"
#include "bench/core_plans/plan_text.h"

namespace ost {
namespace {

/// A folder with the Verilog of a plan.
class Written {
 public:
  explicit Written(const QByteArray& text) : plan(planFromText(text)) {
    auto files = coreVerilogFiles();
    files.append({QStringLiteral("ostrel_debug.v"), debugModuleVerilog(plan)});
    files.append({QStringLiteral("core_top.v"), topVerilog(plan)});
    for (const auto& entry : files) {
      QFile file(folder_.filePath(entry.first));
      if (!file.open(QIODevice::WriteOnly) || file.write(entry.second) != entry.second.size()) ADD_FAILURE();
      if (entry.first != QStringLiteral("core_top.v")) core << entry.first;
      all << entry.first;
    }
  }

  /// What the program said, with its exit code when that is not 0.
  QString run(const QString& program, const QStringList& arguments) const {
    QProcess process;
    process.setWorkingDirectory(folder_.path());
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    if (!process.waitForFinished(200000)) return QStringLiteral("%1 did not finish").arg(program);
    const QString text = QString::fromLocal8Bit(process.readAll()).trimmed();
    return process.exitCode() == 0 ? text : text + QStringLiteral("\nexit %1").arg(process.exitCode());
  }

  InsertPlan plan;
  QStringList core, all;

 private:
  QTemporaryDir folder_;
};

const char* const kPlans[] = {
    "probes=1 depth=16 unit=match:0:1 expr=0",
    "probes=32 depth=1024 unit=match:0:32 expr=0",
    // Nothing but probes: a core may have no units, or units that no expression uses.
    "probes=3 depth=16",
    "probes=3 depth=16 incl unit=match:0:2",
    "probes=7 depth=64 windows=4 ws=16 ts=63 incl se=low te=high event=5 out=3 outlow unit=match:0:3 unit=order:2:4 "
    "unit=serial:1:5 expr=0+1+2:4:9:ebr expr=0 expr=1:3:1",
    // Tables in all three stores, several cores, windows of two samples, steps and counts that are no powers of two.
    "probes=300 depth=64 windows=32 ws=2 dram unit=match:0:1 unit=match:1:1 unit=match:2:1 unit=match:3:1 "
    "unit=order:4:1 expr=0+1+2+3+4:3:5 expr=0:3:5 core probes=1 depth=16 dram nodram unit=serial:0:1 expr=0 "
    "core probes=2 depth=65536 event=65536 out=0 unit=order:0:64 expr=0:16:65536",
};

TEST(DebugModule, CompilersTakeItWithoutAWarning) {
  for (const char* text : kPlans) {
    SCOPED_TRACE(text);
    const Written written{QByteArray(text)};
    EXPECT_EQ(written.run(QStringLiteral("iverilog"), QStringList{QStringLiteral("-g2001"), QStringLiteral("-Wall"),
                                                                  QStringLiteral("-o"), QStringLiteral("x")} +
                                                          written.all),
              QString());
    EXPECT_EQ(written.run(QStringLiteral("verilator"),
                          QStringList{QStringLiteral("--lint-only"), QStringLiteral("-Wall"),
                                      QStringLiteral("--top-module"), QStringLiteral("ostrel_debug")} +
                              written.core),
              QString());
    EXPECT_EQ(
        written.run(QStringLiteral("yosys"),
                    {QStringLiteral("-q"), QStringLiteral("-p"),
                     QStringLiteral("read_verilog %1; hierarchy -check -top core_top; proc; flatten; check -assert")
                         .arg(written.all.join(QLatin1Char(' ')))}),
        QString());
  }
}

TEST(DebugModule, PortsFollowThePlan) {
  const InsertPlan plan =
      planFromText("probes=5 depth=16 se=high out=1 unit=match:3:4 expr=0 core probes=2 depth=16 te=low");
  QStringList ports;
  for (const DebugPort& port : debugModulePorts(plan))
    ports << QStringLiteral("%1%2:%3")
                 .arg(QString::fromLatin1(port.output ? "*" : ""), QString::fromLatin1(port.name))
                 .arg(port.width);
  EXPECT_EQ(ports.join(QLatin1Char(' ')),
            QStringLiteral("jtag_tck:1 jtag_tms:1 jtag_tdi:1 *jtag_tdo:1 c0_clk:1 c0_probe:5 c0_trig:4 c0_sample_en:1 "
                           "*c0_trig_out:1 c1_clk:1 c1_probe:2 c1_trig_en:1"));
}

TEST(DebugModule, ChainAndBlocksAsDocumented) {
  const InsertPlan plan = planFromText(
      "probes=30 depth=64 windows=4 ws=16 event=5 ts=9 unit=match:0:3 unit=order:2:4 unit=serial:1:5 expr=0+1:3:9 "
      "expr=0+1:2:1:ebr");
  const CoreLayout layout(plan.cores[0]);
  EXPECT_EQ(layout.unitOffsets, (QVector<int>{4 + 2 + 3, 9 + 8, 17 + 7}));
  EXPECT_EQ(layout.expressions[0].tableOffset, 34 + 1 + 2 + 3 * 4);
  EXPECT_EQ(layout.chainBits, 49 + 12 + 2) << "the second table is in memory";
  EXPECT_EQ(layout.rowBits, 2);
  EXPECT_EQ(layout.wordBits, 30 + 9 + 1);
  EXPECT_EQ(layout.blockBits, 6) << "no more words than the memory has";
  EXPECT_EQ(layout.statusBits, 13 + 2 + 2 + 1 + 3);
}

/// Memory cells of a plan's design by name, as `synth_xilinx` maps them.
QHash<QString, int> memories(const QByteArray& text) {
  const Written written(text);
  // Up to the mapping of memories: the rest takes long and changes nothing in them.
  const QString output =
      written.run(QStringLiteral("yosys"),
                  {QStringLiteral("-p"),
                   QStringLiteral("read_verilog %1; synth_xilinx -flatten -top core_top -run begin:fine; stat")
                       .arg(written.all.join(QLatin1Char(' ')))});
  QHash<QString, int> result;
  const QRegularExpression line(QStringLiteral("^ +(RAM[A-Z0-9]+) +([0-9]+)$"), QRegularExpression::MultilineOption);
  auto match = line.globalMatch(output.mid(output.lastIndexOf(QStringLiteral("Number of cells"))));
  while (match.hasNext()) {
    const auto entry = match.next();
    result[entry.captured(1)] = entry.captured(2).toInt();
  }
  return result;
}

int halfBlocks(const QHash<QString, int>& cells) {
  return cells.value(QStringLiteral("RAMB36E1")) * 2 + cells.value(QStringLiteral("RAMB18E1"));
}

TEST(DebugModule, MemoriesGoWhereThePlanPutsThem) {
  auto found = memories("probes=36 depth=1024 unit=match:0:4 expr=0:2:1:ebr");
  EXPECT_EQ(halfBlocks(found), 2 + 1) << "1024 x 36 is one block, and half a one for the expression";

  found = memories("probes=4 depth=64 dram unit=match:0:1 expr=0:2:1");
  EXPECT_EQ(halfBlocks(found), 0);
  EXPECT_FALSE(found.isEmpty());

  found = memories(
      "probes=4 depth=64 dram nodram unit=match:0:1 unit=match:1:1 unit=match:2:1 unit=match:3:1 unit=match:4:1 "
      "expr=0+1+2+3+4:2:1");
  EXPECT_EQ(halfBlocks(found), 2);
  for (auto cell = found.constBegin(); cell != found.constEnd(); ++cell)
    EXPECT_TRUE(cell.key().startsWith(QStringLiteral("RAMB"))) << qPrintable(cell.key());
}

/// Against figures measured with `synth_xilinx -flatten` for plans that the weights were not taken from; the whole
/// table is `bench/core_cost`.
TEST(DebugModule, EstimateFollowsTheMeasuredSize) {
  const struct {
    const char* plan;
    int luts, flipFlops, blockRams;
  } measured[] = {
      {"probes=40 depth=2048 ts=32 te=low unit=match:0:20 unit=serial:3:16 expr=0+1", 252, 476, 4},
      {"probes=96 depth=1024 se=high unit=match:0:32 unit=match:32:32 unit=match:64:32 expr=0+1+2:2", 339, 811, 3},
  };
  for (const auto& entry : measured) {
    SCOPED_TRACE(entry.plan);
    const InsertPlan plan = planFromText(entry.plan);
    ResourceEstimate total = estimateHub(plan);
    for (const PlanCore& core : plan.cores) {
      const ResourceEstimate estimate = estimateCore(core);
      total.luts += estimate.luts;
      total.flipFlops += estimate.flipFlops;
      total.blockRams += estimate.blockRams;
    }
    EXPECT_NEAR(total.luts, entry.luts, entry.luts * 0.15);
    EXPECT_NEAR(total.flipFlops, entry.flipFlops, entry.flipFlops * 0.15);
    EXPECT_EQ(total.blockRams, entry.blockRams);
  }
}

}  // namespace
}  // namespace ost
