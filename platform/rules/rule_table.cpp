// The rows of the rule table.
#include "platform/rules/rule_table.h"

namespace ost {

const std::vector<RuleRow>& ruleTable() {
  constexpr Finding::Severity E = Finding::Error, W = Finding::Warning;
  using R = DesignRule;
  static const std::vector<RuleRow> table = {
      {R::NoCoreEnabled, E, "No core is enabled",
       "ost_core add <name>, or name existing cores in ost_project run -insert_core <name>"},
      {R::TooManyCores, E, "More than 256 cores are enabled: the hub has no number for the next",
       "name at most 256 cores in ost_project run -insert_core <name>, or trace the signals of several in one core"},
      {R::TooManyNets, E,
       "All cores together trace or compare more than 1048576 bits, or show them in more than 4194304 places",
       "ost_trace del_sig -core <core> {<signals>}, or fewer cores in ost_project run -insert_core <name>"},

      {R::NoSampleClock, E, "A core has no sample clock", "ost_trace trc_option -core <core> SampleClk=<net>"},
      {R::SampleClockVanished, E, "The sample clock is not in the design",
       "ost_trace trc_option -core <core> SampleClk=<net>"},
      {R::SampleClockWide, E, "The sample clock is wider than a bit",
       "ost_trace trc_option -core <core> SampleClk=<bit>"},
      {R::NothingTraced, E, "A core traces nothing", "ost_trace add_sig -core <core> {<signals>}"},
      {R::TracedSignalVanished, E, "A traced signal is not in the design, or no longer one bit",
       "ost_trace del_sig -core <core> {<signal>}, then ost_trace add_sig with its new name"},
      {R::EnableWithoutSignal, E, "Sample or trigger enable is on without a signal",
       "ost_trace trc_option -core <core> <enable>Sig=<net>, or <enable>=off"},
      {R::EnableSignalVanished, E, "The signal of sample or trigger enable is not in the design",
       "ost_trace trc_option -core <core> <enable>Sig=<net>, or <enable>=off"},
      {R::EnableSignalWide, E, "The signal of sample or trigger enable is wider than a bit",
       "ost_trace trc_option -core <core> <enable>Sig=<bit>"},
      {R::CaptureSettings, E, "Timestamp bits, samples per trigger or number of triggers do not fit the buffer depth",
       "ost_trace trc_option -core <core> <option>=<value>"},
      {R::TooManySignals, E, "A core traces more than 1048576 bits",
       "ost_trace del_sig -core <core> {<signals>}, and trace them in further cores"},

      {R::UnitWithoutSignals, E, "A trigger unit has no signals",
       "ost_tu set -core <core> -name <unit> -set_sig {<signals>}, or ost_tu remove -core <core> <unit>"},
      {R::UnitWithoutValue, E, "A trigger unit has no value", "ost_tu set -core <core> -name <unit> -val <value>"},
      {R::UnitSignalVanished, E, "A signal of a trigger unit is not in the design",
       "ost_tu set -core <core> -name <unit> -set_sig {<signals>}"},
      {R::UnitValue, E, "Operator, value and width of a trigger unit do not fit",
       "ost_tu set -core <core> -name <unit> -val <value>, or -radix, -op or -set_sig"},

      {R::NoExpression, E, "A core has no trigger expression", "ost_te add -core <core> -expression <expression>"},
      {R::ExpressionUnreadable, E, "A trigger expression cannot be read",
       "ost_te set -core <core> -expression <expression> <name>"},
      {R::ExpressionUnknownUnit, E, "A trigger expression names unknown trigger units",
       "ost_tu add -core <core> -name <unit> {{<signals>} <operator> <value>}, or ost_te set -core <core> -expression "
       "<expression> <name>"},
      {R::ExpressionTooDeep, E, "A trigger expression has more steps than its max_seq_depth",
       "ost_te set -core <core> -max_seq_depth <steps> <name>"},
      {R::ExpressionCountsTooFar, E, "A trigger expression counts further than its max_event_count",
       "ost_te set -core <core> -max_event_count <count> <name>"},
      {R::ExpressionTooManyUnits, E, "A trigger expression uses more than 12 different trigger units",
       "compare several signals in one unit, then ost_te set -core <core> -expression <expression> <name>"},
      {R::TooManyExpressions, E, "A core has more than 256 trigger expressions",
       "ost_te remove -core <core> <name>, or give them to further cores"},

      {R::TriggerOutName, E, "The trigger output has no usable name",
       "ost_trace trig_option -core <core> OutNetName=<name>, or TriggerOut=off"},
      {R::TriggerOutNameInDesign, E, "The top module has a net, port or instance of the trigger output's name",
       "ost_trace trig_option -core <core> OutNetName=<name>"},
      {R::TriggerOutNameTwice, E, "Two cores have trigger outputs of one name",
       "ost_trace trig_option -core <core> OutNetName=<name>"},

      {R::BlockRamWaste, W, "The buffer takes more than twice the block RAM that depth and width ask for",
       "ost_trace trc_option -core <core> Implementation=DRAM, or a greater BufferDepth"},
      {R::BufferPartlyUsed, W, "Number of triggers times samples per trigger leaves a part of the buffer unused",
       "ost_trace trc_option -core <core> NumberofTriggers=<triggers> (needs TriggerEnable=on), or "
       "BufferDepth=<depth>"},
      {R::MemoryTotal, W, "The buffers of all cores take more than 4 Mbit",
       "a smaller BufferDepth, fewer traced signals, or fewer cores in ost_project run -insert_core <name>"},
      {R::DistributedRamSize, W, "A buffer of more than 64 Kbit is to be distributed RAM",
       "ost_trace trc_option -core <core> Implementation=EBR"},
      {R::DistributedRamForbidden, W, "The buffer is to be distributed RAM, which DistRAMDisable forbids",
       "ost_trace trc_option -core <core> Implementation=EBR, or DistRAMDisable=off"},
      {R::TooManySamples, E, "The samples of a core have more than 268435456 bits",
       "ost_trace trc_option -core <core> BufferDepth=<depth>, or ost_trace del_sig -core <core> {<signals>}"},

      {R::NetUndriven, E, "A net that the core observes has no driver",
       "drive the net in the design, or remove it from the core"},
      {R::NetConstant, W, "A net that the core observes is constant", "remove the net from the core"},
      {R::ClockCrossing, W,
       "A net that the core observes is of another clock than the sample clock, or an input of the top",
       "ost_core add <name> for a core of its own with SampleClk=<clock>, or observe a register that takes the net in"},
      {R::ForeignSampleClock, W, "The sample clock clocks none of the traced registers",
       "ost_trace trc_option -core <core> SampleClk=<clock>"},
      {R::SampleClockNotRunning, E, "The sample clock is constant or has no driver",
       "ost_trace trc_option -core <core> SampleClk=<net>"},
      {R::SampleClockTraced, W, "The core observes its own sample clock, which always reads the same",
       "remove the net from the core"},
      {R::NetPartlyUndriven, W, "Some bits of a net that the core observes have no driver",
       "drive them in the design, or remove them from the core"},

      {R::WishboneNoSlave, E, "The Wishbone master is to be connected, but the top holds no marked slave",
       "mark the instance in the top with (* ostrel_wishbone = \"slave\" *), or set PerformConnect=false"},
      {R::WishboneSeveralSlaves, E, "The Wishbone master is to be connected, but several slaves are marked",
       "leave (* ostrel_wishbone = \"slave\" *) at one instance of the top"},
      {R::WishbonePorts, E, "The marked Wishbone slave lacks a port, or has one of another direction or width",
       "give the module the ports of a classic slave, or mark those of one bus with (* ostrel_wishbone = \"slave\" *)"},
      {R::WishboneClock, E, "The marked Wishbone slave has no clock, or one that does not run",
       "mark the port with (* ostrel_wishbone = \"clock\" *) and connect a clock to it"},

      {R::SerdesNoBlock, E, "The project has a serdes core, and no module is marked as a serdes block",
       "mark the module with (* ostrel_role = \"dcu\" *), or ost_core del_serdes"},
      {R::SerdesSeveralBlocks, W, "The serdes core watches several blocks",
       "mark one module that the design has once to watch it alone"},
      {R::SerdesNothingWatched, E, "A serdes block marks no net to watch",
       "mark nets or ports of its module with (* ostrel_watch = \"lock\" *) and the like"},
      {R::SerdesTooManySignals, E, "The serdes blocks mark more than 254 bits to watch",
       "remove the attribute ostrel_watch from some nets"},
      {R::SerdesWord, E, "The attribute ostrel_watch of a net is not a word",
       "give it a letter and then letters, digits, _, - and ., 32 characters at most"},
      {R::SerdesNoClock, E, "The serdes core has no sample clock", "ost_serdes set clk=<net>"},
      {R::SerdesClockNet, E, "The sample clock of the serdes core is not in the design, or wider than a bit",
       "ost_serdes set clk=<net>"},
      {R::SerdesResetNet, E, "The reset of the serdes core is not in the design, or wider than a bit",
       "ost_serdes set rst=<net>, or rst=VLO for none"},
      {R::SerdesClockNotRunning, E, "The sample clock of the serdes core is constant or has no driver",
       "ost_serdes set clk=<net>"},
      {R::SerdesSignalIdle, W, "A net that the serdes core watches is constant or has no driver",
       "drive the net in the design, or remove its attribute ostrel_watch"},
      {R::SerdesPathTaken, E, "The design uses the serdes' JTAG path itself, and the project has a serdes core",
       "ost_core del_serdes, or remove the role \"j2w\""},
  };
  return table;
}

const RuleRow& ruleRow(DesignRule rule) {
  for (const RuleRow& row : ruleTable())
    if (row.rule == rule) return row;
  Q_UNREACHABLE();
}

}  // namespace ost
