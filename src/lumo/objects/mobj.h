// The object store of the matrix language: every value is an object with
// one header, held as a dictionary item of type 43, its data outside the
// item. Reference counts decide lifetime: a push raises the count, a pop
// lowers it, and at 0 or below the object is released. Released headers go
// to a pool of 500, released 8-byte data blocks to a free list of 250 cells,
// so a scalar temporary touches neither the allocator nor the dictionary in
// the steady state.
#pragma once
#include <cstddef>
#include <cstdint>

#include "lumo/lumo.h"

namespace korvu {

// Element types of the header.
enum : int16_t {
    MT_REAL = 0,
    MT_COMPLEX = -1,
    MT_RAW = -2,
    MT_STRING = -3,
    MT_POINTER = -4,
    MT_STRUCT = -5
};

struct MObj {
    void* data;    // elements by row
    int64_t size;  // bytes at data
    int32_t count; // references
    int32_t rows, cols;
    int32_t level; // call depth that owns it; -1 global
    int32_t clock;
    int16_t eltype;
    uint8_t view; // 0 plain; 1, 2 view kinds
    uint8_t ado;
    uint8_t live;   // 1 in use, 0 in the pool
    uint8_t isvoid; // the void value of a function without result
    LumoFcn* fcn;   // a function reference: the function; null for a matrix
    int32_t sdef;   // struct values and instances: index of the definition; -1
    uint8_t isdef;  // a reference to a structure definition (its constructor)
    char name[33];
};

// A counted string cell: the count of elements sharing it, the length and
// the bytes with a terminating NUL.
struct SCell {
    int32_t count;
    int32_t len;
    char s[1];
};

inline constexpr const char* m_tname = "<tmp>";
inline constexpr int MO_HDRPOOL = 500;
inline constexpr int MO_CELLPOOL = 250;

// Counts for the audit and `lumo memory`.
struct MoCounts {
    int64_t live;      // headers in use
    int64_t pooled;    // headers in the pool
    int64_t cells;     // 8-byte cells in the free list
    int64_t scells;    // string cells in use
    int64_t allocated; // headers made through the dictionary so far
};
extern MoCounts mo_counts;
// Call depth of the running code: the level of new objects.
extern int32_t m_curdepth;

void mo_init();
void mo_reinit();
// Capacity and count of the cell free list, and of the header pool.
void mo_rpt(int* cellcap, int* cells, int* hdrcap, int* hdrs);

MObj* mo_allocmat(const char* name, int level, size_t bytes);
void mo_freemat(MObj* o);
int mo_resize(MObj* o, size_t bytes);

// Matrices. Failures return null after the 3900 message; the caller sets
// the code.
MObj* m_mkmat(const char* name, int eltype, int rows, int cols);
MObj* m_mkglobalmat(const char* name, int eltype, int rows, int cols);
MObj* m_mktsmat();
MObj* m_mktsmatsto(double x);
MObj* m_mkfcnref(LumoFcn* f);
MObj* m_dupmat(const MObj* o);
int m_remkmat(MObj* o, int eltype, int view, int rows, int cols);
void m_swapmat(MObj* a, MObj* b);
int64_t m_objsize(const MObj* o);
// Releases what nothing outside the store reaches any more: unlinked
// temporaries and rings of pointers. Only at depth 1 or less; returns the
// number of objects released.
int m_freeunlinkedmats();
// Copies source into target (resizing it); steal: a temporary source
// referenced once gives its data instead. Returns 0 or 3900.
int cpymat(MObj* target, MObj* source, bool steal);

inline void mo_hold(MObj* o) {
    o->count++;
}
inline void mo_release(MObj* o) {
    if (--o->count <= 0) mo_freemat(o);
}

// String cells.
SCell* sel_empty();
SCell* sel_make(const char* s, size_t len);
inline void sel_hold(SCell* c) {
    c->count++;
}
void selfree(SCell* c);

// Elements.
inline double* m_rel(const MObj* o) {
    return static_cast<double*>(o->data);
}
inline SCell** m_sel(const MObj* o) {
    return static_cast<SCell**>(o->data);
}
inline MObj** m_pel(const MObj* o) {
    return static_cast<MObj**>(o->data);
}
inline int64_t m_nel(const MObj* o) {
    return static_cast<int64_t>(o->rows) * o->cols;
}

// Named matrices of the interactive level (0) and globals (-1).
MObj* findlvl0mat(const char* name);
MObj* findglobalmat(const char* name);
MObj* mo_nextmat(MObj* previous);

// Structures: a struct value (eltype struct) holds instances; an instance
// is a pointer vector (sdef set) with one member object an element. Copies
// of struct values copy the instances they hold.
MObj* m_mkinstance(int sdef);
MObj* m_dupinstance(const MObj* inst, int depth);

// Type text such as "real" for messages.
const char* m_eltname(const MObj* o);

// The `lumo` subcommands of the store.
int lumo_describe(const char* args);
int lumo_memory(const char* args);
int lumo_rename(const char* args);
int lumo_dropmat(const char* name);
void lumo_clearmats();

} // namespace korvu
