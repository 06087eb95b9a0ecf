#include "kernel/parse/gettok.h"

#include <cctype>
#include <cstring>
#include <string>

#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/loop/limits.h"
#include "kernel/loop/scratch.h"

namespace korvu {

char token[504];
char cmd[34];

void setcmdword(const char* word) {
    size_t n = strnlen(word, NAMELEN);
    std::memcpy(cmd, word, n);
    cmd[n] = 0;
}

char* gettokcmd() {
    gettok(prsestd);
    setcmdword(token);
    return token;
}

const char prsestd[] = " \\\"'`~:;,<>/?!@|#$%^&*()-+=[]{}";
const char prseopt[] = " \\\"'`~:;,<>/?!@|#$%^&*()=[]{}";
const char prsenum[] = " \\\"'`~:;,<>/?!@|#$%^&*()=[]{}";
const char prsedlgnum[] = " \\\"'`~:;,<>/?!|#$%^&*()=[]{}";
const char prsevar[] = " \\\"'`:;,<>/?!@|#$%^&*()-+=[]{}";
const char prsestd2[] = " \\\"'`:;,<>/!@|#$%^&()-+=[]{}";
const char prsestdnp[] = " \\\"'`~:;,<>/?!@|#$%^&*-+=[]{}";
const char prsestdot[] = " \\\"'`~:;,<>/?!@|#$%^&*()-+=[]{}.";
const char prsefls[] = " \"'`;,<>()=[]{}|";
const char prseclsvar[] = " \\\"'`:;,={}";
const char prseclsvnoc[] = " \\\"'`;,={}";

static char* tpos = nullptr;  // read position
static char* tlast = nullptr; // start of the last token
static uint8_t tpushed = 0, tregot = 0;
static char empty_text[1] = {0};

void settok(char* text) {
    tpos = text ? text : empty_text;
    tlast = nullptr;
    tpushed = tregot = 0;
}

static inline bool isdelim(char c, const char* delims) {
    return c && strchr(delims, c);
}

// Copies one token into dst (capacity cap characters, plus the terminator).
// Strings are marked by '"' in dst[0]. With keepstrings, strings met inside a
// word are kept whole with their quotes; with brackets, ( and [ are copied
// through to their match (brackets 1), or ( only (brackets 2).
static void scan(char* dst, int cap, const char* delims, bool keepstrings, int brackets) {
    char* p = tpos;
    while (*p == ' ') p++;
    tlast = p;
    int n = 0;
    auto put = [&](char c) {
        if (n >= cap) return false;
        dst[n++] = c;
        return true;
    };
    if (*p == 0) {
        dst[0] = 0;
        tpos = p;
        return;
    }
    if (p[0] == '`' && p[1] == '"') {
        put('"');
        p += 2;
        int depth = 1;
        while (*p) {
            bool open = p[0] == '`' && p[1] == '"', close = p[0] == '"' && p[1] == '\'';
            if (close && --depth == 0) {
                p += 2;
                break;
            }
            if (open) depth++;
            if (open || close) { // nested pairs are stored as they stand
                if (n + 2 > cap) break;
                put(p[0]), put(p[1]);
                p += 2;
                continue;
            }
            if (!put(*p)) break;
            p++;
        }
    } else if (*p == '"') {
        put('"');
        p++;
        while (*p && *p != '"') {
            if (!put(*p)) break;
            p++;
        }
        if (*p == '"' && n < cap) p++;
    } else if (!isdelim(*p, delims) || (brackets && (*p == '(' || (brackets == 1 && *p == '[')))) {
        while (*p) {
            // a bracketed part or a string inside the word is copied whole
            char* e = nullptr;
            int err;
            if (brackets && (*p == '(' || (brackets == 1 && *p == '[')))
                e = pbrackets(p, &err);
            else if (keepstrings && p != tlast && *p == '"')
                e = psimplequotes(p, &err);
            else if (keepstrings && p != tlast && p[0] == '`' && p[1] == '"')
                e = pcompoundquotes(p, &err);
            if (e) {
                bool full = false;
                while (p < e && !full) full = !put(*p++);
                if (full) break;
                continue;
            }
            if (isdelim(*p, delims)) break;
            if (!put(*p)) break;
            p++;
        }
    } else {
        put(*p);
        if (p[1] == '=' && strchr("<>=!~", *p)) put(*++p);
        p++;
    }
    dst[n] = 0;
    tpos = p;
}

char* gettok(const char* delims) {
    if (tpushed) {
        tpushed = 0;
        tregot = 1;
        return token;
    }
    tregot = 0;
    if (!tpos) tpos = empty_text;
    scan(token, TOKLEN, delims, false, 0);
    return token;
}

int gettoklong(char* dst, const char* delims, int brackets) {
    if (tpushed) {
        tpushed = 0;
        tregot = 1;
        strncpy(dst, token, TOKLEN);
        dst[TOKLEN] = 0;
        return 0;
    }
    tregot = 0;
    if (!tpos) tpos = empty_text;
    scan(dst, macrolen - 1, delims, true, brackets);
    return 0;
}

int gettokfn(char* dst, size_t n) {
    if (n) dst[0] = 0;
    // the name is read whole, up to FNLEN characters, so that one too long
    // for dst is refused rather than cut; `token` holds its first characters
    std::string name(FNLEN + 1, '\0');
    if (tpushed) {
        tpushed = 0;
        tregot = 1;
        name = token;
    } else {
        tregot = 0;
        if (!tpos) tpos = empty_text;
        scan(name.data(), static_cast<int>(FNLEN), prsefls, false, 0);
        name.resize(strlen(name.c_str()));
        copytext(token, sizeof token, name.c_str());
    }
    bool str = tokisstr(name.c_str());
    const char* text = name.c_str() + (str ? 1 : 0);
    if (str ? !text[0] : (!text[0] || tokis(text, ",") || tokis(text, ")"))) return 7197;
    if (name.size() >= FNLEN || strlen(text) >= n) return 7199;
    copytext(dst, n, text);
    return 0;
}

int gtokis(int c) {
    gettok(prsestd);
    if (c == 0 ? token[0] != 0 : (token[0] != c || token[1] != 0 || tokisstr(token))) return 198;
    return kvpollstd();
}

void pushtok(const char* text) {
    if (text != token) {
        strncpy(token, text, TOKLEN);
        token[TOKLEN] = 0;
    }
    tpushed = 1;
    tregot = 0;
}

void ungettok() {
    if (tregot) {
        tpushed = 1;
        tregot = 0;
    } else if (tlast) {
        tpos = tlast;
        tlast = nullptr;
    }
}

void stattok(TokPos* st) {
    st->pos = tpos;
    st->last = tlast;
}

void resettok(const TokPos* st) {
    tpos = st->pos;
    tlast = st->last;
    tpushed = tregot = 0;
}

void borrow_gettok(TokState* st) {
    st->pos = tpos;
    st->last = tlast;
    st->pushed = tpushed;
    st->regot = tregot;
    memcpy(st->token, token, sizeof token);
}

void return_gettok(const TokState* st) {
    tpos = st->pos;
    tlast = st->last;
    tpushed = st->pushed;
    tregot = st->regot;
    memcpy(token, st->token, sizeof token);
}

char* wheretok() {
    return tpos;
}
char* lwheretok() {
    return tlast;
}
int gettok_next_char() {
    return tpos ? static_cast<unsigned char>(*tpos) : 0;
}

char* peektok_chr() {
    char* p = tpos ? tpos : empty_text;
    while (*p == ' ') p++;
    return p;
}

void trimtok(int c) {
    if (!tpos) return;
    while (*tpos == c && c) tpos++;
}

void trimtokwhite() {
    if (!tpos) return;
    while (*tpos == ' ' || *tpos == '\t') tpos++;
}

char* pcompoundquotes(char* p, int* depthout) {
    int depth = 1;
    p += 2;
    while (*p) {
        if (p[0] == '`' && p[1] == '"') {
            depth++;
            p += 2;
        } else if (p[0] == '"' && p[1] == '\'') {
            p += 2;
            if (--depth == 0) break;
        } else {
            p++;
        }
    }
    if (depthout) *depthout = depth;
    return p;
}

char* psimplequotes(char* p, int* errout) {
    char* q = strchr(p + 1, '"');
    if (!q) {
        if (errout) *errout = 1;
        return p + strlen(p);
    }
    if (errout) *errout = 0;
    return q + 1;
}

char* pbrackets(char* p, int* errout) {
    int depth = 1;
    p++;
    while (*p) {
        if (p[0] == '`' && p[1] == '"') {
            int d;
            p = pcompoundquotes(p, &d);
            if (d) break;
            continue;
        }
        if (*p == '"') {
            int e;
            p = psimplequotes(p, &e);
            if (e) break;
            continue;
        }
        if (*p == '(' || *p == '[')
            depth++;
        else if (*p == ')' || *p == ']') {
            if (--depth == 0) {
                if (errout) *errout = 0;
                return p + 1;
            }
        }
        p++;
    }
    if (errout) *errout = 1;
    return p + strlen(p);
}

int parse_quoted_string(char* text, char** start, char** end, char** next) {
    bool fromtok = text == nullptr;
    char* p = fromtok ? tlast : text;
    *start = *end = *next = nullptr;
    if (!p) return 1;
    while (*p == ' ') p++;
    if (p[0] == '`' && p[1] == '"') {
        int depth;
        char* q = pcompoundquotes(p, &depth);
        if (depth) return 1;
        *start = p + 2;
        *end = q - 2;
        *next = q;
    } else if (*p == '"') {
        int err;
        char* q = psimplequotes(p, &err);
        if (err) return 1;
        *start = p + 1;
        *end = q - 1;
        *next = q;
    } else {
        return 1;
    }
    if (fromtok) {
        tpos = *next;
        tlast = nullptr;
        tpushed = tregot = 0;
    }
    return 0;
}

int cmdcmp(const char* word, const char* full, int minlen) {
    if (word[0] != full[0]) return 0;
    size_t wl = strlen(word), fl = strlen(full);
    if (wl > fl || static_cast<int>(wl) < minlen) return 0;
    return memcmp(word, full, wl) == 0;
}

int cmdcmp_lc(const char* word, const char* full, int minlen) {
    size_t wl = strlen(word), fl = strlen(full);
    if (tolower(static_cast<unsigned char>(word[0])) !=
        tolower(static_cast<unsigned char>(full[0])))
        return 0;
    if (wl > fl || static_cast<int>(wl) < minlen) return 0;
    for (size_t i = 0; i < wl; i++)
        if (tolower(static_cast<unsigned char>(word[i])) !=
            tolower(static_cast<unsigned char>(full[i])))
            return 0;
    return 1;
}

uint32_t cmdhash(const char* text) {
    uint32_t h = 0;
    for (const unsigned char* p = reinterpret_cast<const unsigned char*>(text); *p; p++)
        h = h * 31 + *p;
    return h % 1997333137u;
}

int endofline() {
    gettok(prsestd);
    return token[0] ? error(198) : 0;
}

} // namespace korvu
