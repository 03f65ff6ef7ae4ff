// The private folder of a reading, and the way back from its names.
#include "platform/design/script_files.h"

#include <errno.h>

#include <QDir>
#include <algorithm>

#include "platform/design/yosys_script.h"
#include "platform/system/files.h"
#include "platform/text/byte_text.h"

namespace ost {

QByteArray ScriptFiles::link(const QString& target, const char* kind, const QByteArray& suffix, QString& error) {
  if (!links_) links_.reset(new LinkFolder);
  const QByteArray name = kind + QByteArray::number(linked_.size()) + suffix, real = QFile::encodeName(target);
  const QByteArray path = links_->path() + '/' + name;
  errno = EINVAL;
  if (!YosysScript::isPlainFile(links_->path()) || !links_->add(name, real)) {
    error = QStringLiteral("Cannot link \"%1\" into the temporary folder \"%2\": %3; set TMPDIR to another folder")
                .arg(textFromFile(target), textFromFile(QDir::tempPath()), systemReason(errno));
    return QByteArray();
  }
  linked_.append(qMakePair(path, real));
  return path;
}

QByteArray ScriptFiles::keep(const QByteArray& content, const QByteArray& suffix, const QString& shown,
                             QString& error) {
  if (!links_) links_.reset(new LinkFolder);
  const QByteArray name = "text" + QByteArray::number(linked_.size()) + suffix, path = links_->path() + '/' + name;
  errno = EINVAL;
  if (!YosysScript::isPlainFile(links_->path()) || !links_->write(name, content)) {
    error = QStringLiteral("Cannot write into the temporary folder \"%1\": %2; set TMPDIR to another folder.")
                .arg(textFromFile(QDir::tempPath()), systemReason(errno));
    return QByteArray();
  }
  linked_.append(qMakePair(path, QByteArray()));
  show(path, shown);
  return path;
}

QByteArray ScriptFiles::inUsersWords(QByteArray text) const {
  QList<QPair<QByteArray, QByteArray>> rewrites = rewrites_;
  std::stable_sort(rewrites.begin(), rewrites.end(),
                   [](const auto& a, const auto& b) { return a.first.size() > b.first.size(); });
  for (const auto& rewrite : qAsConst(rewrites)) {
    for (int at = text.indexOf(rewrite.first); at >= 0; at = text.indexOf(rewrite.first, at)) {
      const int after = at + rewrite.first.size();
      const char next = after < text.size() ? text.at(after) : ' ';
      const bool whole = !((next >= 'a' && next <= 'z') || (next >= 'A' && next <= 'Z') ||
                           (next >= '0' && next <= '9') || next == '_' || next == '.');
      if (whole) text.replace(at, rewrite.first.size(), rewrite.second);
      at += whole ? rewrite.second.size() : 1;
    }
  }
  return text;
}

QString ScriptFiles::realFile(const QByteArray& name, const QString& workingDirectory) const {
  QByteArray real = name;
  for (const auto& link : linked_) {
    if (real == link.first && link.second.isEmpty()) return QString();
    if (real == link.first || real.startsWith(link.first + '/')) real.replace(0, link.first.size(), link.second);
  }
  return QDir::cleanPath(QDir(workingDirectory).absoluteFilePath(QFile::decodeName(real)));
}

}  // namespace ost
