// Runs GHDL and takes its Verilog to pieces. That Verilog is regular: a module begins with a line "module NAME", an
// instance with "  TYPE ", and port maps stand one to a line.
#include "platform/design/ghdl.h"

#include <QFile>
#include <QRegularExpression>

#include "platform/text/byte_text.h"

namespace ost {
namespace {

QRegularExpression pattern(const QByteArray& text) {
  return QRegularExpression(textFromBytes(text), QRegularExpression::MultilineOption);
}

QByteArray escaped(const QByteArray& name) {
  return QRegularExpression::escape(textFromBytes(name)).toLatin1();
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

/// What GHDL 2.0 writes of signed operators is unsigned, or VHDL, and only its comments tell what was meant: an
/// arithmetic shift to the right, division, remainder, modulo (with the sign of the divisor) and absolute value.
void restoreSignedOperators(VhdlModule& module) {
  static const struct {
    QRegularExpression written;
    QString meant;
  } table[] = {
      {pattern("(= \\$signed\\(\\w+\\)) >> "), QStringLiteral("\\1 >>> ")},
      {pattern("= ([\\w']+) ([/%]) ([\\w']+); // (?:sdiv|srem)$"), QStringLiteral("= $signed(\\1) \\2 $signed(\\3);")},
      {pattern("= ([\\w']+) % ([\\w']+); // smod$"),
       QStringLiteral("= ($signed(\\1) % $signed(\\2)) != 0 && ($signed(\\1) < 0) != ($signed(\\2) < 0) ? "
                      "($signed(\\1) % $signed(\\2)) + $signed(\\2) : $signed(\\1) % $signed(\\2);")},
      {pattern("^  (\\w+) <= std_logic_vector\\(abs \\$signed\\((\\w+)\\)\\);"),
       QStringLiteral("  assign \\1 = $signed(\\2) < 0 ? -\\2 : \\2;")},
  };
  QString text = textFromBytes(module.text);
  for (const auto& row : table) text.replace(row.written, row.meant);
  module.text = text.toLatin1();
}

/// A value in GHDL's VHDL as Verilog: a name, bits in quotes or one character; empty for anything else.
QByteArray verilogValue(const QString& vhdl) {
  static const QRegularExpression name(QStringLiteral("\\A(?:wrap_)?(\\w+)\\z")),
      bits(QStringLiteral("\\A\"([01XZxz]+)\"\\z")), digits(QStringLiteral("\\AX\"([0-9a-fA-F]+)\"\\z")),
      bit(QStringLiteral("\\A'([01XZxz])'\\z"));
  for (const QRegularExpression* form : {&bits, &digits, &bit, &name}) {
    const QRegularExpressionMatch match = form->match(vhdl.trimmed());
    if (!match.hasMatch()) continue;
    const QByteArray text = match.captured(1).toLatin1();
    if (form == &name) return text;
    const int width = form == &digits ? text.size() * 4 : text.size();
    return QByteArray::number(width) + (form == &digits ? "'h" : "'b") + text.toLower();
  }
  return QByteArray();
}

/// GHDL 2.0 writes the branches of a selection as a "case" and leaves out the one for all other values, so that it
/// would be a latch. Its VHDL of the same entity, in which the nets have the same names, holds that branch.
class LostBranches {
 public:
  explicit LostBranches(const QByteArray& vhdl) {
    static const QRegularExpression unit(QStringLiteral("^architecture \\S+ of (\\S+) is"),
                                         QRegularExpression::MultilineOption),
        selection(QStringLiteral("with [^;]*? select\\s+(\\w+) <=[^;]*?\\s([^,;]+?) when others;"));
    const QString text = textFromBytes(vhdl);
    for (auto match = unit.globalMatch(text); match.hasNext();) {
      const QRegularExpressionMatch found = match.next();
      const int begin = found.capturedEnd(), end = text.indexOf(QLatin1String("\nend "), begin);
      const QByteArray module = found.captured(1).toLatin1().toLower();
      for (auto one = selection.globalMatch(text.mid(begin, end - begin)); one.hasNext();) {
        const QRegularExpressionMatch branch = one.next();
        values_.insert(module + ' ' + branch.captured(1).toLatin1(), branch.captured(2));
      }
    }
  }

  /// False with the net whose branch is not known.
  bool restore(VhdlModule& module, QByteArray& net) const {
    for (int at = nextLost(module.text, 0, net); at >= 0; at = nextLost(module.text, at, net)) {
      const QByteArray value = verilogValue(values_.value(module.name.toLower() + ' ' + net));
      if (value.isEmpty()) return false;
      module.text.insert(at, "      default: " + net + " <= " + value + ";\n");
    }
    return true;
  }
  /// Where the next "endcase" without a default before it stands, and the net that the "case" drives; -1 at the end.
  static int nextLost(const QByteArray& text, int from, QByteArray& net) {
    for (int at = text.indexOf("    endcase", from); at >= 0; at = text.indexOf("    endcase", at + 1)) {
      const QByteArray branches = text.mid(text.lastIndexOf("    case (", at), at - text.lastIndexOf("    case (", at));
      if (branches.contains("\n      default:")) continue;
      static const QRegularExpression target(QStringLiteral(": (\\w+) <?="));
      net = target.match(textFromBytes(branches)).captured(1).toLatin1();
      return at;
    }
    return -1;
  }

 private:
  QHash<QByteArray, QString> values_;
};

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
  if (library != entity.library) words << "--work=" + entity.library;
  words << "-e" << entity.name;
  const char wayOut[] = "VHDL sources need it: install the Debian package \"ghdl\"";
  QByteArray verilog, vhdl, net;
  if (!runFrontEnd("ghdl", wayOut, words, limits, verilog, error)) return false;
  modules = splitModules(verilog);
  if (modules.isEmpty() || modules.last().name.toLower() != entity.name.toLower()) {
    error = QStringLiteral("GHDL wrote no Verilog for the entity \"%1\"; \"ghdl --synth\" on it tells more.")
                .arg(textFromBytes(entity.name));
    return false;
  }
  for (VhdlModule& module : modules) restoreSignedOperators(module);
  if (LostBranches::nextLost(verilog, 0, net) < 0) return true;
  words[1] = "--out=vhdl";
  if (!runFrontEnd("ghdl", wayOut, words, limits, vhdl, error)) return false;
  const LostBranches lost(vhdl);
  for (VhdlModule& module : modules) {
    if (lost.restore(module, net)) continue;
    error = QStringLiteral(
                "GHDL leaves out a branch of a \"case\" in the Verilog of \"%1\" (net \"%2\"), and it could not be "
                "restored; use a GHDL newer than 2.0, or take the entity as a black box.")
                .arg(textFromBytes(module.name), textFromBytes(net));
    return false;
  }
  return true;
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
  QString text = textFromBytes(module.text);
  for (const QByteArray& port : ports) {
    // Whole words in any case, but those behind a dot, which are ports of instances.
    QRegularExpression word = pattern("(?<![\\w.$])" + escaped(port) + "(?![\\w$])");
    word.setPatternOptions(QRegularExpression::CaseInsensitiveOption);
    text.replace(word, textFromBytes(port));
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
