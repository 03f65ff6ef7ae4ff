// Prints the options that `ost_trace trc_option` and `ost_trace trig_option` take, asked from the package itself: its
// help leaves some of them out.
#include <iostream>

#include "commands/trace_options.h"
#include "commands/trigger_options.h"

int main() {
  OptionList trace, trigger;
  generate_trace_option_list(trace);
  generate_trigger_option_list(trigger);
  for (std::size_t i = 0; i < trace.size(); ++i) std::cout << "trc_option " << trace.at(i).name << '\n';
  for (std::size_t i = 0; i < trigger.size(); ++i) std::cout << "trig_option " << trigger.at(i).name << '\n';
}
