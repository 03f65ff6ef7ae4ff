// Drives the six commands and `ost_design` with generated words. After every command: a failure has a text and has
// changed nothing, and the project equals what its own file would bring back.
#include <tcl.h>
#include <unistd.h>

#include <QDir>
#include <QTemporaryDir>
#include <cstring>
#include <sstream>

#include "framework/ist_com_data.h"
#include "platform/istdata/project_file.h"
#include "platform/tclcmdex/host.h"
#include "tests/fuzz/fuzz.h"

extern "C" int Ost_tclwrapper_Init(Tcl_Interp* interp);
extern "C" int Ost_platform_Init(Tcl_Interp* interp);

namespace ost_fuzz {
namespace {

const char kDesign[] = R"(
module sub(input clk, input en, output reg [7:0] cnt);
  always @(posedge clk) if (en) cnt <= cnt + 1;
endmodule
(* ostrel_role = "dcu" *)
module top(input clk, input rst, input en, output [7:0] a, output [7:0] b, output reg done);
  reg [3:0] state;
  reg \odd/n[1] ;
  sub u1(.clk(clk), .en(en), .cnt(a));
  sub u2(.clk(clk), .en(done), .cnt(b));
  always @(posedge clk) begin
    \odd/n[1] <= en;
    if (rst) begin state <= 0; done <= 0; end else begin state <= state + 1; done <= state == 9; end
  end
endmodule
)";

/// The commands as typed. `[...]` is left out now and then; `%x` is a word of kind x, `%x+` a list of them.
const char* const kTemplates[] = {
    "ost_core add %c",
    "ost_core add %c",
    "ost_core select [%c]",
    "ost_core list",
    "ost_serdes set [clk=%s] [rst=%s]",
    "ost_trace add_sig [-core %c] [-insert_at %p] %s+",
    "ost_trace add_sig [-insert_at %p] %s+",
    "ost_trace add_sig %s+",
    "ost_trace move_sig [-move_to %p] %m+",
    "ost_trace move_sig -move_to %p %m+",
    "ost_trace del_sig [-core %c] %m+",
    "ost_trace del_sig %m+",
    "ost_trace group -bus %b %m+",
    "ost_trace group [-bus %b] %m+",
    "ost_trace ungroup %b",
    "ost_trace rename_bus -bus %b %b",
    "ost_trace list_sig [-core %c]",
    "ost_trace trc_option [-core %c] %o [%o] [%o]",
    "ost_trace trc_option %o %o",
    "ost_trace trig_option [-core %c] %g [%g] [%g]",
    "ost_tu add [-radix %r] [-name %u] %d",
    "ost_tu add %d",
    "ost_tu add [-name %u] %d",
    "ost_tu set -name %u [-radix %r] [-op %q] [-val %v]",
    "ost_tu set -name %u [-add_sig %s+] [-del_sig %s+] [-set_sig %s+] [-expr %d]",
    "ost_tu rename %u %u",
    "ost_tu remove %u",
    "ost_tu list [-core %c]",
    "ost_te add [-ram %k] [-name %t] [-expression %x] [-max_seq_depth %i] [-max_event_count %i]",
    "ost_te add -expression %x",
    "ost_te set [-ram %k] [-expression %x] [-max_seq_depth %i] [-max_event_count %i] %t",
    "ost_te rename %t %t",
    "ost_te remove %t",
    "ost_te list [-core %c]"};
const char* const kRareTemplates[] = {"ost_project save [-overwrite] [%f]",
                                      "ost_project close [-force]",
                                      "ost_project new [-overwrite] [%f]",
                                      "ost_project open %f",
                                      "ost_core delete %c",
                                      "ost_core rename %c %c",
                                      "ost_core add_wishbone",
                                      "ost_core del_wishbone",
                                      "ost_core add_serdes",
                                      "ost_core del_serdes"};
const char* const kCostlyTemplates[] = {
    "ost_project run -drc [-insert_core %c]",
    "ost_project run [-save] [-saveAs %f] [-overwrite] [-insert_core %c]",
    "ost_design read [-top %m] [-define %h] [-incdir %f] [-blackbox %m] [-timeout %i] [-memory %i] %f",
    "ost_design close",
    "ost_design info",
    "ost_design nets [-glob %h]",
    "ost_design nets -regexp s.*[0-3]",
    "ost_design help %h",
    "ost_design read -timeout 20 -f %f",
    "ost_design prove %h"};

const char* const kCores[] = {"c1", "c2", "c3"};
const char* const kNets[] = {"state", "state[0]", "state[3:1]", "u1/cnt", "u1/cnt[2]", "u2/cnt", "done",
                             "clk",   "rst",      "en",         "a",      "b[7:4]",    "u1/en",  "\\odd/n[1] "};
const char* const kBuses[] = {"BUS1", "BUS2", "pair", "state", "u1/cnt", "BUS3", ""};
const char* const kMembers[] = {"state[1]", "state[2]", "u1/cnt[3]", "BUS1<1>", "<1>", "<2>", "state<2>"};
const char* const kPositions[] = {"1", "2", ".end.", "BUS1<1>", "BUS1<.end.>", "state<2>", "<1>", "0", "done"};
const char* const kUnits[] = {"TU1", "TU2", "TU3", "go", "stop"};
const char* const kExpressions[] = {"TE1", "TE2", "te"};
const char* const kOperators[] = {"==", "!=", ">", ">=", "<", "<=", ".RE.", ".fe.", ".SC.", "~"};
const char* const kRadices[] = {"bin", "Oct", "dec", "HEX", "ternary"};
const char* const kValues[] = {"0", "1", "0", "1", "0", "1", "10", "x1", "xF", "3", "17", "255", "1x0", "0101", "z"};
const char* const kFiles[] = {"a.ost",   "b.ost",    "sub/c.ost", "none/d.ost", "top.v",
                              "other.v", "../e.ost", "/dev/full", "."};
const char* const kNumbers[] = {"1", "2", "4", "8", "16", "256", "65536", "3", "0", "-1", "65537"};
const char* const kRams[] = {"EBR", "Slice", "DRAM"};
const char* const kTraceOptions[] = {"SampleClk=%s",
                                     "SampleEnable=%w",
                                     "SampleEnableSig=%s",
                                     "SampleEnablePri=%y",
                                     "BufferDepth=%i",
                                     "Implementation=%k",
                                     "Timestamp=%w",
                                     "TimestampBits=%i",
                                     "CaptureMode=multiple",
                                     "CaptureMode=single",
                                     "MinimumSamplesPerTrigger=%i",
                                     "IncludeTrigger=%w",
                                     "TriggerEnable=%w",
                                     "TriggerEnableSig=%s",
                                     "TriggerEnablePri=%y",
                                     "NumberofTriggers=%i",
                                     "DistRAMDisable=%w",
                                     "%h=%h"};
const char* const kTriggerOptions[] = {
    "DefaultRadix=%r", "EventCounter=%w", "CounterValue=%i", "TriggerOut=%w", "OutNetType=IO",
    "OutNetType=BOTH", "OutNetName=%u",   "OutNetPri=%y",    "OutNetMPW=%i",  "%h=%h"};

class Commands : public Driver {
 public:
  Commands();
  ~Commands() override;
  std::size_t run(Random& random) override;

