// The named nodes of a trace tree: an open-addressed table of node pointers. Many names can be looked up together, so
// that the memory which one of them needs is on its way while the others are looked at.
#pragma once

#include <QStringList>
#include <algorithm>
#include <vector>

#include "platform/istdata/name_pool.h"

namespace ost {

/// `Node` has a member `text`, a pointer to its PooledName, which must not change but for the address while the node is
/// in the table. Names are unique.
template <class Node>
class NodeTable {
 public:
  /// Null when there is no node of that name.
  Node* value(const QString& name) const { return value(name, PooledName::hashOf(name)); }
  bool contains(const QString& name) const { return value(name) != nullptr; }
  int size() const { return int(count_); }

  /// Calls `visit(name, node)` for each of the names, with null for an unknown one, until it returns false.
  template <class Visit>
  bool lookUp(const QStringList& names, const Visit& visit) const {
    quint32 hashes[kTogether];
    for (int begin = 0; begin < names.size(); begin += kTogether) {
      const int count = std::min(kTogether, names.size() - begin);
      for (int i = 0; i < count; ++i) fetch(hashes[i] = PooledName::hashOf(names[begin + i]));
      for (int i = 0; i < count; ++i)
        if (const Node* node = firstOf(hashes[i])) __builtin_prefetch(node);
      for (int i = 0; i < count; ++i)
        if (const Node* node = firstOf(hashes[i])) __builtin_prefetch(node->text);
      for (int i = 0; i < count; ++i)
        if (!visit(names[begin + i], value(names[begin + i], hashes[i]))) return false;
    }
    return true;
  }

  /// Calls `visit(node)` for each of `nodes`, which may remove it from the table.
  template <class Visit>
  void fetchAhead(const std::vector<Node*>& nodes, const Visit& visit) const {
    for (std::size_t begin = 0; begin < nodes.size(); begin += kTogether) {
      const std::size_t end = std::min(nodes.size(), begin + kTogether);
      for (std::size_t i = begin; i < end; ++i) __builtin_prefetch(nodes[i]->text);
      for (std::size_t i = begin; i < end; ++i) fetch(nodes[i]->text->hash);
      for (std::size_t i = begin; i < end; ++i) visit(nodes[i]);
    }
  }

  /// Makes room for so many nodes in all.
  void reserve(int count) {
    std::size_t size = std::max<std::size_t>(slots_.size(), 16);
    while (std::size_t(count) * 5 > size * 4) size *= 2;
    if (size > slots_.size()) growTo(size);
  }

  void insert(Node* node) {
    reserve(size() + 1);
    ++count_;
    put({node, node->text->hash});
  }

  void remove(const Node* node) {
    const std::size_t mask = slots_.size() - 1;
    std::size_t free = placeOf(node);
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

  /// `heir` takes the place of `node` and has its text.
  void replace(const Node* node, Node* heir) { slots_[placeOf(node)].node = heir; }

  /// Has the processor fetch the slot where the search for a name begins.
  void fetch(quint32 hash) const {
    if (!slots_.empty()) __builtin_prefetch(&slots_[hash & (slots_.size() - 1)]);
  }

  template <class Visit>
  void forEach(const Visit& visit) const {
    for (const Slot& slot : slots_)
      if (slot.node) visit(slot.node);
  }

 private:
  static constexpr int kTogether = 32;  ///< Fetches that are under way at a time.

  struct Slot {
    Node* node = nullptr;
    quint32 hash = 0;
  };

  Node* value(const QString& name, quint32 hash) const {
    if (slots_.empty()) return nullptr;
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t at = hash & mask; slots_[at].node; at = (at + 1) & mask)
      if (slots_[at].hash == hash && slots_[at].node->text->text() == name) return slots_[at].node;
    return nullptr;
  }

  /// The node at which a search most likely ends; null when there is none.
  const Node* firstOf(quint32 hash) const {
    if (slots_.empty()) return nullptr;
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = hash & mask;
    while (slots_[at].node && slots_[at].hash != hash) at = (at + 1) & mask;
    return slots_[at].node;
  }

  std::size_t placeOf(const Node* node) const {
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = node->text->hash & mask;
    while (slots_[at].node != node) at = (at + 1) & mask;
    return at;
  }

  void put(const Slot& slot) {
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = slot.hash & mask;
    while (slots_[at].node) at = (at + 1) & mask;
    slots_[at] = slot;
  }

  void growTo(std::size_t size) {
    std::vector<Slot> old(size);
    old.swap(slots_);
    for (const Slot& slot : old)
      if (slot.node) put(slot);
  }

  std::vector<Slot> slots_;  ///< A power of two, at most four fifths in use.
  std::size_t count_ = 0;
};

}  // namespace ost
