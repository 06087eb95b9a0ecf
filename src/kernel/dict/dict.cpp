// The dictionary manager: items, the name hash and the type chains.
#include "kernel/dict/dict.h"

#include <cstdlib>
#include <cstring>

#include "kernel/errors/errors.h"
#include "kernel/loop/limits.h"
#include "kernel/loop/loop.h"
#include "kernel/loop/scratch.h"
#include "output/spout.h"

namespace korvu {

static DmItem* dm_hname[dm_nbucket];
static DmItem* dm_dtyp[dm_ntype];
static dm_alloc_fn dm_alloc = nullptr;
void (*dm_rm_hook)(void* item) = nullptr;

// A program that drops itself must not leave the loop with a dangling body.
static inline void forget(void* item) {
    if (sys_pgmloc == item) sys_pgmloc = nullptr;
    if (dm_rm_hook) dm_rm_hook(item);
}

void dmsetalloc(dm_alloc_fn fn) {
    dm_alloc = fn;
}

void dminit() {
    std::memset(dm_hname, 0, sizeof dm_hname);
    std::memset(dm_dtyp, 0, sizeof dm_dtyp);
}

static inline bool oktype(int type) {
    return type >= 0 && type < dm_ntype;
}

// --- chain primitives -------------------------------------------------------

static inline void link_name(DmItem* h) {
    DmItem*& head = dm_hname[h->hash % dm_nbucket];
    h->nprev = nullptr;
    h->nnext = head;
    if (head) head->nprev = h;
    head = h;
}

static inline void unlink_name(DmItem* h) {
    if (h->nprev)
        h->nprev->nnext = h->nnext;
    else
        dm_hname[h->hash % dm_nbucket] = h->nnext;
    if (h->nnext) h->nnext->nprev = h->nprev;
}

static inline void link_type(DmItem* h) {
    DmItem*& head = dm_dtyp[h->type];
    h->tprev = nullptr;
    h->tnext = head;
    if (head) head->tprev = h;
    head = h;
}

static inline void unlink_type(DmItem* h) {
    if (h->tprev)
        h->tprev->tnext = h->tnext;
    else
        dm_dtyp[h->type] = h->tnext;
    if (h->tnext) h->tnext->tprev = h->tprev;
}

// --- out of memory ----------------------------------------------------------

static const char* kind_of_type(int type, bool* paren) {
    *paren = false;
    if (type >= 49 && type <= 3058) return "held estimates";
    if (type >= DM_LMAC0 && type <= DM_LMACMAX) return "local macro";
    *paren = true;
    if (type >= 3123 && type <= 3186) return "scalar return(";
    if (type >= 3187 && type <= 3250) return "local macro return(";
    if (type >= 3251 && type <= 3442) return "matrix return(";
    switch (type) {
    case 20: return "scalar r(";
    case 21: return "local macro r(";
    case 22:
    case 23:
    case 24: return "matrix r(";
    case 25: return "scalar e(";
    case 26: return "local macro e(";
    case 27:
    case 28:
    case 29: return "matrix e(";
    case 30: return "local macro s(";
    default: break;
    }
    *paren = false;
    switch (type) {
    case 1: return "value label";
    case 2: return "global macro";
    case 3: return "varlist";
    case 4: return "last command";
    case 5: return "saved estimation result";
    case 6: return "variable label";
    case 7: return "program";
    case 9:
    case 10:
    case 11: return "matrix";
    case 12: return "command buffer";
    case 13: return "constraint";
    case 14: return "saved graph";
    case 15: return "scalar";
    case 16: return "estimates preserve/restore";
    case 17: return "characteristic";
    case 18: return "tracking the postfile";
    case 19: return "internal temporary matrix";
    case 31: return "plugin";
    case 33: return "byobs subcommand";
    case 36: return "file handle";
    case 37: return "program index";
    default: return "item";
    }
}

static void nomemory(const char* name, int type) {
    bool paren;
    const char* kind = kind_of_type(type, &paren);
    if (paren)
        errsayf("insufficient memory for %s%s)\n", kind, name);
    else
        errsayf("insufficient memory for %s %s\n", kind,
                type >= DM_LMAC0 && type <= DM_LMACMAX && name[0] ? name + 1 : name);
}

// --- adding -----------------------------------------------------------------

void* dmadd(const char* name, int type, int tag, size_t size) {
    if (!oktype(type)) return nullptr;
    void* block = dm_alloc ? dm_alloc(size + dm_hdrsize) : std::malloc(size + dm_hdrsize);
    if (!block) {
        nomemory(name, type);
        return nullptr;
    }
    DmItem* h = static_cast<DmItem*>(block);
    h->alloc = h->used = size;
    h->hash = dmhash(name);
    h->tag = tag;
    h->type = type;
    // The caller guarantees the length; copy at most 32 bytes all the same.
    size_t n = std::strlen(name);
    if (n > dm_namelen) n = dm_namelen;
    std::memcpy(h->name, name, n);
    h->name[n] = 0;
    h->hits = 0;
    link_name(h);
    link_type(h);
    return dmval(h);
}

void* dmsave(const char* name, int type, int tag, const void* data, size_t size) {
    void* v = dmadd(name, type, tag, size);
    if (v && size) std::memcpy(v, data, size);
    return v;
}

// --- finding ----------------------------------------------------------------

static inline DmItem* lookup(const char* name, int type, uint32_t hash) {
    for (DmItem* h = dm_hname[hash % dm_nbucket]; h; h = h->nnext)
        if (h->type == type && h->hash == hash && std::strcmp(h->name, name) == 0) return h;
    return nullptr;
}

void* dmfind0(const char* name, int type) {
    DmItem* h = lookup(name, type, dmhash(name));
    return h ? dmval(h) : nullptr;
}

void* dmfind(const char* name, int type, int* tagout) {
    DmItem* h = lookup(name, type, dmhash(name));
    if (!h) return nullptr;
    if (tagout) *tagout = h->tag;
    if (++h->hits >= 11) {
        h->hits = 0;
        if (h->nprev) {
            unlink_name(h);
            link_name(h);
        }
    }
    return dmval(h);
}

void* dmfindany(const char* name) {
    uint32_t hash = dmhash(name);
    for (DmItem* h = dm_hname[hash % dm_nbucket]; h; h = h->nnext)
        if (h->hash == hash && std::strcmp(h->name, name) == 0) return dmval(h);
    return nullptr;
}

void* dmnamenext(const void* item, int type) {
    if (!item) return nullptr;
    const DmItem* from = dmhdr(item);
    for (DmItem* h = from->nnext; h; h = h->nnext)
        if ((type == -1 || h->type == type) && h->hash == from->hash &&
            std::strcmp(h->name, from->name) == 0)
            return dmval(h);
    return nullptr;
}

void* dmuse(const char* name, int type, int* tagout, void* dst, long n) {
    void* v = dmfind(name, type, tagout);
    if (!v) return nullptr;
    DmItem* h = dmhdr(v);
    size_t len = n == -1 ? (h->tag > 0 ? static_cast<size_t>(h->tag) : 0) : static_cast<size_t>(n);
    if (len && dst) std::memcpy(dst, v, len);
    return v;
}

void* dmreadd(const char* name, int type, int tag, size_t size) {
    void* v = dmfind0(name, type);
    if (v) {
        DmItem* h = dmhdr(v);
        int64_t a = static_cast<int64_t>(h->alloc), s = static_cast<int64_t>(size);
        int64_t slack = s / 2 < 1024 ? s / 2 : 1024;
        if (slack < 128) slack = 128;
        if (s <= a && s >= a - slack) {
            h->tag = tag;
            h->used = size;
            return v;
        }
        dmrm(v);
    }
    return dmadd(name, type, tag, size);
}

int dmsetused(void* item, size_t used) {
    DmItem* h = dmhdr(item);
    if (used > h->alloc) return -1;
    h->used = used;
    return 0;
}

// --- walking ----------------------------------------------------------------

void* dmnext(const void* item, char* nameout, int type, int* typeout) {
    DmItem* h;
    if (type == -1) {
        int t;
        if (item) {
            const DmItem* cur = dmhdr(item);
            h = cur->tnext;
            t = cur->type + 1;
        } else {
            h = nullptr;
            t = 0;
        }
        while (!h && t < dm_ntype) h = dm_dtyp[t++];
    } else {
        if (!oktype(type)) return nullptr;
        h = item ? dmhdr(item)->tnext : dm_dtyp[type];
    }
    if (!h) return nullptr;
    if (nameout) copytext(nameout, NAMELEN + 1, h->name);
    if (typeout) *typeout = h->type;
    return dmval(h);
}

long dmcount(int type) {
    long n = 0;
    if (type == -1) {
        for (int t = 0; t < dm_ntype; ++t)
            for (DmItem* h = dm_dtyp[t]; h; h = h->tnext) ++n;
    } else if (oktype(type)) {
        for (DmItem* h = dm_dtyp[type]; h; h = h->tnext) ++n;
    }
    return n;
}

// --- removing and moving ----------------------------------------------------

void dmrm(void* item) {
    if (!item) return;
    forget(item);
    DmItem* h = dmhdr(item);
    unlink_name(h);
    unlink_type(h);
    std::free(h);
}

void dmzap(int type) {
    if (!oktype(type)) return;
    DmItem* h = dm_dtyp[type];
    dm_dtyp[type] = nullptr;
    while (h) {
        DmItem* next = h->tnext;
        forget(dmval(h));
        unlink_name(h);
        std::free(h);
        h = next;
    }
}

void dmretype(void* item, int type) {
    if (!item || !oktype(type)) return;
    DmItem* h = dmhdr(item);
    if (h->type == type) return;
    unlink_type(h);
    h->type = type;
    link_type(h);
}

void dmretypeall(int from, int to) {
    if (!oktype(from) || !oktype(to) || from == to) return;
    DmItem* first = dm_dtyp[from];
    if (!first) return;
    DmItem* last = first;
    for (DmItem* h = first; h; h = h->tnext) {
        h->type = to;
        last = h;
    }
    dm_dtyp[from] = nullptr;
    // The moved list goes in front of the target's, as new items would.
    last->tnext = dm_dtyp[to];
    if (dm_dtyp[to]) dm_dtyp[to]->tprev = last;
    dm_dtyp[to] = first;
}

void dmrename(void* item, const char* name) {
    if (!item) return;
    DmItem* h = dmhdr(item);
    unlink_name(h);
    size_t n = std::strlen(name);
    if (n > dm_namelen) n = dm_namelen;
    std::memmove(h->name, name, n);
    h->name[n] = 0;
    h->hash = dmhash(h->name);
    link_name(h);
}

void* dmcp(const char* toname, int totype, const char* fromname, int fromtype,
           int removeifmissing) {
    int tag = 0;
    void* src = dmfind(fromname, fromtype, &tag);
    if (!src) {
        if (removeifmissing) dmrm(dmfind0(toname, totype));
        return nullptr;
    }
    if (src == dmfind0(toname, totype)) return src; // copy onto itself
    DmItem* s = dmhdr(src);
    size_t size = s->used;
    void* dst = dmreadd(toname, totype, tag, size);
    if (dst && size) std::memcpy(dst, dmval(s), size);
    return dst;
}

void dmmemory(uint64_t* allocout, uint64_t* usedout) {
    uint64_t a = 0, u = 0;
    for (int t = 0; t < dm_ntype; ++t)
        for (DmItem* h = dm_dtyp[t]; h; h = h->tnext) {
            a += h->alloc;
            u += h->used;
        }
    if (allocout) *allocout = a;
    if (usedout) *usedout = u;
}

void dmshutdown() {
    for (int t = 0; t < dm_ntype; ++t) {
        DmItem* h = dm_dtyp[t];
        while (h) {
            DmItem* next = h->tnext;
            forget(dmval(h));
            std::free(h);
            h = next;
        }
    }
    dminit();
}

// --- checking ---------------------------------------------------------------

static void summary(const char* title, DmItem* const* heads, int n, bool bytype) {
    int used = 0, minlen = 0, maxlen = 0;
    long total = 0;
    for (int i = 0; i < n; ++i) {
        int len = 0;
        for (DmItem* h = heads[i]; h; h = bytype ? h->tnext : h->nnext) ++len;
        if (!len) continue;
        if (!used || len < minlen) minlen = len;
        if (len > maxlen) maxlen = len;
        ++used;
        total += len;
    }
    spout21(title);
    spoutf("      used = %d/%d = ", used, n);
    spoutf("%.1f%%\n", n ? 100.0 * used / n : 0.0);
    spoutf("      min length = %d\n", minlen);
    spoutf("      max length = %d\n", maxlen);
    spout21("      avg length = ");
    spoutf("%.2f\n", used ? static_cast<double>(total) / used : 0.0);
}

int dmdebug() {
    int n1 = 0, n2 = 0;
    unsigned long total1 = 0, total2 = 0;
    bool broken = false;
    for (int b = 0; b < dm_nbucket; ++b) {
        DmItem* prev = nullptr;
        for (DmItem* h = dm_hname[b]; h; prev = h, h = h->nnext) {
            if (h->nprev != prev || h->hash % dm_nbucket != static_cast<uint32_t>(b)) broken = true;
            ++n1;
            total1 += h->alloc;
        }
    }
    for (int t = 0; t < dm_ntype; ++t) {
        DmItem* prev = nullptr;
        for (DmItem* h = dm_dtyp[t]; h; prev = h, h = h->tnext) {
            if (h->tprev != prev || h->type != t) broken = true;
            ++n2;
            total2 += h->alloc;
        }
    }
    spoutf("n1=%d total1=%lu\n", n1, total1);
    spoutf("n2=%d total2=%lu\n", n2, total2);
    if (n1 != n2 || total1 != total2) spout21("--> totals not equal\n");
    if (broken) spout21("--> chains broken\n");
    summary("Queue summary:\n", dm_hname, dm_nbucket, false);
    summary("Type summary:\n", dm_dtyp, dm_ntype, true);
    return 0;
}

bool dmcheck() {
    long n1 = 0, n2 = 0;
    for (int b = 0; b < dm_nbucket; ++b) {
        DmItem* prev = nullptr;
        for (DmItem* h = dm_hname[b]; h; prev = h, h = h->nnext) {
            if (h->nprev != prev || h->hash % dm_nbucket != static_cast<uint32_t>(b)) return false;
            ++n1;
        }
    }
    for (int t = 0; t < dm_ntype; ++t) {
        DmItem* prev = nullptr;
        for (DmItem* h = dm_dtyp[t]; h; prev = h, h = h->tnext) {
            if (h->tprev != prev || h->type != t) return false;
            ++n2;
        }
    }
    return n1 == n2;
}

} // namespace korvu
