// The handlers of all sub-commands, visible under their plain names. Each takes the dispatcher's CommandContext, the
// interpreter and the words from the sub-command word on, and returns the Tcl status.
#pragma once

#include <tcl.h>

#include "framework/export.h"

#define OST_HANDLER(name) OST_EXPORT int name(void* clientData, Tcl_Interp* interp, int argc, const char** argv)

OST_HANDLER(ost_new_project);
OST_HANDLER(ost_open_project);
OST_HANDLER(ost_save_project);
OST_HANDLER(ost_close_project);
OST_HANDLER(ost_run_project);

OST_HANDLER(ost_list_core);
OST_HANDLER(ost_add_core);
OST_HANDLER(ost_del_core);
OST_HANDLER(ost_ren_core);
OST_HANDLER(ost_select_core);
OST_HANDLER(ost_add_wishbone);
OST_HANDLER(ost_del_wishbone);
OST_HANDLER(ost_add_serdes);
OST_HANDLER(ost_del_serdes);

OST_HANDLER(ost_list_trace_sig);
OST_HANDLER(ost_add_trace_sig);
OST_HANDLER(ost_move_trace_sig);
OST_HANDLER(ost_del_trace_sig);
OST_HANDLER(ost_group_trace_sig);
OST_HANDLER(ost_ungroup_trace_sig);
OST_HANDLER(ost_rename_trace_bus);

OST_HANDLER(ost_set_trace_opt);
OST_HANDLER(ost_set_serdes_opt);
/// Bound to no command of the package; a host may register it as a sub-command with the service as client data.
OST_HANDLER(ost_set_wbone_opt);

OST_HANDLER(ost_list_tu);
OST_HANDLER(ost_add_tu);
OST_HANDLER(ost_set_tu);
OST_HANDLER(ost_ren_tu);
OST_HANDLER(ost_del_tu);

OST_HANDLER(ost_list_te);
OST_HANDLER(ost_add_te);
OST_HANDLER(ost_set_te);
OST_HANDLER(ost_ren_te);
OST_HANDLER(ost_del_te);
