// Carriage return, text, and the rest of the line erased (ECMA-48, "EL").
#include "platform/reader/wait_line.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>

namespace ost {
namespace {

constexpr int kFewestColumns = 40;
constexpr int kMostColumns = 1000;

int columnsOf(int fd, int otherwise) {
  winsize size = {};
  if (!isatty(fd) || ioctl(fd, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return otherwise;
  return qBound(kFewestColumns, int(size.ws_col), kMostColumns);
}

}  // namespace

int terminalColumns(int otherwise) {
  return columnsOf(STDOUT_FILENO, otherwise);
}

WaitLine::WaitLine() : isTerminal_(isatty(STDERR_FILENO) == 1) {}

void WaitLine::show(const QString& text) {
  if (!isTerminal_) return;
  const QByteArray line = text.toLatin1().left(columnsOf(STDERR_FILENO, 80) - 1);
  fprintf(stderr, "\r%s\033[K", line.constData());
  fflush(stderr);
  shown_ = true;
}

void WaitLine::clear() {
  if (!shown_) return;
  fputs("\r\033[K", stderr);
  fflush(stderr);
  shown_ = false;
}

}  // namespace ost
