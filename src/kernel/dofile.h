// Do-files and blocks: a do-file or program runs as a frame, the same
// getreq/doreq loop one level deeper.
#pragma once
#include <cstdint>
#include <cstdio>

namespace korvu {

struct DoFile {
    FILE* fp = nullptr;
    int pushed = -1; // one pushed-back character
    char echo[512];  // the raw line as read, for the echo
    int necho = 0;
    bool newline_pending = false;
};

extern uint8_t breakallowed, breakdetail;

DoFile* dofopen(const char* path, int* rcout);
int getdofcm(DoFile* r);
void dofclos(DoFile* r);
int rddofile(char* dst, DoFile* r, int maxlen, int delim, uint8_t* eofout);
int godo(int mode, int keep);
int opbrace();

} // namespace korvu
