// input [[type] name ...]: observations typed after the command, one a line,
// until `end`.
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/storage.h"
#include "data/vars/varcmds.h"
#include "data/vars/varlist.h"
#include "data/vars/vartab.h"
#include "kernel/errors/errors.h"
#include "kernel/flow/flow.h"
#include "kernel/loop/brk.h"
#include "kernel/loop/limits.h"
#include "kernel/loop/loop.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "output/spout.h"

namespace korvu {

namespace {

int errf(const char* text) {
    return errtext(198, text);
}

// Missing values and empty strings into observations from..to of v.
void fillblank(int v, int from, int to) {
    for (int i = from; i <= to; i++) {
        if (isnumtype(typlist[v - 1]))
            store(v, i, misval);
        else
            memset(dtaptr(v, i), 0, typlist[v - 1]);
    }
}

// Whether x can be kept in storage type code without change.
bool fits(int code, double x) {
    if (x >= misval) return true;
    switch (code) {
    case KV_BYTE: return x == std::floor(x) && x >= minbyte && x <= maxbyte;
    case KV_INT: return x == std::floor(x) && x >= minint && x <= maxint;
    case KV_LONG: return x == std::floor(x) && x >= minlong && x <= maxlong;
    case KV_FLOAT: return std::fabs(x) <= max_kvfloat;
    default: return x >= min_kvdouble && x <= max_kvdouble;
    }
}

const char ws[] = " ";

} // namespace

int inputcmd(int) {
    if (int rc = ssvlist(prsestd, 1)) return rc;
    gettok(prsestd);
    if (token[0]) {
        return errorf(198, "'%s' invalid\n", tokisstr(token) ? token + 1 : token);
    }
    std::vector<int> vars;
    bool newvars = false; // a new variable is filled from observation 1
    if (lnvar == 0) {
        if (nvar == 0) {
            return errtext(111, "input: no variables defined and none named\n");
        }
        for (int v = 1; v <= nvar; v++) vars.push_back(v);
    } else {
        std::vector<std::string> names;
        std::vector<int> types, have;
        for (int k = 0; k < lnvar; k++) {
            names.emplace_back(newvarname[k]);
            types.push_back(newvartype[k]);
            have.push_back(varlist_vr[k]);
        }
        for (size_t k = 0; k < names.size(); k++) {
            int v = sysfindvar(names[k].c_str());
            if (v) {
                if (types[k]) return error2(3, names[k].c_str());
                vars.push_back(v);
                continue;
            }
            if (int rc = addvar(names[k].c_str(), types[k] ? types[k] : KV_FLOAT)) return rc;
            fillblank(nvar, 1, nobs);
            updata = 1;
            vars.push_back(nvar);
            newvars = true;
        }
    }
    i_nvar = nvar; // the new variables outlast the command
    const size_t nv = vars.size();
    std::vector<double> nums(nv);
    std::vector<std::string> strs(nv);
    std::vector<uint8_t> blank(static_cast<size_t>(usedwidth()) + 1, 0);
    for (int v = 1; v <= nvar; v++)
        if (isnumtype(typlist[v - 1]))
            encode_cell(blank.data() + mapi[v - 1], typlist[v - 1], misval);
    int rejected = 0;
    char msg[700];
    // lines go to observations 1, 2, ... when a new variable was named, else
    // behind the data; past the last observation each line adds one
    int32_t next = newvars ? 1 : nobs + 1;
    char prompt[24];
    struct PromptBack {
        ~PromptBack() { req_prompt = ". "; }
    } promptback;
    for (;;) {
        if (stopflag) return 1;
        const uint8_t lev = c_outlev;
        snprintf(prompt, sizeof prompt, "%3d. ", next);
        req_prompt = prompt;
        if (flow_getline()) break; // do-file, program, loop body or the user
        req_prompt = ". ";
        c_outlev = lev;
        const char* p = console;
        while (*p == ' ') p++;
        if (!*p) continue;
        settok(console);
        gettok(ws);
        if (!tokisstr(token) && !strcmp(token, "end") && !*peektok_chr()) break;
        settok(console);
        const int obsno = next;
        size_t k = 0;
        bool bad = false;
        for (;; k++) {
            gettok(ws);
            if (!token[0]) break;
            if (k >= nv) {
                snprintf(msg, sizeof msg, "too many values: %zu expected; observation not added\n",
                         nv);
                errf(msg);
                bad = true;
                break;
            }
            const int v = vars[k];
            const int code = typlist[v - 1];
            const char* t = tokisstr(token) ? token + 1 : token;
            if (isstrtype(code)) {
                if (static_cast<int>(strlen(t)) > code) {
                    snprintf(msg, sizeof msg, "\"%s\" is too long for str%d variable %s[%d]\n", t,
                             code, varname(v), obsno);
                    errf(msg);
                    bad = true;
                    break;
                }
                strs[k] = t;
                continue;
            }
            double x;
            if (tokisstr(token) || cnvstoz(t, &x)) {
                snprintf(msg, sizeof msg, "'%s' cannot be read as a number for %s[%d]\n", t,
                         varname(v), obsno);
                errf(msg);
                bad = true;
                break;
            }
            if (!fits(code, x)) {
                snprintf(msg, sizeof msg, "%s does not fit in %s variable %s[%d]\n", t,
                         typename_of(code), varname(v), obsno);
                errf(msg);
                bad = true;
                break;
            }
            nums[k] = x;
        }
        if (!bad && k < nv) {
            snprintf(msg, sizeof msg, "too few values: %zu expected; observation not added\n", nv);
            errf(msg);
            bad = true;
        }
        if (bad) {
            rejected++;
            continue;
        }
        if (next > nobs) {
            if (nobs >= maxobs) {
                int rc = repartobs(1);
                if (rc || nobs >= maxobs) return dataarea_error(901);
            }
            nobs++;
            putdtaobs(blank.data(), nobs, static_cast<int>(blank.size() - 1));
        }
        for (size_t j = 0; j < nv; j++) {
            if (isstrtype(typlist[vars[j] - 1]))
                sstore(vars[j], next, strs[j].c_str());
            else
                store(vars[j], next, nums[j]);
        }
        next++;
        updata = 1;
    }
    return rejected ? 198 : 0;
}

} // namespace korvu
