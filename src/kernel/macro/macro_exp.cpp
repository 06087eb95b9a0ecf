// Macro expansion: `macexp` rewrites a line in place, replacing `$name`,
// `${...}` and the backquote forms by their text.
#include <cctype>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/macro/macro.h"
#include "kernel/macro/macro_deps.h"
#include "kernel/macro/macro_internal.h"
#include "output/spout.h"

namespace korvu {

namespace {

constexpr size_t npos = static_cast<size_t>(-1);
constexpr int max_repeat = 20;

struct Line {
    char* s;
    size_t cap; // the line must stay below cap bytes with its NUL
    size_t len;
    bool any; // something was substituted
};

inline bool ismacch(char c) {
    return c == '$' || c == '`';
}
inline bool isnamech(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}
inline bool isnamestart(char c) {
    return std::isalpha(static_cast<unsigned char>(c)) || c == '_';
}
// A reference begins here: a dollar, or a backquote not opening a compound string.
inline bool isref(const char* p) {
    return p[0] == '$' || (p[0] == '`' && p[1] != '"');
}

int splice(Line& L, size_t pos, size_t oldlen, const char* text, size_t n) {
    size_t newlen = L.len - oldlen + n;
    if (newlen >= L.cap) return 920;
    std::memmove(L.s + pos + n, L.s + pos + oldlen, L.len - pos - oldlen + 1);
    if (n) std::memcpy(L.s + pos, text, n);
    L.len = newlen;
    L.any = true;
    return 0;
}

void remove1(Line& L, size_t pos) {
    std::memmove(L.s + pos, L.s + pos + 1, L.len - pos);
    --L.len;
}

int expand_at(Line& L, size_t pos, int depth, size_t* cont, bool* stepped);

// Expands the references standing between `from` and the end that `fend`
// finds again after each one. Returns 0 or 920; *end gets the final end, npos
// when it was lost.
template <class F> int expand_inner(Line& L, size_t from, int depth, F fend, size_t* end) {
    size_t q = from;
    for (;;) {
        size_t e = fend();
        *end = e;
        if (e == npos || q >= e) return 0;
        if (isref(L.s + q)) {
            size_t cont;
            bool stepped;
            int rc = expand_at(L, q, depth + 1, &cont, &stepped);
            if (rc) return rc;
            if (stepped)
                q = cont;
            else if (ismacch(L.s[q]))
                ++q;
            continue;
        }
        ++q;
    }
}

// The matching single quote of the backquote at pos, backquotes nesting.
size_t match_quote(const Line& L, size_t pos) {
    int d = 0;
    for (size_t k = pos; L.s[k]; ++k) {
        if (L.s[k] == '`')
            ++d;
        else if (L.s[k] == '\'' && --d == 0)
            return k;
    }
    return npos;
}

size_t match_brace(const Line& L, size_t pos) {
    int d = 0;
    for (size_t k = pos; L.s[k]; ++k) {
        if (L.s[k] == '{')
            ++d;
        else if (L.s[k] == '}' && --d == 0)
            return k;
    }
    return npos;
}

} // namespace

int mac_notyet(const char* what) {
    return errorf(199, "%s not available yet\n", what);
}

namespace {

int notyet(const char* what) {
    return mac_notyet(what);
}

// Substitutes a global's value (or the built-in S_DATE and S_TIME).
int put_global(Line& L, size_t pos, size_t oldlen, const char* name) {
    if (!std::strcmp(name, "S_DATE") || !std::strcmp(name, "S_TIME")) {
        char buf[64];
        time_t t = time(nullptr);
        struct tm tmv;
        localtime_r(&t, &tmv);
        strftime(buf, sizeof buf, name[2] == 'D' ? "%e %b %Y" : "%H:%M:%S", &tmv);
        const char* b = buf[0] == ' ' ? buf + 1 : buf;
        return splice(L, pos, oldlen, b, std::strlen(b));
    }
    int len = 0;
    const char* v = macfind(name, &len);
    return splice(L, pos, oldlen, v ? v : "", v ? std::strlen(v) : 0);
}

int dollar(Line& L, size_t pos, int depth, bool* did) {
    size_t p = pos + 1;
    if (L.s[p] == '{') {
        size_t e;
        int rc = expand_inner(
            L, p + 1, depth, [&] { return match_brace(L, p); }, &e);
        if (rc) return rc;
        if (e == npos || e == p + 1) return 0;
        size_t n = e - p - 1;
        char name[dm_namelen + 1];
        *did = true;
        if (n > static_cast<size_t>(dm_namelen)) return splice(L, pos, e + 1 - pos, "", 0);
        std::memcpy(name, L.s + p + 1, n);
        name[n] = 0;
        return put_global(L, pos, e + 1 - pos, name);
    }
    if (isref(L.s + p)) { // `$`x'' and `$$x': the inner one first
        size_t cont;
        bool stepped;
        int rc = expand_at(L, p, depth + 1, &cont, &stepped);
        if (rc) return rc;
    }
    if (!isnamestart(L.s[p])) return 0;
    size_t limit = vernum < 700 ? 8 : dm_namelen, n = 0;
    while (n < limit && isnamech(L.s[p + n])) ++n;
    char name[dm_namelen + 1];
    std::memcpy(name, L.s + p, n);
    name[n] = 0;
    *did = true;
    return put_global(L, pos, n + 1, name);
}

// `name(arg)' forms.
int function_form(const std::string& fname, std::string arg, int depth, std::string& out,
                  bool* stepover) {
    size_t a = arg.find_first_not_of(' '), b = arg.find_last_not_of(' ');
    arg = a == std::string::npos ? std::string() : arg.substr(a, b - a + 1);
    if (fname.size() > 31) return 0;
    if (fname == "macval") {
        if (depth != 1) return 0;
        std::string key = "_" + arg;
        const char* v =
            key.size() <= static_cast<size_t>(dm_namelen) ? macptr(key.c_str()) : nullptr;
        if (v) out = v;
        *stepover = true;
        return 0;
    }
    std::vector<char> buf(static_cast<size_t>(macrolen) + 1);
    buf[0] = 0;
    int rc = 0;
    if (fname == "ferest") {
        rc = mac_hooks.ferest ? mac_hooks.ferest(buf.data(), buf.size()) : notyet("ferest()");
    } else if (fname == "gdi") {
        rc = mac_hooks.gdivalue ? mac_hooks.gdivalue(arg.c_str(), buf.data(), buf.size())
                                : notyet("gdi()");
    } else if (fname == "c" || fname == "r" || fname == "return" || fname == "e" || fname == "s") {
        int which = fname == "return" ? 'R' : fname[0];
        if (mac_hooks.resultvalue)
            rc = mac_hooks.resultvalue(which, arg.c_str(), buf.data(), buf.size());
        else {
            std::string what = fname + "()";
            rc = notyet(what.c_str());
        }
    } else if (fname[0] == '.') {
        std::string ref = fname + "(" + arg + ")";
        rc = mac_hooks.clsvalue ? mac_hooks.clsvalue(ref.c_str(), buf.data(), buf.size())
                                : notyet("class references");
    } else {
        return 0;
    }
    if (!rc) out = buf.data();
    return 0;
}

// The extended forms: text may hold printable characters but no backquote,
// single quote or dollar.
bool extended_ok(const char* p, size_t n) {
    for (size_t i = 0; i < n; ++i) {
        unsigned char c = static_cast<unsigned char>(p[i]);
        if (c == '`' || c == '\'' || c == '$' || (c < 32 && c != '\t') || c == 127) return false;
    }
    return true;
}

int backquote(Line& L, size_t pos, int depth, bool* did, bool* stepover, size_t* sublen) {
    if (L.s[pos + 1] == '"') return 0; // a compound string opens
    size_t e;
    int rc = expand_inner(
        L, pos + 1, depth, [&] { return match_quote(L, pos); }, &e);
    if (rc) return rc;
    if (e == npos) return 0;
    std::string body(L.s + pos + 1, e - pos - 1);
    std::string out;
    char first = body.empty() ? 0 : body[0];
    if (first == '.' || first == '=' || first == ':' || first == '+' || first == '-') {
        if (!extended_ok(body.data(), body.size())) return 0;
        std::vector<char> buf(static_cast<size_t>(macrolen) + 1);
        buf[0] = 0;
        if (first == '.') {
            rc = mac_hooks.clsvalue ? mac_hooks.clsvalue(body.c_str(), buf.data(), buf.size())
                                    : notyet("class references");
            if (!rc) out = buf.data();
        } else if (first == '=') {
            if (!exp_xpand(body.c_str() + 1, buf.data())) out = buf.data();
        } else if (first == ':') {
            if (!extended_xpand(body.c_str() + 1, buf.data())) out = buf.data();
        } else if (body.size() > 2 && body[1] == first) {
            std::string name = "_" + body.substr(2);
            char v[40];
            const char op[2] = {first, 0};
            if (name.size() <= static_cast<size_t>(dm_namelen) &&
                !macincr_quiet(name.c_str(), op, v, 1))
                out = v;
        }
    } else {
        size_t n = body.size();
        size_t paren = body.find('('), brack = body.find('[');
        if (n >= 2 && (body.compare(n - 2, 2, "++") == 0 || body.compare(n - 2, 2, "--") == 0)) {
            std::string name = "_" + body.substr(0, n - 2);
            char v[40];
            const char op[2] = {body[n - 1], 0};
            if (name.size() <= static_cast<size_t>(dm_namelen) &&
                !macincr_quiet(name.c_str(), op, v, -1))
                out = v;
        } else if (paren != std::string::npos && paren > 0 && body[n - 1] == ')' &&
                   (brack == std::string::npos || brack > paren)) {
            function_form(body.substr(0, paren), body.substr(paren + 1, n - paren - 2), depth, out,
                          stepover);
        } else if (brack != std::string::npos && brack > 0 && body[n - 1] == ']') {
            std::vector<char> buf(static_cast<size_t>(macrolen) + 1);
            buf[0] = 0;
            std::string var = body.substr(0, brack), ch = body.substr(brack + 1, n - brack - 2);
            rc = mac_hooks.charvalue
                     ? mac_hooks.charvalue(var.c_str(), ch.c_str(), buf.data(), buf.size())
                     : notyet("characteristics");
            if (!rc) out = buf.data();
        } else if (body == "*") {
            char key[16];
            for (int i = 1;; ++i) {
                std::snprintf(key, sizeof key, "_%d", i);
                const char* v = macptr(key);
                if (!v) break;
                if (i > 1) out += ' ';
                out += v;
                if (out.size() >= static_cast<size_t>(conslen)) return 920;
            }
        } else {
            std::string name = "_" + body;
            if (name.size() <= static_cast<size_t>(dm_namelen) || vernum < 700) {
                const char* v = macptr(name.c_str());
                if (v) out = v;
            }
        }
    }
    *did = true;
    *sublen = out.size();
    return splice(L, pos, e + 1 - pos, out.data(), out.size());
}

int expand_at(Line& L, size_t pos, int depth, size_t* cont, bool* stepped) {
    *cont = pos;
    *stepped = false;
    for (int count = 0; ismacch(L.s[pos]);) {
        bool did = false, stepover = false;
        size_t sublen = 0;
        int rc = L.s[pos] == '$' ? dollar(L, pos, depth, &did)
                                 : backquote(L, pos, depth, &did, &stepover, &sublen);
        if (rc) return rc;
        if (!did) break;
        if (stepover) {
            *cont = pos + sublen;
            *stepped = true;
            return 0;
        }
        if (ismacch(L.s[pos]) && ++count > max_repeat) return 920;
    }
    return 0;
}

// The pass of old versions: backquotes removed and %name replaced by a local.
int oldpass(Line& L) {
    for (size_t i = 0; L.s[i];) {
        if (L.s[i] == '`') {
            remove1(L, i);
        } else if (L.s[i] == '%' && isnamestart(L.s[i + 1])) {
            size_t n = 0;
            while (n < 7 && isnamech(L.s[i + 1 + n])) ++n;
            std::string name = "_" + std::string(L.s + i + 1, n);
            const char* v = macptr(name.c_str());
            size_t vl = v ? std::strlen(v) : 0;
            int rc = splice(L, i, n + 1, v ? v : "", vl);
            if (rc) return rc;
            i += vl;
        } else {
            ++i;
        }
    }
    return 0;
}

} // namespace

int macexp_text(char* line, size_t cap) {
    Line L{line, cap, std::strlen(line), false};
    if (std::strpbrk(line, "$`\\") || vernum < 320) {
        for (size_t i = 0; L.s[i];) {
            char c = L.s[i];
            if (c == '\\') {
                char d = L.s[i + 1];
                if (ismacch(d)) {
                    remove1(L, i);
                    ++i;
                } else if (d == '\\' && (vernum <= 899 || ismacch(L.s[i + 2]))) {
                    remove1(L, i);
                    ++i;
                } else {
                    ++i;
                }
                continue;
            }
            if (ismacch(c)) {
                size_t cont;
                bool stepped;
                int rc = expand_at(L, i, 1, &cont, &stepped);
                if (rc) return rc;
                if (stepped)
                    i = cont;
                else if (ismacch(L.s[i]))
                    ++i;
                continue;
            }
            ++i;
        }
        if (vernum < 320 && !L.any) return oldpass(L);
    }
    return 0;
}

int macexp() {
    if (!procflg) return 0;
    int rc = macexp_text(console, static_cast<size_t>(conslen));
    settok(console);
    if (rc) return error(rc);
    return 0;
}

int exp_xpand(const char* text, char* dst) {
    dst[0] = 0;
    if (!mac_hooks.expvalue) return notyet("expressions");
    int rc = mac_hooks.expvalue(text, dst, static_cast<size_t>(macrolen));
    if (rc) dst[0] = 0;
    return rc;
}

} // namespace korvu
