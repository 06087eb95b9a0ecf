// The tokenizer: one global, resumable scanner working in place on a
// NUL-terminated line. Each call names the characters that end a word.
#pragma once
#include <cstddef>
#include <cstdint>

namespace korvu {

extern char token[504]; // the last token; a string is marked by '"' in token[0]
extern char cmd[34];    // the command word: the first 32 characters of the first token

// Delimiter sets; blank, double quote and backquote are in all of them.
extern const char prsestd[], prseopt[], prsenum[], prsedlgnum[], prsevar[], prsestd2[], prsestdnp[],
    prsestdot[], prsefls[], prseclsvar[], prseclsvnoc[];

struct TokPos { // stattok/resettok
    char* pos;
    char* last;
};
struct TokState { // borrow_gettok/return_gettok
    char* pos;
    char* last;
    uint8_t pushed, regot;
    char token[504];
};

void settok(char* text);
// The command word: gettokcmd reads the next word of the line (blank and
// standard delimiters) and puts its first 32 characters in `cmd`, `token`
// keeping the whole; setcmdword puts a given word there.
char* gettokcmd();
void setcmdword(const char* word);
char* gettok(const char* delims);
// 0 at the end of the line; 198 when a word is left over.
int endofline();
// A token of up to macrolen - 1 characters into dst (macrolen bytes), strings
// inside a word kept whole; brackets 1 copies ( and [ groups through to their
// match, 2 only ( groups.
int gettoklong(char* dst, const char* delims, int brackets);
// One file name into dst of n bytes (FNLEN for any name the system takes):
// 0, 7197 for none, 7199 for a name that does not fit (never cut).
int gettokfn(char* dst, size_t n);
int gtokis(int c);
void pushtok(const char* text);
void ungettok();
void stattok(TokPos* st);
void resettok(const TokPos* st);
void borrow_gettok(TokState* st);
void return_gettok(const TokState* st);
char* wheretok();
char* lwheretok();
int gettok_next_char();
char* peektok_chr();
void trimtok(int c);
void trimtokwhite();

char* pcompoundquotes(char* p, int* depthout);
char* psimplequotes(char* p, int* errout);
char* pbrackets(char* p, int* errout);
int parse_quoted_string(char* text, char** start, char** end, char** next);

int cmdcmp(const char* word, const char* full, int minlen);
int cmdcmp_lc(const char* word, const char* full, int minlen);
uint32_t cmdhash(const char* text);

// a token that came from quotes
inline bool tokisstr(const char* t) {
    return t[0] == '"';
}
inline bool tokis(const char* t, const char* s) {
    while (*t && *t == *s) t++, s++;
    return *t == *s;
}

} // namespace korvu
