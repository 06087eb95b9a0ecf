// Everyday data management: moving data between long and wide layouts,
// recoding values, text variables to numbers and back (by value labels or by
// reading the text), transposing the data and listing variables by their
// attributes. The table rows `encode` and `decode` call their handlers
// directly; the others are the compiled cores of the ado-files of the same
// names without the underscore.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

namespace korvu {

int encodecmd(int);   // encode strvar [if] [in], generate(new) [label(name) noextend]
int decodecmd(int);   // decode numvar [if] [in], generate(new) [maxlength(#)]
int recodecmd(int);   // _recode varlist (rule) ... [if] [in] [, generate() prefix() label()]
int destringcmd(int); // _destring varlist, generate()|replace [ignore() force float percent]
int tostringcmd(int); // _tostring varlist, generate()|replace [format() force]
int reshapecmd(int);  // _reshape long|wide stubs, i() j() [string]
int xposecmd(int);    // _xpose, clear [varname]


// ---- helpers shared by the commands of this folder ----
// A column of a dataset being built: numeric values or texts.
struct MgCol {
    std::string name;
    int type = 0; // storage type code
    std::string fmt, vallab, varlab;
    std::vector<double> num;
    std::vector<std::string> str;
};
// Replaces the whole dataset by cols (all of n observations), keeping the
// data label, the dataset's characteristics and the value labels. Checks room
// first and returns 0 or a code with the data untouched.
int mg_replace_data(std::vector<MgCol>& cols, int64_t n);
// A name for a new variable: valid and not in use (110 otherwise); message
// printed.
int mg_newname(const std::string& name);
// Splits text into blank-separated words.
std::vector<std::string> mg_words(const std::string& text);
// Reads text as a number or a missing value (".", ".a" ... ".z") in full;
// false when it is not one.
bool mg_number(const std::string& text, double* x);
// The smallest storage type holding every value of v (missing skipped).
int mg_fittype(const std::vector<double>& v, bool allowfloat);

} // namespace korvu
