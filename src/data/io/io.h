// Delimited text in and out (insheet, outsheet, import delimited, export
// delimited), `clear`, and the shipped example datasets.
//
// Reading goes through a memory map of the whole file and is checked in full
// before the dataset is touched: the first scan finds the records, checks
// that every record has the width of the first, and decides each column's
// storage type; only then is the dataset replaced and the second scan parses
// the cells straight into the columns. A failure before that point leaves
// the data in memory as it was.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

namespace korvu {

// ---------------------------------------------------------------------------
// Reading
// ---------------------------------------------------------------------------
struct CsvReadOpts {
    std::string delims; // delimiter characters; empty: tab if the first line has one, else comma
    int namesrow = -1;  // record that holds the names: -1 guess from record 1, 0 none
    int64_t row1 = 1;   // first and last record read (1-based, names record counted)
    int64_t row2 = INT64_MAX;
    int32_t col1 = 1; // first and last column kept
    int32_t col2 = INT32_MAX;
    std::vector<int32_t> strcols; // columns forced to text (file numbering)
    std::vector<int32_t> numcols; // columns forced to numbers
    bool strall = false, numall = false;
    int vcase = 0;                  // names: 0 as they stand, 1 lower case, 2 upper case
    bool latin1 = false;            // the file is in Latin-1; text is converted to UTF-8
    bool asdouble = false;          // numbers with fractions are stored as double
    std::vector<std::string> names; // names given by the user, in order
};

// The storage type and name decided for one column (exposed for the tests).
struct CsvColumn {
    std::string name, label;
    int code = 0;        // storage type
    int32_t filecol = 0; // column in the file (1-based)
    int64_t maxlen = 0;  // longest text in bytes
};

// Reads the file into memory, replacing the dataset. Prints its notes and
// failures; 0 or the code.
int csv_read(const char* fname, const CsvReadOpts& o);

// The smallest storage type that holds every value of a numeric column:
// integers only (allint), their range, and whether every value is a float.
int csv_numtype(bool allint, double lo, double hi, bool floatok, bool asdouble);
// Turns header text into a valid variable name (not yet made unique):
// invalid characters become `_`, a leading digit gets `v` in front, cut to
// 32 bytes; "" stays "".
std::string csv_validname(const std::string& text, int vcase);
// Parses a field's text as a number in the forms a delimited file holds;
// 1 number (*x), 2 missing marker (*x the missing value), 0 text.
int csv_number(const char* b, const char* e, double* x);

// ---------------------------------------------------------------------------
// Writing
// ---------------------------------------------------------------------------
struct CsvWriteOpts {
    char delim = ',';
    bool names = true;    // a first line of variable names
    bool labels = true;   // value labels as text
    bool quote = true;    // text fields in double quotes
    bool datafmt = false; // numbers by their display format
    bool replace = false;
};
// Writes the observations nobs1..nobs2 that pass `if` (when ifclause) of the
// variables vars to fname, through a temporary file renamed when complete.
int csv_write(const char* fname, const std::vector<int32_t>& vars, const CsvWriteOpts& o);

// ---------------------------------------------------------------------------
// Commands
// ---------------------------------------------------------------------------
int clearcmd(int);
int insheetcmd(int);
int outsheetcmd(int);
int importcmd(int);
int exportcmd(int);
int examplecmd(int);

} // namespace korvu
