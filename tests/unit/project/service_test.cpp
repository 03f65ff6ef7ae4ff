// The message catalogue through the service's one way of printing.
#include <gtest/gtest.h>

#include <set>

#include "framework/ist_com_data.h"
#include "platform/tclcmdex/host.h"

namespace {

std::string printed(const std::string& code, const std::string& arg1, const std::string& arg2) {
  std::string text;
  tcl_cmdex::setConsoleSink(
      [](void* user, Tcl_Interp*, const char* line, int) { *static_cast<std::string*>(user) += line; }, &text);
  mero::ostrel::IstComData::getInstance()->PrintMessage(code, arg1, arg2);
  tcl_cmdex::setConsoleSink(nullptr, nullptr);
  return text;
}

TEST(MessageTest, EveryCodeHasATextOfItsOwnAndTakesArgumentsAsTheyAre) {
  std::set<std::string> texts;
  for (int number = 100; number <= 167; ++number) {
    if (number == 111 || number == 117) continue;  // codes that no command prints
    const std::string line = printed("0" + std::to_string(number), "A", "B");
    EXPECT_TRUE(line.rfind("Message ", 0) && line.find('%') == line.npos && line.find('\n') == line.size() - 1) << line;
    EXPECT_TRUE(texts.insert(line).second) << line << " is there twice";
  }
  EXPECT_EQ(printed("0111", "x", ""), "Message 0111 x\n");
  EXPECT_NE(printed("0157", "trace", "%1%r%2").find("option '%1%r%2';"), std::string::npos);
}

}  // namespace
