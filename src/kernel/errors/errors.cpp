#include "kernel/errors/errors.h"

#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

#include "data/area/dataarea.h"
#include "kernel/loop/limits.h"
#include "kernel/loop/loop.h"
#include "kernel/loop/scratch.h"
#include "kernel/parse/cmdparse.h"
#include "output/spout.h"

namespace korvu {

int32_t globalrc = 0, captrc = 0;
uint8_t error_style = 1;

// Words shared by many messages, by number.
static constexpr const char* msgtab[] = {
    "too many ",             // 0
    "variables specified\n", // 1
    "too few ",              // 2
    "invalid",               // 3
    "not found",             // 4
    "syntax",                // 5
    "values\n",              // 6
    "numeric",               // 7
    "string",                // 8
    "not possible with ",    // 9
    " variable\n",           // 10
    "%format",               // 11
    "categories\n",          // 12
    "variables or values",   // 13
    "macros\n",              // 14
    "by variables",          // 15
    "options",               // 16
    "last estimates",        // 17
    "last test",             // 18
};
static constexpr int NMSG = sizeof msgtab / sizeof msgtab[0];

char* loadmsg(char* dst, int i) {
    const char* s = i >= 0 && i < NMSG ? msgtab[i] : "nothing";
    copytext(dst, MSGLEN, s);
    return dst;
}

// Plain messages: a code and its whole text.
struct ErrRow {
    int16_t code;
    const char* text;
};
static constexpr ErrRow errtab[] = {
    {2, "connection timed out -- see help {help r(2)} for troubleshooting\n"},
    {5, "not sorted\n"},
    {18, "you must start with an empty dataset\n"},
    {102, "too few variables specified\n"},
    {103, "too many variables specified\n"},
    {104, "nothing to input\n"},
    {107, "not possible with numeric variable\n"},
    {108, "not possible with string variable\n"},
    {109, "type mismatch\n"},
    {111, "no variables defined\n"},
    {119, "statement out of context\n"},
    {120, "invalid %format\n"},
    {121, "invalid numlist\n"},
    {122, "invalid numlist has too few elements\n"},
    {123, "invalid numlist has too many elements\n"},
    {124, "invalid numlist has elements out of order\n"},
    {125, "invalid numlist has elements outside of allowed range\n"},
    {126, "invalid numlist has noninteger elements\n"},
    {127, "invalid numlist has missing values\n"},
    {130, "expression too long\n"},
    {131, "not possible with test\n"},
    {134, "too many values\n"},
    {135, "not possible with weighted data\n"},
    {140, "repeated categorical variable in term\n"},
    {141, "repeated term\n"},
    {142, "attempt to classify extraneous variable\n"},
    {143, "variable left unclassified\n"},
    {144, "variable classified inconsistently\n"},
    {145, "term contains more than 8 variables\n"},
    {147, "term not in model\n"},
    {148, "too few categories\n"},
    {149, "too many categories\n"},
    {151, "non r-class program may not set r()\n"},
    {152, "non e-class program may not set e()\n"},
    {153, "non s-class program may not set s()\n"},
    {161, "ado-file has commands outside of program define ... end\n"},
    {162, "ado-file does not define command\n"},
    {181, "may not label strings\n"},
    {184, "may not be combined\n"},
    {190, "request may not be combined with by\n"},
    {191, "request may not be combined with by() option\n"},
    {196, "could not restore sort order because variables were dropped\n"},
    {197, "invalid syntax\n"},
    {198, "invalid syntax\n"},
    {199, "unrecognized command\n"},
    {304, "ml model not found\n"},
    {305, "ml model not found\n"},
    {310, "not possible because object(s) in use\n"},
    {321, "requested action not valid after most recent estimation command\n"},
    {322, "something that should be true of your estimation results is not\n"},
    {401, "may not use noninteger frequency weights\n"},
    {402, "negative weights encountered\n"},
    {403, "may not specify norobust with pweights\n"},
    {404, "not possible with pweighted data\n"},
    {406, "not possible with analytic weights\n"},
    {407, "weights must be the same for all observations in a group\n"},
    {411, "nonpositive values encountered\n"},
    {412, "redundant or inconsistent constraints\n"},
    {421, "could not determine between-subject error term; use bse() option\n"},
    {422, "could not determine between-subject basic unit; use bseunit() option\n"},
    {430, "convergence not achieved\n"},
    {450, "0/1 variable required\n"},
    {451, "invalid values for time variable\n"},
    {459, "something that should be true of your data is not\n"},
    {460, "fpc must be >= 0\n"},
    {461, "fpc for all observations within a stratum must be the same\n"},
    {462, "fpc must be <= 1 if a rate, or >= no. sampled units per stratum if unit totals\n"},
    {463, "sum of weights equals zero\n"},
    {464, "poststratum weights must be constant within poststrata\n"},
    {465, "poststratum weights must be >= 0\n"},
    {466, "standardization weights must be constant within standard strata\n"},
    {467, "standardization weights must be >= 0\n"},
    {471, "esample() invalid\n"},
    {481, "equation/system not identified\n"},
    {501, "matrix operation not found\n"},
    {503, "conformability error\n"},
    {504, "matrix has missing values\n"},
    {505, "matrix not symmetric\n"},
    {506, "matrix not positive definite\n"},
    {507, "name conflict\n"},
    {508, "matrix has zero values on diagonal\n"},
    {509, "matrix operators that return matrices not allowed in this context\n"},
    {604, "log file already open\n"},
    {606, "no log file open\n"},
    {607, "no cmdlog file open\n"},
    {611, "record too long\n"},
    {612, "unexpected end of file\n"},
    {613, "file does not contain dictionary\n"},
    {614, "dictionary invalid\n"},
    {615, "cannot determine separator -- use tab or comma option\n"},
    {616, "wrong number of values in checksum file\n"},
    {621, "already preserved\n"},
    {622, "nothing to restore\n"},
    {631, "host not found\n"},
    {632, "web filename not supported in this context\n"},
    {633, "may not write files over Internet\n"},
    {639, "file transmission error (checksums do not match)\n"},
    {640, "package file too long\n"},
    {641, "package file invalid\n"},
    {651, "may not seek past end of file\n"},
    {660, "proxy host not found\n"},
    {662, "proxy server refused request to send\n"},
    {663, "remote connection to proxy failed -- see help {help r(663)} for troubleshooting\n"},
    {665, "could not set socket nonblocking\n"},
    {667, "wrong version winsock.dll\n"},
    {668, "could not find a valid winsock.dll\n"},
    {669, "invalid URL\n"},
    {670, "invalid network port number\n"},
    {671, "unknown network protocol\n"},
    {672, "server refused to send file\n"},
    {673, "authorization required by server\n"},
    {674, "unexpected response from server\n"},
    {675, "server reported server error\n"},
    {676, "server refused request to send\n"},
    {677, "remote connection failed -- see help {help r(677)} for troubleshooting\n"},
    {678, "could not open local network socket\n"},
    {681, "too many open files\n"},
    {682, "could not connect to odbc dsn\n"},
    {683, "could not fetch variable in odbc table\n"},
    {691, "I/O error\n"},
    {694, "could not rename file\n"},
    {695, "could not copy file\n"},
    {702, "op. sys. refused to start new process\n"},
    {703, "op. sys. refused to open pipe\n"},
    {920, "too many macros\n"},
    {1000, "system limit exceeded - see manual\n"},
    {1001, "too many values\n"},
    {1002, "too many by variables"},
    {1003, "too many options"},
    {1004, "command too long\n"},
    {1400, "numerical overflow\n"},
    {3000, "Lumo compile-time error\n"},
    {4000, "class system limit exceeded\n"},
    {4001, "class-system reference out of range\n"},
    {4002, "class-system reference not defined\n"},
    {4003, "invalid class-system reference\n"},
    {4005, "invalid type usage\n"},
    {4006, "invalid attribute type\n"},
    {4007, "no current class context\n"},
    {4008, "too many class keys\n"},
    {4009, "invalid class reference or reference found where not expected\n"},
    {4010, "class key not found\n"},
    {4011, "name too long\n"},
    {4012, "name not found\n"},
    {4013, "not a class type\n"},
    {4014, "not a class\n"},
    {4015, "class types are not the same\n"},
    {4017, "name already declared in current class\n"},
    {4018, "class type not found\n"},
    {4019, "source and target types are not compatible\n"},
    {4020, "not an array\n"},
    {4022, "no active class\n"},
    {4023, "class member function not found\n"},
    {4024, "creators new, clone, clone1, copy, and reference may not be combined\n with super\n"},
    {4025, "clone creator may only be used with classes\n"},
    {4026, "rvalue invalid\n"},
    {4027, "incompatible types\n"},
    {4028, "target of assigment no longer available\n"},
    {4029, "invalid array reference\n"},
    {4030, "invalid array intializer\n"},
    {4031, "already exists\n"},
    {4050, "class system failure\n"},
    {4051, "class context out of range\n"},
    {4052, "class element too large to store\n"},
    {4099, "system failure in .class files\n"},
    {9196, "could not restore sort index -- system header not found\n"},
};

// Internal codes: message, level and the public code returned.
struct InternalRow {
    int16_t code;
    uint8_t level;
    int16_t returned;
    const char* text;
};
static constexpr InternalRow internaltab[] = {
    {5101, 3, 101, "iweights not allowed with robust\n"},
    {6101, 3, 101, "time-series operators not allowed\n"},
    {7198, 3, 198, "multiple by's not allowed\n"},
    {7199, 3, 198, "file name too long\n"},
    {8001, 1, 0, "irrelevant under Unix\n"},
    {8002, 1, 0, "request ignored due to batch mode\n"},
    {8005, 1, 0, "note: not possible in Korvu(console)\n"},
};

static const char* findrow(int code) {
    for (const ErrRow& r : errtab)
        if (r.code == code) return r.text;
    return nullptr;
}

// Messages that may hold markup (help links) go through the engine; the rest
// are plain.
static void say(const char* text) {
    if (strchr(text, '{'))
        spoutptl(text);
    else
        spout21(text);
}

static int errormsg(int code) {
    if (dataarea_msg(code)) return code;
    switch (code) {
    case 146:
        spout21("too many variables or values");
        if (matsize < 11000) {
            spout21(" (matsize too small)\n");
            spoutptl("{p 4 4}\nYou can increase matsize using the\n");
            spoutptl("{cmd:set matsize} command; see help {help matsize}.\n{p_end}\n");
        } else {
            spout21("\n");
        }
        return code;
    case 301: return error2(5, "last estimates");
    case 302: return error2(5, "last test");
    case 908:
        spout21("matsize too small\n");
        spoutptl("{p 4 4}\n");
        spoutptlf("You have attempted to create a matrix with more than %d\n", matsize);
        spoutptlf("rows or columns or to fit a model with more than %d\n", matsize);
        spoutptl("variables plus ancillary parameters.\n");
        spoutptl("You need to increase matsize using the\n");
        spoutptl("{cmd:set matsize} command; see help {help matsize}.\n{p_end}\n");
        return code;
    case 2000:
    case 2001:
        if (byvar || in_byable_ado) c_outlev = 1;
        spout21(code == 2000 ? "no observations\n" : "insufficient observations\n");
        return code == 2000 ? 0 : 2001;
    case 7196: invalid("attempt to modify label"); return 180;
    case 7197: return invalid("file specification");
    }
    for (const InternalRow& r : internaltab)
        if (r.code == code) {
            c_outlev = r.level;
            say(r.text);
            return r.returned;
        }
    if (const char* t = findrow(code)) {
        say(t);
        if (code == 1002 || code == 1003) spout21("\n");
        return code;
    }
    if (code >= 3001 && code <= 3999) spout21("Lumo run-time error\n");
    return code;
}

// Text at the error level, the caller's level kept; in the error style a
// pending paragraph is closed first, as for the messages of the table.
static void errsend(const char* text, bool markup) {
    uint8_t saved = c_outlev;
    c_outlev = 3;
    if (error_style) spoutsetptagweak();
    if (markup) {
        spout_setcoloroflev();
        spoutptl(text);
    } else {
        spout21(text);
    }
    c_outlev = saved;
}

static std::string vformat(const char* fmt, va_list ap) {
    va_list ap2;
    va_copy(ap2, ap);
    int n = std::vsnprintf(nullptr, 0, fmt, ap);
    std::string text(n > 0 ? static_cast<size_t>(n) : 0, '\0');
    if (n > 0) std::vsnprintf(text.data(), text.size() + 1, fmt, ap2);
    va_end(ap2);
    return text;
}

void errsay(const char* text) {
    errsend(text, false);
}

void errsayf(const char* fmt, ...) {
    va_list ap;
    va_start(ap, fmt);
    std::string text = vformat(fmt, ap);
    va_end(ap);
    errsend(text.c_str(), false);
}

int errtext(int code, const char* text) {
    errsend(text, false);
    return code;
}

int errptl(int code, const char* text) {
    errsend(text, true);
    return code;
}

int errorf(int code, const char* fmt, ...) {
    va_list ap;
    va_start(ap, fmt);
    std::string text = vformat(fmt, ap);
    va_end(ap);
    return errtext(code, text.c_str());
}

int error(int code) {
    if (code == 0) return 0;
    uint8_t saved = c_outlev;
    if (error_style) {
        c_outlev = 3;
        spoutsetptagweak();
    }
    int rc = errormsg(code);
    c_outlev = saved;
    return rc;
}

static int level3(const char* text) {
    errsay(text);
    return 0;
}

int invalid(const char* what) {
    uint8_t saved = c_outlev;
    c_outlev = 3;
    spoutsetptagweak();
    spout21("invalid ");
    spout21(what);
    spout21("\n");
    c_outlev = saved;
    return 198;
}

int required(const char* what) {
    char buf[256];
    snprintf(buf, sizeof buf, "%s required\n", what);
    level3(buf);
    return 100;
}

int notalow(const char* what) {
    char buf[256];
    snprintf(buf, sizeof buf, "%s not allowed\n", what);
    level3(buf);
    return 101;
}

int error2(int kind, const char* name) {
    char buf[300];
    switch (kind) {
    case 1: snprintf(buf, sizeof buf, "%s ", name), level3(buf); return invalid("name");
    case 2: snprintf(buf, sizeof buf, "%s ", name), level3(buf); return invalid("varname");
    case 3: snprintf(buf, sizeof buf, "%s already defined\n", name), level3(buf); return 110;
    case 4: snprintf(buf, sizeof buf, "%s ambiguous abbreviation\n", name), level3(buf); return 111;
    case 5: snprintf(buf, sizeof buf, "%s not found\n", name), level3(buf); return 111;
    case 6: snprintf(buf, sizeof buf, "%s not labeled\n", name), level3(buf); return 182;
    }
    return error(9202);
}

int error2part(const char* prefix, int code, int flag) {
    if (!prefix || !*prefix) return error(code);
    uint8_t saved = c_outlev;
    c_outlev = 3;
    spoutsetptagweak();
    spoutptl("{p 0 4}\n");
    spout21(prefix);
    uint8_t style = error_style;
    error_style = 0;
    int rc = error(code);
    error_style = style;
    spoutptl("{p_end}\n");
    c_outlev = saved;
    return rc;
}

int errornumlist(int code, int isnumber) {
    if (code < 121 || code > 127) return 0;
    if (!isnumber) return error(code);
    static constexpr const char* single[] = {
        "invalid number\n",
        "too few numbers\n",
        "too many numbers\n",
        "numbers out of order\n",
        "number out of allowed range\n",
        "number must be an integer\n",
        "missing value not allowed\n",
    };
    level3(single[code - 121]);
    return code;
}

static int notfound(const char* what, const char* x) {
    char buf[300];
    if (what)
        snprintf(buf, sizeof buf, "%s %s not found\n", what, x);
    else
        snprintf(buf, sizeof buf, "%s not found\n", x);
    level3(buf);
    return 111;
}

int gnrnotfound(const char* x) {
    return notfound(nullptr, x);
}
int varnotfound(const char* x) {
    return notfound("variable", x);
}
int matnotfound(const char* x) {
    return notfound("matrix", x);
}
int regrnotfound(const char* x) {
    return notfound("regressor", x);
}
int eqnotfound(const char* x) {
    return notfound("equation", x);
}

int macnotfound(const char* x) {
    char buf[300];
    if (x[0] == '_')
        snprintf(buf, sizeof buf, "local macro `%s' not found\n", x + 1);
    else
        snprintf(buf, sizeof buf, "global macro $%s not found\n", x);
    level3(buf);
    return 111;
}

int veqnonf(const char* x) {
    char buf[300];
    if (x && *x)
        snprintf(buf, sizeof buf, "equation %s not found\n", x);
    else
        snprintf(buf, sizeof buf, "equation not found\n");
    level3(buf);
    return 303;
}

static int rcpmsg(const char* op, const char* words, int code) {
    char buf[400];
    snprintf(buf, sizeof buf, "%s%s%s", op, strlen(op) > 29 ? "\n" : ":  ", words);
    level3(buf);
    return code;
}

int rcptoolong(const char* op) {
    return rcpmsg(op, "operator too long\n", 1000);
}
int rcpinvalid(const char* op) {
    return rcpmsg(op, "operator invalid\n", 198);
}
int rcpdtoobig(const char* op) {
    return rcpmsg(op, "operator invalid:  D20 is maximum allowed difference\n", 198);
}

static void experrtext(const char* t, int q) {
    if (!t || !*t) {
        spout21("nothing");
        return;
    }
    char buf[40];
    size_t n = strlen(t);
    if (n >= 21) {
        snprintf(buf, sizeof buf, "%.19s...%s", t, t + n - 3);
        t = buf;
    }
    if (q) spout21("'");
    spout21(t);
    if (q) spout21("'");
}

int experr(const char* found, int q1, const char* expected, int q2) {
    uint8_t saved = c_outlev;
    c_outlev = 3;
    spoutsetptagweak();
    spoutptl("{p 0 4}\n");
    experrtext(found, q1);
    spout21(" found where ");
    experrtext(expected, q2);
    spout21(" expected\n");
    spoutptl("{p_end}\n");
    c_outlev = saved;
    return 198;
}

int unmatchedquote() {
    level3("unmatched quote\n");
    return 198;
}
int unbalanced_quotes() {
    level3("quotes unbalanced\n");
    return 198;
}
int braceerror(int isopen) {
    char buf[120];
    snprintf(buf, sizeof buf, "program error:  code follows on the same line as %s brace\n",
             isopen ? "open" : "close");
    level3(buf);
    return 198;
}
int nomatchbrace() {
    level3("program error:  matching close brace not found\n");
    return 198;
}
int noobsnoerr() {
    uint8_t saved = c_outlev;
    c_outlev = 1;
    spout21("no observations\n");
    c_outlev = saved;
    return 0;
}

int fierr(int code, const char* name) {
    uint8_t saved = c_outlev;
    c_outlev = code == 697 || code == 698 ? 1 : 3;
    if (c_outlev == 3) spoutsetptagweak();
    char buf[700];
    const char* n = name && *name ? name : nullptr;
    switch (code) {
    case 697:
        snprintf(buf, sizeof buf, "file %s saved\n", n ? n : "");
        spout21(buf);
        break;
    case 698:
        snprintf(buf, sizeof buf, "(note: file %s not found)\n", n ? n : "");
        spout21(buf);
        break;
    case 699: spout21("insufficient disk space\n"); break;
    default: {
        const char* words = nullptr;
        switch (code) {
        case 601: words = "not found"; break;
        case 602: words = "already exists"; break;
        case 603: words = "could not be opened"; break;
        case 608: words = "is read-only; cannot be modified or erased"; break;
        case 609: words = "xp format"; break;
        case 610: words = "not Korvu format"; break;
        case 661: words = "not found"; break;
        case 688: words = "is corrupt"; break;
        case 692: words = "I/O error on read"; break;
        case 693: words = "I/O error on write"; break;
        }
        if (!words) {
            snprintf(buf, sizeof buf, "error %d\n", code);
            spout21(buf);
            break;
        }
        spoutptl("{p 0 4}\n");
        if (code == 661) spout21("host or ");
        spout21("file ");
        if (n) {
            spout21(n);
            spout21("\n");
        }
        spout21(words);
        spoutptl("\n{p_end}\n");
    }
    }
    c_outlev = saved;
    return code;
}

int extended_error(double value) {
    if (std::isnan(value) || value >= 1e300) value = 0;
    long code = static_cast<long>(value);
    if (code == 0) return 0;
    if (code > 100000) code = 100000;
    uint8_t saved = c_outlev;
    c_outlev = 3;
    int c = static_cast<int>(code);
    switch (c) {
    case 303: veqnonf(nullptr); break;
    case 950: level3("insufficient memory\n"); break;
    case 100:
    case 101:
    case 110:
    case 111:
    case 132:
    case 133: error(198); break;
    case 106: error(109); break;
    case 170: level3("unable to chdir\n"); break;
    case 180: error(7196); break;
    case 182: error2(6, ""); break;
    case 601:
    case 602:
    case 603:
    case 608:
    case 609:
    case 610:
    case 688:
    case 692:
    case 693:
    case 699: fierr(c, nullptr); break;
    case 2000:
    case 2001:
        if (byvar && in_byable_ado) {
            error(c);
            exitflg = 1;
            c_outlev = saved;
            return 0;
        }
        error(c);
        break;
    default: error(c); break;
    }
    c_outlev = saved;
    return c;
}

} // namespace korvu
