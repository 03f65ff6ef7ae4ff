// The user's design as names: modules, instances and nets with their widths, read through Yosys. It answers which net
// a name means and which names are near; drivers and connections are the business of platform/netlist.
#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QStringList>
#include <QVector>
#include <functional>
#include <memory>
#include <vector>

#include "framework/ist_com_data.h"
#include "platform/design/yosys_script.h"
#include "platform/text/enum_names.h"

namespace ost {

/// The way to the chip as typed, checked word for word; what was not said is empty.
struct JtagWords {
  QString way;    ///< A word, or the file name of a wrapper.
  QString chain;  ///< Of the way: the two belong together.
  QString period;

  /// Takes from `other` what was not said here.
  void fill(const JtagWords& other) {
    if (way.isEmpty() && chain.isEmpty()) {
      way = other.way;
      chain = other.chain;
    }
    if (period.isEmpty()) period = other.period;
  }
};

/// What `ost_design read` was told. File names are byte text as typed.
struct DesignSource {
  QStringList files;  ///< Verilog, SystemVerilog (.sv, .svh), VHDL (.vhd, .vhdl) or one Yosys JSON netlist, in order.
  QStringList fileLists;  ///< Names of file lists, read after `files`.
  QString top;            ///< Empty: found by Yosys.
  QStringList includeDirs;
  QStringList defines;                       ///< NAME or NAME=VALUE.
  QStringList blackBoxes;                    ///< Modules whose bodies are not elaborated.
  QStringList parameters;                    ///< NAME=VALUE, of the top.
  QStringList libraryDirs, librarySuffixes;  ///< Where MODULE.v is looked for when no file declares the module.
  QString cells;                             ///< Target whose cells count as declared: "xilinx", "gowin" or none.
  QString systemVerilog;      ///< What reads SystemVerilog: "slang", "builtin" or "auto"; empty means the last.
  QString vhdlStandard;       ///< 87, 93, 02 or 08; empty means the last.
  QStringList vhdlLibraries;  ///< LIBRARY=FILE[,FILE...], VHDL files of libraries other than "work".
  JtagWords jtag;
  int timeLimitSeconds = 600;
  qint64 memoryLimitBytes = qint64(8) << 30;
};

/// A name resolved against the design: a whole net, one bit or a range of it.
struct NetSelection {
  QString instancePath;    ///< "u_sys/u_rx", empty for the top module.
  QString module;          ///< Yosys' name of the module that declares the net, as in its JSON netlist.
  QString net;             ///< Name of the net in that module, as a Yosys JSON netlist writes it.
  QVector<int> bits;       ///< Positions in the netlist's bit list (0 = least significant), leftmost named bit first.
  QStringList bitNames;    ///< The full name of each bit in the same order: "u_sys/u_rx/state[3]", or the bare name.
  int netWidth = 0;        ///< Bits of the whole net.
  EnumNames enumNames;     ///< Of the values of the whole net, when its type is an enumeration; see valueNames().
  bool wholeName = false;  ///< A dot in the net's name belongs to an escaped identifier, not to a generate block.
  bool isVector = false;   ///< True when the name stands for a bus (several bits, or a whole vector net).
  QString canonicalName;   ///< The name in the one form that the service stores and shows.
};

/// The names of the values that the selected bits have together: those of the net's type when it is the whole net.
inline EnumNames valueNames(const NetSelection& selection) {
  return selection.bits.size() == selection.netWidth ? selection.enumNames : EnumNames();
}

/// The cells on an instance path, top down, as the keys of a Yosys JSON netlist. A component of the path that begins
/// with a backslash is an escaped identifier and ends with a blank; only names that would be misread are written so.
ISTCOMDATA_API QStringList instancePathKeys(const QString& instancePath);

/// One net in a listing.
struct NetName {
  QString name;  ///< Hierarchical, with "/".
  int width;     ///< Bits.
};

/// What one level of the hierarchy holds, under its full names.
struct DesignLevel {
  struct Instance {
    QString path;
    QString module;  ///< As the source declares it.
  };
  std::vector<Instance> instances;  ///< Of modules of the design only.
  std::vector<NetName> nets;
};

/// Design flags from the module attribute (* ostrel_role = "..." *): the roles found anywhere in the hierarchy.
struct DesignRoles {
  bool dcu = false;          ///< "dcu": the design holds a serdes block that the serdes core can watch.
  bool j2w = false;          ///< "j2w": the design uses the serdes' JTAG path itself.
  bool jtag2wb = false;      ///< "jtag2wb": the design offers a JTAG-to-Wishbone connection.
  bool jtag2wbCore = false;  ///< "jtag2wb_core": it holds a JTAG-to-Wishbone core of its own.
};

/// A net that its module marks with the attribute (* ostrel_watch = "..." *).
struct WatchedNet {
  QString name;  ///< From the top; resolve() takes it.
  QString word;  ///< The attribute's text: "clock", "lock", ...; "signal" when it has none.
};

/// An instance of a module with the role "dcu".
struct SerdesBlock {
  QString name;  ///< From the top; the top's own name when that is the block.
  QVector<WatchedNet> nets;
};

class ISTCOMDATA_API Design {
 public:
  /// Reads the sources with Yosys. Null on failure, with a text for the user in `error` (file and line where Yosys
  /// gives them). `idle` is called while Yosys runs, a few times a second at least, and may be empty; returning false
  /// cancels. Relative names mean `workingDirectory`, or the current folder when it is empty.
  static std::shared_ptr<const Design> read(const DesignSource& source, QString& error,
                                            const std::function<bool()>& idle = {},
                                            const QString& workingDirectory = QString());
  ~Design();

