// Code words, fix-ups, tags, literal pools and the instructions chosen by type.
#include <cstring>

#include "lumo/codegen/opcodes.h"
#include "lumo/front/cc.h"

namespace korvu {

void mop_add(uint32_t w) {
    MWork* m = m_work;
    if (m->pgm.len >= m->maxpgm) cc_fail("program too large\n");
    m->code[m->pgm.len++] = w;
}

void fu_add(int at, int kind) {
    MWork* m = m_work;
    if (m->nfix >= MFIX_MAX) cc_fail("fixup table full\n");
    m->fix[m->nfix].at = at;
    m->fix[m->nfix].kind = kind;
    m->nfix++;
}

void mop_add_paddr(uint32_t w) {
    fu_add(m_work->pgm.len, FU_ADR);
    mop_add(w);
}

void mop_add_str(const char* text) {
    const size_t len = strlen(text) + 1;
    const uint32_t words = static_cast<uint32_t>((len + 3) / 4);
    mop_add(words);
    for (uint32_t i = 0; i < words; i++) {
        uint32_t w = 0;
        const size_t at = i * 4;
        memcpy(&w, text + at, len - at < 4 ? len - at : 4);
        mop_add(w);
    }
}

// A string literal: the number of words that follow, the byte count, the
// bytes padded to a word.
static void mop_add_longstr(const char* text, int len) {
    const uint32_t words = static_cast<uint32_t>((len + 3) / 4);
    mop_add(words + 1);
    mop_add(static_cast<uint32_t>(len));
    for (uint32_t i = 0; i < words; i++) {
        uint32_t w = 0;
        const int at = static_cast<int>(i) * 4;
        memcpy(&w, text + at, len - at < 4 ? len - at : 4);
        mop_add(w);
    }
}

void mop_fix_paddr(int at, uint32_t value) {
    m_work->code[at] = value;
}

int mop_here() {
    return m_work->pgm.len;
}

// Tags.

int fu_crtag(const char* name) {
    MWork* m = m_work;
    if (m->ntag >= MTAG_MAX) cc_fail("too many branch points\n");
    if (strlen(name) > 7) cc_fail("%s:  tag name too long\n", name);
    MTag& t = m->tag[m->ntag];
    t.addr = NOTAG;
    snprintf(t.name, sizeof t.name, "%s", name);
    return m->ntag++;
}

int fu_find_or_cr_tag(const char* name) {
    MWork* m = m_work;
    for (int i = 0; i < m->ntag; i++)
        if (m->tag[i].name[0] && !strcmp(m->tag[i].name, name)) return i;
    return fu_crtag(name);
}

void fu_settagadr(int tag) {
    m_work->tag[tag].addr = mop_here();
}

void fu_reftag(uint32_t op, int tag) {
    mop_add(op);
    fu_add(mop_here(), FU_TAG);
    mop_add(static_cast<uint32_t>(tag));
}

void fu_fixtags() {
    MWork* m = m_work;
    for (int i = 0; i < m->nfix; i++) {
        MFix& f = m->fix[i];
        if (f.kind != FU_TAG) continue;
        const MTag& t = m->tag[m->code[f.at]];
        if (t.addr == NOTAG) {
            if (t.name[0]) cc_fail("%s undefined tag\n", t.name);
            cc_fail("system error:  UDpaddr\n");
        }
        m->code[f.at] = static_cast<uint32_t>(t.addr);
        f.kind = FU_ADR;
    }
}

// Literal pools.

int m_litaddd(double x) {
    MWork* m = m_work;
    for (int i = 0; i < m->ndlit; i++)
        if (!memcmp(&m->dlit[i], &x, sizeof x)) return i;
    if (m->ndlit >= MDLIT_MAX) cc_fail("no room to add more double literals\n");
    m->dlit[m->ndlit] = x;
    return m->ndlit++;
}

int m_litadds(const char* text, int len) {
    MWork* m = m_work;
    for (int i = 0; i < m->nslit; i++)
        if (m->slen[i] == len && !memcmp(m->sarea + m->slit[i], text, len)) return i;
    if (m->nslit >= MSLIT_MAX || m->nsarea + len + 1 > MSAREA)
        cc_fail("too many string literals\n");
    memcpy(m->sarea + m->nsarea, text, len);
    m->sarea[m->nsarea + len] = 0;
    m->slit[m->nslit] = m->nsarea;
    m->slen[m->nslit] = len;
    m->nsarea += len + 1;
    return m->nslit++;
}

void cc_litblocks() {
    MWork* m = m_work;
    int32_t dat[MDLIT_MAX];
    int32_t sat[MSLIT_MAX];
    if (m->ndlit) {
        while (mop_here() % 2) mop_add(MOP_FILLER);
        mop_add(MOP_DBLOCK);
        mop_add(static_cast<uint32_t>(m->ndlit));
        for (int i = 0; i < m->ndlit; i++) {
            dat[i] = mop_here();
            uint32_t w[2];
            memcpy(w, &m->dlit[i], sizeof w);
            mop_add(w[0]);
            mop_add(w[1]);
        }
    }
    if (m->nslit) {
        mop_add(MOP_SBLOCK);
        mop_add(static_cast<uint32_t>(m->nslit));
        for (int i = 0; i < m->nslit; i++) {
            sat[i] = mop_here();
            mop_add_longstr(m->sarea + m->slit[i], m->slen[i]);
        }
    }
    for (int i = 0; i < m->nfix; i++) {
        const MFix& f = m->fix[i];
        if (f.kind == FU_DLIT) m->code[f.at] = static_cast<uint32_t>(dat[m->code[f.at]]);
        if (f.kind == FU_SLIT) m->code[f.at] = static_cast<uint32_t>(sat[m->code[f.at]]);
    }
}

// Instructions by type.

static int orgcol(int org) {
    switch (org) {
    case OT_ROWVEC:
    case OT_VECTOR: return 1;
    case OT_COLVEC: return 2;
    case OT_SCALAR: return 3;
    default: return 0;
    }
}

uint32_t op_alloc(int t) {
    const MType& c = m_work->typ[t];
    const int col = orgcol(c.org);
    switch (c.el) {
    case ET_COMPLEX: return 97 + 3 * col;
    case ET_STRING: return 98 + 3 * col;
    case ET_POINTER: return 108 + col;
    case ET_STRUCT: return 143 + col;
    default: return col == 0 ? 37 : 96 + 3 * col;
    }
}

uint32_t op_optalloc(int t) {
    const MType& c = m_work->typ[t];
    const int col = orgcol(c.org);
    switch (c.el) {
    case ET_COMPLEX: return 123 + 3 * col;
    case ET_STRING: return 124 + 3 * col;
    case ET_POINTER: return 134 + col;
    case ET_STRUCT: return 147 + col;
    default: return 122 + 3 * col;
    }
}

void op_tyassert(int el, int org) {
    switch (org) {
    case OT_SCALAR: mop_add(MOP_ISSCALAR); break;
    case OT_VECTOR: mop_add(MOP_ISVEC); break;
    case OT_ROWVEC: mop_add(MOP_ISRVEC); break;
    case OT_COLVEC: mop_add(MOP_ISCVEC); break;
    case OT_VOID: mop_add(MOP_ISVOID); break;
    default: break;
    }
    switch (el) {
    case ET_REAL: mop_add(MOP_ISREAL); break;
    case ET_STRING: mop_add(MOP_ISSTR); break;
    case ET_COMPLEX: mop_add(MOP_ISCX); break;
    case ET_NUMERIC: mop_add(MOP_ISNUMER); break;
    default: break;
    }
}

} // namespace korvu
