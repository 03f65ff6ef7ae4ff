// What the patterns of a list fit.
#include "platform/istcomdata/name_patterns.h"

#include <QRegularExpression>
#include <QSet>
#include <functional>

#include "platform/design/design_session.h"
#include "platform/istdata/trace_tree.h"
#include "platform/tclcmdex/host.h"
#include "platform/text/near_names.h"

namespace ost {

namespace {

/// Offers names to the visitor, which tells whether it took one.
using NameSource = std::function<void(const std::function<bool(const QString&)>& visit)>;

struct Names {
  std::function<bool(const QString&)> has;
  NameSource each;
  std::function<QString(const QString&)> nearHint;
  QString none;          ///< "No net fits"
  bool areNets = false;  ///< A select may follow.
};

bool expand(const Names& known, QStringList& words, QString& error) {
  QStringList names;
  QSet<QString> seen;
  for (const QString& word : words) {
    if (!isPattern(word) || known.has(word)) {
      names << word;
      seen << word;
      continue;
    }
    static const QRegularExpression ending(QStringLiteral("(\\[-?\\d+(:-?\\d+)?\\])$"));
    QString pattern = word, select = ending.match(word).captured(1);
    pattern.chop(select.size());
    if (!known.areNets) {
      pattern += select.replace(QLatin1Char('['), QLatin1String("\\[")).replace(QLatin1Char(']'), QLatin1String("\\]"));
      select.clear();
    }
    int fitting = 0;
    known.each([&](const QString& name) {
      if (!tcl_cmdex::fitsPattern(name.toLatin1().constData(), pattern.toLatin1().constData())) return false;
      if (++fitting <= kMaxPatternNames && !seen.contains(name + select)) {
        names << name + select;
        seen << names.last();
      }
      return true;
    });
    if (fitting > kMaxPatternNames)
      error = QStringLiteral("The pattern %1 fits %2 names, and may stand for at most %3; write a narrower one.")
                  .arg(quoted(word))
                  .arg(fitting)
                  .arg(kMaxPatternNames);
    else if (fitting == 0)
      error = QStringLiteral("%1 the pattern %2%3.")
                  .arg(known.none, quoted(word), known.nearHint(QString(word).remove(QLatin1Char('*'))));
    if (error.isEmpty()) continue;
    if (known.areNets) error += QLatin1String(" ost_design nets -glob shows what a pattern fits.");
    return false;
  }
  words = names;
  return true;
}

}  // namespace

bool isPattern(const QString& word) {
  return word.contains(QLatin1Char('*')) || word.contains(QLatin1Char('?'));
}

bool expandNetPatterns(QStringList& words, QString& error) {
  const std::shared_ptr<const Design> design = DesignSession::instance().design();
  if (!design) return true;
  return expand(
      {[&](const QString& name) { return design->exists(name); },
       [&](const std::function<bool(const QString&)>& visit) {
         design->forEachNet([&](const NetName& net) {
           visit(net.name);
           return true;
         });
       },
       [&](const QString& name) { return nearHint(design->nearest(name)); }, QStringLiteral("No net fits"), true},
      words, error);
}

bool expandTracedPatterns(const mero::ostrel::istTraceData& trace, QStringList& words, QString& error) {
  const TraceTree& tree = static_cast<const TraceTree&>(trace);
  const std::function<void(const QList<TraceNode*>&, const std::function<bool(const QString&)>&)> walk =
      [&](const QList<TraceNode*>& nodes, const std::function<bool(const QString&)>& visit) {
        for (const TraceNode* node : nodes) {
          const bool isBus = node->kind == mero::ostrel::TRACE_NODE_BUS;
          if (!isBus && node->kind != mero::ostrel::TRACE_NODE_SIGNAL) continue;
          if (!visit(node->displayName()) && isBus) walk(node->children, visit);
        }
      };
  return expand({[&](const QString& name) { return tree.isTaken(name); },
                 [&](const std::function<bool(const QString&)>& visit) { walk(trace.nodes, visit); },
                 [&](const QString& name) { return tree.nearestHint(name); },
                 QStringLiteral("Nothing traced in this core fits"), false},
                words, error);
}

bool expandPatterns(const QStringList& known, const QString& owner, QStringList& words, QString& error) {
  return expand({[&](const QString& name) { return known.contains(name); },
                 [&](const std::function<bool(const QString&)>& visit) {
                   for (const QString& name : known) visit(name);
                 },
                 [&](const QString& name) {
                   NearestNames near(name);
                   for (const QString& one : known) near.offer(one);
                   return near.hint();
                 },
                 QStringLiteral("No signal of %1 fits").arg(owner), false},
                words, error);
}

}  // namespace ost
