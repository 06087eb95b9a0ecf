// `clear` and `clear all`, and `example`, the shipped example datasets.
#include <cstdio>
#include <cstring>
#include <string>

#include "data/area/dataarea.h"
#include "data/dta/dta.h"
#include "data/io/io.h"
#include "data/labels/label.h"
#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "kernel/program/program.h"
#include "lumo/lumo.h"
#include "lumo/objects/mobj.h"
#include "output/spout.h"
#include "results/stores.h"

namespace korvu {

// clear: the data, the value labels and the changed flag. clear all: also
// programs loaded from ado-files, class objects, matrices, scalars, stored
// results, held estimates, Lumo functions and matrices and stored graphs.
// Settings stay.
int clearcmd(int) {
    gettok(prsestd);
    bool all = false;
    if (token[0]) {
        if (!cmdcmp(token, "all", 3)) return error(198);
        all = true;
        gettok(prsestd);
        if (token[0]) return error(198);
    }
    drop_all(0);
    labels_clear(1);
    filesp[0] = 0;
    updata = 0;
    i_nvar = 0;
    if (!all) return 0;
    discard(0); // programs from ado-files, class objects and classes
    dmzap(DM_MATRIX);
    dmzap(DM_MATROW);
    dmzap(DM_MATCOL);
    dmzap(DM_SCALAR);
    dmzap(DM_GRAPH);
    retval_clear();
    sretval_clear();
    estval_clear();
    zapesti();
    lumo_clearmats();
    m_dropallfcns();
    return 0;
}

// The catalogue of shipped datasets: lines "name  description" in
// examples/examples.txt under the base directory.
static std::string example_dir() {
    return std::string(sysdir_base) + "examples/";
}

int examplecmd(int) {
    opable = 0;
    noptn = 0;
    gettok(prsestd);
    const std::string dir = example_dir();
    if (!token[0]) {
        FILE* f = std::fopen((dir + "examples.txt").c_str(), "r");
        if (!f) return errtext(601, "no example datasets are installed\n");
        char line[512];
        while (std::fgets(line, sizeof line, f)) {
            if (line[0] == '#' || line[0] == '\n') continue;
            char name[64] = {};
            int n = 0;
            if (std::sscanf(line, "%63s %n", name, &n) < 1) continue;
            std::string desc(line + n);
            while (!desc.empty() && (desc.back() == '\n' || desc.back() == '\r')) desc.pop_back();
            spoutf("  %-12s %s\n", name, desc.c_str());
        }
        std::fclose(f);
        return 0;
    }
    std::string name = token;
    if (name.find('/') != std::string::npos || name.find('.') != std::string::npos)
        return errorf(198, "%s is not the name of an example dataset\n", name.c_str());
    gettok(prsestd);
    bool clear = false;
    if (token[0]) {
        if (!tokis(token, ",")) return error(198);
        if (int rc = proption()) return rc;
        clear = findopt("clear", 5, 0);
        if (int rc = chkopt()) return rc;
    }
    std::string file = dir + name + ".dta";
    if (FILE* f = std::fopen(file.c_str(), "rb")) {
        std::fclose(f);
    } else {
        return errorf(601, "example dataset %s not found; type -example- for the list\n",
                      name.c_str());
    }
    if (updata && !clear) return error(4);
    UseOpts o;
    int rc = dta_use(file.c_str(), o);
    i_nvar = nvar;
    return rc;
}

} // namespace korvu
