// `outfile [varlist] using filename [if] [in] [, comma dictionary nolabel
// noquote replace wide]`: the data as text, one observation a line. Values are
// written in their display formats (leading blanks dropped), strings and
// value labels in double quotes unless `noquote`, separated by a blank or,
// with `comma`, by a comma. Without `wide` or `comma` an observation longer
// than 80 characters is wrapped onto further lines between values. The file
// is written under a temporary name and renamed when whole. With
// `dictionary` the file starts with a dictionary (each variable's type,
// name and label) that `infile using` reads, and values with value labels
// are written as numbers.
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/storage.h"
#include "data/dta/dta.h"
#include "data/expr/expr.h"
#include "data/formats/formats.h"
#include "data/io/textio.h"
#include "data/labels/label.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"

namespace korvu {

int outfilecmd(int) {
    std::string saved_fn = filesp;
    filesp[0] = 0;
    vable = 2;
    uable = 1;
    ifable = 0;
    oable = 0;
    wgtable = 3;
    wable = 3;
    opable = 0;
    int rc = parse();
    std::string fname = filesp;
    std::snprintf(filesp, sizeof filesp, "%s", saved_fn.c_str());
    if (rc) return rc;
    const bool comma = findopt("comma", 5, 0);
    const bool dict = findopt("dictionary", 4, 0);
    const bool nolabel = findopt("nolabel", 5, 0) || dict;
    const bool noquote = findopt("noquote", 7, 0);
    const bool replace = findopt("replace", 7, 0);
    const bool wide = findopt("wide", 4, 0);
    if (int crc = chkopt()) return crc;
    fname = dflttype(fname, ".raw");
    std::vector<int> vars;
    if (lnvar)
        vars.assign(varlist_vr, varlist_vr + lnvar);
    else
        for (int v = 1; v <= nvar; ++v) vars.push_back(v);
    struct stat sb;
    const bool exists = stat(fname.c_str(), &sb) == 0;
    if (exists && !replace) return fierr(602, fname.c_str());
    std::string tmp = fname + ".XXXXXX";
    int fd = mkstemp(tmp.data());
    if (fd < 0) return fierr(603, fname.c_str());
    {
        mode_t um = umask(0);
        umask(um);
        fchmod(fd, exists ? (sb.st_mode & 07777) : (0666 & ~um));
    }
    FILE* f = fdopen(fd, "wb");
    if (!f) {
        close(fd);
        unlink(tmp.c_str());
        return fierr(603, fname.c_str());
    }
    bool bad = false;
    const char sep = comma ? ',' : ' ';
    if (dict) {
        std::string h = "dictionary {\n";
        char lab[81];
        for (int v : vars) {
            const int code = typlist[v - 1];
            char ty[16];
            if (isstrtype(code))
                std::snprintf(ty, sizeof ty, "str%d", code);
            else
                std::snprintf(ty, sizeof ty, "%s",
                              code == KV_BYTE    ? "byte"
                              : code == KV_INT   ? "int"
                              : code == KV_LONG  ? "long"
                              : code == KV_FLOAT ? "float"
                                                 : "double");
            h += "    ";
            h += ty;
            h += ' ';
            h += varname(v);
            getvarlab(v, lab);
            if (lab[0]) {
                const bool inner = std::strchr(lab, '"') != nullptr;
                h += inner ? " `\"" : " \"";
                h += lab;
                h += inner ? "\"'" : "\"";
            }
            h += '\n';
        }
        h += "}\n";
        if (std::fwrite(h.data(), 1, h.size(), f) != h.size()) bad = true;
    }
    const char* q = noquote ? "" : "\"";
    std::string line, val;
    std::vector<char> sbuf(static_cast<size_t>(EXP_STRMAX) + 2);
    for (int i = nobs1; i <= nobs2 && !bad; ++i) {
        if (ifclause && xeq(&ifpgm, i) == 0) continue;
        line.clear();
        size_t linestart = 0;
        for (size_t k = 0; k < vars.size(); ++k) {
            const int v = vars[k];
            const int code = typlist[v - 1];
            val.clear();
            if (isstrtype(code)) {
                skorvu_data(v, i, sbuf.data());
                val = q;
                val += sbuf.data();
                val += q;
            } else {
                const double x = korvu_data(v, i);
                const char* lab = nullptr;
                if (!nolabel && lblname(v)[0] && !ismissing(x)) lab = vl_lookup(lblname(v), x);
                if (lab) {
                    val = q;
                    val += lab;
                    val += q;
                } else {
                    const char* s = safereforms(fmtname(v), x);
                    while (*s == ' ') ++s;
                    val = s;
                    // a comma-formatted number would break the fields
                    if (comma)
                        for (char& c : val)
                            if (c == ',') c = '.';
                }
            }
            if (k) {
                if (!comma && !wide && line.size() - linestart + 1 + val.size() > 80) {
                    line += '\n';
                    linestart = line.size();
                } else {
                    line += sep;
                }
            }
            line += val;
        }
        line += '\n';
        if (std::fwrite(line.data(), 1, line.size(), f) != line.size()) bad = true;
        if ((i & 1023) == 0 && kvpollstd()) break;
    }
    const bool broke = stopflag != 0;
    if (std::fflush(f) || fsync(fileno(f))) bad = true;
    if (std::fclose(f)) bad = true;
    if (!bad && !broke && rename(tmp.c_str(), fname.c_str())) bad = true;
    if (bad || broke) {
        unlink(tmp.c_str());
        return broke ? 1 : fierr(699, fname.c_str());
    }
    return 0;
}

} // namespace korvu
