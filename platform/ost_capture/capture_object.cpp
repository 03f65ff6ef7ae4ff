// Parts of a capture as Tcl lists.
#include "platform/ost_capture/capture_object.h"

#include <algorithm>

#include "platform/reader/asked_files.h"
#include "platform/reader/capture_files.h"
#include "platform/reader/option_values.h"
#include "platform/reader/replay_bench.h"
#include "platform/reader/run_options.h"
#include "platform/system/memory.h"

namespace ost {
namespace {

constexpr size_t kEntryBytes = 128;  ///< Of a value in a list, generously.

constexpr char kRangeWords[] = "?-window N? ?-from SAMPLE? ?-to SAMPLE?";

/// An option whose value is a number.
struct NumberWord {
  const char* name;
  int* number;
  bool isGiven;
};
/// Takes those in `numbers`, with their values, out of `words`. False with `error`.
template <size_t count>
bool takeNumbers(QStringList& words, NumberWord (&numbers)[count], QString& error) {
  for (int i = 0; i + 1 < words.size();) {
    const auto known = [&](const NumberWord& one) { return words[i] == QLatin1String(one.name); };
    NumberWord* const word = std::find_if(numbers, numbers + count, known);
    if (word == numbers + count) {
      i += 2;
      continue;
    }
    *word->number = words[i + 1].toInt(&word->isGiven);
    if (!word->isGiven) return wrongValue(words[i], words[i + 1], "a number", error);
    words.erase(words.begin() + i, words.begin() + i + 2);
  }
  return true;
}

Tcl_Obj* namesOf(const QStringList& names) {
  Tcl_Obj* const list = Tcl_NewListObj(0, nullptr);
  for (const QString& name : names) Tcl_ListObjAppendElement(nullptr, list, tclFromText(name));
  return list;
}

/// A list of what `make` makes of each sample of the range; `same` tells whether it would be the same for two rows.
template <typename Same, typename Make>
void listRows(Tcl_Interp* interp, const Capture& capture, const SearchRange& range, Same same, Make make) {
  const CaptureWindow& window = capture.windows[range.window];
  const int first = window.firstRow + window.trigger + range.from, last = window.firstRow + window.trigger + range.to;
  // Tcl would end the process where it gets none.
  requireMemory(size_t(last - first + 1) * kEntryBytes);
  TclList list;
  Tcl_Obj* value = nullptr;
  for (int row = first; row <= last; ++row) {
    if (row == first || !same(row - 1, row)) value = make(row);
    list.add(value);
  }
  Tcl_SetObjResult(interp, list);
}

}  // namespace

const QVector<SubCommand<CaptureObject>>& CaptureObject::table() {
  static const QByteArray values = QByteArray("SIGNAL ") + kRangeWords, find = QByteArray("EXPRESSION ") + kRangeWords;
  static const QVector<SubCommand<CaptureObject>> table = {
      {"delete", "", OptionUse(), 0, 0, method<&CaptureObject::remove>},
      {"find", find.constData(), kUseFind, 1, -1, method<&CaptureObject::find>},
      {"info", "", OptionUse(), 0, 0, method<&CaptureObject::info>},
      {"replay", "INSTANCE FILE", kUseReplay, 2, -1, method<&CaptureObject::replay>},
      {"signals", "?GLOB? ?-core NAME?", OptionUse(), 0, 3, method<&CaptureObject::signalNames>},
      {"timestamps", kRangeWords, kUseCore, 0, -1, method<&CaptureObject::timestamps>},
      {"values", values.constData(), kUseValues, 1, -1, method<&CaptureObject::values>},
      {"write", "FILE", kUseWrite, 1, -1, method<&CaptureObject::write>},
  };
  return table;
}

int CaptureObject::create(Tcl_Interp* interp, CaptureSet set) {
  const auto capture = std::make_shared<CaptureObject>(std::move(set));
  capture->token_ = ObjectCommand<CaptureObject>::create(interp, capture);
  return TCL_OK;
}

bool CaptureObject::chooseCore(const QString& name, Choice& choice, QString& error) const {
  QStringList names;
  for (const Capture& capture : set_.cores) {
    if (capture.core.name == name || (name.isEmpty() && set_.cores.size() == 1)) choice.capture = &capture;
    names += capture.core.name;
  }
  if (choice.capture) return true;
  const QString list = names.join(QLatin1String(", "));
  error = name.isEmpty()
              ? QStringLiteral("The capture is of several cores; choose one of %1 with -core NAME.").arg(list)
              : QStringLiteral("There is no core \"%1\" in the capture; choose one of %2.").arg(name, list);
  return false;
}

bool CaptureObject::choose(const SubCall& call, QStringList words, OptionUse use, CaptureOptions& options,
                           Choice& choice) {
  SearchRange& range = choice.range;
  NumberWord numbers[] = {{"-window", &range.window, false}, {"-from", &range.from, false}, {"-to", &range.to, false}};
  QString error;
  if (!takeNumbers(words, numbers, error) || !parseCaptureOptions(words, options, error, use)) {
    call.failUsage(error);
    return false;
  }
  const auto fail = [&] { return call.fail(error, capture_error::kValue) == TCL_OK; };
  if (!chooseCore(options.core, choice, error)) return fail();
  const int windows = choice.capture->windows.size();
  if (range.window < 0 || range.window >= windows) {
    error = QStringLiteral("The capture has no window %1; it has 0 to %2.").arg(range.window).arg(windows - 1);
    return fail();
  }
  const CaptureWindow& window = choice.capture->windows[range.window];
  const int first = -window.trigger, last = window.samples - 1 - window.trigger;
  if (!numbers[1].isGiven) range.from = first;
  if (!numbers[2].isGiven) range.to = last;
  if (range.from > range.to || range.to < first || range.from > last) {
    error = QStringLiteral("There is no sample from %1 to %2 in the window; it has %3 to %4.")
                .arg(range.from)
                .arg(range.to)
                .arg(first)
                .arg(last);
    return fail();
  }
  range.from = qMax(range.from, first);
  range.to = qMin(range.to, last);
  return true;
}

int CaptureObject::info(const SubCall& call) {
  TclList list, cores;
  list.add("top", tclFromText(set_.topModule));
  list.add("project", tclFromText(set_.projectName));
  list.add("hash", Tcl_NewStringObj(set_.projectHash.constData(), -1));
  for (const Capture& capture : set_.cores) {
    const PlanCore& plan = capture.core;
    TclList core;
    QStringList units;
    for (const PlanUnit& unit : plan.units) units += unit.name;
    core.add("clock", tclFromText(plan.sampleClock.name));
    core.add("windows", Tcl_NewIntObj(capture.windows.size()));
    core.add("samples", Tcl_NewIntObj(plan.windowSamples));
    core.add("position", Tcl_NewIntObj(capture.windows[0].trigger));
    core.add("timestampBits", Tcl_NewIntObj(plan.timestampBits));
    core.add("signals", Tcl_NewIntObj(plan.probes.size()));
    core.add("units", namesOf(units));
    cores.add(tclFromText(plan.name));
    cores.add(core);
  }
  list.add("cores", cores);
  Tcl_SetObjResult(call.interp, list);
  return TCL_OK;
}

int CaptureObject::signalNames(const SubCall& call) {
  QStringList words = call.words;
  const QString glob = words.size() % 2 ? words.takeFirst() : QStringLiteral("*");
  CaptureOptions options;
  Choice choice;
  if (!choose(call, words, kUseCore, options, choice)) return TCL_ERROR;
  QStringList names;
  for (const PlanProbe& probe : choice.capture->core.probes)
    if (fitsGlobs(probe.name, {glob})) names += probe.name;
  Tcl_SetObjResult(call.interp, namesOf(names));
  return TCL_OK;
}

int CaptureObject::values(const SubCall& call) {
  CaptureOptions options;
  Choice choice;
  if (!choose(call, call.words.mid(1), kUseValues, options, choice)) return TCL_ERROR;
  const Capture& capture = *choice.capture;
  const QString& name = call.words[0];
  const QVector<PlanProbe>& probes = capture.core.probes;
  const auto probe = std::find_if(probes.begin(), probes.end(), [&](const PlanProbe& one) { return one.name == name; });
  if (probe == probes.end())
    return call.fail(QStringLiteral("The core \"%1\" captures no signal \"%2\"; \"signals\" lists what it captures.")
                         .arg(capture.core.name, name),
                     capture_error::kValue);
  const auto same = [&](int one, int other) {
    return std::all_of(probe->positions.begin(), probe->positions.end(),
                       [&](int bit) { return capture.probeBit(one, bit) == capture.probeBit(other, bit); });
  };
  listRows(call.interp, capture, choice.range, same, [&](int row) {
    const QByteArray bits = capture.probeBits(row, *probe);
    const QByteArray text =
        options.view.hasRadix ? digitsOf(bits, options.view.radix) : valueText(*probe, bits, Radix::Dec);
    return Tcl_NewStringObj(text.constData(), text.size());
  });
  return TCL_OK;
}

int CaptureObject::timestamps(const SubCall& call) {
  CaptureOptions options;
  Choice choice;
  if (!choose(call, call.words, kUseCore, options, choice)) return TCL_ERROR;
  const Capture& capture = *choice.capture;
  if (!capture.core.timestampBits)
    return call.fail(
        QStringLiteral("The core \"%1\" stores no timestamps; insert it with Timestamp=on.").arg(capture.core.name),
        capture_error::kValue);
  listRows(
      call.interp, capture, choice.range, [](int, int) { return false; },
      [&](int row) { return Tcl_NewWideIntObj(Tcl_WideInt(capture.timestamp(row))); });
  return TCL_OK;
}

int CaptureObject::find(const SubCall& call) {
  CaptureOptions options;
  Choice choice;
  if (!choose(call, call.words.mid(1), kUseFind, options, choice)) return TCL_ERROR;
  RunSettings asked(choice.capture->core);
  QVector<int> samples;
  QString error;
  if (!applyRunOptions(options, asked, error) ||
      !findSamples(*choice.capture, asked.core().units, call.words[0], choice.range, samples, error))
    return call.fail(error, capture_error::kValue);
  requireMemory(size_t(samples.size()) * kEntryBytes);
  TclList list;
  for (const int sample : samples) list.add(Tcl_NewIntObj(sample));
  Tcl_SetObjResult(call.interp, list);
  return TCL_OK;
}

int CaptureObject::replay(const SubCall& call) {
  CaptureOptions options;
  QString error;
  options.replay = call.words[0];
  options.replayFile.name = call.words[1];
  if (!parseCaptureOptions(call.words.mid(2), options, error, kUseReplay)) return call.failUsage(error);
  QVector<PlanCore> cores;
  for (const Capture& capture : set_.cores) {
    cores.append(capture.core);
    cores.last().windows = capture.windows.size();
  }
  const int core = coreOfReplay(cores, options, error);
  if (core < 0 || !checkView(cores[core], set_.cores[core].windows[0].trigger, options.view, error))
    return call.fail(error, capture_error::kValue);
  CaptureSet shown = set_;
  shown.cores[core] = viewOf(set_.cores[core], options.view);
  if (!storeAll(captureFiles(options, shown, 0), error)) return call.fail(error, capture_error::kFile);
  Tcl_SetObjResult(call.interp, tclFromText(options.replayFile.name));
  return TCL_OK;
}

int CaptureObject::write(const SubCall& call) {
  CaptureOptions options;
  QString error;
  if (!parseCaptureOptions(call.words.mid(1), options, error, kUseWrite)) return call.failUsage(error);
  QStringList cores;
  for (const Capture& capture : set_.cores) cores += capture.core.name;
  if (!checkPeriods(cores, options, error) || !askForFile(call.words[0], options, error))
    return call.fail(error, capture_error::kValue);
  options.allCores = set_.cores.size() > 1;
  CaptureSet shown = set_;
  for (Capture& capture : shown.cores) {
    if (!checkView(capture.core, capture.windows[0].trigger, options.view, error))
      return call.fail(error, capture_error::kValue);
    capture = viewOf(capture, options.view);
  }
  const QList<OutputText> files = captureFiles(options, shown, 0);
  if (!storeAll(files, error)) return call.fail(error, capture_error::kFile);
  QStringList names;
  for (const OutputText& file : files) names += file.file.name;
  Tcl_SetObjResult(call.interp, namesOf(names));
  return TCL_OK;
}

int CaptureObject::remove(const SubCall& call) {
  Tcl_DeleteCommandFromToken(call.interp, token_);
  return TCL_OK;
}

}  // namespace ost
