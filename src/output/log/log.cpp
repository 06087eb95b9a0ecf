#include "output/log/log.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

#include <cctype>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string>

#include "kernel/cmds/builtins.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/limits.h"
#include "kernel/loop/loop.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "output/spout.h"

namespace korvu {

LogRec log_m;
int32_t cmdlog_fd = 0;
char cmdlog_finame[FNLEN];
uint8_t cmdlog_ok = 1;
static uint8_t cmdlog_status = 0;
int32_t korvu_log_default = 0;

// Named logs; the engine takes at most five files a list.
static LogRec named_logs[5];

static LogRec* findnamed(const char* name) {
    for (LogRec& r : named_logs)
        if (r.fd && !strcmp(r.logname, name)) return &r;
    return nullptr;
}

const LogRec* log_named(const char* name) {
    return findnamed(name);
}

static LogRec* freenamed() {
    for (LogRec& r : named_logs)
        if (!r.fd) return &r;
    return nullptr;
}

static int attach(LogRec* r, int request) {
    if (!ptl_reswin) return 1;
    return r->type ? ptlset_log_input(ptl_reswin, r->fd, request)
                   : ptlset_log_output(ptl_reswin, r->fd, request);
}

static void nowtext(char* buf, size_t n) {
    time_t t = time(nullptr);
    struct tm lt;
    localtime_r(&t, &lt);
    char tmp[64];
    strftime(tmp, sizeof tmp, "%e %b %Y, %H:%M:%S", &lt);
    snprintf(buf, n, "%s", tmp[0] == ' ' ? tmp + 1 : tmp);
}

// The header: the rule, the file, its type and what happened when.
static void header(const LogRec* r, const char* action, bool query) {
    if (s_outlev >= 3) return;
    uint8_t old = c_outlev;
    c_outlev = 1;
    spoutptl("{txt}{.-}\n");
    if (r->logname[0]) {
        spout21("      name:  ");
        c_outlev = 0;
        spout21(r->logname);
        c_outlev = 1;
        newline();
    }
    spout21("       log:  ");
    c_outlev = 0;
    spout21(r->filename);
    if (query) spout21(r->status ? ", on" : ", off");
    c_outlev = 1;
    spout21("\n  log type:  ");
    c_outlev = 0;
    spout21(r->type ? "ptag" : "text");
    c_outlev = 1;
    newline();
    if (action) {
        char buf[120], date[64];
        nowtext(date, sizeof date);
        // right-aligned so that the colon stands under those of the lines above
        snprintf(buf, sizeof buf, "%7s on:  ", action);
        spout21(buf);
        c_outlev = 0;
        spout21(date);
        c_outlev = 1;
        newline();
    }
    c_outlev = old;
}

static int open_into(LogRec* r, const char* filename, int flags, int type, const char* logname);

int log_open(const char* filename, int flags, int type, const char* logname) {
    bool named = logname && *logname;
    if (!named && log_m.fd) return error(604);
    if (named && findnamed(logname)) return error(604);
    LogRec* r = named ? freenamed() : &log_m;
    if (!r) return error(950);
    return open_into(r, filename, flags, type, logname);
}

// The batch log is the unnamed log, opened by the same calls as `log using`:
// `log query` shows it, and a second unnamed log is refused while it is open.
int log_open_batch(const char* filename) {
    return open_into(&log_m, filename, 17, 0, nullptr);
}

static int open_into(LogRec* r, const char* filename, int flags, int type, const char* logname) {
    bool named = logname && *logname;
    int oflags = O_WRONLY | O_CREAT;
    if ((flags & ~8) == 1)
        oflags |= O_EXCL;
    else if ((flags & ~8) == 17)
        oflags |= O_TRUNC;
    else
        oflags |= O_APPEND;
    int fd = open(filename, oflags, 0666 & ~usermask);
    if (fd < 0) return fierr(errno == EEXIST ? 602 : 603, filename);
    LogRec rec;
    rec.fd = fd;
    rec.type = static_cast<uint8_t>(type);
    rec.status = 1;
    snprintf(rec.filename, sizeof rec.filename, "%s", filename);
    if (named) snprintf(rec.logname, sizeof rec.logname, "%s", logname);
    if (attach(&rec, 1)) {
        close(fd);
        return errtext(603, "ptag refused log request -- log not opened\n");
    }
    *r = rec;
    if (!(flags & 8)) header(r, "opened", false);
    return 0;
}

static void closelog(LogRec* r, bool quiet) {
    if (!quiet) {
        header(r, "closed", false);
        uint8_t old = c_outlev;
        c_outlev = 1;
        spoutptl("{txt}{.-}\n");
        c_outlev = old;
    }
    if (ptl_reswin) ptlflush(ptl_reswin);
    attach(r, 3);
    close(r->fd);
    *r = LogRec();
}

void log_closeall() {
    for (LogRec& r : named_logs)
        if (r.fd) closelog(&r, true);
    if (log_m.fd) closelog(&log_m, true);
    if (cmdlog_fd) close(cmdlog_fd), cmdlog_fd = 0;
}

void cmdlog_write(const char* line) {
    if (!cmdlog_fd || !cmdlog_status || !cmdlog_ok || c_outlev < s_outlev) return;
    while (*line == ' ') line++;
    if (!strncmp(line, "cmdlog", 6) && (line[6] == ' ' || !line[6])) return;
    std::string out = std::string(line) + "\n";
    if (write(cmdlog_fd, out.data(), out.size()) != static_cast<ssize_t>(out.size())) cmdlog_ok = 0;
}

void cmdlog_flush() {}

static void cmdlog_line(const char* action) {
    if (s_outlev >= 3) return;
    spoutlevf(1, "(cmdlog %s %s)\n", cmdlog_finame, action);
}

static std::string lower_ext(const std::string& f) {
    size_t slash = f.rfind('/');
    size_t dot = f.rfind('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return "";
    std::string e = f.substr(dot);
    for (char& c : e) c = static_cast<char>(tolower(static_cast<unsigned char>(c)));
    return e;
}

static int using_(int iscmdlog) {
    char fn[FNLEN];
    if (int rc = gettokfn(fn, sizeof fn)) return error(rc);
    vable = ifable = oable = 3;
    opable = 0;
    if (int rc = parse()) return rc;
    int append = findopt("append", 1, 0);
    int replace = findopt("replace", 1, 0);
    int text = findopt("text", 1, -1);
    int ptag = findopt("ptag", 1, -1);
    int proc = findopt("proc", 4, 0);
    char logname[64];
    findargn("name", 4, logname, sizeof logname, 1);
    if (int rc = chkopt()) return rc;
    if (append && replace) return error(198);
    int flags = append ? 129 : replace ? 17 : 1;
    if (iscmdlog || (proc && vernum < 700)) {
        if (cmdlog_fd) {
            return errtext(604, "cmdlog file already open\n");
        }
        std::string f = fn;
        if (lower_ext(f).empty()) f += ".txt";
        int oflags = O_WRONLY | O_CREAT | (flags == 1 ? O_EXCL : flags == 17 ? O_TRUNC : O_APPEND);
        int fd = open(f.c_str(), oflags, 0666 & ~usermask);
        if (fd < 0) return fierr(errno == EEXIST ? 602 : 603, f.c_str());
        cmdlog_fd = fd;
        cmdlog_status = 1;
        cmdlog_ok = 1;
        cmdlog_on = 1;
        snprintf(cmdlog_finame, sizeof cmdlog_finame, "%s", f.c_str());
        cmdlog_line("opened");
        return 0;
    }
    // an option decides the type; otherwise the extension; otherwise the default
    int type = -1;
    if (text == 1 || ptag == 0) type = 0;
    if (ptag == 1 || text == 0) type = 1;
    std::string f = fn;
    std::string ext = lower_ext(f);
    if (type < 0) {
        if (ext == ".log")
            type = 0;
        else if (ext == ".ptag")
            type = 1;
        else
            type = korvu_log_default == 1 ? 0 : 1;
    }
    if (ext.empty()) f += type ? ".ptag" : ".log";
    char full[4096];
    if (f[0] != '/' && getcwd(full, sizeof full)) f = std::string(full) + "/" + f;
    return log_open(f.c_str(), flags, type, logname);
}

static LogRec* target(const char* name, int iscmdlog) {
    if (name && *name) return findnamed(name);
    return log_m.fd ? &log_m : nullptr;
}

int logcmd(int iscmdlog) {
    gettok(prsestd);
    std::string word = token;
    std::string name;
    auto readname = [&]() -> int {
        gettok(prsestd);
        if (token[0]) name = token;
        gettok(prsestd);
        return token[0] ? error(198) : 0;
    };
    bool oldcmdlog = vernum < 700 && !log_m.fd && cmdlog_fd;
    if (word == "using") return using_(iscmdlog);
    if (word.empty() || cmdcmp(word.c_str(), "query", 1)) {
        if (!word.empty())
            if (int rc = readname()) return rc;
        uint8_t old = c_outlev;
        c_outlev = 1;
        if (iscmdlog) {
            spout21("    cmdlog:  ");
            if (cmdlog_fd) {
                spout21(cmdlog_finame);
                spout21(cmdlog_status ? ", on\n" : ", off\n");
            } else {
                spout21("(closed)\n");
            }
        } else if (LogRec* r = target(name.c_str(), 0)) {
            header(r, nullptr, true);
        } else if (!name.empty()) {
            c_outlev = old;
            return errorf(111, "log %s not found\n", name.c_str());
        } else {
            spout21("       log:  (closed)\n");
        }
        c_outlev = old;
        return 0;
    }
    bool on = cmdcmp(word.c_str(), "on", 2), off = cmdcmp(word.c_str(), "off", 3),
         cls = cmdcmp(word.c_str(), "close", 1);
    if (on || off || cls) {
        if (int rc = readname()) return rc;
        if (iscmdlog || oldcmdlog) {
            if (!cmdlog_fd) return error(607);
            if (cls) {
                cmdlog_line("closed");
                close(cmdlog_fd);
                cmdlog_fd = 0;
                cmdlog_on = 0;
                return 0;
            }
            cmdlog_status = on ? 1 : 0;
            cmdlog_on = cmdlog_status;
            cmdlog_line(on ? "on" : "off");
            return 0;
        }
        LogRec* r = target(name.c_str(), 0);
        if (!r) {
            if (!name.empty()) {
                return errorf(111, "log %s not found\n", name.c_str());
            }
            return error(606);
        }
        if (cls) {
            closelog(r, false);
            return 0;
        }
        if ((on && r->status) || (off && !r->status)) {
            uint8_t o = c_outlev;
            c_outlev = 1;
            spoutptl(on ? "{txt}(log already on)\n" : "{txt}(log already off)\n");
            c_outlev = o;
            return 0;
        }
        if (off) {
            header(r, "paused", false);
            if (ptl_reswin) ptlflush(ptl_reswin);
            attach(r, 2);
            r->status = 0;
        } else {
            attach(r, 1);
            r->status = 1;
            header(r, "resumed", false);
        }
        return 0;
    }
    if (cmdcmp(word.c_str(), "translate", 2)) return translate_cmd(0);
    if (word == "texman") return translate_cmd(1);
    if (word == "html") return translate_cmd(2);
    if (word == "webhtml") return translate_cmd(3);
    return errorf(198, "%s invalid\n", word.c_str());
}

} // namespace korvu

namespace korvu {

// A line typed at the terminal is already on the screen: its echo goes to the
// logs only, with the sink switched off while it is sent.
void log_echo(const char* line) {
    if (!ptl_reswin || c_outlev < s_outlev) return;
    ptlset_useroff(ptl_reswin);
    spout21(line);
    newline();
    ptlset_useron(ptl_reswin);
}

} // namespace korvu
