// Choices, mutations, and the loop over the cases.
#include "tests/fuzz/fuzz.h"

#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>

extern "C" void __sanitizer_set_death_callback(void (*callback)()) __attribute__((weak));

namespace ost_fuzz {
namespace {

constexpr unsigned kCaseSeconds = 30;

char current[160];  // "driver: -seed N -cases 1", for the last words of a crashing process.

void sayCurrent() {
  if (write(STDERR_FILENO, current, std::strlen(current)) < 0) _exit(99);
}

void onSignal(int number) {
  sayCurrent();
  const char* text = number == SIGALRM ? "  the case takes too long\n" : "  crashed\n";
  if (write(STDERR_FILENO, text, std::strlen(text)) < 0) _exit(99);
  signal(number, SIG_DFL);
  raise(number);
}

/// A number of kilobytes from /proc/self/status.
std::size_t statusKilobytes(const char* key) {
  std::size_t value = 0;
  if (FILE* status = std::fopen("/proc/self/status", "r")) {
    char line[200];
    while (std::fgets(line, sizeof line, status))
      if (!std::strncmp(line, key, std::strlen(key))) value = std::strtoull(line + std::strlen(key), nullptr, 10);
    std::fclose(status);
  }
  return value;
}

/// Peak memory of a case, against what its input allows. The sanitizer's own memory would drown it.
class MemoryWatch {
 public:
  MemoryWatch() {
    if (&__sanitizer_set_death_callback) return;
    if (FILE* reset = std::fopen("/proc/self/clear_refs", "w")) {
      watching_ = std::fputs("5", reset) >= 0;
      watching_ &= std::fclose(reset) == 0;
    }
    before_ = statusKilobytes("VmRSS:");
  }
  void check(std::size_t inputBytes) const {
    const std::size_t allowed = 48 * 1024 + inputBytes / 2;  // KB: 48 MB and 512 bytes for each of the input
    const std::size_t peak = watching_ ? statusKilobytes("VmHWM:") : 0;
    expect(peak <= before_ + allowed,
           "took " + std::to_string(peak - before_) + " KB for an input of " + std::to_string(inputBytes) + " bytes");
  }

