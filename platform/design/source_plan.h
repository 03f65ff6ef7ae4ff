// What a DesignSource comes to: the files with their options once file lists are read, what turned out to be missing
// from them, and the Yosys script that reads it all.
#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>
#include <memory>

#include "platform/design/design.h"
#include "platform/design/ghdl.h"
#include "platform/design/parameter.h"
#include "platform/design/script_files.h"
#include "platform/design/verilog_scan.h"
#include "platform/design/yosys_script.h"

namespace ost {

/// An instance of a VHDL entity in Verilog, and the module that stands for the entity with the instance's generics.
struct VhdlBinding {
  QByteArray module, cell;       ///< Of the instance.
  QByteArray type;               ///< The new one.
  QList<QByteArray> parameters;  ///< Those of the instance, which are gone then.
};

class SourcePlan {
 public:
  static constexpr qint64 kMaxFileBytes = qint64(4) << 30;

  /// Reads the file lists and checks that every file and folder can be read; relative names mean `workingDirectory`.
  /// Null with one text for the user in `error`.
  static std::unique_ptr<SourcePlan> make(const DesignSource& source, const QString& workingDirectory, QString& error);

  bool isNetlist() const { return netlist_; }
  /// All that the words and the lists say together; files and folders as typed.
  const DesignSource& source() const { return source_; }
  /// Absolute names of the files that were given, in order, file lists last.
  QStringList files() const { return files_ + lists_; }
  QString firstFileAsTyped() const { return typedNames_.value(files_.value(0)); }
  const QList<TopParameter>& parameters() const { return parameters_; }
  const VhdlSources& vhdl() const { return vhdl_; }
  /// Modules that the Verilog files declare, as far as their texts tell.
  const QList<ScannedModule>& modules() const { return modules_; }

  /// The top as the sources name it; empty while Yosys is to find it. Sources are read deferred once it is known: only
  /// what the hierarchy uses is elaborated then, with the parameters that it is used with.
  const QByteArray& top() const { return top_; }
  void setTop(const QByteArray& name) { top_ = name; }
  /// With parameters(): the top as Yosys names it when it is elaborated with them; empty until that is known.
  void setDerivedTop(const QByteArray& key) { derivedTop_ = key; }
  bool knowsTop() const {
    return netlist_ || parametersAreGenerics() || parameters_.isEmpty() || !derivedTop_.isEmpty();
  }
  bool parametersAreGenerics() const { return vhdl_.find(top_) != nullptr; }

  /// The absolute file in a library folder that is named after the module, or empty.
  QString libraryFile(const QByteArray& module) const;
  /// "FILE:LINE: " of the first line in the files that includes this, or empty.
  QString includer(const QString& include) const;
  bool addLibraryFile(const QString& file, QString& error);
  /// SystemVerilog files as typed and absolute, and what to read in their place.
  QStringList systemVerilogFiles() const;
  QList<QByteArray> macroWords() const;  ///< "-DNAME=VALUE" and "-IDIR", as most front ends take them.
  bool replaceSystemVerilog(const QByteArray& verilog, QString& error);
  void useSlang() { slang_ = true; }
  /// Declarations of black boxes, Verilog or SystemVerilog.
  bool addBoxes(const QByteArray& verilog, bool systemVerilog, QString& error);
  /// A black box whose ports nothing tells stays undefined.
  void leaveUnknown(const QByteArray& type) {
    leftUnknown_.insert(type);
    checked_ = false;
  }
  /// The instances of some black box cannot be compared with its declaration, which has made-up names.
  void leaveUnchecked() { checked_ = false; }
  bool isChecked() const { return checked_; }
  bool isLeftUnknown(const QByteArray& type) const { return leftUnknown_.contains(type); }
  /// Verilog of GHDL. Bindings are made before the next texts are read, in the hierarchy as it is then.
  bool addVhdl(const QByteArray& verilog, const QByteArray& entity, const QList<VhdlBinding>& bindings, QString& error);
  /// A library of cells, by its name in the folder of Yosys' data.
  void addCellLibrary(const QByteArray& file) { cellLibraries_.append(file); }

  /// Reads everything and builds the hierarchy; `check`: a module that is used and not defined is an error.
  YosysScript hierarchyScript(bool check) const;
  /// Prints the sources as they are after their macros, into the open file of that index.
  YosysScript preprocessScript(int openFile) const;
  /// `text` of Yosys with the names that the scripts use turned back into what the user typed.
  QByteArray inUsersWords(const QByteArray& text) const { return names_.inUsersWords(text); }
  /// The absolute file that a name out of Yosys means; empty for one of our own.
  QString realFile(const QByteArray& name) const { return names_.realFile(name, workingDirectory_); }

 private:
  struct File {
    QByteArray scriptName;
    QByteArray ownIncludeDir;  ///< The link to its folder, when the file itself is reached through a link.
    bool systemVerilog = false;
    bool mapped = false;  ///< Written by Yosys with cells of its own as instances, see isRawCell().
    bool atOnce = false;  ///< Not deferred: holds black boxes of its own, whose instances keep their parameters so.
  };
  struct VhdlRound {
    QByteArray scriptName;
    QList<VhdlBinding> bindings;
  };
  bool takeLists(const QString& workingDirectory, QString& error);
  bool takeWords(QString& error);
  bool takeVhdlLibraries(QString& error);
  bool takeFile(const QString& typed, const QByteArray& library, QString& error);
  bool lookInto(const QString& absolute, const QString& typed, File& entry, QByteArray& replaced, QString& error);
  bool addScriptName(const QString& file, const QString& typed, File& entry, const QByteArray& content, QString& error);
  bool addIncludeDir(const QString& directory, const QString& typed, QString& error);
  bool mayBeDeferred() const { return !top_.isEmpty(); }

  void addSources(YosysScript& script) const;
  void addFile(YosysScript& script, const File& file) const;
  void addMacros(YosysScript& script) const;
  void addTop(YosysScript& script) const;

  bool netlist_ = false, slang_ = false, checked_ = true;
  QString workingDirectory_;
  DesignSource source_;
  QByteArray top_, derivedTop_;
  QStringList files_, lists_;
  QList<TopParameter> parameters_;
  VhdlSources vhdl_;
  QList<ScannedModule> modules_;
  QHash<QString, QString> typedNames_;  ///< Absolute file to the name as typed.
  QList<File> scriptFiles_, boxes_;
  QList<VhdlRound> vhdlRounds_;
  QList<QByteArray> cellLibraries_;
  QSet<QByteArray> leftUnknown_;
  QList<QByteArray> includeDirs_;  ///< As the script names them.
  QStringList libraryDirs_;        ///< Absolute.
  ScriptFiles names_;
};

}  // namespace ost
