// append using file [, nolabel nonotes]: the records of the using file go
// behind the data in memory, variable by variable by name.
#include <cstring>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/storage.h"
#include "data/combine/combine.h"
#include "data/combine/combine_internal.h"
#include "data/dta/dta.h"
#include "kernel/errors/errors.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"

namespace korvu {

int appendcmd(int) {
    noptn = 0;
    opable = 0;
    gettok(prsestd);
    if (tokisstr(token) || !tokis(token, "using")) return required("using");
    char fn[FNLEN] = {};
    if (int rc = gettokfn(fn, sizeof fn)) return error(rc);
    gettok(prsestd);
    if (token[0]) {
        if (!tokis(token, ",")) return error(198);
        if (int rc = proption()) return rc;
    }
    MergeCtl c;
    c.nolabel = findopt("nolabel", 5, 0);
    c.nonotes = findopt("nonotes", 7, 0);
    if (int rc = chkopt()) return rc;
    const std::string file = dflttype(fn);

    if (int rc = mersetup_read(c, file.c_str())) return rc;
    if (int rc = mersetup_check(c)) return rc;
    const int64_t n0 = nobs, nu = c.img.nobs;
    if (int rc = mersetup_room(c, 0, 0, n0 + nu)) return rc;
    // nothing has changed up to here; the rest runs to its end
    mersetup_apply(c);
    colsync();
    std::vector<bool> filled(static_cast<size_t>(nvar) + 1, false);
    for (size_t j = 0; j < c.img.v.size(); ++j) {
        const int v = c.map[j];
        if (!v) continue;
        filled[v] = true;
        const DtaImageVar& u = c.img.v[j];
        uint8_t* dst = colptr(v) + n0 * cellwidth(v);
        if (u.code == typlist[v - 1])
            std::memcpy(dst, u.col.data(), static_cast<size_t>(nu * cellwidth(v)));
        else
            convert_cells(dst, typlist[v - 1], u.col.data(), u.code, nu, false);
    }
    for (int v = 1; v <= nvar; ++v) {
        const int w = cellwidth(v);
        uint8_t* col = colptr(v);
        if (v > c.nvar0) // new: missing for the old records
            for (int64_t i = 0; i < n0; ++i) cell_setmissing(col + i * w, typlist[v - 1]);
        else if (!filled[v])
            for (int64_t i = n0; i < n0 + nu; ++i) cell_setmissing(col + i * w, typlist[v - 1]);
    }
    nobs = static_cast<int32_t>(n0 + nu);
    if (nu > 0) srtlist[0] = 0;
    updata = 1;
    i_nvar = nvar;
    return 0;
}

} // namespace korvu
