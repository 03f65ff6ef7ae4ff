// The stages of an insertion: netlist, change, Verilog, proof, output folder.
#include "platform/insert/insertion.h"

#include <QElapsedTimer>

#include "platform/insert/netlist_editor.h"
#include "platform/insert/output_folder.h"
#include "platform/insert/top_parameters.h"
#include "platform/insert/verilog_writer.h"
#include "platform/plan/capture_map.h"
#include "platform/plan/probed_instances.h"
#include "platform/proof/proof.h"
#include "platform/report/run_report.h"
#include "platform/rtl/constraints.h"
#include "platform/text/byte_text.h"

namespace ost {
namespace {

class Insertion {
 public:
  Insertion(const InsertPlan& plan, const Design& design, const InsertionRequest& request, const InsertionHooks& hooks,
            QString& error)
      : plan_(plan),
        design_(design),
        request_(request),
        hooks_(hooks),
        error_(error),
        folder_(request.outputDirectory, request.project) {
    clock_.start();
  }

  bool run(std::shared_ptr<const Netlist> netlist);
  const QString& proved() const { return proved_; }

 private:
  void say(const QString& line) const {
    if (hooks_.progress) hooks_.progress(line);
    if (hooks_.stage) hooks_.stage(line.chopped(line.endsWith(QLatin1Char('.'))));
  }
  bool serve() {
    if (!hooks_.idle || hooks_.idle()) return true;
    error_ = QStringLiteral("The insertion was cancelled.");
    return false;
  }
  void nameFiles();
  bool instrument(const NetlistBits& netlist, const ProbeRouting& routing);
  bool prove(std::shared_ptr<const Netlist> netlist);
  QByteArray fileList() const;
  bool report(const QStringList& blackBoxes);
  void sayBlackBoxes(const QStringList& blackBoxes) const;

