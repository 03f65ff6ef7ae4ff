// The captured bits of a trace tree by name: an open-addressed table of node pointers. The name stands in the node
// only, and a lookup touches one cache line beside the node's own, so that it costs little more among 100,000 names
// than among 1,000.
#pragma once

#include <QHash>
#include <QString>
#include <vector>

namespace ost {

/// `Node` has a member `name`, which must not change while the node is in the table.
template <class Node>
class NodeTable {
 public:
  /// Null when there is no node of that name.
  Node* value(const QString& name) const { return slots_.empty() ? nullptr : slots_[place(name, hashOf(name))].node; }
  bool contains(const QString& name) const { return value(name) != nullptr; }
  int size() const { return int(count_); }

  /// Takes the place of a node of the same name.
  void insert(Node* node) {
    if ((count_ + 1) * 5 > slots_.size() * 4) grow();
    const uint hash = hashOf(node->name);
    Slot& slot = slots_[place(node->name, hash)];
    count_ += slot.node == nullptr;
    slot = {node, hash};
  }

  void remove(const QString& name) {
    if (slots_.empty()) return;
    const std::size_t mask = slots_.size() - 1;
    std::size_t free = place(name, hashOf(name));
    if (!slots_[free].node) return;
    --count_;
    // What follows without a gap moves up where its probing would otherwise end at the freed slot.
    for (std::size_t next = (free + 1) & mask; slots_[next].node; next = (next + 1) & mask) {
      const std::size_t home = slots_[next].hash & mask;
      if (((next - home) & mask) < ((next - free) & mask)) continue;
      slots_[free] = slots_[next];
      free = next;
    }
    slots_[free] = Slot();
  }

  template <class Visit>
  void forEach(const Visit& visit) const {
    for (const Slot& slot : slots_)
      if (slot.node) visit(slot.node);
  }

 private:
  struct Slot {
    Node* node = nullptr;
    uint hash = 0;
  };

  static uint hashOf(const QString& name) {
    // Names differ in their last digits: spread them over the low bits that choose the slot.
    uint hash = qHash(name, uint(qGlobalQHashSeed()));
    hash ^= hash >> 16;
    hash *= 0x85ebca6bu;
    return hash ^ (hash >> 13);
  }

  /// The slot of the name, or the free one where it would go.
  std::size_t place(const QString& name, uint hash) const {
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = hash & mask;
    while (slots_[at].node && (slots_[at].hash != hash || slots_[at].node->name != name)) at = (at + 1) & mask;
    return at;
  }

  void grow() {
    std::vector<Slot> old(slots_.empty() ? 16 : slots_.size() * 2);
    old.swap(slots_);
    const std::size_t mask = slots_.size() - 1;
    for (const Slot& slot : old) {
      if (!slot.node) continue;
      std::size_t at = slot.hash & mask;
      while (slots_[at].node) at = (at + 1) & mask;
      slots_[at] = slot;
    }
  }

  std::vector<Slot> slots_;  ///< A power of two, at most four fifths in use.
  std::size_t count_ = 0;
};

}  // namespace ost
