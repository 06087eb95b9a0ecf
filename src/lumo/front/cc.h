// The compiler's private state: the workspace of one compilation, held in one
// dictionary item of type 45 and zapped when the compilation ends, and the
// helpers shared by the front end and code generation.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

namespace korvu {

inline constexpr int MSYM_MAX = 200;
inline constexpr int MFIX_MAX = 10000;
inline constexpr int MTAG_MAX = 500;
inline constexpr int MTYP_MAX = 500;
inline constexpr int MDLIT_MAX = 100;
inline constexpr int MSLIT_MAX = 500;
inline constexpr int MSAREA = 1 << 18;
inline constexpr int MTOK_MAX = 2000;
inline constexpr int MTOKSTR = 1 << 16;
inline constexpr int MTSTK_MAX = 250; // 1000 bytes of 32-bit entries
inline constexpr int MPOST_MAX = 8;
inline constexpr int MSNAMES = 4096;
inline constexpr int32_t NOTAG = -16000;

// Storage classes and use flags of a symbol.
enum : uint8_t { SC_LOCAL = 1, SC_FUNC = 2, SC_EXTERN = 3 };
enum : uint16_t {
    SF_DECL = 1,
    SF_ARG = 2,
    SF_USED = 4,
    SF_SET = 8,
    SF_PUNSET = 16,
    SF_PUNUSED = 32,
    SF_OPT = 64,
};
// Fix-up kinds.
enum : int32_t { FU_ADR = 1, FU_DLIT = 2, FU_SLIT = 3, FU_TAG = 4 };
// Element and organisation types.
enum : int8_t { ET_TM = 0, ET_REAL, ET_STRING, ET_COMPLEX, ET_NUMERIC, ET_POINTER, ET_STRUCT };
enum : int8_t { OT_MATRIX = 0, OT_SCALAR, OT_VECTOR, OT_ROWVEC, OT_COLVEC, OT_VOID };

struct MSym {
    char name[33];
    uint8_t cls;
    uint16_t flags;
    int32_t type;
};
struct MType {
    int8_t el, org, ref;
    int32_t ptr;   // target type of a pointer, -1 otherwise
    int32_t sname; // offset of the struct name, -1 otherwise
};
struct MFix {
    int32_t at;
    int32_t kind;
};
struct MTag {
    int32_t addr;
    char name[8];
};
struct MPgm {
    int32_t nargs;
    int32_t firstopt; // -1 none
    int32_t len;
    int32_t prologue;
    char name[33];
    int32_t infcn;
    int32_t rettype;
    uint32_t* code;
};
struct MTok {
    int32_t code;
    int32_t str; // offset of the text in tokstr
    double num;
};

struct MWork {
    int32_t nsym;
    MSym sym[MSYM_MAX];
    int32_t nfix;
    MFix fix[MFIX_MAX];
    MPgm pgm;
    int32_t ndlit;
    double dlit[MDLIT_MAX];
    int32_t nslit;
    int32_t slit[MSLIT_MAX]; // offsets in sarea
    int32_t slen[MSLIT_MAX];
    int32_t nsarea;
    char sarea[MSAREA];
    int32_t ntag;
    MTag tag[MTAG_MAX];
    int32_t brktag, conttag;
    int32_t ntyp;
    MType typ[MTYP_MAX];
    int32_t nsnames;
    char snames[MSNAMES];
    int32_t ntstk;
    int32_t tstk[MTSTK_MAX];
    int32_t ntok;
    MTok tok[MTOK_MAX];
    int32_t ntokstr;
    char tokstr[MTOKSTR];
    int32_t match[MTOK_MAX];
    int32_t npost;
    uint32_t post[MPOST_MAX];
    int32_t maxpgm; // m_maxpgmsize
    uint32_t code[1];
};

extern MWork* m_work;

// Leaves the compilation after printing the message at level 3.
[[noreturn]] void cc_fail(const char* fmt, ...) __attribute__((format(printf, 1, 2)));
// Prints a message at level 3 without leaving.
void cc_msg(const char* fmt, ...) __attribute__((format(printf, 1, 2)));

// Code words.
void mop_add(uint32_t w);
void mop_add_paddr(uint32_t w);
void mop_add_str(const char* text);
void mop_fix_paddr(int at, uint32_t value);
int mop_here();
void fu_add(int at, int kind);

// Types (the table of the workspace).
int mtyp_add(int el, int org, int ref);
int mtyp_add_ptr(int target, int org, int ref);
int mtyp_addstruct(const char* sname, int org, int ref);
int mtyp_dup(int t);
int mtyp_refcn(int t);
int mtyp_isequal(int a, int b, int strict);
const char* mtyp_sname(int t);
std::string mtyp_text(int t);

// Symbols.
int st_add(const char* name, int cls, int declared);
int st_find(const char* name, int cls);
int st_findoradd(const char* name, int cls, int how);

// Structure definitions, kept between compilations.
struct MMember {
    std::string name;
    int8_t el, org;
    std::string sname; // struct name of a struct member or of a pointer's target
    int8_t ptrel;      // eltype a pointer member points to
};
struct MStructDef {
    std::string name;
    std::vector<MMember> members;
};
extern std::vector<MStructDef> m_structs;
const MStructDef* m_findstruct(const char* name);

// The built-in functions known to the compiler.
struct MBuiltin {
    const char* name;
    int32_t index;
    int8_t el, org;
    int32_t minargs, maxargs;
};
const MBuiltin* m_findbuiltin(const char* name);

// Tags and literals.
int fu_crtag(const char* name);
int fu_find_or_cr_tag(const char* name);
void fu_settagadr(int tag);
void fu_reftag(uint32_t op, int tag); // emits op and the tag operand
void fu_fixtags();
int m_litaddd(double x);
int m_litadds(const char* text, int len);
void cc_litblocks();
// Allocation and assertion opcodes by type.
uint32_t op_alloc(int t);
uint32_t op_optalloc(int t);
void op_tyassert(int el, int org);

// The parser.
void cc_stmt();
void cc_function();
void cc_structdef();
void cc_prologue();
void cc_notes();
extern int m_curline;

// The optimizer over m_work->code[0 .. pgm.len).
void cc_optimize();

} // namespace korvu
