// Drivers and canonical names through the hierarchy.
#include "platform/insert/netlist.h"

#include "tests/unit/insert/tricky.h"

namespace ost {
namespace {

TEST(Netlist, FindsWhatDrivesABitThroughPorts) {
  const struct {
    const char* net;
    BitDriver::Kind kind;
    const char* clock;  // null: none
  } table[] = {
      {"a[2]", BitDriver::FlipFlop, "clk"},                   // out of u_one, out of its u_left
      {"u_one/u_left/step[1]", BitDriver::TopPort, nullptr},  // in from the top's stimulus
      {"u_one/u_right/step[1]", BitDriver::Combinational, nullptr},
      {"slow_count[0]", BitDriver::FlipFlop, "u_div/slow"},  // its clock is a register below
      {"ostrel_debug_i[1]", BitDriver::FlipFlop, "clk"},     // asynchronous reset
      {"held", BitDriver::Latch, nullptr},
      {"u/pad/through", BitDriver::TopPort, nullptr},
      {"lanes[0].u_leaf/step[3]", BitDriver::Constant, nullptr},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.net);
    BitDriver driver;
    ASSERT_TRUE(trickyNetlist()->driver(bitOf(row.net), driver));
    EXPECT_EQ(int(driver.kind), int(row.kind));
    ASSERT_EQ(driver.hasClock, row.clock != nullptr);
    EXPECT_TRUE(!row.clock || driver.clock == trickyNetlist()->canonical(bitOf(row.clock)));
  }
  BitDriver driver;
  EXPECT_FALSE(trickyNetlist()->driver({"u_one/none", "x", 0, ""}, driver));
  EXPECT_FALSE(trickyNetlist()->driver({"", "a", 4, ""}, driver));
}

TEST(Netlist, AliasesHaveOneCanonicalBit) {
  const auto canonical = [](const char* net) { return trickyNetlist()->canonical(bitOf(net)); };
  EXPECT_EQ(canonical("u_two/u_right/clk").name, "clk");
  EXPECT_EQ(canonical("a[1]"), canonical("u_one/u_left/count[1]"));
  EXPECT_EQ(canonical("io_seen"), canonical("u/pad/io"));
  EXPECT_EQ(canonical("slow"), canonical("u_div/slow"));
  EXPECT_FALSE(canonical("a[1]") == canonical("a[2]"));
  EXPECT_FALSE(canonical("a[1]") == canonical("b[1]"));  // the same register of the sibling
}

}  // namespace
}  // namespace ost