 private:
  using Words = std::vector<std::string>;

  int call(const Words& words);
  /// A call that must succeed.
  void must(const Words& words) {
    const bool done = call(words) == TCL_OK;
    expect(done, words[0] + ' ' + words[1] + " fails: " + result_ + console_);
  }
  int script(const char* text) { return Tcl_Eval(interp_, text); }
  void readDesign();
  std::string word(char kind, Random& random);
  std::string traced(int kind, Random& random);
  std::string expanded(const std::string& pattern, Random& random);
  Words generated(Random& random);
  /// All that a user can see of the project, or the model itself. The model's text closes holes in its lists, so only
  /// the listings show faults of lists that have them.
  std::string listings();
  std::string model();
  void checkRoundTrip(const std::string& shown);
  void step(const Words& words, bool byModel);

  static void hear(void* user, Tcl_Interp*, const char* text, int) { static_cast<Commands*>(user)->console_ += text; }
  mero::ostrel::istProject* project() { return mero::ostrel::IstComData::getInstance()->currentProject(); }

  const ost::Core* activeCore() { return project() ? project()->activeCore : nullptr; }

  QTemporaryDir folder_;
  Tcl_Interp* interp_;
  std::string console_, result_;
};

Commands::Commands() {
  QDir(folder_.path()).mkpath(QString::fromLatin1("work/sub"));
  QDir::setCurrent(folder_.filePath(QString::fromLatin1("work")));
  Tcl_FindExecutable("fuzz");
  interp_ = Tcl_CreateInterp();
  tcl_cmdex::setConsoleSink(hear, this);
  const bool ready = Ost_tclwrapper_Init(interp_) == TCL_OK && Ost_platform_Init(interp_) == TCL_OK;
  expect(ready, Tcl_GetStringResult(interp_));
}

/// Writes the sources afresh, since a project may have been saved over them.
void Commands::readDesign() {
  const QByteArray other = "module top(input clk, output reg done); always @(posedge clk) done <= !done; endmodule\n";
  for (const auto& [name, text] : {std::pair<const char*, QByteArray>{"top.v", kDesign}, {"other.v", other}}) {
    QFile file(QString::fromLatin1(name));
    expect(file.open(QIODevice::WriteOnly) && file.write(text) == text.size(), "cannot write the design");
  }
  must({"ost_design", "read", "-top", "top", "top.v"});
}

Commands::~Commands() {
  script("catch {ost_project close -force}; ost_design close");
  Tcl_DeleteInterp(interp_);
  tcl_cmdex::setConsoleSink(nullptr, nullptr);
  Tcl_Finalize();
}

/// Words reach the command as a script would pass them: as Tcl's own UTF-8, in which no byte is zero.
int Commands::call(const Words& words) {
  std::vector<Tcl_Obj*> objects;
  for (const std::string& word : words) {
    Tcl_DString text;
    Tcl_Encoding utf8 = Tcl_GetEncoding(nullptr, "utf-8");
    Tcl_ExternalToUtfDString(utf8, word.data(), int(word.size()), &text);
    objects.push_back(Tcl_NewStringObj(Tcl_DStringValue(&text), Tcl_DStringLength(&text)));
    Tcl_IncrRefCount(objects.back());
    Tcl_DStringFree(&text);
    Tcl_FreeEncoding(utf8);
  }
  console_.clear();
  const int status = Tcl_EvalObjv(interp_, int(objects.size()), objects.data(), TCL_EVAL_GLOBAL);
  result_ = Tcl_GetStringResult(interp_);
  for (Tcl_Obj* object : objects) Tcl_DecrRefCount(object);
  return status;
}

std::string Commands::word(char kind, Random& random) {
  if (random.oneIn(120)) return hostileWord(random);
  switch (kind) {
    case 'c':
      return random.pick(kCores);
    case 's':
      return random.pick(kNets);
    case 'm':
      return !random.oneIn(5) ? traced(0, random) : random.oneIn(2) ? random.pick(kMembers) : random.pick(kNets);
    case 'b':
      return random.oneIn(2) ? traced(mero::ostrel::TRACE_NODE_BUS, random) : random.pick(kBuses);
    case 'p':
      return random.oneIn(2) ? traced(0, random) : random.pick(kPositions);
    case 'u':
      if (const auto* core = activeCore(); core && !core->dataset.units().empty() && random.oneIn(2))
        return random.pick(core->dataset.units())->unit.name.toStdString();
      return random.pick(kUnits);
    case 't':
      if (const auto* core = activeCore(); core && !core->dataset.expressions().empty() && random.oneIn(2))
        return random.pick(core->dataset.expressions())->name.toStdString();
      return random.pick(kExpressions);
    case 'q':
      return random.pick(kOperators);
    case 'r':
      return random.pick(kRadices);
    case 'v':
      return random.pick(kValues);
    case 'f':
      return random.pick(kFiles);
    case 'i':
      return random.pick(kNumbers);
    case 'k':
      return random.pick(kRams);
    case 'w':
      return random.oneIn(3) ? "off" : "on";
    case 'y':
      return random.oneIn(2) ? "active_low" : "ACTIVE_HIGH";
    case 'o':
      return expanded(random.pick(kTraceOptions), random);
    case 'g':
      return expanded(random.pick(kTriggerOptions), random);
    case 'd':
      return expanded("{%s+} %q %v", random);
    case 'x': {
      std::string text = expanded("%u", random);
      static const char* const parts[] = {" & %u", "|!%u", " ^ (%u)", " -> %u", "*%i", "->%u*2", " && !%u"};
      while (!random.oneIn(3) && text.size() < 10000) text += expanded(random.pick(parts), random);
      return random.oneIn(4) ? "(" + text + ")" : text;
    }
    default:
      return hostileWord(random);
  }
}

/// The name of an entry of the active core's list, of that kind unless it is 0.
std::string Commands::traced(int kind, Random& random) {
  const auto* core = activeCore();
  std::string name = random.pick(kNets);
  const QList<mero::ostrel::TraceNode*>* list = core ? &core->trace->nodes : nullptr;
  while (list && !list->isEmpty()) {
    const mero::ostrel::TraceNode* node = list->at(int(random.below(std::size_t(list->size()))));
    if (kind ? node->kind == kind : node->kind != 0) name = node->displayName().toStdString();
    list = random.oneIn(2) ? &node->children : nullptr;
  }
  return name;
}

std::string Commands::expanded(const std::string& pattern, Random& random) {
  std::string text;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] != '%') {
      text += pattern[i];
      continue;
    }
    const char kind = pattern[++i];
    if (i + 1 >= pattern.size() || pattern[i + 1] != '+') {
      text += word(kind, random);
      continue;
    }
    ++i;
    Words list;
    do list.push_back(word(kind, random));
    while (random.oneIn(2));
    std::vector<const char*> elements;
    for (const std::string& element : list) elements.push_back(element.c_str());
    char* merged = Tcl_Merge(int(elements.size()), elements.data());
    text += merged;
    Tcl_Free(merged);
  }
  return text;
}

