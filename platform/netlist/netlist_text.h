// The netlist's JSON text with an outline of its modules: ports, instances, and where in the text the pieces stand that
// an insertion replaces. What a single module holds besides is read only when it is asked for (module_index.h).
//
// platform/design/index_reader.cpp reads netlists, too, as a stream. Both are as quick, but neither can do the other's
// work without the heap of a tree (34 MB for a netlist of 26 MB, here 0.1 to 4 MB): the stream checks a stranger's
// file, which may change or shrink while it is read and so must not be mapped, and keeps names only; this one needs the
// places of all pieces in the text, which is Yosys' own. docs/performance.md has the figures.
#pragma once

#include <QByteArray>
#include <QFile>
#include <QHash>
#include <QString>
#include <QVector>
#include <string_view>
#include <vector>

#include "platform/netlist/json_cursor.h"

namespace ost {

/// A bit of a net within its module: ids from 2; below that a constant.
enum ConstantBit : int { kBitZ = -2, kBitX = -1, kBit0 = 0, kBit1 = 1 };
inline bool isConstantBit(int bit) {
  return bit < 2;
}
/// As JSON writes it: a number, or "0", "1", "x", "z" with quotes.
QByteArray bitText(int bit);
QByteArray bitListText(const QVector<int>& bits);
/// Reads an array of bits.
bool readBits(JsonCursor& cursor, QVector<int>& bits);

struct TextSpan {
  size_t begin = 0, end = 0;
};

struct NetlistPort {
  enum Direction { Input, Output, InOut };
  QByteArray name;
  Direction direction = Input;
  QVector<int> bits;
  TextSpan bitsSpan;
};

/// "input", "output" or "inout" as JSON writes it.
NetlistPort::Direction portDirection(std::string_view word);

/// A cell that is an instance of a module, of the netlist or unknown to it.
struct NetlistInstance {
  QByteArray name;
  QByteArray type;
  int module = -1;  ///< Index of `type`, -1 when the netlist does not have it.
  size_t cell = 0;  ///< Offset of the cell's object.
};

struct NetlistModule {
  QByteArray name;
  bool blackBox = false;
  TextSpan text;    ///< Key and value of the module: "name": { ... }
  size_t body = 0;  ///< Offset of the module's object.
  size_t attributes = 0, ports = 0, cells = 0, netNames = 0,
         memories = 0;  ///< Offset of each section's object; 0 when missing.
  std::vector<NetlistPort> portList;
  std::vector<NetlistInstance> instances;
  QHash<QByteArray, int> instanceByName;
};

class NetlistText {
 public:
  /// Maps the open file, which may then be closed, and reads the outline. `topKey` is
  /// the top's name as the netlist writes it.
  bool open(int file, const QByteArray& topKey, QString& error);

  std::string_view text() const { return text_; }
  const std::vector<NetlistModule>& modules() const { return modules_; }
  const NetlistModule& module(int index) const { return modules_[size_t(index)]; }
  int top() const { return top_; }
  int find(const QByteArray& module) const { return moduleByName_.value(module, -1); }
  size_t modulesBody() const { return modulesBody_; }  ///< Offset of the object that holds all modules.

 private:
  bool readModule(JsonCursor& cursor, NetlistModule& module);
  bool readPorts(JsonCursor& cursor, NetlistModule& module);
  bool readInstances(JsonCursor& cursor, NetlistModule& module);

  QFile file_;
  std::string_view text_;
  std::vector<NetlistModule> modules_;
  QHash<QByteArray, int> moduleByName_;
  int top_ = -1;
  size_t modulesBody_ = 0;
};

}  // namespace ost
