// One line on a terminal that is written again and again in place. On anything else than a terminal it is silent.
#pragma once

#include <QString>

namespace ost {

class WaitLine {
 public:
  WaitLine();  ///< On the standard error.
  ~WaitLine() { clear(); }

  bool isSeen() const { return isTerminal_; }
  void show(const QString& text);
  void clear();

 private:
  bool isTerminal_;
  bool shown_ = false;
};

/// Columns of the terminal behind the standard output; `otherwise` when it is none.
int terminalColumns(int otherwise);

}  // namespace ost
