// Which net a name means, on a design made of traps, and what is said about names that mean none.
#include "tests/unit/read_design.h"

namespace ost {
namespace {

const char kTraps[] = R"(
(* ostrel_role = "dcu, jtag2wb_core" *)
module leaf #(parameter W = 4) (input clk, input [W-1:0] d, output reg [W-1:0] q);
  reg [7:0] mem [0:15];
  reg [0:7] up; reg [11:4] off; reg [2:-1] neg;
  (* ostrel_watch = " lock " *) wire [3:0] \x[1] ; (* ostrel_watch *) wire [3:0] x; (* ostrel_watch = 0 *) wire no;
  wire \$dollar ; wire [1:0] \back\slash ; wire \sp"q ;
  assign \x[1] = d; assign x = ~d;
  always @(posedge clk) begin q <= d; mem[d] <= up; up <= mem[q]; off <= up; neg <= up; end
endmodule
module top (input clk, input [7:0] d, output [3:0] q0);
  wire \u0/q ; wire [1:0] \gen[0].u/d ;
  assign \u0/q = d[0];
  leaf u0 (.clk(clk), .d(d[3:0]), .q(q0));
  leaf \a/b (.clk(clk), .d(d[3:0]), .q());
  genvar g;
  generate for (g = 0; g < 2; g = g + 1) begin : gen
    wire [2:0] w = g;
    leaf #(.W(6)) u (.clk(clk), .d(d[5:0]), .q());
  end
  if (0) begin wire no; end
  else if (0) begin : off wire [1:0] w = 1; end
  else if (1) begin : on wire [1:0] w = 2; leaf v (.clk(clk), .d(d[3:0]), .q()); end
  if (0) begin wire no; end else if (1) begin wire yes = 1; end
  endgenerate
  function f(input [7:0] a); f = ^a; endfunction
  wire parity = f(d);
  reg [1:0] shift [0:1];
  always @(posedge clk) begin shift[0] <= d; shift[1] <= shift[0]; end
endmodule
)";

/// Read once for all tests.
const Design& traps() {
  static QString error;
  static const auto read = readDesign(sourceOf({Scratch().write("traps.v", kTraps)}), error);
  if (!read) throw std::runtime_error(plain(error));
  return *read;
}

TEST(Names, resolve_to_the_bits_that_the_source_declares) {
  const struct {
    const char *typed, *path, *canonical, *firstBit;
    QVector<int> bits;
  } table[] = {
      {"clk[0]", "", "clk", "clk", {0}},
      {"d[3:1]", "", "d[3:1]", "d[3]", {3, 2, 1}},
      {"d[7:0]", "", "d", "d[7]", {7, 6, 5, 4, 3, 2, 1, 0}},
      {"a/b/up[1:3]", "\\a/b ", "a/b/up[1:3]", "a/b/up[1]", {6, 5, 4}},
      {"u0/off[11:10]", "u0", "u0/off[11:10]", "u0/off[11]", {7, 6}},
      {"u0/neg[-1]", "u0", "u0/neg[-1]", "u0/neg[-1]", {0}},
      {"gen[1].w[2]", "", "gen[1].w[2]", "gen[1].w[2]", {2}},
      {"gen[1].u/q[5]", "gen[1].u", "gen[1].u/q[5]", "gen[1].u/q[5]", {5}},
      // Yosys puts "genblk1." before what follows an "else if".
      {"on.w[1]", "", "genblk2.genblk1.on.w[1]", "genblk2.genblk1.on.w[1]", {1}},
      {"on.v/up[7]", "genblk2.genblk1.on.v", "genblk2.genblk1.on.v/up[7]", "genblk2.genblk1.on.v/up[7]", {0}},
      {"genblk3.yes", "", "genblk3.genblk1.yes", "genblk3.genblk1.yes", {0}},
      // An exact name comes before a bit select, and a net before an instance path; the escaped form reaches the other.
      {"u0/x[1]", "u0", "u0/x[1]", "u0/x[1][3]", {3, 2, 1, 0}},
      {"\\u0 /\\x [1]", "u0", "\\u0 /\\x [1]", "\\u0 /\\x [1]", {1}},
      {"u0/q", "", "u0/q", "u0/q", {0}},
      {"\\u0 /q", "u0", "\\u0 /\\q ", "u0/q[3]", {3, 2, 1, 0}},
      {"u0/$dollar", "u0", "u0/$dollar", "u0/$dollar", {0}},
      {"u0/\\back\\slash ", "u0", "u0/back\\slash", "u0/back\\slash[1]", {1, 0}},
      {"u0/sp\"q", "u0", "u0/sp\"q", "u0/sp\"q", {0}},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.typed);
    NetSelection found, again;
    QString error;
    ASSERT_TRUE(traps().resolve(row.typed, found, error) && traps().exists(row.typed)) << plain(error);
    EXPECT_EQ(plain(found.instancePath), row.path);
    EXPECT_EQ(plain(found.canonicalName), row.canonical);
    EXPECT_EQ(plain(found.bitNames.value(0)), row.firstBit);
    EXPECT_EQ(found.bits, row.bits);
    ASSERT_TRUE(traps().resolve(found.canonicalName, again, error)) << plain(error);
    EXPECT_TRUE(again.bits == found.bits && again.net == found.net);
  }
}

