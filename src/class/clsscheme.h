// Schemes: files `<name>.scheme` on the ado path that give the attributes of
// named styles (and other settings of the graphics layer) under the
// top-level object `.__SCHEME`, where the `style` class looks them up.
//
// A scheme file holds lines of
//     path value          e.g.  textbox.heading.size 14
//     #include name       the lines of scheme `name` first
// with `*` comment lines and empty lines ignored. A path is a dotted list of
// names under `.__SCHEME`; a value is a number, `.`, a quoted string or a
// word (a string). The object at the second level of a path whose first name
// is a class (`textbox.heading`) is an instance of that class, so that a
// style gives every attribute of the class: those the scheme does not name
// keep the class's defaults.
#pragma once
#include "class/clsstore.h"

namespace korvu {

// Reads scheme `name` into `.__SCHEME`, replacing the scheme there only when
// the whole file was read. 0, 601 when there is no such file, or a code
// (message printed).
int cls_scheme_load(const char* name);
// Makes `name` the current scheme and reads it (for `set scheme`).
int cls_set_scheme(const char* name);
// The name of the current scheme (for `c(scheme)`).
const char* cls_scheme_current();
// `.__SCHEME`, read from the current scheme's file on first use; nullkey when
// there is none.
clskey cls_scheme_root();
// Back to no scheme read (after `discard`).
void cls_scheme_forget();

} // namespace korvu
