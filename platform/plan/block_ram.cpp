// The shapes of a block RAM.
#include "platform/plan/block_ram.h"

namespace ost {

qint64 blockRamsFor(qint64 words, qint64 bits) {
  static const struct {
    int words, bits;
  } shapes[] = {{512, 36}, {1024, 18}, {2048, 9}, {4096, 4}, {8192, 2}, {16384, 1}};
  qint64 fewest = -1;
  for (const auto& shape : shapes) {
    const qint64 blocks = ((words + shape.words - 1) / shape.words) * ((bits + shape.bits - 1) / shape.bits);
    if (fewest < 0 || blocks < fewest) fewest = blocks;
  }
  return fewest;
}

}  // namespace ost
