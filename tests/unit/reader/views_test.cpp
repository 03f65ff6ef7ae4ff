// Decoded captures as VCD, waveform and comma-separated text.
#include <QMap>
#include <QProcess>
#include <QStandardPaths>

#include "platform/reader/capture_page.h"
#include "platform/reader/capture_search.h"
#include "platform/reader/capture_view.h"
#include "platform/reader/gtkwave_view.h"
#include "platform/reader/json_writer.h"
#include "platform/reader/sigrok_session.h"
#include "platform/reader/text_views.h"
#include "platform/reader/vcd_writer.h"
#include "tests/unit/scratch.h"

namespace ost {
namespace {

NetBit bitOf(const QString& path, const QString& name) {
  return {path, QString(), 0, name};
}

/// A 3-bit counter in u_a/u_b, an enable at the top and a bus over both; timestamps step by 2, wrapping at 16.
Capture counterCapture(int windows, int samples, int trigger) {
  Capture capture;
  PlanCore& core = capture.core;
  core.name = "c1";
  for (const char* name : {"u_a/u_b/n[0]", "u_a/u_b/n[1]", "u_a/u_b/n[2]"}) core.probeBits << bitOf("u_a/u_b", name);
  core.probeBits << bitOf("", "en");
  core.probes = {{"u_a/u_b/n[2:0]", {2, 1, 0}}, {"en", {3}}, {"BUS1", {3, 0}}};
  core.units.resize(1);
  core.units[0].name = "TU1";
  core.includeTrigger = true;
  core.timestampBits = 4;
  capture.table = BitTable(core.sampleBits());
  for (int i = 0; i < windows * samples; ++i) {
    const int word = (i & 7) | (i % 2 == 0) << 3 | ((i & 7) == 5) << 4 | (2 * i & 15) << 5;
    QByteArray bits;
    for (int b = 0; b < 9; ++b) bits += char(word >> b & 1);
    capture.table.append(bits);
  }
  for (int w = 0; w < windows; ++w) capture.windows.append({w * samples, samples, trigger});
  return capture;
}

TEST(Capture, FieldsAcrossWordBoundariesAndTheirDigits) {
  const Capture capture = counterCapture(1, 200, 0);  // 9 bits a row: rows cross 64-bit words
  for (int row = 0; row < 200; ++row) {
    ASSERT_EQ(capture.table.field(row, 0, 3), quint64(row & 7)) << row;
    ASSERT_EQ(capture.timestamp(row), quint64(2 * row & 15)) << row;
    ASSERT_EQ(capture.unitState(row, 0), (row & 7) == 5) << row;
  }
  const struct {
    QByteArray bits;
    Radix radix;
    const char* digits;
  } table[] = {{"1011010", Radix::Oct, "132"}, {"1011010", Radix::Dec, "90"},
               {"1011010", Radix::Hex, "5a"},  {"10x1", Radix::Hex, "x"},
               {"0000", Radix::Dec, "0"},      {QByteArray(70, '1'), Radix::Dec, "1180591620717411303423"}};
  for (const auto& row : table) EXPECT_EQ(digitsOf(row.bits, row.radix), row.digits);
}

TEST(Vcd, ScopesMarkerAndTimeFromTimestamps) {
  Capture capture = counterCapture(1, 12, 5);
  capture.core.probes[0].names = {{"FIVE", "101"}, {"SIX", "011"}};
  const QString vcd = capturesToVcd({capture}, "top");
  EXPECT_TRUE(has(vcd,
                  "$scope module top $end\n$var wire 1 ! en $end\n$var wire 2 \" BUS1 [1:0] $end\n"
                  "$scope module u_a $end\n$scope module u_b $end\n$var wire 3 # n [2:0] $end\n"
                  "$var string 1 $ n_name $end\n"));
  EXPECT_TRUE(has(vcd, "$scope module ostrel $end\n$var wire 1 % trigger $end\n$var wire 1 & unit_TU1 $end\n"));
  // Samples are 2 apart; the wrap of the 4-bit stamp at sample 8 goes on as 16.
  EXPECT_TRUE(has(vcd, "\n#10\n0!\nb01 \"\nb101 #\nsFIVE $\n1%\n1&\n") && has(vcd, "\n#16\n"));
  EXPECT_TRUE(vcd.endsWith("\n#23\n") && vcd.count("\n1%\n") == 1 && has(vcd, "\nsSIX $\n")) << plain(vcd);
}

/// No sample moves for the x between windows. The stamps' upper bits step by one only.
TEST(Vcd, WindowsAreKeptApart) {
  const struct {
    int timestampBits, unknown;
    const char* end;
  } table[] = {{0, 2, "\n#14\n"}, {4, 2, "\n#23\n"}, {3, 0, "\n#12\n"}};
  for (const auto& row : table) {
    Capture capture = counterCapture(3, 4, 1);
    capture.core.timestampBits = row.timestampBits;
    const QString vcd = capturesToVcd({capture}, "top");
    EXPECT_TRUE(has(vcd, "wire 16 % window [15:0] $end"));
    EXPECT_TRUE(vcd.count("bxxx ") == row.unknown && vcd.count("\n1$\n") == 3 && vcd.endsWith(row.end)) << plain(vcd);
  }
}

TEST(Vcd, RealTime) {
  const struct {
    const char *period, *timescale, *end;
  } table[] = {{"10ns", "1 ns", "\n#120\n"},
               {"6.25ns", "1 ps", "\n#75000\n"},
               {"2000us", "1 ms", "\n#24\n"},
               {"10", "", ""},
               {"0ns", "", ""},
               {"1.5fs", "", ""},
               {"1e3ns", "", ""},
               {"1s", "", ""}};
  Capture capture = counterCapture(1, 12, 5);
  capture.core.probes.resize(1);
  capture.core.timestampBits = 0;
  for (const auto& row : table) {
    VcdStyle style;
    EXPECT_EQ(parsePeriod(row.period, style.period), *row.end != 0) << row.period;
    if (!style.period.isKnown()) continue;
    const QString vcd = capturesToVcd({capture}, "top", style);
    EXPECT_TRUE(vcd.contains(row.timescale) && vcd.endsWith(row.end)) << plain(vcd);
  }
}

/// Each core's samples stand at its own timestamps.
TEST(Vcd, SeveralCoresShareAnAxis) {
  QVector<Capture> captures(2, counterCapture(1, 3, 1));
  captures[1].core.name = "c2";
  captures[1].windows[0].firstRow = 2;  // begins at the timestamp 4
  const QString vcd = capturesToVcd(captures, "top");
  EXPECT_TRUE(has(vcd, "$scope module c2 $end\n$var wire 1 ) trigger $end") && has(vcd, "n_2 [2:0]"));
  EXPECT_TRUE(has(vcd, "\n#4\n") && vcd.count("\n#") == 7) << plain(vcd);
  EXPECT_TRUE(has(vcd, "\n#5\nx!\n"));
  // Each has its own period, and the axis a unit that both are whole numbers of.
  VcdStyle style;
  ASSERT_TRUE(parsePeriod("10ns", style.period) && parsePeriod("6.25ns", style.corePeriods["c2"]));
  const QString real = capturesToVcd(captures, "top", style);
  EXPECT_TRUE(has(real, "$timescale 1 ps $end") && has(real, "core c2, one sample clock takes 6.25 ns") &&
              has(real, "\n#20000\n") && has(real, "\n#25000\n"))
      << plain(real);
  EXPECT_TRUE(has(capturesToJson({"top", "p", "0f", captures}, style), "\"periodFemtoseconds\":6250000"));
}

TEST(Json, EachWindowOfEachSignalAndUnit) {
  Capture capture = counterCapture(2, 2, 1);
  capture.core.probes = {capture.core.probes[0]};
  capture.core.probes[0].names = {{"FIVE", "101"}};
  EXPECT_EQ(capturesToJson({"t\"op", "p", "0f", {capture}}),
            R"({"version":1,"top":"t\"op","project":"p","hash":"0f","cores":[{"name":"c1","sampleClock":"",)"
            R"("windows":[{"samples":2,"trigger":1},{"samples":2,"trigger":1}],"timestampBits":4,)"
            R"("timestamps":[[0,2],[4,6]],"signals":[{"name":"u_a/u_b/n[2:0]","width":3,"names":{"FIVE":5},)"
            R"("values":[[0,1],[2,3]]}],"units":[{"name":"TU1","states":[[0,0],[0,0]]}]}]})"
            "\n");
}

TEST(Search, StepsCountsAndRestarts) {
  Capture capture = counterCapture(1, 24, 8);  // n counts modulo 8, the trigger at sample 8
  capture.core.windowSamples = 24;
  capture.core.triggerBits = capture.core.probeBits.mid(0, 3) << bitOf("", "other");
  capture.core.triggerBits[3].net = "other";
  for (const int i : {0, 1, 2}) capture.core.probeBits[i].bit = capture.core.triggerBits[i].bit = i;
  PlanUnit odd, high, hidden;
  odd.name = "odd", odd.inputs = {0}, odd.value = odd.mask = "1";
  high.name = "high", high.op = Operator::Greater, high.width = 3, high.inputs = {0, 1, 2}, high.value = "101";
  hidden = odd, hidden.name = "hidden", hidden.inputs = {3};
  const struct {
    const char* expression;
    SearchRange range;
    QVector<int> samples;  ///< Empty: refused.
  } table[] = {
      {"high", {0, -8, 15}, {-2, -1, 6, 7, 14, 15}}, {"odd*3", {0, 0, 15}, {5, 11}}, {"high->odd", {0, 0, 15}, {7, 15}},
      {"high->high->!high", {0, 0, 15}, {8}},        {"hidden", {0, 0, 15}, {}},     {"odd &", {0, 0, 15}, {}}};
  for (const auto& row : table) {
    QVector<int> samples;
    QString error;
    capture.core.units = {odd, high, hidden};
    capture.core.includeTrigger = false;
    EXPECT_EQ(findSamples(capture, capture.core.units, row.expression, row.range, samples, error),
              !row.samples.isEmpty());
    EXPECT_EQ(samples, row.samples) << row.expression << ": " << plain(error);
  }
}

TEST(View, APartOfTheSignalsAndOfEachWindow) {
  ViewChoice view;
  view.signalGlobs = QStringList{"u_?/*n[*", "none"};
  view.hasRange = true;
  view.from = -1;
  view.to = 20;
  const PlanCore core = counterCapture(1, 8, 3).core;
  QString error;
  EXPECT_TRUE(checkView(core, core.windowSamples / 2, view, error)) << plain(error);
  const QList<QByteArray> lines = captureToCsv(viewOf(counterCapture(2, 8, 3), view)).split('\n');
  EXPECT_TRUE(lines.size() == 14 && lines[0] == "window,sample,timestamp,u_a/u_b/n[2:0],TU1") << lines[0].constData();
  EXPECT_EQ(lines[7], "1,-1,4,010,0");
  view.signalGlobs = QStringList("u_a");
  EXPECT_FALSE(checkView(core, core.windowSamples / 2, view, error));
  EXPECT_TRUE(has(error, "no signal like \"u_a\""));
}

/// As declared where the map tells it; by their names in older maps. Equal names get a number.
TEST(Vcd, NamesAsDeclared) {
  const struct {
    PlanProbe probe;
    const char* declaration;
  } table[] = {
      {{"u/off[8:6]", {0, 0, 0}, {}, {{"u"}, "off", true, 8, 6}}, "module u $end\n$var wire 3 * off [8:6] $end"},
      {{"u/asc", {0, 0}, {}, {{"u"}, "asc", true, 0, 1}}, "$var wire 2 + asc [0:1] $end"},
      {{"u/fb+1", {0}, {}, {{"u"}, "fb+1"}}, "$var wire 1 , \\fb+1 $end"},
      {{"u/a.b", {0}, {}, {{"u"}, "a.b"}}, "$var wire 1 - \\a.b $end"},
      {{"l[0].q", {0}, {}, {{"l[0]"}, "q", true, -3, -3}}, "module l[0] $end\n$var wire 1 ) q [-3] $end"},
      {{"l[0]", {0, 0}, {}, {{}, "l[0]", true, 7, 6}}, "$var wire 2 ! \\l[0] [7:6] $end"},
      {{"u+y/n", {0}, {}, {{"u+y"}, "n"}}, "module \\u+y $end\n$var wire 1 ' n $end"},
      {{"v[3]", {0}}, "$var wire 1 \" v [3] $end"},
      {{"v[3]", {0}}, "$var wire 1 # v_2 [3] $end"},
      {{"v[2]", {0, 0}}, "$var wire 2 $ \\v[2] [1:0] $end"},
      {{"a \xc3\xa9$end", {0}}, "$var wire 1 % a__$end $end"},
      {{"a$end", {0}}, "$var wire 1 & a$end $end"},
      {{"g[1].q", {0}}, "module g[1] $end\n$var wire 1 ( q $end"}};
  Capture capture;
  capture.core.probeBits.append(bitOf("", "n"));
  for (const auto& row : table) capture.core.probes.append(row.probe);
  const QString vcd = capturesToVcd({capture}, "2nd top");
  for (const auto& row : table) EXPECT_TRUE(has(vcd, row.declaration));
  EXPECT_TRUE(has(vcd, "$scope module \\2nd_top $end"));
}

TEST(Wave, MarksTheTriggerWithinAHundredColumns) {
  Capture capture = counterCapture(2, 64, 20);
  capture.core.displayRadix = Radix::Hex;
  capture.core.probes[1].name = QString(80, 'e') + "_end";
  const QList<QByteArray> lines = captureToWave(capture).split('\n');
  for (const QByteArray& line : lines) EXPECT_LE(line.size(), 100) << line.constData();
  EXPECT_EQ(lines[0], "window 1 of 2");
  const int mark = lines[2].indexOf('T');
  EXPECT_EQ(lines[1].indexOf("0", mark), mark);
  EXPECT_TRUE(lines[3].startsWith("u_a/u_b/n[2:0]") && lines[4].contains("eee_end")) << lines[4].constData();
  EXPECT_EQ(lines[3].mid(mark, 2), "|4");  // sample 20 counts 20 & 7
  EXPECT_EQ(lines[4].mid(mark, 4), "~~__");
}

TEST(Csv, OneLineASample) {
  Capture capture = counterCapture(2, 8, 3);
  capture.core.probes[0].names = {{"FIVE, odd", "101"}};
  const QList<QByteArray> lines = captureToCsv(capture).split('\n');
  EXPECT_EQ(lines[0], "window,sample,timestamp,u_a/u_b/n[2:0],en,BUS1,TU1");
  EXPECT_EQ(lines[14], "1,2,10,\"FIVE, odd\",0,01,1");
}

/// What a program prints; skips the test where there is none.
#define READ_BY(output, program, ...)                                                                 \
  if (QStandardPaths::findExecutable(program).isEmpty()) GTEST_SKIP() << program " is not installed"; \
  QProcess process;                                                                                   \
  process.start(program, QStringList{__VA_ARGS__});                                                   \
  ASSERT_TRUE(process.waitForFinished(60000)) << program;                                             \
  const QByteArray output = process.readAllStandardOutput()

/// Two windows of eight samples with names of values.
Capture namedCapture() {
  Capture capture = counterCapture(2, 8, 3);
  capture.core.probes[0].names = {{"FIVE", "101"}, {"<SIX>", "011"}};
  return capture;
}

TEST(Viewers, SigrokReadsTheSession) {
  const Scratch scratch;
  ClockPeriod period;
  ASSERT_TRUE(parsePeriod("6.25ns", period));
  Capture capture = namedCapture();
  capture.core.probeBits[3].name = "\\e/n";
  READ_BY(csv, "sigrok-cli", "-i", scratch.write("a.sr", captureToSigrok(capture, period)), "-O", "csv");
  EXPECT_TRUE(csv.contains("u_a/u_b/n[2], u_a/u_b/n[1], u_a/u_b/n[0], \\e/n, trigger, window, unit_TU1") &&
              csv.contains("Samplerate: 160 MHz"))
      << csv.constData();
  const QByteArray one =
      "0,0,0,1,0,0,0\n0,0,1,0,0,0,0\n0,1,0,1,0,0,0\n0,1,1,0,1,0,0\n1,0,0,1,0,0,0\n1,0,1,0,0,0,1\n"
      "1,1,0,1,0,0,0\n1,1,1,0,0,0,0\n";
  EXPECT_TRUE(csv.endsWith(one + QByteArray(one).replace(",0,0\n", ",1,0\n").replace(",0,1\n", ",1,1\n")))
      << csv.constData();
}

TEST(Viewers, SigrokReadsTheBitsOfTheVcd) {
  const Scratch scratch;
  Capture capture = counterCapture(1, 8, 3);
  capture.core.timestampBits = 0;
  VcdStyle style;
  style.singleBits = true;
  const QString file = scratch.write("a.vcd", capturesToVcd({capture}, "top", style));
  READ_BY(csv, "sigrok-cli", "-i", file, "-I", "vcd", "-O", "csv");
  EXPECT_TRUE(csv.contains("en, BUS1[1], BUS1[0], n[2], n[1], n[0], trigger, unit_TU1") &&
              csv.endsWith("\n1,1,0,0,0,0,0,0\n0,0,1,0,0,1,0,0\n1,1,0,0,1,0,0,0\n0,0,1,0,1,1,1,0\n1,1,0,1,0,0,0,0\n"
                           "0,0,1,1,0,1,0,1\n1,1,0,1,1,0,0,0\n0,0,1,1,1,1,0,0\n"))
      << csv.constData();
}

/// What a dump says at each of its times, in order: "TIME NAME VALUE".
QStringList changesIn(const QByteArray& vcd) {
  QMap<QByteArray, QByteArray> names;
  QStringList changes;
  QByteArray time;
  for (const QByteArray& line : vcd.split('\n')) {
    const QList<QByteArray> words = line.simplified().split(' ');
    if (words[0] == "$var")
      names[words[3]] = words[4];
    else if (line.startsWith('#'))
      time = line;
    else if (!time.isEmpty() && words.size() == 2)
      changes << QString(time + ' ' + names.value(words[1]) + ' ' + words[0]);
    else if (!time.isEmpty() && !line.isEmpty() && !line.startsWith('$'))
      changes << QString(time + ' ' + names.value(line.mid(1)) + ' ' + line[0]);
  }
  changes.sort();
  return changes;
}

/// GTKWave's own reader of dumps, and the names under which the save file asks for what it has read.
TEST(Viewers, GtkwaveReadsTheVcd) {
  const Scratch scratch;
  Capture capture = namedCapture();
  capture.core.probes[1].net = {{"u+x"}, "e.n"};
  capture.core.probes[2].net = {{"l[0]"}, "asc", true, -1, 0};
  const OutputFile vcd{scratch.write("a.vcd", capturesToVcd({capture}, "top"))}, save{scratch.path("a.gtkw")};
  READ_BY(back, "sh", "-c", "vcd2fst -v \"$1\" -f \"$1.fst\" >&2 && fst2vcd -f \"$1.fst\"", "sh", vcd.name);
  if (process.exitCode() == 127) GTEST_SKIP() << "gtkwave is not installed";
  EXPECT_EQ(changesIn(back), changesIn(scratch.read("a.vcd"))) << back.constData();
  for (const char* part : {"\\u+x $end", "\\e.n $end", "l[0] $end", "asc [-1:0] $end", "n [2:0] $end", "\nsFIVE "})
    EXPECT_TRUE(has(back, part));
  const QList<OutputText> view = gtkwaveView({capture}, "top", {}, vcd, save);
  ASSERT_EQ(view.size(), 2);
  EXPECT_EQ(view[1].text, "101 FIVE\n110 <SIX>\n");
  for (const char* part : {"*-2.954196 6 -1", "-top.u_a.u_b\n@2028\n^1 /", "a_filter1.txt\ntop.u_a.u_b.n[2:0]\n",
                           "@28\ntop.l[0].asc[-1:0]\n", "top.\\u+x.\\e.n\n", "\nostrel.trigger\n"})
    EXPECT_TRUE(has(view[0].text, part));
}

/// The program itself, on a display that nobody sees: what it shows at the marker, the trigger.
TEST(Viewers, DisplayOfGtkwave) {
  const Scratch scratch;
  Capture capture = counterCapture(1, 8, 5);
  capture.core.probes[0].names = {{"FIVE", "101"}};
  const OutputFile vcd{scratch.write("a.vcd", capturesToVcd({capture}, "top"))}, save{scratch.path("a.gtkw")};
  QString error;
  ASSERT_TRUE(storeAll(gtkwaveView({capture}, "top", {}, vcd, save), error)) << plain(error);
  const QString script = scratch.write("show.tcl",
                                       "foreach n [gtkwave::getDisplayedSignals] {\n"
                                       "  puts \"$n [gtkwave::getTraceValueAtMarkerFromName $n]\"\n}\n"
                                       "gtkwave::/File/Quit\n");
  READ_BY(said, "xvfb-run", "-a", "gtkwave", "-S", script, save.name);
  EXPECT_TRUE(has(said, "top.BUS1[1:0] 01\ntop.u_a.u_b.n[2:0] FIVE\nostrel.trigger 1\n"));
}

TEST(Viewers, ABrowserShowsThePage) {
  const Scratch scratch;
  ClockPeriod period;
  ASSERT_TRUE(parsePeriod("10ns", period));
  const QByteArray page = captureToPage(namedCapture(), "t</script>", period);
  EXPECT_LT(page.size(), 300000);
  const QString file = scratch.write("a.html", page);
  READ_BY(dom, "chromium", "--headless=new", "--no-sandbox", "--disable-gpu", "--virtual-time-budget=3000",
          "--user-data-dir=" + scratch.path("profile"), "--dump-dom",
          "file://" + file + "#b=12&radix=Hex&find=n[2:0]=%3Csix%3E");
  for (const char* part : {"t&lt;/script&gt;, core c1, 10 ns a clock", "4 of 4 signals, 16 samples, 2 windows.",
                           "A: window 0, sample 3, 120 ns; B: window 1, sample 1, 240 ns; B - A: 6 samples, 120 ns",
                           "<div class=\"value\">&lt;SIX&gt;</div>", "class=\"row chosen\" data-drawn=\"16\""})
    EXPECT_TRUE(has(dom, part));
  EXPECT_EQ(dom.count("data-drawn=\""), 4);
}

}  // namespace
}  // namespace ost
