// Asking for memory before a change, so that its end is met while nothing has been changed yet.
#pragma once

#include <cstddef>

#include "framework/ist_data.h"

namespace ost {

/// True when `bytes` could be had at once.
ISTDATA_API bool hasMemory(std::size_t bytes);
/// Throws std::bad_alloc when they could not.
ISTDATA_API void requireMemory(std::size_t bytes);

}  // namespace ost
