// Errors, exits, the version, break handling, timers, and running a command
// line from the language.
#include <chrono>
#include <cstring>
#include <string>
#include <vector>

#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/loop/limits.h"
#include "kernel/loop/loop.h"
#include "kernel/macro/macro.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "lumo/builtins/bi.h"

namespace korvu {

// error(n): ends the running function with code n and its standard text.
static void bi_error(int n) {
    int64_t code;
    if (!bi_getint(n, 0, 1, 2147483647, &code)) return;
    m_xeqerr(static_cast<int>(code));
}
// _error(n[, text]): the same with a text of the caller's own.
static void bi_uerror(int n) {
    int64_t code;
    if (!bi_getint(n, 0, -2147483647, 2147483647, &code)) return;
    if (code < 0) code = 3498;
    if (n == 1) return m_xeqerr(static_cast<int>(code));
    std::string text;
    if (!bi_getstr(n, 1, &text)) return;
    m_custom_xeqerr(static_cast<int>(code), "%s", text.c_str());
}

static void bi_args(int n) {
    bi_realres(n, m_rt.nargs);
}
static void bi_callersversion(int n) {
    bi_realres(n, m_rt.version > 0 ? m_rt.version / 100.0 : vernum / 100.0);
}
static void bi_korvuversion(int n) {
    bi_realres(n, vernum / 100.0);
}

// Runs one command line through the command loop, with everything the
// running line holds (the line, the tokenizer, the command state) put back
// afterwards. The machine's own state is saved by its entry points.
int bi_runline(const std::string& cmd, bool quiet) {
    std::string text = quiet ? "quietly " + cmd : cmd;
    if (static_cast<int64_t>(text.size()) >= conslen) return errtext(1004, "input too long\n");
    std::vector<char> buf(static_cast<size_t>(conslen) + 1, 0);
    memcpy(buf.data(), text.c_str(), text.size());
    char* save = console;
    TokState ts;
    borrow_gettok(&ts);
    CmdState cs;
    save_cmd_state(&cs);
    const MRt rt = m_rt;
    const char* errid = m_xeqerrid;
    const uint8_t expanded = mac_expanded;
    console = buf.data();
    int rc = macexp();
    if (!rc) {
        settok(console);
        gettokcmd();
        rc = selreq();
    }
    console = save;
    mac_expanded = expanded;
    restore_cmd_state(&cs);
    return_gettok(&ts);
    m_rt = rt;
    m_xeqerrid = errid;
    return rc;
}

static bool cmdargs(int n, std::string* cmd, bool* quiet) {
    if (!bi_getstr(n, 0, cmd)) return false;
    *quiet = false;
    if (n == 2) {
        double q;
        if (!bi_getreal(n, 1, &q)) return false;
        *quiet = q != 0 && q < misval;
    }
    return true;
}

// korvu(cmd[, quiet]): aborts with 3598 when the command fails.
static void bi_korvu(int n) {
    std::string cmd;
    bool quiet;
    if (!cmdargs(n, &cmd, &quiet)) return;
    const int rc = bi_runline(cmd, quiet);
    if (rc == 1 || stopflag) return m_xeqerr(1);
    if (rc) return m_xeqerr(3598);
    bi_voidres(n);
}
// _korvu(cmd[, quiet]): the command's code.
static void bi_ukorvu(int n) {
    std::string cmd;
    bool quiet;
    if (!cmdargs(n, &cmd, &quiet)) return;
    const int rc = bi_runline(cmd, quiet);
    bi_realres(n, rc);
}

// Break handling: setbreakintr(0) holds breaks back (querybreakintr reports
// the setting); breakkey() tells whether one was pressed meanwhile.
static bool breakintr = true;
static void bi_setbreakintr(int n) {
    double x;
    if (!bi_getreal(n, 0, &x)) return;
    const bool old = breakintr;
    breakintr = x != 0;
    bi_realres(n, old);
}
static void bi_querybreakintr(int n) {
    bi_realres(n, breakintr);
}
static void bi_breakkey(int n) {
    bi_realres(n, stopflag != 0);
}
static void bi_breakkeyreset(int n) {
    const bool was = stopflag != 0;
    stopflag = 0;
    altstopflag = 0;
    bi_realres(n, was);
}

// Timers 1 to 100: seconds accumulated and the number of times started.
struct BiTimer {
    double total;
    double count;
    bool on;
    std::chrono::steady_clock::time_point since;
};
static BiTimer timers[101];
static bool timerno(int n, int k, int64_t* t) {
    return bi_getint(n, k, 1, 100, t);
}
static void bi_timer_clear(int n) {
    int64_t t = 0;
    if (n == 1 && !timerno(n, 0, &t)) return;
    for (int k = 1; k <= 100; k++)
        if (!t || k == t) timers[k] = BiTimer{};
    bi_voidres(n);
}
static void bi_timer_on(int n) {
    int64_t t;
    if (!timerno(n, 0, &t)) return;
    if (!timers[t].on) {
        timers[t].on = true;
        timers[t].count += 1;
        timers[t].since = std::chrono::steady_clock::now();
    }
    bi_voidres(n);
}
static void bi_timer_off(int n) {
    int64_t t;
    if (!timerno(n, 0, &t)) return;
    if (timers[t].on) {
        timers[t].on = false;
        timers[t].total +=
            std::chrono::duration<double>(std::chrono::steady_clock::now() - timers[t].since)
                .count();
    }
    bi_voidres(n);
}
static void bi_timer_value(int n) {
    int64_t t;
    if (!timerno(n, 0, &t)) return;
    MObj* o = bi_new(MT_REAL, 1, 2);
    if (!o) return;
    m_rel(o)[0] = timers[t].total;
    m_rel(o)[1] = timers[t].count;
    bi_result(n, o);
}
static void bi_favorspeed(int n) {
    bi_realres(n, 1);
}

void bi_link_control(MBiFn* t) {
    t[bi_index("error")] = bi_error;
    t[bi_index("_error")] = bi_uerror;
    t[bi_index("args")] = bi_args;
    t[bi_index("callersversion")] = bi_callersversion;
    t[bi_index("korvuversion")] = bi_korvuversion;
    t[bi_index("korvu")] = bi_korvu;
    t[bi_index("_korvu")] = bi_ukorvu;
    t[bi_index("setbreakintr")] = bi_setbreakintr;
    t[bi_index("querybreakintr")] = bi_querybreakintr;
    t[bi_index("breakkey")] = bi_breakkey;
    t[bi_index("breakkeyreset")] = bi_breakkeyreset;
    t[bi_index("favorspeed")] = bi_favorspeed;
    t[bi_index("timer_clear")] = bi_timer_clear;
    t[bi_index("timer_on")] = bi_timer_on;
    t[bi_index("timer_off")] = bi_timer_off;
    t[bi_index("timer_value")] = bi_timer_value;
}

} // namespace korvu
