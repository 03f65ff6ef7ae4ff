// The list of a family's options and the lookup in it.
#include "commands/option_list.h"

#include <algorithm>
#include <functional>

IsOption::IsOption(const std::string& name) : name_(name) {}

bool IsOption::operator()(const OptionEntry& entry) const {
  return entry.name == name_;
}

void OptionList::append(const char* name) {
  const std::size_t largestFamily = 16;
  if (entries_.empty()) entries_.reserve(largestFamily);
  entries_.push_back(OptionEntry{name, std::string(), false});
}

OptionEntry* OptionList::find(const std::string& name) {
  // By reference: the algorithm copies its predicate several times, name and all.
  const IsOption isOption(name);
  const std::vector<OptionEntry>::iterator found = std::find_if(entries_.begin(), entries_.end(), std::cref(isOption));
  return found == entries_.end() ? nullptr : &*found;
}

std::size_t OptionList::size() const {
  return entries_.size();
}

const OptionEntry& OptionList::at(std::size_t index) const {
  return entries_[index];
}

namespace ost_command {

bool splitOptionWord(const std::string& word, std::string& name, std::string& value) {
  const std::string::size_type equals = word.find('=');
  if (equals == std::string::npos) return false;
  name.assign(word, 0, equals);
  value.assign(word, equals + 1, std::string::npos);
  return true;
}

}  // namespace ost_command
