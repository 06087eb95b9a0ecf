// encode: a text variable to a numeric one with a value label holding the
// texts; decode: a numeric variable with a value label to the texts.
#include <algorithm>
#include <cmath>
#include <map>
#include <set>

#include "data/area/dataarea.h"
#include "data/area/storage.h"
#include "data/labels/label.h"
#include "data/manage/manage.h"
#include "data/select/generate.h"
#include "data/vars/vartab.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/options.h"

namespace korvu {

// Adds value x with text to label `name`, creating the label when absent.
static int addmapping(const char* name, double x, const std::string& text) {
    int32_t* t = vlfind(name);
    if (!t) t = vlallocate(name, 0, 0);
    if (!t) return error(vl_error ? vl_error : 950);
    int at = vlfindval(t, nullptr, 0, x);
    if (at >= 0) return 0;
    if (!vladdlab(t, -at - 1, text.c_str(), x)) return error(vl_error ? vl_error : 950);
    return 0;
}

int encodecmd(int) {
    vable = 1;
    byable = 3;
    opable = 0;
    if (int rc = parse()) return rc;
    if (lnvar != 1) return errtext(103, "too many variables specified\n");
    char gen[200] = "", lab[200] = "";
    findargn("generate", 3, gen, sizeof gen, 1);
    bool hasgen = gen[0] != 0;
    findargn("label", 5, lab, sizeof lab, 1);
    bool haslab = lab[0] != 0;
    bool noextend = findopt("noextend", 8, 0);
    if (int rc = chkopt()) return rc;
    int sv = varlist_vr[0];
    if (isnumtype(typlist[sv - 1]))
        return errorf(108, "%s not a string variable: encode turns text into numbers\n",
                      varname(sv));
    if (!hasgen || !gen[0]) return errtext(100, "option generate() required\n");
    if (int rc = mg_newname(gen)) return rc;
    std::string lname = haslab && lab[0] ? lab : gen;
    if (lname.size() > 32 || chkname(lname.c_str(), 1))
        return errorf(198, "%s invalid label name\n", lname.c_str());
    // the texts of the chosen observations
    std::vector<char> buf(KV_STRMAX + 2);
    std::vector<int> use(nobs + 1, 0);
    std::set<std::string> texts;
    for (int i = nobs1; i <= nobs2; i++) {
        if ((i & 0xffff) == 0 && kvpollstd()) return 1;
        if (!selobs(i)) continue;
        use[i] = 1;
        skorvu_data(sv, i, buf.data());
        if (buf[0]) texts.insert(buf.data());
    }
    // codes: the label's own where it has the text, new ones after its largest
    std::map<std::string, double> code;
    const int32_t* t = vlfind(lname.c_str());
    double top = 0;
    if (t) {
        for (int k = 0; k < vl_n(t); k++) {
            double x;
            const char* s;
            vlgetmapping(t, k, &x, &s);
            if (x < misval) top = std::max(top, x);
            if (!code.count(s)) code[s] = x;
        }
    }
    std::vector<std::pair<std::string, double>> added;
    for (const std::string& s : texts) {
        if (code.count(s)) continue;
        if (noextend)
            return errorf(459, "%s has the value \"%s\", which label %s does not have\n",
                          varname(sv), s.c_str(), lname.c_str());
        code[s] = ++top;
        added.emplace_back(s, top);
    }
    if (top > maxlong) return errtext(134, "too many values\n");
    for (const auto& a : added)
        if (int rc = addmapping(lname.c_str(), a.second, a.first)) return rc;
    int type = top <= maxbyte ? KV_BYTE : (top <= maxint ? KV_INT : KV_LONG);
    if (int rc = addvar(gen, type)) return error(rc);
    int nv = nvar;
    snprintf(lblname(nv), NAMELEN1, "%s", lname.c_str());
    for (int i = 1; i <= nobs; i++) {
        double y = misval;
        if (use[i]) {
            skorvu_data(sv, i, buf.data());
            if (buf[0]) y = code[buf.data()];
        }
        store(nv, i, y);
    }
    i_nvar = nvar;
    updata = 1;
    return 0;
}

int decodecmd(int) {
    vable = 1;
    byable = 3;
    opable = 0;
    if (int rc = parse()) return rc;
    if (lnvar != 1) return errtext(103, "too many variables specified\n");
    char gen[200] = "";
    findargn("generate", 3, gen, sizeof gen, 1);
    bool hasgen = gen[0] != 0;
    double maxlen = static_cast<double>(KV_STRMAX);
    int hasmax = findoptv("maxlength", 1, &maxlen, 1, 0);
    if (int rc = chkopt()) return rc;
    int nv0 = varlist_vr[0];
    if (!isnumtype(typlist[nv0 - 1]))
        return errorf(108, "%s not a numeric variable: decode turns values into text\n",
                      varname(nv0));
    if (!hasgen || !gen[0]) return errtext(100, "option generate() required\n");
    if (hasmax &&
        (maxlen < 1 || maxlen > static_cast<double>(KV_STRMAX) || maxlen != std::floor(maxlen)))
        return errorf(198, "maxlength() must be a whole number from 1 to %d\n", KV_STRMAX);
    if (!lblname(nv0)[0]) return errorf(182, "%s not labeled\n", varname(nv0));
    const char* ln = lblname(nv0);
    if (!vlfind(ln)) return errorf(111, "value label %s not found\n", ln);
    if (int rc = mg_newname(gen)) return rc;
    std::vector<std::string> out(nobs + 1);
    size_t width = 1;
    for (int i = nobs1; i <= nobs2; i++) {
        if ((i & 0xffff) == 0 && kvpollstd()) return 1;
        if (!selobs(i)) continue;
        double x = korvu_data(nv0, i);
        const char* s = vl_lookup(ln, x);
        if (s) {
            out[i] = std::string(s).substr(0, static_cast<size_t>(maxlen));
        } else if (x < misval) {
            // a value without a label keeps its number as text
            char b[40];
            snprintf(b, sizeof b, "%.17g", x);
            double back = std::strtod(b, nullptr);
            for (int p = 1; p <= 17; p++) {
                char c[40];
                snprintf(c, sizeof c, "%.*g", p, x);
                if (std::strtod(c, nullptr) == back) {
                    snprintf(b, sizeof b, "%s", c);
                    break;
                }
            }
            out[i] = b;
        }
        width = std::max(width, out[i].size());
    }
    if (int rc = addvar(gen, static_cast<int>(std::min<size_t>(width, KV_STRMAX))))
        return error(rc);
    int nv = nvar;
    for (int i = 1; i <= nobs; i++) sstore(nv, i, out[i].c_str());
    i_nvar = nvar;
    updata = 1;
    return 0;
}

} // namespace korvu
