// The trace tree under random edits: its invariants, its agreement with a saved and reopened self, and an unchanged
// tree after every refused edit.
#include <gtest/gtest.h>

#include <random>

#include "platform/istdata/project_file.h"

namespace ost {
namespace {

using namespace mero::ostrel;

class TreeTest : public ::testing::Test {
 protected:
  TreeTest() {
    project.cores.emplace_back(new Core("c"));
    tree = project.cores[0]->trace.get();
  }

  /// Adds entries; "a:3" is a vector of three bits.
  bool add(const QStringList& entries, const QString& bus = QString(), const QString& position = QString()) {
    TraceTree::Place place;
    QString remark;
    error.clear();
    if (!tree->findPlace(bus, position, place, error)) return false;
    TraceTree::Addition addition(*tree);
    for (const QString& entry : entries) {
      const QString name = entry.section(':', 0, 0);
      QStringList bits;
      for (int bit = entry.section(':', 1).toInt() - 1; bit >= 0; --bit) bits << QString("%1[%2]").arg(name).arg(bit);
      if (!addition.stage(name, bits.isEmpty() ? QStringList(name) : bits, !bits.isEmpty(), remark, error))
        return false;
    }
    return addition.insert(place, error);
  }

  bool find(const QStringList& names, QVector<TraceNode*>& entries) {
    error.clear();
    return tree->findAll(
        names, [](const QString&) { return QString(); }, entries, error);
  }

  bool move(const QStringList& names, const QString& bus, const QString& position) {
    QVector<TraceNode*> entries;
    TraceTree::Place place;
    return find(names, entries) && tree->findPlace(bus, position, place, error) && tree->move(entries, place, error);
  }

  bool remove(const QStringList& names) {
    QVector<TraceNode*> entries;
    if (!find(names, entries)) return false;
    tree->remove(entries);
    return true;
  }

  bool group(QString bus, const QStringList& names) {
    QVector<TraceNode*> entries;
    return find(names, entries) && tree->group(bus, entries, error);
  }

  static QString listing(const QList<TraceNode*>& nodes) {
    QStringList words;
    for (const TraceNode* node : nodes) {
      if (node->kind == TRACE_NODE_SIGNAL) words << node->displayName();
      if (node->kind == TRACE_NODE_REF) words << '*' + node->displayName();
      if (node->kind == TRACE_NODE_BUS) words << node->name + '{' + listing(node->children) + '}';
    }
    return words.join(' ');
  }

  std::string shown() const { return listing(tree->nodes).toStdString(); }

