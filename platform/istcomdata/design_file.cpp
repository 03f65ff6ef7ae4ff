// The file list of the design beside the project: what a save or a run leaves for the next process.
#include <QFileInfo>

#include "platform/design/design_list.h"
#include "platform/istcomdata/service_private.h"
#include "platform/system/files.h"
#include "platform/text/byte_text.h"
#include "platform/text/names.h"

namespace mero {
namespace ostrel {

void IstComData::Private::keepDesign() {
  constexpr qint64 kMostBytes = 16 << 20;  // As much as a file list may have.
  ost::DesignSession& session = ost::DesignSession::instance();
  const std::shared_ptr<const ost::Design> design = session.design();
  if (!design || !project || project->fileName.isEmpty()) return;
  const QFileInfo info(ost::fileFromText(project->fileName));
  const QString name = info.completeBaseName() + QLatin1String(".design.f"), folder = info.absolutePath();
  const QString file = folder + QLatin1Char('/') + name;
  const QString saving = folder + QLatin1String("/.") + name + QLatin1String(".saving");
  if (QFileInfo::exists(saving)) QFile::remove(saving);  // Of a save that was killed: the project's lock is ours.
  QByteArray before;
  QString reason;
  if (QFileInfo::exists(file) && (!ost::readFile(file, kMostBytes, before, reason) || !ost::isDesignList(before)))
    return;
  const QByteArray text = ost::designListText(*design, session.jtag(), file, before, reason);
  if (text == before && reason.isEmpty()) return;
  if (reason.isEmpty() && ost::replaceFile({file, saving}, text, reason)) return;
  ost::say(QStringLiteral("WARNING: The words that read the design could not be kept in %1: %2.")
               .arg(ost::quoted(ost::textFromFile(file)), reason));
}

}  // namespace ostrel
}  // namespace mero
