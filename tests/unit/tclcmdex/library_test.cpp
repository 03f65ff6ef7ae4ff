// What the commands of the package do not ask of the two libraries: absent words and defaults, registering once more, a
// sink in the place of the console, and names of pages that must never reach the file system. tests/tcl has the rest.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "framework/hlp_help.h"
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

namespace fs = std::filesystem;

TEST(HelpPage, IsFoundByNameAndNeverOutsideTheHelpFolders) {
  const fs::path root = fs::path(::testing::TempDir()) / "hlp_help_test";
  fs::create_directories(root / "pages" / "folder.txt");
  std::ofstream(root / "pages" / "ost_core.txt") << "core page\n";
  std::ofstream(root / "pages" / "ost_core.add.txt") << "add page\n";
  std::ofstream(root / "secret.txt") << "secret\n";
  setenv("OST_HELP_PATH", ("/nowhere:" + (root / "pages").string()).c_str(), 1);

  std::string error = "old", text = "old", extra = "old";
  const auto page = [&](std::string name) { return hlp_help(name.data(), error, text, extra) ? text : "no page"; };
  EXPECT_EQ(page("ost_core"), "core page\n");
  EXPECT_EQ(error + extra, "");
  EXPECT_EQ(page("ost_core add"), "add page\n");
  for (const std::string name : {"ost_tu", "folder", "", "../secret", "ost_core.add", "ost_core  add", " ost_core",
                                 "ost_core ", "pages/ost_core", "ost_core\n", "\xff"}) {
    EXPECT_EQ(page(name), "no page") << name;
    EXPECT_EQ(text, "");
    EXPECT_NE(error.find('"' + name + '"'), std::string::npos) << error;
  }
  EXPECT_EQ(page(std::string(5000, 'a')), "no page");
  EXPECT_FALSE(hlp_help(nullptr, error, text, extra));

  unsetenv("OST_HELP_PATH");  // Now beside the library.
  EXPECT_EQ(page("no_such_page"), "no page");
  EXPECT_NE(error.find("/lib/help"), std::string::npos) << error;
  fs::remove_all(root);
}

}  // namespace
