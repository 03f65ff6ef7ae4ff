// The design flags behind RTLHierachy.
#include "platform/istdata/design_flags.h"

namespace {

ost::DesignFlags& current() {
  static ost::DesignFlags flags;
  return flags;
}

}  // namespace

namespace ost {

void setDesignFlags(const DesignFlags& flags) {
  current() = flags;
}

}  // namespace ost

namespace mero {
namespace ostrel {

bool RTLHierachy::getDCUFlag() {
  return current().dcu;
}
bool RTLHierachy::getJ2WFlag() {
  return current().j2w;
}
bool RTLHierachy::getJtag2WBFlag() {
  return current().jtag2wb;
}
bool RTLHierachy::getJtag2WBCore() {
  return current().jtag2wbCore;
}

}  // namespace ostrel
}  // namespace mero
