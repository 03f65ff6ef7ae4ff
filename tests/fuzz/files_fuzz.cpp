// Mutated files and texts from strangers: project files, netlists (the reader of names and the one of an insertion),
// capture maps, file lists and trigger expressions. Each is refused with a text, or taken and then agrees with itself.
#include <QBuffer>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <map>
#include <memory>

#include "platform/design/file_list.h"
#include "platform/design/name_index.h"
#include "platform/design/yosys.h"
#include "platform/insert/netlist_editor.h"
#include "platform/istdata/project_file.h"
#include "platform/netlist/netlist.h"
#include "platform/plan/capture_map.h"
#include "platform/plan/planner.h"
#include "platform/trigger/trigger_expression.h"
#include "platform/trigger/unit_value.h"
#include "tests/fuzz/fuzz.h"

namespace ost_fuzz {
namespace {

using namespace ost;

/// A project that uses what a project file can hold, over kDesign.
std::unique_ptr<mero::ostrel::istProject> sampleProject() {
  auto project = std::make_unique<mero::ostrel::istProject>();
  QString error;
  for (const char* name : {"c1", "c2"}) {
    project->cores.emplace_back(new Core(name));
    Core& core = *project->cores.back();
    core.options.sampleClock = "clk";
    core.options.triggerOutName = "fired";
    TraceNode* bus = core.trace->appendBus(nullptr, "BUS1", error);
    for (const char* bit : {"state[3]", "state[2]", "u2/cnt[0]", "b[7]", "done"})
      core.trace->appendSignal(bus, bit, error);
    core.trace->appendReference(nullptr, "state[3]", error);
    expect(core.trace->bindReferences(error), error.toStdString());
    core.dataset.addUnit({"TU1", {"u1/cnt"}, Operator::NotEqual, Radix::Bin, "1x01"});
    core.dataset.addUnit({"TU2", {"rst"}, Operator::SerialCompare, Radix::Bin, "0011"});
    core.dataset.addExpression({"TE1", "TU1 & !TU2 -> TU2 * 3", {"TU1", "TU2"}, ost::ExpressionRam::Slices, 2, 4});
  }
  project->activeCore = project->cores.front().get();
  return project;
}

/// False, so that a check can return it: the input was refused, which needs a text.
bool refused(const QString& error) {
  expect(!error.isEmpty(), "refused without a text");
  return false;
}

/// `through` reads a text and writes it again, as nothing when it is refused; what was taken then stays as it is.
template <class Through>
bool staysTheSame(const Through& through, const std::string& text) {
  QString error;
  const QByteArray once = through(QByteArray::fromStdString(text), error);
  if (once.isEmpty()) return refused(error);
  expect(through(once, error) == once, "does not come back as it was written: " + error.toStdString());
  return true;
}

/// Writes a file; `file` must be there as long as it is used.
void fill(QFile& file, const std::string& text) {
  const bool open = file.isOpen() || file.open(QIODevice::WriteOnly);
  expect(open && file.write(text.data(), qint64(text.size())) >= 0 && file.flush(), "cannot write a file");
}

/// Mutates a valid sample.
class SampleDriver : public Driver {
 public:
  std::size_t run(Random& random) override {
    const std::string text = mutated(sample_, random);
    check(text, random);
    return text.size();
  }

 protected:
  /// To be called by the constructor.
  void begin(const std::string& sample) {
    sample_ = sample;
    Random random(0);
    expect(check(sample_, random), "the sample is refused before any change");
  }
  /// True when the text is taken.
  virtual bool check(const std::string& text, Random& random) = 0;

 private:
  std::string sample_;
};

class Projects final : public SampleDriver {
 public:
  Projects() { begin(projectToJson(*sampleProject()).toStdString()); }

 private:
  bool check(const std::string& text, Random&) override {
    const auto through = [](const QByteArray& json, QString& error) {
      const auto project = projectFromJson(json, error);
      return project ? projectToJson(*project) : QByteArray();
    };
    return staysTheSame(through, text);
  }
};

/// Reads kDesign once, for the netlist that Yosys makes of it and for a plan over it.
class Netlists final : public SampleDriver {
 public:
  Netlists() {
    QTemporaryDir folder;
    QString error;
    QFile source(folder.filePath("top.v"));
    fill(source, kDesign);
    DesignSource words;
    words.files << source.fileName();
    const auto design = Design::read(words, error);
    expect(design != nullptr, error.toStdString());
    const auto project = sampleProject();
    std::vector<ResolvedCore> cores;
    for (const auto& core : project->cores) cores.push_back(resolveCore(*core, *design));
    expect(planInsertion(*project, *design, cores, {}, plan_, error), error.toStdString());
    QTemporaryFile netlist;
    YosysJob job;
    job.script = design->elaborationScript();
    job.script.line("write_json").openFile(0);
    expect(netlist.open(), "cannot make a scratch file");
    job.files << netlist.handle();
    expect(runYosys(job).ok, "Yosys made no netlist");
    begin(netlist.readAll().toStdString());
  }
  const InsertPlan& plan() const { return plan_; }

