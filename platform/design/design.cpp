// The loaded design: reading it through Yosys, and what can be asked of it.
#include "platform/design/design.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <algorithm>
#include <mutex>

#include "platform/design/elaboration.h"
#include "platform/design/list_nets.h"
#include "platform/design/mapped_cells.h"
#include "platform/design/name_index.h"
#include "platform/design/serdes_blocks.h"
#include "platform/design/source_plan.h"
#include "platform/design/source_stamp.h"
#include "platform/system/files.h"
#include "platform/text/byte_text.h"
#include "platform/text/near_names.h"

namespace ost {

struct Design::Private {
  DesignSource source;
  QString workingDirectory;
  std::unique_ptr<SourcePlan> plan;
  NameIndex index;
  DesignRoles roles;
  QStringList notes;
  int usedModules = 0;
  mutable std::mutex stampLock;
  mutable std::vector<SourceStamp> stamps;
  QByteArray digest;

  const ModuleEntry& top() const { return index.modules[size_t(index.top)]; }

  bool load(QString& error, const std::function<bool()>& idle);
  bool loadNetlist(QString& error);
  void readRoles();
};

bool Design::Private::load(QString& error, const std::function<bool()>& idle) {
  plan = SourcePlan::make(source, workingDirectory, error);
  if (!plan) return false;
  // Taken before Yosys reads: a file that changes meanwhile is stale, not missed. Which others it reads is known later.
  const qint64 begin = SourceStamp::now();
  for (const QString& file : plan->files()) stamps.push_back(SourceStamp::take(file));
  Elaboration elaboration(*plan, workingDirectory, idle);
  if ((plan->isNetlist() && !loadNetlist(error)) || !elaboration.run(index, error)) return false;
  notes = elaboration.notes();
  for (const QString& file : plan->files() + elaboration.readFiles()) {
    const auto same = [&file](const SourceStamp& stamp) { return stamp.file == file; };
    if (std::none_of(stamps.begin(), stamps.end(), same)) stamps.push_back(SourceStamp::take(file, begin));
  }

  QCryptographicHash hash(QCryptographicHash::Sha256);
  const auto addWord = [&hash](const QByteArray& word) { hash.addData(QByteArray::number(word.size()) + ':' + word); };
  addWord(top().key);
  const DesignSource& words = plan->source();
  for (const QString& define : words.defines) addWord(define.toLatin1());
  addWord("black boxes");
  for (const QString& module : words.blackBoxes) addWord(module.toLatin1());
  for (const QString& parameter : words.parameters) addWord("parameter " + parameter.toLatin1());
  for (const QString& word : {words.cells, words.systemVerilog, words.vhdlStandard})
    if (!word.isEmpty()) addWord("option " + word.toLatin1());
  for (const SourceStamp& stamp : stamps) addWord(stamp.hash);
  digest = hash.result().toHex();

  for (const ModuleEntry& module : index.modules) usedModules += module.used;
  readRoles();
  return true;
}

bool Design::Private::loadNetlist(QString& error) {
  QString reason;
  const Descriptor file = openRegular(plan->files().first(), SourcePlan::kMaxFileBytes, reason);
  if (!file.isOpen()) {
    error = QStringLiteral("Cannot read \"%1\": %2").arg(plan->firstFileAsTyped(), reason);
    return false;
  }
  if (!readNameIndex(file.fd(), plan->firstFileAsTyped(), index, error) ||
      !index.complete(source.top.toLatin1(), error))
    return false;
  plan->setTop(top().key);
  if (YosysScript::isName(yosysId(top().key))) return true;
  error = QStringLiteral("\"%1\" cannot be the name of the top module").arg(textFromBytes(top().key));
  return false;
}

void Design::Private::readRoles() {
  for (const ModuleEntry& module : index.modules) {
    if (!module.used || module.roles.isEmpty()) continue;
    for (const QByteArray& word : roleWords(module)) {
      roles.dcu |= word == "dcu";
      roles.j2w |= word == "j2w";
      roles.jtag2wb |= word == "jtag2wb";
      roles.jtag2wbCore |= word == "jtag2wb_core";
    }
  }
}

Design::Design() : d(new Private) {}
Design::~Design() = default;

std::shared_ptr<const Design> Design::read(const DesignSource& source, QString& error,
                                           const std::function<bool()>& idle, const QString& workingDirectory) {
  std::shared_ptr<Design> design(new Design);
  design->d->source = source;
  design->d->workingDirectory = workingDirectory.isEmpty() ? QDir::currentPath() : workingDirectory;
  if (!design->d->load(error, idle)) {
    error = oneLine(error);  // File names and the like may hold anything; a text is one line.
    return nullptr;
  }
  return design;
}

const DesignSource& Design::source() const {
  return d->source;
}
const JtagWords& Design::jtag() const {
  return d->plan->source().jtag;
}
QString Design::workingDirectory() const {
  return d->workingDirectory;
}

QString Design::topModule() const {
  return textFromBytes(sourceName(d->top().key));
}
QString Design::topKey() const {
  return textFromBytes(d->top().key);
}

QStringList Design::blackBoxes() const {
  QStringList names;
  for (const ModuleEntry& module : d->index.modules)
    if (module.used && module.bodyless) names.append(textFromBytes(sourceName(module.key)));
  return names;
}
const QStringList& Design::notes() const {
  return d->notes;
}

const DesignRoles& Design::roles() const {
  return d->roles;
}
int Design::moduleCount() const {
  return d->usedModules;
}
int Design::instanceCount() const {
  return static_cast<int>(qMin<qint64>(d->top().instancesBelow, std::numeric_limits<int>::max()));
}
qint64 Design::netCount() const {
  return d->top().netsBelow;
}
qint64 Design::netBitCount() const {
  return d->top().bitsBelow;
}

bool Design::resolve(const QString& name, NetSelection& selection, QString& error) const {
  const QByteArray typed = name.toLatin1();
  NameHit hit;
  if (!findName(d->index, std::string_view(typed.constData(), size_t(typed.size())), hit, &error)) {
    error += nearHint(nearest(name));
    return false;
  }
  const NetEntry& net = *hit.net;
  const qint64 last = qint64(net.offset) + net.width - 1;
  if (!hit.selected) {
    hit.left = net.upto ? net.offset : qint32(last);
    hit.right = net.upto ? qint32(last) : net.offset;
  }
  NetSelection found;
  found.instancePath = textFromBytes(joinPath(d->index, hit.path));
  found.module = textFromBytes(hit.module->key);
  found.net = textFromBytes(yosysKey(d->index.view(net.name)));
  found.netWidth = net.width;
  found.wholeName = net.wholeName;
  if (net.enumType >= 0) found.enumNames = d->index.enumTypes[size_t(net.enumType)];
  const qint32 step = hit.left <= hit.right ? 1 : -1;
  for (qint64 index = hit.left;; index += step) {
    const qint64 place = index - net.offset;
    found.bits.append(int(net.upto ? net.width - 1 - place : place));
    found.bitNames.append(
        textFromBytes(fullName(d->index, hit, net.width == 1 ? QByteArray() : '[' + QByteArray::number(index) + ']')));
    if (index == hit.right) break;
  }
  found.isVector = found.bits.size() > 1;
  if (found.bits.size() == net.width && net.width > 1) {
    found.canonicalName = textFromBytes(fullName(d->index, hit, QByteArray()));
  } else if (found.isVector) {
    found.canonicalName = textFromBytes(
        fullName(d->index, hit, '[' + QByteArray::number(hit.left) + ':' + QByteArray::number(hit.right) + ']'));
  } else {
    found.canonicalName = found.bitNames.first();
  }
  selection = std::move(found);
  return true;
}

bool Design::exists(const QString& name) const {
  const QByteArray typed = name.toLatin1();
  NameHit hit;
  return findName(d->index, std::string_view(typed.constData(), size_t(typed.size())), hit, nullptr);
}

bool Design::hasInstance(const QString& name) const {
  const QByteArray typed = name.toLatin1();
  return d->index.findInstance(d->top(), std::string_view(typed.constData(), size_t(typed.size()))) != nullptr;
}

QStringList Design::nearest(const QString& name, int count) const {
  return nearestNames(d->index, name.toLatin1(), count);
}

namespace {

/// Visits the nets of `hit.module` in the instance at `hit.path`. False when `visit` has returned false.
bool forEachNetOf(const NameIndex& index, NameHit& hit, const std::function<bool(const NetName&)>& visit) {
  const QByteArray path = joinPath(index, hit.path);
  for (const NetEntry& net : hit.module->nets) {
    hit.net = &net;
    QByteArray name;
    if (index.slashNames) {
      name = fullName(index, hit, QByteArray());
    } else {
      name = (path.isEmpty() ? path : path + '/') + index.bytes(net.name);
    }
    if (!visit(NetName{textFromBytes(name), net.width})) return false;
  }
  return true;
}

}  // namespace

bool Design::levelAt(const QString& path, DesignLevel& level) const {
  NameHit hit;
  hit.module = &d->top();
  for (const QString& component : instancePathKeys(path)) {
    const QByteArray key = component.toLatin1();
    const std::string_view name(key.constData(), size_t(key.size()));
    const InstanceEntry* instance = d->index.findInstance(*hit.module, name[0] == '\\' ? name.substr(1) : name);
    if (!instance) return false;
    hit.path.push_back(instance);
    hit.module = &d->index.modules[size_t(instance->module)];
  }
  const ModuleEntry& module = *hit.module;
  forEachNetOf(d->index, hit, [&level](const NetName& net) {
    level.nets.push_back(net);
    return true;
  });
  for (const InstanceEntry& instance : module.instances) {
    hit.path.push_back(&instance);
    level.instances.push_back({textFromBytes(joinPath(d->index, hit.path)),
                               textFromBytes(sourceName(d->index.modules[size_t(instance.module)].key))});
    hit.path.pop_back();
  }
  return true;
}

void Design::forEachNet(const std::function<bool(const NetName&)>& visit) const {
  listNets(d->index, visit);
}

QVector<SerdesBlock> Design::serdesBlocks(int most) const {
  return findSerdesBlocks(d->index, most);
}

QStringList Design::dependencies() const {
  QStringList names;
  for (const SourceStamp& stamp : d->stamps) names.append(textFromFile(stamp.file));
  return names;
}

bool Design::isStale() const {
  const std::lock_guard<std::mutex> lock(d->stampLock);
  for (SourceStamp& stamp : d->stamps) {
    if (!stamp.holds()) return true;
  }
  return false;
}

QByteArray Design::digest() const {
  return d->digest;
}

YosysScript Design::elaborationScript() const {
  QList<QByteArray> boxes = d->index.unknownTypes.toList();
  for (const ModuleEntry& module : d->index.modules)
    if (module.used && module.bodyless) boxes.append(module.key);
  return plainCellsScript(d->plan->hierarchyScript(true), d->plan->isNetlist(), boxes);
}

}  // namespace ost
