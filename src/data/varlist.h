// Reading a variable list from the token stream into `varlist_vr`/`lnvar`.
#pragma once

namespace korvu {

// Reads the list under `delims`; `isnew` for a list of new names. Stops at a
// keyword; returns a code.
int ssvlist(const char* delims, int isnew);

} // namespace korvu
