// Finds help pages: `ost_core` is the file ost_core.txt, `ost_core add` is ost_core.add.txt. They lie in the folder
// `help` beside this library, or in the folders that OST_HELP_PATH lists with colons between them.
#include "framework/hlp_help.h"

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> helpFolders() {
  static const char inThisLibrary = 0;
  std::vector<fs::path> folders;
  const char* list = std::getenv("OST_HELP_PATH");
  if (list != nullptr && *list != '\0') {
    std::istringstream in(list);
    for (std::string folder; std::getline(in, folder, ':');)
      if (!folder.empty()) folders.push_back(folder);
    return folders;
  }
  Dl_info self;
  if (dladdr(&inThisLibrary, &self) != 0 && self.dli_fname != nullptr)
    folders.push_back(fs::path(self.dli_fname).parent_path() / "help");
  return folders;
}

/// The file of the page; empty for a name that is not words of letters, digits and underscores with one blank between
/// them. So no name can leave the help folders.
std::string pageFile(const std::string& name) {
  std::string file;
  bool wordBegins = true;
  for (const char c : name) {
    const bool isWordCharacter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
    if (!isWordCharacter && (c != ' ' || wordBegins)) return std::string();
    wordBegins = !isWordCharacter;
    file += isWordCharacter ? c : '.';
  }
  return wordBegins || name.size() > 200 ? std::string() : file + ".txt";
}

bool readPage(const fs::path& file, std::string& text) {
  std::error_code ignored;
  if (!fs::is_regular_file(file, ignored)) return false;
  std::ifstream in(file, std::ios::binary);
  std::ostringstream whole;
  whole << in.rdbuf();
  if (!in || !whole) return false;
  text = whole.str();
  return true;
}

}  // namespace

bool hlp_help(char* name, std::string& error, std::string& text, std::string& extra) {
  error.clear();
  text.clear();
  extra.clear();
  const std::string page = name != nullptr ? name : "";
  const std::string file = pageFile(page);
  if (file.empty()) {
    error = "\"" + page + "\" is not the name of a help page: give a command, or a command and its sub-command";
    return false;
  }
  std::string searched;
  for (const fs::path& folder : helpFolders()) {
    if (readPage(folder / file, text)) return true;
    searched += (searched.empty() ? "" : ", ") + folder.string();
  }
  error = "There is no help page \"" + page + "\" in " + (searched.empty() ? "OST_HELP_PATH" : searched) +
          ": check the name, or name the folder of the pages in OST_HELP_PATH";
  return false;
}
