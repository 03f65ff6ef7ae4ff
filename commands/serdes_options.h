// The options of the project's serdes debug core: listing and setting. Exported for the host tool.
#pragma once

#include <QString>
#include <string>
#include <utility>
#include <vector>

#include "framework/export.h"
#include "framework/ist_com_data.h"

/// Replaces `text` by clock and reset, with nothing between the two and nothing at the end.
OST_EXPORT_CPP void listSerdesOptions(mero::ostrel::IstComData* data, mero::ostrel::istSerdesCore* core, QString& text);
/// Applies (name, value) pairs, as typed, in their order; refusals are catalogue messages. Always 0; leaves `text`
/// alone.
OST_EXPORT_CPP int setSerdesOptions(mero::ostrel::IstComData* data, mero::ostrel::istSerdesCore* core,
                                    std::vector<std::pair<std::string, std::string> >& pairs, QString& text);
