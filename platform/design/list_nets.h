// The names of all nets, as the source has them where that is known.
#pragma once

#include <functional>

#include "platform/design/design.h"
#include "platform/design/name_index.h"

namespace ost {

/// The name without the levels that Yosys puts before the branches of "else if" in a generate block:
/// "genblk1.genblk1.b.x" is "b.x" in the source. Of levels directly before the last component the outermost stands
/// there, too.
QByteArray nameWithoutLevels(const QByteArray& kept);

/// Visits every net of every instance until `visit` returns false. A name is shown without such levels where no other
/// of its module would be shown alike; each leads back to its net.
void listNets(const NameIndex& index, const std::function<bool(const NetName&)>& visit);

}  // namespace ost
