#include "kernel/loop/startup.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>

#include "app/link.h"
#include "class/clslang.h"
#include "data/area/dataarea.h"
#include "data/area/missing.h"
#include "data/labels/label.h"
#include "data/vars/char.h"
#include "data/vars/varcmds.h"
#include "data/vars/varlist.h"
#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/loop/depth.h"
#include "kernel/loop/limits.h"
#include "kernel/loop/loop.h"
#include "kernel/loop/testbreak.h"
#include "kernel/macro/macro.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "kernel/program/program.h"
#include "lumo/lumo.h"
#include "output/console_sink.h"
#include "output/log/log.h"
#include "output/spout.h"

namespace korvu {

char sysdir_korvu[1024];
uint8_t korvu_dpc = 0;
double fltmis, misval_z, misval_107, max_kvdouble, min_kvdouble, neg_kvdouble, smallest_kvdouble,
    kvepsilon, max_kvfloat, min_kvfloat, kvfltepsilon, twopi;
const char* filepath = "";
volatile int kv_fpeerror = 0;

static uint8_t shownotes = 1;
static ConsoleSink results_console;

// One key from the terminal for the more prompt, without waiting for Enter.
static int console_key(void*) {
    termios saved, raw;
    if (tcgetattr(0, &saved)) return ' ';
    raw = saved;
    raw.c_lflag &= ~(ICANON | ECHO);
    raw.c_cc[VMIN] = 1;
    raw.c_cc[VTIME] = 0;
    tcsetattr(0, TCSANOW, &raw);
    unsigned char c = ' ';
    if (read(0, &c, 1) != 1) c = 'q';
    tcsetattr(0, TCSANOW, &saved);
    return c;
}
static std::string argline;
static std::string batchlog_name;
static std::string initerr_lines[4];
static int ninitlines = 0;

void console_close();

static void initerr(const char* text) {
    if (!text) {
        for (int i = 0; i < ninitlines; i++) fprintf(stderr, "%s\n", initerr_lines[i].c_str());
        ninitlines = 0;
        return;
    }
    if (ninitlines < 4) initerr_lines[ninitlines++] = std::string(text).substr(0, 79);
}

static const char* progname = "korvu-xe";

static void usage() {
    // the console edition takes the batch option besides the common ones
    const bool console_ed = strcmp(progname, "xkorvu-xe") != 0;
    fprintf(stderr,
            "\n%s:  usage:  %s [-h %s-k# -m# -q] [\"korvu command\"]\n"
            "        where:\n"
            "            -h        show this display\n"
            "%s"
            "            -k#       set data memory to #k, default is 1024\n"
            "            -m#       set data memory to #m, -m1 same as -k1024\n"
            "            -q        suppress logo, initialization messages\n"
            "        Notes:\n"
            "            xkorvu-xe is the command to launch the GUI version of Korvu/XE\n"
            "            korvu-xe is the command to launch the console version of Korvu/XE\n"
            "\n"
            "            Use korvu-xe rather than xkorvu-xe if you want to run in batch mode\n\n",
            progname, progname, console_ed ? "-b " : "",
            console_ed
                ? "            -b        batch mode: run the command, all output to a log\n"
                  "                      named after it; the exit status is its return code\n"
                : "");
}

void init_tmp() {
    const char* t = getenv("KORVUTMP");
    if (!t || !*t) t = getenv("TMPDIR");
    if (!t || !*t) t = "/tmp";
    tmpdir = strdup(t);
    unix_pid = static_cast<int32_t>(getpid());
}

static bool hasmarker(const std::string& dir) {
    char marker[32];
    snprintf(marker, sizeof marker, "iskorvu.%02d", 90);
    return access((dir + marker).c_str(), F_OK) == 0;
}

static bool trydir(std::string dir) {
    if (dir.empty()) return false;
    if (dir.back() != '/') dir += '/';
    if (!hasmarker(dir)) return false;
    snprintf(sysdir_korvu, sizeof sysdir_korvu, "%s", dir.c_str());
    return true;
}

static std::string expanddir(std::string d) {
    while (!d.empty() && d.front() == ' ') d.erase(0, 1);
    while (!d.empty() && d.back() == ' ') d.pop_back();
    if (!d.empty() && d[0] == '~') {
        const char* home = getenv("HOME");
        d = std::string(home ? home : "") + d.substr(1);
    }
    if (!d.empty() && d[0] != '/') {
        char cwd[1024];
        if (getcwd(cwd, sizeof cwd)) d = std::string(cwd) + "/" + d;
    }
    return d;
}

int get_korvu_dir() {
    if (const char* s = getenv("SYSDIR_KORVU"); s && *s && trydir(s)) return 0;
    // the directory of the executable itself, so a build runs from anywhere
    char exe[1024];
    ssize_t n = readlink("/proc/self/exe", exe, sizeof exe - 1);
    if (n > 0) {
        exe[n] = 0;
        if (char* slash = strrchr(exe, '/')) {
            slash[1] = 0;
            if (trydir(exe)) return 0;
        }
    }
    char buf[64];
    snprintf(buf, sizeof buf, "/usr/local/korvu%d.%d/", vernum / 100, (vernum / 10) % 10);
    if (trydir(buf)) return 0;
    snprintf(buf, sizeof buf, "/usr/local/korvu%d.0/", vernum / 100);
    if (trydir(buf)) return 0;
    snprintf(buf, sizeof buf, "/usr/local/korvu%d/", vernum / 100);
    if (trydir(buf)) return 0;
    if (trydir("/usr/local/korvu/")) return 0;
    if (const char* path = getenv("PATH")) {
        std::string p = path;
        size_t start = 0;
        for (;;) {
            size_t colon = p.find(':', start);
            std::string elem =
                p.substr(start, colon == std::string::npos ? std::string::npos : colon - start);
            if (elem.size() > 127) break;
            if (trydir(expanddir(elem))) return 0;
            if (colon == std::string::npos) break;
            start = colon + 1;
        }
    }
    char cwd[1024];
    if (getcwd(cwd, sizeof cwd) && trydir(cwd)) return 0;
    return 1;
}

int srchfile(const char* name, int flag, char* out, int outsize) {
    auto exists = [](const std::string& f) {
        struct stat st;
        return stat(f.c_str(), &st) == 0 && S_ISREG(st.st_mode);
    };
    if (exists(name)) return snprintf(out, outsize, "%s", name), 1;
    if (flag) {
        if (const char* path = getenv("PATH")) {
            std::string p = path;
            size_t start = 0;
            for (;;) {
                size_t colon = p.find(':', start);
                std::string d = expanddir(p.substr(
                    start, colon == std::string::npos ? std::string::npos : colon - start));
                if (!d.empty() && exists(d + "/" + name))
                    return snprintf(out, outsize, "%s/%s", d.c_str(), name), 1;
                if (colon == std::string::npos) break;
                start = colon + 1;
            }
        }
        std::string s = std::string(sysdir_korvu) + name;
        if (exists(s)) return snprintf(out, outsize, "%s", s.c_str()), 1;
    }
    return 0;
}

static bool built(const char* text, double* out) {
    return cnvstoz(text, out) == 0;
}

int sinit(int flags) {
    if (shownotes) {
        c_outlev = 2;
        spoutptl("\n{txt}  Korvu/XE " KORVU_VERSION_STRING " for Linux (console)\n");
        spoutptl("  Statistics and data analysis\n");
    }
    // the machine must do IEEE double arithmetic as the missing values assume
    volatile double two = 2.0;
    if (two * 0.5 != 1.0 || sizeof(double) != 8 || 0x1p1023 * two != HUGE_VAL) return 1;
    double m;
    bool ok = built("1.0x+3ff", &m) && m == misval && built("1.0x+7f", &fltmis) &&
              built("1.01ax+3ff", &misval_z) && built("1.0x+14d", &misval_107) &&
              built("1.fffffffffffffX+3fe", &max_kvdouble) &&
              built("-1.fffffffffffffX+3fe", &min_kvdouble) &&
              built("-1.fffffffffffffX+3ff", &neg_kvdouble) &&
              built("1.fffffffffffffX-3fe", &smallest_kvdouble) && built("1.0X-34", &kvepsilon) &&
              built("1.fffffeX+7e", &max_kvfloat) && built("-1.fffffeX+7e", &min_kvfloat) &&
              built("1.0X-17", &kvfltepsilon);
    if (!ok || misval_z != mkmissing(26)) return 1;
    twopi = 8.0 * atan(1.0);
    const char* p = getenv("PATH");
    filepath = p ? p : "";
    return 0;
}

static void setbrk(int) {
    stopflag = stopflag_val;
    altstopflag = altstopflag_val;
    signal(SIGINT, setbrk);
}

static void setfpeerror(int) {
    kv_fpeerror = 1;
    signal(SIGFPE, setfpeerror);
}

void tinit() {
    static bool done = false;
    if (done) return;
    done = true;
    signal(SIGFPE, setfpeerror);
    if (!nokbrd) signal(SIGINT, setbrk);
}

void tstop() {
    signal(SIGINT, SIG_DFL);
    signal(SIGFPE, SIG_DFL);
}

[[noreturn]] void sexit(int status) {
    if (sinit_state >= 4 && ptl_reswin) ptlflush(ptl_reswin);
    log_closeall();
    if (sinit_state > 8) tstop();
    console_close();
    // the data area is left to the operating system: handing back a large
    // block page by page would only delay leaving
    fflush(stdout);
    exit(status);
}

// The batch log is named after the do-file the command runs, or after the
// command word, in the working directory.
static int inibatch() {
    std::string line = argline;
    while (!line.empty() && line.back() == ' ') line.pop_back();
    if (line.empty()) {
        fprintf(stderr, "-b specified with no command\n");
        return 1;
    }
    std::string first = line.substr(0, line.find(' '));
    std::string name = first;
    if (first == "do" || first == "run") {
        std::string rest = line.substr(first.size());
        while (!rest.empty() && rest.front() == ' ') rest.erase(0, 1);
        if (!rest.empty() && rest.front() == '"')
            rest = rest.substr(1, rest.find('"', 1) - 1);
        else
            rest = rest.substr(0, rest.find_first_of(" ,"));
        size_t slash = rest.rfind('/');
        if (slash != std::string::npos) rest = rest.substr(slash + 1);
        size_t dot = rest.rfind('.');
        if (dot != std::string::npos && dot > 0) rest = rest.substr(0, dot);
        if (!rest.empty()) name = rest;
    }
    batchlog_name = name + ".log";
    std::string full = batchlog_name;
    char cwd[4096];
    if (getcwd(cwd, sizeof cwd)) full = std::string(cwd) + "/" + batchlog_name;
    // the screen shows nothing in batch mode; the log has it all
    ptlset_useroff(ptl_reswin);
    if (log_open_batch(full.c_str())) {
        fprintf(stderr, "unable to open `%s'\n", batchlog_name.c_str());
        return 1;
    }
    nokbrd = 1;
    batchmode = shownotes ? 1 : 2;
    return 0;
}

static int console_alloc();
static void console_release();

int sinit0(int argc, char** argv) {
    sinit_state = 1;
    batchmode = 0;
    bool wantbatch = false;
    int i = 1;
    for (; i < argc && argv[i][0] == '-'; i++) {
        const char* a = argv[i];
        char letter = static_cast<char>(toupper(static_cast<unsigned char>(a[1])));
        const char* num = a + 2;
        char* end;
        long v;
        int bad = 0;
        switch (letter) {
        case 'C': korvu_dpc = 1; break;
        case 'K':
            v = strtol(num, &end, 10);
            if (*end || end == num || v < 10)
                bad = 1;
            else
                totalmemory = static_cast<uint64_t>(v) * 1024;
            break;
        case 'L': break;
        case 'M':
            v = strtol(num, &end, 10);
            if (*end || end == num || v < 1)
                bad = 1;
            else
                totalmemory = static_cast<uint64_t>(v) * 1048576;
            break;
        case 'O':
            strtol(num, &end, 10);
            if (*end || end == num) bad = 1;
            break;
        case 'Q': shownotes = 0; break;
        case 'U':
            nokbrd = 1;
            if (i + 1 < argc) i++;
            break;
        case 'V':
            v = strtol(num, &end, 10);
            if (*end || end == num || v < 2048 || v > 32767)
                bad = 1;
            else
                setlimits(static_cast<int32_t>(v));
            break;
        case 'B':
            if (a[2])
                bad = 1;
            else
                wantbatch = true;
            break;
        default: bad = 1;
        }
        if (bad) {
            usage();
            return -1;
        }
    }
    for (; i < argc; i++) {
        argline += argv[i];
        argline += ' ';
    }
    sinit_state = 2;
    sinit_state = 3;

    ptl_reswin = ptlopen();
    if (!ptl_reswin) return -1;
    ptl_cur = ptl_reswin;
    ptlset_maxwidth(ptl_reswin, korvu_linewidth);
    korvu_linewidth = ptlquery_maxwidth(ptl_reswin);
    ptlset_pagesize(ptl_reswin, korvu_pagesize);
    ptlset_moreenable(ptl_reswin, 0);
    results_console.colour = isatty(1);
    if (isatty(0) && isatty(1)) results_console.keysource = console_key;
    ptlset_user(ptl_reswin, console_sink, &results_console);
    sinit_state = 4;

    mode_t um = umask(022);
    umask(um);
    usermask = static_cast<int32_t>(um);

    nokbrd = nokbrd || !console_is_tty();
    if (wantbatch && inibatch()) return -1;

    if (get_korvu_dir()) {
        initerr("cannot find Korvu directory");
        initerr(nullptr);
        return -1;
    }
    sinit_state = 7;
    if (sinit(0)) {
        initerr("Initialization failure.");
        initerr(nullptr);
        return -1;
    }
    sinit_state = 8;
    tinit();
    sinit_state = 10;
    sinit_state = 12;
    register_fixed_client(console_alloc, console_release);
    link_all();
    if (news_alloc()) {
        initerr("Allocation failure.");
        initerr(nullptr);
        return -1;
    }
    dminit();
    adoinit();
    cls_make_builtin_classes(); // their keys go into the dictionary
    sinit_state = 13;
    if (shownotes) {
        int k = 0;
        char buf[200];
        c_outlev = 2;
        spout21("\nNotes:\n");
        snprintf(buf, sizeof buf,
                 "     %2d.  (-m# option or -set memory-) %.2f MB allocated to data\n", ++k,
                 static_cast<double>(totalmemory) / 1048576.0);
        spout21(buf);
        snprintf(buf, sizeof buf, "     %2d.  (-v# option or -set maxvar-) %d maximum variables\n",
                 ++k, static_cast<int>(maxmaxvar));
        spout21(buf);
        snprintf(buf, sizeof buf, "     %2d.  Command line editing %sabled\n", ++k,
                 console_is_tty() ? "en" : "dis");
        spout21(buf);
        if (nokbrd && batchmode) {
            snprintf(buf, sizeof buf, "     %2d.  Korvu running in batch mode\n", ++k);
            spout21(buf);
        }
        std::string msg = std::string(sysdir_korvu) + "korvu.msg";
        if (FILE* f = fopen(msg.c_str(), "rb")) {
            char block[512];
            size_t got;
            while ((got = fread(block, 1, 511, f)) > 0)
                ptlsend(ptl_cur, block, static_cast<int>(got));
            fclose(f);
        }
    }
    sinit_state = 15;
    sinit_state = 16;
    c_outlev = 0;
    sinit_state = 17;
    lumoinit();
    sinit_state = 18;
    trouble_at_startup_msg();
    snprintf(console, conslen, "%s", argline.c_str());
    settok(console);
    const char* p = console;
    while (*p == ' ') p++;
    if (!*p) {
        sinit_state = 19;
        return 0;
    }
    if (shownotes) newline();
    return 1;
}

// The command buffer is one of the tables sized by maxvar: it is rebuilt with
// them, keeping the line it holds.
static std::string console_kept;
static int console_alloc() {
    console = static_cast<char*>(allocfixed(conslen + 1, "console"));
    if (!console) return 1;
    memset(console, 0, conslen + 1);
    snprintf(console, conslen + 1, "%s", console_kept.c_str());
    console_kept.clear();
    return 0;
}
static void console_release() {
    if (console) console_kept = console;
    console = nullptr;
}

static void profile_step() {
    char path[1024];
    if (!srchfile("profile.do", 1, path, sizeof path) &&
        !srchadofile("profile.do", path, sizeof path))
        return;
    std::string parked = console;
    c_outlev = 1;
    spout21("running ");
    spout21(path);
    spout21(" ...\n");
    snprintf(console, conslen, "run \"%s\"", path);
    settok(console);
    doreq();
    snprintf(console, conslen, "%s", parked.c_str());
    settok(console);
}

int korvu_main(int argc, char** argv) {
    depth_stack_raise(argv);
    if (argc > 0 && argv[0]) {
        const char* slash = strrchr(argv[0], '/');
        const char* base = slash ? slash + 1 : argv[0];
        if (!strcmp(base, "xkorvu-xe")) progname = "xkorvu-xe";
    }
    init_tmp();
    int have = sinit0(argc, argv);
    if (have < 0) sexit(0);
    profile_step();
    if (moretime == 0 && console_is_tty()) ptlset_moreenable(ptl_reswin, 1);
    if (have == 1) {
        if (batchmode != 2) {
            c_outlev = 4;
            spout21(". ");
            spout21(console);
            newline();
        }
        settok(console);
        doreq();
    }
    // a batch run that stopped on an error says so in its exit status
    if (batchmode) sexit(globalrc <= 0 ? 0 : globalrc > 255 ? 1 : globalrc);
    if (!batchmode) {
        for (;;) {
            realbusy = 0;
            c_outlev = 0;
            spout20("\n");
            if (getreq(0)) break; // end of input: as exit, clear
            realbusy = 1;
            if (!doreq()) break;
        }
    }
    sexit(0);
}

} // namespace korvu
