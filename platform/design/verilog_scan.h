// A light look at Verilog text, for what must be known before Yosys elaborates it: which modules it declares, which of
// them have no body, and what a module looks like from outside.
#pragma once

#include <QByteArray>
#include <QList>
#include <QSet>

namespace ost {

/// A module as declared in a text.
struct ScannedModule {
  QByteArray name;         ///< Without the backslash of an escaped identifier.
  bool bodyless = false;   ///< Holds ports and parameters only, or has the attribute `blackbox` or `whitebox`.
  QSet<QByteArray> words;  ///< Identifiers in places where a module's name stands in an instance.
  QSet<QByteArray> ports;  ///< Identifiers in the declarations of ports and parameters.
  QByteArray shell;        ///< The module with nothing but its ports, parameters, types and functions.
};

/// The modules of a text, in order. Directives are skipped: of conditional pieces all count, and macros are not
/// replaced; `shell` is right only for preprocessed text.
QList<ScannedModule> scanVerilog(const QByteArray& text);

/// The line, from 1 on, at which the text is encrypted; 0 when it is not.
int encryptedLine(const QByteArray& text);

}  // namespace ost
