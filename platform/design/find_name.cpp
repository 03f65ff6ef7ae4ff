// From a hierarchical name as typed to the net it means. The rule, at each level of the hierarchy: a net of exactly
// this name; a net of this name before a closing `[bit]` or `[left:right]`; an instance whose name is a beginning that
// ends before a '/', the longest first; a component written as an escaped identifier (`\name ` up to a blank); and
// last, a net or instance that only the source calls so (isNameInSource), when there is one.
#include <algorithm>

#include "platform/design/name_index.h"
#include "platform/text/byte_text.h"

namespace ost {
namespace {

constexpr int kMaxTries = 100000;       // Paths looked at for one name; only a hostile netlist needs more.
constexpr size_t kMaxNameText = 65535;  // Bytes of a name as typed.

struct Select {
  qint32 left = 0, right = 0;
  bool range = false;
};

bool parseIndex(std::string_view text, qint32& value) {
  const bool negative = !text.empty() && text[0] == '-';
  if (negative) text.remove_prefix(1);
  if (text.empty() || text.size() > 10) return false;
  qint64 number = 0;
  for (const char c : text) {
    if (c < '0' || c > '9') return false;
    number = number * 10 + (c - '0');
  }
  if (number > (qint64(1) << 31) - 1) return false;
  value = static_cast<qint32>(negative ? -number : number);
  return true;
}

// Splits "net[3:1]" or "net[2]". False when `text` has no such ending.
bool splitSelect(std::string_view text, std::string_view& base, Select& select) {
  if (text.size() < 4 || text.back() != ']') return false;
  const size_t open = text.rfind('[');
  if (open == std::string_view::npos || open == 0) return false;
  const std::string_view inside = text.substr(open + 1, text.size() - open - 2);
  const size_t colon = inside.find(':');
  select.range = colon != std::string_view::npos;
  if (!parseIndex(inside.substr(0, colon), select.left)) return false;
  select.right = select.left;
  if (select.range && !parseIndex(inside.substr(colon + 1), select.right)) return false;
  base = text.substr(0, open);
  return true;
}

class Finder {
 public:
  Finder(const NameIndex& index, std::string_view whole, NameHit& hit, bool wantReason)
      : index_(index), whole_(whole), hit_(hit), wantReason_(wantReason) {}

  QString reason;  ///< The most telling failure met on the way.

  bool find(const ModuleEntry& module, std::string_view rest) {
    if (++tries_ > kMaxTries) return false;
    if (const NetEntry* net = index_.findNet(module, rest)) return take(module, *net, nullptr);
    std::string_view base;
    Select select;
    if (splitSelect(rest, base, select)) {
      if (const NetEntry* net = index_.findNet(module, base)) {
        if (take(module, *net, &select)) return true;
      }
    }
    for (size_t slash = rest.rfind('/'); slash != std::string_view::npos && slash > 0;
         slash = rest.rfind('/', slash - 1)) {
      if (enter(module, rest.substr(0, slash), rest.substr(slash + 1))) return true;
    }
    if (!rest.empty() && rest[0] == '\\' && findEscaped(module, rest)) return true;
    if (module.unnamedBlocks && findAsInSource(module, rest, base, select)) return true;
    if (wantReason_ && reason.isEmpty()) explain(module, rest, base);
    return false;
  }

 private:
  bool enter(const ModuleEntry& module, std::string_view name, std::string_view rest) {
    const InstanceEntry* instance = index_.findInstance(module, name);
    if (!instance) return false;
    hit_.path.push_back(instance);
    if (find(index_.modules[size_t(instance->module)], rest)) return true;
    hit_.path.pop_back();
    return false;
  }

  bool findEscaped(const ModuleEntry& module, std::string_view rest) {
    const size_t blank = rest.find(' ');
    const std::string_view name = rest.substr(1, blank == std::string_view::npos ? blank : blank - 1);
    std::string_view after = blank == std::string_view::npos ? std::string_view() : rest.substr(blank + 1);
    if (after.size() > 1 && after[0] == '/') return enter(module, name, after.substr(1));
    const NetEntry* net = index_.findNet(module, name);
    if (!net) return false;
    if (after.empty()) return take(module, *net, nullptr);
    std::string_view base;
    Select select;
    const std::string selected = "n" + std::string(after);  // splitSelect wants a name before the bracket.
    return splitSelect(selected, base, select) && base == "n" && take(module, *net, &select);
  }

