// The by prefix: repeat a command over groups of observations that share the
// values of the by variables, the data being sorted on them.
#include <cstring>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/storage.h"
#include "data/formats/formats.h"
#include "data/sort/bystate.h"
#include "data/vars/varlist.h"
#include "kernel/cmds/builtins.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/loop/loop.h"
#include "kernel/macro/macro.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "kernel/program/program.h"
#include "output/spout.h"

namespace korvu {

int32_t bynvaronexit = -1;
int32_t by_index = 0;
char pbs_msg[16];
static std::string pending_byvars; // "1 a b" or "0 a b" for a one-call program

ByContext bycontext(const char* pbs) {
    ByContext c;
    memcpy(&c, pbs, sizeof c);
    return c;
}

int set_by_env() {
    ByContext c = bycontext(pbs_msg);
    memcpy(pbs_sys, pbs_msg, sizeof pbs_sys);
    memset(pbs_msg, 0, sizeof pbs_msg);
    in_byable_ado = c.kind != 0;
    if (c.kind != 1) return 0;
    std::string v = pending_byvars;
    pending_byvars.clear();
    bool rc0 = !v.empty() && v[0] == '1';
    v = v.size() > 2 ? v.substr(2) : "";
    if (int rc = macresave("__byvars", v.c_str())) return rc;
    return macresave("__byrc0", rc0 ? ", rc0" : "");
}

int korvu_adobycontext() {
    ByContext c = bycontext(pbs_sys);
    return c.kind == 2 || c.kind == 3;
}

int by_fcn() {
    if (byvar) return byvar;
    ByContext c = bycontext(pbs_sys);
    if (!c.kind) return 0;
    return c.index > 1 ? 2 : 1;
}
int by_call() {
    if (byvar) return by_index;
    return bycontext(pbs_sys).index;
}
int by_lastcall() {
    if (byvar) return lastby ? 1 : 0;
    ByContext c = bycontext(pbs_sys);
    return c.kind ? c.lastgroup : 1;
}
void by_fromto(int32_t* n1, int32_t* n2) {
    ByContext c = bycontext(pbs_sys);
    if (!byvar && c.kind) {
        *n1 = c.first;
        *n2 = c.last;
    } else {
        *n1 = nobs1;
        *n2 = nobs2;
    }
}
int (*syssort_hook)(const int32_t* vars, int n) = nullptr;

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
        double x = korvu_data(v, obs);
        // a labelled value shows its label, whole; others their formatted value
        if (lblname(v)[0] && reforml_lookup)
            if (const char* text = reforml_lookup(lblname(v), x)) {
                spout21(text);
                continue;
            }
        if (chkfmt(fmtname(v), 0, &d)) chkfmt("%9.0g", 0, &d);
        fmtrender(buf, d, x);
        const char* p = buf;
        while (*p == ' ') p++;
        spout21(p);
    }
    newline();
    c_outlev = old;
}

// A command run per group gets its own copy of the line, from the command
// word on: what it runs may overwrite the command buffer.
static void startline(std::vector<char>& line, const std::string& rest, const char* word) {
    line.assign(rest.begin(), rest.end());
    line.push_back(0);
    settok(line.data());
    gettok(prsestd);
    setcmdword(word);
}

// The last observation of the group that starts at `start`.
static int32_t groupend(const std::vector<int32_t>& vars, int32_t start) {
    int32_t end = start;
    while (end < nobs && sameobs(vars, start, end + 1)) end++;
    return end;
}

// Runs a program with a by context sent to it.
static int callwith(const ByContext& c, std::vector<char>& line, const std::string& rest,
                    const char* word) {
    memcpy(pbs_msg, &c, sizeof c);
    byvar = 0;
    startline(line, rest, word);
    int rc = selreq();
    memset(pbs_msg, 0, sizeof pbs_msg);
    return rc;
}

static void reportrc(int rc) {
    uint8_t old = c_outlev;
    c_outlev = 1;
    spoutf("(return code was %d)\n", rc);
    c_outlev = old;
}

