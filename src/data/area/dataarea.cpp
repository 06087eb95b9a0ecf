// The data block, the fixed tables, and the reshaping of the rectangle.
#include "data/area/dataarea.h"
#include "data/area/areahooks.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <sys/mman.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "data/area/storage.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/limits.h"
#include "kernel/loop/loop.h"
#include "kernel/loop/scratch.h"
#include "kernel/macro/macro.h"
#include "output/spout.h"

namespace korvu {

uint64_t totalmemory = 0; // 0: default_memory() at start-up
int32_t matsize = DEFAULT_MATSIZE;
int32_t nobs = 0, nvar = 0;
uint8_t updata = 0;
uint64_t cur_tm = 0;
uint8_t* begin_of_memory = nullptr;
int32_t* mapj = nullptr;
int32_t tmaxobs = 0;
uint8_t* xtraptr = nullptr;
uint8_t* cddaptr = nullptr;
uint8_t* vlblptr = nullptr;
uint64_t memorysize = 0;
int32_t syslrecl = 0;
int32_t maxobs = 0;
int32_t maxvar = 0;
uint64_t cur_matmem = 0;
uint64_t cur_fixed = 0;
uint8_t virtualflg = 0;
uint8_t mvmodern = 1;
uint8_t sysflag = 0;
uint32_t n_repart = 0, n_shift = 0;
uint64_t n_bytes_moved = 0, n_records_moved = 0;
int64_t colstride = 0;

int32_t* mapi = nullptr;
int16_t* srtlist = nullptr;
char* lbllist = nullptr;
char* fmtlist = nullptr;
char* varlist = nullptr;
uint8_t* typlist = nullptr;
int16_t* sysbylist = nullptr;
VarRcp* varlist_rcp = nullptr;
char* space_for_macexp = nullptr;

DataAreaHooks dahooks = {};

uint8_t startup_trouble = 0;
uint64_t asked_totalmemory = 0;
int32_t asked_maxmaxvar = 0, asked_matsize = 0;

// varlist_vr points at the command parser's own list until the fixed tables
// exist, and back at it when they are freed.
static int32_t* parser_varlist_vr = nullptr;

// ---------------------------------------------------------------------------
// Storage-type helpers
// ---------------------------------------------------------------------------
void map_vartypes_to_old(uint8_t* codes, int n) {
    for (int k = 0; k < n; k++)
        if (codes[k] >= KV_BYTE) codes[k] = static_cast<uint8_t>(codes[k] - 5);
}

const char* typename_of(int code) {
    static char buf[8];
    switch (code) {
    case KV_BYTE:
    case KV_OLDBYTE: return "byte";
    case KV_INT:
    case KV_OLDINT: return "int";
    case KV_LONG:
    case KV_OLDLONG: return "long";
    case KV_FLOAT:
    case KV_OLDFLOAT: return "float";
    case KV_DOUBLE:
    case KV_OLDDOUBLE: return "double";
    default: snprintf(buf, sizeof buf, "str%d", code); return buf;
    }
}

// ---------------------------------------------------------------------------
// Fixed tables
// ---------------------------------------------------------------------------
FixedTrack fixed_tracks[NTRACKS];
int n_fixed_tracks = 0;
int fixed_untracked = 0;
static std::vector<void*> untracked_blocks;

struct FixedClient {
    int (*alloc)();
    void (*release)();
};
static std::vector<FixedClient> fixed_clients;

void register_fixed_client(int (*alloc)(), void (*release)()) {
    fixed_clients.push_back({alloc, release});
}

void* allocfixed(uint64_t bytes, const char* label) {
    void* p = calloc(bytes ? bytes : 1, 1);
    if (!p) return nullptr;
    if (n_fixed_tracks < NTRACKS) {
        FixedTrack& t = fixed_tracks[n_fixed_tracks++];
        t.ptr = p;
        t.size = bytes;
        snprintf(t.label, sizeof t.label, "%.7s", label);
        cur_fixed += bytes;
    } else {
        fixed_untracked++;
        untracked_blocks.push_back(p);
    }
    return p;
}

void report_allocfixed() {
    for (int k = 0; k < n_fixed_tracks; k++)
        spoutf("%-8s %12lu\n", fixed_tracks[k].label,
               static_cast<unsigned long>(fixed_tracks[k].size));
    spoutf("%-8s %12lu\n", "total", static_cast<unsigned long>(cur_fixed));
    if (fixed_untracked) spout21("NTRACKS too small\n");
}

void freefixed() {
    for (auto& c : fixed_clients)
        if (c.release) c.release();
    for (int k = 0; k < n_fixed_tracks; k++) free(fixed_tracks[k].ptr);
    for (void* p : untracked_blocks) free(p);
    untracked_blocks.clear();
    n_fixed_tracks = 0;
    fixed_untracked = 0;
    cur_fixed = 0;
    if (parser_varlist_vr) varlist_vr = parser_varlist_vr;
    mapi = nullptr;
    srtlist = sysbylist = nullptr;
    lbllist = fmtlist = varlist = space_for_macexp = nullptr;
    typlist = nullptr;
    varlist_rcp = nullptr;
}

static int alloc_fixed_tables() {
    const uint64_t m = static_cast<uint64_t>(maxmaxvar);
    setlimits(maxmaxvar);
    if (!parser_varlist_vr) parser_varlist_vr = varlist_vr;
    varlist_vr = static_cast<int32_t*>(allocfixed(4 * m + 4, "vl_vr"));
    mapi = static_cast<int32_t*>(allocfixed(4 * m, "mapi"));
    srtlist = static_cast<int16_t*>(allocfixed(2 * m + 2, "srt"));
    lbllist = static_cast<char*>(allocfixed(33 * m, "lbl"));
    fmtlist = static_cast<char*>(allocfixed(12 * m, "fmt"));
    varlist = static_cast<char*>(allocfixed(33 * m, "varlist"));
    typlist = static_cast<uint8_t*>(allocfixed(m, "typ"));
    sysbylist = static_cast<int16_t*>(allocfixed(2 * (m + 1), "by"));
    varlist_rcp = static_cast<VarRcp*>(allocfixed(16 * (m + 1), "vl_rcp"));
    space_for_macexp = static_cast<char*>(allocfixed(static_cast<uint64_t>(macrolen), "macexp"));
    if (!varlist_vr || !mapi || !srtlist || !lbllist || !fmtlist || !varlist || !typlist ||
        !sysbylist || !varlist_rcp || !space_for_macexp)
        return 1;
    for (auto& c : fixed_clients)
        if (c.alloc && c.alloc()) return 1;
    return 0;
}

// ---------------------------------------------------------------------------
// The block
// ---------------------------------------------------------------------------
static inline uint8_t* align16up(uint8_t* p) {
    return reinterpret_cast<uint8_t*>((reinterpret_cast<uintptr_t>(p) + 15) & ~uintptr_t{15});
}
static inline uint8_t* align16down(uint8_t* p) {
    return reinterpret_cast<uint8_t*>(reinterpret_cast<uintptr_t>(p) & ~uintptr_t{15});
}

int setmatsize(int32_t n) {
    uint64_t bytes = static_cast<uint64_t>(n) * (static_cast<uint64_t>(n) + 11) * 8;
    void* volatile p = malloc(bytes);
    if (!p) return 1;
    free(p);
    matsize = n;
    cur_matmem = bytes;
    return 0;
}

// The arithmetic of creating a block: 0 or 3, 4, 9, with the start shape.
static int block_shape(uint64_t b, int64_t& width, int32_t& nv, int64_t& n) {
    if (b < 1024) return 3;
    width = 200;
    nv = std::min<int32_t>(200, maxmaxvar);
    n = static_cast<int64_t>((b - 16) / 204);
    if (n < 20) return 3;
    if (n > 0x7FFFFFFF) {
        width = maxlrecl;
        nv = maxmaxvar;
        n = static_cast<int64_t>((b - 16) / static_cast<uint64_t>(width + 4));
        if (n > 0x7FFFFFFF) return 4;
    }
    if (static_cast<uint64_t>(width + 4) * static_cast<uint64_t>(n) + 16 > b) return 9;
    return 0;
}

// The block comes straight from the kernel, zeroed, and is asked for huge
// pages: filling a gigabyte of records then costs hundreds of page faults,
// not hundreds of thousands. Behind the b bytes that count as the block lie
// 8 * maxlrecl more, never reported: the room that rounding each column's
// capacity up to a multiple of 8 cells can take beyond cddaptr.
static uint64_t block_mapped = 0;
static uint8_t* block_alloc(uint64_t b) {
    const uint64_t m = b + 8 * static_cast<uint64_t>(maxlrecl) + 64;
    void* p = mmap(nullptr, m, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (p == MAP_FAILED) return nullptr;
    madvise(p, m, MADV_HUGEPAGE);
    block_mapped = m;
    return static_cast<uint8_t*>(p);
}

static void block_free(uint8_t* p) {
    if (p) munmap(p, block_mapped);
    block_mapped = 0;
}

static inline int64_t stride_of(int64_t n) {
    return (n + 7) & ~int64_t{7};
}

int create_block(uint64_t b) {
    int64_t width, n;
    int32_t nv;
    int rc = block_shape(b, width, nv, n);
    if (rc) return rc;
    uint8_t* blk = block_alloc(b);
    if (!blk) return 5;
    begin_of_memory = blk;
    cur_tm = b;
    totalmemory = b;
    if (setmatsize(matsize)) {
        block_free(blk);
        begin_of_memory = nullptr;
        cur_tm = 0;
        return 6;
    }
    mapj = reinterpret_cast<int32_t*>(blk);
    for (int64_t k = 0; k < n; k++) mapj[k] = static_cast<int32_t>(k);
    xtraptr = align16up(blk + 4 * n);
    cddaptr = vlblptr = align16down(blk + b);
    memorysize = static_cast<uint64_t>(cddaptr - xtraptr);
    tmaxobs = static_cast<int32_t>(n);
    int64_t mo = static_cast<int64_t>(memorysize) / width;
    maxobs = static_cast<int32_t>(std::min<int64_t>(mo, 0x7FFFFFFF));
    if (n < mo) {
        memorysize = static_cast<uint64_t>(width * n) & ~uint64_t{15};
        cddaptr = vlblptr = xtraptr + memorysize;
        tmaxobs = maxobs = static_cast<int32_t>(memorysize / width);
    }
    maxvar = nv;
    syslrecl = static_cast<int32_t>(width);
    colstride = stride_of(maxobs);
    mapjperm = 0;
    mapjspan = 0;
    return 0;
}

void free_block() {
    block_free(begin_of_memory);
    begin_of_memory = nullptr;
    mapj = nullptr;
    xtraptr = cddaptr = vlblptr = nullptr;
    tmaxobs = maxobs = maxvar = syslrecl = 0;
    colstride = 0;
    mapjperm = 0;
    mapjspan = 0;
    memorysize = 0;
    cur_tm = 0;
}

static int try_alloc() {
    if (dahooks.class_context_init && dahooks.class_context_init()) return 1;
    if (dahooks.dict_init) dahooks.dict_init();
    if (alloc_fixed_tables()) {
        freefixed();
        return 1;
    }
    if (create_block(totalmemory)) {
        freefixed();
        return 1;
    }
    return 0;
}

void news_free() {
    free_block();
    freefixed();
    nobs = nvar = 0;
}

uint64_t default_memory() {
    const long pages = sysconf(_SC_PHYS_PAGES), size = sysconf(_SC_PAGESIZE);
    if (pages <= 0 || size <= 0) return DEFAULT_MEMORY;
    const uint64_t quarter =
        (static_cast<uint64_t>(pages) * static_cast<uint64_t>(size) / 4) & ~uint64_t{0xFFFFF};
    // the observation-pointer table at the block's start is written when the
    // block is made (4 bytes in 204): beyond 2 GB that alone would slow every
    // start, so the default stops there; set memory goes further
    const uint64_t cap = uint64_t{2} << 30;
    return quarter < DEFAULT_MEMORY ? DEFAULT_MEMORY : quarter > cap ? cap : quarter;
}

int news_alloc() {
    if (begin_of_memory || n_fixed_tracks) news_free();
    if (totalmemory < MIN_MEMORY) totalmemory = default_memory();
    asked_totalmemory = totalmemory;
    asked_maxmaxvar = maxmaxvar;
    asked_matsize = matsize;
    startup_trouble = 0;
    if (try_alloc() == 0) return 0;
    startup_trouble = 1;
    matsize = DEFAULT_MATSIZE;
    maxmaxvar = DEFAULT_MAXVAR;
    totalmemory = DEFAULT_MEMORY;
    if (matsize != asked_matsize || maxmaxvar != asked_maxmaxvar ||
        totalmemory != asked_totalmemory) {
        fprintf(stderr, "Could not initialize using set memory, set maxvar,\n");
        fprintf(stderr, "and set matsize preferences and/or start-up options.\n");
        fprintf(stderr, "Operating System refused to provide the memory.\n");
        fprintf(stderr, "Trying again using defaults.\n");
    }
    return try_alloc() ? -1 : 0;
}

// ---------------------------------------------------------------------------
// Saving the dictionary across a reallocation
// ---------------------------------------------------------------------------
static int tmpname(char* dst, size_t n) {
    static int32_t ctr = 0;
    return gettmpfn(dst, n, 'm', ++ctr);
}

// 0, 7 (cannot open) or 8 (cannot write).
static int dict_to_tmp(char* name, size_t n) {
    int fd = -1;
    for (int tries = 0; tries < 100 && fd < 0; tries++) {
        if (tmpname(name, n)) return 7;
        fd = open(name, O_WRONLY | O_CREAT | O_TRUNC | O_EXCL, 0666 & ~usermask);
    }
    if (fd < 0) return 7;
    int rc = dahooks.dict_write ? dahooks.dict_write(fd) : 0;
    if (close(fd) != 0) rc = 1;
    if (rc) {
        unlink(name);
        return 8;
    }
    return 0;
}

static void dict_from_tmp(const char* name) {
    if (dahooks.dict_init) dahooks.dict_init();
    int fd = open(name, O_RDONLY);
    if (fd < 0) {
        errtext(0, "tmp file vanished; macros etc. lost\n");
    } else {
        if (dahooks.dict_read && dahooks.dict_read(fd) == 1)
            errtext(0, "error reading temp file\n");
        close(fd);
    }
    unlink(name);
}

[[noreturn]] static void realloc_failed(const char* tmpfile) {
    fprintf(stderr, "Memory reallocation failed\n");
    unlink(tmpfile);
    if (dahooks.fatal_exit) dahooks.fatal_exit(900);
    exit(900);
}

int news_realloc(uint64_t bytes) {
    if (bytes == totalmemory) return 0;
    if (bytes < MIN_MEMORY) return 3;
    int64_t w, n;
    int32_t nv;
    int rc = block_shape(bytes, w, nv, n);
    if (rc) return rc;
    char name[FNLEN];
    rc = dict_to_tmp(name, sizeof name);
    if (rc) return rc;
    if (dahooks.dict_shutdown) dahooks.dict_shutdown();
    uint64_t old = cur_tm;
    free_block();
    int refused = create_block(bytes);
    if (refused && create_block(old)) realloc_failed(name);
    nobs = nvar = 0;
    dict_from_tmp(name);
    return refused;
}

int news_realloc_fixed(int32_t n) {
    n = std::clamp(n, MIN_MAXVAR, MAX_MAXVAR);
    if (n == maxmaxvar) return 0;
    if (dahooks.clear_saved_results) dahooks.clear_saved_results();
    if (dahooks.clear_discard) dahooks.clear_discard();
    char name[FNLEN];
    int rc = dict_to_tmp(name, sizeof name);
    if (rc) return rc;
    if (dahooks.dict_shutdown) dahooks.dict_shutdown();
    int32_t oldn = maxmaxvar;
    uint64_t oldb = cur_tm;
    free_block();
    freefixed();
    maxmaxvar = n;
    int refused = 0;
    if (alloc_fixed_tables() || create_block(oldb)) {
        refused = 5;
        free_block();
        freefixed();
        maxmaxvar = oldn;
        if (alloc_fixed_tables() || create_block(oldb)) realloc_failed(name);
    }
    nobs = nvar = 0;
    dict_from_tmp(name);
    if (dahooks.conslen_changed) dahooks.conslen_changed();
    return refused;
}

// ---------------------------------------------------------------------------
// Layout and repartition
// ---------------------------------------------------------------------------
static inline int64_t area_total() {
    return vlblptr - reinterpret_cast<uint8_t*>(mapj);
}
static inline int64_t area_dyn() {
    return vlblptr - cddaptr;
}
static inline int64_t area_data() {
    return cddaptr - reinterpret_cast<uint8_t*>(mapj);
}

bool layout_for(int64_t w, Layout& L) {
    if (w < 4) return false;
    int64_t p = (area_total() - 16) / (w + 4);
    if (p > 0x7FFFFFFF || p < 0) return false;
    uint8_t* base = align16up(reinterpret_cast<uint8_t*>(mapj) + 4 * p);
    int64_t u = vlblptr - base;
    int64_t n = std::min((u - area_dyn()) / w, p);
    L.w = static_cast<int32_t>(std::min<int64_t>(w, 0x7FFFFFFF));
    L.p = p;
    L.base = base;
    L.n = n;
    L.m = static_cast<int32_t>(std::min<int64_t>(w, maxmaxvar));
    return true;
}

// Physically moves the live columns from the present layout to L. Every
// column keeps its offset in the record and changes its capacity, so the
// distance each one moves is an affine function of its offset: the columns
// that move down go first, lowest first, then those that move up, highest
// first, and none overwrites one not yet moved.
static int move_columns(const Layout& L) {
    if (nobs == 0 || nvar == 0) return 0;
    colsync();
    n_shift++;
    const int64_t ns = stride_of(L.n), os = colstride;
    uint8_t* ob = xtraptr;
    uint8_t* nb = L.base;
    auto one = [&](int v) {
        const int64_t off = mapi[v - 1];
        uint8_t* dst = nb + off * ns;
        const uint8_t* src = ob + off * os;
        if (dst != src) memmove(dst, src, static_cast<size_t>(nobs) * cellwidth(v));
    };
    auto down = [&](int v) { return nb + mapi[v - 1] * ns < ob + mapi[v - 1] * os; };
    for (int v = 1; v <= nvar; v++)
        if (down(v)) one(v);
    for (int v = nvar; v >= 1; v--)
        if (!down(v)) one(v);
    n_records_moved += nobs;
    n_bytes_moved += static_cast<uint64_t>(nobs) * usedwidth();
    return 0;
}

static void commit(const Layout& L) {
    xtraptr = L.base;
    syslrecl = L.w;
    tmaxobs = static_cast<int32_t>(L.p);
    memorysize = static_cast<uint64_t>(cddaptr - L.base);
    maxobs = static_cast<int32_t>(L.n);
    maxvar = L.m;
    colstride = stride_of(L.n);
}

// Moves to layout L (checked by the caller) and commits it.
static int repart_to(const Layout& L) {
    n_repart++;
    const int64_t old_tmaxobs = tmaxobs;
    if (nobs == 0 && mapjperm) {
        for (int32_t k = 0; k < mapjspan; k++) mapj[k] = k;
        mapjperm = 0;
        mapjspan = 0;
    }
    if (nvar > 0) {
        int rc = move_columns(L);
        if (rc) return rc;
        int64_t from = L.p > old_tmaxobs ? old_tmaxobs : nobs;
        for (int64_t k = from; k < L.p; k++) mapj[k] = static_cast<int32_t>(k);
    } else {
        for (int64_t k = 0; k < L.p; k++) mapj[k] = static_cast<int32_t>(k);
        mapjperm = 0;
        mapjspan = 0;
    }
    commit(L);
    return 0;
}

int repart(int32_t dwidth, int32_t dobs) {
    if (!dwidth && !dobs) return 0;
    const int64_t width = usedwidth();
    Layout L;
    int64_t w;
    if (dwidth) {
        w = static_cast<int64_t>(syslrecl) + dwidth;
        if (w & 1) w++;
        if (!layout_for(w, L)) return 901;
    } else {
        int64_t t = static_cast<int64_t>(maxobs) + dobs;
        if (t > 0x7FFFFFFF || t < 1) return 901;
        w = (area_data() - 16) / t - 4;
        if (w & 1) w--;
        if (!layout_for(w, L)) return 901;
        while (L.n < t) {
            w -= 2;
            if (w < width || w <= 0) return 901;
            if (!layout_for(w, L)) return 901;
        }
    }
    if (w > maxlrecl) return 1010;
    if (L.n < 1) return 902;
    if (w == syslrecl) return 0;
    if (width > w) return 901;
    if (nobs > L.n) return width <= w ? 902 : 901;
    return repart_to(L);
}

int32_t reparmaxobs() {
    int64_t wp = std::max<int64_t>(usedwidth(), 1) + 4;
    if (wp & 1) wp++;
    int64_t r = (area_data() - 16 - 4 * area_dyn() / (wp - 4)) / (wp + 4);
    r = std::min<int64_t>(r, 0x7FFFFFFF);
    return static_cast<int32_t>(std::max<int64_t>(r, maxobs));
}

int32_t reparmaxwidth() {
    double n = std::max(nobs, 1);
    double D = static_cast<double>(area_data() - 16);
    double Y = static_cast<double>(area_dyn());
    double b = 4 * (n + 1) - D;
    double disc = b * b - 4 * n * (4 * Y);
    if (disc < 0) return syslrecl;
    double w = (std::sqrt(disc) - b) / (2 * n);
    if (w > maxlrecl) w = maxlrecl;
    if (!(w > 0)) return syslrecl;
    int64_t wi = static_cast<int64_t>(w) & ~int64_t{1};
    return wi >= syslrecl ? static_cast<int32_t>(wi) : syslrecl;
}

int32_t reparmaxvar() {
    return std::min(reparmaxwidth(), maxmaxvar);
}

int repartobs(int32_t n) {
    if (n < 1) return 0;
    const int64_t old = maxobs;
    int64_t half = (static_cast<int64_t>(reparmaxobs()) - maxobs) / 2;
    int rc;
    if (half < n) {
        rc = repart(0, n);
    } else {
        rc = repart(0, static_cast<int32_t>(half));
        if (rc && rc < 9000) rc = repart(0, n);
    }
    if (rc) return rc;
    return maxobs - old < n ? 9996 : 0;
}

int repartvar(int32_t bytes) {
    if (bytes < 1) return 0;
    const int32_t n = bytes == 1 ? 2 : bytes;
    const int64_t old = syslrecl;
    int64_t half = (static_cast<int64_t>(reparmaxwidth()) - syslrecl) / 2;
    int rc;
    if (half < n) {
        rc = repart(n, 0);
    } else {
        rc = repart(static_cast<int32_t>(half), 0);
        if (rc && rc < 9000) rc = repart(n, 0);
    }
    if (rc) return rc;
    return syslrecl - old < n ? 9997 : 0;
}

int repartdyn(int64_t bytes) {
    if (bytes < 1) return 0;
    const int64_t used = usedwidth();
    int64_t w = (used + syslrecl + 1) / 2;
    if (w & 1) w++;
    w = std::max(w, used + 4 + (used & 1));
    Layout L;
    if (!layout_for(w, L)) w = syslrecl - 2;
    const int64_t need = (bytes + 15) & ~int64_t{15};
    for (;;) {
        if (w < used + 4) return 902;
        if (!layout_for(w, L)) return 901;
        int64_t slack = (L.n - nobs - 1) * w;
        if (slack > need) break;
        w -= 2;
    }
    if (w != syslrecl) {
        if (w > maxlrecl) return 1010;
        if (nobs > L.n) return 902;
        int rc = repart_to(L);
        if (rc) return rc >= 9000 ? 9994 : rc;
    }
    cddaptr -= need;
    if (!layout_for(syslrecl, L)) return 9994;
    commit(L);
    return 0;
}

// ---------------------------------------------------------------------------
// Variables
// ---------------------------------------------------------------------------
void setmap() {
    int32_t off = 0;
    for (int k = 0; k < nvar; k++) {
        mapi[k] = off;
        off += bytlenc(typlist[k]);
    }
}

int alcvar(int code) {
    const int32_t c = usedwidth();
    const int l = bytlenc(code);
    if (nvar >= (sysflag ? maxmaxvar : maxmaxvar - 1)) return 900;
    int rc = 0;
    if (sysflag ? c + l > syslrecl : c + l >= syslrecl) rc = repartvar(l);
    if (rc) return rc >= 9000 ? 902 : rc;
    if (c + l > syslrecl) return 902;
    if (nvar >= (sysflag ? maxvar : maxvar - 1)) return 900;
    typlist[nvar] = static_cast<uint8_t>(code);
    mapi[nvar] = c;
    nvar++;
    return 0;
}

static void set_mark(int v, int i, bool on) {
    if (isnumtype(typlist[v - 1])) {
        store(v, i, on ? 1.0 : 0.0);
    } else {
        char buf[245] = {};
        buf[0] = on ? '1' : '0';
        sstore(v, i, buf);
    }
}

int markrow_open() {
    if (nobs >= maxobs) {
        int rc = repartobs(1);
        if (rc) return rc >= 9000 ? 901 : rc;
    }
    nobs++;
    for (int v = 1; v <= nvar; v++) set_mark(v, nobs, false);
    return 0;
}

void markrow_set(int v, bool remove) {
    set_mark(v, nobs, remove);
}

// srtlist after renumbering: newnum[v-1] is the new number, 0 when removed;
// the list is cut at the first removed variable.
static void renumber_srtlist(const std::vector<int32_t>& newnum) {
    if (!srtlist) return;
    for (int k = 0; srtlist[k]; k++) {
        int32_t nn = newnum[srtlist[k] - 1];
        if (!nn) {
            srtlist[k] = 0;
            break;
        }
        srtlist[k] = static_cast<int16_t>(nn);
    }
}

static void move_entry(int to, int from) { // 0-based table entries
    typlist[to] = typlist[from];
    memcpy(varlist + to * NAMELEN1, varlist + from * NAMELEN1, NAMELEN1);
    memcpy(lbllist + to * NAMELEN1, lbllist + from * NAMELEN1, NAMELEN1);
    memcpy(fmtlist + to * FMTLEN1, fmtlist + from * FMTLEN1, FMTLEN1);
}

void remvar() {
    nobs -= 1;
    if (nvar == 0) return;
    const int mrow = nobs + 1;
    colsync();
    std::vector<int32_t> newnum(nvar, 0);
    int kept = 0;
    for (int v = 1; v <= nvar; v++) {
        bool marked;
        if (isnumtype(typlist[v - 1]))
            marked = korvu_data(v, mrow) == 1.0;
        else
            marked = *dtaptr(v, mrow) == '1';
        if (!marked) newnum[v - 1] = ++kept;
    }
    if (kept == nvar) return;
    if (kept == 0) {
        renumber_srtlist(newnum);
        nvar = 0;
        return;
    }
    // Each kept column moves down to its new offset, lowest first: the cells
    // of the observations and of the marker row.
    colsync();
    int32_t newoff = 0;
    for (int v = 1; v <= nvar; v++) {
        if (!newnum[v - 1]) continue;
        const int32_t len = cellwidth(v);
        if (newoff != mapi[v - 1])
            memmove(xtraptr + static_cast<int64_t>(newoff) * colstride, colptr(v),
                    static_cast<size_t>(mrow) * len);
        newoff += len;
    }
    for (int v = 1; v <= nvar; v++)
        if (newnum[v - 1] && newnum[v - 1] != v) move_entry(newnum[v - 1] - 1, v - 1);
    renumber_srtlist(newnum);
    nvar = kept;
    setmap();
    for (int v = 1; v <= nvar; v++) set_mark(v, mrow, false);
}

void movevar(int from, int to) {
    if (from == to || from < 1 || to < 1 || from > nvar || to > nvar) return;
    // The column moves through a copy; the columns between shift by its width.
    colsync();
    const int32_t len = cellwidth(from);
    const size_t ncell = static_cast<size_t>(nobs);
    std::vector<uint8_t> cell(ncell * len + 1);
    memcpy(cell.data(), colptr(from), ncell * len);
    const int64_t shift = static_cast<int64_t>(len) * colstride;
    if (from > to) {
        for (int v = from - 1; v >= to; v--)
            memmove(colptr(v) + shift, colptr(v), ncell * cellwidth(v));
        memcpy(colptr(to), cell.data(), ncell * len);
    } else {
        for (int v = from + 1; v <= to; v++)
            memmove(colptr(v) - shift, colptr(v), ncell * cellwidth(v));
        memcpy(xtraptr + (mapi[to - 1] + cellwidth(to) - len) * colstride, cell.data(),
               ncell * len);
    }
    // Rotate the table entries through a spare copy of entry `from`.
    uint8_t t = typlist[from - 1];
    char nm[NAMELEN1], lb[NAMELEN1], fm[FMTLEN1];
    memcpy(nm, varname(from), NAMELEN1);
    memcpy(lb, lblname(from), NAMELEN1);
    memcpy(fm, fmtname(from), FMTLEN1);
    std::vector<int32_t> newnum(nvar);
    for (int v = 1; v <= nvar; v++) newnum[v - 1] = v;
    if (from > to) {
        for (int k = from - 1; k > to - 1; k--) move_entry(k, k - 1);
        for (int v = to; v < from; v++) newnum[v - 1] = v + 1;
    } else {
        for (int k = from - 1; k < to - 1; k++) move_entry(k, k + 1);
        for (int v = from + 1; v <= to; v++) newnum[v - 1] = v - 1;
    }
    newnum[from - 1] = to;
    typlist[to - 1] = t;
    memcpy(varname(to), nm, NAMELEN1);
    memcpy(lblname(to), lb, NAMELEN1);
    memcpy(fmtname(to), fm, FMTLEN1);
    renumber_srtlist(newnum);
    setmap();
}

void convert_cells(uint8_t* dst, int nc, const uint8_t* src, int oc, int64_t n, bool backward) {
    const int64_t nl = bytlenc(nc), ol = bytlenc(oc);
    const bool str = isstrtype(nc);
    uint8_t tmp[256];
    auto one = [&](int64_t k) {
        const uint8_t* s = src + k * ol;
        uint8_t* d = dst + k * nl;
        if (str) {
            size_t n = strnlen(reinterpret_cast<const char*>(s), ol);
            if (n > static_cast<size_t>(nl)) n = nl;
            memcpy(tmp, s, n);
            memcpy(d, tmp, n);
            if (n < static_cast<size_t>(nl)) memset(d + n, 0, nl - n);
        } else {
            encode_cell(d, nc, decode_cell(s, oc));
        }
    };
    if (backward)
        for (int64_t k = n - 1; k >= 0; k--) one(k);
    else
        for (int64_t k = 0; k < n; k++) one(k);
}

int change_vartype(int v, int code) {
    const int oldcode = typlist[v - 1];
    if (oldcode == code) return 0;
    if (isstrtype(oldcode) != isstrtype(code)) return 109;
    const int32_t ol = bytlenc(oldcode), nl = bytlenc(code);
    const int32_t used = usedwidth();
    if (nl > ol && used + (nl - ol) > syslrecl) {
        int rc = repartvar(nl - ol);
        if (rc == 1010 || rc == 909) return rc;
        if (rc || used + (nl - ol) > syslrecl) return 903;
    }
    colsync();
    const int64_t shift = static_cast<int64_t>(nl - ol) * colstride;
    const size_t ncell = static_cast<size_t>(nobs);
    // wider: the later columns move up first, then the cells are converted
    // from the last; narrower: converted from the first, then the later
    // columns move down
    if (shift > 0)
        for (int u = nvar; u > v; u--) memmove(colptr(u) + shift, colptr(u), ncell * cellwidth(u));
    uint8_t* col = colptr(v);
    convert_cells(col, code, col, oldcode, nobs, shift > 0);
    if (shift < 0)
        for (int u = v + 1; u <= nvar; u++)
            memmove(colptr(u) + shift, colptr(u), ncell * cellwidth(u));
    typlist[v - 1] = static_cast<uint8_t>(code);
    setmap();
    return 0;
}

void drop_all(int zap) {
    if (dahooks.discard_results) dahooks.discard_results();
    if (zap && dahooks.dict_shutdown) {
        dahooks.dict_shutdown();
        if (dahooks.dict_init) dahooks.dict_init();
    }
    if (dahooks.drop_all_extra) dahooks.drop_all_extra(zap);
    if (virtualflg && nobs != 0 && mapj)
        for (int32_t k = 0; k < tmaxobs; k++) mapj[k] = k;
    // the columns are in no order worth keeping: the table starts afresh
    if (mapjperm && mapj)
        for (int32_t k = 0; k < mapjspan; k++) mapj[k] = k;
    mapjperm = 0;
    mapjspan = 0;
    nvar = 0;
    nobs = 0;
    updata = 0;
    if (srtlist) srtlist[0] = 0;
}

} // namespace korvu
