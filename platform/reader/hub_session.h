// A hub that is open, and the run under way on it: what the program and the Tcl package have in common.
#pragma once

#include "platform/reader/capture_run.h"
#include "platform/reader/hub_way.h"
#include "platform/reader/serdes_reader.h"

namespace ost {

/// In the order of use: loadMap(), chooseRuns() at any time after it, open(), then run() as often as wanted, close().
/// All that can fail: false with the reason in `error`.
class HubSession {
 public:
  /// `options`: the map and the way to the hub.
  explicit HubSession(const CaptureOptions& options) : options_(options), way_(options_) {}
  HubSession(const HubSession&) = delete;
  HubSession& operator=(const HubSession&) = delete;

  bool loadMap(QString& error);
  /// False with `error` when the map has no serdes core.
  bool hasSerdes(QString& error) const;
  /// Chooses the cores of the next run and their settings, as `options` say. On failure those before stay.
  bool chooseRuns(const CaptureOptions& options, QString& error);
  /// Reaches the hub and compares it with the map.
  bool open(QString& error);
  /// Lets go of the server, and ends the simulation. False when what that printed could not be stored.
  bool close(QString& error);

  const InsertPlan& plan() const { return plan_; }
  const QVector<CoreRun>& runs() const { return runs_; }
  QStringList coreNames() const;  ///< Of the runs.
  HubLink& hub() { return *hub_; }
  CoreReader& reader() { return *reader_; }
  /// Carries out a command for the Wishbone master; `read` gets what it reads.
  bool runWishbone(const WishboneCommand& command, QVector<quint32>& read, QString& error);
  /// A look at the serdes core, see SerdesReader::read(). False with `error`, also when there is no such core.
  bool readSerdes(bool restart, SerdesLook& look, QString& error);
  CaptureRun& run() { return *run_; }
  /// What the runs have read.
  CaptureSet captures() const;
  /// The text for a failure: a simulation that has ended explains it better than its closed connection.
  QString explained(const QString& error) { return way_.explained(error); }

 private:
  const CaptureOptions options_;
  InsertPlan plan_;
  QVector<CoreRun> runs_;
  HubWay way_;
  std::unique_ptr<HubLink> hub_;
  std::unique_ptr<CoreReader> reader_;
  std::unique_ptr<CaptureRun> run_;
};

}  // namespace ost
