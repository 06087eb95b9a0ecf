// describe [varlist] [, short detail fullnames numbers varlist]
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "data/area/areahooks.h"
#include "data/area/dataarea.h"
#include "data/area/memfig.h"
#include "data/vars/varcmds.h"
#include "data/vars/varlist.h"
#include "data/vars/vartab.h"
#include "kernel/errors/errors.h"
#include "kernel/macro/macro.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/options.h"
#include "output/spout.h"

namespace korvu {

const char* (*varlabel_hook)(int v) = nullptr;
const char* (*datalabel_hook)() = nullptr;
const char* (*datadate_hook)() = nullptr;

static const char* orempty(const char* s) {
    return s ? s : "";
}

// Bytes the observations occupy: observations times the record width.
static uint64_t descsiz(int32_t width) {
    return static_cast<uint64_t>(nobs) * static_cast<uint64_t>(width);
}

// One figure of the header, the text `right` beside it from column 46.
static void descnum(const char* label, uint64_t n, const char* right) {
    char num[32], line[400];
    commafy(n, num);
    if (right && *right)
        snprintf(line, sizeof line, "%6s  %10s%28s%s\n", label, num, "", right);
    else
        snprintf(line, sizeof line, "%6s  %10s\n", label, num);
    c_outlev = 1;
    spout21(line);
}

static void hlinefull() {
    char t[32];
    snprintf(t, sizeof t, "{hline %d}\n", korvu_linewidth > 255 ? 255 : korvu_linewidth);
    spoutptl(t);
}

static void descheader(int32_t width) {
    c_outlev = 1;
    const char* date = datadate_hook ? orempty(datadate_hook()) : "";
    // the file the data came from, as use or save left it
    const char* fn = macptr("S_FN");
    std::string line = "Contains data";
    if (fn && *fn) {
        line += " from ";
        line += fn;
    }
    if (*date) {
        line.resize(line.size() < 45 ? 46 : line.size() + 1, ' ');
        line += date;
    }
    line += "\n";
    spout21(line.c_str());
    descnum("obs:", static_cast<uint64_t>(nobs), datalabel_hook ? datalabel_hook() : nullptr);
    descnum("vars:", static_cast<uint64_t>(nvar), nullptr);
    descnum("width:", static_cast<uint64_t>(width), nullptr);
    descnum("size:", descsiz(width), nullptr);
}

static void descline(int v, int namew, bool numbers) {
    char line[500];
    const char* lab = varlabel_hook ? orempty(varlabel_hook(v)) : "";
    char num[16] = "";
    if (numbers) snprintf(num, sizeof num, "%4d. ", v);
    snprintf(line, sizeof line, "%s%-*s %-7s %-10s %-10s %s", num, namew,
             namew == 15 ? abvar(varname(v), 15) : varname(v), typename_of(typlist[v - 1]),
             fmtname(v), lblname(v), lab);
    size_t n = strlen(line); // no trailing blanks
    while (n && line[n - 1] == ' ') n--;
    line[n] = 0;
    c_outlev = 0;
    spout21(line);
    newline();
}

static void descfooter() {
    c_outlev = 1;
    hlinefull();
    // the sort-order line only when an order is declared
    if (srtlist && srtlist[0]) {
        std::string s = "Sorted by: ";
        for (int k = 0; srtlist[k]; k++) {
            s += " ";
            s += varname(srtlist[k]);
        }
        s += "\n";
        spout21(s.c_str());
    }
    if (updata && nvar) spout21("     Note:  dataset has changed since last saved\n");
}

int describecmd(int) {
    ifable = 3;
    oable = 3;
    opable = 0;
    if (int rc = parse()) return rc;
    int shrt = findopt("short", 1, 0);
    int detail = findopt("detail", 1, 0);
    int fullnames = findopt("fullnames", 4, 0);
    int numbers = findopt("numbers", 3, 0);
    int vlonly = findopt("varlist", 7, 0);
    if (int rc = chkopt()) return rc;
    if (vlonly) shrt = 1;
    const int32_t width = usedwidth();
    std::vector<int32_t> list(varlist_vr, varlist_vr + lnvar);
    if (list.empty())
        for (int v = 1; v <= nvar; v++)
            if (!ispatexempt(v)) list.push_back(v); // not the estimation-sample marker
    descheader(width);
    if (detail) {
        char t[200];
        snprintf(t, sizeof t, "(room for %d observations and %d variables at this width)\n", maxobs,
                 maxvar);
        c_outlev = 1;
        spout21(t);
    }
    if (!shrt && !list.empty()) {
        int namew = 15;
        if (fullnames)
            for (int32_t v : list) namew = std::max(namew, static_cast<int>(strlen(varname(v))));
        std::string pad(numbers ? 6 : 0, ' ');
        std::string gap(namew - 15, ' ');
        c_outlev = 1;
        hlinefull();
        spout21((pad + "              " + gap + "  storage display    value\n").c_str());
        spout21((pad + "variable name " + gap + "  type    format     label      variable label\n")
                    .c_str());
        hlinefull();
        for (int32_t v : list) descline(v, namew, numbers);
    }
    descfooter();
    if (dahooks.post_r) {
        dahooks.post_r("N", nobs);
        dahooks.post_r("k", nvar);
        dahooks.post_r("width", width);
    }
    if (vlonly && post_rmacro) {
        std::string names, sorted;
        for (int32_t v : list) names += (names.empty() ? "" : " ") + std::string(varname(v));
        for (int k = 0; srtlist && srtlist[k]; k++)
            sorted += (sorted.empty() ? "" : " ") + std::string(varname(srtlist[k]));
        post_rmacro("varlist", names.c_str());
        if (!sorted.empty()) post_rmacro("sortlist", sorted.c_str());
    }
    return 0;
}

} // namespace korvu
