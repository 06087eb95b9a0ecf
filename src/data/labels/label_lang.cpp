// Label languages. The current language's labels are the ordinary ones; every
// other language's labels wait in characteristics: `_lang_v_<lang>` holds a
// variable label (on `_dta` the data label), `_lang_l_<lang>` a value-label
// link. `_dta[_lang_c]` names the current language, `_dta[_lang_list]` all.
#include <cstring>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "data/labels/label.h"
#include "data/vars/char.h"
#include "data/vars/vartab.h"
#include "kernel/errors/errors.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "output/spout.h"

namespace korvu {

static constexpr const char* dflt_lang = "default";
static constexpr int MLL_NAMEMAX = 24; // "_lang_v_" + name fits a name

static std::vector<std::string> split(const char* s) {
    std::vector<std::string> out;
    std::string cur;
    for (; s && *s; ++s) {
        if (*s == ' ') {
            if (!cur.empty()) out.push_back(cur), cur.clear();
        } else {
            cur += *s;
        }
    }
    if (!cur.empty()) out.push_back(cur);
    return out;
}

char* mll_current(char* dst) {
    const char* c = charfind("_dta", "_lang_c", nullptr);
    std::snprintf(dst, 33, "%s", c ? c : dflt_lang);
    return dst;
}

static std::vector<std::string> langs() {
    auto l = split(charfind("_dta", "_lang_list", nullptr));
    if (l.empty()) {
        char c[33];
        l.push_back(mll_current(c));
    }
    return l;
}

static void setlangs(const std::vector<std::string>& l) {
    std::string s;
    for (auto& x : l) s += (s.empty() ? "" : " ") + x;
    charsave("_dta", "_lang_list", s.c_str());
}

int mll_languages(char names[][33], int max) {
    auto l = langs();
    int n = 0;
    for (auto& x : l)
        if (n < max) std::snprintf(names[n++], 33, "%s", x.c_str());
    return static_cast<int>(l.size());
}

char* mll_build_langstr(char* dst, size_t n) {
    std::string s;
    for (auto& x : langs()) s += (s.empty() ? "" : " ") + x;
    std::snprintf(dst, n, "%s", s.c_str());
    return dst;
}

int mll_langexists(const char* name) {
    for (auto& x : langs())
        if (x == name) return 1;
    return 0;
}

// mustexist: 1 the language must exist, 0 it must not, -1 either.
int mll_chkname(const char* name, int mustexist, int report) {
    if (!*name || std::strlen(name) > MLL_NAMEMAX || chkname(name, 0)) {
        if (report) errsayf("%s invalid language name\n", name);
        return 198;
    }
    int ex = mll_langexists(name);
    if (mustexist == 0 && ex) {
        if (report) errsayf("language %s already exists\n", name);
        return 110;
    }
    if (mustexist == 1 && !ex) {
        if (report) errsayf("language %s not defined\n", name);
        return 111;
    }
    return 0;
}

int mll_setcurrent(const char* name) {
    if (std::strcmp(name, dflt_lang) == 0 && langs().size() == 1) {
        charrm("_dta", "_lang_c");
        charrm("_dta", "_lang_list");
        return 0;
    }
    return charsave("_dta", "_lang_c", name);
}

int mll_addlanguage(const char* name) {
    auto l = langs();
    l.push_back(name);
    setlangs(l);
    return 0;
}

static std::string key(const char* kind, const char* lang) {
    return std::string(kind) + lang;
}

// Removes every characteristic of a language.
static void rmlangchars(const char* lang) {
    std::string kv = key("_lang_v_", lang), kl = key("_lang_l_", lang);
    charrm("_dta", kv.c_str());
    for (int v = 1; v <= nvar; ++v) {
        charrm(varname(v), kv.c_str());
        charrm(varname(v), kl.c_str());
    }
}

int mll_rmlanguage(const char* name) {
    auto l = langs();
    std::vector<std::string> keep;
    for (auto& x : l)
        if (x != name) keep.push_back(x);
    rmlangchars(name);
    setlangs(keep);
    return 0;
}

int mlc_post(const char* lang) {
    std::string kv = key("_lang_v_", lang), kl = key("_lang_l_", lang);
    if (charsave("_dta", kv.c_str(), datalbl)) return 950;
    for (int v = 1; v <= nvar; ++v) {
        const char* vl = ptrvarlab(v);
        if (charsave(varname(v), kv.c_str(), vl ? vl : "")) return 950;
        if (charsave(varname(v), kl.c_str(), lblname(v))) return 950;
    }
    return 0;
}

int mlc_clear() {
    datalbl[0] = 0;
    for (int v = 1; v <= nvar; ++v) {
        putvarlab(v, "");
        std::memset(lblname(v), 0, NAMELEN1);
    }
    return 0;
}

int mlc_copy(const char* lang) {
    std::string kv = key("_lang_v_", lang), kl = key("_lang_l_", lang);
    char buf[CHAR_MAXTEXT + 1];
    putdatalbl(charload("_dta", kv.c_str(), buf, sizeof buf));
    for (int v = 1; v <= nvar; ++v) {
        if (putvarlab(v, charload(varname(v), kv.c_str(), buf, sizeof buf))) return 950;
        charload(varname(v), kl.c_str(), buf, sizeof buf);
        std::memset(lblname(v), 0, NAMELEN1);
        if (std::snprintf(lblname(v), NAMELEN1, "%s", buf) < 0) lblname(v)[0] = 0;
    }
    rmlangchars(lang);
    return 0;
}

int mll_langrename(const char* from, const char* to) {
    char cur[33];
    mll_current(cur);
    auto l = langs();
    for (auto& x : l)
        if (x == from) x = to;
    if (std::strcmp(cur, from) != 0) {
        // a waiting language: move its characteristics
        std::string fv = key("_lang_v_", from), fl = key("_lang_l_", from);
        std::string tv = key("_lang_v_", to), tl = key("_lang_l_", to);
        char buf[CHAR_MAXTEXT + 1];
        auto mv = [&](const char* obj, const std::string& a, const std::string& b) {
            if (charfind(obj, a.c_str(), nullptr)) {
                charload(obj, a.c_str(), buf, sizeof buf);
                charsave(obj, b.c_str(), buf);
                charrm(obj, a.c_str());
            }
        };
        mv("_dta", fv, tv);
        for (int v = 1; v <= nvar; ++v) {
            mv(varname(v), fv, tv);
            mv(varname(v), fl, tl);
        }
    }
    setlangs(l);
    if (std::strcmp(cur, from) == 0) charsave("_dta", "_lang_c", to);
    if (l.size() == 1 && l[0] == dflt_lang) mll_setcurrent(dflt_lang);
    return 0;
}

static void listlangs() {
    char cur[33];
    mll_current(cur);
    auto l = langs();
    c_outlev = 1;
    if (l.size() == 1) {
        spout21("\n");
        spout21("In this dataset, value and variable labels\n");
        spout21("have been defined in only one\n");
        spout21("language:  ");
        spout21(cur);
        spout21("\n");
    } else {
        spout21("\n");
        spout21("Available languages:\n");
        for (auto& x : l) spoutf("        %s\n", x.c_str());
        spout21("\n");
        spoutf("Currently set is:%*s. label language %s\n", 10, "", cur);
    }
    spout21("\n");
    spout21("To create new language:");
    spoutptl("        . label language <{it:name}>, new\n");
    spout21("To rename current language:");
    spoutptl("    . label language <{it:name}>, rename\n");
}

static void nowcurrent(const char* name, bool already) {
    c_outlev = 1;
    spoutf("(%s%s)\n", name, already ? " already current language" : " now current language");
}

int label_language_cmd() {
    gettok(prsestd);
    std::string name;
    if (token[0] && !tokis(token, ",")) {
        name = tokisstr(token) ? token + 1 : token;
        gettok(prsestd);
    }
    if (token[0]) {
        if (!tokis(token, ",")) return error(198);
        if (int rc = proption()) return rc;
    }
    int isnew = findopt("new", 3, 0), ren = findopt("rename", 3, 0);
    int del = findopt("delete", 3, 0), copy = findopt("copy", 4, 0);
    if (int rc = chkopt()) return rc;
    if (isnew + ren + del > 1) {
        return errtext(198, "options -delete-, -new-, and -rename- may be not be combined\n");
    }
    if (copy && !isnew) {
        return errtext(198, "option -copy- may only be specified with option -new-\n");
    }
    char cur[33];
    mll_current(cur);
    if (name.empty()) {
        if (isnew || ren || del) return required("language name");
        listlangs();
        return 0;
    }
    if (isnew) {
        if (int rc = mll_chkname(name.c_str(), 0, 1)) return rc;
        if (static_cast<int>(langs().size()) >= MLL_MAXLANG) {
            return errtext(198, "cannot create new language; too many languages\n");
        }
        auto l = langs();
        if (mlc_post(cur)) return error(950);
        if (!copy) mlc_clear();
        l.push_back(name);
        setlangs(l);
        charsave("_dta", "_lang_c", name.c_str());
        nowcurrent(name.c_str(), false);
        updata = 1;
        return 0;
    }
    if (ren) {
        if (int rc = mll_chkname(name.c_str(), 0, 1)) return rc;
        mll_langrename(cur, name.c_str());
        updata = 1;
        return 0;
    }
    if (del) {
        if (int rc = mll_chkname(name.c_str(), 1, 1)) return rc;
        auto l = langs();
        if (l.size() == 1) {
            return errorf(198, "%s is the only language defined; it may not be deleted\n",
                          name.c_str());
        }
        if (name == cur) {
            std::string other = l[0] == name ? l[1] : l[0];
            mlc_clear();
            mlc_copy(other.c_str());
            charsave("_dta", "_lang_c", other.c_str());
            nowcurrent(other.c_str(), false);
        }
        mll_rmlanguage(name.c_str());
        auto rest = langs();
        if (rest.size() == 1 && rest[0] == dflt_lang) mll_setcurrent(dflt_lang);
        updata = 1;
        return 0;
    }
    if (name == cur) {
        nowcurrent(cur, true);
        return 0;
    }
    if (int rc = mll_chkname(name.c_str(), 1, 1)) return rc;
    if (mlc_post(cur)) return error(950);
    mlc_clear();
    mlc_copy(name.c_str());
    charsave("_dta", "_lang_c", name.c_str());
    nowcurrent(name.c_str(), false);
    return 0;
}

} // namespace korvu
