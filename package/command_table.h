// The commands and sub-commands of the package, with their help texts and handlers.
#pragma once

#include <cstddef>

#include "framework/tcl_cmdex.h"

/// A row without sub-command is a Tcl command itself; its sub-commands follow in later rows.
struct CommandRow {
  const char* command;
  const char* subCommand;  ///< Null for the command.
  const char* help;        ///< Shown to users as it stands.
  tcl_cmdex::TclCmdHandler handler;
};

/// All rows, in the order in which they are registered.
extern const CommandRow kCommandRows[];
extern const std::size_t kCommandRowCount;
