// `infile using dictfile` and `infix using dictfile`: the variables, and
// where their values stand, described in a dictionary file.
//
//   infile using dictfile [, using(datafile) clear]
//   infix using dictfile [, using(datafile) clear]
//
// An infile dictionary:
//
//   dictionary [using datafile] {
//       _lines(#)    lines an observation (default 1)
//       _line(#)     go to line # of the observation, column 1
//       _column(#)   go to column #
//       _skip(#)     skip # columns
//       [type] name [%#f | %#.#f | %#g | %#e | %#s] ["variable label"]
//   }
//   [the data, when no data file is named]
//
// A variable with an input format takes exactly that many columns from
// where the last one ended (text is trimmed of blanks); one without takes
// the next value separated by blanks or a comma on its line (in quotes when
// it holds a blank). When no variable has a format and no _directive is
// used, the values are read in free format across lines as `infile` reads
// them. An infix dictionary holds `infix` words between the braces:
//
//   infix dictionary [using datafile] {
//       [# lines] [#:] [type] name start[-end] ["variable label"] ...
//   }
//
// Lines starting with * or // are comments. Everything is read and checked
// before the data in memory are replaced; a fault in the dictionary names
// its line.
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/storage.h"
#include "data/dta/dta.h"
#include "data/io/textio.h"
#include "data/io/textread.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"

