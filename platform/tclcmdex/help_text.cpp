// Help from the command table, and the error for a sub-command that does not exist.
#include "platform/tclcmdex/help_text.h"

#include <algorithm>
#include <cstring>

#include "platform/tclcmdex/tcl_access.h"

namespace tcl_cmdex {

namespace {

/// Fewest insertions, deletions, replacements and swaps of neighbours that turn `a` into `b`.
size_t editDistance(const std::string& a, const std::string& b) {
  std::vector<size_t> beforePrevious, previous(b.size() + 1), row(b.size() + 1);
  for (size_t j = 0; j <= b.size(); ++j) previous[j] = j;
  for (size_t i = 1; i <= a.size(); ++i) {
    row[0] = i;
    for (size_t j = 1; j <= b.size(); ++j) {
      row[j] = std::min({previous[j] + 1, row[j - 1] + 1, previous[j - 1] + (a[i - 1] != b[j - 1])});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
        row[j] = std::min(row[j], beforePrevious[j - 2] + 1);
    }
    beforePrevious = previous;
    previous.swap(row);
  }
  return previous[b.size()];
}

/// The sub-command that was probably meant: few typing errors away, or the only one that `word` begins. Empty when
/// there is none.
std::string nearestName(const std::map<std::string, TclCmd>& subCommands, const std::string& word) {
  std::string nearest, begun;
  size_t best = std::max<size_t>(1, word.size() / 3) + 1;
  int begunCount = 0;
  for (const auto& sub : subCommands) {
    const std::string& name = sub.first;
    if (!word.empty() && name.compare(0, word.size(), word) == 0) {
      begun = name;
      ++begunCount;
    }
    if (word.size() > 2 * name.size()) continue;
    const size_t distance = editDistance(word, name);
    if (distance < best && distance < name.size()) {
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
