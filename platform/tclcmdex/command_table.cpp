// The command table: entries and their registration.
#include "platform/tclcmdex/command_table.h"

#include <mutex>

namespace tcl_cmdex {

namespace {

/// Of all tables: registering and looking up take turns.
std::mutex tableLock;

/// Unlike an assignment, leaves what is the same alone: somebody may be reading it.
template <class Field, class Value>
void assign(Field& field, const Value& value) {
  if (!(field == value)) field = value;
}

}  // namespace

const TclCmd* findEntry(const std::map<std::string, TclCmd>& entries, const char* name) {
  const std::string key(name);
  const std::lock_guard<std::mutex> lock(tableLock);
  const auto found = entries.find(key);
  return found != entries.end() ? &found->second : nullptr;
}

TclCmd::TclCmd() : handler(nullptr), clientData(nullptr) {}
TclCmd::TclCmd(const TclCmd& other) = default;
TclCmd& TclCmd::operator=(const TclCmd& other) = default;
TclCmd::~TclCmd() = default;

TclCmdMap::TclCmdMap(const char* tableName) : name(tableName != nullptr ? tableName : "") {}
TclCmdMap::~TclCmdMap() = default;

// Entries are updated where they stand and never moved: a second interpreter that loads the package registers
// everything again, perhaps from an event that is served while a handler of the first one holds its entry, perhaps on
// another thread. There it finds all as it is; only one that registers something else must be on the same thread.
void TclCmdMap::registerCmd(const char* cmd, const char* subcmd, const char* help, TclCmdHandler handler,
                            void* clientData) {
  if (cmd == nullptr) return;
  const std::lock_guard<std::mutex> lock(tableLock);
  TclCmd* entry = &commands[cmd];
  if (entry->name.empty()) entry->name = cmd;
  if (subcmd != nullptr) {
    TclCmd& sub = entry->subCommands[subcmd];
    if (sub.name.empty()) sub.name = entry->name + ' ' + subcmd;
    entry = &sub;
  }
  assign(entry->help, help != nullptr ? help : "");
  assign(entry->handler, handler);
  assign(entry->clientData, clientData);
}

}  // namespace tcl_cmdex
