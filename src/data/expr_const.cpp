// Until the expression compiler is linked in, an expression may only be a
// number or a quoted string; anything else says plainly that it cannot be
// evaluated yet.
#include <cstdio>
#include <cstring>

#include "data/expr.h"
#include "kernel/gettok.h"
#include "kernel/options.h"
#include "output/spout.h"

namespace korvu {

ExpObj ifpgm, wepgm;

void zapexp(ExpObj* obj) {
    *obj = ExpObj();
}

int compexp(ExpObj* obj, int wanted, int end_flag, int syntax_only) {
    zapexp(obj);
    TokPos at;
    stattok(&at);
    gettok(prsenum);
    double v;
    if (tokisstr(token) && wanted != 0 && wanted != 5) {
        obj->isstr = 1;
        snprintf(obj->str, sizeof obj->str, "%s", token + 1);
    } else if (!tokisstr(token) && cnvstoz(token, &v) == 0 && wanted != 1) {
        obj->konst = v;
    } else {
        c_outlev = 3;
        spout21("expressions other than a single number are not yet available\n");
        return 199;
    }
    // the expression ends at a keyword, a comma or the end
    TokPos after;
    stattok(&after);
    gettok(prsestd);
    bool ends = !token[0] || tokis(token, ",") || tokis(token, "if") || tokis(token, "in") ||
                tokis(token, "[") || tokis(token, "]") || tokis(token, "using");
    resettok(&after);
    if (!ends) {
        c_outlev = 3;
        spout21("expressions other than a single number are not yet available\n");
        return 199;
    }
    obj->set = 1;
    return 0;
}

double xeq(ExpObj* obj, int) {
    return obj->konst;
}

} // namespace korvu
