// Expressions: the tokens of one expression are collected in an array, and
// ranges of it are compiled recursively by splitting at the lowest-priority
// operator, with no tree; words go straight to the code buffer. A type stack
// runs beside the operands.
#include <cmath>
#include <cstring>

#include "data/area/missing.h"
#include "kernel/loop/brk.h"
#include "lumo/codegen/opcodes.h"
#include "lumo/front/cc.h"
#include "lumo/front/expr.h"
#include "lumo/front/lexer.h"

namespace korvu {

static MWork* W() {
    return m_work;
}
static int T(int i) {
    return W()->tok[i].code;
}
static const char* S(int i) {
    return W()->tokstr + W()->tok[i].str;
}
static int M(int i) {
    return W()->match[i];
}

// Collecting.

static bool isopener(int t) {
    return t == '(' || t == '[' || t == 158;
}
static bool iscloser(int t) {
    return t == ')' || t == ']' || t == 159;
}
static int closerof(int t) {
    return t == '(' ? ')' : t == '[' ? ']' : 159;
}

void cc_exprtok(const int* stops, bool nlok) {
    MWork* w = W();
    w->ntok = 0;
    w->ntokstr = 0;
    int stack[100];
    int depth = 0;
    for (;;) {
        if (m_token == 10) {
            if (depth > 0 || nlok) {
                m_nlokay();
                continue;
            }
            break;
        }
        if (depth == 0) {
            bool stop = false;
            for (const int* s = stops; *s; s++)
                if (*s == m_token) stop = true;
            if (stop) break;
        }
        if (w->ntok >= MTOK_MAX) cc_fail("too many tokens\n");
        const int k = w->ntok;
        const int len = static_cast<int>(m_tokstr.size()) + 1;
        if (w->ntokstr + len > MTOKSTR) cc_fail("expression too long\n");
        memcpy(w->tokstr + w->ntokstr, m_tokstr.c_str(), len);
        w->tok[k].code = m_token;
        w->tok[k].str = w->ntokstr;
        w->tok[k].num = m_toknum;
        w->ntokstr += len;
        w->match[k] = -1;
        if (isopener(m_token)) {
            if (depth >= 100) cc_fail("too many '(', '[', or '['\n");
            stack[depth++] = k;
        } else if (iscloser(m_token)) {
            if (depth == 0) cc_fail("too many '%s'\n", m_tokstr.c_str());
            const int o = stack[--depth];
            if (closerof(w->tok[o].code) != m_token)
                cc_fail("%s found where %s expected\n",
                        m_tokdesc(m_token, m_tokstr.c_str()).c_str(),
                        m_tokdesc(closerof(w->tok[o].code), "|]").c_str());
            w->match[o] = k;
            w->match[k] = o;
        }
        w->ntok++;
        m_gettok();
    }
}

// The type stack.

static void tpush(int t) {
    MWork* w = W();
    if (w->ntstk >= MTSTK_MAX) cc_fail("expr. stack misaligned, n=%d\n", w->ntstk);
    w->tstk[w->ntstk++] = t;
}
static int tpop() {
    MWork* w = W();
    if (w->ntstk <= 0) cc_fail("expr. stack misaligned, n=%d\n", w->ntstk);
    return w->tstk[--w->ntstk];
}
static int EL(int t) {
    return W()->typ[t].el;
}
static int ORG(int t) {
    return W()->typ[t].org;
}

// Binary operators, lowest priority first.
struct BinOp {
    int tok;
    int level;
    uint32_t op;
    const char* name;
    int kind; // 0 arith, 1 equality, 2 order, 3 logic, 4 join, 5 range, 6 plus
};
static const BinOp binops[] = {
    {'\\', 3, 74, "\\ (row join)", 4},
    {157, 4, 88, ":: (column range)", 5},
    {',', 5, 58, ", (column join)", 4},
    {156, 6, 87, ".. (row range)", 5},
    {152, 7, 59, ":| (or)", 3},
    {'|', 8, 43, "| (or)", 3},
    {124, 8, 43, "| (or)", 3},
    {153, 9, 60, ":& (and)", 3},
    {'&', 10, 13, "& (and)", 3},
    {141, 11, 64, ":== (equal)", 1},
    {133, 12, 14, "== (equal)", 1},
    {143, 13, 65, ":>= (greater or equal)", 2},
    {136, 14, 15, ">= (greater or equal)", 2},
    {145, 15, 66, ":<= (less or equal)", 2},
    {135, 16, 16, "<= (less or equal)", 2},
    {144, 17, 67, ":< (less than)", 2},
    {'<', 18, 18, "< (less than)", 2},
    {142, 19, 68, ":> (greater than)", 2},
    {'>', 20, 17, "> (greater than)", 2},
    {147, 21, 69, ":!= (not equal)", 1},
    {134, 22, 19, "!= (not equal)", 1},
    {150, 23, 70, ":+ (addition)", 6},
    {'+', 24, 32, "+ (addition)", 6},
    {151, 25, 61, ":- (subtraction)", 0},
    {'-', 26, 36, "- (subtraction)", 0},
    {149, 27, 62, ":* (multiplication)", 0},
    {'*', 28, 21, "* (multiplication)", 0},
    {'#', 29, 86, "# (Kronecker)", 0},
    {148, 30, 63, ":/ (division)", 0},
    {'/', 31, 73, "/ (division)", 0},
    {154, 32, 77, ":^ (power)", 0},
    {'^', 33, 23, "^ (power)", 0},
};

static const BinOp* findbin(int tok) {
    for (const BinOp& b : binops)
        if (b.tok == tok) return &b;
    return nullptr;
}

// Whether token i ends an operand, so that an operator after it is binary.
static bool opend(int i) {
    switch (T(i)) {
    case 130:
    case 131:
    case 132:
    case 155:
    case ')':
    case ']':
    case 159:
    case '\'':
    case 137:
    case 138:
    case 240: return true;
    default: return false;
    }
}

static bool known(int el) {
    return el != ET_TM;
}
static bool numfam(int el) {
    return el == ET_REAL || el == ET_COMPLEX || el == ET_NUMERIC;
}

[[noreturn]] static void mismatch2(const char* op, int a, int b) {
    cc_fail("type mismatch:  %s:  %s vs. %s\n", op, mtyp_text(a).c_str(), mtyp_text(b).c_str());
}
[[noreturn]] static void mismatch1(const char* op, int a) {
    cc_fail("type mismatch:  %s:  %s\n", op, mtyp_text(a).c_str());
}

static int binrule(const BinOp& b, int x, int y) {
    const int ex = EL(x), ey = EL(y);
    const bool both = known(ex) && known(ey);
    const bool scal = ORG(x) == OT_SCALAR && ORG(y) == OT_SCALAR;
    const bool colon = b.op >= 59 && b.op <= 70;
    auto strnum = [&]() {
        return both && ((ex == ET_STRING && numfam(ey)) || (ey == ET_STRING && numfam(ex)));
    };
    auto ptrin = [&]() { return ex == ET_POINTER || ey == ET_POINTER; };
    auto structin = [&]() { return ex == ET_STRUCT || ey == ET_STRUCT; };
    switch (b.kind) {
    case 0: // arithmetic
    case 6: // addition, which also joins strings
        if (strnum() || ptrin() || structin()) mismatch2(b.name, x, y);
        if ((ex == ET_STRING || ey == ET_STRING) && b.kind == 0 && b.op != 21 && b.op != 62)
            mismatch2(b.name, x, y);
        {
            int el = ET_TM;
            if (both) {
                if (ex == ET_STRING || ey == ET_STRING)
                    el = ET_STRING;
                else if (ex == ET_COMPLEX || ey == ET_COMPLEX)
                    el = ET_COMPLEX;
                else if (ex == ET_NUMERIC || ey == ET_NUMERIC)
                    el = ET_NUMERIC;
                else
                    el = ET_REAL;
            }
            return mtyp_add(el, scal ? OT_SCALAR : OT_MATRIX, 0);
        }
    case 1: // equality
        if (strnum() || (both && (ex == ET_POINTER) != (ey == ET_POINTER)) || structin())
            mismatch2(b.name, x, y);
        return mtyp_add(ET_REAL, colon ? OT_MATRIX : OT_SCALAR, 0);
    case 2: // order
        if (strnum() || ptrin() || structin()) mismatch2(b.name, x, y);
        return mtyp_add(ET_REAL, colon ? OT_MATRIX : OT_SCALAR, 0);
    case 3: // logic
        if ((known(ex) && !numfam(ex)) || (known(ey) && !numfam(ey))) mismatch2(b.name, x, y);
        return mtyp_add(ET_REAL, colon ? OT_MATRIX : OT_SCALAR, 0);
    case 4: // joins
        if (strnum() || structin() || (both && (ex == ET_POINTER) != (ey == ET_POINTER)))
            mismatch2(b.name, x, y);
        {
            int el = ET_TM;
            if (both) el = ex == ey ? ex : (numfam(ex) && numfam(ey)) ? ET_NUMERIC : ET_TM;
            return mtyp_add(el, OT_MATRIX, 0);
        }
    default: // ranges
        if ((known(ex) && !numfam(ex)) || (known(ey) && !numfam(ey))) mismatch2(b.name, x, y);
        return mtyp_add(ET_REAL, OT_MATRIX, 0);
    }
}

// Names.

static int var_slot(const char* name, int how) {
    return st_findoradd(name, W()->pgm.infcn ? SC_LOCAL : SC_EXTERN, how);
}

static bool isreserved(int tok) {
    return tok >= 200 && tok != 240;
}

static void compile_name(int i) {
    const char* name = S(i);
    MWork* w = W();
    const int f = st_find(name, SC_FUNC);
    if (f >= 0) {
        if (!(w->sym[f].flags & SF_ARG)) cc_fail("object not function or matrix\n");
        w->sym[f].flags |= SF_USED;
        mop_add(MOP_LOADF);
        mop_add(static_cast<uint32_t>(f));
        tpush(mtyp_add(ET_TM, OT_MATRIX, 0));
        return;
    }
    const int s = var_slot(name, 2);
    mop_add(MOP_LOAD);
    mop_add(static_cast<uint32_t>(s));
    tpush(w->sym[s].type);
}

static void compile_number(double x, bool imag) {
    if (imag) {
        const int k = m_litaddd(x);
        mop_add(MOP_LDILIT);
        fu_add(mop_here(), FU_DLIT);
        mop_add(static_cast<uint32_t>(k));
        tpush(mtyp_add(ET_COMPLEX, OT_SCALAR, 0));
        return;
    }
    if (x == 0 && !std::signbit(x))
        mop_add(MOP_LD0);
    else if (x == 1)
        mop_add(MOP_LD1);
    else if (dbits(x) == dbits(misval))
        mop_add(MOP_LDMISS);
    else {
        const int k = m_litaddd(x);
        mop_add(MOP_LDLIT);
        fu_add(mop_here(), FU_DLIT);
        mop_add(static_cast<uint32_t>(k));
    }
    tpush(mtyp_add(ET_REAL, OT_SCALAR, 0));
}

static void cc_sub(int lo, int hi);

// The first token tok of [lo, hi) outside brackets, or -1.
static int firsttop(int lo, int hi, int tok) {
    for (int i = lo; i < hi; i++) {
        if (isopener(T(i))) {
            i = M(i);
            continue;
        }
        if (T(i) == tok) return i;
    }
    return -1;
}

// The pieces of a list split at top-level commas: [lo, hi) into cuts; more
// than maxcuts pieces fail with toomany.
static int splitcommas(int lo, int hi, int* cuts, int maxcuts,
                       const char* toomany = "too many list elements\n") {
    int n = 0;
    cuts[n++] = lo - 1;
    for (int i = lo; (i = firsttop(i, hi, ',')) >= 0; i++) {
        if (n >= maxcuts) cc_fail("%s", toomany);
        cuts[n++] = i;
    }
    cuts[n] = hi;
    return n; // pieces
}

// Compiles the subscripts of [lo, hi) (inside the brackets); returns their count.
static int compile_subscripts(int lo, int hi) {
    if (lo >= hi) cc_fail("invalid []\n");
    int cuts[4];
    const int n = splitcommas(lo, hi, cuts, 2, "invalid [ ] list subscript\n");
    for (int k = 0; k < n; k++) {
        const int a = cuts[k] + 1, b = cuts[k + 1];
        if (a >= b) cc_fail("invalid []\n");
        cc_sub(a, b);
        const int t = tpop();
        if (EL(t) == ET_STRING || EL(t) == ET_STRUCT) mismatch1("[] (subscripts)", t);
    }
    return n;
}

static void compile_call(int lo, int hi) {
    MWork* w = W();
    const char* name = S(lo);
    int cuts[202];
    int nargs = 0;
    const int a0 = lo + 2, a1 = hi - 1;
    if (a0 < a1) nargs = splitcommas(a0, a1, cuts, 201);
    const MBuiltin* b = m_findbuiltin(name);
    for (int k = 0; k < nargs; k++) {
        const int a = cuts[k] + 1, e = cuts[k + 1];
        if (a >= e) cc_fail("nothing found where subexp expected\n");
        cc_sub(a, e);
        tpop();
    }
    if (b) {
        if (nargs < b->minargs || nargs > b->maxargs)
            cc_fail("wrong number of arguments for %s()\n", name);
        mop_add(MOP_BILTIN);
        mop_add(static_cast<uint32_t>(b->index));
        mop_add(static_cast<uint32_t>(nargs));
        tpush(mtyp_add(b->el, b->org, 0));
        return;
    }
    int s = st_find(name, SC_FUNC);
    if (s < 0) {
        if (st_find(name, SC_LOCAL) >= 0) cc_fail("symbol %s multiply defined\n", name);
        s = st_add(name, SC_FUNC, 1);
    }
    w->sym[s].flags |= SF_USED;
    mop_add(MOP_CALL);
    mop_add(static_cast<uint32_t>(s));
    mop_add(static_cast<uint32_t>(nargs));
    tpush(mtyp_add(ET_TM, OT_MATRIX, 0));
}

// Member index of `member` in the struct type t.
static int member_index(int t, const char* member, int* mtype) {
    if (EL(t) != ET_STRUCT) cc_fail("pointer or struct expected\n");
    const char* sname = mtyp_sname(t);
    const MStructDef* d = m_findstruct(sname);
    if (!d) cc_fail("%s not found -- struct %s\n", sname, sname);
    for (size_t k = 0; k < d->members.size(); k++)
        if (d->members[k].name == member) {
            const MMember& mm = d->members[k];
            if (mm.el == ET_STRUCT)
                *mtype = mtyp_addstruct(mm.sname.c_str(), mm.org, 0);
            else if (mm.el == ET_POINTER) {
                int tgt = mm.ptrel == ET_STRUCT ? mtyp_addstruct(mm.sname.c_str(), OT_SCALAR, 0)
                                                : mtyp_add(mm.ptrel, OT_MATRIX, 0);
                *mtype = mtyp_add_ptr(tgt, mm.org, 0);
            } else
                *mtype = mtyp_add(mm.el, mm.org, 0);
            return static_cast<int>(k) + 1;
        }
    cc_fail("%s contains no such member\n", member);
}

static void postpone(uint32_t op, int slot) {
    MWork* w = W();
    if (w->npost >= MPOST_MAX) cc_fail("too many postponed ++ or --\n");
    w->post[w->npost++] = (op << 16) | static_cast<uint32_t>(slot);
}

static bool isliteral(int i) {
    return T(i) == 130 || T(i) == 132 || T(i) == 155 || T(i) == 240;
}

static void compile_assign(int lo, int eq, int hi) {
    MWork* w = W();
    if (lo >= eq) cc_fail("invalid lval\n");
    cc_sub(eq + 1, hi);
    const int r = tpop();
    auto checkstore = [&](int lt) {
        const int el = EL(lt);
        if (!known(el) || !known(EL(r))) return;
        if (el == ET_NUMERIC && numfam(EL(r))) return;
        if (!mtyp_isequal(lt, r, 0)) mismatch2("= (assignment)", lt, r);
    };
    // a plain name
    if (eq - lo == 1) {
        if (T(lo) != 131) cc_fail("invalid lval\n");
        if (st_find(S(lo), SC_FUNC) >= 0) cc_fail("invalid lval\n");
        const int s = var_slot(S(lo), 1);
        checkstore(w->sym[s].type);
        mop_add(MOP_STORE);
        mop_add(static_cast<uint32_t>(s));
        tpush(known(EL(w->sym[s].type)) ? w->sym[s].type : r);
        return;
    }
    const int last = T(eq - 1);
    if (last == ']' || last == 159) {
        const int ob = M(eq - 1);
        if (ob == lo) cc_fail("invalid lval\n");
        const bool range = last == 159;
        if (ob - lo == 1 && T(lo) == 131) {
            if (st_find(S(lo), SC_FUNC) >= 0) cc_fail("invalid subscripted lval\n");
            const int s = var_slot(S(lo), 1);
            w->sym[s].flags |= SF_USED;
            uint32_t op;
            if (range) {
                if (ob + 1 >= eq - 1) cc_fail("invalid [||]\n");
                cc_sub(ob + 1, eq - 1);
                tpop();
                op = MOP_RSTOSMAT;
            } else {
                op = compile_subscripts(ob + 1, eq - 1) == 2 ? MOP_LSTOSMAT2 : MOP_LSTOSMAT1;
            }
            mop_add(op);
            mop_add(static_cast<uint32_t>(s));
            tpush(r);
            return;
        }
        int blo = lo, bhi = ob;
        while (T(blo) == '(' && M(blo) == bhi - 1 && blo + 1 < bhi - 1) blo++, bhi--;
        if (bhi - blo == 1 && isliteral(blo)) cc_fail("invalid subscripted lval\n");
        cc_sub(lo, ob);
        tpop();
        if (range) {
            if (ob + 1 >= eq - 1) cc_fail("invalid [||]\n");
            cc_sub(ob + 1, eq - 1);
            tpop();
            mop_add(MOP_RSSTOSMAT);
        } else {
            mop_add(compile_subscripts(ob + 1, eq - 1) == 2 ? MOP_LSSTOSMAT2 : MOP_LSSTOSMAT1);
        }
        tpush(r);
        return;
    }
    // a struct member, s.x or p->x: the member itself is the target, stored
    // through its address
    if (eq - lo >= 3 && T(eq - 1) == 131 && (T(eq - 2) == 160 || T(eq - 2) == 161)) {
        cc_sub(lo, eq);
        checkstore(tpop());
        mop_add(MOP_REF);
        mop_add(MOP_SSTOMAT);
        tpush(r);
        return;
    }
    if (T(lo) == '*') {
        cc_sub(lo + 1, eq);
        const int p = tpop();
        if (known(EL(p)) && EL(p) != ET_POINTER) mismatch1("* (deref.)", p);
        mop_add(MOP_SSTOMAT);
        tpush(r);
        return;
    }
    cc_fail("invalid lval\n");
}

static void compile_incdec(int lo, int hi, bool post) {
    MWork* w = W();
    const int tok = post ? T(hi - 1) : T(lo);
    const int a = post ? lo : lo + 1, b = post ? hi - 1 : hi;
    if (a >= b || (b - a == 1 && T(a) != 131)) cc_fail("invalid use of ++ or --\n");
    if (b - a == 1) {
        if (st_find(S(a), SC_FUNC) >= 0) cc_fail("invalid use of ++ or --\n");
        const int s = var_slot(S(a), 1);
        w->sym[s].flags |= SF_USED;
        const int t = w->sym[s].type;
        if (known(EL(t)) && EL(t) != ET_REAL && EL(t) != ET_NUMERIC)
            mismatch1(tok == 137 ? "++ (increment)" : "-- (decrement)", t);
        const uint32_t op = tok == 137 ? MOP_INC : MOP_DEC;
        if (post) {
            mop_add(MOP_LOAD);
            mop_add(static_cast<uint32_t>(s));
            postpone(op, s);
        } else {
            mop_add(op);
            mop_add(static_cast<uint32_t>(s));
            mop_add(MOP_LOAD);
            mop_add(static_cast<uint32_t>(s));
        }
        tpush(mtyp_add(ET_REAL, OT_SCALAR, 0));
        return;
    }
    cc_sub(a, b);
    const int t = tpop();
    if (known(EL(t)) && EL(t) != ET_REAL && EL(t) != ET_NUMERIC)
        mismatch1(tok == 137 ? "++ (increment)" : "-- (decrement)", t);
    if (post)
        mop_add(tok == 137 ? MOP_POSTINC : MOP_POSTDEC);
    else
        mop_add(tok == 137 ? MOP_PREINC : MOP_PREDEC);
    tpush(mtyp_add(ET_REAL, OT_SCALAR, 0));
}

int m_exprflags; // EX_ASSIGN, EX_NOLIST of the top-level expression

static void cc_sub(int lo, int hi) {
    if (stopflag) cc_fail("--Break--\n");
    if (lo >= hi) cc_fail("nothing found where subexp expected\n");
    // enclosing brackets
    while (T(lo) == '(' && M(lo) == hi - 1) {
        lo++;
        hi--;
        if (lo >= hi) cc_fail("expression invalid\n");
    }
    // a cast to void
    if (T(lo) == '(' && lo + 2 < hi && T(lo + 1) == 213 && T(lo + 2) == ')') {
        cc_sub(lo + 3, hi);
        tpop();
        mop_add(MOP_POP);
        mop_add(MOP_LDVOID);
        tpush(mtyp_add(ET_TM, OT_VOID, 0));
        m_exprflags |= EX_NOLIST;
        return;
    }
    // assignment, at the first "=" outside brackets
    if (const int i = firsttop(lo, hi, '='); i >= 0) {
        compile_assign(lo, i, hi);
        return;
    }
    // the conditional
    if (const int i = firsttop(lo, hi, '?'); i >= 0) {
        int nest = 0, colon = -1;
        for (int j = i + 1; j < hi; j++) {
            if (isopener(T(j))) {
                j = M(j);
                continue;
            }
            if (T(j) == '?') nest++;
            if (T(j) == ':') {
                if (nest == 0) {
                    colon = j;
                    break;
                }
                nest--;
            }
        }
        if (colon < 0) cc_fail("%s found where %s expected\n", "nothing", "':'");
        cc_sub(lo, i);
        const int c = tpop();
        if (known(EL(c)) && !numfam(EL(c))) mismatch1("? (conditional)", c);
        const int lelse = fu_crtag(""), lend = fu_crtag("");
        fu_reftag(MOP_TST0, lelse);
        cc_sub(i + 1, colon);
        const int a = tpop();
        fu_reftag(MOP_GOTO, lend);
        fu_settagadr(lelse);
        cc_sub(colon + 1, hi);
        const int b = tpop();
        fu_settagadr(lend);
        tpush(mtyp_isequal(a, b, 1) ? a : mtyp_add(ET_TM, OT_MATRIX, 0));
        return;
    }
    // binary operators, right to left outside brackets
    const BinOp* best = nullptr;
    int at = -1;
    for (int i = hi - 1; i > lo; i--) {
        if (iscloser(T(i))) {
            i = M(i);
            continue;
        }
        const BinOp* b = findbin(T(i));
        if (!b || !opend(i - 1)) continue;
        if (!best || b->level < best->level) {
            best = b;
            at = i;
        }
    }
    if (best) {
        cc_sub(lo, at);
        cc_sub(at + 1, hi);
        const int y = tpop(), x = tpop();
        mop_add(best->op);
        tpush(binrule(*best, x, y));
        return;
    }
    // transpose
    if (T(hi - 1) == '\'') {
        cc_sub(lo, hi - 1);
        const int t = tpop();
        mop_add(MOP_TRANS);
        int org = ORG(t);
        if (org == OT_ROWVEC)
            org = OT_COLVEC;
        else if (org == OT_COLVEC)
            org = OT_ROWVEC;
        tpush(EL(t) == ET_POINTER || EL(t) == ET_STRUCT ? t : mtyp_add(EL(t), org, 0));
        return;
    }
    if (hi - lo == 1) {
        switch (T(lo)) {
        case 132: {
            const int k = m_litadds(S(lo), static_cast<int>(strlen(S(lo))));
            mop_add(MOP_LDSTR);
            fu_add(mop_here(), FU_SLIT);
            mop_add(static_cast<uint32_t>(k));
            tpush(mtyp_add(ET_STRING, OT_SCALAR, 0));
            return;
        }
        case 130: compile_number(W()->tok[lo].num, false); return;
        case 155: compile_number(W()->tok[lo].num, true); return;
        case 240:
            mop_add(MOP_LDNULL);
            tpush(mtyp_add(ET_POINTER, OT_SCALAR, 0));
            return;
        case 131: compile_name(lo); return;
        default:
            if (isreserved(T(lo)))
                cc_fail("%s found where subexp expected\n", m_tokdesc(T(lo), S(lo)).c_str());
            cc_fail("expression invalid\n");
        }
    }
    // a negative literal, folded; missing stays as it is
    if (hi - lo == 2 && T(lo) == '-' && (T(lo + 1) == 130 || T(lo + 1) == 155)) {
        const double x = W()->tok[lo + 1].num;
        compile_number(ismissing(x) ? x : (x == 0 ? 0.0 : -x), T(lo + 1) == 155);
        return;
    }
    // a call through a pointer, (*f)(...)
    if (T(lo) == '(' && M(lo) + 1 < hi && T(M(lo) + 1) == '(' && M(M(lo) + 1) == hi - 1) {
        const int c = M(lo);
        int a = lo + 1;
        if (T(a) == '*') a++;
        cc_sub(a, c);
        const int p = tpop();
        if (known(EL(p)) && EL(p) != ET_POINTER) mismatch1("* (deref.)", p);
        int cuts[202];
        int nargs = 0;
        if (c + 2 < hi - 1) nargs = splitcommas(c + 2, hi - 1, cuts, 201);
        for (int k = 0; k < nargs; k++) {
            if (cuts[k] + 1 >= cuts[k + 1]) cc_fail("nothing found where subexp expected\n");
            cc_sub(cuts[k] + 1, cuts[k + 1]);
            tpop();
        }
        mop_add(MOP_CALLIND);
        mop_add(static_cast<uint32_t>(nargs));
        tpush(mtyp_add(ET_TM, OT_MATRIX, 0));
        return;
    }
    // prefix operators
    if (T(lo) == '*') {
        cc_sub(lo + 1, hi);
        const int p = tpop();
        if (known(EL(p)) && EL(p) != ET_POINTER) mismatch1("* (deref.)", p);
        mop_add(MOP_DEREF);
        tpush(EL(p) == ET_POINTER ? W()->typ[p].ptr : mtyp_add(ET_TM, OT_MATRIX, 0));
        return;
    }
    if (T(lo) == '&') {
        if (lo + 2 < hi && T(lo + 1) == 131 && T(lo + 2) == '(' && M(lo + 2) == hi - 1) {
            const char* name = S(lo + 1);
            if (lo + 3 != hi - 1) cc_fail("invalid &fcn()\n");
            if (m_findbuiltin(name)) cc_fail("%s() built-in, may not evaluate address\n", name);
            mop_add(MOP_FINDF);
            mop_add(0);
            mop_add(0);
            mop_add(0);
            mop_add_str(name);
            mop_add(MOP_REF);
            tpush(mtyp_add(ET_POINTER, OT_SCALAR, 0));
            return;
        }
        if (hi - lo == 2 && T(lo + 1) == 131) {
            const int s = var_slot(S(lo + 1), 1);
            W()->sym[s].flags |= SF_USED;
        }
        cc_sub(lo + 1, hi);
        const int t = tpop();
        mop_add(MOP_REF);
        tpush(mtyp_add_ptr(t, OT_SCALAR, 0));
        return;
    }
    if (T(lo) == '-' || T(lo) == '!') {
        const bool neg = T(lo) == '-';
        cc_sub(lo + 1, hi);
        const int t = tpop();
        if (neg && known(EL(t)) && !numfam(EL(t))) mismatch1("- (negation)", t);
        if (!neg && known(EL(t)) && !numfam(EL(t))) mismatch1("! (not)", t);
        mop_add(neg ? MOP_NEG : MOP_NOT);
        tpush(neg ? mtyp_add(EL(t), ORG(t), 0) : mtyp_add(ET_REAL, ORG(t), 0));
        return;
    }
    // subscripts
    if (T(hi - 1) == ']' || T(hi - 1) == 159) {
        const int ob = M(hi - 1);
        if (ob <= lo) cc_fail(T(hi - 1) == ']' ? "invalid []\n" : "invalid [||]\n");
        cc_sub(lo, ob);
        const int t = tpop();
        if (EL(t) == ET_STRUCT && ORG(t) == OT_SCALAR) mismatch1("[] (subscripts)", t);
        if (T(hi - 1) == 159) {
            if (ob + 1 >= hi - 1) cc_fail("invalid [||]\n");
            cc_sub(ob + 1, hi - 1);
            const int r = tpop();
            if (EL(r) == ET_STRING) mismatch1("[] (subscripts)", r);
            mop_add(MOP_RSUBSCR);
            tpush(
                mtyp_add(EL(t) == ET_POINTER || EL(t) == ET_STRUCT ? ET_TM : EL(t), OT_MATRIX, 0));
            return;
        }
        const int n = compile_subscripts(ob + 1, hi - 1);
        mop_add(n == 2 ? MOP_LSUBSCR : MOP_LSUBSCR1);
        tpush(mtyp_add(EL(t) == ET_POINTER || EL(t) == ET_STRUCT ? ET_TM : EL(t), OT_MATRIX, 0));
        return;
    }
    // a call
    if (T(lo) == 131 && T(lo + 1) == '(' && M(lo + 1) == hi - 1) {
        compile_call(lo, hi);
        return;
    }
    if (T(hi - 1) == 137 || T(hi - 1) == 138) {
        compile_incdec(lo, hi, true);
        return;
    }
    if (T(lo) == 137 || T(lo) == 138) {
        compile_incdec(lo, hi, false);
        return;
    }
    // members: exp->name and exp.name
    for (int i = hi - 1; i > lo; i--) {
        if (iscloser(T(i))) {
            i = M(i);
            continue;
        }
        if (T(i) != 161 && T(i) != 160) continue;
        if (i + 2 != hi || T(i + 1) != 131) {
            if (T(i) == 160) cc_fail(".<exp> invalid\n");
            cc_fail("invalid structure reference\n");
        }
        cc_sub(lo, i);
        int t = tpop();
        if (T(i) == 161) {
            if (EL(t) != ET_POINTER) {
                if (known(EL(t))) mismatch1("-> (pointing to)", t);
                cc_fail("invalid structure reference\n");
            }
            mop_add(MOP_DEREF);
            t = W()->typ[t].ptr;
        } else if (EL(t) == ET_TM) {
            cc_fail("invalid structure reference\n");
        }
        int mt = 0;
        const int k = member_index(t, S(i + 1), &mt);
        mop_add(MOP_DRILL);
        mop_add(static_cast<uint32_t>(k));
        tpush(mt);
        return;
    }
    if (isreserved(T(lo)))
        cc_fail("%s found where subexp expected\n", m_tokdesc(T(lo), S(lo)).c_str());
    cc_fail("expression invalid\n");
}

// Compiles the collected tokens as one full expression; the postponed
// increments follow it. Returns EX_ flags.
int cc_expr() {
    MWork* w = W();
    m_exprflags = 0;
    w->npost = 0;
    w->ntstk = 0;
    if (w->ntok == 0) cc_fail("nothing found where subexp expected\n");
    // the top split decides whether this is an assignment
    int lo = 0, hi = w->ntok;
    while (T(lo) == '(' && M(lo) == hi - 1 && lo + 1 < hi - 1) lo++, hi--;
    if (firsttop(lo, hi, '=') >= 0) m_exprflags |= EX_ASSIGN;
    cc_sub(0, w->ntok);
    if (w->ntstk != 1) cc_fail("expr. stack misaligned, n=%d\n", w->ntstk);
    for (int k = 0; k < w->npost; k++) {
        mop_add(w->post[k] >> 16);
        mop_add(w->post[k] & 0xffff);
    }
    w->npost = 0;
    return m_exprflags;
}

int cc_exprtype() {
    return m_work->ntstk > 0 ? m_work->tstk[m_work->ntstk - 1] : 0;
}

} // namespace korvu
