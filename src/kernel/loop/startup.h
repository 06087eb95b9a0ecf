// Process entry, staged start-up and shutdown.
#pragma once
#include <cstdint>

namespace korvu {

extern char sysdir_korvu[1024];
extern uint8_t korvu_dpc;
extern double fltmis, misval_z, misval_107, max_kvdouble, min_kvdouble, neg_kvdouble,
    smallest_kvdouble, kvepsilon, max_kvfloat, min_kvfloat, kvfltepsilon, twopi;
extern const char* filepath;

int korvu_main(int argc, char** argv);
int sinit0(int argc, char** argv);
int sinit(int flags);
void init_tmp();
int get_korvu_dir();
void tinit();
void tstop();
int srchfile(const char* name, int flag, char* out, int outsize);

} // namespace korvu
