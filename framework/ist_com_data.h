// Contract of the project data service (libistcomdata): the one object through which every project is edited.
// A "message" out-parameter is empty on entry; the service may write a text for the user into it, on success as on
// failure. Booleans mean success. Strings carry the interpreter's bytes one to one (Latin-1 both ways).
#pragma once

#include <QString>
#include <QStringList>
#include <string>
#include <vector>

#include "framework/ist_data.h"

#define ISTCOMDATA_API __attribute__((visibility("default")))

namespace mero {
namespace ostrel {

class istProject;  ///< The open project; the command layer only tests it for null.

class ISTCOMDATA_API IstComData {
 public:
  /// The one instance of the process.
  static IstComData* getInstance();

  /// Null when no project is open.
  istProject* currentProject();
  /// Empty for an untitled project.
  QString currentProjectFile();
  RTLHierachy* hierarchy();

  // Project lifecycle
  bool isProjBusy();
  bool LoadDesign(QString& message);
  bool NewProject(QString& message);
  bool NewProject(const QString& fileName, QString& message);
  bool OpenProject(const QString& fileName, QString& message);
  bool SaveProject(QString& message);
  bool SaveProjectAs(const QString& fileName, QString& message);
  bool isProjChanged();
  bool CloseProject();
  void registerToHDLmanager();
  void unregisterToHDLmanager();
  void EnableAllCores(bool enable);
  bool EnableCore(const QString& name, bool enable);
  bool DRC(QString& message);
  bool Insert(int mode);

  // Cores and optional cores
  QStringList getCoreNameList();
  istCore* addCore(const QString& name, QString& message);
  bool deleteCore(const QString& name, QString& message);
  bool renameCore(const QString& oldName, const QString& newName, QString& message);
  QString getActiveCoreName();
  istCore* getCore(const QString& name);
  istCore* getActiveLogicCore();
  bool selectCore(const QString& name);
  bool addWishboneMaster(QString& message);
  bool deleteWishboneMaster(QString& message);
  bool addSerdesCore(QString& message);
  bool deleteSerdesCore(QString& message);
  istWishboneMaster* getWishboneMaster();
  istSerdesCore* getSerdesCore();
  istTraceData* getTrace(istCore* core);
  istDataset* getDataset(istCore* core);

  // Trace signals. `position` is a decimal number from 1, ".end.", the name of a signal or bus, or empty;
  // `bus` is empty for the top level.
  bool addTraceSignals(istTraceData* trace, QStringList signalNames, QString bus, QString position, QString& message);
  bool moveTraceSignals(istTraceData* trace, QStringList signalNames, QString bus, QString position, QString& message);
  bool removeTraceSignals(istTraceData* trace, QStringList signalNames, QString& message);
  /// `bus` is in and out: an empty name is filled with the one the service chose.
  bool groupTraceSignals(istTraceData* trace, QString& bus, QStringList signalNames, QString& message);
  bool ungroupTraceSignals(istTraceData* trace, const QString& bus, QString& message);
  bool renameTraceBus(istTraceData* trace, const QString& bus, const QString& newName, QString& message);

  // Trace options. Polarity 0 is active high, 1 active low; numbers read back as -1 have no value.
  QString getSampleClk(istCore* core);
  void setSampleClk(const QString& net, istCore* core);
  bool isSampleEnable(istCore* core);
  void setSampleEnable(bool on, istCore* core);
  QString getSampleEnableSignal(istCore* core);
  void setSampleEnableSignal(const QString& net, istCore* core);
  int getSampleEnablePri(istCore* core);
  void setSampleEnablePri(int polarity, istCore* core);
  bool isTrigEnable(istCore* core);
  void setTrigEnable(bool on, istCore* core);
  QString getTrigEnableSignal(istCore* core);
  void setTrigEnableSignal(const QString& net, istCore* core);
  int getTrigEnablePri(istCore* core);
  void setTrigEnablePri(int polarity, istCore* core);
  int getCaptureNum(istCore* core);
  void setCaptureNum(int triggers, istCore* core);
  int getBufferDepth(istCore* core);
  void setBufferDepth(int samples, istCore* core);
  QString getImplementaionName(istCore* core);
  void setImplementation(int implementation, istCore* core);  ///< 0 EBR, 1 DRAM.
  bool isTimeStamp(istCore* core);
  void setTimeStamp(bool on, istCore* core);
  int getTimeStampBits(istCore* core);
  void setTimeStampBits(int bits, istCore* core);
  int getCaptureMode(istCore* core);  ///< 0 single, 1 multiple.
  QString getCaptureModeName(istCore* core);
  void setCaptureMode(int mode, istCore* core);
  int getCaptureMin(istCore* core);
  void setCaptureMin(int samples, istCore* core);
  bool isIncludeTrigger(istCore* core);
  void setIncludeTrigger(bool on, istCore* core);
  void setDisableDistRAM(bool disable, istCore* core);

