// The opening of every sub-command: its checks, their order and their texts, generated from the table of openings.
#include "tests/unit/commands/openings.h"

#include "commands/handlers.h"
#include "tests/unit/commands/command_fixture.h"

namespace {

const char kNoProject[] = "ERROR: No ostrel project is opened.";
const char kBusy[] = "ERROR: Current ostrel project is busy, please wait.";

bool endsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

class Openings : public CommandFixture {
 protected:
  /// `words` behind the sub-command, with `extra` in front of them.
  static std::string line(const Opening& o, const std::string& words, const std::string& extra = "") {
    return std::string(o.command) + " " + o.subCommand + " " + extra + " " + words;
  }
  /// Only these look at their words before the project's state, in full or in part.
  static bool wordsBeforeBusy(const Opening& o) { return std::string(o.subCommand) == "close" || o.most < 0; }
};

TEST_F(Openings, RefuseWithoutProject) {
  for (const Opening& o : kOpenings) {
    SCOPED_TRACE(line(o, o.words));
    const int status = run(line(o, o.words, "-nosuch"), [](ServiceDouble& d) { d.projectOpen = false; });
    EXPECT_EQ(TCL_ERROR, status);  // also `new`, `open` and `close`, for their words
    EXPECT_EQ(o.needsProject ? kNoProject : "usage", result());
    EXPECT_EQ(o.needsProject ? "project()" : "usage()", log());
  }
}

TEST_F(Openings, RefuseWhileBusyUnlessTheyOnlyRead) {
  for (const Opening& o : kOpenings) {
    SCOPED_TRACE(line(o, o.words));
    const int status = run(line(o, o.words), [](ServiceDouble& d) { d.busy = true; });
    EXPECT_EQ(o.needsIdle ? TCL_ERROR : TCL_OK, status);
    EXPECT_EQ(o.needsIdle, result() == kBusy);
    EXPECT_EQ(o.needsIdle, endsWith(log(), "busy()"));
    EXPECT_EQ(o.needsIdle, log().find("busy()") != std::string::npos);
    if (o.needsIdle && !wordsBeforeBusy(o)) {
      EXPECT_EQ("project() busy()", log());
    }
  }
}

TEST_F(Openings, ListingFormsWorkWhileBusy) {
  for (const char* script : {"ost_trace trc_option", "ost_trace trig_option", "ost_serdes set"}) {
    EXPECT_EQ(TCL_OK, run(script, [](ServiceDouble& d) { d.busy = true; })) << script;
    EXPECT_EQ(std::string::npos, log().find("busy()")) << script;
  }
}

TEST_F(Openings, RefuseTooFewAndTooManyWordsBeforeLookingForTheCore) {
  for (const Opening& o : kOpenings) {
    std::vector<std::string> wrong;
    if (o.fewest > 0) wrong.push_back(o.fewest == 1 ? "" : "a");
    if (o.most >= 0) wrong.push_back(o.most == 0 ? "a" : o.most == 1 ? "a b" : "a b c");
    if (o.core == NO_CORE && o.most > 0) wrong.push_back(o.most == 1 ? "-a" : "a -a");
    if (o.core != NO_CORE) wrong.insert(wrong.end(), {"-nosuch a", std::string(o.words) + " -core"});
    for (const std::string& words : wrong) {
      SCOPED_TRACE(line(o, words));
      EXPECT_EQ(TCL_ERROR, run(line(o, words)));
      const bool busyChecked = o.needsIdle && !wordsBeforeBusy(o);
      EXPECT_EQ(std::string(o.needsProject ? "project() " : "") + (busyChecked ? "busy() " : "") + "usage()", log());
    }
  }
}

TEST_F(Openings, ResolveTheCoreAndWhatIsNeededOfIt) {
  for (const Opening& o : kOpenings) {
    if (o.core == NO_CORE) continue;
    SCOPED_TRACE(line(o, o.words));
    const std::string need = o.core == WITH_TRACE ? "trace" : "dataset";

    EXPECT_EQ(TCL_ERROR, run(line(o, o.words, "-core nosuch")));
    EXPECT_TRUE(endsWith(log(), " getCore(nosuch) wrong(-core,nosuch is not a valid core name.)")) << log();

    EXPECT_EQ(TCL_ERROR, run(line(o, o.words), [](ServiceDouble& d) { d.noActiveCore = true; }));
    EXPECT_EQ("No valid core is selected or specified.", result());
    EXPECT_TRUE(endsWith(log(), " active()")) << log();

    EXPECT_EQ(TCL_ERROR, run(line(o, o.words), [](ServiceDouble& d) { d.hasTraceAndDataset = false; }));
    EXPECT_EQ("No valid dataset is selected or specified.", result());
    EXPECT_TRUE(endsWith(log(), " active() " + need + "(c1)")) << log();

    EXPECT_EQ(TCL_OK, run(line(o, o.words, "-core c2"))) << result();
    EXPECT_NE(std::string::npos, log().find(" getCore(c2) " + need + "(c2)")) << log();

    EXPECT_EQ(TCL_OK, run(line(o, o.words, "-core {}"))) << "an empty name is an absent one";
    EXPECT_NE(std::string::npos, log().find(" active() " + need + "(c1)")) << log();
  }
}

TEST_F(Openings, AreSilentWithoutContext) {
  const tcl_cmdex::TclCmd entry;
  void* data = mero::ostrel::IstComData::getInstance();
  tcl_cmdex::CommandContext noEntry = {nullptr, data}, noData = {&entry, nullptr};
  Tcl_CmdInfo info;
  for (const Opening& o : kOpenings) {
    ASSERT_TRUE(Tcl_GetCommandInfo(interp_, o.command, &info));
    const auto& table = *static_cast<tcl_cmdex::TclCmdMap*>(info.clientData);
    std::vector<tcl_cmdex::TclCmdHandler> handlers = {table.commands.at(o.command).subCommands.at(o.subCommand).handler,
                                                      ost_set_wbone_opt};
    const char* argv[] = {o.subCommand, nullptr};
    for (const auto handler : handlers)
      for (void* context : {static_cast<void*>(nullptr), static_cast<void*>(&noEntry), static_cast<void*>(&noData)})
        EXPECT_EQ(TCL_ERROR, handler(context, interp_, 1, argv)) << o.subCommand;
  }
  EXPECT_EQ("", log());
  EXPECT_EQ("", result());
}

}  // namespace
