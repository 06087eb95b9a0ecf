// Extended macro functions: `local x : fcn ...` and the in-line `:fcn' form.
#include <dirent.h>
#include <fnmatch.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/scratch.h"
#include "kernel/macro/macro.h"
#include "kernel/macro/macro_deps.h"
#include "kernel/macro/macro_internal.h"
#include "kernel/regex/regex.h"
#include "output/spout.h"

namespace korvu {

namespace {

int put(char* dst, const std::string& s) {
    if (s.size() > static_cast<size_t>(macrolen - 1)) return error(920);
    std::memcpy(dst, s.data(), s.size());
    dst[s.size()] = 0;
    return 0;
}

int hook(MacFcnHook which, const char* word, char* dst) {
    if (mac_fcn_hooks[which]) return mac_fcn_hooks[which](word, dst);
    std::string what = "extended macro function " + std::string(word);
    return mac_notyet(what.c_str());
}

// Elements of a list: words, simple strings and compound strings, the quotes
// kept. The same parsing serves word, piece and the list functions.
std::vector<std::string> elements(const char* p) {
    std::vector<std::string> out;
    for (;;) {
        while (*p == ' ') ++p;
        if (!*p) break;
        const char* q = p;
        if (p[0] == '`' && p[1] == '"') {
            int depth = 0;
            q = pcompoundquotes(const_cast<char*>(p) + 2, &depth);
        } else if (p[0] == '"') {
            q = std::strchr(p + 1, '"');
            q = q ? q + 1 : p + std::strlen(p);
        } else {
            while (*q && *q != ' ') ++q;
        }
        out.emplace_back(p, static_cast<size_t>(q - p));
        p = q;
    }
    return out;
}

std::string unquote(const std::string& e) {
    size_t n = e.size();
    if (n >= 4 && e[0] == '`' && e[1] == '"' && e[n - 2] == '"' && e[n - 1] == '\'')
        return e.substr(2, n - 4);
    if (n >= 2 && e[0] == '"' && e[n - 1] == '"') return e.substr(1, n - 2);
    if (n >= 1 && e[0] == '"') return e.substr(1);
    return e;
}

std::string join(const std::vector<std::string>& v) {
    std::string s;
    for (size_t i = 0; i < v.size(); ++i) {
        if (i) s += ' ';
        s += v[i];
    }
    return s;
}

// The text of the next token: a string's content untruncated, or a word.
std::string nexttext(const char* delims) {
    char* at = peektok_chr();
    if (at && (*at == '"' || (at[0] == '`' && at[1] == '"'))) {
        char *s, *e, *n;
        if (!parse_quoted_string(at, &s, &e, &n)) {
            std::string r(s, static_cast<size_t>(e - s));
            settok(n);
            return r;
        }
    }
    char* t = gettok(delims);
    return tokisstr(t) ? std::string(t + 1) : std::string(t);
}

std::string rest_trimmed() {
    const char* p = wheretok();
    while (*p == ' ') ++p;
    std::string s(p);
    while (!s.empty() && s.back() == ' ') s.pop_back();
    return s;
}

// `local name`, `global name` or a bare local name; the macro's key.
int listarg(std::string& key) {
    char* t = gettok(prsestd);
    bool loc = tokis(t, "local"), glob = tokis(t, "global");
    if (loc || glob) {
        bool paren = peektok_chr() && *peektok_chr() == '(';
        if (paren) gettok(prsestd);
        t = gettok(prsestd);
        if (!t[0] || tokisstr(t)) return error(198);
        key = (loc ? "_" : "") + std::string(t);
        if (paren && !tokis(gettok(prsestd), ")")) return error(198);
        return 0;
    }
    if (!t[0] || tokisstr(t)) return error(198);
    key = "_" + std::string(t);
    return 0;
}

std::vector<std::string> listof(const std::string& key) {
    const char* v = key.size() <= static_cast<size_t>(dm_namelen) ? macptr(key.c_str()) : nullptr;
    return elements(v ? v : "");
}

bool contains(const std::vector<std::string>& v, const std::string& e) {
    std::string k = unquote(e);
    for (auto& x : v)
        if (unquote(x) == k) return true;
    return false;
}

int fcn_word(char* dst) {
    char* t = gettok(prsestd);
    if (tokis(t, "count")) {
        return put(dst, std::to_string(elements(rest_trimmed().c_str()).size()));
    }
    double n;
    if (tokisstr(t) || cnvstoz(t, &n) || n != static_cast<long>(n)) return error(198);
    if (!tokis(gettok(prsestd), "of")) return error(198);
    std::vector<std::string> w = elements(rest_trimmed().c_str());
    if (n < 1 || n > static_cast<double>(w.size())) return put(dst, "");
    return put(dst, unquote(w[static_cast<size_t>(n) - 1]));
}

int fcn_piece(char* dst) {
    double np, nl;
    if (cnvstoz(gettok(prsenum), &np) || cnvstoz(gettok(prsenum), &nl) || np < 1 || nl < 1)
        return error(198);
    if (!tokis(gettok(prsestd), "of")) return error(198);
    std::string text = nexttext(prsestd);
    bool nobreak = false;
    char* t = gettok(prsestd);
    if (tokis(t, ",")) {
        t = gettok(prsestd);
        if (!cmdcmp(t, "nobreak", 3) || gettok(prsestd)[0]) return error(198);
        nobreak = true;
    } else if (t[0]) {
        return error(198);
    }
    size_t len = static_cast<size_t>(nl);
    std::vector<std::string> pieces;
    if (nobreak) {
        for (size_t i = 0; i < text.size(); i += len) pieces.push_back(text.substr(i, len));
    } else {
        std::string cur;
        size_t i = 0;
        while (i < text.size()) {
            while (i < text.size() && text[i] == ' ') ++i;
            size_t j = i;
            while (j < text.size() && text[j] != ' ') ++j;
            std::string w = text.substr(i, j - i);
            i = j;
            if (w.empty()) break;
            while (w.size() > len) { // a word longer than a piece is cut
                if (!cur.empty()) pieces.push_back(cur), cur.clear();
                pieces.push_back(w.substr(0, len));
                w = w.substr(len);
            }
            if (cur.empty())
                cur = w;
            else if (cur.size() + 1 + w.size() <= len)
                cur += " " + w;
            else
                pieces.push_back(cur), cur = w;
        }
        if (!cur.empty()) pieces.push_back(cur);
    }
    size_t k = static_cast<size_t>(np);
    return put(dst, k <= pieces.size() ? pieces[k - 1] : "");
}

int fcn_subinstr(char* dst) {
    char* t = gettok(prsestd);
    bool loc = tokis(t, "local"), glob = tokis(t, "global");
    if (!loc && !glob) return error(198);
    t = gettok(prsestd);
    if (!t[0] || tokisstr(t)) return error(198);
    std::string key = (loc ? "_" : "") + std::string(t);
    std::string from = nexttext(prsestd), to = nexttext(prsestd);
    bool all = false, word = false;
    std::string countkey;
    t = gettok(prsestd);
    if (tokis(t, ",")) {
        for (t = gettok(prsestd); t[0]; t = gettok(prsestd)) {
            if (tokis(t, "all"))
                all = true;
            else if (tokis(t, "word"))
                word = true;
            else if (cmdcmp(t, "count", 5)) {
                if (!tokis(gettok(prsestd), "(")) return error(198);
                t = gettok(prsestd);
                bool cl = tokis(t, "local"), cg = tokis(t, "global");
                if (!cl && !cg) return error(198);
                t = gettok(prsestd);
                if (!t[0] || tokisstr(t)) return error(198);
                countkey = (cl ? "_" : "") + std::string(t);
                if (!tokis(gettok(prsestd), ")")) return error(198);
            } else {
                return error(198);
            }
        }
    } else if (t[0]) {
        return error(198);
    }
    const char* v = key.size() <= static_cast<size_t>(dm_namelen) ? macptr(key.c_str()) : nullptr;
    std::string s = v ? v : "", out;
    long n = 0;
    size_t i = 0;
    while (i < s.size()) {
        bool hit = !from.empty() && s.compare(i, from.size(), from) == 0 && (all || n == 0);
        if (hit && word) {
            bool left = i == 0 || s[i - 1] == ' ';
            size_t e = i + from.size();
            hit = left && (e == s.size() || s[e] == ' ');
        }
        if (hit) {
            out += to;
            i += from.size();
            ++n;
        } else {
            out += s[i++];
        }
    }
    if (!countkey.empty()) {
        if (int rc = macresave(countkey.c_str(), std::to_string(n).c_str())) return rc;
    }
    return put(dst, out);
}

int fcn_dir(char* dst) {
    std::string dir = nexttext(prsefls);
    char* t = gettok(prsestd);
    int kind = tokis(t, "files") ? 0 : tokis(t, "dirs") ? 1 : tokis(t, "other") ? 2 : -1;
    if (kind < 0) return error(198);
    std::string pattern = nexttext(prsefls);
    bool nofail = false, respectcase = true;
    t = gettok(prsestd);
    if (tokis(t, ",")) {
        for (t = gettok(prsestd); t[0]; t = gettok(prsestd)) {
            if (tokis(t, "nofail"))
                nofail = true;
            else if (tokis(t, "fail"))
                nofail = false;
            else if (tokis(t, "respectcase"))
                respectcase = true;
            else
                return error(198);
        }
    } else if (t[0]) {
        return error(198);
    }
    if (dir.empty()) dir = ".";
    DIR* d = opendir(dir.c_str());
    if (!d) return errorf(601, "directory %s not found\n", dir.c_str());
    std::vector<std::string> names;
    while (dirent* e = readdir(d)) {
        if (!std::strcmp(e->d_name, ".") || !std::strcmp(e->d_name, "..")) continue;
        if (fnmatch(pattern.c_str(), e->d_name, respectcase ? 0 : FNM_CASEFOLD)) continue;
        struct stat st;
        std::string path = dir + "/" + e->d_name;
        if (stat(path.c_str(), &st)) continue;
        int k = S_ISREG(st.st_mode) ? 0 : S_ISDIR(st.st_mode) ? 1 : 2;
        if (k == kind) names.push_back(e->d_name);
    }
    closedir(d);
    std::sort(names.begin(), names.end());
    std::string out;
    for (auto& n : names) {
        std::string q = "\"" + n + "\"";
        if (out.size() + q.size() + 1 > static_cast<size_t>(macrolen - 1)) {
            if (nofail) break;
            return errtext(134, "too many filenames\n");
        }
        if (!out.empty()) out += ' ';
        out += q;
    }
    return put(dst, out);
}

int fcn_regex(int which, char* dst) {
    if (which == 2) {
        double n;
        if (cnvstoz(gettok(prsenum), &n) || n < 0) return error(198);
        std::string s;
        if (regexs(static_cast<int>(n), s)) {
            return errtext(198, "a regular expression match function must be executed prior to "
                                "retrieving a subexpression\n");
        }
        return put(dst, s);
    }
    std::string s = nexttext(prsestd), re = nexttext(prsestd);
    if (which == 0) {
        int r = regexm(s.c_str(), re.c_str());
        if (r < 0) return errorf(198, "regexp: %s\n", regexerror());
        return put(dst, r ? "1" : "0");
    }
    std::string repl = nexttext(prsestd);
    int count = 1;
    char* t = gettok(prsenum);
    if (t[0]) {
        double c;
        if (tokis(t, "."))
            count = -1;
        else if (cnvstoz(t, &c) || c < 0 || c != static_cast<int>(c))
            return error(198);
        else
            count = static_cast<int>(c);
    }
    if (count == 0) {
        spoutlev(1, "Setting count to zero prevents all substitutions.  Original string will be "
                    "returned.\n");
    }
    std::string out;
    if (regexr(s.c_str(), re.c_str(), repl.c_str(), out, count))
        return errorf(198, "regexp: %s\n", regexerror());
    return put(dst, out);
}

int fcn_length(char* dst) {
    char* t = gettok(prsestd);
    bool loc = tokis(t, "local"), glob = tokis(t, "global");
    if (!loc && !glob) return error(198);
    t = gettok(prsestd);
    if (!t[0] || tokisstr(t)) return error(198);
    std::string key = (loc ? "_" : "") + std::string(t);
    const char* v = key.size() <= static_cast<size_t>(dm_namelen) ? macptr(key.c_str()) : nullptr;
    return put(dst, std::to_string(v ? std::strlen(v) : 0));
}

int fcn_all(char* dst) {
    char* t = gettok(prsestd);
    if (tokis(t, "globals")) {
        std::string pattern = peektok_chr() && *peektok_chr() ? nexttext(prsestd) : "*";
        std::vector<std::string> names;
        char name[dm_namelen + 1];
        for (void* v = dmnext(nullptr, name, DM_GMAC, nullptr); v;
             v = dmnext(v, name, DM_GMAC, nullptr))
            if (!fnmatch(pattern.c_str(), name, 0)) names.push_back(name);
        std::sort(names.begin(), names.end());
        return put(dst, join(names));
    }
    ungettok();
    return hook(MXF_ALLSCALMAT, "all", dst);
}

} // namespace

int maclistfcn(char* dst) {
    char* t = gettok(prsestd);
    std::string w = t;
    if (w == "uniq" || w == "dups" || w == "sort" || w == "sizeof" || cmdcmp(t, "retokenize", 5) ||
        w == "clean") {
        std::string key;
        if (int rc = listarg(key)) return rc;
        if (gettok(prsestd)[0]) return error(198);
        std::vector<std::string> a = listof(key), out;
        if (w == "uniq") {
            for (auto& e : a)
                if (!contains(out, e)) out.push_back(e);
        } else if (w == "dups") {
            std::vector<std::string> seen;
            for (auto& e : a) {
                if (contains(seen, e))
                    out.push_back(e);
                else
                    seen.push_back(e);
            }
        } else if (w == "sort") {
            out = a;
            std::stable_sort(out.begin(), out.end());
        } else if (w == "sizeof") {
            return put(dst, std::to_string(a.size()));
        } else if (w == "clean") {
            for (auto& e : a) {
                std::string u = unquote(e);
                if (u.find(' ') == std::string::npos && u.find('"') == std::string::npos &&
                    !u.empty())
                    out.push_back(u);
                else if (u.find('"') == std::string::npos)
                    out.push_back("\"" + u + "\"");
                else
                    out.push_back("`\"" + u + "\"'");
            }
        } else {
            out = a;
        }
        std::string s = join(out);
        if (s.size() > static_cast<size_t>(macrolen - 1)) return error(909);
        return put(dst, s);
    }
    if (w == "posof") {
        std::string text = nexttext(prsestd);
        if (!tokis(gettok(prsestd), "in")) return error(198);
        std::string key;
        if (int rc = listarg(key)) return rc;
        std::vector<std::string> a = listof(key);
        for (size_t i = 0; i < a.size(); ++i)
            if (unquote(a[i]) == text) return put(dst, std::to_string(i + 1));
        return put(dst, "0");
    }
    ungettok();
    std::string ka, kb;
    if (int rc = listarg(ka)) return rc;
    t = gettok(prsestd);
    std::string op = t;
    if (op == "==" && peektok_chr() && *peektok_chr() == '=' && wheretok()[0] == '=') {
        gettok(prsestd);
        op = "===";
    }
    if (op != "|" && op != "&" && op != "-" && op != "in" && op != "==" && op != "===")
        return error(198);
    if (int rc = listarg(kb)) return rc;
    if (gettok(prsestd)[0]) return error(198);
    std::vector<std::string> a = listof(ka), b = listof(kb), out;
    if (op == "|") {
        out = a;
        for (auto& e : b)
            if (!contains(out, e)) out.push_back(e);
    } else if (op == "&") {
        for (auto& e : a)
            if (contains(b, e) && !contains(out, e)) out.push_back(e);
    } else if (op == "-") {
        for (auto& e : a)
            if (!contains(b, e)) out.push_back(e);
    } else if (op == "in") {
        for (auto& e : a)
            if (!contains(b, e)) return put(dst, "0");
        return put(dst, "1");
    } else if (op == "==") {
        for (auto& e : a)
            if (!contains(b, e)) return put(dst, "0");
        for (auto& e : b)
            if (!contains(a, e)) return put(dst, "0");
        return put(dst, "1");
    } else {
        return put(dst, a == b ? "1" : "0");
    }
    std::string s = join(out);
    if (s.size() > static_cast<size_t>(macrolen - 1)) return error(909);
    return put(dst, s);
}

int macexfcn(char* dst) {
    dst[0] = 0;
    char* t = gettok(prsestd);
    std::string w = t;
    const char* c = w.c_str();
    if (tokisstr(t)) return notalow(c);
    if (cmdcmp(c, "type", 1)) return hook(MXF_TYPE, c, dst);
    if (cmdcmp(c, "format", 1)) return hook(MXF_FORMAT, c, dst);
    if (cmdcmp(c, "value", 3)) return hook(MXF_VALUELABEL, c, dst);
    if (cmdcmp(c, "variable", 3)) return hook(MXF_VARLABEL, c, dst);
    if (cmdcmp(c, "environment", 3)) {
        t = gettok(prsefls);
        if (!t[0]) return error(198);
        const char* v = std::getenv(tokisstr(t) ? t + 1 : t);
        std::string s = v ? v : "";
        if (s.size() > static_cast<size_t>(macrolen - 1))
            s.resize(static_cast<size_t>(macrolen - 1));
        return put(dst, s);
    }
    if (cmdcmp(c, "tempvar", 5)) return mktmpvn(dst), 0;
    if (cmdcmp(c, "tempfile", 5)) {
        size_t room = static_cast<size_t>(macrolen) < FNLEN ? static_cast<size_t>(macrolen) : FNLEN;
        return mktmpfn(dst, room) ? error(914) : 0;
    }
    for (const char* m : {"rownames", "colnames", "roweq", "coleq", "rowfullnames", "colfullnames"})
        if (cmdcmp(c, m, 4)) return hook(MXF_MATNAMES, m, dst);
    for (const char* m : {"rowsof", "colsof", "rownumb", "colnumb"})
        if (w == m) return hook(MXF_MATNAMES, m, dst);
    if (cmdcmp(c, "sortedby", 4)) return hook(MXF_SORTEDBY, c, dst);
    if (cmdcmp(c, "display", 2)) return hook(MXF_DISPLAY, c, dst);
    if (cmdcmp(c, "word", 4)) return fcn_word(dst);
    if (cmdcmp(c, "char", 4)) return hook(MXF_CHAR, c, dst);
    if (cmdcmp(c, "label", 3)) return hook(MXF_LABEL, c, dst);
    if (cmdcmp(c, "regexmatch", 5)) return fcn_regex(0, dst);
    if (cmdcmp(c, "regexreplace", 6)) return fcn_regex(1, dst);
    if (cmdcmp(c, "regexsubexp", 6)) return fcn_regex(2, dst);
    if (cmdcmp(c, "list", 4)) return maclistfcn(dst);
    if (cmdcmp(c, "set", 3)) return hook(MXF_SET, c, dst);
    if (cmdcmp(c, "log", 3)) return hook(MXF_LOG, c, dst);
    if (cmdcmp(c, "subinstr", 8)) return fcn_subinstr(dst);
    if (cmdcmp(c, "sysdir", 6)) return hook(MXF_SYSDIR, c, dst);
    if (w == "piece") return fcn_piece(dst);
    if (w == "data") return hook(MXF_DATA, c, dst);
    if (w == "dir") return fcn_dir(dst);
    if (w == "adosubdir") {
        std::string f = nexttext(prsefls);
        const char* base = std::strrchr(f.c_str(), '/');
        base = base ? base + 1 : f.c_str();
        unsigned char ch = static_cast<unsigned char>(base[0]);
        char s[2] = {static_cast<char>(std::isalpha(ch) ? std::tolower(ch) : '_'), 0};
        return put(dst, s);
    }
    if (w == "_length" || w == "length") return fcn_length(dst);
    if (w == "properties") return hook(MXF_PROPERTIES, c, dst);
    if (w == "pwd") {
        char buf[4096];
        return put(dst, getcwd(buf, sizeof buf) ? buf : "");
    }
    if (w == "dirsep") return put(dst, "/");
    if (w == "tsnorm") return hook(MXF_TSNORM, c, dst);
    if (w == "r" || w == "e" || w == "s" || w == "c") return hook(MXF_RESULTS, c, dst);
    if (w == "serset") return hook(MXF_SERSET, c, dst);
    if (w == "permname") return hook(MXF_PERMNAME, c, dst);
    if (w == "constraint") return hook(MXF_CONSTRAINT, c, dst);
    if (w == "all") return fcn_all(dst);
    return notalow(c);
}

int extended_xpand(const char* text, char* dst) {
    TokState ts;
    CmdState cs;
    borrow_gettok(&ts);
    save_cmd_state(&cs);
    cmdinit();
    std::string copy(text);
    settok(copy.data());
    int rc = macexfcn(dst);
    if (rc) dst[0] = 0;
    restore_cmd_state(&cs);
    return_gettok(&ts);
    return rc;
}

} // namespace korvu
