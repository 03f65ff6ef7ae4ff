// The options of one family, as the option commands collect them from words of the form Option=value.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "framework/export.h"

/// One option of a family.
struct OptionEntry {
  std::string name;   ///< Compared exactly.
  std::string value;  ///< As typed after "="; empty until given.
  bool set;           ///< True once given.
};

/// Matches the entry of one option name, byte for byte.
class OST_EXPORT_CPP IsOption {
 public:
  explicit IsOption(const std::string& name);
  bool operator()(const OptionEntry& entry) const;

 private:
  std::string name_;
};

/// All options of a family in their fixed order. The setters know an option by its position.
class OST_EXPORT_CPP OptionList {
 public:
  void append(const char* name);
  /// The entry of that name; null when the family has none.
  OptionEntry* find(const std::string& name);
  std::size_t size() const;
  const OptionEntry& at(std::size_t index) const;

 private:
  std::vector<OptionEntry> entries_;
};

namespace ost_command {

/// Splits `word` at its first "="; neither side is trimmed. False when there is none.
bool splitOptionWord(const std::string& word, std::string& name, std::string& value);

}  // namespace ost_command