  InsertPlan plan_;
  const Design& design_;
  const InsertionRequest& request_;
  const InsertionHooks& hooks_;
  QString& error_;
  OutputFolder folder_;
  QElapsedTimer clock_;
  QList<QPair<QString, QByteArray>> generated_;  ///< The core's files and the debug module, in reading order.
  QString base_, verilog_, json_, sdc_, xdc_;
  QByteArray debugInstance_;
  QStringList proofLines_;
  QString proved_;  ///< The proof's counts, for a line's end.
};

/// A file name made from the top's name; it differs from those of the core.
void Insertion::nameFiles() {
  for (const auto& [name, text] : coreVerilogFiles(plan_.jtag)) generated_.append({name, text});
  generated_.append({QStringLiteral("ostrel_debug.v"), debugModuleVerilog(plan_)});
  QByteArray base = plan_.topModule.toLatin1();
  for (char& c : base)
    if (!isalnum(static_cast<unsigned char>(c)) && c != '_') c = '_';
  base.truncate(200);
  QString name = QString::fromLatin1(base) + QStringLiteral("_debug");
  const auto clashes = [this](const QString& file) {
    for (const auto& entry : generated_)
      if (entry.first == file) return true;
    return false;
  };
  while (clashes(name + QStringLiteral(".v"))) name += QStringLiteral("_top");
  base_ = name;
  verilog_ = name + QStringLiteral(".v");
  json_ = name + QStringLiteral(".json");
  sdc_ = name + QStringLiteral(".sdc");
  xdc_ = name + QStringLiteral(".xdc");
}

/// Names only, without comments: not every tool that reads a file list accepts them.
QByteArray Insertion::fileList() const {
  QByteArray list;
  for (const auto& entry : generated_) list += QFile::encodeName(entry.first) + '\n';
  return list + QFile::encodeName(verilog_) + '\n';
}

QStringList blackBoxesOf(const NetlistBits& netlist) {
  QStringList names;
  for (const NetlistModule& module : netlist.text.modules())
    if (module.blackBox) names.append(textFromBytes(module.name));
  return names;
}

void Insertion::sayBlackBoxes(const QStringList& blackBoxes) const {
  if (blackBoxes.isEmpty()) return;
  say(QStringLiteral("Black boxes, whose sources are not in files.f: %1.").arg(blackBoxes.join(QStringLiteral(", "))));
}

bool Insertion::report(const QStringList& blackBoxes) {
  const ReportDocument document =
      reportOf(plan_, design_, {request_.outputDirectory, base_, request_.findings, proofLines_, blackBoxes});
  return folder_.write(QStringLiteral("report.txt"), reportAsText(document), error_) &&
         folder_.write(QStringLiteral("report.html"), reportAsPage(document), error_);
}

bool Insertion::instrument(const NetlistBits& netlist, const ProbeRouting& routing) {
  QSet<QByteArray> reserved;
  for (const auto& entry : generated_) reserved += definedModules(entry.second);
  NetlistEditor editor(netlist, routing, plan_);
  if (!editor.prepare(reserved, error_) || !serve()) return false;
  debugInstance_ = editor.debugInstance();
  const std::unique_ptr<FileWriter> file = folder_.create(json_, error_);
  if (!file) return false;
  editor.write(*file);  // finish() reports a failure
  return folder_.finish(json_, *file, error_);
}

bool Insertion::prove(std::shared_ptr<const Netlist> netlist) {
  ProofReport report;
  ProofFiles files;
  files.instrumented = folder_.stagedFile(verilog_);
  files.debugModule = folder_.stagedFile(QStringLiteral("ostrel_debug.v"));
  say(QStringLiteral("Proving that the design is unchanged."));
  if (!proveUnchanged(plan_, design_, netlist, files, {hooks_.stage, hooks_.idle}, report, error_)) return false;
  for (const QString& line : report.lines) say(line);
  proofLines_ = report.lines;
  proved_ =
      QStringLiteral("; modules proved: %1, undecided: %2").arg(report.modulesProved).arg(report.undecided.size());
  if (request_.proof != ProofMode::Strict || report.undecided.isEmpty()) return true;
  error_ = QStringLiteral(
               "The proof is strict and undecided for %1 of %2 modules, as said above; allow these with "
               "ost_design prove on, or give the proof more time with -timeout.")
               .arg(report.undecided.size())
               .arg(report.undecided.size() + report.modulesProved);
  return false;
}

bool Insertion::run(std::shared_ptr<const Netlist> netlist) {
  nameFiles();
  QStringList files{verilog_,
                    json_,
                    sdc_,
                    xdc_,
                    QStringLiteral("files.f"),
                    QStringLiteral("capture_map.json"),
                    QStringLiteral("report.txt"),
                    QStringLiteral("report.html")};
  for (const auto& entry : generated_) files.append(entry.first);
  if (!folder_.begin(files, error_) || !serve()) return false;

  if (!netlist) {
    say(QStringLiteral("Elaborating the full netlist."));
    netlist = Netlist::load(design_, error_, hooks_.idle);
    if (!netlist) return false;
  }
  const NetlistBits& data = netlist->bits();
  ProbeRouting routing;
  if (!routing.build(data, plan_, error_)) return false;
  int unique = 0;
  for (const ModuleVariant& variant : routing.variants()) unique += !variant.inPlace;
  say(QStringLiteral("Connecting the probes; modules below the top with a probe port: %1, made unique: %2.")
          .arg(routing.variants().size())
          .arg(unique));
  if (!instrument(data, routing)) return false;
  for (const auto& [name, text] : generated_)
    if (!folder_.write(name, text, error_)) return false;

  if (!folder_.write(sdc_, constraintsText(plan_, debugInstance_, ConstraintDialect::Sdc), error_) ||
      !folder_.write(xdc_, constraintsText(plan_, debugInstance_, ConstraintDialect::Xdc), error_))
    return false;

  say(QStringLiteral("Writing the instrumented design as Verilog."));
  if (!folder_.write(verilog_, QByteArray(), error_)) return false;
  if (!writeInstrumentedVerilog(design_, folder_.stagedFile(json_),
                                folder_.stagedFile(QStringLiteral("ostrel_debug.v")), folder_.stagedFile(verilog_),
                                hooks_.idle, error_) ||
      !declareTopParameters(data, design_.topKey().toLatin1(), folder_.stagedFile(verilog_), error_) ||
      !folder_.store(verilog_, error_))
    return false;
  if (request_.proof != ProofMode::Off && !prove(netlist)) return false;
  findProbedInstances(*netlist, plan_);
  const QByteArray map = captureMapJson(plan_);
  if (map.size() > kMaxCaptureMapBytes) {
    error_ = QStringLiteral("The capture map would have %1 MB, but at most %2 MB can be read; trace fewer bits.")
                 .arg(map.size() >> 20)
                 .arg(kMaxCaptureMapBytes >> 20);
    return false;
  }
  if (!folder_.write(QStringLiteral("capture_map.json"), map, error_)) return false;
  if (!folder_.write(QStringLiteral("files.f"), fileList(), error_)) return false;
  const QStringList blackBoxes = blackBoxesOf(data);
  if (!report(blackBoxes) || !serve() || !folder_.commit(error_)) return false;
  sayBlackBoxes(blackBoxes);
  say(QStringLiteral("Wrote \"%1\" in %2 s.")
          .arg(textFromUnicode(request_.outputDirectory))
          .arg(double(clock_.elapsed()) / 1000, 0, 'f', 1));
  return true;
}

}  // namespace

bool runInsertion(const InsertPlan& plan, const Design& design, std::shared_ptr<const Netlist> netlist,
                  const InsertionRequest& request, const InsertionHooks& hooks, QString& error, QString* proved) {
  Insertion insertion(plan, design, request, hooks, error);
  const bool done = insertion.run(std::move(netlist));
  if (proved) *proved = insertion.proved();
  return done;
}

}  // namespace ost
