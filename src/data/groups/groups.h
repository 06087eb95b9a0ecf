// Group statistics: the observations of a range fall into groups of equal
// values of key variables, found by one hash pass (or a direct table for
// small integer keys), and statistics of a variable are computed for every
// group in one more pass. Commands that make variables or datasets from
// groups (xgenerate, collapse, duplicates, idcheck, levels, fillall,
// freqdata, dsort) are built on it.
#pragma once
#include <cstddef>
#include <cstdint>
#include <vector>

namespace korvu {

struct Groups {
    int32_t n1 = 1, n2 = 0; // the range looked at
    int32_t ngroups = 0;
    std::vector<int32_t> gid;     // gid[i - n1]: group of observation i, -1 when left out
    std::vector<int32_t> size;    // observations in each group
    std::vector<int32_t> start;   // ngroups + 1 offsets into members (GRP_MEMBERS)
    std::vector<int32_t> members; // observations by group, dataset order within each
    std::vector<int32_t> rep;     // the first observation of each group
};

enum : int {
    GRP_ORDER = 1,   // groups numbered in the order of their keys (else as first met)
    GRP_MEMBERS = 2, // fill start and members
    GRP_NOMISS = 4,  // leave out observations with a missing key (. to .z, or "")
};

// Groups observations n1..n2 on the nk variables keys (take: null, or
// take[i - n1] non-zero for the observations to include). 0 or 1 (break).
int groups_make(Groups* g, const int32_t* keys, int nk, int32_t n1, int32_t n2, const uint8_t* take,
                int flags);
// -1, 0, 1: observation i against observation j on the keys, missing values
// after numbers, strings by byte.
int groups_cmpobs(const int32_t* keys, int nk, int32_t i, int32_t j);

// Scratch buffer k (0 to 7) of at least n doubles, kept across commands so
// that repeated work on large data does not pay again for fresh pages.
double* grp_scratch(int k, size_t n);
// Numeric variable v over n1..n2 as doubles: the column itself when it is
// stored as doubles, else decoded into scratch buffer k.
const double* groups_values(int v, int32_t n1, int32_t n2, int k);

// Numeric variable v over n1..n2 decoded into out[0 .. n2 - n1].
void groups_column(int v, int32_t n1, int32_t n2, double* out);

// Statistics of a variable by group.
enum GStat : int {
    GS_MEAN,
    GS_SUM,    // with aweights, the weights rescaled to the group's count
    GS_RAWSUM, // the sum ignoring any weights
    GS_COUNT,  // non-missing values (with fweights their total weight)
    GS_MIN,
    GS_MAX,
    GS_SD,
    GS_PCTILE, // the p-th percentile; the median is p = 50
    GS_IQR,
    GS_FIRST,
    GS_LAST,
    GS_FIRSTNM,
    GS_LASTNM,
    GS_MODE,    // p: 0 missing when not unique, 1 the least, 2 the greatest
    GS_SEMEAN,  // standard error of the mean
    GS_NMISS,   // missing values
    GS_TOTALOBS // observations, missing or not
};
struct GStatReq {
    int stat;
    double p;
};
// Looks up a statistic word: "mean", "p25", "median", ...; -1 when unknown.
int gstat_word(const char* w, GStatReq* out);

// out[0 .. ngroups-1] := the statistic of x (x[i - n1]) in each group; w null
// or the weights w[i - n1], of kind wkind (the WGT_ codes, 0 none).
// Needs members for percentiles, iqr and mode. 0 or 1 (break).
int group_stat(const Groups& g, const GStatReq& r, const double* x, const double* w, int wkind,
               double* out);

// Order statistic helpers (v reordered in place).
double gpctile(double* v, int64_t n, double p);
double gpctile_w(double* v, double* w, int64_t n, double p); // v, w sorted together

// A direct table over one numeric key holding whole numbers of a small range:
// the group of an observation is its key's value less the smallest (its
// slot), read from the key's column in the same pass as the statistic, so
// that nothing is kept per observation. Groups are numbered in key order.
struct GDirect {
    int key = 0;
    int32_t n1 = 1, n2 = 0;
    int ktype = 0;              // the key column's storage type (float read as double)
    const void* base = nullptr; // the key's cell of observation n1
    double lo = 0;              // the key value of slot 0
    int32_t span = 0;           // slots
    bool hasmiss = false;       // missing keys met (left out)
    bool decoded = false;       // base is a scratch copy (a float key), not the column
};
// Makes the table for key over n1..n2 (take as for groups_make): -1 when the
// key does not allow one (a string, values not whole, a range wider than
// the larger of 65,536 and an eighth of the observations, or a missing value
// unless skipmiss), else 0 or 1 (break).
int gdirect_make(GDirect* d, int key, int32_t n1, int32_t n2, const uint8_t* take, bool skipmiss);
// Whether gdirect_stat computes the statistic: mean, sum, rawsum, count and
// the count of observations.
bool gdirect_stat_ok(int stat);
// out[0 .. span-1] := the statistic of x in each slot, bit for bit as
// group_stat computes it (for GS_TOTALOBS x may be null); first, when not
// null, the first observation of each slot (-1 for an empty slot). 0 or 1.
int gdirect_stat(const GDirect& d, const GStatReq& r, const double* x, const double* w, int wkind,
                 const uint8_t* take, double* out, int32_t* first);
// Writes numeric variable v over n1..n2: gv[slot] for the observations
// taken, missing elsewhere; *nmiss the missing values written. 0 or 1. The
// key's column is found again, so v may have been added after the table
// was made.
int gdirect_fill(const GDirect& d, const double* gv, const uint8_t* take, int v, int64_t* nmiss);

// The commands: `_groups sub [byvars] : ...` behind the programs xgenerate,
// collapse, duplicates, idcheck, levels, fillall, freqdata, dsort and sample;
// and expand.
int groupscmd(int);
int expandcmd(int);

} // namespace korvu
