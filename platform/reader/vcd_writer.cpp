// VCD: header with scopes, then only the changes.
#include "platform/reader/vcd_writer.h"

#include <QMap>
#include <QSet>
#include <algorithm>
#include <functional>

namespace ost {
namespace {

struct Variable {
  QByteArray name;
  QByteArray range;  ///< " [7:0]" or empty.
  int width = 1;
  bool isText = false;
  QByteArray code;
  QByteArray last;
  std::function<QByteArray(int row, int window)> value;  ///< Leftmost bit first.
  int capture = -1;                                      ///< Index of the one that it belongs to.
};

struct Scope {
  QMap<QByteArray, Scope> children;
  QVector<Variable> variables;
  QSet<QByteArray> names;
};

/// A name of characters that every viewer accepts, neither empty nor beginning with a digit.
QByteArray legalName(const QString& text) {
  QByteArray name = text.toLatin1();
  for (char& c : name) {
    const bool legal = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
    if (!legal) c = '_';
  }
  if (name.isEmpty() || (name[0] >= '0' && name[0] <= '9')) name.prepend('_');
  return name;
}

/// Bits of one vector share its name and differ in their range only.
QByteArray uniqueName(const QByteArray& name, const QByteArray& range, QSet<QByteArray>& used) {
  QByteArray unique = name;
  for (int i = 2; used.contains(unique + range); ++i) unique = name + '_' + QByteArray::number(i);
  used.insert(unique + range);
  return unique;
}

/// Identifier codes count in the printable characters.
QByteArray codeOf(int number) {
  QByteArray code;
  do {
    code += static_cast<char>('!' + number % 94);
    number /= 94;
  } while (number > 0);
  return code;
}

Scope& scopeAt(Scope& root, const QStringList& path) {
  Scope* scope = &root;
  for (const QString& part : path) scope = &scope->children[legalName(part)];
  return *scope;
}

/// The instances that a probe's name leads through: those of its first bit, when the name begins with them.
QStringList scopePath(const PlanCore& core, const PlanProbe& probe, QString& baseName) {
  baseName = probe.name;
  QStringList path;
  if (!probe.positions.isEmpty()) {
    const QString instance = core.probeBits[probe.positions[0]].instancePath;
    if (!instance.isEmpty() && probe.name.startsWith(instance + QLatin1Char('/'))) {
      path = instance.split(QLatin1Char('/'), Qt::SkipEmptyParts);
      baseName = probe.name.mid(instance.size() + 1);
    }
  }
  // A generate block stands as "block." before a name; viewers read the dot as a scope, so it becomes one.
  QStringList scopes;
  for (const QString& part : path) scopes += part.split(QLatin1Char('.'), Qt::SkipEmptyParts);
  const int dot = baseName.lastIndexOf(QLatin1Char('.'));
  if (dot > 0 && dot + 1 < baseName.size()) {
    scopes += baseName.left(dot).split(QLatin1Char('.'), Qt::SkipEmptyParts);
    baseName = baseName.mid(dot + 1);
  }
  return scopes;
}

/// Splits "state[3:0]" or "state[3]" into the name and its range as VCD writes it.
void splitRange(QString& name, QByteArray& range) {
  const int bracket = name.lastIndexOf(QLatin1Char('['));
  if (bracket <= 0 || !name.endsWith(QLatin1Char(']'))) return;
  const QString inside = name.mid(bracket + 1, name.size() - bracket - 2);
  for (QChar c : inside)
    if (!(c.isDigit() || c == QLatin1Char(':') || c == QLatin1Char('-'))) return;
  range = " [" + inside.toLatin1() + "]";
  name = name.left(bracket);
}

void addProbes(const Capture& capture, Scope& top) {
  for (const PlanProbe& probe : capture.core.probes) {
    if (probe.positions.isEmpty()) continue;
    Variable variable;
    QString name;
    Scope& scope = scopeAt(top, scopePath(capture.core, probe, name));
    splitRange(name, variable.range);
    variable.width = probe.positions.size();
    if (variable.range.isEmpty() && variable.width > 1)
      variable.range = " [" + QByteArray::number(variable.width - 1) + ":0]";
    variable.name = uniqueName(legalName(name), variable.range, scope.names);
    variable.value = [&capture, &probe](int row, int) { return capture.probeBits(row, probe); };
    scope.variables += variable;
    if (probe.names.isEmpty()) continue;
    Variable text;
    text.isText = true;
    text.name = uniqueName(variable.name + "_name", "", scope.names);
    text.value = [&capture, &probe](int row, int) {
      return valueText(probe, capture.probeBits(row, probe), capture.core.displayRadix);
    };
    scope.variables += text;
  }
}

void addOwnVariables(const Capture& capture, Scope& own) {
  Variable trigger;
  trigger.name = uniqueName("trigger", "", own.names);
  trigger.value = [&capture](int row, int window) {
    const CaptureWindow& shown = capture.windows[window];
    return QByteArray(1, row - shown.firstRow == shown.trigger ? '1' : '0');
  };
  own.variables += trigger;
  if (capture.windows.size() > 1) {
    Variable number;
    number.name = uniqueName("window", "", own.names);
    number.width = 16;
    number.range = " [15:0]";
    number.value = [](int, int window) { return QByteArray::number(window, 2).rightJustified(16, '0'); };
    own.variables += number;
  }
  for (int i = 0; capture.core.includeTrigger && i < capture.core.units.size(); ++i) {
    Variable state;
    state.name = uniqueName("unit_" + legalName(capture.core.units[i].name), "", own.names);
    state.value = [&capture, i](int row, int) { return QByteArray(1, capture.unitState(row, i) ? '1' : '0'); };
    own.variables += state;
  }
}

void declare(const QByteArray& name, Scope& scope, QVector<Variable*>& all, QByteArray& text) {
  text += "$scope module " + name + " $end\n";
  for (Variable& variable : scope.variables) {
    variable.code = codeOf(all.size());
    text += (variable.isText ? "$var string " : "$var wire ") + QByteArray::number(variable.width) + ' ' +
            variable.code + ' ' + variable.name + variable.range + " $end\n";
    all += &variable;
  }
  for (auto child = scope.children.begin(); child != scope.children.end(); ++child)
    declare(child.key(), child.value(), all, text);
  text += "$upscope $end\n";
}

void change(Variable& variable, const QByteArray& value, QByteArray& text) {
  if (value == variable.last) return;
  variable.last = value;
  if (variable.isText)
    text += 's' + value + ' ' + variable.code + '\n';
  else
    text += variable.width == 1 ? value + variable.code + '\n' : 'b' + value + ' ' + variable.code + '\n';
}

/// Gives all variables that belong to no capture yet to this one.
void claim(Scope& scope, int capture) {
  for (Variable& variable : scope.variables)
    if (variable.capture < 0) variable.capture = capture;
  for (Scope& child : scope.children) claim(child, capture);
}

/// Units of time from one row to the next.
qint64 distanceOf(const Capture& capture, int earlier, int later) {
  const int bits = capture.core.timestampBits;
  if (bits == 0) return 1;
  const quint64 mask = (quint64(1) << bits) - 1;
  return qMax<qint64>(1, (capture.timestamp(later) - capture.timestamp(earlier)) & mask);
}

/// What changes at one time, ready to be written.
struct Event {
  qint64 time = 0;
  QByteArray text;
};

void addUnknown(QVector<Variable*>& variables, qint64 time, QVector<Event>& events) {
  events.append({time, QByteArray()});
  for (Variable* variable : variables) change(*variable, QByteArray(variable->width, 'x'), events.last().text);
}

/// All changes of one capture, from the time `start` of its first sample on; the last event is the end of its samples.
QVector<Event> eventsOf(const Capture& capture, QVector<Variable*>& variables, qint64 start) {
  QVector<Event> events;
  qint64 time = start;
  int lastRow = -1;
  for (int window = 0; window < capture.windows.size(); ++window) {
    const CaptureWindow& shown = capture.windows[window];
    for (int i = 0; i < shown.samples; ++i) {
      const int row = shown.firstRow + i;
      if (lastRow >= 0) {
        const qint64 distance = distanceOf(capture, lastRow, row);
        if (i == 0) addUnknown(variables, time + 1, events);
        time += i == 0 ? qMax<qint64>(distance, 2) : distance;
      }
      lastRow = row;
      events.append({time, QByteArray()});
      for (Variable* variable : variables) change(*variable, variable->value(row, window), events.last().text);
    }
  }
  events.append({time + 1, QByteArray()});
  return events;
}

QByteArray unitOfTime(const Capture& capture) {
  return "core " + legalName(capture.core.name) + ", one unit of time is " +
         (capture.core.timestampBits ? "one sample clock" : "one sample");
}

qint64 firstTime(const Capture& capture) {
  if (capture.core.timestampBits == 0 || capture.windows.isEmpty()) return 0;
  return static_cast<qint64>(capture.timestamp(capture.windows[0].firstRow));
}

}  // namespace

QByteArray capturesToVcd(const QVector<Capture>& captures, const QString& topModule) {
  const bool several = captures.size() > 1;
  Scope top, own;
  QByteArray comments;
  for (int i = 0; i < captures.size(); ++i) {
    Scope& owner = several ? own.children[legalName(captures[i].core.name)] : own;
    addProbes(captures[i], top);
    addOwnVariables(captures[i], owner);
    claim(top, i);
    claim(own, i);
    comments += "$comment " + unitOfTime(captures[i]) + " $end\n";
  }
  QByteArray text = "$version ost_capture $end\n" + comments + "$timescale 1 ns $end\n";
  QVector<Variable*> variables;
  declare(legalName(topModule), top, variables, text);
  declare(legalName(topModule) == "ostrel" ? "ostrel_" : "ostrel", own, variables, text);
  text += "$enddefinitions $end\n";

  QVector<Event> events;
  for (int i = 0; i < captures.size(); ++i) {
    QVector<Variable*> mine;
    for (Variable* variable : variables)
      if (variable->capture == i) mine += variable;
    events += eventsOf(captures[i], mine, several ? firstTime(captures[i]) : 0);
    if (several) addUnknown(mine, events.takeLast().time, events);
  }
  const auto isEarlier = [](const Event& one, const Event& other) { return one.time < other.time; };
  std::stable_sort(events.begin(), events.end(), isEarlier);
  qint64 time = -1;
  for (const Event& event : events) {
    if (event.time != time) text += '#' + QByteArray::number(event.time) + '\n';
    time = event.time;
    text += event.text;
  }
  return text;
}

QByteArray captureToVcd(const Capture& capture, const QString& topModule) {
  return capturesToVcd({capture}, topModule);
}

}  // namespace ost