Commands::Words Commands::generated(Random& random) {
  const char* const chosen = random.oneIn(60)   ? random.pick(kCostlyTemplates)
                             : random.oneIn(12) ? random.pick(kRareTemplates)
                                                : random.pick(kTemplates);
  std::istringstream pattern(chosen);
  Words words;
  bool skipping = false;
  for (std::string piece; pattern >> piece;) {
    const bool opens = piece[0] == '[', closes = piece.back() == ']';
    if (opens) skipping = random.oneIn(2);
    if (!skipping) words.push_back(expanded(piece.substr(opens, piece.size() - opens - closes), random));
    skipping &= !closes;
  }
  const bool mayBreak = words.front() != "ost_design" && words.size() > 1;  // a stray word there costs a run of Yosys
  if (mayBreak && random.oneIn(25)) {
    const auto at = words.begin() + 1 + long(random.below(words.size() - 1));
    const int how = int(random.below(4));
    if (how == 0) words.erase(at);
    if (how == 1) *at = mutated(*at, random);
    if (how == 2) words.insert(at, hostileWord(random));
    if (how == 3) words.push_back(*at);
  }
  return words;
}

std::string Commands::listings() {
  if (!project()) return "no project";
  must({"ost_core", "list"});
  std::string shown = result_ + '\n' + project()->fileName.toStdString() + (project()->changed ? " changed\n" : "\n");
  shown += project()->activeCore ? project()->activeCore->name.toStdString() : "none";
  if (project()->serdes) {
    must({"ost_serdes", "set"});
    shown += result_;
  }
  for (const auto& core : project()->cores) {
    const std::string name = core->name.toStdString();
    static const char* const listing[][2] = {{"ost_trace", "list_sig"},
                                             {"ost_trace", "trc_option"},
                                             {"ost_trace", "trig_option"},
                                             {"ost_tu", "list"},
                                             {"ost_te", "list"}};
    for (const auto& [command, sub] : listing) {
      must({command, sub, "-core", name});
      shown += '\n' + result_;
    }
  }
  return shown;
}

