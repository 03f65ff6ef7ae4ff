// The passes between the instrumented netlist and its Verilog.
#include "platform/insert/verilog_writer.h"

#include <errno.h>
#include <fcntl.h>

#include <QFile>
#include <QRegularExpression>
#include <algorithm>
#include <cctype>

#include "platform/design/yosys.h"
#include "platform/system/descriptor.h"
#include "platform/system/files.h"
#include "platform/system/scratch_file.h"
#include "platform/text/byte_text.h"

namespace ost {
namespace {

const char kBookkeeping[] =
    " -unset src -unset dynports -unset module_not_derived -unset unused_bits -unset hdlname -unset full_case"
    " -unset parallel_case -unset cells_not_processed -unset always_comb -unset always_ff -unset always_latch"
    " -unset ostrel_vhdl";

/// A choice by constants alone would be written as a function of constants, in which Yosys takes no branch with a "?"
/// when it reads it. Where the constant is 'x' nothing matches, as in a case of Verilog.
const char kDecideChoices[] =
    "select -set before t:*\nselect -set decided t:$pmux w:* %co1:+$pmux[S] %d\npmuxtree @decided\n"
    "select -set made t:* @before %d\nopt_expr -keepdc @made\n"
    "select -set decided t:$mux @before %d w:* %co1:+$mux[S] %d\nopt_expr -mux_undef -keepdc @decided";

/// A tri-state that is never enabled drives nothing. Yosys reads one back as a constant z, which it then takes for what
/// everybody reads on the net.
const char kOpenDrivers[] =
    "(* techmap_celltype = \"$tribuf\" *)\n"
    "module ostrel_open_driver (A, EN, Y);\n"
    "  parameter WIDTH = 1, _TECHMAP_CONSTMSK_EN_ = 0, _TECHMAP_CONSTVAL_EN_ = 0;\n"
    "  input [WIDTH-1:0] A;\n  input EN;\n  output [WIDTH-1:0] Y;\n"
    "  wire _TECHMAP_FAIL_ = _TECHMAP_CONSTMSK_EN_ != 1 || _TECHMAP_CONSTVAL_EN_ !== 1'b0;\n"
    "endmodule\n";

/// Yosys does not report a failed write: a text that does not end with a module has been cut short.
bool endsWithModule(QFile& file) {
  const qint64 tail = 64;
  if (!file.seek(std::max<qint64>(0, file.size() - tail))) return false;
  return file.readAll().trimmed().endsWith("endmodule");
}

/// What Yosys writes is right and not what a linter likes; a user's warnings are about the user's sources.
const char kLintHead[] =
    "/* verilator lint_save */\n"
    "/* verilator lint_off WIDTH */\n/* verilator lint_off CASEOVERLAP */\n/* verilator lint_off CASEINCOMPLETE */\n"
    "/* verilator lint_off PINMISSING */\n/* verilator lint_off UNOPTFLAT */\n/* verilator lint_off LITENDIAN */\n"
    "/* verilator lint_off COMBDLY */\n/* verilator lint_off UNSIGNED */\n/* verilator lint_off CMPCONST */\n"
    "/* verilator lint_off MULTIDRIVEN */\n";
const char kLintTail[] = "\n/* verilator lint_restore */\n";

/// Whether a text has the form in which Yosys keeps a real number, six digits behind the point.
bool isRealOfYosys(const QByteArray& text) {
  const int digits = text.startsWith('-') ? 1 : 0, point = text.size() - 7;
  if (point <= digits || text[point] != '.') return false;
  return std::all_of(text.begin() + digits, text.end(), [&text, point](const char& c) {
    return std::isdigit(static_cast<unsigned char>(c)) || &c == text.constData() + point;
  });
}

/// A netlist in JSON holds real parameters, such as the period of a PLL's clock, as strings; the instances of black
/// boxes get numbers again. Yosys ends a line with each parameter, and no name with a line.
QByteArray withRealParameters(const QByteArray& text) {
  QByteArray out;
  int done = 0;
  for (int open = text.indexOf("(\""); open >= 0; open = text.indexOf("(\"", open + 1)) {
    const int begin = open + 2, end = text.indexOf("\")", begin);
    if (end < 0) break;
    const bool endsLine = text.mid(end + 2, 1) == "\n" || text.mid(end + 2, 2) == ",\n";
    if (!endsLine || end - begin > 32 || !isRealOfYosys(text.mid(begin, end - begin))) continue;
    out += text.mid(done, begin - 1 - done) + text.mid(begin, end - begin);
    done = end + 1;
  }
  return out + text.mid(done);
}

/// What Yosys wrote with numbers where the source has them, between words to linters.
bool finishText(QFile& file) {
  if (!file.seek(0)) return false;
  const QByteArray text = kLintHead + withRealParameters(file.readAll()) + kLintTail;
  return file.seek(0) && file.resize(0) && file.write(text) == text.size() && file.flush();
}

}  // namespace

bool writeInstrumentedVerilog(const Design& design, const QString& netlist, const QString& debugModule,
                              const QString& verilog, const std::function<bool()>& idle, QString& error) {
  Descriptor files[3];
  YosysJob job;
  for (const QString* name : {&netlist, &debugModule, &verilog}) {
    Descriptor& file = files[job.files.size()];
    file.reset(open(QFile::encodeName(*name).constData(), (name == &verilog ? O_RDWR : O_RDONLY) | O_CLOEXEC));
    if (!file.isOpen()) {
      error = QStringLiteral("Cannot open \"%1\": %2.").arg(textFromUnicode(*name), systemReason(errno));
      return false;
    }
    job.files.append(file.fd());
  }
  ScratchFile openDrivers;
  if (!openDrivers.open(error) || !openDrivers.write(kOpenDrivers, error)) return false;
  job.files.append(openDrivers.fd());
  // The user's instances stay even where nothing reads them. opt_expr -mux_bool and opt_reduce merge the write enables
  // that `proc` made for each bit; without them a memory no longer maps to block RAM. Without -keepdc a 'z' counts as
  // any value: an open-drain output would become a constant.
  job.script.line("read_json").openFile(0).line("read_verilog -nodpi -lib").openFile(1);
  job.script.line(
      "select -set instances t:* t:$* %d t:$paramod* %u a:keep %d\n"
      "setattr -set keep 1 @instances\n"
      // What drives an inout stays apart from it: others drive the pad, too.
      "setattr -set keep 1 i:* o:* %i %ci1:+$pos[Y] t:$pos %i\n"
      // Yosys takes names of this form for its own and drops them; in what it wrote earlier they are the only ones.
      "select -set numbered w:_*_ a:keep %d\nsetattr -set keep 1 @numbered\n"
      "opt_expr -mux_bool -keepdc\nopt_reduce\nopt_expr -keepdc\nopt_merge\nopt_clean\n");
  job.script.line(kDecideChoices).line("opt_expr -keepdc\ntechmap -map").openFile(3).words(" t:$tribuf");
  // A latch with a constant enable would be an `always @*` that waits for a change of what never changes.
  job.script.line(
      "select -set decided t:$dlatch w:* %co1:+$dlatch[EN] %d\n"
      "opt_dff -nodffe -nosdff -keepdc @decided\nopt_clean");
  // Again, for what the first has made constant.
  job.script.line(kDecideChoices);
  // Yosys writes the bits of these under wrong names when the net does not begin at bit 0, and single ones rightly.
  job.script.line(
      "opt_clean\nsetattr -unset keep @instances\nsetattr -unset keep @numbered\nsetattr -unset keep t:$pos\n"
      "simplemap t:$dffsr t:$dffsre t:$dlatchsr t:$sr");
  // Yosys' own bookkeeping attributes are removed; those of the user's source stay.
  job.script.line("setattr").words(kBookkeeping).line("setattr -mod").words(kBookkeeping);
  job.script.line("write_verilog").openFile(2);
  job.timeLimitSeconds = design.source().timeLimitSeconds;
  job.memoryLimitBytes = design.source().memoryLimitBytes;
  job.idle = idle;
  const YosysResult run = runYosys(job);
  if (!run.ok) {
    error = run.error;
    return false;
  }
  const auto cutShort = [&error] {
    error = QStringLiteral("The instrumented design could not be written in full: %1.").arg(systemReason(errno));
    return false;
  };
  if (!hasRoom(files[2].fd())) return cutShort();
  QFile result;
  if (!result.open(files[2].fd(), QIODevice::ReadWrite)) return cutShort();
  if (!endsWithModule(result)) {
    error = QStringLiteral("The instrumented design could not be written in full; is the disk full?");
    return false;
  }
  if (!finishText(result)) return cutShort();
  return files[2].close() || cutShort();
}

QSet<QByteArray> definedModules(const QByteArray& verilog) {
  static const QRegularExpression pattern(QStringLiteral("^\\s*module\\s+(\\w+)"), QRegularExpression::MultilineOption);
  QSet<QByteArray> names;
  auto match = pattern.globalMatch(QString::fromLatin1(verilog));
  while (match.hasNext()) names.insert(match.next().captured(1).toLatin1());
  return names;
}

}  // namespace ost
