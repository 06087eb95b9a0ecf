// The commands `preserve [, changed]` and `restore [, not preserve]`.
#include "data/combine/combine.h"
#include "kernel/errors/errors.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"

namespace korvu {

// Nothing but options may follow the command word.
static int onlyoptions() {
    noptn = 0;
    opable = 0;
    gettok(prsestd);
    if (!token[0]) return 0;
    if (!tokis(token, ",")) return error(198);
    return proption();
}

int preservecmd(int) {
    if (int rc = onlyoptions()) return rc;
    int changed = findopt("changed", 7, 0);
    if (int rc = chkopt()) return rc;
    return syspreserve(changed);
}

int restorecmd(int) {
    if (int rc = onlyoptions()) return rc;
    int flags = 0;
    if (findopt("not", 3, 0)) flags |= RESTORE_NOT;
    if (findopt("preserve", 8, 0)) flags |= RESTORE_PRESERVE;
    if (int rc = chkopt()) return rc;
    return restore(flags);
}

} // namespace korvu
