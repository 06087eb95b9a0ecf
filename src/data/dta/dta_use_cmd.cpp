// The `use` command: `use filename [, clear nolabel]` and
// `use [varlist] [if] [in] using filename [, clear nolabel]`.
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "data/dta/dta.h"
#include "data/dta/dta_internal.h"
#include "data/expr/expr.h"
#include "kernel/errors/errors.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "output/spout.h"

namespace korvu {

// The variables read in stay after the command: the loop sets nvar back to
// i_nvar when a command returns.
static int use_into_memory(const char* file, const UseOpts& o) {
    int rc = dta_use(file, o);
    i_nvar = nvar;
    return rc;
}

static int takeopts(UseOpts& o) {
    int clear = findopt("clear", 5, 0);
    int replace = findopt("replace", 7, 0);
    o.label = !findopt("nolabel", 5, 0);
    if (int rc = chkopt()) return rc;
    if (updata && !clear && !replace) return error(4);
    return 0;
}

// Parses the line against a borrowed variable table (the file's names).
struct Borrow {
    char* vl;
    uint8_t* tl;
    int32_t nv, no, inv;
    Borrow(char* names, uint8_t* types, int32_t n, int32_t obs)
        : vl(varlist), tl(typlist), nv(nvar), no(nobs), inv(i_nvar) {
        varlist = names, typlist = types, nvar = n, nobs = obs, i_nvar = n;
    }
    ~Borrow() { varlist = vl, typlist = tl, nvar = nv, nobs = no, i_nvar = inv; }
};

static int parse_sub(const TokPos& start) {
    resettok(&start);
    vable = 0;
    opable = 0;
    ifable = 0;
    oable = 0;
    uable = 1;
    wgtable = 3;
    wable = 3;
    return parse();
}

static int use_sub(const TokPos& start) {
    // the file name first: the varlist is read against the file's names
    char fn[FNLEN] = {};
    for (;;) {
        gettok(prsestd);
        if (!token[0]) return required("using");
        if (!tokisstr(token) && tokis(token, "using")) break;
    }
    if (int rc = gettokfn(fn, sizeof fn)) return error(rc);
    std::string file = dflttype(fn);
    DtaNames N;
    if (int rc = dta_readnames(file.c_str(), N)) return rc;
    const int32_t fnv = static_cast<int32_t>(N.types.size()) - 1;
    std::vector<int32_t> keep;
    UseOpts o;
    {
        Borrow b(N.names.data(), N.types.data(), fnv, N.nobs);
        if (int rc = parse_sub(start)) return rc;
        keep.assign(varlist_vr, varlist_vr + lnvar);
    }
    std::sort(keep.begin(), keep.end());
    keep.erase(std::unique(keep.begin(), keep.end()), keep.end());
    if (ifclause && !keep.empty()) {
        // compile the condition again in the numbering the loaded data will have
        std::vector<char> names(keep.size() * 33 + 33, 0);
        std::vector<uint8_t> types(keep.size() + 1, 0);
        for (size_t j = 0; j < keep.size(); ++j) {
            std::memcpy(names.data() + 33 * j, N.names.data() + 33 * (keep[j] - 1), 33);
            types[j] = N.types[keep[j] - 1];
        }
        Borrow b(names.data(), types.data(), static_cast<int32_t>(keep.size()), N.nobs);
        if (int rc = parse_sub(start)) return rc;
    }
    o.keep = keep.data();
    o.nkeep = static_cast<int>(keep.size());
    o.obs1 = nobs1;
    o.obs2 = nobs2;
    o.useif = ifclause != 0;
    if (int rc = takeopts(o)) return rc;
    return use_into_memory(file.c_str(), o);
}

int usecmd(int) {
    opable = 0;
    noptn = 0;
    TokPos start;
    stattok(&start);
    bool sub = false;
    for (;;) {
        gettok(prsestd);
        if (!token[0]) break;
        if (!tokisstr(token) && tokis(token, "using")) {
            sub = true;
            break;
        }
    }
    resettok(&start);
    if (sub) return use_sub(start);
    char fn[FNLEN] = {};
    if (int rc = gettokfn(fn, sizeof fn)) return error(rc);
    gettok(prsestd);
    if (token[0]) {
        if (!tokis(token, ",")) return error(198);
        if (int rc = proption()) return rc;
    }
    UseOpts o;
    if (int rc = takeopts(o)) return rc;
    std::string file = dflttype(fn);
    return use_into_memory(file.c_str(), o);
}

} // namespace korvu
