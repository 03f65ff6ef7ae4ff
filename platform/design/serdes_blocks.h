// The serdes blocks of a design: the instances of modules that the attribute `ostrel_role` marks with "dcu", and in
// them the nets that `ostrel_watch` marks.
#pragma once

#include "platform/design/name_index.h"

namespace ost {

/// In the order of the hierarchy, `most` at most. Goes only where there is such a block below.
QVector<SerdesBlock> findSerdesBlocks(const NameIndex& index, int most);

}  // namespace ost
