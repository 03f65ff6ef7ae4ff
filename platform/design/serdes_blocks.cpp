// Walks the hierarchy down to the marked blocks.
#include "platform/design/serdes_blocks.h"

#include "platform/text/byte_text.h"

namespace ost {
namespace {

class BlockWalk {
 public:
  BlockWalk(const NameIndex& index, int most) : index_(index), most_(most), below_(index.modules.size(), kUnknown) {}

  QVector<SerdesBlock> run() {
    hit_.module = &index_.modules[size_t(index_.top)];
    walk(index_.top);
    return blocks_;
  }

 private:
  enum : char { kUnknown, kNothing, kBlock };

  /// Whether the module is a block or holds one. No deeper than NameIndex::kMaxDepth.
  bool leadsToBlock(int module) {
    char& known = below_[size_t(module)];
    if (known != kUnknown) return known == kBlock;
    const ModuleEntry& entry = index_.modules[size_t(module)];
    bool found = roleWords(entry).contains("dcu");
    for (const InstanceEntry& instance : entry.instances) found = leadsToBlock(instance.module) || found;
    known = found ? kBlock : kNothing;
    return found;
  }

  void walk(int module) {
    if (!leadsToBlock(module) || blocks_.size() >= most_) return;
    const ModuleEntry& entry = index_.modules[size_t(module)];
    if (roleWords(entry).contains("dcu")) addBlock(entry);
    for (const InstanceEntry& instance : entry.instances) {
      hit_.path.push_back(&instance);
      walk(instance.module);
      hit_.path.pop_back();
    }
  }

  void addBlock(const ModuleEntry& entry) {
    SerdesBlock block;
    block.name = textFromBytes(hit_.path.empty() ? sourceName(entry.key) : joinPath(index_, hit_.path));
    hit_.module = &entry;
    for (const auto& [name, word] : entry.watched) {
      hit_.net = index_.findNet(entry, index_.view(name));
      if (hit_.net) block.nets.append({textFromBytes(fullName(index_, hit_, QByteArray())), textFromBytes(word)});
    }
    blocks_.append(block);
  }

  const NameIndex& index_;
  const int most_;
  std::vector<char> below_;  ///< By module.
  NameHit hit_;
  QVector<SerdesBlock> blocks_;
};

}  // namespace

QList<QByteArray> roleWords(const ModuleEntry& module) {
  QByteArray words = module.roles;
  return words.replace(',', ' ').split(' ');
}

QVector<SerdesBlock> findSerdesBlocks(const NameIndex& index, int most) {
  return BlockWalk(index, most).run();
}

}  // namespace ost
