#include "kernel/regex/regex.h"

#include <regex.h>
#include <sys/types.h>

#include <cstring>

namespace korvu {

namespace {

// The most recently compiled expression is kept: loops use one pattern.
struct Compiled {
    std::string pattern;
    regex_t re;
    bool ok = false;
    ~Compiled() {
        if (ok) regfree(&re);
    }
};
Compiled cache;
char errbuf[256] = "";

constexpr int nsub = 10;
struct Match {
    bool valid = false;
    std::string text;
    regmatch_t m[nsub];
};
Match last;

const regex_t* compile(const char* pattern) {
    if (cache.ok && cache.pattern == pattern) return &cache.re;
    if (cache.ok) regfree(&cache.re);
    cache.ok = false;
    int rc = regcomp(&cache.re, pattern, REG_EXTENDED);
    if (rc) {
        regerror(rc, &cache.re, errbuf, sizeof errbuf);
        return nullptr;
    }
    cache.ok = true;
    cache.pattern = pattern;
    return &cache.re;
}

} // namespace

int regexm(const char* s, const char* re) {
    const regex_t* r = compile(re);
    if (!r) return -198;
    last.text = s;
    if (regexec(r, last.text.c_str(), nsub, last.m, 0) == 0) {
        last.valid = true;
        return 1;
    }
    last.valid = false;
    return 0;
}

int regexr(const char* s, const char* re, const char* repl, std::string& out, int count) {
    const regex_t* r = compile(re);
    if (!r) return 198;
    out.clear();
    const char* p = s;
    int done = 0;
    int flags = 0;
    regmatch_t m[1];
    while ((count < 0 || done < count) && regexec(r, p, 1, m, flags) == 0) {
        out.append(p, static_cast<size_t>(m[0].rm_so));
        out += repl;
        ++done;
        if (m[0].rm_eo == m[0].rm_so) { // an empty match: step one character
            if (!p[m[0].rm_eo]) {
                p += m[0].rm_eo;
                break;
            }
            out += p[m[0].rm_eo];
            p += m[0].rm_eo + 1;
        } else {
            p += m[0].rm_eo;
        }
        flags = REG_NOTBOL;
    }
    out += p;
    return 0;
}

int regexs(int n, std::string& out) {
    out.clear();
    if (!last.valid) return 198;
    if (n < 0 || n >= nsub || last.m[n].rm_so < 0) return 0;
    out.assign(last.text, static_cast<size_t>(last.m[n].rm_so),
               static_cast<size_t>(last.m[n].rm_eo - last.m[n].rm_so));
    return 0;
}

void regexclear() {
    last.valid = false;
}

const char* regexerror() {
    return errbuf;
}

} // namespace korvu
