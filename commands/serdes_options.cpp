// `ost_serdes set`: the clock and the reset of the serdes debug core.
#include "commands/serdes_options.h"

#include "commands/handlers.h"
#include "commands/option_list.h"
#include "framework/command_call.h"
#include "framework/text.h"

using mero::ostrel::IstComData;
using mero::ostrel::istSerdesCore;
using mero::ostrel::RTLHierachy;
using namespace ost_command;

namespace {

bool designTakesSerdes(IstComData& service) {
  RTLHierachy* design = service.hierarchy();
  if (!design) return false;
  const bool j2w = design->getJ2WFlag();
  const bool dcu = design->getDCUFlag();
  return dcu && !j2w;
}

void setSerdesOption(IstComData& service, const std::string& typedName, const std::string& typedValue) {
  const QString name = toServiceTrimmed(typedName).toLower();
  QString value = toServiceTrimmed(typedValue);
  const bool isClock = name == QLatin1String("clk");
  if ((!isClock && name != QLatin1String("rst")) || value.isEmpty())
    return service.PrintMessage("0160", typedName, std::string());
  if (!designTakesSerdes(service)) return service.PrintMessage("0159", std::string(), std::string());
  if (isClock) return service.setSerdesClk(value);
  service.setSerdesReset(value);
}

}  // namespace

void listSerdesOptions(IstComData*, istSerdesCore* core, QString& text) {
  text = QString::fromLatin1("Sample Clock = ");
  text += core->sampleClock;
  text += QLatin1String("Reset Signal = ");
  text += core->resetSignal;
}

int setSerdesOptions(IstComData* data, istSerdesCore*, std::vector<std::pair<std::string, std::string> >& pairs,
                     QString&) {
  for (const std::pair<std::string, std::string>& pair : pairs)
    if (!pair.first.empty()) setSerdesOption(*data, pair.first, pair.second);
  return 0;
}

/// `ost_serdes set [clk=<clock>] [rst=<reset signal>]`
///
/// Result: without words the settings (also while the project is busy), else empty. Refused options never fail the
/// command.
OST_HANDLER(ost_set_serdes_opt) {
  CommandCall call(clientData, interp, argc, argv);
  if (!call.contextIsValid()) return TCL_ERROR;
  if (!call.projectIsOpen()) return TCL_ERROR;
  istSerdesCore* core = call.service().getSerdesCore();
  if (!core) return call.failWith("Serdes debug core is not used in project.");

  QString text;
  if (call.wordCount() == 1) {
    listSerdesOptions(&call.service(), core, text);
    call.setResult(text);
    return TCL_OK;
  }

  if (!call.projectIsIdle()) return TCL_ERROR;
  std::vector<std::pair<std::string, std::string> > pairs;
  for (int i = 1; i < call.wordCount(); ++i) {
    std::string name, value;
    if (splitOptionWord(call.word(i), name, value)) {
      pairs.push_back(std::make_pair(name, value));
    } else {
      call.printNumbered("0163");
    }
  }
  setSerdesOptions(&call.service(), core, pairs, text);
  call.showServiceText(text);
  return TCL_OK;
}
