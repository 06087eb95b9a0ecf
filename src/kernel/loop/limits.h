// Sizes that follow from the maximum variable count, and the language version.
#pragma once
#include <cstdint>

namespace korvu {

extern int32_t maxmaxvar; // `set maxvar`, default 5000
extern int32_t maxlrecl;  // 12 x maxmaxvar: widest observation in bytes
extern int32_t conslen;   // 33 x maxmaxvar + 216: the command buffer
extern int32_t macrolen;  // 33 x maxmaxvar + 200: a macro, an expanded line
extern int32_t vernum;    // language version x 100

inline constexpr int32_t KORVU_VERSION = 920;
inline constexpr int NAMELEN = 32; // names hold 32 characters
inline constexpr int TOKLEN = 503; // longest token text

void setlimits(int32_t maxvar);

} // namespace korvu
