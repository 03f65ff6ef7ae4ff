// `ost_trace` signals, `ost_tu` and `ost_te`: what they call, show and return.
#include "tests/unit/commands/command_fixture.h"

namespace {

typedef ServiceDouble D;

class TraceCommands : public CommandFixture {
 protected:
  mero::ostrel::TraceNode* node(int kind, const char* name, const QList<mero::ostrel::TraceNode*>& children = {}) {
    owned_.emplace_back(new mero::ostrel::TraceNode);
    owned_.back()->kind = kind;
    owned_.back()->name = QString::fromLatin1(name);
    owned_.back()->children = children;
    return owned_.back().get();
  }
  std::vector<std::unique_ptr<mero::ostrel::TraceNode>> owned_;
};

TEST_F(TraceCommands, ListsTheTree) {
  mero::ostrel::TraceNode* reference = node(3, "not shown");
  reference->target = node(4, "u/q[2]");
  const struct {
    QList<mero::ostrel::TraceNode*> nodes;
    const char* list;
  } trees[] = {
      {{}, ""},
      {{node(4, "a"), node(4, "b c"), reference}, "a {b c} {u/q[2]}"},
      {{node(4, "a"), node(2, "B1", {node(4, "x"), node(4, "y")}), node(4, "c")}, "a {B1 = {x y}} c"},
      {{node(2, "B1", {node(4, "x"), node(2, "B2", {node(4, "p")})})}, "{B1 = {x {B2 = {p}}}}"},
      {{node(5, "other"), node(2, "B1"), node(0, "other"), node(4, "a")}, "{B1 = {}} a"},
  };
  for (const auto& tree : trees) {
    EXPECT_EQ(TCL_OK, run("ost_trace list_sig", [&tree](D& d) { d.nodes = tree.nodes; }));
    EXPECT_EQ(tree.list, result());
  }
}

TEST_F(TraceCommands, SplitPositions) {
  const struct {
    const char *word, *bus, *position;
  } positions[] = {{"{}", "", ""},
                   {"signal1", "", "signal1"},
                   {"Bus1<1>", "Bus1", "1"},
                   {"Bus1<12>", "Bus1", "12"},
                   {"Bus1<.end.>", "Bus1", ".end."},
                   {"Bus1<.END.>", "Bus1", ".END."},
                   {"<3>", "", "3"},
                   {"a<1><2>", "a<1>", "2"},
                   {"Bus1<0>", "", "Bus1<0>"},
                   {"Bus1<01>", "", "Bus1<01>"},
                   {"Bus1<1>x", "", "Bus1<1>x"},
                   {"Bus1<xendx>", "", "Bus1<xendx>"}};
  for (const auto& p : positions) {
    const std::string place = std::string("TraceSignals([a;b c],") + p.bus + "," + p.position + ")";
    EXPECT_EQ(TCL_OK, run(std::string("ost_trace add_sig -insert_at ") + p.word + " {a {b c}}"));
    EXPECT_EQ("add" + place, work());
    EXPECT_EQ(TCL_OK, run(std::string("ost_trace move_sig -move_to ") + p.word + " {a {b c}}"));
    EXPECT_EQ("move" + place, work());
  }
}

TEST_F(TraceCommands, ChangeTheTree) {
  const auto refuse = [](const char* operation) {
    return [operation](D& d) { d.refused = {operation}, d.message = "m"; };
  };
  const auto speak = [](D& d) { d.message = "m"; };
  check({
      {"ost_trace add_sig {}", speak, 0, "", "addTraceSignals([],,) show(m)"},
      {"ost_trace add_sig a", refuse("addTraceSignals"), 1, "", "addTraceSignals([a],,) show(m) #0116(,)"},
      {"ost_trace move_sig a", refuse("moveTraceSignals"), 1, "", "moveTraceSignals([a],,) show(m) #0116(,)"},
      {"ost_trace add_sig \"a \\{b\"", nullptr, 1, "usage", "usage()"},
      {"ost_trace move_sig -insert_at a b", nullptr, 1, "usage", "usage()"},
      {"ost_trace del_sig {a b}", speak, 0, "", "removeTraceSignals([a;b]) show(m)"},
      {"ost_trace del_sig {}", refuse("removeTraceSignals"), 1, "", "removeTraceSignals([]) show(m) #0118(,)"},
      {"ost_trace del_sig \\{", nullptr, 1, "usage", "usage()"},
      {"ost_trace group {a b}", [](D& d) { d.chosenName = "BUS1"; }, 0, "BUS1", "groupTraceSignals(,[a;b])"},
      {"ost_trace group -bus B a", speak, 0, "B", "groupTraceSignals(B,[a]) show(m)"},
      {"ost_trace group -bus B a", refuse("groupTraceSignals"), 1, "", "groupTraceSignals(B,[a]) show(m) #0119(,)"},
      {"ost_trace group -bus B \\{", nullptr, 1, "usage", "usage()"},
      {"ost_trace ungroup {B 1}", speak, 0, "", "ungroupTraceSignals(B 1) show(m)"},
      {"ost_trace ungroup B", refuse("ungroupTraceSignals"), 1, "", "ungroupTraceSignals(B) show(m)"},
      {"ost_trace rename_bus -bus B {C \\{}", speak, 0, "C \\{", "renameTraceBus(B,C \\{) show(m)"},
      {"ost_trace rename_bus -bus B C", refuse("renameTraceBus"), 1, "", "renameTraceBus(B,C) show(m) #0120(,)"},
      {"ost_trace rename_bus C", nullptr, 1, "wrong", "wrong(-bus,No valid bus name is specified.)"},
      {"ost_trace rename_bus -bus {} C", nullptr, 1, "wrong", "wrong(-bus,No valid bus name is specified.)"},
  });
}

class DatasetCommands : public CommandFixture {};

TEST_F(DatasetCommands, ListRenameRemove) {
  EXPECT_EQ(TCL_OK, run("ost_tu list"));
  EXPECT_EQ("t1 {a b}", result());
  EXPECT_EQ(TCL_OK, run("ost_te list"));
  EXPECT_EQ("e1 \\{", result());

  const struct {
    const char *command, *suffix, *noun;
  } kinds[] = {{"ost_tu", "TU", "trigger unit"}, {"ost_te", "TE", "trigger expression"}};
  for (const auto& k : kinds) {
    const std::string command = k.command, suffix = k.suffix, noun = k.noun;
    const std::string asked = "is" + suffix + "NameUsed(t1)", renamed = asked + " rename" + suffix + "(t1,T1)";
    const std::string unknown = "The " + noun + " 'no' does not exist.", failed = "Failed to rename " + noun;
    const std::string rename = command + " rename t1 T1", same = command + " rename t1 t1",
                      renameUnknown = command + " rename no no", remove = command + " remove t1",
                      removeUnknown = command + " remove no", operation = "rename" + suffix;
    check({
        {rename.c_str(), [](D& d) { d.message = "m"; }, 0, "T1", (renamed + " show(m)").c_str()},
        {rename.c_str(), [&](D& d) { d.message = "m", d.refused = {operation}; }, 1, failed.c_str(),
         (renamed + " show(m)").c_str()},
        {same.c_str(), nullptr, 0, "", asked.c_str()},
        {renameUnknown.c_str(), nullptr, 1, unknown.c_str(), ("is" + suffix + "NameUsed(no)").c_str()},
        {remove.c_str(), [&](D& d) { d.refused = {"remove" + suffix}; }, 0, "",
         (asked + " remove" + suffix + "(t1)").c_str()},
        {removeUnknown.c_str(), nullptr, 1, unknown.c_str(), ("is" + suffix + "NameUsed(no)").c_str()},
    });
  }
}

const char kBadDefinition[] =
    "Invalid trigger unit expression format.\\nIt should be \"{signal list} operator value\".)";

TEST_F(DatasetCommands, AddUnit) {
  const auto choose = [](D& d) { d.chosenName = "TU7"; };
  check({
      {"ost_tu add {{a b} == 1010}", choose, 0, "TU7", "addTU(,[a;b],==,1010,)"},
      {"ost_tu add", choose, 0, "TU7", "addTU(,[],,,)"},
      {"ost_tu add {{} .RE. 1} -radix HEX", choose, 0, "TU7", "addTU(Hex,[],.RE.,1,)"},
      {"ost_tu add -name n -radix bIn {a < { 1 }}", nullptr, 0, "n", "isTUNameUsed(n) addTU(Bin,[a],<, 1 ,n)"},
      {"ost_tu add -radix 16 -name {}", choose, 0, "TU7", "addTU(16,[],,,)"},
      {"ost_tu add -radix oct", choose, 0, "TU7", "addTU(Oct,[],,,)"},
      {"ost_tu add -radix DEC", choose, 0, "TU7", "addTU(Dec,[],,,)"},
      {"ost_tu add -name t1 {x y}", nullptr, 1, "The new TU name 't1' has been already used.", "isTUNameUsed(t1)"},
      {"ost_tu add {a ==}", nullptr, 1, "wrong", (std::string("wrong(a ==,") + kBadDefinition).c_str()},
      {"ost_tu add {a == 1 2}", nullptr, 1, "wrong", (std::string("wrong(a == 1 2,") + kBadDefinition).c_str()},
      {"ost_tu add \"a == \\{\"", nullptr, 1, "wrong", (std::string("wrong(a == {,") + kBadDefinition).c_str()},
      {"ost_tu add {\\{ == 1}", nullptr, 1, "usage", "usage()"},
      {"ost_tu add {a == 1}", [](D& d) { d.refused = {"addTU"}, d.message = "not shown"; }, 1,
       "Failed to add trigger unit", "addTU(,[a],==,1,)"},
  });
}

TEST_F(DatasetCommands, SetUnit) {
  const std::string ignored = "option is ignored because of option ";
  const auto warning = [&](const char* option, const char* because) {
    return std::string("show(WARNING: The \"") + option + "\" " + ignored + "\"" + because + "\".\\n) ";
  };
  const std::string allDropped = "getTU(t1) " + warning("op", "expr") + warning("val", "expr") +
                                 warning("add_sig", "expr") + warning("del_sig", "expr") + warning("set_sig", "expr") +
                                 "setTU(,[],[],!=,5)";
  const std::string addAndSet = "getTU(t1) " + warning("add_sig", "set_sig") + "setTU(,[],[c],,)";
  const std::string delAndSet = "getTU(t1) " + warning("del_sig", "set_sig") + "setTU(,[],[],<,)";
  check({
      {"ost_tu set -name t1", nullptr, 0, "", "getTU(t1) setTU(,[],[],,)"},
      {"ost_tu set -name t1", [](D& d) { d.refused = {"setTU"}, d.message = "m"; }, 0, "",
       "getTU(t1) setTU(,[],[],,) show(m)"},
      {"ost_tu set -name t1 -expr {{x y} != 5} -radix dec", nullptr, 0, "", "getTU(t1) setTU(Dec,[],[],!=,5)"},
      {"ost_tu set -set_sig a -del_sig b -add_sig c -val 1 -op < -name t1 -expr {x != 5}", nullptr, 0, "",
       allDropped.c_str()},
      {"ost_tu set -name t1 -op < -val 3", nullptr, 0, "", "getTU(t1) setTU(,[],[],<,3)"},
      {"ost_tu set -name t1 -set_sig {a b}", nullptr, 0, "", "getTU(t1) setTU(,[a;b],all,,)"},
      {"ost_tu set -name t1 -set_sig { }", nullptr, 0, "", "getTU(t1) setTU(,[],all,,)"},
      {"ost_tu set -name t1 -add_sig {a b} -del_sig {c d}", nullptr, 0, "", "getTU(t1) setTU(,[a;b],[c;d],,)"},
      {"ost_tu set -name t1 -set_sig a -add_sig b -del_sig c", nullptr, 0, "", addAndSet.c_str()},
      {"ost_tu set -name t1 -set_sig a -del_sig c -op <", nullptr, 0, "", delAndSet.c_str()},
      {"ost_tu set -name t1 -set_sig \\{", nullptr, 1, "usage", "getTU(t1) usage()"},
      {"ost_tu set -name t1 -del_sig \\{", nullptr, 1, "usage", "getTU(t1) usage()"},
      {"ost_tu set -op <", nullptr, 1, "usage", "usage()"},
      {"ost_tu set -name no -expr \\{", nullptr, 1, "The TU 'no' does not exist.", "getTU(no)"},
      {"ost_tu set -name t1 -expr {a b} -op <", nullptr, 1, "wrong",
       (std::string("getTU(t1) wrong(a b,") + kBadDefinition).c_str()},
  });
}

TEST_F(DatasetCommands, AddAndSetExpression) {
  const std::string ram = "wrong(-ram,The parameter value must be \"EBR\" or \"Slice\".)";
  const std::string depth = "wrong(-max_seq_depth,The parameter value must be 1, 2, 4, 8 or 16.)";
  const std::string count =
      "wrong(-max_event_count,The parameter value must be the number in the range of 1, 2, 4, 8, ... 65536.)";
  check({
      {"ost_te add", [](D& d) { d.chosenName = "TE3"; }, 0, "TE3", "addTE(,,0,0,0)"},
      {"ost_te add -name n -ram ebr -expression { T1 & T2 } -max_seq_depth { 8 } -max_event_count 65536",
       [](D& d) { d.message = "m"; }, 0, "n", "isTENameUsed(n) addTE(n, T1 & T2 ,1,8,65536) show(m)"},
      {"ost_te add -ram SLICE -max_seq_depth 1 -max_event_count {\t}", [](D& d) { d.chosenName = "x"; }, 0, "x",
       "addTE(,,0,1,0)"},
      {"ost_te add", [](D& d) { d.refused = {"addTE"}, d.message = "m"; }, 1, "Failed to add trigger expression",
       "addTE(,,0,0,0) show(m)"},
      {"ost_te add -name t1 -ram x", nullptr, 1, "The new TE name 't1' has been already used.", "isTENameUsed(t1)"},
      {"ost_te add -max_event_count x -max_seq_depth 3 -ram DRAM", nullptr, 1, "wrong", ram.c_str()},
      {"ost_te add -max_event_count x -max_seq_depth 3", nullptr, 1, "wrong", depth.c_str()},
      {"ost_te set t1", nullptr, 0, "", "isTENameUsed(t1) setTE(t1,,-1,-1,-1)"},
      {"ost_te set t1 -ram Slice -expression T1 -max_seq_depth 16 -max_event_count 1", [](D& d) { d.message = "m"; }, 0,
       "", "isTENameUsed(t1) setTE(t1,T1,0,16,1) show(m)"},
      {"ost_te set t1", [](D& d) { d.refused = {"setTE"}, d.message = "m"; }, 1, "",
       "isTENameUsed(t1) setTE(t1,,-1,-1,-1) show(m)"},
      {"ost_te set no -ram x", nullptr, 1, "The trigger expression 'no' does not exist.", "isTENameUsed(no)"},
      {"ost_te set t1 -ram { EBR}", nullptr, 1, "wrong", ("isTENameUsed(t1) " + ram).c_str()},
  });
  for (const char* bad : {"0", "32", "3", "-2", "x", "2.0", "0x2", "99999999999"}) {
    EXPECT_EQ(TCL_ERROR, run(std::string("ost_te add -max_seq_depth ") + bad));
    EXPECT_EQ(depth, work());
  }
  for (const char* bad : {"0", "131072", "65537", "-2147483648", "y"}) {
    EXPECT_EQ(TCL_ERROR, run(std::string("ost_te add -max_event_count ") + bad));
    EXPECT_EQ(count, work());
  }
}

}  // namespace