TEST(Names, that_mean_nothing_say_why_and_what_is_near) {
  const struct {
    const char *typed, *text, *near;
  } table[] = {
      {"u0/mem[3]", "\"u0/mem[3]\" is a memory, not a net", nullptr},
      {"u0", "\"u0\" is an instance, not a net: name one of its nets", nullptr},
      {"u0/up[3:1]", "against the declared order: \"up\" is declared [0:7]", "u0/up"},
      {"u0/off[3]", "lies outside the net: \"off\" is declared [11:4]", "u0/off"},
      {"u0/off[12]", "lies outside the net", "u0/off"},
      {"clk[1]", "\"clk\" is a single bit", "clk"},
      {"d[99999999999999999999]", "no net", "d"},
      {"u0.of", "no net \"u0.of\"", "u0/off"},
      {"U0/OFFF", "no net", "u0/off"},
      {"yes", "no net", nullptr},
      {"d.addr", "of a structure only the bits are known; \"d\" is declared [7:0]", nullptr},
      {"shift[2]", "\"shift\" is an array, name its elements, as in \"shift[0]\"", nullptr},
      {"", "name is empty", nullptr},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.typed);
    NetSelection untouched;
    untouched.net = "before";
    QString error;
    EXPECT_FALSE(traps().resolve(row.typed, untouched, error) || traps().exists(row.typed));
    EXPECT_EQ(untouched.net, "before");
    EXPECT_TRUE(has(error, row.text));
    EXPECT_TRUE(!row.near || traps().nearest(row.typed).value(0) == row.near);
  }
}

TEST(Names, are_listed_without_the_levels_of_else_if_and_lead_back) {
  Scratch scratch;
  QString error;
  const auto design =
      readDesign(sourceOf({scratch.write(
                     "t.v",
                     "module leaf(input i, output o); assign o = i; endmodule\nmodule t #(parameter A = 2)(input i);\n"
                     "if (A == 0) begin : a wire x; end else if (A == 1) begin : b wire x; end else begin : c wire x; "
                     "leaf u(i, x); end\n"
                     "if (A == 1) begin wire y; end else if (A == 2) begin wire y; end\n"
                     "if (A == 0) wire z; else if (A == 2) begin : d wire z; end\nwire \\genblk1.d.z ;\nendmodule\n")}),
                 error);
  ASSERT_TRUE(design) << plain(error);
  QStringList names;
  design->forEachNet([&](const NetName& net) {
    NetSelection found;
    EXPECT_TRUE(design->resolve(net.name, found, error)) << plain(error);
    names.append(net.name);
    return true;
  });
  names.sort();
  EXPECT_EQ(plain(names.join(' ')), "c.u/i c.u/o c.x d.z genblk1.d.z genblk2.y i");
}

TEST(Names, of_instances_and_roles) {
  EXPECT_EQ(instancePathKeys("\\a/b /$x/\\\\y "), QStringList({"a/b", "\\$x", "\\\\y"}));
  const DesignRoles& roles = traps().roles();
  traps().forEachNet([](const NetName& net) {  // No helper of a function.
    EXPECT_FALSE(net.name.contains('$') && net.name != "u0/$dollar" && !net.name.endsWith("/$dollar"))
        << plain(net.name);
    return true;
  });
  EXPECT_TRUE(roles.dcu && roles.jtag2wbCore && !roles.j2w && !roles.jtag2wb);
  QStringList watched;
  for (const SerdesBlock& block : traps().serdesBlocks(2))
    for (const WatchedNet& net : block.nets) watched += block.name + ": " + net.name + " " + net.word;
  EXPECT_EQ(plain(watched.join("; ")),
            "\\a/b : a/b/x signal; \\a/b : a/b/x[1] lock; gen[0].u: gen[0].u/x signal; gen[0].u: gen[0].u/x[1] lock");
}

}  // namespace
}  // namespace ost
