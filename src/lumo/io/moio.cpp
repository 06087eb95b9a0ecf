// The matrix object stream: "MOTOP", the byte order, objects between "OBJ"
// and "JBO" (a matrix between "MAT" and "TAM", elements by row), "POTOM".
// The writer writes in this machine's order; the reader swaps numbers when
// the stream comes from the other order. Pointers write their target once,
// by number; a second reference writes the number only.
#include <sys/stat.h>

#include <climits>
#include <cstring>
#include <string>
#include <unordered_map>
#include <vector>

#include "lumo/io/lumofile.h"

namespace korvu {

static bool lowfirst() {
    const uint16_t one = 1;
    uint8_t b;
    memcpy(&b, &one, 1);
    return b == 1;
}

static uint8_t eltcode(int eltype) {
    return static_cast<uint8_t>(-eltype);
}

// --- writing -------------------------------------------------------------------

struct MoWriter {
    FILE* fp;
    std::unordered_map<const MObj*, uint32_t> seen;
    uint32_t next = 1;
    bool ok = true;
    void put(const void* p, size_t n) {
        if (ok && n && fwrite(p, 1, n, fp) != n) ok = false;
    }
    void tag(const char* t) { put(t, strlen(t) + 1); }
    void u32(uint32_t v) { put(&v, 4); }
};

static int writeobj(MoWriter& w, const MObj* o, const char* name);

static int writeelems(MoWriter& w, const MObj* o) {
    const int64_t n = m_nel(o);
    switch (o->eltype) {
    case MT_REAL: w.put(o->data, static_cast<size_t>(n) * 8); break;
    case MT_COMPLEX: w.put(o->data, static_cast<size_t>(n) * 16); break;
    case MT_STRING:
        for (int64_t i = 0; i < n; i++) {
            const SCell* c = m_sel(o)[i];
            w.u32(static_cast<uint32_t>(c->len));
            w.put(c->s, static_cast<size_t>(c->len));
        }
        break;
    case MT_POINTER:
        for (int64_t i = 0; i < n; i++) {
            const MObj* t = m_pel(o)[i];
            if (!t) {
                w.u32(0);
                continue;
            }
            auto it = w.seen.find(t);
            if (it != w.seen.end()) {
                w.u32(it->second);
                continue;
            }
            w.u32(w.next); // a new object follows
            if (int rc = writeobj(w, t, "")) return rc;
        }
        break;
    default: return 2;
    }
    return w.ok ? 0 : 3;
}

static int writeobj(MoWriter& w, const MObj* o, const char* name) {
    if (o->fcn || o->isdef) return 7;
    if (o->view || o->eltype == MT_STRUCT || o->eltype == MT_RAW || o->sdef >= 0) return 2;
    const uint32_t num = w.next++;
    w.seen[o] = num;
    w.tag("OBJ");
    const uint8_t dt = 1;
    w.put(&dt, 1);
    char nm[LLIB_NAMELEN] = {};
    snprintf(nm, sizeof nm, "%s", name);
    w.put(nm, sizeof nm);
    w.u32(num);
    w.tag("MAT");
    const uint8_t el = eltcode(o->eltype);
    w.put(&el, 1);
    w.u32(static_cast<uint32_t>(o->rows));
    w.u32(static_cast<uint32_t>(o->cols));
    if (int rc = writeelems(w, o)) return rc;
    w.tag("TAM");
    w.tag("JBO");
    return w.ok ? 0 : 3;
}

int moio_write(FILE* fp, const MObj* o, const char* name) {
    MoWriter w{fp, {}, 1, true};
    w.tag("MOTOP");
    const uint8_t ord[2] = {0, static_cast<uint8_t>(lowfirst() ? 2 : 1)};
    w.put(ord, 2);
    if (int rc = writeobj(w, o, name)) return rc;
    w.tag("POTOM");
    return w.ok ? 0 : 3;
}

// --- reading -------------------------------------------------------------------

static bool busy = false;

struct MoReader {
    FILE* fp;
    bool swap = false;
    int64_t left; // bytes left in the file, a bound on every size read
    std::unordered_map<uint32_t, MObj*> objs;
    std::unordered_map<uint32_t, bool> open; // objects being read
    bool get(void* p, size_t n) {
        if (static_cast<int64_t>(n) > left) return false;
        if (n && fread(p, 1, n, fp) != n) return false;
        left -= static_cast<int64_t>(n);
        return true;
    }
    bool u32(uint32_t* v) {
        if (!get(v, 4)) return false;
        if (swap) *v = __builtin_bswap32(*v);
        return true;
    }
    bool tag(const char* t) {
        char buf[8];
        const size_t n = strlen(t) + 1;
        return get(buf, n) && !memcmp(buf, t, n);
    }
};

static int readobj(MoReader& r, MObj** out, std::string* name);

static int readelems(MoReader& r, MObj* o) {
    const int64_t n = m_nel(o);
    switch (o->eltype) {
    case MT_REAL:
    case MT_COMPLEX: {
        const int64_t k = o->eltype == MT_REAL ? n : 2 * n;
        double* d = m_rel(o);
        if (!r.get(d, static_cast<size_t>(k) * 8)) return 5;
        if (r.swap)
            for (int64_t i = 0; i < k; i++) {
                uint64_t u;
                memcpy(&u, &d[i], 8);
                u = __builtin_bswap64(u);
                memcpy(&d[i], &u, 8);
            }
        return 0;
    }
    case MT_STRING:
        for (int64_t i = 0; i < n; i++) {
            uint32_t len;
            if (!r.u32(&len) || static_cast<int64_t>(len) > r.left || len > INT_MAX / 2) return 5;
            std::string s(len, '\0');
            if (!r.get(s.data(), len)) return 5;
            SCell* c = sel_make(s.data(), len);
            if (!c) return 4;
            SCell** cells = m_sel(o);
            selfree(cells[i]);
            cells[i] = c;
        }
        return 0;
    case MT_POINTER:
        for (int64_t i = 0; i < n; i++) {
            uint32_t num;
            if (!r.u32(&num)) return 5;
            if (!num) continue;
            MObj* t;
            auto it = r.objs.find(num);
            if (it != r.objs.end()) {
                // a cycle back to an object being read is refused: it could
                // never be released
                if (r.open[num]) return 5;
                t = it->second;
            } else {
                std::string nm;
                if (int rc = readobj(r, &t, &nm)) return rc;
                auto at = r.objs.find(num);
                if (at == r.objs.end() || at->second != t) {
                    // the object came under another number than announced
                    if (t->count <= 0) mo_freemat(t);
                    return 5;
                }
            }
            mo_hold(t);
            m_pel(o)[i] = t;
        }
        return 0;
    }
    return 2;
}

static int readobj(MoReader& r, MObj** out, std::string* name) {
    *out = nullptr;
    uint8_t dt;
    char nm[LLIB_NAMELEN];
    uint32_t num;
    if (!r.tag("OBJ") || !r.get(&dt, 1) || !r.get(nm, sizeof nm) || !r.u32(&num)) return 5;
    if (dt == 2) return 7;
    if (dt != 1) return 2;
    nm[LLIB_NAMELEN - 1] = 0;
    *name = nm;
    if (!num || r.objs.count(num)) return 5;
    uint8_t el;
    uint32_t rows, cols;
    if (!r.tag("MAT") || !r.get(&el, 1) || !r.u32(&rows) || !r.u32(&cols)) return 5;
    const int eltype = -static_cast<int>(el);
    if (eltype != MT_REAL && eltype != MT_COMPLEX && eltype != MT_STRING && eltype != MT_POINTER)
        return 2;
    if (rows > INT_MAX || cols > INT_MAX) return 5;
    const int64_t n = static_cast<int64_t>(rows) * cols;
    // every element takes at least four bytes of the stream
    if (n > r.left / 4) return 5;
    MObj* o = m_mkmat("", eltype, static_cast<int>(rows), static_cast<int>(cols));
    if (!o) return 4;
    r.objs[num] = o;
    r.open[num] = true;
    int rc = readelems(r, o);
    r.open[num] = false;
    if (!rc && (!r.tag("TAM") || !r.tag("JBO"))) rc = 5;
    if (rc) {
        r.objs.erase(num);
        if (o->count <= 0) mo_freemat(o);
        return rc;
    }
    *out = o;
    return 0;
}

int moio_read(FILE* fp, MObj** out, std::string* name) {
    *out = nullptr;
    if (busy) return 1;
    struct stat st;
    const long at = ftell(fp);
    int64_t left = INT64_MAX / 4;
    if (!fstat(fileno(fp), &st) && S_ISREG(st.st_mode) && at >= 0) left = st.st_size - at;
    if (left <= 0) return 8;
    MoReader r{fp, false, left, {}, {}};
    char top[6];
    uint8_t ord[2];
    if (!r.get(top, 6)) return left < 6 ? 8 : 5;
    if (memcmp(top, "MOTOP", 6) || !r.get(ord, 2) || ord[0] != 0 || (ord[1] != 1 && ord[1] != 2))
        return 5;
    r.swap = ord[1] != (lowfirst() ? 2 : 1);
    busy = true;
    MObj* o = nullptr;
    int rc = readobj(r, &o, name);
    if (!rc && !r.tag("POTOM")) rc = 5;
    busy = false;
    if (rc) {
        if (o && o->count <= 0) mo_freemat(o);
        return rc;
    }
    *out = o;
    return 0;
}

int fputmatrix(FILE* fp, const MObj* o) {
    return moio_write(fp, o, "");
}

int fgetmatrix(FILE* fp, MObj** out) {
    std::string name;
    const int rc = moio_read(fp, out, &name);
    if (rc == 8) {
        *out = m_mkmat("", MT_REAL, 0, 0);
        return *out ? 0 : 4;
    }
    return rc;
}

} // namespace korvu
