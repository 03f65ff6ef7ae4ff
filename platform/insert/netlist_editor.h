// Writes the instrumented netlist: the original's text with the changed parts replaced.
#pragma once

#include <QSet>

#include "platform/insert/text_edits.h"
#include "platform/routing/probe_routing.h"

namespace ost {

class NetlistEditor {
 public:
  NetlistEditor(const NetlistBits& netlist, const ProbeRouting& routing, InsertPlan& plan);

  /// Decides the names at the top (plan.pins among them) and all edits. False with a text when a name chosen by the
  /// user is taken.
  bool prepare(const QSet<QByteArray>& reservedModules, QString& error);
  bool write(QIODevice& device) const;
  /// Name of the debug module's instance.
  QByteArray debugInstance() const { return debugInstance_; }

 private:
  /// Bits and cells that are added to one module.
  struct Additions {
    int nextBit = 0;
    int nextCell = 1;
    QByteArray cells, ports, nets;  ///< Members, each with a comma before it.
  };
  void separateOutputs(int module, TextEdits& edits, Additions& additions) const;
  void separateRegisters(int module, TextEdits& edits, Additions& additions) const;
  void tap(const std::vector<ChildUse>& children, const NetlistModule& module, TextEdits& edits, Additions& additions,
           std::vector<QVector<int>>& childBits) const;
  void editVariant(const ModuleVariant& variant);
  bool editTop(QString& error);
  bool chooseTopNames(QString& error);
  /// Bits of the top at the debug module's ports of the Wishbone bus.
  using BusBits = QHash<QByteArray, QVector<int>>;
  void addDebugInstance(const std::vector<QVector<int>>& childBits, const BusBits& bus, Additions& additions) const;
  void chooseBusNames(const std::function<bool(const QByteArray&)>& taken);
  BusBits exposeBus(Additions& additions) const;
  BusBits shareBus(Additions& additions);
  QVector<int> choose(const QVector<int>& byDefault, const QVector<int>& other, int select, Additions& additions) const;
  void reconnect(size_t cell, const QHash<QByteArray, QVector<int>>& pins);
  QVector<int> addPin(const DebugPort& port, Additions& additions) const;
  QVector<int> addTriggerOut(const DebugPort& port, Additions& additions) const;
  void finish(const NetlistModule& module, const Additions& additions, TextEdits& edits) const;
  QVector<int> newBits(Additions& additions, int count) const;
  void follow(const QVector<int>& from, const QVector<int>& to, Additions& additions, bool keep = false) const;
  void appendMembers(size_t object, const QByteArray& members, TextEdits& edits) const;

  const NetlistBits& netlist_;
  const ProbeRouting& routing_;
  InsertPlan& plan_;
  TextEdits edits_;  ///< Of modules in their place.
  struct Clone {
    const ModuleVariant* variant;
    TextEdits edits;
  };
  std::vector<Clone> clones_;
  QByteArray debugInstance_;
};

}  // namespace ost
