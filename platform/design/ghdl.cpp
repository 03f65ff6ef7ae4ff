// Runs GHDL and takes its Verilog to pieces. That Verilog is regular: a module begins with a line "module NAME", an
// instance with "  TYPE ", and port maps stand one to a line.
#include "platform/design/ghdl.h"

#include <QFile>
#include <QRegularExpression>

#include "platform/text/byte_text.h"

namespace ost {
namespace {

QRegularExpression pattern(const QByteArray& text) {
  return QRegularExpression(QString::fromLatin1(text), QRegularExpression::MultilineOption);
}

QByteArray escaped(const QByteArray& name) {
  return QRegularExpression::escape(QString::fromLatin1(name)).toLatin1();
}

QList<VhdlModule> splitModules(const QByteArray& verilog) {
  QList<VhdlModule> modules;
  QList<QByteArray> lines;
  for (const QByteArray& line : verilog.split('\n')) {
    if (line.startsWith("module ")) {
      modules.append({line.mid(7).trimmed(), QByteArray(), true});
      lines.clear();
    }
    if (modules.isEmpty()) continue;
    VhdlModule& module = modules.last();
    const QByteArray start = line.trimmed();
    if (start.startsWith("/*") && start.endsWith("*/")) continue;  // where it came from
    lines.append(line);
    // In a component nothing stands between the header and the end.
    if (line.startsWith("  ") && !line.startsWith("   ") && start[0] != '(' && start[0] != '#')
      module.component = false;
    if (start == "endmodule") module.text = lines.join('\n') + '\n';
  }
  return modules;
}

}  // namespace

const VhdlEntity* VhdlSources::find(const QByteArray& name) const {
  for (const VhdlEntity& entity : scan.entities)
    if (entity.name.toLower() == name.toLower()) return &entity;
  return nullptr;
}

bool synthesiseVhdl(const VhdlSources& sources, const VhdlEntity& entity, const QMap<QByteArray, QByteArray>& generics,
                    const ToolLimits& limits, QList<VhdlModule>& modules, QString& error) {
  QList<QByteArray> words{"--synth", "--out=verilog", "--std=" + sources.standard.toLatin1()};
  for (auto generic = generics.begin(); generic != generics.end(); ++generic)
    words << "-g" + generic.key() + '=' + generic.value();
  QByteArray library = "work";
  for (const VhdlFile& file : sources.files) {
    if (file.library != library) words << "--work=" + file.library;
    library = file.library;
    words << QFile::encodeName(file.file);
  }
  if (library != "work") words << "--work=work";
  words << "-e" << entity.name;
  QByteArray verilog;
  if (!runFrontEnd("ghdl", "VHDL sources need it: install the Debian package \"ghdl\"", words, limits, verilog, error))
    return false;
  modules = splitModules(verilog);
  if (!modules.isEmpty() && modules.last().name.toLower() == entity.name.toLower()) return true;
  error = QStringLiteral("GHDL wrote no Verilog for the entity \"%1\"; \"ghdl --synth\" on it tells more.")
              .arg(textFromBytes(entity.name));
  return false;
}

void renameModule(VhdlModule& module, const QByteArray& name) {
  module.text.replace(0, module.text.indexOf('\n'), "module " + name);
  module.name = name;
}

void renameInstances(VhdlModule& module, const QByteArray& type, const QByteArray& name,
                     const QSet<QByteArray>& words) {
  QHash<QByteArray, QByteArray> spelling;
  for (const QByteArray& word : words) spelling.insert(word.toLower(), word);
  const QByteArray start = "\n  " + type + ' ';
  for (int at = module.text.indexOf(start); at >= 0; at = module.text.indexOf(start, at + 1)) {
    module.text.replace(at + 3, type.size(), name);
    const int end = module.text.indexOf(");\n", at);
    QByteArray instance = module.text.mid(at, end - at);
    for (int dot = instance.indexOf("\n    ."); dot >= 0; dot = instance.indexOf("\n    .", dot + 1)) {
      const int begin = dot + 6, bracket = instance.indexOf('(', begin);
      const QByteArray formal = instance.mid(begin, bracket - begin);
      if (!words.contains(formal) && spelling.contains(formal.toLower()))
        instance.replace(begin, formal.size(), spelling.value(formal.toLower()));
    }
    module.text.replace(at, end - at, instance);
  }
}

void spellPorts(VhdlModule& module, const QList<QByteArray>& ports) {
  QString text = QString::fromLatin1(module.text);
  for (const QByteArray& port : ports) {
    // Whole words in any case, but those behind a dot, which are ports of instances.
    QRegularExpression word = pattern("(?<![\\w.$])" + escaped(port) + "(?![\\w$])");
    word.setPatternOptions(QRegularExpression::CaseInsensitiveOption);
    text.replace(word, QString::fromLatin1(port));
  }
  module.text = text.toLatin1();
}

QByteArray componentDeclaration(const VhdlModule& component) {
  // GHDL gives the parameters no values, which Verilog demands.
  QByteArray text = component.text;
  const int begin = text.indexOf("#(parameter"), end = begin < 0 ? -1 : text.indexOf(')', begin);
  if (end >= 0) {
    QByteArray list = text.mid(begin, end - begin);
    list.replace(",", " = 0,");
    text.replace(begin, end - begin, list + " = 0");
  }
  return "(* blackbox *) " + text;
}

}  // namespace ost
