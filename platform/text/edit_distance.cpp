// The edit distance, in the band around the diagonal that the limit leaves.
#include "platform/text/edit_distance.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace ost {

int editDistance(std::string_view a, std::string_view b, int limit) {
  a = a.substr(0, kMaxComparedBytes);
  b = b.substr(0, kMaxComparedBytes);
  while (!a.empty() && !b.empty() && foldedByte(a.front()) == foldedByte(b.front())) {
    a.remove_prefix(1);
    b.remove_prefix(1);
  }
  while (!a.empty() && !b.empty() && foldedByte(a.back()) == foldedByte(b.back())) {
    a.remove_suffix(1);
    b.remove_suffix(1);
  }
  const int rows = int(a.size()), columns = int(b.size());
  if (std::abs(rows - columns) > limit) return limit + 1;
  if (rows == 0 || columns == 0) return rows + columns;
  // Only the band of `limit` cells on either side of the diagonal can hold a distance within the limit.
  std::array<std::array<int, kMaxComparedBytes + 2>, 3> lines;
  for (auto& line : lines) line.fill(limit + 1);
  for (int j = 0; j <= std::min(columns, limit); ++j) lines[0][size_t(j)] = j;
  for (int i = 1; i <= rows; ++i) {
    auto& now = lines[size_t(i % 3)];
    const auto &before = lines[size_t((i + 2) % 3)], &before2 = lines[size_t((i + 1) % 3)];
    const int first = std::max(1, i - limit), last = std::min(columns, i + limit);
    now[size_t(first - 1)] = first == 1 ? std::min(i, limit + 1) : limit + 1;
    int best = now[size_t(first - 1)];
    for (int j = first; j <= last; ++j) {
      const unsigned char x = foldedByte(a[size_t(i - 1)]), y = foldedByte(b[size_t(j - 1)]);
      const size_t at = size_t(j);
      int cost = std::min({before[at] + 1, now[at - 1] + 1, before[at - 1] + (x != y)});
      if (i > 1 && j > 1 && x == foldedByte(b[at - 2]) && foldedByte(a[size_t(i - 2)]) == y) {
        cost = std::min(cost, before2[at - 2] + 1);
      }
      now[at] = std::min(cost, limit + 1);
      best = std::min(best, now[at]);
    }
    now[size_t(last + 1)] = limit + 1;
    if (best > limit) return limit + 1;
  }
  return lines[size_t(rows % 3)][size_t(columns)];
}

}  // namespace ost
