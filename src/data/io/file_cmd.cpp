// `file`: text and binary files through named handles.
//
//   file open h using fn, {read|write|read write} [text|binary] [replace|append]
//   file read h localname                 (text: the next line; r(eof))
//   file read h %fmt scalarname [...]     (binary: %8z %4z %4b %2b %1b, s or u
//                                          behind b for signed or unsigned)
//   file write h item [item ...]          "text", (exp), %fmt (exp), _n[(#)],
//                                          _tab[(#)], _skip[(#)], _column(#),
//                                          _char(#); binary: %8z (exp) ... %#s
//   file seek h {query|tof|eof|#}         r(loc)
//   file set h byteorder {hilo|lohi|1|2}
//   file close {h|_all}
//   file query
#include <errno.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/storage.h"
#include "data/formats/formats.h"
#include "data/io/textio.h"
#include "data/vars/vartab.h"
#include "kernel/errors/errors.h"
#include "kernel/macro/macro.h"
#include "kernel/parse/gettok.h"
#include "output/spout.h"
#include "results/matrix/matrix.h"

namespace korvu {

namespace {

struct FHandle {
    std::string name, path;
    FILE* fp = nullptr;
    bool rd = false, wr = false, binary = false;
    bool hilo = false; // byte order of binary values: high byte first
    int64_t col = 0;   // text: characters since the last line end
    bool lastwrite = false;
};

constexpr int MAXHANDLES = 50;
std::vector<FHandle> s_files;

FHandle* findh(const std::string& name) {
    for (auto& h : s_files)
        if (h.name == name) return &h;
    return nullptr;
}

int nohandle(const std::string& name) {
    return errorf(601, "file handle %s not found\n", name.c_str());
}

bool isword(const std::string& w, const char* full, size_t minlen) {
    return w.size() >= minlen && w.size() <= std::strlen(full) &&
           std::strncmp(w.c_str(), full, w.size()) == 0;
}

// A switch between reading and writing on one stream needs a seek.
void turn(FHandle& h, bool writing) {
    if (h.lastwrite != writing) fseeko(h.fp, 0, SEEK_CUR);
    h.lastwrite = writing;
}

// Splits at the first comma outside quotes and brackets.
void splitcomma(const std::string& s, std::string* before, std::string* after) {
    int depth = 0;
    bool q = false;
    for (size_t i = 0; i < s.size(); ++i) {
        const char c = s[i];
        if (c == '"') q = !q;
        if (q) continue;
        if (c == '(') ++depth;
        if (c == ')') --depth;
        if (c == ',' && depth == 0) {
            *before = s.substr(0, i);
            *after = s.substr(i + 1);
            return;
        }
    }
    *before = s;
    after->clear();
}

int file_open(const std::string& rest) {
    std::string main, opts;
    splitcomma(rest, &main, &opts);
    std::string w[8];
    int n = 0;
    if (textio_words(main, w, 8, &n) || n != 3 || w[1] != "using")
        return errtext(198, "syntax is file open handle using filename, read|write ...\n");
    const std::string& hname = w[0];
    if (chkname(hname.c_str(), 0)) return errorf(198, "%s invalid handle name\n", hname.c_str());
    std::string path = w[2];
    textio_unquote(w[2], &path);
    std::string o[8];
    int no = 0;
    if (textio_words(opts, o, 8, &no)) return error(198);
    bool rd = false, wr = false, text = false, bin = false, replace = false, append = false;
    for (int i = 0; i < no; ++i) {
        if (isword(o[i], "read", 4))
            rd = true;
        else if (isword(o[i], "write", 5))
            wr = true;
        else if (isword(o[i], "text", 4))
            text = true;
        else if (isword(o[i], "binary", 6))
            bin = true;
        else if (isword(o[i], "replace", 7))
            replace = true;
        else if (isword(o[i], "append", 6))
            append = true;
        else
            return errorf(198, "option %s not allowed\n", o[i].c_str());
    }
    if (!rd && !wr) return errtext(198, "option read or write required\n");
    if (text && bin) return errtext(198, "options text and binary may not be combined\n");
    if (replace && append) return errtext(198, "options replace and append may not be combined\n");
    if ((replace || append) && !wr) return errtext(198, "replace and append need write\n");
    if (findh(hname)) return errorf(110, "file handle %s already exists\n", hname.c_str());
    if (static_cast<int>(s_files.size()) >= MAXHANDLES)
        return errorf(912, "too many open files (%d at most)\n", MAXHANDLES);
    struct stat sb;
    const bool exists = stat(path.c_str(), &sb) == 0;
    if (exists && S_ISDIR(sb.st_mode)) return fierr(603, path.c_str());
    const char* mode;
    if (!wr) {
        if (!exists) return fierr(601, path.c_str());
        mode = "rb";
    } else if (!rd) {
        if (exists && !replace && !append) return fierr(602, path.c_str());
        mode = append ? "ab" : "wb";
    } else {
        if (exists && !replace && !append) return fierr(602, path.c_str());
        mode = append ? "a+b" : (exists && !replace ? "r+b" : "w+b");
    }
    FILE* fp = std::fopen(path.c_str(), mode);
    if (!fp) return fierr(errno == ENOENT ? 601 : 603, path.c_str());
    FHandle h;
    h.name = hname;
    h.path = path;
    h.fp = fp;
    h.rd = rd, h.wr = wr, h.binary = bin;
    s_files.push_back(h);
    return 0;
}

int file_close(const std::string& rest) {
    std::string w[4];
    int n = 0;
    if (textio_words(rest, w, 4, &n) || n != 1)
        return errtext(198, "syntax is file close handle|_all\n");
    int rc = 0;
    if (w[0] == "_all") {
        for (auto& h : s_files)
            if (std::fclose(h.fp) && !rc) rc = fierr(693, h.path.c_str());
        s_files.clear();
        return rc;
    }
    for (size_t i = 0; i < s_files.size(); ++i) {
        if (s_files[i].name != w[0]) continue;
        if (std::fclose(s_files[i].fp)) rc = fierr(693, s_files[i].path.c_str());
        s_files.erase(s_files.begin() + static_cast<long>(i));
        return rc;
    }
    return nohandle(w[0]);
}

// The width and kind of a binary format: %8z %4z %4b[s|u] %2b[s|u] %1b[s|u]
// (kind 'z' or 'b', sign 's' or 'u'), or %#s (kind 's'). false when not one.
bool binspec(const std::string& w, int* width, char* kind, char* sign) {
    if (w.size() < 3 || w[0] != '%') return false;
    size_t i = 1;
    int n = 0;
    while (i < w.size() && w[i] >= '0' && w[i] <= '9' && n < 100000) n = n * 10 + (w[i++] - '0');
    if (i >= w.size() || n < 1) return false;
    const char k = w[i++];
    char s = 's';
    if (k == 'b' && i < w.size() && (w[i] == 's' || w[i] == 'u')) s = w[i++];
    if (i != w.size()) return false;
    if (k == 'z' && (n == 8 || n == 4)) {
    } else if (k == 'b' && (n == 4 || n == 2 || n == 1)) {
    } else if (k == 's') {
    } else {
        return false;
    }
    *width = n, *kind = k, *sign = s;
    return true;
}

void put_ordered(FHandle& h, const void* p, int n, std::string& out) {
    const auto* b = static_cast<const uint8_t*>(p);
    const bool swap = h.hilo == (native_order_is_low());
    for (int i = 0; i < n; ++i) out.push_back(static_cast<char>(b[swap ? n - 1 - i : i]));
}

int file_write(const std::string& rest) {
    std::string w[400];
    int n = 0;
    if (int rc = textio_words(rest, w, 400, &n)) return error(rc);
    if (n < 1) return errtext(198, "syntax is file write handle ...\n");
    FHandle* h = findh(w[0]);
    if (!h) return nohandle(w[0]);
    if (!h->wr) return errorf(608, "file handle %s was opened for reading only\n", w[0].c_str());
    std::string out;
    std::string fmt;
    for (int i = 1; i < n; ++i) {
        const std::string& x = w[i];
        std::string text;
        if (x[0] == '%') {
            if (!fmt.empty()) return errorf(198, "%s found where value expected\n", x.c_str());
            fmt = x;
            continue;
        }
        bool isstr = false;
        double num = 0;
        if (textio_unquote(x, &text)) {
            isstr = true;
        } else if (x[0] == '(' && x.back() == ')') {
            if (int rc = textio_eval(x.substr(1, x.size() - 2), &isstr, &num, &text)) return rc;
        } else if (x[0] == '_' && !h->binary) {
            // _n(#) and the like: the word and its count
            size_t par = x.find('(');
            std::string word = x.substr(0, par);
            int64_t cnt = 1;
            bool hascnt = par != std::string::npos;
            if (hascnt) {
                if (x.back() != ')') return error(198);
                bool s2;
                std::string st;
                if (int rc = textio_eval(x.substr(par + 1, x.size() - par - 2), &s2, &num, &st))
                    return rc;
                if (s2 || std::isnan(num) || num >= misval || num < 0 || num > 1e6)
                    return errorf(198, "%s: invalid count\n", x.c_str());
                cnt = static_cast<int64_t>(num);
            }
            if (isword(word, "_newline", 2)) {
                out.append(static_cast<size_t>(cnt), '\n');
            } else if (isword(word, "_tab", 2)) {
                out.append(static_cast<size_t>(cnt), '\t');
            } else if (isword(word, "_skip", 2)) {
                out.append(static_cast<size_t>(cnt), ' ');
            } else if (isword(word, "_column", 4) && hascnt) {
                // the column of the next character, 1-based
                int64_t col = h->col;
                for (char c : out) col = c == '\n' ? 0 : col + 1;
                if (cnt - 1 > col) out.append(static_cast<size_t>(cnt - 1 - col), ' ');
            } else if (isword(word, "_char", 2) && hascnt) {
                if (cnt > 255) return errorf(198, "%s: invalid character code\n", x.c_str());
                out.push_back(static_cast<char>(cnt));
            } else {
                return errorf(198, "%s invalid\n", x.c_str());
            }
            if (!fmt.empty()) return errorf(198, "%s found where value expected\n", x.c_str());
            continue;
        } else {
            return errorf(198, "%s found where quoted text or (expression) expected\n", x.c_str());
        }
        if (h->binary) {
            int width;
            char kind, sign;
            if (fmt.empty() || !binspec(fmt, &width, &kind, &sign))
                return errorf(198, "binary values need %%8z, %%4z, %%4b, %%2b, %%1b or %%#s "
                                   "before them\n");
            if (kind == 's') {
                if (!isstr) return error(109);
                text.resize(static_cast<size_t>(width), '\0');
                out += text;
            } else if (isstr) {
                return error(109);
            } else if (kind == 'z') {
                if (width == 8) {
                    put_ordered(*h, &num, 8, out);
                } else {
                    float f =
                        num >= misval ? kvfloat_of_missing(dbits(num)) : static_cast<float>(num);
                    put_ordered(*h, &f, 4, out);
                }
            } else {
                // integers: missing and out of range write the largest value
                const double lo = sign == 'u' ? 0 : -std::ldexp(1, 8 * width - 1);
                const double hi =
                    sign == 'u' ? std::ldexp(1, 8 * width) - 1 : std::ldexp(1, 8 * width - 1) - 1;
                double v = num >= misval || num > hi ? hi : (num < lo ? lo : std::trunc(num));
                int64_t iv = static_cast<int64_t>(v);
                uint8_t b[8];
                for (int k = 0; k < width; ++k) b[k] = static_cast<uint8_t>(iv >> (8 * k));
                if (!native_order_is_low()) {
                    for (int k = 0; k < width / 2; ++k) std::swap(b[k], b[width - 1 - k]);
                }
                put_ordered(*h, b, width, out);
            }
            fmt.clear();
            continue;
        }
        if (isstr) {
            if (!fmt.empty()) {
                char* s = sreformstr(fmt.c_str(), text.c_str());
                out += s ? s : text;
            } else {
                out += text;
            }
        } else {
            char buf[512];
            if (fmt.empty()) {
                fmtnum(buf, "%9.0g", num);
                const char* p = buf;
                while (*p == ' ') ++p;
                out += p;
            } else {
                FmtDesc d;
                if (chkfmt(fmt.c_str(), 0, &d)) return errorf(120, "invalid %s\n", fmt.c_str());
                fmtnum(buf, fmt.c_str(), num);
                out += buf;
            }
        }
        fmt.clear();
    }
    if (!fmt.empty()) return errorf(198, "nothing found after %s\n", fmt.c_str());
    turn(*h, true);
    if (!out.empty() && std::fwrite(out.data(), 1, out.size(), h->fp) != out.size())
        return fierr(693, h->path.c_str());
    for (char c : out) h->col = c == '\n' ? 0 : h->col + 1;
    return 0;
}

int file_read(const std::string& rest) {
    std::string w[400];
    int n = 0;
    if (int rc = textio_words(rest, w, 400, &n)) return error(rc);
    if (n < 1) return errtext(198, "syntax is file read handle ...\n");
    FHandle* h = findh(w[0]);
    if (!h) return nohandle(w[0]);
    if (!h->rd) return errorf(608, "file handle %s was opened for writing only\n", w[0].c_str());
    turn(*h, false);
    if (!h->binary) {
        if (n != 2) return errtext(198, "syntax is file read handle localname\n");
        if (chklmname(w[1].c_str())) return 198;
        std::string line;
        int c;
        bool got = false;
        while ((c = std::fgetc(h->fp)) != EOF) {
            got = true;
            if (c == '\n') break;
            line.push_back(static_cast<char>(c));
        }
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (int rc = macresave(("_" + w[1]).c_str(), line.c_str())) return rc;
        textio_post_r("eof", got ? 0 : 1);
        return 0;
    }
    if (n < 3 || (n - 1) % 2) return errtext(198, "syntax is file read handle %fmt name ...\n");
    bool eof = false;
    for (int i = 1; i < n; i += 2) {
        int width;
        char kind, sign;
        if (!binspec(w[i], &width, &kind, &sign)) return errorf(198, "%s invalid\n", w[i].c_str());
        std::string b(static_cast<size_t>(width), '\0');
        const size_t got = std::fread(b.data(), 1, b.size(), h->fp);
        if (got < b.size()) {
            eof = true;
            break;
        }
        if (kind == 's') {
            if (chklmname(w[i + 1].c_str())) return 198;
            b.resize(std::strlen(b.c_str()));
            if (int rc = macresave(("_" + w[i + 1]).c_str(), b.c_str())) return rc;
            continue;
        }
        // to the native order
        const bool swap = h->hilo == native_order_is_low();
        if (swap)
            for (int k = 0; k < width / 2; ++k) std::swap(b[k], b[width - 1 - k]);
        double v;
        if (kind == 'z' && width == 8) {
            std::memcpy(&v, b.data(), 8);
        } else if (kind == 'z') {
            float f;
            std::memcpy(&f, b.data(), 4);
            v = kvdouble_of_float(f);
        } else {
            uint64_t u = 0;
            std::memcpy(&u, b.data(), static_cast<size_t>(width)); // native low byte first
            if (!native_order_is_low()) {
                u = 0;
                for (int k = 0; k < width; ++k) u = (u << 8) | static_cast<uint8_t>(b[k]);
            }
            if (sign == 's' && (u >> (8 * width - 1)) & 1) {
                v = static_cast<double>(static_cast<int64_t>(u) - (int64_t{1} << (8 * width)));
            } else {
                v = static_cast<double>(u);
            }
        }
        if (int rc = scalarset(w[i + 1].c_str(), v)) return rc;
    }
    textio_post_r("eof", eof ? 1 : 0);
    return 0;
}

int file_seek(const std::string& rest) {
    std::string w[4];
    int n = 0;
    if (textio_words(rest, w, 4, &n) || n != 2)
        return errtext(198, "syntax is file seek handle query|tof|eof|#\n");
    FHandle* h = findh(w[0]);
    if (!h) return nohandle(w[0]);
    int rc = 0;
    if (w[1] == "tof") {
        rc = fseeko(h->fp, 0, SEEK_SET);
    } else if (w[1] == "eof") {
        rc = fseeko(h->fp, 0, SEEK_END);
    } else if (w[1] != "query") {
        bool isstr;
        double v = 0;
        std::string s;
        if (int erc = textio_eval(w[1], &isstr, &v, &s)) return erc;
        if (isstr || v < 0 || v >= misval || v != std::floor(v))
            return errorf(198, "%s invalid position\n", w[1].c_str());
        rc = fseeko(h->fp, static_cast<off_t>(v), SEEK_SET);
    }
    if (rc) return fierr(692, h->path.c_str());
    h->lastwrite = false;
    if (w[1] == "tof") h->col = 0;
    textio_post_r("loc", static_cast<double>(ftello(h->fp)));
    return 0;
}

int file_set(const std::string& rest) {
    std::string w[4];
    int n = 0;
    if (textio_words(rest, w, 4, &n) || n != 3 || w[1] != "byteorder")
        return errtext(198, "syntax is file set handle byteorder hilo|lohi|1|2\n");
    FHandle* h = findh(w[0]);
    if (!h) return nohandle(w[0]);
    if (w[2] == "hilo" || w[2] == "1")
        h->hilo = true;
    else if (w[2] == "lohi" || w[2] == "2")
        h->hilo = false;
    else
        return errorf(198, "%s invalid byte order\n", w[2].c_str());
    return 0;
}

int file_query() {
    c_outlev = 0;
    if (s_files.empty()) {
        spout21("  no files open\n");
        return 0;
    }
    spoutf("  %d file%s open\n", static_cast<int>(s_files.size()), s_files.size() > 1 ? "s" : "");
    for (auto& h : s_files)
        spoutf("  %-12s %-10s %-6s %s\n", h.name.c_str(),
               h.rd && h.wr ? "read write" : (h.rd ? "read" : "write"),
               h.binary ? "binary" : "text", h.path.c_str());
    return 0;
}

} // namespace

bool native_order_is_low() {
    const uint16_t one = 1;
    uint8_t b;
    std::memcpy(&b, &one, 1);
    return b != 0;
}

int filecmd(int) {
    gettok(prsestd);
    const std::string sub = token;
    const std::string rest = textio_rest();
    if (isword(sub, "open", 4)) return file_open(rest);
    if (isword(sub, "close", 5)) return file_close(rest);
    if (isword(sub, "read", 4)) return file_read(rest);
    if (isword(sub, "write", 5)) return file_write(rest);
    if (isword(sub, "seek", 4)) return file_seek(rest);
    if (isword(sub, "set", 3)) return file_set(rest);
    if (isword(sub, "query", 1) && rest.find_first_not_of(" \t") == std::string::npos)
        return file_query();
    if (sub.empty()) return errtext(198, "subcommand of file expected\n");
    return errorf(198, "file %s: unknown subcommand\n", sub.c_str());
}

} // namespace korvu
