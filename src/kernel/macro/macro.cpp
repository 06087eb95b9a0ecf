// The macro store on the dictionary, temporary names, and the clean-up of a
// frame's locals and temporaries.
#include "kernel/macro/macro.h"
#include "kernel/loop/scratch.h"

#include <unistd.h>

#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/macro/macro_deps.h"
#include "output/spout.h"

namespace korvu {

int32_t typelmac = DM_LMAC0;
int32_t tmpvctr = 0;
int32_t tmpfctr = 1;
MacHooks mac_hooks = {};
int (*mac_fcn_hooks[MXF_N])(const char* word, char* dst) = {};

// --- names ------------------------------------------------------------------

// The dictionary key of a macro name: before version 7 only 8 characters
// count. Null when the name cannot be in the store.
static const char* keyof(const char* name, char* buf) {
    size_t n = std::strlen(name);
    if (vernum < 700 && n > 8) {
        std::memcpy(buf, name, 8);
        buf[8] = 0;
        return buf;
    }
    if (n == 0 || n > static_cast<size_t>(dm_namelen)) return nullptr;
    return name;
}

static inline int typeof_name(const char* name) {
    return name[0] == '_' ? typelmac : DM_GMAC;
}

int chklmname(const char* name) {
    if (std::strlen(name) <= static_cast<size_t>(dm_namelen - 1)) return 0;
    return errorf(198, "local macro name %s too long\n", name);
}

int chkmacname(const char* name) {
    size_t n = std::strlen(name);
    if (n == 0 || n > static_cast<size_t>(dm_namelen)) return 198;
    unsigned char c = static_cast<unsigned char>(name[0]);
    if (!(std::isalpha(c) || c == '_')) return 198;
    static const char bad[] = "\\!@#$%^&*()-+=[]{}:;,'\"~<>?/|.` ";
    for (const char* p = name; *p; ++p)
        if (std::strchr(bad, *p) || static_cast<unsigned char>(*p) < 32) return 198;
    return 0;
}

// --- finding ----------------------------------------------------------------

char* macfind(const char* name, int* lenout) {
    char buf[16];
    const char* key = keyof(name, buf);
    if (!key) return nullptr;
    return static_cast<char*>(dmfind(key, typeof_name(name), lenout));
}

char* macptr(const char* name) {
    return macfind(name, nullptr);
}

char* macload(const char* value, int len, char* dst) {
    if (!value) {
        dst[0] = 0;
        return dst;
    }
    std::memcpy(dst, value, static_cast<size_t>(len > 0 ? len : 1));
    if (len <= 0) dst[0] = 0;
    return dst;
}

char* macuse(const char* name, char* dst) {
    int len = 0;
    char* v = macfind(name, &len);
    return macload(v, len, dst);
}

char* macuseshort(const char* name, char* dst, size_t n) {
    if (!n) return dst;
    char* v = macptr(name);
    if (!v) {
        dst[0] = 0;
        return dst;
    }
    size_t len = std::strlen(v);
    if (len > n - 1) len = n - 1;
    std::memcpy(dst, v, len);
    dst[len] = 0;
    return dst;
}

// --- saving -----------------------------------------------------------------

static size_t cutlen(const char* text, size_t limit) {
    size_t n = std::strlen(text);
    return n > limit ? limit : n;
}

static int save_in(const char* name, int type, const char* text, size_t n, bool replace) {
    char buf[16];
    const char* key = keyof(name, buf);
    if (!key) return 198;
    void* v = replace ? dmreadd(key, type, static_cast<int>(n + 1), n + 1)
                      : dmadd(key, type, static_cast<int>(n + 1), n + 1);
    if (!v) return 950;
    std::memcpy(v, text, n);
    static_cast<char*>(v)[n] = 0;
    return 0;
}

int macsave(const char* name, const char* text) {
    if (!text || !text[0]) return 0;
    return save_in(name, typeof_name(name), text, cutlen(text, macrolen - 1), false);
}

int macsave0(const char* name) {
    return save_in(name, typeof_name(name), "", 0, false);
}

static int resave_in(const char* name, int type, const char* text) {
    if (!text || !text[0]) {
        char buf[16];
        const char* key = keyof(name, buf);
        if (key) dmrm(dmfind0(key, type));
        return 0;
    }
    return save_in(name, type, text, cutlen(text, macrolen - 1), true);
}

int macresave(const char* name, const char* text) {
    return resave_in(name, typeof_name(name), text);
}

int macresave_type(const char* name, int type, const char* text) {
    return resave_in(name, type, text);
}

int macresaveq(const char* name, const char* text) {
    size_t n = cutlen(text, macrolen > 5 ? macrolen - 5 : 0);
    std::string q;
    q.reserve(n + 4);
    q += "`\"";
    q.append(text, n);
    q += "\"'";
    return save_in(name, typeof_name(name), q.c_str(), q.size(), true);
}

int macresave_c(const char* name, const char* text) {
    if (typelmac <= DM_LMAC0) return 198;
    int type = name[0] == '_' ? typelmac - 1 : DM_GMAC;
    return resave_in(name, type, text);
}

void macerase(const char* name) {
    char buf[16];
    const char* key = keyof(name, buf);
    if (key) dmrm(dmfind0(key, typeof_name(name)));
}

void* macnext(void* item, char* nameout) {
    if (!item) {
        void* v = dmnext(nullptr, nameout, DM_GMAC, nullptr);
        return v ? v : dmnext(nullptr, nameout, typelmac, nullptr);
    }
    int type = dmtype(item);
    void* v = dmnext(item, nameout, type, nullptr);
    if (!v && type == DM_GMAC) v = dmnext(nullptr, nameout, typelmac, nullptr);
    return v;
}

// Text of a number as macros hold it: integers in full, others to 16 digits.
static void numtext(double x, char* out) {
    if (std::fabs(x) < 1e15 && x == std::floor(x))
        std::snprintf(out, 40, "%.0f", x);
    else
        std::snprintf(out, 40, "%.16g", x);
}

// The increment proper; quiet: an absent or non-numeric macro gives 111 or 109
// without a message.
int macincr_quiet(const char* name, const char* op, char* out, int mode) {
    char* v = macptr(name);
    if (!v) return 111;
    char num[40];
    size_t n = cutlen(v, 39);
    std::memcpy(num, v, n);
    num[n] = 0;
    char* end;
    const char* s = num;
    while (*s == ' ') ++s;
    double x = std::strtod(s, &end);
    while (*end == ' ') ++end;
    if (end == s || *end || std::isnan(x)) return 109;
    char oldtext[40], newtext[40];
    numtext(x, oldtext);
    numtext(op[0] == '-' ? x - 1 : x + 1, newtext);
    int rc = macresave(name, newtext);
    if (rc) return rc;
    if (out && mode == 1) copytext(out, sizeof newtext, newtext);
    if (out && mode == -1) copytext(out, sizeof oldtext, oldtext);
    return 0;
}

int macincr(const char* name, const char* op, char* out, int mode) {
    int rc = macincr_quiet(name, op, out, mode);
    if (rc == 111) return macnotfound(name);
    if (rc == 109) return error(109);
    return rc;
}

// --- temporary names --------------------------------------------------------

static const char b36[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
static const char b34[] = "0123456789abcdefghijklmnopqrstuvwx";

static void digits(char* dst, uint32_t v, int base, const char* set) {
    for (int i = 5; i >= 0; --i) {
        dst[i] = set[v % base];
        v /= base;
    }
    dst[6] = 0;
}

char* mktmpvn(char* dst) {
    dst[0] = dst[1] = '_';
    digits(dst + 2, static_cast<uint32_t>(tmpvctr), 36, b36);
    tmpvctr = tmpvctr >= 2146483647 - 1 ? 0 : tmpvctr + 1;
    return dst;
}

int gettmpfn(char* dst, size_t size, int letter, int32_t n) {
    int k = std::snprintf(dst, size, "%s/S%c%05d.", tmpdir && *tmpdir ? tmpdir : "/tmp", letter,
                          unix_pid);
    if (k < 0 || static_cast<size_t>(k) + 7 > size) {
        if (size) dst[0] = 0;
        return 914;
    }
    digits(dst + k, static_cast<uint32_t>(n), 34, b34);
    return 0;
}

static inline int32_t nextfctr(int32_t c) {
    return c >= 1544000000 ? 1 : c + 1;
}

int mktmpfn(char* dst, size_t size) {
    if (int rc = gettmpfn(dst, size, 't', tmpfctr)) return rc;
    tmpfctr = nextfctr(tmpfctr);
    return 0;
}

bool istmpvn(const char* name, int32_t since) {
    if (name[0] != '_' || name[1] != '_' || std::strlen(name) != 8) return false;
    int64_t v = 0;
    for (int i = 2; i < 8; ++i) {
        const char* d = std::strchr(b36, name[i]);
        if (!d || !*d) return false;
        v = v * 36 + (d - b36);
    }
    if (since == tmpvctr) return false;
    if (since < tmpvctr) return v >= since && v < tmpvctr;
    return v >= since || v < tmpvctr; // the counter wrapped
}

int rmtmpfn(int32_t since) {
    char fn[FNLEN];
    for (int32_t c = since; c != tmpfctr; c = nextfctr(c))
        if (!gettmpfn(fn, sizeof fn, 't', c)) ::unlink(fn);
    return 0;
}

int rmtmpvn(int32_t since) {
    if (since == tmpvctr || !mac_hooks.droptmpvars) return 0;
    return mac_hooks.droptmpvars(since);
}

int rmtmpdyn(int32_t since, int cls) {
    dmzap(typelmac);
    int rc = 0;
    if (mac_hooks.endreturn) {
        rc = mac_hooks.endreturn(cls);
    } else if (typelmac + 320 <= DM_RETMATEND) {
        for (int k = 0; k < 5; ++k) {
            int from = typelmac + 64 * (k + 1);
            if (cls == 1) {
                dmzap(DM_RSCALAR + k);
                dmretypeall(from, DM_RSCALAR + k);
            }
            dmzap(from);
        }
    }
    if (since != tmpvctr) {
        static const int types[] = {18, 9, 11, 10, 15, 1};
        for (int t : types) {
            void* v = dmnext(nullptr, nullptr, t, nullptr);
            while (v) {
                void* next = dmnext(v, nullptr, t, nullptr);
                if (istmpvn(dmname(v), since)) dmrm(v);
                v = next;
            }
        }
    }
    return rc;
}

int mac_frame_end(int32_t tmpv_since, int32_t tmpf_since, int cls) {
    rmtmpfn(tmpf_since);
    int rc = rmtmpvn(tmpv_since);
    int rc2 = rmtmpdyn(tmpv_since, cls);
    return rc ? rc : rc2;
}

} // namespace korvu
