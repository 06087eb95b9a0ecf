// libFuzzer entry: the input is program text for the matrix-language
// compiler (see lumo_fuzz_one.h). Build with -DKORVU_FUZZ=ON under clang.
#include <cstdint>
#include <cstdlib>

#include "kernel/dict/dict.h"
#include "lumo_fuzz_one.h"
#include "output/spout.h"

using namespace korvu;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    dminit();
    s_outlev = 5; // quiet
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size > 20000) return 0;
    if (!lumofuzz::run_one(data, size)) std::abort();
    return 0;
}
