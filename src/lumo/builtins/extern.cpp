// External (global) objects by name: find, create, remove, list, value.
#include <string>
#include <vector>

#include "data/vars/vartab.h"
#include "lumo/builtins/bi.h"

namespace korvu {

static bool extname(int n, std::string* s) {
    if (!bi_getstr(n, 0, s)) return false;
    bool ok = !s->empty() && s->size() <= 32 &&
              (isalpha(static_cast<unsigned char>((*s)[0])) || (*s)[0] == '_');
    for (char c : *s) ok &= isalnum(static_cast<unsigned char>(c)) || c == '_';
    if (!ok) m_custom_xeqerr(3300, "invalid name %s", s->c_str());
    return ok;
}
static void ptrres(int n, MObj* target) {
    MObj* o = bi_new(MT_POINTER, 1, 1);
    if (!o) return;
    if (target) mo_hold(target);
    m_pel(o)[0] = target;
    bi_result(n, o);
}
// findexternal(name): a pointer to the global, NULL when there is none.
static void bi_findexternal(int n) {
    std::string s;
    if (extname(n, &s)) ptrres(n, findglobalmat(s.c_str()));
}
// crexternal(name): a new 0 x 0 real global and a pointer to it; NULL when
// the name is taken.
static void bi_crexternal(int n) {
    std::string s;
    if (!extname(n, &s)) return;
    if (findglobalmat(s.c_str())) return ptrres(n, nullptr);
    MObj* g = m_mkglobalmat(s.c_str(), MT_REAL, 0, 0);
    if (!g) return m_xeqerr(3900);
    ptrres(n, g);
}
// rmexternal(name): the global is dropped (pointers to it keep the value).
static void bi_rmexternal(int n) {
    std::string s;
    if (!extname(n, &s)) return;
    lumo_dropmat(s.c_str());
    bi_voidres(n);
}
// direxternal(pattern): the names of the globals that match, a column.
static void bi_direxternal(int n) {
    std::string pat;
    if (!bi_getstr(n, 0, &pat)) return;
    if (pat.empty()) pat = "*";
    std::vector<std::string> names;
    for (MObj* o = mo_nextmat(nullptr); o; o = mo_nextmat(o))
        if (wildmatch(pat.c_str(), o->name)) names.push_back(o->name);
    MObj* r = bi_new(MT_STRING, static_cast<int64_t>(names.size()), 1);
    if (!r) return;
    for (size_t k = 0; k < names.size(); k++) m_sel(r)[k] = bi_cell(names[k]);
    bi_result(n, r);
}
// valofexternal(name): a copy of the value, J(0, 0, .) when absent.
static void bi_valofexternal(int n) {
    std::string s;
    if (!extname(n, &s)) return;
    MObj* g = findglobalmat(s.c_str());
    if (!g) return void(bi_result(n, bi_new(MT_REAL, 0, 0)));
    MObj* c = m_dupmat(g);
    if (!c) return m_xeqerr(3900);
    bi_result(n, c);
}

void bi_link_extern(MBiFn* t) {
    t[bi_index("findexternal")] = bi_findexternal;
    t[bi_index("crexternal")] = bi_crexternal;
    t[bi_index("rmexternal")] = bi_rmexternal;
    t[bi_index("direxternal")] = bi_direxternal;
    t[bi_index("valofexternal")] = bi_valofexternal;
}

} // namespace korvu
