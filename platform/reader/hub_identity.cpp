// The self-description of each kind of core, as docs/debug-core.md, section 3 lays it out.
#include "platform/reader/hub_identity.h"

#include "platform/plan/core_layout.h"

namespace ost {
namespace {

constexpr int kInfoBits = 256;
constexpr int kFirstKindBit = 128;  ///< The hub's own half comes before it.
constexpr quint32 kMagic = 0x52545350;
constexpr int kContractVersion = 1;

/// A field of a kind's half; they stand one behind the other.
struct InfoField {
  const char* what;
  int bits;
  qint64 map;
};

/// A core of the hub as the map has it.
struct ExpectedCore {
  QString name;
  int refusalBits;
  QVector<InfoField> fields;
};

bool refuse(QString& error, const QString& text) {
  error = text;
  return false;
}

/// One of the fields that must agree.
bool agrees(const QString& coreName, const char* what, quint64 hardware, quint64 map, QString& error) {
  if (hardware == map) return true;
  return refuse(error,
                QStringLiteral("The capture map does not match the loaded design: %1%2 is %3 in the hardware and %4 "
                               "in the map; use the capture map that was written with this design.")
                    .arg(QLatin1String(what), coreName.isEmpty() ? QString() : QStringLiteral(" of core ") + coreName,
                         QString::number(hardware), QString::number(map)));
}

QVector<InfoField> kindField(CoreKind kind) {
  return {{"the kind", 8, int(kind)}};
}

ExpectedCore expected(const PlanCore& core) {
  const CoreLayout layout(core);
  return {core.name, layout.statusBits,
          kindField(CoreKind::LogicAnalyzer) +
              QVector<InfoField>{{"the address width", 8, layout.addressBits},
                                 {"the word width", 16, layout.wordBits},
                                 {"the block size", 8, layout.blockBits},
                                 {"the timestamp width", 8, core.timestampBits},
                                 {"the number of probe bits", 16, core.probeWidth()},
                                 {"the configuration's length", 32, layout.chainBits},
                                 {"the status word's length", 16, layout.statusBits},
                                 {"the number of units", 8, core.units.size()},
                                 {"the number of expressions", 8, core.expressions.size()}}};
}

ExpectedCore expected(const PlanWishbone& wishbone) {
  ExpectedCore core{QStringLiteral("Wishbone master"), kWishboneStatusBits, kindField(CoreKind::WishboneMaster)};
  for (const auto& [bits, value] : wishboneInfo(wishbone)) core.fields.append({"the layout", bits, value});
  return core;
}

ExpectedCore expected(const PlanSerdes& serdes) {
  ExpectedCore core{QStringLiteral("serdes core"), serdes.statusBits(), kindField(CoreKind::SerdesCore)};
  for (const auto& [bits, value] : serdesInfo(serdes)) core.fields.append({"the layout", bits, value});
  return core;
}

/// The half that the hub says of itself, whichever core is asked.
bool checkHub(const HubReply& reply, const InsertPlan& plan, QString& error) {
  const auto field = [&](int first, int bits) { return bitsNumber(reply.payload, first, bits); };
  const quint64 hash = plan.projectHash.toULongLong(nullptr, 16);
  if (!agrees({}, "the magic number", field(0, 32), kMagic, error) ||
      !agrees({}, "the version of the contract", field(32, 16), kContractVersion, error))
    return false;
  if (field(64, 64) != hash)
    return refuse(error,
                  QStringLiteral("The loaded design was built from another project: its hash is %1, the capture map's "
                                 "%2; use the capture map that was written with this design.")
                      .arg(field(64, 64), 16, 16, QLatin1Char('0'))
                      .arg(hash, 16, 16, QLatin1Char('0')));
  return agrees({}, "the number of cores", field(48, 16), quint64(plan.hubCores()), error);
}

bool identifyCore(HubLink& hub, const InsertPlan& plan, int number, const ExpectedCore& core, QString& error) {
  HubCommand command;
  command.op = HubOp::Info;
  command.core = number;
  HubReply reply;
  if (!hub.command(command, QByteArray(), kInfoBits, core.refusalBits, reply, error))
    return number > 0 || !hub.isUnusable()
               ? false
               : refuse(error, QStringLiteral("A JTAG TAP responds, but no debug core behind it does; check that the "
                                              "instrumented design is loaded and the line is undisturbed."));
  if (reply.flags.refused)
    return refuse(error,
                  QStringLiteral("The loaded design has no core number %1 (\"%2\"); use the capture map that was "
                                 "written with this design.")
                      .arg(number)
                      .arg(core.name));
  if (!checkHub(reply, plan, error)) return false;
  int first = kFirstKindBit;
  for (const InfoField& field : core.fields) {
    const quint64 mask = (quint64(1) << field.bits) - 1;
    if (!agrees(core.name, field.what, bitsNumber(reply.payload, first, field.bits), quint64(field.map) & mask, error))
      return false;
    first += field.bits;
  }
  return true;
}

}  // namespace

bool identifyHub(HubLink& hub, const InsertPlan& plan, QString& error) {
  if (!hub.open(error)) return false;
  QVector<ExpectedCore> cores;
  for (const PlanCore& core : plan.cores) cores.append(expected(core));
  if (plan.wishbone) cores.append(expected(*plan.wishbone));
  if (plan.serdes) cores.append(expected(*plan.serdes));
  for (int number = 0; number < cores.size(); ++number)
    if (!identifyCore(hub, plan, number, cores[number], error)) return false;
  return true;
}

}  // namespace ost
