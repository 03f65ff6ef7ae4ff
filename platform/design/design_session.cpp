// The one design in force and what decides when Yosys runs again.
#include "platform/design/design_session.h"

#include <QDir>

#include "platform/design/read_options.h"
#include "platform/text/byte_text.h"

namespace ost {

struct DesignSession::Private {
  std::shared_ptr<const Design> design;
  std::function<bool()> idleHook;
  bool reading = false;
  ProofMode proof = ProofMode::Off;
  QString badProof;  ///< What is wrong with $OST_PROVE.
  JtagWords jtag;

  bool read(const DesignSource& source, const std::function<bool()>& idle, const QString& workingDirectory,
            QString& error) {
    if (reading) {
      error = QStringLiteral("A design is being read already; wait until it is done");
      return false;
    }
    struct Flag {
      bool& value;
      explicit Flag(bool& flag) : value(flag) { value = true; }
      ~Flag() { value = false; }
    } flag(reading);
    std::shared_ptr<const Design> fresh = Design::read(source, error, idle ? idle : idleHook, workingDirectory);
    if (!fresh) return false;
    design = fresh;
    return true;
  }
};

namespace {

bool sameSource(const DesignSource& a, const DesignSource& b) {
  const auto words = [](const DesignSource& s) {
    return QList<QStringList>{
        s.files,         s.fileLists,
        s.includeDirs,   s.defines,
        s.blackBoxes,    s.parameters,
        s.libraryDirs,   s.librarySuffixes,
        s.vhdlLibraries, {s.top, s.cells, s.systemVerilog, s.vhdlStandard, s.jtag.way, s.jtag.chain, s.jtag.period}};
  };
  return words(a) == words(b);
}

}  // namespace

QString noDesignText() {
  return QStringLiteral("No design is loaded; read it first with ost_design read.");
}

bool proofModeFromWord(const QByteArray& word, ProofMode& mode) {
  static const QHash<QByteArray, ProofMode> modes{
      {"on", ProofMode::On},     {"yes", ProofMode::On},  {"true", ProofMode::On},
      {"1", ProofMode::On},      {"off", ProofMode::Off}, {"no", ProofMode::Off},
      {"false", ProofMode::Off}, {"0", ProofMode::Off},   {"strict", ProofMode::Strict}};
  const auto found = modes.constFind(word.toLower());
  if (found == modes.constEnd()) return false;
  mode = *found;
  return true;
}

DesignSession::DesignSession() : d(new Private) {
  const QByteArray word = qgetenv("OST_PROVE");
  if (!word.isEmpty() && !proofModeFromWord(word, d->proof))
    d->badProof = QStringLiteral(
                      "The environment variable OST_PROVE is \"%1\", but must be on, off or strict; set it right, or "
                      "use ost_design prove on, off or strict.")
                      .arg(textFromBytes(word));
}

DesignSession::~DesignSession() = default;

DesignSession& DesignSession::instance() {
  static DesignSession session;
  return session;
}

std::shared_ptr<const Design> DesignSession::design() const {
  return d->design;
}

bool DesignSession::isReading() const {
  return d->reading;
}

bool DesignSession::read(const DesignSource& source, QString& error, const std::function<bool()>& idle) {
  const std::shared_ptr<const Design> loaded = d->design;
  if (!d->reading && loaded && sameSource(loaded->source(), source) &&
      loaded->workingDirectory() == QDir::currentPath() && !loaded->isStale()) {
    return true;
  }
  return d->read(source, idle, QString(), error);
}

bool DesignSession::readFromEnvironment(QString& error) {
  if (d->design) return true;
  const QString name = textFromBytes(qgetenv("OST_DESIGN"));
  if (name.isEmpty()) {
    error = noDesignText();
    return false;
  }
  DesignSource source;
  const QByteArray suffix = name.mid(name.lastIndexOf(QLatin1Char('.'))).toLower().toLatin1();
  const bool design = QList<QByteArray>{".json", ".v", ".sv", ".vhd", ".vhdl"}.contains(suffix);
  (design ? source.files : source.fileLists).append(name);
  if (d->read(source, {}, QString(), error)) return true;
  error = QStringLiteral("OST_DESIGN: %1").arg(error);
  return false;
}

bool DesignSession::refresh(QString& error) {
  const std::shared_ptr<const Design> loaded = d->design;
  if (!loaded) {
    error = noDesignText();
    return false;
  }
  if (!loaded->isStale()) return true;
  // Relative names mean the folder of the first read, wherever the process stands now.
  return d->read(loaded->source(), {}, loaded->workingDirectory(), error);
}

void DesignSession::close() {
  d->design.reset();
}

bool DesignSession::proofMode(ProofMode& mode, QString& error) const {
  mode = d->proof;
  error = d->badProof;
  return error.isEmpty();
}
void DesignSession::setProofMode(ProofMode mode) {
  d->badProof.clear();
  d->proof = mode;
}
JtagWords DesignSession::jtag() const {
  JtagWords words = d->jtag;
  if (!d->design) return words;
  JtagWords read = d->design->jtag();
  if (!read.way.isEmpty() && !isJtagWord(read.way) && !read.way.startsWith(QLatin1Char('/')))
    read.way = textFromFile(d->design->workingDirectory()) + QLatin1Char('/') + read.way;
  words.fill(read);
  return words;
}
void DesignSession::setJtag(const JtagWords& words) {
  d->jtag = words;
}
void DesignSession::setIdleHook(std::function<bool()> hook) {
  d->idleHook = std::move(hook);
}

}  // namespace ost
