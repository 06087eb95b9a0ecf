// Characteristics in the dictionary (kind 17), the `char` command and the
// upkeep that follows renames and drops of variables.
#include "data/vars/char.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "data/labels/label.h"
#include "data/vars/vartab.h"
#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/macro/macro.h"
#include "kernel/parse/gettok.h"
#include "output/spout.h"

namespace korvu {

static void* find_item(const char* obj, const char* name) {
    for (void* it = dmfind0(obj, DM_CHAR); it; it = dmnamenext(it, DM_CHAR))
        if (std::strncmp(static_cast<const char*>(it), name, CHAR_NAMELEN1) == 0) return it;
    return nullptr;
}

const char* charfind(const char* obj, const char* name, int* len) {
    void* it = find_item(obj, name);
    if (!it) return nullptr;
    const char* t = static_cast<const char*>(it) + CHAR_NAMELEN1;
    if (len) *len = static_cast<int>(std::strlen(t));
    return t;
}

char* charload(const char* obj, const char* name, char* dst, size_t n) {
    const char* t = charfind(obj, name, nullptr);
    if (!n) return dst;
    std::snprintf(dst, n, "%s", t ? t : "");
    return dst;
}

char* charloadshort(const char* obj, const char* name, char* dst, size_t n) {
    return charload(obj, name, dst, n);
}

int charsave(const char* obj, const char* name, const char* text) {
    charrm(obj, name);
    size_t len = std::strlen(text);
    if (!len) return 0;
    if (len > static_cast<size_t>(CHAR_MAXTEXT)) len = CHAR_MAXTEXT;
    char* it = static_cast<char*>(dmadd(obj, DM_CHAR, 0, CHAR_NAMELEN1 + len + 1));
    if (!it) return 950;
    std::memset(it, 0, CHAR_NAMELEN1);
    std::snprintf(it, CHAR_NAMELEN1, "%s", name);
    std::memcpy(it + CHAR_NAMELEN1, text, len);
    it[CHAR_NAMELEN1 + len] = 0;
    return 0;
}

void charrm(const char* obj, const char* name) {
    if (name) {
        dmrm(find_item(obj, name));
        return;
    }
    while (void* it = dmfind0(obj, DM_CHAR)) dmrm(it);
}

// The type list holds the newest first; definition order walks it backwards.
const void* charnext(const void* ptr, char* objout, char* nameout, const char** text) {
    const DmItem* h;
    if (!ptr) {
        void* first = dmnext(nullptr, nullptr, DM_CHAR, nullptr);
        if (!first) return nullptr;
        h = dmhdr(first);
        while (h->tnext) h = h->tnext;
    } else {
        h = dmhdr(ptr)->tprev;
        if (!h) return nullptr;
    }
    const char* v = static_cast<const char*>(dmval(h));
    if (objout) std::snprintf(objout, 33, "%s", h->name);
    if (nameout) std::snprintf(nameout, 33, "%s", v);
    if (text) *text = v + CHAR_NAMELEN1;
    return v;
}

const char* charnextptr_name(const void* ptr) {
    return static_cast<const char*>(ptr);
}
const char* charnextptr_text(const void* ptr) {
    return static_cast<const char*>(ptr) + CHAR_NAMELEN1;
}

void char_rename(const char* oldname, const char* newname) {
    std::vector<void*> items;
    for (void* it = dmfind0(oldname, DM_CHAR); it; it = dmnamenext(it, DM_CHAR))
        items.push_back(it);
    for (void* it : items) dmrename(it, newname);
    if (void* vl = dmfind0(oldname, DM_VARLAB)) dmrename(vl, newname);
}

void char_dropvar(const char* name) {
    charrm(name);
    dmrm(dmfind0(name, DM_VARLAB));
}

// Notes of the `_dta` set held aside during a merge.
static std::vector<std::string> held_notes;

static std::vector<std::string> take_notes(const char* obj) {
    std::vector<std::string> out;
    const char* n0 = charfind(obj, "note0", nullptr);
    int n = n0 ? std::atoi(n0) : 0;
    char key[16];
    for (int i = 1; i <= n && i < 100000; ++i) {
        std::snprintf(key, sizeof key, "note%d", i);
        if (const char* t = charfind(obj, key, nullptr)) out.push_back(t);
        charrm(obj, key);
    }
    charrm(obj, "note0");
    return out;
}

static void put_notes(const char* obj, const std::vector<std::string>& notes) {
    const char* n0 = charfind(obj, "note0", nullptr);
    int n = n0 ? std::atoi(n0) : 0;
    char key[16], num[16];
    for (const auto& t : notes) {
        std::snprintf(key, sizeof key, "note%d", ++n);
        charsave(obj, key, t.c_str());
    }
    if (n) {
        std::snprintf(num, sizeof num, "%d", n);
        charsave(obj, "note0", num);
    }
}

void charpreproc() {
    held_notes = take_notes("_dta");
}

void charspostproc() {
    std::vector<std::string> incoming = take_notes("_dta");
    put_notes("_dta", held_notes);
    put_notes("_dta", incoming);
    held_notes.clear();
}

int charfcn(const char* obj, const char* name, char* dst, size_t n) {
    std::string o = obj;
    if (o != "_dta") {
        if (!varlist || !nvar) return varnotfound(obj);
        int v = korvu_findvar(obj, 0, 0);
        if (v < 0) return -v;
        o = varname(v);
    }
    charload(o.c_str(), name, dst, n);
    return 0;
}

// --- the command -----------------------------------------------------------------

static const char* skipwhite(const char* p) {
    while (*p == ' ' || *p == '\t') ++p;
    return p;
}

// Text argument: a quoted or compound-quoted string loses its quotes.
static std::string unquote(std::string s) {
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.pop_back();
    if (s.size() >= 4 && s[0] == '`' && s[1] == '"' && s[s.size() - 2] == '"' && s.back() == '\'')
        return s.substr(2, s.size() - 4);
    if (s.size() >= 2 && s[0] == '"' && s.back() == '"') return s.substr(1, s.size() - 2);
    return s;
}

// `name[charname]`: obj resolved to a variable name or `_dta`; p moves behind.
// 0 or a code (printed).
static int getcharspec(const char*& p, std::string& obj, std::string& name, bool allow_empty_name) {
    p = skipwhite(p);
    const char* lb = std::strchr(p, '[');
    const char* sp = p;
    while (*sp && *sp != ' ' && *sp != '[') ++sp;
    if (!lb || lb != sp) return error(198);
    const char* rb = std::strchr(lb, ']');
    if (!rb) return error(198);
    std::string o(p, lb), c(lb + 1, rb);
    while (!c.empty() && c.back() == ' ') c.pop_back();
    while (!c.empty() && c.front() == ' ') c.erase(0, 1);
    if (o.empty() || o.size() > 32) return error(198);
    if (o != "_dta") {
        int v = korvu_findvar(o.c_str(), 0, 0);
        if (v < 0) return -v;
        o = varname(v);
    }
    if (c.empty()) {
        if (!allow_empty_name) return error(198);
    } else if (c.size() > 32 || chkname(c.c_str(), 0)) {
        return errorf(198, "%s invalid name\n", c.c_str());
    }
    obj = o, name = c;
    p = rb + 1;
    return 0;
}

static void list_one(const char* obj, const char* name, const char* text) {
    char head[80];
    std::snprintf(head, sizeof head, "  %s[%s]:", obj, name);
    c_outlev = 1;
    spout21(head);
    size_t n = std::strlen(head);
    spoutf("%*s", static_cast<int>(n < 28 ? 28 - n : 1), "");
    spout21(text);
    spout21("\n");
}

static int charlist(const char* p) {
    std::string want;
    p = skipwhite(p);
    std::string only, onlyname;
    if (*p) {
        if (std::strchr(p, '[')) {
            if (int rc = getcharspec(p, only, onlyname, true)) return rc;
        } else {
            only = p;
            while (!only.empty() && only.back() == ' ') only.pop_back();
            if (only != "_dta") {
                int v = korvu_findvar(only.c_str(), 0, 0);
                if (v < 0) return -v;
                only = varname(v);
            }
        }
    }
    char obj[33], name[33];
    const char* text;
    for (const void* it = charnext(nullptr, obj, name, &text); it;
         it = charnext(it, obj, name, &text)) {
        if (!only.empty() && only != obj) continue;
        if (!onlyname.empty() && onlyname != name) continue;
        list_one(obj, name, text);
    }
    return 0;
}

int charcmd(int) {
    const char* p = skipwhite(wheretok());
    std::string word;
    const char* q = p;
    while (*q && *q != ' ' && *q != '[') ++q;
    word.assign(p, q);
    if (*q != '[' && cmdcmp(word.c_str(), "list", 1)) return charlist(q);
    if (*q != '[' && cmdcmp(word.c_str(), "rename", 3)) {
        char a[64] = {}, b[64] = {}, extra[8] = {};
        int k = std::sscanf(q, " %63s %63s %7s", a, b, extra);
        if (k != 2) return error(198);
        std::string from = a, to = b;
        if (from != "_dta") {
            int v = korvu_findvar(a, 0, 0);
            if (v < 0) return -v;
            from = varname(v);
        }
        if (to != "_dta") {
            int v = korvu_findvar(b, 0, 0);
            if (v < 0) return -v;
            to = varname(v);
        }
        if (from == to) return 0;
        std::vector<std::pair<std::string, std::string>> moved;
        char obj[33], name[33];
        const char* text;
        for (const void* it = charnext(nullptr, obj, name, &text); it;
             it = charnext(it, obj, name, &text))
            if (from == obj) moved.emplace_back(name, text);
        for (auto& [n, t] : moved) {
            if (charfind(to.c_str(), n.c_str(), nullptr)) {
                return errorf(110, "%s[%s] already exists\n", to.c_str(), n.c_str());
            }
        }
        for (auto& [n, t] : moved) {
            if (charsave(to.c_str(), n.c_str(), t.c_str())) return error(950);
            charrm(from.c_str(), n.c_str());
        }
        return 0;
    }
    if (*q != '[' && cmdcmp(word.c_str(), "define", 3)) p = q;
    std::string obj, name;
    if (int rc = getcharspec(p, obj, name, false)) return rc;
    std::string text = unquote(skipwhite(p));
    if (charsave(obj.c_str(), name.c_str(), text.c_str())) return error(950);
    updata = 1;
    settok(const_cast<char*>(""));
    return 0;
}

// --- notes ---------------------------------------------------------------------------

static int notes_count(const char* obj) {
    const char* n0 = charfind(obj, "note0", nullptr);
    return n0 ? std::atoi(n0) : 0;
}

static void notes_list_obj(const char* obj) {
    int n = notes_count(obj);
    bool any = false;
    char key[16];
    for (int i = 1; i <= n; ++i) {
        std::snprintf(key, sizeof key, "note%d", i);
        const char* t = charfind(obj, key, nullptr);
        if (!t) continue;
        c_outlev = 1;
        if (!any) {
            spoutf("\n%s:\n", obj);
            any = true;
        }
        spoutf("%5d.  ", i);
        spout21(t);
        spout21("\n");
    }
}

static std::string resolve_obj(const std::string& w, int* rc) {
    *rc = 0;
    if (w == "_dta") return w;
    int v = korvu_findvar(w.c_str(), 0, 0);
    if (v < 0) {
        *rc = -v;
        return "";
    }
    return varname(v);
}

int notescmd(int) {
    const char* p = skipwhite(wheretok());
    std::string line = p;
    settok(const_cast<char*>(""));
    size_t colon = line.find(':');
    std::string first;
    {
        size_t e = line.find_first_of(" :");
        first = line.substr(0, e);
    }
    // notes [name]: text
    if (colon != std::string::npos && line.substr(0, colon).find(' ') == std::string::npos) {
        std::string o = line.substr(0, colon);
        if (o.empty()) o = "_dta";
        int rc;
        std::string obj = resolve_obj(o, &rc);
        if (rc) return rc;
        std::string text = unquote(std::string(skipwhite(line.c_str() + colon + 1)));
        if (text.empty()) return 0;
        int n = notes_count(obj.c_str()) + 1;
        char key[16], num[16];
        std::snprintf(key, sizeof key, "note%d", n);
        std::snprintf(num, sizeof num, "%d", n);
        if (charsave(obj.c_str(), key, text.c_str()) || charsave(obj.c_str(), "note0", num))
            return error(950);
        updata = 1;
        return 0;
    }
    if (!first.empty() && cmdcmp(first.c_str(), "drop", 4)) {
        // notes drop name [in #[/#]]
        char o[64] = {}, in[8] = {};
        int a = 0, b = 0;
        int k = std::sscanf(line.c_str() + first.size(), " %63s %7s %d/%d", o, in, &a, &b);
        if (k < 1) return error(198);
        int rc;
        std::string obj = resolve_obj(o, &rc);
        if (rc) return rc;
        int n = notes_count(obj.c_str());
        if (k < 3) a = 1, b = n;
        if (k == 3) b = a;
        char key[16];
        int dropped = 0;
        for (int i = a; i <= b && i <= n; ++i) {
            std::snprintf(key, sizeof key, "note%d", i);
            if (charfind(obj.c_str(), key, nullptr)) ++dropped, charrm(obj.c_str(), key);
        }
        if (k < 3) charrm(obj.c_str(), "note0");
        c_outlev = 1;
        spoutf("  (%d note%s dropped)\n", dropped, dropped == 1 ? "" : "s");
        updata = 1;
        return 0;
    }
    std::string rest = line;
    if (!first.empty() && cmdcmp(first.c_str(), "list", 1)) rest = line.substr(first.size());
    std::vector<std::string> objs;
    {
        char w[64];
        const char* s = rest.c_str();
        int used;
        while (std::sscanf(s, " %63s%n", w, &used) == 1) {
            int rc;
            std::string obj = resolve_obj(w, &rc);
            if (rc) return rc;
            objs.push_back(obj);
            s += used;
        }
    }
    if (objs.empty()) {
        objs.push_back("_dta");
        for (int v = 1; v <= nvar; ++v) objs.push_back(varname(v));
    }
    for (auto& o : objs) notes_list_obj(o.c_str());
    return 0;
}

} // namespace korvu
