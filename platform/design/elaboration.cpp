// The rounds of a reading.
#include "platform/design/elaboration.h"

#include <QRegularExpression>

#include "platform/text/byte_text.h"

namespace ost {
namespace {

constexpr int kMaxRounds = 64;  ///< Levels of modules that are found one below the other.

// Without processes and internal cells the netlist is some thirty times smaller, with the same names and instances.
const char kNamesOnly[] =
    "delete */p:*\n"
    "select -set ost_cells */t:$* */t:$paramod* %d\n"
    "delete @ost_cells\n"
    "write_json";

// The words of a Makefile rule's right side, whose blanks are escaped.
QList<QByteArray> dependencyWords(const ScratchFile& file) {
  QByteArray text = file.content().trimmed();
  text = text.mid(text.indexOf(": ") + 2);
  QList<QByteArray> words;
  QByteArray word;
  for (int i = 0; i < text.size(); ++i) {
    if (text[i] == '\\' && i + 1 < text.size() && text[i + 1] == ' ') {
      word += text[++i];
    } else if (text[i] == ' ') {
      words.append(word);
      word.clear();
    } else {
      word += text[i];
    }
  }
  words.append(word);
  return words;
}

bool tellsOfUnknownModule(const QString& error) {
  return error.contains(QLatin1String("' is not part of the design"));
}

}  // namespace

YosysJob Elaboration::job() const {
  YosysJob job;
  job.workingDirectory = workingDirectory_;
  job.timeLimitSeconds = source_.timeLimitSeconds;
  job.memoryLimitBytes = source_.memoryLimitBytes;
  job.idle = idle_;
  return job;
}

ToolLimits Elaboration::limits() const {
  return {workingDirectory_, source_.timeLimitSeconds, source_.memoryLimitBytes, idle_};
}

bool Elaboration::run(NameIndex& index, QString& error) {
  if (plan_.isNetlist()) return resolve(index.unknownTypes, error);
  for (const ScannedModule& module : plan_.modules()) names_.insert(module.name);
  // Verilog may name an entity in any round: the plain name is kept for it.
  if (!names_.isEmpty())
    for (const VhdlEntity& entity : plan_.vhdl().scan.entities) names_ << entity.name << entity.name.toLower();
  if (!chooseSystemVerilog(error) || !chooseCells(error)) return false;
  if (!findTop(error) || !declareBoxes(error) || !addVhdlTop(error)) return false;
  for (int round = 0; round < kMaxRounds; ++round) {
    if (!survey(index, error)) return false;
    if (!plan_.knowsTop()) {
      // The one instance of the module that carries the parameters.
      const ModuleEntry& holder = index.modules[size_t(index.top)];
      if (holder.instances.empty()) return resolve(index.unknownTypes, error);
      plan_.setDerivedTop(index.modules[size_t(holder.instances.front().module)].key);
    } else if (knowsAll(index)) {
      return true;
    } else if (!resolve(index.unknownTypes, error)) {
      return false;
    }
  }
  error = QStringLiteral("After %1 rounds of looking for modules there are still unknown ones, the first is \"%2\".")
              .arg(kMaxRounds)
              .arg(textFromBytes(index.unknownTypes.value(0)));
  return false;
}

bool Elaboration::knowsAll(const NameIndex& index) const {
  return std::all_of(index.unknownTypes.begin(), index.unknownTypes.end(),
                     [this](const QByteArray& type) { return plan_.isLeftUnknown(type); });
}

bool Elaboration::survey(NameIndex& index, QString& error) {
  if (surveyOnce(index, error)) return true;
  // Without a top all modules are elaborated, with their defaults, which some do not allow.
  const QList<QByteArray> candidates = roots();
  if (!plan_.top().isEmpty() || candidates.size() != 1 || error.contains(QLatin1String("syntax error"))) return false;
  QString second;
  plan_.setTop(candidates.first());
  return surveyOnce(index, second);
}

bool Elaboration::surveyOnce(NameIndex& index, QString& error) {
  index = NameIndex();
  ScratchFile netlist, dependencies, log;
  if (!netlist.open(error) || !dependencies.open(error) || !log.open(error)) return false;
  YosysJob read = job();
  read.script = plan_.hierarchyScript(false);
  read.script.line(kNamesOnly).openFile(0);
  // Checked last, so that of all unknown modules the netlist tells first.
  if (plan_.isChecked()) read.script.line("hierarchy -check");
  read.files << netlist.fd() << dependencies.fd() << log.fd();
  read.dependencyFile = 1;
  read.logFile = 2;
  const YosysResult result = runYosys(read);
  if (!result.ok && !tellsOfUnknownModule(result.error)) {
    error = said(result);
    return false;
  }
  unknownModule_ = result.error;
  if (!readNameIndex(netlist.fd(), QStringLiteral("the netlist made by Yosys"), index, error)) {
    // Yosys tells of no write that fails.
    if (!netlist.hasRoom(error)) return false;
    if (index.modules.empty()) error = QStringLiteral("The sources declare no module");
    return false;
  }
  hideGhdlNets(index);
  nameVhdlValues(index);
  if (!index.complete(QByteArray(), error)) return false;
  noteReadFiles(dependencies);
  for (const ModuleEntry& module : index.modules) names_.insert(sourceName(module.key));
  return true;
}

void Elaboration::noteReadFiles(const ScratchFile& dependencies) {
  const QStringList given = plan_.files();
  for (const QByteArray& word : dependencyWords(dependencies)) {
    if (word.isEmpty() || word == "/dev/stdin" || word.startsWith("/proc/self/")) continue;
    const QString file = plan_.realFile(word);
    if (!file.isEmpty() && !given.contains(file) && !readFiles_.contains(file)) readFiles_.append(file);
  }
}

bool Elaboration::readUses(const QVector<QByteArray>& types, QList<UnknownUse>& uses, QString& error) {
  ScratchFile netlist;
  if (!netlist.open(error)) return false;
  YosysJob read = job();
  read.script = plan_.hierarchyScript(false);
  read.script.line("proc\nselect -set ost_users");
  for (const QByteArray& type : types) read.script.cellsOfType(yosysId(type));
  // The union of all, then the modules that hold them.
  for (int i = 1; i < types.size(); ++i) read.script.words(" %u");
  read.script.words(" %m").line("json -o").openFile(0).words(" @ost_users");
  read.files << netlist.fd();
  const YosysResult result = runYosys(read);
  if (!result.ok) {
    error = said(result);
    return false;
  }
  if (readUnknownUses(netlist.content(), types.toList(), uses)) return true;
  error = QStringLiteral("The uses of the module \"%1\" could not be read; declare it with its ports.")
              .arg(textFromBytes(types.first()));
  return false;
}

/// Finds each of the unknown modules, or says which are missing.
bool Elaboration::resolve(const QVector<QByteArray>& types, QString& error) {
  QStringList missing;
  bool found = false;
  QVector<QByteArray> boxes, entities;
  for (const QByteArray& type : types) {
    if (plan_.isLeftUnknown(type)) continue;
    const QString name = textFromBytes(type), file = plan_.libraryFile(type);
    if (plan_.isNetlist() || source_.blackBoxes.contains(name)) {
      boxes.append(type);
    } else if (plan_.vhdl().find(type)) {
      entities.append(type);
    } else if (!file.isEmpty()) {
      if (!plan_.addLibraryFile(file, error)) return false;
      found = true;
    } else {
      missing.append(name);
    }
  }
  QList<UnknownUse> uses;
  const bool used = !boxes.isEmpty() || !entities.isEmpty();
  if (used && (!readUses(boxes + entities, uses, error) || !declareUnknown(boxes, uses, error) ||
               !addEntities(entities, uses, error)))
    return false;
  if (missing.isEmpty() || found || used) return true;
  error = missingText(missing);
  return false;
}

/// Declares black boxes as they are used.
bool Elaboration::declareUnknown(const QVector<QByteArray>& types, const QList<UnknownUse>& uses, QString& error) {
  QByteArray declarations;
  for (const QByteArray& type : types) {
    const QByteArray declaration =
        components_.contains(type) ? components_.value(type) : boxDeclaration(type, uses, notes_);
    if (declaration.isEmpty()) plan_.leaveUnknown(type);
    if (declaration.contains("\\$")) plan_.leaveUnchecked();
    declarations += declaration;
  }
  return declarations.isEmpty() || plan_.addBoxes(declarations, false, error);
}

QByteArray Elaboration::freeName(const QByteArray& wanted) {
  QByteArray name = wanted;
  for (int i = 2; names_.contains(name); ++i) name = wanted + '_' + QByteArray::number(i);
  names_.insert(name);
  return name;
}

}  // namespace ost
