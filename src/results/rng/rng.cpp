// The main generator (four 32-bit words: a congruential step, a shift
// register and two multiply-with-carry steps, summed) and the old one-word
// generator; the state text and the `set seed` commands.
#include "results/rng/rng.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

#include "kernel/errors/errors.h"
#include "kernel/loop/limits.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "output/spout.h"

namespace korvu {

UrnState urnstate = {URN_X0, URN_Y0, URN_Z0, URN_W0};
int32_t rndseed = 1001;

void seturnseed_i4(int32_t n) {
    uint32_t ax = n < 0 ? 0u - static_cast<uint32_t>(n) : static_cast<uint32_t>(n);
    urnstate = {ax, URN_Y0, URN_Z0, URN_W0};
    if (ax != URN_X0)
        for (int k = 0; k < 100; k++) (void)urnuni();
}

uint32_t urnseedcheck(const char* text) {
    uint32_t h = 0;
    for (int k = 0; k < 33; k++) h = static_cast<unsigned char>(text[k]) + h * 31u;
    return h % 20009u;
}

static int hexval(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

int seturnseed(const char* text) {
    if (std::strlen(text) != URN_TEXTLEN || text[0] != 'X') return 1;
    for (int k = 1; k < URN_TEXTLEN; k++)
        if (hexval(text[k]) < 0) return 1;
    uint32_t check = 0;
    for (int k = 33; k < 37; k++) check = check * 16 + hexval(text[k]);
    if (check != urnseedcheck(text)) return 1;
    uint32_t w[4];
    for (int j = 0; j < 4; j++) {
        uint32_t v = 0;
        for (int k = 0; k < 8; k++) v = v * 16 + hexval(text[1 + 8 * j + k]);
        w[j] = v;
    }
    urnstate = {w[0], w[1], w[2], w[3]};
    return 0;
}

void geturnseed(char* buf, size_t n) {
    char t[URN_TEXTLEN + 1];
    snprintf(t, sizeof t, "X%08x%08x%08x%08x", urnstate.x, urnstate.y, urnstate.z, urnstate.w);
    snprintf(t + 33, sizeof t - 33, "%04x", urnseedcheck(t));
    snprintf(buf, n, "%s", t);
}

void setrndseed0(int32_t n) {
    int64_t v = n;
    if (v == 0) v = 1001;
    if (v < 0) v = -v;
    v = 2 * (v / 2) + 1;
    rndseed = static_cast<int32_t>(v > 2147483647 ? 2147483647 : v);
}

double strandom() {
    uint32_t s = static_cast<uint32_t>(rndseed);
    const uint32_t m = 2147483647u;
    s = (((s * 3533u) & m) + ((s * 65536u) & m)) & m;
    rndseed = static_cast<int32_t>(s);
    return std::ldexp(static_cast<double>(s), -31);
}

void urnfill(double* out, long n) {
    for (long k = 0; k < n; k++) out[k] = urnuni();
}

// An integer below 2^31 - 1 in magnitude, as `set seed` and `set seed0` take.
static int seedint(const char* t, int32_t* out) {
    double v;
    if (!t[0] || tokisstr(t) || cnvstoz(t, &v) || v != std::trunc(v) ||
        !(std::fabs(v) < 2147483647.0))
        return experr(t, 1, "integer < 2^31-1", 0);
    *out = static_cast<int32_t>(v);
    return 0;
}

static int endseed() {
    char* t = gettok(prsenum);
    if (t[0]) return experr(t, 1, "nothing", 0);
    return 0;
}

int setseed() {
    char* t = gettok(prsenum);
    if (std::strlen(t) >= 246) return experr("a very long token", 0, "number", 0);
    char text[256];
    snprintf(text, sizeof text, "%s", t);
    if (int rc = endseed()) return rc;
    if (text[0] == 'X') {
        if (seturnseed(text)) {
            std::string t =
                "{p 0 4}\n'" + plainmarkup(text) + "' is an invalid set-seed code\n{p_end}\n";
            return errptl(198, t.c_str());
        }
        return 0;
    }
    int32_t n = 0;
    if (int rc = seedint(text, &n)) return rc;
    seturnseed_i4(n);
    return 0;
}

int setseed0() {
    char* t = gettok(prsenum);
    char text[256];
    snprintf(text, sizeof text, "%s", t);
    if (int rc = endseed()) return rc;
    int32_t n = 0;
    if (int rc = seedint(text, &n)) return rc;
    setrndseed0(n);
    return 0;
}

} // namespace korvu
