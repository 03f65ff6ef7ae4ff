// Names near one that does not exist: first in the scope that the name leads to, then the same leaf elsewhere. Every
// module is looked at once, however often it is instantiated.
#include <algorithm>

#include "platform/design/name_index.h"
#include "platform/text/byte_text.h"
#include "platform/text/edit_distance.h"

namespace ost {
namespace {

constexpr int kMostEdits = 4;  // Beyond, a name is not near.

// A set of the characters in a name; many differences between two sets mean a large distance.
quint64 characterSet(std::string_view name) {
  quint64 set = 0;
  for (const char c : name.substr(0, kMaxComparedBytes)) set |= quint64(1) << (foldedByte(c) & 63);
  return set;
}

struct Candidate {
  int cost;
  int module;
  const NetEntry* net;
};

class Search {
 public:
  Search(const NameIndex& index, int count) : index_(index), count_(size_t(count)) {}

  bool full() const { return best_.size() >= count_; }

  // Offers the nets of a module that are within `limit` edits of `name`; `extra` is added to their cost.
  void offer(int module, std::string_view name, int limit, int extra) {
    const quint64 set = characterSet(name);
    for (const NetEntry& net : index_.modules[size_t(module)].nets) {
      if (full() && worst() <= extra) return;
      const int bound = full() ? std::min(limit, worst() - extra) : limit;
      const std::string_view other = index_.view(net.name);
      if (std::abs(int(std::min(other.size(), kMaxComparedBytes)) - int(std::min(name.size(), kMaxComparedBytes))) >
          bound)
        continue;
      // An edit adds at most one new character to a name and takes at most one away.
      const quint64 otherSet = characterSet(other);
      if (__builtin_popcountll(set & ~otherSet) > bound || __builtin_popcountll(otherSet & ~set) > bound) continue;
      const int distance = editDistance(name, other, bound);
      if (distance <= bound) insert({distance + extra, module, &net});
    }
  }

  // `missing` is the component that the scope has no instance for.
  QStringList names(const std::vector<const InstanceEntry*>& scopePath, int scope, std::string_view missing) const {
    QStringList list;
    for (const Candidate& candidate : best_) {
      std::vector<const InstanceEntry*> path;
      const InstanceEntry* below = candidate.module == scope ? nullptr : sister(scope, candidate.module, missing);
      if (candidate.module == scope || below) {
        path = scopePath;
        if (below) path.push_back(below);
      } else {
        for (int m = candidate.module; m != index_.top; m = index_.modules[size_t(m)].parent) {
          const ModuleEntry& entry = index_.modules[size_t(m)];
          path.push_back(&index_.modules[size_t(entry.parent)].instances[size_t(entry.parentInstance)]);
        }
        std::reverse(path.begin(), path.end());
      }
      const QByteArray joined = joinPath(index_, path);
      const std::string_view net = index_.view(candidate.net->name);
      const bool escaped = net.find('/') != std::string_view::npos && !joined.isEmpty();
      list.append(textFromBytes((joined.isEmpty() ? joined : joined + '/') + componentText(net, escaped)));
    }
    return list;
  }

 private:
  // Of the scope's instances of a module the one nearest to the name; null when it has none.
  const InstanceEntry* sister(int scope, int module, std::string_view name) const {
    const InstanceEntry* best = nullptr;
    int least = kMostEdits + 1;
    for (const InstanceEntry& instance : index_.modules[size_t(scope)].instances) {
      if (instance.module != module || (best && least == 0)) continue;
      const int distance = editDistance(name, index_.view(instance.name), least);
      if (best && distance >= least) continue;
      best = &instance;
      least = std::min(least, distance);
    }
    return best;
  }

  int worst() const { return best_.back().cost; }
  void insert(const Candidate& candidate) {
    for (const Candidate& other : best_) {
      if (other.net == candidate.net) return;
    }
    const auto place = std::upper_bound(best_.begin(), best_.end(), candidate,
                                        [](const Candidate& a, const Candidate& b) { return a.cost < b.cost; });
    best_.insert(place, candidate);
    if (best_.size() > count_) best_.pop_back();
  }

  const NameIndex& index_;
  size_t count_;
  std::vector<Candidate> best_;
};

// The instance that `rest` begins with, exactly (longest first) or nearly; `rest` is then what follows. Null when none.
const InstanceEntry* nextInstance(const NameIndex& index, const ModuleEntry& module, std::string_view& rest) {
  for (size_t at = std::min(rest.size(), size_t(1024)); at-- > 1;) {
    if (rest[at] != '/' && rest[at] != '.') continue;
    if (const InstanceEntry* instance = index.findInstance(module, rest.substr(0, at))) {
      rest = rest.substr(at + 1);
      return instance;
    }
  }
  const size_t at = rest.find('/');
  if (at == std::string_view::npos || at == 0) return nullptr;
  const InstanceEntry* best = nullptr;
  int limit = std::max(1, int(std::min(at, kMaxComparedBytes)) / 4);
  for (const InstanceEntry& instance : module.instances) {
    const int distance = editDistance(rest.substr(0, at), index.view(instance.name), limit);
    if (distance > limit) continue;
    best = &instance;
    if (distance == 0) break;
    limit = distance - 1;
  }
  if (best) rest = rest.substr(at + 1);
  return best;
}

}  // namespace

QStringList nearestNames(const NameIndex& index, const QByteArray& name, int count) {
  if (count <= 0 || name.isEmpty()) return QStringList();
  std::string_view rest(name.constData(), size_t(name.size()));
  while (!rest.empty() && rest.back() == ']' && rest.rfind('[') != std::string_view::npos && rest.rfind('[') > 0) {
    rest = rest.substr(0, rest.rfind('['));
  }
  // Walk down as far as the name leads, also by an instance that is nearly named; '.' is taken as a separator too.
  int scope = index.top;
  std::vector<const InstanceEntry*> path;
  for (const InstanceEntry* next = nullptr; (next = nextInstance(index, index.modules[size_t(scope)], rest));) {
    path.push_back(next);
    scope = next->module;
  }
  const auto limitFor = [](std::string_view text) { return std::clamp(int(text.size()) / 3, 2, kMostEdits); };
  Search search(index, count);
  // A narrow search is cheap and mostly enough.
  for (const int limit : {2, limitFor(rest)}) {
    if (!search.full()) search.offer(scope, rest, std::min(limit, limitFor(rest)), 0);
  }
  // Elsewhere the leaf must be closer, and what is nearer the top comes first.
  const size_t cut = rest.find_last_of("/.");
  const std::string_view leaf = cut == std::string_view::npos ? rest : rest.substr(cut + 1);
  for (size_t i = 0; i < index.modules.size() && !leaf.empty(); ++i) {
    if (index.modules[i].used && int(i) != scope && !index.modules[i].nets.empty())
      search.offer(int(i), leaf, limitFor(leaf) / 2, 1);
  }
  if (leaf.size() != rest.size()) search.offer(scope, leaf, limitFor(leaf) / 2, 1);
  return search.names(path, scope, rest.substr(0, rest.find_first_of("/.")));
}

}  // namespace ost
