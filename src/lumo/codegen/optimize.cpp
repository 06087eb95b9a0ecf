// The peephole optimizer: two sweeps over the instructions, each restarted
// from word 2 after any change. A sequence is changed only when no jump
// targets its interior; deleting words moves later code down and lowers every
// address above them.
#include <cstring>
#include <vector>

#include "lumo/codegen/opcodes.h"
#include "lumo/front/cc.h"

namespace korvu {

static uint32_t* C() {
    return m_work->code;
}
static int LEN() {
    return m_work->pgm.len;
}

static bool istarget(int addr) {
    const MWork* w = m_work;
    for (int i = 0; i < w->nfix; i++)
        if (w->fix[i].kind == FU_ADR && static_cast<int>(w->code[w->fix[i].at]) == addr)
            return true;
    return false;
}

// No jump lands strictly inside [from, to).
static bool nointerior(int from, int to) {
    for (int a = from + 1; a < to; a++)
        if (istarget(a)) return false;
    return true;
}

// Deletes n words at `at`.
static void del(int at, int n) {
    MWork* w = m_work;
    memmove(w->code + at, w->code + at + n, 4u * static_cast<unsigned>(w->pgm.len - at - n));
    w->pgm.len -= n;
    int k = 0;
    for (int i = 0; i < w->nfix; i++) {
        MFix f = w->fix[i];
        if (f.at >= at && f.at < at + n) continue;
        if (f.at >= at + n) f.at -= n;
        w->fix[k++] = f;
    }
    w->nfix = k;
    for (int i = 0; i < w->nfix; i++) {
        if (w->fix[i].kind != FU_ADR) continue;
        uint32_t& v = w->code[w->fix[i].at];
        const int a = static_cast<int>(v);
        if (a >= at + n)
            v = static_cast<uint32_t>(a - n);
        else if (a > at)
            v = static_cast<uint32_t>(at);
    }
    if (w->pgm.prologue > at) w->pgm.prologue -= n;
}

static int lenat(int at) {
    const int l = m_lofmop(C(), at, LEN());
    if (!l) cc_fail("nxtopadr failed at li=%d i=%d\n", LEN(), at);
    return l;
}

static bool isjump(uint32_t op) {
    return op == MOP_GOTO || op == MOP_TST0 || op == MOP_JMPFALSE;
}

// Skips the increments and decrements from `at`; returns the next address.
static int skipincdec(int at) {
    while (at < LEN() && (C()[at] == MOP_INC || C()[at] == MOP_DEC)) at += 2;
    return at;
}

static bool sweep1(int a) {
    uint32_t* c = C();
    if (c[a] != MOP_STORE) return false;
    const int b = a + 2;
    if (b + 3 > LEN() || c[b] != MOP_POP || c[b + 1] != MOP_LOAD || c[b + 2] != c[a + 1])
        return false;
    if (!nointerior(a, b + 3)) return false;
    del(b, 3);
    return true;
}

static bool moveblock(int a);

static bool sweep2(int a) {
    uint32_t* c = C();
    const uint32_t op = c[a];
    const int l = lenat(a);
    // 1: load, then pop
    if (op == MOP_LOAD) {
        const int b = skipincdec(a + 2);
        if (b < LEN() && c[b] == MOP_POP && nointerior(a, b + 1)) {
            del(b, 1);
            del(a, 2);
            return true;
        }
    }
    // 2: jumps
    if (isjump(op)) {
        int t = static_cast<int>(c[a + 1]);
        if (op == MOP_GOTO && t == a + 2 && a != 2) {
            del(a, 2);
            return true;
        }
        int steps = 0;
        int nt = t;
        while (nt >= 0 && nt + 1 < LEN() && c[nt] == MOP_GOTO &&
               static_cast<int>(c[nt + 1]) != nt) {
            if (++steps > 10000) {
                cc_msg("optimizer:  too many recursive goto's\n");
                cc_fail("            (program probably contains endless loop)\n");
            }
            nt = static_cast<int>(c[nt + 1]);
        }
        if (nt != t) {
            c[a + 1] = static_cast<uint32_t>(nt);
            return true;
        }
        if (op == MOP_GOTO && t >= 0 && t < LEN() && c[t] == MOP_RETURN) {
            c[a] = MOP_RETURN;
            del(a + 1, 1);
            return true;
        }
    }
    // 3: store, then pop
    if (op == MOP_STORE || op == MOP_RSTOSMAT || op == MOP_LSTOSMAT2 || op == MOP_LSTOSMAT1) {
        const int b = skipincdec(a + 2);
        if (b < LEN() && c[b] == MOP_POP && nointerior(a, b + 1)) {
            c[a] = op == MOP_STORE       ? MOP_STOREPOP
                   : op == MOP_RSTOSMAT  ? MOP_RSTOSMATP
                   : op == MOP_LSTOSMAT2 ? MOP_LSTOSMAT2P
                                         : MOP_LSTOSMAT1P;
            del(b, 1);
            return true;
        }
    }
    // 4: a test straight after a comparison
    if (op >= MOP_EE && op <= MOP_NE && a + 1 < LEN() && c[a + 1] == MOP_TST0 && !istarget(a + 1)) {
        c[a + 1] = MOP_JMPFALSE;
        return true;
    }
    if (op == MOP_LOAD && a + 4 <= LEN()) {
        // 5: the same slot twice
        if (c[a + 2] == MOP_LOAD && c[a + 3] == c[a + 1] && !istarget(a + 2)) {
            c[a + 2] = MOP_DUP;
            del(a + 3, 1);
            return true;
        }
        // 6 and 7: members of a struct in a slot
        if (c[a + 2] == MOP_DRILL && !istarget(a + 2)) {
            if (a + 6 <= LEN() && c[a + 4] == MOP_DRILL && !istarget(a + 4)) {
                const uint32_t n = c[a + 1], m1 = c[a + 3], m2 = c[a + 5];
                c[a] = MOP_LDMATDD;
                c[a + 1] = n;
                c[a + 2] = m1;
                c[a + 3] = m2;
                del(a + 4, 2);
                return true;
            }
            const uint32_t n = c[a + 1], m1 = c[a + 3];
            c[a] = MOP_LDMATD;
            c[a + 1] = n;
            c[a + 2] = m1;
            del(a + 3, 1);
            return true;
        }
    }
    // 8: code that cannot be reached
    if (op == MOP_GOTO || op == MOP_RETURN || op == MOP_STOP) {
        const int from = a + l;
        int to = from;
        while (to < LEN() && !istarget(to)) to += lenat(to);
        if (to > from) {
            del(from, to - from);
            return true;
        }
    }
    // 9: block moves
    if (op == MOP_GOTO && moveblock(a)) return true;
    return false;
}

static bool isexit(uint32_t op) {
    return op == MOP_GOTO || op == MOP_RETURN || op == MOP_STOP;
}

// 9: `1 A` where the block at A is entered only by jumps (the instruction
// before it never falls through) and ends in an unconditional exit: the
// block takes the place of the jump. Every address follows the words it
// pointed at.
static bool moveblock(int a) {
    uint32_t* c = C();
    const int n = LEN();
    if (a == 2 || c[a] != MOP_GOTO) return false;
    const int A = static_cast<int>(c[a + 1]);
    // the body at word 4 and the prologue keep their places in the layout
    if (A <= 4 || A >= n || A == a || A == static_cast<int>(c[3])) return false;
    // the instruction before A must not fall into it
    int prev = -1, at = 2;
    while (at < A) {
        prev = at;
        at += lenat(at);
    }
    if (at != A || prev < 0 || !isexit(c[prev])) return false;
    int E = A;
    while (E < n && !isexit(c[E])) E += lenat(E);
    if (E >= n) {
        cc_msg("optimize:  unterminated block not optimized\n");
        return false;
    }
    E += lenat(E);
    if (a >= A && a < E) return false;
    // new order of the words, and where each old word went
    std::vector<uint32_t> out;
    std::vector<int> where(static_cast<size_t>(n) + 1, -1);
    out.reserve(static_cast<size_t>(n));
    auto put = [&](int from, int to) {
        for (int k = from; k < to; k++) {
            where[static_cast<size_t>(k)] = static_cast<int>(out.size());
            out.push_back(c[k]);
        }
    };
    if (a < A) {
        put(0, a);
        put(A, E);
        put(a + 2, A);
        put(E, n);
    } else {
        put(0, A);
        put(E, a);
        put(A, E);
        put(a + 2, n);
    }
    where[static_cast<size_t>(a)] = where[static_cast<size_t>(A)];
    where[static_cast<size_t>(a) + 1] = where[static_cast<size_t>(A)];
    where[static_cast<size_t>(n)] = static_cast<int>(out.size());
    MWork* w = m_work;
    int k = 0;
    for (int i = 0; i < w->nfix; i++) {
        MFix f = w->fix[i];
        if (f.at == a + 1) continue; // the jump that went
        f.at = where[static_cast<size_t>(f.at)];
        w->fix[k++] = f;
    }
    w->nfix = k;
    memcpy(w->code, out.data(), 4u * out.size());
    w->pgm.len = static_cast<int>(out.size());
    for (int i = 0; i < w->nfix; i++) {
        if (w->fix[i].kind != FU_ADR) continue;
        uint32_t& v = w->code[w->fix[i].at];
        v = static_cast<uint32_t>(where[v]);
    }
    if (w->pgm.prologue >= 0 && w->pgm.prologue <= n)
        w->pgm.prologue = where[static_cast<size_t>(w->pgm.prologue)];
    return true;
}

void cc_optimize() {
    for (int sweep = 1; sweep <= 2; sweep++) {
        int a = 2;
        while (a < LEN()) {
            const bool changed = sweep == 1 ? sweep1(a) : sweep2(a);
            if (changed) {
                a = 2;
                continue;
            }
            a += lenat(a);
        }
    }
}

} // namespace korvu
