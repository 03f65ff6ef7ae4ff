// `ost_project` and `ost_core`: what they call, show and return.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "tests/unit/commands/command_fixture.h"

namespace {

typedef ServiceDouble D;

/// Runs in a folder of its own that holds there.ost, p.ost, link.ost (to p.ost) and "café.ost".
class ProjectCommands : public CommandFixture {
 protected:
  ProjectCommands() {
    char folder[] = "/tmp/ost_commands_XXXXXX";
    if (!mkdtemp(folder)) ADD_FAILURE() << "no temporary folder";
    folder_ = folder;
    EXPECT_EQ(0, chdir(folder));
    for (const char* name : {"there.ost", "p.ost", "caf\xc3\xa9.ost"}) std::ofstream(name) << "x";
    EXPECT_EQ(0, symlink("p.ost", "link.ost"));
  }
  ~ProjectCommands() override {
    for (const char* name : {"there.ost", "p.ost", "caf\xc3\xa9.ost", "link.ost"}) std::remove(name);
    EXPECT_EQ(0, chdir("/"));
    rmdir(folder_.c_str());
  }
  std::string folder_;
};

TEST_F(ProjectCommands, New) {
  check({
      {"ost_project new", nullptr, 0, "Untitled", "LoadDesign() NewProject() register()"},
      {"ost_project new n.ost", [](D& d) { d.message = "m"; }, 0, "n.ost",
       "LoadDesign() NewProject!message-not-empty(n.ost) show(m) register()"},
      {"ost_project new there.ost", nullptr, 1, "", "#0104(there.ost,)"},
      {"ost_project new caf\xc3\xa9.ost", nullptr, 1, "", "#0104(caf\xc3\xa9.ost,)"},
      {"ost_project new there.ost -overwrite", nullptr, 0, "there.ost",
       "LoadDesign() NewProject(there.ost) register()"},
      {"ost_project new n.ost", [](D& d) { d.refused = {"LoadDesign"}, d.message = "m"; }, 1, "", "LoadDesign()"},
      {"ost_project new", [](D& d) { d.refused = {"NewProject"}; }, 1, "", "LoadDesign() NewProject() #0105(,)"},
      // The numbered message comes before the service's text.
      {"ost_project new n.ost", [](D& d) { d.refused = {"NewProject"}, d.message = "m"; }, 1, "",
       "LoadDesign() NewProject!message-not-empty(n.ost) #0105(n.ost,) show(m)"},
  });
}

TEST_F(ProjectCommands, Open) {
  const auto closed = [](D& d) { d.projectOpen = false; };
  check({
      {"ost_project open x.ost", nullptr, 0, "p.ost", "OpenProject(x.ost) show() register()"},
      {"ost_project open x.ost", closed, 0, "p.ost", "LoadDesign() OpenProject(x.ost) show() register()"},
      {"ost_project open x.ost",
       [](D& d) { d.projectOpen = false, d.refused = {"LoadDesign"}, d.message = "no design"; }, 1, "no design",
       "LoadDesign()"},
      {"ost_project open x.ost", [](D& d) { d.refused = {"OpenProject"}, d.message = "m"; }, 1, "",
       "OpenProject(x.ost) show(m) #0100(x.ost,)"},
  });
}

TEST_F(ProjectCommands, Save) {
  const auto untitled = [](D& d) { d.projectFile.clear(); };
  check({
      {"ost_project save", [](D& d) { d.message = "not shown"; }, 0, "", "SaveProject()"},
      {"ost_project save p.ost", nullptr, 0, "", "SaveProjectAs(p.ost)"},
      {"ost_project save ./link.ost", nullptr, 0, "", "SaveProjectAs(./link.ost)"},
      {"ost_project save new.ost", nullptr, 0, "", "SaveProjectAs(new.ost)"},
      {"ost_project save new.ost", [](D& d) { d.projectFile = "gone.ost"; }, 0, "", "SaveProjectAs(new.ost)"},
      {"ost_project save there.ost", nullptr, 1, "", "#0104(there.ost,)"},
      {"ost_project save there.ost", [](D& d) { d.projectFile = "gone.ost"; }, 1, "", "#0104(there.ost,)"},
      {"ost_project save -overwrite there.ost", nullptr, 0, "", "SaveProjectAs(there.ost)"},
      {"ost_project save there.ost", untitled, 0, "", "SaveProjectAs(there.ost)"},
      {"ost_project save", [](D& d) { d.refused = {"SaveProject"}, d.message = "m"; }, 1, "", "SaveProject() #0106(,)"},
      {"ost_project save new.ost", [](D& d) { d.refused = {"SaveProjectAs"}; }, 1, "",
       "SaveProjectAs(new.ost) #0106(,)"},
  });
}

TEST_F(ProjectCommands, Close) {
  check({
      {"ost_project close", nullptr, 0, "", "isProjChanged() CloseProject() unregister()"},
      {"ost_project close -force", [](D& d) { d.changed = true; }, 0, "", "CloseProject() unregister()"},
      {"ost_project close", [](D& d) { d.changed = true; }, 1, "", "isProjChanged() #0102(,)"},
      {"ost_project close", [](D& d) { d.projectOpen = false, d.busy = true; }, 1, "", "#0101(,)"},
      {"ost_project close x", [](D& d) { d.projectOpen = false; }, 1, "usage", "usage()"},
      {"ost_project close -force", [](D& d) { d.refused = {"CloseProject"}; }, 1, "", "CloseProject() #0103(,)"},
  });
}

TEST_F(ProjectCommands, Run) {
  const auto untitled = [](D& d) { d.projectFile.clear(); };
  check({
      {"ost_project run", nullptr, 0, "", "EnableAllCores(1) DRC() show() Insert(1) #0109(,)"},
      {"ost_project run -drc", [](D& d) { d.message = "m"; }, 0, "", "EnableAllCores(1) DRC() show(m)"},
      {"ost_project run", [](D& d) { d.refused = {"DRC"}; }, 1, "DRC error", "EnableAllCores(1) DRC() show()"},
      {"ost_project run", [](D& d) { d.refused = {"Insert"}; }, 1, "",
       "EnableAllCores(1) DRC() show() Insert(1) #0109(,)"},
      {"ost_project run -insert_core c1 -insert_core no -insert_core c2", nullptr, 0, "",
       "EnableAllCores(0) EnableCore(c1,1) EnableCore(no,1) #0107(no,) EnableCore(c2,1) DRC() show() Insert(1) "
       "#0109(,)"},
      {"ost_project run -save -saveAs new.ost -drc", [](D& d) { d.message = "m"; }, 0, "",
       "EnableAllCores(1) SaveProjectAs(new.ost) show(m) DRC() show(m)"},
      {"ost_project run -saveAs link.ost -drc", nullptr, 0, "",
       "EnableAllCores(1) SaveProjectAs(link.ost) DRC() show()"},
      {"ost_project run -saveAs there.ost", nullptr, 1, "", "EnableAllCores(1) #0104(there.ost,)"},
      {"ost_project run -saveAs there.ost", untitled, 1, "", "EnableAllCores(1) #0104(there.ost,)"},
      {"ost_project run -saveAs there.ost -overwrite -drc", untitled, 0, "",
       "EnableAllCores(1) SaveProjectAs(there.ost) DRC() show()"},
      {"ost_project run -saveAs new.ost", [](D& d) { d.refused = {"SaveProjectAs"}, d.message = "m"; }, 1, "",
       "EnableAllCores(1) SaveProjectAs(new.ost) #0106(new.ost,)"},
      {"ost_project run -save -drc", [](D& d) { d.message = "m"; }, 0, "",
       "EnableAllCores(1) SaveProject() show(m) DRC() show(m)"},
      {"ost_project run -save", untitled, 1, "", "EnableAllCores(1) #0108(,)"},
      {"ost_project run -save", [](D& d) { d.refused = {"SaveProject"}, d.message = "m"; }, 1, "",
       "EnableAllCores(1) SaveProject() #0106(,)"},
  });
}

class CoreCommands : public CommandFixture {};

TEST_F(CoreCommands, ListAddDeleteRenameSelect) {
  check({
      {"ost_core list",
       [](D& d) {
         d.cores = {"c1", "a b", "{"};
       },
       0, "c1 {a b} \\{", "getCoreNameList()"},
      {"ost_core list", [](D& d) { d.cores.clear(); }, 0, "", "getCoreNameList()"},
      {"ost_core add x\xc3\xa0", [](D& d) { d.message = "w"; }, 0, "c2", "addCore(x\xc3\xa0) show(w\\n)"},
      {"ost_core add x", [](D& d) { d.refused = {"addCore"}, d.message = "w"; }, 1, "",
       "addCore(x) show(w\\n) #0110(,)"},
      {"ost_core delete x", [](D& d) { d.message = "w"; }, 0, "", "deleteCore(x)"},
      {"ost_core delete x", [](D& d) { d.refused = {"deleteCore"}, d.message = "w"; }, 1, "", "deleteCore(x) #0110(,)"},
      {"ost_core rename a b", [](D& d) { d.message = "w"; }, 0, "b", "renameCore(a,b)"},
      {"ost_core rename a b", [](D& d) { d.refused = {"renameCore"}; }, 1, "", "renameCore(a,b) #0113(,)"},
      {"ost_core select", nullptr, 0, "c1", "getActiveCoreName()"},
      {"ost_core select", [](D& d) { d.noActiveCore = true; }, 0, "", "getActiveCoreName()"},
      {"ost_core select alias", nullptr, 0, "c1", "getCore(alias) selectCore(alias)"},
      {"ost_core select no", nullptr, 1, "", "getCore(no) #0112(no,)"},
      {"ost_core select c1", [](D& d) { d.refused = {"selectCore"}; }, 1, "", "getCore(c1) selectCore(c1)"},
  });
}

TEST_F(CoreCommands, OptionalCores) {
  const struct {
    const char *subCommand, *operation, *code;
    bool shows;
  } family[] = {{"add_wishbone", "addWishboneMaster", "0114", true},
                {"del_wishbone", "deleteWishboneMaster", "0115", false},
                {"add_serdes", "addSerdesCore", "0166", true},
                {"del_serdes", "deleteSerdesCore", "0167", false}};
  for (const auto& f : family) {
    const std::string seen = std::string(f.operation) + "()" + (f.shows ? " show(w\\n)" : "");
    const std::string script = std::string("ost_core ") + f.subCommand;
    EXPECT_EQ(TCL_OK, run(script, [](D& d) { d.message = "w"; }));
    EXPECT_EQ(seen, work());
    EXPECT_EQ(TCL_ERROR, run(script, [&f](D& d) { d.message = "w", d.refused = {f.operation}; }));
    EXPECT_EQ(seen + " #" + f.code + "(,)", work());
    EXPECT_EQ("", result());
  }
}

}  // namespace
