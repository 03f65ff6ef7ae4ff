// Between Tcl's values and ours, for the commands of the platform's own packages. Inline: each of their libraries has a
// stubs pointer of its own.
#pragma once

#include <tcl.h>

#include <QString>

namespace ost {

/// The bytes of a Tcl value as byte text, and back.
inline QString textFromTcl(Tcl_Obj* value) {
  int length = 0;
  const char* bytes = Tcl_GetStringFromObj(value, &length);
  return QString::fromLatin1(bytes, length);
}

inline Tcl_Obj* tclFromText(const QString& wire) {
  const QByteArray bytes = wire.toLatin1();
  return Tcl_NewStringObj(bytes.constData(), bytes.size());
}

/// Sets result and errorCode (a list) and returns TCL_ERROR.
inline int failWith(Tcl_Interp* interp, const QString& message, const char* errorCode) {
  Tcl_SetObjResult(interp, tclFromText(message));
  Tcl_SetObjErrorCode(interp, Tcl_NewStringObj(errorCode, -1));
  return TCL_ERROR;
}

/// A Tcl list under construction.
class TclList {
 public:
  TclList() { Tcl_IncrRefCount(list_); }
  ~TclList() { Tcl_DecrRefCount(list_); }
  TclList(const TclList&) = delete;
  TclList& operator=(const TclList&) = delete;
  void add(Tcl_Obj* element) { Tcl_ListObjAppendElement(nullptr, list_, element); }
  void add(const char* word) { add(Tcl_NewStringObj(word, -1)); }
  /// A name and its value, as `dict` reads them.
  void add(const char* name, Tcl_Obj* value) {
    add(name);
    add(value);
  }
  operator Tcl_Obj*() const { return list_; }

 private:
  Tcl_Obj* const list_ = Tcl_NewListObj(0, nullptr);
};

}  // namespace ost
