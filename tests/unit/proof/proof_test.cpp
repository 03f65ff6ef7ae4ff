// The proof accepts what is written, for modules that come back in another form than they were read, and refuses every
// tampered version of it.
#include "platform/proof/proof.h"

#include <QCoreApplication>
#include <QRegularExpression>

#include "bench/core_plans/plan_text.h"
#include "platform/insert/insertion.h"
#include "platform/plan/capture_map.h"
#include "tests/unit/read_design.h"

namespace ost {
namespace {

/// A design, inserted once with a strict proof, and what that wrote.
struct Inserted {
  Inserted(const QString& source, const QString& top, const QString& clock, const QStringList& names,
           const std::optional<PlanWishbone>& wishbone = {})
      : design(source), folder(top) {
    const auto bitsOf = [this](const QString& name) {
      NetSelection selection;
      QString error;
      EXPECT_TRUE(design.design->resolve(name, selection, error)) << plain(error);
      QVector<NetBit> bits;
      for (int i = 0; i < selection.bits.size(); ++i)
        bits.append({selection.instancePath, selection.net, selection.bits[i], selection.bitNames[i]});
      return bits;
    };
    plan = planFromText("depth=16 unit=match:0:1 expr=0");
    PlanCore& core = plan.cores[0];
    core.sampleClock = bitsOf(clock).first();
    for (const QString& name : names)
      for (const NetBit& bit : bitsOf(name)) {
        core.probes.append(PlanProbe{bit.name, {int(core.probeBits.size())}});
        core.probeBits.append(bit);
      }
    core.triggerBits = {core.probeBits[0]};
    plan.wishbone = wishbone;
    if (wishbone) plan.wishbone->clock = core.sampleClock;
    plan.topModule = design.design->topModule();
    plan.projectHash = planHash(plan);
    InsertionRequest request;
    request.outputDirectory = scratch.path("out");
    request.proof = ProofMode::Strict;
    QString error;
    EXPECT_TRUE(runInsertion(plan, *design.design, design.netlist, request, {}, error)) << plain(error);
    verilog = scratch.read("out/" + folder.toLatin1() + "_debug.v");
    const QRegularExpression tck("(ostrel\\d*_)tck");
    const QString prefix = tck.match(verilog.mid(verilog.lastIndexOf(".jtag_tck("))).captured(1);
    plan.pins = {prefix + "tck", prefix + "tms", prefix + "tdi", prefix + "tdo"};
  }

  /// "holds", "undecided", or why it is refused.
  QString prove(const QString& text, ProofReport& report) const {
    const ProofFiles files{scratch.write("tampered.v", text.toLatin1()), scratch.path("out/ostrel_debug.v")};
    QString error;
    if (!proveUnchanged(plan, *design.design, design.netlist, files, {}, report, error)) return error;
    return report.undecided.isEmpty() ? QString("holds") : QString("undecided");
  }

