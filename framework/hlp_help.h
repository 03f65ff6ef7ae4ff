// Contract of the help library (libhlp_help).
#pragma once

#include <string>

/// Looks up the help page `name`. True: `text` is the page and `extra`, when not empty, a remark on it (for standard
/// error). False: there is no such page and `error` says so.
__attribute__((visibility("default"))) bool hlp_help(char* name, std::string& error, std::string& text,
                                                     std::string& extra);