  bool findAsInSource(const ModuleEntry& module, std::string_view rest, std::string_view base, const Select& select) {
    if (const NetEntry* net = onlyOne(module.nets, rest)) return take(module, *net, nullptr);
    const NetEntry* net = base.empty() ? nullptr : onlyOne(module.nets, base);
    if (net && take(module, *net, &select)) return true;
    for (size_t slash = rest.rfind('/'); slash != std::string_view::npos && slash > 0;
         slash = rest.rfind('/', slash - 1)) {
      const InstanceEntry* instance = onlyOne(module.instances, rest.substr(0, slash));
      if (instance && enter(module, index_.view(instance->name), rest.substr(slash + 1))) return true;
    }
    return false;
  }

  /// An escaped identifier stands in no block, whatever it looks like.
  static bool isWhole(const NetEntry& net) { return net.wholeName; }
  static bool isWhole(const InstanceEntry&) { return false; }

  /// The only entry that the source calls `typed`, or null.
  template <typename Entry>
  const Entry* onlyOne(const std::vector<Entry>& entries, std::string_view typed) {
    const Entry* only = nullptr;
    for (const Entry& entry : entries) {
      if (isWhole(entry) || !isNameInSource(index_.view(entry.name), typed)) continue;
      if (only && wantReason_ && reason.isEmpty())
        reason = QStringLiteral("\"%1\" may be \"%2\" or \"%3\": name one of them")
                     .arg(textFromView(whole_), textFromView(index_.view(only->name)),
                          textFromView(index_.view(entry.name)));
      if (only) return nullptr;
      only = &entry;
    }
    return only;
  }

  bool take(const ModuleEntry& module, const NetEntry& net, const Select* select) {
    if (select && !lies(net, *select)) return false;
    hit_.module = &module;
    hit_.net = &net;
    hit_.selected = select != nullptr;
    if (select) {
      hit_.left = select->left;
      hit_.right = select->right;
    }
    return true;
  }

  bool lies(const NetEntry& net, const Select& select) {
    const qint64 low = net.offset, high = qint64(net.offset) + net.width - 1;
    const bool inside = select.left >= low && select.left <= high && select.right >= low && select.right <= high;
    const bool forward = net.upto ? select.left <= select.right : select.left >= select.right;
    if (inside && forward) return true;
    if (!wantReason_ || !reason.isEmpty()) return false;
    if (net.width == 1 && net.offset == 0) {
      reason = QStringLiteral("\"%1\" does not exist: \"%2\" is a single bit")
                   .arg(textFromView(whole_), textFromView(index_.view(net.name)));
    } else {
      reason = textFromBytes(inside ? "\"%1\" runs against the declared order: \"%2\" is declared [%3:%4]"
                                    : "\"%1\" lies outside the net: \"%2\" is declared [%3:%4]")
                   .arg(textFromView(whole_), textFromView(index_.view(net.name)))
                   .arg(net.upto ? low : high)
                   .arg(net.upto ? high : low);
    }
    return false;
  }

