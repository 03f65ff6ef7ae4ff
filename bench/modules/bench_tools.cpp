// What the benchmarks need inside the interpreter: the empty command that dispatch is compared with, the processor
// time of the process and of its ended children, and the peak of its resident memory.
#include <fcntl.h>
#include <sys/resource.h>
#include <tcl.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <ctime>

namespace {

int emptyCommand(ClientData, Tcl_Interp*, int, const char**) {
  return TCL_OK;
}

/// `bench::cpu`: nanoseconds of processor time that this process has used.
int cpuCommand(ClientData, Tcl_Interp* interp, int, Tcl_Obj* const[]) {
  timespec now;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  Tcl_SetObjResult(interp, Tcl_NewWideIntObj(Tcl_WideInt(now.tv_sec) * 1000000000 + now.tv_nsec));
  return TCL_OK;
}

/// `bench::childcpu`: nanoseconds of processor time of all children that have ended.
int childCpuCommand(ClientData, Tcl_Interp* interp, int, Tcl_Obj* const[]) {
  rusage usage;
  getrusage(RUSAGE_CHILDREN, &usage);
  const Tcl_WideInt microseconds = Tcl_WideInt(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1000000 +
                                   usage.ru_utime.tv_usec + usage.ru_stime.tv_usec;
  Tcl_SetObjResult(interp, Tcl_NewWideIntObj(microseconds * 1000));
  return TCL_OK;
}

/// `bench::resident ?reset?`: bytes now and at their peak since the last reset.
int residentCommand(ClientData, Tcl_Interp* interp, int objc, Tcl_Obj* const[]) {
  if (objc > 1) {
    const int file = open("/proc/self/clear_refs", O_WRONLY);
    const bool done = file >= 0 && write(file, "5", 1) == 1;
    if (file >= 0) close(file);
    if (!done) {
      Tcl_SetObjResult(interp, Tcl_NewStringObj("cannot reset the peak of resident memory", -1));
      return TCL_ERROR;
    }
  }
  long now = 0, peak = 0;
  FILE* status = fopen("/proc/self/status", "r");
  char line[256];
  while (status && fgets(line, sizeof line, status)) {
    sscanf(line, "VmRSS: %ld", &now);
    sscanf(line, "VmHWM: %ld", &peak);
  }
  if (status) fclose(status);
  Tcl_Obj* figures[] = {Tcl_NewWideIntObj(Tcl_WideInt(now) * 1024), Tcl_NewWideIntObj(Tcl_WideInt(peak) * 1024)};
  Tcl_SetObjResult(interp, Tcl_NewListObj(2, figures));
  return TCL_OK;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int Bench_tools_Init(Tcl_Interp* interp) {
  if (!Tcl_InitStubs(interp, "8.4", 0)) return TCL_ERROR;
  Tcl_CreateNamespace(interp, "bench", nullptr, nullptr);
  Tcl_CreateCommand(interp, "bench_empty", emptyCommand, nullptr, nullptr);
  Tcl_CreateObjCommand(interp, "bench::cpu", cpuCommand, nullptr, nullptr);
  Tcl_CreateObjCommand(interp, "bench::childcpu", childCpuCommand, nullptr, nullptr);
  Tcl_CreateObjCommand(interp, "bench::resident", residentCommand, nullptr, nullptr);
  return Tcl_PkgProvide(interp, "bench_tools", "1.0");
}
