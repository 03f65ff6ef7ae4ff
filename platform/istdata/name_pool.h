// The texts of a trace tree's names, side by side in a few large blocks: a name takes its bytes and eight more, and
// names that were added together are read together.
#pragma once

#include <QHash>
#include <QString>
#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <vector>

namespace ost {

/// A name in a pool: wire text, so that a byte holds a character. The bytes follow the object.
struct PooledName {
  quint32 hash;
  quint32 length;

  QLatin1String text() const { return QLatin1String(reinterpret_cast<const char*>(this + 1), int(length)); }

  static quint32 hashOf(const QString& name) {
    // Names differ in their last digits: spread them over the low bits, by which tables choose a place.
    quint32 hash = qHash(name, uint(qGlobalQHashSeed()));
    hash ^= hash >> 16;
    hash *= 0x85ebca6bu;
    return hash ^ (hash >> 13);
  }
};

/// Names are given back one by one, their room only all together: the owner moves what is in use to a fresh pool when
/// isWasteful() says so.
class NamePool {
 public:
  const PooledName* add(const QString& name) {
    PooledName* added = room(name.size());
    added->hash = PooledName::hashOf(name);
    added->length = quint32(name.size());
    char* bytes = reinterpret_cast<char*>(added + 1);
    for (int i = 0; i < name.size(); ++i) bytes[i] = char(name.at(i).unicode());
    return added;
  }

  const PooledName* add(const PooledName& other) {
    PooledName* added = room(int(other.length));
    std::memcpy(added, &other, sizeof other + other.length);
    return added;
  }

  void giveBack(const PooledName* name) {
    wasted_ += sizeOf(int(name->length));
    if (wasted_ == used_) clear();
  }

  /// Bytes of the names that were not given back.
  std::size_t inUse() const { return used_ - wasted_; }
  /// True when most of the room holds names that were given back.
  bool isWasteful() const { return wasted_ > 4 * kBlockBytes && wasted_ / 3 > used_ / 4; }

 private:
  static constexpr std::size_t kBlockBytes = 32 * 1024;

  static std::size_t sizeOf(int length) {
    const std::size_t unit = alignof(PooledName);
    return (sizeof(PooledName) + std::size_t(length) + unit - 1) / unit * unit;
  }

  PooledName* room(int length) {
    const std::size_t size = sizeOf(length);
    if (size > left_) {
      left_ = std::max(size, kBlockBytes);
      blocks_.emplace_back(new char[left_]);
      next_ = blocks_.back().get();
    }
    PooledName* place = new (next_) PooledName;
    next_ += size;
    left_ -= size;
    used_ += size;
    return place;
  }

  void clear() {
    blocks_.clear();
    next_ = nullptr;
    left_ = used_ = wasted_ = 0;
  }

  std::vector<std::unique_ptr<char[]>> blocks_;
  char* next_ = nullptr;                          ///< In the last block.
  std::size_t left_ = 0, used_ = 0, wasted_ = 0;  ///< Bytes; left in the last block.
};

}  // namespace ost
