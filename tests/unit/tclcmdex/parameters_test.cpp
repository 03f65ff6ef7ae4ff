// The parser of option words: placing, order, repetition, the end of options, and what it refuses.
#include <gtest/gtest.h>

#include <sstream>

#include "framework/tcl_cmdex.h"

using tcl_cmdex::CheckCmdParameters;
using tcl_cmdex::TclCmdParametersChecker;

namespace {

/// Parses the blank-separated words after a sub-command with -core (single), -insert_core (multiple, default
/// "preset") and -force (flag); answers "core|multi,multi|flag|value,value", or "refused".
std::string parsed(const std::string& text) {
  std::istringstream in("sub " + text);
  std::vector<std::string> words;
  for (std::string word; in >> word;) words.push_back(word == "{}" ? "" : word);
  std::vector<const char*> argv;
  for (const std::string& word : words) argv.push_back(word.c_str());

  TclCmdParametersChecker checker;
  checker.setOptionValue("core", nullptr);
  checker.addMultipleValueOptionValue("insert_core", "preset");
  checker.setFlag("force", false);
  if (!CheckCmdParameters(static_cast<int>(argv.size()), argv.data(), checker)) return "refused";
  const auto joined = [](const std::vector<std::string>& list) {
    std::string all;
    for (const std::string& item : list) all += (all.empty() ? "" : ",") + item;
    return all;
  };
  return checker.getOptionValue("core") + '|' + joined(checker.getMultiValuesOptionValue("insert_core")) + '|' +
         (checker.isFlagSet("force") ? "force" : "") + '|' + joined(checker.values);
}

TEST(Parameters, PlacesEveryWordOrRefuses) {
  const std::vector<std::pair<const char*, const char*>> cases = {
      {"", "|preset||"},
      {"a -core c1 b -force", "c1|preset|force|a,b"},
      {"-core c1 -core c2", "c2|preset||"},
      {"-insert_core a -insert_core b", "|a,b||"},
      {"-core -force x", "-force|preset||x"},
      {"-core --", "--|preset||"},
      {"-core {}", "|preset||"},
      {"-- -core c1 --", "|preset||-core,c1,--"},
      {"-cor c1", "refused"},
      {"-core", "refused"},
      {"-insert_core", "refused"},
      {"-", "refused"},
      {"-5", "refused"},
      {"--force", "refused"},
      {"-FORCE", "refused"},
  };
  for (const auto& item : cases) EXPECT_EQ(parsed(item.first), item.second) << item.first;
}

TEST(Parameters, ReadsAbsentThingsAsEmpty) {
  const TclCmdParametersChecker checker;
  EXPECT_EQ(checker.getOptionValue("core"), "");
  EXPECT_TRUE(checker.getMultiValuesOptionValue("insert_core").empty());
  EXPECT_FALSE(checker.isFlagSet("force"));
  EXPECT_EQ(checker.getValueAt(0), "");
  EXPECT_TRUE(TclCmdParametersChecker::isValueParameter(""));
  EXPECT_FALSE(TclCmdParametersChecker::isValueParameter("-x"));
  EXPECT_FALSE(TclCmdParametersChecker::isValueParameter(nullptr));
}

}  // namespace
