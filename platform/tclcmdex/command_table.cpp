// The command table: entries and their registration.
#include "framework/tcl_cmdex.h"

namespace tcl_cmdex {

TclCmd::TclCmd() : handler(nullptr), clientData(nullptr) {}
TclCmd::TclCmd(const TclCmd& other) = default;
TclCmd& TclCmd::operator=(const TclCmd& other) = default;
TclCmd::~TclCmd() = default;

TclCmdMap::TclCmdMap(const char* tableName) : name(tableName != nullptr ? tableName : "") {}
TclCmdMap::~TclCmdMap() = default;

// Entries are updated where they stand and never moved: a second interpreter that loads the package registers
// everything again, perhaps from an event that is served while a handler of the first one holds its entry.
void TclCmdMap::registerCmd(const char* cmd, const char* subcmd, const char* help, TclCmdHandler handler,
                            void* clientData) {
  if (cmd == nullptr) return;
  TclCmd* entry = &commands[cmd];
  if (entry->name.empty()) entry->name = cmd;
  if (subcmd != nullptr) {
    TclCmd& sub = entry->subCommands[subcmd];
    if (sub.name.empty()) sub.name = entry->name + ' ' + subcmd;
    entry = &sub;
  }
  entry->help = help != nullptr ? help : "";
  entry->handler = handler;
  entry->clientData = clientData;
}

}  // namespace tcl_cmdex
