// Names and scopes, as declared where the capture map tells it.
#include "platform/reader/vcd_scopes.h"

#include <QRegularExpression>

namespace ost {
namespace {

/// What of a name may stand in the file.
QByteArray printable(const QString& text) {
  QByteArray name = text.toLatin1();
  for (char& c : name)
    if (c <= ' ' || c > '~') c = '_';
  return name;
}

/// Instances and generate blocks, whose index is no bit select.
QByteArray scopeName(const QString& text) {
  static const QRegularExpression block(QStringLiteral("^[A-Za-z_][A-Za-z0-9_$]*(\\[-?[0-9]+\\])+$"));
  return block.match(text).hasMatch() ? text.toLatin1() : vcdName(text);
}

/// Bits of one vector share its name and differ in their range only.
QByteArray uniqueName(const QByteArray& name, const QByteArray& range, QSet<QByteArray>& used) {
  QByteArray unique = name;
  for (int i = 2; used.contains(unique + range); ++i) unique = name + '_' + QByteArray::number(i);
  used.insert(unique + range);
  return unique;
}

/// Splits "state[3:0]" or "state[3]".
void splitRange(DeclaredNet& net, int width) {
  static const QRegularExpression form(QStringLiteral("^(.+)\\[(-?[0-9]{1,9})(?::(-?[0-9]{1,9}))?\\]$"));
  const QRegularExpressionMatch match = form.match(net.name);
  const int left = match.captured(2).toInt();
  const int right = match.capturedLength(3) > 0 ? match.captured(3).toInt() : left;
  net.isVector = match.hasMatch() && qAbs(left - right) == width - 1;
  if (!net.isVector) return;
  net.name = match.captured(1);
  net.left = left;
  net.right = right;
}

/// What an older capture map does not tell, and what a user's bus has not: by its name, in the instance of its first
/// bit when the name begins with that, and in the generate blocks before the name.
DeclaredNet netByName(const PlanCore& core, const PlanProbe& probe) {
  DeclaredNet net;
  net.name = probe.name;
  const QString instance = core.probeBits[probe.positions[0]].instancePath;
  QStringList path;
  if (!instance.isEmpty() && probe.name.startsWith(instance + QLatin1Char('/'))) {
    path = instance.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    net.name = probe.name.mid(instance.size() + 1);
  }
  for (const QString& part : path) net.scopes += part.split(QLatin1Char('.'), Qt::SkipEmptyParts);
  const int dot = net.name.lastIndexOf(QLatin1Char('.'));
  if (dot > 0 && dot + 1 < net.name.size()) {
    net.scopes += net.name.left(dot).split(QLatin1Char('.'), Qt::SkipEmptyParts);
    net.name = net.name.mid(dot + 1);
  }
  splitRange(net, probe.positions.size());
  return net;
}

QByteArray rangeText(int left, int right) {
  const QByteArray text = '[' + QByteArray::number(left);
  return left == right ? text + ']' : text + ':' + QByteArray::number(right) + ']';
}

void add(VcdScope& scope, VcdVariable variable) {
  variable.name = uniqueName(variable.name, variable.range, scope.names);
  scope.variables += variable;
}

/// A variable of one value, or as many as it has bits.
void addBits(VcdScope& scope, const Capture& capture, const VcdVariable& variable, int left, int right,
             bool singleBits) {
  if (!singleBits || variable.width == 1) return add(scope, variable);
  for (int i = 0; i < variable.width; ++i) {
    VcdVariable bit = variable;
    const int index = left > right ? left - i : left + i;
    bit.range = rangeText(index, index);
    bit.width = 1;
    if (variable.probe)
      bit.value = [&capture, position = variable.probe->positions[i]](int row, int) {
        return QByteArray(1, capture.probeBit(row, position) ? '1' : '0');
      };
    else
      bit.value = [value = variable.value, i](int row, int window) { return value(row, window).mid(i, 1); };
    add(scope, bit);
  }
}

void addProbe(const Capture& capture, const PlanProbe& probe, VcdScope& top, bool singleBits) {
  const DeclaredNet net = probe.net.name.isEmpty() ? netByName(capture.core, probe) : probe.net;
  VcdScope* scope = &top;
  for (const QString& part : net.scopes) scope = &scope->children[scopeName(part)];
  VcdVariable variable;
  variable.probe = &probe;
  variable.width = probe.positions.size();
  const int left = net.isVector ? net.left : variable.width - 1, right = net.isVector ? net.right : 0;
  variable.name = vcdName(net.name);
  if (net.isVector || variable.width > 1) variable.range = rangeText(left, right);
  variable.value = [&capture, &probe](int row, int) { return capture.probeBits(row, probe); };
  addBits(*scope, capture, variable, left, right, singleBits);
  if (probe.names.isEmpty() || singleBits) return;
  variable.isText = true;
  variable.name += "_name";
  variable.range.clear();
  variable.width = 1;
  variable.value = [&capture, &probe](int row, int) {
    return valueText(probe, capture.probeBits(row, probe), capture.core.displayRadix);
  };
  add(*scope, variable);
}

void addOwn(const Capture& capture, VcdScope& own, bool singleBits) {
  VcdVariable trigger;
  trigger.name = "trigger";
  trigger.value = [&capture](int row, int window) {
    const CaptureWindow& shown = capture.windows[window];
    return QByteArray(1, row - shown.firstRow == shown.trigger ? '1' : '0');
  };
  add(own, trigger);
  if (capture.windows.size() > 1) {
    VcdVariable number;
    number.name = "window";
    number.width = 16;
    number.range = "[15:0]";
    number.value = [](int, int window) { return QByteArray::number(window, 2).rightJustified(16, '0'); };
    addBits(own, capture, number, 15, 0, singleBits);
  }
  for (int i = 0; capture.core.includeTrigger && i < capture.core.units.size(); ++i) {
    VcdVariable state;
    state.name = vcdName(QStringLiteral("unit_") + capture.core.units[i].name);
    state.value = [&capture, i](int row, int) { return QByteArray(1, capture.unitState(row, i) ? '1' : '0'); };
    add(own, state);
  }
}

/// Gives all variables that belong to no capture yet to this one.
void claim(VcdScope& scope, int capture) {
  for (VcdVariable& variable : scope.variables)
    if (variable.capture < 0) variable.capture = capture;
  for (VcdScope& child : scope.children) claim(child, capture);
}

}  // namespace

QByteArray vcdName(const QString& text) {
  static const QRegularExpression identifier(QStringLiteral("^[A-Za-z_][A-Za-z0-9_$]*$"));
  const QByteArray name = printable(text);
  return identifier.match(QString::fromLatin1(name)).hasMatch() ? name : '\\' + name;
}

VcdLayout layOutVcd(const QVector<Capture>& captures, const QString& topModule, bool singleBits) {
  VcdLayout layout;
  layout.topName = vcdName(topModule);
  layout.ownName = layout.topName == "ostrel" ? "ostrel_" : "ostrel";
  for (int i = 0; i < captures.size(); ++i) {
    for (const PlanProbe& probe : captures[i].core.probes)
      if (!probe.positions.isEmpty()) addProbe(captures[i], probe, layout.top, singleBits);
    addOwn(captures[i], captures.size() > 1 ? layout.own.children[vcdName(captures[i].core.name)] : layout.own,
           singleBits);
    claim(layout.top, i);
    claim(layout.own, i);
  }
  return layout;
}

}  // namespace ost
