// The trace options of a core: listing and setting. Exported for the host tool.
#pragma once

#include <QString>

#include "commands/option_list.h"
#include "framework/ist_com_data.h"

/// Appends the trace options, in their fixed order.
OST_EXPORT_CPP void generate_trace_option_list(OptionList& options);
/// Appends the current settings to `out`, as lines of the form "name = value".
OST_EXPORT_CPP void listTraceOptions(mero::ostrel::IstComData* data, mero::ostrel::istCore* core, QString& out);
/// Applies the given options; rejections are catalogue messages and change nothing. Always 0; leaves `out` alone.
OST_EXPORT_CPP int setTraceOptions(mero::ostrel::IstComData* data, mero::ostrel::istCore* core, OptionList& options,
                                   QString& out);
