// Names go in as escaped identifiers or string literals, values as binary digits. Inputs change after the rising edge
// of the clock, outputs are looked at before the next one, as the core samples them.
#include "platform/reader/replay_bench.h"

#include <QRegularExpression>
#include <algorithm>

namespace ost {
namespace {

constexpr int kMostDifferences = 20;  ///< That are shown.

QByteArray number(int value) {
  return QByteArray::number(value);
}

/// For texts: neither an end of the line nor one of the literal.
QByteArray printable(const QString& text) {
  QByteArray bytes = text.toLatin1();
  for (char& c : bytes)
    if (c < ' ' || c > '~') c = '_';
  return bytes;
}
QByteArray stringLiteral(const QByteArray& text) {
  return '"' + QByteArray(text).replace('\\', "\\\\").replace('"', "\\\"").replace('\n', "\\n") + '"';
}

QByteArray identifier(const QString& name) {
  return '\\' + name.toLatin1() + ' ';
}
/// Generate blocks and entries of arrays keep their index.
QByteArray scopeIdentifier(const QString& name) {
  static const QRegularExpression indexed(QStringLiteral("^[A-Za-z_][A-Za-z0-9_$]*(\\[-?[0-9]+\\])*$"));
  return indexed.match(name).hasMatch() ? name.toLatin1() : identifier(name);
}

QByteArray literal(const ReplayParameter& parameter) {
  const QByteArray& value = parameter.value;
  if (parameter.isText) return stringLiteral(value);
  // A plain number of the source has 32 bits and a sign.
  return number(value.size()) + (value.size() == 32 ? "'sb" : "'b") + value;
}

QByteArray digitLiteral(const QByteArray& digits) {
  return digits.isEmpty() ? "1'b0" : number(digits.size()) + "'b" + digits;
}

class BenchWriter {
 public:
  BenchWriter(const Capture& capture, const ProbedInstance& instance, int window);
  QByteArray text();

 private:
  /// A captured or constant bit at one sample.
  char digit(int row, int bit) const {
    if (bit >= 0) return capture_.probeBit(row, bit) ? '1' : '0';
    return bit == kReplay0 ? '0' : bit == kReplay1 ? '1' : 'x';
  }
  QByteArray digits(int row, const QVector<int>& bits) const {
    QByteArray result;
    for (const int bit : bits) result += digit(row, bit);
    return result;
  }
  /// Whether no clock was left out between a row and the one before.
  bool follows(int row) const {
    const quint64 mask = (quint64(1) << capture_.core.timestampBits) - 1;
    return !capture_.core.timestampBits ||
           ((capture_.timestamp(row) - capture_.timestamp(row - 1)) & mask) == (1 & mask);
  }
  /// The bits from `next` on, leftmost first, as a part of the vector `vector`; `next` goes behind them.
  static QByteArray part(const char* vector, int width, int bits, int& next) {
    next += bits;
    return vector + ('[' + number(width - 1 - (next - bits))) + ':' + number(width - next) + ']';
  }
  QByteArray head() const;
  QByteArray instance();
  QByteArray start() const;
  QByteArray check() const;

