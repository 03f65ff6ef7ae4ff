// Sources as users and strangers name them: hostile file names, lists, macros, black boxes, errors and changes.
#include <fcntl.h>
#include <sys/stat.h>

#include <QDir>

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
      {{good}, "", "other", "The module \"gone\" is not defined: add the file"},
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
