// Staging and swapping of the output folder.
#include "platform/insert/output_folder.h"

#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFileInfo>
#include <QSet>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "platform/istdata/wire_text.h"

namespace ost {
namespace {

const char kListName[] = "ostrel_files.txt";

QString reasonOf(int code) {
  return wireFromBytes(std::strerror(code));
}

QStringList listedFiles(const QString& folder) {
  QFile list(folder + QLatin1Char('/') + QLatin1String(kListName));
  if (!list.open(QIODevice::ReadOnly)) return {};
  QStringList names;
  for (const QByteArray& line : list.readAll().split('\n')) {
    const QString name = QFile::decodeName(line);
    if (!name.isEmpty() && !name.contains(QLatin1Char('/'))) names.append(name);
  }
  return names;
}

/// The first entry that the folder's list does not name; empty when all are the insertion's own.
QString foreignEntry(const QString& folder) {
  const QStringList names = listedFiles(folder);
  QSet<QString> own(names.begin(), names.end());
  own.insert(QLatin1String(kListName));
  const QDir::Filters everything = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
  for (const QFileInfo& entry : QDir(folder).entryInfoList(everything))
    if (!own.contains(entry.fileName()) || (entry.isDir() && !entry.isSymLink())) return entry.fileName();
  return QString();
}

/// Removes the files of the list and the folder if nothing else is in it.
void removeOwnFolder(const QString& folder) {
  for (const QString& name : listedFiles(folder)) QFile::remove(folder + QLatin1Char('/') + name);
  QFile::remove(folder + QLatin1Char('/') + QLatin1String(kListName));
  QDir().rmdir(folder);
}

bool rename(const QString& from, const QString& to) {
  return ::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0;
}

/// Staged folders of this process, removed when it exits in the middle of a run.
QSet<QString>& stagedFolders() {
  static QSet<QString>* folders = [] {
    std::atexit([] {
      for (const QString& folder : stagedFolders()) removeOwnFolder(folder);
    });
    return new QSet<QString>;
  }();
  return *folders;
}

/// What runs that no longer live left beside the target: "<target>.new-<process>" and "<target>.old-<process>".
void clearLeftovers(const QString& target) {
  const QFileInfo info(target);
  const QString name = info.fileName();
  for (const QFileInfo& entry : info.dir().entryInfoList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot)) {
    const QString tail = entry.fileName().mid(name.size());
    if (!entry.fileName().startsWith(name) || entry.isSymLink()) continue;
    const bool old = tail.startsWith(QLatin1String(".old-"));
    if (!old && !tail.startsWith(QLatin1String(".new-"))) continue;
    bool isNumber = false;
    const int process = tail.mid(5).toInt(&isNumber);
    if (!isNumber || process <= 0 || process == getpid() || kill(process, 0) == 0 || errno != ESRCH) continue;
    // A run died between its two renames: the old folder is still the one in force.
    if (old && !QFileInfo::exists(target) && rename(entry.filePath(), target)) continue;
    removeOwnFolder(entry.filePath());
  }
}

}  // namespace

OutputFolder::OutputFolder(const QString& target) : target_(QDir::cleanPath(QFileInfo(target).absoluteFilePath())) {}

OutputFolder::~OutputFolder() {
  if (staged_.isEmpty()) return;
  removeOwnFolder(staged_);
  stagedFolders().remove(staged_);
}

bool OutputFolder::begin(const QStringList& files, QString& error) {
  clearLeftovers(target_);
  const QFileInfo info(target_);
  if (info.exists() || info.isSymLink()) {
    if (!info.isDir() || info.isSymLink()) {
      error = QStringLiteral("The output folder \"%1\" is in the way of a file or link of that name; move it away.")
                  .arg(toWire(target_));
      return false;
    }
    const QString foreign = foreignEntry(target_);
    if (!foreign.isEmpty()) {
      error = QStringLiteral(
                  "The output folder \"%1\" holds \"%2\", which no insertion wrote; move it elsewhere, since "
                  "the folder is replaced as a whole.")
                  .arg(toWire(target_), toWire(foreign));
      return false;
    }
  }
  const QString folder = target_ + QStringLiteral(".new-%1").arg(getpid());
  removeOwnFolder(folder);
  if (mkdir(QFile::encodeName(folder).constData(), 0777) != 0) {
    error = QStringLiteral("Cannot create the folder \"%1\": %2.").arg(toWire(folder), reasonOf(errno));
    return false;
  }
  staged_ = folder;
  stagedFolders().insert(folder);
  QByteArray list;
  for (const QString& name : files) list += QFile::encodeName(name) + '\n';
  return write(QLatin1String(kListName), list, error);
}

QString OutputFolder::stagedFile(const QString& name) const {
  return staged_ + QLatin1Char('/') + name;
}

bool OutputFolder::write(const QString& name, const QByteArray& contents, QString& error) const {
  QFile file(stagedFile(name));
  if (file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size() && file.flush()) return true;
  error = QStringLiteral("Cannot write \"%1\": %2.")
              .arg(toWire(target_ + QLatin1Char('/') + name), toWire(file.errorString()));
  return false;
}

bool OutputFolder::commit(QString& error) {
  const QByteArray from = QFile::encodeName(staged_), to = QFile::encodeName(target_);
  // One call swaps both, so that a crash leaves the old or the new; where the file system cannot, two renames do, and
  // the next run finishes what a crash between them leaves.
  bool done = false;
  if (!QFileInfo::exists(target_)) {
    done = rename(staged_, target_);
    if (done) {
      stagedFolders().remove(staged_);
      staged_.clear();
    }
  } else if (renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_EXCHANGE) == 0) {
    done = true;  // the old one goes with the object
  } else if (errno == EINVAL || errno == ENOSYS) {
    const QString old = target_ + QStringLiteral(".old-%1").arg(getpid());
    if (rename(target_, old)) {
      done = rename(staged_, target_);
      if (!done) {
        const int code = errno;
        rename(old, target_);
        errno = code;
      } else {
        stagedFolders().remove(staged_);
        staged_.clear();
        removeOwnFolder(old);
      }
    }
  }
  if (!done)
    error =
        QStringLiteral("Cannot put the new output folder \"%1\" in place: %2.").arg(toWire(target_), reasonOf(errno));
  return done;
}

}  // namespace ost
