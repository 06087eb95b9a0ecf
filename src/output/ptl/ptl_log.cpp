// The two log lists of an instance: the input list takes the raw
// ptag stream, the output list the rendered lines as plain text. Each list has
// one 512-byte buffer; every write seeks to the end of its file first, so two
// logs can share a file. A short write marks the file as failed.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <unistd.h>

#include "output/ptl/ptl_internal.h"

namespace korvu {
namespace ptl {

void log_alloc(Ptl* p) {
    p->login.buf = new (std::nothrow) char[PTL_LOGBUF];
    p->logout.buf = new (std::nothrow) char[PTL_LOGBUF];
}

void log_free(Ptl* p) {
    delete[] p->login.buf;
    delete[] p->logout.buf;
    p->login.buf = p->logout.buf = nullptr;
}

static bool write_all(int fd, const char* s, int n) {
    lseek(fd, 0, SEEK_END); // fails harmlessly on a pipe
    while (n > 0) {
        ssize_t w = write(fd, s, n);
        if (w < 0 && errno == EINTR) continue;
        if (w <= 0) return false;
        s += w;
        n -= static_cast<int>(w);
    }
    return true;
}

static void write_list(PtlLogList& l, const char* s, int n) {
    for (int i = 0; i < l.n; i++)
        if (l.ok[i] && !write_all(l.fd[i], s, n)) l.ok[i] = 0;
}

void log_flush(PtlLogList& l) {
    if (l.fill > 0) write_list(l, l.buf, l.fill);
    l.fill = 0;
}

static void log_append(PtlLogList& l, const char* s, int n) {
    if (n <= 0) return;
    if (n > PTL_LOGBUF) { // a block of 513 bytes or more goes directly
        log_flush(l);
        write_list(l, s, n);
        return;
    }
    if (l.fill + n > PTL_LOGBUF) log_flush(l);
    memcpy(l.buf + l.fill, s, n);
    l.fill += n;
    if (l.fill == PTL_LOGBUF) log_flush(l);
}

// The raw stream, with a final line feed turned into the system's line ending.
void log_input(Ptl* p, const char* s, int n) {
    PtlLogList& l = p->login;
    if (!l.n) return;
    if (s[n - 1] != '\n' || (szeolchar == 1 && eolchar[0] == '\n')) {
        log_append(l, s, n);
        return;
    }
    std::string t(s, n - 1);
    t += eolchar;
    log_append(l, t.data(), static_cast<int>(t.size()));
}

void log_output_line(Ptl* p, const char* text, int n, bool eol) {
    PtlLogList& l = p->logout;
    if (!l.n) return;
    if (n + szeolchar > PTL_LOGBUF) {
        log_append(l, text, n);
        if (eol) log_append(l, eolchar, szeolchar);
        return;
    }
    char buf[PTL_LOGBUF];
    memcpy(buf, text, n);
    if (eol) memcpy(buf + n, eolchar, szeolchar), n += szeolchar;
    log_append(l, buf, n);
}

// The state written to a ptag log when it attaches, so that a log that is
// resumed reads correctly.
static std::string ptag_state(const Ptl* p) {
    std::string s = "{ptag}\n";
    uint8_t a = p->empty ? p->attr : p->runs[2 * (p->nruns - 1) + 1];
    switch (a & ATTR_COLOR) {
    case COL_RESULT: s += "{res}"; break;
    case COL_ERROR: s += "{err}"; break;
    case COL_INPUT: s += "{com}"; break;
    default: s += "{txt}"; break;
    }
    if (a & ATTR_BOLD)
        s += "{bf}";
    else if (a & ATTR_ITALIC)
        s += "{it}";
    else
        s += "{sf}";
    s += (a & ATTR_UNDERLINE) ? "{ul on}" : "{ul off}";
    char buf[64];
    switch (p->mode) {
    case PTL_ASIS: s += "{asis}\n"; break;
    case PTL_PARA:
        snprintf(buf, sizeof buf, "{p %d %d %d}\n", p->p_first, p->p_left, p->p_right);
        s += buf;
        break;
    case PTL_OLDHELP: s += "{k6hlp}\n"; break;
    default: break;
    }
    return s;
}

static int find_fd(const PtlLogList& l, int fd) {
    for (int i = 0; i < l.n; i++)
        if (l.fd[i] == fd) return i;
    return -1;
}

// Request 1 adds, 2 removes after writing out the buffer, 3 removes without.
// 1 when the table is full or a remove names an unknown file.
static int set_log(Ptl* p, PtlLogList& l, int fd, int request, bool ptag) {
    if (!p || p->nologchange || !l.buf) return 1;
    int at = find_fd(l, fd);
    switch (request) {
    case 1: {
        if (at >= 0) return 0;
        if (l.n >= PTL_LOGMAX) return 1;
        log_flush(l); // what is buffered belongs to the files already there
        l.fd[l.n] = fd;
        l.ok[l.n] = 1;
        if (ptag) {
            std::string s = ptag_state(p);
            if (!write_all(fd, s.data(), static_cast<int>(s.size()))) l.ok[l.n] = 0;
        }
        l.n++;
        return 0;
    }
    case 2:
    case 3:
        if (at < 0) return 1;
        if (request == 2) log_flush(l);
        for (int i = at; i + 1 < l.n; i++) l.fd[i] = l.fd[i + 1], l.ok[i] = l.ok[i + 1];
        l.n--;
        if (!l.n) l.fill = 0;
        return 0;
    default: return 1;
    }
}

} // namespace ptl

int ptlset_log_input(Ptl* p, int fd, int request) {
    return p ? ptl::set_log(p, p->login, fd, request, true) : 1;
}

int ptlset_log_output(Ptl* p, int fd, int request) {
    return p ? ptl::set_log(p, p->logout, fd, request, false) : 1;
}

int ptl_query_log_err(const Ptl* p) {
    for (const PtlLogList* l : {&p->login, &p->logout})
        for (int i = 0; i < l->n; i++)
            if (!l->ok[i]) return 1;
    return 0;
}

} // namespace korvu
