// The `_groups` command behind the group programs in base/, and the helpers
// they share: selection, columns, varlists, options, dropping.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "data/area/dataarea.h"
#include "data/area/missing.h"
#include "data/area/storage.h"
#include "data/expr/expr.h"
#include "data/groups/groups_internal.h"
#include "data/select/generate.h"
#include "data/vars/char.h"
#include "data/vars/vartab.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "kernel/program/argparse.h"

namespace korvu {

std::vector<int32_t> grp_byvars;

int grp_take(std::vector<uint8_t>& take, std::vector<double>* wout) {
    constexpr int CHUNK = 4096;
    int64_t n = nobs2 >= nobs1 ? nobs2 - nobs1 + 1 : 0;
    take.assign(static_cast<size_t>(n), 1);
    if (wout) wout->assign(static_cast<size_t>(n), 1.0);
    if (!ifclause && !(wout && weclause)) return 0;
    initialize_xeq();
    std::vector<double> cond(CHUNK);
    for (int32_t i0 = nobs1; i0 <= nobs2; i0 += CHUNK) {
        if (kvpollstd()) return 1;
        int32_t i1 = std::min(nobs2, i0 + CHUNK - 1);
        if (ifclause) {
            xeqblock(&ifpgm, i0, i1, cond.data());
            for (int32_t i = i0; i <= i1; i++)
                if (cond[i - i0] == 0) take[i - nobs1] = 0;
        }
        if (wout && weclause) {
            xeqblock(&wepgm, i0, i1, cond.data());
            for (int32_t i = i0; i <= i1; i++) {
                double x = cond[i - i0];
                if (!take[i - nobs1]) continue;
                if (x >= misval || x == 0) {
                    take[i - nobs1] = 0;
                    continue;
                }
                if (x < 0 && wgttype != WGT_IW) return error(402);
                if (wgttype == WGT_FW && x != std::floor(x)) return error(401);
                (*wout)[i - nobs1] = x;
            }
        }
    }
    return 0;
}

void grp_putcolumn(int v, int32_t n1, int32_t n2, const double* x) {
    int t;
    uint8_t* base = static_cast<uint8_t*>(colbase_w(v, &t));
    int w = bytlenc(t);
    uint8_t* p = base + static_cast<int64_t>(n1 - 1) * w;
    int64_t n = n2 - n1 + 1;
    if (t == KV_DOUBLE) {
        std::memcpy(p, x, static_cast<size_t>(n) * 8);
        return;
    }
    for (int64_t k = 0; k < n; k++) encode_cell(p + k * w, t, x[k]);
}

int grp_varlist(const std::string& text, std::vector<int32_t>& out) {
    out.clear();
    if (!findvlist_hook) return error(198);
    std::vector<int> buf(static_cast<size_t>(nvar) + 1);
    int count = 0;
    if (int rc = findvlist_hook(text.c_str(), buf.data(), nvar + 1, &count)) return rc;
    out.assign(buf.begin(), buf.begin() + count);
    return 0;
}

int grp_numlist(const std::string& text, std::vector<double>& out) {
    out.clear();
    int rc = znumlist_text(text.c_str(), out, 0, 0, 0, nullptr, 0);
    if (rc) return errornumlist(-rc, 0);
    return 0;
}

std::string grp_optarg(const char* name, int minlen, bool* given) {
    std::vector<char> buf(static_cast<size_t>(macrolen) + 1, 0);
    lastopt = 0;
    findargasis(name, minlen, buf.data(), static_cast<int>(buf.size()));
    if (given) *given = lastopt != 0;
    return std::string(buf.data());
}

int grp_paren(std::string& inside) {
    char* p = wheretok();
    while (*p == ' ') p++;
    if (*p != '(') return error(198);
    int depth = 0;
    char* q = p;
    bool quote = false;
    for (; *q; q++) {
        if (*q == '"') quote = !quote;
        if (quote) continue;
        if (*q == '(') depth++;
        if (*q == ')' && --depth == 0) break;
    }
    if (!*q) return errtext(198, "unmatched parenthesis\n");
    inside.assign(p + 1, q);
    TokPos st;
    stattok(&st);
    st.pos = q + 1;
    st.last = q + 1;
    resettok(&st);
    return 0;
}

int grp_dropvars(const std::vector<uint8_t>& drop) {
    if (int rc = markrow_open()) return rc;
    for (int v = 1; v <= nvar; v++)
        if (drop[v - 1]) char_dropvar(varname(v));
    for (int v = 1; v <= nvar; v++) markrow_set(v, drop[v - 1] != 0);
    remvar();
    i_nvar = nvar;
    return 0;
}

void grp_truncobs(int32_t n) {
    if (n >= nobs) return;
    // with the columns in observation order the last observations go by
    // lowering the count: their slots are behind the kept ones already
    colsync();
    nobs = n;
    updata = 1;
}

// _groups subcommand [byvars] : rest
int groupscmd(int) {
    gettok(prsestd);
    std::string sub = token;
    grp_byvars.clear();
    for (;;) {
        gettok(prsestd);
        if (!token[0]) return errtext(198, "_groups: ':' expected\n");
        if (tokis(token, ":")) break;
        int v = korvu_findvar(token, 0, 0);
        if (v < 0) return -v;
        grp_byvars.push_back(v);
    }
    static const struct {
        const char* word;
        int (*fn)();
    } subs[] = {
        {"xgen", grp_xgen},         {"collapse", grp_collapse}, {"duplicates", grp_duplicates},
        {"idcheck", grp_idcheck},   {"levels", grp_levels},     {"fillall", grp_fillall},
        {"freqdata", grp_freqdata}, {"dsort", grp_dsort},       {"sample", grp_sample},
    };
    opable = 0; // options are allowed; each command checks its own
    for (const auto& s : subs)
        if (sub == s.word) return s.fn();
    return errorf(198, "_groups: unknown subcommand %s\n", sub.c_str());
}

} // namespace korvu
