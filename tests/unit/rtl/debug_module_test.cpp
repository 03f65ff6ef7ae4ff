// The generated debug module: that Icarus Verilog, Verilator and Yosys take it without a word, where its memories go,
// and its size. (What it does, and that reader and hardware agree on its layout, is the matter of tests/sim.)
#include "platform/rtl/debug_module.h"

#include <QRegularExpression>

#include "bench/core_plans/plan_text.h"
#include "platform/plan/core_layout.h"
#include "platform/rtl/constraints.h"
#include "tests/unit/scratch.h"

namespace ost {
namespace {

/// A folder with the Verilog of a plan.
struct Written : Scratch {
  explicit Written(const InsertPlan& plan) {
    for (const auto& [name, verilog] : coreVerilogFiles(plan.jtag)) write(name.toLatin1(), verilog);
    write("ostrel_debug.v", debugModuleVerilog(plan));
    write("top.v", topVerilog(plan));
  }

  /// What a shell command said in the folder, and whether it failed.
  QString run(const char* command) const {
    FILE* const pipe = popen(qPrintable("cd " + folder.path() + " && " + command + " 2>&1 || echo failed"), "r");
    QFile output;
    output.open(pipe, QIODevice::ReadOnly);
    const QByteArray said = output.readAll();
    pclose(pipe);
    return said;
  }
};

const char* const kPlans[] = {
    "probes=1 depth=16 unit=match:0:1 expr=0",
    // Nothing but probes: a core may have no units, or units that no expression uses.
    "probes=3 depth=16",
    "probes=3 depth=16 incl unit=match:0:2",
    "probes=7 depth=64 windows=4 ws=16 ts=63 incl se=low te=high event=5 out=3 outlow unit=match:0:3 unit=order:2:4 "
    "unit=serial:1:5 expr=0+1+2:4:9:ebr expr=0 expr=1:3:1",
    // Tables in all three stores, several cores, a wide unit, steps and counts that are no powers of two.
    "probes=300 depth=64 windows=4 ws=16 dram unit=match:0:1 unit=match:1:1 unit=match:2:1 unit=match:3:1 "
    "unit=order:4:1 expr=0+1+2+3+4:3:5 expr=0:3:5 core probes=1 depth=16 dram nodram unit=serial:0:1 expr=0 "
    "core probes=2 depth=65536 event=65536 out=0 unit=order:0:64 expr=0:16:65536 serdes=40:214:rst",
    "probes=1 depth=16 serdes=1:0",
    "probes=1 depth=16 serdes=0:1",
    "probes=1 depth=16 wb=3",
};

TEST(DebugModule, CompilersTakeItWithoutAWarning) {
  for (const char* text : kPlans) {
    SCOPED_TRACE(text);
    InsertPlan plan = planFromText(text);
    plan.cores[0].name = plan.cores[0].probeBits[0].name = QStringLiteral("\\a\"b`endif//*%d\n\u00e9");
    const Written written(plan);
    for (const char* command :
         {"iverilog -g2001 -Wall -o x *.v", "iverilog -g2012 -Wall -o x *.v",
          "verilator --lint-only -Wall --top-module ostrel_debug ostrel_*.v",
          "yosys -q -p 'read_verilog *.v; hierarchy -check -top core_top; proc; flatten; check -assert'"})
      EXPECT_EQ(plain(written.run(command)), "");
  }
}

TEST(DebugModule, SynthesisKnowsEverythingButTheDevicesPrimitive) {
  const struct {
    JtagWay way;
    const char* command;
  } table[] = {{JtagWay::Bscane2, "synth_xilinx -flatten -top core_top; select -assert-count 1 t:BSCANE2"},
               {JtagWay::GwJtag, "synth_gowin -top core_top; select -assert-count 1 t:GW_JTAG"}};
  for (const auto& row : table) {
    InsertPlan plan = planFromText(kPlans[0]);
    plan.jtag.way = row.way;
    plan.jtag.chain = 2;
    // The cell libraries' own warnings say nothing of the core.
    const QByteArray command = QByteArray("yosys -q -w . -p 'read_verilog *.v; ") + row.command + "'";
    EXPECT_EQ(plain(Written(plan).run(command)), "");
  }
}

/// All crossings of cores with all that crosses, by a timing analyser; and that no line of the constraints is idle.
TEST(DebugModule, ConstraintsCoverEveryPathBetweenTheClocks) {
  InsertPlan plan = planFromText(
      "probes=7 depth=16 dram ts=10 incl se=low te=high event=5 out=3 unit=match:0:3 unit=order:2:4 unit=serial:1:5 "
      "expr=0+1+2:4:9:ebr expr=0:2:2 core probes=3 depth=32 windows=2 ws=16 unit=match:0:17 unit=order:0:17 "
      "expr=0+1:2 wb=32 serdes=2:3:rst");
  plan.pins = {"jtag_tck", "jtag_tms", "jtag_tdi", "jtag_tdo"};
  const Written written(plan);
  // The Wishbone master's buffers are flip-flops here: eight words of them.
  written.write(
      "ostrel_wishbone.v",
      QByteArray(written.read("ostrel_wishbone.v")).replace("WORDS = 512, WORD_BITS = 9", "WORDS = 8, WORD_BITS = 3"));
  written.write("core_top.sdc", constraintsText(plan, "dut", ConstraintDialect::Sdc));
  written.write("core_top.xdc", constraintsText(plan, "dut", ConstraintDialect::Xdc));
  EXPECT_EQ(plain(written.run("cp " OST_TIMING "/* . && yosys -q -w . -p 'read_verilog *.v; script names.ys; "
                              "script netlist.ys' && tclsh xdc.tcl && sta -no_splash check.tcl")),
            "Saving command history\n");
}

TEST(DebugModule, ConstraintsNameThePrimitivesOfDevices) {
  for (const JtagWay way : {JtagWay::Bscane2, JtagWay::GwJtag}) {
    InsertPlan plan = planFromText(kPlans[1]);
    plan.jtag.way = way;
    const Written written(plan);
    written.write("core_top.xdc", constraintsText(plan, "dut", ConstraintDialect::Xdc));
    EXPECT_EQ(plain(written.run("cp " OST_TIMING "/* . && yosys -q -w . -p 'read_verilog -lib +/xilinx/cells_sim.v "
                                "+/xilinx/cells_xtra.v; read_verilog *.v; script names.ys' && tclsh xdc.tcl")),
              "");
  }
}

TEST(DebugModule, MemoriesGoWhereThePlanPutsThem) {
  const struct {
    const char* plan;
    int halfBlocks;  // of block RAM
    bool distributed;
  } table[] = {
      // 1024 x 36 is one block, and half a one for the expression.
      {"probes=36 depth=1024 unit=match:0:4 expr=0:2:1:ebr", 2 + 1, false},
      {"probes=4 depth=64 dram unit=match:0:1 expr=0:2:1", 0, true},
      {"probes=4 depth=64 dram nodram unit=match:0:1 unit=match:1:1 unit=match:2:1 unit=match:3:1 unit=match:4:1 "
       "expr=0+1+2+3+4:2:1",
       2, false},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.plan);
    // Up to the mapping of memories: the rest takes long and changes nothing in them.
    const QString said =
        Written(planFromText(row.plan))
            .run("yosys -p 'read_verilog *.v; synth_xilinx -flatten -top core_top -run begin:fine; stat'");
    const QRegularExpression cell("\n +(RAM\\w+) +(\\d+)");
    int halfBlocks = 0;
    bool distributed = false;
    for (auto match = cell.globalMatch(said, said.lastIndexOf("Number of cells")); match.hasNext();) {
      const QRegularExpressionMatch found = match.next();
      const bool block = found.captured(1).startsWith("RAMB");
      halfBlocks += block ? found.captured(2).toInt() * (found.captured(1) == "RAMB36E1" ? 2 : 1) : 0;
      distributed |= !block;
    }
    EXPECT_EQ(halfBlocks, row.halfBlocks);
    EXPECT_EQ(distributed, row.distributed);
  }
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
  for (const auto& row : measured) {
    SCOPED_TRACE(row.plan);
    const InsertPlan plan = planFromText(row.plan);
    const ResourceEstimate hub = estimateHub(plan), core = estimateCore(plan.cores[0]);
    EXPECT_NEAR(hub.luts + core.luts, row.luts, row.luts * 0.15);
    EXPECT_NEAR(hub.flipFlops + core.flipFlops, row.flipFlops, row.flipFlops * 0.15);
    EXPECT_EQ(hub.blockRams + core.blockRams, row.blockRams);
  }
  EXPECT_EQ(CoreLayout(planFromText("probes=30 depth=64").cores[0]).blockBits, 6) << "no more words than there are";
}

}  // namespace
}  // namespace ost
