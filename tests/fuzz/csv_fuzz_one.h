// One run of the delimited-text reader on arbitrary bytes, shared by the
// libFuzzer harness and the unit test that replays the seed files and their
// mutations. The bytes are written to a scratch file and read with options
// chosen from the input's length, over a one-variable marker dataset. A
// successful read must leave a rectangular dataset; a failed one must leave
// the marker as it was.
#pragma once
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include "data/area/dataarea.h"
#include "data/area/storage.h"
#include "data/area/stortype.h"
#include "data/io/io.h"
#include "data/labels/label.h"
#include "kernel/dict/dict.h"

namespace csvfuzz {

// The marker dataset: one int variable, one observation holding 42.
inline bool marker() {
    using namespace korvu;
    drop_all(0);
    labels_clear(1);
    if (alcvar(KV_INT)) return false;
    std::memset(varname(1), 0, NAMELEN1);
    std::snprintf(varname(1), NAMELEN1, "%s", "marker");
    std::memset(fmtname(1), 0, FMTLEN1);
    std::snprintf(fmtname(1), FMTLEN1, "%s", "%8.0g");
    std::memset(lblname(1), 0, NAMELEN1);
    if (maxobs < 1 && repartobs(1 - maxobs)) return false;
    nobs = 1;
    store(1, 1, 42);
    updata = 0;
    return true;
}

// Options from the length, so that each seed file is read several ways
// as the fuzzer grows and shrinks it.
inline korvu::CsvReadOpts options(size_t size) {
    korvu::CsvReadOpts o;
    const unsigned k = static_cast<unsigned>(size % 16);
    if (k & 1) o.latin1 = true;
    if (k & 2) o.namesrow = (k & 4) ? 0 : 1;
    if ((k & 12) == 12) o.delims = ";,";
    if (k == 8) o.strall = true;
    if (k == 10) o.numall = true;
    if (k == 14) o.row1 = 2, o.row2 = 4;
    if (k == 6) o.col1 = 2, o.col2 = 3;
    if (k == 9) o.asdouble = true;
    return o;
}

// Returns the reader's code, or -1 when a check fails.
inline int run_one(const std::string& scratch, const uint8_t* data, size_t size) {
    using namespace korvu;
    if (!marker()) return -1;
    FILE* f = std::fopen(scratch.c_str(), "wb");
    if (!f) return -1;
    if (size && std::fwrite(data, 1, size, f) != size) {
        std::fclose(f);
        return -1;
    }
    std::fclose(f);
    const int rc = csv_read(scratch.c_str(), options(size));
    if (rc) {
        if (nvar != 1 || nobs != 1 || korvu_data(1, 1) != 42) return -1;
    } else {
        if (nvar < 1 || nobs < 0) return -1;
        // every cell readable (the sanitizers watch the bounds)
        char buf[KV_STRMAX + 1];
        for (int v = 1; v <= nvar; ++v)
            for (int i = 1; i <= nobs; ++i) {
                if (isstrtype(typlist[v - 1]))
                    skorvu_data(v, i, buf);
                else
                    (void)korvu_data(v, i);
            }
    }
    drop_all(0);
    labels_clear(1);
    return rc;
}

} // namespace csvfuzz
