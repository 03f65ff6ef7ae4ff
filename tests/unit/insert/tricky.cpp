// Reads the shared design and makes its plan.
#include "tests/unit/insert/tricky.h"

#include "bench/core_plans/plan_text.h"
#include "platform/plan/capture_map.h"

namespace ost {
namespace {

QVector<NetBit> bitsOf(const QString& name) {
  NetSelection selection;
  QString error;
  EXPECT_TRUE(trickyDesign().resolve(name, selection, error)) << plain(error);
  QVector<NetBit> bits;
  for (int i = 0; i < selection.bits.size(); ++i)
    bits.append({selection.instancePath, selection.net, selection.bits[i], selection.bitNames[i]});
  return bits;
}

}  // namespace

const Design& trickyDesign() {
  static const std::shared_ptr<const Design> design = [] {
    DesignSource source;
    source.files << OST_TRICKY;
    QString error;
    std::shared_ptr<const Design> read = Design::read(source, error);
    EXPECT_TRUE(read) << plain(error);
    return read;
  }();
  return *design;
}

std::shared_ptr<const Netlist> trickyNetlist() {
  static const std::shared_ptr<const Netlist> netlist = [] {
    QString error;
    std::shared_ptr<const Netlist> loaded = Netlist::load(trickyDesign(), error);
    EXPECT_TRUE(loaded) << plain(error);
    return loaded;
  }();
  return netlist;
}

NetBit bitOf(const char* net) {
  return bitsOf(net).value(0);
}

InsertPlan trickyPlan() {
  InsertPlan plan = planFromText("depth=16 unit=match:0:1 expr=0");
  PlanCore& core = plan.cores[0];
  core.sampleClock = bitOf("u_store/clk");
  for (const char* name :
       {"u_one/u_left/count", "u_two/u_right/ostrel_probe", "u_two/u_right/step", "u_wide/count[6:2]", "u/pad/io",
        "u/pad/seen", "u/pad/through", "u_store/out", "u_div/slow", "slow_count", "odd.name[0]", "ostrel_debug_i",
        "lanes[1].lane", "lanes[0].u_leaf/count[1]", "turned", "turned[2]", "held"}) {
    core.probes.append(PlanProbe{name, {}});
    for (const NetBit& bit : bitsOf(name)) {
      core.probes.last().positions.append(core.probeBits.size());
      core.probeBits.append(bit);
    }
  }
  core.triggerBits = {core.probeBits[0]};
  plan.topModule = trickyDesign().topModule();
  plan.projectHash = planHash(plan);
  return plan;
}

std::string insertTricky(const InsertPlan& plan, const Scratch& scratch, const InsertionHooks& hooks) {
  InsertionRequest request;
  request.outputDirectory = scratch.path("out");
  QString error;
  if (runInsertion(plan, trickyDesign(), trickyNetlist(), request, hooks, error)) return std::string();
  return error.isEmpty() ? "failed without a text" : plain(error);
}

}  // namespace ost
