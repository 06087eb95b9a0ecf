// Shared by append and merge: the using file matched against memory.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "data/dta/dta.h"

namespace korvu {

// The merge control record.
struct MergeCtl {
    int32_t nvar0 = 0; // nvar of the master at the start
    DtaImage img;      // the using file, read whole
    // options
    bool nolabel = false, nonotes = false, update = false, replace = false;
    std::vector<int32_t> keep; // with keep(): the using variables read (1-based)
    // filled by mersetup_check: for each using variable, its master variable
    // (0: not taken), the master's type after promotion, and which are new
    std::vector<int32_t> map;
    std::vector<uint8_t> newtype; // per master variable 1..nvar0 (index v-1)
    std::vector<int32_t> added;   // using variables that become new master variables
};

// Reads the using file and checks it against memory without changing
// anything: a string/numeric clash fails with 109. 0 or the code (printed).
int mersetup_read(MergeCtl& c, const char* file);
int mersetup_check(MergeCtl& c);
// Room for `extra_vars` more variables of `extra_width` bytes beyond what the
// using file adds, and for `rows` observations in all: 0 or the code
// (printed). Changes only the partition, never the data.
int mersetup_room(MergeCtl& c, int extra_vars, int extra_width, int64_t rows);
// Makes the changes: types raised, new variables added with their
// formats, labels and characteristics, value labels loaded. Cannot fail once
// mersetup_room succeeded.
void mersetup_apply(MergeCtl& c);

// Cells: a missing value of a type into a cell; whether a cell is missing;
// one cell of type sc converted into a cell of type dc.
void cell_setmissing(uint8_t* p, int code);
bool cell_ismissing(const uint8_t* p, int code);
void cell_convert(uint8_t* dst, int dc, const uint8_t* src, int sc);
bool cell_equal(const uint8_t* a, int ac, const uint8_t* b, int bc);
int cell_compare(const uint8_t* a, int ac, const uint8_t* b, int bc);

// Saving and loading the whole dataset silently for a command that must be
// able to put it back (file name, date and changed flag kept): 0 or the code.
struct Snapshot {
    std::string file; // empty: nothing was written (no variables)
    uint8_t updata = 0;
    std::string fn, fndate, filesp;
};
int snapshot_save(Snapshot& s);
int snapshot_load(const Snapshot& s);

} // namespace korvu

namespace korvu {

struct MergeOpts {
    bool nolabel = false, nonotes = false, update = false, replace = false, nokeep = false;
    bool uniqmaster = false, uniqusing = false;
    bool sortusing = false;          // put the using records in key order first (in memory)
    std::vector<int32_t> keys;       // master key variables; empty: one-to-one
    std::string keepvars;            // keep(): names of using variables
    const char* mergename = nullptr; // the variable to create, or null
};
// One using file merged into memory. Checks everything first; once data
// change, runs to its end. 0 or the code (printed).
int merge_one(const char* file, const MergeOpts& o);

} // namespace korvu