  const DesignSource& source() const;
  const JtagWords& jtag() const;  ///< As words and lists say together.
  QString topModule() const;      ///< As the source declares it; for people.
  QString topKey() const;  ///< As a Yosys JSON netlist of the design writes it; the only name that finds it there.
  QStringList blackBoxes() const;    ///< Modules without a body that the hierarchy uses.
  const QStringList& notes() const;  ///< What the user should know of the reading, a sentence each.
  const DesignRoles& roles() const;
  /// The serdes blocks of the hierarchy, `most` at most.
  QVector<SerdesBlock> serdesBlocks(int most) const;
  int moduleCount() const;    ///< Modules that the hierarchy uses.
  int instanceCount() const;  ///< Instances below the top.
  qint64 netCount() const;    ///< Public nets over all instances.
  qint64 netBitCount() const;

  /// Resolves a hierarchical name, with an optional `[bit]` or `[left:right]`. False with the reason and the nearest
  /// existing names in `error`.
  bool resolve(const QString& name, NetSelection& selection, QString& error) const;
  /// True when the name stands for a net; quicker than resolve() and without texts.
  bool exists(const QString& name) const;
  /// True when the top module has an instance of that name.
  bool hasInstance(const QString& name) const;
  /// Up to `count` existing net names near `name`, best first.
  QStringList nearest(const QString& name, int count = 3) const;
  /// Calls `visit` for every net of the hierarchy in a stable order until it returns false.
  void forEachNet(const std::function<bool(const NetName&)>& visit) const;

  /// What the instance at `path` (as NetSelection::instancePath) holds. False when there is none.
  bool levelAt(const QString& path, DesignLevel& level) const;

  /// Names (byte text) of all files that took part, include files among them where Yosys tells them.
  QStringList dependencies() const;
  /// True when one of dependencies() has changed since the design was read.
  bool isStale() const;
  /// A digest of the sources and options, 64 hex digits; equal digests mean the same design.
  QByteArray digest() const;

  /// Reads and elaborates the sources up to `proc`, for the full netlist: platform/insert appends its own passes. To be
  /// run in workingDirectory(), which relative names of include files and of memory contents mean, while this object
  /// lives.
  YosysScript elaborationScript() const;
  QString workingDirectory() const;

 private:
  Design();
  struct Private;
  std::unique_ptr<Private> d;
};

}  // namespace ost
