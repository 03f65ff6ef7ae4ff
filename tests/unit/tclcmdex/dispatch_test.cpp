// The dispatcher in a real interpreter: help, refusals with their errorCode, nested calls, exceptions, deletion of the
// interpreter, and the console.
#include <gtest/gtest.h>
#include <unistd.h>

#include <stdexcept>

#include "platform/tclcmdex/host.h"

using namespace tcl_cmdex;

namespace {

int handlerCalls = 0;

CommandContext& contextOf(void* data) {
  return *static_cast<CommandContext*>(data);
}

/// Takes `-core NAME` and one value; "throw", "throw-int", "update" and "die" as the value do what they say.
int handleAdd(void* data, Tcl_Interp* interp, int argc, const char** argv) {
  ++handlerCalls;
  const TclCmd& entry = *contextOf(data).command;
  TclCmdParametersChecker words;
  words.setOptionValue("core", nullptr);
  if (!CheckCmdParameters(argc, argv, words) || words.values.size() != 1) {
    if (words.getValueAt(0) == "update" && words.values.size() == 2) servePendingEvents();
    entry.reportTclArgsErrorResult(interp);
    return TCL_ERROR;
  }
  const std::string value = words.getValueAt(0);
  if (value == "throw") throw std::runtime_error("disk on fire");
  if (value == "throw-int") throw 7;
  if (words.getOptionValue("core") == "bad") {
    entry.reportTclArgsErrorResult(interp, "-core", "bad is not a valid core name.");
    return TCL_ERROR;
  }
  Tcl_SetResult(interp, const_cast<char*>("own result"), TCL_STATIC);
  if (value == "update" && !servePendingEvents()) {
    TclMsgOutput(interp, "the interpreter is gone\n", 0);
    return TCL_ERROR;
  }
  if (value == "who")
    Tcl_SetResult(interp, const_cast<char*>(currentInterpreter() == interp ? "me" : "not me"), TCL_STATIC);
  return TCL_OK;
}

int handleFixed(void* data, Tcl_Interp* interp, int argc, const char** argv) {
  if (argc == 2 && TclCmdParametersChecker::isValueParameter(argv[1])) {
    TclMsgOutput(interp, argv[1], 0);
    return TCL_OK;
  }
  contextOf(data).command->reportTclArgsErrorResult(interp);
  return TCL_ERROR;
}

class Dispatch : public ::testing::Test {
 protected:
  void SetUp() override {
    interp = Tcl_CreateInterp();
    fill();
    install(interp);
  }
  void TearDown() override {
    setConsoleSink(nullptr, nullptr);
    if (interp != nullptr) Tcl_DeleteInterp(interp);
  }
  void fill() {
    table.registerCmd("ost_core", nullptr, "ost_core - Cores\n", nullptr, this);
    table.registerCmd("ost_core", "say", "  say help\n", handleFixed, this);
    table.registerCmd("ost_core", "add", "  add help\n", handleAdd, this);
    table.registerCmd("ost_core", "add_serdes", "  serdes help\n", nullptr, this);
  }
  void install(Tcl_Interp* target) {
    Tcl_CreateCommand(target, "ost_core", reinterpret_cast<Tcl_CmdProc*>(TclCmdExInvoker), &table, nullptr);
  }
  /// "<status>|<result>|<errorCode>"; errorCode only after an error.
  std::string run(const std::string& script) {
    const int status = Tcl_Eval(interp, script.c_str());
    std::string text = std::to_string(status) + '|' + Tcl_GetStringResult(interp);
    if (status == TCL_ERROR) text += std::string("|") + Tcl_GetVar(interp, "errorCode", TCL_GLOBAL_ONLY);
    return text;
  }

