// The help texts of `ost_design`.
#include "platform/ost_platform/design_command.h"

namespace ost {
namespace {

struct HelpEntry {
  const char* subCommand;
  const char* usage;
  const char* text;
};

const HelpEntry kHelp[] = {
    {"close", "ost_design close", "Forgets the loaded design."},
    {"help", "ost_design help ?SUBCOMMAND?", "Shows this help, or that of one sub-command."},
    {"info", "ost_design info",
     "Returns what is loaded as names and values: top, files, modules, instances, nets, bits, roles, yosys."},
    {"nets", "ost_design nets ?-glob PATTERN? ?-regexp PATTERN?",
     "Returns a list of {name width}, one for each net of each instance. Names that do not fit the patterns are left\n"
     "out: -glob as in \"string match\", -regexp as in \"regexp\"."},
    {"prove", "ost_design prove ?on|off|strict?",
     "Returns whether an insertion is followed by a proof that the design still does the same: 1, 0 or strict; with a\n"
     "word, sets it first. A module that is found to differ fails the insertion; one for which the proof comes to no "
     "end\n"
     "is named, and fails it when the proof is strict. The environment variable OST_PROVE sets it at the start."},
    {"read",
     "ost_design read ?-top NAME? ?-incdir DIR? ?-define NAME?=VALUE?? ?-f FILELIST? ?-blackbox MODULE? ?-timeout "
     "SECONDS? ?-memory MEGABYTES? ?--? FILE ...",
     "Reads a design and returns the name of its top module. A FILE is Verilog, SystemVerilog (.sv) or one Yosys JSON\n"
     "netlist (.json). On failure the design before stays.\n"
     "  -top NAME            the top module; without it Yosys looks for one\n"
     "  -incdir DIR          a folder of include files (may be repeated)\n"
     "  -define NAME?=VALUE? a macro (may be repeated)\n"
     "  -f FILELIST          a list of files, +incdir+DIR, +define+NAME=VALUE and -f LIST (may be repeated)\n"
     "  -blackbox MODULE     a module that is used but not looked into (may be repeated)\n"
     "  -timeout SECONDS     how long Yosys may take, 1 to 86400; 600 at first\n"
     "  -memory MEGABYTES    how much memory Yosys may take, 64 to 1048576; 8192 at first\n"
     "  --                   what follows are files"},
};

}  // namespace

std::string designHelp(const std::string& subCommand) {
  std::string help;
  for (const HelpEntry& entry : kHelp) {
    if (!subCommand.empty() && subCommand != entry.subCommand) continue;
    if (!help.empty()) help += "\n\n";
    help += std::string("usage: ") + entry.usage + '\n' + entry.text;
  }
  return help;
}

}  // namespace ost
