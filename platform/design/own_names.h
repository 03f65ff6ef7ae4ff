// Which names of a netlist are names of its sources, and which ones a front end made up.
#pragma once

#include <algorithm>
#include <string_view>

namespace ost {

/// No blank and no control character in it.
inline bool isPrintableName(std::string_view name) {
  return std::none_of(name.begin(), name.end(),
                      [](char c) { return static_cast<unsigned char>(c) <= ' ' || c == 0x7f; });
}

/// Arguments, results and variables of a call, which Yosys names `function$func$file:line$number.x`.
bool isFunctionHelper(std::string_view name);

/// What GHDL calls the nets between the signals of the source: `n18_o`, `n33_q`, `n55_data`. Nothing but the source
/// tells them from signals that are called so.
bool isGhdlName(std::string_view name);

}  // namespace ost
