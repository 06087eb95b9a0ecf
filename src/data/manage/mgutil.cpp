// Helpers of the data-management commands: replacing the dataset by new
// columns, names of new variables, reading numbers from text.
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "data/area/dataarea.h"
#include "data/area/storage.h"
#include "data/formats/formats.h"
#include "data/labels/label.h"
#include "data/manage/manage.h"
#include "data/vars/char.h"
#include "data/vars/vartab.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/parse/cmdparse.h"

namespace korvu {

int mg_newname(const std::string& name) {
    if (name.empty() || name.size() > 32) return errorf(198, "%s invalid name\n", name.c_str());
    if (chkname(name.c_str(), 1)) return 198;
    if (chkreserved(name.c_str())) return errorf(198, "%s invalid name\n", name.c_str());
    if (sysfindvar(name.c_str())) return errorf(110, "%s already defined\n", name.c_str());
    return 0;
}

std::vector<std::string> mg_words(const std::string& text) {
    std::vector<std::string> w;
    size_t i = 0;
    while (i < text.size()) {
        while (i < text.size() && (text[i] == ' ' || text[i] == '\t')) i++;
        size_t j = i;
        while (j < text.size() && text[j] != ' ' && text[j] != '\t') j++;
        if (j > i) w.push_back(text.substr(i, j - i));
        i = j;
    }
    return w;
}

bool mg_number(const std::string& text, double* x) {
    size_t a = 0, b = text.size();
    while (a < b && text[a] == ' ') a++;
    while (b > a && text[b - 1] == ' ') b--;
    std::string t = text.substr(a, b - a);
    if (t.empty()) return false;
    if (t == ".") return *x = misval, true;
    if (t.size() == 2 && t[0] == '.' && t[1] >= 'a' && t[1] <= 'z') {
        uint64_t bits = dblmis_bits_of(t[1] - 'a' + 1);
        std::memcpy(x, &bits, 8);
        return true;
    }
    // plain decimal text only: no hexadecimal, no infinities, no names
    for (char c : t)
        if (!strchr("0123456789+-.eE", c)) return false;
    errno = 0;
    char* end = nullptr;
    double v = std::strtod(t.c_str(), &end);
    if (*end || errno == ERANGE || !std::isfinite(v) || std::fabs(v) > max_kvdouble) return false;
    *x = v;
    return true;
}

int mg_fittype(const std::vector<double>& v, bool allowfloat) {
    bool integer = true;
    double lo = 0, hi = 0;
    bool floatok = allowfloat;
    for (double x : v) {
        if (x >= misval) continue;
        if (x != std::floor(x)) integer = false;
        if (x < lo) lo = x;
        if (x > hi) hi = x;
        if (floatok && static_cast<double>(static_cast<float>(x)) != x) floatok = false;
    }
    if (integer) {
        if (lo >= minbyte && hi <= maxbyte) return KV_BYTE;
        if (lo >= minint && hi <= maxint) return KV_INT;
        if (lo >= minlong && hi <= maxlong) return KV_LONG;
    }
    return floatok ? KV_FLOAT : KV_DOUBLE;
}

int mg_replace_data(std::vector<MgCol>& cols, int64_t n) {
    int64_t width = 0;
    for (const MgCol& c : cols) width += bytlenc(c.type);
    if (static_cast<int64_t>(cols.size()) > maxvar || width > maxlrecl)
        return errtext(900, "no room to add more variables\n");
    if (n > 2147483646) return error(901);
    // the block is a fixed amount of memory: the new rectangle must fit it
    if (static_cast<double>(n) * static_cast<double>(width + 8) >
        static_cast<double>(memorysize) * 0.98)
        return errtext(901, "no room to add more observations\n");
    colsync();
    if (nvar) {
        for (int v = 1; v <= nvar; v++) char_dropvar(varname(v));
        if (int rc = markrow_open()) return error(rc);
        for (int v = 1; v <= nvar; v++) markrow_set(v, true);
        remvar();
    }
    nobs = 0;
    srtlist[0] = 0;
    for (const MgCol& c : cols) {
        if (int rc = addvar(c.name.c_str(), c.type)) return error(rc);
        int v = nvar;
        if (!c.fmt.empty()) setvarfmt(fmtname(v), c.fmt.c_str(), c.type);
        snprintf(lblname(v), NAMELEN1, "%s", c.vallab.c_str());
        if (!c.varlab.empty()) putvarlab(v, c.varlab.c_str());
    }
    if (n > maxobs) {
        int rc = repartobs(static_cast<int32_t>(n - maxobs));
        if (rc || n > maxobs) return error(901);
    }
    nobs = static_cast<int32_t>(n);
    for (int v = 1; v <= nvar; v++) {
        const MgCol& c = cols[v - 1];
        if (isnumtype(c.type)) {
            for (int64_t i = 0; i < n; i++) store(v, static_cast<int>(i + 1), c.num[i]);
        } else {
            for (int64_t i = 0; i < n; i++) sstore(v, static_cast<int>(i + 1), c.str[i].c_str());
        }
    }
    i_nvar = nvar;
    updata = 1;
    return 0;
}

} // namespace korvu
