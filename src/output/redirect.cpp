#include "output/redirect.h"

#include <unistd.h>

#include <cstdint>

#include "output/ptl/ptl.h"
#include "output/spout.h"

namespace korvu {

static bool redir_open = false;
static Ptl* redir_engine = nullptr;
static InfBuf* redir_buf = nullptr;

static int infsink(void* user, const uint8_t* tpl, int msg) {
    auto* buf = static_cast<InfBuf*>(user);
    if (msg == PTL_LINE && tpl) buf->lines.emplace_back(tpl_text(tpl));
    return msg == PTL_MORE ? ' ' : 0;
}

static Ptl* openengine(InfBuf* buf) {
    Ptl* p = ptlopen();
    if (!p) return nullptr;
    if (ptl_reswin) {
        PtlChars c;
        ptlquery_chars(ptl_reswin, &c);
        ptlset_chars(p, &c);
    }
    ptlset_moreenable(p, 0);
    ptlset_user(p, infsink, buf);
    return p;
}

InfBuf* redirtoinf() {
    if (redir_open) return nullptr;
    redir_buf = new InfBuf();
    redir_engine = openengine(redir_buf);
    if (!redir_engine) {
        delete redir_buf;
        redir_buf = nullptr;
        return nullptr;
    }
    redir_open = true;
    ptl_cur = redir_engine;
    return redir_buf;
}

InfBuf* redirtoinf_close() {
    if (!redir_open) return nullptr;
    ptlflush(redir_engine);
    ptlset_user(redir_engine, nullptr, nullptr);
    ptlclose(redir_engine);
    redir_engine = nullptr;
    redir_open = false;
    ptl_cur = ptl_reswin;
    InfBuf* b = redir_buf;
    redir_buf = nullptr;
    return b;
}

InfBuf* ptltoinf(int fd) {
    InfBuf* buf = new InfBuf();
    Ptl* p = openengine(buf);
    if (!p) {
        delete buf;
        return nullptr;
    }
    uint8_t state;
    ptlsend_genascii_begin(&state);
    char block[512];
    ssize_t got;
    while ((got = read(fd, block, sizeof block)) > 0)
        ptlsend_genascii(&state, p, block, static_cast<int>(got));
    ptlflush(p);
    ptlset_user(p, nullptr, nullptr);
    ptlclose(p);
    return buf;
}

} // namespace korvu
