// The help texts of `ost_design`.
#include "platform/design/read_options.h"
#include "platform/ost_platform/design_command.h"

namespace ost {
namespace {

struct HelpEntry {
  const char* subCommand;
  const char* usage;  ///< Null: made of readOptions().
  const char* text;
};

const HelpEntry kHelp[] = {
    {"close", "ost_design close", "Forgets the loaded design."},
    {"help", "ost_design help ?SUBCOMMAND?", "Shows this help, or that of one sub-command."},
    {"info", "ost_design info",
     "Returns what is loaded as names and values: top, files, modules, instances, nets, bits, roles,\n"
     "blackboxes, notes, yosys."},
    {"jtag", "ost_design jtag ?WAY? ?-chain NUMBER? ?-period NS?",
     "Returns the way from the cable to the debug hub; with a word, sets it first. pins: a TAP on four pins of the "
     "top,\n"
     "as long as nothing else is said; bscane2 or gw_jtag: a user register of the device's own TAP, through that\n"
     "primitive, 1 to 4 or 1 to 2 (-chain), without pins; else the name of a Verilog file with the module "
     "ostrel_jtag,\n"
     "which is used as it is. -period is TCK's, for the constraints. The options of \"ost_design read\" of the same\n"
     "names hold until this command is used."},
    {"level", "ost_design level ?PATH?",
     "Returns what one level of the hierarchy holds, the top or the instance at PATH, as names and values: instances,\n"
     "a list of {path module}, and nets, a list of {name width}."},
    {"nets", "ost_design nets ?-glob PATTERN? ?-regexp PATTERN?",
     "Returns a list of {name width}, one for each net of each instance. Names that do not fit the patterns are left\n"
     "out: -glob as in \"string match\", -regexp as in \"regexp\"."},
    {"ports", "ost_design ports INSTANCE ?-inputs? ?-outputs? ?-clocks? ?-registers?",
     "Returns the nets of an instance's ports, as \"ost_trace add_sig\" takes them: inputs and outputs, or only those "
     "asked\n"
     "for. Inputs that clock a register or a memory in the instance are -clocks and no inputs; inouts count as both.\n"
     "-registers are the nets of registers in the instance and below that no port shows: with them captured, too, a\n"
     "replay knows its state from the first sample on."},
    {"prove", "ost_design prove ?on|off|strict?",
     "Returns whether an insertion is followed by a proof that the design still does the same: 1, 0 or strict; with a\n"
     "word, sets it first. A module that is found to differ fails the insertion; one for which the proof comes to no "
     "end\n"
     "is named, and fails it when the proof is strict. The environment variable OST_PROVE sets it at the start."},
    {"read", nullptr,
     "Reads a design and returns the name of its top module. A FILE is Verilog, SystemVerilog (.sv), VHDL (.vhd,\n"
     ".vhdl) or one Yosys JSON netlist (.json). On failure the design before stays."},
};

std::string readUsage() {
  std::string usage = "ost_design read";
  for (const ReadOption& option : readOptions()) usage += std::string(" ?") + option.name + ' ' + option.value + '?';
  return usage + " ?--? FILE ...";
}

std::string readTable() {
  std::string table;
  const auto add = [&table](const std::string& words, const char* help) {
    constexpr size_t kColumn = 22;
    table += "\n  " + words + std::string(words.size() < kColumn ? kColumn - words.size() : 1, ' ') + help;
  };
  for (const ReadOption& option : readOptions()) add(std::string(option.name) + ' ' + option.value, option.help);
  add("--", "what follows are files");
  return table;
}

}  // namespace

std::string designHelp(const std::string& subCommand) {
  std::string help;
  for (const HelpEntry& entry : kHelp) {
    if (!subCommand.empty() && subCommand != entry.subCommand) continue;
    if (!help.empty()) help += "\n\n";
    help += "usage: " + (entry.usage ? entry.usage : readUsage()) + '\n' + entry.text;
    if (!entry.usage) help += readTable();
  }
  return help;
}

}  // namespace ost