 private:
  bool watching_ = false;
  std::size_t before_ = 0;
};

}  // namespace

std::uint64_t Random::next() {
  std::uint64_t z = (state_ += 0x9e3779b97f4a7c15u);  // splitmix64
  z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
  z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
  return z ^ (z >> 31);
}

std::string mutated(std::string text, Random& random) {
  static const char* const tokens[] = {
      "-1",    "0",        "4294967296", "2147483647", "-2147483648", "99999999999999999999",
      "1e999", "0.5",      "null",       "true",       "\"\"",        "{}",
      "[]",    "[[",       "}",          "]",          ",",           ":",
      "\"",    "\\",       "\\u0000",    "\\ud800",    "\"x\"",       "\"z\"",
      "\xff",  "\xc3",     "/",          "..",         "&",           "!",
      "->",    "*65537",   "(",          ")",          " ",           "\n",
      "-f ",   "+incdir+", "$",          "//",         "\"modules\"", "\"bits\""};
  for (std::size_t count = 1 + random.below(4); count > 0; --count) {
    const std::size_t at = random.below(text.size() + 1);
    const std::size_t length = random.below(std::min<std::size_t>(text.size() - at, random.oneIn(4) ? 4000 : 40) + 1);
    switch (random.below(9)) {
      case 0:
        if (at < text.size()) text[at] = char(random.next());
        break;
      case 1:
        text.erase(at, length);
        break;
      case 2:
        text.insert(random.below(text.size() + 1), text.substr(at, length));
        break;
      case 3:
        text.insert(at, random.pick(tokens));
        break;
      case 4:
        text.replace(at, length, random.pick(tokens));
        break;
      case 5: {  // the next number becomes another
        const std::size_t digit = text.find_first_of("0123456789", at);
        if (digit == std::string::npos) break;
        const std::size_t end = text.find_first_not_of("0123456789", digit);
        text.replace(digit, (end == std::string::npos ? text.size() : end) - digit,
                     random.oneIn(2) ? std::to_string(random.below(40)) : random.pick(tokens));
        break;
      }
      case 6:
        text.resize(at);
        break;
      case 7: {
        const std::string piece = text.substr(at, length);
        for (std::size_t i = random.below(200); i > 0 && text.size() < 200000; --i) text.insert(at, piece);
        break;
      }
      case 8:
        if (random.oneIn(8)) text.insert(at, std::string(random.below(100000), random.pick("[{(!\\\"#x0 ")));
        break;
    }
  }
  return text;
}

std::string hostileWord(Random& random) {
  static const char* const words[] = {"",
                                      " ",
                                      "-",
                                      "--",
                                      "-core",
                                      "-name",
                                      "=",
                                      "{",
                                      "}",
                                      "{a",
                                      "a}b",
                                      "\"",
                                      "\\",
                                      "\\a ",
                                      "$(touch pwned)",
                                      "`touch pwned`",
                                      "; exec touch pwned",
                                      "[exec touch pwned]",
                                      "|touch pwned",
                                      "../x",
                                      "..",
                                      ".",
                                      "a/../b",
                                      "\n",
                                      "a\nb",
                                      "%s%n",
                                      "*",
                                      "?",
                                      "-1",
                                      "2147483648",
                                      "1e9",
                                      "0x10",
                                      "99999999999999999999",
                                      "caf\xc3\xa9",
                                      "\xc2\x85",
                                      "\xed\xa0\x80",
                                      "\xc0\x80",
                                      "state[",
                                      "state[]",
                                      "state[99999999999]",
                                      "state[1:]",
                                      "<1>",
                                      "<>",
                                      "BUS1<0>",
                                      "/",
                                      "//",
                                      "u1/",
                                      "\\u1/cnt ",
                                      "\x01\x7f",
                                      "module"};
  std::string word = random.pick(words);
  switch (random.below(12)) {
    case 0:
      for (std::size_t i = random.below(40); i > 0; --i) word += char(1 + random.below(255));
      break;
    case 1:
      word.assign(random.below(random.oneIn(10) ? 200000 : 5000), random.pick("a1({[!&x\xff \\"));
      break;
    case 2: {
      const std::size_t depth = random.below(2000);
      word = std::string(depth, '{') + word + std::string(depth, '}');
      break;
    }
    case 3:
      for (std::size_t i = random.below(3000); i > 0; --i) word += " x" + std::to_string(i);
      break;
  }
  return word;
}

int runCases(const char* name, Driver& driver, int argc, char** argv) {
  double seconds = 1e9;
  std::uint64_t cases = UINT64_MAX, seed = 1;
  for (int i = 1; i + 1 < argc; i += 2) {
    const std::string option = argv[i];
    if (option == "-seconds") seconds = std::atof(argv[i + 1]);
    if (option == "-cases") cases = std::strtoull(argv[i + 1], nullptr, 10);
    if (option == "-seed") seed = std::strtoull(argv[i + 1], nullptr, 10);
  }
  for (const int number : {SIGALRM, SIGABRT, SIGSEGV, SIGFPE})
    if (number == SIGALRM || number == SIGABRT || !&__sanitizer_set_death_callback) signal(number, onSignal);
  if (&__sanitizer_set_death_callback) __sanitizer_set_death_callback(sayCurrent);

  const auto start = std::chrono::steady_clock::now();
  const auto spent = [start] {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  };
  double slowest = 0;
  std::uint64_t done = 0, bytes = 0;
  for (; done < cases && spent() < seconds; ++done) {
    std::snprintf(current, sizeof current, "%s: -seed %llu -cases 1", name,
                  static_cast<unsigned long long>(seed + done));
    Random random(seed + done);
    const double begin = spent();
    alarm(kCaseSeconds);
    try {
      const MemoryWatch watch;
      const std::size_t input = driver.run(random);
      watch.check(input);
      bytes += input;
    } catch (const Fault& fault) {
      std::fprintf(stderr, "%s\n  %s\n", current, fault.what());
      return 1;
    }
    alarm(0);
    slowest = std::max(slowest, spent() - begin);
  }
  std::printf("%s: %llu cases from seed %llu, %llu KB of input in %.1f s, the slowest %.2f s\n", name,
              static_cast<unsigned long long>(done), static_cast<unsigned long long>(seed),
              static_cast<unsigned long long>(bytes >> 10), spent(), slowest);
  current[0] = '\0';
  return 0;
}

}  // namespace ost_fuzz
