// Sources as users and strangers name them: hostile file names, lists, macros, black boxes, errors and changes.
#include <QDir>

#include "platform/design/file_list.h"
#include "platform/design/yosys.h"
#include "tests/unit/design/scratch.h"

namespace {

using namespace ost;

TEST(Sources, with_hostile_file_names_are_files_and_never_commands) {
  const char* const names[] = {"a b.v",
                               "semi;colon.v",
                               "end;",
                               "-v.v",
                               "#x.v",
                               "new\nline.v",
                               "q\"uote.v",
                               "'s.v",
                               "$(touch pwned).v",
                               "`touch pwned`.v",
                               "!touch pwned.v",
                               "gl*b.v",
                               "[x].v",
                               "{a,b}.v",
                               "<<EOT.v",
                               "caf\xc3\xa9.v",
                               "back\\",
                               "~root.v",
                               "+tilde.v",
                               "%s.v",
                               "tab\t.v",
                               "|x.v",
                               ">x.v"};
  Scratch scratch;
  ASSERT_TRUE(QDir(scratch.folder.path()).mkdir(wire("dir \";x")));
  for (const char* name : names) {
    for (const char* folder : {"", "dir \";x/"}) {
      const QByteArray path = QByteArray(folder) + name;
      SCOPED_TRACE(path.constData());
      scratch.write(QByteArray(folder) + "part.vh", "wire from_include;\n");
      const QString file = scratch.write(path, "module t;\n`include \"part.vh\"\nendmodule\n");
      QString error;
      const auto design = readDesign(sourceOf({file}), error);
      ASSERT_TRUE(design) << plain(error);
      EXPECT_TRUE(design->exists(wire("from_include")));
      EXPECT_TRUE(design->dependencies().contains(file));

      scratch.write(path, "module t;\nwire ;\nendmodule\n");
      EXPECT_TRUE(design->isStale());
      EXPECT_FALSE(readDesign(sourceOf({file}), error));
      QString shown = file + wire(":2: syntax error");
      shown.replace(QLatin1Char('\n'), QLatin1Char('?')).replace(QLatin1Char('\t'), QLatin1Char('?'));
      EXPECT_TRUE(error.startsWith(shown)) << plain(error);
      QFile::remove(fileFromWire(file));
    }
  }
  EXPECT_FALSE(QFile::exists(wire("pwned")));
  EXPECT_FALSE(QFile::exists(scratch.folder.filePath(wire("pwned"))));
}

TEST(Sources, that_cannot_be_read_give_one_text_with_the_way_out) {
  Scratch scratch;
  const QString good = scratch.write("good.v", "module t; wire n; gone u(); endmodule\n");
  const QString folder = wireFromFile(scratch.folder.path());
  const auto with = [](DesignSource source, const auto& change) {
    change(source);
    return source;
  };
  const DesignSource base = sourceOf({good});
  const struct {
    DesignSource source;
    const char* text;
  } table[] = {
      {sourceOf({folder + wire("/none.v")}), "none.v\": no such file"},
      {sourceOf({folder}), "it is a folder"},
      {sourceOf({wire("/dev/zero")}), "not a regular file"},
      {sourceOf({}), "No source file"},
      {sourceOf({good, scratch.write("x.json", "{}")}), "give it alone"},
      {base, "The module \"gone\" (instance \"u\" of module \"t\") is not defined: add the file"},
      {with(base, [](DesignSource& s) { s.blackBoxes << wire("other"); }), "\"gone\" is not defined"},
      {with(base, [](DesignSource& s) { s.blackBoxes << wire("a;b"); }), "\"a;b\" is not a module name"},
      {with(base, [](DesignSource& s) { s.top = wire("nope"); }), "no module \"nope\" to be the top"},
      {with(base, [](DesignSource& s) { s.top = wire("x\n!touch pwned"); }), "cannot be the name of the top"},
      {with(base, [](DesignSource& s) { s.top = wire("x y"); }), "cannot be the name of the top"},
      {with(base, [](DesignSource& s) { s.defines << wire("1X=2"); }), "\"1X=2\" is not a macro definition"},
      {with(base, [](DesignSource& s) { s.defines << wire("X=a\nOST_END_OF_DEFINES"); }), "control character"},
      {with(base, [](DesignSource& s) { s.includeDirs << wire("/none"); }), "include folder \"/none\" does not exist"},
      {sourceOf({scratch.write("empty.v", "// nothing\n")}), "declare no module"},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.text);
    QString error;
    EXPECT_FALSE(readDesign(row.source, error));
    EXPECT_NE(plain(error).find(row.text), std::string::npos) << plain(error);
    EXPECT_EQ(error.count(QLatin1Char('\n')), 0);
  }
}

TEST(Sources, take_macros_black_boxes_and_both_languages) {
  Scratch scratch;
  DesignSource source = sourceOf({
      scratch.write("heavy.v",
                    "`ifndef HEAVY\n`define HEAVY\nmodule heavy #(parameter W = 2) (input [W-1:0] a);\n"
                    "  wire inner; not_there u();\nendmodule\n`endif\n"),
      scratch.write("types.sv",
                    "package p; typedef enum logic [1:0] {A, B, C} state_t; endpackage\n"
                    "module t; p::state_t state; wire [`WIDTH-1:0] w; u v(); heavy #(.W(3)) h(w[2:0]);\n"
                    "undefined x(w); endmodule\n"),
      scratch.write("plain.v", "module u; wire bit, logic; endmodule\n"),
  });
  source.defines << wire("WIDTH=(2 + 3)") << wire("TEXT=\"a ; b\"") << wire("FLAG");
  source.blackBoxes << wire("heavy") << wire("undefined");
  for (const char* top : {"", "t"}) {
    source.top = wire(top);
    QString error;
    const auto design = readDesign(source, error);
    ASSERT_TRUE(design) << plain(error);
    EXPECT_EQ(plain(design->topModule()), "t");
    NetSelection net;
    EXPECT_TRUE(design->resolve(wire("w"), net, error) && net.bits.size() == 5);
    EXPECT_TRUE(design->resolve(wire("state"), net, error) && net.bits.size() == 2);
    EXPECT_TRUE(design->exists(wire("v/logic")));
    EXPECT_FALSE(design->resolve(wire("h/a"), net, error));
    EXPECT_FALSE(design->resolve(wire("h"), net, error));
    EXPECT_NE(plain(error).find("black box"), std::string::npos) << plain(error);
  }
}

