// The matrix store: named matrices as dictionary items with their row and
// column stripes, the element accessors, the dense working buffers, the sweep
// inverter shared by the estimators, and the `matrix` and `scalar` commands.
//
// A matrix item is an 8-byte header (count of stored elements for the sparse
// kind, rows, columns) followed by its elements; the item's tag holds the
// storage kind: 1 full by rows, 2 symmetric lower triangle by rows, 3 sparse
// (value, row, column) sorted by row then column.
#pragma once
#include <cstddef>
#include <cstdint>
#include <string>

namespace korvu {

struct MatHdr {
    uint32_t nnz; // stored elements of kind 3, else 0
    int16_t rows, cols;
};
static_assert(sizeof(MatHdr) == 8);

#pragma pack(push, 1)
struct SparseEl {
    double v;
    uint16_t r, c;
};
#pragma pack(pop)
static_assert(sizeof(SparseEl) == 12);

// A descriptor, held only during one operation.
struct MatDesc {
    double* data; // behind the header
    void* item;   // null when the matrix is absent
    int kind;
    uint32_t nnz;
    int rows, cols;
};

// Stripe entries: equation, name, time-series operator.
inline constexpr int STRIPE_EQ = 32, STRIPE_NAME = 32, STRIPE_OP = 19;
inline constexpr int STRIPE_ENTRY = STRIPE_EQ + STRIPE_NAME + STRIPE_OP; // 83
inline constexpr int MAX_MATDIM = 32767;
inline constexpr int MIN_MATSIZE_M = 10, MAX_MATSIZE_M = 11000;

// The inverter's tolerances are the settings `matrind.tol_0` and kin
// (results/settings.h).
// The plain-name calls (matset, matdcl, matstor, matload) work on the type in
// the command state's `dynmattype` (kernel/cmdparse.h).
extern int diag0cnt;        // zero diagonals left by the last inversion
extern uint8_t korvu_debug; // internal tracing of the inverter's pivots

// Types by class letter: 'm' user, 'r' r(), 'e' e().
int mxnmt(int letter);
int mxnrt(int letter);
int mxnct(int letter);
// Where the row (row 1) or column (row 0) stripe of matrix `name` of type
// `type` is kept: its item name and type. The estimation record keeps them
// beside the matrix under "<r>" and "<c>" names.
std::string stripename(const char* name, int type, int row, int* stype);

// ---- store ----
void matset(const char* name, MatDesc* d); // by dynmattype
void matsett(const char* name, int type, MatDesc* d);
double matel(const MatDesc* d, int i, int j); // 0-based
void matstel(MatDesc* d, int i, int j, double v);
// 0, or 950 when the dictionary is full.
int matdcl(MatDesc* d, const char* name, int kind, int rows, int cols);
// Block [r0..r1] x [c0..c1] of a buffer of row stride `stride`; kind 3 stays
// sparse only while that is smaller. Returns the item or null (no room).
void* matstors(const char* name, int kind, const double* buf, int stride, int r0, int r1, int c0,
               int c1);
void* matstor(const char* name, int kind, const double* buf, int r0, int r1, int c0, int c1);
void* symatstor(const char* name, const double* buf, int i0, int i1);
// Dense copy into a buffer of row stride `stride`; 0 or 111 when absent.
int matloads(const char* name, double* buf, int stride);
int matload(const char* name, double* buf);
// A matsize x matsize working buffer k (0 to 3); null when memory fails.
double* matbuffer(int k);

// ---- stripes ----
char* stripedcl(const char* name, int type, int n);
void matputfullname(char* stripe, int k, const char* eq, const char* nm, const char* op);
// "eq:op.name" of entry k, without "_:" when the equation is empty.
std::string matgetfullname(const char* stripe, int k, int witheq);
void consecstd(char* stripe, int n, char prefix);
// Splits "eq:op.name" into its parts.
int matfullnameparse(const char* tok, char* eq, char* nm, char* op);

// ---- user matrices ----
void killusermat(const char* name);
int makeusermat(MatDesc* d, const char* name, int kind, int rows, int cols);
int umatmustset(const char* name, int type, MatDesc* d);
int umatnotmiss(const MatDesc* d, int whole, const char* label);
int issymmatrix(const char* name, int type);
void fix1x1sym(const char* name, int type);
int matnotfound_m(const char* name);

// ---- inversion ----
// In-place generalized inverse of the symmetric block [first..last] of a
// buffer of stride `stride`; order: -1 terminated forced positions or null;
// last_sweep: position swept last, or -1. 0, or 1 on a break.
int matrinfs(double* buf, int stride, int first, int last, const int* order, int last_sweep);
int matrinf(double* buf, int first, int last, const int* order, int last_sweep);
int matrin(double* buf, int first, int last, int last_sweep);
// One sweep step on position p of an n x n matrix (stride n).
void sweepone(double* a, int n, int p);
// General inverse by LU of an n x n matrix (stride n) in place: 0, or 1 when
// singular (the matrix is then filled with missing values).
int mfnsinv2(double* a, int n);
double matdet(const double* a, int n);
// Lower Cholesky factor in place; 0 or 506.
int stsqrt(double* a, int n);
// Symmetric eigen decomposition: values (descending) and vectors as columns.
int symeigen(const double* a, int n, double* values, double* vectors);
// Singular values of an r x c matrix: U (r x c), w (c), V (c x c).
int matsvdc(const double* a, int r, int c, double* u, double* w, double* v);
// Eigenvalues of a square matrix: real and imaginary parts.
int geigenvals(const double* a, int n, double* re, double* im);

// ---- scalars ----
int scalarset(const char* name, double v);
int scalarfind(const char* name, double* v); // 1 found, 0 not (or a string)
int strscalarset(const char* name, const char* text);
const char* strscalarfind(const char* name); // the text, or null

// ---- commands ----
// `matrix accum`, `glsaccum`, `opaccum`, `vecaccum` (in that order): set by
// the accumulators; each is called with the target name, the tokenizer behind
// the "=". Null: the subcommand says it is not yet available.
extern int (*matrix_accum_hooks[4])(const char* target);
int matrixcmd(int);
// `matrix score`, `matrix dissimilarity`, `matrix substitute`, the
// tokenizer standing behind the subcommand's word.
int matscore();
int matdissim();
int matsubst();
int scalarcmd(int);
// `ereturn post` and `ereturn repost` of the e store, behind `matrix post`
// and `matrix repost`.
int epostcmd(int repost);
// `matrix cat` and `matrix mlout`, the tokenizer behind the word.
int matcat();
int matmlout();
// `constraint` (numbered constraint texts), `matrix makeCns` (the constraint
// matrix of the current estimates, e(Cns)) and `matrix dispCns`.
int constraintcmd(int);
int matmakecns();
int matdispcns();

void link_matrix();

} // namespace korvu