// Runs a built-in command, the rest of the line, once per group.
static int grouploop(const std::vector<int32_t>& vars, bool rc0, const char* word,
                     const std::string& rest) {
    bool silent = silent_under_by(word);
    std::vector<char> line;
    int rc = 0;
    int32_t start = 1;
    bynvaronexit = -1;
    by_index = 0;
    // a group whose command failed leaves nothing to reuse: the next group
    // reads the line again, as the first did
    bool failed = false;
    for (byvar = 1; start <= nobs; byvar = failed ? 1 : 2) {
        failed = false;
        int32_t end = groupend(vars, start);
        if (kvpollstd()) {
            rc = 1;
            break;
        }
        by_index++;
        if (!silent) groupheader(vars, start);
        nobs1 = nobss1 = start;
        nobs2 = nobss2 = end;
        lastby = end == nobs;
        startline(line, rest, word);
        int32_t before = nobs;
        rc = selreq();
        end -= before - nobs; // observations the command dropped from the group
        if (nvar != i_nvar && bynvaronexit < 0) bynvaronexit = nvar;
        nvar = bynvaronexit >= 0 ? bynvaronexit : i_nvar;
        if (rc > 1 && rc0 && !silent) {
            reportrc(rc);
            rc = 0;
            failed = true;
        }
        if (rc) break;
        start = end + 1;
    }
    byvar = 0;
    if (bynvaronexit >= 0) i_nvar = bynvaronexit;
    return rc;
}

// Calls a program declared byable(recall) once per group; the groups are all
// found first, so what the program does to the data does not move them.
static int recall(const std::vector<int32_t>& vars, bool rc0, int kind, const char* word,
                  const std::string& rest) {
    std::vector<std::pair<int32_t, int32_t>> groups;
    for (int32_t start = 1; start <= nobs; start = groups.back().second + 1)
        groups.emplace_back(start, groupend(vars, start));
    std::vector<char> line;
    int rc = 0;
    for (size_t g = 0; g < groups.size(); g++) {
        if (kvpollstd()) return 1;
        auto [first, last] = groups[g];
        if (kind == 2) groupheader(vars, first);
        ByContext c{};
        c.index = static_cast<int32_t>(g + 1);
        c.first = first;
        c.last = last;
        c.kind = static_cast<uint8_t>(kind);
        c.lastgroup = g + 1 == groups.size();
        rc = callwith(c, line, rest, word);
        if (rc > 1 && rc0) {
            reportrc(rc);
            rc = 0;
        }
        if (rc) break;
    }
    return rc;
}

// Calls a program declared byable(onecall) once; it does its own grouping.
static int onecall(const std::vector<int32_t>& vars, bool rc0, const char* word,
                   const std::string& rest) {
    pending_byvars = rc0 ? "1" : "0";
    for (int32_t v : vars) pending_byvars += std::string(" ") + varname(v);
    ByContext c{};
    c.first = 1;
    c.last = nobs;
    c.kind = 1;
    c.lastgroup = 1;
    std::vector<char> line;
    int rc = callwith(c, line, rest, word);
    pending_byvars.clear();
    return rc;
}

static int by_depth = 0;
int32_t nsysbylist = 0;

int byoptp() {
    char buf[40];
    findargn("by", 2, buf, sizeof buf, 33);
    nsysbylist = 0;
    if (!buf[0]) return 0;
    std::vector<int32_t> vars;
    if (int rc = readvars(buf, vars)) return rc;
    if (static_cast<int>(vars.size()) > maxmaxvar) return error(1002);
    for (int32_t v : vars) sysbylist[nsysbylist++] = static_cast<int16_t>(v);
    sysbylist[nsysbylist] = 0;
    return 0;
}

int byoptc() {
    if (int rc = byoptp()) return rc;
    for (int k = 0; k < nsysbylist; k++)
        if (srtlist[k] != sysbylist[k]) return error(5);
    return 0;
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
    // the groups run the line from the command word on
    settok(rest);
    char* after = wheretok();
    gettok(prsestd);
    if (tokis(token, ":")) {
        after = wheretok();
        gettok(prsestd);
    }
    char word[33];
    if (snprintf(word, sizeof word, "%s", token) < 0) word[0] = 0;
    if (cmdcmp(word, "by", 2) || cmdcmp(word, "bysort", 3)) return error(7198);
    if (const char* full = findbyablebuiltin(word)) {
        if (silent_under_by(full)) snprintf(word, sizeof word, "%s", full);
        if (nobs == 0) return 0;
        return grouploop(vars, rc0, word, std::string(after));
    }
    if (const char* full = findbuiltin(word)) {
        return errorf(190, "%s may not be combined with by\n", full);
    }
    // programs declare whether they are by-able
    int mode = byability(word);
    if (mode == 9) {
        snprintf(cmd, sizeof cmd, "%s", word);
        if (int rc = autoload("ado", 1)) return rc;
        mode = byability(word);
        if (mode == 9) return error(9733);
    }
    if (mode == 0) {
        return errorf(190, "%s may not be combined with by\n", word);
    }
    if (by_depth >= 99) {
        return errtext(920, "too many nested by's\n");
    }
    by_depth++;
    std::string line(after);
    int rc = mode == 1 ? onecall(vars, rc0, word, line) : recall(vars, rc0, mode, word, line);
    by_depth--;
    return rc;
}

} // namespace korvu
