// Devices, terms, and the project as Tcl.
#include "tests/sim/oracle/project.h"

namespace oracle {

QStringList Net::bits() const {
  if (!isVector) return {name};
  QStringList names;
  const int step = left >= right ? -1 : 1;
  for (int i = left; i != right + step; i += step) names += QString("%1[%2]").arg(name).arg(i);
  return names;
}

namespace {

Net vectorNet(const char* name, int left, int right = 0) {
  return {QString(name), left, right, true};
}
Net scalarNet(const char* name) {
  return {QString(name), 0, 0, false};
}

QStringList frameLinkFiles() {
  QStringList files;
  for (const char* module : {"beat_source", "frame_link", "frame_parser", "lane", "merge", "word_fifo"})
    files += QString("examples/frame_link/rtl/%1.v").arg(module);
  return files;
}

}  // namespace

const QVector<Dut>& duts() {
  static const QVector<Dut> all = {
      {"lanes",
       {"tests/sim/designs/lanes.v"},
       {"clk_a", "clk_b"},
       {{"go", 1}, {"din", 8}},
       {{"out_a", 8}, {"out_b", 8}, {"hit", 1}},
       {vectorNet("u_a/count", 7), vectorNet("u_a/phase", 0, 3), vectorNet("u_a/noise", 15), scalarNet("u_a/strobe"),
        scalarNet("u_a/match"), vectorNet("u_b/count", 7), vectorNet("u_b/noise", 15), scalarNet("u_b/strobe"),
        vectorNet("u_c/count", 7), vectorNet("u_c/phase", 0, 3), scalarNet("g[0].tick"), scalarNet("g[1].tick"),
        vectorNet("level", 3), vectorNet("word", 7), vectorNet("din", 7), scalarNet("go"), scalarNet("hit"),
        scalarNet("rst")},
       {"u_a/strobe", "go", "u_a/match", "g[0].tick", "u_b/noise[2]", "u_a/phase[1]"}},
      {"steps",
       {"tests/sim/designs/steps.v"},
       {"clk"},
       {{"line", 1}, {"pause", 1}},
       {{"state", 2}, {"sum", 20}, {"busy", 1}},
       {vectorNet("u_ctl/state", 1), vectorNet("u_ctl/sum", 19), vectorNet("u_ctl/u_in/data", 7),
        scalarNet("u_ctl/u_in/valid"), vectorNet("u_ctl/u_in/bit_count", 2), scalarNet("u_ctl/error"),
        vectorNet("history", 31), scalarNet("odd"), scalarNet("busy"), scalarNet("line"), scalarNet("pause")},
       {"odd", "busy", "u_ctl/u_in/bit_count[0]", "line", "pause", "history[9]"}},
      {"frame_link",
       frameLinkFiles(),
       {"clk", "ref_clk"},
       // Start marks and short lengths are frequent, so that whole frames come by chance.
       {{"rx0_data", 8, "random[12] ? 8'ha5 : {5'd0, random[15:13]}"},
        {"rx0_valid", 1},
        {"rx1_data", 8, "random[11] ? 8'ha5 : {5'd0, random[18:16]}"},
        {"rx1_valid", 1},
        {"tx_ready", 1},
        {"host_addr", 3},
        {"host_write", 1},
        {"host_read", 1}},
       {{"tx_data", 8}, {"tx_lane", 1}, {"tx_last", 1}, {"tx_valid", 1}, {"alive", 1}, {"host_data", 8}},
       {vectorNet("u_lane0/u_parser/state", 2),
        vectorNet("u_lane1/u_parser/state", 2),
        vectorNet("u_lane1/u_parser/sum", 7),
        vectorNet("u_lane0/u_fifo/stored", 5),
        vectorNet("u_lane1/u_fifo/stored", 5),
        vectorNet("u_lane1/u_fifo/out_word", 8),
        scalarNet("u_lane0/u_fifo/bypass"),
        scalarNet("u_lane1/push"),
        scalarNet("u_merge/busy"),
        scalarNet("u_merge/moved"),
        vectorNet("stat[0].frames", 7),
        vectorNet("stat[1].faults", 7),
        vectorNet("uptime", 7),
        vectorNet("u_beat/count", 6),
        vectorNet("host_out", 7),
        vectorNet("host_addr", 2),
        vectorNet("tx_data", 7),
        scalarNet("tx_ready"),
        scalarNet("alive"),
        scalarNet("rx0_valid")},
       {"tx_ready", "u_merge/busy", "u_lane1/push", "u_beat/count[0]", "rx0_valid", "host_addr[1]"}}};
  return all;
}

QString Term::text(const QStringList& names) const {
  if (kind == Unit) return names[unit];
  if (kind == Not) return "!" + parts[0].text(names);
  const QString sign = kind == And ? " & " : kind == Or ? " | " : " ^ ";
  return "(" + parts[0].text(names) + sign + parts[1].text(names) + ")";
}

bool Term::holds(const QVector<bool>& units) const {
  switch (kind) {
    case Unit:
      return units[unit];
    case Not:
      return !parts[0].holds(units);
    case And:
      return parts[0].holds(units) && parts[1].holds(units);
    case Or:
      return parts[0].holds(units) || parts[1].holds(units);
    case Xor:
      break;
  }
  return parts[0].holds(units) != parts[1].holds(units);
}

QString Expression::text(const QStringList& names) const {
  QStringList words;
  for (const Step& step : steps)
    words += step.term.text(names) + (step.count > 1 ? QString("*%1").arg(step.count) : QString());
  return words.join(" -> ");
}

QVector<QStringList> Core::shownProbes() const {
  QVector<QStringList> shown;
  for (int i = 0; i < probes.size(); ++i) {
    if (i > busFrom && i <= busTo) {
      shown.last() += probes[i].bits;
    } else {
      shown += probes[i].bits;
    }
  }
  return shown;
}

QString projectScript(const Project& project, const QString& sourceFolder) {
  QString script =
      "package require ost_platform\npackage require ost_tclwrapper\n"
      "ost_design read -top " +
      project.dut->name;
  for (const QString& file : project.dut->files) script += " {" + sourceFolder + "/" + file + "}";
  script += "\nost_project new -overwrite oracle.ost\n";
  auto onOff = [](bool on) { return QString(on ? "on" : "off"); };
  auto polarity = [](bool low) { return QString(low ? "Active_Low" : "Active_High"); };
  for (const Core& core : project.cores) {
    script += "ost_core add " + core.name + "\n";
    const QString on = " -core " + core.name + " ";
    for (const Probe& probe : core.probes) script += "ost_trace add_sig" + on + "{{" + probe.signal + "}}\n";
    if (core.busFrom >= 0) {
      QStringList members;
      for (int i = core.busFrom; i <= core.busTo; ++i) members += "{" + core.probes[i].signal + "}";
      script += "ost_trace group" + on + "-bus BUS1 {" + members.join(" ") + "}\n";
    }
    QStringList options = {"SampleClk=" + core.clock,
                           QString("BufferDepth=%1").arg(core.depth),
                           QString("Implementation=") + (core.dram ? "DRAM" : "EBR"),
                           "DistRAMDisable=" + onOff(core.distRamDisable),
                           "Timestamp=" + onOff(core.timestampBits > 0),
                           QString("CaptureMode=") + (core.multiple ? "multiple" : "single"),
                           "IncludeTrigger=" + onOff(core.includeTrigger),
                           "SampleEnable=" + onOff(!core.sampleEnable.isEmpty()),
                           "TriggerEnable=" + onOff(!core.triggerEnable.isEmpty())};
    if (core.timestampBits) options += QString("TimestampBits=%1").arg(core.timestampBits);
    if (core.multiple) options += QString("MinimumSamplesPerTrigger=%1").arg(core.windowSamples);
    if (!core.sampleEnable.isEmpty())
      options << "SampleEnableSig=" + core.sampleEnable << "SampleEnablePri=" + polarity(core.sampleEnableLow);
    if (!core.triggerEnable.isEmpty())
      options << "TriggerEnableSig=" + core.triggerEnable << "TriggerEnablePri=" + polarity(core.triggerEnableLow);
    if (core.multiple && !core.triggerEnable.isEmpty()) options += QString("NumberofTriggers=%1").arg(core.windows);
    script += "ost_trace trc_option" + on;
    for (const QString& option : options) script += "{" + option + "} ";
    options = QStringList{"EventCounter=" + onOff(core.eventCount > 0),
                          "TriggerOut=" + onOff(core.triggerOut != Core::None), "DefaultRadix=" + core.displayRadix};
    if (core.eventCount) options += QString("CounterValue=%1").arg(core.eventCount);
    if (core.triggerOut != Core::None)
      options << QString("OutNetType=") + (core.triggerOut == Core::Io    ? "IO"
                                           : core.triggerOut == Core::Net ? "NET"
                                                                          : "BOTH")
              << "OutNetName=" + core.name + "_out"
              << "OutNetPri=" + polarity(core.triggerOutLow) << QString("OutNetMPW=%1").arg(core.triggerOutMinPulse);
    script += "\nost_trace trig_option" + on;
    for (const QString& option : options) script += "{" + option + "} ";
    script += "\n";
    QStringList unitNames;
    for (const Unit& unit : core.units) {
      unitNames += unit.name;
      QStringList words;
      for (const QString& name : unit.signalNames) words += "{" + name + "}";
      script += "ost_tu add" + on + "-radix " + unit.radix + " -name " + unit.name + " {{" + words.join(" ") + "} " +
                unit.op + " " + unit.digits + "}\n";
    }
    for (const Expression& expression : core.expressions)
      script += "ost_te add" + on + "-ram " + (expression.ebr ? "EBR" : "Slice") + " -name " + expression.name +
                " -max_seq_depth " + QString::number(expression.maxSteps) + " -max_event_count " +
                QString::number(expression.maxCount) + " -expression {" + expression.text(unitNames) + "}\n";
  }
  return script + "ost_project run -save\n";
}

}  // namespace oracle
