// Sources as users and strangers name them: hostile file names, lists, macros, black boxes, errors and changes.
#include <fcntl.h>
#include <sys/stat.h>

#include <QDir>
#include <QStandardPaths>

#include "platform/design/file_list.h"
#include "platform/design/source_stamp.h"
#include "platform/design/yosys.h"
#include "tests/unit/read_design.h"

namespace ost {
namespace {

TEST(Sources, with_hostile_file_names_are_files_and_never_commands) {
  const QByteArray names =
      "a b.v/semi;colon.v/end;/-v.v/#x.v/new\nline.v/q\"uote.v/'s.v/$(touch pwned).v/`touch pwned`.v/!touch pwned.v/"
      "gl*b.v/[x].v/{a,b}.v/<<EOT.v/caf\xc3\xa9.v/back\\/~root.v/+tilde.v/%s.v/tab\t.v/|x.v/>x.v/dir \";x";
  Scratch scratch;
  ASSERT_TRUE(QDir(scratch.folder.path()).mkdir("in \";x"));
  for (const QByteArray& name : names.split('/')) {
    for (const QByteArray& path : {name, "in \";x/" + name}) {
      SCOPED_TRACE(path.constData());
      scratch.write(path.left(path.lastIndexOf('/') + 1) + "part.vh", "wire from_include;\n");
      const QString file = scratch.write(path, "module t;\n`include \"part.vh\"\nendmodule\n");
      QString error;
      const auto design = readDesign(sourceOf({file}), error);
      ASSERT_TRUE(design) << plain(error);
      EXPECT_TRUE(design->exists("from_include") && design->dependencies().contains(file));

      scratch.write(path, "module t;\nwire ;\nendmodule\n");
      EXPECT_FALSE(readDesign(sourceOf({file}), error));
      QString shown = file + ":2: syntax error";
      EXPECT_TRUE(error.startsWith(shown.replace('\n', '?').replace('\t', '?'))) << plain(error);
      QFile::remove(fileFromText(file));
    }
  }
  EXPECT_FALSE(QFile::exists("pwned") || QFile::exists(scratch.path("pwned")));
}

TEST(Sources, that_cannot_be_read_give_one_text_with_the_way_out) {
  Scratch scratch;
  const QString fifo = scratch.path("fifo");
  for (const char* suffix : {"", ".json"}) mkfifo((fifo + suffix).toLatin1().constData(), 0600);
  const QString good = scratch.write("good.v", "module t; wire n; gone u(); endmodule\n");
  const struct {
    QStringList files;
    QString define, blackBox;
    const char* text;
  } table[] = {
      {{}, "", "", "No source file"},
      {{scratch.path("")}, "", "", "it is a folder"},
      {{"/dev/zero"}, "", "", "not a regular file"},
      {{"/proc/self/status"}, "", "", "not a regular file"},  // its size is none, its content is not
      {{fifo}, "", "", "it is a FIFO"},
      {{fifo + ".json"}, "", "", "it is a FIFO"},
      {{good, scratch.write("x.json", "{}")}, "", "", "give it alone"},
      {{scratch.write("empty.v", "// nothing\n")}, "", "", "declare no module"},
      {{good}, "", "other", "The module \"gone\" (instance \"u\" of module \"t\") is not defined: add the file"},
      {{good}, "X=a\nOST_END_OF_DEFINES", "", "control character"},
  };
  for (const auto& row : table) {
    DesignSource source = sourceOf(row.files);
    source.defines = row.define.split('&', Qt::SkipEmptyParts);
    source.blackBoxes = row.blackBox.split('&', Qt::SkipEmptyParts);
    QString error;
    EXPECT_FALSE(readDesign(source, error)) << row.text;
    EXPECT_TRUE(has(error, row.text));
  }
}

TEST(Sources, take_macros_black_boxes_and_both_languages_and_are_elaborated_again) {
  Scratch scratch;
  DesignSource source = sourceOf({
      scratch.write("heavy.v",
                    "`ifndef HEAVY\n`define HEAVY\nmodule heavy #(parameter W = 2) (input [W-1:0] a);\n"
                    "  wire inner; not_there u();\nendmodule\n`endif\n"),
      scratch.write("types.sv",
                    "package p; typedef enum logic [1:0] {A, B, C} state_t; endpackage\n"
                    "module t; p::state_t state; wire [`WIDTH-1:0] w; u v(); heavy #(.W(3)) h(w[2:0]);\n"
                    "undefined x(w); LUT #(.INIT(`WIDTH)) l(w[0], w[1]); endmodule\n"),
      scratch.write("plain b.v",
                    "module u; wire bit, logic; endmodule\n"
                    "(* blackbox *) module LUT(input A, output Y); parameter INIT = 0; endmodule\n"),
  });
  source.defines = QStringList{"WIDTH=(2 + 3)", "TEXT=\"a ; b\"", "FLAG"};
  source.blackBoxes = QStringList{"heavy", "undefined"};
  for (const char* top : {"", "t"}) {
    source.top = top;
    QString error;
    const auto design = readDesign(source, error);
    ASSERT_TRUE(design) << plain(error);
    EXPECT_EQ(design->topModule(), "t");
    NetSelection net;
    EXPECT_TRUE(design->resolve("w", net, error) && net.bits.size() == 5);
    EXPECT_TRUE(design->resolve("state", net, error) && net.bits.size() == 2);
    EXPECT_TRUE(design->exists("v/logic"));
    EXPECT_FALSE(design->exists("h/a") || design->resolve("h", net, error));
    EXPECT_TRUE(has(error, "black box"));
    YosysJob job;
    job.script = design->elaborationScript();
    job.script.line("tee -o /dev/stdout dump t/l t/h");
    job.workingDirectory = design->workingDirectory();
    const QString dump = runYosys(job).output;
    EXPECT_TRUE(has(dump, "cell \\LUT \\l") && has(dump, "parameter signed \\INIT 5") && has(dump, "\\W 3"));
  }
}

/// Reads what a file list in the folder says, with relative names in it.
std::shared_ptr<const Design> readList(const Scratch& scratch, const QByteArray& list, QString& error) {
  DesignSource source;
  source.fileLists = QStringList{scratch.write("list.f", list)};
  source.timeLimitSeconds = 20;
  return readDesign(source, error);
}

TEST(Sources, of_each_kind_are_found_and_named_or_refused_with_the_way_out) {
  Scratch scratch;
  QDir(scratch.folder.path()).mkdir("lib");
  scratch.write("lib/deep.vx", "module deep #(parameter T = \"\") (input a); wire found; endmodule\n");
  scratch.write(
      "top.v",
      "module top #(parameter N = 4, T = \"up\") (input clk, input [N-1:0] d);\n"
      "generate if (T == \"a b\") wire is_text; if (N < 0) wire is_signed; endgenerate\n"
      "deep #(T) u(clk); endmodule\nmodule unused #(parameter W = 0); wire x; gone u(.a(W[9:8])); endmodule\n");
  scratch.write("mix.v",
                "module mix(input Clk); genvar i; generate for (i = 1; i < 3; i = i + 1) begin : g\n"
                "  Count #(.wide(i)) u(.CLK(Clk), .Q()); end endgenerate endmodule\n");
  scratch.write("leaf.v",
                "module Leaf #(parameter N = 1) (input A, output [N:0] Y); assign Y = {N + 1{A}}; endmodule\n");
  scratch.write(
      "count.vhd",
      "library ieee; use ieee.std_logic_1164.all; use ieee.numeric_std.all;\n"
      "entity COUNT is generic (Wide : positive := 7); port (clk : in std_logic;\n"
      "  q : out std_logic_vector(Wide - 1 downto 0)); end;\narchitecture a of count is\n"
      "  component leaf generic (n : integer); port (a : in std_logic; y : out std_logic_vector(2 downto 0));\n"
      "  end component; signal Sum : unsigned(Wide - 1 downto 0); signal l : std_logic_vector(2 downto 0);\n"
      "begin u_Leaf : leaf generic map (n => 2) port map (a => clk, y => l);\n"
      "  process (clk) begin if rising_edge(clk) and l(2) = '1' then Sum <= Sum + 1; end if; end process;\n"
      "  q <= std_logic_vector(Sum); end;\n");
  scratch.write("bad.vhd", "entity bad is\n  port (a : in bitt);\nend;\n");
  scratch.write("mark.v", "\xef\xbb\xbfmodule t; wire w; endmodule\n");
  scratch.write("wide.v", "\xff\xfem");
  scratch.write("secret.v", "module t;\n `pragma protect begin_protected\nx\nendmodule\n");
  scratch.write("include.v", "module t;\n`include \"none.vh\"\nendmodule\n");
  scratch.write("import.sv", "package p; endpackage\nmodule t import p::*; (input a); endmodule\n");
  scratch.write("heavy.v",
                "module t(input [7:0] d, output [7:0] q); heavy h(d, q); endmodule\nmodule heavy(d, q); input [7:0] d; "
                "output [7:0] q;\nfunction [7:0] f(input [7:0] x); integer i; begin f = x; for (i = 0; i < 1000000; "
                "i = i + 1) f = f ^ (f << 1) ^ i; end endfunction\nassign q = f(d); endmodule\n");
  const struct {
    const char *list, *net, *error;
  } table[] = {
      {"-top top -y lib +libext+.vx -param \"T=a b\" -param N=-1 top.v", "u/found", ""},
      {"-top top -y lib +libext+.vx -param \"T=a b\" top.v", "genblk1.is_text", ""},
      {"-top top -y lib +libext+.vx -param N=-1 top.v", "genblk2.is_signed", ""},
      {"-top top -y lib +libext+.vx -param M=1 top.v", "", "\"top\" has no parameter \"M\""},
      {"-top top -param N=1.5 top.v", "", "is a real number"},
      {"-top top top.v", "", "The module \"deep\" (instance \"u\" of module \"top\") is not defined"},
      {"mix.v count.vhd leaf.v", "g[2].u/SUM[1]", ""},
      {"mix.v count.vhd leaf.v", "g[1].u/U_LEAF/Y", ""},
      {"-top count -param WIDE=9 count.vhd leaf.v", "Sum[8]", ""},
      {"-param wide=yes count.vhd leaf.v", "",
       "The generic \"wide\" of the top entity \"COUNT\" cannot have this value"},
      {"bad.vhd", "", "bad.vhd:2:16: no declaration for \"bitt\""},
      {"mark.v", "w", ""},
      {"wide.v", "", "UTF-16"},
      {"secret.v", "", "secret.v:2: The source is encrypted"},
      {"include.v", "", "include.v:2: The include file \"none.vh\" was not found; name its folder with -incdir"},
      {"-sv builtin import.sv", "", "sv2v on the PATH"},
      {"-top t -blackbox heavy heavy.v", "q", ""},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.list);
    QString error;
    const auto design = readList(scratch, row.list, error);
    EXPECT_EQ(!design, *row.error != 0) << plain(error);
    EXPECT_TRUE(has(error, row.error));
    EXPECT_TRUE(!design || !*row.net || design->exists(row.net));
  }
  // Programs by their names: a stand-in for sv2v, and no GHDL.
  const QByteArray path = qgetenv("PATH"), yosys = QStandardPaths::findExecutable("yosys").toLatin1();
  const QString sv2v =
      scratch.write("sv2v", "#!/bin/sh\nprintf 'module t(input a);\\n\\twire of_sv2v; endmodule\\n'\n");
  QFile::setPermissions(sv2v, QFile::ReadOwner | QFile::ExeOwner);
  qputenv("OST_YOSYS", yosys);
  qputenv("PATH", QFile::encodeName(scratch.folder.path()));
  QString error;
  const auto design = readList(scratch, "import.sv", error);
  EXPECT_TRUE(design && design->exists("of_sv2v")) << plain(error);
  EXPECT_FALSE(readList(scratch, "count.vhd leaf.v", error));
  EXPECT_TRUE(has(error, "install the Debian package \"ghdl\""));
  qputenv("PATH", path);
  qunsetenv("OST_YOSYS");
}

TEST(Sources, leave_the_ports_of_undeclared_black_boxes_to_their_use) {
  Scratch scratch;
  scratch.write("board.v",
                "module board(input pin, inout pad, output o); wire clk, fb, lock, i, x; reg r;\n"
                "PLL #(.M(\"H\")) p(.CLKIN(pin), .FBIN(fb), .FBOUT(fb), .CLK(clk), .LOCKED(lock));\n"
                "PAD b(.IO(pad), .I(r), .T(lock), .O(i)); always @(posedge clk) r <= i; assign o = r;\n"
                "ODD a1(.w(x)), a2(.w(x)); endmodule\n");
  QString error;
  EXPECT_FALSE(readList(scratch, "-top board board.v", error));
  EXPECT_TRUE(has(error, " are not defined; add the files") && has(error, "-blackbox PAD") &&
              has(error, "-blackbox PLL"));
  const auto design = readList(scratch, "-top board -blackbox PLL -blackbox PAD -blackbox ODD board.v", error);
  ASSERT_TRUE(design) << plain(error);
  EXPECT_TRUE(has(design->notes().join(" "), "The port \"w\" of the black box \"ODD\" is taken as an inout"));
  const auto netlist = Netlist::load(*design, error);
  ASSERT_TRUE(netlist) << plain(error);
  for (const auto& [net, kind] : {std::pair{"clk", BitDriver::BlackBox},
                                  {"fb", BitDriver::BlackBox},
                                  {"lock", BitDriver::BlackBox},
                                  {"i", BitDriver::BlackBox},
                                  {"r", BitDriver::FlipFlop}}) {
    BitDriver driver;
    NetBit bit;
    bit.net = net;
    EXPECT_TRUE(netlist->driver(bit, driver) && driver.kind == kind) << net << driver.kind;
  }
}

TEST(Sources, in_vhdl_compute_what_vhdl_says) {
  Scratch scratch;
  scratch.write(
      "ops.vhd",
      "package p is type mode is (Slow, Fast); type st is (A, B); end;\n"
      "library ieee; use ieee.std_logic_1164.all; use ieee.numeric_std.all; use work.p.all;\n"
      "entity ops is port (a, b : in signed(7 downto 0); s : in unsigned(2 downto 0); m : in work.p.mode;\n"
      "  h : out std_logic; y : out signed(7 downto 0)); end;\n"
      "architecture r of ops is type St is (Idle, Run, -- not a value\n Halt); signal State : st := Run; begin\n"
      "State <= Halt when s(0) = '1' else Idle; h <= '1' when State = Halt and m = Fast else '0';\n"
      "process (all) begin case s is\n"
      "when \"000\" => y <= a / b; when \"001\" => y <= a rem b; when \"010\" => y <= a mod b;\n"
      "when \"011\" => y <= abs a; when \"100\" => y <= shift_right(a, 2);\n"
      "when others => y <= a; end case; end process; end;\n");
  QString error;
  const auto design = readList(scratch, "ops.vhd", error);
  ASSERT_TRUE(design && design->netCount() == 7) << plain(error);  // None that GHDL named.
  const struct {
    const char *net, *value, *bits;  // least significant first
  } enums[] = {{"state", "HALT", "01"}, {"State", "idle", "00"}, {"m", "Fast", "1"}, {"s", "Fast", ""}};
  for (const auto& row : enums) {
    NetSelection found;
    ASSERT_TRUE(design->resolve(row.net, found, error)) << plain(error);
    const EnumName* name = findEnumName(found.enumNames, row.value);
    EXPECT_EQ(name ? name->bits : QByteArray(), row.bits) << row.net << ' ' << row.value;
  }
  YosysJob job;
  job.script = design->elaborationScript();
  job.script.line(
      "tee -o /dev/stdout eval -set a 8'hf9 -set b 8'h03 -table s -show y\n"
      "tee -o /dev/stdout eval -set a 8'hf9 -set b 8'hfd -table s -show y");
  job.workingDirectory = design->workingDirectory();
  const YosysResult result = runYosys(job);
  QList<int> values;  // a = -7; b = 3, then -3
  for (const QByteArray& line : result.output.split('\n')) {
    const int at = line.lastIndexOf("8'");
    if (at >= 0 && line.contains("3'")) values.append(qint8(line.mid(at + 2, 8).toInt(nullptr, 2)));
  }
  EXPECT_EQ(values, QList<int>({-2, -1, 2, 7, -2, -7, -7, -7, 2, -1, -1, 7, -2, -7, -7, -7}))
      << result.output.toStdString() << plain(result.error);
}

TEST(Sources, changes_make_a_design_stale_and_a_touch_does_not) {
  Scratch scratch;
  const QByteArray text =
      "module t;\n`include \"part.vh\"\nreg [7:0] m[0:1]; initial $readmemh(\"m.hex\", m);\nendmodule\n";
  const QString include = scratch.write("part.vh", "wire a;\n"), file = scratch.write("t.v", text);
  QString error;
  const QString data = scratch.write("m.hex", "00 01\n");
  const auto design = readDesign(sourceOf({file}), error);
  ASSERT_TRUE(design) << plain(error);
  EXPECT_EQ(design->dependencies(), QStringList({file, data, include}));
  scratch.write("t.v", text);
  EXPECT_FALSE(design->isStale());
  EXPECT_EQ(readDesign(sourceOf({file}), error)->digest(), design->digest());
  scratch.write("m.hex", "00 02\n");
  EXPECT_TRUE(design->isStale());
  EXPECT_NE(readDesign(sourceOf({file}), error)->digest(), design->digest());
  scratch.write("m.hex", "00 01\n");
  EXPECT_FALSE(design->isStale());
  QFile::remove(include);
  EXPECT_TRUE(design->isStale());
}

TEST(Sources, that_change_without_another_size_or_time_have_changed) {
  Scratch scratch;
  const QString file = scratch.write("a.v", "wire a;");
  const QByteArray name = file.toLatin1();
  timespec times[2] = {{1000000000, 0}, {1000000000, 0}};
  for (int i = 0; i < 40; ++i) {
    const char* texts[] = {"wire b;", "wire a;"};
    utimensat(AT_FDCWD, name.constData(), times, 0);
    SourceStamp stamp = SourceStamp::take(file);
    EXPECT_TRUE(stamp.holds());
    scratch.write("a.v", texts[i % 2]);
    utimensat(AT_FDCWD, name.constData(), times, 0);
    EXPECT_FALSE(stamp.holds());
  }
  // A stamp that is as young as the file may have been taken before a last change that left all times alike.
  for (const bool young : {true, false}) {
    SourceStamp stamp = SourceStamp::take(file);
    stamp.hash = "of what stood there before";
    stamp.taken = stamp.changed + (young ? 0 : qint64(3) * 1000000000);
    EXPECT_EQ(stamp.holds(), !young);
  }
  EXPECT_FALSE(SourceStamp::take(file, SourceStamp::now() - qint64(60) * 1000000000).holds());  // since it was read
}

TEST(FileList, holds_files_folders_macros_and_other_lists_or_names_the_bad_line) {
  Scratch scratch;
  ASSERT_TRUE(QDir(scratch.folder.path()).mkdir("sub"));
  scratch.write("sub/in.f", "deep.v // nested\n");
  const QString list = scratch.write("all.f",
                                     "# comment\r\n// another\n  a.v \"b c.v\" /abs/d.v//e.v\n\n+incdir+inc+\"in c\"\n"
                                     "+define+A=1+B -f sub/in.f\nlast.v#1\n"
                                     "-top t -param \"N=a b\" -y lib +libext+.v+.vh -work l=x.vhd,/y.vhd");
  FileListContent content;
  QString error;
  ASSERT_TRUE(readFileList(list, content, error)) << plain(error);
  EXPECT_EQ(content.files, QStringList({scratch.path("a.v"), scratch.path("b c.v"), "/abs/d.v//e.v",
                                        scratch.path("sub/deep.v"), scratch.path("last.v#1")}));
  EXPECT_EQ(content.includeDirs, QStringList({scratch.path("inc"), scratch.path("in c")}));
  EXPECT_EQ(content.defines, QStringList({"A=1", "B"}));
  EXPECT_EQ(content.top + content.parameters.join("") + content.librarySuffixes.join(""), "tN=a b.v.vh");
  EXPECT_EQ(content.libraryDirs + content.vhdlLibraries,
            QStringList({scratch.path("lib"), "l=" + scratch.path("x.vhd") + ",/y.vhd"}));

  const struct {
    const char *text, *error;
  } bad[] = {{"a.v\n-z lib\n", ":2: \"-z\" is not known"},
             {"-timeout 5\n", "\"-timeout\" is not known"},
             {"-sv none\n", "it must be slang, builtin or auto"},
             {"\"a.v\n", ":1: a quote is left open"},
             {"-f\n", ":1: -f wants"},
             {"-f l13.f\n", "nested deeper than 16"},
             {"-f l0.f\n", "one file list too many"},  // each names the next one twice: 2^13 readings in the end
             {"-f none.f\n", "Cannot read the file list"},
             {"-f fifo\n", "it is a FIFO"}};
  for (int i = 0; i < 12; ++i)
    scratch.write(QString("l%1.f").arg(i).toLatin1(), QString("-f l%1.f -f l%1.f").arg(i + 1).toLatin1());
  scratch.write("l12.f", "a.v");
  scratch.write("l13.f", "-f l13.f");
  mkfifo(scratch.path("fifo").toLatin1().constData(), 0600);
  for (const auto& row : bad) {
    FileListContent rest;
    error.clear();
    EXPECT_FALSE(readFileList(scratch.write("bad.f", row.text), rest, error));
    EXPECT_TRUE(has(error, row.error));
  }
}

}  // namespace
}  // namespace ost
