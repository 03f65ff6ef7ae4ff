// A capture that a script has read.
#pragma once

#include "platform/ost_capture/sub_commands.h"
#include "platform/reader/capture_search.h"

namespace ost {

class CaptureObject {
 public:
  static constexpr char kName[] = "capture";
  static constexpr char kOwner[] = "CAPTURE";
  static const QVector<SubCommand<CaptureObject>>& table();

  explicit CaptureObject(CaptureSet set) : set_(std::move(set)) {}
  /// Makes the command of a capture; its name is the result.
  static int create(Tcl_Interp* interp, CaptureSet set);
  void commandIsGone() { token_ = nullptr; }

  int info(const SubCall& call);
  int signalNames(const SubCall& call);
  int values(const SubCall& call);
  int timestamps(const SubCall& call);
  int find(const SubCall& call);
  int replay(const SubCall& call);
  int write(const SubCall& call);
  int remove(const SubCall& call);

 private:
  /// The part of a core's capture that a call is about.
  struct Choice {
    const Capture* capture = nullptr;
    SearchRange range;  ///< Within the window.
  };

  /// Reads `words`: -core, -window, -from, -to and the other options of `use`. On failure the interpreter has the
  /// error.
  bool choose(const SubCall& call, QStringList words, OptionUse use, CaptureOptions& options, Choice& choice);
  bool chooseCore(const QString& name, Choice& choice, QString& error) const;

  CaptureSet set_;
  Tcl_Command token_ = nullptr;
};

}  // namespace ost
