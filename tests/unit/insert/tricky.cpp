// Reads the shared design and makes its plan.
#include "tests/unit/insert/tricky.h"

#include <gtest/gtest.h>

#include <QFile>

#include "platform/plan/capture_map.h"

namespace ost {

const QVector<TrickyProbe>& trickyProbes() {
  static const QVector<TrickyProbe> probes = {
      {"u_one/u_left/count", "dut.u_one.u_left.count"},
      {"u_two/u_right/ostrel_probe", "dut.u_two.u_right.ostrel_probe"},
      {"u_two/u_right/step", "dut.u_two.u_right.step"},
      {"u_wide/count[6:2]", "dut.u_wide.count[6:2]"},
      {"u/pad/io", "dut.\\u/pad .io"},
      {"u/pad/seen", "dut.\\u/pad .seen"},
      {"u/pad/through", "dut.\\u/pad .through"},
      {"u_store/out", "dut.u_store.out"},
      {"u_div/slow", "dut.u_div.slow"},
      {"slow_count", "dut.slow_count"},
      {"odd.name[0]", "dut.\\odd.name[0] "},
      {"ostrel_debug_i", "dut.ostrel_debug_i"},
      {"lanes[1].lane", "dut.lanes[1].lane"},
      {"lanes[0].u_leaf/count[1]", "dut.lanes[0].u_leaf.count[1]"},
      {"turned", "dut.turned"},
      {"turned[2]", "dut.turned[2]"},
      {"held", "dut.held"},
  };
  return probes;
}

const Design& trickyDesign() {
  static const std::shared_ptr<const Design> design = [] {
    DesignSource source;
    source.files << QStringLiteral(OST_TRICKY "/tricky.v");
    source.top = QStringLiteral("tricky");
    QString error;
    std::shared_ptr<const Design> read = Design::read(source, error);
    EXPECT_TRUE(read) << qPrintable(error);
    return read;
  }();
  return *design;
}

std::shared_ptr<const Netlist> trickyNetlist() {
  static const std::shared_ptr<const Netlist> netlist = [] {
    QString error;
    std::shared_ptr<const Netlist> loaded = Netlist::load(trickyDesign(), error);
    EXPECT_TRUE(loaded) << qPrintable(error);
    return loaded;
  }();
  return netlist;
}

namespace {

QVector<NetBit> bitsOf(const Design& design, const char* name) {
  NetSelection selection;
  QString error;
  EXPECT_TRUE(design.resolve(QString::fromLatin1(name), selection, error)) << qPrintable(error);
  QVector<NetBit> bits;
  for (int i = 0; i < selection.bits.size(); ++i)
    bits.append({selection.instancePath, selection.net, selection.bits[i], selection.bitNames[i]});
  return bits;
}

}  // namespace

NetBit bitOf(const Design& design, const char* name) {
  return bitsOf(design, name).value(0);
}

InsertPlan trickyPlan() {
  PlanCore core;
  core.name = QStringLiteral("c1");
  core.depth = core.windowSamples = 16;
  core.sampleClock = bitOf(trickyDesign(), "u_store/clk");
  for (const TrickyProbe& entry : trickyProbes()) {
    PlanProbe probe;
    probe.name = QString::fromLatin1(entry.name);
    for (const NetBit& bit : bitsOf(trickyDesign(), entry.name)) {
      probe.positions.append(core.probeBits.size());
      core.probeBits.append(bit);
    }
    core.probes.append(probe);
  }
  core.triggerBits = {core.probeBits[0]};
  PlanUnit unit;
  unit.name = QStringLiteral("TU1");
  unit.valueText = QStringLiteral("1");
  unit.inputs = {0};
  unit.value = unit.mask = "1";
  core.units = {unit};
  PlanExpression expression;
  expression.name = QStringLiteral("TE1");
  expression.text = unit.name;
  expression.units = {0};
  expression.steps = {{"01", 1}};
  core.expressions = {expression};
  InsertPlan plan;
  plan.projectName = QStringLiteral("tricky");
  plan.topModule = trickyDesign().topModule();
  plan.cores = {core};
  plan.projectHash = planHash(plan);
  return plan;
}

std::string insertTricky(const InsertPlan& plan, const QTemporaryDir& folder, const InsertionHooks& hooks) {
  InsertionRequest request;
  request.outputDirectory = folder.filePath(QStringLiteral("out"));
  QString error;
  if (runInsertion(plan, trickyDesign(), trickyNetlist(), request, hooks, error)) return std::string();
  return error.isEmpty() ? "failed without a text" : error.toStdString();
}

QByteArray readFile(const QString& name) {
  QFile file(name);
  EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(name);
  return file.readAll();
}

void writeFile(const QString& name, const QByteArray& contents) {
  QFile file(name);
  EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size()) << qPrintable(name);
}

}  // namespace ost
