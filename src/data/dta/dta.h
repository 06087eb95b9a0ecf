// The dataset file: `use` and `save`. Formats 102 to 108 and 110 to 113 are
// read in either byte order; 113 is written by default, 111 with `oldformat`
// and 110 with `oldformat midband`. Files are always written low byte first.
#pragma once
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace korvu {

struct DtaHeader {
    uint8_t format = 0;    // 102..113
    uint8_t byteorder = 2; // 1 high byte first, 2 low byte first
    uint8_t filetype = 1;
    int32_t nvar = 0;
    int32_t nobs = 0;
    char label[82] = {};
    char stamp[19] = {};
};

// Bytes of the header of a format (0 for an unknown one).
int dta_hdrlen(int format);
// Reads and checks a header: 0, 609 or 610 (no message).
int rdhdr(int fd, DtaHeader* h);
// Writes the header for h->format with the label and the present time.
int wrhdr(int fd, DtaHeader* h, const char* label);
// "dd Mon yyyy hh:mm" of the present time (17 characters) into buf[18].
char* getstamp(char* buf);

// Chunked reads and writes (pieces of at most 16384 above 32768 bytes). They
// return the bytes moved, short at the end of file, or -1 on error.
int64_t korvu_read(int fd, void* buf, int64_t n);
int64_t korvu_write(int fd, const void* buf, int64_t n);
int64_t lkorvu_read(int fd, void* buf, int64_t n);
int64_t lkorvu_write(int fd, const void* buf, int64_t n);

// "name.dta" when name has no extension.
std::string dflttype(const std::string& name, const char* ext = ".dta");

struct SaveOpts {
    bool replace = false;
    bool label = true;
    bool orphans = false;
    bool oldformat = false;
    bool midband = false;
    bool all = false;
    bool emptyok = false;
};
// Writes the dataset to fname (extension already applied); prints the notes
// and failures, returns 0 or the code.
int syssave(const char* fname, const SaveOpts& o);

struct UseOpts {
    bool label = true;
    // Subset: the file's variables to keep (1-based, ascending, no repeats);
    // empty keeps all.
    const int32_t* keep = nullptr;
    int nkeep = 0;
    int32_t obs1 = 1, obs2 = 2147483646; // `in`
    bool useif = false;                  // test `ifpgm` per observation
    bool orphans = false;                // load every value label, used or not
};
// Loads fname into memory (replacing the dataset). Validates the whole file
// before the dataset is touched; 0 or the code, after the message.
int dta_use(const char* fname, const UseOpts& o);

// A dataset file read whole into columns without touching memory, for the
// commands that combine it with the data in memory. Cells are in the native
// byte order and the present storage codes (old formats converted as `use`
// converts them).
struct DtaImageVar {
    char name[33] = {};
    uint8_t code = 0;
    char fmt[13] = {};
    char lbl[33] = {};
    char vlab[82] = {};
    std::vector<uint8_t> col; // nobs cells of bytlenc(code) bytes
};
struct DtaImageChar {
    std::string obj, name, text;
};
struct DtaImageLab {
    std::string name;
    std::vector<int32_t> tbl; // the value-label object
};
struct DtaImage {
    DtaHeader h;
    int64_t nobs = 0;
    std::vector<DtaImageVar> v;
    std::vector<int16_t> srt; // 1-based, no terminator
    std::vector<DtaImageChar> chars;
    std::vector<DtaImageLab> labs;
    int notloaded = 0; // value labels too long to load
    std::vector<std::pair<std::string, std::string>> renamed;
};
// Reads fname whole; with labels, every value label of the file. Prints the
// message of a failure; 0, 1 (break) or the code.
int dta_readimage(const char* fname, DtaImage& out, bool labels);

// The e(sample) marker left out of `save` unless `all`: its variable number,
// or 0. The estimation layer may replace this hook.
extern int (*dta_esample_var)();

int usecmd(int);
int savecmd(int);

} // namespace korvu
