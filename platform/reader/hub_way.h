// The way to the hub that the command line asks for: through a server, or through a simulation that is started for it.
#pragma once

#include "platform/jtag/simulation.h"
#include "platform/reader/capture_options.h"

namespace ost {

class HubWay {
 public:
  /// `options` must outlive it.
  explicit HubWay(const CaptureOptions& options) : options_(options) {}
  bool open(QString& error);
  /// Lets go of the server, and ends the simulation. False when what that printed could not be stored.
  bool close(QString& error);
  Tap& tap() { return *connected_.tap; }
  Connection& connection() { return *connected_.connection; }
  /// The text for a failure: a simulation that has ended explains it better than its closed connection.
  QString explained(const QString& error);

 private:
  const CaptureOptions& options_;
  std::unique_ptr<Simulation> simulation_;
  ConnectedTap connected_;
};

}  // namespace ost
