// A hub that a script has opened: arms its cores, waits for them, reads them.
#pragma once

#include "platform/ost_capture/sub_commands.h"
#include "platform/reader/hub_session.h"

namespace ost {

class HubObject : public std::enable_shared_from_this<HubObject> {
 public:
  static constexpr char kName[] = "hub";
  static constexpr char kOwner[] = "HUB";
  static const QVector<SubCommand<HubObject>>& table();

  /// Makes the command of a hub; its name is the result.
  static int open(Tcl_Interp* interp, const CaptureOptions& options);
  HubObject(Tcl_Interp* interp, const CaptureOptions& options);
  /// Ends a wait, lets go of the server and ends the simulation.
  void commandIsGone();

  int arm(const SubCall& call);
  int close(const SubCall& call);
  int read(const SubCall& call);
  int serdes(const SubCall& call);
  int status(const SubCall& call);
  int wait(const SubCall& call);
  int wb(const SubCall& call);

 private:
  /// How a wait ended. `text` and `errorCode` say why, unless it is `done`.
  struct Outcome {
    const char* word;
    QString text;
    const char* errorCode;
  };

  int failBroken(const SubCall& call, const QString& error);
  /// One look at the cores. False when another one is needed.
  bool look(double seconds, Outcome& outcome);
  int waitHere(const SubCall& call);
  void lookLater();
  static void onTimer(ClientData data);
  static void onExit(ClientData data);
  int lookFromTimer();
  int callBack(const Outcome& outcome);
  void dropCallback();
  bool closeSession(QString& error);

  Tcl_Interp* const interp_;
  Tcl_Command token_ = nullptr;
  std::unique_ptr<HubSession> session_;  ///< Null when it is closed.
  bool isArmed_ = false;
  bool isWaiting_ = false;
  Tcl_TimerToken timer_ = nullptr;
  Tcl_Obj* callback_ = nullptr;
};

}  // namespace ost
