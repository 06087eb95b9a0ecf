// The pieces the text readers share (`infile`, `infix`, and their
// dictionary forms): columns filled from text, then put in place of the
// data in memory in one step.
#pragma once
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace korvu {

// One new variable being read.
struct TextCol {
    std::string name;
    std::string label;        // variable label ("" none)
    int code = 0;             // storage type (KV_FLOAT unless given)
    int line = 0;             // columns: line of the observation, from 0
    int64_t from = 0, to = 0; // columns: from 0, end excluded
    int width = 0;            // dictionary: input width, 0 free
    std::vector<double> num;
    std::string str; // code bytes a row
    int64_t bad = 0; // values that were not numbers
    int64_t cut = 0; // texts too long for the variable
};

// State carried over stretches of infix words.
struct TextInfix {
    int pending = 0; // a storage type waiting for its name
    int line = 0;    // line of the observation, from 0
    int nlines = 1;  // lines an observation
};

// The whole file into out. 0 or a code (printed).
int textio_readwhole(const std::string& path, std::string& out);
// "... using filename [, clear]": the words before `using`, the name, clear.
int textio_split_using(const std::string& rest, std::vector<std::string>& specs, std::string& fname,
                       bool* clear);
// 0, or 198/110 (printed) for a bad or repeated new name.
int textio_checkname(const std::string& nm, const std::vector<TextCol>& cols);
// Adds one value, given as text, to a column.
void textio_putvalue(TextCol& c, const char* p, size_t len);
// Columns a to b (end excluded) of a line of len bytes into a column (text
// trimmed of blanks).
void textio_field(TextCol& c, const char* p, size_t len, size_t a, size_t b);
// The new dataset in place of the one in memory. 0 or a code.
int textio_install(std::vector<TextCol>& cols, int64_t n);
// Free format from byte start; *nobs gets the observations. 0 or 1 (break).
int textio_free(std::vector<TextCol>& cols, const std::string& text, size_t start, int64_t* nobs);
// Infix words into columns (see infile.cpp). 0 or a code (printed).
int textio_infix_words(const std::vector<std::string>& specs, TextInfix& st,
                       std::vector<TextCol>& cols, bool labels);
// Line starts of text from byte start (a leading byte-order mark skipped).
void textio_lines(const std::string& text, size_t start, std::vector<size_t>& ls);
// Line j without its end ("" past the last line).
void textio_linetext(const std::string& text, const std::vector<size_t>& ls, size_t j,
                     const char** p, size_t* len);
// Column ranges, nlines lines an observation, from byte start. 0 or 1.
int textio_columns(std::vector<TextCol>& cols, int nlines, const std::string& text, size_t start,
                   int64_t* nobs);
// `infile using dictfile` (infix false) and `infix using dictfile`; rest is
// the command line after the command word.
int textio_dictcmd(const std::string& rest, bool infix);

} // namespace korvu
