// Redirection: point `ptl_cur` at a private engine whose lines go into a
// buffer, so that a command's output can be captured.
#pragma once
#include <string>
#include <vector>

namespace korvu {

// The infinite text buffer: rendered lines in order.
struct InfBuf {
    std::vector<std::string> lines;
};

// Opens the redirection; null when one is open already.
InfBuf* redirtoinf();
// Ends it: the buffer is handed back (the caller owns it) and `ptl_cur` is the
// results engine again.
InfBuf* redirtoinf_close();
// Reads a file descriptor through a fresh engine into a new buffer.
InfBuf* ptltoinf(int fd);

} // namespace korvu
