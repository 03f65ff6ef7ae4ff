// What a memory takes of block RAMs.
#pragma once

#include <QtGlobal>

namespace ost {

/// A block RAM as both supported targets have it, in bits (parity bits counted); half of a large one.
constexpr qint64 kBlockRamBits = 18 * 1024;

/// Block RAMs of that size for `words` of `bits` each, in the best of the shapes that one can have.
qint64 blockRamsFor(qint64 words, qint64 bits);

}  // namespace ost
