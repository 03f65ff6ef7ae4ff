// A project as JSON text and back. What the text must hold is checked here as strictly as typed input, but for what
// only a design can tell (which nets exist, how wide they are). Reading and writing files is the service's business.
#pragma once

#include <QByteArray>
#include <memory>

#include "platform/istdata/project.h"

namespace ost {

constexpr int kProjectFileVersion = 2;  ///< 1 wrote its keys with underscores: "buffer_depth".
constexpr int kMaxProjectFileBytes = 256 << 20;

/// The project as indented JSON with sorted keys and a line for each signal. File name, change state and the enabled
/// cores are not part of it. Closes the holes in the trace trees.
ISTDATA_API QByteArray projectToJson(const mero::ostrel::istProject& project);

/// Null with the place and the reason in `error` ("cores[1].units[3].value: ...").
ISTDATA_API std::unique_ptr<mero::ostrel::istProject> projectFromJson(const QByteArray& json, QString& error);

}  // namespace ost
