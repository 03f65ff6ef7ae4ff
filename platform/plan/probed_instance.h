// An instance whose inputs a core captures, so that its module can be simulated from the capture alone.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>

namespace ost {

/// What stands for a bit that is no captured one; captured bits are indexes into PlanCore::probeBits.
enum ReplayBit : int { kReplay0 = -1, kReplay1 = -2, kReplayX = -3, kReplayClock = -4 };
/// "0", "1", "x" and "clock".
QStringList replayBitWords();

struct ReplayPort {
  QString name;
  bool isOutput = false;
  QVector<int> bits;  ///< Leftmost first. kReplayX: not known, and so not compared when it is an output's.
};

struct ReplayParameter {
  QString name;
  bool isText = false;
  QByteArray value;  ///< Of a string its characters, of a number its binary digits, most significant first.
};

/// A net of registers, or a memory, which a simulation is to give another value than the source does.
struct ReplayState {
  QStringList scopes;  ///< The instances and generate blocks that hold it, from below the instance.
  QString name;
  QVector<int> bits;        ///< Of registers, leftmost first: captured, or kReplayX.
  int first = 0, last = 0;  ///< Of a memory, which has no bits: its words, all of them not known.
};

struct ProbedInstance {
  QString path;    ///< As in NetBit.
  QString module;  ///< As the source calls it.
  QVector<ReplayParameter> parameters;
  QVector<ReplayPort> ports;  ///< In the order of the source.
  QVector<ReplayState> state;
  int registerBits = 0, knownBits = 0;  ///< Of all registers in it, and how many of them are captured.
};

}  // namespace ost
