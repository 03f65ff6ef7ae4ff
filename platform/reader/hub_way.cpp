// The connection stands on the simulation, when there is one.
#include "platform/reader/hub_way.h"

namespace ost {
namespace {

constexpr double kConnectSeconds = 10;  ///< For a server to come up.
constexpr double kEndSeconds = 1;       ///< For the end of a simulation to be known, once its pins are gone.

}  // namespace

bool HubWay::open(QString& error) {
  const TapChoice choice = {options_.place, kHubIdcode};
  if (options_.command.isEmpty()) {
    connected_ = connectTap(options_.server, choice, kConnectSeconds, error);
  } else {
    simulation_ = Simulation::start(options_.command, options_.logFile, error);
    if (simulation_) connected_ = simulation_->connect(choice, kConnectSeconds, error);
  }
  return bool(connected_.tap);
}

QString HubWay::explained(const QString& error) {
  const bool broken = connected_.connection && connected_.connection->isBroken();
  return simulation_ && broken && simulation_->hasEnded(kEndSeconds) ? simulation_->endText() : error;
}

bool HubWay::close(QString& error) {
  connected_ = ConnectedTap();
  return !simulation_ || simulation_->finish(error);
}

}  // namespace ost
