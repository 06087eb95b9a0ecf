#include "data/vars/vartab.h"

#include <cctype>
#include <cstdio>
#include <cstring>

#include "data/area/dataarea.h"
#include "kernel/errors/errors.h"
#include "kernel/macro/macro.h"
#include "kernel/parse/cmdparse.h"
#include "output/spout.h"

namespace korvu {

uint8_t korvu_varabbrev = 1;

int strhit(const char* prefix, const char* name) {
    while (*prefix && *prefix == *name) prefix++, name++;
    return *prefix == 0;
}

int sysfindvar(const char* name) {
    for (int v = 1; v <= nvar; v++)
        if (!strcmp(varname(v), name)) return v;
    return 0;
}

int sysfindvarfromend(const char* name) {
    for (int v = nvar; v >= 1; v--)
        if (!strcmp(varname(v), name)) return v;
    return 0;
}

int chkname(const char* name, int report) {
    size_t n = strlen(name);
    bool ok = n > 0 && n <= 32 && (isalpha(static_cast<unsigned char>(name[0])) || name[0] == '_');
    for (size_t i = 0; ok && i < n; i++)
        if (strchr("\\!@#$%^&*()-+=[]{}:;,'\"~<>?/|. ", name[i])) ok = false;
    if (ok) return 0;
    if (!report) return 198;
    if (!n) {
        return errtext(198, "nothing found where name expected\n");
    }
    return error2(1, name);
}

int chkreserved(const char* name) {
    static constexpr const char* reserved[] = {"_pred",  "_b",  "_n",   "_N",       "float",
                                               "double", "int", "long", "_uniform", "_coef",
                                               "_rc",    "_pi", "byte"};
    for (const char* r : reserved)
        if (!strcmp(r, name)) {
            return errorf(198, "%s invalid name (reserved word)\n", name);
        }
    return 0;
}

int korvu_findvar(const char* name, int mode, int noabbrev) {
    if (int rc = chkname(name, 1)) return -rc;
    if (nvar == 0) return (mode > 9 || mode == 0) ? 1 : -varnotfound(name);
    bool exactonly = mode == 0 || mode == 10;
    if (!korvu_varabbrev) noabbrev = 1;
    int hit = 0;
    bool ambiguous = false;
    for (int v = 1; v <= nvar; v++) {
        if (!strcmp(varname(v), name)) {
            if (mode == 10) return -error2(3, name);
            return v;
        }
        if (!exactonly && !noabbrev && strhit(name, varname(v))) {
            if (hit)
                ambiguous = true;
            else
                hit = v;
        }
    }
    if (ambiguous) return -error2(4, name);
    if (hit) return hit;
    if (mode > 9) return nvar + 1;
    return -varnotfound(name);
}

int findvarnoab(const char* name, int report) {
    int v = sysfindvar(name);
    if (v) return v;
    return report ? -varnotfound(name) : -111;
}

bool ispatexempt(int v) {
    return esamplename[0] && !strcmp(varname(v), esamplename);
}

int wildmatch(const char* p, const char* n) {
    if (!strcmp(p, n)) return 1;
    for (; *p; p++, n++) {
        if (*p == '*') {
            for (const char* t = n;; t++) {
                if (wildmatch(p + 1, t)) return 1;
                if (!*t) return 0;
            }
        }
        if (!*n || (*p != '?' && *p != *n)) return 0;
    }
    return *n == 0;
}

int genfindvar(const char* name) {
    if (!strchr(name, '~')) return korvu_findvar(name, 1, 0);
    if (strpbrk(name, "*?")) {
        return -errorf(198, "%s may not combine ~ and *-or-? notation\n", name);
    }
    char pat[40];
    snprintf(pat, sizeof pat, "%s", name);
    for (char* p = pat; *p; p++)
        if (*p == '~') *p = '*';
    int hit = 0;
    for (int v = 1; v <= nvar; v++) {
        if (ispatexempt(v)) continue;
        if (wildmatch(pat, varname(v))) {
            if (hit) return -error2(4, name);
            hit = v;
        }
    }
    return hit ? hit : -varnotfound(name);
}

static const char* deffmt(int code) {
    switch (code) {
    case KV_BYTE:
    case KV_INT: return "%8.0g";
    case KV_LONG: return "%12.0g";
    case KV_FLOAT: return "%9.0g";
    case KV_DOUBLE: return "%10.0g";
    }
    return nullptr;
}

int addvar(const char* name, int code) {
    if (strlen(name) > 32 || chkname(name, 0)) return error2(1, name);
    if (chkreserved(name)) return 198;
    if (!strncmp(name, "str", 3) && name[3] >= '1' && name[3] <= '9' &&
        strspn(name + 3, "0123456789") == strlen(name + 3)) {
        return errorf(198, "%s invalid variable name\n", name);
    }
    int v = korvu_findvar(name, 10, 1);
    if (v < 0) return -v;
    if (int rc = alcvar(code)) return error(rc);
    snprintf(varname(nvar), 33, "%s", name);
    if (const char* f = deffmt(code))
        snprintf(fmtname(nvar), 12, "%s", f);
    else if (snprintf(fmtname(nvar), 12, "%%%ds", code < 9 ? 9 : code) < 0)
        fmtname(nvar)[0] = 0;
    lblname(nvar)[0] = 0;
    return 0;
}

int addwrkvar(int code, int reserve) {
    if (reserve) {
        sysflag = 1;
        int rc = alcvar(KV_BYTE);
        sysflag = 0;
        if (rc) return -rc;
        nvar--;
        return 0;
    }
    char name[16];
    mktmpvn(name);
    sysflag = 1;
    int rc = addvar(name, code);
    sysflag = 0;
    return rc ? -rc : nvar;
}

// Variables other than `self` that the pattern (with ~ as *) matches.
static int othermatches(const char* pat, const char* self) {
    char p[40];
    snprintf(p, sizeof p, "%s", pat);
    for (char* c = p; *c; c++)
        if (*c == '~') *c = '*';
    int n = 0;
    for (int v = 1; v <= nvar; v++)
        if (strcmp(varname(v), self) && wildmatch(p, varname(v))) n++;
    return n;
}

char* abvar(const char* name, int width) {
    static char out[40];
    if (width < 5) width = 5;
    if (width > 32) width = 32;
    const int len = static_cast<int>(strlen(name));
    snprintf(out, sizeof out, "%s", name);
    if (len <= width) return out;
    // (1) trailing digits kept whole
    int nd = 0;
    while (nd < len && isdigit(static_cast<unsigned char>(name[len - 1 - nd]))) nd++;
    if (nd > 0 && nd < len && width - 1 - nd >= 1) {
        snprintf(out, sizeof out, "%.*s~%s", width - 1 - nd, name, name + len - nd);
        if (!othermatches(out, name)) return out;
    }
    // (2) front, ~, tail, the front shrinking
    for (int k = width - 2; k >= 1; k--) {
        snprintf(out, sizeof out, "%.*s~%s", k, name, name + len - (width - 1 - k));
        if (!othermatches(out, name)) return out;
    }
    // (3) a bare prefix that no other variable starts with
    snprintf(out, sizeof out, "%.*s", width, name);
    int n = 0;
    for (int v = 1; v <= nvar; v++)
        if (strcmp(varname(v), name) && strhit(out, varname(v))) n++;
    if (!n) return out;
    // (4) prefix and ~, (5) ~ and suffix
    snprintf(out, sizeof out, "%.*s~", width - 1, name);
    if (!othermatches(out, name)) return out;
    snprintf(out, sizeof out, "~%s", name + len - (width - 1));
    if (!othermatches(out, name)) return out;
    // (6) cut, marked by ..
    snprintf(out, sizeof out, "%.*s..", width - 2, name);
    return out;
}

} // namespace korvu
