// expand [=]exp [if] [in] [, generate(newvar)]: each selected observation
// is repeated so that exp copies stand (values below 1 or missing keep the
// one there is); the copies go to the end of the data.
#include <algorithm>
#include <cmath>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/missing.h"
#include "data/area/storage.h"
#include "data/expr/expr.h"
#include "data/groups/groups_internal.h"
#include "data/sort/sort.h"
#include "data/vars/vartab.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "output/spout.h"

namespace korvu {

int expandcmd(int) {
    // the = is optional
    TokPos at;
    stattok(&at);
    gettok(prsestd);
    if (!token[0]) return errtext(198, "expand: an expression is required\n");
    if (!tokis(token, "=")) resettok(&at);
    static ExpObj count;
    if (int rc = compexp(&count, 0, 0, 0)) return rc;
    wable = 3;
    opable = 0;
    vable = 3;
    ifable = 0;
    oable = 0;
    if (int rc = parse()) return rc;
    bool given = false;
    std::string gen = grp_optarg("generate", 1, &given);
    while (!gen.empty() && gen.back() == ' ') gen.pop_back();
    if (int rc = chkopt()) return rc;
    if (given) {
        if (int rc = chkname(gen.c_str(), 1)) return rc;
        if (sysfindvar(gen.c_str())) return error2(110, gen.c_str());
    }
    std::vector<uint8_t> take;
    if (int rc = grp_take(take, nullptr)) return rc;
    const int32_t n1 = nobs1, n2 = nobs2;
    std::vector<double> copies(take.size(), 1.0);
    initialize_xeq();
    double extra = 0;
    for (int32_t i = n1; i <= n2; i++) {
        if (!take[i - n1]) continue;
        double e = xeq(&count, i);
        if (e >= misval || e < 1) continue;
        copies[i - n1] = std::floor(e);
        extra += copies[i - n1] - 1;
    }
    if (nobs + extra > 2147483646.0) return error(901);
    const int32_t old = nobs, add = static_cast<int32_t>(extra);
    if (old + add > maxobs) {
        int rc = repartobs(old + add - maxobs);
        if (rc || old + add > maxobs) return error(901);
    }
    int mark = 0;
    if (given) {
        if (int rc = addvar(gen.c_str(), KV_BYTE)) return rc;
        mark = nvar;
        i_nvar = nvar;
        for (int32_t i = 1; i <= old; i++) store(mark, i, 0);
    }
    const int32_t w = usedwidth();
    std::vector<uint8_t> rec(static_cast<size_t>(w) + 1);
    int32_t to = old;
    for (int32_t i = n1; i <= n2; i++) {
        if (kvpollstd()) {
            nobs = old; // the copies made so far go
            return 1;
        }
        int64_t c = static_cast<int64_t>(copies[i - n1]) - 1;
        if (c <= 0) continue;
        getdtaobs(rec.data(), i, w);
        for (int64_t k = 0; k < c; k++) {
            putdtaobs(rec.data(), ++to, w);
            nobs = to;
            if (mark) store(mark, to, 1);
        }
    }
    nobs = old + add;
    if (add) reset_sort(0);
    updata = 1;
    spoutlevf(1, "(%d observation%s created)\n", add, add == 1 ? "" : "s");
    return 0;
}

} // namespace korvu
