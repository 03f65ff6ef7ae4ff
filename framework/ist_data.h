// Contract of the data classes (libistdata) that the project data service hands out. Only what the command layer
// reads is declared; the service owns every object and it is valid until the next operation that changes the project.
#pragma once

#include <QList>
#include <QString>

#define ISTDATA_API __attribute__((visibility("default")))

namespace mero {
namespace ostrel {

class istDataset;  ///< A core's trigger units and trigger expressions.
class istTU;       ///< One trigger unit.

/// Byte order of the Wishbone master.
enum ENDIAN_MODE { ENDIAN_BIG = 0, ENDIAN_LITTLE = 1 };

/// One debug core, with the validators of its numbers.
class ISTDATA_API istCore {
 public:
  QString name;
  int samplesPerTrigger;  ///< Samples of one window in multiple capture; bounds the number of triggers.

  /// Buffer depths in samples, ascending.
  static QList<int> getValidBufferDepthValues();
  static bool isValidBufferDepth(int depth);
  /// Bounds of the timestamp width in bits; -1 when the depth is unknown.
  static int getMinTimestampBitsByDepth(int depth);
  static int getMaxTimestampBitsByDepth(int depth);
  /// Samples per trigger in multiple capture, ascending.
  static QList<int> getValidMinSamplePerTrigsValuesByDepth(int depth);
  static bool isValidMinSamplePerTrigsValueByDepth(int depth, int value);
  /// Numbers of triggers for a depth and a core's `samplesPerTrigger`, ascending.
  static QList<int> getValidNumberOfTrigsValuesByDepth(int depth, int samplesPerTrigger);
  static bool isValidNumberOfTrigsValueByDepth(int depth, int samplesPerTrigger, int value);
  /// Event counts, 2 to 65536.
  static bool isValidEventCounterValue(int value);
  /// 0 valid, 1 empty, 2 not an identifier, 3 too long or reserved.
  static int isValidTriggerOutNetName(const QString& name);
};

/// Kinds of a trace node that listings show; others are skipped.
enum TraceNodeKind { TRACE_NODE_BUS = 2, TRACE_NODE_REF = 3, TRACE_NODE_SIGNAL = 4 };

/// One entry of a core's trace tree.
class ISTDATA_API TraceNode {
 public:
  TraceNode();
  virtual ~TraceNode();
  /// The node's text in listings.
  virtual QString displayName() const;

  QString name;
  int kind;                    ///< A TraceNodeKind, or another value that listings skip.
  QList<TraceNode*> children;  ///< Members of a bus, in order.
  TraceNode* target;           ///< What a reference stands for; null otherwise.

 private:
  TraceNode(const TraceNode&);
  TraceNode& operator=(const TraceNode&);
};

/// The trace signals of one core: its top-level nodes, in order.
class ISTDATA_API istTraceData {
 public:
  QList<TraceNode*> nodes;
};

/// The project's Wishbone master.
class ISTDATA_API istWishboneMaster {
 public:
  bool bigEndianOnly;  ///< Forbids the little-endian mode.
};

/// The project's serdes debug core.
class ISTDATA_API istSerdesCore {
 public:
  QString sampleClock;
  QString resetSignal;
};

/// Flags of the loaded design.
class ISTDATA_API RTLHierachy {
 public:
  bool getDCUFlag();
  bool getJ2WFlag();
  bool getJtag2WBFlag();
  bool getJtag2WBCore();
};

}  // namespace ostrel
}  // namespace mero
