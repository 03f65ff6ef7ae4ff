// The words that stand for encoded values in project files.
#pragma once

#include <QStringList>

namespace ost {

inline QStringList polarityWords() {
  return {"active_high", "active_low"};
}
inline QStringList implementationWords() {
  return {"EBR", "DRAM"};
}
inline QStringList captureModeWords() {
  return {"single", "multiple"};
}
inline QStringList triggerOutWords() {
  return {"IO", "NET", "BOTH"};
}
inline QStringList expressionRamWords() {
  return {"Slice", "EBR"};
}
inline QStringList endianWords() {
  return {"big", "little"};
}

constexpr char kProjectFormat[] = "ostrel-project";

}  // namespace ost
