// Shared between the macro source files; not for other subsystems.
#pragma once
#include <cstddef>

namespace korvu {
// macincr without messages: 111 for an absent macro, 109 for a non-number.
int macincr_quiet(const char* name, const char* op, char* out, int mode);
// macresave into a given type (the result stores' macros).
int macresave_type(const char* name, int type, const char* text);
// Prints "<what> not available yet" at level 3 and returns 199.
int mac_notyet(const char* what);
} // namespace korvu
