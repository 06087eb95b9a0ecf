// The instruction set of the matrix language: one table from which the
// emitters, the optimizer, the length function, the byte-swapper and the
// disassembler all read. Code is an array of 32-bit words; an address in code
// is a word index from the start of the function.
#pragma once
#include <cstdint>

namespace korvu {

// Operand layouts.
enum MopLayout : uint8_t {
    ML_NONE,    // no operand
    ML_ADDR,    // code address
    ML_SLOT,    // frame slot
    ML_N,       // integer
    ML_LITD,    // word index of a double in the double block
    ML_LITI,    // word index of the imaginary part in the double block
    ML_LITS,    // word index of a string in the string block
    ML_STR,     // word count, then the packed text
    ML_POSSTR,  // argument position, then a packed text
    ML_SYMN,    // symbol slot, argument count
    ML_IDXN,    // built-in index, argument count
    ML_MINMAX,  // least and greatest argument count
    ML_CLSSTR,  // class, then a packed text
    ML_FINDF,   // clock, object, skip, then a packed text
    ML_MEMBER,  // struct member index
    ML_SLOTMEM, // slot, member
    ML_SLOTMM,  // slot, member, member
    ML_DBLOCK,  // double literal block: count, then the doubles
    ML_SBLOCK,  // string literal block: count, then the strings
};

struct MopInfo {
    const char* name; // null: not an instruction
    MopLayout layout;
    int8_t pops, pushes; // -1: depends on an operand
    const char* what;    // one line of what it does
    void (*xeq)();       // the machine's handler
};

inline constexpr int MOP_COUNT = 157; // 0 to 156; higher numbers index the built-ins

// The table, indexed by opcode.
extern const MopInfo mop_table[MOP_COUNT];

// Names for the opcodes the compiler writes.
enum : uint32_t {
    MOP_GOTO = 1,
    MOP_POP = 2,
    MOP_RETURN = 3,
    MOP_NARGS = 4,
    MOP_STORE = 5,
    MOP_STOREPOP = 6,
    MOP_LOAD = 7,
    MOP_INC = 8,
    MOP_DEC = 9,
    MOP_JMPFALSE = 10,
    MOP_ISMAT = 11,
    MOP_ISSCALAR = 12,
    MOP_AND = 13,
    MOP_EE = 14,
    MOP_GE = 15,
    MOP_LE = 16,
    MOP_GT = 17,
    MOP_LT = 18,
    MOP_NE = 19,
    MOP_NOT = 20,
    MOP_MULT = 21,
    MOP_RSUBSCR = 22,
    MOP_POWER = 23,
    MOP_RSTOSMAT = 24,
    MOP_CALL = 25,
    MOP_ISRVEC = 26,
    MOP_ISCVEC = 27,
    MOP_TST0 = 28,
    MOP_ISVEC = 29,
    MOP_STOP = 30,
    MOP_LDLIT = 31,
    MOP_PLUS = 32,
    MOP_ELIM = 33,
    MOP_FIND = 34,
    MOP_NARGSR = 35,
    MOP_SUB = 36,
    MOP_ALC_RM = 37,
    MOP_DBLOCK = 38,
    MOP_SBLOCK = 39,
    MOP_LDSTR = 40,
    MOP_LIST = 41,
    MOP_LDVOID = 42,
    MOP_OR = 43,
    MOP_RSTOSMATP = 44,
    MOP_BILTIN = 55,
    MOP_ISFCN = 56,
    MOP_LOADF = 57,
    MOP_ADDC = 58,
    MOP_COR = 59,
    MOP_CAND = 60,
    MOP_CSUB = 61,
    MOP_CMULT = 62,
    MOP_CDIV = 63,
    MOP_CEE = 64,
    MOP_CGE = 65,
    MOP_CLE = 66,
    MOP_CLT = 67,
    MOP_CGT = 68,
    MOP_CNE = 69,
    MOP_CADD = 70,
    MOP_NEG = 71,
    MOP_TRANS = 72,
    MOP_DIV = 73,
    MOP_ADDR = 74,
    MOP_ISREAL = 75,
    MOP_ISSTR = 76,
    MOP_CPOWER = 77,
    MOP_DUP = 78,
    MOP_LD0 = 79,
    MOP_LD1 = 80,
    MOP_LDMISS = 81,
    MOP_FILLER = 82,
    MOP_ISCX = 83,
    MOP_LDILIT = 84,
    MOP_ISNUMER = 85,
    MOP_DMULT = 86,
    MOP_ROWTO = 87,
    MOP_COLTO = 88,
    MOP_LINE = 89,
    MOP_ISVOID = 90,
    MOP_LSUBSCR = 91,
    MOP_LSTOSMAT2 = 92,
    MOP_LSUBSCR1 = 93,
    MOP_LSTOSMAT1 = 94,
    MOP_LSTOSMAT2P = 95,
    MOP_LSTOSMAT1P = 96,
    MOP_ALC_PM = 108,
    MOP_DEREF = 112,
    MOP_REF = 113,
    MOP_LDNULL = 114,
    MOP_LSSTOSMAT1 = 115,
    MOP_LSSTOSMAT2 = 116,
    MOP_RSSTOSMAT = 117,
    MOP_SSTOMAT = 118,
    MOP_CALLIND = 119,
    MOP_EXTERN = 120,
    MOP_VERSION = 121,
    MOP_OLC_RM = 122,
    MOP_FINDF = 138,
    MOP_DRILL = 140,
    MOP_LDMATD = 141,
    MOP_LDMATDD = 142,
    MOP_ALC_STCM = 143,
    MOP_OLC_STCM = 147,
    MOP_PREINC = 150,
    MOP_PREDEC = 151,
    MOP_POSTINC = 152,
    MOP_POSTDEC = 153,
    MOP_CASTP = 154,
};

// Length in words of the instruction at code[at] (literal blocks included);
// 0 when the word is not an instruction or the operands run past n.
int m_lofmop(const uint32_t* code, int at, int n);
// Whether the operand word at offset k (1 = first operand) of an instruction
// is a code address.
bool mop_operand_is_addr(uint32_t op, int k);
// Reverses the byte order of every word of a code block except packed text,
// walking the instructions. `tonative`: the words are foreign and are read
// after swapping. Returns 0, or -1 on a word that is not an instruction.
int m_byteswap(uint32_t* code, int n, bool tonative);

} // namespace korvu
