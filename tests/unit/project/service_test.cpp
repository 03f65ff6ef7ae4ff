// The message catalogue through the service's one way of printing.
#include <gtest/gtest.h>

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

TEST(MessageTest, ArgumentsAreTakenAsTheyAre) {
  EXPECT_EQ(printed("0111", "x", ""), "Message 0111 x\n");
  EXPECT_NE(printed("0157", "trace", "%1%r%2").find("option '%1%r%2';"), std::string::npos);
}

}  // namespace
