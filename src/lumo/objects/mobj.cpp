// The object store: headers as dictionary items of type 43, the header
// pool, the 8-byte cell free list, counted string cells, and the copies.
#include "lumo/objects/mobj.h"
#include "lumo/objects/mview.h"

#include <climits>
#include <cstdlib>
#include <cstring>
#include <sys/mman.h>
#include <unordered_map>
#include <utility>
#include <vector>

#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"

namespace korvu {

MoCounts mo_counts{};
int32_t m_curdepth = 0;

static MObj* hdrpool[MO_HDRPOOL];
static int nhdrpool = 0;
static void* cellpool[MO_CELLPOOL];
static int ncellpool = 0;

// The shared empty string: never released.
static SCell emptycell = {INT_MAX / 2, 0, {0}};

SCell* sel_empty() {
    return &emptycell;
}

SCell* sel_make(const char* s, size_t len) {
    if (len == 0) return &emptycell;
    auto* c = static_cast<SCell*>(malloc(offsetof(SCell, s) + len + 1));
    if (!c) return nullptr;
    c->count = 1;
    c->len = static_cast<int32_t>(len);
    memcpy(c->s, s, len);
    c->s[len] = 0;
    mo_counts.scells++;
    return c;
}

void selfree(SCell* c) {
    if (!c || c == &emptycell) return;
    if (--c->count <= 0) {
        free(c);
        mo_counts.scells--;
    }
}

void mo_init() {
    nhdrpool = ncellpool = 0;
}

void mo_reinit() {
    while (nhdrpool > 0) {
        dmrm(hdrpool[--nhdrpool]);
        mo_counts.pooled--;
    }
    while (ncellpool > 0) free(cellpool[--ncellpool]);
    mo_counts.cells = 0;
}

void mo_rpt(int* cellcap, int* cells, int* hdrcap, int* hdrs) {
    *cellcap = MO_CELLPOOL;
    *cells = ncellpool;
    *hdrcap = MO_HDRPOOL;
    *hdrs = nhdrpool;
}

static void* dataalloc(size_t bytes) {
    if (bytes == 8 && ncellpool > 0) {
        mo_counts.cells--;
        return cellpool[--ncellpool];
    }
    // large blocks on huge pages where the system has them: a fresh matrix
    // of millions of elements then costs far fewer page faults
    constexpr size_t huge = size_t(2) << 20;
    if (bytes >= 2 * huge) {
        void* p = nullptr;
        if (posix_memalign(&p, huge, bytes)) return nullptr;
        madvise(p, bytes, MADV_HUGEPAGE);
        return p;
    }
    return malloc(bytes);
}

static void datafree(void* p, size_t bytes) {
    if (!p) return;
    if (bytes == 8 && ncellpool < MO_CELLPOOL) {
        cellpool[ncellpool++] = p;
        mo_counts.cells++;
        return;
    }
    free(p);
}

MObj* mo_allocmat(const char* name, int level, size_t bytes) {
    MObj* o;
    if (nhdrpool > 0) {
        o = hdrpool[--nhdrpool];
        mo_counts.pooled--;
        if (strcmp(o->name, name)) {
            dmrename(o, name);
            snprintf(o->name, sizeof o->name, "%s", name);
        }
    } else {
        o = static_cast<MObj*>(dmadd(name, DM_LUMOMAT, 0, sizeof(MObj)));
        if (!o) return nullptr;
        mo_counts.allocated++;
        snprintf(o->name, sizeof o->name, "%s", name);
    }
    if (bytes == 0) bytes = 8;
    o->data = dataalloc(bytes);
    if (!o->data) {
        o->live = 0;
        if (nhdrpool < MO_HDRPOOL) {
            hdrpool[nhdrpool++] = o;
            mo_counts.pooled++;
        } else {
            dmrm(o);
        }
        return nullptr;
    }
    o->size = static_cast<int64_t>(bytes);
    o->count = level == -1 ? 1 : 0;
    o->rows = o->cols = 0;
    o->level = level;
    o->clock = 0;
    o->eltype = MT_REAL;
    o->view = o->ado = 0;
    o->live = 1;
    o->isvoid = 0;
    o->fcn = nullptr;
    o->sdef = -1;
    o->isdef = 0;
    mo_counts.live++;
    return o;
}

// Releases what the elements hold: string cells, pointer targets.
static void relelems(MObj* o) {
    if (o->view) return; // index lists only
    const int64_t n = m_nel(o);
    if (o->eltype == MT_STRING) {
        SCell** s = m_sel(o);
        for (int64_t i = 0; i < n; i++) selfree(s[i]);
    } else if (o->eltype == MT_POINTER || o->eltype == MT_STRUCT) {
        MObj** p = m_pel(o);
        for (int64_t i = 0; i < n; i++)
            if (p[i]) mo_release(p[i]);
    }
}

void mo_freemat(MObj* o) {
    if (!o || !o->live) return;
    if (o->fcn) o->fcn->count--;
    relelems(o);
    if (o->view) {
        m_nviews--;
        o->view = 0;
    }
    datafree(o->data, static_cast<size_t>(o->size));
    o->data = nullptr;
    o->live = 0;
    o->fcn = nullptr;
    mo_counts.live--;
    if (nhdrpool < MO_HDRPOOL) {
        hdrpool[nhdrpool++] = o;
        mo_counts.pooled++;
    } else {
        dmrm(o);
    }
}

int mo_resize(MObj* o, size_t bytes) {
    if (bytes == 0) bytes = 8;
    if (static_cast<int64_t>(bytes) == o->size) return 0;
    void* p = dataalloc(bytes);
    if (!p) return 1;
    datafree(o->data, static_cast<size_t>(o->size));
    o->data = p;
    o->size = static_cast<int64_t>(bytes);
    return 0;
}

static size_t elsize(int eltype) {
    return eltype == MT_COMPLEX ? 16 : 8;
}

static void initelems(MObj* o) {
    const int64_t n = m_nel(o);
    if (o->eltype == MT_STRING) {
        SCell** s = m_sel(o);
        for (int64_t i = 0; i < n; i++) s[i] = &emptycell;
    } else if (o->eltype == MT_POINTER || o->eltype == MT_STRUCT) {
        memset(o->data, 0, static_cast<size_t>(n) * 8);
    }
}

static const char* eltext(int eltype) {
    switch (eltype) {
    case MT_COMPLEX: return "complex";
    case MT_STRING: return "string";
    case MT_POINTER: return "pointer";
    case MT_STRUCT: return "struct";
    case MT_RAW: return "raw";
    default: return "real";
    }
}

const char* m_eltname(const MObj* o) {
    return eltext(o->eltype);
}

static MObj* mkmat(const char* name, int level, int eltype, int rows, int cols) {
    const int64_t n = static_cast<int64_t>(rows) * cols;
    const int64_t bytes = n * static_cast<int64_t>(elsize(eltype));
    MObj* o = nullptr;
    if (rows >= 0 && cols >= 0 && bytes >= 0 && bytes < (int64_t(1) << 46))
        o = mo_allocmat(*name ? name : m_tname, level, static_cast<size_t>(bytes));
    if (!o) {
        errorf(3900, "unable to allocate %s %s[%d,%d]\n", eltext(eltype), *name ? name : m_tname,
               rows, cols);
        return nullptr;
    }
    o->eltype = static_cast<int16_t>(eltype);
    o->rows = rows;
    o->cols = cols;
    initelems(o);
    return o;
}

MObj* m_mkmat(const char* name, int eltype, int rows, int cols) {
    MObj* o = mkmat(name, m_curdepth, eltype, rows, cols);
    if (o && *name && m_curdepth == 0) o->count = 1;
    return o;
}

MObj* m_mkglobalmat(const char* name, int eltype, int rows, int cols) {
    return mkmat(name, -1, eltype, rows, cols);
}

MObj* m_mktsmat() {
    MObj* o = mo_allocmat(m_tname, m_curdepth, 8);
    if (!o) return m_mkmat("", MT_REAL, 1, 1);
    o->rows = o->cols = 1;
    return o;
}

MObj* m_mktsmatsto(double x) {
    MObj* o = m_mktsmat();
    if (o) m_rel(o)[0] = x;
    return o;
}

MObj* m_mkfcnref(LumoFcn* f) {
    MObj* o = mo_allocmat(m_tname, m_curdepth, 8);
    if (!o) return nullptr;
    o->fcn = f;
    f->count++;
    return o;
}

// Copies the elements of s into t, both already of the same shape and type.
static void copyelems(MObj* t, const MObj* s) {
    const int64_t n = m_nel(s);
    if (n == 0) return;
    if (s->view) {
        v_readall(t, s);
        return;
    }
    memcpy(t->data, s->data, static_cast<size_t>(n) * elsize(s->eltype));
    if (s->eltype == MT_STRING) {
        SCell** c = m_sel(t);
        for (int64_t i = 0; i < n; i++) sel_hold(c[i]);
    } else if (s->eltype == MT_POINTER) {
        MObj** p = m_pel(t);
        for (int64_t i = 0; i < n; i++)
            if (p[i]) mo_hold(p[i]);
    } else if (s->eltype == MT_STRUCT) {
        // value semantics: each instance is copied
        MObj** p = m_pel(t);
        for (int64_t i = 0; i < n; i++)
            if (p[i]) {
                MObj* d = m_dupinstance(p[i], 0);
                if (d) mo_hold(d);
                p[i] = d;
            }
    }
    t->sdef = s->sdef;
}

MObj* m_dupmat(const MObj* o) {
    MObj* d = m_mkmat("", o->eltype, o->rows, o->cols);
    if (!d) return nullptr;
    d->isvoid = o->isvoid;
    copyelems(d, o);
    return d;
}

int m_remkmat(MObj* o, int eltype, int view, int rows, int cols) {
    if (view) return m_mkview(o, eltype, view, rows, cols);
    relelems(o);
    if (o->view) {
        m_nviews--;
        o->view = 0;
    }
    const int64_t n = static_cast<int64_t>(rows) * cols;
    o->rows = o->cols = 0;
    if (mo_resize(o, static_cast<size_t>(n * static_cast<int64_t>(elsize(eltype))))) return 3998;
    o->eltype = static_cast<int16_t>(eltype);
    o->view = static_cast<uint8_t>(view);
    o->rows = rows;
    o->cols = cols;
    o->isvoid = 0;
    initelems(o);
    return 0;
}

void m_swapmat(MObj* a, MObj* b) {
    std::swap(a->data, b->data);
    std::swap(a->size, b->size);
    std::swap(a->rows, b->rows);
    std::swap(a->cols, b->cols);
    std::swap(a->view, b->view);
    std::swap(a->eltype, b->eltype);
    std::swap(a->isvoid, b->isvoid);
    std::swap(a->sdef, b->sdef);
}

int64_t m_objsize(const MObj* o) {
    int64_t n = o->size;
    if (o->eltype == MT_STRING && !o->view) {
        SCell** s = m_sel(o);
        for (int64_t i = 0; i < m_nel(o); i++)
            if (s[i]->len > 0) n += s[i]->len;
    }
    return n;
}

int cpymat(MObj* target, MObj* source, bool steal) {
    if (target == source) {
        if (!target->view) return 0;
        // a view assigned to itself becomes a matrix of its values
        MObj* t = m_unview(source);
        if (!t) return 3900;
        m_swapmat(target, t);
        mo_freemat(t);
        return 0;
    }
    if (steal && !source->view && source->count == 1) {
        m_swapmat(target, source);
        return 0;
    }
    if (target->view || target->rows != source->rows || target->cols != source->cols ||
        target->eltype != source->eltype) {
        if (m_remkmat(target, source->eltype, 0, source->rows, source->cols)) return 3900;
    } else {
        relelems(target);
    }
    copyelems(target, source);
    target->isvoid = source->isvoid;
    return 0;
}

// Objects no longer reachable: temporaries left at a count of 0 or below,
// and rings of pointers that keep each other alive with nothing outside
// pointing in. A reference from outside the store (a name, a frame, the
// stack, a pinned constant) shows as a count above the references made by
// elements; what such objects reach is kept, the rest is released. Only
// between statements of the interactive level, where no code runs.
int m_freeunlinkedmats() {
    if (m_curdepth > 1) return 0;
    std::vector<MObj*> all;
    for (void* it = dmnext(nullptr, nullptr, DM_LUMOMAT, nullptr); it;
         it = dmnext(it, nullptr, DM_LUMOMAT, nullptr)) {
        auto* o = static_cast<MObj*>(it);
        if (o->live) all.push_back(o);
    }
    if (all.empty()) return 0;
    std::unordered_map<MObj*, int64_t> refs; // count less the references of elements
    auto holds = [](const MObj* o) {
        return !o->view && (o->eltype == MT_POINTER || o->eltype == MT_STRUCT);
    };
    for (MObj* o : all) refs[o] += o->count;
    for (MObj* o : all)
        if (holds(o))
            for (int64_t i = 0; i < m_nel(o); i++)
                if (MObj* t = m_pel(o)[i]; t && refs.count(t)) refs[t]--;
    std::unordered_map<MObj*, bool> kept;
    std::vector<MObj*> todo;
    for (MObj* o : all)
        if (refs[o] > 0) {
            kept[o] = true;
            todo.push_back(o);
        }
    while (!todo.empty()) {
        MObj* o = todo.back();
        todo.pop_back();
        if (!holds(o)) continue;
        for (int64_t i = 0; i < m_nel(o); i++)
            if (MObj* t = m_pel(o)[i]; t && refs.count(t) && !kept[t]) {
                kept[t] = true;
                todo.push_back(t);
            }
    }
    std::vector<MObj*> gone;
    for (MObj* o : all)
        if (!kept[o]) gone.push_back(o);
    // first cut the links, so that no release runs into the ring
    for (MObj* o : gone) {
        if (!holds(o)) continue;
        for (int64_t i = 0; i < m_nel(o); i++) {
            MObj* t = m_pel(o)[i];
            m_pel(o)[i] = nullptr;
            if (t && (!refs.count(t) || kept[t])) mo_release(t);
        }
    }
    for (MObj* o : gone) mo_freemat(o);
    return static_cast<int>(gone.size());
}

// Named matrices.

MObj* findlvl0mat(const char* name) {
    for (void* it = dmfind0(name, DM_LUMOMAT); it; it = dmnamenext(it, DM_LUMOMAT)) {
        auto* o = static_cast<MObj*>(it);
        if (o->live && (o->level == 0 || o->level == -1)) return o;
    }
    return nullptr;
}

MObj* findglobalmat(const char* name) {
    return findlvl0mat(name);
}

MObj* mo_nextmat(MObj* previous) {
    for (void* it = dmnext(previous, nullptr, DM_LUMOMAT, nullptr); it;
         it = dmnext(it, nullptr, DM_LUMOMAT, nullptr)) {
        auto* o = static_cast<MObj*>(it);
        if (o->live && (o->level == 0 || o->level == -1) && strcmp(o->name, m_tname)) return o;
    }
    return nullptr;
}

// A named matrix leaves the interactive level: it keeps living while a
// pointer holds it, as a temporary.
static void unname(MObj* o) {
    dmrename(o, m_tname);
    snprintf(o->name, sizeof o->name, "%s", m_tname);
    o->level = 1;
    mo_release(o);
}

int lumo_dropmat(const char* name) {
    MObj* o = findlvl0mat(name);
    if (!o) return 111;
    unname(o);
    return 0;
}

void lumo_clearmats() {
    while (MObj* o = mo_nextmat(nullptr)) unname(o);
}

} // namespace korvu
