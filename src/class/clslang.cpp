// The class language at run time: dotted names, assignment, member calls,
// the built-in members and class macro expansion.
#include "class/clslang.h"

#include "class/clsscheme.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/missing.h"
#include "data/expr/expr.h"
#include "data/formats/formats.h"
#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/flow/dofile.h"
#include "kernel/flow/flow.h"
#include "kernel/loop/limits.h"
#include "kernel/loop/loop.h"
#include "kernel/macro/macro.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/program/program.h"
#include "output/spout.h"

namespace korvu {

clskey korvu_clsrtn = nullkey;
// Set when a call ran a member program: its value is for expansion only.
static bool ran_program = false;

void clsrtn_clear() {
    clskey k = korvu_clsrtn;
    korvu_clsrtn = nullkey;
    cls_unlink(k);
}

// --- names ---------------------------------------------------------------------

struct Comp {
    std::string name;
    std::string paren;     // Super(name)
    int index = 0;         // [i], from 1; 0 none
    std::vector<int> more; // [i][j]...: the indexes after the first
    clskey key = nullkey;
};

static bool namechar(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

// Splits ".a.b[2].c" into its components; 0 or 4029 / 4003.
static int splitname(const char* text, std::vector<Comp>& out) {
    size_t nc = 0;
    const char* p = text;
    while (*p == ' ') p++;
    if (*p == '.') p++;
    for (;;) {
        if (out.size() <= nc) out.emplace_back();
        Comp& c = out[nc];
        c.paren.clear();
        c.index = 0;
        c.more.clear();
        c.key = nullkey;
        if (nc == 0 && !strncmp(p, "__key(", 6)) {
            const char* e = nullptr;
            c.key = ref_to_key(p, &e);
            if (!e) return 4003;
            c.name = std::string(p, e);
            p = e;
        } else {
            const char* b = p;
            while (namechar(*p)) p++;
            if (p == b) return 4003;
            c.name.assign(b, p);
            if (*p == '(') {
                const char* e = strchr(p, ')');
                if (!e) return 4003;
                c.paren.assign(p + 1, e);
                p = e + 1;
            }
        }
        while (*p == '[') {
            char* e = nullptr;
            long v = strtol(p + 1, &e, 10);
            while (e && *e == ' ') e++;
            if (!e || *e != ']' || v < 1 || v > 100000000) return 4029;
            if (c.index)
                c.more.push_back(static_cast<int>(v));
            else
                c.index = static_cast<int>(v);
            p = e + 1;
        }
        nc++;
        if (!*p || *p == ' ') break;
        if (*p != '.') return 4003;
        p++;
    }
    out.resize(nc);
    return 0;
}

static const char* const member_words[] = {"new",        "copy",       "ref",
                                           "_clone",     "_clone1",    "objkey",
                                           "objtype",    "isa",        "isofclass",
                                           "classname",  "uname",      "ref_n",
                                           "arrnels",    "arrindexof", "Arrpush",
                                           "Arrpop",     "Arrdropel",  "Arrdropall",
                                           "Declare",    "_typecode",  "_set_to_active_context",
                                           "superclass", "instancemv", "classmv",
                                           "dynamicmv"};

static bool is_member_word(const std::string& w) {
    for (const char* m : member_words)
        if (w == m) return true;
    return false;
}

bool cls_chkreserved(const char* name) {
    static const char* const reserved[] = {
        "array",      "arrnels",   "arrindexof", "Arrdropall", "Arrdropel", "Arrpop",
        "Arrpush",    "Declare",   "Global",     "Local",      "Super",     "_cls",
        "classmv",    "classname", "copy",       "double",     "dynamicmv", "exit",
        "instancemv", "isofclass", "objkey",     "objtype",    "ref_n",     "string",
        "superclass", "uname",     "new",        "ref",        "_clone",    "_clone1",
        "isa",        "class",     "code",       "number",     "classwide", "instancespecific"};
    for (const char* r : reserved)
        if (!strcmp(name, r)) return false;
    return true;
}

bool cls_chkname(const char* name) {
    // a node keeps 32 bytes of name with its terminator
    size_t n = strlen(name);
    if (n == 0 || n > CLS_NAMELEN - 1) return false;
    if (!(isalpha(static_cast<unsigned char>(name[0])) || name[0] == '_')) return false;
    for (size_t i = 0; i < n; i++)
        if (!namechar(name[i])) return false;
    return cls_chkreserved(name);
}

// Objects of `.Local`: named per frame level, dropped when the frame ends.
struct LocalObj {
    int32_t level;
    std::string name;
};
static std::vector<LocalObj> locals;

static std::string localname(const std::string& name) {
    char buf[48];
    snprintf(buf, sizeof buf, "\x01%d\x01%s", korvu_level, name.c_str());
    return std::string(buf).substr(0, CLS_NAMELEN - 1);
}

int cls_frame_end() {
    int rc = 0;
    while (!locals.empty() && locals.back().level >= korvu_level) {
        std::string nm = locals.back().name;
        locals.pop_back();
        if (int r = cls_dynrem(cls_find_global(nm.c_str()))) rc = r;
    }
    return rc;
}

static int index_one(int index, bool create, clskey*& holder, clskey& cur) {
    clskey arr = holder ? cls_drill(*holder) : cur;
    if (!arr) {
        // a hole: an array is made there for an assignment, else nothing is
        if (!create || !holder) {
            holder = nullptr;
            cur = nullkey;
            return 0;
        }
        if (int rc = cls_newarray(&arr)) return rc;
        if (int rc = cls_hold_key(holder, arr)) return rc;
    }
    if (cls_ntype(cls_node(arr)) != CLS_ARRAY) return 4020;
    clskey* s = cls_array_slot(arr, index - 1, create);
    if (s && create && index - 1 > cls_arr_last(arr))
        reinterpret_cast<ClsArray*>(cls_ndata(cls_node(arr)))->last = index - 1;
    if (s && !create && index - 1 > cls_arr_last(arr)) s = nullptr;
    holder = s;
    cur = nullkey;
    reference_key = arr;
    reference_dex = index - 1;
    return 0;
}

static int apply_index(const Comp& c, bool create, clskey*& holder, clskey& cur) {
    if (!c.index) return 0;
    if (int rc = index_one(c.index, create, holder, cur)) return rc;
    for (int i : c.more) {
        if (!holder && !cur) return 0;
        if (int rc = index_one(i, create, holder, cur)) return rc;
    }
    return 0;
}

static clskey* meta_array(clskey v, const Comp& c) {
    int t = cls_ntype(cls_node(v));
    clskey arr = nullkey;
    if (t == CLS_CLASS) {
        ClsInstance* in = reinterpret_cast<ClsInstance*>(cls_ndata(cls_node(v)));
        if (c.name == "instancemv") arr = in->instancemv;
        if (c.name == "dynamicmv") arr = in->dynamicmv;
        if (c.name == "classmv")
            arr = reinterpret_cast<ClsType*>(cls_ndata(cls_node(in->classtype)))->classmv;
    } else if (t == CLS_CLASSTYPE && c.name == "classmv") {
        arr = reinterpret_cast<ClsType*>(cls_ndata(cls_node(v)))->classmv;
    }
    if (!arr) return nullptr;
    clskey* s = cls_array_slot(arr, c.index - 1, false);
    return s && *s ? s : nullptr;
}

// Set while an expression is evaluated: a name that is not there is not
// looked for as a class file (no command may run inside the evaluator).
static bool find_noload = false;

static int find_comps(const std::vector<Comp>& comps, size_t ncomp, bool create, ClsRef* out) {
    clskey* holder = nullptr;
    clskey* global_holder = nullptr; // the holder of a top-level name
    clskey cur = nullkey, owner = nullkey;
    size_t i = 0;
    const Comp& c0 = comps[0];
    if (c0.key) {
        if (!cls_valid_key(c0.key)) return 4010;
        cur = c0.key;
        i = 1;
        if (int rc = apply_index(c0, create, holder, cur)) return rc;
    } else {
        int scope = 0; // 0 the active object then the top, 1 the top, 2 locals
        if (c0.name == "Global") scope = 1, i = 1;
        if (c0.name == "Local") scope = 2, i = 1;
        if (c0.name == "Super") {
            if (!active_class_key) return 4022;
            cur = active_class_key;
            i = 1;
        }
        if (i >= ncomp && !cur) return 4003;
        if (!cur) {
            const Comp& c = comps[i];
            if (scope == 0 && active_class_key) {
                if (clskey* h = cls_find_name_in_class(c.name.c_str(), active_class_key)) {
                    holder = h;
                    owner = active_class_key;
                }
            }
            if (!holder) {
                std::string g = scope == 2 ? localname(c.name) : c.name;
                if (g.size() > CLS_NAMELEN - 1) return 4011;
                clskey n = cls_find_global(g.c_str());
                if (!n && create && i + 1 == ncomp) {
                    if (scope == 0 && active_class_key) return 4012;
                    if (!cls_chkname(c.name.c_str())) return 4003;
                    if (int rc = cls_make_global(g.c_str(), &n)) return rc;
                    if (c.index) {
                        // `.name[i] = ...` on a new name makes it an array
                        clskey arr;
                        if (int rc = cls_newarray(&arr)) return rc;
                        *reinterpret_cast<clskey*>(cls_ndata(cls_node(n))) = arr;
                    }
                    if (scope == 2) {
                        locals.push_back({korvu_level, g});
                        hastmp_class = 1;
                    }
                }
                if (n) {
                    holder = reinterpret_cast<clskey*>(cls_ndata(cls_node(n)));
                    global_holder = scope != 2 ? holder : nullptr;
                } else if (scope != 2) {
                    clskey ct = cls_findclasstype_loaded(c.name.c_str());
                    if (!ct && (find_noload || cls_findclasstype(c.name.c_str(), &ct))) return 4012;
                    cur = ct;
                } else {
                    return 4012;
                }
            }
            if (int rc = apply_index(c, create, holder, cur)) return rc;
            i++;
        }
    }
    for (; i < ncomp; i++) {
        const Comp& c = comps[i];
        clskey v = holder ? cls_drill(*holder) : cur;
        if (!v) return 4002;
        int t = cls_ntype(cls_node(v));
        if (t != CLS_CLASS && t != CLS_CLASSTYPE) return 4014;
        clskey* h = nullptr;
        if (c.name == "instancemv" || c.name == "classmv" || c.name == "dynamicmv") {
            if (!c.index) return 4029;
            h = meta_array(v, c);
            if (!h) return 4001;
            holder = h;
            cur = nullkey;
            owner = v;
            continue;
        }
        h = t == CLS_CLASS ? cls_find_name_in_class(c.name.c_str(), v)
                           : cls_find_name_in_classtype(c.name.c_str(), v);
        if (!h) return 4012;
        holder = h;
        cur = nullkey;
        owner = v;
        if (int rc = apply_index(c, create, holder, cur)) return rc;
    }
    const Comp& last = comps[ncomp - 1];
    out->arr = last.index && holder ? reference_key : nullkey;
    out->dex = last.index && holder ? reference_dex : -1;
    out->top = holder && holder == global_holder;
    out->holder = holder;
    out->value = holder ? cls_drill(*holder) : cur;
    out->owner = owner;
    return 0;
}

// Look-ups nest (a class file read on first use makes look-ups of its own),
// so each depth keeps its own list of components, reused from line to line.
static std::vector<Comp> comp_pool[8];
static int comp_depth = 0;

int cls_find(const char* name, bool create, ClsRef* out) {
    std::vector<Comp> local;
    std::vector<Comp>& comps = comp_depth < 8 ? comp_pool[comp_depth] : local;
    comp_depth++;
    int rc = splitname(name, comps);
    if (!rc) rc = find_comps(comps, comps.size(), create, out);
    comp_depth--;
    return rc;
}

static int report(const std::string& name, int rc) {
    if (rc < 4000 || rc > 4399) return rc;
    std::string prefix = name + " ";
    cls_rc = rc;
    return error2part(prefix.c_str(), rc, 0);
}

int cls_find_report(const char* name, bool create, ClsRef* out) {
    int rc = cls_find(name, create, out);
    return rc ? report(name, rc) : 0;
}

// --- member programs -------------------------------------------------------------

static void* class_pgm(const char* cname, const char* pgm) {
    for (void* v = dmfind0(pgm, DM_PROGRAM); v; v = dmnamenext(v, DM_PROGRAM)) {
        const PgmRec* p = static_cast<const PgmRec*>(v);
        if (p->clsprog && !strcmp(p->owner, cname)) return v;
    }
    return nullptr;
}

// The class (ct or a superclass, in order) that has member program pgm.
static clskey cls_searchpgm(clskey ct, const char* pgm) {
    if (!ct) return nullkey;
    if (class_pgm(cls_nname(cls_node(ct)), pgm)) return ct;
    ClsType* t = reinterpret_cast<ClsType*>(cls_ndata(cls_node(ct)));
    for (int32_t i = 0; i <= cls_arr_last(t->superclass); i++)
        if (clskey f = cls_searchpgm(cls_array_valuekey(t->superclass, i), pgm)) return f;
    return nullkey;
}

static clskey classtype_of(clskey v) {
    v = cls_drill(v);
    if (!v) return nullkey;
    int t = cls_ntype(cls_node(v));
    if (t == CLS_CLASSTYPE) return v;
    if (t == CLS_CLASS) return reinterpret_cast<ClsInstance*>(cls_ndata(cls_node(v)))->classtype;
    return nullkey;
}

static int run_member_at(clskey inst, clskey ct, const char* pgm, const char* args) {
    // everything the program's lines disturb
    std::string saved_console = console;
    TokState tok;
    borrow_gettok(&tok);
    long offset = tok.pos ? tok.pos - console : -1;
    long loffset = tok.last ? tok.last - console : -1;
    char saved_cmd[34], saved_pgmclass[33];
    memcpy(saved_cmd, cmd, sizeof saved_cmd);
    memcpy(saved_pgmclass, sys_pgmclass, sizeof saved_pgmclass);
    clskey saved_active = active_class_key, saved_ct = active_clstype_key;
    int32_t saved_loc = cls_loc;
    int32_t generation = cls_discards;

    active_class_key = inst;
    active_clstype_key = ct;
    cls_loc = 1;
    cls_incref(inst);
    std::string argbuf = args ? args : "";
    snprintf(cmd, sizeof cmd, "%s", pgm);
    snprintf(sys_pgmclass, sizeof sys_pgmclass, "%s", cls_nname(cls_node(ct)));
    settok(argbuf.data());
    int rc = godo(DO_PROGRAM, 1);

    // a `discard` inside the program took every object with it
    bool gone = generation != cls_discards;
    active_class_key = gone ? nullkey : saved_active;
    active_clstype_key = gone ? nullkey : saved_ct;
    cls_loc = saved_loc;
    memcpy(cmd, saved_cmd, sizeof saved_cmd);
    memcpy(sys_pgmclass, saved_pgmclass, sizeof saved_pgmclass);
    snprintf(console, conslen, "%s", saved_console.c_str());
    if (offset >= 0) tok.pos = console + offset;
    if (loffset >= 0) tok.last = console + loffset;
    return_gettok(&tok);
    if (!gone) cls_unlink(inst);
    return rc;
}

int cls_run_member(clskey inst, const char* pgm, const char* args, int* found) {
    clskey ct = classtype_of(inst);
    clskey where = cls_searchpgm(ct, pgm);
    *found = where != nullkey;
    if (!where) return 0;
    return run_member_at(cls_drill(inst), where, pgm, args);
}

static int member_hook(clskey inst, const char* pgm, const char* args, int* found) {
    return cls_run_member(inst, pgm, args, found);
}

// --- values as text ---------------------------------------------------------------

std::string cls_numtext(double x, bool exact) {
    char buf[64];
    if (ismissing(x)) {
        int l = missing_letter(x);
        if (l) {
            snprintf(buf, sizeof buf, ".%c", 'a' + l - 1);
            return buf;
        }
        return ".";
    }
    if (exact && x == std::trunc(x) && std::fabs(x) < 1e15) {
        // whole numbers, the usual counters, without the general conversion
        char* e = buf + sizeof buf;
        *--e = 0;
        uint64_t u = static_cast<uint64_t>(std::fabs(x));
        do *--e = static_cast<char>('0' + u % 10);
        while (u /= 10);
        if (x < 0) *--e = '-';
        return e;
    }
    if (exact) {
        // the shortest text that reads back as the same double
        auto r = std::to_chars(buf, buf + sizeof buf - 1, x);
        *r.ptr = 0;
    } else {
        fmtnum(buf, "%18.0g", x);
    }
    const char* p = buf;
    while (*p == ' ') p++;
    return p;
}

static std::string valuetext(clskey v) {
    v = cls_drill(v);
    if (!v) return "";
    switch (cls_ntype(cls_node(v))) {
    case CLS_DOUBLE: return cls_numtext(cls_get_num(v), false);
    case CLS_STRING:
    case CLS_TMPSTRING: return cls_ndata(cls_node(v));
    default: {
        char buf[48];
        return key_to_ref(v, buf, sizeof buf);
    }
    }
}

// Class references inside an expression become their values.
static std::string expand_refs(const std::string& s, const std::string* known, clskey knownval) {
    std::string out;
    out.reserve(s.size() + 16);
    size_t i = 0, n = s.size();
    while (i < n) {
        char c = s[i];
        if (c == '"') {
            size_t e = s.find('"', i + 1);
            if (e == std::string::npos) e = n - 1;
            out.append(s, i, e - i + 1);
            i = e + 1;
            continue;
        }
        bool start = c == '.' && i + 1 < n &&
                     (isalpha(static_cast<unsigned char>(s[i + 1])) || s[i + 1] == '_');
        if (start && i > 0) {
            char p = s[i - 1];
            if (namechar(p) || p == ')' || p == ']') start = false;
        }
        if (!start) {
            out += c;
            i++;
            continue;
        }
        size_t e = i + 1;
        while (e < n && (namechar(s[e]) || s[e] == '.' || s[e] == '[' || s[e] == ']')) e++;
        std::string ref = s.substr(i, e - i);
        ClsRef r{};
        int frc = 0;
        if (known && ref == *known)
            r.value = knownval;
        else
            frc = cls_find(ref.c_str(), false, &r);
        if (!frc) {
            int t = r.value ? cls_ntype(cls_node(r.value)) : 0;
            if (t == CLS_DOUBLE) {
                out += cls_numtext(cls_get_num(r.value), true);
            } else if (t == CLS_STRING) {
                const char* sv = cls_get_str(r.value);
                if (strchr(sv, '"')) {
                    out += "`\"";
                    out += sv;
                    out += "\"'";
                } else {
                    out += '"';
                    out += sv;
                    out += '"';
                }
            } else if (!r.value) {
                out += ".";
            } else {
                out += ref;
            }
        } else {
            out += ref;
        }
        i = e;
    }
    return out;
}

// known: a reference already resolved to knownval by the caller.
static int eval_expression(const std::string& text, clskey* out, const std::string* known = nullptr,
                           clskey knownval = nullkey) {
    static ExpObj obj; // a compiled object is large: not on the stack
    std::string e = expand_refs(text, known, knownval);
    if (int rc = compexp_text(&obj, e.data(), e.data() + e.size(), 3, 0)) return rc;
    int32_t s1 = nobs1, s2 = nobs2, ss1 = nobss1, ss2 = nobss2;
    nobs1 = nobss1 = 1;
    nobs2 = nobss2 = nobs;
    int rc;
    if (obj.result_kind == 1) {
        std::vector<char> buf(static_cast<size_t>(macrolen) + 1);
        const char* s = sxeq(&obj, 1, buf.data());
        rc = cls_newstring(s, out);
    } else {
        rc = cls_newnumber(xeq(&obj, 1), out);
    }
    nobs1 = s1, nobs2 = s2, nobss1 = ss1, nobss2 = ss2;
    return rc;
}

static std::string trim(const std::string& s) {
    size_t b = s.find_first_not_of(' '), e = s.find_last_not_of(' ');
    return b == std::string::npos ? "" : s.substr(b, e - b + 1);
}

// The elements of "{a, b, c}" at the top level.
static int array_initializer(const std::string& t, clskey* out) {
    if (t.size() < 2 || t.back() != '}') return error(4030);
    std::string body = t.substr(1, t.size() - 2);
    std::vector<std::string> parts;
    int depthb = 0;
    bool q = false;
    std::string cur;
    for (char c : body) {
        if (c == '"') q = !q;
        if (!q && c == '{') depthb++;
        if (!q && c == '}') depthb--;
        if (!q && depthb == 0 && c == ',') {
            parts.push_back(cur);
            cur.clear();
            continue;
        }
        cur += c;
    }
    if (q || depthb) return error(4030);
    if (!trim(cur).empty() || !parts.empty()) parts.push_back(cur);
    if (int rc = cls_newarray(out)) return rc;
    for (size_t i = 0; i < parts.size(); i++) {
        std::string p = trim(parts[i]);
        if (p.empty()) continue; // a hole
        clskey v;
        if (int rc = cls_rvalue(p, &v)) {
            cls_unlink(*out);
            *out = nullkey;
            return rc;
        }
        if (int rc = cls_add_to_array(*out, static_cast<int32_t>(i), v)) return rc;
    }
    return 0;
}

// A whole quoted string: "..." or `"..."'.
static bool quoted_literal(const std::string& t, std::string* s) {
    if (t.size() >= 2 && t[0] == '"' && t.back() == '"' && t.find('"', 1) == t.size() - 1) {
        *s = t.substr(1, t.size() - 2);
        return true;
    }
    if (t.size() >= 4 && t[0] == '`' && t[1] == '"' && t.compare(t.size() - 2, 2, "\"'") == 0) {
        *s = t.substr(2, t.size() - 4);
        return true;
    }
    return false;
}

static void split_first(const std::string& t, std::string* tok, std::string* rest) {
    size_t e = t.find(' ');
    *tok = t.substr(0, e);
    *rest = e == std::string::npos ? "" : trim(t.substr(e));
}

// The creator or member program `word` applied to the value `base`.
static int creator(const std::string& full, clskey base, const std::string& word,
                   const std::string& args, clskey* out) {
    *out = nullkey;
    base = cls_drill(base);
    if (!base) return report(full, 4002);
    int t = cls_ntype(cls_node(base));
    if (word == "new") {
        clskey ct = classtype_of(base);
        if (!ct) return report(full, 4013);
        if (int rc = cls_newinstance(ct, out)) return rc;
        int found = 0;
        if (int rc = cls_run_member(*out, "new", args.c_str(), &found)) {
            cls_unlink(*out);
            *out = nullkey;
            return rc;
        }
        return 0;
    }
    if (word == "copy") return cls_newvalue(out, base, 0);
    if (word == "_clone") return cls_clonevalueref(out, base);
    if (word == "_clone1") {
        if (t != CLS_CLASS) return report(full, 4025);
        return cls_clone1_instance(out, base);
    }
    if (word == "ref") {
        return errtext(4009, "= assigment of a reference is not allowed\n");
    }
    // a member program, whose `class exit` value is the result
    clsrtn_clear();
    ran_program = true;
    int found = 0;
    int rc = cls_run_member(base, word.c_str(), args.c_str(), &found);
    if (!found) return report(full, 4023);
    if (rc) return rc;
    *out = korvu_clsrtn;
    korvu_clsrtn = nullkey;
    if (!*out) return cls_newstring("", out);
    return 0;
}

// Splits "base.word" when word is a creator or a member program of base.
static bool split_call(const std::string& tok, std::string* base, std::string* word) {
    size_t dot = tok.rfind('.');
    if (dot == std::string::npos || dot == 0) return false;
    *base = tok.substr(0, dot);
    *word = tok.substr(dot + 1);
    if (word->empty() || word->find('[') != std::string::npos) return false;
    return true;
}

int cls_rvalue(const std::string& text, clskey* out) {
    *out = nullkey;
    std::string t = trim(text);
    if (t.empty()) return error(4026);
    if (t[0] == '{') return array_initializer(t, out);
    std::string lit;
    if (quoted_literal(t, &lit)) return cls_newstring(lit.c_str(), out);
    if (t[0] == '.' || !strncmp(t.c_str(), "__key(", 6)) {
        std::string tok, rest;
        split_first(t, &tok, &rest);
        std::string base, word;
        bool split = split_call(tok, &base, &word);
        if (split && (word == "new" || word == "copy" || word == "_clone" || word == "_clone1" ||
                      word == "ref")) {
            ClsRef b{};
            if (!cls_find(base.c_str(), false, &b) && b.value)
                return creator(tok, b.value, word, rest, out);
        }
        ClsRef r{};
        int rc = cls_find(tok.c_str(), false, &r);
        if (!rc) {
            // a member program of the owner comes before a member of that name
            if (split && r.owner && cls_searchpgm(classtype_of(r.owner), word.c_str()))
                return creator(tok, r.owner, word, rest, out);
            if (rest.empty()) {
                if (!r.value) return report(tok, 4002);
                return cls_newvalue(out, r.value, 0);
            }
            return eval_expression(t, out, &tok, r.value);
        }
        if (split) {
            ClsRef b{};
            if (!cls_find(base.c_str(), false, &b) && b.value) {
                int bt = cls_ntype(cls_node(b.value));
                if ((bt == CLS_CLASS || bt == CLS_CLASSTYPE) &&
                    cls_searchpgm(classtype_of(b.value), word.c_str()))
                    return creator(tok, b.value, word, rest, out);
            }
        }
        if (rest.empty()) {
            // `.a` to `.z` alone are missing values
            bool misscode = tok.size() == 2 && tok[1] >= 'a' && tok[1] <= 'z';
            if (!misscode) return report(tok, rc);
        }
    }
    return eval_expression(t, out);
}

// --- assignment ----------------------------------------------------------------------

static bool ends_with(const std::string& s, const char* tail) {
    size_t n = strlen(tail);
    return s.size() >= n && s.compare(s.size() - n, n, tail) == 0;
}

static int assign_ref(const std::string& lhs, const std::string& rhs) {
    std::string r = trim(rhs);
    if (!ends_with(r, ".ref") || r.find(' ') != std::string::npos) {
        return errtext(4009, "= assigment of a reference is not allowed\n");
    }
    std::string rbase = r.substr(0, r.size() - 4);
    ClsRef src{};
    if (int rc = cls_find_report(rbase.c_str(), false, &src)) return rc;
    if (!src.holder || !*src.holder) return report(rbase, 4002);
    clskey ownerref;
    clskey* hf = cls_holder_drill(src.holder, &ownerref);
    clskey cell;
    if (ownerref && !(cls_node(ownerref)->flags & CLSF_NAMED)) {
        cell = ownerref; // already an alias: share its cell
    } else {
        if (int rc = cls_newref(*hf, nullptr, &cell)) return rc;
        *hf = cell;
    }
    ClsRef dst{};
    if (int rc = cls_find_report(lhs.c_str(), true, &dst)) return rc;
    if (!dst.holder) return report(lhs, 4009);
    cls_incref(cell);
    clskey old = *dst.holder;
    *dst.holder = cell;
    return cls_unlink(old);
}

int cls_assign(const std::string& lhs, const std::string& rhs) {
    if (ends_with(lhs, ".ref")) return assign_ref(lhs.substr(0, lhs.size() - 4), rhs);
    clskey v;
    if (int rc = cls_rvalue(rhs, &v)) return rc;
    ClsRef dst{};
    if (int rc = cls_find_report(lhs.c_str(), true, &dst)) {
        cls_unlink(v);
        return rc;
    }
    if (!dst.holder) {
        cls_unlink(v);
        return report(lhs, 4009);
    }
    clskey old = dst.value;
    if (old && v && cls_ntype(cls_node(old)) == CLS_CLASS && cls_ntype(cls_node(v)) == CLS_CLASS) {
        clskey oct = classtype_of(old), nct = classtype_of(v);
        if (oct != nct && !cls_type_is_of_type(nct, cls_nname(cls_node(oct)))) {
            cls_unlink(v);
            return errtext(4019, "     may not assign instances of incompatible classes\n");
        }
    }
    if (stlog_level)
        if (int rc = cls_log_change(lhs, dst)) {
            cls_unlink(v);
            return rc;
        }
    // a number into an unshared number stays in place
    if (v && cls_ntype(cls_node(v)) == CLS_DOUBLE && cls_node(v)->refct == 1) {
        double x = cls_get_num(v);
        cls_unlink(v);
        return cls_hold_num(dst.holder, x);
    }
    return cls_hold_key(dst.holder, v);
}

// --- built-in members ----------------------------------------------------------------

static int declare(clskey inst, const std::string& text);

// Runs word on the value at `base`; text results go to out.
static int builtin_member(const std::string& full, const ClsRef& b, const std::string& word,
                          const std::string& args, std::string* out) {
    clskey v = b.value;
    int t = v ? cls_ntype(cls_node(v)) : 0;
    char buf[64];
    auto need_array = [&]() { return t == CLS_ARRAY ? 0 : report(full, 4020); };
    if (word == "objkey") return *out = key_to_ref(v, buf, sizeof buf), 0;
    if (word == "uname") {
        snprintf(buf, sizeof buf, "K%lx", static_cast<unsigned long>(v));
        return *out = buf, 0;
    }
    if (word == "isa") return *out = cls_map9_type(t), 0;
    if (word == "_typecode") return *out = std::to_string(t), 0;
    if (word == "objtype") {
        const char* cn = cls_classnm(v);
        return *out = cn ? cn : cls_map9_type(t), 0;
    }
    if (word == "classname") {
        const char* cn = cls_classnm(v);
        if (!cn) return report(full, 4014);
        return *out = cn, 0;
    }
    if (word == "isofclass") {
        std::string nm = trim(args);
        clskey ct = classtype_of(v);
        bool yes = ct && cls_type_is_of_type(ct, nm.c_str());
        out->clear();
        out->push_back(yes ? '1' : '0');
        return 0;
    }
    if (word == "ref_n") {
        std::string a = trim(args);
        clskey target = b.holder && *b.holder ? *b.holder : v;
        if (!a.empty()) {
            if (a[0] == '+')
                cls_node(target)->refct += atoi(a.c_str() + 1);
            else if (a[0] == '-')
                cls_node(target)->refct -= atoi(a.c_str() + 1);
            else
                cls_setref(target, atoi(a.c_str()));
        }
        return *out = std::to_string(cls_refct(target)), 0;
    }
    if (word == "superclass" || word == "instancemv" || word == "classmv" || word == "dynamicmv") {
        clskey ct = classtype_of(v);
        if (!ct) return report(full, 4014);
        ClsType* ctp = reinterpret_cast<ClsType*>(cls_ndata(cls_node(ct)));
        clskey arr;
        if (word == "superclass")
            arr = ctp->superclass;
        else if (word == "classmv")
            arr = ctp->classmv;
        else if (word == "instancemv")
            arr = reinterpret_cast<ClsInstance*>(cls_ndata(cls_node(ctp->prototype)))->instancemv;
        else
            arr = t == CLS_CLASS ? reinterpret_cast<ClsInstance*>(cls_ndata(cls_node(v)))->dynamicmv
                                 : nullkey;
        std::string s;
        for (int32_t i = 0; i <= cls_arr_last(arr); i++) {
            clskey e = cls_array_valuekey(arr, i);
            if (!e) continue;
            if (!s.empty()) s += ' ';
            s += cls_nname(cls_node(e));
        }
        return *out = s, 0;
    }
    if (word == "arrnels") {
        if (int rc = need_array()) return rc;
        return *out = std::to_string(cls_arr_last(v) + 1), 0;
    }
    if (word == "arrindexof") {
        if (int rc = need_array()) return rc;
        std::string a = trim(args), lit;
        if (quoted_literal(a, &lit)) a = lit;
        return *out = std::to_string(cls_find_str_in_array(v, a.c_str()) + 1), 0;
    }
    if (word == "Arrpush") {
        if (int rc = need_array()) return rc;
        clskey nv;
        if (int rc = cls_rvalue(args, &nv)) return rc;
        return cls_array_push(v, nv);
    }
    if (word == "Arrpop") {
        if (int rc = need_array()) return rc;
        return cls_array_pop(v);
    }
    if (word == "Arrdropel") {
        if (int rc = need_array()) return rc;
        int i = atoi(trim(args).c_str());
        if (i < 1) return report(full, 4001);
        return cls_array_delete_el(v, i - 1);
    }
    if (word == "Arrdropall") {
        if (int rc = need_array()) return rc;
        return cls_array_clear(v);
    }
    if (word == "Declare") {
        if (t != CLS_CLASS) return report(full, 4014);
        return declare(v, args);
    }
    if (word == "_set_to_active_context") {
        if (t != CLS_CLASS) return report(full, 4014);
        active_class_key = v;
        active_clstype_key = classtype_of(v);
        return 0;
    }
    clskey nv;
    if (int rc = creator(full, v, word, args, &nv)) return rc;
    *out = valuetext(nv);
    cls_unlink(nv);
    return 0;
}

bool cls_has_member_call(clskey value, const char* word) {
    value = cls_drill(value);
    if (!value) return false;
    if (is_member_word(word)) return true;
    int t = cls_ntype(cls_node(value));
    if (t != CLS_CLASS && t != CLS_CLASSTYPE) return false;
    if (cls_searchpgm(classtype_of(value), word)) return true;
    return cls_builtin_has(classtype_of(value), word);
}

// A call line or form: name, then its arguments. out gets the text result.
static int runcmd(const std::string& tok, const std::string& args, std::string* out, bool* hasout) {
    *hasout = false;
    std::string base, word;
    bool split = split_call(tok, &base, &word);
    // `.method args` inside a member program: the active object's own
    if (!split && active_class_key && tok.size() > 1 && tok.find('.', 1) == std::string::npos &&
        tok.find('[') == std::string::npos) {
        std::string w = tok.substr(1);
        if (is_member_word(w) || cls_searchpgm(active_clstype_key, w.c_str())) {
            ClsRef b{nullptr, active_class_key, nullkey};
            *hasout = true;
            return builtin_member(tok, b, w, args, out);
        }
    }
    ClsRef b{};
    if (split) {
        std::vector<Comp> comps;
        if (!splitname(base.c_str(), comps) && !comps.empty()) {
            // .Super.method: the superclasses of the running method's class
            if (comps.size() == 1 && comps[0].name == "Super") {
                if (!active_class_key) return report(tok, 4022);
                ClsType* t = reinterpret_cast<ClsType*>(cls_ndata(cls_node(active_clstype_key)));
                for (int32_t i = 0; i <= cls_arr_last(t->superclass); i++) {
                    clskey s = cls_array_valuekey(t->superclass, i);
                    if (!comps[0].paren.empty() && comps[0].paren != cls_nname(cls_node(s)))
                        continue;
                    clskey where = cls_searchpgm(s, word.c_str());
                    if (!where) continue;
                    clsrtn_clear();
                    ran_program = true;
                    int rc = run_member_at(active_class_key, where, word.c_str(), args.c_str());
                    *hasout = true;
                    *out = valuetext(korvu_clsrtn);
                    return rc;
                }
                if (word == "new" || word == "oncopy" || word == "destructor") return 0;
                return report(tok, 4023);
            }
        }
        if (word == "ref_n" || word == "objkey" || is_member_word(word)) {
            if (int rc = cls_find_report(base.c_str(), false, &b)) return rc;
            *hasout = true;
            return builtin_member(tok, b, word, args, out);
        }
        int rc = cls_find(base.c_str(), false, &b);
        if (!rc && b.value) {
            int bt = cls_ntype(cls_node(b.value));
            if ((bt == CLS_CLASS || bt == CLS_CLASSTYPE)) {
                int found = 0;
                char got[512];
                got[0] = 0;
                int brc = cls_builtin_member(b.value, word.c_str(), args.c_str(), got, sizeof got,
                                             &found);
                if (found) {
                    *hasout = got[0] != 0;
                    *out = got;
                    return brc;
                }
                if (cls_searchpgm(classtype_of(b.value), word.c_str())) {
                    *hasout = true;
                    return builtin_member(tok, b, word, args, out);
                }
            }
        }
    }
    // a plain reference: its value
    ClsRef r{};
    if (int rc = cls_find(tok.c_str(), false, &r)) {
        if (rc == 4012 && split) {
            ClsRef bb{};
            if (!cls_find(base.c_str(), false, &bb) && bb.value &&
                (cls_ntype(cls_node(bb.value)) == CLS_CLASS ||
                 cls_ntype(cls_node(bb.value)) == CLS_CLASSTYPE))
                return report(tok, 4023);
        }
        return report(tok, rc);
    }
    if (!args.empty()) return report(tok, 4023);
    *hasout = true;
    *out = valuetext(r.value);
    return 0;
}

int cls_clscmd() {
    const char* start = lwheretok();
    if (!start) return 0;
    while (*start == ' ') start++;
    std::string line = start;
    // the name runs to a blank, a quote or one of : ; , = { }
    size_t e = line.find_first_of(" \"'`:;,={}");
    std::string name = line.substr(0, e);
    std::string rest = e == std::string::npos ? "" : line.substr(e);
    std::string after = trim(rest);
    cls_log_newline();
    if (!after.empty() && after[0] == '=' && (after.size() < 2 || after[1] != '=')) {
        return cls_assign(name, after.substr(1));
    }
    std::string out;
    bool hasout = false;
    ran_program = false;
    int rc = runcmd(name, after, &out, &hasout);
    clsrtn_clear();
    if (!rc && hasout && !ran_program && !out.empty()) {
        uint8_t old = c_outlev;
        c_outlev = 1;
        spout21(out.c_str());
        newline();
        c_outlev = old;
    }
    return rc;
}

int cls_xpand(const char* text, char* dst, size_t n) {
    if (n) dst[0] = 0;
    std::string t = trim(text);
    std::string tok, rest;
    split_first(t, &tok, &rest);
    std::string out;
    bool hasout = false;
    uint8_t saved = s_outlev;
    int rc = runcmd(tok, rest, &out, &hasout);
    s_outlev = saved;
    clsrtn_clear();
    if (rc) return rc;
    snprintf(dst, n, "%s", out.c_str());
    return 0;
}

// --- declarations ----------------------------------------------------------------------

int cls_parse_decl(const std::string& text, Decl* d) {
    std::string t = trim(text);
    size_t eq = std::string::npos;
    bool q = false;
    for (size_t i = 0; i < t.size(); i++) {
        if (t[i] == '"') q = !q;
        if (!q && t[i] == '=') {
            eq = i;
            break;
        }
    }
    std::string head = trim(t.substr(0, eq));
    if (eq != std::string::npos) {
        d->value = trim(t.substr(eq + 1));
        d->hasvalue = true;
    }
    std::vector<std::string> w;
    for (size_t i = 0; i < head.size();) {
        size_t j = head.find(' ', i);
        if (j == std::string::npos) j = head.size();
        if (j > i) w.push_back(head.substr(i, j - i));
        i = j + 1;
    }
    if (w.empty() || (w.size() == 1 && cls_parsetype(w[0].c_str(), 0))) {
        return errtext(198, "attribute declaration requires a name\n");
    }
    if (w.size() == 1) {
        d->name = w[0];
    } else if (w.size() == 2) {
        int ty = cls_parsetype(w[0].c_str(), 0);
        if (ty) {
            d->type = ty;
        } else {
            d->type = CLS_CLASS;
            d->clsname = w[0];
        }
        d->name = w[1];
    } else if (w.size() == 3 && w[0] == "class") {
        d->type = CLS_CLASS;
        d->clsname = w[1];
        d->name = w[2];
    } else {
        return error(198);
    }
    if (!cls_chkname(d->name.c_str())) {
        return errorf(198, "%s invalid name\n", d->name.c_str());
    }
    return 0;
}

int cls_decl_value(const Decl& d, clskey* out) {
    *out = nullkey;
    if (d.hasvalue) {
        if (d.type == CLS_STRING) {
            std::string lit;
            if (quoted_literal(d.value, &lit)) return cls_newstring(lit.c_str(), out);
            if (d.value[0] != '.' && d.value.find('"') == std::string::npos)
                return cls_newstring(d.value.c_str(), out);
        }
        if (int rc = cls_rvalue(d.value, out)) return rc;
        int t = cls_ntype(cls_node(*out));
        bool ok = !d.type || d.type == CLS_CODE || d.type == t ||
                  (d.type == CLS_STRING && t == CLS_TMPSTRING);
        if (ok && d.type == CLS_CLASS) {
            clskey ct = classtype_of(*out);
            ok = ct && cls_type_is_of_type(ct, d.clsname.c_str());
        }
        if (!ok) {
            cls_unlink(*out);
            *out = nullkey;
            return error(4005);
        }
        return 0;
    }
    switch (d.type) {
    case CLS_STRING:
    case CLS_CODE: return cls_newstring("", out);
    case CLS_ARRAY: return cls_newarray(out);
    case CLS_CLASS: {
        clskey ct;
        if (int rc = cls_findclasstype(d.clsname.c_str(), &ct)) {
            return report(d.clsname, rc);
        }
        if (int rc = cls_newinstance(ct, out)) return rc;
        int found = 0;
        if (int rc = cls_run_member(*out, "new", "", &found)) {
            cls_unlink(*out);
            *out = nullkey;
            return rc;
        }
        return 0;
    }
    default: return cls_newnumber(misval, out);
    }
}

static int declare(clskey inst, const std::string& text) {
    Decl d;
    if (int rc = cls_parse_decl(text, &d)) return rc;
    clskey v;
    if (int rc = cls_decl_value(d, &v)) return rc;
    if (int rc = cls_add_dynamic_attrib(inst, v, d.name.c_str())) return report(d.name, rc);
    return 0;
}

// --- link ----------------------------------------------------------------------------

// cls() and scls() of expressions: the value of a name, without a class
// file read and without a message; missing or empty when there is none.
static clskey exp_lookup(const char* name) {
    char buf[EXP_STRMAX + 2];
    snprintf(buf, sizeof buf, "%s%s", name[0] == '.' ? "" : ".", name);
    ClsRef r{};
    find_noload = true;
    int rc = cls_find(buf, false, &r);
    find_noload = false;
    return rc ? nullkey : r.value;
}

static double exp_clsnum(const char* name) {
    clskey v = exp_lookup(name);
    return v && cls_ntype(cls_node(v)) == CLS_DOUBLE ? cls_get_num(v) : misval;
}

static void exp_clsstr(const char* name, char* out) {
    std::string t = valuetext(exp_lookup(name));
    snprintf(out, EXP_STRMAX + 1, "%s", t.c_str());
}

static int clsvalue_hook(const char* ref, char* dst, size_t n) {
    return cls_xpand(ref, dst, n);
}

int cls_discard_all() {
    // the objects a running member program works on stay until it ends
    if (cls_loc) return 0;
    clsrtn_clear();
    locals.clear();
    cls_log_forget();
    cls_scheme_forget();
    cls_discard();
    return cls_make_builtin_classes();
}

void link_class() {
    cls_init();
    cls_member_hook = member_hook;
    mac_hooks.clsvalue = clsvalue_hook;
    exphooks.clsnum = exp_clsnum;
    exphooks.clsstr = exp_clsstr;
    frame_hooks.rmtmpclass = cls_frame_end;
    frame_hooks.cls_clear_return = clsrtn_clear;
}

} // namespace korvu