TEST(Sources, are_elaborated_again_with_declared_black_boxes_as_instances) {
  Scratch scratch;
  QString error;
  const QString file = scratch.write("t v.v",
                                     "module t(input a, output y); LUT #(.INIT(`I)) l(a, y); endmodule\n"
                                     "(* blackbox *) module LUT(input A, output Y);\n"
                                     "parameter INIT = 0; endmodule\n");
  DesignSource source = sourceOf({file});
  source.defines << wire("I=3");
  const auto design = readDesign(source, error);
  ASSERT_TRUE(design) << plain(error);
  YosysJob job;
  job.script = design->elaborationScript() + "write_verilog -noattr /proc/self/fd/3\n";
  job.workingDirectory = design->workingDirectory();
  QFile out(scratch.folder.filePath(wire("out.v")));
  ASSERT_TRUE(out.open(QIODevice::ReadWrite));
  job.files << out.handle();
  const YosysResult result = runYosys(job);
  ASSERT_TRUE(result.ok) << plain(result.error);
  const QByteArray text = out.readAll();
  EXPECT_TRUE(text.contains("LUT #(") && text.contains(".INIT(32'sd3)")) << text.constData();
}

TEST(Sources, changes_make_a_design_stale_and_a_touch_does_not) {
  Scratch scratch;
  const QString include = scratch.write("part.vh", "wire a;\n"), data = scratch.write("contents_of_m.hex", "00 01\n");
  const QByteArray text =
      "module t;\n`include \"part.vh\"\nreg [7:0] m[0:1]; initial $readmemh(\"contents_of_m.hex\", m);\nendmodule\n";
  const QString file = scratch.write("t.v", text);
  QString error;
  const auto design = readDesign(sourceOf({file}), error);
  ASSERT_TRUE(design) << plain(error);
  EXPECT_EQ(design->dependencies(), QStringList({file, data, include}));
  EXPECT_FALSE(design->isStale());
  scratch.write("t.v", text);
  EXPECT_FALSE(design->isStale());
  EXPECT_EQ(readDesign(sourceOf({file}), error)->digest(), design->digest());
  scratch.write("contents_of_m.hex", "00 02\n");
  EXPECT_TRUE(design->isStale());
  EXPECT_NE(readDesign(sourceOf({file}), error)->digest(), design->digest());
  scratch.write("contents_of_m.hex", "00 01\n");
  EXPECT_FALSE(design->isStale());
  QFile::remove(fileFromWire(include));
  EXPECT_TRUE(design->isStale());
}

TEST(FileList, holds_files_folders_macros_and_other_lists_relative_to_its_folder) {
  Scratch scratch;
  const QString folder = wireFromFile(scratch.folder.path()) + QLatin1Char('/');
  ASSERT_TRUE(QDir(scratch.folder.path()).mkdir(wire("sub")));
  scratch.write("sub/in.f", "deep.v // nested\n");
  const QString list = scratch.write("all.f",
                                     "# comment\r\n// another\n  a.v \"b c.v\" /abs/d.v//e.v\n\n+incdir+inc+\"in c\"\n"
                                     "+define+A=1+B -f sub/in.f\nlast.v#1");
  FileListContent content;
  QString error;
  ASSERT_TRUE(readFileList(list, content, error)) << plain(error);
  EXPECT_EQ(content.files, QStringList({folder + wire("a.v"), folder + wire("b c.v"), wire("/abs/d.v//e.v"),
                                        folder + wire("sub/deep.v"), folder + wire("last.v#1")}));
  EXPECT_EQ(content.includeDirs, QStringList({folder + wire("inc"), folder + wire("in c")}));
  EXPECT_EQ(content.defines, QStringList({wire("A=1"), wire("B")}));

  const struct {
    const char *text, *error;
  } bad[] = {{"a.v\n-y lib\n", ":2: \"-y\" is not known"},
             {"\"a.v\n", ":1: a quote is left open"},
             {"-f\n", ":1: -f wants"},
             {"-f bad.f\n", "nested deeper than 16"},
             {"-f none.f\n", "Cannot read the file list"}};
  for (const auto& row : bad) {
    const QString name = scratch.write("bad.f", row.text);
    error.clear();
    FileListContent rest;
    EXPECT_FALSE(readFileList(name, rest, error));
    EXPECT_NE(plain(error).find(row.error), std::string::npos) << plain(error);
  }

  // Each names the next twice: 2^13 readings in the end.
  for (int i = 0; i < 13; ++i) {
    const std::string line = "-f l" + std::to_string(i + 1) + ".f -f l" + std::to_string(i + 1) + ".f\n";
    scratch.write(QByteArray::fromStdString("l" + std::to_string(i) + ".f").constData(), line.c_str());
  }
  scratch.write("l13.f", "a.v\n");
  FileListContent many;
  error.clear();
  EXPECT_FALSE(readFileList(folder + wire("l0.f"), many, error));
  EXPECT_NE(plain(error).find("one file list too many"), std::string::npos) << plain(error);
}

}  // namespace
