// libFuzzer entry for the readers of the newer dataset formats (114, 115 and
// the tagged 117 to 119). Random bytes seldom get past the opening tags, so
// the input's first byte picks a start: 0 to 3 put the opening of a tagged
// file of release 117, 118 or 119 (or none) in front of the rest, anything
// else leaves the input as it is. The file is loaded into a fresh data area.
// Seeds: tests/fuzz/seeds_newer/. Build with -DKORVU_FUZZ=ON under clang.
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
    scratch = fuzzsetup::start("dtanewfuzz");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const char* const starts[] = {
        "<f_dta><header><release>117</release><byteorder>LSF</byteorder><K>",
        "<f_dta><header><release>118</release><byteorder>LSF</byteorder><K>",
        "<f_dta><header><release>119</release><byteorder>MSF</byteorder><K>",
        "",
    };
    std::string in;
    if (size && data[0] < 4) {
        in = starts[data[0]];
        in.append(reinterpret_cast<const char*>(data) + 1, size - 1);
    } else {
        in.assign(reinterpret_cast<const char*>(data), size);
    }
    if (!fuzzsetup::put(scratch, in.data(), in.size())) return 0;
    updata = 0;
    dta_use(scratch.c_str(), UseOpts{});
    drop_all(0);
    labels_clear(1);
    return 0;
}
