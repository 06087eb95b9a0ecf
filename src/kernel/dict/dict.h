// The dictionary manager: one store for every named thing that is
// not a variable or an observation. An item is a name plus a small integer type;
// it is one heap block, a 96-byte header followed at once by the value. Callers
// hold the value pointer; the header sits at a fixed negative offset from it.
//
// There is one hash table by name (20009 buckets) and one list per type (3493
// heads), both doubly linked, new items at the front of both. A scope is a type
// number, so ending a scope is `dmzap(type)`.
//
// Every function takes and returns value pointers; null means absence or, for
// the adding calls, out of memory (after the message "insufficient memory for
// ..." at level 3; the caller then returns 950).
#pragma once
#include <cstddef>
#include <cstdint>

namespace korvu {

inline constexpr int dm_nbucket = 20009; // name hash buckets
inline constexpr int dm_ntype = 3493;    // types 0 to 3492
inline constexpr int dm_endtype = 3494;  // marks the end of the temporary file
inline constexpr int dm_namelen = 32;    // longest name; the header holds 33 bytes
inline constexpr int dm_hdrsize = 96;    // header bytes; also the file record size

// Well-known types.
enum : int {
    DM_VALLAB = 1,
    DM_GMAC = 2,
    DM_VARLIST = 3,
    DM_LASTCMD = 4,
    DM_EST = 5,
    DM_VARLAB = 6,
    DM_PROGRAM = 7,
    DM_MATRIX = 9,
    DM_MATROW = 10,
    DM_MATCOL = 11,
    DM_CMDBUF = 12,
    DM_CONSTRAINT = 13,
    DM_GRAPH = 14,
    DM_SCALAR = 15,
    DM_ESTPRESERVE = 16,
    DM_CHAR = 17,
    DM_POSTFILE = 18,
    DM_TMPMATRIX = 19,
    DM_RSCALAR = 20,
    DM_RMACRO = 21,
    DM_RMATRIX = 22,
    DM_ESCALAR = 25,
    DM_EMACRO = 26,
    DM_EMATRIX = 27,
    DM_SMACRO = 30,
    DM_PLUGIN = 31,
    DM_PARKED = 32,
    DM_BYOBS = 33,
    DM_FILEHANDLE = 36,
    DM_PGMINDEX = 37,
    DM_HELDRET = 38,
    DM_CLSKEY = 40,
    DM_LUMOMAT = 43,
    DM_LUMOFCN = 44,
    DM_LUMOWORK = 45,
    DM_NAMEDLOG = 48,
    DM_HOLD0 = 49,   // 49 to 3058: held estimates, ten groups of 301 slots
    DM_LMAC0 = 3059, // 3059 to 3122: local macros, one type per level
    DM_LMACMAX = 3122,
    DM_RETSCAL0 = 3123, // 3123 to 3186: `return` scalars by level
    DM_RETMAC0 = 3187,  // 3187 to 3250: `return` macros by level
    DM_RETMAT0 = 3251,  // 3251 to 3442: `return` matrices and stripes
    DM_RETMATEND = 3442,
};

// The header. Its layout and size are fixed: it is also the on-disk record.
struct DmItem {
    DmItem* nprev; // name chain
    DmItem* nnext;
    DmItem* tprev; // type chain
    DmItem* tnext;
    uint64_t alloc; // bytes of value when the block was made
    uint64_t used;  // bytes of value now in use
    uint32_t hash;  // the name's hash (the bucket is hash % dm_nbucket)
    int32_t tag;    // the caller's number, handed back by dmfind
    int32_t type;   // 0 to 3492
    char name[dm_namelen + 1];
    uint8_t hits; // finds since last moved to the front
};
static_assert(sizeof(DmItem) == dm_hdrsize, "dictionary header must be 96 bytes");

inline DmItem* dmhdr(const void* value) {
    return reinterpret_cast<DmItem*>(const_cast<char*>(static_cast<const char*>(value)) -
                                     dm_hdrsize);
}
inline void* dmval(const DmItem* hdr) {
    return reinterpret_cast<char*>(const_cast<DmItem*>(hdr)) + dm_hdrsize;
}
// Accessors on a value pointer.
inline const char* dmname(const void* value) {
    return dmhdr(value)->name;
}
inline int dmtype(const void* value) {
    return dmhdr(value)->type;
}
inline int dmtag(const void* value) {
    return dmhdr(value)->tag;
}
inline void dmsettag(void* value, int tag) {
    dmhdr(value)->tag = tag;
}
inline uint64_t dmsize(const void* value) {
    return dmhdr(value)->used;
}
inline uint64_t dmallocsize(const void* value) {
    return dmhdr(value)->alloc;
}

// h := h * 31 + byte over the name, unsigned 32 bits, from 0.
inline uint32_t dmhash(const char* name) {
    uint32_t h = 0;
    for (const unsigned char* p = reinterpret_cast<const unsigned char*>(name); *p; ++p)
        h = h * 31u + *p;
    return h;
}

void dminit();
void* dmadd(const char* name, int type, int tag, size_t size);
void* dmreadd(const char* name, int type, int tag, size_t size);
void* dmsave(const char* name, int type, int tag, const void* data, size_t size);
// Copies the value to dst: n bytes, or tag bytes when n is -1. Returns the item.
void* dmuse(const char* name, int type, int* tagout, void* dst, long n);
void* dmfind(const char* name, int type, int* tagout);
void* dmfind0(const char* name, int type);
void* dmfindany(const char* name);
void* dmnamenext(const void* item, int type);
void* dmnext(const void* item, char* nameout, int type, int* typeout);
void dmrm(void* item);
void dmzap(int type);
void dmretype(void* item, int type);
void dmretypeall(int from, int to);
void dmrename(void* item, const char* name);
void* dmcp(const char* toname, int totype, const char* fromname, int fromtype, int removeifmissing);
void dmmemory(uint64_t* allocout, uint64_t* usedout);
// Number of items of a type, or of all types with -1 (for tests and `debug`).
long dmcount(int type);
// Changes the used size of an item within its allocated size; returns 0, or -1
// if the size exceeds the block.
int dmsetused(void* item, size_t used);

// The temporary file: dmwrite writes every item; dmread re-adds them. dmread
// returns 0, 1 on a short read, 2 when some item could not be added.
int dmwrite(int fd);
int dmread(int fd);
void dmshutdown();
int dmdebug();
// True when both tables hold the same items and every back pointer agrees.
bool dmcheck();

// Save the whole store to a fresh temporary file and empty it (before fixed
// memory is rebuilt); then restore it. dmtmpsave returns 0 or a code (914 when
// the file cannot be made, 693 when it cannot be written: the store is then
// left as it was). dmtmprestore reads the file back, removes it, and returns 0,
// or 1 after "tmp file vanished; macros etc. lost" or "error reading temp file".
int dmtmpsave(char* fnout, size_t fnsize);
int dmtmprestore(const char* fn);

// Testing hooks: the allocator used for new items (null restores malloc), and a
// hook called by dmrm with the value before it is freed (`sys_pgmloc` upkeep).
using dm_alloc_fn = void* (*)(size_t);
void dmsetalloc(dm_alloc_fn fn);
extern void (*dm_rm_hook)(void* item);

} // namespace korvu