namespace korvu {

namespace {

enum { STEP_VAR, STEP_LINE, STEP_COLUMN, STEP_SKIP };

struct Step {
    int kind;
    int arg; // the directive's number, or the variable's column index
};

// A directive word _name(#): its name and number; false when not one.
bool directive(const std::string& w, std::string* name, int* num) {
    const size_t par = w.find('(');
    if (w.size() < 4 || w[0] != '_' || par == std::string::npos || w.back() != ')') return false;
    *name = w.substr(0, par);
    const std::string d = w.substr(par + 1, w.size() - par - 2);
    if (d.empty() || d.size() > 6) return false;
    int v = 0;
    for (char c : d) {
        if (c < '0' || c > '9') return false;
        v = v * 10 + (c - '0');
    }
    *num = v;
    return true;
}

// An input format %#[.#]{f,g,e,s}: its width and whether it is text;
// false when w is not one.
bool inputformat(const std::string& w, int* width, bool* text) {
    if (w.size() < 3 || w[0] != '%') return false;
    size_t i = 1;
    if (i < w.size() && w[i] == '-') ++i;
    int v = 0;
    size_t digits = 0;
    while (i < w.size() && w[i] >= '0' && w[i] <= '9' && digits < 6)
        v = v * 10 + (w[i++] - '0'), ++digits;
    if (!digits || v < 1) return false;
    const char last = w.back();
    if (last == 's') {
        if (i != w.size() - 1) return false;
        *text = true;
    } else if (last == 'f' || last == 'g' || last == 'e') {
        if (i < w.size() - 1) {
            if (w[i] != '.') return false;
            ++i;
            size_t d = 0;
            while (i < w.size() - 1 && w[i] >= '0' && w[i] <= '9') ++i, ++d;
            if (!d || i != w.size() - 1) return false;
        }
        *text = false;
    } else {
        return false;
    }
    *width = v;
    return true;
}

// The next value of a free field on a line from *pos: blanks skipped, a
// quoted text or a run up to a blank or comma; *pos moves past it and one
// comma after it.
void freefield(TextCol& c, const char* p, size_t len, size_t* pos) {
    size_t i = *pos;
    while (i < len && (p[i] == ' ' || p[i] == '\t')) ++i;
    size_t b = i, e;
    if (i < len && p[i] == '"') {
        b = ++i;
        while (i < len && p[i] != '"') ++i;
        e = i;
        if (i < len) ++i;
    } else {
        while (i < len && p[i] != ' ' && p[i] != '\t' && p[i] != ',') ++i;
        e = i;
    }
    while (i < len && (p[i] == ' ' || p[i] == '\t')) ++i;
    if (i < len && p[i] == ',') ++i;
    *pos = i;
    textio_putvalue(c, p + b, e - b);
}

int bad(const std::string& dname, int ln, const char* what) {
    return errorf(198, "%s line %d: %s\n", dname.c_str(), ln, what);
}

} // namespace

int textio_dictcmd(const std::string& rest, bool infix) {
    const char* cmd = infix ? "infix" : "infile";
    // using dictfile [, using(datafile) clear]
    std::string main = rest, opts;
    {
        bool q = false;
        for (size_t i = 0; i < rest.size(); ++i) {
            if (rest[i] == '"') q = !q;
            if (!q && rest[i] == ',') {
                main = rest.substr(0, i);
                opts = rest.substr(i + 1);
                break;
            }
        }
    }
    std::string w[4];
    int n = 0;
    if (int rc = textio_words(main, w, 4, &n)) return error(rc);
    if (n != 2) return errorf(198, "%s using: one dictionary file name expected\n", cmd);
    std::string dname = w[1];
    textio_unquote(dname, &dname);
    dname = dflttype(dname, ".dct");
    bool clear = false;
    std::string dataname;
    {
        std::string o[8];
        int no = 0;
        if (textio_words(opts, o, 8, &no)) return error(198);
        for (int i = 0; i < no; ++i) {
            if (o[i] == "clear") {
                clear = true;
            } else if (o[i].size() > 7 && o[i].compare(0, 6, "using(") == 0 && o[i].back() == ')') {
                dataname = o[i].substr(6, o[i].size() - 7);
                textio_unquote(dataname, &dataname);
                if (dataname.empty()) return errtext(198, "using() needs a file name\n");
            } else {
                return errorf(198, "option %s not allowed\n", o[i].c_str());
            }
        }
    }
    std::string text;
    if (int rc = textio_readwhole(dname, text)) return rc;
    std::vector<size_t> ls;
    textio_lines(text, 0, ls);
    // the header
    size_t j = 0;
    std::string line;
    auto getline = [&](size_t k) {
        const char* p;
        size_t len;
        textio_linetext(text, ls, k, &p, &len);
        line.assign(p, len);
        size_t b = line.find_first_not_of(" \t");
        return b == std::string::npos || line[b] == '*' || line.compare(b, 2, "//") == 0;
    };
    while (j < ls.size() && getline(j)) ++j;
    if (j >= ls.size()) return errorf(198, "%s: no dictionary in the file\n", dname.c_str());
    std::vector<std::string> hw(8);
    {
        int k = 0;
        if (textio_words(line, hw.data(), 8, &k))
            return bad(dname, static_cast<int>(j) + 1, line.c_str());
        hw.resize(static_cast<size_t>(k));
    }
    size_t at = 0;
    if (infix) {
        if (hw.size() < 2 || hw[0] != "infix" || hw[1] != "dictionary")
            return bad(dname, static_cast<int>(j) + 1, "infix dictionary expected");
        at = 2;
    } else {
        if (hw.empty() || hw[0] != "dictionary")
            return bad(dname, static_cast<int>(j) + 1, "dictionary expected");
        at = 1;
    }
    std::string dictdata;
    if (at < hw.size() && hw[at] == "using") {
        if (at + 1 >= hw.size() || hw[at + 1] == "{")
            return bad(dname, static_cast<int>(j) + 1, "file name expected after using");
        dictdata = hw[at + 1];
        textio_unquote(dictdata, &dictdata);
        at += 2;
    }
    if (at < hw.size() && hw[at] == "{") {
        ++at;
    } else if (at == hw.size()) {
        ++j;
        while (j < ls.size() && getline(j)) ++j;
        if (j >= ls.size() || line.find_first_not_of(" \t") == std::string::npos ||
            line.substr(line.find_first_not_of(" \t")).compare(0, 1, "{") != 0 ||
            line.find_first_not_of(" \t", line.find('{') + 1) != std::string::npos)
            return bad(dname, static_cast<int>(j) + 1, "{ expected");
    } else {
        return bad(dname, static_cast<int>(j) + 1, "{ expected");
    }
    if (at != hw.size()) return bad(dname, static_cast<int>(j) + 1, "nothing may follow {");
    ++j;
    // the body
    std::vector<TextCol> cols;
    std::vector<Step> steps;
    TextInfix st;
    int nlines = 0; // _lines() given
    bool fixed = false, closed = false;
    for (; j < ls.size(); ++j) {
        if (getline(j)) continue;
        const int ln = static_cast<int>(j) + 1;
        std::vector<std::string> lw(static_cast<size_t>(maxmaxvar) * 3 + 8);
        int k = 0;
        if (textio_words(line, lw.data(), static_cast<int>(lw.size()), &k))
            return bad(dname, ln, "unmatched quote or bracket");
        lw.resize(static_cast<size_t>(k));
        if (lw[0] == "}") {
            if (k > 1) return bad(dname, ln, "nothing may follow }");
            closed = true;
            ++j;
            break;
        }
        if (infix) {
            if (int rc = textio_infix_words(lw, st, cols, true))
                return errorf(rc, "(%s line %d)\n", dname.c_str(), ln);
            continue;
        }
        size_t i = 0;
        std::string dn;
        int num = 0;
        while (i < lw.size() && directive(lw[i], &dn, &num)) {
            if (num < 1) return bad(dname, ln, (lw[i] + " invalid").c_str());
            fixed = true;
            if (dn == "_lines") {
                if (nlines || !cols.empty() || steps.size())
                    return bad(dname, ln, "_lines() must come first, once");
                nlines = num;
            } else if (dn == "_line") {
                if (nlines && num > nlines)
                    return bad(dname, ln, (lw[i] + " beyond the lines of an observation").c_str());
                steps.push_back({STEP_LINE, num - 1});
            } else if (dn == "_column") {
                steps.push_back({STEP_COLUMN, num - 1});
            } else if (dn == "_skip") {
                steps.push_back({STEP_SKIP, num});
            } else {
                return bad(dname, ln, (lw[i] + " unknown").c_str());
            }
            ++i;
        }
        if (i == lw.size()) continue;
        // [type] name [%fmt] ["label"]
        TextCol c;
        int code = textio_typecode(lw[i]);
        if (code) ++i;
        if (i >= lw.size()) return bad(dname, ln, "variable name expected");
        if (int rc = textio_checkname(lw[i], cols))
            return errorf(rc, "(%s line %d)\n", dname.c_str(), ln);
        c.name = lw[i++];
        if (i < lw.size() && lw[i][0] == '%') {
            bool istext;
            if (!inputformat(lw[i], &c.width, &istext))
                return bad(dname, ln, (lw[i] + " invalid input format").c_str());
            if (istext && code && !isstrtype(code))
                return bad(dname, ln, (c.name + ": a text format for a numeric variable").c_str());
            if (!istext && code && isstrtype(code))
                return bad(dname, ln, (c.name + ": a numeric format for a text variable").c_str());
            if (istext && !code) code = c.width <= 244 ? c.width : 244;
            fixed = true;
            ++i;
        }
        if (i < lw.size()) {
            if (!textio_unquote(lw[i], &c.label))
                return bad(dname, ln,
                           (lw[i] + " found where a quoted label or the end was expected").c_str());
            if (c.label.size() > 80) c.label.resize(80);
            ++i;
        }
        if (i < lw.size()) return bad(dname, ln, (lw[i] + ": unexpected").c_str());
        c.code = code ? code : KV_FLOAT;
        steps.push_back({STEP_VAR, static_cast<int>(cols.size())});
        cols.push_back(std::move(c));
        if (static_cast<int>(cols.size()) >= maxmaxvar) return error(900);
    }
    if (!closed) return errorf(198, "%s: the dictionary has no closing }\n", dname.c_str());
    if (infix && st.pending) return errorf(198, "%s: a type without a name\n", dname.c_str());
    if (cols.empty()) return errorf(102, "%s: no variables in the dictionary\n", dname.c_str());
    if (static_cast<int>(cols.size()) >= maxmaxvar) return error(900);
    if (nvar && !clear) return errtext(18, "you must start with an empty dataset or give clear\n");
    // the data: using() on the command, the dictionary's using, or the lines
    // after the closing brace
    std::string own;
    const std::string* data = &text;
    size_t start = j < ls.size() ? ls[j] : text.size();
    if (!dataname.empty() || !dictdata.empty()) {
        if (int rc = textio_readwhole(dataname.empty() ? dictdata : dataname, own)) return rc;
        data = &own;
        start = 0;
    }
    int64_t nobs = 0;
    if (infix) {
        if (int rc = textio_columns(cols, st.nlines, *data, start, &nobs)) return rc;
    } else if (!fixed) {
        if (int rc = textio_free(cols, *data, start, &nobs)) return rc;
    } else {
        int per = nlines ? nlines : 1;
        for (auto& s : steps)
            if (s.kind == STEP_LINE && s.arg + 1 > per) per = s.arg + 1;
        std::vector<size_t> dl;
        textio_lines(*data, start, dl);
        nobs = (static_cast<int64_t>(dl.size()) + per - 1) / per;
        for (int64_t o = 0; o < nobs; ++o) {
            int cur = 0;
            size_t pos = 0;
            const char* p;
            size_t len;
            textio_linetext(*data, dl, static_cast<size_t>(o * per), &p, &len);
            for (auto& s : steps) {
                switch (s.kind) {
                case STEP_LINE:
                    cur = s.arg;
                    pos = 0;
                    textio_linetext(*data, dl, static_cast<size_t>(o * per + cur), &p, &len);
                    break;
                case STEP_COLUMN: pos = static_cast<size_t>(s.arg); break;
                case STEP_SKIP: pos += static_cast<size_t>(s.arg); break;
                default: {
                    TextCol& c = cols[static_cast<size_t>(s.arg)];
                    if (c.width) {
                        textio_field(c, p, len, pos, pos + static_cast<size_t>(c.width));
                        pos += static_cast<size_t>(c.width);
                    } else {
                        freefield(c, p, len, &pos);
                    }
                }
                }
            }
            if ((o & 0xFFFF) == 0 && kvpollstd()) return 1;
        }
    }
    return textio_install(cols, nobs);
}

} // namespace korvu
