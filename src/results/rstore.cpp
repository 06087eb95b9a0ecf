// The r, s and e scalar tables, the dictionary items behind them, the
// last-found cursor, and the return a running program builds.
#include "results/stores.h"

#include <cstring>

#include "data/area/missing.h"
#include "data/formats/formats.h"
#include "kernel/dict/dict.h"
#include "kernel/loop/brk.h"
#include "kernel/macro/macro.h"
#include "kernel/parse/options.h"
#include "output/spout.h"

namespace korvu {

int32_t retval_flag = 0;
int32_t local_retval_n = 0;
RetvalEntry local_retval[RETVAL_MAX];
int32_t estval_n = 0;
RetvalEntry estval[RETVAL_MAX];
int32_t lastest = 0, lastest_op = 0;

int myrettype(int k) {
    return typelmac + 64 * k;
}

// --- the cursor ----------------------------------------------------------------

namespace {

enum : int { CK_NONE, CK_RINT, CK_EINT, CK_DSCALAR, CK_DMACRO, CK_DMATRIX };
struct Cursor {
    int kind;
    int index;
    void* item;
};
Cursor cur{CK_NONE, 0, nullptr};

int set_cursor(int kind, int index, void* item) {
    cur = Cursor{kind, index, item};
    switch (kind) {
    case CK_RINT:
    case CK_EINT:
    case CK_DSCALAR: return RF_SCALAR;
    case CK_DMACRO: return RF_MACRO;
    case CK_DMATRIX: return RF_MATRIX;
    default: return RF_ABSENT;
    }
}

bool namefits(const char* name) {
    return name && *name && std::strlen(name) <= static_cast<size_t>(dm_namelen);
}

// Dictionary part of a store whose scalar, macro and matrix types are given.
int dictfind(const char* name, int tscal, int tmac, int tmat) {
    if (!namefits(name)) return set_cursor(CK_NONE, 0, nullptr);
    if (tscal >= 0)
        if (void* it = dmfind0(name, tscal)) return set_cursor(CK_DSCALAR, 0, it);
    if (void* it = dmfind0(name, tmac)) return set_cursor(CK_DMACRO, 0, it);
    if (tmat >= 0)
        if (void* it = dmfind0(name, tmat)) return set_cursor(CK_DMATRIX, 0, it);
    return set_cursor(CK_NONE, 0, nullptr);
}

int tablefind(const RetvalEntry* t, int n, const char* name) {
    for (int i = 0; i < n; ++i)
        if (!std::strcmp(t[i].name, name)) return i;
    return -1;
}

void table_erase(RetvalEntry* t, int32_t* n, int i) {
    for (int j = i; j + 1 < *n; ++j) t[j] = t[j + 1];
    --*n;
}

int dsave_scalar(const char* name, int type, double value) {
    if (!namefits(name)) return 198;
    void* it = dmsave(name, type, 8, &value, sizeof value);
    return it ? 0 : 950;
}

void drop_matrix(const char* name, int tmat) {
    if (void* m = dmfind0(name, tmat)) {
        dmrm(m);
        dmrm(dmfind0(name, tmat + 1));
        dmrm(dmfind0(name, tmat + 2));
    }
}

// Copies a table into the dictionary type; on failure the names already
// copied are removed again from type 25 (r and e share this rollback).
int table_to_dynamic(RetvalEntry* t, int32_t* n, int type) {
    for (int i = 0; i < *n; ++i) {
        dmrm(dmfind0(t[i].name, type));
        if (dsave_scalar(t[i].name, type, t[i].value)) {
            for (int j = 0; j < i; ++j) dmrm(dmfind0(t[j].name, ET_SCALAR));
            return 950;
        }
    }
    *n = 0;
    return 0;
}

} // namespace

int retmac_save(const char* name, int type, const char* text) {
    if (!namefits(name)) return 198;
    dmrm(dmfind0(name, type));
    size_t n = std::strlen(text);
    if (!n) return 0;
    void* it = dmsave(name, type, static_cast<int>(n + 1), text, n + 1);
    return it ? 0 : 950;
}

void dmzap_prefix(int type, const char* prefix) {
    size_t n = std::strlen(prefix);
    void* it = dmnext(nullptr, nullptr, type, nullptr);
    while (it) {
        void* next = dmnext(it, nullptr, type, nullptr);
        if (!std::strncmp(dmname(it), prefix, n)) dmrm(it);
        it = next;
    }
}

// --- r -------------------------------------------------------------------------

void retval_zap() {
    for (int t = RT_SCALAR; t <= RT_MATCOL; ++t) dmzap(t);
    local_retval_n = 0;
    retval_flag = 0;
}

void retval_clear() {
    if (retval_flag & 2)
        for (int t = RT_SCALAR; t <= RT_MATCOL; ++t) dmzap(t);
    local_retval_n = 0;
    retval_flag = 0;
}

int retval_set_scalar(const char* name, double value) {
    if (!(retval_flag & 1)) {
        retval_flag |= 1;
        local_retval_n = 0;
    }
    if (local_retval_n < RETVAL_MAX) {
        RetvalEntry& e = local_retval[local_retval_n++];
        snprintf(e.name, sizeof e.name, "%s", name);
        e.value = value;
        return 0;
    }
    retval_flag |= 2;
    return dsave_scalar(name, RT_SCALAR, value);
}

int retval_set_local(const char* name, const char* text) {
    if (!text || !*text) return 0;
    if (int rc = retmac_save(name, RT_MACRO, text)) return rc;
    retval_flag |= 2;
    return 0;
}

int retval_reset_scalar(const char* name, double value) {
    if (retval_find(name) == RF_SCALAR && cur.kind == CK_RINT) {
        local_retval[cur.index].value = value;
        return 0;
    }
    if (cur.kind == CK_DSCALAR) return 0; // a scalar in the dictionary is left alone
    return retval_set_scalar(name, value);
}

void retval_erase(const char* name) {
    if (retval_flag & 1) {
        int i = tablefind(local_retval, local_retval_n, name);
        if (i >= 0) return table_erase(local_retval, &local_retval_n, i);
    }
    if (!namefits(name)) return;
    dmrm(dmfind0(name, RT_SCALAR));
    dmrm(dmfind0(name, RT_MACRO));
    drop_matrix(name, RT_MATRIX);
}

int retval_internal_to_dynamic() {
    if (!(retval_flag & 1)) return 0;
    if (table_to_dynamic(local_retval, &local_retval_n, RT_SCALAR)) return 950;
    retval_flag |= 2;
    return 0;
}

int retval_get_internal_scalar(int i, char* name, double* value) {
    if (!(retval_flag & 1) || i < 0 || i >= local_retval_n) return 0;
    snprintf(name, 33, "%s", local_retval[i].name);
    *value = local_retval[i].value;
    return 1;
}

// --- finding -------------------------------------------------------------------

int retval_find(const char* name) {
    if (!name) return set_cursor(CK_NONE, 0, nullptr);
    if (retval_flag & 1) {
        int i = tablefind(local_retval, local_retval_n, name);
        if (i >= 0) return set_cursor(CK_RINT, i, nullptr);
    }
    if (!(retval_flag & 2)) return set_cursor(CK_NONE, 0, nullptr);
    return dictfind(name, RT_SCALAR, RT_MACRO, RT_MATRIX);
}

int estval_find(const char* name) {
    if (!name) return set_cursor(CK_NONE, 0, nullptr);
    int i = tablefind(estval, estval_n, name);
    if (i >= 0) return set_cursor(CK_EINT, i, nullptr);
    if (lastest) {
        if (!std::strcmp(name, "b"))
            if (void* it = dmfind0("_b", ET_RECORD)) return set_cursor(CK_DMATRIX, 0, it);
        if (!std::strcmp(name, "V"))
            if (void* it = dmfind0("VCE", ET_RECORD)) return set_cursor(CK_DMATRIX, 0, it);
    }
    return dictfind(name, ET_SCALAR, ET_MACRO, ET_MATRIX);
}

int sretval_find(const char* name) {
    return dictfind(name, -1, ST_MACRO, -1);
}

int myretval_find(const char* name) {
    return dictfind(name, myrettype(1), myrettype(2), myrettype(3));
}

int gretval_find(int cls, const char* name) {
    switch (cls) {
    case RC_R: return retval_find(name);
    case RC_MINE: return myretval_find(name);
    case RC_E: return estval_find(name);
    case RC_S: return sretval_find(name);
    default: return set_cursor(CK_NONE, 0, nullptr);
    }
}

void retval_not_found() {
    set_cursor(CK_NONE, 0, nullptr);
}

void* retval_cursor_item() {
    return cur.item;
}

double retval_get_as_double() {
    switch (cur.kind) {
    case CK_RINT: return local_retval[cur.index].value;
    case CK_EINT: return estval[cur.index].value;
    case CK_DSCALAR: {
        double v;
        std::memcpy(&v, cur.item, sizeof v);
        return v;
    }
    default: return misval;
    }
}

int retval_get_as_double_any(double* out) {
    if (cur.kind >= CK_RINT && cur.kind <= CK_DSCALAR) {
        *out = retval_get_as_double();
        return 0;
    }
    if (cur.kind == CK_DMACRO) {
        if (cnvstoz(static_cast<const char*>(cur.item), out)) return 1;
        return 0;
    }
    return 1;
}

// "%18.0g", blanks trimmed.
static void sendbackasstr(double x, char* buf, size_t size) {
    const char* s = safereforms("%18.0g", x);
    while (*s == ' ') ++s;
    snprintf(buf, size, "%s", s);
    size_t n = std::strlen(buf);
    while (n && buf[n - 1] == ' ') buf[--n] = 0;
}

void retval_get_as_string(char* buf, size_t size) {
    if (!size) return;
    buf[0] = 0;
    switch (cur.kind) {
    case CK_RINT:
    case CK_EINT:
    case CK_DSCALAR: return sendbackasstr(retval_get_as_double(), buf, size);
    case CK_DMACRO: {
        size_t n = dmsize(cur.item);
        if (n > size) n = size;
        std::memcpy(buf, cur.item, n);
        buf[n ? n - 1 : 0] = 0;
        return;
    }
    case CK_DMATRIX: snprintf(buf, size, "matrix"); return;
    default: return;
    }
}

const char* retval_get_strptr() {
    return cur.kind == CK_DMACRO ? static_cast<const char*>(cur.item) : nullptr;
}

void retval_debug() {
    c_outlev = 0;
    spoutf("retval_flag = %d  local_retval_n = %d\n", retval_flag, local_retval_n);
    for (int i = 0; i < local_retval_n; ++i)
        spoutf("%d.  |%s| %.17g\n", i + 1, local_retval[i].name, local_retval[i].value);
}

// --- the return being built ------------------------------------------------------

void myretval_clear() {
    for (int k = 1; k <= 5; ++k) dmzap(myrettype(k));
}

void myretval_erase(const char* name) {
    if (!namefits(name)) return;
    dmrm(dmfind0(name, myrettype(1)));
    dmrm(dmfind0(name, myrettype(2)));
    drop_matrix(name, myrettype(3));
}

int myretval_reset_scalar(const char* name, double value) {
    myretval_erase(name);
    return dsave_scalar(name, myrettype(1), value);
}

int myretval_reset_local(const char* name, const char* text) {
    myretval_erase(name);
    return retmac_save(name, myrettype(2), text);
}

int myretval_add() {
    if (retval_flag & 1) {
        for (int i = 0; i < local_retval_n; ++i) {
            const char* n = local_retval[i].name;
            if (dmfind0(n, myrettype(1)) || dmfind0(n, myrettype(2)) || dmfind0(n, myrettype(3)))
                continue;
            if (dsave_scalar(n, myrettype(1), local_retval[i].value)) return 950;
        }
    }
    if (retval_flag & 2) {
        static const int order[] = {0, 1, 2, 4, 3};
        for (int k : order) dmretypeall(RT_SCALAR + k, myrettype(k + 1));
    }
    retval_clear();
    if (++poll_counter >= poll_rate) search_event();
    return stopflag;
}

int endreturn(int cls) {
    if (typelmac + 320 > DM_RETMATEND) return 0;
    if (cls != 1) {
        myretval_clear();
        return 0;
    }
    retval_zap();
    bool moved = false;
    for (int k = 0; k < 5; ++k) {
        int from = myrettype(k + 1);
        if (dmnext(nullptr, nullptr, from, nullptr)) moved = true;
        if (k >= 3 && !dmnext(nullptr, nullptr, RT_MATRIX, nullptr)) {
            dmzap(from);
            continue;
        }
        dmretypeall(from, RT_SCALAR + k);
    }
    retval_flag = moved ? 2 : 0;
    return 0;
}

// --- s -------------------------------------------------------------------------

void sretval_clear() {
    dmzap(ST_MACRO);
}

int sretval_reset_local(const char* name, const char* text) {
    return retmac_save(name, ST_MACRO, text);
}

} // namespace korvu
