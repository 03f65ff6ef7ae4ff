// Drivers and canonical names through the hierarchy.
#include "platform/insert/netlist.h"

#include <gtest/gtest.h>

#include "tests/unit/insert/tricky.h"

namespace ost {
namespace {

TEST(Netlist, FindsWhatDrivesABitThroughPorts) {
  struct Case {
    const char* net;
    BitDriver::Kind kind;
    const char* clock;  // null: none
  };
  const Case cases[] = {
      {"a[2]", BitDriver::FlipFlop, "clk"},                   // out of u_one, out of its u_left
      {"u_one/u_left/step[1]", BitDriver::TopPort, nullptr},  // in from the top's stimulus
      {"u_one/u_right/step[1]", BitDriver::Combinational, nullptr},
      {"slow", BitDriver::FlipFlop, "clk"},
      {"slow_count[0]", BitDriver::FlipFlop, "u_div/slow"},  // its clock is a register below
      {"ostrel_debug_i[1]", BitDriver::FlipFlop, "clk"},     // asynchronous reset
      {"held", BitDriver::Latch, nullptr},
      {"u/pad/through", BitDriver::TopPort, nullptr},
      {"word[3]", BitDriver::FlipFlop, "clk"},
      {"lanes[0].u_leaf/step[3]", BitDriver::Constant, nullptr},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.net);
    BitDriver driver;
    ASSERT_TRUE(trickyNetlist()->driver(bitOf(trickyDesign(), c.net), driver));
    EXPECT_EQ(int(driver.kind), int(c.kind));
    ASSERT_EQ(driver.hasClock, c.clock != nullptr);
    if (c.clock) {
      EXPECT_EQ(driver.clock, trickyNetlist()->canonical(bitOf(trickyDesign(), c.clock)));
    }
  }
  BitDriver driver;
  EXPECT_FALSE(trickyNetlist()->driver({QStringLiteral("u_one/none"), QStringLiteral("x"), 0, QString()}, driver));
  EXPECT_FALSE(trickyNetlist()->driver({QString(), QStringLiteral("a"), 4, QString()}, driver));
}

TEST(Netlist, AliasesHaveOneCanonicalBit) {
  const auto canonical = [](const char* net) { return trickyNetlist()->canonical(bitOf(trickyDesign(), net)); };
  EXPECT_EQ(canonical("clk"), canonical("u_two/u_right/clk"));
  EXPECT_EQ(canonical("a[1]"), canonical("u_one/u_left/count[1]"));
  EXPECT_EQ(canonical("io_seen"), canonical("u/pad/io"));
  EXPECT_EQ(canonical("slow"), canonical("u_div/slow"));
  EXPECT_FALSE(canonical("a[1]") == canonical("a[2]"));
  EXPECT_FALSE(canonical("a[1]") == canonical("b[1]"));  // the same register of the sibling
  EXPECT_EQ(canonical("u_store/clk").name, QStringLiteral("clk"));
}

}  // namespace
}  // namespace ost
