// The words after options of ost_capture. Each function is false, with a text for the option in `error`, for a word
// that the option cannot take.
#pragma once

#include <QString>

#include "platform/jtag/connect_tap.h"
#include "platform/reader/capture_view.h"
#include "platform/reader/hub_link.h"

namespace ost {

/// Sets `error` to the text for a word that an option cannot take; always false.
bool wrongValue(const QString& option, const QString& value, const char* must, QString& error);

bool parseCount(const QString& option, const QString& value, int& count, QString& error);    ///< 1 or more.
bool parseRepeats(const QString& option, const QString& value, int& count, QString& error);  ///< 0 or more.
bool parseRange(const QString& option, const QString& value, ViewChoice& view, QString& error);
bool parseRadix(const QString& option, const QString& value, ViewChoice& view, QString& error);
bool parseInstruction(const QString& option, const QString& value, TapInstruction& instruction, QString& error);
/// "5", "5s" or "200ms"; above 0, 10^6 s at most.
bool parseSeconds(const QString& option, const QString& value, double& seconds, QString& error);
/// "tcp:PORT"; 0 for any free port.
bool parseServe(const QString& option, const QString& value, ServerAddress::Protocol& protocol, int& port,
                QString& error);
bool parsePlace(const QString& option, const QString& value, ChainPlace& place, QString& error);

}  // namespace ost
