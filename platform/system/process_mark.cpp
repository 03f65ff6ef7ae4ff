// Marks of processes, from what /proc tells about them.
#include "platform/system/process_mark.h"

#include <dirent.h>
#include <fcntl.h>
#include <limits.h>
#include <signal.h>
#include <unistd.h>

#include <QCryptographicHash>
#include <QSysInfo>
#include <cerrno>

#include "platform/system/descriptor.h"
#include "platform/system/files.h"

namespace ost {
namespace {

QByteArray target(const QByteArray& link) {
  char name[PATH_MAX];
  const ssize_t size = readlink(link.constData(), name, sizeof name);
  return size > 0 ? QByteArray(name, int(size)) : QByteArray();
}

/// The file name of a process' program; empty when that may not be seen.
QByteArray programOf(const QByteArray& process) {
  QByteArray path = target("/proc/" + process + "/exe");
  if (path.endsWith(" (deleted)")) path.chop(10);  // the program file was replaced while it runs
  return path.mid(path.lastIndexOf('/') + 1);
}

constexpr qint64 kExiting = 4, kKillPending = 1 << (SIGKILL - 1);  // in the fields of /proc/<pid>/stat

struct ProcessStatus {
  bool ended = false, ending = false;
  qint64 start = 0;
};

bool readStatus(const QByteArray& process, ProcessStatus& status) {
  QByteArray text;
  QString reason;
  if (!readFile(QLatin1String("/proc/" + process + "/stat"), 4096, text, reason)) return false;
  // The program's name, in parentheses, may contain anything.
  const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
  if (fields.size() < 29) return false;
  // A zombie has ended, too, unless only its first thread has.
  status.ended = (fields[0] == "Z" || fields[0] == "X") && fields[17].toInt() <= 1;
  status.ending = (fields[6].toLongLong() & kExiting) || (fields[28].toLongLong() & kKillPending);
  status.start = fields[19].toLongLong();
  return true;
}

/// Gone when no process has that number, or only one that started at another moment (0: at any).
ProcessMark::State stateOf(qint64 pid, qint64 start) {
  if (kill(pid_t(pid), 0) != 0 && errno == ESRCH) return ProcessMark::Gone;
  ProcessStatus status;
  if (!readStatus(QByteArray::number(pid), status)) return ProcessMark::Lives;
  if (status.ended || (start && status.start != start)) return ProcessMark::Gone;
  return status.ending ? ProcessMark::Ending : ProcessMark::Lives;
}

/// Short for where a process counts.
QByteArray placeTag(const ProcessMark& mark) {
  const QByteArray place = mark.host + '\n' + mark.machine + '\n' + mark.pidSpace;
  return QCryptographicHash::hash(place, QCryptographicHash::Sha256).toHex().left(8);
}

bool isTagOfGone(const QByteArray& tag, const QByteArray& place) {
  const QList<QByteArray> parts = tag.split('-');
  // Earlier versions wrote the number alone.
  if (parts.size() > 1 && (parts.size() < 3 || parts[2] != place)) return false;
  bool isPid = false, isStart = parts.size() == 1;
  const qint64 pid = parts[0].toInt(&isPid), start = isStart ? 0 : parts[1].toLongLong(&isStart);
  return isPid && pid > 0 && isStart && stateOf(pid, start) == ProcessMark::Gone;
}

}  // namespace

ProcessMark ProcessMark::own() {
  ProcessMark mark;
  ProcessStatus status;
  mark.pid = getpid();
  if (readStatus("self", status)) mark.start = status.start;
  mark.program = programOf("self");
  mark.host = QSysInfo::machineHostName().toUtf8();
  mark.machine = QSysInfo::machineUniqueId();
  mark.boot = QSysInfo::bootUniqueId();
  mark.pidSpace = target("/proc/self/ns/pid");
  return mark;
}

QByteArray ProcessMark::text() const {
  QByteArray text;
  for (QByteArray line : {QByteArray::number(pid), program, host, machine, boot, QByteArray::number(start), pidSpace})
    text += line.replace('\n', '?') + '\n';
  return text;
}

bool ProcessMark::read(const QByteArray& text, ProcessMark& mark) {
  const QList<QByteArray> lines = text.split('\n');
  mark = ProcessMark();
  if (lines.size() < 4) return false;  // the third one ended
  bool isPid = false;
  mark.pid = lines[0].toInt(&isPid);
  mark.program = lines[1];
  mark.host = lines[2];
  mark.machine = lines.value(3);
  mark.boot = lines.value(4);
  mark.start = lines.value(5).toLongLong();
  mark.pidSpace = lines.value(6);
  return isPid && mark.pid > 0;
}

ProcessMark::State ProcessMark::state() const {
  const ProcessMark here = own();
  const bool sameHost = host == here.host && machine == here.machine;
  if (!boot.isEmpty() && boot != here.boot) return sameHost && !machine.isEmpty() ? Gone : Elsewhere;
  if (boot.isEmpty() ? host != here.host : !pidSpace.isEmpty() && pidSpace != here.pidSpace) return Elsewhere;
  const State state = stateOf(pid, start);
  // Without the start time, the program shows whether the process is still the same.
  const QByteArray runs = start ? program : programOf(QByteArray::number(pid));
  return runs.isEmpty() || runs == program ? state : Gone;
}

QByteArray ownTag() {
  const ProcessMark mark = ProcessMark::own();
  return QByteArray::number(mark.pid) + '-' + QByteArray::number(mark.start) + '-' + placeTag(mark);
}

bool listFolder(int folder, QList<QByteArray>& names) {
  names.clear();
  // Opened anew, so that every listing starts at the first entry.
  Descriptor again(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  DIR* entries = again.isOpen() ? fdopendir(again.fd()) : nullptr;
  if (!entries) return false;
  again.release();
  errno = 0;
  while (const dirent* entry = readdir(entries)) {
    const QByteArray name = entry->d_name;
    if (name != "." && name != "..") names.append(name);
    errno = 0;
  }
  const int code = errno;
  closedir(entries);
  errno = code;
  return code == 0;
}

QList<QByteArray> leftBehind(int folder, const QByteArray& prefix) {
  const QByteArray place = placeTag(ProcessMark::own());
  QList<QByteArray> all, left;
  listFolder(folder, all);
  for (const QByteArray& name : all)
    if (name.startsWith(prefix) && isTagOfGone(name.mid(prefix.size()), place)) left.append(name);
  return left;
}

}  // namespace ost