  const Capture& capture_;
  const ProbedInstance& instance_;
  int firstRow_, lastRow_, firstSample_;
  QVector<int> inputs_, outputs_;  ///< All bits, leftmost of the first port first.
};

BenchWriter::BenchWriter(const Capture& capture, const ProbedInstance& instance, int window)
    : capture_(capture), instance_(instance) {
  const CaptureWindow& shown = capture.windows[window];
  const int begin = shown.firstRow, end = shown.firstRow + shown.samples;
  firstRow_ = lastRow_ = begin + qBound(0, shown.trigger, shown.samples - 1);
  while (firstRow_ > begin && follows(firstRow_)) --firstRow_;
  while (lastRow_ + 1 < end && follows(lastRow_ + 1)) ++lastRow_;
  firstSample_ = firstRow_ - begin - shown.trigger;
  for (const ReplayPort& port : instance.ports)
    for (const int bit : port.bits)
      if (port.isOutput || bit != kReplayClock) (port.isOutput ? outputs_ : inputs_) += bit;
}

QByteArray BenchWriter::head() const {
  const QByteArray path = printable(instance_.path);
  return "// Replays what was captured of \"" + path + "\", module \"" + printable(instance_.module) + "\": samples " +
         number(firstSample_) + " to " + number(firstSample_ + lastRow_ - firstRow_) + ", of " +
         number(capture_.core.windowSamples) +
         " in the window.\n"
         "// Simulate it with the module's sources: iverilog -g2012 -s ostrel_replay -o replay.vvp THIS_FILE "
         "SOURCE...\n"
         "// Of the bits of all registers " +
         number(instance_.knownBits) + " of " + number(instance_.registerBits) +
         " begin as they were captured, the others unknown, as do the words of\n"
         "// memories. Define OSTREL_REPLAY_FROM_SOURCE to begin as the source does.\n"
         "// +dump=FILE writes a value change dump.\n"
         "`timescale 1ns / 1ps\n\n"
         "module ostrel_replay;\n"
         "  reg clock = 1'b0;\n"
         "  reg [" +
         number(qMax(1, inputs_.size()) - 1) + ":0] in;\n  wire [" + number(qMax(1, outputs_.size()) - 1) +
         ":0] out;\n  integer sample = " + number(firstSample_) +
         ", samples = 0, compared = 0, unknown = 0, differences = 0, i;\n\n";
}

QByteArray BenchWriter::instance() {
  QList<QByteArray> parameters, ports;
  for (const ReplayParameter& parameter : instance_.parameters)
    parameters += "." + identifier(parameter.name) + '(' + literal(parameter) + ')';
  int nextInput = 0, nextOutput = 0;
  for (const ReplayPort& port : instance_.ports) {
    QList<QByteArray> parts;
    if (port.isOutput) {
      parts += part("out", outputs_.size(), port.bits.size(), nextOutput);
    } else {
      for (int i = 0, run = 0; i < port.bits.size(); i += run) {
        for (run = 0; i + run < port.bits.size() && port.bits[i + run] != kReplayClock; ++run) continue;
        parts += run ? part("in", inputs_.size(), run, nextInput) : "clock";
        run = qMax(1, run);
      }
    }
    ports += "      ." + identifier(port.name) + "({" + parts.join(", ") + "})";
  }
  return "  " + identifier(instance_.module) + (parameters.isEmpty() ? "" : "#(" + parameters.join(", ") + ") ") +
         "dut (\n" + ports.join(",\n") + "\n  );\n\n";
}

/// force and release leave their value in a variable, whoever assigns it; a net goes back to what drives it. Entries of
/// arrays cannot be forced.
QByteArray BenchWriter::start() const {
  QByteArray forced, released, assigned;
  for (const ReplayState& state : instance_.state) {
    QByteArray name = "dut.";
    for (const QString& scope : state.scopes) name += scopeIdentifier(scope) + '.';
    name += scopeIdentifier(state.name);
    const QByteArray value = digitLiteral(digits(firstRow_, state.bits));
    if (state.bits.isEmpty()) {
      assigned += "    for (i = " + number(state.first) + "; i <= " + number(state.last) + "; i = i + 1) " + name +
                  "[i] = 'bx;\n";
    } else if (name.endsWith(']')) {
      assigned += "    " + name + " = " + value + ";\n";
    } else {
      forced += "    force " + name + " = " + value + ";\n";
      released += "    release " + name + ";\n";
    }
  }
  return "  task start;\n    begin\n    #1;\n`ifndef OSTREL_REPLAY_FROM_SOURCE\n" + assigned + forced + "    #1;\n" +
         released + "`endif\n    end\n  endtask\n\n";
}

QByteArray BenchWriter::check() const {
  QByteArray text = "  task check(input [" + number(qMax(1, outputs_.size()) - 1) + ":0] captured);\n    begin\n";
  int next = 0;
  for (const ReplayPort& port : instance_.ports) {
    if (!port.isOutput) continue;
    const int first = next;
    int again = first;
    const QByteArray out = part("out", outputs_.size(), port.bits.size(), next);
    const QByteArray captured = part("captured", outputs_.size(), port.bits.size(), again);
    text += "      if ((|(" + out + " ^ " + captured +
            ")) === 1'b1) begin\n"
            "        differences = differences + 1;\n"
            "        if (differences <= " +
            number(kMostDifferences) +
            ")\n          $display(\"replay: sample %0d: %0s is %b, captured was %b\", sample, " +
            stringLiteral(printable(port.name)) + ", " + out + ", " + captured + ");\n      end\n";
  }
  return text + "      for (i = 0; i < " + number(outputs_.size()) +
         "; i = i + 1)\n"
         "        if (captured[i] !== 1'bx)\n"
         "          if (out[i] === 1'bx) unknown = unknown + 1; else compared = compared + 1;\n"
         "      sample = sample + 1;\n"
         "      samples = samples + 1;\n"
         "    end\n  endtask\n\n";
}

QByteArray BenchWriter::text() {
  QByteArray steps;
  for (int row = firstRow_; row <= lastRow_; ++row)
    steps += "    step(" + digitLiteral(digits(row, inputs_)) + ", " + digitLiteral(digits(row, outputs_)) + ");\n";
  return head() + instance() + start() + check() + "  task step(input [" + number(qMax(1, inputs_.size()) - 1) +
         ":0] inputs, input [" + number(qMax(1, outputs_.size()) - 1) +
         ":0] captured);\n"
         "    begin\n"
         "      in = inputs;\n"
         "      #4 clock = 1'b0;\n"
         "      #4 check(captured);\n"
         "      #1 clock = 1'b1;\n"
         "      #1;\n"
         "    end\n  endtask\n\n"
         "  reg [8*1024:1] dump;\n"
         "  initial begin\n"
         "    if ($value$plusargs(\"dump=%s\", dump)) begin\n"
         "      $dumpfile(dump);\n"
         "      $dumpvars(0, dut);\n"
         "    end\n"
         "    in = " +
         digitLiteral(digits(firstRow_, inputs_)) + ";\n    start;\n" + steps +
         "    $display(\"replay: %0d samples, %0d output bits compared, %0d not, as the replay does not know them; "
         "differences: %0d\",\n             samples, compared, unknown, differences);\n"
         "    if (differences != 0) $fatal(0, \"the replay differs from the capture\");\n"
         "    if (compared == 0) $fatal(0, \"no output could be compared\");\n"
         "    $finish(0);\n"
         "  end\n"
         "endmodule\n";
}

}  // namespace

const ProbedInstance* probedInstance(const PlanCore& core, const QString& path) {
  for (const ProbedInstance& instance : core.instances)
    if (instance.path == path) return &instance;
  return nullptr;
}

int coreOfReplay(const QVector<PlanCore>& cores, const CaptureOptions& options, QString& error) {
  QStringList names;
  for (int i = 0; i < cores.size(); ++i) {
    for (const ProbedInstance& instance : cores[i].instances) names += instance.path;
    if (!probedInstance(cores[i], options.replay)) continue;
    if (cores[i].hasSampleEnable && !cores[i].timestampBits)
      error =
          QStringLiteral(
              "The samples of the core \"%1\" leave out clocks, as it has a sample enable, and do not tell how many; "
              "insert it with Timestamp=on for a replay.")
              .arg(cores[i].name);
    else if (options.window >= cores[i].windows)
      error = QStringLiteral("The core \"%1\" has no window %2; it has 0 to %3.")
                  .arg(cores[i].name)
                  .arg(options.window)
                  .arg(cores[i].windows - 1);
    return error.isEmpty() ? i : -1;
  }
  error =
      QStringLiteral(
          "The capture map has no instance \"%1\" that can be replayed; probe all its ports (ost_trace add_sig "
          "[ost_design ports INSTANCE]), which must not have a clock besides the sample clock, and insert again. It "
          "has: %2.")
          .arg(options.replay, names.isEmpty() ? QStringLiteral("none") : names.join(QLatin1String(", ")));
  return -1;
}

QByteArray replayBench(const Capture& capture, const ProbedInstance& instance, int window) {
  return BenchWriter(capture, instance, window).text();
}

}  // namespace ost
