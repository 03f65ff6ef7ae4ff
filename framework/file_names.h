// Tests on the files that project commands name: made on the file that the service would really write.
#pragma once

#include <string>

namespace ost_command {

/// True when a file of that name exists. `name` holds the bytes typed in Tcl.
bool fileExists(const std::string& name);

/// True when `name` is an existing file other than `current`. An empty `current` is no file.
bool isAnotherExistingFile(const std::string& name, const std::string& current);

}  // namespace ost_command
