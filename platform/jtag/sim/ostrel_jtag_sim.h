// The JTAG pins of an instrumented design whose test bench is a C++ program, as Verilator's models have it: what
// ostrel_jtag_sim.v is to a bench in Verilog, with the same commands over the same FIFOs. It needs C++11 and nothing
// else.
//
//   OstrelJtagSim jtag(argc, argv);
//   while (jtag.step(top.ostrel_tdo)) {
//     top.ostrel_tck = jtag.tck;
//     top.ostrel_tms = jtag.tms;
//     top.ostrel_tdi = jtag.tdi;
//     ...  // evaluate, and let half a period of TCK pass for the design's own clocks
//   }
#ifndef OSTREL_JTAG_SIM_H
#define OSTREL_JTAG_SIM_H

#include <cstdio>
#include <cstring>
#include <string>

class OstrelJtagSim {
 public:
  bool tck = false, tms = true, tdi = false, trst = false, srst = false;

  /// Opens `to_sim` and `from_sim` in the folder of the word +ostrel_fifo=DIR, else in `folder`; waits for the reader
  /// to open them, too. When that fails the reason goes to the standard error, and there are no steps.
  OstrelJtagSim(int argc, const char* const* argv, const char* folder = ".") {
    static const char kWord[] = "+ostrel_fifo=";
    std::string place = folder;
    for (int i = 1; i < argc; ++i)
      if (std::strncmp(argv[i], kWord, sizeof kWord - 1) == 0) place = argv[i] + sizeof kWord - 1;
    commands_ = open(place + "/to_sim", "rb");
    if (commands_) replies_ = open(place + "/from_sim", "wb");
  }
  ~OstrelJtagSim() {
    if (commands_) std::fclose(commands_);
    if (replies_) std::fclose(replies_);
  }
  OstrelJtagSim(const OstrelJtagSim&) = delete;
  OstrelJtagSim& operator=(const OstrelJtagSim&) = delete;

  /// Reads commands up to the next levels of TCK, TMS and TDI, or of the resets, and replies with `tdo` to those that
  /// ask for it. False when the reader has left: the end of the simulation.
  bool step(bool tdo) {
    while (replies_) {
      const int command = std::fgetc(commands_);
      if (command == EOF || command == 'Q') break;
      if (command >= '0' && command <= '7') {
        tck = command & 4;
        tms = command & 2;
        tdi = command & 1;
        return true;
      }
      if (command >= 'r' && command <= 'u') {
        trst = (command - 'r') & 2;
        srst = (command - 'r') & 1;
        return true;
      }
      if (command == 'R' && (std::fputc(tdo ? '1' : '0', replies_) == EOF || std::fflush(replies_) != 0)) break;
    }
    return false;
  }

 private:
  static std::FILE* open(const std::string& name, const char* mode) {
    std::FILE* const file = std::fopen(name.c_str(), mode);
    if (!file)
      std::fprintf(stderr, "ostrel_jtag_sim: cannot open '%s'; make the FIFO with mkfifo first.\n", name.c_str());
    return file;
  }

  std::FILE* commands_ = nullptr;
  std::FILE* replies_ = nullptr;
};

#endif
