// _merge [varlist] using file [file ...] [, nolabel nonotes update replace
//        nokeep _merge(name) keep(varlist) unique uniqmaster uniqusing]
// With a varlist a match merge on it, without one a one-to-one merge. Several
// files are merged in turn, each into the result of those before it; the
// merge variable then tells of the last. When a later file fails, the data
// go back to what they were before the first.
#include <unistd.h>

#include <cstring>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "data/combine/combine.h"
#include "data/combine/combine_internal.h"
#include "data/dta/dta.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/scratch.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"

namespace korvu {

int mergecmd(int) {
    if (nvar == 0) return error(3);
    TokPos start;
    stattok(&start);
    // the files behind `using`; all but the first are blanked out of the
    // line, so that the parser sees one
    bool havevars = false;
    std::vector<std::string> files;
    for (bool first = true;; first = false) {
        gettok(prsestd);
        if (!token[0]) return required("using");
        if (!tokisstr(token) && tokis(token, "using")) break;
        if (first) havevars = true;
    }
    for (;;) {
        char* before = wheretok();
        char fn[FNLEN];
        int rc = gettokfn(fn, sizeof fn);
        if (rc == 7197) break;
        if (rc) return error(rc);
        files.push_back(dflttype(fn));
        if (files.size() > 1)
            for (char* p = before; p < wheretok(); ++p) *p = ' ';
    }
    if (files.empty()) return required("using");
    resettok(&start);
    vable = havevars ? 1 : 3;
    uable = 1;
    ifable = oable = wgtable = wable = 3;
    opable = 0;
    if (int rc = parse()) return rc;
    MergeOpts o;
    if (havevars) o.keys.assign(varlist_vr, varlist_vr + lnvar);
    o.nolabel = findopt("nolabel", 5, 0);
    o.nonotes = findopt("nonotes", 7, 0);
    o.update = findopt("update", 6, 0);
    o.replace = findopt("replace", 7, 0);
    o.nokeep = findopt("nokeep", 6, 0);
    const bool unique = findopt("unique", 6, 0);
    o.uniqmaster = unique || findopt("uniqmaster", 10, 0);
    o.uniqusing = unique || findopt("uniqusing", 9, 0);
    o.sortusing = findopt("sortusing", 9, 0); // internal: used by the merge command
    char name[NAMELEN1 + 8] = {};
    findargn("_merge", 6, name, sizeof name, 1);
    std::string keep(static_cast<size_t>(macrolen), '\0');
    findargn("keep", 4, keep.data(), macrolen, 100000);
    keep.resize(std::strlen(keep.c_str()));
    if (int rc = chkopt()) return rc;
    if (o.replace && !o.update) return errtext(198, "option replace requires update\n");
    if ((o.uniqmaster || o.uniqusing) && !havevars)
        return errtext(198, "options unique, uniqmaster and uniqusing require a varlist\n");
    std::string mname = name[0] ? name : "_merge";
    o.keepvars = keep;

    if (files.size() == 1) {
        o.mergename = mname.c_str();
        return merge_one(files[0].c_str(), o);
    }
    Snapshot snap;
    if (int rc = snapshot_save(snap)) return rc;
    for (size_t k = 0; k < files.size(); ++k) {
        const bool last = k + 1 == files.size();
        o.mergename = last ? mname.c_str() : nullptr;
        int rc = merge_one(files[k].c_str(), o);
        if (rc) {
            snapshot_load(snap);
            return rc;
        }
        // the result of a match merge is in key order: the next file merges on it
        if (!last && havevars) {
            for (size_t i = 0; i < o.keys.size(); ++i) srtlist[i] = static_cast<int16_t>(o.keys[i]);
            srtlist[o.keys.size()] = 0;
        }
    }
    if (!snap.file.empty()) ::unlink(snap.file.c_str());
    return 0;
}

} // namespace korvu
