// The rounds of a reading.
#include "platform/design/elaboration.h"

#include <unistd.h>

#include <QRegularExpression>

#include "platform/system/scratch_file.h"
#include "platform/text/byte_text.h"

namespace ost {
namespace {

constexpr int kMaxRounds = 64;  ///< Levels of modules that are found one below the other.
constexpr qint64 kMaxUsesBytes = qint64(1) << 30;

// Without processes and internal cells the netlist is some thirty times smaller, with the same names and instances.
const char kNamesOnly[] =
    "delete */p:*\n"
    "select -set ost_cells */t:$* */t:$paramod* %d\n"
    "delete @ost_cells\n"
    "write_json";

QByteArray contentOf(int fd) {
  QFile file;
  lseek(fd, 0, SEEK_SET);
  if (!file.open(fd, QIODevice::ReadOnly, QFileDevice::DontCloseHandle) || file.size() > kMaxUsesBytes) return {};
  return file.readAll();
}

// The words of a Makefile rule's right side, whose blanks are escaped.
QList<QByteArray> dependencyWords(int fd) {
  QByteArray text = contentOf(fd).trimmed();
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

/// Words of SystemVerilog that the built-in front end stops at.
bool isBeyondBuiltIn(const QString& error) {
  static const QRegularExpression text(
      QStringLiteral("\\.svh?:\\d+: (?:syntax error|.*(?:not supported|unsupported|Unsupported|unimplemented))"));
  return text.match(error).hasMatch();
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

QString Elaboration::said(const YosysResult& result) const {
  const QString error = textFromBytes(plan_.inUsersWords(result.error.toLatin1()));
  static const QRegularExpression foreign(QStringLiteral("\\A(?:(.+):\\d+: )?Found DPI function \\\\(.+)\\.\\z")),
      include(QStringLiteral("\\A(.+:\\d+: )?Can't open include file `(.+)'!")),
      parameter(QStringLiteral("Can't find object for defparam `\\\\?(.+)[`']!"));
  const QRegularExpressionMatch imported = foreign.match(error), missing = include.match(error),
                                unknown = parameter.match(error);
  if (imported.hasMatch())
    return QStringLiteral(
               "%1: imports the C function \"%2\" (DPI-C), which reading the design would call: leave it out, for "
               "instance by `ifndef SYNTHESIS")
        .arg(imported.captured(1), imported.captured(2));
  if (missing.hasMatch())
    return QStringLiteral("%1The include file \"%2\" was not found; name its folder with -incdir DIRECTORY.")
        .arg(missing.captured(1).isEmpty() ? plan_.includer(missing.captured(2)) : missing.captured(1),
             missing.captured(2));
  if (unknown.hasMatch() && !plan_.parameters().isEmpty())
    return QStringLiteral("The top module \"%1\" has no parameter \"%2\"; correct -param.")
        .arg(textFromBytes(plan_.top()), unknown.captured(1));
  if (!plan_.top().isEmpty() && error.startsWith(QLatin1String("Module `")) &&
      error.contains(QLatin1String("' not found")))
    return QStringLiteral("The design has no module \"%1\" to be the top; name another with -top")
        .arg(textFromBytes(plan_.top()));
  if (isBeyondBuiltIn(error))
    return error + QStringLiteral(
                       " (the SystemVerilog front end built into this Yosys knows only a part of the language, for "
                       "instance no package import in a module's head and no interface arrays; what helps, unless the "
                       "text is wrong: a newer Yosys with read_slang, the program sv2v on the PATH, a JSON netlist "
                       "made elsewhere, or -blackbox MODULE without the file)");
  return error;
}

bool Elaboration::run(NameIndex& index, QString& error) {
  if (plan_.isNetlist()) return resolve(index.unknownTypes, error);
  for (const ScannedModule& module : plan_.modules()) names_.insert(module.name);
  // Verilog may name an entity in any round: the plain name is kept for it.
  if (!names_.isEmpty())
    for (const VhdlEntity& entity : plan_.vhdl().scan.entities) names_ << entity.name << entity.name.toLower();
  if (!chooseReaders(error) || !findTop(error) || !declareBoxes(error) || !addVhdlTop(error)) return false;
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

/// What reads SystemVerilog, and which files declare the cells of the target.
bool Elaboration::chooseReaders(QString& error) {
  const QString& wanted = source_.systemVerilog;
  if (!plan_.systemVerilogFiles().isEmpty() && wanted != QLatin1String("builtin")) {
    YosysJob ask = job();
    ask.script.line("help read_slang");
    // Of an unknown command Yosys says so, in its log only.
    ScratchFile log;
    if (!log.open(error)) return false;
    ask.files << log.fd();
    ask.logFile = 0;
    const YosysResult result = runYosys(ask);
    const bool slang = result.ok && !contentOf(log.fd()).contains("No such command");
    if (!result.ok) error = result.error;
    if (!result.ok) return false;
    if (slang) {
      plan_.useSlang();
    } else if (wanted == QLatin1String("slang")) {
      error = QStringLiteral("This Yosys has no read_slang; use a newer one, or -sv auto.");
      return false;
    } else if (isOnPath("sv2v")) {
      QByteArray verilog;
      QList<QByteArray> words = plan_.macroWords();
      for (const QString& file : plan_.systemVerilogFiles()) words << QFile::encodeName(file);
      if (!runFrontEnd("sv2v", "install it, or use -sv builtin", words, limits(), verilog, error)) return false;
      if (!plan_.replaceSystemVerilog(verilog, error)) return false;
    }
  }
  if (source_.cells.isEmpty()) return true;
  // Which files these are differs from version to version; the help of the target's synthesis names them.
  YosysJob ask = job();
  if (source_.cells == QLatin1String("xilinx"))
    ask.script.line("help synth_xilinx");
  else
    ask.script.line("help synth_gowin");
  ScratchFile log;
  if (!log.open(error)) return false;
  ask.files << log.fd();
  ask.logFile = 0;
  const YosysResult result = runYosys(ask);
  static const QRegularExpression library(QStringLiteral("read_verilog (?:-\\S+ )*-lib (?:-\\S+ )*\\+/(\\S+\\.v)"));
  bool found = false;
  for (auto match = library.globalMatch(textFromBytes(contentOf(log.fd()))); match.hasNext(); found = true)
    plan_.addCellLibrary(match.next().captured(1).toLatin1());
  if (!found)
    error = result.ok ? QStringLiteral(
                            "This Yosys has no library of cells for \"%1\"; leave out -cells, or use a newer "
                            "Yosys.")
                            .arg(source_.cells)
                      : result.error;
  return found;
}

/// Modules and entities that no other uses, as far as the texts tell.
QList<QByteArray> Elaboration::roots() const {
  const QSet<QByteArray>& usedByVhdl = plan_.vhdl().scan.words;
  QSet<QByteArray> used, usedInAnyCase = usedByVhdl;
  for (const ScannedModule& module : plan_.modules()) {
    for (const QByteArray& word : module.words) {
      if (word == module.name) continue;
      used.insert(word);
      usedInAnyCase.insert(word.toLower());
    }
  }
  QList<QByteArray> roots;
  for (const ScannedModule& module : plan_.modules()) {
    const bool isUsed = used.contains(module.name) || usedByVhdl.contains(module.name.toLower());
    if (!isUsed && !module.bodyless && !roots.contains(module.name)) roots.append(module.name);
  }
  for (const VhdlEntity& entity : plan_.vhdl().scan.entities)
    if (!usedInAnyCase.contains(entity.name.toLower())) roots.append(entity.name);
  return roots;
}

/// Yosys finds the top of Verilog; VHDL and parameters need to know it before.
bool Elaboration::findTop(QString& error) {
  if (!plan_.top().isEmpty()) {
    if (YosysScript::isName('\\' + plan_.top())) return true;
    error = QStringLiteral("\"%1\" cannot be the name of the top module").arg(textFromBytes(plan_.top()));
    return false;
  }
  if (plan_.vhdl().files.isEmpty() && plan_.parameters().isEmpty()) return true;
  const QList<QByteArray> candidates = roots();
  if (candidates.size() == 1) {
    plan_.setTop(candidates.first());
    return true;
  }
  QStringList names;
  for (const QByteArray& root : candidates.mid(0, 5))
    names.append(QLatin1Char('"') + textFromBytes(root) + QLatin1Char('"'));
  error = candidates.isEmpty()
              ? QStringLiteral("No module or entity of the sources could be the top; name one with -top.")
              : QStringLiteral("The design has %1 modules that could be the top (%2); name one with -top")
                    .arg(candidates.size())
                    .arg(names.join(QStringLiteral(", ")));
  return false;
}

/// The black boxes that the sources declare, as they are after their macros, with nothing of their bodies.
bool Elaboration::declareBoxes(QString& error) {
  QSet<QByteArray> wanted;
  for (const QString& module : source_.blackBoxes)
    if (!plan_.vhdl().find(module.toLatin1())) wanted.insert(module.toLatin1());
  bool declared = false;
  for (const ScannedModule& module : plan_.modules()) declared |= wanted.contains(module.name);
  if (!declared) return true;
  ScratchFile text;
  if (!text.open(error)) return false;
  YosysJob print = job();
  print.script = plan_.preprocessScript(0);
  print.files << text.fd();
  const YosysResult result = runYosys(print);
  if (!result.ok) {
    error = said(result);
    return false;
  }
  const QByteArray begin = "-- Verilog code after preprocessor --\n", end = "-- END OF DUMP --";
  const QByteArray all = contentOf(text.fd());
  QByteArray shells;
  for (int at = all.indexOf(begin); at >= 0; at = all.indexOf(begin, at + 1)) {
    const int from = at + begin.size();
    for (const ScannedModule& module : scanVerilog(all.mid(from, all.indexOf(end, from) - from)))
      if (wanted.remove(module.name)) shells += module.shell;
  }
  return shells.isEmpty() || plan_.addBoxes(shells, !plan_.systemVerilogFiles().isEmpty(), error);
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
  if (!index.complete(QByteArray(), error)) return false;
  const QStringList given = plan_.files();
  for (const QByteArray& word : dependencyWords(dependencies.fd())) {
    if (word.isEmpty() || word == "/dev/stdin" || word.startsWith("/proc/self/")) continue;
    const QString file = plan_.realFile(word);
    if (!file.isEmpty() && !given.contains(file) && !readFiles_.contains(file)) readFiles_.append(file);
  }
  for (const ModuleEntry& module : index.modules) names_.insert(sourceName(module.key));
  return true;
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
  if (readUnknownUses(contentOf(netlist.fd()), types.toList(), uses)) return true;
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
  if (!(boxes + entities).isEmpty() && !readUses(boxes + entities, uses, error)) return false;
  QByteArray declarations;
  for (const QByteArray& type : qAsConst(boxes)) {
    const QByteArray declaration =
        components_.contains(type) ? components_.value(type) : boxDeclaration(type, uses, notes_);
    if (declaration.isEmpty()) plan_.leaveUnknown(type);
    if (declaration.contains("\\$")) plan_.leaveUnchecked();
    declarations += declaration;
  }
  if (!declarations.isEmpty() && !plan_.addBoxes(declarations, false, error)) return false;
  QList<VhdlBinding> bindings;
  QByteArray verilog;
  for (const QByteArray& type : qAsConst(entities)) {
    QList<UnknownUse> ofType;
    for (const UnknownUse& use : qAsConst(uses))
      if (use.type == type) ofType.append(use);
    if (!bindVhdl(*plan_.vhdl().find(type), ofType, bindings, verilog, error)) return false;
  }
  if (!entities.isEmpty() && !plan_.addVhdl(verilog, entities.first(), bindings, error)) return false;
  if (missing.isEmpty() || found || !boxes.isEmpty() || !entities.isEmpty()) return true;
  // Yosys tells where it met the first of them.
  static const QRegularExpression met(
      QStringLiteral("Module `\\\\?(.+)' referenced in module `\\\\?(.+)' in cell `\\\\?(.+)' is not part"));
  const QRegularExpressionMatch place = met.match(unknownModule_);
  const QString where = QStringLiteral(" (instance \"%1\" of module \"%2\")")
                            .arg(place.captured(3), textFromBytes(sourceName(place.captured(2).toLatin1())));
  error = missing.size() == 1
              ? QStringLiteral(
                    "The module \"%1\"%2 is not defined: add the file that declares it, or take it as a black "
                    "box with -blackbox %1")
                    .arg(missing.first(), place.captured(1) == missing.first() ? where : QString())
              : QStringLiteral(
                    "The modules \"%1\" are not defined; add the files that declare them, or take them as "
                    "black boxes with -blackbox %2.")
                    .arg(missing.join(QStringLiteral("\", \"")), missing.join(QStringLiteral(" -blackbox ")));
  return false;
}

QByteArray Elaboration::freeName(const QByteArray& wanted) {
  QByteArray name = wanted;
  for (int i = 2; names_.contains(name); ++i) name = wanted + '_' + QByteArray::number(i);
  names_.insert(name);
  return name;
}

bool Elaboration::addVhdlTop(QString& error) {
  const VhdlEntity* entity = plan_.vhdl().find(plan_.top());
  if (!entity) return true;
  QMap<QByteArray, QByteArray> generics;
  for (const TopParameter& parameter : plan_.parameters()) {
    const VhdlGeneric* generic = nullptr;
    for (const VhdlGeneric& one : entity->generics)
      if (one.name.toLower() == parameter.name.toLower()) generic = &one;
    if (!generic || !genericText(parameter.value, generic->type, generics[parameter.name])) {
      error = QStringLiteral("The generic \"%2\" of the top entity \"%1\" %3; correct -param.")
                  .arg(textFromBytes(entity->name), textFromBytes(parameter.name),
                       generic ? QStringLiteral("cannot have this value") : QStringLiteral("does not exist"));
      return false;
    }
  }
  QByteArray verilog;
  names_.remove(entity->name);
  return synthesise(*entity, generics, freeName(entity->name), entity->ports, verilog, error) &&
         plan_.addVhdl(verilog, entity->name, {}, error);
}

/// Elaborates the entity as a module of that name, and adds it and what it uses to `verilog`.
bool Elaboration::synthesise(const VhdlEntity& entity, const QMap<QByteArray, QByteArray>& generics,
                             const QByteArray& name, const QList<QByteArray>& ports, QByteArray& verilog,
                             QString& error) {
  QList<VhdlModule> modules;
  if (!synthesiseVhdl(plan_.vhdl(), entity, generics, limits(), modules, error)) {
    error = textFromBytes(plan_.inUsersWords(error.toLatin1()));
    return false;
  }
  QList<VhdlModule> written;
  const auto renameAll = [&modules](const QByteArray& from, const QByteArray& to, const QSet<QByteArray>& words) {
    for (VhdlModule& module : modules) renameInstances(module, from, to, words);
  };
  for (int i = 0; i < modules.size(); ++i) {
    if (modules[i].component) {
      // Verilog spells as it likes what VHDL takes in any case.
      const QByteArray from = modules[i].name;
      for (const ScannedModule& known : plan_.modules()) {
        if (known.name.toLower() != from.toLower()) continue;
        renameAll(from, known.name, known.ports);
        break;
      }
      components_.insert(from, componentDeclaration(modules[i]));
      continue;
    }
    const bool last = i + 1 == modules.size();
    const QByteArray from = modules[i].name, to = last ? name : freeName(from);
    if (to != from) renameAll(from, to, {});
    if (to != from) renameModule(modules[i], to);
    if (last) spellPorts(modules[i], ports);
  }
  for (const VhdlModule& module : qAsConst(modules))
    if (!module.component) verilog += QByteArray("(* ") + kVhdlAttribute + " *)\n" + module.text;
  return true;
}

/// One module for each set of generics and each spelling of the ports; the instances become instances of these.
bool Elaboration::bindVhdl(const VhdlEntity& entity, const QList<UnknownUse>& uses, QList<VhdlBinding>& bindings,
                           QByteArray& verilog, QString& error) {
  QHash<QByteArray, QByteArray> known;  // What tells versions apart -> module.
  for (const UnknownUse& use : uses) {
    QMap<QByteArray, QByteArray> generics;
    VhdlBinding binding{use.module, use.cell, {}, {}};
    for (auto given = use.parameters.begin(); given != use.parameters.end(); ++given) {
      const VhdlGeneric* generic = nullptr;
      for (int i = 0; i < entity.generics.size(); ++i)
        if (entity.generics[i].name.toLower() == given.key().toLower() ||
            given.key() == '$' + QByteArray::number(i + 1))
          generic = &entity.generics[i];
      if (!generic || !genericText(*given, generic->type, generics[generic->name])) {
        error = QStringLiteral("The instance \"%1\" of module \"%2\" sets \"%3\" of the VHDL entity \"%4\", %5.")
                    .arg(textFromBytes(use.cell), textFromBytes(sourceName(use.module)), textFromBytes(given.key()),
                         textFromBytes(entity.name),
                         generic ? QStringLiteral("which cannot have this value; set it in the VHDL source")
                                 : QStringLiteral("which has no such generic; correct the name"));
        return false;
      }
      binding.parameters.append(given.key());
    }
    QList<QByteArray> ports = entity.ports;
    QByteArray key;
    for (QByteArray& port : ports) {
      for (auto used = use.ports.begin(); used != use.ports.end(); ++used)
        if (used.key().toLower() == port.toLower()) port = used.key();
      key += port + ',';
    }
    for (auto generic = generics.begin(); generic != generics.end(); ++generic)
      key += generic.key() + '=' + generic.value() + '\n';
    if (!known.contains(key)) {
      known.insert(key, freeName(entity.name));
      if (!synthesise(entity, generics, known.value(key), ports, verilog, error)) return false;
    }
    binding.type = known.value(key);
    bindings.append(binding);
  }
  return true;
}

}  // namespace ost
