// Mutated files and texts from strangers: project files, netlists (the reader of names and the one of an insertion),
// capture maps, file lists and trigger expressions. Each is refused with a text, or taken and then agrees with itself.
#include <sys/mman.h>
#include <unistd.h>

#include <QBuffer>
#include <QTemporaryDir>
#include <cstring>
#include <memory>

#include "platform/design/file_list.h"
#include "platform/design/name_index.h"
#include "platform/design/yosys.h"
#include "platform/insert/netlist.h"
#include "platform/insert/netlist_editor.h"
#include "platform/insert/planner.h"
#include "platform/istdata/project_file.h"
#include "platform/istdata/trigger_expression.h"
#include "platform/istdata/unit_value.h"
#include "platform/plan/capture_map.h"
#include "tests/fuzz/fuzz.h"

namespace ost_fuzz {
namespace {

using namespace ost;

const char kDesign[] = R"(
module memory(input clk, input [3:0] at, input [7:0] data, input we, output reg [7:0] out);
  reg [7:0] cells [0:15];
  always @(posedge clk) begin if (we) cells[at] <= data; out <= cells[at]; end
endmodule
module pad(inout io, input drive); assign io = drive ? 1'b1 : 1'bz; endmodule
(* blackbox *) module box(input a, output b); endmodule
module lane(input clk, input rst, output reg [3:0] count, inout io);
  reg [0:2] \odd/name ;
  always @(posedge clk or posedge rst) if (rst) count <= 0; else count <= count + 1;
  always @(negedge clk) \odd/name <= count[2:0];
  pad p(.io(io), .drive(count[0]));
endmodule
module top(input clk, input rst, inout io, output [7:0] q, output last);
  wire [3:0] a, b;
  lane l0(.clk(clk), .rst(rst), .count(a), .io(io));
  lane l1(.clk(clk), .rst(rst), .count(b), .io());
  memory m(.clk(clk), .at(a), .data({a, b}), .we(rst), .out(q));
  box x(.a(a[0]), .b(last));
endmodule
)";

std::string ownText(const QString& text) {
  return text.toStdString();
}

/// A project that uses what a project file can hold, over kDesign.
std::unique_ptr<mero::ostrel::istProject> sampleProject() {
  auto project = std::make_unique<mero::ostrel::istProject>();
  QString error;
  for (const char* name : {"c1", "c2"}) {
    project->cores.emplace_back(new Core(QString::fromLatin1(name)));
    Core& core = *project->cores.back();
    core.options.sampleClock = QString::fromLatin1("clk");
    core.options.triggerOutName = QString::fromLatin1("fired");
    TraceNode* bus = core.trace->appendBus(nullptr, QString::fromLatin1("BUS1"), error);
    for (const char* bit : {"a[3]", "a[2]", "l1/count[0]", "q[7]", "last"})
      core.trace->appendSignal(bus, QString::fromLatin1(bit), error);
    core.trace->appendReference(nullptr, QString::fromLatin1("a[3]"), error);
    expect(core.trace->bindReferences(error), ownText(error));
    core.dataset.addUnit({QString::fromLatin1("TU1"),
                          {QString::fromLatin1("l0/count")},
                          Operator::NotEqual,
                          Radix::Bin,
                          QString::fromLatin1("1x01")});
    core.dataset.addUnit({QString::fromLatin1("TU2"),
                          {QString::fromLatin1("rst")},
                          Operator::SerialCompare,
                          Radix::Bin,
                          QString::fromLatin1("0011")});
    TriggerExpression expression;
    expression.name = QString::fromLatin1("TE1");
    expression.text = QString::fromLatin1("TU1 & !TU2 -> TU2 * 3");
    expression.units = QStringList{QString::fromLatin1("TU1"), QString::fromLatin1("TU2")};
    expression.maxSequenceDepth = 2;
    expression.maxEventCount = 4;
    core.dataset.addExpression(expression);
  }
  project->activeCore = project->cores.front().get();
  return project;
}

/// A file without a name that holds `text`.
struct Scratch {
  explicit Scratch(const std::string& text) : fd(memfd_create("fuzz", MFD_CLOEXEC)) {
    expect(fd >= 0 && write(fd, text.data(), text.size()) == ssize_t(text.size()), "cannot make a scratch file");
  }
  ~Scratch() { close(fd); }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;
  const int fd;
};

void refusedWithText(const QString& error) {
  expect(!error.isEmpty(), "refused without a text");
}

class Projects : public Driver {
 public:
  Projects() : sample_(projectToJson(*sampleProject()).toStdString()) { check(sample_); }
  std::size_t run(Random& random) override {
    const std::string text = mutated(sample_, random);
    check(text);
    return text.size();
  }

