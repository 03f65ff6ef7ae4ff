// The script of Yosys that a SourcePlan comes to.
#include "platform/design/name_index.h"
#include "platform/design/source_plan.h"

namespace ost {
namespace {

/// A module of ours that instantiates the top with its parameters: Verilog alone knows what a value means there.
const char kParameters[] = "ost_parameters";

}  // namespace

void SourcePlan::addMacros(YosysScript& script) const {
  // Yosys keeps macros from file to file, and takes any value from a text.
  if (source_.defines.isEmpty()) return;
  QList<QByteArray> lines;
  for (const QString& define : source_.defines) {
    const int equals = define.indexOf(QLatin1Char('='));
    lines.append("`define " + define.left(equals).toLatin1());
    if (equals >= 0) lines.last() += ' ' + define.mid(equals + 1).toLatin1();
  }
  script.line("read_verilog -nodpi").text(lines);
}

void SourcePlan::addFile(YosysScript& script, const File& file) const {
  if (file.systemVerilog) script.words(" -sv");
  if (file.mapped) script.words(" -icells");
  if (!file.ownIncludeDir.isEmpty()) script.includeDir(file.ownIncludeDir);
  for (const QByteArray& directory : includeDirs_) script.includeDir(directory);
  script.file(file.scriptName);
}

void SourcePlan::addSources(YosysScript& script) const {
  for (const QByteArray& library : cellLibraries_) script.line("read_verilog -nodpi -lib -nowb").dataFile(library);
  // A cell that the sources declare is theirs.
  if (!cellLibraries_.isEmpty() && !modules_.isEmpty()) {
    script.line("select -set ost_own");
    for (const ScannedModule& module : modules_) script.selected('\\' + module.name);
    script.line("delete @ost_own");
  }
  for (const File& box : boxes_) {
    script.line("read_verilog -nodpi -lib");
    if (box.systemVerilog) script.words(" -sv");
    script.file(box.scriptName);
  }
  addMacros(script);
  if (slang_) {
    // One reading for all SystemVerilog, since packages and interfaces cross its files.
    script.line("read_slang --keep-hierarchy --ignore-unknown-modules");
    for (const QByteArray& word : macroWords()) script.word(word);
    if (!top_.isEmpty()) script.words(" --top").word(top_);
    for (const File& file : scriptFiles_)
      if (file.systemVerilog) script.file(file.scriptName);
  }
  for (const File& file : scriptFiles_) {
    if (slang_ && file.systemVerilog) continue;
    // What a source imports from C would be called here, with what the source gives it (-nodpi).
    script.line("read_verilog -nodpi");
    if (mayBeDeferred() && !file.atOnce) script.words(" -defer");
    if (!boxes_.isEmpty()) script.words(" -nooverwrite");
    addFile(script, file);
  }
}

/// The top with its parameters, under its own name.
void SourcePlan::addTop(YosysScript& script) const {
  if (parameters_.isEmpty() || parametersAreGenerics()) return;
  QByteArray list;
  for (const TopParameter& parameter : parameters_)
    list += QByteArray(list.isEmpty() ? "" : ", ") + ".\\" + parameter.name + " (" + parameter.verilog + ")";
  script.line("read_verilog -nodpi")
      .text({QByteArray("module ") + kParameters + "; \\" + top_ + "  #(" + list + ") top(); endmodule"});
  script.line("hierarchy -top").module(QByteArray("\\") + kParameters);
  if (derivedTop_.isEmpty()) return;
  script.line("delete").selected(QByteArray("\\") + kParameters);
  // A version of it with its defaults may be there when it was not read deferred.
  script.line("delete").selected('\\' + top_);
  script.line("rename").module(yosysId(derivedTop_)).module('\\' + top_);
}

YosysScript SourcePlan::hierarchyScript(bool check) const {
  YosysScript script;
  if (netlist_) {
    for (const File& box : boxes_) script.line("read_verilog -nodpi -lib").file(box.scriptName);
    script.line("read_json").file(scriptFiles_.first().scriptName);
  } else {
    addSources(script);
    const bool vhdlTop = vhdl_.find(top_) != nullptr;
    const QList<VhdlRound>& rounds = vhdlRounds_;
    if (!rounds.isEmpty()) script.line("design -save ost_sources");
    if (!vhdlTop) addTop(script);
    for (int i = 0; i < rounds.size(); ++i) {
      if (i > 0 || !vhdlTop) script.line("hierarchy -top").module('\\' + top_);
      script.line("read_verilog -nodpi").file(rounds[i].scriptName);
      // What only VHDL uses was taken for unused.
      if (i > 0 || !vhdlTop) script.line("design -copy-from ost_sources $abstract*");
      for (const VhdlBinding& binding : rounds[i].bindings) {
        script.line("chtype -set")
            .module('\\' + binding.type)
            .selectedCell(yosysId(binding.module), yosysId(binding.cell));
        for (const QByteArray& parameter : binding.parameters)
          script.line("setparam -unset")
              .module(yosysId(parameter))
              .selectedCell(yosysId(binding.module), yosysId(binding.cell));
      }
    }
    if (!parameters_.isEmpty() && !vhdlTop && derivedTop_.isEmpty()) return script;
  }
  // Black boxes that nothing uses are no part of the design.
  script.line("hierarchy -purge_lib");
  if (check && !netlist_ && checked_) script.words(" -check");
  if (top_.isEmpty())
    script.words(" -auto-top");
  else
    script.words(" -top").module(netlist_ ? yosysId(top_) : '\\' + top_);
  return script;
}

YosysScript SourcePlan::preprocessScript(int openFile) const {
  YosysScript script;
  addMacros(script);
  for (const File& file : scriptFiles_) {
    script.line("tee -q -a").openFile(openFile).words(" read_verilog -nodpi -defer -ppdump");
    addFile(script, file);
  }
  return script;
}

}  // namespace ost
