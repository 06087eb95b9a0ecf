// Programs: named bodies of command text kept in the dictionary (type 7),
// found by name and owner, loaded from ado-files along the ado path and
// evicted oldest first; and the version setting under which lines run.
#pragma once
#include <cstddef>
#include <cstdint>

#include "kernel/program/pgmframe.h"

namespace korvu {

// The head of a program's value; the line index and the text follow it.
struct PgmRec {
    int32_t loadtime; // sysldtime at definition; 0 for a program defined by hand
    int32_t lastuse;  // sysclock when last run
    uint8_t running;  // on the call stack: can't be dropped
    uint8_t sortpres; // sortpreserve
    uint8_t clsprog;  // defined while reading a class file
    uint8_t pgmclass; // 0 nclass, 1 rclass, 2 sclass, 3 eclass
    uint8_t bymode;   // 0 not by-able, 1 onecall, 2 recall, 3 recall noheader
    uint8_t spare;
    int16_t version; // vernum at definition
    char owner[33];  // the ado-file's main program, for a subprogram
    char properties[79];
    int32_t reserved;
};
static_assert(sizeof(PgmRec) == 132, "program head layout");

inline constexpr int PGM_MAXLINES = 3500;
inline constexpr int PGM_MAXTEXT = 135600;

inline const int32_t* pgmindex(const PgmRec* p) {
    return reinterpret_cast<const int32_t*>(p + 1);
}

extern int32_t adosize;       // `set adosize`, units of 1000 bytes
extern int32_t sysldtime;     // load time of the ado-file being read, else 0
extern int32_t caller_vernum; // version of the caller of the running program
extern uint8_t program_class; // class of the running program
extern uint8_t resort_on_exit;
extern uint8_t reading_cls_pgm;
extern int32_t autoload_level;

// System directories; `sysdir_korvu` stands in startup.h.
extern char sysdir_updates[128], sysdir_base[128], sysdir_site[128], sysdir_plus[128],
    sysdir_personal[128], sysdir_oldplace[128];

// --- the store ---------------------------------------------------------------

// mode 1 programs, 2 plugins, 3 either. The item whose owner equals `owner`
// wins; one with an empty owner is the fallback.
void* pgmfind(const char* name, const char* owner, int mode);
// Stores a program read from the input (firstline null: up to `end`) or from
// `firstline` and on to the balance of braces (a loop typed outside a program).
int pgmdefine(const char* name, int cls, int bymode, int sortpres, const char* properties,
              const char* firstline);
// Builds a program from lines in memory (tests, class files); 0 or a code.
int pgmstore(const char* name, const char* owner, const char* const* lines, int nlines, int cls,
             int bymode, int sortpres, const char* properties);
// Collapses blanks outside double quotes and strips the trailing one; returns
// the count of leading blanks (at most 255), the text going to dst.
int pgmsqueeze(const char* line, char* dst);
int pgmkill(const char* name);
int byability(const char* name);
int pgm(int);
int pgmgen();

// --- running (called by the do-file frame) ------------------------------------

// pgm_prolog, pgm_retcls and pgm_epilog, called by the frame, stand in
// pgmframe.h.

// --- the ado path ---------------------------------------------------------------

void adoinit();                          // defaults of the directories and S_ADO
const char* mapdirname(const char* dir); // codeword to directory, else dir with "/"
char* pathjoin(char* dst, const char* dir, const char* file); // dst of FNLEN bytes
// The nth file name.ext along S_ADO; 1 when found (path in pathout).
int srchado(const char* name, const char* ext, int nth, char* pathout, size_t size);
int srchadofile(const char* name, char* pathout, size_t size);
int autoload(const char* ext, int mustdefine);
int discardal();
int discard(int);
int verscmd(int);  // which
int kvsysdir(int); // sysdir
int set_adosize();
void pgm_evict(int32_t keep_loadtime);

// --- version -------------------------------------------------------------------

int vercmd(int);

} // namespace korvu
