// Asking for memory before a change, so that its end is met while nothing has been changed yet.
#pragma once

#include <cstddef>

namespace ost {

/// True when `bytes` could be had at once.
bool hasMemory(std::size_t bytes);
/// Throws std::bad_alloc when they could not.
void requireMemory(std::size_t bytes);

}  // namespace ost
