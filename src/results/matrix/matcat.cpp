// `matrix cat`: joins several matrices into one, by rows (the default) or
// by columns, and `matrix mlout`, the coefficient table of e(b) and e(V).
#include <cstring>
#include <string>
#include <vector>

#include "data/vars/vartab.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/limits.h"
#include "kernel/parse/gettok.h"
#include "results/matrix/matexp.h"
#include "results/matrix/matrix.h"
#include "results/regress/regress.h"

namespace korvu {

// matrix cat A = B C ... [, columns rows]
// Each operand is a matrix name (r(x) and e(x) allowed) or nullmat(name);
// the result is the operands joined as by `\` (rows) or `,` (columns),
// with their stripes. The target may be one of the operands.
int matcat() {
    char* p = peektok_chr();
    std::string text = p;
    settok(p + std::strlen(p));
    size_t eq = text.find('=');
    if (eq == std::string::npos) return error(198);
    std::string target = text.substr(0, eq);
    while (!target.empty() && target.back() == ' ') target.pop_back();
    while (!target.empty() && target[0] == ' ') target.erase(0, 1);
    if (target.empty() || target.find(' ') != std::string::npos) return error(198);
    if (target.size() > NAMELEN) return errorf(198, "%s invalid name\n", target.c_str());
    if (int rc = chkname(target.c_str(), 1)) return rc;
    if (int rc = chkreserved(target.c_str())) return rc;
    std::string rest = text.substr(eq + 1), opts;
    size_t comma = std::string::npos;
    int depth = 0;
    for (size_t k = 0; k < rest.size(); k++) {
        if (rest[k] == '(') depth++;
        if (rest[k] == ')') depth--;
        if (rest[k] == ',' && depth == 0) {
            comma = k;
            break;
        }
    }
    if (comma != std::string::npos) {
        opts = rest.substr(comma + 1);
        rest.erase(comma);
    }
    bool bycols = false, byrows = false;
    for (size_t k = 0; k < opts.size();) {
        while (k < opts.size() && opts[k] == ' ') k++;
        size_t e = k;
        while (e < opts.size() && opts[e] != ' ') e++;
        if (e == k) break;
        std::string w = opts.substr(k, e - k);
        k = e;
        if (w.size() >= 3 && std::string("columns").compare(0, w.size(), w) == 0)
            bycols = true;
        else if (w.size() >= 3 && std::string("rows").compare(0, w.size(), w) == 0)
            byrows = true;
        else
            return errorf(198, "option %s not allowed\n", w.c_str());
    }
    if (bycols && byrows) return errtext(198, "only one of rows and columns may be specified\n");
    // the operands, separated by blanks outside parentheses
    std::vector<std::string> ops;
    std::string cur;
    depth = 0;
    for (char c : rest) {
        if (c == '(') depth++;
        if (c == ')') depth--;
        if (c == ' ' && depth == 0) {
            if (!cur.empty()) ops.push_back(cur), cur.clear();
            continue;
        }
        cur += c;
    }
    if (!cur.empty()) ops.push_back(cur);
    if (ops.empty()) return error(198);
    std::string ex = "(";
    for (size_t i = 0; i < ops.size(); i++) {
        if (i) ex += bycols ? " , " : " \\ ";
        ex += ops[i];
    }
    ex += ")";
    MVal m;
    if (int rc = matexpeval(ex.data(), ex.data() + ex.size(), &m)) return rc;
    if (m.scalar || m.null) return errtext(198, "matrix cat: operands must be matrices\n");
    return mvstore(target.c_str(), m);
}

// matrix mlout [, level(#) eform(string)]
int matmlout() {
    return ereturn_display();
}

} // namespace korvu
