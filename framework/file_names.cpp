// Tests on the files that project commands name.
#include "framework/file_names.h"

#include <QFile>
#include <QFileInfo>
#include <QString>

namespace ost_command {

namespace {

QString decoded(const std::string& name) {
  return QFile::decodeName(name.c_str());
}

}  // namespace

bool fileExists(const std::string& name) {
  return QFile::exists(decoded(name));
}

bool isAnotherExistingFile(const std::string& name, const std::string& current) {
  // Existence first: two files that do not exist compare equal.
  return fileExists(name) && QFileInfo(decoded(name)) != QFileInfo(decoded(current));
}

}  // namespace ost_command
