// Helpers shared by the text-file commands.
#include <string>

#include "data/area/areahooks.h"
#include "data/area/dataarea.h"
#include "data/area/storage.h"
#include "data/expr/expr.h"
#include "data/io/textio.h"
#include "kernel/errors/errors.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"

namespace korvu {

std::string textio_rest() {
    std::string s = peektok_chr();
    static char empty[1] = {0}; // the tokenizer may write into its text
    empty[0] = 0;
    settok(empty);
    return s;
}

int textio_eval(const std::string& text, bool* isstr, double* num, std::string* str) {
    static ExpObj obj; // a compiled object is large: not on the stack
    if (int rc = compexp_text(&obj, text.data(), text.data() + text.size(), 3, 0)) return rc;
    int32_t s1 = nobs1, s2 = nobs2, ss1 = nobss1, ss2 = nobss2;
    nobs1 = nobss1 = 1;
    nobs2 = nobss2 = nobs;
    if (obj.result_kind == 1) {
        std::string buf(static_cast<size_t>(EXP_STRMAX) + 2, '\0');
        const char* s = sxeq(&obj, 1, buf.data());
        *str = s;
        *isstr = true;
    } else {
        *num = xeq(&obj, 1);
        *isstr = false;
    }
    nobs1 = s1, nobs2 = s2, nobss1 = ss1, nobss2 = ss2;
    return 0;
}

int textio_typecode(const std::string& w) {
    if (w == "byte") return KV_BYTE;
    if (w == "int") return KV_INT;
    if (w == "long") return KV_LONG;
    if (w == "float") return KV_FLOAT;
    if (w == "double") return KV_DOUBLE;
    if (w.size() > 3 && w.compare(0, 3, "str") == 0) {
        int n = 0;
        for (size_t i = 3; i < w.size(); ++i) {
            if (w[i] < '0' || w[i] > '9' || n > 1000) return 0;
            n = n * 10 + (w[i] - '0');
        }
        return n >= 1 && n <= 244 ? n : 0;
    }
    return 0;
}

void textio_post_r(const char* name, double v) {
    if (dahooks.post_r) dahooks.post_r(name, v);
}

int textio_words(const std::string& t, std::string* words, int max, int* n) {
    *n = 0;
    size_t i = 0;
    while (i < t.size()) {
        while (i < t.size() && (t[i] == ' ' || t[i] == '\t')) ++i;
        if (i >= t.size()) break;
        size_t b = i;
        int depth = 0;
        while (i < t.size()) {
            const char c = t[i];
            if (depth == 0 && (c == ' ' || c == '\t')) break;
            if (c == '`' && i + 1 < t.size() && t[i + 1] == '"') {
                // compound quotes nest
                int q = 0;
                for (; i < t.size(); ++i) {
                    if (t[i] == '`' && i + 1 < t.size() && t[i + 1] == '"') {
                        ++q, ++i;
                    } else if (t[i] == '"' && i + 1 < t.size() && t[i + 1] == '\'') {
                        --q, ++i;
                        if (q == 0) {
                            ++i;
                            break;
                        }
                    }
                }
                if (q) return 198;
                continue;
            }
            if (c == '"') {
                size_t e = t.find('"', i + 1);
                if (e == std::string::npos) return 198;
                i = e + 1;
                continue;
            }
            if (c == '(') ++depth;
            if (c == ')' && --depth < 0) return 198;
            ++i;
        }
        if (depth) return 198;
        if (*n >= max) return 130;
        words[(*n)++] = t.substr(b, i - b);
    }
    return 0;
}

bool textio_unquote(const std::string& w, std::string* out) {
    if (w.size() >= 2 && w.front() == '"' && w.back() == '"') {
        *out = w.substr(1, w.size() - 2);
        return true;
    }
    if (w.size() >= 4 && w[0] == '`' && w[1] == '"' && w[w.size() - 2] == '"' && w.back() == '\'') {
        *out = w.substr(2, w.size() - 4);
        return true;
    }
    return false;
}

int textio_varword(std::string x, int* pending, std::vector<std::string>* names, bool* typeonly) {
    names->clear();
    *typeonly = false;
    if (size_t par = x.find('('); par != std::string::npos && par > 0 && x.back() == ')') {
        const int c = textio_typecode(x.substr(0, par));
        if (!c || *pending) return errorf(198, "%s invalid\n", x.c_str());
        *pending = c;
        x = x.substr(par);
    }
    if (int c = textio_typecode(x)) {
        if (*pending) return errorf(198, "%s found where name expected\n", x.c_str());
        *pending = c;
        *typeonly = true;
        return 0;
    }
    if (x.front() == '(' && x.back() == ')') {
        std::string in[400];
        int k = 0;
        if (textio_words(x.substr(1, x.size() - 2), in, 400, &k)) return error(198);
        names->assign(in, in + k);
    } else {
        names->push_back(x);
    }
    return 0;
}

bool textio_starts_using(const std::string& rest) {
    std::string w[2];
    int n = 0;
    textio_words(rest, w, 2, &n);
    return n >= 1 && w[0] == "using";
}

} // namespace korvu
