#include "lumo/codegen/opcodes.h"

#include "lumo/vm/xeqops.h"

namespace korvu {

#define OP(n, l, p, q, w, x)                                                                       \
    { n, l, p, q, w, x }
#define NOOP                                                                                       \
    { nullptr, ML_NONE, 0, 0, nullptr, mx_unused }

const MopInfo mop_table[MOP_COUNT] = {
    /* 0 */ NOOP,
    /* 1 */ OP("goto", ML_ADDR, 0, 0, "poll for break; jump", mx_goto),
    /* 2 */ OP("pop", ML_NONE, 1, 0, "release the top", mx_pop),
    /* 3 */ OP("return", ML_NONE, 0, 0, "leave with the top as the result", mx_return),
    /* 4 */ OP("nargs", ML_N, 0, 0, "exact argument count", mx_nargs),
    /* 5 */
    OP("store", ML_SLOT, 1, 1, "copy into slot; the slot object replaces the top", mx_store),
    /* 6 */ OP("storepop", ML_SLOT, 1, 0, "copy into slot, then pop", mx_storepop),
    /* 7 */ OP("load", ML_SLOT, 0, 1, "push frame slot", mx_load),
    /* 8 */ OP("inc", ML_SLOT, 0, 0, "add 1 to a real scalar slot in place", mx_inc),
    /* 9 */ OP("dec", ML_SLOT, 0, 0, "subtract 1 from a real scalar slot in place", mx_dec),
    /* 10 */
    OP("jmpfalse", ML_ADDR, 1, 0, "pop; jump if the last comparison was false", mx_jmpfalse),
    /* 11 */ OP("ismat", ML_NONE, 0, 0, "top must be a matrix", mx_ismat),
    /* 12 */ OP("isscalar", ML_NONE, 0, 0, "top must be 1 x 1", mx_isscalar),
    /* 13 */ OP("opand", ML_NONE, 2, 1, "logical and", mx_opand),
    /* 14 */ OP("opee", ML_NONE, 2, 1, "equal; sets the condition flag", mx_opee),
    /* 15 */ OP("opge", ML_NONE, 2, 1, ">=; sets the condition flag", mx_opge),
    /* 16 */ OP("ople", ML_NONE, 2, 1, "<=; sets the condition flag", mx_ople),
    /* 17 */ OP("opgt", ML_NONE, 2, 1, ">; sets the condition flag", mx_opgt),
    /* 18 */ OP("oplt", ML_NONE, 2, 1, "<; sets the condition flag", mx_oplt),
    /* 19 */ OP("opne", ML_NONE, 2, 1, "not equal; sets the condition flag", mx_opne),
    /* 20 */ OP("opnot", ML_NONE, 1, 1, "logical not", mx_opnot),
    /* 21 */ OP("opmult", ML_NONE, 2, 1, "matrix multiply", mx_opmult),
    /* 22 */ OP("oprsubscr", ML_NONE, 2, 1, "range subscript read x[| |]", mx_oprsubscr),
    /* 23 */ OP("oppower", ML_NONE, 2, 1, "power", mx_oppower),
    /* 24 */ OP("oprstosmat", ML_SLOT, 2, 1, "range subscript store into slot", mx_oprstosmat),
    /* 25 */ OP("opcall", ML_SYMN, -1, 1, "call the function in slot with n arguments", mx_opcall),
    /* 26 */ OP("opisrvec", ML_NONE, 0, 0, "top must be a row vector", mx_opisrvec),
    /* 27 */ OP("opiscvec", ML_NONE, 0, 0, "top must be a column vector", mx_opiscvec),
    /* 28 */ OP("optst0", ML_ADDR, 1, 0, "pop a scalar; jump when it is false", mx_optst0),
    /* 29 */ OP("opisvec", ML_NONE, 0, 0, "top must be a vector", mx_opisvec),
    /* 30 */ OP("opstop", ML_NONE, 0, 1, "push void, then leave", mx_opstop),
    /* 31 */ OP("opldlit", ML_LITD, 0, 1, "push a real literal", mx_opldlit),
    /* 32 */ OP("opplus", ML_NONE, 2, 1, "add", mx_opplus),
    /* 33 */ OP("opelim", ML_N, 0, 0, "skip one word", mx_opelim),
    /* 34 */ OP("opfind", ML_CLSSTR, 0, 1, "push an external, found by name", mx_opfind),
    /* 35 */ OP("nargsr", ML_MINMAX, 0, 0, "argument count within a range", mx_nargsr),
    /* 36 */ OP("opsub", ML_NONE, 2, 1, "subtract", mx_opsub),
    /* 37 */ OP("opalc_rm", ML_STR, 0, 1, "allocate a local real matrix", mx_opalc),
    /* 38 */ OP("dliterals", ML_DBLOCK, 0, 0, "double literal block; never executed", mx_unused),
    /* 39 */ OP("sliterals", ML_SBLOCK, 0, 0, "string literal block; never executed", mx_unused),
    /* 40 */ OP("opldstr", ML_LITS, 0, 1, "push a string literal", mx_opldstr),
    /* 41 */ OP("oplist2", ML_NONE, 0, 0, "display the top", mx_oplist2),
    /* 42 */ OP("opldvoid", ML_NONE, 0, 1, "push void", mx_opldvoid),
    /* 43 */ OP("opor", ML_NONE, 2, 1, "logical or", mx_opor),
    /* 44 */
    OP("oprstosmatp", ML_SLOT, 2, 0, "range subscript store into slot, then pop", mx_oprstosmatp),
    NOOP, NOOP, NOOP, NOOP, NOOP, NOOP, NOOP, NOOP, NOOP,
    NOOP, // 45 to 54
          /* 55 */
    OP("opbiltin", ML_IDXN, -1, 1, "call built-in function index with n arguments", mx_opbiltin),
    /* 56 */ OP("opisfcn", ML_NONE, 0, 0, "top must be a function", mx_opisfcn),
    /* 57 */ OP("loadf", ML_SLOT, 0, 1, "push a function slot", mx_loadf),
    /* 58 */ OP("opaddc", ML_NONE, 2, 1, "column join (,)", mx_opaddc),
    /* 59 */ OP("opcor", ML_NONE, 2, 1, "element-wise or", mx_opcor),
    /* 60 */ OP("opcand", ML_NONE, 2, 1, "element-wise and", mx_opcand),
    /* 61 */ OP("opcsub", ML_NONE, 2, 1, "element-wise subtract", mx_opcsub),
    /* 62 */ OP("opcmult", ML_NONE, 2, 1, "element-wise multiply", mx_opcmult),
    /* 63 */ OP("opcdiv", ML_NONE, 2, 1, "element-wise divide", mx_opcdiv),
    /* 64 */ OP("opcee", ML_NONE, 2, 1, "element-wise equal", mx_opcee),
    /* 65 */ OP("opcge", ML_NONE, 2, 1, "element-wise >=", mx_opcge),
    /* 66 */ OP("opcle", ML_NONE, 2, 1, "element-wise <=", mx_opcle),
    /* 67 */ OP("opclt", ML_NONE, 2, 1, "element-wise <", mx_opclt),
    /* 68 */ OP("opcgt", ML_NONE, 2, 1, "element-wise >", mx_opcgt),
    /* 69 */ OP("opcne", ML_NONE, 2, 1, "element-wise not equal", mx_opcne),
    /* 70 */ OP("opcadd", ML_NONE, 2, 1, "element-wise add", mx_opcadd),
    /* 71 */ OP("opneg", ML_NONE, 1, 1, "negate", mx_opneg),
    /* 72 */ OP("optrans", ML_NONE, 1, 1, "transpose", mx_optrans),
    /* 73 */ OP("opdiv", ML_NONE, 2, 1, "divide", mx_opdiv),
    /* 74 */ OP("opaddr", ML_NONE, 2, 1, "row join (\\)", mx_opaddr),
    /* 75 */ OP("opisreal", ML_NONE, 0, 0, "top must be real", mx_opisreal),
    /* 76 */ OP("opisstr", ML_NONE, 0, 0, "top must be string", mx_opisstr),
    /* 77 */ OP("opcpower", ML_NONE, 2, 1, "element-wise power", mx_opcpower),
    /* 78 */ OP("opdup", ML_NONE, 0, 1, "push the top again", mx_opdup),
    /* 79 */ OP("opld0", ML_NONE, 0, 1, "push 0", mx_opld0),
    /* 80 */ OP("opld1", ML_NONE, 0, 1, "push 1", mx_opld1),
    /* 81 */ OP("opldmiss", ML_NONE, 0, 1, "push the missing value", mx_opldmiss),
    /* 82 */ OP("filler", ML_NONE, 0, 0, "padding; never executed", mx_unused),
    /* 83 */ OP("opiscx", ML_NONE, 0, 0, "top must be complex", mx_opiscx),
    /* 84 */ OP("opldilit", ML_LITI, 0, 1, "push an imaginary literal", mx_opcomplex),
    /* 85 */ OP("opisnumer", ML_NONE, 0, 0, "top must be numeric", mx_opisnumer),
    /* 86 */ OP("opdmult", ML_NONE, 2, 1, "Kronecker product", mx_opdmult),
    /* 87 */ OP("oprowto", ML_NONE, 2, 1, "row range (..)", mx_oprowto),
    /* 88 */ OP("opcolto", ML_NONE, 2, 1, "column range (::)", mx_opcolto),
    /* 89 */ OP("line", ML_N, 0, 0, "record the source line", mx_line),
    /* 90 */ OP("opisvoid", ML_NONE, 0, 0, "top must be void", mx_opisvoid),
    /* 91 */ OP("oplsubscr", ML_NONE, 3, 1, "read x[i,j]", mx_oplsubscr),
    /* 92 */ OP("oplstosmat2", ML_SLOT, 3, 1, "store into slot[i,j]", mx_oplstosmat2),
    /* 93 */ OP("oplsubscr1", ML_NONE, 2, 1, "read x[i]", mx_oplsubscr1),
    /* 94 */ OP("oplstosmat1", ML_SLOT, 2, 1, "store into slot[i]", mx_oplstosmat1),
    /* 95 */ OP("oplstosmat2p", ML_SLOT, 3, 0, "store into slot[i,j], then pop", mx_oplstosmat2p),
    /* 96 */ OP("oplstosmat1p", ML_SLOT, 2, 0, "store into slot[i], then pop", mx_oplstosmat1p),
    /* 97 */ OP("opalc_cm", ML_STR, 0, 1, "allocate a local complex matrix", mx_opalc),
    /* 98 */ OP("opalc_sm", ML_STR, 0, 1, "allocate a local string matrix", mx_opalc),
    /* 99 */ OP("opalc_rr", ML_STR, 0, 1, "allocate a local real row vector", mx_opalc),
    /* 100 */ OP("opalc_cr", ML_STR, 0, 1, "allocate a local complex row vector", mx_opalc),
    /* 101 */ OP("opalc_sr", ML_STR, 0, 1, "allocate a local string row vector", mx_opalc),
    /* 102 */ OP("opalc_rc", ML_STR, 0, 1, "allocate a local real column vector", mx_opalc),
    /* 103 */ OP("opalc_cc", ML_STR, 0, 1, "allocate a local complex column vector", mx_opalc),
    /* 104 */ OP("opalc_sc", ML_STR, 0, 1, "allocate a local string column vector", mx_opalc),
    /* 105 */ OP("opalc_rs", ML_STR, 0, 1, "allocate a local real scalar", mx_opalc),
    /* 106 */ OP("opalc_cs", ML_STR, 0, 1, "allocate a local complex scalar", mx_opalc),
    /* 107 */ OP("opalc_ss", ML_STR, 0, 1, "allocate a local string scalar", mx_opalc),
    /* 108 */ OP("opalc_pm", ML_STR, 0, 1, "allocate a local pointer matrix", mx_opalc),
    /* 109 */ OP("opalc_pr", ML_STR, 0, 1, "allocate a local pointer row vector", mx_opalc),
    /* 110 */ OP("opalc_pc", ML_STR, 0, 1, "allocate a local pointer column vector", mx_opalc),
    /* 111 */ OP("opalc_ps", ML_STR, 0, 1, "allocate a local pointer scalar", mx_opalc),
    /* 112 */ OP("opderef", ML_NONE, 1, 1, "dereference a pointer", mx_opderef),
    /* 113 */ OP("opref", ML_NONE, 1, 1, "take the address", mx_opref),
    /* 114 */ OP("opldnull", ML_NONE, 0, 1, "push NULL", mx_opldnull),
    /* 115 */ OP("oplsstosmat1", ML_NONE, 3, 1, "store into exp[i]", mx_oplsstosmat1),
    /* 116 */ OP("oplsstosmat2", ML_NONE, 4, 1, "store into exp[i,j]", mx_oplsstosmat2),
    /* 117 */ OP("oprsstosmat", ML_NONE, 3, 1, "store into exp[| |]", mx_oprsstosmat),
    /* 118 */ OP("opsstomat", ML_NONE, 2, 1, "store through a pointer, *p = value", mx_opsstomat),
    /* 119 */
    OP("opcallind", ML_N, -1, 1, "call through a function pointer with n arguments", mx_opcallind),
    /* 120 */ OP("opextern", ML_CLSSTR, 0, 1, "declare an external", mx_opextern),
    /* 121 */ OP("version", ML_N, 0, 0, "set the language version", mx_version),
    /* 122 */ OP("opolc_rm", ML_POSSTR, 0, 0, "missing optional argument: real matrix", mx_opolc),
    /* 123 */
    OP("opolc_cm", ML_POSSTR, 0, 0, "missing optional argument: complex matrix", mx_opolc),
    /* 124 */ OP("opolc_sm", ML_POSSTR, 0, 0, "missing optional argument: string matrix", mx_opolc),
    /* 125 */
    OP("opolc_rr", ML_POSSTR, 0, 0, "missing optional argument: real row vector", mx_opolc),
    /* 126 */
    OP("opolc_cr", ML_POSSTR, 0, 0, "missing optional argument: complex row vector", mx_opolc),
    /* 127 */
    OP("opolc_sr", ML_POSSTR, 0, 0, "missing optional argument: string row vector", mx_opolc),
    /* 128 */
    OP("opolc_rc", ML_POSSTR, 0, 0, "missing optional argument: real column vector", mx_opolc),
    /* 129 */
    OP("opolc_cc", ML_POSSTR, 0, 0, "missing optional argument: complex column vector", mx_opolc),
    /* 130 */
    OP("opolc_sc", ML_POSSTR, 0, 0, "missing optional argument: string column vector", mx_opolc),
    /* 131 */ OP("opolc_rs", ML_POSSTR, 0, 0, "missing optional argument: real scalar", mx_opolc),
    /* 132 */
    OP("opolc_cs", ML_POSSTR, 0, 0, "missing optional argument: complex scalar", mx_opolc),
    /* 133 */ OP("opolc_ss", ML_POSSTR, 0, 0, "missing optional argument: string scalar", mx_opolc),
    /* 134 */
    OP("opolc_pm", ML_POSSTR, 0, 0, "missing optional argument: pointer matrix", mx_opolc),
    /* 135 */
    OP("opolc_pr", ML_POSSTR, 0, 0, "missing optional argument: pointer row vector", mx_opolc),
    /* 136 */
    OP("opolc_pc", ML_POSSTR, 0, 0, "missing optional argument: pointer column vector", mx_opolc),
    /* 137 */
    OP("opolc_ps", ML_POSSTR, 0, 0, "missing optional argument: pointer scalar", mx_opolc),
    /* 138 */ OP("opfindf", ML_FINDF, 0, 1, "push a function found by name, cached", mx_opfindf),
    /* 139 */ NOOP,
    /* 140 */ OP("opdrill", ML_MEMBER, 1, 1, "struct member", mx_opdrill),
    /* 141 */ OP("opldmatd", ML_SLOTMEM, 0, 1, "push a member of the struct in slot", mx_opldmatd),
    /* 142 */
    OP("opldmatdd", ML_SLOTMM, 0, 1, "push a member of a member of the struct in slot",
       mx_opldmatdd),
    /* 143 */ OP("opalc_stcm", ML_STR, 0, 1, "allocate a local struct matrix", mx_opalcstruct),
    /* 144 */ OP("opalc_stcr", ML_STR, 0, 1, "allocate a local struct row vector", mx_opalcstruct),
    /* 145 */
    OP("opalc_stcc", ML_STR, 0, 1, "allocate a local struct column vector", mx_opalcstruct),
    /* 146 */ OP("opalc_stcs", ML_STR, 0, 1, "allocate a local struct scalar", mx_opalcstruct),
    /* 147 */
    OP("opolc_stcm", ML_POSSTR, 0, 0, "missing optional argument: struct matrix", mx_opstruct),
    /* 148 */
    OP("opolc_stcr", ML_POSSTR, 0, 0, "missing optional argument: struct row vector", mx_opstruct),
    /* 149 */
    OP("opolc_stcc", ML_POSSTR, 0, 0, "missing optional argument: struct column vector",
       mx_opstruct),
    /* 150 */ OP("preinc", ML_NONE, 0, 0, "add 1 to the real scalar on top", mx_preinc),
    /* 151 */ OP("predec", ML_NONE, 0, 0, "subtract 1 from the real scalar on top", mx_predec),
    /* 152 */ OP("postinc", ML_NONE, 1, 1, "add 1 in place, leave the old value", mx_postinc),
    /* 153 */ OP("postdec", ML_NONE, 1, 1, "subtract 1 in place, leave the old value", mx_postdec),
    /* 154 */ OP("opcastp", ML_NONE, 1, 1, "struct pointer to plain", mx_opcastp), NOOP,
    NOOP, // 155, 156
};

#undef OP
#undef NOOP

// Words of a packed text whose count word stands at code[at].
static int strwords(const uint32_t* code, int at, int n) {
    if (at >= n) return -1;
    return 1 + static_cast<int>(code[at]);
}

int m_lofmop(const uint32_t* code, int at, int n) {
    if (at < 0 || at >= n) return 0;
    const uint32_t op = code[at];
    if (op >= MOP_COUNT || !mop_table[op].name) return 0;
    int len = 0;
    switch (mop_table[op].layout) {
    case ML_NONE: len = 1; break;
    case ML_ADDR:
    case ML_SLOT:
    case ML_N:
    case ML_LITD:
    case ML_LITI:
    case ML_LITS:
    case ML_MEMBER: len = 2; break;
    case ML_SYMN:
    case ML_IDXN:
    case ML_MINMAX:
    case ML_SLOTMEM: len = 3; break;
    case ML_SLOTMM: len = 4; break;
    case ML_STR: {
        int w = strwords(code, at + 1, n);
        len = w < 0 ? 0 : 1 + w;
        break;
    }
    case ML_POSSTR:
    case ML_CLSSTR: {
        int w = strwords(code, at + 2, n);
        len = w < 0 ? 0 : 2 + w;
        break;
    }
    case ML_FINDF: {
        int w = strwords(code, at + 4, n);
        len = w < 0 ? 0 : 4 + w;
        break;
    }
    case ML_DBLOCK:
        if (at + 1 >= n) return 0;
        len = 2 + 2 * static_cast<int>(code[at + 1] & 0xffff);
        break;
    case ML_SBLOCK: {
        if (at + 1 >= n) return 0;
        int p = at + 2;
        for (uint32_t k = 0; k < code[at + 1]; k++) {
            int w = strwords(code, p, n);
            if (w <= 0) return 0;
            p += w;
            if (p > n) return 0;
        }
        len = p - at;
        break;
    }
    }
    return at + len <= n ? len : 0;
}

bool mop_operand_is_addr(uint32_t op, int k) {
    return op < MOP_COUNT && mop_table[op].layout == ML_ADDR && k == 1;
}

static uint32_t bswap(uint32_t w) {
    return __builtin_bswap32(w);
}

int m_byteswap(uint32_t* code, int n, bool tonative) {
    // the two header words, then instructions
    if (n < 2) return -1;
    code[0] = bswap(code[0]);
    code[1] = bswap(code[1]);
    int at = 2;
    while (at < n) {
        uint32_t op = tonative ? bswap(code[at]) : code[at];
        if (op >= MOP_COUNT || !mop_table[op].name) return -1;
        const MopLayout lay = mop_table[op].layout;
        // the count words needed to walk must be read in native order
        auto native = [&](int i) { return tonative ? bswap(code[i]) : code[i]; };
        auto swapstr = [&](int i) -> int { // returns words of the text with its count
            if (i >= n) return -1;
            int w = 1 + static_cast<int>(native(i));
            if (i + w > n) return -1;
            code[i] = bswap(code[i]);
            return w;
        };
        int len = 0;
        switch (lay) {
        case ML_STR:
        case ML_POSSTR:
        case ML_CLSSTR:
        case ML_FINDF: {
            int lead = lay == ML_STR ? 1 : lay == ML_FINDF ? 4 : 2;
            if (at + lead > n) return -1;
            for (int i = 0; i < lead; i++) code[at + i] = bswap(code[at + i]);
            int w = swapstr(at + lead);
            if (w < 0) return -1;
            len = lead + w;
            break;
        }
        case ML_DBLOCK: {
            if (at + 1 >= n) return -1;
            int cnt = static_cast<int>(native(at + 1) & 0xffff);
            if (at + 2 + 2 * cnt > n) return -1;
            code[at] = bswap(code[at]);
            code[at + 1] = bswap(code[at + 1]);
            for (int i = 0; i < cnt; i++) { // a double is swapped as 8 bytes
                uint32_t* d = code + at + 2 + 2 * i;
                uint32_t a = bswap(d[0]), b = bswap(d[1]);
                d[0] = b;
                d[1] = a;
            }
            len = 2 + 2 * cnt;
            break;
        }
        case ML_SBLOCK: {
            if (at + 1 >= n) return -1;
            uint32_t cnt = native(at + 1);
            code[at] = bswap(code[at]);
            code[at + 1] = bswap(code[at + 1]);
            int p = at + 2;
            for (uint32_t k = 0; k < cnt; k++) {
                // a string literal: word count, byte count, bytes
                if (p + 1 >= n) return -1;
                int w = 1 + static_cast<int>(native(p));
                if (w < 2 || p + w > n) return -1;
                code[p] = bswap(code[p]);
                code[p + 1] = bswap(code[p + 1]);
                p += w;
            }
            len = p - at;
            break;
        }
        default: {
            uint32_t save = code[at];
            if (tonative) code[at] = op;
            len = m_lofmop(code, at, n);
            code[at] = save;
            if (!len) return -1;
            for (int i = 0; i < len; i++) code[at + i] = bswap(code[at + i]);
            break;
        }
        }
        at += len;
    }
    return 0;
}

} // namespace korvu
