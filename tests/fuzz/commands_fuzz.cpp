// Drives the six commands and `ost_design` with generated words. After every command: a failure has a text and has
// changed nothing, and the project equals what its own file would bring back.
#include <tcl.h>
#include <unistd.h>

#include <QDir>
#include <QTemporaryDir>
#include <cstring>
#include <map>
#include <sstream>

#include "framework/ist_com_data.h"
#include "platform/istdata/project_file.h"
#include "platform/tclcmdex/host.h"
#include "tests/fuzz/fuzz.h"

extern "C" int Ost_tclwrapper_Init(Tcl_Interp* interp);
extern "C" int Ost_platform_Init(Tcl_Interp* interp);

namespace ost_fuzz {
namespace {

/// The commands as typed, by how often they come. `[...]` is left out now and then; `%x` is a word of kind x, `%x+` a
/// list of them.
const auto kOften = words(R"(
ost_core add %c
ost_core select [%c]
ost_serdes set [clk=%s] [rst=%s]
ost_trace add_sig [-core %c] [-insert_at %p] %s+
ost_trace add_sig %s+
ost_trace move_sig -move_to %p %m+
ost_trace del_sig [-core %c] %m+
ost_trace move_sig %m+
ost_trace group [-bus %b] %m+
ost_trace ungroup %b
ost_trace rename_bus -bus %b %b
ost_trace list_sig [-core %c]
ost_trace trc_option [-core %c] %o [%o] [%o]
ost_trace trig_option [-core %c] %g [%g] [%g]
ost_tu add [-radix %r] [-name %u] %d
ost_tu add %d
ost_tu set -name %u [-radix %r] [-op %q] [-val %v]
ost_tu set -name %u [-add_sig %s+] [-del_sig %s+] [-set_sig %s+] [-expr %d]
ost_tu rename %u %u
ost_tu remove %u
ost_te add [-ram %k] [-name %t] [-expression %x] [-max_seq_depth %i] [-max_event_count %i]
ost_te add -expression %x
ost_te set [-ram %k] [-expression %x] [-max_seq_depth %i] [-max_event_count %i] %t
ost_te rename %t %t
ost_te remove %t
%a list [-core %c])");
const auto kSeldom = words(R"(
ost_project save [-overwrite] [%f]
ost_project close [-force]
ost_project new [-overwrite] [%f]
ost_project open %f
ost_core delete %c
ost_core rename %c %c
ost_core %j)");
const auto kRarely = words(R"(
ost_project run
ost_project run [-drc] [-save] [-saveAs %f] [-overwrite] [-insert_core %c]
ost_design read [-top %m] [-define %h] [-incdir %f] [-blackbox %m] [-timeout %i] [-memory %i] %f
ost_design read -timeout 20 -f %f
ost_design nets %n
ost_design %e)");

/// The words of each kind, patterns of others among them. Some kinds rather name what the project holds.
const std::map<char, std::vector<std::string>> kWords = {
    {'c', words("|c1|c2|c3")},
    {'s',
     words("|state|state[0]|state[3:1]|u1/cnt|u1/cnt[2]|u2/cnt|done|clk|rst|en|b|b[7:4]|u1/rst|m/out|u1/\\odd/name ")},
    {'m', words("|state[1]|state[2]|u1/cnt[3]|BUS1<1>|<1>|<2>|state<2>|%s|%s|%s")},
    {'b', words("|BUS1|BUS2|pair|state|u1/cnt|BUS3|")},
    {'p', words("|1|2|.end.|BUS1<1>|BUS1<.end.>|state<2>|<1>|0|done")},
    {'u', words("|TU1|TU2|TU3|go|stop")},
    {'t', words("|TE1|TE2|te")},
    {'q', words("|==|!=|>|>=|<|<=|.RE.|.fe.|.SC.|~")},
    {'r', words("|bin|Oct|dec|HEX|ternary")},
    {'v', words("|0|1|0|1|0|1|10|x1|xF|3|17|255|1x0|0101|z")},
    {'f', words("|a.ost|b.ost|sub/c.ost|none/d.ost|top.v|other.v|../e.ost|/dev/full|.")},
    {'i', words("|1|2|4|8|16|256|65536|3|0|-1|65537")},
    {'k', words("|EBR|Slice|DRAM")},
    {'w', words("|on|on|off")},
    {'y', words("|active_low|ACTIVE_HIGH")},
    {'o', words("|SampleClk=%s|SampleEnable=%w|SampleEnableSig=%s|SampleEnablePri=%y|BufferDepth=%i|Implementation=%k"
                "|Timestamp=%w|TimestampBits=%i|CaptureMode=multiple|CaptureMode=single|MinimumSamplesPerTrigger=%i"
                "|IncludeTrigger=%w|TriggerEnable=%w|TriggerEnableSig=%s|TriggerEnablePri=%y|NumberofTriggers=%i"
                "|DistRAMDisable=%w|%h=%h")},
    {'g', words("|DefaultRadix=%r|EventCounter=%w|CounterValue=%i|TriggerOut=%w|OutNetType=IO|OutNetType=BOTH"
                "|OutNetName=%u|OutNetPri=%y|OutNetMPW=%i|%h=%h")},
    {'a', words("|ost_tu|ost_te")},
    {'j', words("|add_wishbone|del_wishbone|add_serdes|del_serdes")},
    {'n', words("|-glob|s*|-regexp|s.*[0-3]")},
    {'e', words("|close|info|help|prove|nets")},
    {'d', words("|{%s+} %q %v")},
    {'x', words("|%u|(%u)|%u%z|%u%z|%u%z")},
    {'z', words("; & %u;|!%u; ^ (%u); -> %u;*%i;->%u*2; && !%u; & %u%z;|(%u)%z; -> %u%z;*%i%z; ^ %u%z")}};

/// All listings of the project.
const char kListings[] = R"(
proc listings {} {
  set shown [list [ost_core list] [catch {ost_serdes set} serdes] $serdes]
  foreach core [ost_core list] {
    foreach {command sub} {ost_trace list_sig ost_trace trc_option ost_trace trig_option ost_tu list ost_te list} {
      lappend shown [$command $sub -core $core]
    }
  }
  return [join $shown \n]
})";

class Commands : public Driver {
 public:
  Commands() {
    QDir(folder_.path()).mkpath("work/sub");
    QDir::setCurrent(folder_.filePath("work"));
    Tcl_FindExecutable("fuzz");
    interp_ = Tcl_CreateInterp();
    tcl_cmdex::setConsoleSink(hear, this);
    const bool ready = Ost_tclwrapper_Init(interp_) == TCL_OK && Ost_platform_Init(interp_) == TCL_OK;
    expect(ready, Tcl_GetStringResult(interp_));
    must(kListings);
  }

