// Until the variable table is linked in there are no variables: an empty
// list is fine, a name is not found.
#include "data/varlist.h"

#include <string>

#include "kernel/cmdparse.h"
#include "kernel/errors.h"
#include "kernel/gettok.h"

namespace korvu {

int ssvlist(const char* delims, int isnew) {
    lnvar = 0;
    gettok(delims);
    if (iskeyorb(token) || tokisstr(token)) {
        ungettok();
        return 0;
    }
    if (tokis(token, "_all")) return error(111);
    std::string name = token;
    return varnotfound(name.c_str());
}

} // namespace korvu
