// Project files: what is written comes back, and what is damaged is refused with its place.
#include "platform/istdata/project_file.h"

#include <QRegularExpression>

#include "tests/unit/scratch.h"

namespace ost {
namespace {

using mero::ostrel::istProject;

/// A project that uses every part of the format, names with non-ASCII bytes among them.
std::unique_ptr<istProject> fullProject() {
  auto project = std::make_unique<istProject>();
  project->cores.emplace_back(new Core("c1"));
  Core& core = *project->cores.back();
  project->activeCore = &core;
  core.options.sampleClock = QString::fromLatin1("u/\xc3\xa9");
  core.options.bufferDepth = 64;
  core.samplesPerTrigger = 32;
  core.options.triggerCount = 2;
  QString error, remark;
  TraceTree::Addition addition(*core.trace);
  EXPECT_TRUE(addition.stage("u/state", {"u/state[1]", "u/state[0]"}, true, remark, error));
  EXPECT_TRUE(addition.stage("u/state[0]", {"u/state[0]"}, false, remark, error));
  EXPECT_TRUE(addition.insert({}, error));
  core.dataset.addUnit({"TU1", {"u/state"}, Operator::Equal, Radix::Hex, "x"});
  core.dataset.addExpression({"TE1", "!TU1*3", {"TU1"}, ExpressionRam::BlockRam, 2, 4});
  project->serdes.reset(new mero::ostrel::istSerdesCore);
  project->serdes->resetSignal = "VLO";
  project->wishbone.reset(new mero::ostrel::istWishboneMaster{false});
  return project;
}

TEST(ProjectFileTest, ReadsWhatItWrites) {
  const QByteArray json = projectToJson(*fullProject());
  QString error;
  const auto again = projectFromJson(json, error);
  ASSERT_TRUE(again) << error.toStdString();
  EXPECT_EQ(projectToJson(*again), json);
  EXPECT_EQ(again->activeCore->options.sampleClock, QString::fromLatin1("u/\xc3\xa9"));
  EXPECT_EQ(again->activeCore->trace->nodes[1]->target, again->activeCore->trace->find("u/state[0]"));
}

TEST(ProjectFileTest, ReadsTheUnderscoredKeysOfVersion1) {
  const QByteArray json = projectToJson(*fullProject());
  QString old = QString::fromUtf8(json).replace("\"version\": 2", "\"version\": 1");
  for (char capital = 'A'; capital <= 'Z'; ++capital)
    old.replace(QRegularExpression(QString("(?<=[a-z])%1(?=[A-Za-z_]*\":)").arg(capital)),
                QString("_%1").arg(QChar(capital).toLower()));
  ASSERT_TRUE(old.contains("\"samples_per_trigger\": 32"));
  QString error;
  const auto again = projectFromJson(old.toUtf8(), error);
  ASSERT_TRUE(again) << error.toStdString();
  EXPECT_EQ(projectToJson(*again), json);
}

TEST(ProjectFileTest, FaultsAreRefusedWithTheirPlace) {
  const struct {
    const char *before, *after, *error;
  } cases[] = {
      {"\"name\": \"c1\"", "\"name\": \"c1\", \"n\\u0061me\": \"c2\"", "line "},
      {"ostrel-project", "other", "it is not a project file"},
      {"\"version\": 2", "\"version\": 3", "it has version 3, written by a newer release"},
      {"\"version\": 2", "\"version\": 0.5", "version: expected a whole number"},
      {"\"version\": 2", "\"version\": 2, \"more\": 1", "has an unknown key \"more\""},
      {"\"activeCore\": \"c1\"", "\"activeCore\": \"c2\"", "activeCore: names no core"},
      {"\"name\": \"c1\"", "\"name\": \"c 1\"", "cores[0].name: The core name \"c 1\""},
      {"\"bufferDepth\": 64", "\"bufferDepth\": 65", "cores[0].options.bufferDepth: expected 16, 32"},
      {"\"bufferDepth\": 64,", "", "cores[0].options.bufferDepth: is missing"},
      {"\"bufferDepth\": 64", "\"bufferDepth\": 32", "cores[0].options.triggerCount: expected 1, found 2"},
      {"\"timestampBits\": 32", "\"timestampBits\": 6",
       "cores[0].options.timestampBits: expected a whole number from 7"},
      {"\"captureMode\": \"single\"", "\"captureMode\": \"Single\"",
       "cores[0].options.captureMode: expected single or"},
      {"\"triggerOutName\": \"\"", "\"triggerOutName\": \"wire\"", "cores[0].options.triggerOutName: \"wire\""},
      {"\"sampleClock\": \"u/", "\"sampleClock\": \"\\u0000", "cores[0].options.sampleClock: holds a null"},
      {"\"u/state[1]\"", "\"u/state[0]\"", "cores[0].trace[0].members[1]: \"u/state[0]\" is in the trace list already"},
      {"\"reference\": \"u/state[0]\"", "\"reference\": \"q\"", "cores[0].trace: the reference to \"q\""},
      {"\"name\": \"TU1\"", "\"name\": \"1\"", "cores[0].units[0].name: The unit name \"1\""},
      {"\"value\": \"x\"", "\"value\": \"1g\"", "cores[0].units[0].value: \"1g\""},
      {"\"operator\": \"==\"", "\"operator\": \"=\"", "cores[0].units[0].operator: \"=\""},
      {"!TU1*3", "!TU2*3", "cores[0].expressions[0].expression: There is no trigger unit \"TU2\""},
      {"\"maxEventCount\": 4", "\"maxEventCount\": 3", "cores[0].expressions[0].maxEventCount: expected a power"},
      {"\"endian\": \"big\"", "\"endian\": 1", "wishbone.endian: expected a text, found a number"},
  };
  const QByteArray json = projectToJson(*fullProject());
  for (const auto& c : cases) {
    QString error;
    EXPECT_FALSE(projectFromJson(damaged(json, c.before, c.after), error)) << c.after;
    EXPECT_EQ(error.toStdString().rfind(c.error, 0), 0u) << error.toStdString() << "\nexpected: " << c.error;
  }
}

TEST(ProjectFileTest, BusesNestToTheirLimit) {
  const QByteArray json = projectToJson(*fullProject());
  const auto nested = [&json](int depth) {
    QByteArray buses = "\"trace\": [", ends = ",";
    for (int i = 0; i < depth; ++i) {
      buses += "{\"bus\": \"b" + QByteArray::number(i) + "\", \"members\": [";
      ends.prepend("]}");
    }
    return damaged(json, "\"trace\": [", buses + ends);
  };
  QString error;
  EXPECT_TRUE(projectFromJson(nested(TraceTree::kMaxBusNesting), error)) << error.toStdString();
  EXPECT_FALSE(projectFromJson(nested(TraceTree::kMaxBusNesting + 1), error));
  EXPECT_TRUE(has(error, "Buses can be nested 32 deep"));
  EXPECT_FALSE(projectFromJson(nested(5000), error));
}

}  // namespace
}  // namespace ost
