// Help pages by name, and the names that must never reach the file system.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "framework/hlp_help.h"

namespace {

TEST(HelpPage, IsFoundByNameAndNeverOutsideTheHelpFolders) {
  namespace fs = std::filesystem;
  const fs::path root = fs::path(::testing::TempDir()) / "hlp_help_test";
  fs::create_directories(root / "pages" / "folder.txt");
  std::ofstream(root / "pages" / "ost_core.txt") << "core page\n";
  std::ofstream(root / "pages" / "ost_core.add.txt") << "add page\n";
  std::ofstream(root / "secret.txt") << "secret\n";
  setenv("OST_HELP_PATH", ("/nowhere:" + (root / "pages").string()).c_str(), 1);

  // {name, expected page}; null for no page at all.
  const std::vector<std::pair<std::string, const char*>> cases = {
      {"ost_core", "core page\n"},
      {"ost_core add", "add page\n"},
      {"ost_tu", nullptr},
      {"folder", nullptr},
      {"", nullptr},
      {"../secret", nullptr},
      {"ost_core.add", nullptr},
      {"ost_core  add", nullptr},
      {" ost_core", nullptr},
      {"ost_core ", nullptr},
      {"pages/ost_core", nullptr},
      {"ost_core\n", nullptr},
      {"\xff", nullptr},
      {std::string(5000, 'a'), nullptr},
  };
  for (const auto& item : cases) {
    std::string name = item.first, error = "old", text = "old", extra = "old";
    EXPECT_EQ(hlp_help(name.data(), error, text, extra), item.second != nullptr) << name;
    EXPECT_EQ(text, item.second != nullptr ? item.second : "") << name;
    EXPECT_EQ(extra, "");
    EXPECT_EQ(error.empty(), item.second != nullptr) << name;
    EXPECT_TRUE(item.second != nullptr || error.find('"' + name + '"') != std::string::npos) << error;
  }
  std::string error, text, extra;
  EXPECT_FALSE(hlp_help(nullptr, error, text, extra));

  unsetenv("OST_HELP_PATH");  // Now beside the library.
  char missing[] = "no_such_page";
  EXPECT_FALSE(hlp_help(missing, error, text, extra));
  EXPECT_NE(error.find("/lib/help"), std::string::npos) << error;
  fs::remove_all(root);
}

}  // namespace
