// Console lines of the service, outside numbered messages.
#include "platform/istcomdata/service_private.h"
#include "platform/tclcmdex/host.h"

namespace ost {

void say(const QString& line) {
  tcl_cmdex::TclMsgOutput(tcl_cmdex::currentInterpreter(), (line + QLatin1Char('\n')).toLatin1().constData(), 0);
}

void sayNotes() {
  for (const QString& note : DesignSession::instance().design()->notes()) say(note);
}

}  // namespace ost
