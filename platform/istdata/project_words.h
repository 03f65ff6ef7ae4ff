// The words that stand for encoded values in project files.
#pragma once

#include <QStringList>

namespace ost {

inline QStringList polarityWords() {
  return {QStringLiteral("active_high"), QStringLiteral("active_low")};
}
inline QStringList implementationWords() {
  return {QStringLiteral("EBR"), QStringLiteral("DRAM")};
}
inline QStringList captureModeWords() {
  return {QStringLiteral("single"), QStringLiteral("multiple")};
}
inline QStringList triggerOutWords() {
  return {QStringLiteral("IO"), QStringLiteral("NET"), QStringLiteral("BOTH")};
}
inline QStringList expressionRamWords() {
  return {QStringLiteral("Slice"), QStringLiteral("EBR")};
}
inline QStringList endianWords() {
  return {QStringLiteral("big"), QStringLiteral("little")};
}

inline QString projectFormat() {
  return QStringLiteral("ostrel-project");
}

}  // namespace ost
