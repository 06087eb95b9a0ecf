// libFuzzer entry: the input is a dataset file; it is read into a fresh data
// area. Build with -DKORVU_FUZZ=ON under clang.
#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "app/link.h"
#include "data/area/dataarea.h"
#include "data/dta/dta.h"
#include "data/labels/label.h"
#include "kernel/dict/dict.h"
#include "output/spout.h"

using namespace korvu;

static std::string scratch;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    dminit();
    totalmemory = 16u << 20;
    maxmaxvar = DEFAULT_MAXVAR;
    matsize = DEFAULT_MATSIZE;
    if (news_alloc()) std::abort();
    link_all();
    s_outlev = 5; // quiet
    char tmpl[] = "/tmp/dtafuzz.XXXXXX";
    int fd = mkstemp(tmpl);
    if (fd < 0) std::abort();
    close(fd);
    scratch = tmpl;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    int fd = open(scratch.c_str(), O_WRONLY | O_TRUNC);
    if (fd < 0) return 0;
    if (size && write(fd, data, size) != static_cast<ssize_t>(size)) {
        close(fd);
        return 0;
    }
    close(fd);
    updata = 0;
    dta_use(scratch.c_str(), UseOpts{});
    drop_all(0);
    labels_clear(1);
    return 0;
}
