// What a run of Yosys failed with, in the terms of whoever reads the design: what is wrong, and the way out.
#include <QRegularExpression>

#include "platform/design/elaboration.h"
#include "platform/text/byte_text.h"

namespace ost {
namespace {

/// Words of SystemVerilog that the built-in front end stops at.
bool isBeyondBuiltIn(const QString& error) {
  static const QRegularExpression text(
      QStringLiteral("\\.svh?:\\d+: (?:syntax error|.*(?:not supported|unsupported|Unsupported|unimplemented))"));
  return text.match(error).hasMatch();
}

}  // namespace

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

QString Elaboration::missingText(const QStringList& modules) const {
  if (modules.size() > 1)
    return QStringLiteral(
               "The modules \"%1\" are not defined; add the files that declare them, or take them as "
               "black boxes with -blackbox %2.")
        .arg(modules.join(QStringLiteral("\", \"")), modules.join(QStringLiteral(" -blackbox ")));
  // Yosys tells where it met the first of them.
  static const QRegularExpression met(
      QStringLiteral("Module `\\\\?(.+)' referenced in module `\\\\?(.+)' in cell `\\\\?(.+)' is not part"));
  const QRegularExpressionMatch place = met.match(unknownModule_);
  const QString where = QStringLiteral(" (instance \"%1\" of module \"%2\")")
                            .arg(place.captured(3), textFromBytes(sourceName(place.captured(2).toLatin1())));
  return QStringLiteral(
             "The module \"%1\"%2 is not defined: add the file that declares it, or take it as a black "
             "box with -blackbox %1")
      .arg(modules.first(), place.captured(1) == modules.first() ? where : QString());
}

}  // namespace ost
