// Yosys JSON netlists from strangers: nothing in them is trusted, and what is wrong is said.
#include "tests/unit/read_design.h"

namespace ost {
namespace {

QByteArray moduleWith(const QByteArray& sections) {
  return "{\"modules\":{\"m\":{" + sections + "}}}";
}
QByteArray net(const QByteArray& body) {
  return moduleWith("\"netnames\":{\"n\":{" + body + "}}");
}
QByteArray module(int number, const QByteArray& cells) {
  return "\"m" + QByteArray::number(number) + "\":{\"cells\":{" + cells + "}},";
}
QByteArray cell(const QByteArray& name, int type) {
  return '"' + name + "\":{\"type\":\"m" + QByteArray::number(type) + "\"}";
}

TEST(NetlistFile, that_is_no_netlist_is_refused_with_the_reason) {
  QByteArray chain = "{\"modules\":{";
  for (int i = 0; i < 600; ++i) chain += module(i, cell("u", i + 1));
  chain += "\"m600\":{}}}";
  const struct {
    QByteArray content;
    const char* text;
  } table[] = {
      {"", "not a usable Yosys JSON netlist"},
      {"{\"modules\":{\"m\":1}}", "a module is not an object"},
      {"{\"modules\":{\"m\":{},\"m\":{}}}", "a module stands twice"},
      {"{\"modules\":{\"m ; !id\":{}}}", "a module's name is empty, or holds a blank"},
      {moduleWith("\"cells\":{\"c\":{\"type\":\"x\\n!id\"}}"), "a cell's \"type\" holds a blank"},
      {"{\"modules\":{\"x;\":{}}}", "\"x;\" cannot be the name of the top module"},
      {"{\"modules\":{\"m\":{}}} x", "at byte 21"},
      {QByteArray("{\"a\":").repeated(100), "deeper than 64"},
      {moduleWith("\"netnames\":{\"n\":[2]}"), "a list stands where an object was expected"},
      {net(""), "a net has no \"bits\" (module \"m\", \"n\")"},
      {net("\"bits\":[\"q\"]"), "a net's bit is neither"},
      {net("\"bits\":[2],\"offset\":99999999999"), "\"offset\""},
      {moduleWith("\"netnames\":{\"a b\":{\"bits\":[2]}}"), "a blank or a control character"},
      {moduleWith("\"netnames\":{\"a\":{\"bits\":[2]},\"a\":{\"bits\":[3]}}"), "declares the net \"a\" twice"},
      {"{\"modules\":{\"t\":{\"cells\":{" + cell("c", 0) + "}}," + module(0, cell("d", 0)).chopped(1) + "}}",
       "contains itself"},
      {"{\"modules\":{\"a\":{},\"b\":{}}}", "2 modules that could be the top"},
      {chain, "deeper than 512 levels"},
  };
  Scratch scratch;
  for (const auto& row : table) {
    SCOPED_TRACE(row.content.left(80).constData());
    QString error;
    EXPECT_FALSE(readDesign(sourceOf({scratch.write("bad.json", row.content)}), error));
    EXPECT_TRUE(has(error, row.text));
  }
}

TEST(NetlistFile, attributes_rename_nothing_and_hide_only_what_Yosys_hides) {
  const struct {
    const char* attributes;
    bool seen;
  } table[] = {{"\"blackbox\":\"0000\",\"hdlname\":\"other\"", true},
               {"\"whitebox\":0", true},
               {"\"blackbox\":\"0010\"", false},
               {"\"whitebox\":\"no\"", false},
               {"\"blackbox\":1", false}};
  for (const auto& row : table) {
    SCOPED_TRACE(row.attributes);
    QString error;
    const auto design =
        readDesign(sourceOf({Scratch().write("a.json", "{\"modules\":{\"$paramod\\\\t\\\\W=3\":{\"attributes\":{" +
                                                           QByteArray(row.attributes) +
                                                           "},\"netnames\":{\"n\":{\"bits\":[2]}}}}}")}),
                   error);
    ASSERT_EQ(design != nullptr, row.seen) << plain(error);
    if (!row.seen) continue;
    EXPECT_TRUE(design->exists("n"));
    EXPECT_EQ(design->topModule(), "t");
    EXPECT_EQ(design->topKey(), "$paramod\\t\\W=3");
  }
}

TEST(NetlistFile, whose_instances_explode_is_counted_without_being_expanded) {
  // Each of 100 levels holds the next one twice: 2^100 nets, in 101 modules.
  QByteArray text = "{\"modules\":{";
  for (int i = 0; i < 100; ++i) text += module(i, cell("a", i + 1) + ',' + cell("a/a", i + 1));
  text += "\"m100\":{\"netnames\":{\"n\":{\"bits\":[2]}}}}}";
  QString error;
  const auto design = readDesign(sourceOf({Scratch().write("huge.json", text)}), error);
  ASSERT_TRUE(design) << plain(error);
  EXPECT_EQ(design->netCount(), std::numeric_limits<qint64>::max());
  EXPECT_EQ(design->instanceCount(), std::numeric_limits<int>::max());
  // A name that could be split in very many ways ends all the same.
  EXPECT_FALSE(design->exists(QString("a/").repeated(150) + "missing"));
}

TEST(NetlistFile, top_is_the_option_then_the_attribute) {
  Scratch scratch;
  DesignSource source = sourceOf({scratch.write(
      "two.json",
      "{\"modules\":{\"a\":{\"attributes\":{\"top\":\"0001\"}},\"b\":{\"cells\":{\"i\":{\"type\":\"a\"}}}}}")});
  QString error;
  EXPECT_EQ(readDesign(source, error)->topModule(), "a");
  source.top = "b";
  EXPECT_EQ(readDesign(source, error)->topModule(), "b");
  source.top = "c";
  EXPECT_FALSE(readDesign(source, error));
  EXPECT_TRUE(has(error, "no module \"c\" to be the top"));
}

}  // namespace
}  // namespace ost
