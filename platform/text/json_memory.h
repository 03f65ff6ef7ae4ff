// RapidJSON's memory, where a lack of it must not crash.
#pragma once

#include <cstdlib>
#include <new>

namespace ost {

/// In place of rapidjson::CrtAllocator, whose null pointers RapidJSON writes through: throws std::bad_alloc.
struct JsonAllocator {
  static const bool kNeedFree = true;
  void* Malloc(std::size_t size) { return Realloc(nullptr, 0, size); }
  void* Realloc(void* old, std::size_t, std::size_t size) {
    if (size == 0) {
      std::free(old);
      return nullptr;
    }
    void* fresh = std::realloc(old, size);
    if (!fresh) throw std::bad_alloc();
    return fresh;
  }
  static void Free(void* memory) { std::free(memory); }
};

}  // namespace ost
