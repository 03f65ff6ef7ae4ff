// The trace tree of a core: ordered signals, buses and references. It keeps every bit captured once, every name
// unambiguous and all lookups hashed. Which names mean which nets is the service's business.
#pragma once

#include <QHash>
#include <QStringList>
#include <QVector>
#include <vector>

#include "framework/ist_data.h"
#include "platform/istdata/names.h"
#include "platform/istdata/node_table.h"

namespace ost {

using mero::ostrel::TraceNode;

/// A signal node (kind 4) is one bit and bears its full bit name; a bus (kind 2) has a name of its own; a reference
/// (kind 3) bears the bit name too and targets the signal node that captures it. Entries that were taken away leave
/// holes (nodes of kind 0) in the lists, so that removing one costs the same in a list of any length; compact()
/// closes them. Failing operations change nothing.
class ISTDATA_API TraceTree : public mero::ostrel::istTraceData {
 public:
  static constexpr int kMaxBusNesting = 32;  ///< Buses inside one another.
  struct Node;

  /// Where entries go: into `bus` (null: the top level), before `before` (null: at the end).
  struct Place {
    Node* bus = nullptr;
    Node* before = nullptr;
    bool numbered = false;  ///< `before` was given by number: what is inserted next goes before this insertion.
  };

  TraceTree();
  ~TraceTree();

  /// Signal nodes, that is captured bits.
  int signalCount() const { return signals_.size(); }
  int busCount() const { return buses_.size(); }
  /// The signal or bus of that name, or null. A name of the form `bus<n>` or `<n>` means the n-th member.
  TraceNode* find(const QString& name);
  TraceNode* findBus(const QString& name) const;
  bool isTaken(const QString& name) const;
  /// Names near `name` among the signals and buses, as a hint to append to an error text.
  QString nearestHint(const QString& name) const;

  /// Resolves the position words of the service's contract.
  bool findPlace(const QString& bus, const QString& position, Place& place, QString& error);

  /// Entries that are being added: staged one by one, then put into the tree together. What is not inserted when the
  /// object goes away is forgotten.
  class ISTDATA_API Addition {
   public:
    explicit Addition(TraceTree& tree);
    ~Addition();
    Addition(const Addition&) = delete;
    Addition& operator=(const Addition&) = delete;
    /// `name` is the entry's full name; a vector becomes a bus of `bits`, leftmost first, a scalar is its one bit.
    /// Bits that are traced already become references. `remark` gets a text when the bus needs another name.
    bool stage(const QString& name, const QStringList& bits, bool isVector, QString& remark, QString& error);
    bool insert(const Place& place, QString& error);

   private:
    TraceTree& tree_;
    quint32 mark_;
    std::vector<Node*> staged_;
  };

  bool move(const QVector<TraceNode*>& entries, Place place, QString& error);
  /// A bus goes with its members. Where a captured bit goes, the first reference to it in the tree takes over.
  void remove(const QVector<TraceNode*>& entries);
  /// The entries must have one parent; the bus takes the place of the first. An empty name becomes BUS1, BUS2, ...
  bool group(QString& name, const QVector<TraceNode*>& entries, QString& error);
  /// The members take the bus's place.
  void ungroup(TraceNode* bus);
  bool renameBus(TraceNode* bus, const QString& newName, QString& error);
  /// Looks up the names of a list, each once. `canonical` may offer another spelling of an unknown name.
  bool findAll(const QStringList& names, const std::function<QString(const QString&)>& canonical,
               QVector<TraceNode*>& entries, QString& error);

  // Building a tree from a file: each appends to `bus` (null: top level), null with a reason on a fault.
  TraceNode* appendSignal(TraceNode* bus, const QString& name, QString& error);
  TraceNode* appendBus(TraceNode* bus, const QString& name, QString& error);
  /// The target may come later; bindReferences() ends the building.
  TraceNode* appendReference(TraceNode* bus, const QString& name, QString& error);
  bool bindReferences(QString& error);

  /// Closes the holes in all lists.
  void compact();

 private:
  QList<TraceNode*>& members(Node* bus);
  int& holes(Node* bus);
  void compactList(Node* bus);
  void compactBelow(Node* bus);
  void vacate(Node* node);
  int openGap(const Place& place, int count);
  void insertNodes(const std::vector<Node*>& added, const Place& place);
  Node* nextSibling(Node* node);
  Node* nthMember(Node* bus, const QString& number, QString& error);
  Node* newSignal(const QString& name);
  Node* newReference(Node* target);
  Node* newBus(const QString& name);
  void unlinkReference(Node* reference);
  void promote(Node* signal);
  void forget(Node* node);
  void deleteSubtree(Node* node);
  void checkedOut(Node* node, std::vector<Node*>& signalNodes, std::vector<Node*>& references, quint32 mark);
  bool checkNesting(const Node* bus, int height, QString& error) const;
  TraceNode* append(Node* bus, Node* node);

  NodeTable<Node> signals_;
  QHash<QString, Node*> buses_;
  QList<TraceNode*> unbound_;
  DefaultNames busNames_{"BUS"};
  /// The holes known to stand before the entry of the last insertion, so that a series of them need not look again.
  struct Gap {
    const Node* before = nullptr;
    int holes = 0;
  };
  Gap gap_;
  int holes_ = 0;
  quint32 mark_ = 0;
};

}  // namespace ost
