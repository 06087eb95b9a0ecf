// The by prefix: repeat a command over groups of observations that share the
// values of the by variables, the data being sorted on them.
#include <cstring>
#include <string>
#include <vector>

#include "data/dataarea.h"
#include "data/formats.h"
#include "data/storage.h"
#include "data/varlist.h"
#include "kernel/brk.h"
#include "kernel/builtins.h"
#include "kernel/cmdparse.h"
#include "kernel/errors.h"
#include "kernel/gettok.h"
#include "kernel/loop.h"
#include "kernel/options.h"
#include "output/spout.h"

namespace korvu {

int32_t bynvaronexit = -1;
int (*syssort_hook)(const int32_t* vars, int n) = nullptr;
int (*byability_hook)(const char* name) = nullptr;

// Reads a list of existing variables from text into `out`.
static int readvars(char* text, std::vector<int32_t>& out) {
    TokState saved;
    borrow_gettok(&saved);
    settok(text);
    int rc = ssvlist(prsestd2, 0);
    if (!rc) {
        gettok(prsestd);
        if (token[0]) rc = error(198);
    }
    if (!rc) out.assign(varlist_vr, varlist_vr + lnvar);
    return_gettok(&saved);
    return rc;
}

static bool sameobs(const std::vector<int32_t>& vars, int i, int j) {
    char a[245], b[245];
    for (int32_t v : vars) {
        if (isstrtype(typlist[v - 1])) {
            if (strcmp(skorvu_data(v, i, a), skorvu_data(v, j, b))) return false;
        } else {
            double x = korvu_data(v, i), y = korvu_data(v, j);
            if (memcmp(&x, &y, sizeof x) && !(x == y)) return false;
        }
    }
    return true;
}

static bool silent_under_by(const char* word) {
    static constexpr const char* silent[] = {"generate", "replace", "drop", "keep", "assert"};
    for (const char* s : silent)
        if (!strcmp(word, s)) return true;
    return false;
}

static void groupheader(const std::vector<int32_t>& vars, int obs) {
    uint8_t old = c_outlev;
    c_outlev = 1;
    spoutptl("{txt}{hline}\n");
    spout21("-> ");
    char buf[kFmtBufSize];
    for (size_t k = 0; k < vars.size(); k++) {
        int v = vars[k];
        if (k) spout21(", ");
        spout21(varname(v));
        spout21(" = ");
        FmtDesc d;
        if (isstrtype(typlist[v - 1])) {
            char s[245];
            spout21(skorvu_data(v, obs, s));
            continue;
        }
        if (chkfmt(fmtname(v), 0, &d)) chkfmt("%9.0g", 0, &d);
        fmtrender(buf, d, korvu_data(v, obs));
        const char* p = buf;
        while (*p == ' ') p++;
        spout21(p);
    }
    newline();
    c_outlev = old;
}

// Runs the rest of the line once per group.
static int grouploop(const std::vector<int32_t>& vars, bool rc0, const char* word, char* rest) {
    bool silent = silent_under_by(word);
    int rc = 0;
    int32_t start = 1;
    bynvaronexit = -1;
    for (byvar = 1; start <= nobs; byvar = 2) {
        int32_t end = start;
        while (end < nobs && sameobs(vars, start, end + 1)) end++;
        if (kvpollstd()) {
            rc = 1;
            break;
        }
        if (!silent) groupheader(vars, start);
        nobs1 = nobss1 = start;
        nobs2 = nobss2 = end;
        lastby = end == nobs;
        settok(rest);
        gettok(prsestd);
        strcpy(cmd, word);
        rc = selreq();
        if (nvar != i_nvar && bynvaronexit < 0) bynvaronexit = nvar;
        nvar = bynvaronexit >= 0 ? bynvaronexit : i_nvar;
        if (rc > 1 && (rc0 || silent)) {
            uint8_t old = c_outlev;
            c_outlev = 1;
            spoutf("(return code was %d)\n", rc);
            c_outlev = old;
            rc = 0;
        }
        if (rc) break;
        start = end + 1;
    }
    byvar = 0;
    if (bynvaronexit >= 0) i_nvar = bynvaronexit;
    return rc;
}

int byprefix(int sort) {
    if (byvar) return error(7198);
    // the by part runs to the first colon outside quotes
    char* text = wheretok();
    char* colon = nullptr;
    bool instr = false;
    for (char* p = text; *p; p++) {
        if (*p == '"')
            instr = !instr;
        else if (*p == ':' && !instr) {
            colon = p;
            break;
        }
    }
    if (!colon) return error(198);
    std::string head(text, colon);
    char* rest = colon + 1;
    // options behind a comma: sort, rc0
    bool rc0 = false;
    size_t comma = head.find(',');
    if (comma != std::string::npos) {
        std::string opts = head.substr(comma + 1);
        head.resize(comma);
        TokState saved;
        borrow_gettok(&saved);
        settok(opts.data());
        noptn = 0;
        opable = 0;
        int rc = proption();
        if (!rc) {
            sort = findopt("sort", 4, sort);
            rc0 = findopt("rc0", 3, 0);
            rc = chkopt();
        }
        return_gettok(&saved);
        if (rc) return rc;
    }
    // by a b (c d): sort-only variables in parentheses
    std::string bypart = head, sortpart;
    size_t open = head.find('(');
    if (open != std::string::npos) {
        size_t close = head.find(')', open);
        if (close == std::string::npos ||
            head.find_first_not_of(' ', close + 1) != std::string::npos)
            return error(198);
        bypart = head.substr(0, open);
        sortpart = head.substr(open + 1, close - open - 1);
    }
    std::vector<int32_t> vars, sortonly;
    if (int rc = readvars(bypart.data(), vars)) return rc;
    if (!sortpart.empty())
        if (int rc = readvars(sortpart.data(), sortonly)) return rc;
    if (vars.empty()) return required("varlist");
    if (static_cast<int>(vars.size()) > maxmaxvar) return error(1002);
    std::vector<int32_t> keys = vars;
    keys.insert(keys.end(), sortonly.begin(), sortonly.end());
    bool sorted = true;
    for (size_t k = 0; k < keys.size(); k++)
        if (srtlist[k] != keys[k]) sorted = false;
    if (!sorted) {
        if (!sort) return error(5);
        if (!syssort_hook) return notyet("bysort");
        if (int rc = syssort_hook(keys.data(), static_cast<int>(keys.size()))) return rc;
    }
    // the command word
    settok(rest);
    gettok(prsestd);
    if (tokis(token, ":")) gettok(prsestd);
    char word[33];
    snprintf(word, sizeof word, "%s", token);
    char* after = wheretok();
    if (const char* full = findbyablebuiltin(word)) {
        (void)full;
        if (nobs == 0) return 0;
        return grouploop(vars, rc0, word, after);
    }
    if (const char* full = findbuiltin(word)) {
        uint8_t old = c_outlev;
        c_outlev = 3;
        spoutf("%s may not be combined with by\n", full);
        c_outlev = old;
        return 190;
    }
    // programs declare whether they are by-able
    int mode = byability_hook ? byability_hook(word) : 9;
    if (mode == 9) return error(9733);
    if (mode == 0) {
        uint8_t old = c_outlev;
        c_outlev = 3;
        spoutf("%s may not be combined with by\n", word);
        c_outlev = old;
        return 190;
    }
    return notyet("by with a program");
}

} // namespace korvu
