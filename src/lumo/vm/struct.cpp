// Structures at run time: instances made by calling the structure's name
// (the constructor a struct local gets in its function's prologue), member
// fetch by index, and the copies that give struct values their value
// semantics. A member of struct type starts as a struct scalar without an
// instance, made the first time the member is drilled into, so a structure
// may hold a member of its own type.
#include "data/area/missing.h"
#include "lumo/front/cc.h"
#include "lumo/vm/vmops.h"
#include "lumo/vm/xeqops.h"

namespace korvu {

inline constexpr int MSTRUCT_DEPTH = 100;

static int sdefof(const std::string& name) {
    for (size_t k = 0; k < m_structs.size(); k++)
        if (m_structs[k].name == name) return static_cast<int>(k);
    return -1;
}

// The starting value of a member.
static MObj* memberinit(const MMember& m) {
    int el = MT_REAL;
    switch (m.el) {
    case ET_STRING: el = MT_STRING; break;
    case ET_COMPLEX: el = MT_COMPLEX; break;
    case ET_POINTER: el = MT_POINTER; break;
    case ET_STRUCT: el = MT_STRUCT; break;
    default: break;
    }
    int r = 0, c = 0;
    switch (m.org) {
    case OT_SCALAR: r = c = 1; break;
    case OT_ROWVEC:
    case OT_VECTOR: r = 1; break;
    case OT_COLVEC: c = 1; break;
    default: break;
    }
    MObj* o = m_mkmat("", el, r, c);
    if (!o) return nullptr;
    o->level = -1; // held by its instance, never by a frame
    if (el == MT_REAL && r == 1 && c == 1) m_rel(o)[0] = misval;
    if (el == MT_STRUCT) o->sdef = sdefof(m.sname);
    return o;
}

MObj* m_mkinstance(int sdef) {
    if (sdef < 0 || sdef >= static_cast<int>(m_structs.size())) return nullptr;
    const MStructDef& d = m_structs[static_cast<size_t>(sdef)];
    MObj* inst = m_mkmat("", MT_POINTER, 1, static_cast<int>(d.members.size()));
    if (!inst) return nullptr;
    inst->level = -1;
    inst->sdef = sdef;
    for (size_t k = 0; k < d.members.size(); k++) {
        MObj* m = memberinit(d.members[k]);
        if (!m) {
            mo_freemat(inst);
            return nullptr;
        }
        mo_hold(m);
        m_pel(inst)[k] = m;
    }
    return inst;
}

MObj* m_dupinstance(const MObj* inst, int depth) {
    if (depth > MSTRUCT_DEPTH) return nullptr;
    MObj* d = m_mkmat("", MT_POINTER, inst->rows, inst->cols);
    if (!d) return nullptr;
    d->level = -1;
    d->sdef = inst->sdef;
    for (int64_t k = 0; k < m_nel(inst); k++) {
        MObj* m = m_pel(inst)[k];
        if (!m) continue;
        MObj* c = m_dupmat(m); // struct members copy their instances in turn
        if (!c) continue;
        c->level = -1;
        mo_hold(c);
        m_pel(d)[k] = c;
    }
    return d;
}

// A struct value of one new instance: the constructor's result.
static MObj* newvalue(int sdef) {
    MObj* v = m_mkmat("", MT_STRUCT, 1, 1);
    if (!v) return nullptr;
    v->sdef = sdef;
    MObj* inst = m_mkinstance(sdef);
    if (!inst) {
        mo_freemat(v);
        return nullptr;
    }
    mo_hold(inst);
    m_pel(v)[0] = inst;
    return v;
}

// Called from opcall for a structure definition: S() is one instance,
// S(n) a 1 x n array and S(r, c) an r x c array, each element its own
// instance. The arguments are popped.
void m_xeqstruct(MObj* def, int nargs) {
    if (nargs > 2) return m_xeqerr(3001);
    int dim[2] = {1, 1};
    for (int k = 0; k < nargs; k++) {
        const MObj* a = m_stak[k - nargs + 1];
        if (a->fcn || a->eltype != MT_REAL) return m_xeqerr(3253);
        if (a->rows != 1 || a->cols != 1) return m_xeqerr(3204);
        const double x = m_rel(a)[0];
        if (!(x >= 0 && x < 2147483647.0)) return m_xeqerr(3300);
        dim[nargs == 1 ? 1 : k] = static_cast<int>(x);
    }
    MObj* v = nargs ? m_mkmat("", MT_STRUCT, dim[0], dim[1]) : newvalue(def->sdef);
    if (!v) return m_xeqerr(3900);
    if (nargs) {
        v->sdef = def->sdef;
        for (int64_t i = 0; i < m_nel(v); i++) {
            MObj* inst = m_mkinstance(def->sdef);
            if (!inst) {
                mo_freemat(v);
                return m_xeqerr(3900);
            }
            mo_hold(inst);
            m_pel(v)[i] = inst;
        }
    }
    for (int k = 0; k < nargs; k++) m_pop();
    m_push(v);
}

// The definition as a callee, pushed by opfindf for a structure's name.
MObj* m_mkstructref(const char* name) {
    const int k = sdefof(name);
    if (k < 0) return nullptr;
    MObj* o = m_mkmat("", MT_REAL, 0, 0);
    if (!o) return nullptr;
    o->isdef = 1;
    o->sdef = k;
    return o;
}

// The member k (from 1) of the struct scalar s; null with the code set.
static MObj* member(MObj* s, uint32_t k) {
    if (s->fcn || s->isdef || s->eltype != MT_STRUCT) {
        m_xeqerr(3259);
        return nullptr;
    }
    if (s->rows != 1 || s->cols != 1) {
        m_custom_xeqerr(3204, "struct[%d,%d] found where scalar required", s->rows, s->cols);
        return nullptr;
    }
    MObj*& inst = m_pel(s)[0];
    if (!inst) {
        inst = m_mkinstance(s->sdef);
        if (!inst) {
            m_xeqerr(3259);
            return nullptr;
        }
        mo_hold(inst);
    }
    if (k < 1 || static_cast<int64_t>(k) > m_nel(inst) || !m_pel(inst)[k - 1]) {
        m_xeqerr(3259);
        return nullptr;
    }
    return m_pel(inst)[k - 1];
}

static void replacetop(MObj* m) {
    m->count++;
    MObj* old = *m_stak;
    *m_stak = m;
    mo_release(old);
}

void mx_opdrill() {
    MObj* m = member(*m_stak, m_rt.pc[1]);
    if (!m) return;
    replacetop(m);
    m_rt.pc++;
}

void mx_opldmatd() {
    MObj* m = member(m_rt.frame[m_rt.pc[1]], m_rt.pc[2]);
    if (!m) return;
    if (m_push(m)) m_rt.pc += 2;
}

void mx_opldmatdd() {
    MObj* m = member(m_rt.frame[m_rt.pc[1]], m_rt.pc[2]);
    if (!m) return;
    m = member(m, m_rt.pc[3]);
    if (!m) return;
    if (m_push(m)) m_rt.pc += 3;
}

// A struct local starts without instances; its constructor fills it.
void mx_opalcstruct() {
    const uint32_t op = m_rt.pc[0];
    const uint32_t words = m_rt.pc[1];
    int r = 0, c = 0;
    switch (op) {
    case 144: r = 1; break;
    case 145: c = 1; break;
    case 146: r = c = 1; break;
    default: break;
    }
    MObj* o = m_mkmat(reinterpret_cast<const char*>(m_rt.pc + 2), MT_STRUCT, r, c);
    if (!o) return m_xeqerr(3900);
    if (m_push(o)) m_rt.pc += words + 1;
}

} // namespace korvu
