// list [varlist] [if] [in] [, separator(#) sepby(varlist) clean noobs
// noheader abbreviate(#) string(#) divider mean sum table display nolabel]
#include <algorithm>
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
int cell(const Col& c, int i, char* buf, int strw = 0) {
    char raw[kFmtBufSize];
    int n;
    if (c.isstr) {
        skorvu_data(c.var, i, raw);
        n = static_cast<int>(strlen(raw));
        if (strw > 0 && n > strw) n = strw, raw[n] = 0;
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

// A word in the space of the observation numbers.
std::string ljust_lead(const char* w, int lead) {
    std::string s = std::string(w);
    if (static_cast<int>(s.size()) + 1 > lead) return std::string(lead, ' ');
    return std::string(lead - 1 - s.size(), ' ') + s + " ";
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
    int header = findopt("header", 4, 1);
    int strw = findopta("string", 3, 0);
    int divider = findopt("divider", 3, 0);
    int meanrow = findopt("mean", 4, 0);
    int sumrow = findopt("sum", 3, 0);
    std::vector<int> sepby(nvar + 1);
    int nsepby = findvlist("sepby", 4, sepby.data(), nvar);
    if (int rc = chkopt()) return rc;
    if (strw < 0) strw = 0;
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
            int n = cell(c, i, buf, strw);
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
    const int lead =
        obs || meanrow || sumrow ? std::max(obs ? ndig + 4 : 0, meanrow || sumrow ? 6 : 0) : 0;
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

    // the mean and sum rows: over the observations shown, numeric columns only
    std::vector<std::string> foot(lnvar), foot2(lnvar);
    if (meanrow || sumrow) {
        for (int k = 0; k < lnvar; k++) {
            const Col& c = cols[k];
            if (c.isstr) continue;
            double sum = 0, n = 0;
            for (int i = nobs1; i <= nobs2; i++) {
                if (!sel[i - nobs1]) continue;
                double x = c.rcp ? rcpxeq(c.rcp, c.var, i) : korvu_data(c.var, i);
                if (x >= misval) continue;
                sum += x, n++;
            }
            auto txt = [](double x) {
                char b[kFmtBufSize];
                fmtnum(b, "%9.0g", x);
                const char* p = b;
                while (*p == ' ') p++;
                return std::string(p);
            };
            foot[k] = n ? txt(sum / n) : ".";
            foot2[k] = txt(sum);
            int w = static_cast<int>(
                std::max(meanrow ? foot[k].size() : 0, sumrow ? foot2[k].size() : 0));
            if (w > cols[k].width) {
                inner += w - cols[k].width;
                cols[k].width = w;
            }
        }
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
            if (k) line += divider ? " {c |} " : "   ";
            if (header) {
                put(line, c.head.c_str(), c.width, c.d.justify);
            } else if (i < 0) {
                put(line, foot[k].c_str(), c.width, 1);
            } else {
                cell(c, i, buf, strw);
                put(line, buf, c.width, c.d.justify);
            }
        }
        line += ' ';
        if (!clean) line += "{c |}";
        emit(line);
    };
    if (header) {
        rule("{c TLC}", "{c TRC}");
        line.append(lead, ' ');
        c_outlev = 1;
        row(true, 0);
        c_outlev = 0;
        rule("{c LT}", "{c RT}");
    } else {
        rule("{c TLC}", "{c TRC}");
    }
    int shown = 0, prev = 0;
    auto groupchange = [&](int a, int b) {
        for (int k = 0; k < nsepby; k++) {
            int v = sepby[k];
            if (isstrtype(typlist[v - 1])) {
                char x1[KV_STRMAX + 2], x2[KV_STRMAX + 2];
                if (strcmp(skorvu_data(v, a, x1), skorvu_data(v, b, x2))) return true;
            } else if (korvu_data(v, a) != korvu_data(v, b)) {
                return true;
            }
        }
        return false;
    };
    for (int i = nobs1; i <= nobs2; i++) {
        if (!sel[i - nobs1]) continue;
        if (stopflag) return 1;
        bool cut = nsepby ? (shown && groupchange(prev, i)) : (shown && sep && shown % sep == 0);
        if (cut) rule("{c LT}", "{c RT}");
        prev = i;
        if (obs) {
            snprintf(obslab, sizeof obslab, "%*d. ", ndig < 10 ? ndig + 2 : 12, i - first + 1);
            line.append(std::max(0, lead - static_cast<int>(strlen(obslab))), ' ');
            line += obslab;
        } else {
            line.append(lead, ' ');
        }
        row(false, i);
        shown++;
    }
    for (int m = 0; m < 2; m++) {
        if (!(m == 0 ? meanrow : sumrow)) continue;
        rule("{c LT}", "{c RT}");
        line += ljust_lead(m == 0 ? "mean" : "sum", lead);
        if (m == 1) foot.swap(foot2);
        row(false, -1);
        if (m == 1) foot.swap(foot2);
    }
    rule("{c BLC}", "{c BRC}");
    return 0;
}

} // namespace korvu
