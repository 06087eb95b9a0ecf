// The commands of delimited text: insheet, outsheet, import, export.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "data/io/io.h"
#include "data/vars/varlist.h"
#include "data/vars/vartab.h"
#include "kernel/errors/errors.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"

namespace korvu {

namespace {

// name with ext appended when it has no extension of its own
std::string withext(const char* name, const char* ext) {
    std::string s(name);
    size_t slash = s.rfind('/');
    size_t dot = s.rfind('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) s += ext;
    return s;
}

// The text of an option's argument without surrounding double quotes;
// false when the option is absent.
bool optarg(const char* name, int minlen, std::string& out) {
    std::vector<char> buf(static_cast<size_t>(macrolen) + 1);
    lastopt = 0;
    findargasis(name, minlen, buf.data(), static_cast<int>(buf.size()));
    if (!lastopt) return false;
    std::string s(buf.data());
    while (!s.empty() && s.front() == ' ') s.erase(s.begin());
    while (!s.empty() && s.back() == ' ') s.pop_back();
    if (s.size() >= 4 && s.compare(0, 2, "`\"") == 0 && s.compare(s.size() - 2, 2, "\"'") == 0)
        s = s.substr(2, s.size() - 4);
    else if (s.size() >= 2 && s.front() == '"' && s.back() == '"')
        s = s.substr(1, s.size() - 2);
    out = s;
    return true;
}

// A delimiter option's text: "tab" or "\t" for a tab, else the characters.
std::string delimtext(const std::string& s) {
    if (s == "tab" || s == "\\t") return "\t";
    std::string r;
    for (size_t k = 0; k < s.size(); ++k) {
        if (s[k] == '\\' && k + 1 < s.size() && s[k + 1] == 't') {
            r += '\t';
            ++k;
        } else {
            r += s[k];
        }
    }
    return r;
}

// "#", "#:#", "#:", ":#" into first and last (1-based); 0 on success.
int rangearg(const std::string& s, int64_t* a, int64_t* z) {
    size_t c = s.find(':');
    std::string l = c == std::string::npos ? s : s.substr(0, c);
    std::string r = c == std::string::npos ? std::string() : s.substr(c + 1);
    auto num = [](const std::string& t, int64_t* out) {
        if (t.empty()) return true;
        char* e;
        long long v = std::strtoll(t.c_str(), &e, 10);
        if (*e || v < 1) return false;
        *out = v;
        return true;
    };
    if (!num(l, a) || !num(r, z)) return 1;
    if (c == std::string::npos && !l.empty()) *z = INT64_MAX;
    return 0;
}

// A list of column numbers: "#", "#/#", "#-#", blank-separated, or _all.
int collist(const std::string& s, std::vector<int32_t>& out, bool* all) {
    if (s == "_all") {
        *all = true;
        return 0;
    }
    size_t k = 0;
    while (k < s.size()) {
        while (k < s.size() && s[k] == ' ') ++k;
        if (k >= s.size()) break;
        char* e;
        long a = std::strtol(s.c_str() + k, &e, 10);
        if (e == s.c_str() + k || a < 1) return 1;
        k = static_cast<size_t>(e - s.c_str());
        long z = a;
        if (k < s.size() && (s[k] == '/' || s[k] == '-')) {
            ++k;
            z = std::strtol(s.c_str() + k, &e, 10);
            if (e == s.c_str() + k || z < a) return 1;
            k = static_cast<size_t>(e - s.c_str());
        }
        for (long c = a; c <= z && c < 100000; ++c) out.push_back(static_cast<int32_t>(c));
    }
    return 0;
}

// Reads "[names] using filename" for the readers; the position is left at
// the options.
int read_names_using(std::vector<std::string>* names, std::string& fn, bool needusing) {
    for (;;) {
        TokPos pos;
        stattok(&pos);
        gettok(prsestd);
        if (!token[0] || tokis(token, ",")) {
            if (needusing || fn.empty()) return required("using");
            resettok(&pos);
            return 0;
        }
        if (tokis(token, "using")) break;
        if (!names) {
            if (!needusing && fn.empty()) { // the file name without `using`
                resettok(&pos);
                char buf[FNLEN] = {};
                if (int rc = gettokfn(buf, sizeof buf)) return error(rc);
                fn = buf;
                return 0;
            }
            return error(198);
        }
        if (int rc = chkname(token, 1)) return rc;
        names->push_back(token);
    }
    char buf[FNLEN] = {};
    if (int rc = gettokfn(buf, sizeof buf)) return error(rc);
    fn = buf;
    return 0;
}

int take_options() {
    TokPos pos;
    stattok(&pos);
    gettok(prsestd);
    if (!token[0]) return 0;
    if (!tokis(token, ",")) return error(198);
    return proption();
}

int refuse_if_data(bool clear) {
    if (!clear && (nvar > 0 || nobs > 0)) return error(4);
    return 0;
}

// The selection of an export: parse varlist, if, in and using.
int parse_export(std::vector<int32_t>& vars) {
    vable = 0;
    opable = 0;
    ifable = 0;
    oable = 0;
    uable = 1;
    wgtable = 3;
    wable = 3;
    if (int rc = parse()) return rc;
    if (!lnvar) allvarlist();
    vars.assign(varlist_vr, varlist_vr + lnvar);
    if (vars.empty()) return errtext(111, "no variables defined\n");
    return 0;
}

} // namespace

// insheet [names] using filename [, tab comma delimiter("c") clear double names nonames case]
int insheetcmd(int) {
    opable = 0;
    noptn = 0;
    std::vector<std::string> names;
    std::string fn;
    if (int rc = read_names_using(&names, fn, true)) return rc;
    if (int rc = take_options()) return rc;
    CsvReadOpts o;
    o.names = names;
    const bool clear = findopt("clear", 5, 0);
    const bool tab = findopt("tab", 3, 0);
    const bool comma = findopt("comma", 5, 0);
    std::string d;
    const bool hasdelim = optarg("delimiter", 5, d);
    o.asdouble = findopt("double", 6, 0);
    const int nm = findopt("names", 5, -1); // 1 names, 0 nonames, -1 guess
    o.vcase = findopt("case", 4, 0) ? 0 : 1;
    if (int rc = chkopt()) return rc;
    if (tab + comma + hasdelim > 1)
        return errtext(198, "options tab, comma and delimiter() may not be combined\n");
    if (hasdelim) {
        o.delims = delimtext(d);
        if (o.delims.size() != 1) return errtext(198, "delimiter() takes one character\n");
    }
    if (tab) o.delims = "\t";
    if (comma) o.delims = ",";
    o.namesrow = nm;
    if (int rc = refuse_if_data(clear)) return rc;
    std::string file = withext(fn.c_str(), ".raw");
    return csv_read(file.c_str(), o);
}

// outsheet [varlist] using filename [if] [in] [, comma delimiter("c") nonames nolabel noquote
// replace]
int outsheetcmd(int) {
    std::vector<int32_t> vars;
    if (int rc = parse_export(vars)) return rc;
    CsvWriteOpts o;
    o.delim = '\t';
    const bool comma = findopt("comma", 5, 0);
    std::string d;
    const bool hasdelim = optarg("delimiter", 5, d);
    o.names = findopt("names", 5, 1);
    o.labels = findopt("label", 3, 1);
    o.quote = findopt("quote", 5, 1);
    o.replace = findopt("replace", 7, 0);
    if (int rc = chkopt()) return rc;
    if (comma && hasdelim)
        return errtext(198, "options comma and delimiter() may not be combined\n");
    if (comma) o.delim = ',';
    if (hasdelim) {
        std::string t = delimtext(d);
        if (t.size() != 1) return errtext(198, "delimiter() takes one character\n");
        o.delim = t[0];
    }
    std::string file = withext(filesp, ".out");
    return csv_write(file.c_str(), vars, o);
}

static int import_delimited() {
    std::string fn;
    if (int rc = read_names_using(nullptr, fn, false)) return rc;
    if (int rc = take_options()) return rc;
    CsvReadOpts o;
    const bool clear = findopt("clear", 5, 0);
    std::string a;
    if (optarg("delimiters", 5, a)) {
        o.delims = delimtext(a);
        if (o.delims.empty()) return errtext(198, "delimiters() may not be empty\n");
    }
    if (optarg("varnames", 4, a)) {
        if (a == "nonames") {
            o.namesrow = 0;
        } else {
            char* e;
            long r = std::strtol(a.c_str(), &e, 10);
            if (*e || r < 1 || r > 1000000)
                return errtext(198, "varnames() takes a row number or nonames\n");
            o.namesrow = static_cast<int>(r);
        }
    } else {
        o.namesrow = 1;
    }
    if (optarg("rowrange", 3, a) && rangearg(a, &o.row1, &o.row2))
        return errtext(198, "rowrange() takes [first][:last]\n");
    if (optarg("colrange", 3, a)) {
        int64_t c1 = 1, c2 = INT32_MAX;
        if (rangearg(a, &c1, &c2)) return errtext(198, "colrange() takes [first][:last]\n");
        o.col1 = static_cast<int32_t>(std::min<int64_t>(c1, INT32_MAX));
        o.col2 = static_cast<int32_t>(std::min<int64_t>(c2, INT32_MAX));
    }
    if (optarg("stringcols", 3, a) && collist(a, o.strcols, &o.strall))
        return errtext(198, "stringcols() takes column numbers or _all\n");
    if (optarg("numericcols", 3, a) && collist(a, o.numcols, &o.numall))
        return errtext(198, "numericcols() takes column numbers or _all\n");
    if (optarg("case", 4, a)) {
        if (a == "preserve")
            o.vcase = 0;
        else if (a == "lower")
            o.vcase = 1;
        else if (a == "upper")
            o.vcase = 2;
        else
            return errtext(198, "case() takes preserve, lower or upper\n");
    }
    if (optarg("encoding", 3, a)) {
        std::string l = a;
        for (char& c : l) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        if (l == "utf-8" || l == "utf8")
            o.latin1 = false;
        else if (l == "latin1" || l == "latin-1" || l == "iso-8859-1" || l == "iso8859-1")
            o.latin1 = true;
        else
            return errorf(198, "encoding %s not known; utf-8 and latin1 are\n", a.c_str());
    }
    o.asdouble = findopt("asdouble", 5, 0);
    if (int rc = chkopt()) return rc;
    if ((o.strall && o.numall) ||
        std::any_of(o.strcols.begin(), o.strcols.end(),
                    [&](int32_t c) {
                        return o.numall ||
                               std::find(o.numcols.begin(), o.numcols.end(), c) != o.numcols.end();
                    }) ||
        (o.strall && !o.numcols.empty()))
        return errtext(198, "a column may not be both in stringcols() and in numericcols()\n");
    if (o.namesrow > 1 && o.row1 <= o.namesrow) o.row1 = o.namesrow + 1;
    if (int rc = refuse_if_data(clear)) return rc;
    std::string file = withext(fn.c_str(), ".csv");
    return csv_read(file.c_str(), o);
}

static int export_delimited() {
    std::vector<int32_t> vars;
    if (int rc = parse_export(vars)) return rc;
    CsvWriteOpts o;
    std::string d;
    if (optarg("delimiter", 5, d)) {
        std::string t = delimtext(d);
        if (t.size() != 1) return errtext(198, "delimiter() takes one character\n");
        o.delim = t[0];
    }
    o.names = findopt("varnames", 4, 1);
    o.labels = findopt("label", 3, 1);
    o.quote = findopt("quote", 5, 1);
    o.datafmt = findopt("datafmt", 7, 0);
    o.replace = findopt("replace", 7, 0);
    if (int rc = chkopt()) return rc;
    std::string file = withext(filesp, ".csv");
    return csv_write(file.c_str(), vars, o);
}

// import kind ..., export kind ...: one subcommand per kind of file.
static int io_dispatch(bool reading) {
    gettok(prsestd);
    if (!token[0])
        return errtext(198, reading ? "import: kind of file expected\n"
                                    : "export: kind of file expected\n");
    if (cmdcmp(token, "delimited", 3)) return reading ? import_delimited() : export_delimited();
    static const char* const later[] = {"excel", "sasxport", "spss", "dbase", "fixed", "xml"};
    for (const char* w : later)
        if (cmdcmp(token, w, static_cast<int>(std::strlen(w))))
            return errorf(199, "%s %s not yet available\n", reading ? "import" : "export", w);
    return errorf(198, "%s: unknown kind of file %s\n", reading ? "import" : "export", token);
}

int importcmd(int) {
    opable = 0;
    noptn = 0;
    return io_dispatch(true);
}

int exportcmd(int) {
    return io_dispatch(false);
}

} // namespace korvu
