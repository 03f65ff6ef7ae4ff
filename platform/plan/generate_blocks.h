// Names of a Yosys netlist as scopes of Verilog.
#pragma once

#include <QStringList>

namespace ost {

/// A name out of the netlist, where a backslash may protect its first character.
QString withoutProtection(const QString& key);
/// "lane[1].deep.q" as the generate blocks "lane[1]" and "deep" and the name "q": Yosys puts what a block holds behind
/// the block's name and a dot. A name with other characters before its dot is an escaped one.
QStringList splitAtBlocks(const QString& name);

}  // namespace ost