  // Trigger options
  int getDefaultTrigRadix(istCore* core);  ///< 0 Bin, 1 Oct, 2 Dec, 3 Hex.
  void setDefaultTrigRadix(int radix, istCore* core);
  bool isEventCounter(istCore* core);
  void setEventCounter(bool on, istCore* core);
  int getEventCounter(istCore* core);
  void setEventCounterValue(int count, istCore* core);
  bool isTriggerOut(istCore* core);
  void setTriggerOut(bool on, istCore* core);
  QString getTriggerOutTypeName(istCore* core);
  void setTriggerOutType(int type, istCore* core);  ///< 0 IO, 1 NET, 2 BOTH.
  QString getTriggerOutName(istCore* core);
  void setTriggerOutName(QString net, istCore* core);
  int getTriggerOutPolarity(istCore* core);
  void setTriggeroutPolarity(int polarity, istCore* core);
  QString getTriggerOutMPW(istCore* core);
  void setTriggeroutMPW(const QString& samples, istCore* core);  ///< Minimum pulse width as decimal text.

  // Wishbone master and serdes core
  bool getWBPerformeConnect();
  void setWBPerformeConnect(bool connect);
  int getWBEdianMode();
  void setWBEdianMode(ENDIAN_MODE mode);
  void setSerdesClk(QString& net);
  void setSerdesReset(QString& net);

  // Trigger units and expressions
  std::vector<std::string> getTUNameList(istDataset* dataset);
  std::vector<std::string> getTENameList(istDataset* dataset);
  bool isTUNameUsed(const QString& name, istDataset* dataset);
  bool isTENameUsed(const QString& name, istDataset* dataset);
  /// `name` is in and out: an empty name is filled with the default one.
  bool addTU(QString& radix, const QStringList& signalNames, QString& op, QString& value, QString& name,
             QString& message, istDataset* dataset);
  istTU* getTU(const QString& name, istDataset* dataset);
  /// Empty strings and lists leave their property unchanged. A removal list of exactly one empty name means that the
  /// add list replaces all signals.
  bool setTU(istTU* unit, QString& radix, const QStringList& addSignals, const QStringList& removeSignals, QString& op,
             QString& value, QString& message, istDataset* dataset);
  bool renameTU(const QString& oldName, const QString& newName, QString& message, istDataset* dataset);
  bool renameTE(const QString& oldName, const QString& newName, QString& message, istDataset* dataset);
  bool removeTU(const QString& name, istDataset* dataset);
  bool removeTE(const QString& name, istDataset* dataset);
  /// `ram` is 1 for EBR, 0 for slices; a depth or count of 0 asks for the default. `name` is in and out.
  bool addTE(QString& name, const QString& expression, int ram, int maxSequenceDepth, int maxEventCount,
             QString& message, istDataset* dataset);
  /// -1 leaves a number unchanged, an empty expression leaves the expression.
  bool setTE(QString& name, const QString& expression, int ram, int maxSequenceDepth, int maxEventCount,
             QString& message, istDataset* dataset);

  /// Prints the catalogue message `code` ("0100" to "0167") with its two arguments to the user.
  void PrintMessage(const std::string& code, std::string arg1, std::string arg2);

 private:
  IstComData();
  ~IstComData();
  IstComData(const IstComData&);
  IstComData& operator=(const IstComData&);

  class Private;
  Private* d;
};

}  // namespace ostrel
}  // namespace mero
