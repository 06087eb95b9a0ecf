// The lexer of the matrix language: one token at a time from the current
// line, with further lines read only where the grammar asks for them.
#include "lumo/front/lexer.h"

#include <cctype>
#include <cstdlib>
#include <cstring>

#include "data/area/missing.h"
#include "kernel/loop/brk.h"
#include "lumo/front/cc.h"
#include "lumo/lumo.h"

namespace korvu {

int m_token = 10;
std::string m_tokstr;
double m_toknum = 0;
MLexState m_lex;
static bool peeking = false; // m_nexttok looks ahead without reading lines

// Words and multi-character operators, `colvector` first.
const MTokWord m_toktab[] = {
    {"colvector", 222},    {"double", 208},      {"quad", 249},      {"else", 204},
    {"external", 220},     {"float", 210},       {"for", 200},       {"function", 205},
    {"global", 214},       {"if", 203},          {"int", 211},       {"short", 250},
    {"long", 209},         {"boolean", 251},     {"matrix", 218},    {"array", 252},
    {"transmorphic", 202}, {"polymorphic", 241}, {"real", 223},      {"return", 206},
    {"rowvector", 221},    {"scalar", 219},      {"string", 212},    {"vector", 201},
    {"void", 213},         {"_void", 207},       {"while", 215},     {"break", 224},
    {"continue", 225},     {"do", 226},          {"goto", 227},      {"complex", 228},
    {"numeric", 229},      {"pointer", 239},     {"end", 230},       {"static", 231},
    {"byte", 232},         {"local", 233},       {"struct", 234},    {"aggregate", 235},
    {"switch", 236},       {"case", 237},        {"default", 260},   {"class", 238},
    {"NULL", 240},         {"VOID", 242},        {"REALVOID", 243},  {"COMPLEXVOID", 244},
    {"STRINGVOID", 245},   {"POINTERVOID", 246}, {"version", 247},   {"pragma", 248},
    {"throw", 253},        {"catch", 254},       {"public", 255},    {"private", 256},
    {"protected", 257},    {"friend", 258},      {"const", 259},     {"new", 261},
    {"super", 262},        {"this", 263},        {"try", 264},       {"delete", 265},
    {"enum", 266},         {"inline", 267},      {"namespace", 268}, {"operator", 269},
    {"signed", 270},       {"unsigned", 271},    {"template", 273},  {"typedef", 274},
    {"eltypedef", 232},    {"orgtypedef", 282},  {"typename", 279},  {"union", 275},
    {"volatile", 276},     {"explicit", 277},    {"export", 278},    {"using", 280},
    {"virtual", 281},      {"&&", 38},           {"||", 124},        {":=", 140},
    {"==", 133},           {":==", 141},         {":!", 146},        {":~", 146},
    {"!=", 134},           {"~=", 134},          {":!=", 147},       {":~=", 147},
    {":>", 142},           {":>=", 143},         {">=", 136},        {":<", 144},
    {":<=", 145},          {"<=", 135},          {"++", 137},        {"--", 138},
    {":/", 148},           {":*", 149},          {":+", 150},        {":-", 151},
    {"/*", 216},           {"*/", 217},          {":|", 152},        {":&", 153},
    {":^", 154},           {"..", 156},          {"::", 157},        {"[|", 158},
    {"|]", 159},           {"->", 161},
};
const int m_ntoktab = sizeof m_toktab / sizeof m_toktab[0];

static int findword(const char* w) {
    for (int i = 0; i < m_ntoktab; i++)
        if (!strcmp(m_toktab[i].key, w)) return m_toktab[i].tok;
    return 0;
}

const char* m_tokword(int tok) {
    for (int i = 0; i < m_ntoktab; i++)
        if (m_toktab[i].tok == tok) return m_toktab[i].key;
    return nullptr;
}

void m_token0(const char* line) {
    peeking = false;
    m_lex.line = line;
    m_lex.pos = 0;
    m_lex.prev = 0;
    m_lex.lineno = 1;
    m_token = 10;
    m_tokstr.clear();
}

void m_token0unget() {
    m_lex.pos = m_lex.tokstart;
}

// Reads the next line into the lexer; 0, or 1 when none can be had.
static int nextline() {
    if (!m_mayreadcons || !m_linesource) {
        if (lumo_cmdtype == 3) cc_fail("<istmt> incomplete\n");
        return 1;
    }
    std::string l;
    if (m_linesource(l)) return 2;
    // `end` alone while reading further lines aborts the compilation
    size_t a = l.find_first_not_of(" \t");
    size_t b = l.find_last_not_of(" \t\r");
    if (m_abort_on_end && a != std::string::npos && l.compare(a, b - a + 1, "end") == 0) {
        m_lex.sawend = 1;
        cc_fail("unexpected end of line\n");
    }
    m_lex.line = l;
    m_lex.pos = 0;
    m_lex.lineno++;
    return 0;
}

static bool isnamechar(int c) {
    return isalnum(c) || c == '_';
}

void m_gettok() {
    const std::string& s = m_lex.line;
    size_t& p = m_lex.pos;
    for (;;) {
        while (p < s.size() && (s[p] == ' ' || s[p] == '\t' || s[p] == '\r')) p++;
        if (p + 1 < s.size() && s[p] == '/' && s[p + 1] == '/') {
            p = s.size();
            continue;
        }
        if (p + 1 < s.size() && s[p] == '/' && s[p + 1] == '*') {
            // a comment, across lines where further lines may be read
            size_t e = s.find("*/", p + 2);
            if (e == std::string::npos && peeking) {
                p = s.size(); // a look ahead sees the end of the line
                continue;
            }
            while (e == std::string::npos) {
                if (nextline()) cc_fail("unexpected end of line\n");
                e = s.find("*/");
            }
            p = e + 2;
            continue;
        }
        break;
    }
    m_lex.tokstart = p;
    m_tokstr.clear();
    const int prev = m_lex.prev;
    auto done = [&](int tok) {
        m_token = tok;
        m_lex.prev = tok;
    };
    if (p >= s.size()) return done(10);
    const char c = s[p];
    const char c1 = p + 1 < s.size() ? s[p + 1] : 0;
    if (isdigit(static_cast<unsigned char>(c)) ||
        (c == '.' && isdigit(static_cast<unsigned char>(c1)))) {
        size_t q = p;
        while (q < s.size() && isdigit(static_cast<unsigned char>(s[q]))) q++;
        if (q < s.size() && s[q] == '.' && !(q + 1 < s.size() && s[q + 1] == '.')) {
            q++;
            while (q < s.size() && isdigit(static_cast<unsigned char>(s[q]))) q++;
        }
        if (q < s.size() && (s[q] == 'e' || s[q] == 'E')) {
            size_t r = q + 1;
            if (r < s.size() && (s[r] == '+' || s[r] == '-')) r++;
            if (r < s.size() && isdigit(static_cast<unsigned char>(s[r]))) {
                while (r < s.size() && isdigit(static_cast<unsigned char>(s[r]))) r++;
                q = r;
            }
        }
        m_tokstr.assign(s, p, q - p);
        m_toknum = strtod(m_tokstr.c_str(), nullptr);
        p = q;
        if (p < s.size() && s[p] == 'i' && !(p + 1 < s.size() && isnamechar(s[p + 1]))) {
            p++;
            return done(155);
        }
        return done(130);
    }
    if (c == '.' && c1 != '.') {
        if (prev == ')' || prev == ']' || prev == 131) {
            p++;
            return done(160);
        }
        // a lone . is missing; .a to .z the extended missing values
        p++;
        m_toknum = misval;
        if (p < s.size() && s[p] >= 'a' && s[p] <= 'z' &&
            !(p + 1 < s.size() && isnamechar(s[p + 1]))) {
            m_toknum = mkmissing(s[p] - 'a' + 1);
            p++;
        }
        m_tokstr = ".";
        return done(130);
    }
    if (isalpha(static_cast<unsigned char>(c)) || c == '_') {
        size_t q = p;
        while (q < s.size() && isnamechar(s[q])) q++;
        m_tokstr.assign(s, p, q - p);
        p = q;
        if (m_tokstr.size() <= 16)
            if (int t = findword(m_tokstr.c_str())) return done(t);
        return done(131);
    }
    if (c == '"') {
        size_t q = p + 1;
        while (q < s.size() && s[q] != '"') q++;
        if (q >= s.size()) cc_fail("unbalanced quotes\n");
        m_tokstr.assign(s, p + 1, q - p - 1);
        p = q + 1;
        return done(132);
    }
    // operators, longest first
    for (int len = 3; len >= 2; len--) {
        if (p + len > s.size()) continue;
        char w[4] = {0, 0, 0, 0};
        memcpy(w, s.data() + p, len);
        if (int t = findword(w)) {
            if (t == 216 || t == 217) continue; // comment marks are not tokens here
            m_tokstr = w;
            p += len;
            return done(t);
        }
    }
    p++;
    m_tokstr.assign(1, c);
    if (static_cast<unsigned char>(c) < 32 || static_cast<unsigned char>(c) > 126) return done(129);
    return done(static_cast<unsigned char>(c));
}

void m_savelex(MLexSave* sv) {
    sv->lex = m_lex;
    sv->token = m_token;
    sv->tokstr = m_tokstr;
    sv->toknum = m_toknum;
}
void m_restorelex(const MLexSave* sv) {
    m_lex = sv->lex;
    m_token = sv->token;
    m_tokstr = sv->tokstr;
    m_toknum = sv->toknum;
}

int m_nexttok() {
    if (stopflag) {
        cc_fail("--Break--\n");
    }
    MLexSave sv;
    m_savelex(&sv);
    peeking = true; // a look ahead never reads a line
    m_gettok();
    const int t = m_token;
    peeking = false;
    m_restorelex(&sv);
    return t;
}

int m_nextnexttok() {
    MLexSave sv;
    m_savelex(&sv);
    peeking = true;
    m_gettok();
    int t = m_token;
    if (t != 10) {
        m_gettok();
        t = m_token;
    }
    peeking = false;
    m_restorelex(&sv);
    return t;
}

void m_nlokay() {
    while (m_token == 10) {
        int rc = nextline();
        if (rc == 1) cc_fail("unexpected end of line\n");
        if (rc == 2) {
            m_lex.eof = 1;
            cc_fail("unexpected end of file\n");
        }
        m_gettok();
    }
}

std::string m_tokdesc(int tok, const char* text) {
    char buf[64];
    switch (tok) {
    case 130:
    case 155: return "number";
    case 131: return "name";
    case 132: return "quoted string";
    case 10: return "nothing";
    default: break;
    }
    if (tok > 32 && tok < 127) {
        snprintf(buf, sizeof buf, "'%c'", tok);
        return buf;
    }
    const char* w = text && *text ? text : m_tokword(tok);
    if (tok == 160) w = ".";
    if (w) {
        snprintf(buf, sizeof buf, "'%s'", w);
        return buf;
    }
    return "almost anything else";
}

void m_tokenis(int tok) {
    if (m_token == tok) return;
    cc_fail("%s found where %s expected\n", m_tokdesc(m_token, m_tokstr.c_str()).c_str(),
            m_tokdesc(tok, nullptr).c_str());
}

void m_match(int tok) {
    m_tokenis(tok);
    m_gettok();
}

} // namespace korvu
