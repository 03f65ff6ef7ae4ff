// What is found out before the first round: which programs and libraries read the sources, what their top is, and which
// black boxes they declare themselves.
#include <QRegularExpression>

#include "platform/design/elaboration.h"
#include "platform/text/byte_text.h"

namespace ost {

/// What Yosys prints on one of its commands, which it tells in its log only.
bool Elaboration::readHelp(const YosysScript& help, QByteArray& text, QString& error) {
  ScratchFile log;
  if (!log.open(error)) return false;
  YosysJob ask = job();
  ask.script = help;
  ask.files << log.fd();
  ask.logFile = 0;
  const YosysResult result = runYosys(ask);
  if (!result.ok) error = result.error;
  text = log.content();
  return result.ok;
}

/// What reads SystemVerilog: Yosys' read_slang, the program sv2v, or the front end that is built into Yosys.
bool Elaboration::chooseSystemVerilog(QString& error) {
  const QString& wanted = source_.systemVerilog;
  if (plan_.systemVerilogFiles().isEmpty() || wanted == QLatin1String("builtin")) return true;
  QByteArray help;
  if (!readHelp(YosysScript().line("help read_slang"), help, error)) return false;
  if (!help.contains("No such command")) {
    plan_.useSlang();
    return true;
  }
  if (wanted == QLatin1String("slang")) {
    error = QStringLiteral("This Yosys has no read_slang; use a newer one, or -sv auto.");
    return false;
  }
  if (!isOnPath("sv2v")) return true;
  QByteArray verilog;
  QList<QByteArray> words = plan_.macroWords();
  for (const QString& file : plan_.systemVerilogFiles()) words << QFile::encodeName(file);
  return runFrontEnd("sv2v", "install it, or use -sv builtin", words, limits(), verilog, error) &&
         plan_.replaceSystemVerilog(verilog, error);
}

/// The files that declare the cells of the target. Which these are differs from version to version; the help of the
/// target's synthesis names them.
bool Elaboration::chooseCells(QString& error) {
  if (source_.cells.isEmpty()) return true;
  YosysScript ask;
  if (source_.cells == QLatin1String("xilinx"))
    ask.line("help synth_xilinx");
  else
    ask.line("help synth_gowin");
  QByteArray help;
  if (!readHelp(ask, help, error)) return false;
  static const QRegularExpression library(QStringLiteral("read_verilog (?:-\\S+ )*-lib (?:-\\S+ )*\\+/(\\S+\\.v)"));
  bool found = false;
  for (auto match = library.globalMatch(textFromBytes(help)); match.hasNext(); found = true)
    plan_.addCellLibrary(match.next().captured(1).toLatin1());
  if (!found)
    error = QStringLiteral("This Yosys has no library of cells for \"%1\"; leave out -cells, or use a newer Yosys.")
                .arg(source_.cells);
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
  const QByteArray all = text.content();
  QByteArray shells;
  for (int at = all.indexOf(begin); at >= 0; at = all.indexOf(begin, at + 1)) {
    const int from = at + begin.size();
    for (const ScannedModule& module : scanVerilog(all.mid(from, all.indexOf(end, from) - from)))
      if (wanted.remove(module.name)) shells += module.shell;
  }
  return shells.isEmpty() || plan_.addBoxes(shells, !plan_.systemVerilogFiles().isEmpty(), error);
}

}  // namespace ost
