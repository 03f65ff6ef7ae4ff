// Reads a design through Yosys until all that it uses is known: what turns out to be missing is looked for in library
// folders, among VHDL entities and among the modules that may be black boxes.
#pragma once

#include <functional>

#include "platform/design/name_index.h"
#include "platform/design/source_plan.h"
#include "platform/design/unknown_uses.h"
#include "platform/design/yosys.h"
#include "platform/system/scratch_file.h"

namespace ost {

class Elaboration {
 public:
  Elaboration(SourcePlan& plan, const QString& workingDirectory, const std::function<bool()>& idle)
      : plan_(plan), source_(plan.source()), workingDirectory_(workingDirectory), idle_(idle) {}

  /// Fills the index; for a netlist it is there already and gains nothing but its unknown cells as black boxes in the
  /// plan. False with one text.
  bool run(NameIndex& index, QString& error);

  /// Absolute names of files that Yosys read besides those of the plan.
  const QStringList& readFiles() const { return readFiles_; }
  /// What the user should know of the black boxes, a sentence each.
  const QStringList& notes() const { return notes_; }

 private:
  bool knowsAll(const NameIndex& index) const;
  bool readHelp(const YosysScript& help, QByteArray& text, QString& error);
  bool chooseSystemVerilog(QString& error);
  bool chooseCells(QString& error);
  QList<QByteArray> roots() const;
  bool findTop(QString& error);
  bool declareBoxes(QString& error);
  bool survey(NameIndex& index, QString& error);
  bool surveyOnce(NameIndex& index, QString& error);
  void hideGhdlNets(NameIndex& index) const;
  void nameVhdlValues(NameIndex& index) const;
  int vhdlEnumType(const VhdlSignal& signal, int width, NameIndex& index) const;
  void noteReadFiles(const ScratchFile& dependencies);
  bool readUses(const QVector<QByteArray>& types, QList<UnknownUse>& uses, QString& error);
  bool resolve(const QVector<QByteArray>& types, QString& error);
  bool declareUnknown(const QVector<QByteArray>& types, const QList<UnknownUse>& uses, QString& error);
  bool addEntities(const QVector<QByteArray>& types, const QList<UnknownUse>& uses, QString& error);
  bool readGenerics(const VhdlEntity& entity, const UnknownUse& use, QMap<QByteArray, QByteArray>& generics,
                    QString& error) const;
  bool bindVhdl(const VhdlEntity& entity, const QList<UnknownUse>& uses, QList<VhdlBinding>& bindings,
                QByteArray& verilog, QString& error);
  bool addVhdlTop(QString& error);
  bool synthesise(const VhdlEntity& entity, const QMap<QByteArray, QByteArray>& generics, const QByteArray& name,
                  const QList<QByteArray>& ports, QByteArray& verilog, QString& error);
  QByteArray freeName(const QByteArray& wanted);
  YosysJob job() const;
  ToolLimits limits() const;
  /// The error of a run in the user's terms.
  QString said(const YosysResult& result) const;
  /// Of modules that nothing defines.
  QString missingText(const QStringList& modules) const;

  SourcePlan& plan_;
  const DesignSource& source_;
  const QString workingDirectory_;
  const std::function<bool()>& idle_;
  QStringList readFiles_, notes_;
  QString unknownModule_;                     ///< What Yosys said of the first one.
  QSet<QByteArray> names_;                    ///< Of modules, taken.
  QHash<QByteArray, QByteArray> components_;  ///< Declarations in VHDL of modules that VHDL does not have.
};

}  // namespace ost