  void explain(const ModuleEntry& module, std::string_view rest, std::string_view base) {
    if (index_.hasMemory(module, rest) || (!base.empty() && index_.hasMemory(module, base))) {
      reason = QStringLiteral("\"%1\" is a memory, not a net: name the nets that carry its address and data")
                   .arg(textFromView(whole_));
    } else if (const NetEntry* element = elementOf(module, base.empty() ? rest : base)) {
      reason = QStringLiteral("\"%1\" is no net: \"%2\" is an array, name its elements, as in \"%3\"")
                   .arg(textFromView(whole_), textFromView(base.empty() ? rest : base),
                        textFromView(index_.view(element->name)));
    } else if (const NetEntry* structure = structureOf(module, rest)) {
      const qint64 low = structure->offset, high = low + structure->width - 1;
      reason = QStringLiteral(
                   "\"%1\" is no net: of a structure only the bits are known; \"%2\" is declared [%3:%4], name those "
                   "of the field")
                   .arg(textFromView(whole_), textFromView(index_.view(structure->name)))
                   .arg(structure->upto ? low : high)
                   .arg(structure->upto ? high : low);
    } else if (const InstanceEntry* instance = index_.findInstance(module, rest)) {
      const ModuleEntry& inner = index_.modules[size_t(instance->module)];
      reason = QStringLiteral("\"%1\" is an instance, not a net").arg(textFromView(whole_));
      if (inner.bodyless) {
        reason += QStringLiteral(" (and a black box: name the nets at its ports, in the module around it)");
      } else if (!inner.nets.empty()) {
        reason += QStringLiteral(": name one of its nets, as in \"%1/%2\"")
                      .arg(textFromView(whole_), textFromView(index_.view(inner.nets.front().name)));
      }
    }
  }

  /// The first element when the name is that of an array whose elements are nets.
  const NetEntry* elementOf(const ModuleEntry& module, std::string_view name) const {
    const std::string start = std::string(name) + '[';
    const auto next = std::lower_bound(module.nets.begin(), module.nets.end(), std::string_view(start),
                                       [&](const NetEntry& e, std::string_view n) { return index_.view(e.name) < n; });
    if (name.empty() || next == module.nets.end()) return nullptr;
    const std::string_view found = index_.view(next->name);
    const bool isElement = found.substr(0, start.size()) == start && found.find(']') == found.size() - 1;
    return isElement ? &*next : nullptr;
  }

  /// The vector whose name ends before a '.' in `name`, where Yosys keeps structures.
  const NetEntry* structureOf(const ModuleEntry& module, std::string_view name) const {
    for (size_t dot = name.find('.'); dot != std::string_view::npos; dot = name.find('.', dot + 1)) {
      const NetEntry* net = index_.findNet(module, name.substr(0, dot));
      if (net && net->width > 1) return net;
    }
    return nullptr;
  }

  const NameIndex& index_;
  std::string_view whole_;
  NameHit& hit_;
  bool wantReason_;
  int tries_ = 0;
};

}  // namespace

bool findName(const NameIndex& index, std::string_view name, NameHit& hit, QString* error) {
  hit = NameHit();
  if (name.empty() || name.size() > kMaxNameText) {
    if (error)
      *error = textFromBytes(name.empty() ? "A net's name is empty" : "A net's name is longer than 65535 bytes");
    return false;
  }
  Finder finder(index, name, hit, error != nullptr);
  if (finder.find(index.modules[size_t(index.top)], name)) return true;
  if (error) {
    *error = !finder.reason.isEmpty() ? finder.reason
                                      : QStringLiteral("The design has no net \"%1\"").arg(textFromView(name));
  }
  return false;
}

bool isNameInSource(std::string_view kept, std::string_view typed) {
  const auto take = [](std::string_view& rest) {
    const std::string_view component = rest.substr(0, rest.find('.'));
    rest.remove_prefix(std::min(rest.size(), component.size() + 1));
    return component;
  };
  const auto isUnnamed = [](std::string_view component) {
    return component.size() > 6 && component.substr(0, 6) == "genblk" &&
           component.find_first_not_of("0123456789", 6) == std::string_view::npos;
  };
  while (!kept.empty() && !typed.empty()) {
    // Of the levels in a row the outermost stand in the source, and none does before a block with a name of its own.
    bool anyTaken = false, dropped = false;
    std::string_view component = take(kept);
    for (; isUnnamed(component) && !kept.empty(); component = take(kept)) {
      std::string_view rest = typed;
      if (!dropped && take(rest) == component) {
        typed = rest;
        anyTaken = true;
      } else {
        dropped = true;
      }
    }
    if (take(typed) != component || (dropped && !anyTaken && kept.empty())) return false;
  }
  return kept.empty() && typed.empty();
}

}  // namespace ost
