#include "kernel/cmds/syscmds.h"
#include "kernel/program/program.h"

#include <dirent.h>
#include <fcntl.h>
#include <glob.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>

#include "data/area/dataarea.h"
#include "data/area/missing.h"
#include "data/expr/expr.h"
#include "data/formats/formats.h"
#include "data/sort/sort.h"
#include "data/vars/varcmds.h"
#include "kernel/cmds/builtins.h"
#include "kernel/errors/errors.h"
#include "kernel/flow/flow.h"
#include "kernel/loop/brk.h"
#include "kernel/loop/limits.h"
#include "kernel/loop/loop.h"
#include "kernel/loop/scratch.h"
#include "kernel/loop/startup.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "output/spout.h"

namespace korvu {

static int readint(int* out) {
    gettok(prsenum);
    double v;
    if (cnvstoz(token, &v) || v != std::floor(v) || std::fabs(v) > 2147483647.0) return error(198);
    *out = static_cast<int>(v);
    return 0;
}

// ---- files and the operating system -----------------------------------------

// The rest of the line as one file name, quotes removed.
static int restname(char* dst) { // dst of FNLEN bytes
    if (int rc = gettokfn(dst, FNLEN)) return error(rc);
    return 0;
}

int pwdcmd(int) {
    if (int rc = endofline()) return rc;
    char cwd[4096];
    if (!getcwd(cwd, sizeof cwd)) return error(691);
    c_outlev = 0;
    spout21(cwd);
    newline();
    return 0;
}

int cdcmd(int) {
    char* p = peektok_chr();
    char dir[FNLEN];
    if (!*p) {
        const char* home = getenv("HOME");
        snprintf(dir, sizeof dir, "%s", home ? home : "/");
    } else if (int rc = restname(dir)) {
        return rc;
    }
    if (int rc = endofline()) return rc;
    std::string d = dir;
    if (d[0] == '~') {
        const char* home = getenv("HOME");
        d = std::string(home ? home : "") + d.substr(1);
    }
    if (chdir(d.c_str())) {
        return errorf(170, "unable to change to %s\n", dir);
    }
    return pwdcmd(0);
}

int shellcmd(int) {
    char* rest = peektok_chr();
    if (batchmode && !*rest) return error(8002);
    std::string line = *rest ? rest : "";
    settok(rest + strlen(rest));
    if (line.empty()) {
        const char* sh = getenv("SHELL");
        line = sh && *sh ? sh : "/bin/sh";
    }
    spoutflush();
    fflush(stdout);
    // the child's output goes where ours goes: through a pipe into the engine
    FILE* pipe = popen(line.c_str(), "r");
    if (!pipe) return error(702);
    char buf[512];
    size_t got;
    c_outlev = 0;
    while ((got = fread(buf, 1, sizeof buf - 1, pipe)) > 0) {
        buf[got] = 0;
        spoutnoptl(buf);
    }
    pclose(pipe);
    return 0;
}

int sleepcmd(int) {
    int ms = 0;
    if (int rc = readint(&ms)) return rc;
    if (int rc = endofline()) return rc;
    while (ms > 0) {
        int step = ms > 100 ? 100 : ms;
        usleep(static_cast<useconds_t>(step) * 1000);
        ms -= step;
        if (kvpollstd()) return 1;
    }
    return 0;
}

int typecmd(int) {
    char name[FNLEN];
    if (int rc = restname(name)) return rc;
    if (int rc = endofline()) return rc;
    FILE* f = fopen(name, "rb");
    if (!f) return fierr(601, name);
    char buf[513];
    size_t got;
    c_outlev = 0;
    while ((got = fread(buf, 1, 512, f)) > 0) {
        buf[got] = 0;
        for (size_t i = 0; i < got; i++)
            if (buf[i] == 0) buf[i] = ' ';
        if (spoutnoptl(buf)) break;
    }
    fclose(f);
    return stopflag ? 1 : 0;
}

int dircmd(int) {
    char pattern[FNLEN] = "*";
    if (*peektok_chr()) {
        if (int rc = restname(pattern)) return rc;
        struct stat st;
        if (stat(pattern, &st) == 0 && S_ISDIR(st.st_mode))
            strncat(pattern, "/*", sizeof pattern - strlen(pattern) - 1);
    }
    if (int rc = endofline()) return rc;
    glob_t g;
    if (glob(pattern, 0, nullptr, &g) != 0) {
        globfree(&g);
        return 0;
    }
    c_outlev = 0;
    for (size_t i = 0; i < g.gl_pathc; i++) {
        struct stat st;
        if (stat(g.gl_pathv[i], &st)) continue;
        char when[32];
        struct tm lt;
        localtime_r(&st.st_mtime, &lt);
        strftime(when, sizeof when, "%e %b %Y %H:%M", &lt);
        char size[32];
        if (S_ISDIR(st.st_mode))
            snprintf(size, sizeof size, "<dir>");
        else if (st.st_size < 10240)
            snprintf(size, sizeof size, "%ldb", static_cast<long>(st.st_size));
        else
            snprintf(size, sizeof size, "%.1fk", st.st_size / 1024.0);
        char line[700];
        snprintf(line, sizeof line, "%10s  %s  %s%s\n", size, when, g.gl_pathv[i],
                 S_ISDIR(st.st_mode) ? "/" : "");
        if (spout21(line)) break;
    }
    globfree(&g);
    return stopflag ? 1 : 0;
}

int erasecmd(int) {
    char name[FNLEN];
    if (int rc = restname(name)) return rc;
    if (int rc = endofline()) return rc;
    struct stat st;
    if (stat(name, &st)) return fierr(601, name);
    if (unlink(name)) return fierr(errno == EACCES || errno == EPERM ? 608 : 693, name);
    return 0;
}

int mkdircmd(int) {
    char name[FNLEN];
    if (int rc = restname(name)) return rc;
    vable = 3, ifable = 3, oable = 3, opable = 0;
    if (int rc = parse()) return rc;
    int pub = findopt("public", 3, 0);
    if (int rc = chkopt()) return rc;
    if (mkdir(name, pub ? 0755 : 0777)) {
        return errorf(693, "could not create directory %s\n", name);
    }
    if (pub) chmod(name, 0755);
    return 0;
}

int rmdircmd(int) {
    char name[FNLEN];
    if (int rc = restname(name)) return rc;
    if (int rc = endofline()) return rc;
    if (rmdir(name)) {
        return errorf(693, "could not remove directory %s\n", name);
    }
    return 0;
}

int copycmd(int) {
    char src[FNLEN], dst[FNLEN];
    if (int rc = restname(src)) return rc;
    if (int rc = restname(dst)) return rc;
    vable = 3, ifable = 3, oable = 3, opable = 0;
    if (int rc = parse()) return rc;
    int replace = findopt("replace", 7, 0);
    int pub = findopt("public", 3, 0);
    findopt("text", 4, 0);
    if (int rc = chkopt()) return rc;
    std::string target = dst;
    struct stat st;
    if (stat(dst, &st) == 0 && S_ISDIR(st.st_mode)) {
        const char* base = strrchr(src, '/');
        target += std::string("/") + (base ? base + 1 : src);
    }
    FILE* in = fopen(src, "rb");
    if (!in) return fierr(601, src);
    if (!replace && stat(target.c_str(), &st) == 0) {
        fclose(in);
        return fierr(602, target.c_str());
    }
    FILE* out = fopen(target.c_str(), "wb");
    if (!out) {
        fclose(in);
        return fierr(603, target.c_str());
    }
    char buf[65536];
    size_t got;
    bool ok = true;
    while ((got = fread(buf, 1, sizeof buf, in)) > 0)
        if (fwrite(buf, 1, got, out) != got) {
            ok = false;
            break;
        }
    fclose(in);
    if (fclose(out) || !ok) {
        unlink(target.c_str());
        return fierr(693, target.c_str());
    }
    if (pub) chmod(target.c_str(), 0644);
    return 0;
}

int morecmd(int) {
    if (byvar) return error(190);
    gettok(prsestd);
    if (token[0]) return error(198);
    if (ptl_cur) ptlmore(ptl_cur);
    return stopflag;
}

// ---- error and exit ----------------------------------------------------------

int errcmd_handler(int) {
    return errcmd();
}

int errcmd() {
    pushtok("=");
    ifable = oable = vable = 3;
    wable = 1;
    if (parse()) return 197;
    double v = xeq(&wepgm, nobs1);
    return extended_error(v);
}

uint8_t savewinpref = 1;

int goexit(int) {
    pfixeq();
    vable = ifable = oable = 3;
    wable = 0;
    opable = 0;
    if (int rc = parse()) return rc;
    int clear = findopt("clear", 5, 0);
    int whole = findopt("KORVU", 5, 0);
    int prefs = findopt("prefs", 5, savewinpref);
    if (int rc = chkopt()) return rc;
    bool top = !dofilep && !runprog;
    if ((top || whole) && updata && !clear) return error(4);
    int code = 0;
    if (weclause) {
        double v = xeq(&wepgm, nobs1);
        if (!ismissing(v)) code = static_cast<int>(v);
    }
    if (code && !((code == 2000 || code == 2001) && byvar && in_byable_ado)) {
        exitflg = 1;
        if (whole) gexitflg = 1;
        return code;
    }
    exitflg = 1;
    if (whole) gexitflg = 1;
    if (top || whole) savewinpref = static_cast<uint8_t>(prefs);
    return code;
}

} // namespace korvu
