// Text and binary files under the user's control: `file` (handles to read,
// write and seek), `postfile`/`post`/`postclose` (rows of values into a new
// dataset file), and the fixed- and free-format readers and writer
// (`infile`, `infix`, `outfile`).
#pragma once
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace korvu {

int filecmd(int);
int postfilecmd(int);
int postcmd(int);
int postclosecmd(int);
int infilecmd(int);
int infixcmd(int);
int outfilecmd(int);

// Shared by the commands here.
// The rest of the command line from the tokenizer's position (the
// tokenizer is left at the end of the line).
std::string textio_rest();
// Evaluates an expression text once (observation 1 over the whole data):
// *isstr tells which of num and str holds the value. 0 or a code (printed).
int textio_eval(const std::string& text, bool* isstr, double* num, std::string* str);
// A storage type word (byte int long float double str#): its code, or 0.
int textio_typecode(const std::string& w);
// One word of a list of new variables: a storage type (kept in *pending for
// the names after it; *typeonly set), type(names), (names) or a name. 0 or 198
// for a type where a name belongs.
int textio_varword(std::string x, int* pending, std::vector<std::string>* names, bool* typeonly);
// True when the command's text starts with `using` (the dictionary forms).
bool textio_starts_using(const std::string& rest);
// Posts a number in r() (the first post of a command clears r()).
void textio_post_r(const char* name, double v);
// Splits text into words at blanks, a word being a run of non-blanks or a
// parenthesised or quoted stretch kept whole (with its quotes or brackets).
// 0, or 198 for an unmatched bracket or quote.
int textio_words(const std::string& text, std::string* words, int max, int* n);
// The unquoted text of a "..." or `"..."' word; false when w is not one.
bool textio_unquote(const std::string& w, std::string* out);
// True on a machine that keeps the low byte first.
bool native_order_is_low();

} // namespace korvu