 private:
  bool check(const std::string& text, Random& random) override {
    QTemporaryFile file;
    expect(file.open(), "cannot make a file");
    fill(file, text);
    NameIndex index;
    QString error;
    if (!readNameIndex(file.handle(), "fuzz.json", index, error) || !index.complete(QByteArray(), error))
      return refused(error);
    QVector<NetBit> bits{{"u1/p", "io", 0, QString()}};
    for (const ModuleEntry& module : index.modules)
      for (const NetEntry& net : module.nets) {
        const QByteArray name = index.bytes(net.name);
        NameHit hit;
        findName(index, std::string_view(name.constData(), std::size_t(name.size())), hit, &error);
        if (random.oneIn(8)) nearestNames(index, name + 'x', 3);
        for (const char* path : {"", "u1", "u2", "m"})
          bits.append({path, QString::fromLatin1(name), int(random.below(4)), QString()});
      }
    error.clear();
    const auto netlist =
        Netlist::read(file.handle(), QString::fromLatin1(index.modules[std::size_t(index.top)].key), error);
    if (!netlist) return refused(error);
    if (random.oneIn(8)) throughYosys(text);
    for (const NetBit& bit : bits) {
      BitDriver driver;
      netlist->driver(bit, driver);
      netlist->canonical(bit);
    }
    ProbeRouting routing;
    InsertPlan plan = plan_;
    if (!routing.build(netlist->bits(), plan, error)) return refused(error);
    NetlistEditor editor(netlist->bits(), routing, plan);
    QBuffer out;
    out.open(QIODevice::WriteOnly);
    return editor.prepare({}, error) ? editor.write(out) : refused(error);
  }

  /// Yosys may refuse what the readers take, but nothing in it may become a command.
  static void throughYosys(const std::string& text) {
    QTemporaryDir folder;
    QFile file(folder.filePath("n.json"));
    fill(file, text);
    DesignSource words;
    words.files << file.fileName();
    QString error;
    const auto design = Design::read(words, error, {}, folder.path());
    if (design && !Netlist::load(*design, error)) refused(error);
    expect(!QFile::exists(folder.filePath("pwned")), "a text reached a shell");
  }

  InsertPlan plan_;
};

class CaptureMaps final : public SampleDriver {
 public:
  CaptureMaps() { begin(captureMapJson(Netlists().plan()).toStdString()); }

 private:
  bool check(const std::string& text, Random&) override {
    const auto through = [](const QByteArray& json, QString& error) {
      InsertPlan plan;
      return readCaptureMap(json, plan, error) ? captureMapJson(plan) : QByteArray();
    };
    return staysTheSame(through, text);
  }
};

class FileLists : public Driver {
 public:
  std::size_t run(Random& random) override {
    static const char sample[] =
        "a.v \"b c.v\" +incdir+inc+more // comment\n+define+W=8+NAME=\"x y\" -f two.f\n# none\n/abs/file.sv -f one.f\n";
    std::size_t bytes = 0;
    for (const char* name : {"one.f", "two.f"}) {
      const std::string text = mutated(sample, random);
      QFile file(folder_.filePath(name));
      fill(file, text);
      bytes += text.size();
    }
    FileListContent content;
    QString error;
    if (!readFileList(folder_.filePath("one.f"), content, error)) refused(error);
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
      refused(error);
    } else {
      expect(parsed.units.size() <= kMaxExpressionUnits, "more units than the limit");
      for (const ParsedStep& step : qAsConst(parsed.steps))
        expect(step.truthTable.size() == 1 << parsed.units.size() && step.count >= 1 && step.count <= kMaxEventCount,
               "a step without its truth table or count: " + text);
      const QString other = renameUnitInExpression(wire, parsed.units.first(), "Renamed_1");
      const bool taken = parseTriggerExpression(other, renamed, error);
      // The new name may make a text too long, or meet a unit of that name.
      expect(taken || other.size() > kMaxExpressionLength, "cannot be read after a renaming: " + error.toStdString());
      if (taken && renamed.units.size() == parsed.units.size())
        for (int i = 0; i < parsed.steps.size(); ++i)
          expect(parsed.steps[i].truthTable == renamed.steps[i].truthTable, "means something else renamed: " + text);
    }
    checkValue(mutated("1x01F7", random), random);
    return text.size();
  }

 private:
  static bool checkValue(const std::string& digits, Random& random) {
    const auto op = Operator(random.below(9));
    const auto radix = Radix(random.below(4));
    const int width = op == Operator::SerialCompare ? 1 : 1 + int(random.below(random.oneIn(9) ? kMaxUnitWidth : 40));
    QByteArray value, mask, value2, mask2;
    QString error, text;
    if (!parseUnitValue(op, radix, QString::fromLatin1(digits.data(), int(digits.size())), width, value, mask, error))
      return refused(error);
    expect(value.size() == mask.size(), "value and mask differ in length");
    if (op == Operator::RisingEdge || op == Operator::FallingEdge) mask.fill('1');  // the digits are the bits to watch
    if (op == Operator::SerialCompare || !formatUnitValue(radix, value, mask, text)) return true;
    expect(parseUnitValue(op, radix, text, width, value2, mask2, error) && value2 == value,
           "the value " + digits + " is written as " + text.toStdString() + ", which is another");
    return true;
  }
};

}  // namespace
}  // namespace ost_fuzz

int main(int argc, char** argv) {
  using namespace ost_fuzz;
  const std::map<std::string, int (*)(const char*, int, char**)> drivers = {{"projects", runAs<Projects>},
                                                                            {"netlists", runAs<Netlists>},
                                                                            {"capture_maps", runAs<CaptureMaps>},
                                                                            {"file_lists", runAs<FileLists>},
                                                                            {"expressions", runAs<Expressions>}};
  const auto driver = drivers.find(argc > 1 ? argv[1] : "");
  if (driver != drivers.end()) return driver->second(argv[1], argc - 1, argv + 1);
  std::fputs("usage: fuzz_files projects|netlists|capture_maps|file_lists|expressions ?-seconds n? ?-seed n?\n",
             stderr);
  return 2;
}
