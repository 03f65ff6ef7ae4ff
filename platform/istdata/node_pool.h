// Objects of one size side by side in large blocks, for trees of many small nodes.
#pragma once

#include <memory>
#include <new>
#include <type_traits>
#include <vector>

namespace ost {

/// All objects must have been destroyed before the pool is.
template <class Node>
class NodePool {
 public:
  Node* make() {
    if (!free_) grow();
    Place* place = free_;
    free_ = place->nextFree;
    ++inUse_;
    return new (place) Node;
  }

  void destroy(Node* node) {
    node->~Node();
    Place* place = new (node) Place;
    place->nextFree = free_;
    free_ = place;
    if (--inUse_ > 0) return;
    // What comes next shall stand in order again, whatever the order in which these went.
    blocks_.clear();
    free_ = nullptr;
  }

 private:
  static constexpr int kNodesInBlock = 512;
  union Place {
    Place* nextFree;
    std::aligned_storage_t<sizeof(Node), alignof(Node)> node;
  };

  void grow() {
    blocks_.emplace_back(new Place[kNodesInBlock]);
    for (int i = kNodesInBlock; i-- > 0;) {
      blocks_.back()[i].nextFree = free_;
      free_ = &blocks_.back()[i];
    }
  }

  std::vector<std::unique_ptr<Place[]>> blocks_;
  Place* free_ = nullptr;
  int inUse_ = 0;
};

}  // namespace ost
