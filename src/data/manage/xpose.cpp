// xpose: the data transposed, observations becoming variables v1, v2, ...
// and variables observations; text variables become missing values.
//   xpose, clear [varname]
// With varname, _varname holds the names of the old variables.
#include <algorithm>
#include <cstring>

#include "data/area/dataarea.h"
#include "data/area/storage.h"
#include "data/manage/manage.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/options.h"
#include "output/spout.h"

namespace korvu {

int xposecmd(int) {
    opable = 0;
    ifable = oable = 3;
    byable = 3;
    if (int rc = parse()) return rc;
    bool clear = findopt("clear", 5, 0);
    bool vname = findopt("varname", 4, 0);
    if (int rc = chkopt()) return rc;
    if (!clear)
        return errtext(198, "xpose replaces the data in memory: say so with the option clear\n");
    if (nvar == 0) return error(3);
    int K = nobs, N = nvar;
    if (K > maxvar - 1) return errorf(900, "%d observations would be too many variables\n", K);
    std::vector<MgCol> cols(K + (vname ? 1 : 0));
    for (int k = 0; k < K; k++) {
        MgCol& c = cols[k];
        c.name = "v" + std::to_string(k + 1);
        c.num.resize(N);
        for (int v = 1; v <= N; v++)
            c.num[v - 1] = isnumtype(typlist[v - 1]) ? korvu_data(v, k + 1) : misval;
        c.type = mg_fittype(c.num, true);
        if (c.type == KV_FLOAT) {
            // keep float columns float only when every value came from one
            bool allfloat = true;
            for (int v = 1; v <= N; v++)
                if (typlist[v - 1] == KV_DOUBLE) allfloat = false;
            if (!allfloat) c.type = KV_DOUBLE;
        }
        if ((k & 0xff) == 0 && kvpollstd()) return 1;
    }
    if (vname) {
        MgCol& c = cols[K];
        c.name = "_varname";
        size_t w = 1;
        for (int v = 1; v <= N; v++) {
            c.str.emplace_back(varname(v));
            w = std::max(w, c.str.back().size());
        }
        c.type = static_cast<int>(w);
    }
    return mg_replace_data(cols, N);
}

} // namespace korvu
