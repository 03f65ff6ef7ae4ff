// Access to Tcl for this library: its own stubs pointer, and setting results from C++ strings.
#pragma once

#include <tcl.h>

#include <string>

namespace tcl_cmdex {

/// True when Tcl functions may be called. Every shared library has its own stubs pointer, so this one is filled from
/// the first interpreter seen here, whatever the package module did. A null `interp` only asks. Leaves the
/// interpreter's result alone unless the interpreter is unfit.
bool tclIsReady(Tcl_Interp* interp);

/// Replaces the interpreter's result by a copy of `text`.
void setResult(Tcl_Interp* interp, const std::string& text);

/// Sets errorCode to the list made of `first`, `second` and the blank-separated words of `rest`.
void setErrorCodeWords(Tcl_Interp* interp, const char* first, const char* second, const std::string& rest);

}  // namespace tcl_cmdex
