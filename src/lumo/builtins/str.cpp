// String functions, element by element over string matrices, and the
// formatting of values by the system's display formats.
#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "data/formats/formats.h"
#include "kernel/regex/regex.h"
#include "lumo/builtins/bi.h"

namespace korvu {

static std::string cellstr(const SCell* c) {
    return std::string(c->s, static_cast<size_t>(c->len));
}

// String to string over every element of a string argument.
template <class F> static void smap(int n, F f) {
    MObj* a = bi_mat(n, 0);
    if (!a || !bi_string(a)) return;
    MObj* o = bi_new(MT_STRING, a->rows, a->cols);
    if (!o) return;
    for (int64_t i = 0; i < m_nel(a); i++) m_sel(o)[i] = bi_cell(f(cellstr(m_sel(a)[i])));
    bi_result(n, o);
}

static void bi_strlen(int n) {
    MObj* a = bi_mat(n, 0);
    if (!a || !bi_string(a)) return;
    MObj* o = bi_new(MT_REAL, a->rows, a->cols);
    if (!o) return;
    for (int64_t i = 0; i < m_nel(a); i++) m_rel(o)[i] = m_sel(a)[i]->len;
    bi_result(n, o);
}
static void bi_strupper(int n) {
    smap(n, [](std::string s) {
        for (char& c : s) c = static_cast<char>(toupper(static_cast<unsigned char>(c)));
        return s;
    });
}
static void bi_strlower(int n) {
    smap(n, [](std::string s) {
        for (char& c : s) c = static_cast<char>(tolower(static_cast<unsigned char>(c)));
        return s;
    });
}
static void bi_strltrim(int n) {
    smap(n, [](const std::string& s) {
        const size_t i = s.find_first_not_of(' ');
        return i == std::string::npos ? std::string() : s.substr(i);
    });
}
static void bi_strrtrim(int n) {
    smap(n, [](const std::string& s) {
        const size_t i = s.find_last_not_of(' ');
        return i == std::string::npos ? std::string() : s.substr(0, i + 1);
    });
}
static void bi_strtrim(int n) {
    smap(n, [](const std::string& s) {
        const size_t i = s.find_first_not_of(' ');
        if (i == std::string::npos) return std::string();
        return s.substr(i, s.find_last_not_of(' ') - i + 1);
    });
}
static void bi_stritrim(int n) {
    smap(n, [](const std::string& s) {
        std::string r;
        for (size_t i = 0; i < s.size(); i++)
            if (!(s[i] == ' ' && i > 0 && s[i - 1] == ' ')) r += s[i];
        return r;
    });
}
static void bi_strreverse(int n) {
    smap(n, [](std::string s) {
        std::reverse(s.begin(), s.end());
        return s;
    });
}
static void bi_strproper(int n) {
    smap(n, [](std::string s) {
        bool start = true;
        for (char& c : s) {
            const unsigned char u = static_cast<unsigned char>(c);
            if (isalpha(u)) {
                c = static_cast<char>(start ? toupper(u) : tolower(u));
                start = false;
            } else {
                start = true;
            }
        }
        return s;
    });
}

// Two arguments under the colon rule: a string matrix and a second of any
// type; f gets the element of each.
template <class F> static void smap2(int n, int el2, int elout, F f) {
    MObj* a = bi_mat(n, 0);
    MObj* b = bi_mat(n, 1);
    if (!a || !b || !bi_string(a)) return;
    if (b->eltype != el2) return m_xeqerr(el2 == MT_STRING ? 3250 : 3253);
    a = bi_arg(n, 0);
    int R, C;
    if (!bi_cshape(a, b, &R, &C)) return;
    MObj* o = bi_new(elout, R, C);
    if (!o) return;
    for (int i = 0; i < R; i++)
        for (int j = 0; j < C; j++) {
            const int64_t k = static_cast<int64_t>(i) * C + j;
            const SCell* x = m_sel(a)[bi_cidx(a, i, j)];
            const int64_t kb = bi_cidx(b, i, j);
            f(o, k, x, b, kb);
        }
    bi_result(n, o);
}

// strpos(haystack, needle): position of the first occurrence, 0 if none.
static void bi_strpos(int n) {
    smap2(n, MT_STRING, MT_REAL, [](MObj* o, int64_t k, const SCell* x, MObj* b, int64_t kb) {
        const SCell* y = m_sel(b)[kb];
        if (y->len == 0) {
            m_rel(o)[k] = x->len ? 1 : 0;
            return;
        }
        const std::string h = cellstr(x);
        const size_t p = h.find(cellstr(y));
        m_rel(o)[k] = p == std::string::npos ? 0 : static_cast<double>(p + 1);
    });
}
// indexnot(s, chars): the first character of s not among chars, 0 if none.
static void bi_indexnot(int n) {
    smap2(n, MT_STRING, MT_REAL, [](MObj* o, int64_t k, const SCell* x, MObj* b, int64_t kb) {
        const std::string h = cellstr(x);
        const size_t p = h.find_first_not_of(cellstr(m_sel(b)[kb]));
        m_rel(o)[k] = p == std::string::npos ? 0 : static_cast<double>(p + 1);
    });
}
// strmatch(s, pattern): 1 if s matches the pattern with * and ? wild cards.
static bool wild(const char* p, const char* s) {
    for (; *p; p++, s++) {
        if (*p == '*') {
            while (p[1] == '*') p++;
            if (!p[1]) return true;
            for (; *s; s++)
                if (wild(p + 1, s)) return true;
            return false;
        }
        if (!*s || (*p != '?' && *p != *s)) return false;
    }
    return !*s;
}
static void bi_strmatch(int n) {
    smap2(n, MT_STRING, MT_REAL, [](MObj* o, int64_t k, const SCell* x, MObj* b, int64_t kb) {
        m_rel(o)[k] = wild(m_sel(b)[kb]->s, x->s);
    });
}

// substr(s, b[, l]): l characters from position b (negative b counts from
// the end; l missing means to the end).
static void bi_substr(int n) {
    MObj* a = bi_mat(n, 0);
    double b, l = misval;
    if (!a || !bi_string(a) || !bi_getreal(n, 1, &b)) return;
    if (n == 3 && !bi_getreal(n, 2, &l)) return;
    a = bi_arg(n, 0);
    MObj* o = bi_new(MT_STRING, a->rows, a->cols);
    if (!o) return;
    for (int64_t i = 0; i < m_nel(a); i++) {
        const std::string s = cellstr(m_sel(a)[i]);
        const double len = static_cast<double>(s.size());
        double from = b < 0 ? len + b + 1 : b;
        std::string r;
        if (b < misval && from >= 1 && from <= len && l > 0) {
            const double take = l >= misval ? len - from + 1 : std::min(l, len - from + 1);
            r = s.substr(static_cast<size_t>(from) - 1, static_cast<size_t>(take));
        }
        m_sel(o)[i] = bi_cell(r);
    }
    bi_result(n, o);
}

// subinstr(s, old, new[, cnt]), subinword: replace the first cnt
// occurrences (all when cnt is missing or absent).
static std::string subin(const std::string& s, const std::string& from, const std::string& to,
                         double cnt, bool words) {
    if (from.empty()) return s;
    std::string r;
    size_t i = 0;
    double done = 0;
    while (i < s.size()) {
        const bool ok = !s.compare(i, from.size(), from) && (cnt >= misval || done < cnt) &&
                        (!words || ((i == 0 || s[i - 1] == ' ') &&
                                    (i + from.size() == s.size() || s[i + from.size()] == ' ')));
        if (ok) {
            r += to;
            i += from.size();
            done++;
        } else {
            r += s[i++];
        }
    }
    return r;
}
static void subins(int n, bool words) {
    MObj* a = bi_mat(n, 0);
    std::string from, to;
    double cnt = misval;
    if (!a || !bi_string(a) || !bi_getstr(n, 1, &from) || !bi_getstr(n, 2, &to)) return;
    if (n == 4 && !bi_getreal(n, 3, &cnt)) return;
    a = bi_arg(n, 0);
    MObj* o = bi_new(MT_STRING, a->rows, a->cols);
    if (!o) return;
    for (int64_t i = 0; i < m_nel(a); i++)
        m_sel(o)[i] = bi_cell(subin(cellstr(m_sel(a)[i]), from, to, cnt, words));
    bi_result(n, o);
}
static void bi_subinstr(int n) {
    subins(n, false);
}
static void bi_subinword(int n) {
    subins(n, true);
}

// ascii(s): the codes of the characters of a string scalar, a row.
static void bi_ascii(int n) {
    std::string s;
    if (!bi_getstr(n, 0, &s)) return;
    MObj* o = bi_new(MT_REAL, 1, static_cast<int64_t>(s.size()));
    if (!o) return;
    for (size_t i = 0; i < s.size(); i++) m_rel(o)[i] = static_cast<unsigned char>(s[i]);
    bi_result(n, o);
}
// char(codes): the string of the codes of a real vector (0 to 255).
static void bi_char(int n) {
    MObj* a = bi_mat(n, 0);
    if (!a || !bi_real(a)) return;
    std::string s;
    for (int64_t i = 0; i < m_nel(a); i++) {
        const double c = m_rel(a)[i];
        if (!(c >= 0 && c <= 255)) return m_xeqerr(3300);
        if (c >= 1) s += static_cast<char>(static_cast<int>(c));
    }
    bi_strres(n, s);
}

// _strtoreal(s, x): x becomes the numbers of the strings (missing where
// they are not numbers); returns the position of the first that is not
// (0 when all are).
static bool tonum(const std::string& t, double* x) {
    std::string s = t;
    const size_t a = s.find_first_not_of(' ');
    if (a == std::string::npos) {
        *x = misval;
        return true;
    }
    s = s.substr(a, s.find_last_not_of(' ') - a + 1);
    if (s == ".") {
        *x = misval;
        return true;
    }
    if (s.size() == 2 && s[0] == '.' && s[1] >= 'a' && s[1] <= 'z') {
        uint64_t bits;
        double m = misval;
        memcpy(&bits, &m, 8);
        bits += static_cast<uint64_t>(s[1] - 'a' + 1) << 40;
        memcpy(x, &bits, 8);
        return true;
    }
    char* end = nullptr;
    const double v = strtod(s.c_str(), &end);
    if (*end || s.find_first_of("xXnN") != std::string::npos) {
        *x = misval;
        return false;
    }
    *x = v >= misval || v <= -misval ? misval : v;
    return true;
}
static void bi_ustrtoreal(int n) {
    MObj* a = bi_mat(n, 0);
    MObj* t = bi_any(n, 1);
    if (!a || !t || !bi_string(a)) return;
    if (t->view) return m_xeqerr(3103);
    MObj* o = bi_new(MT_REAL, a->rows, a->cols);
    if (!o) return;
    double first = 0;
    for (int64_t i = 0; i < m_nel(a); i++)
        if (!tonum(cellstr(m_sel(a)[i]), &m_rel(o)[i]) && first == 0)
            first = static_cast<double>(i + 1);
    m_swapmat(t, o);
    mo_freemat(o);
    bi_realres(n, first);
}

// tokens(s[, parsechars]): the words of s split at blanks, "..." and
// compound quotes kept together (without their quotes), parsing characters
// standing as tokens of their own; a row.
static void bi_tokens(int n) {
    std::string s, p;
    if (!bi_getstr(n, 0, &s)) return;
    if (n == 2 && !bi_getstr(n, 1, &p)) return;
    std::vector<std::string> out;
    size_t i = 0;
    while (i < s.size()) {
        if (s[i] == ' ') {
            i++;
            continue;
        }
        if (s[i] == '"') {
            const size_t e = s.find('"', i + 1);
            const size_t stop = e == std::string::npos ? s.size() : e;
            out.push_back(s.substr(i + 1, stop - i - 1));
            i = stop + 1;
            continue;
        }
        if (s.compare(i, 2, "`\"") == 0) {
            int depth = 0;
            size_t j = i;
            for (; j < s.size(); j++) {
                if (!s.compare(j, 2, "`\"")) {
                    depth++;
                    j++;
                } else if (!s.compare(j, 2, "\"'")) {
                    if (--depth == 0) break;
                    j++;
                }
            }
            out.push_back(s.substr(i + 2, j > i + 2 ? j - i - 2 : 0));
            i = j + 2;
            continue;
        }
        if (p.find(s[i]) != std::string::npos) {
            out.push_back(std::string(1, s[i++]));
            continue;
        }
        size_t j = i;
        while (j < s.size() && s[j] != ' ' && s[j] != '"' && p.find(s[j]) == std::string::npos) j++;
        out.push_back(s.substr(i, j - i));
        i = j;
    }
    MObj* o = bi_new(MT_STRING, 1, static_cast<int64_t>(out.size()));
    if (!o) return;
    for (size_t k = 0; k < out.size(); k++) m_sel(o)[k] = bi_cell(out[k]);
    bi_result(n, o);
}

// Regular expressions.
static void bi_regexm(int n) {
    MObj* a = bi_mat(n, 0);
    std::string re;
    if (!a || !bi_string(a) || !bi_getstr(n, 1, &re)) return;
    a = bi_arg(n, 0);
    MObj* o = bi_new(MT_REAL, a->rows, a->cols);
    if (!o) return;
    for (int64_t i = 0; i < m_nel(a); i++) {
        const int r = regexm(m_sel(a)[i]->s, re.c_str());
        if (r < 0) {
            mo_freemat(o);
            return m_custom_xeqerr(3300, "regular expression invalid: %s", regexerror());
        }
        m_rel(o)[i] = r;
    }
    bi_result(n, o);
}
static void bi_regexr(int n) {
    MObj* a = bi_mat(n, 0);
    std::string re, to;
    if (!a || !bi_string(a) || !bi_getstr(n, 1, &re) || !bi_getstr(n, 2, &to)) return;
    a = bi_arg(n, 0);
    MObj* o = bi_new(MT_STRING, a->rows, a->cols);
    if (!o) return;
    for (int64_t i = 0; i < m_nel(a); i++) {
        std::string r;
        if (regexr(m_sel(a)[i]->s, re.c_str(), to.c_str(), r, 1)) {
            mo_freemat(o);
            return m_custom_xeqerr(3300, "regular expression invalid: %s", regexerror());
        }
        m_sel(o)[i] = bi_cell(r);
    }
    bi_result(n, o);
}
static void bi_regexs(int n) {
    int64_t k = 0;
    if (n == 1 && !bi_getint(n, 0, 0, 9, &k)) return;
    std::string out;
    regexs(static_cast<int>(k), out);
    bi_strres(n, out);
}

// Formatting by display formats ----------------------------------------------

// A number by a format text; no width ("%g", "%f") gives the shortest form.
static bool fmtvalue(const std::string& f, double x, std::string* out) {
    char buf[kFmtBufSize];
    FmtDesc d;
    if (chkfmt(f.c_str(), 10, &d) == 0) {
        fmtrender(buf, d, x);
        *out = buf;
        return true;
    }
    if (f[0] == '%' && chkdfmt(f.c_str(), &d) == 0) {
        fmtrender(buf, d, x);
        *out = buf;
        return true;
    }
    if (f[0] == '%' && chktfmt(f.c_str(), &d) == 0) {
        fmtrender(buf, d, x);
        *out = buf;
        return true;
    }
    // without a width: as wide as the value needs
    std::string g = f;
    const size_t p = g.find_first_of("efg");
    if (p != std::string::npos && g.find_first_of("0123456789") == std::string::npos) {
        g.insert(1 + (g.size() > 1 && (g[1] == '-' || g[1] == '~')), "20");
        if (g.find('.') == std::string::npos) g.insert(g.find_first_of("efg"), ".0");
        if (chkfmt(g.c_str(), 10, &d) == 0) {
            fmtrender(buf, d, x);
            std::string s = buf;
            const size_t a = s.find_first_not_of(' ');
            *out = a == std::string::npos ? "" : s.substr(a, s.find_last_not_of(' ') - a + 1);
            return true;
        }
    }
    return false;
}

// Renders the format text with the arguments first .. n - 1.
bool bi_format(int n, int fmtarg, std::string* out) {
    std::string f;
    if (!bi_getstr(n, fmtarg, &f)) return false;
    int next = fmtarg + 1;
    out->clear();
    for (size_t i = 0; i < f.size(); i++) {
        if (f[i] == '\\' && i + 1 < f.size()) {
            const char e = f[++i];
            *out += e == 'n' ? '\n' : e == 't' ? '\t' : e == 'r' ? '\r' : e;
            continue;
        }
        if (f[i] != '%') {
            *out += f[i];
            continue;
        }
        if (i + 1 < f.size() && f[i + 1] == '%') {
            *out += '%';
            i++;
            continue;
        }
        size_t j = i + 1;
        while (j < f.size() && strchr("-~0123456789.,", f[j])) j++;
        if (j >= f.size()) {
            m_xeqerr(3302);
            return false;
        }
        const char conv = f[j];
        if (conv == 'e' || conv == 'f' || conv == 'g') {
            if (j + 1 < f.size() && f[j + 1] == 'c') j++;
        } else if (conv == 't') {
            if (j + 1 < f.size()) j++;
        } else if (conv != 's' && conv != 'd' && conv != 'x') {
            m_xeqerr(3302);
            return false;
        }
        const std::string dir = f.substr(i, j - i + 1);
        i = j;
        if (next >= n) {
            m_custom_xeqerr(3001, "too few arguments for the format");
            return false;
        }
        MObj* a = bi_mat(n, next++);
        if (!a || !bi_scalar(a)) return false;
        if (a->eltype == MT_STRING) {
            if (conv != 's') {
                m_xeqerr(3250);
                return false;
            }
            const std::string s = cellstr(m_sel(a)[0]);
            const int width = atoi(dir.c_str() + 1 + (dir[1] == '-' || dir[1] == '~'));
            if (width > 0) {
                std::vector<char> buf(s.size() + static_cast<size_t>(width) + 2);
                strfmt(buf.data(), s.c_str(), width, dir[1] == '-' ? -1 : dir[1] == '~' ? 0 : 1);
                *out += buf.data();
            } else {
                *out += s;
            }
        } else if (a->eltype == MT_REAL) {
            std::string r;
            const std::string use = conv == 's' ? "%" + dir.substr(1, dir.size() - 2) + ".0g" : dir;
            if (!fmtvalue(use == "%.0g" ? "%g" : use, m_rel(a)[0], &r)) {
                m_xeqerr(3302);
                return false;
            }
            *out += r;
        } else {
            m_xeqerr(3256);
            return false;
        }
    }
    return true;
}

// sprintf(fmt, ...): the text.
static void bi_sprintf(int n) {
    std::string out;
    if (bi_format(n, 0, &out)) bi_strres(n, out);
}

// strofreal(x[, fmt]): each number as text by the format (%9.0g), without
// leading blanks.
static void bi_strofreal(int n) {
    MObj* a = bi_mat(n, 0);
    std::string f = "%9.0g";
    if (!a || !bi_real(a)) return;
    if (n == 2 && !bi_getstr(n, 1, &f)) return;
    a = bi_arg(n, 0);
    MObj* o = bi_new(MT_STRING, a->rows, a->cols);
    if (!o) return;
    for (int64_t i = 0; i < m_nel(a); i++) {
        std::string r;
        if (!fmtvalue(f, m_rel(a)[i], &r)) {
            mo_freemat(o);
            return m_xeqerr(3302);
        }
        const size_t p = r.find_first_not_of(' ');
        m_sel(o)[i] = bi_cell(p == std::string::npos ? "" : r.substr(p));
    }
    bi_result(n, o);
}

void bi_link_str(MBiFn* t) {
    t[bi_index("strlen")] = bi_strlen;
    t[bi_index("substr")] = bi_substr;
    t[bi_index("ascii")] = bi_ascii;
    t[bi_index("char")] = bi_char;
    t[bi_index("strpos")] = bi_strpos;
    t[bi_index("indexnot")] = bi_indexnot;
    t[bi_index("strlower")] = bi_strlower;
    t[bi_index("strupper")] = bi_strupper;
    t[bi_index("strltrim")] = bi_strltrim;
    t[bi_index("strrtrim")] = bi_strrtrim;
    t[bi_index("strtrim")] = bi_strtrim;
    t[bi_index("stritrim")] = bi_stritrim;
    t[bi_index("strmatch")] = bi_strmatch;
    t[bi_index("strproper")] = bi_strproper;
    t[bi_index("strreverse")] = bi_strreverse;
    t[bi_index("subinstr")] = bi_subinstr;
    t[bi_index("subinword")] = bi_subinword;
    t[bi_index("strofreal")] = bi_strofreal;
    t[bi_index("_strtoreal")] = bi_ustrtoreal;
    t[bi_index("tokens")] = bi_tokens;
    t[bi_index("regexm")] = bi_regexm;
    t[bi_index("regexr")] = bi_regexr;
    t[bi_index("regexs")] = bi_regexs;
    t[bi_index("sprintf")] = bi_sprintf;
}

} // namespace korvu