  ~Commands() override {
    Tcl_Eval(interp_, "catch {ost_project close -force}; ost_design close");
    Tcl_DeleteInterp(interp_);
    tcl_cmdex::setConsoleSink(nullptr, nullptr);
    Tcl_Finalize();
  }

  std::size_t run(Random& random) override {
    must("catch {ost_project close -force}");
    must("catch {file delete -force {*}[glob -nocomplain *.ost *_debug sub/* ../*.ost]}");
    // A name that the sources give themselves, behind which a script would go on.
    static const auto names =
        words("~top~top\\n!touch pwned~top ; exec -- touch pwned~top;~\\n\\n!touch pwned\\n~top\\\\");
    design_ = QByteArray(kDesign).replace("(* ostrel", ("(* hdlname = \"" + random.pick(names) + "\", ostrel").c_str());
    readDesign();
    must("ost_project new; ost_core add c1");
    if (!random.oneIn(4))
      must(R"(ost_trace trc_option SampleClk=clk
              ost_trace add_sig {state done u1/cnt u2/cnt[3:1] state[1] en}
              ost_tu add {{state} == 1x0x}
              ost_tu add {done .RE. 1}
              ost_te add -expression {TU1 -> TU2*3} -max_seq_depth 2 -max_event_count 4
              ost_project save -overwrite a.ost)");
    const bool byModel = random.oneIn(2);
    std::size_t bytes = 0;
    for (std::size_t count = 20 + random.below(60); count > 0; --count) {
      const Words words = generated(random);
      for (const std::string& word : words) bytes += word.size();
      // Only where no project is open can another be opened.
      if (words.size() > 1 && words[1] == "open" && random.oneIn(2)) must("catch {ost_project close -force}");
      step(words, byModel);
    }
    if (project()) {
      readDesign();
      must("ost_project save -overwrite last.ost");
      const std::string before = listings();
      must("ost_project close; ost_project open last.ost");
      const std::string after = listings();
      expect(before == after, "saved and opened again\n" + before + "\nis\n" + after);
    }
    expect(access("pwned", F_OK) != 0, "a text reached a shell");
    return bytes;
  }

 private:
  using Words = std::vector<std::string>;

  static void hear(void* user, Tcl_Interp*, const char* text, int) { static_cast<Commands*>(user)->console_ += text; }
  static mero::ostrel::istProject* project() { return mero::ostrel::IstComData::getInstance()->currentProject(); }
  static const ost::Core* activeCore() { return project() ? project()->activeCore : nullptr; }

  /// A script that must succeed.
  void must(const std::string& script) {
    console_.clear();
    const bool done = Tcl_EvalEx(interp_, script.c_str(), -1, TCL_EVAL_GLOBAL) == TCL_OK;
    result_ = Tcl_GetStringResult(interp_);
    expect(done, script + " fails: " + result_ + console_);
  }

