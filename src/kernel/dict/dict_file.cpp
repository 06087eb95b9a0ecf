// The dictionary's temporary file: the whole store is written out and read back
// when fixed memory is rebuilt (`set memory`, `set maxvar`, `set matsize`).
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "app/link.h"
#include "data/area/areahooks.h"
#include "data/area/dataarea.h"
#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/scratch.h"
#include "kernel/macro/macro.h"
#include "output/spout.h"

namespace korvu {

namespace {

// A small write buffer, so that many small items cost few system calls.
struct Writer {
    int fd = -1;
    size_t n = 0;
    bool bad = false;
    char buf[65536];
    void flush() {
        size_t off = 0;
        while (off < n && !bad) {
            ssize_t w = ::write(fd, buf + off, n - off);
            if (w < 0 && errno == EINTR) continue;
            if (w <= 0)
                bad = true;
            else
                off += static_cast<size_t>(w);
        }
        n = 0;
    }
    void put(const void* p, size_t len) {
        const char* s = static_cast<const char*>(p);
        while (len && !bad) {
            size_t k = sizeof buf - n < len ? sizeof buf - n : len;
            std::memcpy(buf + n, s, k);
            n += k;
            s += k;
            len -= k;
            if (n == sizeof buf) flush();
        }
    }
};

// Reads exactly len bytes; false on a short read or an error.
bool readall(int fd, void* p, size_t len) {
    char* d = static_cast<char*>(p);
    while (len) {
        ssize_t r = ::read(fd, d, len);
        if (r < 0 && errno == EINTR) continue;
        if (r <= 0) return false;
        d += r;
        len -= static_cast<size_t>(r);
    }
    return true;
}

} // namespace

int dmwrite(int fd) {
    auto* w = new Writer;
    w->fd = fd;
    for (void* v = dmnext(nullptr, nullptr, -1, nullptr); v; v = dmnext(v, nullptr, -1, nullptr)) {
        DmItem* h = dmhdr(v);
        w->put(h, dm_hdrsize);
        w->put(v, h->used);
    }
    DmItem end;
    std::memset(&end, 0, sizeof end);
    end.type = dm_endtype;
    w->put(&end, dm_hdrsize);
    w->flush();
    bool bad = w->bad;
    delete w;
    return bad ? 693 : 0;
}

int dmread(int fd) {
    int rc = 0;
    char chunk[12000];
    for (;;) {
        DmItem h;
        if (!readall(fd, &h, dm_hdrsize)) return 1;
        if (h.type == dm_endtype) break;
        h.name[dm_namelen] = 0;
        uint64_t left = h.used;
        char* dst = static_cast<char*>(dmadd(h.name, h.type, h.tag, static_cast<size_t>(h.used)));
        if (!dst) rc = 2;
        while (left) {
            size_t k = left < sizeof chunk ? static_cast<size_t>(left) : sizeof chunk;
            if (!readall(fd, dst ? dst : chunk, k)) return 1;
            if (dst) dst += k;
            left -= k;
        }
    }
    return rc;
}

int dmtmpsave(char* fnout, size_t fnsize) {
    char fn[FNLEN];
    if (mktmpfn(fn, sizeof fn)) return 914;
    int fd = ::open(fn, O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (fd < 0) return 914;
    int rc = dmwrite(fd);
    if (::close(fd) != 0 && !rc) rc = 693;
    if (rc) {
        ::unlink(fn);
        return rc;
    }
    std::snprintf(fnout, fnsize, "%s", fn);
    dmshutdown();
    return 0;
}

int dmtmprestore(const char* fn) {
    int fd = ::open(fn, O_RDONLY);
    if (fd < 0) return errtext(1, "tmp file vanished; macros etc. lost\n");
    int rc = dmread(fd);
    ::close(fd);
    ::unlink(fn);
    if (rc == 1) errsay("error reading temp file\n");
    return rc ? 1 : 0;
}

static uint64_t dict_bytes() {
    uint64_t alloc, used;
    dmmemory(&alloc, &used);
    return used;
}

// The data area parks and restores the dictionary around a reallocation.
void link_dictionary() {
    dahooks.dict_write = dmwrite;
    dahooks.dict_read = dmread;
    dahooks.dict_shutdown = dmshutdown;
    dahooks.dict_init = dminit;
    dahooks.dict_bytes = dict_bytes;
}

} // namespace korvu
