// ds: the names of variables, chosen by type, format, or label patterns,
// listed in columns and left in r(varlist).
//   ds [varlist] [, has(type typelist) not(type typelist)
//       has(format patterns) has(varlabel patterns) has(vallabel patterns)
//       not(format|varlabel|vallabel patterns) alpha]
// A type list holds numeric, string, byte, int, long, float, double, str#;
// patterns hold * and ? wild cards; has(vallabel) alone means any value label.
#include <algorithm>
#include <cstring>

#include "data/area/storage.h"
#include "data/labels/label.h"
#include "data/vars/vartab.h"
#include "kernel/errors/errors.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "output/spout.h"
#include "results/stores.h"
#include "results/tables/tables.h"
#include "results/tables/tables_internal.h"

namespace korvu {

namespace {

std::vector<std::string> words(const std::string& t) {
    std::vector<std::string> w;
    size_t i = 0;
    while (i < t.size()) {
        while (i < t.size() && t[i] == ' ') i++;
        size_t j = i;
        if (j < t.size() && t[j] == '"') {
            size_t e = t.find('"', j + 1);
            if (e == std::string::npos) e = t.size();
            w.push_back(t.substr(j + 1, e - j - 1));
            i = e + 1;
            continue;
        }
        while (j < t.size() && t[j] != ' ') j++;
        if (j > i) w.push_back(t.substr(i, j - i));
        i = j;
    }
    return w;
}

bool typematch(const std::string& w, int code) {
    bool num = isnumtype(code);
    if (w == "numeric") return num;
    if (w == "string") return !num;
    if (w == "byte") return code == KV_BYTE;
    if (w == "int") return code == KV_INT;
    if (w == "long") return code == KV_LONG;
    if (w == "float") return code == KV_FLOAT;
    if (w == "double") return code == KV_DOUBLE;
    if (!num && w.compare(0, 3, "str") == 0) return w.substr(3) == std::to_string(code);
    return false;
}

// Whether v meets the condition "kind words", -1 for a kind not known.
int meets(int v, const std::string& cond) {
    std::vector<std::string> w = words(cond);
    if (w.empty()) return -1;
    std::string kind = w[0];
    w.erase(w.begin());
    if (cmdcmp(kind.c_str(), "type", 1)) {
        if (w.empty()) return -1;
        for (const std::string& t : w)
            if (typematch(t, typlist[v - 1])) return 1;
        return 0;
    }
    std::string text;
    if (cmdcmp(kind.c_str(), "format", 1)) {
        text = fmtname(v);
    } else if (cmdcmp(kind.c_str(), "varlabel", 4)) {
        text = ptrvarlab(v) ? ptrvarlab(v) : "";
        if (w.empty()) return !text.empty();
    } else if (cmdcmp(kind.c_str(), "vallabel", 4)) {
        text = lblname(v);
        if (w.empty()) return !text.empty();
    } else {
        return -1;
    }
    if (w.empty()) return -1;
    for (const std::string& p : w)
        if (wildmatch(p.c_str(), text.c_str())) return 1;
    return 0;
}

} // namespace

int dscmd(int) {
    vable = 2;
    opable = 0;
    ifable = oable = 3;
    byable = 3;
    if (int rc = parse()) return rc;
    char hbuf[1000] = "", nbuf[1000] = "";
    findargasis("has", 3, hbuf, sizeof hbuf);
    findargasis("not", 3, nbuf, sizeof nbuf);
    bool alpha = findopt("alpha", 5, 0);
    if (int rc = chkopt()) return rc;
    if (hbuf[0] && nbuf[0]) return errtext(198, "has() and not() may not be combined\n");
    std::vector<int> vars(varlist_vr, varlist_vr + lnvar);
    if (vars.empty())
        for (int v = 1; v <= nvar; v++) vars.push_back(v);
    std::vector<std::string> chosen;
    for (int v : vars) {
        bool keep = true;
        if (hbuf[0] || nbuf[0]) {
            int m = meets(v, hbuf[0] ? hbuf : nbuf);
            if (m < 0)
                return errorf(198, "%s() takes type, format, varlabel or vallabel and a list\n",
                              hbuf[0] ? "has" : "not");
            keep = hbuf[0] ? m == 1 : m == 0;
        }
        if (keep) chosen.emplace_back(varname(v));
    }
    if (alpha) std::sort(chosen.begin(), chosen.end());
    // names in columns of 13
    std::string line, all;
    auto flush = [&]() {
        while (!line.empty() && line.back() == ' ') line.pop_back();
        if (!line.empty()) tab_res(line + "\n");
        line.clear();
    };
    for (const std::string& n : chosen) {
        all += (all.empty() ? "" : " ") + n;
        std::string cellt = n.size() > 12 ? n + " " : ljust(n, 13);
        if (line.size() + cellt.size() > 79) flush();
        line += cellt;
    }
    flush();
    retval_clear();
    retval_set_local("varlist", all.c_str());
    return 0;
}

} // namespace korvu
