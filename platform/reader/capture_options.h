// The command line of ost_capture.
#pragma once

#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>

#include "platform/jtag/connect_tap.h"
#include "platform/reader/capture_view.h"
#include "platform/reader/hub_link.h"
#include "platform/reader/output_files.h"
#include "platform/reader/vcd_writer.h"
#include "platform/reader/wishbone_command.h"

namespace ost {

/// The command line. Texts and file names are byte text; what was not given is empty.
struct CaptureOptions {
  bool help = false, version = false;
  QString mapFile;
  bool hasServer = false;
  ServerAddress server;
  ChainPlace place;    ///< Of the TAP, for servers that move pins.
  QString command;     ///< Of the simulation to launch, in place of a server.
  QString logFile;     ///< For what it prints.
  int servePort = -1;  ///< Offers the simulation to others instead of capturing; 0 is any port, -1 not.
  ServerAddress::Protocol serveProtocol = ServerAddress::RemoteBitbang;
  QString core;
  QString position;
  QList<QPair<QString, QString>> changes;  ///< "-set", "-op" or "-te" and its assignment, in order of appearance.
  QString expressions;
  bool now = false;  ///< Triggers at once.
  bool allCores = false;
  int repeats = 1;     ///< Captures one after the other; 0 until ^C.
  int eventCount = 0;  ///< 0: as built.
  int windows = 0;     ///< 0: as built.
  double timeoutSeconds = 10;
  TapInstruction instruction{0, 0};  ///< Width 0: the capture map's.
  OutputFile vcd, csv, gtkw, sigrok, html, json;
  QString replay;  ///< The instance of which `replayFile` gets a test bench,
  OutputFile replayFile;
  int window = 0;     ///< and the window that it replays.
  VcdStyle vcdStyle;  ///< Its periods hold for all files.
  ViewChoice view;
  QVector<WishboneCommand> wishbone;  ///< In order of appearance.
  bool wave = false, status = false, info = false;
  bool serdes = false, clear = false;  ///< A look at the serdes core; and its counts start anew.
};

/// Whose words these are: the program takes all options, a sub-command of the Tcl package those that concern it.
enum OptionUse : unsigned {
  kUseProgram = 1,
  kUseOpen = 2,
  kUseArm = 4,
  kUseWait = 8,
  kUseWrite = 16,
  kUseValues = 32,
  kUseFind = 64,
  kUseCore = 128,    ///< Of a capture's other sub-commands, which concern one core.
  kUseSerdes = 256,  ///< Of a look at the serdes core.
  kUseReplay = 512,
};

/// False with one text that names the word and the way out.
bool parseCaptureOptions(const QStringList& words, CaptureOptions& options, QString& error,
                         OptionUse use = kUseProgram);

/// The options of a sub-command, as its usage shows them: " ?-position N|N%? ?-now?".
QString optionsUsage(OptionUse use);

/// The help text, with every option.
QString captureUsage();

}  // namespace ost