 private:
  static void check(const std::string& text) {
    QString error;
    const auto project = projectFromJson(QByteArray::fromStdString(text), error);
    if (!project) return refusedWithText(error);
    const QByteArray json = projectToJson(*project);
    const auto again = projectFromJson(json, error);
    expect(again != nullptr, "was taken, but what it is saved as is not: " + ownText(error));
    expect(projectToJson(*again) == json, "comes back as another project");
  }
  const std::string sample_;
};

/// Reads kDesign once, for the netlist that Yosys makes of it and for a plan over it.
class Netlists : public Driver {
 public:
  Netlists() {
    QString error;
    QFile source(folder_.filePath(QString::fromLatin1("top.v")));
    expect(source.open(QIODevice::WriteOnly) && source.write(kDesign) > 0 && source.flush(), "cannot write the design");
    DesignSource words;
    words.files << source.fileName();
    const auto design = Design::read(words, error);
    expect(design != nullptr, ownText(error));
    expect(planInsertion(*sampleProject(), *design, plan_, error), ownText(error));
    const Scratch netlist("");
    YosysJob job;
    job.script = design->elaborationScript() + "write_json /proc/self/fd/3\n";
    job.files << netlist.fd;
    expect(runYosys(job).ok, "Yosys made no netlist");
    char piece[4096];
    lseek(netlist.fd, 0, SEEK_SET);
    for (ssize_t got = 0; (got = read(netlist.fd, piece, sizeof piece)) > 0;) sample_.append(piece, std::size_t(got));
    Random random(0);
    expect(check(sample_, random), "the netlist is refused before any change");
  }
  std::size_t run(Random& random) override {
    const std::string text = mutated(sample_, random);
    check(text, random);
    return text.size();
  }
  const InsertPlan& plan() const { return plan_; }

 private:
  bool check(const std::string& text, Random& random) {
    const Scratch file(text);
    NameIndex index;
    QString error;
    if (!readNameIndex(file.fd, QString::fromLatin1("fuzz.json"), index, error) ||
        !index.complete(QByteArray(), error)) {
      refusedWithText(error);
      return false;
    }
    QVector<NetBit> bits{{QString::fromLatin1("l0/p"), QString::fromLatin1("io"), 0, QString()}};
    for (const ModuleEntry& module : index.modules)
      for (const NetEntry& net : module.nets) {
        const QByteArray name = index.bytes(net.name);
        NameHit hit;
        findName(index, std::string_view(name.constData(), std::size_t(name.size())), hit, &error);
        if (random.oneIn(8)) nearestNames(index, name + 'x', 3);
        for (const char* path : {"", "l0", "l1", "m"})
          bits.append({QString::fromLatin1(path), QString::fromLatin1(name), int(random.below(4)), QString()});
      }
    const QString top = QString::fromLatin1(index.modules[std::size_t(index.top)].key);
    error.clear();
    const auto netlist = Netlist::read(file.fd, top, error);
    if (!netlist) {
      refusedWithText(error);
      return false;
    }
    for (const NetBit& bit : bits) {
      BitDriver driver;
      netlist->driver(bit, driver);
      netlist->canonical(bit);
    }
    ProbeRouting routing;
    InsertPlan plan = plan_;
    if (!routing.build(netlist->data(), plan, error)) {
      refusedWithText(error);
      return false;
    }
    NetlistEditor editor(netlist->data(), routing, plan);
    QBuffer out;
    out.open(QIODevice::WriteOnly);
    if (editor.prepare({}, error)) return editor.write(out);
    refusedWithText(error);
    return false;
  }

  QTemporaryDir folder_;
  std::string sample_;
  InsertPlan plan_;
};

class CaptureMaps : public Driver {
 public:
  CaptureMaps() : sample_(captureMapJson(Netlists().plan()).toStdString()) {
    expect(check(sample_), "the capture map is refused before any change");
  }
  std::size_t run(Random& random) override {
    const std::string text = mutated(sample_, random);
    check(text);
    return text.size();
  }

