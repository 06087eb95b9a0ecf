// Files of the matrix language: compiled functions in object files (.lo,
// room for 2 members) and libraries (.llib, room for 500), one format; the
// autoload of functions from them; and the matrix object stream behind
// `fputmatrix`, `fgetmatrix` and `lumo matsave`.
//
// A library holds every member twice, once low-to-high and once
// high-to-low, so a reader on either kind of machine loads its own copy with
// one seek, one read and no conversion.
#pragma once
#include <cstdint>
#include <cstdio>
#include <string>

#include "lumo/lumo.h"
#include "lumo/objects/mobj.h"

namespace korvu {

inline constexpr uint8_t llib_magic[4] = {129, 146, 167, 185};
inline constexpr int LLIB_VERSION = 3;
inline constexpr int LLIB_CAP_LIB = 500;
inline constexpr int LLIB_CAP_LO = 2;
inline constexpr int LLIB_NAMELEN = 33;
inline constexpr int LLIB_MEMBERHDR = 18;
// Code format numbers a reader accepts (the first code word).
inline constexpr int LLIB_FMT_OLDEST = 890;
inline constexpr int LLIB_FMT_NEWEST = 920;

// An open library: its header as read, tables in this machine's order.
struct LlibCtx {
    FILE* fp = nullptr;
    std::string path;
    int order = 2;   // byte order byte of the file: 2 low-to-high, 1 high-to-low
    int version = 0; // format version of the header
    int32_t n = 0, cap = 0;
    uint32_t off_hl[LLIB_CAP_LIB] = {}; // offsets of the high-to-low copies
    uint32_t off_lh[LLIB_CAP_LIB] = {}; // offsets of the low-to-high copies
    char names[LLIB_CAP_LIB][LLIB_NAMELEN] = {};
};

// Creates a file with empty tables: capacity 2 for an object file, else
// 500. `order` is the byte order of the header's integers (2 or 1; 1 is for
// building files as a high-to-low machine writes them). Returns 0 or 693
// (the file is erased on failure).
int llib_create(const char* path, bool object_file, int order = 2);
// Opens and reads the header. `search`: the name is found along the ado
// path with ".llib" appended. `quiet`: no message. `write`: open for update.
// Returns 0, 601 (absent), 603, or 610 with the messages of a bad file.
int llib_init(LlibCtx* ctx, const char* name, bool write, bool search, bool quiet);
void llib_close(LlibCtx* ctx);
// Adds a function as its two copies; rewrites the header. 0, or 602 (already
// a member), 610 (old format or full), 693, 9710, 9711.
int llib_add(LlibCtx* ctx, const LumoFcn* f, const char* name);
// Offset of this machine's copy of the member, 0 if absent.
uint32_t llib_search(const LlibCtx* ctx, const char* name);
// Reads the member header at the offset: 0 fine, 1 too old, 2 too new, 5 bad.
struct LlibMember {
    int32_t bytes, nwords, eltype;
    int16_t orgtype, dttype, format;
};
int llib_load1(const LlibCtx* ctx, uint32_t offset, LlibMember* m);
// Reads the code of the member into a new function named `name` in the
// dictionary. 0, or 3900 (no memory), 610 (bad code).
int llib_load2(const LlibCtx* ctx, uint32_t offset, const LlibMember* m, const char* name,
               LumoFcn** out);
int llib_nmbr(const LlibCtx* ctx);
// Whether the library is one of the system's own (name "llumo...").
bool llibofficial(const char* name);
// Whether the text names a library: starts with lower-case `l`, letters,
// digits and underscores, at most 32 characters.
bool llib_validname(const char* name);

// Clears the caching words of every opfindf in the code, so the words
// written to a file depend on no address. 0, or -1 on a word that is not an
// instruction.
int m_cleanpgm(uint32_t* code, int nwords);

// Autoload: finds `name` in object files and libraries along the path and
// loads it. Null when not found (or when a load failed after its note).
LumoFcn* m_autoload(const char* name);
// Where a function would come from: "" when nowhere; otherwise the file.
// *kind: 0 not found, 1 in memory, 2 object file, 3 library, 4 built-in.
std::string m_autosearch(const char* name, int* kind);
// The libraries named by `lumo llib index`, searched after the path.
extern std::string m_llibindex;
// Rebuilds the index: every l*.llib in the directories of the ado path.
void m_llibreindex();

// Matrix object stream. Results of moio_read: 0 fine, 1 busy, 2 unknown
// type, 3 write failure, 4 no memory, 5 format error, 7 function not
// allowed, 8 end of file.
int moio_write(FILE* fp, const MObj* o, const char* name);
int moio_read(FILE* fp, MObj** out, std::string* name);
// The pair as the built-in functions call them: fputmatrix(fh, X) writes X
// to an open file; fgetmatrix(fh) returns the next matrix, or a 0 x 0 real
// at the end of the file. Codes as moio.
int fputmatrix(FILE* fp, const MObj* o);
int fgetmatrix(FILE* fp, MObj** out);

// The `lumo` subcommands of files.
int lumo_mosave(const char* args);
int lumo_llib(const char* args);
int lumo_which(const char* args);
int lumo_matsave(const char* args);
int lumo_matuse(const char* args);
int lumo_matdescribe(const char* args);

} // namespace korvu
