// The trigger options of a core: listing and setting. Exported for the host tool.
#pragma once

#include <QString>

#include "commands/option_list.h"
#include "framework/ist_com_data.h"

/// Appends the trigger options, in their fixed order.
OST_EXPORT_CPP void generate_trigger_option_list(OptionList& options);
/// Appends the current settings to `out`, as lines of the form "name = value".
OST_EXPORT_CPP void listTriggerOptions(mero::ostrel::IstComData* data, mero::ostrel::istCore* core, QString& out);
/// Applies the given options; rejections are catalogue messages and change nothing. Always 0; leaves `out` alone.
OST_EXPORT_CPP int setTriggerOptions(mero::ostrel::IstComData* data, mero::ostrel::istCore* core, OptionList& options,
                                     QString& out);
