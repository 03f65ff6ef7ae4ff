// The options of the project's Wishbone master: listing and setting. Exported for the host tool.
#pragma once

#include <QString>

#include "commands/option_list.h"
#include "framework/ist_com_data.h"

/// Appends "PerformConnect" and "Endian".
OST_EXPORT_CPP void generate_wbone_option_list(OptionList& options);
/// Replaces `text` by the current settings, which are project-wide; `master` is not read.
OST_EXPORT_CPP void listWboneOptions(mero::ostrel::IstComData* data, mero::ostrel::istWishboneMaster* master,
                                     QString& text);
/// Applies the given options; rejections are catalogue messages and change nothing. Always 0; leaves `text` alone.
OST_EXPORT_CPP int setWboneOptions(mero::ostrel::IstComData* data, mero::ostrel::istWishboneMaster* master,
                                   OptionList& options, QString& text);
