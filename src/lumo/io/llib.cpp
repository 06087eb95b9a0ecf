// Object files and libraries of compiled functions: the header with its two
// tables of offsets, members written twice (low-to-high, then the same words
// reversed instruction by instruction), and the loader.
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/program/program.h"
#include "lumo/codegen/opcodes.h"
#include "lumo/io/lumofile.h"

namespace korvu {

static bool host_lowfirst() {
    const uint16_t one = 1;
    uint8_t b;
    memcpy(&b, &one, 1);
    return b == 1;
}

static int native_order() {
    return host_lowfirst() ? 2 : 1;
}

// Integers in a given byte order (2 low-to-high, 1 high-to-low).
static void put32(uint8_t* p, uint32_t v, int order) {
    for (int i = 0; i < 4; i++) p[order == 2 ? i : 3 - i] = static_cast<uint8_t>(v >> (8 * i));
}
static void put16(uint8_t* p, uint16_t v, int order) {
    p[order == 2 ? 0 : 1] = static_cast<uint8_t>(v);
    p[order == 2 ? 1 : 0] = static_cast<uint8_t>(v >> 8);
}
static uint32_t get32(const uint8_t* p, int order) {
    uint32_t v = 0;
    for (int i = 0; i < 4; i++) v |= static_cast<uint32_t>(p[order == 2 ? i : 3 - i]) << (8 * i);
    return v;
}
static uint16_t get16(const uint8_t* p, int order) {
    return static_cast<uint16_t>(p[order == 2 ? 0 : 1] | (p[order == 2 ? 1 : 0] << 8));
}

static size_t hdrsize(int cap) {
    return 16 + static_cast<size_t>(cap) * (8 + LLIB_NAMELEN);
}

// The header as bytes, in the file's order.
static std::vector<uint8_t> hdrbytes(const LlibCtx* c) {
    std::vector<uint8_t> h(hdrsize(c->cap), 0);
    memcpy(h.data(), llib_magic, 4);
    h[4] = static_cast<uint8_t>(c->order);
    h[5] = 0;
    put16(&h[6], static_cast<uint16_t>(c->version), c->order);
    put32(&h[8], static_cast<uint32_t>(c->n), c->order);
    put32(&h[12], static_cast<uint32_t>(c->cap), c->order);
    for (int i = 0; i < c->cap; i++) {
        put32(&h[16 + 4 * i], c->off_hl[i], c->order);
        put32(&h[16 + 4 * (c->cap + i)], c->off_lh[i], c->order);
        memcpy(&h[16 + 8 * c->cap + LLIB_NAMELEN * i], c->names[i], LLIB_NAMELEN);
    }
    return h;
}

int llib_create(const char* path, bool object_file, int order) {
    LlibCtx* c = new LlibCtx;
    c->order = order == 1 ? 1 : 2;
    c->version = LLIB_VERSION;
    c->cap = object_file ? LLIB_CAP_LO : LLIB_CAP_LIB;
    const std::vector<uint8_t> h = hdrbytes(c);
    delete c;
    FILE* fp = fopen(path, "wb");
    if (!fp) return fierr(603, path);
    const bool ok = fwrite(h.data(), 1, h.size(), fp) == h.size();
    if (fclose(fp) != 0 || !ok) {
        remove(path);
        return errtext(693, "could not write into library\n");
    }
    return 0;
}

static int notlib(const LlibCtx* c, bool quiet) {
    return quiet ? 610 : errorf(610, "%s not lumo library\n", c->path.c_str());
}

int llib_init(LlibCtx* c, const char* name, bool write, bool search, bool quiet) {
    c->path = name;
    if (search) {
        char found[4096];
        if (!srchado(name, "llib", 1, found, sizeof found)) {
            if (!quiet) errorf(601, "%s.llib not found\n", name);
            return 601;
        }
        c->path = found;
    }
    c->fp = fopen(c->path.c_str(), write ? "r+b" : "rb");
    if (!c->fp) {
        if (errno == ENOENT) return quiet ? 601 : errorf(601, "%s not found\n", c->path.c_str());
        return quiet ? 603 : fierr(603, c->path.c_str());
    }
    uint8_t h[16];
    int rc = 0;
    if (fread(h, 1, 16, c->fp) != 16 || memcmp(h, llib_magic, 4) || (h[4] != 1 && h[4] != 2) ||
        h[5] != 0) {
        rc = notlib(c, quiet);
    } else {
        c->order = h[4];
        c->version = get16(&h[6], c->order);
        c->n = static_cast<int32_t>(get32(&h[8], c->order));
        c->cap = static_cast<int32_t>(get32(&h[12], c->order));
        if (c->version > LLIB_VERSION) {
            rc = quiet ? 610 : errorf(610, "%s from a more recent version of Korvu\n", name);
        } else if (c->version < LLIB_VERSION) {
            rc = quiet ? 610 : errorf(610, "%s from a older version of Korvu\n", name);
        } else if ((c->cap != LLIB_CAP_LO && c->cap != LLIB_CAP_LIB) || c->n < 0 || c->n > c->cap) {
            rc = notlib(c, quiet);
        } else {
            std::vector<uint8_t> t(hdrsize(c->cap) - 16);
            if (fread(t.data(), 1, t.size(), c->fp) != t.size()) {
                rc = notlib(c, quiet);
            } else {
                for (int i = 0; i < c->cap; i++) {
                    c->off_hl[i] = get32(&t[4 * i], c->order);
                    c->off_lh[i] = get32(&t[4 * (c->cap + i)], c->order);
                    memcpy(c->names[i], &t[8 * c->cap + LLIB_NAMELEN * i], LLIB_NAMELEN);
                    c->names[i][LLIB_NAMELEN - 1] = 0;
                }
            }
        }
    }
    if (rc) llib_close(c);
    return rc;
}

void llib_close(LlibCtx* c) {
    if (c->fp) fclose(c->fp);
    c->fp = nullptr;
}

int llib_nmbr(const LlibCtx* c) {
    return c->n;
}

uint32_t llib_search(const LlibCtx* c, const char* name) {
    for (int i = 0; i < c->n; i++)
        if (!strcmp(c->names[i], name)) return host_lowfirst() ? c->off_lh[i] : c->off_hl[i];
    return 0;
}

bool llibofficial(const char* name) {
    return strlen(name) >= 5 && !strncmp(name, "llumo", 5);
}

bool llib_validname(const char* name) {
    const size_t n = strlen(name);
    if (n == 0 || n > 32 || name[0] != 'l') return false;
    for (size_t i = 0; i < n; i++) {
        const char ch = name[i];
        if (!((ch >= 'a' && ch <= 'z') || (ch >= 'A' && ch <= 'Z') || (ch >= '0' && ch <= '9') ||
              ch == '_'))
            return false;
    }
    return true;
}

int m_cleanpgm(uint32_t* code, int nwords) {
    int at = 2;
    while (at < nwords) {
        const int len = m_lofmop(code, at, nwords);
        if (!len) return -1;
        if (code[at] == MOP_FINDF) code[at + 1] = code[at + 2] = 0;
        at += len;
    }
    return 0;
}

// One copy of a member: header and code in the order given.
static void memberbytes(std::vector<uint8_t>& out, const LumoFcn* f, const uint32_t* code,
                        int order) {
    const size_t at = out.size();
    out.resize(at + LLIB_MEMBERHDR + 4u * static_cast<size_t>(f->nwords));
    uint8_t* p = &out[at];
    put32(p, 4u * static_cast<uint32_t>(f->nwords), order);
    put32(p + 4, static_cast<uint32_t>(f->nwords), order);
    put32(p + 8, static_cast<uint32_t>(f->eltype), order);
    put16(p + 12, static_cast<uint16_t>(f->orgtype), order);
    put16(p + 14, 2, order); // a function
    put16(p + 16, static_cast<uint16_t>(f->code[0]), order);
    memcpy(p + LLIB_MEMBERHDR, code, 4u * static_cast<size_t>(f->nwords));
}

int llib_add(LlibCtx* c, const LumoFcn* f, const char* name) {
    if (c->version != LLIB_VERSION)
        return errtext(610, "cannot add members to old-format libarary\n");
    for (int i = 0; i < c->n; i++)
        if (!strcmp(c->names[i], name)) return errorf(602, "%s already member of library\n", name);
    if (c->n >= c->cap)
        return errorf(610, "%s full; it holds at most %d members\n", c->path.c_str(), c->cap);
    if (strlen(name) >= LLIB_NAMELEN) return errorf(198, "%s:  name too long\n", name);
    std::vector<uint32_t> low;
    try {
        low.assign(f->code, f->code + f->nwords);
    } catch (...) {
        return errtext(9710, "no memory to write library\n");
    }
    if (m_cleanpgm(low.data(), f->nwords)) return errtext(9711, "code of function invalid\n");
    std::vector<uint32_t> high = low;
    const bool lowhost = host_lowfirst();
    // the words in memory are in this machine's order: swap the copy that
    // is foreign to it
    std::vector<uint32_t>& foreign = lowhost ? high : low;
    if (m_byteswap(foreign.data(), f->nwords, false))
        return errtext(9711, "code of function invalid\n");
    std::vector<uint8_t> bytes;
    memberbytes(bytes, f, low.data(), 2);
    const size_t half = bytes.size();
    memberbytes(bytes, f, high.data(), 1);
    if (fseek(c->fp, 0, SEEK_END)) return errtext(693, "could not write into library\n");
    const long end = ftell(c->fp);
    if (end < 0 || static_cast<uint64_t>(end) + bytes.size() > 0xffffffffu)
        return errtext(693, "could not write into library\n");
    const bool wrote = fwrite(bytes.data(), 1, bytes.size(), c->fp) == bytes.size();
    const int i = c->n;
    c->off_lh[i] = static_cast<uint32_t>(end);
    c->off_hl[i] = static_cast<uint32_t>(end + static_cast<long>(half));
    memset(c->names[i], 0, LLIB_NAMELEN);
    snprintf(c->names[i], LLIB_NAMELEN, "%s", name);
    c->n++;
    const std::vector<uint8_t> h = hdrbytes(c);
    bool ok = wrote && fflush(c->fp) == 0 && fseek(c->fp, 0, SEEK_SET) == 0 &&
              fwrite(h.data(), 1, h.size(), c->fp) == h.size() && fflush(c->fp) == 0;
    if (!ok) {
        // back to the file as it was
        c->n--;
        c->off_lh[i] = c->off_hl[i] = 0;
        memset(c->names[i], 0, LLIB_NAMELEN);
        const std::vector<uint8_t> old = hdrbytes(c);
        const bool back = fseek(c->fp, 0, SEEK_SET) == 0 &&
                          fwrite(old.data(), 1, old.size(), c->fp) == old.size() &&
                          fflush(c->fp) == 0 && ftruncate(fileno(c->fp), end) == 0;
        return errtext(693, back ? "could not write into library\n"
                                 : "error writing file; library corrupt\n");
    }
    return 0;
}

int llib_load1(const LlibCtx* c, uint32_t offset, LlibMember* m) {
    uint8_t h[LLIB_MEMBERHDR];
    if (!offset || fseek(c->fp, static_cast<long>(offset), SEEK_SET) ||
        fread(h, 1, sizeof h, c->fp) != sizeof h)
        return 5;
    const int o = native_order();
    m->bytes = static_cast<int32_t>(get32(h, o));
    m->nwords = static_cast<int32_t>(get32(h + 4, o));
    m->eltype = static_cast<int32_t>(get32(h + 8, o));
    m->orgtype = static_cast<int16_t>(get16(h + 12, o));
    m->dttype = static_cast<int16_t>(get16(h + 14, o));
    m->format = static_cast<int16_t>(get16(h + 16, o));
    if (m->nwords < 3 || m->nwords > (1 << 28) ||
        static_cast<int64_t>(m->bytes) != 4 * static_cast<int64_t>(m->nwords) || m->dttype != 2)
        return 5;
    if (m->format < LLIB_FMT_OLDEST) return 1;
    if (m->format > LLIB_FMT_NEWEST) return 2;
    return 0;
}

// Every instruction has its length and every jump lands inside the code.
static bool codeokay(const uint32_t* code, int n) {
    int at = 2;
    while (at < n) {
        const int len = m_lofmop(code, at, n);
        if (!len) return false;
        for (int k = 1; k < len; k++)
            if (mop_operand_is_addr(code[at], k) && code[at + k] >= static_cast<uint32_t>(n))
                return false;
        at += len;
    }
    return at == n;
}

int llib_load2(const LlibCtx* c, uint32_t offset, const LlibMember* m, const char* name,
               LumoFcn** out) {
    *out = nullptr;
    struct stat st;
    if (fstat(fileno(c->fp), &st) ||
        static_cast<int64_t>(offset) + LLIB_MEMBERHDR + m->bytes > st.st_size)
        return 610;
    std::vector<uint32_t> code(static_cast<size_t>(m->nwords));
    if (fseek(c->fp, static_cast<long>(offset) + LLIB_MEMBERHDR, SEEK_SET) ||
        fread(code.data(), 4, code.size(), c->fp) != code.size())
        return 610;
    if (code[0] != static_cast<uint32_t>(m->format) || !codeokay(code.data(), m->nwords))
        return 610;
    const size_t size = offsetof(LumoFcn, code) + 4u * code.size();
    auto* f = static_cast<LumoFcn*>(dmadd(name, DM_LUMOFCN, 0, size));
    if (!f) return 3900;
    f->nwords = m->nwords;
    f->eltype = m->eltype;
    f->orgtype = m->orgtype;
    f->count = 0;
    f->replaced = 0;
    f->pad = 0;
    memcpy(f->code, code.data(), 4u * code.size());
    *out = f;
    return 0;
}

} // namespace korvu
