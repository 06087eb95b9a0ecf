// The data area: one block holding the observation-pointer table
// `mapj` and the record area at `xtraptr`, the fixed per-variable tables, the
// limits behind `set memory`, `set maxvar` and `set matsize`, and the
// reshaping of the rectangle (`repart`). Cell accessors are in storage.h;
// storage-type codes in stortype.h, the figures of `memory` in memfig.h, the
// command handlers in areacmds.h and the links to other subsystems in
// areahooks.h.
//
// The rectangle is measured as records of syslrecl bytes, variables packed
// end to end at offsets mapi[v-1], and held as columns (see Columns below).
// Address of a cell (variable v, observation i, both 1-based):
//     xtraptr + mapi[v-1] * colstride + mapj[i-1] * bytlenc(typlist[v-1])
#pragma once
#include <cstddef>
#include <cstdint>

#include "data/area/stortype.h"
#include "kernel/loop/limits.h"

namespace korvu {

// ---------------------------------------------------------------------------
// Global limits and pointers of the data area
// ---------------------------------------------------------------------------
extern uint64_t totalmemory;     // bytes requested with `set memory`
extern uint64_t cur_tm;          // bytes actually allocated for the block
extern uint8_t* begin_of_memory; // the block; null when none is held
extern int32_t* mapj;            // observation -> slot; at the block start
extern int32_t tmaxobs;          // entries of mapj in the present partition
extern uint8_t* xtraptr;         // record area (16-byte aligned)
extern uint8_t* cddaptr;         // end of the record area
extern uint8_t* vlblptr;         // end of the usable block (dynamic area between)
extern uint64_t memorysize;      // cddaptr - xtraptr
extern int32_t syslrecl;         // record width in bytes
extern int32_t maxobs;           // observations that fit at the present width
extern int32_t maxvar;           // min(syslrecl, maxmaxvar)
extern int32_t maxmaxvar;        // `set maxvar`, default 5000
extern int32_t maxlrecl;         // 12 * maxmaxvar
extern int32_t conslen;          // 33 * maxmaxvar + 216
extern int32_t macrolen;         // 33 * maxmaxvar + 200
extern int32_t matsize;          // `set matsize`, default 400
extern uint64_t cur_matmem;      // matsize * (matsize + 11) * 8
extern uint64_t cur_fixed;       // sum of the recorded fixed tables
extern int32_t nobs, nvar;       // observations and variables in use
extern uint8_t virtualflg;       // `set virtual`
extern uint8_t updata;           // dataset changed since load/save/clear
extern uint8_t mvmodern;         // version 8 or later missing-value rules
extern uint8_t sysflag;          // the system itself is adding a variable
extern uint32_t n_repart, n_shift;
// Instrumentation beyond the design (reported nowhere, read by tests): bytes
// and records physically copied by repartitions.
extern uint64_t n_bytes_moved, n_records_moved;

// Defaults and bounds.
inline constexpr uint64_t DEFAULT_MEMORY = 0xa00000; // 10 MB: the fallback
// The amount of data memory at start-up when none was asked for: a quarter of
// physical memory in whole megabytes, at least DEFAULT_MEMORY and at most
// 2 GB. The records are reserved, not touched: pages cost nothing until data
// fill them.
uint64_t default_memory();
inline constexpr uint64_t MIN_MEMORY = 102400;
inline constexpr int32_t DEFAULT_MAXVAR = 5000;
inline constexpr int32_t MIN_MAXVAR = 2048;
inline constexpr int32_t MAX_MAXVAR = 32767;
inline constexpr int32_t DEFAULT_MATSIZE = 400;
inline constexpr int32_t MIN_MATSIZE = 10;
inline constexpr int32_t MAX_MATSIZE = 11000;

// ---------------------------------------------------------------------------
// Fixed tables: allocated by allocfixed once per maxmaxvar, outside the block
// ---------------------------------------------------------------------------
struct VarRcp {   // one entry of varlist_rcp
    void* recipe; // 0 for none
    int64_t var;  // the underlying variable number
};
static_assert(sizeof(VarRcp) == 16);

extern int32_t* varlist_vr;    // "vl_vr"  4 * maxmaxvar + 4
extern int32_t* mapi;          // "mapi"   4 * maxmaxvar: offset of variable in record
extern int16_t* srtlist;       // "srt"    2 * maxmaxvar + 2: sort variables, 0-terminated
extern char* lbllist;          // "lbl"    33 * maxmaxvar: value label names
extern char* fmtlist;          // "fmt"    12 * maxmaxvar: display formats
extern char* varlist;          // "varlist" 33 * maxmaxvar: variable names
extern uint8_t* typlist;       // "typ"    maxmaxvar: storage types
extern int16_t* sysbylist;     // "by"     2 * (maxmaxvar + 1)
extern VarRcp* varlist_rcp;    // "vl_rcp" 16 * (maxmaxvar + 1)
extern char* space_for_macexp; // "macexp" macrolen

inline constexpr int NAMELEN1 = 33; // bytes per name in varlist / lbllist
inline constexpr int FMTLEN1 = 12;  // bytes per format in fmtlist
inline char* varname(int v) {
    return varlist + (v - 1) * NAMELEN1;
}
inline char* lblname(int v) {
    return lbllist + (v - 1) * NAMELEN1;
}
inline char* fmtname(int v) {
    return fmtlist + (v - 1) * FMTLEN1;
}

// Allocate `bytes` (zeroed) and record it under `label` in the table of 20
// tracks; beyond 20 the block is still allocated but not recorded.
void* allocfixed(uint64_t bytes, const char* label);
void report_allocfixed();
void freefixed(); // frees every block allocfixed gave out; cur_fixed := 0
struct FixedTrack {
    void* ptr;
    uint64_t size;
    char label[8];
};
inline constexpr int NTRACKS = 20;
extern FixedTrack fixed_tracks[NTRACKS];
extern int n_fixed_tracks;
extern int fixed_untracked; // allocations made past NTRACKS

// Other subsystems whose arrays depend on maxmaxvar (console, character pool,
// keyboard buffers ...) register here; `alloc` runs in the same pass as the
// fixed tables, after them, and should obtain its memory with allocfixed.
// A non-zero return fails the pass. `release` (may be null) runs before the
// blocks are freed.
void register_fixed_client(int (*alloc)(), void (*release)());

// Bytes the existing variables occupy in a record.
inline int32_t usedwidth() {
    return nvar ? mapi[nvar - 1] + bytlenc(typlist[nvar - 1]) : 0;
}

// ---------------------------------------------------------------------------
// Columns
// ---------------------------------------------------------------------------
// The record area holds the rectangle by columns: variable v's cells lie end
// to end, in its storage encoding, from colptr(v) = xtraptr + mapi[v-1] *
// colstride, where colstride is the observation capacity maxobs rounded up to
// a multiple of 8 (the block has room behind cddaptr for the rounding). Every
// column of a numeric type is thus aligned to its cell size. The cell of
// observation i is at colptr(v) + mapj[i-1] * bytlenc(type). The sizes, the
// width, the partition and all limits are those of a rectangle of records of
// syslrecl bytes: a user sees the same numbers whatever the layout.
//
// mapj is the identity except between a command that permutes it (the sort,
// dropping observations) and the next colsync(), which gathers every column
// into the observation order and resets mapj. The sort calls it at its end,
// so loops over observations normally find the columns in order.
extern int64_t colstride; // cells per column
extern uint8_t mapjperm;  // mapj is not the identity
extern int32_t mapjspan;  // entries of mapj that may differ from the identity
inline uint8_t* colptr(int v) {
    return xtraptr + static_cast<int64_t>(mapi[v - 1]) * colstride;
}
inline int cellwidth(int v) {
    return bytlenc(typlist[v - 1]);
}
// Tells that entries of mapj below nobs were permuted.
void mapj_changed();
// Puts every column in the observation order of mapj and resets mapj to the
// identity; nothing when it is the identity already.
void colsync();

// The column of numeric or string variable v for a loop over observations:
// the address of observation 1's cell, observation i's cell being at
// base + (i-1) * bytlenc(*type), with *type set to the storage type (251
// byte as int8_t, 252 int as int16_t, 253 long as int32_t, 254 float, 255
// double; 1..244 str#, cells of that many bytes). Valid until the next
// command that changes the data's shape (adds, drops or retypes a variable,
// adds observations or sorts); decode the cells with decode_cell or the
// kvdouble_of_* functions so that missing values come out right.
const void* colbase(int v, int* type);
void* colbase_w(int v, int* type); // the same for writing

// ---------------------------------------------------------------------------
// Allocation and limits
// ---------------------------------------------------------------------------
// Start-up: allocates the fixed tables and the block from totalmemory,
// maxmaxvar and matsize, falling back to the defaults. 0 or -1.
int news_alloc();
// Shut-down: frees the block and the fixed tables.
void news_free();
int news_realloc(uint64_t bytes);  // `set memory`: 0, 3, 4, 5, 6, 7, 8, 9
int news_realloc_fixed(int32_t n); // `set maxvar`: 0 or 5
int setmatsize(int32_t n);         // 0 or 1
void trouble_at_startup_msg();
extern uint8_t startup_trouble; // news_alloc fell back to the defaults
extern uint64_t asked_totalmemory;
extern int32_t asked_maxmaxvar, asked_matsize;

// Creates the block of b bytes: 0, 3, 4, 5, 6, 9 (exposed for the tests).
int create_block(uint64_t b);
void free_block();

// ---------------------------------------------------------------------------
// Reshaping
// ---------------------------------------------------------------------------
// The layout for a candidate width w; false when impossible.
struct Layout {
    int32_t w;     // width
    int64_t p;     // entries of mapj
    uint8_t* base; // start of the record area
    int64_t n;     // observation capacity
    int32_t m;     // maxvar
};
bool layout_for(int64_t w, Layout& out);

int repart(int32_t dwidth, int32_t dobs);
int repartobs(int32_t n);     // grow observations by at least n; 9996 if short
int repartvar(int32_t bytes); // grow width by at least bytes; 9997 if short
int repartdyn(int64_t bytes); // make room in the dynamic area
int32_t reparmaxobs();
int32_t reparmaxwidth();
int32_t reparmaxvar();

// ---------------------------------------------------------------------------
// Variables
// ---------------------------------------------------------------------------
// Appends a variable slot of the given type: 0, 900, 901, 902, 1010.
int alcvar(int code);
void setmap(); // mapi from typlist
// Removes the variables marked in the marker row. Protocol: make room
// (repartobs(1) when nobs == maxobs), nobs += 1, write 1 (or a text
// beginning "1") into observation nobs of each variable to remove and 0 (or
// "0") into the others, then call remvar(), which starts by nobs -= 1.
// markrow_open / markrow_set do the first steps.
void remvar();
int markrow_open(); // room, nobs += 1, all marks 0; 0 or an error
void markrow_set(int v, bool remove);
// Moves variable `from` to position `to` (1-based), shifting the others.
void movevar(int from, int to);
// Changes the storage type of variable v in place, converting every
// observation (numbers through korvu_data/store, strings padded or cut):
// 0, or 903 when the width cannot grow.
int change_vartype(int v, int code);
// Converts n cells of type oc at src into cells of type nc at dst (which may
// be src itself), from the last cell when backward: numbers through
// decode_cell/encode_cell, strings cut or padded with zero bytes.
void convert_cells(uint8_t* dst, int nc, const uint8_t* src, int oc, int64_t n, bool backward);

// Empties the dataset; with zap the dictionary is cleared too.
void drop_all(int zap);

// ---------------------------------------------------------------------------
// compress
// ---------------------------------------------------------------------------
struct CompressChange {
    int32_t v;
    uint8_t from, to;
};
// The smallest type that holds every value of variable v by the rules of
// `compress` (integers only, byte/int/long ranges, strings by their longest
// content); *to is the present type when nothing can be gained. Polls the
// break key: 1 on break, else 0.
int compress_target(int v, uint8_t* to);
// Compresses the listed variables (all when n is 0): decides every target
// first, then converts all records in one pass, then prints one line per
// change ("name was int now byte"), in the order int/long/float, double,
// strings. `out` (room for n entries, or nvar when n is 0) receives the
// changes when not null, *nout their count. 0, 1 (break, nothing changed) or 3.
int compress_vars(const int32_t* vars, int n, CompressChange* out, int* nout);

// Messages of the return codes of the data area (3, 4, 900-914, 1010) with their
// advice; returns the code. Other codes are handed to error().
int dataarea_error(int code);
int dataarea_msg(int code);

} // namespace korvu
