// Short ways to read a design.
#pragma once

#include "platform/design/design.h"
#include "tests/unit/scratch.h"

namespace ost {

inline DesignSource sourceOf(const QStringList& files) {
  DesignSource source;
  source.files = files;
  return source;
}

/// On failure null and the text in `error`.
inline std::shared_ptr<const Design> readDesign(const DesignSource& source, QString& error) {
  error.clear();
  return Design::read(source, error);
}

}  // namespace ost
