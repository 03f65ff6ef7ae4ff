// The enumerated types of a netlist's nets, out of the attributes that Yosys keeps them in.
#pragma once

#include <QByteArray>
#include <QHash>
#include <string_view>
#include <vector>

#include "platform/text/enum_names.h"

namespace ost {

/// Collects each type once, while the nets are read one after the other.
class EnumTypes {
 public:
  explicit EnumTypes(std::vector<EnumNames>& types) : types_(types) {}

  void beginNet() { names_.clear(); }
  /// An attribute of the net; others than those of enumerated types are passed over.
  void take(std::string_view attribute, std::string_view text);
  /// The index of the type that the net's attributes tell of; -1 without one, or where it does not fit the width in
  /// bits.
  int typeOf(int width);

 private:
  std::vector<EnumNames>& types_;
  QHash<QByteArray, int> numbers_;
  EnumNames names_;  ///< Of the net that is being read.
};

}  // namespace ost
