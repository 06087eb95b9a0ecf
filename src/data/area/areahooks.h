// Links from the data area to other subsystems, filled in as they come; all
// optional.
#pragma once
#include <cstddef>
#include <cstdint>

namespace korvu {

// ---------------------------------------------------------------------------
// Links to other subsystems, filled in as they come; all optional.
// ---------------------------------------------------------------------------
struct DataAreaHooks {
    int (*dict_write)(int fd);       // dmwrite; 0 on success
    int (*dict_read)(int fd);        // dmread; 0 on success
    void (*dict_shutdown)();         // dmshutdown
    void (*dict_init)();             // dminit
    uint64_t (*dict_bytes)();        // dmmemory, used bytes
    int (*lumo_state)();             // 0 idle and empty, 1 running, 2 not cleared
    uint64_t (*lumo_bytes)();        // bytes of Lumo objects
    void (*clear_saved_results)();   // set maxvar clears saved results
    void (*clear_discard)();         // ... and the pending discard
    void (*conslen_changed)();       // widths that depend on conslen
    void (*drop_all_extra)(int zap); // characteristics, S_FN, datalbl, i_nvar
    void (*discard_results)();       // drop_all: e() and the held estimates go
    int (*record_pref)(const char* section, const char* key, const char* value);
    int (*class_context_init)();                    // news_alloc: class-system context
    void (*fatal_exit)(int code);                   // leave the program (default exit)
    int32_t (*adosize)();                           // `set adosize`
    void (*post_r)(const char* name, double value); // store a number in r()
};
extern DataAreaHooks dahooks;

} // namespace korvu
