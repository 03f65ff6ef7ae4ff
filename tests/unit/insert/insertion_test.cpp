// Which modules are made unique, what stays as the user wrote it, and trigger outputs.
#include <QRegularExpression>

#include "platform/plan/capture_map.h"
#include "tests/unit/insert/tricky.h"

namespace ost {
namespace {

TEST(Insertion, MakesUniqueOnlyWhatIsProbedDifferently) {
  Scratch scratch;
  ASSERT_EQ(insertTricky(trickyPlan(), scratch), "");
  const QString verilog = scratch.read("out/tricky_debug.v");
  const auto typeOf = [&](const QString& inModule, const QString& instance) {
    const QRegularExpression cell(
        "\\nmodule " + inModule + " ?\\((?:(?!\\nendmodule).)*\\n  (\\S+) +" + instance + " \\(",
        QRegularExpression::DotMatchesEverythingOption);
    return cell.match(verilog).captured(1);
  };
  // Both pairs are probed, in different instances of theirs: one keeps the name; leaves that nobody probes stay.
  const QString one = typeOf("tricky", "u_one"), two = typeOf("tricky", "u_two");
  EXPECT_TRUE(one != two && (one == "pair" || two == "pair")) << plain(one + ' ' + two);
  EXPECT_TRUE(typeOf(one, "u_left").startsWith("leaf__ostrel"));
  EXPECT_TRUE(typeOf(two, "u_right").startsWith("leaf__ostrel"));
  EXPECT_EQ(typeOf(one, "u_right") + typeOf(two, "u_left") + typeOf("tricky", "u_store"), "leafleafstore");
  // What the user wrote into the source stays in the output.
  EXPECT_TRUE(has(verilog, "ASYNC_REG = \"TRUE\"") && has(verilog, "ram_style = \"block\""));
  // The pins avoid the user's ostrel_tck, and the map says so.
  InsertPlan map;
  QString error;
  ASSERT_TRUE(readCaptureMap(scratch.read("out/capture_map.json"), map, error)) << plain(error);
  EXPECT_EQ(map.pins.tdo, "ostrel1_tdo");
}

TEST(Insertion, TriggerOutputIsAPortOrANetOfTheGivenName) {
  Scratch scratch;
  InsertPlan plan = trickyPlan();
  plan.cores[0].triggerOutName = "fired";
  const struct {
    bool port, net;
    const char *declaration, *driven;
  } table[] = {{true, false, "output fired;", "fired"},
               {false, true, "(* keep = 32'd1 *)\n  wire fired;", "fired"},
               {true, true, "(* keep = 32'd1 *)\n  wire fired_net;", "fired_net"}};
  for (const auto& row : table) {
    plan.cores[0].triggerOutIo = row.port;
    plan.cores[0].triggerOutNet = row.net;
    ASSERT_EQ(insertTricky(plan, scratch), "");
    const QString verilog = scratch.read("out/tricky_debug.v");
    EXPECT_TRUE(has(verilog, row.declaration));
    EXPECT_TRUE(verilog.contains(QString(".c0_trig_out(") + row.driven + ")")) << row.driven;
    EXPECT_EQ(verilog.contains("output fired;"), row.port);
    EXPECT_EQ(verilog.contains("assign fired = fired_net;"), row.port && row.net);
  }
  plan.cores[0].triggerOutName = "slow";
  EXPECT_TRUE(has(insertTricky(plan, scratch).c_str(), "\"slow\""));
}

TEST(Insertion, ThatIsCancelledLeavesTheOldResult) {
  Scratch scratch;
  ASSERT_EQ(insertTricky(trickyPlan(), scratch), "");
  const QByteArray before = scratch.read("out/capture_map.json");
  for (int left : {0, 2}) {
    InsertionHooks hooks;
    hooks.idle = [&left] { return left-- > 0; };
    EXPECT_NE(insertTricky(trickyPlan(), scratch, hooks), "");
    EXPECT_EQ(scratch.entries(), QStringList("out"));
    EXPECT_EQ(scratch.read("out/capture_map.json"), before);
  }
}

}  // namespace
}  // namespace ost