 private:
  static bool check(const std::string& text) {
    InsertPlan plan, again;
    QString error;
    if (!readCaptureMap(QByteArray::fromStdString(text), plan, error)) {
      refusedWithText(error);
      return false;
    }
    const QByteArray json = captureMapJson(plan);
    expect(readCaptureMap(json, again, error), "was taken, but what it is written as is not: " + ownText(error));
    expect(captureMapJson(again) == json, "comes back as another plan");
    return true;
  }
  const std::string sample_;
};

class FileLists : public Driver {
 public:
  std::size_t run(Random& random) override {
    static const char sample[] =
        "a.v \"b c.v\" +incdir+inc+more // comment\n+define+W=8+NAME=\"x y\" -f two.f\n# none\n/abs/file.sv -f one.f\n";
    std::size_t bytes = 0;
    for (const char* name : {"one.f", "two.f"}) {
      const std::string text = mutated(sample, random);
      QFile file(folder_.filePath(QString::fromLatin1(name)));
      expect(file.open(QIODevice::WriteOnly) && file.write(text.data(), qint64(text.size())) >= 0,
             "cannot write a list");
      bytes += text.size();
    }
    FileListContent content;
    QString error;
    if (!readFileList(folder_.filePath(QString::fromLatin1("one.f")), content, error)) refusedWithText(error);
    return bytes;
  }

 private:
  QTemporaryDir folder_;
};

class Expressions : public Driver {
 public:
  std::size_t run(Random& random) override {
    std::string text = "a";
    static const char* const parts[] = {" & !b", "|(c ^ a)", " -> b", "*3", " && d", "||e*2 -> (f)", "&g|h^i&j|k&l"};
    for (std::size_t count = random.below(12); count > 0; --count) text += random.pick(parts);
    if (!random.oneIn(4)) text = mutated(text, random);
    const QString wire = QString::fromLatin1(text.data(), int(text.size()));
    ParsedExpression parsed, renamed;
    QString error;
    if (!parseTriggerExpression(wire, parsed, error)) {
      refusedWithText(error);
    } else {
      expect(parsed.units.size() <= kMaxExpressionUnits, "more units than the limit");
      for (const ParsedStep& step : qAsConst(parsed.steps))
        expect(step.truthTable.size() == 1 << parsed.units.size() && step.count >= 1 && step.count <= kMaxEventCount,
               "a step without its truth table or count: " + text);
      const QString other = renameUnitInExpression(wire, parsed.units.first(), QString::fromLatin1("Renamed_1"));
      const bool taken = parseTriggerExpression(other, renamed, error);
      // The new name may make a text too long, or meet a unit of that name.
      expect(taken || other.size() > kMaxExpressionLength, "cannot be read after a renaming: " + ownText(error));
      if (taken && renamed.units.size() == parsed.units.size())
        for (int i = 0; i < parsed.steps.size(); ++i)
          expect(parsed.steps[i].truthTable == renamed.steps[i].truthTable, "means something else renamed: " + text);
    }
    checkValue(mutated("1x01F7", random), random);
    return text.size();
  }

 private:
  static void checkValue(const std::string& digits, Random& random) {
    const auto op = Operator(random.below(9));
    const auto radix = Radix(random.below(4));
    const int width = op == Operator::SerialCompare ? 1 : 1 + int(random.below(random.oneIn(9) ? kMaxUnitWidth : 40));
    QByteArray value, mask, value2, mask2;
    QString error, text;
    if (!parseUnitValue(op, radix, QString::fromLatin1(digits.data(), int(digits.size())), width, value, mask, error))
      return refusedWithText(error);
    expect(value.size() == mask.size(), "value and mask differ in length");
    if (op == Operator::RisingEdge || op == Operator::FallingEdge) mask.fill('1');  // the digits are the bits to watch
    if (op == Operator::SerialCompare || !formatUnitValue(radix, value, mask, text)) return;
    expect(parseUnitValue(op, radix, text, width, value2, mask2, error) && value2 == value,
           "the value " + digits + " is written as " + ownText(text) + ", which is another");
  }
};

template <class Kind>
int runAs(const char* name, int argc, char** argv) {
  Kind driver;
  return runCases(name, driver, argc, argv);
}

const struct {
  const char* name;
  int (*run)(const char*, int, char**);
} kDrivers[] = {{"projects", runAs<Projects>},
                {"netlists", runAs<Netlists>},
                {"capture_maps", runAs<CaptureMaps>},
                {"file_lists", runAs<FileLists>},
                {"expressions", runAs<Expressions>}};

}  // namespace
}  // namespace ost_fuzz

int main(int argc, char** argv) {
  for (const auto& driver : ost_fuzz::kDrivers)
    if (argc > 1 && !std::strcmp(argv[1], driver.name)) return driver.run(driver.name, argc - 1, argv + 1);
  std::fputs("usage: fuzz_files projects|netlists|capture_maps|file_lists|expressions ?-seconds n? ?-seed n?\n",
             stderr);
  return 2;
}
