// The system's values and the machine's own: c(), exit(), the count of
// instructions run, reference counts, an object's representation, and the
// in-place reordering of storage between rows and columns.
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "lumo/builtins/bi.h"
#include "output/spout.h"
#include "results/cfcn.h"

namespace korvu {

// c(name): the value of the name as the expression side's c() knows it, a
// number or a text; missing for a name it does not know.
static void bi_c(int n) {
    std::string name;
    if (!bi_getstr(n, 0, &name)) return;
    double num = misval;
    std::vector<char> str(16384, 0);
    const int kind = cfcn(name.c_str(), str.data(), str.size(), &num);
    if (kind == 2) {
        bi_strres(n, str.data());
        return;
    }
    bi_realres(n, kind == 1 ? num : misval);
}

// exit([n]): ends the statement, every call in it, with return code n
// (default 0) and no message.
static void bi_exit(int n) {
    int64_t code = 0;
    if (n == 1 && !bi_getint(n, 0, 0, 2147483647, &code)) return;
    m_exitrc = static_cast<int32_t>(code);
    m_xrc = MXRC_EXIT;
}

// opcount(): the instructions the machine has run since start-up.
static void bi_opcount(int n) {
    bi_realres(n, static_cast<double>(m_opcount));
}

// sys_linkcount(x): the references to x other than this call's own.
static void bi_sys_linkcount(int n) {
    const MObj* o = bi_arg(n, 0);
    bi_realres(n, o->count - 1);
}

static const char* orgname(const MObj* o) {
    if (o->rows == 1 && o->cols == 1) return "scalar";
    if (o->rows == 1) return "rowvector";
    if (o->cols == 1) return "colvector";
    return "matrix";
}

// lumo_representation(x): one line on how x is held: type and shape,
// storage kind, bytes of data and references (this call's own excluded).
static void bi_lumo_representation(int n) {
    const MObj* o = bi_arg(n, 0);
    char line[300];
    if (o->fcn) {
        snprintf(line, sizeof line, "function, %d references\n", o->count - 1);
    } else {
        const char* store = o->view ? "view on the dataset" : "plain storage";
        snprintf(line, sizeof line, "%s %s[%d,%d], %s, %" PRId64 " bytes, %d references\n",
                 m_eltname(o), orgname(o), o->rows, o->cols, store, static_cast<int64_t>(o->size),
                 o->count - 1);
    }
    spout21(line);
    bi_voidres(n);
}

// Reorders r x c elements of size w held by rows into the same elements
// held by columns (the transpose by rows), in place, by following the
// cycles of the permutation.
static void flop(char* x, int64_t r, int64_t c, size_t w) {
    const int64_t m = r * c;
    if (m <= 1 || r == 1 || c == 1) return;
    std::vector<char> seen(static_cast<size_t>(m), 0);
    std::vector<char> held(w), next(w);
    // the element at row i, column j (index i*c + j) goes to j*r + i
    for (int64_t s = 0; s < m; s++) {
        if (seen[s]) continue;
        int64_t k = s;
        memcpy(held.data(), x + k * static_cast<int64_t>(w), w);
        do {
            const int64_t to = (k % c) * r + k / c;
            memcpy(next.data(), x + to * static_cast<int64_t>(w), w);
            memcpy(x + to * static_cast<int64_t>(w), held.data(), w);
            held.swap(next);
            seen[k] = 1;
            k = to;
        } while (k != s);
    }
}

static size_t elsize(const MObj* o) {
    switch (o->eltype) {
    case MT_COMPLEX: return 2 * sizeof(double);
    case MT_STRING: return sizeof(SCell*);
    case MT_POINTER: return sizeof(MObj*);
    default: return sizeof(double);
    }
}

// _testflopin(A): A, r x c held by rows, is held by columns instead: it
// becomes c x r, the transpose, without a copy. _testflopout(A) is the
// way back (the same reordering of the c x r matrix it is given).
static void flopfn(int n) {
    MObj* a = bi_any(n, 0);
    if (!a) return;
    if (a->view) return m_xeqerr(3103);
    if (a->eltype == MT_STRUCT) return m_xeqerr(3250);
    flop(static_cast<char*>(a->data), a->rows, a->cols, elsize(a));
    std::swap(a->rows, a->cols);
    bi_voidres(n);
}

void bi_link_sys(MBiFn* t) {
    t[bi_index("c")] = bi_c;
    t[bi_index("exit")] = bi_exit;
    t[bi_index("opcount")] = bi_opcount;
    t[bi_index("sys_linkcount")] = bi_sys_linkcount;
    t[bi_index("lumo_representation")] = bi_lumo_representation;
    t[bi_index("_testflopin")] = flopfn;
    t[bi_index("_testflopout")] = flopfn;
}

} // namespace korvu
