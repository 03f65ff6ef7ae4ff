// Short ways to read a design.
#pragma once

#include <stdexcept>

#include "platform/netlist/netlist.h"
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

/// A design of one file and its netlist; throws the reader's text.
struct DesignAndNetlist {
  explicit DesignAndNetlist(const QString& file, const QString& top = QString()) {
    QString error;
    DesignSource source = sourceOf({file});
    source.top = top;
    design = readDesign(source, error);
    if (design) netlist = Netlist::load(*design, error);
    if (!netlist) throw std::runtime_error(plain(error));
  }
  std::shared_ptr<const Design> design;
  std::shared_ptr<const Netlist> netlist;
};

}  // namespace ost
