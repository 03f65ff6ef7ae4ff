// What the fuzz drivers share: a seeded source of choices, a mutator of texts, and the loop that runs cases under
// limits. A case is made from its seed alone, so that a failing one can be run again by that number.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace ost_fuzz {

class Random {
 public:
  explicit Random(std::uint64_t seed) : engine_(seed) {}
  std::uint64_t next() { return engine_(); }
  /// 0 to `count` - 1.
  std::size_t below(std::size_t count) { return count ? std::size_t(next() % count) : 0; }
  bool oneIn(std::size_t count) { return below(count) == 0; }
  template <class List>
  const auto& pick(const List& list) {
    return list[below(std::size(list))];
  }

 private:
  std::mt19937_64 engine_;
};

/// What a driver throws when something broke its word.
struct Fault : std::runtime_error {
  using std::runtime_error::runtime_error;
};
inline void expect(bool holds, const std::string& text) {
  if (!holds) throw Fault(text);
}

/// The words of a text whose first character stands before each of them.
std::vector<std::string> words(const std::string& text);

/// `text` with a few bytes, tokens or pieces changed, moved, repeated or nested deeply.
std::string mutated(std::string text, Random& random);

/// A word that nobody should type: empty, binary, huge, deeply nested, or made for a shell.
std::string hostileWord(Random& random);

class Driver {
 public:
  virtual ~Driver() = default;
  /// Runs one case and returns the bytes of its input. Throws a Fault.
  virtual std::size_t run(Random& random) = 0;
};

/// Verilog with what the readers treat each in its own way: memories, pads, black boxes, names that need escaping.
extern const char kDesign[];

/// `program [-seconds n] [-cases n] [-seed n]`: runs cases until one of the limits is reached. Returns the exit code;
/// a crash, a case that takes more than 30 s or memory out of proportion ends the process with the case's seed on
/// standard error.
int runCases(const char* name, Driver& driver, int argc, char** argv);

template <class Kind>
int runAs(const char* name, int argc, char** argv) {
  try {
    Kind driver;
    return runCases(name, driver, argc, argv);
  } catch (const Fault& fault) {
    std::fprintf(stderr, "%s cannot start: %s\n", name, fault.what());
    return 2;
  }
}

}  // namespace ost_fuzz
