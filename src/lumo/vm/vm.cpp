// The loop, the stack, calls, frames, stores, allocation of locals, type
// assertions and the run-time error report with its traceback.
#include "lumo/vm/vm.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "data/area/missing.h"
#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "lumo/codegen/opcodes.h"
#include "lumo/front/cc.h"
#include "lumo/io/lumofile.h"
#include "lumo/objects/mvcross.h"
#include "lumo/objects/mview.h"
#include "lumo/vm/vmops.h"
#include "lumo/vm/xeqops.h"

namespace korvu {

MRt m_rt{};
MObj** m_stak = nullptr;
MObj** m_stakbase = nullptr;
MObj** m_staktop = nullptr;
int32_t m_xrc = 0, m_xrc_first = 0;
int32_t m_exitrc = 0;
uint64_t m_opcount = 0;
int32_t m_condflag = 0;
const char* m_xeqerrid = nullptr;

static char errmsg[512];
static bool errcustom = false; // errmsg holds the text of the pending error
static bool errshown = false;  // the failing function's line is out
static char lastcaller[48];    // the function of the last traceback line

// Pinned constants: results of comparisons and the literals 0, 1 and
// missing, never released and never written (their count keeps them from
// being reused or stolen).
static MObj kconst[4];
MObj* const m_kfalse = &kconst[0];
MObj* const m_ktrue = &kconst[1];
MObj* const m_kmiss = &kconst[2];
static double kvals[3] = {0.0, 1.0, misval};

static void initconsts() {
    for (int i = 0; i < 3; i++) {
        MObj& k = kconst[i];
        memset(&k, 0, sizeof k);
        k.data = &kvals[i];
        k.size = 8;
        k.count = 1 << 30;
        k.rows = k.cols = 1;
        k.level = -1;
        k.live = 1;
        snprintf(k.name, sizeof k.name, "%s", m_tname);
    }
}

int lumostakinit(int how) {
    if (m_stakbase) return 0;
    initconsts();
    m_stakbase = static_cast<MObj**>(calloc(MSTAK_ENTRIES, sizeof(MObj*)));
    if (!m_stakbase) return errtext(9801, "insufficient memory for lumo system stack\n");
    m_stak = m_stakbase - 1;
    m_staktop = m_stakbase + MSTAK_ENTRIES - 1;
    return 0;
}

void lumostakfree() {
    if (!m_stakbase) return;
    while (m_stak >= m_stakbase) m_pop();
    free(m_stakbase);
    m_stakbase = m_stak = m_staktop = nullptr;
}

bool m_push(MObj* o) {
    if (m_stak >= m_staktop) {
        if (o->count <= 0) mo_freemat(o);
        if (!m_xrc) m_xrc = 3998;
        return false;
    }
    o->count++;
    *++m_stak = o;
    return true;
}

// Errors.

static const struct {
    int code;
    const char* text;
} xeqerrs[] = {
    {1, "--Break--"},
    {3001, "incorrect number of arguments"},
    {3002, "identical arguments not allowed"},
    {3010, "attempt to dereference NULL pointer"},
    {3012, "undefined operation on pointer (e.g., p1>p2)"},
    {3101, "matrix found where function required"},
    {3102, "function found where matrix required"},
    {3103, "view found where array required"},
    {3104, "array found where view required"},
    {3200, "conformability error"},
    {3201, "vector required"},
    {3202, "rowvector required"},
    {3203, "colvector required"},
    {3204, "matrix found where scalar required"},
    {3205, "square matrix required"},
    {3250, "type mismatch"},
    {3251, "nonnumeric found where numeric required"},
    {3252, "noncomplex found where complex required"},
    {3253, "nonreal found where real required"},
    {3255, "real or string required"},
    {3256, "numeric or string required"},
    {3257, "nonpointer found where pointer required"},
    {3258, "nonvoid found where void required"},
    {3259, "nonstruct found where struct required"},
    {3300, "argument out of range"},
    {3301, "subscript invalid"},
    {3302, "invalid %fmt"},
    {3303, "invalid permutation vector"},
    {3304, "struct nested too deeply"},
    {3351, "argument has missing values"},
    {3352, "singular matrix"},
    {3353, "matrix not positive definite"},
    {3360, "failure to converge"},
    {3492, "resulting string too long"},
    {3500, "invalid Korvu variable name"},
    {3598, "Korvu returned error"},
    {3601, "invalid file handle"},
    {3602, "invalid filename"},
    {3603, "invalid file mode"},
    {3611, "too many open files"},
    {3621, "attempt to write read-only file"},
    {3622, "attempt to read write-only file"},
    {3623, "Attempt to seek append-only file"},
    {3698, "file seek error"},
    {3900, "out of memory"},
    {3901, "macro memory in use"},
    {3930, "error in LAPACK routine"},
    {3995, "unallocated function"},
    {3996, "built-in unallocated"},
    {3997, "unimplemented opcode"},
    {3998, "stack overflow"},
    {601, "file not found"},
    {603, "file could not be opened"},
    {608, "file is read-only"},
    {610, "file format error"},
    {691, "I/O error"},
    {699, "insufficient disk space"},
};

const char* m_xeqerrtext(int code) {
    for (const auto& e : xeqerrs)
        if (e.code == code) return e.text;
    return "error";
}

void m_custom_xeqerr(int code, const char* fmt, ...) {
    if (m_xrc) return; // the first failure of an instruction stands
    va_list ap;
    va_start(ap, fmt);
    vsnprintf(errmsg, sizeof errmsg, fmt, ap);
    va_end(ap);
    errcustom = true;
    m_xrc = code;
}

void m_xeqerr(int code) {
    if (m_xrc) return;
    errcustom = false;
    m_xrc = code;
}

// The line of a function in the traceback: its name with "()", or <istmt>.
static void fname(char* buf, size_t n, const LumoFcn* f) {
    const char* nm = dmname(f);
    if (!strncmp(nm, mwrd_istmt, 6)) // "<istmt", also one set aside while running
        snprintf(buf, n, "%s", mwrd_istmt);
    else
        snprintf(buf, n, "%s()", nm);
}

// `at` is the word offset of the failing instruction in the function's code,
// shown under lumodebug so that the line can be found in the listing.
static void xeqreport(const LumoFcn* f, long at) {
    char nm[48];
    fname(nm, sizeof nm, f);
    char line[700];
    if (m_xrc == 1) return; // a break is reported by the command
    char where[64] = "";
    int n = 0;
    if (m_rt.line > 0) n = snprintf(where, sizeof where, " [%d]", m_rt.line);
    if (m_dbugflg && n >= 0 && static_cast<size_t>(n) < sizeof where)
        snprintf(where + n, sizeof where - n, " {%ld}", at);
    if (!errshown) {
        if (m_xeqerrid) errorf(m_xrc, "%s\n", m_xeqerrid);
        snprintf(line, sizeof line, "%24s: %5d  %s%s\n", nm, m_xrc,
                 errcustom ? errmsg : m_xeqerrtext(m_xrc), where);
        errtext(m_xrc, line);
        errshown = true;
    } else if (strcmp(nm, lastcaller)) {
        // a run of the same function, as in a deep recursion, shows once
        snprintf(line, sizeof line, "%24s:     -  function returned error%s\n", nm, where);
        errtext(m_xrc, line);
    }
    snprintf(lastcaller, sizeof lastcaller, "%s", nm);
}

// Views among the operands an instruction reads become plain temporaries
// of their values, except for the instructions that read or write views
// themselves (subscripts, stores through an expression, calls).
static bool viewaware(uint32_t op) {
    static int8_t aware[MOP_COUNT];
    static bool init = false;
    if (!init) {
        static const char* const names[] = {
            "opbiltin",  "opcall",       "opcallind",    "oplsubscr",   "oplsubscr1",
            "oprsubscr", "oplsstosmat1", "oplsstosmat2", "oprsstosmat", "opisfcn"};
        for (uint32_t k = 0; k < MOP_COUNT; k++) {
            aware[k] = 0;
            if (!mop_table[k].name) continue;
            for (const char* n : names)
                if (!strcmp(mop_table[k].name, n)) aware[k] = 1;
        }
        init = true;
    }
    return aware[op];
}

void m_unviewops(uint32_t op) {
    if (viewaware(op)) return;
    int k = mop_table[op].pops;
    if (!strcmp(mop_table[op].name ? mop_table[op].name : "", "oplist2")) k = 1;
    for (int d = 0; d < k && m_stak - d >= m_stakbase; d++) {
        MObj* o = m_stak[-d];
        if (!o->view) continue;
        MObj* t = m_unview(o);
        if (!t) return m_xeqerr(3900);
        t->count++;
        m_stak[-d] = t;
        mo_release(o);
    }
}

// X'*X of a view X, the code being "load s; optrans; load s; opmult": the
// product read from the view block by block, never gathered whole. True when
// done (the pc on the opmult), false when the pattern is not there.
static bool tmultview() {
    MObj* x = *m_stak;
    const uint32_t* pc = m_rt.pc;
    if (!x->view || pc[1] != MOP_LOAD || pc[3] != MOP_MULT || m_rt.frame[pc[2]] != x) return false;
    if (!v_crossable(x) || x->rows == 0 || x->cols == 0) return false;
    MObj* o = m_mkmat("", MT_REAL, x->cols, x->cols);
    if (!o) {
        m_xeqerr(3900);
        return true;
    }
    if (v_tcross(x, m_rel(o))) {
        mo_freemat(o);
        m_xeqerr(1);
        return true;
    }
    o->count++;
    m_pop();
    *++m_stak = o;
    m_rt.pc += 3;
    return true;
}

// The loop.

static inline void jump(uint32_t addr) {
    m_rt.pc = m_rt.ops + addr - 1;
}

void m_xeq(LumoFcn* f, int nargs) {
    MObj** frame = m_stak - nargs + 1;
    if (m_rt.depth >= MDEPTH_MAX) {
        m_xeqerr(3998);
        while (m_stak >= frame) m_pop();
        return;
    }
    m_rt.depth++;
    m_curdepth = m_rt.depth;
    m_rt.nargs = nargs;
    m_rt.function = f;
    m_rt.ops = f->code;
    m_rt.frame = frame;
    m_rt.line = 0;
    f->count++;
    m_rt.version = static_cast<int32_t>(f->code[1]);
    m_rt.pc = f->code + 2;
    const uint32_t* opat = m_rt.pc; // the instruction being run, for the report
    while (!m_xrc) {
        opat = m_rt.pc;
        const uint32_t op = *m_rt.pc;
        m_opcount++;
        switch (op) {
        case MOP_GOTO: {
            const uint32_t to = m_rt.pc[1];
            if (m_rt.ops + to <= m_rt.pc && stopflag) {
                m_xrc = 1;
                break;
            }
            jump(to);
            break;
        }
        case MOP_POP: m_pop(); break;
        case MOP_RETURN: m_xrc = 10000; break;
        case MOP_STORE: mx_store(); break;
        case MOP_STOREPOP: mx_storepop(); break;
        case MOP_LOAD:
            m_push(m_rt.frame[m_rt.pc[1]]);
            m_rt.pc++;
            break;
        case MOP_INC: mx_inc(); break;
        case MOP_DEC: mx_dec(); break;
        case MOP_JMPFALSE:
            m_pop();
            if (!m_condflag)
                jump(m_rt.pc[1]);
            else
                m_rt.pc++;
            break;
        default:
            if (op < MOP_COUNT) {
                if (m_nviews > 0 && op == MOP_TRANS && tmultview()) break;
                if (m_nviews > 0) m_unviewops(op);
                mop_table[op].xeq();
            } else
                m_xeqerr(3997);
        }
        m_rt.pc++;
    }
    if (m_xrc == 10000) {
        MObj* r = *m_stak;
        r->count++;
        while (m_stak >= frame) m_pop();
        // a local returned becomes a temporary of the caller: no copy
        if (r->level >= m_rt.depth && m_rt.depth > 0) {
            r->level = m_rt.depth - 1;
            if (strcmp(r->name, m_tname)) {
                dmrename(r, m_tname);
                snprintf(r->name, sizeof r->name, "%s", m_tname);
            }
        }
        if (m_stak >= m_staktop) {
            r->count--;
            if (r->count <= 0) mo_freemat(r);
            m_xrc = 3998;
        } else {
            *++m_stak = r;
            m_xrc = 0;
        }
    }
    if (m_xrc) {
        if (m_xrc != MXRC_EXIT) {
            if (!m_xrc_first) m_xrc_first = m_xrc;
            xeqreport(f, static_cast<long>(opat - f->code));
        }
        while (m_stak >= frame) m_pop();
    }
    f->count--;
    m_rt.depth--;
    m_curdepth = m_rt.depth;
}

int ixeq(LumoFcn* f) {
    if (lumostakinit(1)) return 9801;
    const MRt rt = m_rt;
    const int32_t xrc = m_xrc, first = m_xrc_first, cond = m_condflag;
    const char* errid = m_xeqerrid;
    MObj** top = m_stak;
    m_xrc = m_xrc_first = 0;
    m_xeqerrid = nullptr;
    errshown = false;
    lastcaller[0] = 0;
    m_xeq(f, 0);
    int rc = m_xrc ? (m_xrc_first ? m_xrc_first : m_xrc) : 0;
    if (m_xrc == MXRC_EXIT) rc = m_exitrc;
    while (m_stak > top) m_pop();
    m_rt = rt;
    m_curdepth = m_rt.depth;
    m_xrc = xrc;
    m_xrc_first = first;
    m_condflag = cond;
    m_xeqerrid = errid;
    return rc;
}

// Handlers of the loop's own instructions, also reached through the table.

void mx_goto() {
    jump(m_rt.pc[1]);
}
void mx_pop() {
    m_pop();
}
void mx_return() {
    m_xrc = 10000;
}
void mx_nargs() {
    const int n = static_cast<int>(m_rt.pc[1]);
    if (m_rt.nargs != n) {
        m_custom_xeqerr(3001, "expected %d arguments but received %d", n, m_rt.nargs);
        return;
    }
    m_rt.pc++;
}
void mx_nargsr() {
    const int lo = static_cast<int>(m_rt.pc[1]), hi = static_cast<int>(m_rt.pc[2]);
    if (m_rt.nargs < lo || m_rt.nargs > hi) {
        m_custom_xeqerr(3001, "expected %d to %d arguments but received %d", lo, hi, m_rt.nargs);
        return;
    }
    m_rt.pc += 2;
}

// Store into a slot: the slot object replaces the top.
static inline bool slotstore() {
    MObj* t = m_rt.frame[m_rt.pc[1]];
    MObj* s = *m_stak;
    if (s->fcn) {
        m_xeqerr(3102);
        return false;
    }
    if (int rc = cpymat(t, s, true)) {
        m_xeqerr(rc);
        return false;
    }
    m_rt.pc++;
    return true;
}

void mx_store() {
    if (!slotstore()) return;
    MObj* t = m_rt.frame[m_rt.pc[0]];
    MObj* s = *m_stak;
    t->count++;
    *m_stak = t;
    mo_release(s);
}

void mx_storepop() {
    if (slotstore()) m_pop();
}

void mx_load() {
    m_push(m_rt.frame[m_rt.pc[1]]);
    m_rt.pc++;
}

void mx_loadf() {
    mx_load();
}

static void incdec(MObj* o, double d) {
    if (o->fcn || o->eltype != MT_REAL) {
        m_xeqerr(o->fcn ? 3102 : 3253);
        return;
    }
    if (o->rows != 1 || o->cols != 1) {
        m_custom_xeqerr(3204, "%s[%d,%d] found where scalar required", m_eltname(o), o->rows,
                        o->cols);
        return;
    }
    double& x = m_rel(o)[0];
    if (x < misval) x += d;
}

void mx_inc() {
    incdec(m_rt.frame[m_rt.pc[1]], 1);
    m_rt.pc++;
}
void mx_dec() {
    incdec(m_rt.frame[m_rt.pc[1]], -1);
    m_rt.pc++;
}
void mx_preinc() {
    incdec(*m_stak, 1);
}
void mx_predec() {
    incdec(*m_stak, -1);
}
static void postincdec(double d) {
    MObj* o = *m_stak;
    MObj* old = m_dupmat(o);
    if (!old) {
        m_xeqerr(3900);
        return;
    }
    incdec(o, d);
    old->count++;
    *m_stak = old;
    mo_release(o);
}
void mx_postinc() {
    postincdec(1);
}
void mx_postdec() {
    postincdec(-1);
}

void mx_jmpfalse() {
    m_pop();
    if (!m_condflag)
        jump(m_rt.pc[1]);
    else
        m_rt.pc++;
}

void mx_optst0() {
    MObj* o = *m_stak;
    bool t = false;
    if (o->fcn) {
        m_xeqerr(3102);
        return;
    }
    if (o->rows != 1 || o->cols != 1) {
        m_custom_xeqerr(3204, "%s[%d,%d] found where scalar required", m_eltname(o), o->rows,
                        o->cols);
        return;
    }
    switch (o->eltype) {
    case MT_REAL: t = m_rel(o)[0] != 0; break;
    case MT_COMPLEX: t = m_rel(o)[0] != 0 || m_rel(o)[1] != 0; break;
    case MT_POINTER: t = m_pel(o)[0] != nullptr; break;
    default: m_xeqerr(3250); return;
    }
    m_pop();
    if (!t)
        jump(m_rt.pc[1]);
    else
        m_rt.pc++;
}

void mx_opstop() {
    MObj* v = m_mkmat("", MT_REAL, 0, 0);
    if (!v) {
        m_xeqerr(3900);
        return;
    }
    v->isvoid = 1;
    if (m_push(v)) m_xrc = 10000;
}

void mx_opldvoid() {
    MObj* v = m_mkmat("", MT_REAL, 0, 0);
    if (!v) {
        m_xeqerr(3900);
        return;
    }
    v->isvoid = 1;
    m_push(v);
}

void mx_version() {
    m_rt.version = static_cast<int32_t>(m_rt.pc[1]);
    m_rt.pc++;
}
void mx_line() {
    m_rt.line = static_cast<int32_t>(m_rt.pc[1]);
    m_rt.pc++;
}
void mx_opelim() {
    m_rt.pc++;
}
void mx_opdup() {
    m_push(*m_stak);
}

void mx_unused() {
    m_xeqerr(3997);
}
void mx_notyet() {
    const uint32_t op = *m_rt.pc;
    m_custom_xeqerr(3997, "%s not yet available", op < MOP_COUNT ? mop_table[op].name : "opcode");
}
void mx_opstruct() {
    m_custom_xeqerr(3997, "structures not yet available");
}

// Literals.

void mx_opldlit() {
    double x;
    memcpy(&x, m_rt.ops + m_rt.pc[1], sizeof x);
    MObj* o = m_mktsmatsto(x);
    if (!o) {
        m_xeqerr(3900);
        return;
    }
    m_push(o);
    m_rt.pc++;
}
void mx_opld0() {
    m_push(m_kfalse);
}
void mx_opld1() {
    m_push(m_ktrue);
}
void mx_opldmiss() {
    m_push(m_kmiss);
}
void mx_opldstr() {
    const uint32_t* at = m_rt.ops + m_rt.pc[1];
    const uint32_t len = at[1];
    MObj* o = m_mkmat("", MT_STRING, 1, 1);
    SCell* c = o ? sel_make(reinterpret_cast<const char*>(at + 2), len) : nullptr;
    if (!c) {
        if (o) mo_freemat(o);
        m_xeqerr(3900);
        return;
    }
    m_sel(o)[0] = c;
    m_push(o);
    m_rt.pc++;
}
void mx_opldnull() {
    MObj* o = m_mkmat("", MT_POINTER, 1, 1);
    if (!o) {
        m_xeqerr(3900);
        return;
    }
    m_push(o);
}

// Locals.

static const char* optext(const uint32_t* w) {
    return reinterpret_cast<const char*>(w + 1);
}

// Element type and shape of a local by its allocation opcode: rows and
// columns of the starting value (-1 for 1 where a scalar is 1 x 1).
static void alcshape(uint32_t op, int* el, int* r, int* c) {
    int col;
    if (op >= 108 && op <= 111) {
        *el = MT_POINTER;
        col = static_cast<int>(op) - 108;
    } else if (op >= 134 && op <= 137) {
        *el = MT_POINTER;
        col = static_cast<int>(op) - 134;
    } else {
        const int base = op >= 122 ? 122 : 97;
        int k = op == 37 ? -1 : static_cast<int>(op) - base;
        if (op == 37) {
            *el = MT_REAL;
            col = 0;
        } else if (base == 97) {
            // 97 cm, 98 sm, then rows of three from 99
            if (k < 2) {
                *el = k == 0 ? MT_COMPLEX : MT_STRING;
                col = 0;
            } else {
                k -= 2;
                col = 1 + k / 3;
                const int e = k % 3;
                *el = e == 0 ? MT_REAL : e == 1 ? MT_COMPLEX : MT_STRING;
            }
        } else {
            col = k / 3;
            const int e = k % 3;
            *el = e == 0 ? MT_REAL : e == 1 ? MT_COMPLEX : MT_STRING;
        }
    }
    switch (col) {
    case 1: *r = 1, *c = 0; break;
    case 2: *r = 0, *c = 1; break;
    case 3: *r = 1, *c = 1; break;
    default: *r = 0, *c = 0; break;
    }
}

static bool alclocal(uint32_t op, const char* name) {
    int el, r, c;
    alcshape(op, &el, &r, &c);
    MObj* o = m_mkmat(name, el, r, c);
    if (!o) {
        m_xeqerr(3900);
        return false;
    }
    if (el == MT_REAL && r == 1 && c == 1) m_rel(o)[0] = misval;
    if (el == MT_COMPLEX && r == 1 && c == 1) m_rel(o)[0] = m_rel(o)[1] = misval;
    return m_push(o);
}

void mx_opalc() {
    const uint32_t op = m_rt.pc[0];
    const uint32_t words = m_rt.pc[1];
    if (alclocal(op, optext(m_rt.pc + 1))) m_rt.pc += words + 1;
}

void mx_opolc() {
    const uint32_t op = m_rt.pc[0];
    const int pos = static_cast<int>(m_rt.pc[1]);
    const uint32_t words = m_rt.pc[2];
    if (m_rt.nargs < pos && !alclocal(op, optext(m_rt.pc + 2))) return;
    m_rt.pc += words + 2;
}

// Externals and functions by name.

static void findext(bool create) {
    const uint32_t words = m_rt.pc[2];
    const char* name = optext(m_rt.pc + 2);
    MObj* o = findlvl0mat(name);
    if (!o) {
        if (!create || m_rt.pc[1] != 1) {
            m_custom_xeqerr(3499, "%s not found", name);
            return;
        }
        o = m_mkglobalmat(name, MT_REAL, 0, 0);
        if (!o) {
            m_xeqerr(3900);
            return;
        }
        o->level = 0;
    }
    if (m_push(o)) m_rt.pc += words + 2;
}

void mx_opfind() {
    findext(true);
}
void mx_opextern() {
    findext(true);
}

// The cache of opfindf: the instruction keeps in its own words the clock at
// which it found its function and the number of an entry here, which holds
// the function and the instruction that owns the entry. Entries are reused
// in turn; an instruction whose entry was taken looks its name up again.
struct FindfCache {
    const uint32_t* owner;
    LumoFcn* fcn;
};
static constexpr uint32_t FINDF_CACHE = 4096;
static FindfCache findf_cache[FINDF_CACHE];
static uint32_t findf_next = 0;

static LumoFcn* findf_cached(const uint32_t* pc) {
    const uint32_t k = pc[2];
    if (pc[1] != static_cast<uint32_t>(m_sysclock) || k == 0 || k > FINDF_CACHE) return nullptr;
    const FindfCache& e = findf_cache[k - 1];
    if (e.owner != pc || !e.fcn || e.fcn->replaced) return nullptr;
    return e.fcn;
}

static void findf_keep(const uint32_t* pc, LumoFcn* f) {
    uint32_t* w = const_cast<uint32_t*>(pc);
    const uint32_t k = findf_next++ % FINDF_CACHE;
    findf_cache[k] = {pc, f};
    w[1] = static_cast<uint32_t>(m_sysclock);
    w[2] = k + 1;
}

void mx_opfindf() {
    const uint32_t words = m_rt.pc[4];
    const char* name = optext(m_rt.pc + 4);
    LumoFcn* f = findf_cached(m_rt.pc);
    if (!f) {
        f = m_findfcn(name);
        if (f && f->replaced) f = nullptr;
        if (!f && !m_findstruct(name)) f = m_autoload(name);
        if (f) findf_keep(m_rt.pc, f);
    }
    MObj* o;
    if (!f || f->replaced) {
        // a structure's name calls its constructor
        o = m_mkstructref(name);
        if (!o) {
            m_custom_xeqerr(3499, "%s() not found", name);
            return;
        }
    } else {
        o = m_mkfcnref(f);
    }
    if (!o) {
        m_xeqerr(3900);
        return;
    }
    if (m_push(o)) m_rt.pc += words + 4;
}

// Calls.

static void call(LumoFcn* f, int n) {
    const MRt saved = m_rt;
    m_xeq(f, n);
    const int32_t rc = m_xrc;
    m_rt = saved;
    m_curdepth = m_rt.depth;
    m_xrc = rc;
}

void mx_opcall() {
    MObj* c = m_rt.frame[m_rt.pc[1]];
    const int n = static_cast<int>(m_rt.pc[2]);
    if (c->isdef) {
        m_xeqstruct(c, n);
        m_rt.pc += 2;
        return;
    }
    if (!c->fcn) {
        m_xeqerr(3101);
        return;
    }
    if (stopflag) {
        m_xrc = 1;
        return;
    }
    call(c->fcn, n);
    m_rt.pc += 2;
}

void mx_opcallind() {
    const int n = static_cast<int>(m_rt.pc[1]);
    MObj* p = m_stak[-n];
    if (p->eltype != MT_POINTER || p->fcn) {
        m_xeqerr(3257);
        return;
    }
    if (p->rows != 1 || p->cols != 1) {
        m_xeqerr(3204);
        return;
    }
    MObj* t = m_pel(p)[0];
    if (!t) {
        m_xeqerr(3010);
        return;
    }
    if (!t->fcn) {
        m_xeqerr(3101);
        return;
    }
    call(t->fcn, n);
    if (m_xrc) return;
    // the pointer stood under the arguments: the result takes its place
    MObj* r = *m_stak--;
    MObj* q = *m_stak;
    *m_stak = r;
    mo_release(q);
    m_rt.pc++;
}

void mx_opbiltin() {
    const int idx = static_cast<int>(m_rt.pc[1]);
    const int n = static_cast<int>(m_rt.pc[2]);
    MBiFn fn = m_bifn(idx);
    if (!fn) {
        m_custom_xeqerr(3996, "%s() not yet available", m_builtinname(idx));
        return;
    }
    m_xeqerrid = m_biid(idx);
    fn(n);
    if (!m_xrc) m_xeqerrid = nullptr;
    m_rt.pc += 2;
}

// Type assertions.

static const char* orgword(int k) {
    static const char* const w[] = {"scalar", "vector", "rowvector", "colvector"};
    return w[k];
}

static bool notfcn(MObj* o) {
    if (o->fcn) {
        m_xeqerr(3102);
        return false;
    }
    return true;
}

static void shapeerr(int code, MObj* o, int k) {
    m_custom_xeqerr(code, "%s[%d,%d] found where %s required", m_eltname(o), o->rows, o->cols,
                    orgword(k));
}

void mx_ismat() {
    MObj* o = *m_stak;
    if (o->fcn) m_custom_xeqerr(3102, "%s not a matrix", dmname(o->fcn));
}
void mx_isscalar() {
    MObj* o = *m_stak;
    if (notfcn(o) && (o->rows != 1 || o->cols != 1)) shapeerr(3204, o, 0);
}
void mx_opisvec() {
    MObj* o = *m_stak;
    if (notfcn(o) && o->rows != 1 && o->cols != 1) shapeerr(3201, o, 1);
}
void mx_opisrvec() {
    MObj* o = *m_stak;
    if (notfcn(o) && o->rows != 1) shapeerr(3202, o, 2);
}
void mx_opiscvec() {
    MObj* o = *m_stak;
    if (notfcn(o) && o->cols != 1) shapeerr(3203, o, 3);
}
static void typeerr(int code, MObj* o, const char* want) {
    m_custom_xeqerr(code, "%s[%d,%d] found where %s required", m_eltname(o), o->rows, o->cols,
                    want);
}
void mx_opisreal() {
    MObj* o = *m_stak;
    if (notfcn(o) && o->eltype != MT_REAL) typeerr(3253, o, "real");
}
void mx_opisstr() {
    MObj* o = *m_stak;
    if (notfcn(o) && o->eltype != MT_STRING) typeerr(3250, o, "string");
}
void mx_opiscx() {
    MObj* o = *m_stak;
    if (notfcn(o) && o->eltype != MT_COMPLEX) typeerr(3252, o, "complex");
}
void mx_opisnumer() {
    MObj* o = *m_stak;
    if (notfcn(o) && o->eltype != MT_REAL && o->eltype != MT_COMPLEX) typeerr(3251, o, "numeric");
}
void mx_opisvoid() {
    MObj* o = *m_stak;
    if (!o->isvoid) m_xeqerr(3258);
}
void mx_opisfcn() {
    if (!(*m_stak)->fcn) m_xeqerr(3101);
}

// Display.

void mx_oplist2() {
    m_list(*m_stak);
}

// Pointers.

void mx_opref() {
    MObj* o = *m_stak;
    MObj* p = m_mkmat("", MT_POINTER, 1, 1);
    if (!p) {
        m_xeqerr(3900);
        return;
    }
    o->count++;
    m_pel(p)[0] = o;
    p->count++;
    *m_stak = p;
    mo_release(o);
}

// A struct array seen as an array of pointers to its instances: the same
// elements under the pointer type.
void mx_opcastp() {
    MObj* a = *m_stak;
    if (a->fcn) return m_xeqerr(3102);
    if (a->eltype == MT_POINTER) return;
    if (a->eltype != MT_STRUCT) return m_xeqerr(3257);
    MObj* p = m_mkmat("", MT_POINTER, a->rows, a->cols);
    if (!p) return m_xeqerr(3900);
    const int64_t n = m_nel(a);
    for (int64_t i = 0; i < n; i++)
        if ((m_pel(p)[i] = m_pel(a)[i])) mo_hold(m_pel(p)[i]);
    ppp1(p);
}

// The target of the pointer p, or null with the code set.
static MObj* target(MObj* p) {
    if (p->fcn || p->eltype != MT_POINTER) {
        m_xeqerr(3257);
        return nullptr;
    }
    if (p->rows != 1 || p->cols != 1) {
        m_xeqerr(3204);
        return nullptr;
    }
    MObj* t = m_pel(p)[0];
    if (!t) m_xeqerr(3010);
    return t;
}

void mx_opderef() {
    MObj* p = *m_stak;
    MObj* t = target(p);
    if (!t) return;
    t->count++;
    *m_stak = t;
    mo_release(p);
}

void mx_opsstomat() {
    MObj* p = *m_stak;
    MObj* v = m_stak[-1];
    MObj* t = target(p);
    if (!t) return;
    if (t->fcn || v->fcn) {
        m_xeqerr(3102);
        return;
    }
    if (int rc = cpymat(t, v, false)) {
        m_xeqerr(rc);
        return;
    }
    m_pop();
}

void link_lumovm() {
    m_runhook = ixeq;
    mo_init();
}

} // namespace korvu
