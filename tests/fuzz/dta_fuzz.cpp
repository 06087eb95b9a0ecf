// libFuzzer entry: the input is a dataset file; it is read into a fresh data
// area. Build with -DKORVU_FUZZ=ON under clang.
#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "data/area/dataarea.h"
#include "data/dta/dta.h"
#include "data/labels/label.h"
#include "fuzz_setup.h"
#include "kernel/dict/dict.h"
#include "output/spout.h"

using namespace korvu;

static std::string scratch;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    scratch = fuzzsetup::start("dtafuzz");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (!fuzzsetup::put(scratch, data, size)) return 0;
    updata = 0;
    dta_use(scratch.c_str(), UseOpts{});
    drop_all(0);
    labels_clear(1);
    return 0;
}
