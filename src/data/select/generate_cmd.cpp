#include "data/select/generate.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/storage.h"
#include "data/expr/expr.h"
#include "data/sort/bystate.h"
#include "data/sort/sort.h"
#include "data/vars/varlist.h"
#include "data/vars/vartab.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/loop/limits.h"
#include "kernel/loop/loop.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "output/spout.h"

namespace korvu {

uint8_t deftype = KV_FLOAT;

bool selobs(int i) {
    return !ifclause || xeq(&ifpgm, i) != 0;
}

void missmsg(int64_t n, int nl) {
    if (n == 0) return;
    uint8_t old = c_outlev;
    c_outlev = 1;
    spoutf("(%lld missing value%s generated)", static_cast<long long>(n), n == 1 ? "" : "s");
    if (nl) newline();
    c_outlev = old;
}

int promoted_vartype(int type, double x) {
    if (type == KV_DOUBLE || type == KV_FLOAT || ismissing(x)) return type;
    if (x != std::floor(x)) return type == KV_LONG ? KV_DOUBLE : KV_FLOAT;
    if (std::fabs(x) >= 0x1p31) return KV_DOUBLE;
    int t = type;
    if (t == KV_BYTE && (x < -127 || x > 100)) t = KV_INT;
    if (t == KV_INT && (x < -32767 || x > 32740)) t = KV_LONG;
    if (t == KV_LONG && (x < -2147483647.0 || x > 2147483620.0)) t = KV_DOUBLE;
    return t;
}

int doupnum(int v, int* type, double x) {
    int t = promoted_vartype(*type, x);
    if (t == *type) return 0;
    if (int rc = change_vartype(v, t)) return error(rc);
    *type = t;
    return 0;
}

static void storestr(int v, int i, const char* s) {
    sstore(v, i, s);
}

// Stores x into the cells from..to of v's column: the type is decided once
// per loop, not per observation. The column is in observation order (the
// loops call colsync first).
template <int T> static int64_t storeblock(int v, int from, int to, const double* x, bool count) {
    constexpr int W = T == KV_DOUBLE ? 8 : T == KV_BYTE ? 1 : T == KV_INT ? 2 : 4;
    uint8_t* col = colptr(v) + static_cast<int64_t>(from - 1) * W;
    const int m = to - from + 1;
    int64_t missing = 0;
    if (count)
        for (int k = 0; k < m; k++) missing += ismissing(x[k]);
    if constexpr (T == KV_DOUBLE) {
        std::memcpy(col, x, static_cast<size_t>(m) * 8);
    } else {
        for (int k = 0; k < m; k++) encode_cell(col + k * W, T, x[k]);
    }
    return missing;
}

static int64_t storeblock_any(int v, int from, int to, const double* x, bool count) {
    switch (typlist[v - 1]) {
    case KV_DOUBLE: return storeblock<KV_DOUBLE>(v, from, to, x, count);
    case KV_FLOAT: return storeblock<KV_FLOAT>(v, from, to, x, count);
    case KV_LONG: return storeblock<KV_LONG>(v, from, to, x, count);
    case KV_INT: return storeblock<KV_INT>(v, from, to, x, count);
    default: return storeblock<KV_BYTE>(v, from, to, x, count);
    }
}

// Evaluates =exp over nobs1..nobs2 a block at a time, handing each block of
// results to fn(from, to, out); stops at a break (1) or at fn's code.
template <class Fn> static int overblocks(Fn fn) {
    constexpr int B = 1024;
    double out[B];
    colsync();
    for (int from = nobs1; from <= nobs2; from += B) {
        if (kvpollstd()) return 1;
        int to = from + B - 1 < nobs2 ? from + B - 1 : nobs2;
        if (ifclause && exp_draws_random(&wepgm)) {
            // a draw for each selected observation only, in order
            for (int i = from; i <= to; i++) out[i - from] = selobs(i) ? xeq(&wepgm, i) : misval;
        } else {
            xeqblock(&wepgm, from, to, out);
        }
        if (int rc = fn(from, to, out)) return rc;
    }
    return 0;
}

// Sets the cells from..to of numeric variable v to `.`: on a column in
// observation order one fill of the missing cell's bytes.
static void fillmissing(int v, int from, int to) {
    if (from < 1) from = 1;
    if (to > nobs) to = nobs;
    if (from > to) return;
    const int type = typlist[v - 1];
    if (mapjperm) {
        for (int i = from; i <= to; i++) store(v, i, misval);
        return;
    }
    const int w = bytlenc(type);
    uint8_t pat[8];
    encode_cell(pat, type, misval);
    uint8_t* col = colptr(v) + static_cast<int64_t>(from - 1) * w;
    const size_t n = static_cast<size_t>(to - from + 1);
    switch (w) {
    case 8: {
        uint64_t x;
        std::memcpy(&x, pat, 8);
        std::fill_n(reinterpret_cast<uint64_t*>(col), n, x);
        return;
    }
    case 4: {
        uint32_t x;
        std::memcpy(&x, pat, 4);
        std::fill_n(reinterpret_cast<uint32_t*>(col), n, x);
        return;
    }
    case 2: {
        uint16_t x;
        std::memcpy(&x, pat, 2);
        std::fill_n(reinterpret_cast<uint16_t*>(col), n, x);
        return;
    }
    default: std::memset(col, pat[0], n); return;
    }
}

// The numeric loop of generate; with Count the missing results are counted
// into *missing. The cells of the range not reached by a break are set to
// `.` (the caller set those outside the range).
template <bool Count> static int genblocks(int v, int64_t* missing) {
    if (typlist[v - 1] == KV_DOUBLE && !ifclause) {
        // the results go straight into the column
        constexpr int B = 1024;
        colsync();
        for (int from = nobs1; from <= nobs2; from += B) {
            if (kvpollstd()) {
                fillmissing(v, from, nobs2);
                return 1;
            }
            int to = from + B - 1 < nobs2 ? from + B - 1 : nobs2;
            double* col = reinterpret_cast<double*>(colptr(v)) + (from - 1);
            xeqblock(&wepgm, from, to, col);
            if (Count) {
                int64_t n = 0;
                for (int k = 0; k <= to - from; k++) n += col[k] >= misval;
                *missing += n;
            }
        }
        return 0;
    }
    int reached = nobs1;
    int rc = overblocks([&](int from, int to, double* out) {
        if (ifclause)
            for (int i = from; i <= to; i++)
                if (!selobs(i)) out[i - from] = misval;
        *missing += storeblock_any(v, from, to, out, Count);
        reached = to + 1;
        return 0;
    });
    if (rc) fillmissing(v, reached, nobs2);
    return rc;
}

int gen(int) {
    // generate [type] newvar [= exp] [if] [in]
    gettok(prsestd);
    int type = 0;
    bool fitstr = false;
    if (!tokisstr(token)) {
        if (!strcmp(token, "str"))
            fitstr = true;
        else if ((type = cvtype(token)) < 0)
            return error(198);
        else if (!type)
            ungettok();
    }
    gettok(prsestd);
    if (!token[0] || tokisstr(token) || iskeyorb(token)) return error(102);
    std::string name = token;
    // exactly one new name: a second one is too many variables
    gettok(prsestd);
    const bool another = token[0] && !tokisstr(token) && strcmp(token, "if") &&
                         strcmp(token, "in") && !chkname(token, 0);
    ungettok();
    if (another) return error(103);
    if (byvar == 2) {
        // the variable was made in the first group
    } else {
        if (int rc = chkname(name.c_str(), 1)) return rc;
        if (int rc = chkreserved(name.c_str())) return rc;
        if (sysfindvar(name.c_str())) return error2(3, name.c_str());
    }
    vable = 3;
    wable = 1;
    wprogtype = 3;
    ifable = 0;
    oable = 0;
    byable = 0;
    if (int rc = parse()) return rc;
    bool isstr = wepgm.result_kind == 1;
    if (type && isstrtype(type) != isstr) return error(109);
    if (!type && !fitstr && isstr && vernum < 800) return error(109);
    if (fitstr && !isstr) return error(109);
    // a string with no declared width is sized to fit, from str1 up
    bool grow = isstr && (fitstr || !type);
    if (grow) type = 1;
    if (!type) type = deftype;

    int v;
    if (byvar == 2) {
        v = sysfindvar(name.c_str());
        if (!v) return varnotfound(name.c_str());
    } else {
        if (int rc = addvar(name.c_str(), type)) return rc;
        v = nvar;
        i_nvar = nvar;
        if (byvar == 1) bynvaronexit = nvar;
    }
    static int64_t gen_count = 0;
    if (byvar != 2) gen_count = 0;
    int64_t missing = 0;
    if (byvar != 2) {
        // every cell of the new variable starts missing (or empty), so that
        // a break, an error or a later by-group never leaves a cell unset;
        // without by the cells outside the range count as missing now
        if (isstr) {
            for (int i = 1; i <= nobs; i++) storestr(v, i, "");
        } else if (byvar || nobs2 < nobs1) {
            fillmissing(v, 1, nobs);
        } else {
            // the numeric loop writes every cell of the range, or on a
            // break sets those it did not reach
            fillmissing(v, 1, nobs1 - 1);
            fillmissing(v, nobs2 + 1, nobs);
        }
        if (!byvar) missing = nobs - (nobs2 >= nobs1 ? nobs2 - nobs1 + 1 : 0);
    }
    bool truncated = false;
    if (isstr) {
        char buf[EXP_STRMAX + 1];
        for (int i = nobs1; i <= nobs2; i++) {
            if (kvpollstd()) return 1;
            if (!selobs(i)) {
                storestr(v, i, "");
                missing++;
                continue;
            }
            sxeq(&wepgm, i, buf);
            size_t len = strlen(buf);
            if (!len) missing++;
            int width = typlist[v - 1];
            if (grow && static_cast<int>(len) > width) {
                int want = len > KV_STRMAX ? KV_STRMAX : static_cast<int>(len);
                if (static_cast<int>(len) > KV_STRMAX) truncated = true;
                if (int rc = change_vartype(v, want)) return error(rc);
                snprintf(fmtname(v), FMTLEN1, "%%%ds", want < 9 ? 9 : want);
            }
            storestr(v, i, buf);
        }
    } else {
        // whole blocks at once unless the program reads other observations
        // of the variable it writes (it cannot: the variable is new), or the
        // result depends on order through an if
        // at quietly level nobody sees the count: that loop does not keep it
        bool quiet = s_outlev > 1 && !byvar;
        if (int rc = quiet ? genblocks<false>(v, &missing) : genblocks<true>(v, &missing))
            return rc;
    }
    gen_count += missing;
    updata = 1;
    if (!byvar || lastby) {
        missmsg(gen_count, 1);
        if (truncated) {
            uint8_t old = c_outlev;
            c_outlev = 1;
            spoutf("(%s now truncated to str%d)\n", name.c_str(), KV_STRMAX);
            c_outlev = old;
        }
    }
    return 0;
}

int replacecmd(int) {
    vable = 1;
    wable = 1;
    wprogtype = 3;
    ifable = 0;
    oable = 0;
    opable = 0;
    byable = 0;
    if (int rc = parse()) return rc;
    if (lnvar != 1) return error(lnvar < 1 ? 102 : 103);
    int promote = findopt("promote", 4, 1);
    if (int rc = chkopt()) return rc;
    int v = varlist_vr[0];
    int type = typlist[v - 1];
    bool isstr = wepgm.result_kind == 1;
    if (isstrtype(type) != isstr) return error(109);
    // lost: cut by the storage type; lostmiss: made missing by its range
    int64_t changes = 0, tomissing = 0, lost = 0, lostmiss = 0;
    bool reads_self = exp_reads_other_obs(&wepgm, v);
    if (isstr) {
        char buf[EXP_STRMAX + 1], cur[KV_STRMAX + 1];
        for (int i = nobs1; i <= nobs2; i++) {
            if (kvpollstd()) break;
            if (!selobs(i)) continue;
            sxeq(&wepgm, i, buf);
            if (!strcmp(buf, skorvu_data(v, i, cur))) continue;
            int len = static_cast<int>(strlen(buf));
            if (len > typlist[v - 1]) {
                if (promote) {
                    int want = len > KV_STRMAX ? KV_STRMAX : len;
                    if (int rc = change_vartype(v, want)) return error(rc);
                    snprintf(fmtname(v), FMTLEN1, "%%%ds", want < 9 ? 9 : want);
                } else {
                    lost++;
                }
            }
            sstore(v, i, buf);
            changes++;
        }
    } else {
        auto one = [&](int i, double x) -> int {
            double old = korvu_data(v, i);
            if (memcmp(&old, &x, sizeof x) == 0 || (ismissing(old) && old == x)) return 0;
            if (promote) {
                if (int rc = doupnum(v, &type, x)) return rc;
            }
            store(v, i, x);
            double now = korvu_data(v, i);
            if (!promote && now != x && !(ismissing(now) && ismissing(x) && now == x)) {
                if (ismissing(now) && !ismissing(x))
                    lostmiss++;
                else
                    lost++;
            } else if (ismissing(x) && !ismissing(old)) {
                tomissing++;
            }
            // a change is a result that differs from the cell as a double, bit
            // for bit, whatever the storage type then makes of it
            changes++;
            return 0;
        };
        if (type == KV_DOUBLE && !reads_self) {
            // a double holds every value: no promotion, no loss, only changes
            overblocks([&](int from, int to, const double* out) {
                uint64_t* col = static_cast<uint64_t*>(colbase_w(v, nullptr)) + (from - 1);
                const uint64_t* in = reinterpret_cast<const uint64_t*>(out);
                const int m = to - from + 1;
                if (!ifclause) {
                    // a change is a different bit pattern; one to missing is
                    // a missing result where the cell was not missing
                    int64_t ch = 0, tm = 0;
                    for (int k = 0; k < m; k++) {
                        const uint64_t a = col[k], b = in[k];
                        ch += a != b;
                        tm += (out[k] >= misval) & !(bitsd(a) >= misval);
                        col[k] = b;
                    }
                    changes += ch;
                    tomissing += tm;
                    return 0;
                }
                for (int k = 0; k < m; k++) {
                    if (!selobs(from + k)) continue;
                    const uint64_t a = col[k], b = in[k];
                    if (a == b) continue;
                    col[k] = b;
                    changes++;
                    if (ismissing(out[k]) && !ismissing(bitsd(a))) tomissing++;
                }
                return 0;
            });
        } else if (reads_self) {
            for (int i = nobs1; i <= nobs2; i++) {
                if (kvpollstd()) break;
                if (!selobs(i)) continue;
                if (int rc = one(i, xeq(&wepgm, i))) return rc;
            }
        } else {
            int rc = overblocks([&](int from, int to, const double* out) {
                for (int i = from; i <= to; i++) {
                    if (ifclause && !selobs(i)) continue;
                    if (int rc = one(i, out[i - from])) return rc;
                }
                return 0;
            });
            if (rc > 1) return rc; // 1 is a break: what was done is reported
        }
    }
    if (changes) {
        updata = 1;
        chksort_var(v);
    }
    // under by the counts cover every group and show after the last
    static int64_t by_changes, by_tomissing, by_lost, by_lostmiss;
    if (byvar != 2) by_changes = by_tomissing = by_lost = by_lostmiss = 0;
    by_changes += changes, by_tomissing += tomissing, by_lost += lost, by_lostmiss += lostmiss;
    if (byvar && !lastby) return stopflag ? 1 : 0;
    changes = by_changes, tomissing = by_tomissing, lost = by_lost, lostmiss = by_lostmiss;
    uint8_t old = c_outlev;
    c_outlev = 1;
    spoutf("(%lld real change%s made", static_cast<long long>(changes), changes == 1 ? "" : "s");
    if (tomissing) spoutf(", %lld to missing", static_cast<long long>(tomissing));
    if (lost) spoutf(", %lld truncated", static_cast<long long>(lost));
    if (lostmiss) spoutf(", %lld changed to missing", static_cast<long long>(lostmiss));
    if (lost || lostmiss) spout21(" due to storage type");
    spout21(")\n");
    c_outlev = old;
    return stopflag ? 1 : 0;
}

bool chkint(int code) {
    return code == KV_BYTE || code == KV_INT || code == KV_LONG;
}

int64_t lclcmprs(const char* gone) {
    // kept pointers move forward in order; the removed ones go behind them
    int32_t k = 0;
    std::vector<int32_t> dropped;
    for (int32_t i = 1; i <= nobs; i++) {
        if (gone[i])
            dropped.push_back(mapj[i - 1]);
        else
            mapj[k++] = mapj[i - 1];
    }
    if (dropped.empty()) return 0;
    std::copy(dropped.begin(), dropped.end(), mapj + k);
    mapj_changed();
    nobs = k;
    updata = 1;
    return static_cast<int64_t>(dropped.size());
}

int64_t dropobsifmarked(int v) {
    std::vector<char> gone(static_cast<size_t>(nobs) + 1, 0);
    for (int32_t i = 1; i <= nobs; i++) gone[i] = korvu_data(v, i) != 0;
    int64_t n = lclcmprs(gone.data());
    colsync();
    return n;
}

const char* wgtkeyword(int kind) {
    switch (kind) {
    case 1: return "aweight";
    case 2: return "fweight";
    case 8: return "iweight";
    default: return "pweight";
    }
}

int stdelete(int keep) {
    vable = 3;
    ifable = 0;
    oable = 0;
    byable = 0;
    if (int rc = parse()) return rc;
    if (!ifclause && !orange) return error(198);
    if (nobs == 0) return 0;
    // decide first, then compact the observation pointers in order
    // under by only the observations of the group are in question
    std::vector<char> gone(static_cast<size_t>(nobs) + 1, 0);
    int64_t n = 0;
    int32_t from = byvar ? nobss1 : 1, to = byvar ? nobss2 : nobs;
    for (int i = from; i <= to; i++) {
        bool in = i >= nobs1 && i <= nobs2 && selobs(i);
        gone[i] = keep ? !in : in;
        n += gone[i];
    }
    lclcmprs(gone.data());
    if (!byvar || lastby) colsync();
    // under by the count covers every group and shows after the last
    static int64_t total = 0;
    if (byvar != 2) total = 0;
    total += n;
    if ((!byvar || lastby) && total) {
        uint8_t old = c_outlev;
        c_outlev = 1;
        spoutf("(%lld observation%s deleted)\n", static_cast<long long>(total),
               total == 1 ? "" : "s");
        c_outlev = old;
    }
    return 0;
}

} // namespace korvu
