// Low-level pieces of the dataset file: chunked I/O, the header, the time
// stamp, and the type codes of the letter-coded formats.
#include <errno.h>
#include <unistd.h>

#include <cstring>
#include <ctime>

#include "data/dta/dta.h"
#include "data/dta/dta_internal.h"

namespace korvu {

// Reads or writes n bytes in requests of at most `piece` bytes; the count
// moved, short at end of file, or -1 on an error.
static int64_t transfer(int fd, void* buf, int64_t n, bool wr, int64_t piece) {
    auto* p = static_cast<uint8_t*>(buf);
    int64_t done = 0;
    while (done < n) {
        int64_t want = n - done < piece ? n - done : piece;
        ssize_t r = wr ? ::write(fd, p + done, static_cast<size_t>(want))
                       : ::read(fd, p + done, static_cast<size_t>(want));
        if (r < 0) {
            if (errno == EINTR) continue;
            return -1;
        }
        if (r == 0) break;
        done += r;
    }
    return done;
}

static int64_t chunked(int fd, void* buf, int64_t n, bool wr) {
    return transfer(fd, buf, n, wr, n > 32768 ? 16384 : (n > 0 ? n : 1));
}

int64_t korvu_read(int fd, void* buf, int64_t n) {
    return chunked(fd, buf, n, false);
}
int64_t korvu_write(int fd, const void* buf, int64_t n) {
    return chunked(fd, const_cast<void*>(buf), n, true);
}
// The 64-bit forms move large blocks in one request each of up to 1 GB.
static int64_t big(int fd, void* buf, int64_t n, bool wr) {
    return transfer(fd, buf, n, wr, int64_t{1} << 30);
}
int64_t lkorvu_read(int fd, void* buf, int64_t n) {
    return big(fd, buf, n, false);
}
int64_t lkorvu_write(int fd, const void* buf, int64_t n) {
    return big(fd, const_cast<void*>(buf), n, true);
}

std::string dflttype(const std::string& name, const char* ext) {
    size_t slash = name.rfind('/');
    size_t dot = name.rfind('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return name + ext;
    return name;
}

static constexpr const char* month_names[12] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

char* getstamp(char* buf) {
    std::time_t t = std::time(nullptr);
    std::tm tmv;
    if (!localtime_r(&t, &tmv) || tmv.tm_mon < 0 || tmv.tm_mon > 11) {
        std::snprintf(buf, 18, " invld date");
        return buf;
    }
    char tmp[64];
    std::snprintf(tmp, sizeof tmp, "%2d %s%5d %02d:%02d", tmv.tm_mday, month_names[tmv.tm_mon],
                  tmv.tm_year + 1900, tmv.tm_hour, tmv.tm_min);
    tmp[17] = 0;
    std::memcpy(buf, tmp, 18);
    return buf;
}

int dta_hdrlen(int format) {
    switch (format) {
    case 102: return 40;
    case 103:
    case 104: return 42;
    case 105:
    case 106: return 60;
    case 107:
    case 108:
    case 110:
    case 111:
    case 112:
    case 113: return 109;
    default: return 0;
    }
}

// The tag a later release would carry in bytes 1 to 15.
static constexpr uint8_t later_tag[15] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
                                          0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};

int rdhdr(int fd, DtaHeader* h) {
    uint8_t b[109] = {};
    if (korvu_read(fd, b, 1) != 1) return 610;
    h->format = b[0];
    if (b[0] >= 114) {
        if (korvu_read(fd, b + 1, 15) == 15 && std::memcmp(b + 1, later_tag, 15) == 0)
            return 6101; // from a later release
        return 610;
    }
    const int len = dta_hdrlen(b[0]);
    if (!len) return 610;
    if (korvu_read(fd, b + 1, len - 1) != len - 1) return 610;
    if (b[0] == 102) {
        h->byteorder = 2;
    } else {
        if (b[1] != 1 && b[1] != 2) return 610;
        h->byteorder = b[1];
    }
    h->filetype = b[2];
    if (b[2] != 1) return 609;
    const bool swap = h->byteorder != native_order();
    h->nvar = rd16(b + 4, swap);
    h->label[0] = h->stamp[0] = 0;
    if (b[0] == 102) {
        h->nobs = static_cast<uint16_t>(rd16(b + 6, swap));
        std::memcpy(h->label, b + 8, 32);
        h->label[31] = 0;
    } else if (b[0] < 107) {
        h->nobs = rd32(b + 6, swap);
        std::memcpy(h->label, b + 10, 32);
        h->label[31] = 0;
        if (b[0] >= 105) {
            std::memcpy(h->stamp, b + 42, 18);
            h->stamp[17] = 0;
        }
    } else {
        h->nobs = rd32(b + 6, swap);
        std::memcpy(h->label, b + 10, 81);
        h->label[80] = 0;
        std::memcpy(h->stamp, b + 91, 18);
        h->stamp[17] = 0;
    }
    if (h->nvar < 0 || h->nobs < 0) return 610;
    return 0;
}

int wrhdr(int fd, DtaHeader* h, const char* label) {
    uint8_t b[109] = {};
    b[0] = h->format;
    b[1] = 2;
    b[2] = 1;
    wr16(b + 4, static_cast<int16_t>(h->nvar));
    wr32(b + 6, h->nobs);
    std::snprintf(reinterpret_cast<char*>(b + 10), 81, "%s", label ? label : "");
    char st[18];
    getstamp(st);
    std::memcpy(b + 91, st, 18);
    std::memcpy(h->stamp, st, 18);
    return korvu_write(fd, b, 109) == 109 ? 0 : 693;
}

int dta_type_from_file(int format, uint8_t c) {
    if (format == 113 || format == 111) {
        if ((c >= 1 && c <= 244) || (c >= 251)) return c;
        return 0;
    }
    switch (c) {
    case 'b': return 251;
    case 'i': return 252;
    case 'l': return 253;
    case 'f': return 254;
    case 'd': return 255;
    default: break;
    }
    if (c >= 128) return c - 127;
    return 0;
}

int cnv111to110vtype(int code) {
    switch (code) {
    case 251: return 'b';
    case 252: return 'i';
    case 253: return 'l';
    case 254: return 'f';
    case 255: return 'd';
    default: return code <= 128 ? code + 127 : 0;
    }
}

} // namespace korvu
