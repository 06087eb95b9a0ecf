// `infile`, `infix` and `outfile`.
#include "data/io/textio.h"
#include "kernel/cmds/builtins.h"

namespace korvu {

int infilecmd(int) {
    return notyet("infile");
}
int infixcmd(int) {
    return notyet("infix");
}
int outfilecmd(int) {
    return notyet("outfile");
}

} // namespace korvu
