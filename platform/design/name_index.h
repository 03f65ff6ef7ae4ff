// The names of a design, kept small: each module once, with its nets, memories and instances sorted by name. What is
// counted over instances is computed, never expanded.
#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>
#include <functional>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/design/design.h"
#include "platform/text/enum_names.h"

namespace ost {

/// A piece of NameIndex::text.
struct NameRef {
  quint32 at = 0, length = 0;
};

/// A net of a module. Source index `i` is the bit `upto ? width - 1 - (i - offset) : i - offset`.
struct NetEntry {
  NameRef name;
  qint32 width = 0;
  qint32 offset = 0;
  qint32 enumType = -1;  ///< Index into NameIndex::enumTypes.
  bool upto = false;
  bool wholeName =
      false;  ///< The source writes the name as one identifier, so that a dot in it is no generate block's.
};

struct InstanceEntry {
  NameRef name;
  qint32 module = -1;
};

struct ModuleEntry {
  QByteArray key;  ///< As Yosys writes it.
  bool topAttribute = false;
  bool unnamedBlocks = false;  ///< A name leads through a generate block that Yosys named.
  bool bodyless = false;       ///< A black or white box: what its shell declares cannot be reached and is left out.
  bool vhdl = false;           ///< Came from VHDL: names have no case.
  QByteArray roles;
  std::vector<NetEntry> nets;            ///< Public, sorted by name.
  std::vector<InstanceEntry> instances;  ///< Of modules of the design only, sorted by name.
  std::vector<NameRef> memories;         ///< Sorted.
  /// The public nets with the attribute `ostrel_watch` and its text, in the netlist's order.
  std::vector<std::pair<NameRef, QByteArray>> watched;
  // Filled by NameIndex::complete().
  bool used = false;
  int parent = -1;          ///< A module that holds an instance of this one, on a shortest path from the top.
  int parentInstance = -1;  ///< Index into its instances.
  qint64 netsBelow = 0, bitsBelow = 0, instancesBelow = 0;  ///< Over the whole subtree, saturating.
};

class NameIndex {
 public:
  static constexpr int kMaxDepth = 512;  ///< Levels of hierarchy.

  std::string_view view(NameRef name) const { return std::string_view(text.data() + name.at, name.length); }
  QByteArray bytes(NameRef name) const { return QByteArray(text.data() + name.at, static_cast<int>(name.length)); }
  const NetEntry* findNet(const ModuleEntry& module, std::string_view name) const;
  const InstanceEntry* findInstance(const ModuleEntry& module, std::string_view name) const;
  bool hasMemory(const ModuleEntry& module, std::string_view name) const;

  /// Sorts, chooses the top, checks the hierarchy (no cycle, kMaxDepth) and counts. False with the reason.
  bool complete(const QByteArray& wantedTop, QString& error);

  QByteArray text;  ///< All names, as the source spells them (Yosys' protecting backslash removed).
  std::vector<ModuleEntry> modules;
  std::vector<EnumNames> enumTypes;  ///< Each once.
  QVector<QByteArray> unknownTypes;  ///< Cell types without a module, internal ones left out; each once.
  int top = -1;
  bool slashNames = false;  ///< A net or instance name holds '/' or begins with a backslash: paths may be ambiguous.

 private:
  bool chooseTop(const QByteArray& wantedTop, QString& error);
  bool count(QString& error);
};

/// The name as a Yosys JSON netlist writes it: a backslash stands before a public name that begins with '$', '\' or a
/// digit.
QByteArray yosysKey(std::string_view name);

/// The key as Yosys' scripts take it.
QByteArray yosysId(const QByteArray& key);
/// A module's name as its source declares it, out of its key: the attribute that Yosys keeps it in may as well be the
/// source's own.
QByteArray sourceName(const QByteArray& moduleKey);
/// True when Yosys takes an attribute with this text in JSON for set.
bool isSetAttribute(std::string_view text);

/// Reads a Yosys JSON netlist from the open file `fd`, from its beginning; nothing in it is trusted. `fileName` is for
/// texts. False with the reason and the place in `error`.
bool readNameIndex(int fd, const QString& fileName, NameIndex& index, QString& error);

/// The words of a module's attribute `ostrel_role`.
QList<QByteArray> roleWords(const ModuleEntry& module);

/// What a name means in an index.
struct NameHit {
  std::vector<const InstanceEntry*> path;
  const ModuleEntry* module = nullptr;
  const NetEntry* net = nullptr;
  bool selected = false;  ///< With `[left]` or `[left:right]`, checked to lie within the net.
  qint32 left = 0, right = 0;
};

/// Finds `name` from the top module. On failure `error`, when not null, says why (without near names).
bool findName(const NameIndex& index, std::string_view name, NameHit& hit, QString* error);

/// True when `typed` is what the source calls the name `kept`. Yosys puts a level "genblk1" around each branch behind
/// an "else if", which the language does not have: there the branches of one chain stand side by side.
bool isNameInSource(std::string_view kept, std::string_view typed);

/// "a/b" for a path of instances; a component that would be misread is written as an escaped identifier.
QByteArray joinPath(const NameIndex& index, const std::vector<const InstanceEntry*>& path);
/// The name, escaped where `escaped` asks for it.
QByteArray componentText(std::string_view name, bool escaped);
/// The net's name from the top, with `select` ("[3]") behind it: the plain form where it leads back to the same net,
/// the escaped form otherwise.
QByteArray fullName(const NameIndex& index, const NameHit& hit, const QByteArray& select);

/// Up to `count` names near `name`, best first.
QStringList nearestNames(const NameIndex& index, const QByteArray& name, int count);

}  // namespace ost