std::string Commands::model() {
  if (!project()) return "no project";
  return ost::projectToJson(*project()).toStdString() + project()->fileName.toStdString() +
         (project()->changed ? " changed" : "");
}

void Commands::checkRoundTrip(const std::string& shown) {
  if (!project()) return;
  QString error;
  const QByteArray json = ost::projectToJson(*project());
  const auto again = ost::projectFromJson(json, error);
  expect(again != nullptr, "after " + shown + "\nthe project would not open again: " + error.toStdString());
  expect(ost::projectToJson(*again) == json, "after " + shown + "\nthe project would come back as another");
}

void Commands::step(const Words& words, bool byModel) {
  std::string shown;
  for (const std::string& word : words) shown += (shown.empty() ? "{" : " {") + word.substr(0, 300) + '}';
  const std::string before = byModel ? model() : listings();
  const int status = call(words);
  const std::string said = result_ + console_;
  // Saving is a step of its own in a run, and stays when the run fails.
  const bool mayChange = status == TCL_OK || (words[0] == "ost_project" && words.size() > 1 && words[1] == "run");
  if (status != TCL_OK) expect(!said.empty(), "fails without a text: " + shown);
  if (!mayChange) {
    const std::string after = byModel ? model() : listings();
    expect(after == before, shown + " failed (" + said + ") and changed\n" + before + "\nto\n" + after);
  }
  if (byModel) checkRoundTrip(shown);
}

