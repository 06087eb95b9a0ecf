// The lexer of the matrix language. Token codes: a character stands for
// itself; 10 end of line, 129 unknown, 130 number, 131 name, 132 quoted
// string, 155 imaginary number, 160 "." after `)`, `]` or a name; words and
// multi-character operators from one table.
#pragma once
#include <cstddef>
#include <string>

namespace korvu {

struct MTokWord {
    const char* key;
    int tok;
};
extern const MTokWord m_toktab[];
extern const int m_ntoktab;

struct MLexState {
    std::string line;
    size_t pos = 0, tokstart = 0;
    int prev = 0;   // the previous token, for the "." after a name
    int lineno = 1; // lines read in this compilation
    int sawend = 0; // `end` aborted a compilation
    int eof = 0;    // the source ran out
};
struct MLexSave {
    MLexState lex;
    int token;
    std::string tokstr;
    double toknum;
};

extern int m_token;
extern std::string m_tokstr;
extern double m_toknum;
extern MLexState m_lex;

void m_token0(const char* line);
void m_token0unget();
void m_gettok();
int m_nexttok();
int m_nextnexttok();
void m_nlokay();
void m_tokenis(int tok);
void m_match(int tok);
void m_savelex(MLexSave* sv);
void m_restorelex(const MLexSave* sv);
const char* m_tokword(int tok);
// "number", "name", "'%c'" and so on, for "%s found where %s expected".
std::string m_tokdesc(int tok, const char* text);

} // namespace korvu
