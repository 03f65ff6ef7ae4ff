// The table of captured bits against a plain map, through long random runs of insertions and removals.
#include "platform/istdata/node_table.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <random>

namespace {

struct Named {
  QString name;
};

TEST(NodeTable, agrees_with_a_map_while_names_come_and_go) {
  std::mt19937 random(7);
  ost::NodeTable<Named> table;
  std::map<QString, std::unique_ptr<Named>> map;
  EXPECT_EQ(nullptr, table.value("absent"));
  table.remove("absent");
  for (int step = 0; step < 60000; ++step) {
    // Grows for the first half, shrinks to nothing in the second.
    const QString name = "u_block/sig_" + QString::number(random() % 3000);
    const bool add = random() % 100 < (step < 30000 ? 70u : 30u);
    if (add && !map.count(name)) {
      map[name].reset(new Named{name});
      table.insert(map[name].get());
    } else if (!add) {
      table.remove(name);
      map.erase(name);
    }
    ASSERT_EQ(int(map.size()), table.size());
    const auto known = map.find(name);
    ASSERT_EQ(known == map.end() ? nullptr : known->second.get(), table.value(name)) << name.toStdString();
    if (step % 5000 != 0) continue;
    for (const auto& entry : map) ASSERT_EQ(entry.second.get(), table.value(entry.first));
  }
  std::size_t visited = 0;
  table.forEach([&](Named* node) { visited += map.at(node->name).get() == node; });
  EXPECT_EQ(map.size(), visited);
}

}  // namespace
