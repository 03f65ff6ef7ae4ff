// Staging and swapping of the output folder. Everything is reached through open folders, never through a link that
// has been put in the place of one.
#include "platform/insert/output_folder.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cerrno>
#include <cstdlib>

#include "platform/insert/folder_list.h"
#include "platform/system/process_mark.h"
#include "platform/text/byte_text.h"

namespace ost {
namespace {

constexpr int kAttempts = 100;

}  // namespace

OutputFolder::OutputFolder(const QString& target, const QString& project)
    : target_(QDir::cleanPath(QFileInfo(target).absoluteFilePath())),
      project_(QFile::encodeName(project)),
      name_(QFile::encodeName(QFileInfo(target_).fileName())) {}

OutputFolder::~OutputFolder() {
  discard();
}

/// Those whose staged folder is removed when the process exits in the middle of a run.
QList<OutputFolder*>& OutputFolder::unfinished() {
  static QList<OutputFolder*>* folders = [] {
    std::atexit([] {
      while (!unfinished().isEmpty()) unfinished().first()->discard();
    });
    return new QList<OutputFolder*>;
  }();
  return *folders;
}

void OutputFolder::discard() {
  unfinished().removeAll(this);
  // A child process that this one forked has a copy of the object.
  if (staged_.isOpen() && process_ == getpid()) removeOwn(parent_.fd(), stagedName_, staged_.fd());
  staged_.reset();
}

bool OutputFolder::refuse(QString& error, const char* text, const QString& file, int code) const {
  error = QString::fromLatin1(text).arg(textFromUnicode(file), systemReason(code));
  return false;
}

/// False when the folder holds anything that no insertion wrote, or is another project's.
bool OutputFolder::isReplaceable(int folder, QString& error) const {
  QByteArray foreign;
  if (!findForeign(folder, foreign)) return refuse(error, "Cannot read the output folder \"%1\": %2.", target_, errno);
  if (!foreign.isEmpty()) {
    error = QStringLiteral(
                "The output folder \"%1\" holds \"%2\", which no insertion wrote; move it elsewhere, since the folder "
                "is replaced as a whole.")
                .arg(textFromUnicode(target_), textFromBytes(foreign));
    return false;
  }
  const QByteArray changed = findChanged(folder);
  if (!changed.isEmpty()) {
    error = QStringLiteral(
                "In the output folder \"%1\" the file \"%2\" was changed after the insertion wrote it; move it "
                "elsewhere, or remove it (a JTAG wrapper of your own is named with ost_design jtag FILE).")
                .arg(textFromUnicode(target_), textFromBytes(changed));
    return false;
  }
  const QByteArray maker = readList(folder).project;
  if (maker.isEmpty() || project_.isEmpty() || maker == project_) return true;
  error = QStringLiteral(
              "The output folder \"%1\" was written for the project \"%2\", and \"%3\" would replace it; move the "
              "folder away, or save this project under another name (ost_project save <file>).")
              .arg(textFromUnicode(target_), textFromBytes(maker), textFromBytes(project_));
  return false;
}

/// Opens what is in the target's place; `old` stays closed when there is nothing.
bool OutputFolder::openOld(Descriptor& old, QString& error) const {
  old = openFolder(parent_.fd(), name_);
  if (old.isOpen()) return isReplaceable(old.fd(), error);
  if (errno == ENOENT) return true;
  if (errno != ENOTDIR && errno != ELOOP)
    return refuse(error, "Cannot read the output folder \"%1\": %2.", target_, errno);
  error = QStringLiteral("There is a file or link in the place of the output folder \"%1\"; move it away.")
              .arg(textFromUnicode(target_));
  return false;
}

bool OutputFolder::begin(const QStringList& files, QString& error) {
  const QString parent = QFileInfo(target_).path();
  parent_.reset(open(QFile::encodeName(parent).constData(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!parent_.isOpen()) return refuse(error, "Cannot create the folder \"%1\": %2.", target_, errno);
  clearLeftovers(parent_.fd(), name_);
  Descriptor old;
  if (!openOld(old, error)) return false;

  bool made = false;
  for (int i = 0; i < kAttempts && !made; ++i) {
    stagedName_ = name_ + ".new-" + ownTag() + '-' + QByteArray::number(i);
    made = mkdirat(parent_.fd(), stagedName_.constData(), 0777) == 0;
    if (!made && errno != EEXIST) break;
  }
  if (made) staged_ = openFolder(parent_.fd(), stagedName_);
  if (!staged_.isOpen())
    return refuse(error, "Cannot create the folder \"%1\": %2.",
                  parent + QLatin1Char('/') + QFile::decodeName(stagedName_), errno);
  process_ = getpid();
  unfinished().append(this);
  QByteArray list;
  if (!project_.isEmpty()) list = kProjectKey + project_.toPercentEncoding() + '\n';
  for (const QString& name : files) names_.append(QFile::encodeName(name));
  for (const QByteArray& name : qAsConst(names_)) list += name + '\n';
  return write(QLatin1String(kListName), list, error);
}

QString OutputFolder::stagedFile(const QString& name) const {
  return QStringLiteral("/proc/self/fd/%1/%2").arg(staged_.fd()).arg(name);
}

std::unique_ptr<FileWriter> OutputFolder::create(const QString& name, QString& error) const {
  const int how = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  Descriptor file(openat(staged_.fd(), QFile::encodeName(name).constData(), how, 0666));
  if (file.isOpen()) return std::make_unique<FileWriter>(std::move(file));
  refuse(error, "Cannot write \"%1\": %2.", target_ + QLatin1Char('/') + name, errno);
  return nullptr;
}

bool OutputFolder::finish(const QString& name, FileWriter& file, QString& error) const {
  return file.finish() || refuse(error, "Cannot write \"%1\": %2.", target_ + QLatin1Char('/') + name, errno);
}

bool OutputFolder::write(const QString& name, const QByteArray& contents, QString& error) const {
  const std::unique_ptr<FileWriter> file = create(name, error);
  if (!file) return false;
  file->write(contents);  // finish() reports a failure
  return finish(name, *file, error);
}

bool OutputFolder::store(const QString& name, QString& error) const {
  Descriptor file(openat(staged_.fd(), QFile::encodeName(name).constData(), O_WRONLY | O_NOFOLLOW | O_CLOEXEC));
  if (file.isOpen() && storeAndClose(file)) return true;
  return refuse(error, "Cannot write \"%1\": %2.", target_ + QLatin1Char('/') + name, errno);
}

/// Puts the staged folder in the place of the old one, which then has the name `aside`. One call exchanges both, so
/// that a crash leaves the old or the new one; where the file system cannot do that, two renames do, and the next run
/// completes what a crash between them left.
bool OutputFolder::swap(QByteArray& aside) const {
  const int parent = parent_.fd();
  aside = stagedName_;
  if (renameat2(parent, stagedName_.constData(), parent, name_.constData(), RENAME_EXCHANGE) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS) return false;
  aside = name_ + ".old-" + ownTag();
  if (!renameIn(parent, name_, aside)) return false;
  if (renameIn(parent, stagedName_, name_)) return true;
  const int code = errno;
  renameIn(parent, aside, name_);
  errno = code;
  return false;
}

/// Appended to the list, which at no time misses a file.
bool OutputFolder::writeDigests(QString& error) const {
  Descriptor list(openat(staged_.fd(), kListName, O_WRONLY | O_APPEND | O_NOFOLLOW | O_CLOEXEC));
  if (!list.isOpen())
    return refuse(error, "Cannot write \"%1\": %2.", target_ + QLatin1Char('/') + QLatin1String(kListName), errno);
  FileWriter file(std::move(list));
  for (const QByteArray& name : names_) {
    const QByteArray digest = digestOf(staged_.fd(), name);
    if (!digest.isEmpty()) file.write(kDigestKey + digest + '/' + name + '\n');
  }
  return finish(QLatin1String(kListName), file, error);
}

bool OutputFolder::commit(QString& error) {
  const char what[] = "Cannot put the new output folder \"%1\" in place: %2.";
  const int parent = parent_.fd();
  Descriptor old;
  if (!openOld(old, error)) return false;
  if (!isNameOf(parent, stagedName_, staged_.fd())) {
    error = QStringLiteral("The folder \"%1\", which was to replace \"%2\", has been moved away; run again.")
                .arg(textFromBytes(stagedName_), textFromUnicode(target_));
    return false;
  }
  if (!writeDigests(error)) return false;
  QByteArray aside;
  if (old.isOpen() ? !swap(aside) : !renameIn(parent, stagedName_, name_)) return refuse(error, what, target_, errno);
  unfinished().removeAll(this);
  // Files that were put into the old folder since the check, or are being put there now, are carried over.
  for (int i = 0; i < kAttempts && old.isOpen() && !removeOwn(parent, aside, old.fd()); ++i) {
    QList<QByteArray> late;
    listFolder(old.fd(), late);
    for (const QByteArray& file : late)
      if (!existsIn(staged_.fd(), file)) renameat(old.fd(), file.constData(), staged_.fd(), file.constData());
  }
  staged_.reset();
  return true;
}

}  // namespace ost
