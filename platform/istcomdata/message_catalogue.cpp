// The texts behind the message codes, and how their arguments are filled in.
#include "platform/istcomdata/message_catalogue.h"

#include "framework/ist_com_data.h"
#include "platform/istcomdata/service_private.h"

namespace ost {

namespace {

const CatalogueMessage kMessages[] = {
    // Projects
    {"0100", "ERROR: The project file \"%1\" could not be opened."},
    {"0101", "ERROR: No project is open, so there is none to close."},
    {"0102",
     "ERROR: The project has unsaved changes. Save it (ost_project save) or drop them (ost_project close -force)."},
    {"0103", "ERROR: The project could not be closed%r"},
    {"0104", "ERROR: The file \"%1\" exists. Choose another name, or give -overwrite to replace it."},
    {"0105", "ERROR: The new project%q could not be created; nothing was changed."},
    {"0106", "ERROR: The project could not be saved%r"},
    {"0107", "WARNING: There is no core \"%1\" to insert; ost_core list shows the cores. The run goes on without it."},
    {"0108", "ERROR: The project has no file yet. Name one: ost_project run -saveAs <file>."},
    {"0109", "Run finished."},
    // Cores
    {"0110", "ERROR: The core could not be added or deleted%r"},
    {"0112", "ERROR: There is no core \"%1\"; ost_core list shows the cores."},
    {"0113", "ERROR: The core could not be renamed%r"},
    {"0114", "ERROR: The Wishbone master could not be added."},
    {"0115", "ERROR: The Wishbone master could not be removed%r"},
    // Trace signals
    {"0116", "ERROR: The trace signals could not be added or moved; nothing was changed."},
    {"0118", "ERROR: The trace signals could not be deleted; nothing was changed."},
    {"0119", "ERROR: The trace signals could not be grouped; nothing was changed."},
    {"0120", "ERROR: The bus could not be renamed."},
    // Trace options
    {"0121", "ERROR: SampleEnable is on or off, not \"%1\"."},
    {"0122", "ERROR: SampleEnableSig needs SampleEnable=on."},
    {"0123", "ERROR: SampleEnablePri needs SampleEnable=on."},
    {"0124", "ERROR: SampleEnablePri is Active_High or Active_Low, not \"%1\"."},
    {"0125", "ERROR: \"%2\" is not a valid BufferDepth; use one of %1"},
    {"0126", "ERROR: Implementation is EBR or DRAM, not \"%1\"."},
    {"0127", "ERROR: Timestamp is on or off, not \"%1\"."},
    {"0128", "ERROR: TimestampBits needs Timestamp=on."},
    {"0129", "ERROR: With this BufferDepth, TimestampBits must be from %1%2\"."},
    {"0130", "ERROR: CaptureMode is single or multiple, not \"%1\"."},
    {"0131", "ERROR: MinimumSamplesPerTrigger needs CaptureMode=multiple."},
    {"0132", "ERROR: \"%2\" is not a valid MinimumSamplesPerTrigger for this BufferDepth; use one of %1"},
    {"0133", "ERROR: IncludeTrigger is on or off, not \"%1\"."},
    {"0134", "ERROR: TriggerEnable is on or off, not \"%1\"."},
    {"0135", "ERROR: TriggerEnableSig needs TriggerEnable=on."},
    {"0136", "ERROR: TriggerEnablePri needs TriggerEnable=on."},
    {"0137", "ERROR: TriggerEnablePri is Active_High or Active_Low, not \"%1\"."},
    {"0138", "ERROR: NumberofTriggers needs CaptureMode=multiple."},
    {"0139", "ERROR: NumberofTriggers needs TriggerEnable=on."},
    {"0140",
     "ERROR: \"%2\" is not a valid NumberofTriggers for this BufferDepth and MinimumSamplesPerTrigger; use one of %1"},
    // Trigger options
    {"0141", "ERROR: DefaultRadix is bin, oct, dec or hex, not \"%1\"."},
    {"0142", "ERROR: EventCounter is on or off, not \"%1\"."},
    {"0143", "ERROR: CounterValue needs EventCounter=on."},
    {"0144", "ERROR: CounterValue is a number from 2 to 65536, not \"%1\"."},
    {"0145", "ERROR: TriggerOut is on or off, not \"%1\"."},
    {"0146", "ERROR: OutNetType needs TriggerOut=on."},
    {"0147", "ERROR: OutNetType is IO, NET or BOTH, not \"%1\"."},
    {"0148", "ERROR: OutNetName needs TriggerOut=on."},
    {"0149", "ERROR: OutNetName is empty; give the new net a name."},
    {"0150",
     "ERROR: \"%1\" is not a valid OutNetName; use letters, digits and underscores, not beginning with a digit, and no "
     "Verilog "
     "keyword."},
    {"0151", "ERROR: OutNetName \"%1\" is too long; at most 255 characters are allowed."},
    {"0152", "ERROR: OutNetPri needs TriggerOut=on."},
    {"0153", "ERROR: OutNetPri is Active_High or Active_Low, not \"%1\"."},
    {"0154", "ERROR: OutNetMPW needs TriggerOut=on."},
    {"0155", "ERROR: OutNetMPW is a number of samples from 0, not \"%1\"."},
    // Option words
    {"0156", "ERROR: A word among the %1 options has no \"=\"; write <option>=<value>. The word is ignored."},
    {"0157", "ERROR: There is no %1 option \"%2\"; the command's help lists them. The word is ignored."},
    {"0158", "WARNING: The %1 option \"%2\" is given more than once; its last value holds."},
    {"0159", "ERROR: This design does not allow the connection: ostrel_role attributes in the design decide it."},
    {"0160",
     "ERROR: \"%1\" is not accepted here; use clk=<net> or rst=<net> for the serdes core, and true or false for "
     "PerformConnect."},
    {"0161", "ERROR: This Wishbone master is big-endian only; Endian \"%1\" is not possible."},
    {"0162", "ERROR: Endian is big or little, not \"%1\"."},
    {"0163", "ERROR: An option word has no \"=\"; write <option>=<value>. The word is ignored."},
    {"0164", "ERROR: The Wishbone master has the options PerformConnect and Endian only. The word is ignored."},
    {"0165", "WARNING: The option \"%1\" is given more than once; its last value holds."},
    // Serdes core
    {"0166", "ERROR: The serdes core could not be added."},
    {"0167", "ERROR: The serdes core could not be removed%r"},
};

}  // namespace

QList<CatalogueMessage> messageCatalogue() {
  QList<CatalogueMessage> messages;
  for (const CatalogueMessage& message : kMessages) messages << message;
  return messages;
}

QString catalogueText(const QString& code, const QString& arg1, const QString& arg2, const QString& reason) {
  const CatalogueMessage* found = nullptr;
  for (const CatalogueMessage& message : kMessages)
    if (code == QLatin1String(message.code)) found = &message;
  if (!found) return QStringLiteral("Message %1 %2 %3").arg(code, arg1, arg2).trimmed();
  // One pass, so that a "%2" inside an argument stays as it is.
  const QString pattern = QLatin1String(found->text);
  QString text;
  for (int i = 0; i < pattern.size(); ++i) {
    const QChar next = i + 1 < pattern.size() ? pattern[i + 1] : QChar();
    if (pattern[i] != QLatin1Char('%') || !QStringLiteral("12rq").contains(next)) {
      text += pattern[i];
      continue;
    }
    ++i;
    if (next == QLatin1Char('r'))
      text += reason.isEmpty() ? QStringLiteral(".") : QLatin1String(": ") + reason;
    else if (next == QLatin1Char('q'))
      text += arg1.isEmpty() ? QString() : QStringLiteral(" \"%1\"").arg(arg1);
    else
      text += next == QLatin1Char('1') ? arg1 : arg2;
  }
  while (text.endsWith(QLatin1Char('\n'))) text.chop(1);
  return text;
}

}  // namespace ost

namespace mero {
namespace ostrel {

void IstComData::PrintMessage(const std::string& code, std::string arg1, std::string arg2) {
  const auto latin1 = [](const std::string& text) { return QString::fromLatin1(text.data(), int(text.size())); };
  ost::say(ost::catalogueText(latin1(code), latin1(arg1), latin1(arg2), d->reason));
  d->reason.clear();
}

}  // namespace ostrel
}  // namespace mero
