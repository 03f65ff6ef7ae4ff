// Tries whether memory can be had.
#include "platform/system/memory.h"

#include <cstdlib>
#include <new>

namespace ost {

bool hasMemory(std::size_t bytes) {
  void* volatile trial = std::malloc(bytes);  // volatile: the compiler may omit what is only freed again
  const bool held = trial != nullptr;
  std::free(trial);
  return held;
}

void requireMemory(std::size_t bytes) {
  if (!hasMemory(bytes)) throw std::bad_alloc();
}

}  // namespace ost
