// Yosys JSON netlists from strangers: nothing in them is trusted, and what is wrong is said.
#include "tests/unit/design/scratch.h"

namespace {

using namespace ost;

QByteArray moduleWith(const QByteArray& sections) {
  return "{\"modules\":{\"m\":{" + sections + "}}}";
}
QByteArray net(const QByteArray& body) {
  return moduleWith("\"netnames\":{\"n\":{" + body + "}}");
}

TEST(NetlistFile, that_is_no_netlist_is_refused_with_the_reason) {
  QByteArray deep, chain = "{\"modules\":{";
  for (int i = 0; i < 100; ++i) deep += "{\"a\":";
  for (int i = 0; i < 600; ++i) {
    const QByteArray n = QByteArray::number(i), next = QByteArray::number(i + 1);
    chain += (i ? ",\"m" : "\"m") + n + "\":{\"cells\":{\"u\":{\"type\":\"m" + next + "\"}}}";
  }
  chain += ",\"m600\":{}}}";
  const struct {
    QByteArray content;
    const char* text;
  } table[] = {
      {"", "not a usable Yosys JSON netlist"},
      {"[]", "holds no module"},
      {"{}", "holds no module"},
      {"{\"modules\":[]}", "\"modules\" is not an object"},
      {"{\"modules\":3}", "\"modules\" is not an object"},
      {"{\"modules\":{\"m\":1}}", "a module is not an object"},
      {"{\"modules\":{\"m\":{},\"m\":{}}}", "a module stands twice"},
      {"{\"modules\":{\"m\":{}", "at byte"},
      {"{\"modules\":{\"m\":{}}} x", "at byte 21"},
      {"{\"modules\":{\"\xff\xfe\":{}}}", "ncod"},
      {deep, "deeper than 64"},
      {moduleWith("\"netnames\":{\"n\":[2]}"), "a list stands where an object was expected"},
      {moduleWith("\"netnames\":{\"n\":7}"), "an entry is not an object"},
      {net(""), "a net has no \"bits\" (module \"m\", \"n\")"},
      {net("\"bits\":\"2\""), "\"bits\" is not a list"},
      {net("\"bits\":[-1]"), "a net's bit is neither"},
      {net("\"bits\":[\"q\"]"), "a net's bit is neither"},
      {net("\"bits\":[{}]"), "an object stands"},
      {net("\"bits\":[2],\"offset\":99999999999"), "\"offset\""},
      {net("\"bits\":[2],\"upto\":2"), "\"upto\""},
      {moduleWith("\"netnames\":{\"a b\":{\"bits\":[2]}}"), "a blank or a control character"},
      {moduleWith("\"netnames\":{\"a\":{\"bits\":[2]},\"a\":{\"bits\":[3]}}"), "declares the net \"a\" twice"},
      {moduleWith("\"cells\":{\"c\":{}}"), "a cell has no \"type\""},
      {moduleWith("\"cells\":{\"c\":{\"type\":\"x\"},\"c\":{\"type\":\"m\"}}"), "no top module"},
      {"{\"modules\":{\"t\":{\"cells\":{\"c\":{\"type\":\"m\"}}},\"m\":{\"cells\":{\"d\":{\"type\":\"m\"}}}}}",
       "contains itself"},
      {"{\"modules\":{\"a\":{},\"b\":{}}}", "2 modules that could be the top"},
      {chain, "deeper than 512 levels"},
  };
  Scratch scratch;
  for (const auto& row : table) {
    SCOPED_TRACE(row.content.left(80).constData());
    QString error;
    EXPECT_FALSE(readDesign(sourceOf({scratch.write("bad.json", row.content)}), error));
    EXPECT_NE(plain(error).find(row.text), std::string::npos) << plain(error);
  }
}

TEST(NetlistFile, whose_instances_explode_is_counted_without_being_expanded) {
  // Each of 100 levels holds the next one twice: 2^100 nets, in 101 modules.
  QByteArray text = "{\"modules\":{";
  for (int i = 0; i < 100; ++i) {
    const QByteArray type = "{\"type\":\"m" + QByteArray::number(i + 1) + "\"}";
    text += "\"m" + QByteArray::number(i) + "\":{\"cells\":{\"a\":" + type + ",\"a/a\":" + type + "}},";
  }
  text += "\"m100\":{\"netnames\":{\"n\":{\"bits\":[2]}}}}}";
  Scratch scratch;
  QString error;
  const auto design = readDesign(sourceOf({scratch.write("huge.json", text)}), error);
  ASSERT_TRUE(design) << plain(error);
  EXPECT_EQ(design->netCount(), std::numeric_limits<qint64>::max());
  EXPECT_EQ(design->instanceCount(), std::numeric_limits<int>::max());
  int seen = 0;
  design->forEachNet([&seen](const NetName&) { return ++seen < 3; });
  EXPECT_EQ(seen, 3);
  // A name that could be split in very many ways ends all the same.
  EXPECT_FALSE(design->exists(wire("a/").repeated(150) + wire("missing")));
}

TEST(NetlistFile, top_is_the_option_then_the_attribute_then_the_only_root) {
  const QByteArray two =
      "{\"modules\":{\"a\":{\"attributes\":{\"top\":\"0001\"}},\"b\":{\"cells\":{\"i\":{\"type\":\"a\"}}}}}";
  Scratch scratch;
  DesignSource source = sourceOf({scratch.write("two.json", two)});
  QString error;
  EXPECT_EQ(plain(readDesign(source, error)->topModule()), "a");
  source.top = wire("b");
  EXPECT_EQ(plain(readDesign(source, error)->topModule()), "b");
  source.top = wire("c");
  EXPECT_FALSE(readDesign(source, error));
  EXPECT_NE(plain(error).find("no module \"c\" to be the top"), std::string::npos) << plain(error);
}

}  // namespace
