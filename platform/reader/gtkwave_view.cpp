// Save file and filter files, in the form that GTKWave 3.3 writes them.
#include "platform/reader/gtkwave_view.h"

#include <QFileInfo>
#include <cmath>

#include "platform/reader/vcd_scopes.h"
#include "platform/text/byte_text.h"

namespace ost {
namespace {

/// Bits of the flags that stand before a signal.
enum TraceFlag {
  kHex = 0x2,
  kDecimal = 0x4,
  kBinary = 0x8,
  kOctal = 0x10,
  kRightJustified = 0x20,
  kFileFilter = 0x2000,
  kGroupBegin = 0x800200,
  kGroupEnd = 0x1000200,
};

int radixFlag(Radix radix) {
  return radix == Radix::Hex ? kHex : radix == Radix::Dec ? kDecimal : radix == Radix::Oct ? kOctal : kBinary;
}

QByteArray flagLine(int flags) {
  return '@' + QByteArray::number(flags, 16) + '\n';
}

class ViewWriter {
 public:
  ViewWriter(const QVector<Capture>& captures, const OutputFile& file) : captures_(captures), file_(file) {}

  void addScope(const QByteArray& path, const VcdScope& scope);
  QByteArray traces() const { return traces_; }
  QList<OutputText> filters() const { return filters_; }

 private:
  /// The name of the file with the names of these values; written once for signals that share it.
  QByteArray filterFor(const EnumNames& names, Radix radix);

  const QVector<Capture>& captures_;
  const OutputFile& file_;
  QByteArray traces_;
  QList<OutputText> filters_;
};

QByteArray ViewWriter::filterFor(const EnumNames& names, Radix radix) {
  QByteArray text;
  for (const EnumName& name : names) {
    QByteArray bits = name.bits;
    std::reverse(bits.begin(), bits.end());
    text += digitsOf(bits, radix) + ' ' + name.name.toLatin1() + '\n';
  }
  int number = 0;
  while (number < filters_.size() && filters_[number].text != text) ++number;
  if (number == filters_.size()) {
    const QFileInfo info(file_.name);
    const QString name = QStringLiteral("%1_filter%2.txt").arg(info.completeBaseName()).arg(number + 1);
    filters_.append({{info.path() + QLatin1Char('/') + name}, text});
  }
  // GTKWave takes names relative to its own working directory.
  return QFile::encodeName(QFileInfo(fileFromText(filters_[number].file.name)).absoluteFilePath());
}

void ViewWriter::addScope(const QByteArray& path, const VcdScope& scope) {
  if (!scope.variables.isEmpty()) traces_ += flagLine(kGroupBegin) + '-' + path + '\n';
  for (const VcdVariable& variable : scope.variables) {
    if (variable.isText) continue;  // The filter shows it.
    const Radix radix = variable.width > 1 ? captures_[variable.capture].core.displayRadix : Radix::Bin;
    int flags = kRightJustified | radixFlag(radix);
    QByteArray filter;
    if (variable.probe && !variable.probe->names.isEmpty() && variable.width == variable.probe->positions.size()) {
      flags |= kFileFilter;
      filter = "^1 " + filterFor(variable.probe->names, radix) + '\n';
    }
    traces_ += flagLine(flags) + filter + path + '.' + variable.name + variable.range + '\n';
  }
  if (!scope.variables.isEmpty()) traces_ += flagLine(kGroupEnd) + "-group_end\n";
  for (auto child = scope.children.begin(); child != scope.children.end(); ++child)
    addScope(path + '.' + child.key(), child.value());
}

}  // namespace

QList<OutputText> gtkwaveView(const QVector<Capture>& captures, const QString& topModule, const VcdStyle& style,
                              const OutputFile& vcdFile, const OutputFile& file) {
  const VcdClock clock(captures, style);
  qint64 marker = -1, end = 1;
  for (const Capture& capture : captures) {
    const QVector<qint64> times = sampleTimes(capture);
    const qint64 start = clock.startOf(capture);
    if (!times.isEmpty()) end = qMax(end, clock.scaled(capture, start + times.last() + 1));
    const int trigger = capture.windows.isEmpty() ? -1 : capture.windows[0].trigger;
    if (marker < 0 && trigger >= 0 && trigger < capture.windows[0].samples)
      marker = clock.scaled(capture, start + times[trigger]);
  }
  const VcdLayout layout = layOutVcd(captures, topModule, style.singleBits);
  ViewWriter writer(captures, file);
  writer.addScope(layout.topName, layout.top);
  writer.addScope(layout.ownName, layout.own);

  constexpr double kFrames = 4;  // Of 200 pixels, on which zoom counts; what the window below has for waves.
  QByteArray text = "[dumpfile] \"" + QFile::encodeName(QFileInfo(fileFromText(vcdFile.name)).absoluteFilePath()) +
                    "\"\n[timestart] 0\n[size] 1280 720\n[pos] -1 -1\n*" +
                    QByteArray::number(-std::log2(end / kFrames), 'f', 6) + ' ' + QByteArray::number(marker) +
                    QByteArray(" -1").repeated(26) + "\n[sst_expanded] 1\n";
  for (const QByteArray& name : {layout.topName, layout.ownName}) text += "[treeopen] " + name + ".\n";
  return QList<OutputText>{{file, text + writer.traces()}} + writer.filters();
}

}  // namespace ost
