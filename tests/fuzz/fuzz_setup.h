// What every fuzz entry needs: a data area and the subsystems linked as at
// start-up, output silenced, and a scratch file to hand the reader under test.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include "app/link.h"
#include "data/area/dataarea.h"
#include "kernel/dict/dict.h"
#include "output/spout.h"

namespace fuzzsetup {

// The whole system, as korvu-xe starts it; the scratch file's name.
inline std::string start(const char* stem) {
    using namespace korvu;
    dminit();
    totalmemory = 16u << 20;
    maxmaxvar = DEFAULT_MAXVAR;
    matsize = DEFAULT_MATSIZE;
    if (news_alloc()) std::abort();
    link_all();
    s_outlev = 5; // quiet
    std::string tmpl = std::string("/tmp/") + stem + ".XXXXXX";
    int fd = mkstemp(tmpl.data());
    if (fd < 0) std::abort();
    close(fd);
    return tmpl;
}

// The bytes into the scratch file; false when they could not be written.
inline bool put(const std::string& scratch, const void* data, size_t size) {
    int fd = open(scratch.c_str(), O_WRONLY | O_TRUNC);
    if (fd < 0) return false;
    bool ok = !size || write(fd, data, size) == static_cast<ssize_t>(size);
    close(fd);
    return ok;
}

} // namespace fuzzsetup
