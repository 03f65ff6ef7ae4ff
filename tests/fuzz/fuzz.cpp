// Choices, mutations, and the loop over the cases.
#include "tests/fuzz/fuzz.h"

#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>

extern "C" void __sanitizer_set_death_callback(void (*callback)()) __attribute__((weak));

namespace ost_fuzz {
namespace {

constexpr unsigned kCaseSeconds = 30;

char current[160];  // "driver: -seed N -cases 1", for the last words of a crashing process.

void say(const char* text) {
  if (write(STDERR_FILENO, text, std::strlen(text)) < 0) _exit(99);
}

void onSignal(int number) {
  say(current);
  say(number == SIGALRM ? "  the case takes too long\n" : "  crashed\n");
  signal(number, SIG_DFL);
  raise(number);
}

/// No case needs much more memory than is in use at first. (A sanitizer's own would drown it, and has its own limit.)
void limitMemory() {
  rlim_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  const rlimit limit = {pages * rlim_t(sysconf(_SC_PAGESIZE)) + (rlim_t(128) << 20), RLIM_INFINITY};
  if (!&__sanitizer_set_death_callback) expect(setrlimit(RLIMIT_AS, &limit) == 0, "cannot limit the memory");
}

}  // namespace

const char kDesign[] = R"(
module memory(input clk, input [3:0] at, input [7:0] data, input we, output reg [7:0] out);
  reg [7:0] cells [0:15];
  always @(posedge clk) begin if (we) cells[at] <= data; out <= cells[at]; end
endmodule
module pad(inout io, input drive); assign io = drive ? 1'b1 : 1'bz; endmodule
(* blackbox *) module box(input a, output b); endmodule
module lane(input clk, input rst, output reg [3:0] cnt, inout io);
  reg [0:2] \odd/name ;
  always @(posedge clk or posedge rst) if (rst) cnt <= 0; else cnt <= cnt + 1;
  always @(negedge clk) \odd/name <= cnt[2:0];
  pad p(.io(io), .drive(cnt[0]));
endmodule
(* ostrel_role = "dcu" *)
module top(input clk, input rst, input en, inout io, output [7:0] b, output done);
  wire [3:0] state, other;
  lane u1(.clk(clk), .rst(rst), .cnt(state), .io(io));
  lane u2(.clk(clk), .rst(en), .cnt(other), .io());
  memory m(.clk(clk), .at(state), .data({state, other}), .we(rst), .out(b));
  box x(.a(state[0]), .b(done));
endmodule
)";

std::vector<std::string> words(const std::string& text) {
  std::vector<std::string> list;
  for (std::size_t at = 0, end; at < text.size(); at = end) {
    end = std::min(text.find(text[0], at + 1), text.size());
    list.push_back(text.substr(at + 1, end - at - 1));
  }
  return list;
}

std::string mutated(std::string text, Random& random) {
  static const auto tokens = words(
      "~-1~0~4294967296~2147483647~-2147483648~99999999999999999999~1e999~0.5~null~true~\"\"~{}~[]~[[~}~]~,~:~\"~\\"
      "~\\u0000~\\ud800~\"x\"~\"z\"~\xff~\xc3~/~..~&~!~->~*65537~(~)~ ~\n~-f "
      "~+incdir+~$~//~\"modules\"~\"bits\"~\\n!touch pwned\\n"
      "~top\\n!touch pwned~ ; exec -- touch pwned~;");
  static const char* const digits = "0123456789";
  for (std::size_t count = 1 + random.below(4); count > 0; --count) {
    const std::size_t at = random.below(text.size() + 1), how = random.below(9);
    const std::size_t length = random.below(std::min<std::size_t>(text.size() - at, random.oneIn(4) ? 4000 : 40) + 1);
    if (how == 0 && at < text.size()) text[at] = char(random.next());
    if (how == 1) text.erase(at, length);
    if (how == 2) text.insert(random.below(text.size() + 1), text.substr(at, length));
    if (how == 3) text.insert(at, random.pick(tokens));
    if (how == 4) text.replace(at, length, random.pick(tokens));
    const std::size_t digit = text.find_first_of(digits, at);
    if (how == 5 && digit != std::string::npos) {
      const std::size_t end = std::min(text.find_first_not_of(digits, digit), text.size());
      text.replace(digit, end - digit, random.oneIn(2) ? std::to_string(random.below(40)) : random.pick(tokens));
    }
    if (how == 6) text.resize(at);
    if (how == 7) {
      const std::string piece = text.substr(at, length);
      for (std::size_t i = random.below(200); i > 0 && text.size() < 200000; --i) text.insert(at, piece);
    }
    if (how == 8 && random.oneIn(8)) text.insert(at, std::string(random.below(100000), random.pick("[{(!\\\"#x0 ")));
  }
  return text;
}

std::string hostileWord(Random& random) {
  static const auto hostile = words(
      "~~ ~-~--~-core~-name~=~{~}~{a~a}b~\"~\\~\\a ~$(touch pwned)~`touch pwned`~; exec touch pwned~[exec touch pwned]"
      "~|touch pwned~top\n!touch pwned~top ; exec -- touch pwned~!touch "
      "pwned~../x~..~.~a/../b~\n~a\nb~%s%n~*~?~-1~2147483648~1e9~0x10~99999999999999999999~caf\xc3\xa9~\xc2\x85"
      "~\xed\xa0\x80~\xc0\x80~state[~state[]~state[99999999999]~state[1:]~<1>~<>~BUS1<0>~/~//~u1/~\\u1/cnt ~\x01\x7f"
      "~module");
  std::string word = random.pick(hostile);
  const std::size_t how = random.below(12), many = random.below(3000);
  if (how == 0)
    for (std::size_t i = many % 40; i > 0; --i) word += char(1 + random.below(255));
  if (how == 1) word.assign(random.oneIn(10) ? many * 64 : many, random.pick("a1({[!&x\xff \\"));
  if (how == 2) word = std::string(many, '{') + word + std::string(many, '}');
  if (how == 3)
    for (std::size_t i = many; i > 0; --i) word += " x" + std::to_string(i);
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
  if (&__sanitizer_set_death_callback) __sanitizer_set_death_callback([] { say(current); });
  limitMemory();

  const auto start = std::chrono::steady_clock::now();
  const auto spent = [start] {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  };
  double slowest = 0;
  std::uint64_t done = 0, bytes = 0;
  for (; done < cases && spent() < seconds; ++done) {
    std::snprintf(current, sizeof current, "%s: -seed %s -cases 1", name, std::to_string(seed + done).c_str());
    Random random(seed + done);
    const double begin = spent();
    alarm(kCaseSeconds);
    try {
      bytes += driver.run(random);
    } catch (const Fault& fault) {
      std::fprintf(stderr, "%s\n  %s\n", current, fault.what());
      return 1;
    }
    alarm(0);
    slowest = std::max(slowest, spent() - begin);
  }
  std::printf("%s: %s cases from seed %s, %s KB of input in %.1f s, the slowest %.2f s\n", name,
              std::to_string(done).c_str(), std::to_string(seed).c_str(), std::to_string(bytes >> 10).c_str(), spent(),
              slowest);
  current[0] = '\0';
  return 0;
}

}  // namespace ost_fuzz
