// Prints tables of the program for the documentation: `live_tables options`, the options that `ost_trace trc_option`
// and `ost_trace trig_option` take (the help leaves some of them out) and those of the Wishbone master, and
// `live_tables rules`, the design rules.
#include <iomanip>
#include <iostream>
#include <string>

#include "commands/trace_options.h"
#include "commands/trigger_options.h"
#include "commands/wishbone_options.h"
#include "platform/rules/rule_table.h"

namespace {

void printOptions() {
  OptionList trace, trigger, wishbone;
  generate_trace_option_list(trace);
  generate_trigger_option_list(trigger);
  generate_wbone_option_list(wishbone);
  for (std::size_t i = 0; i < trace.size(); ++i) std::cout << "trc_option " << trace.at(i).name << '\n';
  for (std::size_t i = 0; i < trigger.size(); ++i) std::cout << "trig_option " << trigger.at(i).name << '\n';
  for (std::size_t i = 0; i < wishbone.size(); ++i) std::cout << "ost_set_wbone_opt " << wishbone.at(i).name << '\n';
}

void printRules() {
  std::cout << "| rule | severity | what is wrong | way out |\n|---|---|---|---|\n";
  for (const ost::RuleRow& row : ost::ruleTable())
    std::cout << "| DRC-" << std::setw(2) << std::setfill('0') << int(row.rule) << " | "
              << (row.severity == ost::Finding::Error ? "error" : "warning") << " | " << row.condition << " | `"
              << row.wayOut << "` |\n";
}

}  // namespace

int main(int argc, char** argv) {
  const std::string table = argc == 2 ? argv[1] : "";
  if (table == "options") {
    printOptions();
  } else if (table == "rules") {
    printRules();
  } else {
    std::cerr << "usage: live_tables options|rules\n";
    return 2;
  }
  return std::cout.flush() ? 0 : 1;
}
