// The table of named nodes and the pool of their names against a plain map, through long random runs of insertions and
// removals.
#include "platform/istdata/node_table.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

namespace {

struct Named {
  const ost::PooledName* text;
};

TEST(NodeTable, agrees_with_a_map_while_names_come_and_go) {
  std::mt19937 random(7);
  ost::NodeTable<Named> table;
  ost::NamePool pool;
  std::map<QString, Named> map;
  const auto known = [&map](const QString& name) {
    const auto found = map.find(name);
    return found == map.end() ? nullptr : &found->second;
  };
  int moves = 0;
  for (int step = 0; step < 60000; ++step) {
    // Grows for the first half, shrinks to nothing in the second.
    const QString name = "u_block/sig_" + QString::number(random() % 3000);
    const bool add = random() % 100 < (step < 30000 ? 70u : 30u);
    Named* node = known(name);
    ASSERT_EQ(node, table.value(name)) << name.toStdString();
    if (add && !node) {
      table.insert(&(map[name] = Named{pool.add(name)}));
    } else if (!add && node) {
      table.remove(node);
      pool.giveBack(node->text);
      map.erase(name);
    }
    ASSERT_EQ(int(map.size()), table.size());
    if (!pool.isWasteful()) continue;
    ost::NamePool fresh;
    table.forEach([&fresh](Named* moved) { moved->text = fresh.add(*moved->text); });
    pool = std::move(fresh);
    ++moves;
    QStringList names{"absent"};
    for (const auto& entry : map) names << entry.first;
    int found = 0;
    table.lookUp(names, [&](const QString& looked, Named* at) { return at == known(looked) && ++found; });
    ASSERT_EQ(names.size(), found);
  }
  EXPECT_GT(moves, 1);
}

}  // namespace
