// The trace tree: places, references, limits, and lists with holes. (Random edits, and the tree that a file brings
// back, are what tests/fuzz drives.)
#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <map>
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
  ASSERT_TRUE(add({"v[0]"}, "v", "1") && remove({"v[0]"}));  // the first of two references takes over
  EXPECT_EQ(shown(), "f v[0] a c b v{*v[0] v[1]}");
}

TEST_F(TreeTest, AnAdditionThatFailsHalfwayHasAddedNothing) {
  ASSERT_TRUE(add({"a", "v:2"}));
  EXPECT_FALSE(add({"q:3", "v:2", "zz", "zz"}));  // after new signals, references and buses were staged
  EXPECT_EQ(shown(), "a v{v[1] v[0]}");
  EXPECT_FALSE(tree->isTaken("q") || tree->isTaken("q[1]") || tree->isTaken("zz"));
  EXPECT_EQ(tree->signalCount(), 3);
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

/// Holes are closed by every save; here none comes between, so that the lists live with them.
TEST_F(TreeTest, ListsWithHolesKeepTheirOrder) {
  std::mt19937 random(7);
  QStringList model;
  for (int i = 0; i < 400; ++i) model << QString("s%1").arg(i);
  ASSERT_TRUE(add(model));
  for (int step = 0; step < 4000; ++step) {
    const int to = int(random() % 400);
    const QString moved = model[int(random() % 400)], anchor = model[to];
    if (anchor == moved) continue;
    ASSERT_TRUE(move({moved}, "", random() % 2 ? anchor : QString::number(to + 1)));
    model.removeOne(moved);
    model.insert(model.indexOf(anchor), moved);
    if (step % 100) continue;
    ASSERT_EQ(shown(), model.join(' ').toStdString()) << "step " << step;
  }
}

TEST_F(TreeTest, WhatStaysKeepsItsNameWhenManyGo) {
  QStringList all, kept;
  for (int i = 0; i < 20000; ++i) (i % 50 ? all : kept) << QString("u_block/sig_%1").arg(i);
  for (int round = 0; round < 3; ++round) {
    ASSERT_TRUE(add(all));
    ASSERT_TRUE(round > 0 || (add(kept, "", all[100]) && group("k", kept)));
    ASSERT_TRUE(remove(all));
    ASSERT_EQ(shown(), "k{" + kept.join(' ').toStdString() + "}");
    ASSERT_TRUE(tree->find(kept[7]) && !tree->find(all[7]));
  }
  ASSERT_TRUE(remove({"k"}));
  ASSERT_EQ(tree->signalCount() + tree->busCount(), 0);
}

/// Runs the edit in a child process that gets no more than so many bytes beyond what it has, and then the check without
/// a limit. The child's exit status: 0 when the check holds, 1 when not, 2 when it holds and memory had ended.
template <class Edit, class Check>
int statusWithin(rlim_t bytes, const Edit& edit, const Check& check) {
  int status = -1;
  if (const pid_t child = fork()) {
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  malloc_trim(0);  // what earlier tests gave back is no reserve
  rlim_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  rlimit before;
  getrlimit(RLIMIT_AS, &before);
  const rlimit limit = {pages * rlim_t(sysconf(_SC_PAGESIZE)) + bytes, before.rlim_max};
  bool ended = false;
  try {
    setrlimit(RLIMIT_AS, &limit);
    edit();
  } catch (const std::bad_alloc&) {
    ended = true;
  }
  setrlimit(RLIMIT_AS, &before);
  _exit(!check() ? 1 : ended ? 2 : 0);
}

TEST_F(TreeTest, TheEndOfMemoryLeavesTheTreeWhole) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "address space is the checker's";
#endif
  ASSERT_TRUE(add({"stays:3"}));
  QStringList names;
  for (int i = 0; i < 20000; ++i) names << QString("sig_%1").arg(i);
  // All or nothing, and all names are free again when what has come goes.
  const auto whole = [&] {
    const bool came = tree->isTaken("v[7]");
    if (tree->signalCount() != (came ? 20003 : 3) || tree->isTaken("v") != came) return false;
    if (came && !remove({"v"})) return false;
    return shown() == "stays{stays[2] stays[1] stays[0]}" && add(names) && remove(names) && add({"v:20000"}) &&
           tree->isTaken("v");
  };
  std::map<int, int> statuses;
  const auto tryAll = [&](const auto& edit) {
    for (rlim_t step = 0; step < 24; ++step) ++statuses[statusWithin(step << 18, edit, whole)];
  };
  tryAll([&] { add({"v:20000"}); });
  ASSERT_TRUE(add({"v:20000"}));
  tryAll([&] { remove({"v"}); });
  EXPECT_EQ(statuses[0] + statuses[2], 48) << statuses[1] << " wrong, " << statuses[-1] << " crashed";
  EXPECT_GT(statuses[2], 2);
}

}  // namespace
}  // namespace ost
