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

QStringList wordsOf(const char* text, char separator = ' ') {
  return QString(text).split(separator, Qt::SkipEmptyParts);
}

QVector<Port> portsOf(const char* text) {
  QVector<Port> ports;
  for (const QString& one : wordsOf(text, ';')) {
    const QString port = one.trimmed(), name = port.section(' ', 0, 0);
    ports.append({name.section(':', 0, 0), qMax(1, name.section(':', 1).toInt()), port.section(' ', 1)});
  }
  return ports;
}

Net netOf(const QString& word) {
  const int bracket = word.lastIndexOf('[');
  if (!word.endsWith(']')) return {word};
  const QStringList range = word.mid(bracket + 1).chopped(1).split(':');
  return {word.left(bracket), range[0].toInt(), range[1].toInt(), true};
}

}  // namespace

Dut dutOf(const char* name, const QStringList& files, const char* clocks, const char* inputs, const char* others,
          const char* nets, const char* enables) {
  Dut dut = {name, files, wordsOf(clocks), portsOf(inputs), portsOf(others), {}, {}, {}};
  for (const QString& word : wordsOf(enables)) {
    dut.enables += word.section('@', 0, 0);
    if (word.contains('@')) dut.enableClocks[dut.enables.last()] = word.section('@', 1);
  }
  for (const QString& word : wordsOf(nets)) dut.nets += netOf(word);
  return dut;
}

bool Dut::isForeign(const QString& enable, const QString& clock) const {
  for (const Port& input : inputs)
    if (enable.section('[', 0, 0) == input.name) return true;
  return enable == "rst" || enableClocks.value(enable, clock) != clock;
}

void Core::findEnableEdges(const Dut& dut) {
  sampleEnableEdges = dut.isForeign(sampleEnable, clock) ? 2 : 0;
  triggerEnableEdges = dut.isForeign(triggerEnable, clock) ? 2 : 0;
}

const QVector<Dut>& duts() {
  static const QString links = "examples/frame_link/rtl/%1.v";
  static const QVector<Dut> all = {
      dutOf("lanes", {"tests/sim/designs/lanes.v"}, "clk_a clk_b", "go; din:8", "out_a:8; out_b:8; hit",
            "u_a/count[7:0] u_a/phase[0:3] u_a/noise[15:0] u_a/strobe u_a/match u_b/count[7:0] u_b/noise[15:0] "
            "u_b/strobe u_c/count[7:0] u_c/phase[0:3] g[0].tick g[1].tick level[3:0] word[7:0] din[7:0] go hit rst",
            "u_a/strobe@clk_a go u_a/match g[0].tick@clk_a u_b/noise[2]@clk_b u_a/phase[1]@clk_a"),
      dutOf("steps", {"tests/sim/designs/steps.v"}, "clk", "line; pause", "state:2; sum:20; busy",
            "u_ctl/state[1:0] u_ctl/sum[19:0] u_ctl/u_in/data[7:0] u_ctl/u_in/valid u_ctl/u_in/bit_count[2:0] "
            "u_ctl/error history[31:0] odd busy line pause",
            "odd busy@clk u_ctl/u_in/bit_count[0]@clk line pause history[9]@clk"),
      // Start marks and short lengths are frequent, so that whole frames come by chance.
      dutOf("frame_link",
            {links.arg("beat_source"), links.arg("frame_link"), links.arg("frame_parser"), links.arg("lane"),
             links.arg("merge"), links.arg("word_fifo")},
            "clk ref_clk",
            "rx0_data:8 random[12] ? 8'ha5 : {5'd0, random[15:13]}; rx0_valid;"
            "rx1_data:8 random[11] ? 8'ha5 : {5'd0, random[18:16]}; rx1_valid;"
            "tx_ready; host_addr:3; host_write; host_read",
            "tx_data:8; tx_lane; tx_last; tx_valid; alive; host_data:8",
            "u_lane0/u_parser/state[2:0] u_lane1/u_parser/state[2:0] u_lane1/u_parser/sum[7:0] "
            "u_lane0/u_fifo/stored[5:0] u_lane1/u_fifo/stored[5:0] u_lane1/u_fifo/out_word[8:0] u_lane0/u_fifo/bypass "
            "u_lane1/push u_merge/busy u_merge/moved stat[0].frames[7:0] stat[1].faults[7:0] uptime[7:0] "
            "u_beat/count[6:0] host_out[7:0] host_addr[2:0] tx_data[7:0] tx_ready alive rx0_valid",
            "tx_ready u_merge/busy@clk u_lane1/push@clk u_beat/count[0]@ref_clk rx0_valid host_addr[1]")};
  return all;
}

Term Term::of(const QVector<Unit>& units, int unit) {
  return {units[unit].name, {unit}, [unit](const QVector<bool>& states) { return states[unit]; }};
}

Term Term::inverted() const {
  return {"!" + text, units, [inner = holds](const QVector<bool>& states) { return !inner(states); }};
}

