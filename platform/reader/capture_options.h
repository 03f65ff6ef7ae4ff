// The command line of ost_capture.
#pragma once

#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>

#include "platform/reader/hub_link.h"
#include "platform/jtag/remote_bitbang.h"
#include "platform/reader/run_settings.h"

namespace ost {

/// The command line. Texts and file names are byte text; what was not given is empty.
struct CaptureOptions {
  bool help = false;
  QString mapFile;
  bool hasServer = false;
  ServerAddress server;
  QString core;
  QString position;
  QList<QPair<QString, QString>> changes;  ///< "-set" or "-op" and its assignment, in order of appearance.
  QString expressions;
  int eventCount = 0;  ///< 0: as built.
  int windows = 0;     ///< 0: as built.
  double timeoutSeconds = 10;
  UserInstruction instruction;
  QString vcdFile, csvFile;
  bool wave = false, status = false, info = false;
};

/// False with one text that names the word and the way out.
bool parseCaptureOptions(const QStringList& words, CaptureOptions& options, QString& error);

/// `core` of the options, or the only one. -1 with the choices in `error`.
int chooseCore(const InsertPlan& plan, const CaptureOptions& options, QString& error);

/// Changes the run-time settings of a core as the options say.
bool applyRunOptions(const CaptureOptions& options, RunSettings& settings, QString& error);

/// The help text, with every option.
QString captureUsage();

}  // namespace ost