  TclCmdMap table{"Test Table"};
  Tcl_Interp* interp = nullptr;
};

TEST_F(Dispatch, AnswersHelpAndRefusesWithReasonUsageAndErrorCode) {
  const std::string whole = "0|ost_core - Cores\n  add help\n  serdes help\n  say help\n";
  const std::string choices = ": must be add, add_serdes, or say";
  const std::string usage = "\n  add help\n|OST USAGE ost_core add";
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"ost_core", whole},
      {"::ost_core help", whole},
      {"ost_core -help", whole},
      {"ost_core --help add", "0|  add help\n"},
      {"ost_core help ad",
       "1|unknown sub-command \"ad\"" + choices + " (did you mean \"add\"?)|TCL LOOKUP SUBCOMMAND ad"},
      {"ost_core help add x", "1|wrong # args: should be \"ost_core help ?sub-command?\"|TCL WRONGARGS"},
      {"ost_core ad", "1|unknown sub-command \"ad\"" + choices + " (did you mean \"add\"?)|TCL LOOKUP SUBCOMMAND ad"},
      {"ost_core sya x",
       "1|unknown sub-command \"sya\"" + choices + " (did you mean \"say\"?)|TCL LOOKUP SUBCOMMAND sya"},
      {"ost_core xyz", "1|unknown sub-command \"xyz\"" + choices + "|TCL LOOKUP SUBCOMMAND xyz"},
      {"ost_core add_se",
       "1|unknown sub-command \"add_se\"" + choices + " (did you mean \"add_serdes\"?)|TCL LOOKUP SUBCOMMAND add_se"},
      {"ost_core {}", "1|unknown sub-command \"\"" + choices + "|TCL LOOKUP SUBCOMMAND {}"},
      {"ost_core {quite another}",
       "1|unknown sub-command \"quite another\"" + choices + "|TCL LOOKUP SUBCOMMAND {quite another}"},
      {"ost_core add c1", "0|own result"},
      {"ost_core add", "1|wrong # args for \"ost_core add\"" + usage},
      {"ost_core add -cor x c1", "1|unknown option \"-cor\"" + usage},
      {"ost_core add c1 -core", "1|missing value for \"-core\"" + usage},
      {"ost_core add -core bad c1", "1|-core: bad is not a valid core name.\n  add help\n|OST VALUE -core"},
      {"ost_core say -x", "1|unknown option \"-x\"\n  say help\n|OST USAGE ost_core say"},
      {"ost_core say", "1|wrong # args for \"ost_core say\"\n  say help\n|OST USAGE ost_core say"},
      {"ost_core add throw", "1|internal error in \"ost_core add\": disk on fire|OST INTERNAL ost_core add"},
      {"ost_core add throw-int",
       "1|internal error in \"ost_core add\": an exception without a text|OST INTERNAL ost_core add"},
      {"ost_core add_serdes",
       "1|internal error in \"ost_core add_serdes\": it has no handler|OST INTERNAL ost_core add_serdes"},
      {"interp alias {} core {} ost_core; core add who", "0|me"},
  };
  for (const auto& item : cases) EXPECT_EQ(run(item.first), item.second) << item.first;

  const std::string renamed = run("rename ost_core other; other add c1");
  EXPECT_NE(renamed.find("\"other\" is not a command of the table \"Test Table\""), std::string::npos) << renamed;
}

TEST_F(Dispatch, KeepsReasonsAndResultsOfNestedCallsApart) {
  // The event's refused option must not become the reason of the outer call, nor its result the outer result.
  EXPECT_EQ(run("after 0 {catch {ost_core add -inner 1}}; after 1; ost_core add update two"),
            "1|wrong # args for \"ost_core add\"\n  add help\n|OST USAGE ost_core add");
  EXPECT_EQ(run("set served {}; after 0 {set served [ost_core add who]}; after 1; ost_core add update"),
            "0|own result");
  EXPECT_EQ(run("set served"), "0|me");
  EXPECT_EQ(currentInterpreter(), nullptr);
  // An event that always arms the next one does not hold the command.
  EXPECT_EQ(
      run("proc again {} {after 0 again}; again; ost_core add update; foreach id [after info] {after cancel $id}"),
      "0|");
}

TEST_F(Dispatch, SurvivesTheDeletionOfItsInterpreter) {
  Tcl_Interp* child = Tcl_CreateSlave(interp, "child", 0);
  install(child);
  EXPECT_EQ(run("after 0 {interp delete child}; after 1; catch {child eval {ost_core add update}}"), "0|1");
  EXPECT_EQ(currentInterpreter(), nullptr);
}

TEST_F(Dispatch, RegistersAgainInPlace) {
  const TclCmd* command = &table.commands.at("ost_core");
  const TclCmd* entry = &command->subCommands.at("add");
  table.registerCmd("ost_core", "add", "  newer help\n", handleAdd, nullptr);
  table.registerCmd("ost_core", nullptr, "ost_core - Newer\n", nullptr, nullptr);
  EXPECT_EQ(entry, &table.commands.at("ost_core").subCommands.at("add"));
  EXPECT_EQ(entry->help, "  newer help\n");
  EXPECT_EQ(entry->name, "ost_core add");
  EXPECT_EQ(run("ost_core"), "0|ost_core - Newer\n  newer help\n  serdes help\n  say help\n");

  table.registerCmd("late", "sub", "  help\n", handleAdd, nullptr);  // Without a command-level entry before.
  EXPECT_EQ(table.commands.at("late").handler, nullptr);
  const TclCmdMap copy("x");
  const TclCmd copied = *command;  // By value, sub-commands included.
  EXPECT_EQ(copied.subCommands.at("add").help, "  newer help\n");
}

TEST_F(Dispatch, WritesConsoleTextToStdoutOrTheHostsSink) {
  const std::string file = ::testing::TempDir() + "tclcmdex_console.txt";
  const int realStdout = dup(STDOUT_FILENO);  // Closing Tcl's channel closes the descriptor under it.
  // The standard channel is closed and a file takes its place, as a redirected console does.
  EXPECT_EQ(run("set saved [open " + file + " w+]; fconfigure $saved -encoding utf-8; close stdout; set out [open " +
                file + " a]; fconfigure $out -encoding utf-8; ost_core say caf\\u00e9; seek $saved 0; read $saved"),
            "0|caf\xc3\xa9");
  EXPECT_EQ(run("close $out; set r [ost_core say lost]"), "0|") << "with stdout closed";
  dup2(realStdout, STDOUT_FILENO);
  close(realStdout);
  unlink(file.c_str());

  std::string seen;
  setConsoleSink([](void* user, Tcl_Interp*, const char* text, int) { *static_cast<std::string*>(user) += text; },
                 &seen);
  EXPECT_EQ(run("ost_core say hello"), "0|");
  TclMsgOutput(nullptr, "!", 0);
  TclMsgOutput(interp, nullptr, 0);
  EXPECT_EQ(seen, "hello!");
}

}  // namespace
