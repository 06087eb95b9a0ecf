// Combining datasets: `preserve` and `restore` (the dataset written away to
// a temporary file and brought back, also at the end of the program or
// do-file that preserved it), `append` and the match and one-to-one merge
// `_merge`, with `mersetup`, which matches the using file's variable table
// against memory.
#pragma once
#include <cstdint>

namespace korvu {

// --- preserve and restore -------------------------------------------------

// Flags of restore().
enum : int {
    RESTORE_AUTO = 1,     // the end of a frame: quiet, code of the frame kept
    RESTORE_NOT = 2,      // cancel: nothing is read, the entry goes
    RESTORE_PRESERVE = 4, // keep the entry alive after restoring
};
// Writes the dataset away (changed: records only that a restore leaves the
// data as they stand). 0, 621, 950 or the code of the save.
int syspreserve(int changed);
// Brings the preserved data back: 0, 622 or the code of the load.
int restore(int flags);

int preservecmd(int);
int restorecmd(int);

// --- append and merge -----------------------------------------------------

int appendcmd(int);
int mergecmd(int); // `_merge`

// Sets the frame-end restore hook.
void link_combine();

} // namespace korvu
