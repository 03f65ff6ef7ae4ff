// Yosys keeps an enumerated type as one attribute a value: "enum_value_101" is the name, after a backslash.
#include "platform/design/enum_types.h"

#include <algorithm>

#include "platform/design/own_names.h"
#include "platform/text/byte_text.h"

namespace ost {
namespace {

constexpr int kMaxNames = 4096;  ///< Of a type with more, the values stay numbers.

}  // namespace

void EnumTypes::take(std::string_view attribute, std::string_view text) {
  const std::string_view prefix = "enum_value_";
  if (attribute.substr(0, prefix.size()) != prefix || text.size() < 2 || text[0] != '\\' || names_.size() > kMaxNames)
    return;
  QByteArray bits(attribute.data() + prefix.size(), int(attribute.size() - prefix.size()));
  if (bits.count('0') + bits.count('1') != bits.size() || !isPrintableName(text)) return;
  std::reverse(bits.begin(), bits.end());
  names_.append({textFromView(text.substr(1)), bits});
}

int EnumTypes::typeOf(int width) {
  if (names_.isEmpty() || names_.size() > kMaxNames) return -1;
  QByteArray key;
  for (const EnumName& entry : qAsConst(names_)) {
    if (entry.bits.size() != width) return -1;
    key += entry.bits + entry.name.toLatin1() + '\n';
  }
  const auto known = numbers_.constFind(key);
  if (known != numbers_.constEnd()) return *known;
  const int number = int(types_.size());
  types_.push_back(names_);
  numbers_.insert(key, number);
  return number;
}

}  // namespace ost
