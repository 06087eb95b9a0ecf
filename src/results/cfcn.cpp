// c(): read-only values computed on demand from system state, and
// `creturn list`.
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstring>
#include <ctime>
#include <string>
#include <unistd.h>

#include "data/area/dataarea.h"
#include "data/formats/formats.h"
#include "kernel/errors/errors.h"
#include "kernel/flow/flow.h"
#include "kernel/loop/brk.h"
#include "kernel/loop/limits.h"
#include "kernel/loop/loop.h"
#include "kernel/macro/macro.h"
#include "kernel/parse/gettok.h"
#include "kernel/program/program.h"
#include "output/spout.h"
#include "results/settings.h"
#include "results/stores.h"

namespace korvu {

extern char sysdir_korvu[1024]; // kernel/startup.cpp

namespace {

struct CVal {
    int kind; // 0 none, 1 number, 2 text
    double num;
    std::string str;
};
CVal N(double x) {
    return {1, x, ""};
}
CVal S(const std::string& s) {
    return {2, 0, s};
}

std::string sysmac(const char* name) {
    const char* v = macptr(name);
    return v ? v : "";
}

int width_now() {
    int w = 0;
    for (int v = 1; v <= nvar; ++v) w += bytlenc(typlist[v - 1]);
    return w;
}

std::string timeordate(bool date) {
    time_t t = time(nullptr);
    struct tm tmv;
    localtime_r(&t, &tmv);
    char buf[40];
    strftime(buf, sizeof buf, date ? "%e %b %Y" : "%H:%M:%S", &tmv);
    std::string s = buf;
    if (date && s[0] == ' ') s = s.substr(1);
    return s;
}

CVal lookup(const char* k) {
    if (!k || !*k || !((k[0] >= 'A' && k[0] <= 'Z') || (k[0] >= 'a' && k[0] <= 'x'))) return {};
    std::string key = k;
    double x;
    char buf[5120];
    switch (setting_value(k, &x, buf, sizeof buf)) {
    case 1: return N(x);
    case 2: return S(buf);
    default: break;
    }
    static const char* months = "January February March April May June July August "
                                "September October November December";
    if (key == "pi") return N(M_PI);
    if (key == "rc") return N(captrc);
    if (key == "N") return N(nobs);
    if (key == "k") return N(nvar - (esample_var() ? 1 : 0));
    if (key == "width") return N(width_now() - (esample_var() ? 1 : 0));
    if (key == "XE") return N(1);
    if (key == "PX") return N(0);
    if (key == "current_date") return S(timeordate(true));
    if (key == "current_time") return S(timeordate(false));
    if (key == "born_date") return S("20 Jul 2007");
    if (key == "compile_number") return S("Compile number 444");
    if (key == "version") return N(vernum / 100.0);
    if (key == "korvu_version") return N(9.2);
    if (key == "byteorder") return S("lohi");
    if (key == "dirsep") return S("/");
    if (key == "filenamelen") return N(499);
    if (key == "max_macrolen") return N(1081511);
    if (key == "max_cmdlen") return N(1081527);
    if (key == "macrolen") return N(macrolen);
    if (key == "cmdlen") return N(conslen);
    if (key == "max_matsize") return N(11000);
    if (key == "min_matsize") return N(10);
    if (key == "maxstrvarlen") return N(244);
    if (key == "maxoptions") return N(70);
    if (key == "min_k") return N(2048);
    if (key == "namelen") return N(32);
    if (key == "tokenlen") return N(504);
    if (key == "max_k_theory") return N(32767);
    if (key == "max_k_current") return N(maxmaxvar);
    if (key == "max_width_theory") return N(std::max(maxlrecl, 393204));
    if (key == "max_width_current") return N(maxlrecl);
    if (key == "max_N_theory") return N(2147483647.0);
    if (key == "max_N_current") return N(maxobs - 1);
    if (key == "unlinktimeout") return N(0);
    if (key == "cmdtitle") return S("on");
    if (key == "copycolor") return S("");
    if (key == "charset") return S("latin1");
    if (key == "changed") return N(updata);
    if (key == "mindouble") return N(-0x1.fffffffffffffp+1022);
    if (key == "maxdouble") return N(0x1.fffffffffffffp+1022);
    if (key == "epsdouble") return N(DBL_EPSILON);
    if (key == "epsfloat") return N(FLT_EPSILON);
    if (key == "minfloat") return N(-0x1.fffffep+126);
    if (key == "maxfloat") return N(0x1.fffffep+126);
    if (key == "minlong") return N(-2147483647.0);
    if (key == "maxlong") return N(2147483620.0);
    if (key == "minint") return N(-32767);
    if (key == "maxint") return N(32740);
    if (key == "minbyte") return N(-127);
    if (key == "maxbyte") return N(100);
    if (key == "pwd") {
        char cwd[4096];
        return S(getcwd(cwd, sizeof cwd) ? cwd : "");
    }
    if (key == "sysdir_korvu") return S(sysdir_korvu);
    if (key == "sysdir_base") return S(sysdir_base);
    if (key == "sysdir_site") return S(sysdir_site);
    if (key == "sysdir_plus" || key == "sysdir_ktbplus" || key == "sysdir_kjplus")
        return S(sysdir_plus);
    if (key == "sysdir_personal") return S(sysdir_personal);
    if (key == "sysdir_oldplace") return S(sysdir_oldplace);
    if (key == "sysdir_updates") return S(sysdir_updates);
    if (key == "adopath") return S(sysmac("S_ADO"));
    if (key == "console") return S(sysmac("S_CONSOLE"));
    if (key == "flavor") return S(sysmac("S_FLAVOR"));
    if (key == "filename") return S(sysmac("S_FN"));
    if (key == "filedate") return S(sysmac("S_FNDATE"));
    if (key == "machine_type") return S(sysmac("S_MACH"));
    if (key == "mode") return S(sysmac("S_MODE"));
    if (key == "os") return S(sysmac("S_OS"));
    if (key == "osdtl") return S(sysmac("S_OSDTL"));
    if (key == "pollrate" || key == "polltime") return N(poll_rate);
    if (key == "logtype") return S("ptag");
    if (key == "searchdefault") return S("local");
    if (key == "httpproxypw") return S("");
    if (key == "rmsg_time") return N(rmsgtime);
    if (key == "tracecode") return S(korvu_trace_code ? "on" : "off");
    if (key == "jitterseed") return N(0);
    // settings of windows, graphics and the network that are kept elsewhere
    // or not built: their values at start-up
    if (key == "debug" || key == "checksum" || key == "di_g" || key == "loghelp" ||
        key == "netdebug" || key == "profiling" || key == "tracetime" || key == "lumodebug" ||
        key == "httpproxy" || key == "httpproxyauth" || key == "getsockopt")
        return S("off");
    if (key == "graphics" || key == "fastscroll") return S("on");
    if (key == "printcolor") return S("automatic");
    if (key == "helpcolor" || key == "guixeqcmd" || key == "curscm" || key == "httpproxyhost" ||
        key == "httpproxyuser")
        return S("");
    if (key == "linegap") return N(1);
    if (key == "scrollbufsize") return N(32000);
    if (key == "varlabelpos") return N(0);
    if (key == "timeout1") return N(30);
    if (key == "timeout2") return N(180);
    if (key == "httpproxyport") return N(80);
    if (key == "maxdb") return N(50);
    if (key == "textsize") return N(100);
    if (key == "update_oride") return N(0);
    if (key == "Months") return S(months);
    if (key == "Mons") return S("Jan Feb Mar Apr May Jun Jul Aug Sep Oct Nov Dec");
    if (key == "Weekdays") return S("Sunday Monday Tuesday Wednesday Thursday Friday Saturday");
    if (key == "Wdays") return S("Sun Mon Tue Wed Thu Fri Sat");
    if (key == "ALPHA") return S("A B C D E F G H I J K L M N O P Q R S T U V W X Y Z");
    if (key == "alpha") return S("a b c d e f g h i j k l m n o p q r s t u v w x y z");
    return {};
}

std::string fmt18(double x, const char* f) {
    const char* s = safereforms(f, x);
    while (*s == ' ') ++s;
    std::string out = s;
    while (!out.empty() && out.back() == ' ') out.pop_back();
    return out;
}

} // namespace

// 0 no such key, 1 number, 2 text.
int cfcn(const char* name, char* str, size_t n, double* num) {
    CVal v = lookup(name);
    if (v.kind == 1) *num = v.num;
    if (v.kind == 2) snprintf(str, n, "%s", v.str.c_str());
    return v.kind;
}

int cfcnstr(const char* name, char* buf, size_t size) {
    if (!size) return 0;
    buf[0] = 0;
    CVal v = lookup(name);
    std::string s;
    if (v.kind == 1) {
        bool ver = !std::strcmp(name, "version") || !std::strcmp(name, "korvu_version");
        s = fmt18(v.num, ver ? "%11.0g" : "%18.0g");
    } else if (v.kind == 2) {
        s = v.str;
    } else {
        return 0;
    }
    if (static_cast<int64_t>(size) != macrolen && s.size() >= size) {
        s = s.substr(0, size - 1);
        if (s.size() >= 2) s.replace(s.size() - 2, 2, "..");
    }
    snprintf(buf, size, "%s", s.c_str());
    return v.kind;
}

int creturncmd(int) {
    gettok(prsestd);
    if (!cmdcmp(token, "list", 1)) return error(198);
    if (gettok(prsestd)[0]) return error(198);
    struct Group {
        const char* title;
        const char* keys;
    };
    static const Group groups[] = {
        {"System values", "current_date current_time rmsg_time korvu_version version born_date "
                          "flavor compile_number console os osdtl machine_type byteorder "
                          "rc pwd dirsep"},
        {"Directories and paths", "sysdir_korvu sysdir_updates sysdir_base sysdir_site "
                                  "sysdir_plus sysdir_personal sysdir_oldplace adopath"},
        {"System limits", "max_N_theory max_N_current max_k_theory max_k_current "
                          "max_width_theory max_width_current max_matsize min_matsize "
                          "max_macrolen macrolen max_cmdlen cmdlen namelen"},
        {"Numerical and string limits", "mindouble maxdouble epsdouble minfloat maxfloat "
                                        "epsfloat minlong maxlong minint maxint minbyte "
                                        "maxbyte maxstrvarlen"},
        {"Current dataset", "N k width changed filename filedate"},
        {"Memory settings", "memory maxvar matsize virtual"},
        {"Output settings", "more rmsg dp linesize pagesize logtype"},
        {"Trace (program debugging) settings",
         "trace tracedepth tracesep traceindent traceexpand tracenumber tracehilite"},
        {"Lumo settings",
         "lumostrict lumolnum lumooptimize lumofavor lumocache lumolibs lumolofirst"},
        {"Other", "type maxiter searchdefault seed varabbrev level tol_0 tol_1 tol_2 tol_r pi "
                  "rc"},
    };
    for (const Group& g : groups) {
        if (stopflag) return 1;
        c_outlev = 1;
        spoutptlf("\n{title:%s}\n    {hline}\n", g.title);
        std::string keys = g.keys;
        size_t p = 0;
        while (p < keys.size()) {
            size_t q = keys.find(' ', p);
            if (q == std::string::npos) q = keys.size();
            std::string k = keys.substr(p, q - p);
            p = q + 1;
            char val[21];
            CVal v = lookup(k.c_str());
            cfcnstr(k.c_str(), val, sizeof val);
            std::string lab = "c(";
            lab.append(k).append(")");
            c_outlev = 1;
            spoutf("%20s = ", lab.c_str());
            c_outlev = 0;
            if (v.kind == 2)
                spoutf("\"%s\"\n", val);
            else
                spoutf("%s\n", val);
        }
    }
    return 0;
}

} // namespace korvu
