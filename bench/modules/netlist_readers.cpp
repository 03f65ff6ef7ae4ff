// Reads one elaborated netlist with both readers, and as a tree of JSON values in place of them, and prints a line for
// each: its name, processor time in seconds, and the bytes of heap that it holds afterwards. Usage: netlist_readers
// FILE TOP (the top's name as the file writes it).
#include <malloc.h>
#include <rapidjson/document.h>

#include <QFile>
#include <cstdio>
#include <ctime>
#include <memory>
#include <vector>

#include "platform/design/name_index.h"
#include "platform/netlist/module_index.h"
#include "platform/netlist/netlist_text.h"

namespace {

std::size_t heapInUse() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

/// Prints what `read` takes, which returns whatever it made, or null on failure.
template <class Read>
bool measure(const char* what, const Read& read) {
  const std::size_t heap = heapInUse();
  const std::clock_t begin = std::clock();
  const auto made = read();
  const double seconds = double(std::clock() - begin) / CLOCKS_PER_SEC;
  if (made) std::printf("%s %.6f %zu\n", what, seconds, heapInUse() - heap);
  return made != nullptr;
}

}  // namespace

int main(int argc, char** argv) {
  QFile file(QFile::decodeName(argc == 3 ? argv[1] : ""));
  if (argc != 3 || !file.open(QIODevice::ReadOnly)) {
    std::fputs("usage: netlist_readers FILE TOP\n", stderr);
    return 2;
  }
  QString error;
  ost::NetlistText text;
  const bool done =
      measure("outline", [&] { return text.open(file.handle(), argv[2], error) ? &text : nullptr; }) &&
      measure("one_module", [&] { return std::make_unique<ost::ModuleIndex>(text, text.module(text.top())); }) &&
      measure("all_modules",
              [&] {
                auto all = std::make_unique<std::vector<std::unique_ptr<ost::ModuleIndex>>>();
                for (const ost::NetlistModule& module : text.modules())
                  all->push_back(std::make_unique<ost::ModuleIndex>(text, module));
                return all;
              }) &&
      measure("tree",
              [&] {
                auto tree = std::make_unique<rapidjson::Document>();
                tree->Parse(text.text().data(), text.text().size());
                return tree->HasParseError() ? nullptr : std::move(tree);
              }) &&
      measure("names", [&] {
        auto index = std::make_unique<ost::NameIndex>();
        const bool read = ost::readNameIndex(file.handle(), QFile::decodeName(argv[1]), *index, error) &&
                          index->complete(argv[2], error);
        return read ? std::move(index) : nullptr;
      });
  if (!done) std::fprintf(stderr, "netlist_readers: %s\n", error.toLatin1().constData());
  return done ? 0 : 1;
}