  /// Words reach the command as a script would pass them: as Tcl's own UTF-8, in which no byte is zero.
  int call(const Words& words) {
    std::vector<Tcl_Obj*> objects;
    Tcl_Encoding utf8 = Tcl_GetEncoding(nullptr, "utf-8");
    for (const std::string& word : words) {
      Tcl_DString text;
      Tcl_ExternalToUtfDString(utf8, word.data(), int(word.size()), &text);
      objects.push_back(Tcl_NewStringObj(Tcl_DStringValue(&text), Tcl_DStringLength(&text)));
      Tcl_IncrRefCount(objects.back());
      Tcl_DStringFree(&text);
    }
    Tcl_FreeEncoding(utf8);
    console_.clear();
    const int status = Tcl_EvalObjv(interp_, int(objects.size()), objects.data(), TCL_EVAL_GLOBAL);
    result_ = Tcl_GetStringResult(interp_);
    for (Tcl_Obj* object : objects) Tcl_DecrRefCount(object);
    return status;
  }

  /// Writes the sources afresh, since a project may have been saved over them.
  void readDesign() {
    const QByteArray other = "module top(input clk, output reg done); always @(posedge clk) done <= !done; endmodule\n";
    for (const auto& [name, text] : {std::pair<const char*, QByteArray>{"top.v", design_}, {"other.v", other}}) {
      QFile file(name);
      expect(file.open(QIODevice::WriteOnly) && file.write(text) == text.size(), "cannot write the design");
    }
    must("ost_design read -top top top.v");
  }

  static std::string word(char kind, Random& random) {
    if (kind == 'h' || random.oneIn(120)) return hostileWord(random);
    const std::string any = expanded(random.pick(kWords.at(kind)), random);
    const ost::Core* core = activeCore();
    if (!core || random.oneIn(kind == 'm' ? 5 : 2)) return any;
    if (kind == 'm' || kind == 'p') return traced(0, any, random);
    if (kind == 'b') return traced(mero::ostrel::TRACE_NODE_BUS, any, random);
    const auto& units = core->dataset.units();
    const auto& expressions = core->dataset.expressions();
    if (kind == 'u' && !units.empty()) return random.pick(units)->unit.name.toStdString();
    if (kind == 't' && !expressions.empty()) return random.pick(expressions)->name.toStdString();
    return any;
  }

  /// The name of an entry of the active core's list, of that kind unless it is 0; `name` when none is met.
  static std::string traced(int kind, std::string name, Random& random) {
    const QList<mero::ostrel::TraceNode*>* list = &activeCore()->trace->nodes;
    while (list && !list->isEmpty()) {
      const mero::ostrel::TraceNode* node = list->at(int(random.below(std::size_t(list->size()))));
      if (kind ? node->kind == kind : node->kind != 0) name = node->displayName().toStdString();
      list = random.oneIn(2) ? &node->children : nullptr;
    }
    return name;
  }

  static std::string expanded(const std::string& pattern, Random& random) {
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
      Tcl_DString list;
      Tcl_DStringInit(&list);
      do Tcl_DStringAppendElement(&list, word(kind, random).c_str());
      while (random.oneIn(2));
      text += Tcl_DStringValue(&list);
      Tcl_DStringFree(&list);
    }
    return text;
  }

  Words generated(Random& random) {
    std::istringstream pattern(random.pick(random.oneIn(60) ? kRarely : random.oneIn(12) ? kSeldom : kOften));
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

  /// All that a user can see of the project, or the model itself. The model's text closes holes in its lists, so only
  /// the listings show faults of lists that have them.
  std::string listings() {
    if (!project()) return "no project";
    must("listings");
    return result_ + '\n' + place() + (activeCore() ? activeCore()->name.toStdString() : "none");
  }
  static std::string model() {
    return project() ? ost::projectToJson(*project()).toStdString() + place() : "no project";
  }
  static std::string place() { return project()->fileName.toStdString() + (project()->changed ? " changed " : " "); }

  void step(const Words& words, bool byModel) {
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
    if (!byModel || !project()) return;
    QString error;
    const QByteArray json = ost::projectToJson(*project());
    const auto again = ost::projectFromJson(json, error);
    expect(again != nullptr, "after " + shown + "\nthe project would not open again: " + error.toStdString());
    expect(ost::projectToJson(*again) == json, "after " + shown + "\nthe project would come back as another");
  }

  QTemporaryDir folder_;
  QByteArray design_;
  Tcl_Interp* interp_;
  std::string console_, result_;
};

}  // namespace
}  // namespace ost_fuzz

int main(int argc, char** argv) {
  return ost_fuzz::runAs<ost_fuzz::Commands>("commands", argc, argv);
}
