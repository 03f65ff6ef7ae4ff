// The one design that is loaded in this process, and the options of `ost_design` that outlive a read.
#pragma once

#include <QString>
#include <functional>
#include <memory>

#include "framework/ist_com_data.h"
#include "platform/design/design.h"

namespace ost {

/// What is said wherever a design is needed and none is loaded: one sentence.
ISTCOMDATA_API QString noDesignText();

/// Whether an insertion is followed by a proof.
enum class ProofMode {
  Off,
  On,      ///< Modules for which the proof comes to no end are named.
  Strict,  ///< They fail the insertion.
};
/// From "on", "off", "strict" or a word that means on or off, in any case. False for another one.
ISTCOMDATA_API bool proofModeFromWord(const QByteArray& word, ProofMode& mode);

class ISTCOMDATA_API DesignSession {
 public:
  static DesignSession& instance();

  /// Null when no design is loaded.
  std::shared_ptr<const Design> design() const;

  /// Reads and makes current; on failure the design before stays. Sources that are already loaded and have not changed
  /// are not read again. `idle` takes the place of the session's hook for this read. Refused while a read is under way.
  bool read(const DesignSource& source, QString& error, const std::function<bool()>& idle = {});
  bool isReading() const;
  /// The design named by $OST_DESIGN (a Yosys JSON netlist, or a file list), when none is loaded yet.
  bool readFromEnvironment(QString& error);
  /// Reads again when a source file has changed. True when the design in force is up to date.
  bool refresh(QString& error);
  void close();

  /// As `ost_design prove` said last, or $OST_PROVE; false when only that was set, and to a word that means nothing.
  bool proofMode(ProofMode& mode, QString& error) const;
  void setProofMode(ProofMode mode);

  /// The way to the chip as `ost_design jtag` says, else as the design was read; a wrapper's name is absolute.
  JtagWords jtag() const;
  void setJtag(const JtagWords& words);

  /// Called while Yosys runs; set by the service. Returning false cancels the read.
  void setIdleHook(std::function<bool()> hook);

 private:
  DesignSession();
  ~DesignSession();
  struct Private;
  std::unique_ptr<Private> d;
};

}  // namespace ost
