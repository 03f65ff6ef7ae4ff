// Help pages by name, and the names that must never reach the file system.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "framework/hlp_help.h"

namespace {

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
