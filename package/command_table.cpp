// The command table as data: what a user can type, what help says about it, and which handler runs it. The help texts
// are part of the package's interface: their spellings and blanks are kept byte for byte.
#include "package/command_table.h"

#include "commands/handlers.h"

// clang-format off
const CommandRow kCommandRows[] = {
    {"ost_project", nullptr,
     "ost_project - Manipulate ostrel insert project\n",
     nullptr},
    {"ost_project", "new",
     "  ost_project new - Create a new ostrel insert project\n"
     "  Usage:\n"
     "    ost_project new [-overwrite] [<new ost file name>]\n",
     &ost_new_project},
    {"ost_project", "open",
     "  ost_project open - Open a ostrel insert project file\n"
     "  Usage:\n"
     "    ost_project open <ost file name>\n",
     &ost_open_project},
    {"ost_project", "save",
     "  ost_project save - Save the current ostrel insert project\n"
     "  Usage:\n"
     "    ost_project save [-overwrite] [<new ost file name>]\n",
     &ost_save_project},
    {"ost_project", "close",
     "  ost_project close - Close the current ostrel insert project\n"
     "  Usage:\n"
     "    ost_project close [-force]\n",
     &ost_close_project},
    {"ost_project", "run",
     "  ost_project run - Run inserting debug core task or DRC checking on the current ostrel insert project\n"
     "  Usage:\n"
     "    ost_project run [-save] [-saveAs <file_name>] [-overwrite] [-drc] [-insert_core <core_name>]...\n"
     "    -save: Save the project before run command\n"
     "    -saveAs: Save as a different file before run command\n"
     "    -overwrite: Overwrite the existing file if the saved as to file exists already\n"
     "    -drc:  Run DRC checking only\n"
     "    -insert_core: Specify the core to be inserted\n"
     "    All cores will be inserted if none is specified.\n",
     &ost_run_project},
    {"ost_core", nullptr,
     "ost_core - Manipulate cores in current project\n",
     nullptr},
    {"ost_core", "list",
     "  ost_core list - List all cores in current project\n"
     "  Usage:\n"
     "    ost_core list\n",
     &ost_list_core},
    {"ost_core", "add",
     "  ost_core add - Add a new core in current project\n"
     "  Usage:\n"
     "    ost_core add <core name>\n",
     &ost_add_core},
    {"ost_core", "delete",
     "  ost_core delete - Remove an existing core from current project\n"
     "  Usage:\n"
     "    ost_core delete <core name>\n",
     &ost_del_core},
    {"ost_core", "rename",
     "  ost_core rename - Rename an existing core in current project\n"
     "  Usage:\n"
     "    ost_core rename <core name> <new name>\n",
     &ost_ren_core},
    {"ost_core", "select",
     "  ost_core select - List the default core or slect a core as the default core in current project\n"
     "  Usage:\n"
     "    ost_core select [core name]\n",
     &ost_select_core},
    {"ost_core", "add_wishbone",
     "  ost_core add_wishbone - Add the Wishbone Master into current project\n"
     "  Usage:\n"
     "    ost_core add_wishbone\n",
     &ost_add_wishbone},
    {"ost_core", "del_wishbone",
     "  ost_core del_wishbone - Remove the Wishbone Master in current project\n"
     "  Usage:\n"
     "    ost_core del_wishbone\n",
     &ost_del_wishbone},
    {"ost_serdes", nullptr,
     "ost_serdes - Manipulate options for serdes debug core\n",
     nullptr},
    {"ost_serdes", "set",
     "  ost_serdes set - List or set options of serdes debug core\n"
     "  Usage:\n"
     "    ost_serdes set [<clk=clock name> [<rst=reset signal, default value is VLO>]\n",
     &ost_set_serdes_opt},
    {"ost_core", "add_serdes",
     "  ost_core add_serdes - Add the Serdes Core into current project\n"
     "  Usage:\n"
     "    ost_core add_serdes\n",
     &ost_add_serdes},
    {"ost_core", "del_serdes",
     "  ost_core del_serdes - Remove the Serdes Core from current project\n"
     "  Usage:\n"
     "    ost_core del_serdes\n",
     &ost_del_serdes},
    {"ost_trace", nullptr,
     "ost_trace - Manipulate trace signals and optins for a debug core in current project\n",
     nullptr},
    {"ost_trace", "add_sig",
     "  ost_trace add_sig - Add signals in a debug core in current project\n"
     "  Usage:\n"
     "    ost_trace add_sig [-core <core name>] [-insert_at <position>] <signals list>\n"
     "      You can specify an existing trace signal/bus name or a postion number in \n"
     "      a trace bus as the inserting position.\n"
     "      For example \"signal1\", \"Bus1<1>\", \"Bus1<.end.>\"...\n",
     &ost_add_trace_sig},
    {"ost_trace", "move_sig",
     "  ost_trace move_sig - Move and rearrange the order of signals in a debug core in current project\n"
     "  Usage:\n"
     "    ost_trace move_sig [-core <core name>] [-move_to <position>] <signals list>\n"
     "      You can specify an existing trace signal/bus name or a postion number in \n"
     "      a trace bus as the new position.\n"
     "      For example \"signal1\", \"Bus1<1>\", \"Bus1<.end.>\"...\n",
     &ost_move_trace_sig},
    {"ost_trace", "list_sig",
     "  ost_trace list_sig - List all trace signals in a debug core in current project\n"
     "  Usage:\n"
     "    ost_trace list_sig [-core <core name>]\n",
     &ost_list_trace_sig},
    {"ost_trace", "del_sig",
     "  ost_trace del_sig - Delete trace signals in a debug core in current project\n"
     "  Usage:\n"
     "    ost_trace del_sig [-core <core name>] <signals list>\n",
     &ost_del_trace_sig},
    {"ost_trace", "group",
     "  ost_trace group - Group specified trace signals in a debug core in current project into a bus\n"
     "  Usage:\n"
     "    ost_trace group [-core <core name>] -bus <bus name> <signals list>\n",
     &ost_group_trace_sig},
    {"ost_trace", "ungroup",
     "  ost_trace ungroup - Ungroup trace signals in a trace bus in a debug core in current project\n"
     "  Usage:\n"
     "    ost_trace ungroup [-core <core name>] <bus name>\n",
     &ost_ungroup_trace_sig},
    {"ost_trace", "rename_bus",
     "  ost_trace rename_bus - Change the name of a trace bus in a debug core in current project\n"
     "  Usage:\n"
     "    ost_trace rename_bus [-core <core name>] -bus <bus name> <new bus name>\n",
     &ost_rename_trace_bus},
    {"ost_trace", "trc_option",
     "  ost_trace trc_option - List or set trace options of a debug core in current project\n"
     "  Usage:\n"
     "    ost_trace trc_option [-core <core name>] [option=value]\n"
     "    You can set the following option:\n"
     "        SampleClk = [signal name]\n"
     "        SampleEnable = [on|off]\n"
     "        SampleEnableSig = [signal name] (depend on SampleEnable is on)\n"
     "        SampleEnablePri = [Active_Low|Active_High] (depend on SampleEnable is on)\n"
     "        BufferDepth = [16,32,...,65536]\n"
     "        Implementation = [EBR|DRAM]\n"
     "        Timestamp = [on|off]\n"
     "        TimestampBits = [<BufferDepth bits + 1> - 63] (depend on Timestamp is on and BufferDepth)\n"
     "        CaptureMode = [single|multiple]\n"
     "        MinimumSamplesPerTrigger (depend on CaptureMode is multiple and BufferDepth)\n"
     "        IncludeTrigger = [on|off]\n",
     &ost_set_trace_opt},
    {"ost_trace", "trig_option",
     "  ost_trace trig_option - List or set trigger options of a debug core in current project\n"
     "  Usage:\n"
     "    ost_trace trig_option [-core <core name>] [option=value]\n"
     "    You can set the following option:\n"
     "        DefaultRadix = [bin|oct|dec|hex]\n"
     "        EventCounter = [on|off]\n"
     "        CounterValue = [2,4,8,16,...,65536] (depend on FinalCounter is on)\n"
     "        TriggerOut = [on|off]\n"
     "        OutNetType = [IO|NET|BOTH] (depend on TriggerOut is on)\n"
     "        OutNetName = [net name] (depend on TriggerOut is on)\n"
     "        OutNetPri = [Active_Low|Active_High] (depend on TriggerOut is on)\n"
     "        OutNetMPW = [pulse number]\n"
     " (depend on TriggerOut is on)\n",
     &ost_set_trace_opt},
    {"ost_tu", nullptr,
     "ost_tu - Manipulate trigger units for a debug core in current project\n",
     nullptr},
    {"ost_tu", "list",
     "  ost_tu list - List all trigger units in a debug core in current project\n"
     "  Usage:\n"
     "    ost_tu list [-core <core name>] \n",
     &ost_list_tu},
    {"ost_tu", "add",
     "  ost_tu add - Add a new trigger unit to a debug core in current project\n"
     "  Usage:\n"
     "    ost_tu add [-core <core name>] [-radix <bin|oct|dec|hex>] [-name <new TU name>] <TU definition>\n"
     "    TU definition format: \"{signal list} Operator Value\"\n"
     "    Operator must be \"==\", \"!=\", \">\", \">=\", \"<\", \"<=\", \".RE.\"(rising edge), \".FE.\"(falling edge) and \".SC.\"(serial compare).\n"
     "    A default trigger unit name will be created if it's omitted in command.\n",
     &ost_add_tu},
    {"ost_tu", "set",
     "  ost_tu set - Set a trigger unit in a debug core in current project\n"
     "  Usage:\n"
     "    ost_tu set [-core <core name>] [-radix <bin|oct|dec|hex>] -name <TU name>\n"
     "               [-add_sig <signal list>] [-del_sig <signal list>] [-set_sig <signal list>]\n"
     "               [-expr <TU definition>] [-op operator] [-val value]\n"
     "    TU definition format: \"{signal list} Operator Value\"\n"
     "    Operator must be \"==\", \"!=\", \">\", \">=\", \"<\", \"<=\", \".RE.\"(rising edge), \".FE.\"(falling edge) and \".SC.\"(serial compare).\n",
     &ost_set_tu},
    {"ost_tu", "rename",
     "  ost_tu rename - Rename an existing trigger unit in a debug core in current project\n"
     "  Usage:\n"
     "    ost_tu rename [-core <core name>] <old name> <new name>\n",
     &ost_ren_tu},
    {"ost_tu", "remove",
     "  ost_tu remove - Delete an existing trigger unit in a debug core in current project\n"
     "  Usage:\n"
     "    ost_tu remove [-core <core name>] <TU name>\n",
     &ost_del_tu},
    {"ost_te", nullptr,
     "ost_te - Manipulate trigger expressions for a debug core in current project\n",
     nullptr},
    {"ost_te", "list",
     "  ost_te list - List all trigger expressions in a debug core in current project\n"
     "  Usage:\n"
     "    ost_te list [-core <core name>] \n",
     &ost_list_te},
    {"ost_te", "add",
     "  ost_te add - Add a new trigger expression to a debug core in current project\n"
     "  Usage:\n"
     "    ost_te add [-core <core name>] [-ram <EBR|Slice>] [-name <new TE name>] [-expression <expreesion string>]\n"
     "               [-max_seq_depth <max depth>] [-max_event_count <max event count>]\n"
     "    A default trigger expression name will be created if it's omitted in command.\n",
     &ost_add_te},
    {"ost_te", "set",
     "  ost_te set - Change an existing trigger expression in a debug core in current project\n"
     "  Usage:\n"
     "    ost_te set [-core <core name>] [-ram <EBR|Slice>] [-expression <expreesion string>]\n"
     "               [-max_seq_depth <max depth>] [-max_event_count <max event count>] <TE name>\n",
     &ost_set_te},
    {"ost_te", "rename",
     "  ost_te rename - Rename an existing trigger expression in a debug core in current project\n"
     "  Usage:\n"
     "    ost_te rename [-core <core name>] <old name> <new name>\n",
     &ost_ren_te},
    {"ost_te", "remove",
     "  ost_te remove - Delete an existing trigger expression in a debug core in current project\n"
     "  Usage:\n"
     "    ost_te remove [-core <core name>] [TE name]\n",
     &ost_del_te},
};
// clang-format on

const std::size_t kCommandRowCount = sizeof kCommandRows / sizeof kCommandRows[0];
