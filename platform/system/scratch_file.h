// An open file without a name, for what another program is to read or write.
#pragma once

#include <QByteArray>
#include <QString>

#include "platform/system/descriptor.h"

namespace ost {

/// Lies in the folder for temporary files and vanishes with the object. A `reason` is one clear text that names the
/// folder and the system's reason.
class ScratchFile {
 public:
  bool open(QString& reason);
  /// Writes the contents of the new file and rewinds it.
  bool write(const QByteArray& bytes, QString& reason);
  /// False when the output of another program may have been cut short.
  bool hasRoom(QString& reason) const;
  /// All that it holds, from its beginning; empty when that is more than 1 GiB or cannot be read.
  QByteArray content() const;
  int fd() const { return file_.fd(); }

 private:
  Descriptor file_;
};

}  // namespace ost
