// Statements, declarations, function and structure definitions, and the
// compilation driver with its workspace.
#include <cstdarg>
#include <cstddef>
#include <cstring>
#include <new>

#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/loop/limits.h"
#include "kernel/loop/loop.h"
#include "lumo/codegen/opcodes.h"
#include "lumo/front/cc.h"
#include "lumo/front/expr.h"
#include "lumo/front/lexer.h"
#include "lumo/lumo.h"
#include "output/spout.h"

namespace korvu {

MWork* m_work = nullptr;
int m_curline = 0;
static int blockdepth = 0;     // open braces and function bodies
static bool stmtended = false; // the statement already read the next line
static LumoFcn* lastfcn = nullptr;

struct MCompileAbort {};

void cc_msg(const char* fmt, ...) {
    char buf[1024];
    va_list ap;
    va_start(ap, fmt);
    vsnprintf(buf, sizeof buf, fmt, ap);
    va_end(ap);
    errtext(3000, buf);
}

void cc_fail(const char* fmt, ...) {
    char buf[1024];
    va_list ap;
    va_start(ap, fmt);
    vsnprintf(buf, sizeof buf, fmt, ap);
    va_end(ap);
    cc_msg("%s", buf);
    throw MCompileAbort{};
}

// Types in declarations.

static bool iseltype(int t) {
    return t == 202 || t == 223 || t == 212 || t == 228 || t == 229 || t == 239 || t == 234;
}
static bool isorgtype(int t) {
    return t == 218 || t == 219 || t == 201 || t == 221 || t == 222 || t == 213;
}
static bool istypeword(int t) {
    return iseltype(t) || isorgtype(t);
}

// Reads a type at the current token; -1 when there is no type word.
static int parse_type() {
    int el = -1, org = -1, target = -1;
    std::string sname;
    for (;;) {
        const int t = m_token;
        if (el < 0 && iseltype(t)) {
            m_gettok();
            if (t == 239) {
                el = ET_POINTER;
                if (m_token == '(') {
                    m_gettok();
                    target = parse_type();
                    if (target < 0) cc_fail("type declaration required\n");
                    m_match(')');
                }
            } else if (t == 234) {
                el = ET_STRUCT;
                m_tokenis(131);
                sname = m_tokstr;
                m_gettok();
            } else {
                el = t == 202   ? ET_TM
                     : t == 223 ? ET_REAL
                     : t == 212 ? ET_STRING
                     : t == 228 ? ET_COMPLEX
                                : ET_NUMERIC;
            }
            continue;
        }
        if (org < 0 && isorgtype(t)) {
            org = t == 218   ? OT_MATRIX
                  : t == 219 ? OT_SCALAR
                  : t == 201 ? OT_VECTOR
                  : t == 221 ? OT_ROWVEC
                  : t == 222 ? OT_COLVEC
                             : OT_VOID;
            m_gettok();
            continue;
        }
        break;
    }
    if (el < 0 && org < 0) return -1;
    if (el < 0) el = ET_TM;
    if (org < 0) org = OT_MATRIX;
    if (el == ET_STRUCT) return mtyp_addstruct(sname.c_str(), org, 1);
    if (el == ET_POINTER)
        return target >= 0 ? mtyp_add_ptr(target, org, 1) : mtyp_add(ET_POINTER, org, 1);
    return mtyp_add(el, org, 1);
}

// Statements.

// an expression statement also ends before `else` and the `while` of a do
static const int stop_stmt[] = {';', '}', 204, 215, 0};
static const int stop_semi[] = {';', 0};
static const int stop_paren[] = {')', 0};

static void expect_stmt_start() {
    if (m_token == 10) m_nlokay();
}

static void cc_block() {
    blockdepth++;
    for (;;) {
        while (m_token == 10 || m_token == ';') {
            if (m_token == 10)
                m_nlokay();
            else
                m_gettok();
        }
        if (m_token == '}') break;
        stmtended = false;
        cc_stmt();
        if (stmtended) {
            stmtended = false;
            continue;
        }
        if (m_token != ';' && m_token != 10 && m_token != '}')
            cc_fail("%s found where ';' expected\n", m_tokdesc(m_token, m_tokstr.c_str()).c_str());
    }
    blockdepth--;
}

static void cond_expr() {
    m_match('(');
    cc_exprtok(stop_paren, true);
    cc_expr();
    const int t = cc_exprtype();
    const MType& c = m_work->typ[t];
    if (c.el == ET_STRING || c.el == ET_POINTER || c.el == ET_STRUCT)
        cc_fail("type mismatch:  %s:  %s\n", "condition", mtyp_text(t).c_str());
    m_match(')');
}

// A statement that stands as the body of if, for, while or do.
static void body_stmt() {
    expect_stmt_start();
    cc_stmt();
}

static void stmt_if() {
    m_gettok();
    cond_expr();
    const int lelse = fu_crtag("");
    fu_reftag(MOP_TST0, lelse);
    body_stmt();
    // else may stand behind a semicolon, or on the next line inside a block
    if (m_token == ';' && m_nexttok() == 204) m_gettok();
    if (m_token == 10 && blockdepth > 0 && !stmtended) {
        m_nlokay();
        if (m_token != 204) {
            fu_settagadr(lelse);
            stmtended = true;
            return;
        }
    }
    stmtended = false;
    if (m_token == 204) {
        const int lend = fu_crtag("");
        fu_reftag(MOP_GOTO, lend);
        fu_settagadr(lelse);
        m_gettok();
        body_stmt();
        fu_settagadr(lend);
        return;
    }
    fu_settagadr(lelse);
}

static void loop_tags(int brk, int cont, int* savebrk, int* savecont) {
    *savebrk = m_work->brktag;
    *savecont = m_work->conttag;
    m_work->brktag = brk;
    m_work->conttag = cont;
}

static void stmt_for() {
    m_gettok();
    m_match('(');
    cc_exprtok(stop_semi, true);
    if (m_work->ntok) {
        cc_expr();
        mop_add(MOP_POP);
    }
    m_match(';');
    const int ltest = fu_crtag(""), lend = fu_crtag(""), lbody = fu_crtag(""), lcont = fu_crtag("");
    fu_settagadr(ltest);
    cc_exprtok(stop_semi, true);
    cc_expr();
    m_match(';');
    fu_reftag(MOP_TST0, lend);
    fu_reftag(MOP_GOTO, lbody);
    fu_settagadr(lcont);
    cc_exprtok(stop_paren, true);
    if (m_work->ntok) {
        cc_expr();
        mop_add(MOP_POP);
    }
    m_match(')');
    fu_reftag(MOP_GOTO, ltest);
    fu_settagadr(lbody);
    int sb, sc;
    loop_tags(lend, lcont, &sb, &sc);
    body_stmt();
    loop_tags(sb, sc, &sb, &sc);
    fu_reftag(MOP_GOTO, lcont);
    fu_settagadr(lend);
}

static void stmt_while() {
    m_gettok();
    const int ltest = fu_crtag(""), lend = fu_crtag("");
    fu_settagadr(ltest);
    cond_expr();
    fu_reftag(MOP_TST0, lend);
    int sb, sc;
    loop_tags(lend, ltest, &sb, &sc);
    body_stmt();
    loop_tags(sb, sc, &sb, &sc);
    fu_reftag(MOP_GOTO, ltest);
    fu_settagadr(lend);
}

static void stmt_do() {
    m_gettok();
    const int ltop = fu_crtag(""), lcont = fu_crtag(""), lend = fu_crtag("");
    fu_settagadr(ltop);
    int sb, sc;
    loop_tags(lend, lcont, &sb, &sc);
    body_stmt();
    loop_tags(sb, sc, &sb, &sc);
    if (m_token == ';' && m_nexttok() == 215) m_gettok();
    if (m_token == 10 && !stmtended) m_nlokay();
    stmtended = false;
    m_tokenis(215);
    m_gettok();
    fu_settagadr(lcont);
    cond_expr();
    fu_reftag(MOP_TST0, lend);
    fu_reftag(MOP_GOTO, ltop);
    fu_settagadr(lend);
}

static void stmt_decl() {
    int cls = SC_LOCAL;
    if (m_token == 220) {
        cls = SC_EXTERN;
        m_gettok();
    }
    const int t = parse_type();
    if (t < 0) cc_fail("type declaration required\n");
    if (m_work->typ[t].org == OT_VOID) cc_fail("type declaration required\n");
    for (;;) {
        if (m_token != 131) cc_fail("name(s) required\n");
        const int s = st_add(m_tokstr.c_str(), cls, 1);
        m_work->sym[s].type = t;
        m_gettok();
        if (m_token != ',') break;
        m_gettok();
        if (m_token == 10) m_nlokay();
    }
}

static void stmt_return() {
    m_gettok();
    if (m_token == 10 || m_token == ';' || m_token == '}') {
        mop_add(MOP_LDVOID);
    } else {
        cc_exprtok(stop_stmt, false);
        cc_expr();
    }
    // the trampoline stands at word 6
    mop_add(MOP_GOTO);
    fu_add(mop_here(), FU_ADR);
    mop_add(6);
}

static void stmt_pragma() {
    m_gettok();
    int flag = 0;
    if (m_token == 131 && m_tokstr == "unset") flag = SF_PUNSET;
    if (m_token == 131 && m_tokstr == "unused") flag = SF_PUNUSED;
    if (!flag) cc_fail("invalid pragma\n");
    m_gettok();
    if (m_token != 131) cc_fail("invalid pragma\n");
    const int s = st_findoradd(m_tokstr.c_str(), m_work->pgm.infcn ? SC_LOCAL : SC_EXTERN, 0);
    m_work->sym[s].flags |= flag;
    m_gettok();
}

static void stmt_expr() {
    cc_exprtok(stop_stmt, false);
    const int fl = cc_expr();
    if (!m_work->pgm.infcn && !(fl & (EX_ASSIGN | EX_NOLIST))) mop_add(MOP_LIST);
    mop_add(MOP_POP);
}

void cc_stmt() {
    MWork* w = m_work;
    if (stopflag) cc_fail("--Break--\n");
    if (m_token == 10) return;
    m_curline = m_lex.lineno;
    if (m_lnum) {
        mop_add(MOP_LINE);
        mop_add(static_cast<uint32_t>(m_curline));
    }
    switch (m_token) {
    case '{':
        m_gettok();
        cc_block();
        m_gettok();
        return;
    case 203: return stmt_if();
    case 200: return stmt_for();
    case 215: return stmt_while();
    case 226: return stmt_do();
    case 224:
    case 225: {
        const int tag = m_token == 224 ? w->brktag : w->conttag;
        if (tag == NOTAG) cc_fail("misplaced break or continue\n");
        fu_reftag(MOP_GOTO, tag);
        m_gettok();
        return;
    }
    case 227:
        m_gettok();
        if (m_token != 131)
            cc_fail("%s found where name expected\n", m_tokdesc(m_token, m_tokstr.c_str()).c_str());
        fu_reftag(MOP_GOTO, fu_find_or_cr_tag(m_tokstr.c_str()));
        m_gettok();
        return;
    case 247: {
        m_gettok();
        if (m_token != 130) cc_fail("version number invalid\n");
        const double v = m_toknum * 100;
        if (!(v >= 100 && v <= vernum) || v != static_cast<int>(v))
            cc_fail("version number invalid\n");
        mop_add(MOP_VERSION);
        mop_add(static_cast<uint32_t>(v));
        m_gettok();
        return;
    }
    case 248: return stmt_pragma();
    default: break;
    }
    if (m_token == 131 && m_nexttok() == ':') {
        const int tag = fu_find_or_cr_tag(m_tokstr.c_str());
        if (w->tag[tag].addr != NOTAG) cc_fail("symbol %s multiply defined\n", m_tokstr.c_str());
        fu_settagadr(tag);
        m_gettok();
        m_gettok();
        if (m_token != 10 && m_token != ';' && m_token != '}') cc_stmt();
        return;
    }
    if (w->pgm.infcn) {
        if (istypeword(m_token) || m_token == 220) return stmt_decl();
        if (m_token == 206) return stmt_return();
        if (m_token == ';') return;
    }
    stmt_expr();
}

// Functions.

static void cc_farglist() {
    MWork* w = m_work;
    bool bar = false;
    m_gettok();
    if (m_token == 10) m_nlokay();
    if (m_token == ')') return;
    for (;;) {
        if (m_token == '|') {
            if (bar) cc_fail("illegal arglist\n");
            bar = true;
            w->pgm.firstopt = w->pgm.nargs;
            m_gettok();
            if (m_token == 10) m_nlokay();
        }
        int t = parse_type();
        if (m_token != 131) cc_fail("illegal arglist\n");
        std::string name = m_tokstr;
        m_gettok();
        int cls = SC_LOCAL;
        if (m_token == '(') {
            m_gettok();
            m_match(')');
            if (bar) cc_fail("function arguments cannot be optional\n");
            cls = SC_FUNC;
        }
        if (t < 0) t = mtyp_add(ET_TM, OT_MATRIX, 1);
        if (bar && w->typ[t].el == ET_STRUCT && w->typ[t].org == OT_SCALAR) {
            cc_msg("struct scalars may not be received as optional arguments.{break}");
            cc_msg("Remove the qualifier -scalar- from the argument's declaration.\n");
            cc_msg("Now, if the argument is not passed, you will receive a 0 x 0\n");
            cc_fail("struct and, if necessary, you can allocate it yourself.\n");
        }
        const int s = st_add(name.c_str(), cls, 1);
        w->sym[s].type = t;
        w->sym[s].flags |= SF_ARG | (bar ? SF_OPT : 0);
        w->pgm.nargs++;
        if (m_token == ',') {
            m_gettok();
            if (m_token == 10) m_nlokay();
            continue;
        }
        if (m_token == '|') continue;
        if (m_token == ')') return;
        cc_fail("illegal arglist\n");
    }
}

void cc_function() {
    MWork* w = m_work;
    int rt = parse_type();
    if (m_token == 205) m_gettok();
    if (rt < 0) rt = mtyp_add(ET_TM, OT_MATRIX, 1);
    w->pgm.rettype = rt;
    if (m_token != 131)
        cc_fail("%s found where name expected\n", m_tokdesc(m_token, m_tokstr.c_str()).c_str());
    const std::string name = m_tokstr;
    if (m_findbuiltin(name.c_str())) cc_fail("%s() is built-in\n", name.c_str());
    if (LumoFcn* f = m_findfcn(name.c_str()); f && !f->replaced)
        cc_fail("%s() already exists\n", name.c_str());
    snprintf(w->pgm.name, sizeof w->pgm.name, "%s", name.c_str());
    w->pgm.infcn = 1;
    m_gettok();
    m_tokenis('(');
    cc_farglist();
    m_match(')');
    if (m_token == 10) m_nlokay();
    m_tokenis('{');
    m_gettok();
    const int la = fu_crtag("");
    fu_reftag(MOP_GOTO, la);
    const int lb = fu_crtag("");
    fu_reftag(MOP_GOTO, lb); // word 6: the return trampoline
    fu_settagadr(la);
    cc_block();
    m_gettok();
    mop_add(MOP_LDVOID);
    fu_settagadr(lb);
    op_tyassert(w->typ[rt].el, w->typ[rt].org);
    mop_add(MOP_RETURN);
}

void cc_structdef() {
    m_gettok(); // struct
    MStructDef d;
    d.name = m_tokstr;
    m_gettok();
    if (m_token == 10) m_nlokay();
    m_match('{');
    for (;;) {
        while (m_token == 10 || m_token == ';') {
            if (m_token == 10)
                m_nlokay();
            else
                m_gettok();
        }
        if (m_token == '}') break;
        const int t = parse_type();
        if (t < 0) cc_fail("type declaration required\n");
        for (;;) {
            if (m_token != 131) cc_fail("name(s) required\n");
            for (const MMember& m : d.members)
                if (m.name == m_tokstr) cc_fail("symbol %s multiply defined\n", m_tokstr.c_str());
            MMember mm;
            mm.name = m_tokstr;
            const MType& c = m_work->typ[t];
            mm.el = c.el;
            mm.org = c.org;
            mm.ptrel = ET_TM;
            if (c.el == ET_STRUCT) mm.sname = mtyp_sname(t);
            if (c.el == ET_POINTER && c.ptr >= 0) {
                mm.ptrel = m_work->typ[c.ptr].el;
                if (mm.ptrel == ET_STRUCT) mm.sname = mtyp_sname(c.ptr);
            }
            d.members.push_back(mm);
            m_gettok();
            if (m_token != ',') break;
            m_gettok();
        }
    }
    m_gettok();
    for (MStructDef& e : m_structs)
        if (e.name == d.name) {
            e = d;
            return;
        }
    m_structs.push_back(d);
}

// The prologue: argument checks, locals, the jump back to the body.
void cc_prologue() {
    MWork* w = m_work;
    const MPgm& p = w->pgm;
    // constructors of struct locals are function symbols
    int ctor[MSYM_MAX];
    const int nsym0 = w->nsym;
    for (int i = 0; i < nsym0; i++) {
        ctor[i] = -1;
        const MSym& s = w->sym[i];
        if (s.cls == SC_LOCAL && !(s.flags & SF_ARG) && w->typ[s.type].el == ET_STRUCT) {
            const char* sn = mtyp_sname(s.type);
            int c = st_find(sn, SC_FUNC);
            if (c < 0) c = st_add(sn, SC_FUNC, 1);
            ctor[i] = c;
        }
    }
    if (p.infcn) {
        if (p.firstopt < 0) {
            mop_add(MOP_NARGS);
            mop_add(static_cast<uint32_t>(p.nargs));
        } else {
            mop_add(MOP_NARGSR);
            mop_add(static_cast<uint32_t>(p.firstopt));
            mop_add(static_cast<uint32_t>(p.nargs));
            for (int i = p.firstopt; i < p.nargs; i++) {
                mop_add(op_optalloc(w->sym[i].type));
                mop_add(static_cast<uint32_t>(i + 1));
                mop_add_str(w->sym[i].name);
            }
        }
        for (int i = 0; i < p.nargs; i++) {
            const MSym& s = w->sym[i];
            mop_add(MOP_LOAD);
            mop_add(static_cast<uint32_t>(i));
            mop_add(s.cls == SC_FUNC ? MOP_ISFCN : MOP_ISMAT);
            if (s.cls != SC_FUNC) op_tyassert(w->typ[s.type].el, w->typ[s.type].org);
            mop_add(MOP_POP);
        }
        if (m_strict) {
            bool bad = false;
            for (int i = p.nargs; i < w->nsym; i++)
                if (w->sym[i].cls == SC_LOCAL && !(w->sym[i].flags & SF_DECL)) {
                    cc_msg("variable %s undeclared\n", w->sym[i].name);
                    bad = true;
                }
            if (bad) throw MCompileAbort{};
        }
    }
    for (int i = p.infcn ? p.nargs : 0; i < w->nsym; i++) {
        const MSym& s = w->sym[i];
        const MType& c = w->typ[s.type];
        switch (s.cls) {
        case SC_LOCAL:
            mop_add(op_alloc(s.type));
            mop_add_str(s.name);
            if (c.el != ET_STRUCT && c.el != ET_POINTER) op_tyassert(c.el, c.org);
            break;
        case SC_FUNC:
            mop_add(MOP_FINDF);
            mop_add(0);
            mop_add(0);
            mop_add(0);
            mop_add_str(s.name);
            break;
        case SC_EXTERN:
            mop_add(MOP_FIND);
            mop_add(p.infcn ? 0 : 1);
            mop_add_str(s.name);
            if (c.el != ET_STRUCT && c.el != ET_POINTER) op_tyassert(c.el, c.org);
            break;
        default: cc_fail("system failure:  illegal storage class\n");
        }
    }
    for (int i = 0; i < nsym0; i++) {
        if (ctor[i] < 0) continue;
        mop_add(MOP_CALL);
        mop_add(static_cast<uint32_t>(ctor[i]));
        mop_add(0);
        mop_add(MOP_STORE);
        mop_add(static_cast<uint32_t>(i));
        mop_add(MOP_POP);
    }
    mop_add(MOP_GOTO);
    fu_add(mop_here(), FU_ADR);
    mop_add(4);
}

void cc_notes() {
    MWork* w = m_work;
    if (!w->pgm.infcn) return;
    for (int i = 0; i < w->nsym; i++) {
        const MSym& s = w->sym[i];
        const bool arg = s.flags & SF_ARG;
        if (s.cls == SC_EXTERN || (s.cls == SC_FUNC && !arg)) continue;
        const char* kind = s.cls == SC_FUNC ? "function " : arg ? "argument " : "variable ";
        // a struct local is built by the prologue, so it is never read unset
        const bool built = s.cls == SC_LOCAL && !arg && w->typ[s.type].el == ET_STRUCT;
        const bool used = s.flags & SF_USED, set = (s.flags & SF_SET) || (built && used);
        const char* what = nullptr;
        if (!used && !set) {
            if (!(s.flags & SF_PUNUSED)) what = " unused\n";
        } else if (set && !used) {
            if (!(s.flags & SF_PUNUSED)) what = " set but not used\n";
        } else if (used && !set && !arg) {
            if (!(s.flags & SF_PUNSET)) what = " may be used before set\n";
        }
        if (!what) continue;
        const uint8_t lev = c_outlev;
        c_outlev = 1;
        spoutsetptagweak();
        std::string line = std::string("note: ") + kind + s.name + what;
        spout21(line.c_str());
        c_outlev = lev;
    }
}

// The driver.

static const char wsname[] = "_lumo_workspace";

static void zapwork() {
    dmzap(DM_LUMOWORK);
    m_work = nullptr;
}

const LumoFcn* cc_lastfcn() {
    return lastfcn;
}

LumoFcn* m_findfcn(const char* name) {
    return static_cast<LumoFcn*>(dmfind0(name, DM_LUMOFCN));
}

// The immediate statement goes before the next compilation; one that is
// running (a command run from it compiles another) is set aside under
// another name and dropped when it ends.
static void cc_freeistmt() {
    if (void* f = dmfind0(mwrd_istmt, DM_LUMOFCN)) {
        if (lastfcn == f) lastfcn = nullptr;
        auto* fn = static_cast<LumoFcn*>(f);
        if (fn->count > 0) {
            fn->replaced = 1;
            dmrename(f, "<istmt:running>");
        } else {
            dmrm(f);
        }
    }
}

static int cc_stofunc() {
    MWork* w = m_work;
    const size_t size = offsetof(LumoFcn, code) + 4u * static_cast<size_t>(w->pgm.len);
    auto* f = static_cast<LumoFcn*>(dmadd(w->pgm.name, DM_LUMOFCN, 0, size));
    if (!f) {
        cc_msg("cannot create %s():  insufficient memory\n", w->pgm.name);
        return 3000;
    }
    f->nwords = w->pgm.len;
    f->eltype = w->typ[w->pgm.rettype].el;
    f->orgtype = w->typ[w->pgm.rettype].org;
    f->count = 0;
    f->replaced = 0;
    f->pad = 0;
    memcpy(f->code, w->code, 4u * static_cast<size_t>(w->pgm.len));
    lastfcn = f;
    return 0;
}

int cc_compile(const char* text, std::string* rest) {
    if (rest) rest->clear();
    cc_freeistmt();
    lastfcn = nullptr;
    const int maxpgm = macrolen / 4 + 8000;
    const size_t size = offsetof(MWork, code) + 4u * static_cast<size_t>(maxpgm);
    zapwork();
    void* mem = dmadd(wsname, DM_LUMOWORK, 0, size);
    if (!mem) {
        cc_msg("insufficient memory\n");
        return 3000;
    }
    m_work = static_cast<MWork*>(mem);
    MWork* w = m_work;
    // the tables are used only up to their counts
    w->nsym = w->nfix = w->ndlit = w->nslit = w->nsarea = w->ntag = w->ntyp = 0;
    w->nsnames = w->ntstk = w->ntok = w->ntokstr = w->npost = 0;
    memset(&w->pgm, 0, sizeof w->pgm);
    w->maxpgm = maxpgm;
    w->pgm.firstopt = -1;
    w->pgm.code = w->code;
    w->brktag = w->conttag = NOTAG;
    blockdepth = 0;
    stmtended = false;
    lumo_state = 2;
    int rc = 0;
    try {
        m_token0(text);
        m_lex.sawend = 0;
        m_lex.eof = 0;
        m_gettok();
        if (m_token == 10) {
            zapwork();
            lumo_state = -1;
            return -1;
        }
        mtyp_add(ET_TM, OT_MATRIX, 0);
        if (m_token == 234 && m_nexttok() == 131 &&
            (m_nextnexttok() == '{' || m_nextnexttok() == 10)) {
            cc_structdef();
        } else {
            w->pgm.rettype = mtyp_add(ET_TM, OT_MATRIX, 1);
            mop_add(920);
            mop_add(static_cast<uint32_t>(vernum < 900 ? 900 : vernum));
            mop_add(MOP_GOTO);
            fu_add(mop_here(), FU_ADR);
            mop_add(0);
            if (istypeword(m_token) || m_token == 205) {
                cc_function();
            } else {
                snprintf(w->pgm.name, sizeof w->pgm.name, "%s", mwrd_istmt);
                cc_stmt();
                if (m_token == '}')
                    cc_fail("%s found where ';' expected\n", m_tokdesc(m_token, "}").c_str());
            }
            mop_add(MOP_STOP);
            mop_fix_paddr(3, static_cast<uint32_t>(mop_here()));
            w->pgm.prologue = mop_here();
            cc_prologue();
            fu_fixtags();
            if (m_optimize && !m_lnum) cc_optimize();
            cc_litblocks();
            cc_notes();
        }
        if (m_token == ';') {
            if (rest) *rest = m_lex.line.substr(m_lex.pos);
        } else if (m_token != 10) {
            if (rest) *rest = m_lex.line.substr(m_lex.tokstart);
        }
        if (w->pgm.len) rc = cc_stofunc();
        if (m_dbugflg && lastfcn) m_disasm(w->pgm.name, lastfcn->code, lastfcn->nwords);
    } catch (MCompileAbort&) {
        rc = m_lex.eof ? 612 : 3000; // the source ran out: "unexpected end of file"
    }
    zapwork();
    lumo_state = -1;
    return rc;
}

// Functions kept by name.

int m_dropfcn(const char* name) {
    LumoFcn* f = m_findfcn(name);
    if (!f) return 111;
    if (f == lastfcn) lastfcn = nullptr;
    if (f->count > 0)
        f->replaced = 1;
    else
        dmrm(f);
    return 0;
}

void m_dropoldfcns() {
    for (void* it = dmnext(nullptr, nullptr, DM_LUMOFCN, nullptr); it;) {
        void* nx = dmnext(it, nullptr, DM_LUMOFCN, nullptr);
        auto* f = static_cast<LumoFcn*>(it);
        if (f->replaced && f->count <= 0) {
            if (f == lastfcn) lastfcn = nullptr;
            dmrm(f);
        }
        it = nx;
    }
}

void m_dropallfcns() {
    lastfcn = nullptr;
    dmzap(DM_LUMOFCN);
    m_structs.clear();
}

} // namespace korvu
