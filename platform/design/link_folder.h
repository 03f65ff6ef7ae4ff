// A private folder of links, by which Yosys' scripts reach files whose names they cannot hold, and of texts made for
// them.
#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

#include "platform/system/descriptor.h"

namespace ost {

/// Goes away with the object. What a process that was killed left behind is removed when another makes its own.
class LinkFolder {
 public:
  LinkFolder();
  LinkFolder(const LinkFolder&) = delete;
  LinkFolder& operator=(const LinkFolder&) = delete;

  QByteArray path() const;
  /// Makes the link `name` to the file or folder `target`. False with errno set.
  bool add(const QByteArray& name, const QByteArray& target) const;
  /// Writes the file `name`. False with errno set.
  bool write(const QByteArray& name, const QByteArray& content) const;

 private:
  QTemporaryDir folder_;
  Descriptor lock_;  ///< The folder itself, open and locked as long as it is in use.
};

}  // namespace ost
