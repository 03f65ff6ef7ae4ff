// The checks of the way to the chip, and of a user's wrapper: one module with the ports that ostrel_debug connects.
#include "platform/insert/jtag_wrapper.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include "platform/design/yosys.h"
#include "platform/system/files.h"
#include "platform/system/scratch_file.h"
#include "platform/text/byte_text.h"

namespace ost {
namespace {

constexpr qint64 kMostWrapperBytes = 4 << 20;
constexpr int kSeconds = 60;

struct WrapperPort {
  const char* name;
  bool isOutput, isPin;
};
const WrapperPort kPorts[] = {{"tck", true, false},      {"sel", true, false},      {"capture", true, false},
                              {"shift", true, false},    {"update", true, false},   {"tdi", true, false},
                              {"tdo", false, false},     {"jtag_tck", false, true}, {"jtag_tms", false, true},
                              {"jtag_tdi", false, true}, {"jtag_tdo", true, true}};

class Wrapper {
 public:
  Wrapper(const QString& name, QString& error) : name_(name), error_(error) {}

  bool read(PlanJtag& jtag) {
    QJsonObject ports;
    return readPorts(jtag.wrapper, ports) && checkPorts(ports, jtag.wrapperPins);
  }

 private:
  bool fail(const QString& what) {
    error_ = QStringLiteral("The JTAG wrapper \"%1\" %2").arg(name_, what);
    return false;
  }

  bool readPorts(QByteArray& verilog, QJsonObject& ports) {
    QString reason;
    if (!readFile(fileFromText(name_), kMostWrapperBytes, verilog, reason))
      return fail(QStringLiteral("cannot be read (%1); name a Verilog file, or pins, bscane2 or gw_jtag.").arg(reason));
    ScratchFile source, netlist;
    if (!source.open(reason) || !source.write(verilog, reason) || !netlist.open(reason)) {
      error_ = reason;
      return false;
    }
    YosysJob job;
    job.script.line("read_verilog -nodpi -lib").openFile(0).line("write_json").openFile(1);
    job.files = {source.fd(), netlist.fd()};
    job.timeLimitSeconds = kSeconds;
    const YosysResult run = runYosys(job);
    if (!run.ok) return fail(QStringLiteral("is no Verilog that can be read: %1").arg(run.error));
    QByteArray json;
    if (!netlist.hasRoom(reason) || !readOpenFile(netlist.fd(), kMostWrapperBytes * 16, json, reason))
      return fail(QStringLiteral("could not be checked: %1").arg(reason));
    const QJsonObject modules = QJsonDocument::fromJson(json).object().value(QLatin1String("modules")).toObject();
    if (!modules.contains(QLatin1String("ostrel_jtag")))
      return fail(QStringLiteral("has no module \"ostrel_jtag\"; give the wrapper that name."));
    ports = modules.value(QLatin1String("ostrel_jtag")).toObject().value(QLatin1String("ports")).toObject();
    return true;
  }

  bool checkPorts(const QJsonObject& ports, bool& hasPins) {
    hasPins = ports.contains(QLatin1String("jtag_tck"));
    int known = 0;
    for (const WrapperPort& wanted : kPorts) {
      if (wanted.isPin && !hasPins) continue;
      const QString name = QLatin1String(wanted.name);
      const QJsonObject port = ports.value(name).toObject();
      const bool good =
          port.value(QLatin1String("direction")).toString() == QLatin1String(wanted.isOutput ? "output" : "input") &&
          port.value(QLatin1String("bits")).toArray().size() == 1;
      if (!good)
        return fail(QStringLiteral("needs the %1 \"%2\" of one bit at its module \"ostrel_jtag\"; add it.")
                        .arg(QLatin1String(wanted.isOutput ? "output" : "input"), name));
      ++known;
    }
    if (known == ports.size()) return true;
    QStringList others = ports.keys();
    for (const WrapperPort& wanted : kPorts)
      if (!wanted.isPin || hasPins) others.removeAll(QLatin1String(wanted.name));
    return fail(QStringLiteral("has the port \"%1\", which nothing connects; remove it (the pins jtag_tck, jtag_tms, "
                               "jtag_tdi and jtag_tdo come together or not at all).")
                    .arg(textFromUnicode(others.first())));
  }

  QString name_;
  QString& error_;
};

}  // namespace

bool planJtag(const JtagWords& words, PlanJtag& jtag, QString& error) {
  PlanJtag result;
  const int known = words.way.isEmpty() ? 0 : jtagWayWords().indexOf(words.way);
  result.way = known < 0 || known >= int(JtagWay::Wrapper) ? JtagWay::Wrapper : JtagWay(known);
  if (!words.period.isEmpty()) result.periodNs = words.period.toDouble();
  if (!words.chain.isEmpty()) {
    result.chain = words.chain.toInt();
    if (!result.isPrimitive()) {
      error = QStringLiteral("Only bscane2 and gw_jtag have chains; leave out -chain.");
      return false;
    }
    if (result.chain > result.chains()) {
      error =
          QStringLiteral("The primitive %1 has the chains 1 to %2; change -chain.").arg(words.way).arg(result.chains());
      return false;
    }
  }
  if (result.way == JtagWay::Wrapper && !Wrapper(words.way, error).read(result)) return false;
  jtag = result;
  return true;
}

}  // namespace ost
