// Messages of the data-area return codes, with their advice paragraphs.
#include <cstdint>
#include <cstdlib>

#include "data/area/dataarea.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/loop.h"
#include "output/spout.h"

namespace korvu {

static void advice_vars_width() {
    spoutptl("{p 4 4}\n");
    spout21("An attempt was made to add a variable (or to promote the storage type\n");
    spout21("of a variable) that would have required more room per observation than\n");
    spout21("is currently possible.  You have the following alternatives:\n");
    spoutptl("{p_end}\n{p 8 12}\n");
    spoutptl("1.  Store existing variables more efficiently; see help {help compress}.\n");
    spoutptl("{p_end}\n{p 8 12}\n");
    spoutptl("2.  Drop some variables or observations; see help {help drop}.\n");
    spoutptl("{p_end}\n{p 8 12}\n");
    spout21("3.  Increase the amount of memory allocated to the data area using the\n");
    spoutptl("{cmd:set memory} command; see help {help memory}.\n");
    spoutptl("{p_end}\n");
}

int dataarea_error(int code) {
    return error(code);
}

// The messages of the data area's codes, at the level error() set; 0 when the
// code is not one of them.
int dataarea_msg(int code) {
    switch (code) {
    case 3: spout21("no dataset in use\n"); break;
    case 4: spout21("no; data in memory would be lost\n"); break;
    case 900:
        spout21("no room to add more variables\n");
        spoutptl("{p 4 4}\n");
        spout21("An attempt was made to add a variable that would have\n");
        spout21("resulted in more than\n");
        spoutf("%d\n", maxmaxvar);
        spout21("variables (Korvu reserves one variable for its own use).\n");
        spout21("You have the following alternatives:\n");
        spoutptl("{p_end}\n{p 8 12}\n");
        spoutptl("1.  Drop some variables; see help {help drop}.\n");
        spoutptl("{p_end}\n{p 8 12}\n");
        spout21("2.  If you are using Korvu/XE, increase maxvar;\n");
        spoutptl("see help {help maxvar}.\n");
        spoutptl("{p_end}\n");
        break;
    case 901:
        spout21("no room to add more observations\n");
        spoutptl("{p 4 4}\n");
        spout21("An attempt was made to increase the number of\n");
        spout21("observations beyond what is currently possible.\n");
        spout21("You have the following alternatives:\n");
        spoutptl("{p_end}\n{p 8 12}\n");
        spoutptl("1.  Store your variables more efficiently; see help {help compress}.\n");
        spout21("(Think of Korvu's data area as the area of a rectangle;\n");
        spout21("Korvu can trade off width and length.)\n");
        spoutptl("{p_end}\n{p 8 12}\n");
        spoutptl("2.  Drop some variables or observations; see help {help drop}.\n");
        spoutptl("{p_end}\n{p 8 12}\n");
        spout21("3.  Increase the amount of memory allocated to the data area using the\n");
        spoutptl("{cmd:set memory} command; see help {help memory}.\n");
        spoutptl("{p_end}\n");
        break;
    case 902:
        spout21("no room to add more variables due to width\n");
        advice_vars_width();
        break;
    case 903:
        spout21("no room to promote variable (e.g., change int to float) due to width\n");
        advice_vars_width();
        break;
    case 909: spout21("op. sys. refuses to provide memory\n"); break;
    case 910: spout21("value too small\n"); break;
    case 912: spout21("value too large\n"); break;
    case 913:
        spout21("op. sys. refuses to provide sufficient memory;\n");
        spout21("    op. sys. provided base request, but then refused to provide\n");
        spout21("    sufficient memory for matsize\n");
        break;
    case 914: {
        const char* dir = getenv("KORVUTMP");
        if (!dir || !*dir) dir = getenv("TMPDIR");
        if (!dir || !*dir) dir = "/tmp";
        spout21("op. sys. refused to allow Korvu to open temporary file.\n");
        spoutf("    Temporary files are written in %s.\n", dir);
        spout21("    Verify the directory exists and is writeable by you.\n");
        spout21("    You can change the identity of this directory by setting the\n");
        spout21("    Unix environment variable TMPDIR.\n");
        break;
    }
    case 1010:
        spout21("system limit exceeded -- width shortage\n");
        spoutptl("{p 4 4}\n");
        spout21("An attempt was made to add a variable that would have increased\n");
        spout21(" the memory required to store an observation beyond\n");
        spoutf("%d\n", maxlrecl);
        spout21(" bytes, the maximum width allowed.\n");
        spout21("The maximum width is set to 12*maxvar.\n");
        spoutptl("{p_end}\n");
        break;
    default: return 0;
    }
    return 1;
}

} // namespace korvu
