// Text to numbers and back by reading and writing the text itself:
//   destring varlist, {generate(newvars) | replace} [ignore("chars") force
//            float percent]
//   tostring varlist, {generate(newvars) | replace} [format(%fmt) force]
// Every variable is converted in memory first; nothing changes unless all
// of them can be.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "data/area/dataarea.h"
#include "data/area/storage.h"
#include "data/formats/formats.h"
#include "data/labels/label.h"
#include "data/manage/manage.h"
#include "data/vars/char.h"
#include "data/vars/vartab.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/options.h"
#include "output/spout.h"

namespace korvu {

namespace {

void note(const std::string& s) {
    c_outlev = 1;
    spout21(s.c_str());
}

// The new column of a conversion, written into a new variable or in place of
// the old one (keeping its name, position and variable label).
int putcolumn(int v, const std::string& newname, int type, const std::vector<double>& num,
              const std::vector<std::string>& str) {
    std::string tmp = newname;
    if (newname.empty()) {
        for (int k = 0;; k++) {
            tmp = "__mg" + std::to_string(k);
            if (!sysfindvar(tmp.c_str())) break;
        }
    }
    if (int rc = addvar(tmp.c_str(), type)) return error(rc);
    int nv = nvar;
    for (int i = 1; i <= nobs; i++) {
        if (isnumtype(type))
            store(nv, i, num[i]);
        else
            sstore(nv, i, str[i].c_str());
    }
    if (const char* l = ptrvarlab(v)) {
        std::string lab = l;
        putvarlab(nv, lab.c_str());
    }
    if (!newname.empty()) return 0;
    std::string old = varname(v);
    char_dropvar(old.c_str());
    if (int rc = markrow_open()) return error(rc);
    for (int w = 1; w <= nvar; w++) markrow_set(w, w == v);
    remvar();
    nv = nvar;
    char_rename(varname(nv), old.c_str());
    snprintf(varname(nv), NAMELEN1, "%s", old.c_str());
    movevar(nv, v);
    i_nvar = nvar;
    return 0;
}

struct Common {
    std::vector<int> vars;
    std::vector<std::string> names; // empty with replace
    bool replace = false;
};

int readcommon(Common* c, const char* cmdname) {
    vable = 1;
    ifable = oable = 3;
    byable = 3;
    opable = 0;
    if (int rc = parse()) return rc;
    c->vars.assign(varlist_vr, varlist_vr + lnvar);
    char gen[2000] = "";
    findargn("generate", 3, gen, sizeof gen, 1000);
    bool hasgen = gen[0] != 0;
    c->replace = findopt("replace", 7, 0);
    if (hasgen == c->replace)
        return errorf(198, "%s needs either generate() or replace\n", cmdname);
    if (hasgen) {
        c->names = mg_words(gen);
        if (c->names.size() != c->vars.size())
            return errtext(198, "generate() needs as many names as there are variables\n");
        for (size_t k = 0; k < c->names.size(); k++) {
            if (int rc = mg_newname(c->names[k])) return rc;
            for (size_t m = 0; m < k; m++)
                if (c->names[m] == c->names[k])
                    return errorf(198, "%s named twice\n", c->names[k].c_str());
        }
    }
    return 0;
}

} // namespace

int destringcmd(int) {
    Common c;
    if (int rc = readcommon(&c, "destring")) return rc;
    char ign[600] = "";
    findargasis("ignore", 3, ign, sizeof ign);
    bool hasign = ign[0] != 0;
    bool force = findopt("force", 5, 0);
    bool flt = findopt("float", 5, 0);
    bool percent = findopt("percent", 3, 0);
    if (int rc = chkopt()) return rc;
    std::string ignore;
    if (hasign) {
        std::string s = ign;
        if (s.size() >= 2 && s.front() == '"' && s.back() == '"') s = s.substr(1, s.size() - 2);
        ignore = s;
    }
    std::vector<std::vector<double>> out(c.vars.size());
    std::vector<char> skip(c.vars.size(), 0);
    std::vector<char> buf(KV_STRMAX + 2);
    int bad = 0;
    for (size_t k = 0; k < c.vars.size(); k++) {
        int v = c.vars[k];
        if (isnumtype(typlist[v - 1])) {
            skip[k] = 1;
            continue;
        }
        std::vector<double>& o = out[k];
        o.assign(nobs + 1, misval);
        std::vector<std::string> offending;
        int64_t nbad = 0;
        for (int i = 1; i <= nobs; i++) {
            if ((i & 0xffff) == 0 && kvpollstd()) return 1;
            skorvu_data(v, i, buf.data());
            std::string t;
            bool pct = false;
            for (const char* p = buf.data(); *p; p++) {
                if (ignore.find(*p) != std::string::npos) continue;
                if (percent && *p == '%') {
                    pct = true;
                    continue;
                }
                t += *p;
            }
            if (mg_words(t).empty()) continue; // empty text is missing
            double x;
            if (!mg_number(t, &x)) {
                nbad++;
                if (offending.size() < 5 &&
                    std::find(offending.begin(), offending.end(), buf.data()) == offending.end())
                    offending.push_back(buf.data());
                continue;
            }
            if (pct && x < misval) x /= 100;
            o[i] = x;
        }
        if (nbad && !force) {
            std::string msg = std::string(varname(v)) + ": " + std::to_string(nbad) +
                              (nbad == 1 ? " text is not a number:" : " texts are not numbers:");
            for (const std::string& s : offending) msg += " \"" + s + "\"";
            msg += nbad > static_cast<int64_t>(offending.size()) ? " ...\n" : "\n";
            errsay(msg.c_str());
            bad++;
        } else if (nbad) {
            note("(" + std::string(varname(v)) + ": " + std::to_string(nbad) +
                 " texts that are not numbers made missing)\n");
        }
    }
    if (bad)
        return errtext(7, "nothing converted: remove the characters with ignore(), or use force "
                          "to make such texts missing\n");
    for (size_t k = 0; k < c.vars.size(); k++) {
        int v = c.vars[k];
        if (skip[k]) {
            note(std::string(varname(v)) + " already numeric; left as it is\n");
            continue;
        }
        int type = mg_fittype(out[k], flt);
        if (!flt && type == KV_FLOAT) type = KV_DOUBLE;
        std::string name = varname(v);
        if (int rc = putcolumn(v, c.replace ? "" : c.names[k], type, out[k], {})) return rc;
        note(name + (c.replace ? " replaced" : " converted into " + c.names[k]) + " as " +
             (type == KV_BYTE    ? "byte"
              : type == KV_INT   ? "int"
              : type == KV_LONG  ? "long"
              : type == KV_FLOAT ? "float"
                                 : "double") +
             "\n");
    }
    i_nvar = nvar;
    updata = 1;
    return 0;
}

int tostringcmd(int) {
    Common c;
    if (int rc = readcommon(&c, "tostring")) return rc;
    char fmt[60] = "";
    findargasis("format", 3, fmt, sizeof fmt);
    bool hasfmt = fmt[0] != 0;
    bool force = findopt("force", 5, 0);
    if (int rc = chkopt()) return rc;
    std::string f = hasfmt ? fmt : "%12.0g";
    FmtDesc d;
    if (chkfmt(f.c_str(), 1, &d)) return errorf(120, "%s invalid numeric format\n", f.c_str());
    std::vector<std::vector<std::string>> out(c.vars.size());
    std::vector<char> skip(c.vars.size(), 0);
    int bad = 0;
    for (size_t k = 0; k < c.vars.size(); k++) {
        int v = c.vars[k];
        if (!isnumtype(typlist[v - 1])) {
            skip[k] = 1;
            continue;
        }
        std::vector<std::string>& o = out[k];
        o.assign(nobs + 1, "");
        int64_t lost = 0;
        for (int i = 1; i <= nobs; i++) {
            if ((i & 0xffff) == 0 && kvpollstd()) return 1;
            double x = korvu_data(v, i);
            std::string s = safereforms(f.c_str(), x);
            size_t a = s.find_first_not_of(' ');
            s = a == std::string::npos ? "" : s.substr(a);
            while (!s.empty() && s.back() == ' ') s.pop_back();
            double back;
            if (!mg_number(s, &back) || back != x) lost++;
            o[i] = s;
        }
        if (lost && !force) {
            errsay((std::string(varname(v)) + ": " + std::to_string(lost) +
                    (lost == 1 ? " value" : " values") + " would change in format " + f + "\n")
                       .c_str());
            bad++;
        }
    }
    if (bad)
        return errtext(7, "nothing converted: choose a format() that keeps the values, or use "
                          "force\n");
    for (size_t k = 0; k < c.vars.size(); k++) {
        int v = c.vars[k];
        if (skip[k]) {
            note(std::string(varname(v)) + " already text; left as it is\n");
            continue;
        }
        size_t w = 1;
        for (const std::string& s : out[k]) w = std::max(w, s.size());
        int type = static_cast<int>(std::min<size_t>(w, KV_STRMAX));
        std::string name = varname(v);
        if (int rc = putcolumn(v, c.replace ? "" : c.names[k], type, {}, out[k])) return rc;
        note(name + (c.replace ? " replaced" : " converted into " + c.names[k]) + " as str" +
             std::to_string(type) + "\n");
    }
    i_nvar = nvar;
    updata = 1;
    return 0;
}

} // namespace korvu
