// The patterns of made-up names.
#include "platform/design/own_names.h"

namespace ost {

bool isFunctionHelper(std::string_view name) {
  size_t at = name.find("$func$");
  if (at == std::string_view::npos) return false;
  for (at = name.find('$', at + 6); at != std::string_view::npos; at = name.find('$', at + 1)) {
    const size_t end = name.find_first_not_of("0123456789", at + 1);
    if (end != std::string_view::npos && end > at + 1 && name[end] == '.') return true;
  }
  return false;
}

bool isGhdlName(std::string_view name) {
  const size_t end = name.find_first_not_of("0123456789", 1);
  if (name.empty() || name[0] != 'n' || end == 1 || end == std::string_view::npos) return false;
  const std::string_view port = name.substr(end);
  return port == "_o" || port == "_q" || port == "_data";
}

}  // namespace ost
