// The save file of GTKWave beside a value change dump: what the viewer shows when it opens the dump.
#pragma once

#include "platform/reader/output_files.h"
#include "platform/reader/vcd_writer.h"

namespace ost {

/// The save file `file` for the dump `vcdFile` of the captures: a group for each instance and for each core's own
/// signals, vectors in the core's display radix, the marker at the first trigger. The values of an enumerated type are
/// shown by their names, out of filter files beside the save file: "wave_filter1.txt" for "wave.gtkw".
QList<OutputText> gtkwaveView(const QVector<Capture>& captures, const QString& topModule, const VcdStyle& style,
                              const OutputFile& vcdFile, const OutputFile& file);

}  // namespace ost
