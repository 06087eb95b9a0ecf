// The compress command.
#include "data/area/areacmds.h"
#include "data/area/dataarea.h"
#include "kernel/errors/errors.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/options.h"

namespace korvu {

int compresscmd(int) {
    if (nvar == 0) return dataarea_error(3);
    ifable = 3;
    oable = 3;
    if (int rc = parse()) return rc;
    if (int rc = chkopt()) return rc;
    int rc = compress_vars(varlist_vr, lnvar, nullptr, nullptr);
    return rc ? (rc == 1 ? 1 : dataarea_error(rc)) : 0;
}

} // namespace korvu