  istProject project;
  TraceTree* tree;
  QString error;
};

TEST_F(TreeTest, PositionsAndReferences) {
  ASSERT_TRUE(add({"a", "v:2", "b"}));
  EXPECT_EQ(shown(), "a v{v[1] v[0]} b");
  ASSERT_TRUE(add({"v[0]", "c"}, "", "v"));
  EXPECT_EQ(shown(), "a *v[0] c v{v[1] v[0]} b");
  ASSERT_TRUE(add({"d"}, "v", "2"));
  ASSERT_TRUE(add({"e"}, "v", ".END."));
  ASSERT_TRUE(add({"f"}, "", "1"));
  EXPECT_EQ(shown(), "f a *v[0] c v{v[1] d v[0] e} b");
  ASSERT_TRUE(remove({"v"}));  // the reference takes over
  EXPECT_EQ(shown(), "f a v[0] c b");
  ASSERT_TRUE(add({"v:2"}));
  EXPECT_EQ(shown(), "f a v[0] c b v{v[1] *v[0]}");
  ASSERT_TRUE(move({"v[0]", "v<2>"}, "", "f"));  // a reference is named by its place
  EXPECT_EQ(shown(), "v[0] *v[0] f a c b v{v[1]}");
  ASSERT_TRUE(move({"v[0]", "f"}, "", "v[0]"));  // before one of the moved: before what follows it
  EXPECT_EQ(shown(), "v[0] f *v[0] a c b v{v[1]}");
}

TEST_F(TreeTest, GroupingAndUngrouping) {
  ASSERT_TRUE(add({"a", "b", "c", "d"}));
  ASSERT_TRUE(group("", {"d", "b"}));
  EXPECT_EQ(shown(), "a c BUS1{d b}");
  ASSERT_TRUE(group("outer", {"BUS1", "a"}));
  EXPECT_EQ(shown(), "c outer{BUS1{d b} a}");
  EXPECT_FALSE(move({"outer"}, "BUS1", ""));
  EXPECT_TRUE(error.contains("'outer' cannot be moved into itself")) << error.toStdString();
  tree->ungroup(tree->findBus("BUS1"));
  EXPECT_EQ(shown(), "c outer{d b a}");
  ASSERT_TRUE(group("", {"c"}));  // BUS1 is free again
  EXPECT_EQ(shown(), "BUS1{c} outer{d b a}");
  ASSERT_TRUE(remove({"c"}));
  EXPECT_EQ(shown(), "BUS1{} outer{d b a}");  // an empty bus stays
}

TEST_F(TreeTest, RefusalsNameTheThingAndChangeNothing) {
  ASSERT_TRUE(add({"a", "b", "v:2"}));
  const std::string before = shown();
  QString name;
  EXPECT_FALSE(add({"x", "x"}) || add({"w:2", "w:2"}) || add({"x"}, "nobus") || add({"x"}, "", "5"));
  EXPECT_FALSE(add({"x"}, "", "99999999999999999999") || add({"x"}, "v", "0") || add({"x"}, "v", "a"));
  EXPECT_FALSE(move({"a", "a"}, "", "") || move({"nix"}, "", "") || remove({"a", "nix"}) || remove({"a<1>"}));
  EXPECT_FALSE(group("v", {"a"}) || group("1", {"a"}) || group("g", {"a", "v[1]"}) || group("g", {}));
  EXPECT_FALSE(tree->renameBus(tree->findBus("v"), "a", error) || tree->renameBus(tree->findBus("v"), "", error));
  EXPECT_FALSE(add({"q:3", "v:2", "zz", "zz"}));  // fails after new signals, references and buses were staged
  EXPECT_EQ(shown(), before);
  EXPECT_FALSE(tree->isTaken("x") || tree->isTaken("w") || tree->isTaken("q[1]"));
  EXPECT_EQ(tree->signalCount(), 4);
  ASSERT_TRUE(tree->renameBus(tree->findBus("v"), "w", error));
  EXPECT_FALSE(add({"w"}));  // a net of a bus's name would be ambiguous
  EXPECT_TRUE(error.contains("rename the bus first")) << error.toStdString();
}

TEST_F(TreeTest, BusesNestToTheLimitOnly) {
  ASSERT_TRUE(add({"a", "b"}));
  for (int i = 0; i < TraceTree::kMaxBusNesting; ++i)
    ASSERT_TRUE(group("", {i ? QString("BUS%1").arg(i) : QString("a")})) << i;
  EXPECT_FALSE(group("", {"BUS32"}));
  ASSERT_TRUE(group("other", {"b"}));
  EXPECT_FALSE(move({"other"}, "BUS1", ""));
  EXPECT_FALSE(add({"v:2"}, "BUS1"));
  EXPECT_TRUE(error.contains("32 deep")) << error.toStdString();
}

/// Every bit captured once, references bound to the node that captures, and indexes that agree with the lists.
void checkInvariants(TraceTree& tree) {
  QHash<QString, const TraceNode*> captured;
  QVector<const TraceNode*> references;
  int buses = 0;
  const auto walk = [&](const auto& self, const QList<TraceNode*>& nodes) -> void {
    for (TraceNode* node : nodes) {
      if (node->kind == TRACE_NODE_SIGNAL) {
        ASSERT_FALSE(captured.contains(node->name)) << node->name.toStdString();
        captured.insert(node->name, node);
        ASSERT_EQ(tree.find(node->name), node);
      } else if (node->kind == TRACE_NODE_REF) {
        references << node;
      } else if (node->kind == TRACE_NODE_BUS) {
        ++buses;
        ASSERT_EQ(tree.findBus(node->name), node);
        self(self, node->children);
      }
    }
  };
  walk(walk, tree.nodes);
  ASSERT_EQ(tree.signalCount(), captured.size());
  ASSERT_EQ(tree.busCount(), buses);
  for (const TraceNode* reference : references) ASSERT_EQ(reference->target, captured.value(reference->name));
}

TEST_F(TreeTest, RandomEditsKeepTheInvariants) {
  std::mt19937 random(20240607);
  const auto pick = [&random](int n) { return int(random() % unsigned(n)); };
  int accepted = 0;
  for (int step = 0; step < 3000; ++step) {
    const auto anyName = [&] {
      switch (pick(6)) {
        case 0:
          return QString("BUS%1").arg(1 + pick(9));
        case 1:
          return QString("v%1[%2]").arg(pick(5)).arg(pick(4));
        case 2:
          return QString("v%1").arg(pick(5));
        case 3:
          return QString("<%1>").arg(1 + pick(20));
        case 4:
          return QString("BUS%1<%2>").arg(1 + pick(9)).arg(1 + pick(4));
        default:
          return QString("s%1").arg(pick(60));
      }
    };
    QStringList names;
    for (int i = pick(4); i >= 0; --i) names << anyName();
    const QString bus = pick(3) ? QString() : anyName();
    const QString position = pick(2) ? QString() : pick(2) ? anyName() : QString::number(1 + pick(8));
    const std::string before = shown();
    bool ok = false;
    switch (pick(8)) {
      case 0:
        ok = add({QString("v%1:4").arg(pick(5)), QString("s%1").arg(pick(60))}, bus, position);
        break;
      case 1:
      case 2:
        ok = add({QString("s%1").arg(pick(60)), QString("v%1[%2]").arg(pick(5)).arg(pick(4))}, bus, position);
        break;
      case 3:
      case 4:
        ok = move(names, bus, position);
        break;
      case 5:
        ok = group(QString(), names);
        break;
      case 6:
        ok = remove(names.mid(0, 1));
        break;
      case 7:
        if (TraceNode* found = tree->findBus(anyName())) {
          if (pick(2))
            tree->ungroup(found), ok = true;
          else
            ok = tree->renameBus(found, QString("BUS%1").arg(1 + pick(9)), error);
        }
    }
    accepted += ok;
    if (!ok) {
      ASSERT_EQ(before, shown()) << "a refused edit changed the tree at step " << step;
    }
    ASSERT_NO_FATAL_FAILURE(checkInvariants(*tree)) << "step " << step;
    if (step % 50) continue;
    const QByteArray after = projectToJson(project);
    QString reason;
    const auto reopened = projectFromJson(after, reason);
    ASSERT_TRUE(reopened) << reason.toStdString();
    ASSERT_EQ(projectToJson(*reopened), after);
  }
  EXPECT_GT(accepted, 800);
}

/// Holes are closed by every save; here none comes between, so that the lists live with them.
TEST_F(TreeTest, ListsWithHolesKeepTheirOrder) {
  std::mt19937 random(7);
  std::vector<QString> model;
  QStringList all;
  for (int i = 0; i < 400; ++i) all << QString("s%1").arg(i);
  ASSERT_TRUE(add(all));
  model.assign(all.begin(), all.end());
  for (int step = 0; step < 4000; ++step) {
    const size_t from = random() % model.size();
    const QString moved = model[from];
    const size_t to = random() % model.size();
    const bool byName = random() % 2 && model[to] != moved;
    const QString anchor = model[to];
    if (!byName && anchor == moved) continue;
    ASSERT_TRUE(move({moved}, "", byName ? anchor : QString::number(to + 1)));
    model.erase(model.begin() + from);
    model.insert(std::find(model.begin(), model.end(), anchor), moved);
    if (step % 100) continue;
    QStringList now;
    for (const QString& name : model) now << name;
    ASSERT_EQ(shown(), now.join(' ').toStdString()) << "step " << step;
  }
}

}  // namespace
}  // namespace ost
