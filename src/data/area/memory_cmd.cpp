// Commands of the data area: set memory, set maxvar, set matsize, set maxobs,
// set virtual, memory, _repart, drop _all.
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

#include "data/area/areacmds.h"
#include "data/area/areahooks.h"
#include "data/area/dataarea.h"
#include "data/area/memfig.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/limits.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "output/spout.h"

namespace korvu {

static int msg_rc(int rc) {
    return rc ? dataarea_error(rc) : 0;
}

// Reads "[, permanently]" and the end of the line: 0 with *perm set, or 198.
static int perm_option(bool* perm) {
    *perm = false;
    gettok(prsestd);
    if (!token[0]) return 0;
    if (!tokis(token, ",")) return error(198);
    if (int rc = proption()) return rc;
    *perm = findopt("permanently", 4, 0) != 0;
    return chkopt();
}

static void record_pref(const char* key, const char* value, const char* cmd) {
    if (!dahooks.record_pref || dahooks.record_pref("mem_se_w", key, value)) return;
    c_outlev = 1;
    spoutptlf("({cmd:set %s} preference recorded)\n", cmd);
}

// The dataset must be empty and the matrix language idle and cleared.
static int must_be_empty() {
    if (nobs || nvar) return dataarea_error(4);
    int lumo = dahooks.lumo_state ? dahooks.lumo_state() : 0;
    if (lumo == 1) return errtext(4, "no; Lumo is running\n");
    if (lumo)
        return errtext(4, "no; Lumo has not been cleared\n"
                          "(type -lumo: lumo clear- to clear Lumo)\n");
    return 0;
}

static int read_int(int* out) {
    gettok(prsenum);
    double v;
    if (!token[0] || cnvstoz(token, &v) || v != std::floor(v) || std::fabs(v) > 2147483647.0)
        return error(198);
    *out = static_cast<int>(v);
    return 0;
}

int set_memory() {
    gettok(prsenum);
    if (!token[0]) {
        c_outlev = 0;
        memory_table();
        return 0;
    }
    std::string text = token;
    uint64_t bytes = 0;
    int rc = memory_amount(text.c_str(), totalmemory, &bytes);
    if (rc == 198) return error(198);
    if (rc) return msg_rc(rc);
    bool perm;
    if ((rc = perm_option(&perm))) return rc;
    if ((rc = must_be_empty())) return rc;
    rc = set_memory_rc(news_realloc(bytes));
    if (rc == 691 || rc == 1000) return error(rc);
    if (rc) return msg_rc(rc);
    c_outlev = 0;
    memory_table();
    if (perm) {
        char amt[32];
        record_pref("memory", format_mem_amt(totalmemory, amt), "memory");
    }
    return 0;
}

int set_maxvar() {
    int n = 0;
    if (int rc = read_int(&n)) return rc;
    bool perm;
    if (int rc = perm_option(&perm)) return rc;
    if (int rc = must_be_empty()) return rc;
    if (n < MIN_MAXVAR || n > MAX_MAXVAR)
        return errorf(198, "# must be between %d and %d\n", MIN_MAXVAR, MAX_MAXVAR);
    if (news_realloc_fixed(n)) return msg_rc(909);
    c_outlev = 0;
    memory_table();
    if (perm) {
        char v[16];
        snprintf(v, sizeof v, "%d", maxmaxvar);
        record_pref("maxvar", v, "maxvar");
    }
    return 0;
}

int set_matsize() {
    int n = 0;
    if (int rc = read_int(&n)) return rc;
    if (int rc = chkrange("matsize", n, MIN_MATSIZE, MAX_MATSIZE)) return rc;
    bool perm;
    if (int rc = perm_option(&perm)) return rc;
    if (setmatsize(n)) return msg_rc(909);
    c_outlev = 0;
    memory_table();
    if (perm) {
        char v[16];
        snprintf(v, sizeof v, "%d", matsize);
        record_pref("matsize", v, "matsize");
    }
    return 0;
}

// Kept for old do-files: set maxobs # [width #] [old_maxvar #] [lrecl #].
int set_maxobs() {
    int64_t obs = -1, width = -1, oldmaxvar = -1;
    int n = 0;
    if (int rc = read_int(&n)) return rc;
    obs = n;
    for (;;) {
        gettok(prsestd);
        if (!token[0]) break;
        std::string w = token;
        if (int rc = read_int(&n)) return rc;
        if (cmdcmp(w.c_str(), "maxobs", 4))
            obs = n;
        else if (cmdcmp(w.c_str(), "width", 2) || cmdcmp(w.c_str(), "lrecl", 5))
            width = n;
        else if (cmdcmp(w.c_str(), "old_maxvar", 4))
            oldmaxvar = n;
        else
            return error(198);
    }
    if (vernum >= 500 && !(obs >= 0 && width >= 0)) {
        c_outlev = 1;
        spout21("(maxvar and maxobs no longer need be set with this version of Korvu)\n");
    }
    if (int rc = must_be_empty()) return rc;
    if (width < 0 && oldmaxvar >= 0)
        width = std::min<int64_t>(std::max<int64_t>(2 * oldmaxvar, 6), maxlrecl);
    if (obs < 0) return 0;
    if (width < 0) width = syslrecl;
    uint64_t dyn = static_cast<uint64_t>(vlblptr - cddaptr);
    uint64_t bytes = dyn + static_cast<uint64_t>(width + 4) * static_cast<uint64_t>(obs) + 16;
    if (bytes < MIN_MEMORY) bytes = MIN_MEMORY;
    int rc = set_memory_rc(news_realloc(bytes));
    if (rc == 691 || rc == 1000) return error(rc);
    return msg_rc(rc);
}

int set_virtual() {
    gettok(prsestd);
    if (tokis(token, "on"))
        virtualflg = 1;
    else if (tokis(token, "off"))
        virtualflg = 0;
    else
        return error(198);
    gettok(prsestd);
    if (token[0]) return error(198);
    return 0;
}

int memorycmd(int) {
    gettok(prsestd);
    if (token[0]) return error(198);
    MemoryFigures f = memory_figures();
    if (dahooks.post_r) {
        const struct {
            const char* name;
            double v;
        } r[] = {{"N_cur", f.N_cur},         {"N_curmax", f.N_curmax}, {"k_cur", f.k_cur},
                 {"w_cur", f.w_cur},         {"M_total", f.M_total},   {"M_data", f.M_data},
                 {"M_dyn", f.M_dyn},         {"size_ptr", f.size_ptr}, {"k", f.k},
                 {"width", f.width},         {"adosize", f.adosize},   {"matsize", f.matsize},
                 {"n_repart", f.n_repart},   {"n_shift", f.n_shift},   {"M_oh", f.M_oh},
                 {"M_matsize", f.M_matsize}, {"M_dm", f.M_dm}};
        for (auto& x : r) dahooks.post_r(x.name, x.v);
    }
    c_outlev = 0;
    memory_report(f);
    return 0;
}

// _repart width|obs [+|-]#
int repartcmd(int) {
    gettok(prsestd);
    bool width;
    if (cmdcmp(token, "width", 1))
        width = true;
    else if (cmdcmp(token, "obs", 1))
        width = false;
    else
        return error(198);
    gettok(prsenum);
    std::string t = token;
    double v;
    if (t.empty() || cnvstoz(t.c_str(), &v) || v != std::floor(v) || std::fabs(v) > 2147483647.0)
        return error(198);
    gettok(prsestd);
    if (token[0]) return error(198);
    const bool rel = t[0] == '+' || t[0] == '-';
    int64_t d = static_cast<int64_t>(v);
    if (!rel) d -= width ? syslrecl : maxobs;
    if (d > 2147483647 || d < -2147483647) return msg_rc(901);
    int rc = width ? repart(static_cast<int32_t>(d), 0) : repart(0, static_cast<int32_t>(d));
    return rc >= 9000 ? rc : msg_rc(rc);
}

// drop _all: empties the data, keeps the dictionary.
int drop_all_cmd(int) {
    gettok(prsestd);
    if (!tokis(token, "_all")) return error(198);
    gettok(prsestd);
    if (token[0]) return error(198);
    drop_all(0);
    return 0;
}

} // namespace korvu
