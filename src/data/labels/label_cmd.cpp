// The `label` command: define, values, variable, data, dir, list, drop, copy,
// save and language.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "data/area/dataarea.h"
#include "data/dta/dta.h"
#include "data/formats/formats.h"
#include "data/labels/label.h"
#include "data/vars/char.h"
#include "data/vars/varlist.h"
#include "data/vars/vartab.h"
#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/scratch.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "kernel/program/argparse.h"
#include "output/spout.h"

namespace korvu {

int label_language_cmd();

// The words and strings up to a comma (or the end), then the options.
struct Args {
    std::vector<std::string> w; // strings keep their leading '"'
    bool opts = false;
};

static int readargs(Args& a) {
    for (;;) {
        gettok(prsestd);
        if (!token[0]) return 0;
        if (!tokisstr(token) && tokis(token, ",")) {
            a.opts = true;
            return proption();
        }
        a.w.emplace_back(token);
    }
}

static std::vector<std::string> vallab_names() {
    std::vector<std::string> out;
    char name[40];
    for (void* it = dmnext(nullptr, name, DM_VALLAB, nullptr); it;
         it = dmnext(it, name, DM_VALLAB, nullptr))
        out.emplace_back(name);
    std::sort(out.begin(), out.end());
    return out;
}

static int labellen_of(int v) {
    if (!isnumtype(typlist[v - 1]) || !lblname(v)[0]) return -1;
    const int32_t* t = vlfind(lblname(v));
    return t ? vlmaxlen(t) : -1;
}

static void fix_formats_for(const char* name) {
    for (int v = 1; v <= nvar; ++v)
        if (std::strcmp(lblname(v), name) == 0) fixfmts(v, v, fmtname, labellen_of);
}

static int labnotfound(const char* name) {
    return errorf(111, "value label %s not found\n", name);
}

static int chklabname(const std::string& n) {
    if (n.empty() || tokisstr(n.c_str()) || n.size() > 32 || chkname(n.c_str(), 0)) {
        return errorf(198, "%s invalid name\n", tokisstr(n.c_str()) ? n.c_str() + 1 : n.c_str());
    }
    return 0;
}

static int vlreport(int code) {
    if (code == 134) {
        return errtext(134, "too many values\n");
    }
    return error(code ? code : 950);
}

static int label_define() {
    Args a;
    if (int rc = readargs(a)) return rc;
    int add = findopt("add", 3, 0), modify = findopt("modify", 3, 0);
    int replace = findopt("replace", 7, 0), fix = findopt("fix", 3, 1);
    if (int rc = chkopt()) return rc;
    if (modify) add = 1;
    if (a.w.empty()) return required("label name");
    const std::string name = a.w[0];
    if (int rc = chklabname(name)) return rc;
    // the tokenizer hands a sign apart from its number: -1 is "-" and "1"
    for (size_t i = 1; i + 1 < a.w.size(); ++i) {
        const std::string& w = a.w[i];
        if ((w == "-" || w == "+") && !tokisstr(a.w[i + 1].c_str())) {
            a.w[i] += a.w[i + 1];
            a.w.erase(a.w.begin() + static_cast<long>(i) + 1);
        }
    }
    std::vector<std::pair<double, std::string>> pairs;
    for (size_t i = 1; i < a.w.size(); i += 2) {
        double x;
        if (tokisstr(a.w[i].c_str()) || cnvstoz(a.w[i].c_str(), &x)) {
            return errorf(198, "'%s' invalid\n",
                          tokisstr(a.w[i].c_str()) ? a.w[i].c_str() + 1 : a.w[i].c_str());
        }
        if (i + 1 >= a.w.size()) return error(198);
        if (int rc = vlable(1, x)) return rc;
        const std::string& t = a.w[i + 1];
        pairs.emplace_back(x, tokisstr(t.c_str()) ? t.substr(1) : t);
    }
    int32_t* t = vlfind(name.c_str());
    if (t && replace) {
        dmrm(t);
        t = nullptr;
    } else if (t && !add) {
        return errorf(110, "%s already defined\n", name.c_str());
    }
    if (!t && !(t = vlallocate(name.c_str(), 0, 0))) return vlreport(vl_error);
    for (auto& [x, text] : pairs) {
        int at = vlfindval(t, nullptr, 0, x);
        if (at >= 0) {
            if (!modify) {
                return errorf(
                    180, "label %s already has a value %s\ninvalid attempt to modify label\n",
                    name.c_str(), safereforms("%18.0g", x) + strspn(safereforms("%18.0g", x), " "));
            }
            if (!(t = vlrmlab(t, at))) return vlreport(vl_error);
            if (text.empty()) continue;
            at = vlfindval(t, nullptr, 0, x);
        } else if (text.empty() && modify) {
            continue;
        }
        if (!(t = vladdlab(t, ~at, text.c_str(), x))) return vlreport(vl_error);
    }
    if (fix) fix_formats_for(name.c_str());
    updata = 1;
    return 0;
}

// Resolves a varlist given as text; the tokenizer is borrowed.
static int varlist_of(const std::string& text, std::vector<int>& out) {
    TokState st;
    borrow_gettok(&st);
    std::vector<char> buf(text.begin(), text.end());
    buf.push_back(0);
    settok(buf.data());
    int rc = ssvlist(prsestd, 0);
    if (!rc) {
        gettok(prsestd);
        if (token[0]) rc = error(198);
    }
    return_gettok(&st);
    if (rc) return rc;
    out.assign(varlist_vr, varlist_vr + lnvar);
    return 0;
}

static int label_values() {
    Args a;
    if (int rc = readargs(a)) return rc;
    int fix = findopt("fix", 3, 1);
    if (int rc = chkopt()) return rc;
    if (a.w.empty()) return required("varlist");
    std::string name;
    size_t nv = a.w.size();
    if (nv >= 2) name = a.w[--nv];
    if (name == ".") name.clear();
    if (!name.empty())
        if (int rc = chklabname(name)) return rc;
    std::string vl;
    for (size_t i = 0; i < nv; ++i) vl += a.w[i] + " ";
    std::vector<int> vars;
    if (int rc = varlist_of(vl, vars)) return rc;
    for (int v : vars)
        if (!isnumtype(typlist[v - 1])) {
            return errtext(181, "may not label strings\n");
        }
    for (int v : vars) {
        std::memset(lblname(v), 0, NAMELEN1);
        std::snprintf(lblname(v), NAMELEN1, "%s", name.c_str());
        if (fix && !name.empty()) fixfmts(v, v, fmtname, labellen_of);
    }
    updata = 1;
    return 0;
}

static std::string text_arg(const Args& a, size_t i) {
    if (i >= a.w.size()) return "";
    const std::string& t = a.w[i];
    return tokisstr(t.c_str()) ? t.substr(1) : t;
}

static void truncnote(std::string& t) {
    if (t.size() > static_cast<size_t>(VARLAB_MAX)) {
        c_outlev = 1;
        spoutf("note: label truncated to %d characters\n", VARLAB_MAX);
        t.resize(VARLAB_MAX);
    }
}

static int label_variable() {
    Args a;
    if (int rc = readargs(a)) return rc;
    if (int rc = chkopt()) return rc;
    if (a.w.empty()) return required("varname");
    if (a.w.size() > 2) return error(198);
    int v = korvu_findvar(a.w[0].c_str(), 0, 0);
    if (v < 0) return -v;
    std::string t = text_arg(a, 1);
    truncnote(t);
    if (putvarlab(v, t.c_str())) return error(950);
    updata = 1;
    return 0;
}

static int label_data() {
    Args a;
    if (int rc = readargs(a)) return rc;
    if (int rc = chkopt()) return rc;
    if (a.w.size() > 1) return error(198);
    std::string t = text_arg(a, 0);
    truncnote(t);
    putdatalbl(t.c_str());
    updata = 1;
    return 0;
}

static int label_dir() {
    Args a;
    if (int rc = readargs(a)) return rc;
    if (int rc = chkopt()) return rc;
    c_outlev = 1;
    std::string names;
    for (auto& n : vallab_names()) {
        spoutf("%s\n", n.c_str());
        if (!names.empty()) names += ' ';
        names += n;
    }
    // r(names): the value labels in the order listed
    if (arg_hooks.clear_r) arg_hooks.clear_r();
    if (arg_hooks.post_rmacro) return arg_hooks.post_rmacro("names", names.c_str());
    return 0;
}

static int names_or_all(const Args& a, std::vector<std::string>& out, bool allow_all) {
    if (a.w.empty() || (allow_all && a.w.size() == 1 && a.w[0] == "_all")) {
        out = vallab_names();
        return 0;
    }
    for (auto& w : a.w) {
        if (int rc = chklabname(w)) return rc;
        if (!vlfind(w.c_str())) return labnotfound(w.c_str());
        out.push_back(w);
    }
    return 0;
}

static int label_list() {
    Args a;
    if (int rc = readargs(a)) return rc;
    if (int rc = chkopt()) return rc;
    std::vector<std::string> names;
    if (int rc = names_or_all(a, names, true)) return rc;
    for (auto& n : names) {
        c_outlev = 1;
        spoutf("%s:\n", n.c_str());
        if (vllist(vlfind(n.c_str()))) return 1;
    }
    return 0;
}

static int label_drop() {
    Args a;
    if (int rc = readargs(a)) return rc;
    if (int rc = chkopt()) return rc;
    if (a.w.empty()) return required("label name");
    std::vector<std::string> names;
    if (int rc = names_or_all(a, names, true)) return rc;
    for (auto& n : names) dmrm(vlfind(n.c_str()));
    updata = 1;
    return 0;
}

static int label_copy() {
    Args a;
    if (int rc = readargs(a)) return rc;
    int replace = findopt("replace", 7, 0);
    if (int rc = chkopt()) return rc;
    if (a.w.size() != 2) return error(198);
    for (auto& w : a.w)
        if (int rc = chklabname(w)) return rc;
    int32_t* from = vlfind(a.w[0].c_str());
    if (!from) return labnotfound(a.w[0].c_str());
    if (a.w[0] == a.w[1]) return 0;
    if (vlfind(a.w[1].c_str())) {
        if (!replace) {
            return errorf(110, "label %s already defined\n", a.w[1].c_str());
        }
        dmrm(vlfind(a.w[1].c_str()));
    }
    from = vlfind(a.w[0].c_str());
    if (!dmsave(a.w[1].c_str(), DM_VALLAB, 0, from, dmsize(from))) return error(950);
    updata = 1;
    return 0;
}

static int label_save() {
    std::vector<std::string> names;
    std::string file;
    for (;;) {
        gettok(prsestd);
        if (!token[0]) return required("using");
        if (tokis(token, "using")) break;
        names.emplace_back(token);
    }
    char fn[FNLEN];
    if (int rc = gettokfn(fn, sizeof fn)) return rc == 7199 ? error(rc) : required("using");
    gettok(prsestd);
    if (token[0]) {
        if (!tokis(token, ",")) return error(198);
        if (int rc = proption()) return rc;
    }
    int replace = findopt("replace", 7, 0);
    if (int rc = chkopt()) return rc;
    Args a;
    a.w = names;
    std::vector<std::string> list;
    if (int rc = names_or_all(a, list, true)) return rc;
    file = dflttype(fn, ".do");
    struct stat sb;
    bool exists = stat(file.c_str(), &sb) == 0;
    if (exists && !replace) return fierr(602, file.c_str());
    if (exists && unlink(file.c_str())) return fierr(608, file.c_str());
    FILE* f = std::fopen(file.c_str(), "w");
    if (!f) return fierr(603, file.c_str());
    int rc = 0;
    for (auto& n : list)
        if ((rc = vlwrite(f, vlfind(n.c_str())))) break;
    if (std::fclose(f) && !rc) rc = 693;
    if (rc) {
        unlink(file.c_str());
        return fierr(rc, file.c_str());
    }
    fierr(697, file.c_str());
    return 0;
}

int labelcmd(int) {
    opable = 0;
    noptn = 0;
    gettok(prsestd);
    if (!token[0]) return required("subcommand");
    std::string sub = token;
    if (cmdcmp(sub.c_str(), "variable", 3)) return label_variable();
    if (cmdcmp(sub.c_str(), "values", 3)) return label_values();
    if (cmdcmp(sub.c_str(), "data", 2)) return label_data();
    if (cmdcmp(sub.c_str(), "dir", 2)) return label_dir();
    if (cmdcmp(sub.c_str(), "list", 1)) return label_list();
    if (cmdcmp(sub.c_str(), "drop", 4)) return label_drop();
    if (cmdcmp(sub.c_str(), "define", 3)) return label_define();
    if (cmdcmp(sub.c_str(), "copy", 4)) return label_copy();
    if (cmdcmp(sub.c_str(), "save", 4)) return label_save();
    if (cmdcmp(sub.c_str(), "language", 4)) return label_language_cmd();
    return errtext(198, "invalid syntax\n");
}

} // namespace korvu
