// Help from the command table, and the error for a sub-command that does not exist.
#include "platform/tclcmdex/help_text.h"

#include <algorithm>
#include <cstring>

#include "platform/tclcmdex/tcl_access.h"
#include "platform/text/edit_distance.h"

namespace tcl_cmdex {

namespace {

/// The sub-command that was probably meant: few typing errors away, or the only one that `word` begins. Empty when
/// there is none.
std::string nearestName(const std::map<std::string, TclCmd>& subCommands, const std::string& word) {
  std::string nearest, begun;
  int best = int(std::min(std::max<size_t>(1, word.size() / 3), ost::kMaxComparedBytes)) + 1;
  int begunCount = 0;
  for (const auto& sub : subCommands) {
    const std::string& name = sub.first;
    if (!word.empty() && name.compare(0, word.size(), word) == 0) {
      begun = name;
      ++begunCount;
    }
    if (word.size() > 2 * name.size()) continue;
    const int distance = ost::editDistance(word, name, best - 1);
    if (distance < best && size_t(distance) < name.size()) {
      best = distance;
      nearest = name;
    }
  }
  return nearest.empty() && begunCount == 1 ? begun : nearest;
}

/// `a`, `a or b`, `a, b, or c`, as Tcl lists choices.
std::string choices(const std::map<std::string, TclCmd>& subCommands) {
  std::string text;
  size_t left = subCommands.size();
  for (const auto& sub : subCommands) {
    text += sub.first;
    --left;
    if (left == 0) break;
    if (subCommands.size() > 2) text += ',';
    text += left == 1 ? " or " : " ";
  }
  return text;
}

}  // namespace

bool isHelpWord(const char* word) {
  return std::strcmp(word, "help") == 0 || std::strcmp(word, "-help") == 0 || std::strcmp(word, "--help") == 0;
}

std::string commandHelp(const TclCmd& command) {
  std::string text = command.help;
  for (const auto& sub : command.subCommands) text += sub.second.help;
  return text;
}

int refuseSubCommand(Tcl_Interp* interp, const TclCmd& command, const char* word) {
  std::string text = "unknown sub-command \"" + std::string(word) + '"';
  if (!command.subCommands.empty()) text += ": must be " + choices(command.subCommands);
  const std::string meant = nearestName(command.subCommands, word);
  if (!meant.empty()) text += " (did you mean \"" + meant + "\"?)";
  setResult(interp, text);
  Tcl_SetErrorCode(interp, "TCL", "LOOKUP", "SUBCOMMAND", word, static_cast<char*>(nullptr));
  return TCL_ERROR;
}

}  // namespace tcl_cmdex