Term Term::joined(char sign, const Term& other) const {
  return {QString("(%1 %2 %3)").arg(text, QString(sign), other.text), units + other.units,
          [sign, a = holds, b = other.holds](const QVector<bool>& states) {
            if (sign == '^') return a(states) != b(states);
            return sign == '&' ? a(states) && b(states) : a(states) || b(states);
          }};
}

QString Expression::text() const {
  QStringList words;
  for (const Step& step : steps) words += step.term.text + (step.count > 1 ? QString("*%1").arg(step.count) : "");
  return words.join(" -> ");
}

QVector<QStringList> Core::shownProbes() const {
  QVector<QStringList> shown;
  for (int i = 0; i < probes.size(); ++i) {
    if (i > busFrom && i <= busTo)
      shown.last() += probes[i].bits;
    else
      shown += probes[i].bits;
  }
  return shown;
}

namespace {

QString onOff(bool on) {
  return on ? "on" : "off";
}
QString polarity(bool low) {
  return low ? "Active_Low" : "Active_High";
}
QString number(int value) {
  return QString::number(value);
}

QString optionScript(const Core& core) {
  static const char* const types[] = {"", "IO", "NET", "BOTH"};
  const bool sampleEnable = !core.sampleEnable.isEmpty(), triggerEnable = !core.triggerEnable.isEmpty();
  QStringList trace, trigger;
  trace << "SampleClk=" + core.clock << "BufferDepth=" + number(core.depth)
        << "Implementation=" + QString(core.dram ? "DRAM" : "EBR") << "DistRAMDisable=" + onOff(core.distRamDisable)
        << "Timestamp=" + onOff(core.timestampBits) << "CaptureMode=" + QString(core.multiple ? "multiple" : "single")
        << "IncludeTrigger=" + onOff(core.includeTrigger) << "SampleEnable=" + onOff(sampleEnable)
        << "TriggerEnable=" + onOff(triggerEnable);
  if (core.timestampBits) trace << "TimestampBits=" + number(core.timestampBits);
  if (core.multiple) trace << "MinimumSamplesPerTrigger=" + number(core.windowSamples);
  if (sampleEnable)
    trace << "SampleEnableSig=" + core.sampleEnable << "SampleEnablePri=" + polarity(core.sampleEnableLow);
  if (triggerEnable)
    trace << "TriggerEnableSig=" + core.triggerEnable << "TriggerEnablePri=" + polarity(core.triggerEnableLow);
  if (core.multiple && triggerEnable) trace << "NumberofTriggers=" + number(core.windows);
  trigger << "EventCounter=" + onOff(core.eventCount) << "TriggerOut=" + onOff(core.triggerOut)
          << "DefaultRadix=" + core.displayRadix;
  if (core.eventCount) trigger << "CounterValue=" + number(core.eventCount);
  if (core.triggerOut)
    trigger << QString("OutNetType=") + types[core.triggerOut] << "OutNetName=" + core.name + "_out"
            << "OutNetPri=" + polarity(core.triggerOutLow) << "OutNetMPW=" + number(core.triggerOutMinPulse);
  return QString("ost_trace trc_option -core %1 {%2}\nost_trace trig_option -core %1 {%3}\n")
      .arg(core.name, trace.join("} {"), trigger.join("} {"));
}

QString coreScript(const Core& core) {
  QString script = "ost_core add " + core.name + "\n";
  const QString on = " -core " + core.name + " ";
  QStringList members;
  for (int i = 0; i < core.probes.size(); ++i) {
    script += "ost_trace add_sig" + on + "{{" + core.probes[i].signal + "}}\n";
    if (i >= core.busFrom && i <= core.busTo) members += core.probes[i].signal;
  }
  if (core.busFrom >= 0) script += "ost_trace group" + on + "-bus BUS1 {{" + members.join("} {") + "}}\n";
  script += optionScript(core);
  for (const Unit& unit : core.units)
    script += QString("ost_tu add%1-radix %2 -name %3 {{{%4}} %5 %6}\n")
                  .arg(on, unit.radix, unit.name, unit.signalNames.join("} {"), unit.op, unit.digits);
  for (const Expression& expression : core.expressions)
    script += QString("ost_te add%1-ram %2 -name %3 -max_seq_depth %4 -max_event_count %5 -expression {%6}\n")
                  .arg(on, expression.ebr ? "EBR" : "Slice", expression.name)
                  .arg(expression.maxSteps)
                  .arg(expression.maxCount)
                  .arg(expression.text());
  return script;
}

}  // namespace

QString projectScript(const Project& project, const QString& sourceFolder, const QString& jtag) {
  QString script = "package require ost_platform\npackage require ost_tclwrapper\nost_design read -top ";
  script += project.dut->name;
  for (const QString& file : project.dut->files) script += " {" + sourceFolder + "/" + file + "}";
  // The device decides on the chain.
  script += "\nost_design jtag " + jtag;
  if (jtag != "pins") script += QString(" -chain %1").arg(1 + project.dut->nets.size() % (jtag == "bscane2" ? 4 : 2));
  script += "\nost_project new -overwrite oracle.ost\n";
  for (const Core& core : project.cores) script += coreScript(core);
  return script + "ost_project run -save\n";
}

}  // namespace oracle
