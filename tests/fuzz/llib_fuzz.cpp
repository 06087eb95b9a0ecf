// libFuzzer entry: the input is a file for the readers of the matrix
// language's files. The first byte chooses the reader: even, a library or
// object file whose members are looked up and loaded; odd, a stream of
// matrices read to its end. Nothing may crash and no object may stay alive.
// Build with -DKORVU_FUZZ=ON under clang:
//   build-fuzz/bin/llib_fuzz -max_len=65536 corpus/
#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "fuzz_setup.h"
#include "kernel/dict/dict.h"
#include "lumo/io/lumofile.h"
#include "lumo/objects/mobj.h"
#include "output/spout.h"

using namespace korvu;

static std::string scratch;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    dminit();
    mo_init();
    s_outlev = 5; // quiet
    char tmpl[] = "/tmp/llibfuzz.XXXXXX";
    int fd = mkstemp(tmpl);
    if (fd < 0) std::abort();
    close(fd);
    scratch = tmpl;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1 || size > (1u << 20)) return 0;
    if (!fuzzsetup::put(scratch, data + 1, size - 1)) return 0;
    if (data[0] % 2 == 0) {
        LlibCtx* c = new LlibCtx;
        if (!llib_init(c, scratch.c_str(), false, false, true)) {
            for (int i = 0; i < c->n; i++) {
                const uint32_t off = llib_search(c, c->names[i]);
                LlibMember m{};
                if (llib_load1(c, off, &m)) continue;
                LumoFcn* f = nullptr;
                if (!llib_load2(c, off, &m, "fuzzed", &f) && f) dmrm(f);
            }
        }
        llib_close(c);
        delete c;
    } else {
        FILE* fp = fopen(scratch.c_str(), "rb");
        if (fp) {
            MObj* o = nullptr;
            std::string name;
            while (moio_read(fp, &o, &name) == 0) mo_freemat(o);
            fclose(fp);
        }
    }
    if (mo_counts.live != 0) std::abort();
    return 0;
}
