// What the commands of the package do not ask of the library: absent words and defaults, registering once more, and a
// sink in the place of the console. tests/tcl has the rest.
#include <gtest/gtest.h>

#include "platform/tclcmdex/host.h"

using namespace tcl_cmdex;

namespace {

TEST(Parameters, ReadAbsentThingsAsEmpty) {
  const TclCmdParametersChecker checker;
  EXPECT_EQ(checker.getOptionValue("core"), "");
  EXPECT_TRUE(checker.getMultiValuesOptionValue("insert_core").empty());
  EXPECT_FALSE(checker.isFlagSet("force"));
  EXPECT_EQ(checker.getValueAt(0), "");
  EXPECT_TRUE(TclCmdParametersChecker::isValueParameter(""));
  EXPECT_FALSE(TclCmdParametersChecker::isValueParameter(nullptr));
}

TEST(Parameters, FirstValueTakesTheDefaultsPlace) {
  TclCmdParametersChecker checker;
  checker.setOptionValue("core", "c0");
  checker.addMultipleValueOptionValue("insert_core", "preset");
  const char* words[] = {"run", "-core", "c1", "-insert_core", "a", "-insert_core", "b"};
  EXPECT_TRUE(CheckCmdParameters(1, words, checker));
  EXPECT_EQ(checker.getOptionValue("core"), "c0");
  EXPECT_EQ(checker.getMultiValuesOptionValue("insert_core"), std::vector<std::string>{"preset"});
  EXPECT_TRUE(CheckCmdParameters(7, words, checker));
  EXPECT_EQ(checker.getOptionValue("core"), "c1");
  EXPECT_EQ(checker.getMultiValuesOptionValue("insert_core"), (std::vector<std::string>{"a", "b"}));
}

TEST(Table, RegistersAgainInPlace) {
  TclCmdMap table("Test");
  table.registerCmd("late", "sub", "old\n", nullptr, nullptr);  // without a command-level entry before
  const TclCmd* entry = &table.commands.at("late").subCommands.at("sub");
  table.registerCmd("late", "sub", "new\n", nullptr, &table);
  const TclCmd copy = table.commands.at("late");  // by value, sub-commands included
  EXPECT_EQ(entry, &table.commands.at("late").subCommands.at("sub"));
  EXPECT_EQ(copy.subCommands.at("sub").help, "new\n");
  EXPECT_EQ(copy.subCommands.at("sub").name, "late sub");
  EXPECT_EQ(copy.subCommands.at("sub").clientData, &table);
}

TEST(Console, GoesToTheHostsSink) {
  std::string seen;
  setConsoleSink([](void* user, Tcl_Interp*, const char* text, int) { *static_cast<std::string*>(user) += text; },
                 &seen);
  TclMsgOutput(nullptr, "!", 0);
  TclMsgOutput(nullptr, nullptr, 0);
  setConsoleSink(nullptr, nullptr);
  EXPECT_EQ(seen, "!");
}

}  // namespace
