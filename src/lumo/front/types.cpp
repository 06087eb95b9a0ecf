// The type table, the symbol table, structure definitions and the names of
// the built-in functions as the compiler sees them.
#include <cstring>

#include "lumo/front/cc.h"

namespace korvu {

std::vector<MStructDef> m_structs;

static const char* const elname[] = {"transmorphic", "real",    "string", "complex",
                                     "numeric",      "pointer", "struct"};
static const char* const orgname[] = {"matrix",    "scalar",    "vector",
                                      "rowvector", "colvector", "void"};

static int newtype(int el, int org, int ref, int ptr, int sname) {
    MWork* w = m_work;
    if (w->ntyp >= MTYP_MAX) cc_fail("no room to add more types\n");
    MType& t = w->typ[w->ntyp];
    t.el = static_cast<int8_t>(el);
    t.org = static_cast<int8_t>(org);
    t.ref = static_cast<int8_t>(ref);
    t.ptr = ptr;
    t.sname = sname;
    return w->ntyp++;
}

int mtyp_add(int el, int org, int ref) {
    MWork* w = m_work;
    if (el != ET_POINTER)
        for (int i = 0; i < w->ntyp; i++) {
            const MType& t = w->typ[i];
            if (t.el == el && t.org == org && t.ref == ref && t.sname < 0) return i;
        }
    // a pointer is always a new entry, to a transmorphic matrix
    int target = el == ET_POINTER ? mtyp_add(ET_TM, OT_MATRIX, 0) : -1;
    return newtype(el, org, ref, target, -1);
}

int mtyp_add_ptr(int target, int org, int ref) {
    return newtype(ET_POINTER, org, ref, target, -1);
}

int mtyp_addstruct(const char* sname, int org, int ref) {
    MWork* w = m_work;
    for (int i = 0; i < w->ntyp; i++) {
        const MType& t = w->typ[i];
        if (t.el == ET_STRUCT && t.org == org && t.ref == ref && t.sname >= 0 &&
            !strcmp(w->snames + t.sname, sname))
            return i;
    }
    const int len = static_cast<int>(strlen(sname)) + 1;
    if (w->nsnames + len > MSNAMES) cc_fail("no room to record more structure names\n");
    memcpy(w->snames + w->nsnames, sname, len);
    const int at = w->nsnames;
    w->nsnames += len;
    return newtype(ET_STRUCT, org, ref, -1, at);
}

int mtyp_dup(int t) {
    const MType c = m_work->typ[t];
    return newtype(c.el, c.org, c.ref, c.ptr, c.sname);
}

int mtyp_refcn(int t) {
    const MType c = m_work->typ[t];
    if (c.ref) return t;
    if (c.el == ET_POINTER) return newtype(c.el, c.org, 1, c.ptr, -1);
    if (c.el == ET_STRUCT) return mtyp_addstruct(m_work->snames + c.sname, c.org, 1);
    return mtyp_add(c.el, c.org, 1);
}

const char* mtyp_sname(int t) {
    const MType& c = m_work->typ[t];
    return c.sname >= 0 ? m_work->snames + c.sname : "";
}

int mtyp_isequal(int a, int b, int strict) {
    const MType& x = m_work->typ[a];
    const MType& y = m_work->typ[b];
    if (x.el != y.el) return 0;
    if (strict && (x.org != y.org || x.ref != y.ref)) return 0;
    if (x.el == ET_POINTER) return mtyp_isequal(x.ptr, y.ptr, strict);
    if (x.el == ET_STRUCT) return !strcmp(mtyp_sname(a), mtyp_sname(b));
    return 1;
}

std::string mtyp_text(int t) {
    const MType& c = m_work->typ[t];
    std::string s;
    if (c.el == ET_POINTER) {
        s = "pointer(" + mtyp_text(c.ptr) + ") ";
    } else if (c.el == ET_STRUCT) {
        s = std::string("struct ") + mtyp_sname(t) + " ";
    } else {
        s = std::string(elname[c.el]) + " ";
    }
    return s + orgname[c.org];
}

// Symbols.

int st_find(const char* name, int cls) {
    MWork* w = m_work;
    for (int i = 0; i < w->nsym; i++) {
        const MSym& s = w->sym[i];
        if (strcmp(s.name, name)) continue;
        if (s.cls == cls) return i;
        // a variable may be referred to as local or external until it is fixed
        if ((cls == SC_LOCAL && s.cls == SC_EXTERN) || (cls == SC_EXTERN && s.cls == SC_LOCAL))
            return i;
    }
    return -1;
}

int st_add(const char* name, int cls, int declared) {
    MWork* w = m_work;
    for (int i = 0; i < w->nsym; i++)
        if (!strcmp(w->sym[i].name, name)) cc_fail("symbol %s multiply defined\n", name);
    if (w->nsym >= MSYM_MAX) cc_fail("no room to add more symbols\n");
    MSym& s = w->sym[w->nsym];
    memset(&s, 0, sizeof s);
    snprintf(s.name, sizeof s.name, "%s", name);
    s.cls = static_cast<uint8_t>(cls);
    s.flags = declared ? SF_DECL : 0;
    s.type = mtyp_add(ET_TM, OT_MATRIX, 1);
    return w->nsym++;
}

int st_findoradd(const char* name, int cls, int how) {
    int i = st_find(name, cls);
    if (i < 0) i = st_add(name, cls, 0);
    if (how == 1) m_work->sym[i].flags |= SF_SET;
    if (how == 2) m_work->sym[i].flags |= SF_USED;
    return i;
}

const MStructDef* m_findstruct(const char* name) {
    for (const MStructDef& d : m_structs)
        if (d.name == name) return &d;
    return nullptr;
}

} // namespace korvu
