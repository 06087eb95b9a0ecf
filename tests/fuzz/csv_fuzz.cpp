// libFuzzer entry: the input is a delimited-text file read into a fresh data
// area. Build with -DKORVU_FUZZ=ON under clang; seed with tests/fuzz/csv_corpus:
//   build-fuzz/bin/csv_fuzz -max_len=8192 work/ tests/fuzz/csv_corpus
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include "csv_fuzz_one.h"
#include "fuzz_setup.h"
#include "output/spout.h"

using namespace korvu;

static std::string scratch;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    scratch = fuzzsetup::start("csvfuzz");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (csvfuzz::run_one(scratch, data, size) < 0) std::abort();
    return 0;
}
