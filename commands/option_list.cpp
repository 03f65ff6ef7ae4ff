// The list of a family's options and the lookup in it.
#include "commands/option_list.h"

#include <algorithm>

IsOption::IsOption(const std::string& name) : name_(name) {}

bool IsOption::operator()(const OptionEntry& entry) const {
  return entry.name == name_;
}

void OptionList::append(const char* name) {
  const OptionEntry entry = {name, std::string(), false};
  entries_.push_back(entry);
}

OptionEntry* OptionList::find(const std::string& name) {
  const std::vector<OptionEntry>::iterator found = std::find_if(entries_.begin(), entries_.end(), IsOption(name));
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
  name = word.substr(0, equals);
  value = word.substr(equals + 1);
  return true;
}

}  // namespace ost_command
