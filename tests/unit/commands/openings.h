// How every sub-command begins: which checks it makes and which words it takes. The no-project, busy, wrong-word and
// core cases of all sub-commands are generated from these rows, and the registry check demands a row for each.
#pragma once

enum OpeningCore { NO_CORE, WITH_TRACE, WITH_DATASET };

struct Opening {
  const char* command;
  const char* subCommand;
  bool needsProject;
  bool needsIdle;
  OpeningCore core;   ///< Whether it takes `-core`, and what it then needs of the core.
  int fewest, most;   ///< Positional words; a negative most is no limit.
  const char* words;  ///< Words that make it work (in its editing form, where it has two).
};

const Opening kOpenings[] = {
    {"ost_project", "new", false, false, NO_CORE, 0, 1, "n.ost"},
    {"ost_project", "open", false, false, NO_CORE, 1, 1, "n.ost"},
    {"ost_project", "save", true, false, NO_CORE, 0, 1, ""},
    {"ost_project", "close", false, true, NO_CORE, 0, 0, ""},
    {"ost_project", "run", true, true, NO_CORE, 0, 0, ""},
    {"ost_core", "list", true, false, NO_CORE, 0, 0, ""},
    {"ost_core", "add", true, true, NO_CORE, 1, 1, "c2"},
    {"ost_core", "delete", true, true, NO_CORE, 1, 1, "c1"},
    {"ost_core", "rename", true, true, NO_CORE, 2, 2, "c1 c3"},
    {"ost_core", "select", true, true, NO_CORE, 0, 1, "c1"},
    {"ost_core", "add_wishbone", true, true, NO_CORE, 0, 0, ""},
    {"ost_core", "del_wishbone", true, true, NO_CORE, 0, 0, ""},
    {"ost_core", "add_serdes", true, true, NO_CORE, 0, 0, ""},
    {"ost_core", "del_serdes", true, true, NO_CORE, 0, 0, ""},
    {"ost_serdes", "set", true, true, NO_CORE, 0, -1, "clk=c"},
    {"ost_trace", "list_sig", true, false, WITH_TRACE, 0, 0, ""},
    {"ost_trace", "add_sig", true, true, WITH_TRACE, 1, 1, "a"},
    {"ost_trace", "move_sig", true, true, WITH_TRACE, 1, 1, "a"},
    {"ost_trace", "del_sig", true, true, WITH_TRACE, 1, 1, "a"},
    {"ost_trace", "group", true, true, WITH_TRACE, 1, 1, "a"},
    {"ost_trace", "ungroup", true, true, WITH_TRACE, 1, 1, "B"},
    {"ost_trace", "rename_bus", true, true, WITH_TRACE, 1, 1, "-bus B C"},
    {"ost_trace", "trc_option", true, true, WITH_TRACE, 0, -1, "SampleClk=clk"},
    {"ost_trace", "trig_option", true, true, WITH_TRACE, 0, -1, "TriggerOut=on"},
    {"ost_tu", "list", true, false, WITH_DATASET, 0, 0, ""},
    {"ost_tu", "add", true, true, WITH_DATASET, 0, 1, "{a == 1}"},
    {"ost_tu", "set", true, true, WITH_DATASET, 0, 0, "-name t1"},
    {"ost_tu", "rename", true, true, WITH_DATASET, 2, 2, "t1 t3"},
    {"ost_tu", "remove", true, true, WITH_DATASET, 1, 1, "t1"},
    {"ost_te", "list", true, false, WITH_DATASET, 0, 0, ""},
    {"ost_te", "add", true, true, WITH_DATASET, 0, 0, ""},
    {"ost_te", "set", true, true, WITH_DATASET, 1, 1, "t1"},
    {"ost_te", "rename", true, true, WITH_DATASET, 2, 2, "t1 t3"},
    {"ost_te", "remove", true, true, WITH_DATASET, 1, 1, "t1"},
};