  Scratch scratch;
  DesignAndNetlist design;
  QString folder;
  InsertPlan plan;
  QString verilog;
};

const Inserted& tricky() {
  static const Inserted inserted(
      OST_TRICKY, "tricky", "u_store/clk",
      {"u_one/u_left/count", "u_two/u_right/ostrel_probe", "u/pad/seen", "u_store/out", "u_div/slow", "u_corner/pin"});
  return inserted;
}

const Inserted& unusual() {
  static const Inserted inserted(OST_UNUSUAL, "unusual", "clk", {"on", "writes_i/q"});
  return inserted;
}

/// A bus with a master of its own, which the Wishbone master shares.
const Inserted& shared() {
  static const char kDesign[] = R"(
module bus(input clk_i, cyc_i, stb_i, we_i, input [3:0] adr_i, input [31:0] dat_i, output [31:0] dat_o, output ack_o);
  assign ack_o = stb_i & cyc_i;
  assign dat_o = {adr_i, dat_i[27:0]} ^ {32{we_i}};
endmodule
module own(input clk, input ack, output reg cyc, output we);
  always @(posedge clk) cyc <= ~ack;
  assign we = ~cyc;
endmodule
module shared(input clk, output [31:0] seen);
  wire cyc, we, ack;
  own u_own(.clk(clk), .ack(ack), .cyc(cyc), .we(we));
  bus u_bus(.clk_i(clk), .cyc_i(cyc), .stb_i(cyc), .we_i(we), .adr_i(4'd3), .dat_i(32'd5), .dat_o(seen), .ack_o(ack));
endmodule
)";
  static const Scratch scratch;
  PlanWishbone wishbone;
  wishbone.isConnected = true;
  wishbone.instance = "u_bus";
  wishbone.addressBits = 4;
  wishbone.pins = {{WishboneSignal::Cycle, "cyc_i", 1},   {WishboneSignal::Strobe, "stb_i", 1},
                   {WishboneSignal::Write, "we_i", 1},    {WishboneSignal::Address, "adr_i", 4},
                   {WishboneSignal::DataIn, "dat_i", 32}, {WishboneSignal::DataOut, "dat_o", 32},
                   {WishboneSignal::Ack, "ack_o", 1}};
  // The strobe inside of the slave is the shared one.
  static const Inserted inserted(scratch.write("shared.v", kDesign), "shared", "clk", {"ack", "u_bus/stb_i"}, wishbone);
  return inserted;
}

TEST(Proof, HoldsForWhatIsWritten) {
  for (const Inserted* inserted : {&tricky(), &unusual()}) {
    ProofReport report;
    EXPECT_EQ(plain(inserted->prove(inserted->verilog, report)), "holds");
    EXPECT_EQ(report.probesChecked, inserted->plan.cores[0].probeWidth() + 2);  // the clock and the trigger's bit too
    EXPECT_GE(report.modulesProved, 7);
  }
}

TEST(Proof, RefusesEveryTamperedVersion) {
  int none = 0;
  const QCoreApplication application(none, nullptr);  // frees what Qt keeps for the patterns below
  const struct {
    const Inserted& inserted;
    const char* pattern;
    const char* replacement;  // \\1 ... from the pattern
    const char* complaint;
  } tampers[] = {
      // Logic: an operator, another bit, an inversion, a constant, swapped branches, a range, an unknown value.
      {tricky(), "(module leaf__ostrel.*?= value) \\+ ", "\\1 - ", "the next value of the register \"count["},
      {tricky(), "(module leaf\\(.*?)value\\[1\\];", "\\1value[2];", "module leaf: the "},
      {tricky(), "~ slow;", "slow;", "module divider: the next value of the register \"slow\""},
      {unusual(), "32'd3;", "32'd2;", "the next value of the register \"n["},
      {unusual(), "\\? a\\[0\\] : 1'bz", "? 1'bz : a[0]", "module branches: the output \"pad\""},
      {unusual(), "a\\[6:4\\] /", "a[5:3] /", "the next value of the register \"n["},
      {unusual(), "(module flag.*?= ~ )i", "\\1(i ? i : 1'hx)", "and the written design x"},
      {unusual(), "1'bz;", "1'h0;", "module branches: the output \"pad\""},
      {unusual(), "(\\[5\\] = 7'h)6d", "\\g6c", "module segment_table: the output \"segments[0]\""},
      {unusual(), "4'b1x0x", "4'b1x1x", "module branches: the output \"y["},
      // A bus that the Wishbone master takes without being asked, and an answer to it that the design sees.
      {shared(), "\\? (_\\d+_) : cyc;", "? cyc : \\1;", "of the instance \"u_bus\" differs"},
      {shared(), "(assign ack = _\\d+_ \\? )1'h0 : (_\\d+_)", "\\1\\2 : 1'h0", "\"ack\" "},
      // Registers: clock, edge, polarity of a reset, reset value, initial value, enable, a loop.
      {tricky(), "(module divider.*?)posedge", "\\1negedge", "the clock of the register \"slow\""},
      {tricky(), "posedge slow\\)", "posedge clk)", "the clock of the register \"slow_count"},
      {tricky(), "posedge rst", "negedge rst", "module tricky"},
      {tricky(), "slow_count = 2'h2", "slow_count = 2'h1", "initial value"},
      {unusual(), "rst \\? 6'h05", "rst ? 6'h04", "the next value of the register \"n[0]\""},
      {unusual(), "a\\[7\\] \\? (\\w+\\[5:0\\]) : n", "\\1", "the next value of the register \"n["},
      {unusual(), "if \\(en\\)", "if (!en)", "module loops"},
      {unusual(), "through = 4'h6", "through = 4'h4", "the net \"through[1]\""},
      {unusual(), "(= en \\? d\\[7:4\\] : )ring", "\\g4'h0", "module loops: the net \"q["},
      // Memories: contents, a missing memory, and each port's clock, enable, address and data.
      {tricky(), "words\\[3\\] = 16'h3", "words[3] = 16'h2", "other contents"},
      {tricky(), "(module store.*?)reg \\[15:0\\] words \\[.*?(assign ostrel_probe[^;]*;).*?endmodule",
       "\\1always @(posedge clk) out <= in;\n\\2\nendmodule", "module store"},
      {tricky(), "ram\\[x\\[1:0\\]\\];", "ram[x[2:1]];", "module corner"},
      {tricky(), "(module corner.*?)ram\\[(_\\d+_)\\] <= (_\\d+_);", "\\1ram[x[3:2]] <= \\3;",
       "the address of a write"},
      {tricky(), "(module corner.*?)ram\\[(_\\d+_)\\] <= (_\\d+_);", "\\1ram[\\2 ^ 2'bx0] <= \\3;",
       "the address of a write"},
      {tricky(), "(module corner.*?)ram\\[(_\\d+_)\\] <= (_\\d+_);", "\\1ram[\\2] <= x[4] ? 2'h1 : 2'hx;",
       "the data of a write"},
      {unusual(), "posedge clk(\\) begin\\s*if \\(_\\d+_\\[7\\]\\)\\s*words)", "negedge clk\\1",
       "the clock of a write"},
      {unusual(), "if \\(_\\d+_\\[7\\]\\)(\\s*words)", "if (clk)\\1", "the enable of a write"},
      {unusual(), "if \\(_\\d+_\\[7\\]\\)(\\s*words.*?) <= (_\\d+_);", "begin\\1 <= \\2; end", "the enable of a write"},
      {unusual(), "\\[15:0\\];(\\s*always @\\(posedge clk\\) begin\\s*if)", "[14:0];\\1", "has another size"},
      // What constants leave over, and registers on inouts.
      {unusual(), "(module constants.*?begin)(\\s*end\\s*assign)", "\\1 never[0] <= a[3:0];\\2",
       "the enable of a write"},
      {unusual(), "never\\[1\\] = 4'h6", "never[1] = 4'h7", "other contents"},
      {unusual(), "single\\[2'h0\\]", "single[2'h1]", "the address of a write"},
      {unusual(), "(\\^ 4'h)9", "\\g8", "module constants: the output \"y[0]\""},
      {unusual(), "\\+ out\\[1\\];", "+ out[0];", "the output \"pins[1]\""},
      {unusual(), "(reg \\[1:0\\] out = 2'h)3", "\\g1", "\"out[1]\" has another initial value"},
      // Instances and nets: an added driver, a lost one, another type, swapped pins, parameters, a probe.
      {tricky(), "(module pair.*?)endmodule", "\\1assign left = step[0] ? 4'h0 : 4'hz;\nendmodule", "module pair"},
      {tricky(), "(module bare_pad.*?)endmodule", "\\1assign io = seen ? 1'b0 : 1'bz;\nendmodule", "module bare_pad"},
      {tricky(), "(\\.address\\(stimulus)\\[5:2\\]", "\\1[6:3]", "the pin \"address"},
      {unusual(), "flag z_sink \\(.*?\\);", "", "lost its instance \"z_sink\""},
      {unusual(), "(module unusual.*?)flag z_sink", "\\1other z_sink", "z_sink"},
      {unusual(), "\\.a\\(a\\[4:1\\]\\),\\s*\\.b\\(a\\[7:4\\]\\)", ".a(a[7:4]), .b(a[4:1])", "the pin \""},
      {tricky(), "(\\.c0_probe\\(\\{ )(.*?), (.*?),", "\\1\\3, \\2,", "looks at another net"},
      {tricky(), "(\\.jtag_tck\\(ostrel\\w*_)tck", "\\1tms", "_tck\" is not connected to the debug module"},
      {tricky(), "= \\{ value\\[0\\], value\\[1\\]", "= { value[1], value[0]", "looks at another net"},
  };
  for (const auto& tamper : tampers) {
    SCOPED_TRACE(std::string(tamper.pattern) + " by " + tamper.replacement);
    const QRegularExpression pattern(tamper.pattern, QRegularExpression::DotMatchesEverythingOption);
    const QString original = tamper.inserted.verilog;
    const QRegularExpressionMatch match = pattern.match(original);
    QString text = tamper.replacement;
    text.replace("\\g", match.captured(1));  // before a digit
    for (int group = 1; group <= match.lastCapturedIndex(); ++group)
      text.replace(QString("\\%1").arg(group), match.captured(group));
    QString tampered = original;
    tampered.replace(match.capturedStart(), match.capturedLength(), text);
    if (!match.hasMatch() || tampered == original) {
      ADD_FAILURE() << "nothing to tamper with";
      continue;
    }
    ProofReport report;
    EXPECT_TRUE(has(tamper.inserted.prove(tampered, report), tamper.complaint));
  }
}

}  // namespace
}  // namespace ost
