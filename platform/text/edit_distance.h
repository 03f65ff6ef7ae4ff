// The one measure of how far a mistyped name is from another. Of the standard library only, so that every library may
// take it in.
#pragma once

#include <cstddef>
#include <string_view>

namespace ost {

constexpr std::size_t kMaxComparedBytes = 64;  ///< From a name's start; the rest is not compared.

/// A byte as names are compared: letters without regard to case, and the two separators of hierarchy paths as one.
inline unsigned char foldedByte(char c) {
  return static_cast<unsigned char>(c >= 'A' && c <= 'Z' ? c + 32 : c == '.' ? '/' : c);
}

/// Edits (insertions, deletions, replacements, swaps of neighbours) between two names as far as they are compared;
/// `limit` + 1 when more are needed. `limit` is at most kMaxComparedBytes.
int editDistance(std::string_view a, std::string_view b, int limit);

}  // namespace ost
