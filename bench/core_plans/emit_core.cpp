// ost_emit_core <folder> <plan words>: writes the debug module of a plan, the core's files and a top for it, for
// stand-alone simulation and synthesis. Prints the library's size estimate: LUTs, flip-flops, block RAMs.
#include <QDir>
#include <QFile>
#include <cstdio>
#include <exception>

#include "bench/core_plans/plan_text.h"
#include "platform/rtl/debug_module.h"

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: ost_emit_core <folder> <plan words>...\n");
    return 2;
  }
  try {
    QByteArray words;
    for (int i = 2; i < argc; ++i) words += QByteArray(argv[i]) + ' ';
    const ost::InsertPlan plan = ost::planFromText(words);
    QList<QPair<QString, QByteArray>> files = ost::coreVerilogFiles();
    files.append({QStringLiteral("ostrel_debug.v"), ost::debugModuleVerilog(plan)});
    files.append({QStringLiteral("core_top.v"), ost::topVerilog(plan)});
    const QString folder = QFile::decodeName(argv[1]);
    QDir().mkpath(folder);
    for (const auto& entry : files) {
      QFile file(folder + QLatin1Char('/') + entry.first);
      if (!file.open(QIODevice::WriteOnly) || file.write(entry.second) != entry.second.size()) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(file.fileName()));
        return 1;
      }
    }
    ost::ResourceEstimate total = ost::estimateHub(plan);
    QVector<ost::ResourceEstimate> parts;
    for (const ost::PlanCore& core : plan.cores) parts.append(ost::estimateCore(core));
    if (plan.wishbone) parts.append(ost::estimateWishbone(*plan.wishbone));
    for (const ost::ResourceEstimate& estimate : parts) {
      total.luts += estimate.luts;
      total.flipFlops += estimate.flipFlops;
      total.blockRams += estimate.blockRams;
    }
    if (plan.serdes) {
      const ost::ResourceEstimate estimate = ost::estimateSerdes(*plan.serdes);
      total.luts += estimate.luts;
      total.flipFlops += estimate.flipFlops;
    }
    std::printf("%d %d %d\n", total.luts, total.flipFlops, total.blockRams);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "ost_emit_core: %s\n", error.what());
    return 1;
  }
}