std::size_t Commands::run(Random& random) {
  script("catch {ost_project close -force}");
  script("catch {file delete -force {*}[glob -nocomplain *.ost *_debug sub/* ../*.ost]}");
  readDesign();
  must({"ost_project", "new"});
  must({"ost_core", "add", "c1"});
  if (!random.oneIn(4)) {
    must({"ost_trace", "add_sig", "state done u1/cnt u2/cnt[3:1] state[1] en"});
    must({"ost_tu", "add", "{state} == 1x0x"});
    must({"ost_tu", "add", "done .RE. 1"});
    must({"ost_te", "add", "-expression", "TU1 -> TU2*3", "-max_seq_depth", "2", "-max_event_count", "4"});
  }
  const bool byModel = random.oneIn(2);
  std::size_t bytes = 0;
  for (std::size_t count = 20 + random.below(60); count > 0; --count) {
    const Words words = generated(random);
    for (const std::string& word : words) bytes += word.size();
    step(words, byModel);
  }
  if (project()) {
    readDesign();
    must({"ost_project", "save", "-overwrite", "last.ost"});
    const std::string before = listings();
    must({"ost_project", "close"});
    must({"ost_project", "open", "last.ost"});
    const std::string after = listings();
    expect(before == after, "saved and opened again\n" + before + "\nis\n" + after);
  }
  expect(access("pwned", F_OK) != 0, "a word reached a shell");
  return bytes;
}

}  // namespace
}  // namespace ost_fuzz

int main(int argc, char** argv) {
  try {
    ost_fuzz::Commands driver;
    return ost_fuzz::runCases("commands", driver, argc, argv);
  } catch (const ost_fuzz::Fault& fault) {
    std::fprintf(stderr, "cannot start: %s\n", fault.what());
    return 2;
  }
}
