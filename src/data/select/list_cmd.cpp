// list [varlist] [if] [in] [, separator(#) clean noobs abbreviate(#) table
// display nolabel]
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/storage.h"
#include "data/expr/expr.h"
#include "data/formats/formats.h"
#include "data/vars/varcmds.h"
#include "data/vars/varlist.h"
#include "data/vars/vartab.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/options.h"
#include "output/spout.h"

namespace korvu {

namespace {

struct Col {
    int var;          // underlying variable
    Recipe* rcp;      // operator, or null
    FmtDesc d;        // decoded once
    bool isstr;       // string variable
    bool labelled;    // shown through its value label
    int width;        // of the column
    std::string head; // the name as shown
};

// The cell of column c at observation i, trimmed, into buf; returns its length.
int cell(const Col& c, int i, char* buf) {
    char raw[kFmtBufSize];
    int n;
    if (c.isstr) {
        skorvu_data(c.var, i, raw);
        n = static_cast<int>(strlen(raw));
        memcpy(buf, raw, n + 1);
        return n;
    }
    double x = c.rcp ? rcpxeq(c.rcp, c.var, i) : korvu_data(c.var, i);
    const char* s;
    if (c.labelled) {
        s = safereforml(fmtname(c.var), lblname(c.var), x);
    } else {
        fmtrender(raw, c.d, x);
        s = raw;
    }
    while (*s == ' ') s++;
    n = static_cast<int>(strlen(s));
    while (n && s[n - 1] == ' ') n--;
    memmove(buf, s, n);
    buf[n] = 0;
    return n;
}

// Appends s justified in w; braces are written as their tags.
void put(std::string& line, const char* s, int w, int justify) {
    int n = static_cast<int>(strlen(s));
    int pad = w > n ? w - n : 0;
    int before = justify > 0 ? pad : (justify == 0 ? pad / 2 : 0);
    line.append(before, ' ');
    for (const char* p = s; *p; p++) {
        if (*p == '{')
            line += "{c -(}";
        else if (*p == '}')
            line += "{c )-}";
        else
            line += *p;
    }
    line.append(pad - before, ' ');
}

void emit(std::string& line) {
    while (!line.empty() && line.back() == ' ') line.pop_back();
    line += '\n';
    spoutptl(line.c_str());
    line.clear();
}

} // namespace

int listcmd(int) {
    byable = 0;
    ifable = 0;
    oable = 0;
    opable = 0;
    if (int rc = parse()) return rc;
    int sep = findopta("separator", 3, 5);
    int clean = findopt("clean", 5, 0);
    int obs = findopt("obs", 3, 1);
    int abbr = findopta("abbreviate", 2, 8);
    int table = findopt("table", 3, 0);
    int display = findopt("display", 4, 0);
    int label = findopt("label", 3, 1);
    if (int rc = chkopt()) return rc;
    if (table && display) {
        return errtext(198, "options table and display may not be combined\n");
    }
    if (sep < 0) sep = 0;
    if (abbr < 5) abbr = 5;
    if (abbr > 32) abbr = 32;
    if (!lnvar) allvarlist();
    if (!lnvar || nobs2 < nobs1) return 0;

    std::vector<Col> cols(lnvar);
    for (int k = 0; k < lnvar; k++) {
        Col& c = cols[k];
        c.rcp = varlist_rcp ? static_cast<Recipe*>(varlist_rcp[k].recipe) : nullptr;
        c.var = c.rcp ? static_cast<int>(varlist_rcp[k].var) : varlist_vr[k];
        c.isstr = isstrtype(typlist[c.var - 1]);
        if (chkfmt(fmtname(c.var), 10, &c.d)) chkfmt(c.isstr ? "%9s" : "%9.0g", 10, &c.d);
        c.labelled = !c.isstr && label && lblname(c.var)[0] && reforml_lookup;
        c.width = 1;
    }

    // which observations, and the widths they need
    std::vector<uint8_t> sel(static_cast<size_t>(nobs2 - nobs1 + 1), 1);
    char buf[kFmtBufSize];
    int nsel = 0;
    for (int i = nobs1; i <= nobs2; i++) {
        if (stopflag) return 1;
        if (ifclause && xeq(&ifpgm, i) == 0) {
            sel[i - nobs1] = 0;
            continue;
        }
        nsel++;
        for (Col& c : cols) {
            int n = cell(c, i, buf);
            if (n > c.width) c.width = n;
        }
    }
    if (!nsel) return 0;
    for (int k = 0; k < lnvar; k++) {
        Col& c = cols[k];
        char full[200];
        if (c.rcp)
            rcpvarname(full, c.rcp, varname(c.var));
        else
            snprintf(full, sizeof full, "%s", varname(c.var));
        int nl = static_cast<int>(strlen(full));
        int want = nl < abbr ? nl : abbr;
        if (want > c.width) c.width = want;
        c.head = nl > c.width ? (c.rcp ? tsabvar(full, c.width) : abvar(full, c.width)) : full;
        if (static_cast<int>(c.head.size()) > c.width) c.width = static_cast<int>(c.head.size());
    }

    // under by the observations are numbered within their group
    const int first = byvar ? nobss1 : 1;
    int ndig = 1;
    for (int n = nobs2 - first + 1; n >= 10; n /= 10) ndig++;
    const int lead = obs ? ndig + 4 : 0;
    int inner = 2;
    for (const Col& c : cols) inner += c.width;
    inner += 3 * (lnvar - 1);
    if (!table && !display && lead + inner + 2 > korvu_linewidth) display = 1;

    std::string line;
    line.reserve(1024);
    char obslab[32];
    c_outlev = 0;
    if (display) {
        int w = korvu_linewidth - lead - 2;
        if (w < 20) w = 20;
        for (int i = nobs1; i <= nobs2; i++) {
            if (!sel[i - nobs1]) continue;
            if (stopflag) return 1;
            line.append(lead, ' ');
            line += "{c TLC}{hline " + std::to_string(w) + "}{c TRC}";
            emit(line);
            snprintf(obslab, sizeof obslab, "%*d. ", ndig < 10 ? ndig + 2 : 12, i - first + 1);
            std::string body; // one line of the box, plain text
            bool first = true;
            auto flush = [&]() {
                line += first && obs ? obslab : std::string(lead, ' ');
                line += "{c |} ";
                put(line, body.c_str(), w - 2, -1);
                line += " {c |}";
                emit(line);
                body.clear();
                first = false;
            };
            for (const Col& c : cols) {
                cell(c, i, buf);
                std::string item = c.head + " = " + buf;
                if (!body.empty() && static_cast<int>(body.size() + 3 + item.size()) > w - 2)
                    flush();
                if (!body.empty()) body += "   ";
                body += item;
            }
            if (!body.empty()) flush();
            line.append(lead, ' ');
            line += "{c BLC}{hline " + std::to_string(w) + "}{c BRC}";
            emit(line);
        }
        return 0;
    }

    const std::string hl = "{hline " + std::to_string(inner) + "}";
    auto rule = [&](const char* l, const char* r) {
        if (clean) return;
        line.append(lead, ' ');
        line += l;
        line += hl;
        line += r;
        emit(line);
    };
    auto row = [&](bool header, int i) {
        if (!clean) line += "{c |}";
        line += ' ';
        for (int k = 0; k < lnvar; k++) {
            const Col& c = cols[k];
            if (k) line += "   ";
            if (header) {
                put(line, c.head.c_str(), c.width, c.d.justify);
            } else {
                cell(c, i, buf);
                put(line, buf, c.width, c.d.justify);
            }
        }
        line += ' ';
        if (!clean) line += "{c |}";
        emit(line);
    };
    rule("{c TLC}", "{c TRC}");
    line.append(lead, ' ');
    c_outlev = 1;
    row(true, 0);
    c_outlev = 0;
    rule("{c LT}", "{c RT}");
    int shown = 0;
    for (int i = nobs1; i <= nobs2; i++) {
        if (!sel[i - nobs1]) continue;
        if (stopflag) return 1;
        if (shown && sep && shown % sep == 0) rule("{c LT}", "{c RT}");
        if (obs) {
            snprintf(obslab, sizeof obslab, "%*d. ", ndig < 10 ? ndig + 2 : 12, i - first + 1);
            line += obslab;
        }
        row(false, i);
        shown++;
    }
    rule("{c BLC}", "{c BRC}");
    return 0;
}

} // namespace korvu
