// Output: printf and errprintf through the display formats, display.
#include <string>

#include "kernel/errors/errors.h"
#include "lumo/builtins/bi.h"
#include "output/spout.h"

namespace korvu {

static void bi_printf(int n) {
    std::string out;
    if (!bi_format(n, 0, &out)) return;
    spout21(out.c_str());
    bi_voidres(n);
}
static void bi_errprintf(int n) {
    std::string out;
    if (!bi_format(n, 0, &out)) return;
    errsay(out.c_str());
    bi_voidres(n);
}
// display(text[, asis]): one line of text with its markup; asis prints the
// braces as they stand.
static void bi_display(int n) {
    MObj* a = bi_mat(n, 0);
    double asis = 0;
    if (!a || !bi_string(a)) return;
    if (n == 2 && !bi_getreal(n, 1, &asis)) return;
    a = bi_arg(n, 0);
    for (int64_t i = 0; i < m_nel(a); i++) {
        std::string line = m_sel(a)[i]->s;
        line += "\n";
        if (asis != 0 && asis < misval)
            spoutnoptl(line.c_str());
        else
            spoutptl(line.c_str());
    }
    bi_voidres(n);
}
static void bi_displayflush(int n) {
    spoutflush();
    bi_voidres(n);
}

void bi_link_output(MBiFn* t) {
    t[bi_index("printf")] = bi_printf;
    t[bi_index("errprintf")] = bi_errprintf;
    t[bi_index("display")] = bi_display;
    t[bi_index("displayflush")] = bi_displayflush;
}

} // namespace korvu
