// The trace tree of a core: ordered signals, buses and references. It keeps every bit captured once, every name
// unambiguous and all lookups hashed. Which names mean which nets is the service's business.
#pragma once

#include <QHash>
#include <QStringList>
#include <QVector>
#include <vector>

#include "framework/ist_data.h"
#include "platform/text/names.h"

namespace ost {

using mero::ostrel::TraceNode;

/// A signal node (kind 4) is one bit, a bus (kind 2) has a name of its own, a reference (kind 3) targets the signal
/// node that captures its bit. displayName() is the name of each, the full bit name of signals and references; the
/// member `name` is filled for buses only. Entries that were taken away leave holes (nodes of kind 0) in the lists, so
/// that removing one costs the same in a list of any length; compact() closes them. Failing operations change nothing.
class ISTDATA_API TraceTree : public mero::ostrel::istTraceData {
 public:
  static constexpr int kMaxBusNesting = 32;  ///< Buses inside one another.
  struct Node;
  struct Bus;

  /// Where entries go: into `bus` (null: the top level), before `before` (null: at the end).
  struct Place {
    Bus* bus = nullptr;
    Node* before = nullptr;
    bool numbered = false;  ///< `before` was given by number: what is inserted next goes before this insertion.
  };

  TraceTree();
  ~TraceTree();

  /// Signal nodes, that is captured bits.
  int signalCount() const { return named_.size() - busCount_; }
  int busCount() const { return busCount_; }
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
    /// `expected`: about how many names will be staged.
    explicit Addition(TraceTree& tree, int expected = 1);
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
  struct Condemned;

  QList<TraceNode*>& members(Bus* bus);
  int& holes(Bus* bus);
  void vacate(Node* node);
  void compactList(Bus* bus);
  void compactIfDue(Bus* bus);
  void compactBelow(Bus* bus);
  int openGap(const Place& place, int count);
  void put(Node* node, Bus* bus, int slot);
  void insertNodes(const std::vector<Node*>& added, const Place& place);
  void append(Bus* bus, Node* node);
  Node* nextSibling(Node* node);
  Node* nthMember(Bus* bus, const QString& number, QString& error);
  Node* numberedMember(const QString& name);
  bool checkNesting(const Bus* bus, int height, QString& error) const;

  Node* newSignal(const QString& name);
  Bus* newBus(const QString& name);
  Node* newReference(Node* target);
  void bind(Node* reference, Node* target);
  void unbind(Node* reference);
  bool promoteReference(Node* signal);
  void forget(Node* node);
  void requireRoom(int entries) const;
  static void destroySubtree(TraceNode* node);

  QHash<QString, Node*> named_;  ///< Signals and buses.
  int busCount_ = 0;
  QHash<const Node*, std::vector<Node*>> references_;  ///< Of each signal that has any, in no order.
  std::vector<Node*> unbound_;                         ///< References whose targets are yet to come.
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
